// UNINSTAL.EXE as a process under Wine on a hand-made installation (files, directories,
// registry keys of the prefix): the answer "&Ne", a list that is missing or held open, a list cut
// short. The program is found beside this test program's build directory (..\tools\). A whole
// install removed again is an end-to-end scenario.
#include "platform/reg.h"
#include "tests/support/kxtest.h"
#include "tests/toolkit/tk_watch.h"

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
