// test_inst_parts.cpp - the pieces of the install: UNINST.LST records joined and cut, and long
// paths refused.
#include "tests/inst/test_inst_fixture.h"

#include "platform/inst_plat.h"
#include "platform/reg.h"
#include "store/wco.h"

#include <string.h>

using insttest::file_record;
using insttest::InstallTest;
using insttest::Medium;
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
  struct {
    int kind;
    const char *a, *b, *c;
    std::string want;
  } rows[] = {
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
  const size_t before = 1;  // DISKLIST.LST, copied before the abort
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
