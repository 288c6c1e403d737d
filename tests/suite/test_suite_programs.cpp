// The suite's programs on the medium as processes under Wine: UNINSTAL.EXE on a hand-made
// installation (files, directories, registry keys of the prefix), KORV5.EXE's function list and
// its start-up window, CONFIG.EXE's list. The programs are found beside this test program's
// build directory (..\tools\), or in KX_SUITE_DIR.
//
// Windows the programs open are answered from here: every visible top-level window of the child
// is read (title, the texts of its statics in window order) and, when it is the next expected
// one, its button with the expected text is clicked; any other window is recorded and closed,
// and the test fails on it.
#include "installer/startup.h"
#include "tests/support/kxtest.h"
#include "win/reg.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <stdio.h>
#include <string.h>

#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::string programs_dir() {
  const char *env = getenv("KX_SUITE_DIR");
  if (env != nullptr && env[0] != '\0') {
    std::string dir = env;
    return dir.back() == '\\' ? dir : dir + "\\";
  }
  char self[MAX_PATH];
  GetModuleFileNameA(nullptr, self, sizeof self);
  std::string dir = self;
  dir = dir.substr(0, dir.rfind('\\') + 1);
  return dir + "..\\tools\\";
}

std::string program(const char *name) { return programs_dir() + name; }

// A window's text in code page 1250, whatever the ANSI code page.
std::string window_text(HWND window) {
  wchar_t wide[4096];
  int n = GetWindowTextW(window, wide, 4096);
  if (n <= 0) return "";
  char narrow[8192];
  int m = WideCharToMultiByte(1250, 0, wide, n, narrow, sizeof narrow, nullptr, nullptr);
  return std::string(narrow, m > 0 ? (size_t)m : 0);
}

std::string class_of(HWND window) {
  char name[64];
  return GetClassNameA(window, name, sizeof name) > 0 ? name : "";
}

BOOL CALLBACK add_child(HWND child, LPARAM p) {
  ((std::vector<HWND> *)p)->push_back(child);
  return TRUE;
}

std::vector<HWND> children(HWND window) {
  std::vector<HWND> list;
  EnumChildWindows(window, add_child, (LPARAM)&list);
  return list;
}

struct Seen {
  std::string title, body;
  std::vector<std::string> list;   // the items of a list box, when it has one
};

struct Expect {
  std::string title, button;
};

struct ChildRun {
  bool started = false, ended = false;
  DWORD code = 0xFFFF;
  std::vector<Seen> seen;
  std::vector<std::string> unexpected;
  std::string dump() const {
    std::ostringstream out;
    for (const Seen &s : seen) out << "  [" << s.title << "] " << s.body << "\n";
    for (const std::string &u : unexpected) out << "  unexpected: " << u << "\n";
    return out.str();
  }
};

Seen read_window(HWND window) {
  Seen s;
  s.title = window_text(window);
  for (HWND child : children(window)) {
    if (!IsWindowVisible(child)) continue;
    std::string cls = class_of(child);
    if (lstrcmpiA(cls.c_str(), "Static") == 0) {
      std::string text = window_text(child);
      if (!text.empty()) s.body += (s.body.empty() ? "" : "\n") + text;
    } else if (lstrcmpiA(cls.c_str(), "ListBox") == 0) {
      LRESULT count = SendMessageW(child, LB_GETCOUNT, 0, 0);
      for (LRESULT i = 0; i < count; i++) {
        wchar_t wide[2048] = {0};
        LRESULT n = SendMessageW(child, LB_GETTEXT, (WPARAM)i, (LPARAM)wide);
        char narrow[4096];
        int m = n > 0 ? WideCharToMultiByte(1250, 0, wide, (int)n, narrow, sizeof narrow,
                                            nullptr, nullptr)
                      : 0;
        s.list.push_back(std::string(narrow, m > 0 ? (size_t)m : 0));
      }
    }
  }
  return s;
}

HWND find_button(HWND window, const std::string &text) {
  for (HWND child : children(window))
    if (lstrcmpiA(class_of(child).c_str(), "Button") == 0 && window_text(child) == text)
      return child;
  return nullptr;
}

struct Search {
  DWORD pid;
  std::vector<HWND> found;
};

BOOL CALLBACK add_window(HWND window, LPARAM p) {
  Search *s = (Search *)p;
  DWORD pid = 0;
  GetWindowThreadProcessId(window, &pid);
  if (pid == s->pid && IsWindowVisible(window)) s->found.push_back(window);
  return TRUE;
}

// Runs exe with the command-line tail args in directory dir, answering the windows in order.
ChildRun run_child(const std::string &exe, const std::string &args, const std::string &dir,
        const std::vector<Expect> &expect, DWORD timeout_ms = 30000) {
  ChildRun result;
  std::string line = "\"" + exe + "\"" + (args.empty() ? "" : " " + args);
  std::vector<char> command(line.begin(), line.end());
  command.push_back('\0');
  STARTUPINFOA si;
  memset(&si, 0, sizeof si);
  si.cb = sizeof si;
  PROCESS_INFORMATION pi;
  if (!CreateProcessA(exe.c_str(), command.data(), nullptr, nullptr, FALSE, 0, nullptr,
                      dir.c_str(), &si, &pi)) {
    return result;
  }
  result.started = true;
  std::set<HWND> handled;
  size_t next = 0;
  DWORD start = GetTickCount();
  while (WaitForSingleObject(pi.hProcess, 50) == WAIT_TIMEOUT) {
    if (GetTickCount() - start > timeout_ms) {
      TerminateProcess(pi.hProcess, 0xDEAD);
      WaitForSingleObject(pi.hProcess, 5000);
      result.unexpected.push_back("timed out");
      break;
    }
    Search search{pi.dwProcessId, {}};
    EnumWindows(add_window, (LPARAM)&search);
    for (HWND window : search.found) {
      if (handled.count(window)) continue;
      Sleep(100);   // let the window finish painting its items
      Seen seen = read_window(window);
      handled.insert(window);
      HWND button = nullptr;
      if (next < expect.size() && seen.title == expect[next].title)
        button = find_button(window, expect[next].button);
      result.seen.push_back(seen);
      if (button != nullptr) {
        next++;
        PostMessageA(button, BM_CLICK, 0, 0);
      } else {
        result.unexpected.push_back("[" + seen.title + "] " + seen.body);
        PostMessageA(window, WM_CLOSE, 0, 0);
      }
    }
  }
  if (result.unexpected.empty() || result.unexpected.back() != "timed out") result.ended = true;
  GetExitCodeProcess(pi.hProcess, &result.code);
  CloseHandle(pi.hThread);
  CloseHandle(pi.hProcess);
  if (next < expect.size()) result.unexpected.push_back("never came: [" + expect[next].title + "]");
  return result;
}

// ---- PFU_LIST.PFU ------------------------------------------------------------------------------

struct Function {
  long id;
  std::string text, help, config;
  long help_code;
  unsigned type;
};

// Parses the whole file; every line must be one of the seven of a function, in order, or the
// final "KONEC". Returns false with a message at the first line that is not.
bool parse_function_list(const std::string &data, std::vector<Function> *out, std::string *why) {
  std::vector<std::string> lines;
  size_t at = 0;
  while (at < data.size()) {
    size_t end = data.find("\r\n", at);
    if (end == std::string::npos) {
      *why = "a line without CR LF at byte " + std::to_string(at);
      return false;
    }
    lines.push_back(data.substr(at, end - at));
    at = end + 2;
  }
  if (lines.empty() || lines.back() != "KONEC") {
    *why = "the last line is not KONEC";
    return false;
  }
  if ((lines.size() - 1) % 7 != 0) {
    *why = std::to_string(lines.size()) + " lines: not 7 per function and KONEC";
    return false;
  }
  for (size_t i = 0; i + 1 < lines.size(); i += 7) {
    const char *keys[6] = {"ID_CODE  : ", "TEXT     : ", "HELP     : ",
                           "CONFIG   : ", "HELP_CODE: ", "FT_TYPE  : "};
    for (int k = 0; k < 6; k++) {
      if (lines[i + k].compare(0, 11, keys[k]) != 0) {
        *why = "line " + std::to_string(i + k + 1) + " is not " + keys[k] + ": " + lines[i + k];
        return false;
      }
    }
    if (lines[i + 6] != " ") {
      *why = "line " + std::to_string(i + 7) + " is not one blank";
      return false;
    }
    Function f;
    char tail = 0;
    unsigned type = 0;
    if (sscanf(lines[i].c_str() + 11, "%ld%c", &f.id, &tail) != 1 ||
        sscanf(lines[i + 4].c_str() + 11, "%ld%c", &f.help_code, &tail) != 1 ||
        lines[i + 5].size() != 17 ||
        sscanf(lines[i + 5].c_str() + 11, "0x%4X%c", &type, &tail) != 1) {
      *why = "a number does not parse near line " + std::to_string(i + 1);
      return false;
    }
    f.type = type;
    f.text = lines[i + 1].substr(11);
    f.help = lines[i + 2].substr(11);
    f.config = lines[i + 3].substr(11);
    out->push_back(f);
  }
  return true;
}

TEST(Korv5, FunctionListIsWrittenWholeAndParses) {
  for (const char *sw : {"$f", "$F"}) {
    kxtest::ScratchDir scratch;
    ChildRun r = run_child(program("KORV5.exe"), sw, scratch.path(), {});
    ASSERT_TRUE(r.started) << program("KORV5.exe");
    EXPECT_TRUE(r.ended && r.unexpected.empty()) << sw << "\n" << r.dump();
    EXPECT_EQ(0u, r.code) << sw;
    std::string data = kxtest::read_bytes(scratch.file("PFU_LIST.PFU"));
    std::vector<Function> functions;
    std::string why;
    ASSERT_TRUE(parse_function_list(data, &functions, &why)) << sw << ": " << why;
    EXPECT_EQ(37u, functions.size()) << sw;
    std::set<long> ids;
    std::set<std::string> names;
    for (const Function &f : functions) {
      EXPECT_TRUE(ids.insert(f.id).second) << "id twice: " << f.id;
      EXPECT_NE(std::string::npos, f.text.find('&')) << f.id << ": " << f.text;
      EXPECT_FALSE(f.help.empty()) << f.id;
      EXPECT_EQ(0u, f.type & 0x0080) << f.id << ": an unlisted function is listed";
      EXPECT_NE(0u, f.type & 0x007F) << f.id << ": available in no mode";
      if (!f.config.empty()) {
        EXPECT_TRUE(names.insert(f.config).second) << f.config;
      }
    }
    ASSERT_GE(functions.size(), 2u);
    const Function &first = functions.front();
    EXPECT_EQ(1001, first.id);
    EXPECT_EQ("&Nový návrh", first.text);
    EXPECT_EQ("Založí nový prázdný návrh", first.help);
    EXPECT_EQ("file_new", first.config);
    EXPECT_EQ(100, first.help_code);
    EXPECT_EQ(0x0001u, first.type);
    const Function &last = functions.back();
    EXPECT_EQ(1702, last.id);
    EXPECT_EQ("", last.config) << "a function without a configuration name";
    EXPECT_EQ(0u, ids.count(1799)) << "the unlisted context help is listed";
  }
}

// ---- The start-up window and the configuration ---------------------------------------------

const char KORV5_TITLE[] = "KORVEX 5 - ukázkový hlavní program";
const char CONFIG_TITLE[] = "KORVEX 5 - systémová konfigurace";

std::string marker_file(const std::string &marker) {
  return "Konfigurace KORVEX\r\n\r\nBEGIN[CO_common]\r\n   marker = " + marker +
         "\r\nEND[CO_common]\r\n";
}

void set_values(const std::string &user, const std::string &system) {
  ASSERT_EQ(1, reg_set_string(REG_ROOT_CURRENT_USER, STARTUP_REGISTRY_KEY, STARTUP_USER_VALUE,
                              user.c_str()));
  ASSERT_EQ(1, reg_set_string(REG_ROOT_LOCAL_MACHINE, STARTUP_REGISTRY_KEY,
                              STARTUP_SYSTEM_VALUE, system.c_str()));
}

std::string upper(std::string text) {
  for (char &c : text) c = (char)toupper((unsigned char)c);
  return text;
}

class Startup : public ::testing::Test {
 protected:
  void SetUp() override {
    set_values("", "");
    // The programs copied into PROG\EXE, as an installation elsewhere would hold them.
    prog_ = scratch_.path() + "\\PROG\\EXE\\";
    CreateDirectoryA((scratch_.path() + "\\PROG").c_str(), nullptr);
    CreateDirectoryA(prog_.c_str(), nullptr);
    ASSERT_TRUE(CopyFileA(program("KORV5.exe").c_str(), (prog_ + "KORV5.EXE").c_str(), FALSE));
    ASSERT_TRUE(CopyFileA(program("CONFIG.exe").c_str(), (prog_ + "CONFIG.EXE").c_str(), FALSE));
  }
  void TearDown() override { set_values("", ""); }
  kxtest::ScratchDir scratch_;
  std::string prog_;
};

TEST_F(Startup, WindowNamesTheDesignAndTheConfigurationFound) {
  const std::string user = scratch_.file("USER.WCO"), system = scratch_.file("SYS.WCO");
  const std::string own = prog_ + "SYSTEM.WCO";
  ASSERT_TRUE(kxtest::write_bytes(user, marker_file("user")));
  ASSERT_TRUE(kxtest::write_bytes(system, marker_file("system")));
  struct Row {
    int n;
    std::string user, system;
    bool own;
    std::string args, found, design;
  } rows[] = {
      {1, user, system, true, "", user, "DESIGN.D32"},
      {2, "", system, true, "deska", system, "deska.D32"},
      {3, scratch_.file("GONE.WCO"), system, false, "-x deska.pcb", system, "deska.pcb"},
      {4, "", "", true, "\"C:\\Návrhy\\zesilovač\"", own, "C:\\Návrhy\\zesilovač.D32"},
      {5, "", "", false, "", "", "DESIGN.D32"},
  };
  for (const Row &r : rows) {
    set_values(r.user, r.system);
    DeleteFileA(own.c_str());
    if (r.own) kxtest::write_bytes(own, marker_file("own"));
    ChildRun run_result =
        run_child(prog_ + "KORV5.EXE", r.args, scratch_.path(), {{KORV5_TITLE, "&Konec"}});
    ASSERT_TRUE(run_result.started) << "row " << r.n;
    EXPECT_TRUE(run_result.ended && run_result.unexpected.empty())
        << "row " << r.n << "\n" << run_result.dump();
    EXPECT_EQ(0u, run_result.code) << "row " << r.n;
    ASSERT_EQ(1u, run_result.seen.size()) << "row " << r.n << "\n" << run_result.dump();
    const std::string &body = run_result.seen[0].body;
    EXPECT_NE(std::string::npos, body.find("\nNávrh: " + r.design + "\n"))
        << "row " << r.n << ":\n" << body;
    std::string config = r.found.empty() ? "Konfigurace: nenalezena" : "Konfigurace: " + r.found;
    EXPECT_NE(std::string::npos, body.find("\n" + config)) << "row " << r.n << ":\n" << body;
  }
}

TEST_F(Startup, OwnConfigurationRepairsTheRegistrysInstallation) {
  // The machine names an installation (INST\KORV5) whose configuration is gone.
  const std::string registry = scratch_.path() + "\\INST\\KORV5\\EXE\\SYSTEM.WCO";
  set_values("", registry);
  ASSERT_TRUE(kxtest::write_bytes(prog_ + "SYSTEM.WCO", marker_file("own")));
  ChildRun r = run_child(prog_ + "KORV5.EXE", "", scratch_.path(), {{KORV5_TITLE, "&Konec"}});
  ASSERT_TRUE(r.started);
  EXPECT_TRUE(r.ended && r.unexpected.empty()) << r.dump();
  EXPECT_EQ(0u, r.code);
  ASSERT_EQ(1u, r.seen.size()) << r.dump();
  EXPECT_NE(std::string::npos, r.seen[0].body.find("Konfigurace: " + registry)) << r.seen[0].body;

  for (const char *d : {"\\INST\\KORV5\\Navrhy", "\\INST\\KORV5\\EXE"}) {
    DWORD a = GetFileAttributesA((scratch_.path() + d).c_str());
    EXPECT_TRUE(a != INVALID_FILE_ATTRIBUTES && (a & FILE_ATTRIBUTE_DIRECTORY)) << d;
  }
  const std::string file = kxtest::read_bytes(registry);
  // From the program's own path: drive, directory without EXE, upper-cased.
  const std::string drive = prog_.substr(0, 2);
  const std::string system = upper(prog_.substr(2, prog_.size() - 2 - 4));
  const std::string root = upper(scratch_.path() + "\\INST\\KORV5\\");
  struct Want {
    const char *key;
    std::string value;
  } wants[] = {
      {"system_path", system},
      {"initial_directory", root + "Navrhy"},
      {"schema_default_library_path", drive + system + "SLIB\\"},
      {"layout_default_library_path", drive + system + "LLIB\\"},
      {"edit_default_library_path", drive + system + "ELIB\\"},
      {"default_model_library_path", drive + system + "MLIB\\"},
      {"marker", "own"},
  };
  for (const Want &w : wants) {
    std::string line = "   " + std::string(w.key) + std::string(39 - strlen(w.key), ' ') +
                       "=  " + w.value + "\r\n";
    EXPECT_NE(std::string::npos, file.find(line)) << w.key << " in\n" << file;
  }
}

TEST_F(Startup, ConfigListsTheSectionsAndKeysFound) {
  const std::string system = scratch_.file("SYS.WCO");
  ASSERT_TRUE(kxtest::write_bytes(
      system, "Konfigurace\r\n\r\nBEGIN[CO_layout]\r\n   grid = 25\r\nEND[CO_layout]\r\n"
              "BEGIN[CO_common]\r\n   marker = systém\r\n   a_first = 1\r\nEND[CO_common]\r\n"));
  set_values("", system);
  ChildRun r = run_child(prog_ + "CONFIG.EXE", "", scratch_.path(), {{CONFIG_TITLE, "&Konec"}});
  ASSERT_TRUE(r.started);
  EXPECT_TRUE(r.ended && r.unexpected.empty()) << r.dump();
  EXPECT_EQ(0u, r.code);
  ASSERT_EQ(1u, r.seen.size()) << r.dump();
  EXPECT_EQ("Konfigurace: " + system, r.seen[0].body);
  std::vector<std::string> want = {"[CO_common]",   "   a_first = 1", "   marker = systém",
                                   "[CO_layout]", "   grid = 25"};
  EXPECT_EQ(want, r.seen[0].list);

  // Nothing to find: the window says so and the exit code is 1.
  set_values("", "");
  ChildRun none = run_child(prog_ + "CONFIG.EXE", "", scratch_.path(), {{CONFIG_TITLE, "&Konec"}});
  EXPECT_EQ(1u, none.code) << none.dump();
  ASSERT_EQ(1u, none.seen.size()) << none.dump();
  EXPECT_EQ("Systémová konfigurace nebyla nalezena.", none.seen[0].body);
  EXPECT_TRUE(none.seen[0].list.empty());
}

// ---- UNINSTAL.EXE ----------------------------------------------------------------------------

const char QUESTION[] = "Dotaz";
const char NOTICE[] = "Oznámení";
const char ERROR_TITLE[] = " Chyba ";

// One UNINST.LST record, byte by byte: kind (little-endian), path, zeros to 1028 bytes.
std::string record(int kind, const std::string &path) {
  std::string r(1028, '\0');
  r[0] = (char)(kind & 0xFF);
  r[1] = (char)(kind >> 8);
  r.replace(2, path.size(), path);
  return r;
}

bool is_dir(const std::string &path) {
  DWORD a = GetFileAttributesA(path.c_str());
  return a != INVALID_FILE_ATTRIBUTES && (a & FILE_ATTRIBUTE_DIRECTORY);
}

bool is_file(const std::string &path) {
  DWORD a = GetFileAttributesA(path.c_str());
  return a != INVALID_FILE_ATTRIBUTES && !(a & FILE_ATTRIBUTE_DIRECTORY);
}

// Test keys of their own, so that nothing of a real installation in the prefix is touched.
const char *const CLASS_KEYS[] = {".kxtest1", "kxtest1_file\\Shell\\Open\\command",
                                  "kxtest1_file\\Shell\\Open", "kxtest1_file\\Shell",
                                  "kxtest1_file", "kxtest2_file"};
const char *const MACHINE_KEYS[] = {"SOFTWARE\\KXTEST\\A\\B", "SOFTWARE\\KXTEST\\A",
                                    "SOFTWARE\\KXTEST", "SOFTWARE\\KXTEST2"};

void remove_test_keys() {
  // Deepest first; the unrecorded sub-keys too.
  for (const char *k : {"kxtest2_file\\Extra", ".kxtest1", "kxtest1_file\\Shell\\Open\\command",
                        "kxtest1_file\\Shell\\Open", "kxtest1_file\\Shell", "kxtest1_file",
                        "kxtest2_file"})
    reg_delete_key(REG_ROOT_CLASSES, k);
  for (const char *k : {"SOFTWARE\\KXTEST\\A\\B", "SOFTWARE\\KXTEST\\A", "SOFTWARE\\KXTEST",
                        "SOFTWARE\\KXTEST2\\Keep", "SOFTWARE\\KXTEST2"})
    reg_delete_key(REG_ROOT_LOCAL_MACHINE, k);
}

// The file operations waiting for the next start of Windows, "|" after each name.
std::string pending_renames() {
  HKEY key;
  if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, "System\\CurrentControlSet\\Control\\Session Manager", 0,
                    KEY_READ, &key) != ERROR_SUCCESS)
    return "";
  std::vector<char> data(65536);
  DWORD size = (DWORD)data.size(), type = 0;
  LONG status = RegQueryValueExA(key, "PendingFileRenameOperations", nullptr, &type,
                                 (BYTE *)data.data(), &size);
  RegCloseKey(key);
  if (status != ERROR_SUCCESS) return "";
  std::string text(data.data(), size);
  for (char &c : text) if (c == '\0') c = '|';
  return text;
}

class Uninstall : public ::testing::Test {
 protected:
  void SetUp() override {
    remove_test_keys();
    root_ = scratch_.path() + "\\KORV5\\";
    for (const char *d : {"", "EXE", "SLIB", "LLIB", "Navrhy"})
      ASSERT_TRUE(CreateDirectoryA((root_ + d).c_str(), nullptr)) << d;
    ASSERT_TRUE(
        CopyFileA(program("UNINSTAL.exe").c_str(), (root_ + "EXE\\UNINSTAL.EXE").c_str(), FALSE));
    for (const char *f : {"README.TXT", "DISKLIST.LST", "EXE\\KORV5.EXE", "EXE\\SYSTEM.WCO",
                          "SLIB\\A.S32", "SLIB\\B.S32", "LLIB\\C.L32", "INST.LST",
                          // not recorded: the user's own
                          "Navrhy\\moje.d32", "LLIB\\vlastni.l32"})
      ASSERT_TRUE(kxtest::write_bytes(root_ + f, f)) << f;
    for (const char *k : CLASS_KEYS)
      ASSERT_EQ(1, reg_set_string(REG_ROOT_CLASSES, k, nullptr, "x")) << k;
    ASSERT_EQ(1, reg_set_string(REG_ROOT_CLASSES, "kxtest2_file\\Extra", nullptr, "user"));
    for (const char *k : MACHINE_KEYS)
      ASSERT_EQ(1, reg_set_string(REG_ROOT_LOCAL_MACHINE, k, "v", "x")) << k;
    ASSERT_EQ(1, reg_set_string(REG_ROOT_LOCAL_MACHINE, "SOFTWARE\\KXTEST2\\Keep", "v", "user"));
  }
  void TearDown() override { remove_test_keys(); }

  // The list as the installer writes it: README and DISKLIST, the directories (one record per
  // file they hold), Navrhy, the root, the files, INST.LST, the file types deepest first, the
  // machine keys parent first (as the configuration path's three records stand).
  std::string list() const {
    std::string bare = root_.substr(0, root_.size() - 1);
    std::string l = record(0, root_ + "README.TXT") + record(0, root_ + "DISKLIST.LST");
    for (const char *d : {"EXE", "EXE", "EXE", "SLIB", "SLIB", "LLIB", "Navrhy"})
      l += record(1, root_ + d);
    l += record(1, bare);
    for (const char *f : {"EXE\\KORV5.EXE", "EXE\\SYSTEM.WCO", "EXE\\UNINSTAL.EXE",
                          "SLIB\\A.S32", "SLIB\\B.S32", "LLIB\\C.L32", "INST.LST"})
      l += record(0, root_ + f);
    for (const char *k : CLASS_KEYS) l += record(2, k);
    for (const char *k : {"SOFTWARE\\KXTEST2", "SOFTWARE\\KXTEST", "SOFTWARE\\KXTEST\\A",
                          "SOFTWARE\\KXTEST\\A\\B"})
      l += record(3, k);
    l += record(0, root_ + "EXE\\GONE.TXT");   // recorded, already gone
    l += record(7, root_ + "README.TXT");      // a kind of its own: passed over
    return l;
  }

  ChildRun uninstall(const std::string &args, const std::vector<Expect> &expect) {
    return run_child(root_ + "EXE\\UNINSTAL.EXE", args, scratch_.path(), expect);
  }

  void expect_untouched(const char *when) {
    for (const char *f : {"README.TXT", "EXE\\KORV5.EXE", "SLIB\\A.S32", "INST.LST"})
      EXPECT_TRUE(is_file(root_ + f)) << when << ": " << f;
    EXPECT_EQ(1, reg_key_exists(REG_ROOT_CLASSES, ".kxtest1")) << when;
    EXPECT_EQ(1, reg_key_exists(REG_ROOT_LOCAL_MACHINE, "SOFTWARE\\KXTEST\\A\\B")) << when;
  }

  kxtest::ScratchDir scratch_;
  std::string root_;
};

TEST_F(Uninstall, RemovesExactlyWhatTheListRecords) {
  ASSERT_TRUE(kxtest::write_bytes(root_ + "UNINST.LST", list()));
  ChildRun r = uninstall("-r", {});
  ASSERT_TRUE(r.started);
  EXPECT_TRUE(r.ended && r.unexpected.empty()) << r.dump();
  EXPECT_EQ(0u, r.code) << r.dump();

  struct Row {
    int n;
    const char *path;
    bool dir, stays;
  } rows[] = {
      {1, "README.TXT", false, false},       {2, "DISKLIST.LST", false, false},
      {3, "EXE\\KORV5.EXE", false, false},   {4, "EXE\\SYSTEM.WCO", false, false},
      {5, "SLIB\\A.S32", false, false},      {6, "SLIB\\B.S32", false, false},
      {7, "LLIB\\C.L32", false, false},      {8, "INST.LST", false, false},
      {9, "UNINST.LST", false, false},       {10, "SLIB", true, false},
      {11, "EXE", true, true},   // holds the running uninstaller until Windows starts again
      {12, "Navrhy", true, true},
      {13, "Navrhy\\moje.d32", false, true}, {14, "LLIB", true, true},
      {15, "LLIB\\vlastni.l32", false, true}, {16, "", true, true},
      {17, "EXE\\UNINSTAL.EXE", false, true},
  };
  for (const Row &row : rows) {
    std::string p = root_ + row.path;
    bool there = row.dir ? is_dir(p) : is_file(p);
    EXPECT_EQ(row.stays, there) << "row " << row.n << " " << p;
  }
  // The running program and its directory go at the next start of Windows.
  std::string pending = upper(pending_renames());
  EXPECT_NE(std::string::npos, pending.find(upper(root_ + "EXE\\UNINSTAL.EXE"))) << pending;
  EXPECT_NE(std::string::npos, pending.find(upper(root_ + "EXE") + '|')) << pending;
  struct KeyRow {
    int n;
    int16_t root;
    const char *key;
    bool stays;
  } keys[] = {
      {1, REG_ROOT_CLASSES, ".kxtest1", false},
      {2, REG_ROOT_CLASSES, "kxtest1_file\\Shell\\Open\\command", false},
      {3, REG_ROOT_CLASSES, "kxtest1_file", false},   // recorded after its sub-keys
      {4, REG_ROOT_CLASSES, "kxtest2_file", true},   // holds a key of the user's
      {5, REG_ROOT_CLASSES, "kxtest2_file\\Extra", true},
      {6, REG_ROOT_LOCAL_MACHINE, "SOFTWARE\\KXTEST\\A\\B", false},
      {7, REG_ROOT_LOCAL_MACHINE, "SOFTWARE\\KXTEST\\A", false},
      {8, REG_ROOT_LOCAL_MACHINE, "SOFTWARE\\KXTEST", false},   // recorded before its sub-keys
      {9, REG_ROOT_LOCAL_MACHINE, "SOFTWARE\\KXTEST2", true},
      {10, REG_ROOT_LOCAL_MACHINE, "SOFTWARE\\KXTEST2\\Keep", true},
      {11, REG_ROOT_LOCAL_MACHINE, "SOFTWARE", true},
  };
  for (const KeyRow &k : keys)
    EXPECT_EQ(k.stays ? 1 : 0, reg_key_exists(k.root, k.key)) << "key row " << k.n << " " << k.key;
}

TEST_F(Uninstall, AsksFirstWithoutDashR) {
  ASSERT_TRUE(kxtest::write_bytes(root_ + "UNINST.LST", list()));
  const std::string question = "Má být odstraněna instalace KORVEX z adresáře " + root_ + " ?";

  ChildRun no = uninstall("", {{QUESTION, "&Ne"}});
  EXPECT_TRUE(no.ended && no.unexpected.empty()) << no.dump();
  EXPECT_EQ(2u, no.code);
  ASSERT_EQ(1u, no.seen.size()) << no.dump();
  EXPECT_EQ(question, no.seen[0].body);
  expect_untouched("after No");
  EXPECT_TRUE(is_file(root_ + "UNINST.LST"));

  ChildRun yes = uninstall("", {{QUESTION, "&Ano"}, {NOTICE, "&O.K."}});
  EXPECT_TRUE(yes.ended && yes.unexpected.empty()) << yes.dump();
  EXPECT_EQ(0u, yes.code);
  ASSERT_EQ(2u, yes.seen.size()) << yes.dump();
  EXPECT_EQ("Instalace KORVEX byla odstraněna.", yes.seen[1].body);
  EXPECT_FALSE(is_file(root_ + "README.TXT"));
  EXPECT_FALSE(is_file(root_ + "UNINST.LST"));
  EXPECT_EQ(0, reg_key_exists(REG_ROOT_CLASSES, ".kxtest1"));
}

TEST_F(Uninstall, MissingOrUnreadableListIsAnErrorAndChangesNothing) {
  // No list at all.
  ChildRun missing = uninstall("-r", {{ERROR_TITLE, "OK"}});
  EXPECT_TRUE(missing.ended && missing.unexpected.empty()) << missing.dump();
  EXPECT_EQ(1u, missing.code);
  ASSERT_EQ(1u, missing.seen.size()) << missing.dump();
  EXPECT_EQ("Chybná cesta/soubor nenalezen: " + root_ + "UNINST.LST", missing.seen[0].body);
  expect_untouched("no list");

  // A list that another program holds open without sharing: it can't be read.
  ASSERT_TRUE(kxtest::write_bytes(root_ + "UNINST.LST", list()));
  HANDLE held = CreateFileA((root_ + "UNINST.LST").c_str(), GENERIC_READ, 0, nullptr,
                            OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(INVALID_HANDLE_VALUE, held);
  ChildRun locked = uninstall("-r", {{ERROR_TITLE, "OK"}});
  CloseHandle(held);
  EXPECT_TRUE(locked.ended && locked.unexpected.empty()) << locked.dump();
  EXPECT_EQ(1u, locked.code);
  ASSERT_EQ(1u, locked.seen.size()) << locked.dump();
  EXPECT_EQ("Soubor " + root_ + "UNINST.LST nelze otevřít", locked.seen[0].body);
  expect_untouched("locked list");
}

TEST_F(Uninstall, CutLastRecordIsIgnoredAndAnEmptyListRemovesOnlyItself) {
  // The whole records go; a record cut off by a broken install is not read.
  std::string l = record(0, root_ + "README.TXT") + record(0, root_ + "INST.LST").substr(0, 1027);
  ASSERT_TRUE(kxtest::write_bytes(root_ + "UNINST.LST", l));
  ChildRun cut = uninstall("-r", {});
  EXPECT_TRUE(cut.ended && cut.unexpected.empty()) << cut.dump();
  EXPECT_EQ(0u, cut.code);
  EXPECT_FALSE(is_file(root_ + "README.TXT"));
  EXPECT_TRUE(is_file(root_ + "INST.LST"));
  EXPECT_FALSE(is_file(root_ + "UNINST.LST"));

  ASSERT_TRUE(kxtest::write_bytes(root_ + "UNINST.LST", ""));
  ChildRun empty = uninstall("-r", {});
  EXPECT_EQ(0u, empty.code) << empty.dump();
  EXPECT_FALSE(is_file(root_ + "UNINST.LST"));
  EXPECT_TRUE(is_file(root_ + "INST.LST"));
  EXPECT_TRUE(is_dir(root_ + "EXE"));
}

}  // namespace
