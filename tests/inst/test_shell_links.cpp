// test_shell_links.cpp - CreateShellLink: the shortcut written and read back (a real .lnk
// through IShellLinkA under Wine, the text-file fake natively), rewriting in place, and the
// messages of each failing component-object step (native fake).
#include "platform/shl.h"
#include "tests/support/kxtest.h"

#include <gtest/gtest.h>

#ifdef KX_WIN32
#include <windows.h>
#endif

#include <string.h>

#include <string>
#include <vector>

namespace {

struct Read {
  Flag ok;
  std::string target, description, directory;
};

Read read(const std::string &file) {
  char target[KX_PATH], description[KX_PATH], directory[KX_PATH];
  for (char *b : {target, description, directory}) memset(b, '#', KX_PATH);
  Flag ok = shl_read_link(file.c_str(), target, description, directory);
  return {ok, target, description, directory};
}

class ShellLink : public ::testing::Test {
 protected:
  // Joined as text: a file-system path object would take the name for UTF-8.
  std::string file(const char *name) const {
#ifdef KX_WIN32
    return dir_.path() + "\\" + name;
#else
    return dir_.path() + "/" + name;
#endif
  }
  void SetUp() override {
    shl_test_reset();
#ifdef KX_WIN32
    // Keep Wine's menu builder away from the host (see test_shell.cpp).
    SetEnvironmentVariableA("WINEDLLOVERRIDES", "mscoree,mshtml=;winemenubuilder.exe=d");
#endif
  }
  void TearDown() override { shl_test_reset(); }
  kxtest::ScratchDir dir_;
  kxtest::BoxRecorder boxes_;
};

}  // namespace

TEST_F(ShellLink, WrittenAndReadBack) {
  const std::string target = file("Program.exe");
  ASSERT_TRUE(kxtest::write_bytes(target, "MZ"));
  struct Row {
    int n;
    const char *file;
    const char *description;
    std::string directory;
  } rows[] = {
      {1, "KORVEX.LNK", "KORVEX - Návrhový systém pro elektroniku 5.003-016", dir_.path()},
      {2, "Odinstalace KORVEX.LNK", "Odinstalace KORVEX", dir_.path()},
      {3, "Žluťoučký kůň.lnk", "Příliš žluťoučký kůň", dir_.path()},
      {4, "Prázdný.lnk", "", ""},
  };
  for (const Row &r : rows) {
    EXPECT_EQ(1, CreateShellLink(r.file, target.c_str(), r.description, r.directory.c_str()))
        << "row " << r.n;
    EXPECT_EQ(0u, boxes_.count()) << "row " << r.n << "\n" << boxes_.dump();
    Read got = read(file(r.file));
    ASSERT_EQ(1, got.ok) << "row " << r.n;
    EXPECT_EQ(target, got.target) << "row " << r.n;
    EXPECT_EQ(r.description, got.description) << "row " << r.n;
    EXPECT_EQ(r.directory, got.directory) << "row " << r.n;
  }
  // A missing or foreign file is no shortcut; the buffers are then empty.
  ASSERT_TRUE(kxtest::write_bytes(file("foreign.lnk"), "not a shortcut at all\n"));
  for (const char *name : {"missing.lnk", "foreign.lnk"}) {
    Read got = read(file(name));
    EXPECT_EQ(0, got.ok) << name;
    EXPECT_EQ("", got.target + got.description + got.directory) << name;
  }
}

#ifndef KX_WIN32
TEST_F(ShellLink, EachFailingStepHasItsMessage) {
  struct Row {
    int n;
    int16_t fail;
    std::vector<std::string> boxes;
    const char *trace;
    bool saved;
  } rows[] = {
      {1, SHL_FAIL_CREATE, {"Nelze vytvořit zástupce"}, "begin create end ", false},
      {2, SHL_FAIL_PERSIST, {}, "begin create persist end ", false},
      {3, SHL_FAIL_PATH, {"Chyba při nastavování cesty zástupce Popis %d"},
       "begin create persist load path description directory save release end ", true},
      {4, SHL_FAIL_DESCRIPTION, {"Chyba při nastavování popisu zástupce Popis %d"},
       "begin create persist load path description directory save release end ", true},
      {5, SHL_FAIL_WORKING_DIRECTORY, {"Chyba při nastavování pracovního adresáře Popis %d"},
       "begin create persist load path description directory save release end ", true},
      {6, SHL_FAIL_SAVE, {"Chyba při ukládání zástupce Popis %d"},
       "begin create persist load path description directory save release end ", false},
      {7, SHL_FAIL_PATH | SHL_FAIL_DESCRIPTION | SHL_FAIL_WORKING_DIRECTORY | SHL_FAIL_SAVE,
       {"Chyba při nastavování cesty zástupce Popis %d",
        "Chyba při nastavování popisu zástupce Popis %d",
        "Chyba při nastavování pracovního adresáře Popis %d", "Chyba při ukládání zástupce Popis %d"},
       "begin create persist load path description directory save release end ", false},
  };
  for (const Row &r : rows) {
    shl_test_reset();
    shl_test_fail(r.fail);
    boxes_.clear();
    std::string name = "link" + std::to_string(r.n) + ".lnk";
    // The description goes into the messages, not the file name.
    EXPECT_EQ(1, CreateShellLink(name.c_str(), "C:\\T.EXE", "Popis %d", "C:\\")) << "row " << r.n;
    std::vector<std::string> texts;
    for (const auto &b : boxes_.boxes()) {
      texts.push_back(b.text);
      EXPECT_EQ(" Chyba ", b.title) << "row " << r.n;
    }
    EXPECT_EQ(r.boxes, texts) << "row " << r.n;
    EXPECT_EQ(r.trace, std::string(shl_test_trace())) << "row " << r.n;
    EXPECT_EQ(r.saved, kxtest::exists(file(name.c_str()))) << "row " << r.n;
  }
  // A field whose setting failed is not in the saved shortcut.
  Read got = read(file("link3.lnk"));
  EXPECT_EQ("", got.target);
  EXPECT_EQ("Popis %d", got.description);
}

#endif
