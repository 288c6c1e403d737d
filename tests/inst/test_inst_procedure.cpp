// test_inst_procedure.cpp - whole installs on a scratch directory: the record order, the
// progress line, and the checks and questions that stop an install (disk, overwrite, abort,
// space).
#include "tests/inst/test_inst_fixture.h"

#include "installer/startup.h"
#include "platform/inst_plat.h"

#include <algorithm>
#include <filesystem>

#include <string.h>

namespace fs = std::filesystem;
using insttest::file_record;
using insttest::InstallTest;
using insttest::Medium;
using Records = std::vector<std::pair<int, std::string>>;

namespace {

Medium three_files() {
  Medium m;
  m.records.push_back(file_record("KORV5.EXE", "KORV5.EXE", "EXE", 700, 0, "Hlavní program"));
  m.records.push_back(file_record("ZNACKY.S32", "ZNACKY.S32", "SLIB", 40, 0, "Knihovna značek"));
  m.records.push_back(file_record("CTIMNE.TXT", "CTIMNE.TXT", ".", 5, 0, ""));
  return m;
}

}  // namespace

TEST_F(InstallTest, FullRunWritesListsInCreationOrder) {
  write_medium(three_files());
  write_source_file("README.TXT", "readme");
  ASSERT_EQ(run(), 1) << dump_asked();
  inst_close_lists(state_);
  EXPECT_EQ(boxes_at_later_steps, 0u) << dump_asked();
  const std::string t = target_;
  const std::string d = t.substr(0, t.size() - 1);
  Records expected = {{0, t + "README.TXT"},     {0, t + "DISKLIST.LST"},     {1, t + "EXE"},
                      {1, t + "SLIB"},           {1, t + "Navrhy"},           {1, d},
                      {0, t + "EXE\\KORV5.EXE"}, {0, t + "SLIB\\ZNACKY.S32"}, {0, t + "CTIMNE.TXT"},
                      {0, t + "INST.LST"},       {0, t + "EXE\\SYSTEM.WCO"}};
  Records got = uninstall_records();
  ASSERT_GE(got.size(), expected.size()) << dump_records();
  for (size_t i = 0; i < expected.size(); i++)
    EXPECT_EQ(got[i], expected[i]) << "record " << i << "\n" << dump_records();
  // Only registry keys and shortcuts of the later steps follow.
  EXPECT_EQ(install_lines(),
            (std::vector<std::string>{t + "EXE\\KORV5.EXE Hlavní program",
                                      t + "SLIB\\ZNACKY.S32 Knihovna značek", t + "CTIMNE.TXT "}));
  EXPECT_EQ(std::string(program_dir), t + "EXE\\");
  // Status texts of the steps, in order.
  std::vector<std::string> steps = {
      "Kontrola zdrojové cesty ...",   "Odstranění předchozí instalace ...",
      "Kontrola cílové cesty ...",     "Vytváření adresářů ...",
      "Kontrola místa na disku ...",   "Zápis/oprava konfiguračního souboru",
      "Aktualizace nabídky Start ...", "Aktualizace registru (cesta systémové konfigurace) ..."};
  size_t at = 0;
  for (const std::string &s : statuses)
    if (at < steps.size() && s == steps[at]) at++;
  EXPECT_EQ(at, steps.size()) << "missing status " << (at < steps.size() ? steps[at] : "");
  EXPECT_EQ(statuses.back(), "");
  // Progress: line 18 of the first file, disk numbers 1-based, everything cleared at the end.
  ASSERT_FALSE(lines[0].empty());
  EXPECT_EQ(lines[2].front(), "Číslo diskety : 1");
  EXPECT_EQ(lines[1].front(), "Popis souboru : Hlavní program");
  EXPECT_EQ(lines[3].back(), "");
  EXPECT_EQ(lines[0].back(), "");
}

TEST_F(InstallTest, ProgressLineIsCutAtEightyCharacters) {
  // A target of 70 characters: the line would be 16 + 70 + 13.
  std::string t = root_path() + "P";
  while (t.size() < 69) t += "p";
  set_target(t + "\\");
  write_medium(three_files());
  ASSERT_EQ(run(), 1) << dump_asked();
  std::string want = "Instaluje se  : " + target_ + "EXE\\KORV5.EXE";
  ASSERT_GT(want.size(), 80u);
  EXPECT_EQ(lines[0].front(), want.substr(0, 80));
}

TEST_F(InstallTest, WrongDiskNumberAsksAgain) {
  Medium m = three_files();
  m.records[2].disk = 1;
  m.records[2].stored[0] = 'X';  // XTIMNE.TXT: not in the source yet
  write_medium(m);
  fs::remove(local(source_ + "XTIMNE.TXT"));
  int notices = 0;
  on_notice = [&](const std::string &) {
    notices++;
    write_source_file("B.KORV", notices == 1 ? "DISK: 3\r\n" : "  DISK:\t2 \r\n");
    if (notices == 2) write_source_file("XTIMNE.TXT", "xx");
  };
  answers.push_back({"Zkusit znovu", {WE_ANSWER_YES}});
  ASSERT_EQ(run(), 1) << dump_asked();
  EXPECT_EQ(notices, 2);
  EXPECT_EQ(asked_count("Vlož DISK2"), 2);
  EXPECT_EQ(asked_count("Zkusit znovu"), 1);
  ASSERT_LE(1u, boxes_.count());
  EXPECT_EQ(boxes_.boxes()[0].text, "Nesprávné pořadové číslo diskety (3)");
  EXPECT_EQ(std::count(lines[2].begin(), lines[2].end(), "Číslo diskety : 2"), 1);
}

// A first disk without its identification file (a wrong number and an unknown keyword: above
// and in the end-to-end runs).
TEST_F(InstallTest, MissingDiskIdentification) {
  write_medium(three_files());
  fs::remove(local(source_ + "A.KORV"));
  EXPECT_EQ(run(), 0);
  inst_close_lists(state_);
  ASSERT_LE(1u, boxes_.count());
  EXPECT_EQ(boxes_.boxes()[0].text, "Nesprávná disketa") << boxes_.dump();
}

TEST_F(InstallTest, OverwriteQuestion) {
  // No stops quietly and leaves the old files; Yes deletes both and installs.
  const std::string question = "Existující soubory budou přepsány, pokračovat";
  for (int16_t reply : {WE_ANSWER_NO, WE_ANSWER_YES}) {
    const bool yes = reply == WE_ANSWER_YES;
    write_medium(three_files());
    write_local(local(target_ + "EXE\\KORV5.EXE"), "old");
    write_local(local(target_ + "CTIMNE.TXT"), "old");
    asked.clear();
    statuses.clear();
    boxes_.clear();
    boxes_at_later_steps = (size_t)-1;
    answers = {{question, {reply}}};
    EXPECT_EQ(run(), yes ? 1 : 0) << dump_asked();
    inst_close_lists(state_);
    // No box from the procedure itself (the later steps of Yes may report).
    EXPECT_EQ(std::min(boxes_.count(), boxes_at_later_steps), 0u) << boxes_.dump();
    EXPECT_EQ(asked_count(question), 1) << "reply " << reply;
    EXPECT_EQ(kxtest::read_bytes(local(target_ + "CTIMNE.TXT")), yes ? "CTIMN" : "old");
    int deleting = 0;
    for (auto &s : statuses) deleting += s.rfind("Maže se : ", 0) == 0;
    EXPECT_EQ(deleting, yes ? 2 : 0) << "reply " << reply;
    clear_target();
  }
}

// Yes to the abort question: the first two questions of the list copy are not heeded, the third
// one stops. (No lets the install run on: the robot's abort test and the end-to-end runs.)
TEST_F(InstallTest, AbortQuestion) {
  write_medium(three_files());
  on_pump = [] { abort_requested = 1; };
  EXPECT_EQ(run(), 0);
  inst_close_lists(state_);
  EXPECT_EQ(asked_count("Přerušit instalaci ?"), 3) << dump_asked();
  EXPECT_EQ(uninstall_records(), (Records{{0, target_ + "DISKLIST.LST"}})) << dump_records();
}

TEST_F(InstallTest, SpaceCheckBoundary) {
  // Cluster 512: 700 B -> 2, 40 B -> 1, 5 B -> 1 cluster; reserve 1,000,000 / 512 = 1953.
  const uint32_t needed = 2 + 1 + 1 + 1953;
  struct {
    uint32_t free;
    Flag ok;
  } rows[] = {{needed, 1}, {needed - 1, 0}};
  for (size_t i = 0; i < 2; i++) {
    boxes_.clear();
    write_medium(three_files());
    plat_test_set_free_space(1, rows[i].free, 1, 512);
    EXPECT_EQ(run(), rows[i].ok) << "row " << i << "\n" << dump_asked();
    inst_close_lists(state_);
    if (!rows[i].ok) {
      EXPECT_EQ(boxes_.only().text, "Málo místa na disku, je třeba 1002048 B");
    }
    clear_target();
  }
  // A file of exactly one cluster is charged two.
  Medium m;
  m.records.push_back(file_record("ONE.BIN", "ONE.BIN", ".", 512, 0, ""));
  write_medium(m);
  plat_test_set_free_space(1, 2 + 1953 - 1, 1, 512);
  boxes_.clear();
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(boxes_.only().text, "Málo místa na disku, je třeba 1001024 B");
}
