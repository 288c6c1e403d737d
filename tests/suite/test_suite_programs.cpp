// The suite's programs on the medium as processes under Wine: KORV5.EXE's function list and
// its start-up window, CONFIG.EXE's list, UNINSTAL.EXE on a hand-made installation (files,
// directories, registry keys of the prefix). The programs are found beside this test program's
// build directory (..\tools\). Where a configuration is looked for, and
// how it is repaired, the start-up's own tests pin down; the installed uninstaller answered
// "&Ano" is an end-to-end scenario.
#include "installer/startup.h"
#include "platform/reg.h"
#include "tests/support/kxtest.h"
#include "tests/toolkit/tk_watch.h"

#include <regex>
#include <set>

namespace {

std::string program(const char *name) {
  char self[MAX_PATH];
  GetModuleFileNameA(nullptr, self, sizeof self);
  std::string dir = self;
  return dir.substr(0, dir.rfind('\\') + 1) + "..\\tools\\" + name;
}

struct Expect {
  std::string title, button;
};

struct Child {
  DWORD code = 0xFFFF;
  std::vector<tk::Seen> seen;  // every window the program showed, in order
  std::string problems;        // a failed start, a timeout, windows not expected or missed
  std::string body(size_t i) const {
    std::string b;
    for (const std::string &s : seen.at(i).statics) b += (b.empty() ? "" : "\n") + s;
    return b;
  }
  std::string dump() const {
    std::string out = problems;
    for (size_t i = 0; i < seen.size(); i++) out += "\n  [" + seen[i].title + "] " + body(i);
    return out;
  }
};

// Runs exe with the command-line tail args in directory dir. Every visible top-level window of
// the child is read; the next expected one gets its button clicked, any other is closed and
// recorded as a problem.
Child run(const std::string &exe, const std::string &args, const std::string &dir,
        const std::vector<Expect> &expect) {
  Child r;
  std::string line = "\"" + exe + "\" " + args;
  STARTUPINFOA si = {};
  si.cb = sizeof si;
  PROCESS_INFORMATION pi;
  if (!CreateProcessA(exe.c_str(), &line[0], nullptr, nullptr, FALSE, 0, nullptr, dir.c_str(), &si, &pi))
    return r.problems = "cannot start " + exe, r;
  std::set<HWND> handled;
  size_t next = 0;
  for (DWORD start = GetTickCount(); WaitForSingleObject(pi.hProcess, 50) == WAIT_TIMEOUT;) {
    if (GetTickCount() - start > 30000) {
      TerminateProcess(pi.hProcess, 0xDEAD);
      WaitForSingleObject(pi.hProcess, 5000);
      r.problems += " timed out";
      break;
    }
    for (HWND w = nullptr; (w = FindWindowExA(nullptr, w, nullptr, nullptr)) != nullptr;) {
      DWORD pid = 0;
      GetWindowThreadProcessId(w, &pid);
      if (pid != pi.dwProcessId || !IsWindowVisible(w) || !handled.insert(w).second) continue;
      Sleep(100);  // let the window finish painting its items
      r.seen.push_back(tk::read_window(w));
      HWND b = next < expect.size() && r.seen.back().title == expect[next].title
                   ? tk::find_button(w, expect[next].button) : nullptr;
      if (b) next++;
      else r.problems += " unexpected: [" + r.seen.back().title + "]";
      PostMessageA(b ? b : w, b ? BM_CLICK : WM_CLOSE, 0, 0);
    }
  }
  GetExitCodeProcess(pi.hProcess, &r.code);
  CloseHandle(pi.hThread);
  CloseHandle(pi.hProcess);
  if (next < expect.size()) r.problems += " never came: [" + expect[next].title + "]";
  return r;
}

// ---- PFU_LIST.PFU ------------------------------------------------------------------------------

TEST(Korv5, FunctionListIsWrittenWholeAndParses) {
  // Seven lines a function, each with CR LF, and KONEC at the end.
  const std::regex function(
    "ID_CODE  : (\\d+)\r\nTEXT     : ([^\r\n]*)\r\nHELP     : ([^\r\n]*)\r\nCONFIG   : ([^\r\n]*)\r\n"
    "HELP_CODE: (\\d+)\r\nFT_TYPE  : 0x([0-9A-F]{4})\r\n \r\n");
  // "$f" and "$F" alike are the start-up's tests; the installed program's list is an end-to-end check.
  kxtest::ScratchDir scratch;
  Child r = run(program("KORV5.exe"), "$F", scratch.path(), {});
  EXPECT_EQ("", r.problems) << r.dump();
  EXPECT_EQ(0u, r.code);
  std::string data = kxtest::read_bytes(scratch.file("PFU_LIST.PFU"));
  std::set<std::string> ids, names;
  std::string first, last_config = "(none)";
  std::smatch m;
  size_t at = 0;
  while (std::regex_search(data.cbegin() + at, data.cend(), m, function, std::regex_constants::match_continuous)) {
    at += m.length(0);
    unsigned type = std::stoul(m.str(6), nullptr, 16);
    EXPECT_TRUE(ids.insert(m.str(1)).second) << "id twice: " << m.str(1);
    EXPECT_NE(std::string::npos, m.str(2).find('&')) << m.str(1) << ": " << m.str(2);
    EXPECT_NE("", m.str(3)) << m.str(1);
    EXPECT_TRUE(m.str(4).empty() || names.insert(m.str(4)).second) << "name twice: " << m.str(4);
    EXPECT_EQ(0u, type & 0x0080) << m.str(1) << ": an unlisted function is listed";
    EXPECT_NE(0u, type & 0x007F) << m.str(1) << ": available in no mode";
    if (first.empty()) first = m.str(1) + "|" + m.str(2) + "|" + m.str(3) + "|" + m.str(4) + "|" + m.str(5) + "|" + m.str(6);
    last_config = m.str(4);
  }
  EXPECT_EQ("KONEC\r\n", data.substr(at)) << "at byte " << at << " of " << data.size();
  EXPECT_EQ(37u, ids.size());
  EXPECT_EQ("1001|&Nový návrh|Založí nový prázdný návrh|file_new|100|0001", first);
  EXPECT_EQ("", last_config) << "the last function has no configuration name";
}

// ---- The start-up window and the configuration ---------------------------------------------

const Expect KORV5_END = {"KORVEX 5 - ukázkový hlavní program", "&Konec"};
const Expect CONFIG_END = {"KORVEX 5 - systémová konfigurace", "&Konec"};

void set_values(const std::string &user, const std::string &system) {
  ASSERT_EQ(1, reg_set_string(REG_ROOT_CURRENT_USER, STARTUP_REGISTRY_KEY, STARTUP_USER_VALUE, user.c_str()));
  ASSERT_EQ(1, reg_set_string(REG_ROOT_LOCAL_MACHINE, STARTUP_REGISTRY_KEY, STARTUP_SYSTEM_VALUE, system.c_str()));
}

// The programs copied into PROG\EXE, as an installation elsewhere would hold them.
class Startup : public ::testing::Test {
 protected:
  void SetUp() override {
    set_values("", "");
    prog_ = scratch_.path() + "\\PROG\\EXE\\";
    CreateDirectoryA((scratch_.path() + "\\PROG").c_str(), nullptr);
    CreateDirectoryA(prog_.c_str(), nullptr);
    for (const char *p : {"KORV5", "CONFIG"})
      ASSERT_TRUE(CopyFileA(program((p + std::string(".exe")).c_str()).c_str(), (prog_ + p + ".EXE").c_str(), FALSE));
  }
  void TearDown() override { set_values("", ""); }
  kxtest::ScratchDir scratch_;
  std::string prog_;
};

TEST_F(Startup, WindowNamesTheDesignAndTheConfigurationFound) {
  // Which file is found first is the start-up's test; here the program's own one, or none.
  const std::string own = prog_ + "SYSTEM.WCO";
  const std::string wco = "Konfigurace KORVEX\r\n\r\nBEGIN[CO_common]\r\n   marker = x\r\nEND[CO_common]\r\n";
  const struct {
    bool own;
    std::string args, config, design;
  } rows[] = {
      /* 0 */ {true, "\"C:\\Návrhy\\zesilovač\"", own, "C:\\Návrhy\\zesilovač.D32"},
      /* 1 */ {false, "deska.pcb", "nenalezena, platí výchozí hodnoty", "deska.pcb"},
  };
  for (size_t i = 0; i < KX_COUNT(rows); i++) {
    SCOPED_TRACE(testing::Message() << "row " << i);
    DeleteFileA(own.c_str());
    if (rows[i].own) kxtest::write_bytes(own, wco);
    Child r = run(prog_ + "KORV5.EXE", rows[i].args, scratch_.path(), {KORV5_END});
    EXPECT_EQ("", r.problems) << r.dump();
    EXPECT_EQ(0u, r.code);
    ASSERT_EQ(1u, r.seen.size()) << r.dump();
    EXPECT_NE(std::string::npos, r.body(0).find("\nNávrh: " + rows[i].design + "\nKonfigurace: " + rows[i].config + "\n"))
        << r.body(0);
  }
}

TEST_F(Startup, ConfigListsTheSectionsAndKeysFoundOrEndsWithOne) {
  const std::string system = scratch_.file("SYS.WCO");
  ASSERT_TRUE(kxtest::write_bytes(
      system, "Konfigurace\r\n\r\nBEGIN[CO_layout]\r\n   grid = 25\r\nEND[CO_layout]\r\n"
              "BEGIN[CO_common]\r\n   marker = systém\r\n   a_first = 1\r\nEND[CO_common]\r\n"));
  for (int row = 0; row < 2; row++) {
    set_values("", row ? "" : system);
    Child r = run(prog_ + "CONFIG.EXE", "", scratch_.path(), {CONFIG_END});
    EXPECT_EQ("", r.problems) << r.dump();
    EXPECT_EQ(row ? 1u : 0u, r.code) << "row " << row;
    ASSERT_EQ(1u, r.seen.size()) << r.dump();
    EXPECT_EQ(row ? "Systémová konfigurace nebyla nalezena." : "Konfigurace: " + system, r.body(0));
    const std::vector<std::string> list = {"[CO_common]", "   a_first = 1", "   marker = systém", "[CO_layout]", "   grid = 25"};
    EXPECT_EQ(row ? std::vector<std::string>() : list, r.seen[0].list);
  }
}

// ---- UNINSTAL.EXE ----------------------------------------------------------------------------

// One UNINST.LST record, byte by byte: kind (little-endian), path, zeros to 1028 bytes.
std::string record(int kind, const std::string &path) {
  std::string r(1028, '\0');
  r[0] = (char)(kind & 0xFF);
  r[1] = (char)(kind >> 8);
  return r.replace(2, path.size(), path);
}

// Test keys of their own, so that nothing of a real installation in the prefix is touched;
// deepest first. The last of each root are the user's own, never recorded.
const char *const CLASS_KEYS[] = {".kxtest1", "kxtest1_file\\Shell\\Open\\command", "kxtest1_file\\Shell\\Open",
                                  "kxtest1_file\\Shell", "kxtest1_file", "kxtest2_file", "kxtest2_file\\Extra"};
const char *const MACHINE_KEYS[] = {"SOFTWARE\\KXTEST\\A\\B", "SOFTWARE\\KXTEST\\A", "SOFTWARE\\KXTEST",
                                    "SOFTWARE\\KXTEST2", "SOFTWARE\\KXTEST2\\Keep"};

void remove_test_keys() {
  for (const char *k : {"kxtest2_file\\Extra", ".kxtest1", "kxtest1_file\\Shell\\Open\\command",
                        "kxtest1_file\\Shell\\Open", "kxtest1_file\\Shell", "kxtest1_file", "kxtest2_file"})
    reg_delete_key(REG_ROOT_CLASSES, k);
  for (const char *k : {"SOFTWARE\\KXTEST\\A\\B", "SOFTWARE\\KXTEST\\A", "SOFTWARE\\KXTEST",
                        "SOFTWARE\\KXTEST2\\Keep", "SOFTWARE\\KXTEST2"})
    reg_delete_key(REG_ROOT_LOCAL_MACHINE, k);
}

// The file operations waiting for the next start of Windows, upper-cased, "|" after each name.
std::string pending_renames() {
  HKEY key;
  if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, "System\\CurrentControlSet\\Control\\Session Manager", 0, KEY_READ,
                    &key) != ERROR_SUCCESS)
    return "";
  std::vector<char> data(65536);
  DWORD size = (DWORD)data.size();
  LONG status = RegQueryValueExA(key, "PendingFileRenameOperations", nullptr, nullptr, (BYTE *)data.data(), &size);
  RegCloseKey(key);
  std::string text(data.data(), status == ERROR_SUCCESS ? size : 0);
  for (char &c : text) c = c ? (char)toupper((unsigned char)c) : '|';
  return text;
}

class Uninstall : public ::testing::Test {
 protected:
  void SetUp() override {
    remove_test_keys();
    root_ = scratch_.path() + "\\KORV5\\";
    for (const char *d : {"", "EXE", "SLIB", "LLIB", "Navrhy"})
      ASSERT_TRUE(CreateDirectoryA((root_ + d).c_str(), nullptr)) << d;
    ASSERT_TRUE(CopyFileA(program("UNINSTAL.exe").c_str(), (root_ + "EXE\\UNINSTAL.EXE").c_str(), FALSE));
    for (const char *f : {"README.TXT", "DISKLIST.LST", "EXE\\KORV5.EXE", "EXE\\SYSTEM.WCO", "SLIB\\A.S32",
                          "SLIB\\B.S32", "LLIB\\C.L32", "INST.LST", "Navrhy\\moje.d32", "LLIB\\vlastni.l32"})
      ASSERT_TRUE(kxtest::write_bytes(root_ + f, f)) << f;
    for (const char *k : CLASS_KEYS) ASSERT_EQ(1, reg_set_string(REG_ROOT_CLASSES, k, nullptr, "x")) << k;
    for (const char *k : MACHINE_KEYS) ASSERT_EQ(1, reg_set_string(REG_ROOT_LOCAL_MACHINE, k, "v", "x")) << k;
  }
  void TearDown() override { remove_test_keys(); }

  // The list as the installer writes it: README and DISKLIST, the directories (one record per
  // file they hold), Navrhy, the root, the files, INST.LST, the file types deepest first, the
  // machine keys parent first (as the configuration path's three records stand).
  std::string list() const {
    std::string l = record(0, root_ + "README.TXT") + record(0, root_ + "DISKLIST.LST");
    for (const char *d : {"EXE", "EXE", "EXE", "SLIB", "SLIB", "LLIB", "Navrhy"}) l += record(1, root_ + d);
    l += record(1, root_.substr(0, root_.size() - 1));
    for (const char *f : {"EXE\\KORV5.EXE", "EXE\\SYSTEM.WCO", "EXE\\UNINSTAL.EXE", "SLIB\\A.S32",
                          "SLIB\\B.S32", "LLIB\\C.L32", "INST.LST"})
      l += record(0, root_ + f);
    for (size_t i = 0; i < 6; i++) l += record(2, CLASS_KEYS[i]);
    for (int i = 3; i >= 0; i--) l += record(3, MACHINE_KEYS[i]);
    l += record(0, root_ + "EXE\\GONE.TXT");  // recorded, already gone
    l += record(7, root_ + "README.TXT");     // a kind of its own: passed over
    return l;
  }

  Child uninstall(const std::string &args, const std::vector<Expect> &expect = {}) {
    return run(root_ + "EXE\\UNINSTAL.EXE", args, scratch_.path(), expect);
  }

  void expect_untouched() {
    for (const char *f : {"README.TXT", "EXE\\KORV5.EXE", "SLIB\\A.S32", "INST.LST"})
      EXPECT_TRUE(kxtest::exists(root_ + f)) << f;
    EXPECT_EQ(1, reg_key_exists(REG_ROOT_CLASSES, ".kxtest1"));
    EXPECT_EQ(1, reg_key_exists(REG_ROOT_LOCAL_MACHINE, "SOFTWARE\\KXTEST\\A\\B"));
  }

  kxtest::ScratchDir scratch_;
  std::string root_;
};

TEST_F(Uninstall, RemovesExactlyWhatTheListRecords) {
  ASSERT_TRUE(kxtest::write_bytes(root_ + "UNINST.LST", list()));
  Child r = uninstall("-r");
  EXPECT_EQ("", r.problems) << r.dump();
  EXPECT_EQ(0u, r.code);
  for (const char *p : {"README.TXT", "DISKLIST.LST", "EXE\\KORV5.EXE", "EXE\\SYSTEM.WCO", "SLIB\\A.S32",
                        "SLIB\\B.S32", "LLIB\\C.L32", "INST.LST", "UNINST.LST", "SLIB"})
    EXPECT_FALSE(kxtest::exists(root_ + p)) << p;
  // The user's own files and the directories holding them stay; so do the running program and
  // its directory until Windows starts again.
  for (const char *p : {"Navrhy\\moje.d32", "LLIB\\vlastni.l32", "LLIB", "", "EXE\\UNINSTAL.EXE", "EXE"})
    EXPECT_TRUE(kxtest::exists(root_ + p)) << p;
  std::string pending = pending_renames(), program = root_ + "EXE\\UNINSTAL.EXE";
  for (char &c : program) c = (char)toupper((unsigned char)c);
  EXPECT_NE(std::string::npos, pending.find(program + "|")) << pending;
  EXPECT_NE(std::string::npos, pending.find(program.substr(0, program.size() - 13) + "|")) << pending;
  // Every recorded key goes, parent first or last, but one holding a key of the user's.
  for (size_t i = 0; i < KX_COUNT(CLASS_KEYS); i++)
    EXPECT_EQ(i >= 5 ? 1 : 0, reg_key_exists(REG_ROOT_CLASSES, CLASS_KEYS[i])) << CLASS_KEYS[i];
  for (size_t i = 0; i < KX_COUNT(MACHINE_KEYS); i++)
    EXPECT_EQ(i >= 3 ? 1 : 0, reg_key_exists(REG_ROOT_LOCAL_MACHINE, MACHINE_KEYS[i])) << MACHINE_KEYS[i];
  EXPECT_EQ(1, reg_key_exists(REG_ROOT_LOCAL_MACHINE, "SOFTWARE"));
}

TEST_F(Uninstall, AnsweredNoEndsWithTwoAndChangesNothing) {
  ASSERT_TRUE(kxtest::write_bytes(root_ + "UNINST.LST", list()));
  Child r = uninstall("", {{"Dotaz", "&Ne"}});
  EXPECT_EQ("", r.problems) << r.dump();
  EXPECT_EQ(2u, r.code);
  ASSERT_EQ(1u, r.seen.size()) << r.dump();
  EXPECT_EQ("Má být odstraněna instalace KORVEX z adresáře " + root_ + " ?", r.body(0));
  expect_untouched();
  EXPECT_TRUE(kxtest::exists(root_ + "UNINST.LST"));
}

TEST_F(Uninstall, MissingOrUnreadableListIsAnErrorAndChangesNothing) {
  for (int row = 0; row < 2; row++) {
    // 0: no list at all; 1: a list that another program holds open without sharing.
    HANDLE held = INVALID_HANDLE_VALUE;
    if (row) {
      ASSERT_TRUE(kxtest::write_bytes(root_ + "UNINST.LST", list()));
      held = CreateFileA((root_ + "UNINST.LST").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
      ASSERT_NE(INVALID_HANDLE_VALUE, held);
    }
    Child r = uninstall("-r", {{" Chyba ", "OK"}});
    if (row) CloseHandle(held);
    EXPECT_EQ("", r.problems) << r.dump();
    EXPECT_EQ(1u, r.code) << "row " << row;
    ASSERT_EQ(1u, r.seen.size()) << r.dump();
    EXPECT_EQ(row ? "Soubor " + root_ + "UNINST.LST nelze otevřít" : "Chybná cesta/soubor nenalezen: " + root_ + "UNINST.LST",
              r.body(0));
    expect_untouched();
  }
}

TEST_F(Uninstall, CutLastRecordIsIgnoredAndAnEmptyListRemovesOnlyItself) {
  // The whole records go; a record cut off by a broken install is not read.
  std::string cut = record(0, root_ + "README.TXT") + record(0, root_ + "INST.LST").substr(0, 1027);
  for (const std::string &l : {cut, std::string()}) {
    ASSERT_TRUE(kxtest::write_bytes(root_ + "UNINST.LST", l));
    Child r = uninstall("-r");
    EXPECT_EQ("", r.problems) << r.dump();
    EXPECT_EQ(0u, r.code);
    EXPECT_FALSE(kxtest::exists(root_ + "README.TXT"));
    EXPECT_FALSE(kxtest::exists(root_ + "UNINST.LST"));
    EXPECT_TRUE(kxtest::exists(root_ + "INST.LST"));
    EXPECT_TRUE(kxtest::exists(root_ + "EXE"));
  }
}

}  // namespace
