// test_inst_parts.cpp - the pieces of the install: UNINST.LST records, the state record, the
// abort question, the earlier installation, long paths, and the native platform half.
#include "tests/inst/test_inst_fixture.h"

#include "platform/inst_plat.h"
#include "platform/reg.h"
#include "store/wco.h"

#include <filesystem>

#include <string.h>

namespace fs = std::filesystem;
using insttest::InstallTest;
using insttest::Medium;
using insttest::file_record;
using Records = std::vector<std::pair<int, std::string>>;

namespace {

Medium one_file() {
  Medium m;
  m.records.push_back(file_record("KORV5.EXE", "KORV5.EXE", "EXE", 10, 0, "Program"));
  return m;
}

}  // namespace

// A run stopped by the abort question leaves UNINST.LST open: the records go to its end.
TEST_F(InstallTest, RecordsJoinAndCut) {
  write_medium(one_file());
  on_pump = [] { abort_requested = 1; };
  ASSERT_EQ(run(), 0);
  on_pump = nullptr;
  const std::string p1023 = kxtest::pattern_text(1023), p1022 = p1023.substr(0, 1022),
                    p1025 = p1023 + "xy", p1024 = p1023 + "\\";
  struct { int kind; const char *a, *b, *c; std::string want; } rows[] = {
      /* 0 */ {0, "C:\\K\\", "EXE", "SYSTEM.WCO", "C:\\K\\EXE\\SYSTEM.WCO"},
      /* 1 */ {0, "C:\\K", "EXE\\", "X", "C:\\K\\EXE\\X"},
      /* 2 */ {0, "C:\\K\\", "", nullptr, "C:\\K\\"},
      /* 3 */ {0, "", "A", nullptr, "\\A"},
      /* 4 */ {1, "C:\\K\\SUB\\", nullptr, nullptr, "C:\\K\\SUB"},
      /* 5 */ {1, "C:\\K\\SUB\\\\", nullptr, nullptr, "C:\\K\\SUB\\"},
      /* 6 */ {1, "C:\\", nullptr, nullptr, "C:"},
      /* 7 */ {2, ".d32\\shell\\open", nullptr, nullptr, ".d32\\shell\\open"},
      /* 8 */ {3, "SOFTWARE\\KORV\\", nullptr, nullptr, "SOFTWARE\\KORV\\"},
      /* 9 */ {0, p1023.c_str(), nullptr, nullptr, p1023},
      /* 10 */ {0, p1022.c_str(), "AB", nullptr, p1022 + "\\"},
      /* 11 */ {2, p1025.c_str(), nullptr, nullptr, p1023},
      /* 12 */ {1, p1024.c_str(), nullptr, nullptr, p1023},
  };
  const size_t before = 1;   // DISKLIST.LST, copied before the abort
  for (auto &r : rows) {
    Flag ok = r.kind == 0   ? RecordInstalledFile(r.a, r.b, r.c)
              : r.kind == 1 ? RecordCreatedDirectory(r.a)
              : r.kind == 2 ? RecordOtherItem(r.a)
                            : RecordMachineKey(r.a);
    EXPECT_EQ(ok, 1);
  }
  inst_close_lists(state_);
  Records got = uninstall_records();
  ASSERT_EQ(got.size(), before + sizeof rows / sizeof rows[0]) << dump_records();
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; i++) {
    EXPECT_EQ(got[before + i].first, rows[i].kind) << "row " << i;
    EXPECT_EQ(got[before + i].second, rows[i].want) << "row " << i;
  }
  // Closed: nothing is written, and a null path is an internal error.
  EXPECT_EQ(RecordInstalledFile("C:\\X", nullptr, nullptr), 1);
  EXPECT_EQ(uninstall_records().size(), got.size());
  boxes_.clear();
  RecordCreatedDirectory(nullptr);
  EXPECT_GE(kxtest::internal_error_line(boxes_.only(), "inst"), 1);
}

TEST_F(InstallTest, EarlierConfigurationIsOffered) {
#ifdef KX_WIN32
  GTEST_SKIP() << "needs an uninstaller program that ends with a chosen code";
#else
  const std::string config_question =
      "Pro novou instalaci může být převzata systémová konfigurace\n"
      "z předchozí instalace KORVEX. Má se převzít systémová\n"
      "konfigurace z předchozí instalace?";
  // registry value, its file present, reply, uninstaller exit: the library path expected.
  struct { const char *registry; bool other_file; int16_t reply; int exit; const char *want; } rows[] = {
      /* 0 */ {nullptr, false, WE_ANSWER_YES, 0, "D:\\TARGETOLD\\"},
      /* 1 */ {"C:\\OTHER\\SYSTEM.WCO", true, WE_ANSWER_YES, 0, "D:\\OTHEROLD\\"},
      /* 2 */ {"C:\\OTHER\\SYSTEM.WCO", false, WE_ANSWER_YES, 0, "D:\\TARGETOLD\\"},
      /* 3 */ {nullptr, false, WE_ANSWER_NO, 0, nullptr},
      /* 4 */ {nullptr, false, WE_ANSWER_YES, 3, nullptr},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; i++) {
    SCOPED_TRACE("row " + std::to_string(i));
    fs::current_path(scratch_.path());
    reg_test_reset();
    asked.clear();
    statuses.clear();
    boxes_.clear();
    fronts = 0;
    inst_host_slept = 0;
    config_taken_over = 0;
    clear_target();
    fs::remove_all(local("C:\\OTHER\\"));
    write_medium(one_file());
    auto old_config = [&](const std::string &path, const char *library) {
      ConfigStore *store = nullptr;
      ASSERT_TRUE(wco::create(&store));
      wco::set_text(store, "CO_schematic", "schema_default_library_path", library);
      wco::set_text(store, "CO_common", "system_path", "\\OLD\\");
      fs::create_directories(fs::path(local(path)).parent_path());
      EXPECT_TRUE(wco::save_always(store, path.c_str()));
      wco::destroy(&store);
    };
    old_config(target_ + "EXE\\SYSTEM.WCO", "D:\\TARGETOLD\\");
    if (rows[i].other_file) old_config("C:\\OTHER\\SYSTEM.WCO", "D:\\OTHEROLD\\");
    if (rows[i].registry)
      reg_set_string(REG_ROOT_LOCAL_MACHINE, "Software\\KORV\\KORVEX\\5", "system_wco_path",
                     rows[i].registry);
    write_local(local(target_ + "UNINST.LST"), std::string(ILST_UNINSTALL_SIZE, 'U'));
    // The uninstaller removes what the earlier install wrote, as the real one does.
    std::string script = "#!/bin/sh\n[ \"$1\" = \"-r\" ] || exit 9\nrm -f \"" +
                         local(target_ + "UNINST.LST") + "\" \"" +
                         local(target_ + "EXE\\SYSTEM.WCO") + "\"\nexit " +
                         std::to_string(rows[i].exit) + "\n";
    write_local(local(target_ + "EXE\\UNINSTAL.EXE"), script);
    fs::permissions(local(target_ + "EXE\\UNINSTAL.EXE"), fs::perms::owner_all);
    answers = {{config_question, {rows[i].reply}}};
    Flag ok = run();
    inst_close_lists(state_);
    EXPECT_EQ(asked_count(config_question), 1) << dump_asked();
    EXPECT_EQ(config_taken_over, rows[i].reply == WE_ANSWER_YES ? 1 : 0);
    if (rows[i].exit != 0) {
      EXPECT_EQ(ok, 0);
      EXPECT_EQ(boxes_.only().text, "Chyba při spuštění odinstalačního programu KORVEX");
      EXPECT_EQ(inst_host_slept, 0);
      continue;
    }
    ASSERT_EQ(ok, 1) << dump_asked();
    EXPECT_EQ(fronts, 1);
    EXPECT_EQ(inst_host_slept, 2000);
    EXPECT_NE(std::find(statuses.begin(), statuses.end(),
                        "Dokončení odstranění předchozí instalace ..."),
              statuses.end());
    // The new UNINST.LST starts with this install's records.
    EXPECT_EQ(uninstall_records().front(), (Records::value_type{0, target_ + "DISKLIST.LST"}));
    ConfigStore *store = nullptr;
    ASSERT_TRUE(wco::create(&store));
    ASSERT_TRUE(wco::load(store, (target_ + "EXE\\SYSTEM.WCO").c_str()));
    char value[KX_PATH];
    wco::get_text(store, "CO_common", "system_path", value, sizeof value);
    EXPECT_STREQ(value, "\\KORV5\\");
    wco::get_text(store, "CO_schematic", "schema_default_library_path", value, sizeof value);
    EXPECT_STREQ(value, rows[i].want ? rows[i].want : (target_ + "SLIB\\").c_str());
    wco::destroy(&store);
  }
#endif
}

// An earlier SYSTEM.WCO that the store can't read cleanly is not offered (the store would
// report each stray line as an internal error and keep the defaults): the install writes its
// own paths, with no box. One that reads cleanly is offered and taken over, also with lines of
// any length.
TEST_F(InstallTest, UnreadableEarlierConfigurationIsNotOffered) {
#ifdef KX_WIN32
  GTEST_SKIP() << "needs an uninstaller program that ends with a chosen code";
#else
  const std::string config_question =
      "Pro novou instalaci může být převzata systémová konfigurace\n"
      "z předchozí instalace KORVEX. Má se převzít systémová\n"
      "konfigurace z předchozí instalace?";
  const std::string taken = "BEGIN[CO_schematic]\nschema_default_library_path=D:\\OLD\\\nEND[CO_schematic]\n";
  std::string binary;
  for (int i = 0; i < 3000; i++) binary += (char)((i * 37 + 11) % 251 + 1);  // no line break
  const std::string k40(40, 'k'), n41(41, 'n');
  // the earlier file's text, whether it is offered (and so taken over); other: the text of a
  // file that the registry names first
  struct { std::string text; bool offered; std::string other; } rows[] = {
      /* 0 */ {binary, false, ""},
      /* 1 */ {"BEGIN[CO_common]\nsystem_path=\\X\\\n\x01\x02=\x7f\n" + taken, false, ""},
      /* 2 */ {"x=1\n" + taken, false, ""},
      /* 3 */ {taken + "y=2\n", false, ""},
      /* 4 */ {"BEGIN[]\nx=1\n" + taken, false, ""},
      /* 5 */ {"BEGIN[   ]\n" + taken, false, ""},
      /* 6 */ {"BEGIN[" + n41 + "]\nx=1\n" + taken, false, ""},
      /* 7 */ {"BEGIN[CO_x]\n" + k40 + "k=1\nEND[CO_x]\n" + taken, false, ""},
      /* 8 */ {"\r\n\r\n\r\n", false, ""},
      /* 9 */ {"Konfiguracni soubor KORVEX\n\n", false, ""},
      /* 10 */ {"BEGIN[CO_x]\n=1\nEND[CO_x]\n", false, ""},
      /* 11 */ {taken, true, ""},
      /* 12 */ {"BEGIN[" + std::string(40, 'n') + "]\n" + k40 + "=1\nEND[x]\n" + taken, true, ""},
      /* 13 */ {"Konfiguracni soubor KORVEX\n\n" + std::string(100000, 'a') + "\n=1\n" + taken, true, ""},
      /* 14 */ {"BEGIN[CO_x]\n\tkey\t=\tvalue\t\n  END[CO_x]  \n" + taken, true, ""},
      /* 15 */ {taken, true, binary},
      /* 16 */ {binary, false, "x=1\n"},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; i++) {
    SCOPED_TRACE("row " + std::to_string(i));
    fs::current_path(scratch_.path());
    reg_test_reset();
    asked.clear();
    boxes_.clear();
    config_taken_over = 0;
    clear_target();
    write_medium(one_file());
    write_local(local(target_ + "EXE\\SYSTEM.WCO"), rows[i].text);
    fs::remove_all(local("C:\\OTHER\\"));
    if (!rows[i].other.empty()) {
      fs::create_directories(local("C:\\OTHER\\"));
      write_local(local("C:\\OTHER\\SYSTEM.WCO"), rows[i].other);
      reg_set_string(REG_ROOT_LOCAL_MACHINE, "Software\\KORV\\KORVEX\\5", "system_wco_path",
                     "C:\\OTHER\\SYSTEM.WCO");
    }
    write_local(local(target_ + "UNINST.LST"), std::string(ILST_UNINSTALL_SIZE, 'U'));
    std::string script = "#!/bin/sh\nrm -f \"" + local(target_ + "UNINST.LST") + "\"\nexit 0\n";
    write_local(local(target_ + "EXE\\UNINSTAL.EXE"), script);
    fs::permissions(local(target_ + "EXE\\UNINSTAL.EXE"), fs::perms::owner_all);
    answers = {{config_question, {WE_ANSWER_YES}}};
    Flag ok = run();
    inst_close_lists(state_);
    ASSERT_EQ(ok, 1) << dump_asked();
    EXPECT_EQ(asked_count(config_question), rows[i].offered ? 1 : 0) << dump_asked();
    EXPECT_EQ(config_taken_over, rows[i].offered ? 1 : 0);
    for (const kxtest::Box &b : boxes_.boxes())
      EXPECT_EQ(b.title.find("Interní chyba"), std::string::npos) << b.title << ": " << b.text;
    ConfigStore *store = nullptr;
    ASSERT_TRUE(wco::create(&store));
    ASSERT_TRUE(wco::load(store, (target_ + "EXE\\SYSTEM.WCO").c_str()));
    char value[KX_PATH] = "";
    wco::get_text(store, "CO_schematic", "schema_default_library_path", value, sizeof value);
    EXPECT_EQ(std::string(value), rows[i].offered ? std::string("D:\\OLD\\") : target_ + "SLIB\\");
    wco::get_text(store, "CO_common", "system_path", value, sizeof value);
    EXPECT_STREQ(value, "\\KORV5\\");
    wco::destroy(&store);
  }
#endif
}

TEST_F(InstallTest, LongPathsAreRefusedNotOverrun) {
#ifdef KX_WIN32
  GTEST_SKIP() << "paths over 260 characters need the native build";
#else
  // Installed path = target + "DIRECTORY1\NAME12345.EXE" (24 characters): 1023 fits, 1024 not.
  for (size_t length : {999u, 1000u}) {
    SCOPED_TRACE("target of " + std::to_string(length));
    boxes_.clear();
    std::string t = "C:\\";
    while (t.size() < length) {
      size_t room = length - t.size() - 1;
      t += std::string(room > 200 ? 200 : room, 'q') + "\\";
    }
    if (t.size() > length) t = t.substr(0, length - 1) + "\\";
    ASSERT_EQ(t.size(), length);
    set_target(t);
    Medium m;
    m.records.push_back(file_record("NAME12345.EXE", "NAME12345.EXE", "DIRECTORY1", 3, 0, "d"));
    write_medium(m);
    Flag ok = run();
    inst_close_lists(state_);
    if (length + 24 <= 1023) {
      EXPECT_EQ(ok, 1) << dump_asked();
      EXPECT_EQ(install_lines().at(0), t + "DIRECTORY1\\NAME12345.EXE d");
    } else {
      EXPECT_EQ(ok, 0);
      std::string cut = (t + "DIRECTORY1\\NAME12345.EXE").substr(0, 1023);
      EXPECT_EQ(boxes_.only().text, ("Příliš dlouhá cesta " + cut).substr(0, 199));
    }
    clear_target();
  }
#endif
}

#ifndef KX_WIN32
TEST(InstHost, NativePaths) {
  inst_host_reset();
  struct { const char *root, *path, *want; } rows[] = {
      /* 0 */ {nullptr, "C:\\KORV5\\EXE", "/KORV5/EXE"},
      /* 1 */ {nullptr, "c:\\", "/"},
      /* 2 */ {"/r", "C:\\KORV5\\", "/r/C/KORV5/"},
      /* 3 */ {"/r/", "d:", "/r/D"},
      /* 4 */ {"/r", "EXE\\X", "EXE/X"},
      /* 5 */ {"/r", "/tmp/x", "/tmp/x"},
      /* 6 */ {"/r", "\\A", "/r/C/A"},
      /* 7 */ {"/r", "..", ".."},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; i++) {
    inst_host_set_root(rows[i].root);
    char buffer[64];
    memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(inst_host_native_path(rows[i].path, buffer, sizeof buffer), 1) << "row " << i;
    EXPECT_STREQ(buffer, rows[i].want) << "row " << i;
  }
  // Exact fit and one too small.
  inst_host_set_root("/r");
  char small[12];
  EXPECT_EQ(inst_host_native_path("C:\\ABCDEF", small, 12), 1);   // "/r/C/ABCDEF" is 11
  EXPECT_STREQ(small, "/r/C/ABCDEF");
  EXPECT_EQ(inst_host_native_path("C:\\ABCDEFG", small, 12), 0);
  EXPECT_STREQ(small, "");
  EXPECT_EQ(inst_host_native_path(nullptr, small, 12), 0);
  inst_host_reset();
}

TEST(InstHost, ProgramsGetTheirArgumentAndExitCode) {
  kxtest::ScratchDir scratch;
  inst_host_reset();
  inst_host_set_root(scratch.path().c_str());
  fs::create_directory(scratch.file("C"));
  kxtest::write_bytes(scratch.file("C/P.EXE"), "#!/bin/sh\n[ \"$1\" = \"-r\" ] && exit 4\nexit 5\n");
  kxtest::write_bytes(scratch.file("C/B"), "b");
  fs::permissions(scratch.file("C/P.EXE"), fs::perms::owner_all);
  struct { const char *program, *argument, *directory; Flag ok; int32_t code; } rows[] = {
      /* 0 */ {"C:\\P.EXE", "-r", nullptr, 1, 4},
      /* 1 */ {"C:\\P.EXE", nullptr, "C:\\", 1, 5},
      /* 2 */ {"C:\\B", nullptr, nullptr, 0, -1},              // not a program
      /* 3 */ {"C:\\P.EXE", nullptr, "C:\\NOWHERE", 0, -1},
  };
  for (size_t i = 0; i < 4; i++) {
    int32_t code = -1;
    EXPECT_EQ(plat_run_and_wait(rows[i].program, rows[i].argument, rows[i].directory, &code),
              rows[i].ok) << "row " << i;
    EXPECT_EQ(code, rows[i].code) << "row " << i;
  }
  inst_host_reset();
}
#endif
