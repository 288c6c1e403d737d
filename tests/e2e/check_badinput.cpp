// End-to-end checks of bad media and inputs beyond the list and the packed files: list fields
// without their terminating zero (BadinputNames), a decompression bomb beside a file that only
// grows five times (BadinputBomb), and an earlier SYSTEM.WCO that is no configuration file
// (BadinputWco). run.sh's scenario badinput (tests/e2e/scenarios/badinput.sh) runs them.
#include "tests/e2e/check_lib.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string.h>
#include <string>
#include <vector>

using namespace e2e;

namespace {

// The list as the installer takes it: names at most 16 characters, the description at most
// 80, whatever the medium's fields hold after that.
Expect cut_setting() {
  Expect e = expect_from_env();
  for (ListRecord &r : e.list.records) {
    r.name = r.name.substr(0, 16);
    r.stored = r.stored.substr(0, 16);
    r.dir = r.dir.substr(0, 16);
    r.description = r.description.substr(0, 80);
  }
  return e;
}

void expect_records(const std::string &list, const std::vector<UninstRecord> &want) {
  std::string why;
  std::vector<UninstRecord> seen = read_uninst(list, &why);
  EXPECT_EQ("", why) << list;
  expect_records(seen, want);
}

// INST.LST holds want, line for line, each line ending in CR LF.
void expect_inst_lines(const std::string &target, const std::vector<std::string> &want) {
  bool crlf = false, found = false;
  read_file(target + "INST.LST", &found);
  ASSERT_TRUE(found) << target << "INST.LST";
  std::vector<std::string> seen = read_lines(target + "INST.LST", &crlf);
  EXPECT_TRUE(crlf) << "INST.LST lines end in CR LF";
  ASSERT_EQ(want.size(), seen.size()) << "INST.LST lines";
  for (size_t i = 0; i < want.size(); i++) EXPECT_EQ(shown(want[i]), shown(seen[i])) << "INST.LST line " << i + 1;
}

// The target holds exactly want (paths relative to it, directories ending in "\"), without
// regard to case.
void expect_tree(const std::string &target, std::vector<std::string> want) {
  std::vector<std::string> seen = tree(target);
  auto norm = [](std::vector<std::string> &v) {
    for (std::string &s : v) s = upper(s);
    std::sort(v.begin(), v.end());
    v.erase(std::unique(v.begin(), v.end()), v.end());
  };
  norm(want);
  norm(seen);
  std::vector<std::string> extra, missing;
  std::set_difference(seen.begin(), seen.end(), want.begin(), want.end(), std::back_inserter(extra));
  std::set_difference(want.begin(), want.end(), seen.begin(), seen.end(), std::back_inserter(missing));
  std::string x, m;
  for (auto &p : extra) x += " " + shown(p);
  for (auto &p : missing) m += " " + shown(p);
  EXPECT_TRUE(extra.empty()) << "in the target but not installed:" << x;
  EXPECT_TRUE(missing.empty()) << "missing in the target:" << m;
}

// The files of an install besides those of the list.
std::vector<std::string> install_files(const Expect &e) {
  std::vector<std::string> v = {"INST.LST", "UNINST.LST", "Navrhy\\", "EXE\\", "EXE\\SYSTEM.WCO",
                                "EXE\\PFU_LIST.PFU"};
  if (e.readme) v.push_back("README.TXT");
  return v;
}

// SYSTEM.WCO: the header, every line one the store writes (a BEGIN or END line, an entry, an
// empty line; no control character), and the install's own paths under the six keys.
void expect_fresh_wco(const std::string &target) {
  bool found = false;
  std::string text = read_file(target + "EXE\\SYSTEM.WCO", &found);
  ASSERT_TRUE(found) << target << "EXE\\SYSTEM.WCO";
  EXPECT_EQ(0u, text.find("Konfiguracni soubor KORVEX\r\n\r\n")) << shown(text.substr(0, 60));
  bool crlf = false;
  std::vector<std::string> lines = read_lines(target + "EXE\\SYSTEM.WCO", &crlf);
  EXPECT_TRUE(crlf) << "SYSTEM.WCO lines end in CR LF";
  std::string open;
  for (size_t i = 1; i < lines.size(); i++) {
    const std::string &l = lines[i];
    bool control = std::any_of(l.begin(), l.end(), [](char c) { return (unsigned char)c < 32; });
    EXPECT_FALSE(control) << "line " << i + 1 << ": " << shown(l);
    if (l.empty()) continue;
    if (l.compare(0, 6, "BEGIN[") == 0 && l.back() == ']') {
      EXPECT_EQ("", open) << "line " << i + 1 << ": a section in a section";
      open = l.substr(6, l.size() - 7);
      EXPECT_FALSE(open.empty()) << "line " << i + 1;
    } else if (l.compare(0, 4, "END[") == 0) {
      EXPECT_EQ("END[" + open + "]", l) << "line " << i + 1;
      open.clear();
    } else {
      EXPECT_FALSE(open.empty()) << "line " << i + 1 << " outside a section: " << shown(l);
      EXPECT_TRUE(l.size() >= 45 && l.compare(0, 3, "   ") == 0 && l[3] != ' ' && l.compare(42, 3, "=  ") == 0)
          << "line " << i + 1 << " is no entry: " << shown(l);
    }
  }
  EXPECT_EQ("", open) << "the last section is not closed";
  const struct {
    const char *section, *key;
    std::string value;
  } kKeys[] = {
      {"CO_common", "system_path", target.substr(2)},
      {"CO_common", "initial_directory", target + "Navrhy"},
      {"CO_schematic", "schema_default_library_path", target + "SLIB\\"},
      {"CO_layout", "layout_default_library_path", target + "LLIB\\"},
      {"CO_edit", "edit_default_library_path", target + "ELIB\\"},
      {"CO_simulator", "default_model_library_path", target + "MLIB\\"},
  };
  for (size_t i = 0; i < sizeof kKeys / sizeof kKeys[0]; i++) {
    bool has = false;
    std::string v = wco_value(text, kKeys[i].section, kKeys[i].key, &has);
    EXPECT_TRUE(has) << "row " << i << ": " << kKeys[i].section << " " << kKeys[i].key;
    EXPECT_EQ(shown(kKeys[i].value), shown(v)) << "row " << i << ": " << kKeys[i].key;
  }
}

size_t index_of(const Expect &e, const std::string &name) {
  for (size_t i = 0; i < e.list.records.size(); i++)
    if (e.list.records[i].name == name) return i;
  return e.list.records.size();
}

}  // namespace

// ---- fields without their zero ---------------------------------------------------------------

// The medium really carries the fields that the other checks are about: a name, a stored name
// and a directory of 17 bytes and a description of 82, none with a zero.
TEST(BadinputNames, MediumHasFieldsWithoutZero) {
  Expect e = expect_from_env();
  ASSERT_TRUE(e.list.ok) << env("KX_E2E_LIST");
  size_t names = 0, stored = 0, dirs = 0, descriptions = 0;
  for (const ListRecord &r : e.list.records) {
    names += r.name.size() == 17;
    stored += r.stored.size() == 17;
    dirs += r.dir.size() == 17;
    descriptions += r.description.size() == 82;
  }
  EXPECT_EQ(1u, names);
  EXPECT_EQ(1u, stored);
  EXPECT_EQ(1u, dirs);
  EXPECT_EQ(1u, descriptions);
}

// Each record is installed under its cut names, from the stored file of the cut name (the
// medium also holds one of the 17-character name, with other bytes).
TEST(BadinputNames, InstalledUnderTheCutNames) {
  Expect e = cut_setting();
  ASSERT_TRUE(e.list.ok);
  for (const ListRecord &r : e.list.records) {
    bool found = false;
    std::string got = read_file(installed_path(e.target, r), &found);
    EXPECT_TRUE(found) << shown(installed_path(e.target, r)) << " missing";
    EXPECT_TRUE(got == read_file(payload_of(r))) << shown(installed_path(e.target, r)) << " is not " << payload_of(r)
                                                 << ": " << shown(got.substr(0, 40));
  }
}

// Nothing under a 17-character name, no README.TXT (the medium has none), nothing else.
TEST(BadinputNames, TargetHoldsNothingElse) {
  Expect e = cut_setting();
  ASSERT_TRUE(e.list.ok);
  EXPECT_FALSE(e.readme) << "the medium has a README.TXT";
  std::vector<std::string> want = install_files(e);
  for (const ListRecord &r : e.list.records) {
    std::string dir = r.dir == "." ? std::string() : r.dir + "\\";
    if (!dir.empty()) want.push_back(dir);
    want.push_back(dir + r.name);
  }
  expect_tree(e.target, want);
}

// INST.LST: the description cut at 80 characters, each control character a blank.
TEST(BadinputNames, InstListLines) {
  Expect e = cut_setting();
  ASSERT_TRUE(e.list.ok);
  std::vector<std::string> want;
  for (const ListRecord &r : e.list.records) {
    std::string d = r.description;
    for (char &c : d)
      if ((unsigned char)c < 32) c = ' ';
    want.push_back(installed_path(e.target, r) + " " + d);
  }
  ASSERT_EQ(2u, std::count_if(want.begin(), want.end(), [](const std::string &l) { return l.find("Popis") != std::string::npos; }));
  expect_inst_lines(e.target, want);
}

TEST(BadinputNames, UninstListRecordsInOrder) {
  Expect e = cut_setting();
  ASSERT_TRUE(e.list.ok);
  expect_records(e.target + "UNINST.LST", records_of_full_install(e));
}

TEST(BadinputNames, SystemWco) { expect_fresh_wco(expect_from_env().target); }

// ---- the bomb ----------------------------------------------------------------------------------

// BOMBA.BIN was stopped: no unpacked file, its packed copy stays as the medium has it.
TEST(BadinputBomb, BombNotUnpacked) {
  Expect e = expect_from_env();
  ASSERT_TRUE(e.list.ok);
  ASSERT_NE(e.list.packed, 0);
  size_t bomb = index_of(e, "BOMBA.BIN");
  ASSERT_LT(bomb, e.list.records.size()) << "no BOMBA.BIN in the list";
  const ListRecord &r = e.list.records[bomb];
  EXPECT_EQ(20000u, r.size);
  EXPECT_FALSE(file_exists(e.target + "BOMBA.BIN"));
  std::string medium = env("KX_E2E_LIST");
  medium = medium.substr(0, medium.size() - strlen("DISKLIST.LST")) + r.stored;
  std::string packed = read_file(medium);
  EXPECT_GT(packed.size(), 1000000u) << medium;
  EXPECT_TRUE(read_file(e.target + r.stored) == packed) << e.target << r.stored;
}

// PETKRAT.BIN, five times its declared size, is installed whole; so is everything else.
TEST(BadinputBomb, OtherFilesInstalled) {
  Expect e = expect_from_env();
  ASSERT_TRUE(e.list.ok);
  size_t five = index_of(e, "PETKRAT.BIN");
  ASSERT_LT(five, e.list.records.size());
  EXPECT_EQ(20000u, e.list.records[five].size);
  std::string plain = read_file(env("KX_E2E_SAVED"));
  ASSERT_EQ(100000u, plain.size()) << env("KX_E2E_SAVED");
  EXPECT_TRUE(read_file(e.target + "PETKRAT.BIN") == plain) << "PETKRAT.BIN";
  for (const ListRecord &r : e.list.records) {
    if (r.name == "BOMBA.BIN" || r.name == "PETKRAT.BIN") continue;
    std::string path = installed_path(e.target, r);
    EXPECT_TRUE(read_file(path) == read_file(payload_of(r))) << path;
  }
  std::vector<std::string> want = install_files(e);
  want.push_back(e.list.records[index_of(e, "BOMBA.BIN")].stored);
  for (const ListRecord &r : e.list.records) {
    if (r.name == "BOMBA.BIN") continue;
    std::string dir = r.dir == "." ? std::string() : r.dir + "\\";
    if (!dir.empty()) want.push_back(dir);
    want.push_back(dir + r.name);
  }
  expect_tree(e.target, want);
}

// The stopped file has its packed copy's record and no other, and no INST.LST line.
TEST(BadinputBomb, ListsWithoutTheBomb) {
  Expect e = expect_from_env();
  ASSERT_TRUE(e.list.ok);
  // The unpacked file's record may come before the unpacking (so that a file cut short by a
  // full disk is known): the records are compared without it.
  const UninstRecord unpacked{0, e.target + "BOMBA.BIN"};
  std::vector<UninstRecord> want = records_of_full_install(e);
  want.erase(std::remove(want.begin(), want.end(), unpacked), want.end());
  std::string why;
  std::vector<UninstRecord> seen = read_uninst(e.target + "UNINST.LST", &why);
  EXPECT_EQ("", why);
  EXPECT_LE(std::count(seen.begin(), seen.end(), unpacked), 1);
  seen.erase(std::remove(seen.begin(), seen.end(), unpacked), seen.end());
  expect_records(seen, want);
  std::vector<std::string> lines;
  for (const ListRecord &r : e.list.records)
    if (r.name != "BOMBA.BIN") lines.push_back(installed_path(e.target, r) + " " + r.description);
  expect_inst_lines(e.target, lines);
}

TEST(BadinputBomb, SystemWco) { expect_fresh_wco(expect_from_env().target); }

// ---- an earlier SYSTEM.WCO that is no configuration file -----------------------------------

// Written afresh with this install's paths; nothing of the old bytes in it.
TEST(BadinputWco, SystemWcoWrittenAfresh) { expect_fresh_wco(expect_from_env().target); }

// The earlier install's UNINST.LST was empty: it now holds this install's records alone.
TEST(BadinputWco, UninstListRecordsInOrder) {
  Expect e = expect_from_env();
  ASSERT_TRUE(e.list.ok);
  expect_records(e.target + "UNINST.LST", records_of_full_install(e));
  bool found = false;
  std::string ran = read_file(e.target + "EXE\\UNINSTAL.EXE.RAN", &found);
  ASSERT_TRUE(found) << "the earlier uninstaller did not run";
  EXPECT_EQ(shown(e.target + "EXE\\UNINSTAL.EXE|-r\r\n"), shown(ran));
}
