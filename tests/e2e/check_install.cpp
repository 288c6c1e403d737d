// check_install.cpp - the checks of the end-to-end scenarios, one test suite per scenario. The
// driver (run.sh) runs this program after the robot with --gtest_filter=SUITE.* and the
// scenario's setting in the environment (check_lib.h).
#include "tests/e2e/check_lib.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace e2e;

namespace {

const char kAppPathKey[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\AppPaths\\KORV5.EXE";
const char kUninstallKey[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\KORVEX";
const char kConfigKey[] = "SOFTWARE\\KORV\\KORVEX\\5";
const char kDescription[] = "KORVEX - Návrhový systém pro elektroniku 5.003-016";

Expect setting() {
  Expect e = expect_from_env();
  e.pfu = env("KX_E2E_PFU") != "0";
  return e;
}

std::string program_dir(const Expect &e) { return e.target + "EXE\\"; }

std::vector<UninstRecord> uninst(const Expect &e) {
  std::string why;
  std::vector<UninstRecord> v = read_uninst(e.target + "UNINST.LST", &why);
  EXPECT_EQ("", why) << "UNINST.LST bytes";
  return v;
}

// ---- the checks of a complete install ------------------------------------------------------

void check_list_read(const Expect &e) {
  ASSERT_TRUE(e.list.ok) << "the medium's list " << env("KX_E2E_LIST");
  ASSERT_FALSE(e.target.empty());
}

void check_files(const Expect &e) {
  check_list_read(e);
  // The last alternative executable of each directory is its KORV5.EXE.
  std::vector<std::pair<std::string, std::string>> main_of_dir;  // dir, payload file
  for (const ListRecord &r : e.list.records) {
    if (skipped(e, r)) {
      EXPECT_FALSE(file_exists(installed_path(e.target, r))) << "skipped " << r.name << " is there";
      continue;
    }
    if (is_alternative(r.name)) {
      EXPECT_FALSE(file_exists(installed_path(e.target, r))) << r.name << " stayed under its own name";
      main_of_dir.erase(std::remove_if(main_of_dir.begin(), main_of_dir.end(),
                                       [&](const std::pair<std::string, std::string> &m) { return m.first == r.dir; }),
                        main_of_dir.end());
      main_of_dir.push_back({r.dir, payload_of(r)});
      continue;
    }
    if (upper(r.name) == "KORV5.EXE") continue;  // may be replaced; checked below
    bool found = false;
    std::string got = read_file(installed_path(e.target, r), &found);
    EXPECT_TRUE(found) << installed_path(e.target, r) << " missing";
    EXPECT_TRUE(got == read_file(payload_of(r))) << installed_path(e.target, r) << " differs from " << payload_of(r);
  }
  for (const ListRecord &r : e.list.records)
    if (upper(r.name) == "KORV5.EXE" && !skipped(e, r)) {
      bool replaced = false;
      for (auto &m : main_of_dir) replaced |= m.first == r.dir;
      if (!replaced) main_of_dir.push_back({r.dir, payload_of(r)});
    }
  for (auto &m : main_of_dir) {
    std::string path = e.target + (m.first == "." ? std::string() : m.first + "\\") + "KORV5.EXE";
    EXPECT_TRUE(read_file(path) == read_file(m.second)) << path << " is not " << m.second;
  }
  if (e.readme) {
    EXPECT_TRUE(read_file(e.target + "README.TXT") == read_file(env("KX_E2E_README"))) << "README.TXT";
  }
}

// The target holds the installed files, the lists, SYSTEM.WCO, PFU_LIST.PFU and Navrhy, and
// nothing else: no packed copy, no DISKLIST.LST, no alternative executable.
void check_tree(const Expect &e) {
  check_list_read(e);
  std::vector<std::string> want = {"INST.LST", "UNINST.LST", "Navrhy\\", "EXE\\", "EXE\\SYSTEM.WCO"};
  if (e.pfu) want.push_back("EXE\\PFU_LIST.PFU");
  if (e.readme) want.push_back("README.TXT");
  for (const ListRecord &r : e.list.records) {
    if (skipped(e, r)) continue;
    std::string dir = r.dir == "." ? std::string() : r.dir + "\\";
    if (!dir.empty()) want.push_back(dir);
    want.push_back(dir + (is_alternative(r.name) ? std::string("KORV5.EXE") : r.name));
  }
  std::vector<std::string> seen;
  for (const std::string &f : tree(e.target))  // the stand-in programs' logs are not the install's
    if (f.size() < 4 || f.compare(f.size() - 4, 4, ".RAN") != 0) seen.push_back(f);
  auto norm = [](std::vector<std::string> v) {
    for (std::string &s : v) s = upper(s);
    std::sort(v.begin(), v.end());
    v.erase(std::unique(v.begin(), v.end()), v.end());
    return v;
  };
  std::vector<std::string> w = norm(want), s = norm(seen), extra, missing;
  std::set_difference(s.begin(), s.end(), w.begin(), w.end(), std::back_inserter(extra));
  std::set_difference(w.begin(), w.end(), s.begin(), s.end(), std::back_inserter(missing));
  std::string x, m;
  for (auto &p : extra) x += " " + p;
  for (auto &p : missing) m += " " + p;
  EXPECT_TRUE(extra.empty()) << "in the target but not installed:" << x;
  EXPECT_TRUE(missing.empty()) << "missing in the target:" << m;
}

void check_inst_list(const Expect &e, size_t upto) {
  bool crlf = false, found = false;
  read_file(e.target + "INST.LST", &found);
  ASSERT_TRUE(found) << "INST.LST";
  std::vector<std::string> seen = read_lines(e.target + "INST.LST", &crlf), want = inst_lines(e, upto);
  EXPECT_TRUE(crlf) << "INST.LST lines end in CR LF";
  ASSERT_EQ(want.size(), seen.size()) << "INST.LST lines";
  for (size_t i = 0; i < want.size(); i++) EXPECT_EQ(shown(want[i]), shown(seen[i])) << "INST.LST line " << i + 1;
}

// A fresh list, or one appended to the list that was there before (KX_E2E_APPENDED=1: the
// saved list KX_E2E_SAVED, whose records stay in front).
void check_uninst_full(const Expect &e) {
  check_list_read(e);
  std::vector<UninstRecord> seen = uninst(e);
  if (env_flag("KX_E2E_APPENDED")) {
    size_t old = read_file(env("KX_E2E_SAVED")).size() / 1028;
    ASSERT_GE(seen.size(), old);
    seen.erase(seen.begin(), seen.begin() + (long)old);
  }
  expect_records(seen, records_of_full_install(e));
}

void check_wco(const Expect &e) {
  bool found = false;
  std::string text = read_file(e.target + "EXE\\SYSTEM.WCO", &found);
  ASSERT_TRUE(found) << "SYSTEM.WCO";
  EXPECT_EQ(0u, text.find("Konfiguracni soubor KORVEX\r\n\r\n")) << "the header line";
  // The library paths: the install's own, or those of a configuration taken over.
  std::string lib = env("KX_E2E_LIBROOT").empty() ? e.target : env("KX_E2E_LIBROOT");
  std::string navrhy = env("KX_E2E_NAVRHY").empty() ? e.target + "Navrhy" : env("KX_E2E_NAVRHY");
  const struct {
    const char *section, *key;
    std::string value;
  } kKeys[] = {
      {"CO_common", "system_path", e.target.substr(2)},
      {"CO_common", "initial_directory", navrhy},
      {"CO_schematic", "schema_default_library_path", lib + "SLIB\\"},
      {"CO_layout", "layout_default_library_path", lib + "LLIB\\"},
      {"CO_edit", "edit_default_library_path", lib + "ELIB\\"},
      {"CO_simulator", "default_model_library_path", lib + "MLIB\\"},
  };
  for (size_t i = 0; i < sizeof kKeys / sizeof kKeys[0]; i++) {
    bool has = false;
    std::string v = wco_value(text, kKeys[i].section, kKeys[i].key, &has);
    EXPECT_TRUE(has) << "row " << i << ": " << kKeys[i].section << " " << kKeys[i].key;
    EXPECT_EQ(shown(kKeys[i].value), shown(v)) << "row " << i << ": " << kKeys[i].key;
  }
}

void check_links(const Expect &e) {
  std::string group = start_menu_group(), prog = program_dir(e);
  std::string navrhy = e.target + "Navrhy";
  const struct {
    bool made;
    std::string file, path, description, workdir;
  } kLinks[] = {
      {true, group + "\\KORVEX.LNK", prog + "KORV5.EXE", kDescription, navrhy},
      {true, group + "\\Konfigurace KORVEX.LNK", prog + "CONFIG.EXE", "Konfigurace KORVEX", strip_slash(e.target + "EXE")},
      {true, group + "\\Odinstalace KORVEX.LNK", prog + "UNINSTAL.EXE", "Odinstalace KORVEX", strip_slash(e.target)},
      {e.desktop, desktop_folder() + "\\KORVEX.LNK", prog + "KORV5.EXE", kDescription, navrhy},
      {e.quick, quick_launch_folder() + "\\KORVEX.LNK", prog + "KORV5.EXE", kDescription, navrhy},
  };
  EXPECT_TRUE(dir_exists(group)) << group;
  CoInitialize(nullptr);
  for (size_t i = 0; i < sizeof kLinks / sizeof kLinks[0]; i++) {
    const auto &k = kLinks[i];
    EXPECT_EQ(k.made, file_exists(k.file)) << "row " << i << ": " << k.file;
    if (!k.made) continue;
    Link l = read_link(k.file);
    EXPECT_TRUE(l.loaded) << "row " << i << ": " << k.file;
    EXPECT_EQ(shown(k.path), shown(l.path)) << "row " << i << ": target";
    EXPECT_EQ(shown(k.description), shown(l.description)) << "row " << i << ": description";
    EXPECT_EQ(shown(k.workdir), shown(l.workdir)) << "row " << i << ": working directory";
  }
  CoUninitialize();
}

void check_registry(const Expect &e) {
  std::string prog = program_dir(e), open = prog + "KORV5.EXE \"%1\"";
  const struct {
    HKEY root;
    std::string key;
    const char *value;
    std::string data;
  } kValues[] = {
      {HKEY_LOCAL_MACHINE, kAppPathKey, nullptr, prog + "KORV5.EXE"},
      {HKEY_LOCAL_MACHINE, kAppPathKey, "Path", strip_slash(prog)},
      {HKEY_LOCAL_MACHINE, kUninstallKey, "DisplayName", "KORVEX V5.003-016"},
      {HKEY_LOCAL_MACHINE, kUninstallKey, "UninstallString", prog + "UNINSTAL.EXE"},
      {HKEY_CLASSES_ROOT, ".d32", nullptr, "d32_file"},
      {HKEY_CLASSES_ROOT, ".s32", nullptr, "s32_file"},
      {HKEY_CLASSES_ROOT, ".l32", nullptr, "l32_file"},
      {HKEY_CLASSES_ROOT, "d32_file", nullptr, "Soubor návrhu KORVEX"},
      {HKEY_CLASSES_ROOT, "s32_file", nullptr, "Knihovna značek KORVEX"},
      {HKEY_CLASSES_ROOT, "l32_file", nullptr, "Knihovna patic KORVEX"},
      {HKEY_CLASSES_ROOT, "d32_file\\DefaultIcon", nullptr, prog + "KORV5.EXE,-10"},
      {HKEY_CLASSES_ROOT, "s32_file\\DefaultIcon", nullptr, prog + "KORV5.EXE,-11"},
      {HKEY_CLASSES_ROOT, "l32_file\\DefaultIcon", nullptr, prog + "KORV5.EXE,-12"},
      {HKEY_CLASSES_ROOT, "d32_file\\Shell", nullptr, ""},
      {HKEY_CLASSES_ROOT, "s32_file\\Shell", nullptr, ""},
      {HKEY_CLASSES_ROOT, "l32_file\\Shell", nullptr, ""},
      {HKEY_CLASSES_ROOT, "d32_file\\Shell\\Open", nullptr, "&Otevřít"},
      {HKEY_CLASSES_ROOT, "s32_file\\Shell\\Open", nullptr, "&Otevřít"},
      {HKEY_CLASSES_ROOT, "l32_file\\Shell\\Open", nullptr, "&Otevřít"},
      {HKEY_CLASSES_ROOT, "d32_file\\Shell\\Open\\command", nullptr, open},
      {HKEY_CLASSES_ROOT, "s32_file\\Shell\\Open\\command", nullptr, open},
      {HKEY_CLASSES_ROOT, "l32_file\\Shell\\Open\\command", nullptr, open},
      {HKEY_LOCAL_MACHINE, "SOFTWARE\\KORV", nullptr, ""},
      {HKEY_LOCAL_MACHINE, "SOFTWARE\\KORV\\KORVEX", nullptr, ""},
      {HKEY_LOCAL_MACHINE, kConfigKey, "system_wco_path", e.target + "EXE\\SYSTEM.WCO"},
  };
  for (size_t i = 0; i < sizeof kValues / sizeof kValues[0]; i++) {
    const auto &k = kValues[i];
    std::string why, got = reg_text(k.root, k.key, k.value, &why);
    EXPECT_EQ("", why) << "row " << i << ": " << k.key;
    EXPECT_EQ(shown(k.data), shown(got)) << "row " << i << ": " << k.key << " " << (k.value ? k.value : "(default)");
  }
  // The misspelt form is the one written; the usual "App Paths" key is left alone.
  EXPECT_FALSE(reg_key_exists(HKEY_LOCAL_MACHINE, "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\KORV5.EXE"));
}

// PFU_LIST.PFU as the installed main program writes it when run so by hand.
void check_function_list(const Expect &e) {
  std::string pfu = e.target + "EXE\\PFU_LIST.PFU";
  if (!e.pfu) {
    EXPECT_FALSE(file_exists(pfu)) << pfu;
    return;
  }
  bool found = false;
  std::string got = read_file(pfu, &found);
  ASSERT_TRUE(found) << pfu;
  EXPECT_FALSE(got.empty());
  char temp[MAX_PATH];
  GetTempPathA(MAX_PATH, temp);
  std::string dir = std::string(temp) + "kx_e2e_pfu";
  CreateDirectoryA(dir.c_str(), nullptr);
  DeleteFileA((dir + "\\PFU_LIST.PFU").c_str());
  std::string cmd = "\"" + e.target + "EXE\\KORV5.EXE\" $f";
  STARTUPINFOA si = {};
  si.cb = sizeof si;
  PROCESS_INFORMATION pi;
  std::vector<char> line(cmd.begin(), cmd.end());
  line.push_back(0);
  ASSERT_TRUE(CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, dir.c_str(), &si, &pi));
  WaitForSingleObject(pi.hProcess, 60000);
  DWORD code = 99;
  GetExitCodeProcess(pi.hProcess, &code);
  CloseHandle(pi.hProcess);
  CloseHandle(pi.hThread);
  EXPECT_EQ(0u, code);
  EXPECT_TRUE(got == read_file(dir + "\\PFU_LIST.PFU")) << "PFU_LIST.PFU differs from a run of KORV5.EXE $f";
}

// Nothing of the later steps: no SYSTEM.WCO, shortcuts or registry keys.
void check_no_later_steps(const Expect &e) {
  EXPECT_FALSE(file_exists(e.target + "EXE\\SYSTEM.WCO"));
  EXPECT_FALSE(dir_exists(start_menu_group()));
  EXPECT_FALSE(reg_key_exists(HKEY_LOCAL_MACHINE, kAppPathKey));
  EXPECT_FALSE(reg_key_exists(HKEY_LOCAL_MACHINE, kUninstallKey));
  EXPECT_FALSE(reg_key_exists(HKEY_LOCAL_MACHINE, "SOFTWARE\\KORV"));
  EXPECT_FALSE(reg_key_exists(HKEY_CLASSES_ROOT, "d32_file"));
  EXPECT_FALSE(reg_key_exists(HKEY_CLASSES_ROOT, ".d32"));
}

size_t index_of(const Expect &e, const std::string &name) {
  for (size_t i = 0; i < e.list.records.size(); i++)
    if (e.list.records[i].name == name) return i;
  ADD_FAILURE() << name << " is not in the list";
  return e.list.records.size();
}

}  // namespace

// Every check of a complete, successful install.
#define KX_INSTALL_TESTS(Suite)                                                   \
  TEST(Suite, InstalledFilesEqualThePayload) { check_files(setting()); }          \
  TEST(Suite, TargetHoldsNothingElse) { check_tree(setting()); }                  \
  TEST(Suite, InstListLines) {                                                    \
    Expect e = setting();                                                         \
    check_inst_list(e, e.list.records.size());                                    \
  }                                                                               \
  TEST(Suite, UninstListRecordsInOrder) { check_uninst_full(setting()); }         \
  TEST(Suite, SystemWcoPaths) { check_wco(setting()); }                           \
  TEST(Suite, Shortcuts) { check_links(setting()); }                              \
  TEST(Suite, RegistryValues) { check_registry(setting()); }                      \
  TEST(Suite, FunctionList) { check_function_list(setting()); }

KX_INSTALL_TESTS(FreshPacked)
KX_INSTALL_TESTS(FreshPlain)
KX_INSTALL_TESTS(Floppies)
KX_INSTALL_TESTS(MissingSkipped)
KX_INSTALL_TESTS(Alternatives)
KX_INSTALL_TESTS(SpaceJustEnough)
KX_INSTALL_TESTS(PreviousTakenOver)
KX_INSTALL_TESTS(PreviousNotTakenOver)
KX_INSTALL_TESTS(PreviousListOnly)
KX_INSTALL_TESTS(HelpAbsent)
KX_INSTALL_TESTS(MainProgramFails)
KX_INSTALL_TESTS(CzechTarget)

TEST(FreshPacked, ListIsPackedAndMultiDirectory) {
  Expect e = setting();
  check_list_read(e);
  EXPECT_NE(0, e.list.packed);
  size_t subdirs = 0;
  for (const ListRecord &r : e.list.records) subdirs += r.dir != ".";
  EXPECT_GE(subdirs, 3u);
}

TEST(FreshPlain, ListIsPlain) {
  Expect e = setting();
  check_list_read(e);
  EXPECT_EQ(0, e.list.packed);
}

TEST(Floppies, ListSpansDisks) {
  Expect e = setting();
  check_list_read(e);
  EXPECT_GE(e.list.records.back().disk, 2) << "at least three disks";
}

// The refused file ended the loop: the records before it, then INST.LST, and nothing later.
TEST(MissingRefused, ListsEndAtTheMissingFile) {
  Expect e = setting();
  check_list_read(e);
  size_t at = index_of(e, env("KX_E2E_MISSING"));
  std::vector<UninstRecord> want = records_before_transfer(e);
  for (const UninstRecord &r : records_of_transfer(e, at)) want.push_back(r);
  want.push_back({0, e.target + "INST.LST"});
  expect_records(uninst(e), want);
  check_inst_list(e, at);
  check_no_later_steps(e);
}

TEST(Alternatives, LastAlternativeIsTheMainProgram) {
  Expect e = setting();
  check_list_read(e);
  const ListRecord *last = nullptr;
  size_t count = 0;
  for (const ListRecord &r : e.list.records)
    if (is_alternative(r.name)) last = &r, count++;
  ASSERT_GE(count, 2u) << "the medium has two alternatives at least";
  EXPECT_TRUE(read_file(e.target + last->dir + "\\KORV5.EXE") == read_file(payload_of(*last))) << last->name;
}

// No to the overwrite question: the lists up to the target's record, the file untouched.
TEST(OverwriteRefused, NothingDeletedOrCopied) {
  Expect e = setting();
  check_list_read(e);
  expect_records(uninst(e), records_before_transfer(e));
  EXPECT_FALSE(file_exists(e.target + "INST.LST"));
  std::string kept = env("KX_E2E_EXISTING");
  EXPECT_EQ(shown(std::string("stary soubor\r\n")), shown(read_file(e.target + kept))) << kept;
  check_no_later_steps(e);
}

// Stopped by the abort button: UNINST.LST is the start of a full install's list (with the
// INST.LST record when the loop had begun), every file recorded so far is there, every file in
// the target is recorded.
TEST(AbortStops, FilesSoFarRecorded) {
  Expect e = setting();
  check_list_read(e);
  std::vector<UninstRecord> seen = uninst(e), full = records_of_full_install(e);
  size_t before = records_before_transfer(e).size(), n = seen.size();
  bool inst_record = n > before && seen.back() == UninstRecord{0, e.target + "INST.LST"};
  if (inst_record) n--;
  ASSERT_GE(n, before) << shown(seen);
  std::vector<UninstRecord> head(seen.begin(), seen.begin() + (long)n), want(full.begin(), full.begin() + (long)n);
  expect_records(head, want);
  size_t transfer = records_of_transfer(e, e.list.records.size()).size();
  EXPECT_LT(n, before + transfer) << "the install was not stopped in the transfer loop";
  EXPECT_EQ(inst_record, n > before) << "INST.LST is recorded once the loop has begun";
  for (size_t i = 0; i < head.size(); i++)
    if (head[i].kind == 0 && head[i].path != e.target + "DISKLIST.LST" && !e.list.packed) {
      EXPECT_TRUE(file_exists(head[i].path)) << head[i].path;
    }
  for (const std::string &f : tree(e.target)) {
    if (f.back() == '\\' || f == "UNINST.LST" || f == "DISKLIST.LST" || f == "INST.LST") continue;
    bool recorded = false;
    for (const UninstRecord &r : head) recorded |= r.kind == 0 && upper(r.path) == upper(e.target + f);
    EXPECT_TRUE(recorded) << f << " is in the target but not recorded";
  }
  check_no_later_steps(e);
}

// The space check failed: lists up to the target's record, nothing copied.
TEST(SpaceShort, NothingCopied) {
  Expect e = setting();
  check_list_read(e);
  expect_records(uninst(e), records_before_transfer(e));
  EXPECT_FALSE(file_exists(e.target + "INST.LST"));
  check_no_later_steps(e);
}

// The removal question answered No, or the uninstaller failed: the earlier install is as it
// was (its saved UNINST.LST is KX_E2E_SAVED).
TEST(PreviousKept, EarlierInstallUnchanged) {
  Expect e = setting();
  EXPECT_TRUE(read_file(e.target + "UNINST.LST") == read_file(env("KX_E2E_SAVED"))) << "UNINST.LST changed";
  EXPECT_TRUE(file_exists(e.target + "EXE\\SYSTEM.WCO"));
}

TEST(PreviousFails, UninstallerGotMinusR) {
  Expect e = setting();
  bool found = false;
  std::string log = read_file(e.target + "EXE\\UNINSTAL.EXE.RAN", &found);
  ASSERT_TRUE(found) << "the uninstaller did not run";
  EXPECT_EQ(shown(e.target + "EXE\\UNINSTAL.EXE|-r\r\n"), shown(log));
}

// A target with UNINST.LST but no EXE\UNINSTAL.EXE is no earlier install: the new records are
// appended to the old list.
TEST(PreviousListOnly, OldRecordsStayInFront) {
  Expect e = setting();
  check_list_read(e);
  std::string old = read_file(env("KX_E2E_SAVED"));
  std::string now = read_file(e.target + "UNINST.LST");
  ASSERT_GE(now.size(), old.size());
  EXPECT_TRUE(now.compare(0, old.size(), old) == 0);
}

TEST(MainProgramFails, MainProgramRanWithDollarF) {
  Expect e = setting();
  bool found = false;
  std::string log = read_file(e.target + "EXE\\KORV5.EXE.RAN", &found);
  ASSERT_TRUE(found) << "KORV5.EXE did not run";
  EXPECT_EQ(shown(e.target + "EXE\\KORV5.EXE|$f\r\n"), shown(log));
}

TEST(HelpQuestionYes, HelpInstallerRanWithItsPathOnly) {
  Expect e = setting();
  bool found = false;
  std::string log = read_file(e.target + "hhlppack\\hhupd.exe.RAN", &found);
  ASSERT_TRUE(found) << "hhupd.exe did not run";
  EXPECT_EQ(shown(e.target + "hhlppack\\hhupd.exe\r\n"), shown(log));
}

// After the installed uninstaller: nothing that the install recorded is left but the designs
// directory with the user's design and the target above it. KX_E2E_SAVED is UNINST.LST as the
// install left it.
TEST(Uninstalled, NothingOfTheInstallRemains) {
  Expect e = setting();
  std::string why;
  std::vector<UninstRecord> records = read_uninst(env("KX_E2E_SAVED"), &why);
  ASSERT_EQ("", why);
  ASSERT_GT(records.size(), 40u);
  std::string design = e.target + "Navrhy\\" + env("KX_E2E_DESIGN");
  EXPECT_EQ(shown(std::string("KX900 Design file \r\nmuj navrh\r\n")), shown(read_file(design))) << design;
  for (size_t i = 0; i < records.size(); i++) {
    const UninstRecord &r = records[i];
    switch (r.kind) {
      case 0: EXPECT_FALSE(file_exists(r.path)) << i << ": " << r.path; break;
      case 1:
        if (r.path == e.target + "Navrhy" || r.path == strip_slash(e.target)) {
          EXPECT_TRUE(dir_exists(r.path)) << r.path;
        } else {
          EXPECT_FALSE(dir_exists(r.path)) << i << ": " << r.path;
        }
        break;
      case 2: EXPECT_FALSE(reg_key_exists(HKEY_CLASSES_ROOT, r.path)) << i << ": " << r.path; break;
      case 3: EXPECT_FALSE(reg_key_exists(HKEY_LOCAL_MACHINE, r.path)) << i << ": " << r.path; break;
      default: ADD_FAILURE() << "kind " << r.kind;
    }
  }
  std::vector<std::string> left = tree(e.target);
  std::sort(left.begin(), left.end());
  std::string all;
  for (auto &f : left) all += " " + f;
  EXPECT_EQ(" Navrhy\\ Navrhy\\" + env("KX_E2E_DESIGN"), all) << "left in the target";
}
