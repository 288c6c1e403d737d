// End-to-end checks after faults of the target and the source during an install.
//
// The setting of run.sh (check_lib.h), and:
//   KX_E2E_STOP     installed name of the list record at which the transfer stopped
//   KX_E2E_AHEAD    paths (relative to the target, separated by |) recorded for that record and
//                   the ones the loop still tried after it (the parts a full disk left)
//   KX_E2E_INSTLIST "lines": INST.LST holds the lines of the records before the stop; "any":
//                   the full disk may have kept them out (INST.LST must still be there)
//   KX_E2E_CUT      path (relative to the target) of the file a full disk cut short
//   KX_E2E_FOREIGN  directories (relative, separated by |) that the scenario made, not the install
//   KX_E2E_SAVED    (FaultsRemoved) a copy of UNINST.LST taken before the uninstaller ran
#include "tests/e2e/check_lib.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace e2e;

namespace {

std::vector<std::string> split(const std::string &text) {
  std::vector<std::string> v;
  size_t at = 0;
  while (at < text.size()) {
    size_t bar = text.find('|', at);
    if (bar == std::string::npos) bar = text.size();
    if (bar > at) v.push_back(text.substr(at, bar - at));
    at = bar + 1;
  }
  return v;
}

bool foreign(const std::string &relative) {
  for (const std::string &f : split(env("KX_E2E_FOREIGN"))) {
    std::string d = upper(strip_slash(f)) + "\\";
    std::string r = upper(relative);
    if (r == d || r + "\\" == d || r.compare(0, d.size(), d) == 0) return true;
  }
  return false;
}

size_t stop_index(const Expect &e) {
  std::string name = env("KX_E2E_STOP");
  for (size_t i = 0; i < e.list.records.size(); i++)
    if (e.list.records[i].name == name) return i;
  ADD_FAILURE() << "KX_E2E_STOP " << name << " is not in the list";
  return e.list.records.size();
}

// UNINST.LST's records; its bytes must be whole records (a torn tail is cut off at the close).
std::vector<UninstRecord> records_of(const std::string &path) {
  std::string why;
  std::vector<UninstRecord> v = read_uninst(path, &why);
  EXPECT_EQ("", why) << path;
  return v;
}

}  // namespace

// UNINST.LST: the steps before the transfer, the files before the stop, the records written
// ahead of the files the loop was making when it stopped, and INST.LST; nothing after.
TEST(FaultStopped, ListsEndAtTheFault) {
  Expect e = expect_from_env();
  ASSERT_TRUE(e.list.ok) << env("KX_E2E_LIST");
  size_t at = stop_index(e);
  std::vector<UninstRecord> want = records_before_transfer(e);
  for (const UninstRecord &r : records_of_transfer(e, at)) want.push_back(r);
  for (const std::string &p : split(env("KX_E2E_AHEAD"))) want.push_back({0, e.target + p});
  want.push_back({0, e.target + "INST.LST"});
  std::vector<UninstRecord> seen = records_of(e.target + "UNINST.LST");
  EXPECT_EQ(shown(want), shown(seen));
  bool found = false;
  read_file(e.target + "INST.LST", &found);
  EXPECT_TRUE(found) << "INST.LST";
  if (env("KX_E2E_INSTLIST") == "lines") {
    bool crlf = false;
    std::vector<std::string> lines = read_lines(e.target + "INST.LST", &crlf);
    std::vector<std::string> want_lines = inst_lines(e, at);
    ASSERT_EQ(want_lines.size(), lines.size()) << "INST.LST lines";
    for (size_t i = 0; i < lines.size(); i++) EXPECT_EQ(shown(want_lines[i]), shown(lines[i])) << i;
  }
}

// Every file and directory in the target, the target with them, has a record, so that the
// uninstaller can take all of it.
TEST(FaultStopped, EverythingInTheTargetIsRecorded) {
  Expect e = expect_from_env();
  std::vector<UninstRecord> seen = records_of(e.target + "UNINST.LST");
  ASSERT_FALSE(seen.empty()) << "UNINST.LST";
  auto recorded = [&](int kind, const std::string &path) {
    for (const UninstRecord &r : seen)
      if (r.kind == kind && upper(r.path) == upper(path)) return true;
    return false;
  };
  EXPECT_TRUE(recorded(1, strip_slash(e.target))) << e.target;
  std::vector<std::string> files = tree(e.target);
  ASSERT_FALSE(files.empty());
  for (const std::string &f : files) {
    if (upper(f) == "UNINST.LST" || foreign(f)) continue;
    bool directory = !f.empty() && f.back() == '\\';
    EXPECT_TRUE(recorded(directory ? 1 : 0, e.target + (directory ? strip_slash(f) : f)))
        << f << " is not in UNINST.LST\n" << shown(seen);
  }
}

// The steps after the transfer did not run.
TEST(FaultStopped, NoLaterSteps) {
  Expect e = expect_from_env();
  EXPECT_FALSE(file_exists(e.target + "EXE\\SYSTEM.WCO"));
  EXPECT_FALSE(dir_exists(start_menu_group()));
  EXPECT_FALSE(reg_key_exists(HKEY_LOCAL_MACHINE, "SOFTWARE\\KORV"));
  EXPECT_FALSE(reg_key_exists(HKEY_CLASSES_ROOT, "d32_file"));
  EXPECT_TRUE(file_exists(e.target + "DISKLIST.LST")) << "the copied list stays after a failure";
}

// The file the full disk cut short: what was written stays, a true beginning of the file.
TEST(FaultCut, PartOfTheFileStays) {
  Expect e = expect_from_env();
  size_t at = stop_index(e);
  ASSERT_LT(at, e.list.records.size());
  std::string path = e.target + env("KX_E2E_CUT");
  bool found = false;
  std::string got = read_file(path, &found);
  ASSERT_TRUE(found) << path;
  std::string whole = read_file(payload_of(e.list.records[at]));
  EXPECT_GT(got.size(), 0u) << path;
  EXPECT_LT(got.size(), whole.size()) << path;
  EXPECT_TRUE(whole.compare(0, got.size(), got) == 0) << path << " is not the start of " << payload_of(e.list.records[at]);
}

// After the uninstaller: no file, directory or key of the saved list, and nothing in the target
// but what the scenario made.
TEST(FaultsRemoved, NothingOfTheInstallRemains) {
  Expect e = expect_from_env();
  std::vector<UninstRecord> records = records_of(env("KX_E2E_SAVED"));
  ASSERT_GT(records.size(), 3u);
  for (size_t i = 0; i < records.size(); i++) {
    const UninstRecord &r = records[i];
    std::string relative = upper(r.path).compare(0, e.target.size(), upper(e.target)) == 0
                               ? r.path.substr(e.target.size()) : std::string();
    if (!relative.empty() && foreign(relative)) continue;
    if (r.kind == 0) {
      EXPECT_FALSE(file_exists(r.path)) << i << ": " << r.path;
    }
    // The target itself may stay, empty: the running uninstaller leaves its own directory (EXE)
    // to the restart, which takes no more than that.
    bool kept = upper(r.path) == upper(strip_slash(e.target));
    if (r.kind == 1 && !kept) {
      EXPECT_FALSE(dir_exists(r.path)) << i << ": " << r.path;
    }
    if (r.kind == 2) {
      EXPECT_FALSE(reg_key_exists(HKEY_CLASSES_ROOT, r.path)) << i << ": " << r.path;
    }
    if (r.kind == 3) {
      EXPECT_FALSE(reg_key_exists(HKEY_LOCAL_MACHINE, r.path)) << i << ": " << r.path;
    }
  }
  std::vector<std::string> left = tree(e.target);
  std::string all;
  for (const std::string &f : left)
    if (!foreign(f)) all += " " + f;
  EXPECT_EQ("", all) << "left in the target";
  EXPECT_FALSE(file_exists(e.target + "UNINST.LST"));
}
