// test_shell.cpp - the later install steps where a whole install shows too little: a program
// directory at the path limit, the Start-menu folder of each system, and failing steps that
// still record their keys. Natively against the in-memory registry and the text-file
// shortcuts; under Wine against the real registry and real .lnk files. The shell folders are
// pointed into the scratch directory for every case and put back afterwards.
#include "tests/inst/test_inst_fixture.h"

#include "installer/startup.h"
#include "platform/inst_plat.h"
#include "platform/reg.h"
#include "platform/shl.h"
#include "store/wco.h"

#include <filesystem>

#include <string.h>

#ifdef KX_WIN32
#include <windows.h>
#else
#include <sys/stat.h>
#endif

namespace fs = std::filesystem;
using insttest::InstallTest;
using insttest::Medium;
using Records = std::vector<std::pair<int, std::string>>;

namespace {

const char SHELL_FOLDERS[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
const int16_t HKCR = REG_ROOT_CLASSES, HKCU = REG_ROOT_CURRENT_USER,
              HKLM = REG_ROOT_LOCAL_MACHINE;
const char APP_PATH[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\AppPaths\\KORV5.EXE";
const char UNINSTALL[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\KORVEX";

std::string reg(int16_t root, const std::string &key, const char *value) {
  char buffer[KX_PATH];
  memset(buffer, '#', sizeof buffer);
  if (!reg_get_string(root, key.c_str(), value, buffer, sizeof buffer)) return "<missing>";
  return buffer;
}

// The file-type keys in the order the uninstall list must name them.
std::vector<std::string> class_keys(const char *d, const char *s, const char *l) {
  std::vector<std::string> keys = {d, s, l};
  for (const char *suffix : {"\\Shell\\Open\\command", "\\Shell\\Open", "\\Shell", "\\DefaultIcon", ""})
    for (const char *type : {"d32_file", "s32_file", "l32_file"}) keys.push_back(std::string(type) + suffix);
  return keys;
}

#ifndef KX_WIN32
struct Link {
  bool ok;
  std::string target, description, directory;
};

Link read_link(const std::string &path) {
  char target[KX_PATH], description[KX_PATH], directory[KX_PATH];
  bool ok = shl_read_link(path.c_str(), target, description, directory) == 1;
  return {ok, target, description, directory};
}
#endif

class ShellSteps : public InstallTest {
 protected:
  void SetUp() override {
    InstallTest::SetUp();
    shl_test_reset();
#ifdef KX_WIN32
    // Wine's shell hands every saved shortcut to its menu builder, which writes menu entries
    // for the host; the tests' shortcuts stay in the prefix.
    SetEnvironmentVariableA("WINEDLLOVERRIDES", "mscoree,mshtml=;winemenubuilder.exe=d");
#endif
    exe_ = target_ + "EXE\\";
    snprintf(program_dir, KX_PATH, "%s", exe_.c_str());
    for (const char *name : {"KORV5.EXE", "CONFIG.EXE", "UNINSTAL.EXE"})
      write_local(local(exe_ + name), "MZ");
    programs_ = root_path() + "Nabidka\\Programy";
    desktop_ = root_path() + "Plocha";
    appdata_ = root_path() + "Data";
    quick_ = appdata_ + "\\Microsoft\\Internet Explorer\\Quick Launch";
    for (const std::string &d : {programs_, desktop_, quick_}) fs::create_directories(local(d));
    set_folder(HKLM, "Common Programs", programs_);
    set_folder(HKCU, "Programs", programs_);
    set_folder(HKCU, "Desktop", desktop_);
    set_folder(HKCU, "AppData", appdata_);
  }

  void TearDown() override {
    // Put the machine's own shell folders back (the real registry under Wine).
    for (auto it = saved_.rbegin(); it != saved_.rend(); ++it)
      reg_set_string(it->root, SHELL_FOLDERS, it->value.c_str(), it->data.c_str());
    for (auto it = created_.rbegin(); it != created_.rend(); ++it)
      reg_delete_key(it->first, it->second.c_str());
    shl_test_reset();
    InstallTest::TearDown();
  }

  void set_folder(int16_t root, const char *value, const std::string &path) {
    std::string old = reg(root, SHELL_FOLDERS, value);
    if (old != "<missing>") saved_.push_back({root, value, old});
    ASSERT_EQ(1, reg_set_string(root, SHELL_FOLDERS, value, path.c_str()));
  }

  // Keys a case made, removed (deepest first, as listed) when the case ends.
  void created(int16_t root, const std::vector<std::string> &keys) {
    for (auto it = keys.rbegin(); it != keys.rend(); ++it) created_.push_back({root, *it});
  }

#ifndef KX_WIN32
  void write_program(const std::string &path, const std::string &text, mode_t mode = 0755) {
    write_local(local(path), text);
    chmod(local(path).c_str(), mode);
  }
#endif

  // Exactly the one box with this text, or none for null.
  void expect_box(const char *box, int n) {
    ASSERT_EQ(box ? 1u : 0u, boxes_.count()) << "row " << n << boxes_.dump();
    if (box) {
      EXPECT_EQ(box, boxes_.only().text) << "row " << n;
    }
  }

  struct Saved {
    int16_t root;
    std::string value, data;
  };
  std::vector<Saved> saved_;
  std::vector<std::pair<int16_t, std::string>> created_;
  std::string exe_, programs_, desktop_, appdata_, quick_;
};

}  // namespace

TEST_F(ShellSteps, LongProgramDirectoryIsCutNotOverrun) {
  created(HKLM, {APP_PATH});
  for (size_t length : {1013u, 1014u, 1015u, 1023u}) {
    std::string dir = kxtest::pattern_text(length - 1) + "\\";
    snprintf(program_dir, KX_PATH, "%s", dir.c_str());
    RegisterAppPath(state_);
    std::string data = (dir + "KORV5.EXE").substr(0, 1023);
    EXPECT_EQ(data, reg(HKLM, APP_PATH, nullptr)) << "length " << length;
    EXPECT_EQ(dir.substr(0, length - 1), reg(HKLM, APP_PATH, "Path")) << "length " << length;
  }
}

#ifndef KX_WIN32
TEST_F(ShellSteps, StartMenuFolderBySystem) {
  struct Row {
    int n;
    int16_t system;
    int16_t root;            // where the folder is asked for
    const char *value;
    const char *message;     // when the key is there but the value is not
  } rows[] = {
      {1, SHL_SYSTEM_NT, HKLM, "Common Programs",
       "Windows NT - Nelze zjistit adresář nabídky Start|Programy"},
      {2, SHL_SYSTEM_98, HKCU, "Programs",
       "windows 98 - Nelze zjistit adresář nabídky Start|Programy"},
      {3, SHL_SYSTEM_95, HKCU, "Programs",
       "Windows 95 - Nelze zjistit adresář nabídky Start|Programy"},
  };
  for (const Row &r : rows) {
    // The key without the value (which the other root has): the system's message, nothing made.
    shl_test_set_system(r.system);
    reg_test_reset();
    reg_set_string(r.root, SHELL_FOLDERS, "Other", "x");
    reg_set_string(r.root == HKLM ? HKCU : HKLM, SHELL_FOLDERS, r.value, programs_.c_str());
    fs::remove_all(local(programs_ + "\\KORVEX"));
    boxes_.clear();
    EXPECT_EQ(0, UpdateStartMenu(state_)) << "row " << r.n;
    expect_box(r.message, r.n);
    EXPECT_FALSE(fs::exists(local(programs_ + "\\KORVEX"))) << "row " << r.n;

    // No key at all: the group is made below the current directory.
    reg_test_reset();
    boxes_.clear();
    fs::current_path(scratch_.path());
    EXPECT_EQ(1, UpdateStartMenu(state_)) << "row " << r.n;
    expect_box(nullptr, r.n);
    EXPECT_TRUE(read_link(scratch_.file("KORVEX") + "/KORVEX.LNK").ok) << "row " << r.n;
    fs::current_path(scratch_.path());
    fs::remove_all(scratch_.file("KORVEX"));
  }
  shl_test_reset();
  shl_test_set_system(SHL_SYSTEM_OTHER);
  boxes_.clear();
  EXPECT_EQ(0, UpdateStartMenu(state_));
  expect_box("Neznámá verze operačního systému¨\nNelze zjistit adresář nabídky Start|Programy", 4);
  EXPECT_EQ("", std::string(shl_test_trace())) << "no shortcut is tried";
}

#endif

// ---- The uninstall list, through whole installs on an empty medium -------------------------

namespace {

class ShellRecords : public ShellSteps {
 protected:
  Records later_records(bool desktop, bool quick, bool function_list) const {
    const std::string group = programs_ + "\\KORVEX";
    Records r = {{1, group},
                 {0, group + "\\KORVEX.LNK"},
                 {0, group + "\\Konfigurace KORVEX.LNK"},
                 {0, group + "\\Odinstalace KORVEX.LNK"}};
    if (desktop) r.push_back({0, desktop_ + "\\KORVEX.LNK"});
    if (quick) r.push_back({0, quick_ + "\\KORVEX.LNK"});
    r.push_back({3, APP_PATH});
    r.push_back({3, UNINSTALL});
    for (const std::string &key : class_keys(".d32", ".s32", ".l32")) r.push_back({2, key});
    r.push_back({3, "SOFTWARE\\KORV\\KORVEX\\5"});
    r.push_back({3, "SOFTWARE\\KORV\\KORVEX"});
    r.push_back({3, "SOFTWARE\\KORV"});
    if (function_list) r.push_back({0, target_ + "EXE\\PFU_LIST.PFU"});
    return r;
  }
};

}  // namespace

#ifndef KX_WIN32
TEST_F(ShellRecords, FailuresStillRecordAndTheInstallSucceeds) {
  // No rights below HKEY_LOCAL_MACHINE and HKEY_CLASSES_ROOT, no quick-launch folder, and a
  // main program that fails: every key is still recorded, the function list is not.
  state_->desktop_icon = 1;
  state_->quick_launch_icon = 1;
  fs::remove_all(local(appdata_ + "\\Microsoft"));
  reg_test_deny(HKLM, nullptr);
  reg_test_deny(HKCR, nullptr);
  write_medium(Medium());
  write_program(exe_ + "KORV5.EXE", "#!/bin/sh\nexit 1\n");
  EXPECT_EQ(1, run()) << dump_asked();
  inst_close_lists(state_);
  Records all = uninstall_records();
  Records expected = later_records(true, false, false);
  ASSERT_GE(all.size(), expected.size()) << dump_records();
  EXPECT_EQ(expected, Records(all.end() - expected.size(), all.end())) << dump_records();
  std::vector<std::string> texts;
  for (size_t i = boxes_at_later_steps; i < boxes_.count(); i++)
    texts.push_back(boxes_.boxes()[i].text);
  std::vector<std::string> want = {
      std::string("Nelze přejít do adresáře " + quick_ +
                  "\nDo systémové lišty nelze doplnit ikonu,\nVáš systém Windows tuto funkci "
                  "nepodporuje.")
          .substr(0, 199),
      "Chyba při do ukládání registru", "Chyba při do ukládání registru",
      "Chyba při ukládání do registru", "Chyba při ukládání registru",
      "Do systémového registru nelze doplnit příponu .d32",
      "Do systémového registru nelze doplnit příponu .s32",
      "Do systémového registru nelze doplnit příponu .l32",
      "Do systémového registru nelze doplnit příponu D32",
      "Do systémového registru nelze doplnit příponu S32",
      "Do systémového registru nelze doplnit příponu L32"};
  for (int round = 0; round < 4; round++)
    for (const char *type : {"D32", "S32", "L32"})
      want.push_back(std::string("Do systémového registru nelze doplnit popis přípony ") + type);
  for (int i = 0; i < 3; i++) want.push_back("Chyba při do ukládání registru");
  want.push_back("Chyba při vytvoření seznamu konfiguračního seznamu funkcí");
  EXPECT_EQ(want, texts);
}
#endif
