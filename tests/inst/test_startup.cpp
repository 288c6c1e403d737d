// The shared start-up: the command line, and (further below) the location of the system
// configuration file with the in-memory registry of the native build.
#include "installer/startup.h"
#include "platform/inst_plat.h"
#include "platform/reg.h"
#include "store/wco.h"
#include "tests/support/kxtest.h"

#include <gtest/gtest.h>

#include <string.h>

#include <string>
#include <vector>

namespace {

std::string pat(size_t n) { return kxtest::pattern_text(n); }

// Runs the reader on a vector of arguments (argv[0] first), after filling every global with a
// pattern so that a field the reader forgets to reset shows.
void read_line(const std::vector<std::string> &args) {
  for (auto [text, size] : {std::pair<char *, size_t>{program_drive, sizeof program_drive},
                            {program_dir, sizeof program_dir},
                            {design_file_name, sizeof design_file_name},
                            {command_rest, sizeof command_rest}}) {
    memset(text, 'Q', size - 1);
    text[size - 1] = '\0';
  }
  strcpy(system_drive, "x:");
  function_list_switch = 7;
  second_switch = 7;
  extra_argument_count = 77;
  std::vector<char *> argv;
  for (const std::string &a : args) argv.push_back(const_cast<char *>(a.c_str()));
  argv.push_back(nullptr);
  ASSERT_EQ(1, startup_read_command_line((int)args.size(), argv.data()));
}

TEST(StartupCommandLine, ProgramPathGivesDriveDirectoryAndSystemDrive) {
  struct Row {
    int n;
    const char *path, *drive, *dir, *system;
  } rows[] = {
      {1, "C:\\SETUP\\SETUP.EXE", "C:", "\\SETUP\\", "C:"},
      {2, "d:\\KORV5\\EXE\\KORV5.EXE", "d:", "\\KORV5\\EXE\\", "d:"},
      {3, "E:SETUP.EXE", "E:", "", "E:"},
      {4, "\\\\server\\share\\SETUP.EXE", "", "\\\\server\\share\\", "c:"},
      {5, "SETUP.EXE", "", "", "c:"},
      {6, "", "", "", "c:"},
      {7, "AB:\\X\\Y.EXE", "AB:", "\\X\\", "c:"},   // no drive letter: the system drive stays
      {8, "Z:\\", "Z:", "\\", "Z:"},
  };
  for (const Row &r : rows) {
    read_line({r.path});
    EXPECT_STREQ(r.drive, program_drive) << "row " << r.n;
    EXPECT_STREQ(r.dir, program_dir) << "row " << r.n;
    EXPECT_STREQ(r.system, system_drive) << "row " << r.n;
    EXPECT_STREQ("DESIGN.D32", design_file_name) << "row " << r.n;
    EXPECT_STREQ("", command_rest) << "row " << r.n;
    EXPECT_EQ(0, function_list_switch) << "row " << r.n;
    EXPECT_EQ(0, second_switch) << "row " << r.n;
  }
}

TEST(StartupCommandLine, ArgumentsSwitchesDesignAndRest) {
  struct Row {
    int n;
    std::vector<std::string> args;
    const char *design, *rest;
    Flag f, m;
    int extra;
  } rows[] = {
      {1, {"$F"}, "DESIGN.D32", "$F", 1, 0, 0},
      {2, {"$f", "$M"}, "DESIGN.D32", "$f $M", 1, 1, 0},
      {3, {"$m", "-x", "/Y"}, "DESIGN.D32", "$m -x /Y", 0, 1, 0},
      {4, {"$x", "$"}, "DESIGN.D32", "$x $", 0, 0, 0},
      {5, {"ZESILOVAČ"}, "ZESILOVAČ.D32", "", 0, 0, 0},
      {6, {"deska.pcb"}, "deska.pcb", "", 0, 0, 0},
      {7, {"deska."}, "deska.", "", 0, 0, 0},
      {8, {"C:\\NAVRHY.V2\\deska"}, "C:\\NAVRHY.V2\\deska.D32", "", 0, 0, 0},
      {9, {"-r", "a", "b", "$f", "c"}, "a.D32", "-r b $f c", 1, 0, 2},
      {10, {"", "a", ""}, "a.D32", "", 0, 0, 0},
      {11, {"/f", "$F", "x.d32"}, "x.d32", "/f $F", 1, 0, 0},
  };
  for (const Row &r : rows) {
    std::vector<std::string> args{"C:\\KORV5\\EXE\\KORV5.EXE"};
    args.insert(args.end(), r.args.begin(), r.args.end());
    read_line(args);
    EXPECT_STREQ(r.design, design_file_name) << "row " << r.n;
    EXPECT_STREQ(r.rest, command_rest) << "row " << r.n;
    EXPECT_EQ(r.f, function_list_switch) << "row " << r.n;
    EXPECT_EQ(r.m, second_switch) << "row " << r.n;
    EXPECT_EQ(r.extra, extra_argument_count) << "row " << r.n;
  }
}

TEST(StartupCommandLine, LongTextsAreCutAtTheBuffers) {
  // Program paths: the directory part is cut at 1023 characters.
  struct PathRow {
    int n;
    size_t length;   // of the directory between "C:" and the file name
  } paths[] = {{1, 1019}, {2, 1020}, {3, 1021}, {4, 1022}, {5, 1023}, {6, 1024}, {7, 1030}};
  for (const PathRow &r : paths) {
    std::string dir = "\\" + pat(r.length - 2) + "\\";
    read_line({"C:" + dir + "A.EXE"});
    std::string rest = (dir + "A.EXE").substr(0, 1023);
    std::string want = rest.substr(0, rest.rfind('\\') + 1);
    EXPECT_EQ(want, program_dir) << "row " << r.n << " length " << strlen(program_dir);
    EXPECT_STREQ("C:", program_drive) << "row " << r.n;
  }

  // Design names: ".D32" always fits; names with an extension are cut at 1023.
  struct NameRow {
    int n;
    std::string arg, want;
  } names[] = {
      {1, pat(1019), pat(1019) + ".D32"},
      {2, pat(1020), pat(1019) + ".D32"},
      {3, pat(1025), pat(1019) + ".D32"},
      {4, pat(1019) + ".X", (pat(1019) + ".X").substr(0, 1023)},
      {5, pat(1018) + ".abc", pat(1018) + ".abc"},
      {6, pat(1030) + ".abc", pat(1023)},
  };
  for (const NameRow &r : names) {
    read_line({"C:\\A.EXE", r.arg});
    EXPECT_EQ(r.want, design_file_name) << "row " << r.n << " length " << strlen(design_file_name);
  }

  // The rest: 1023 characters at most, whatever comes after is dropped.
  struct RestRow {
    int n;
    std::vector<std::string> args;
    std::string want;
  } rests[] = {
      {1, {"-" + pat(1022)}, "-" + pat(1022)},
      {2, {"-" + pat(1023)}, "-" + pat(1022)},
      {3, {"-" + pat(1024)}, "-" + pat(1022)},
      {4, {"-" + pat(1020), "-b"}, "-" + pat(1020) + " -"},
      {5, {"-" + pat(1021), "-b"}, "-" + pat(1021) + " "},
      {6, {"-" + pat(1022), "$f"}, "-" + pat(1022)},
  };
  for (const RestRow &r : rests) {
    std::vector<std::string> args{"C:\\A.EXE"};
    args.insert(args.end(), r.args.begin(), r.args.end());
    read_line(args);
    EXPECT_EQ(r.want, command_rest) << "row " << r.n << " length " << strlen(command_rest);
  }
  // A switch whose text was cut off the rest still counts.
  EXPECT_EQ(1, function_list_switch);
}

TEST(StartupCommandLine, NoArgumentsKeepsTheDefaults) {
  read_line({});
  EXPECT_STREQ("", program_drive);
  EXPECT_STREQ("", program_dir);
  EXPECT_STREQ("DESIGN.D32", design_file_name);
  EXPECT_STREQ("c:", system_drive);
  EXPECT_EQ(1, startup_read_command_line(0, nullptr));
  EXPECT_STREQ("DESIGN.D32", design_file_name);
}

// ---- Locating and repairing the system configuration ----------------------------------------
//
// Native build: the in-memory registry, drive paths below the scratch directory (inst_host's
// root; the store's own file opens take the path as it stands). Under Wine: the real registry
// of the prefix and real directories below the scratch directory on its drive.

#ifdef KX_WIN32
const char SEP[] = "\\";
#else
const char SEP[] = "/";
#endif

std::string marker_file(const std::string &marker) {
  return std::string(WCO_HEADER) + "\n\nBEGIN[CO_common]\n   marker = " + marker +
         "\nEND[CO_common]\n";
}

// Empties the process-wide store: every test starts from nothing loaded.
void clear_store() {
  ConfigStore *store = wco::system_store();
  ASSERT_NE(nullptr, store);
  while (store->section_count > 0) wco::remove_section(store, store->sections[0]->name);
  store->path[0] = '\0';
}

std::string store_text(const char *section, const char *key) {
  char buffer[KX_PATH + 1];
  buffer[0] = '\0';
  if (!wco::get_text(wco::system_store(), section, key, buffer, KX_PATH)) return "<none>";
  return buffer;
}

void set_values(const std::string &user, const std::string &system) {
  ASSERT_EQ(1, reg_set_string(REG_ROOT_CURRENT_USER, STARTUP_REGISTRY_KEY, STARTUP_USER_VALUE,
                              user.c_str()));
  ASSERT_EQ(1, reg_set_string(REG_ROOT_LOCAL_MACHINE, STARTUP_REGISTRY_KEY,
                              STARTUP_SYSTEM_VALUE, system.c_str()));
}

class Locate : public ::testing::Test {
 protected:
  void SetUp() override {
    reg_test_reset();
    set_values("", "");
    clear_store();
#ifndef KX_WIN32
    inst_host_reset();
    inst_host_set_root(scratch_.path().c_str());
    ASSERT_EQ(1, plat_make_directory((scratch_.path() + "/C").c_str()));
    // The current directory on drive C:, so that the repair can come back to it.
    ASSERT_EQ(1, plat_change_directory((scratch_.path() + "/C").c_str()));
#endif
  }
  void TearDown() override {
    set_values("", "");
    clear_store();
#ifndef KX_WIN32
    inst_host_reset();
#endif
  }
  // A path in the drive form the registry holds, and where the test finds it.
#ifdef KX_WIN32
  std::string drive_path(const std::string &rest) const { return scratch_.path() + "\\" + rest; }
  std::string local(const std::string &rest) const { return drive_path(rest); }
  // Where the store's save of a drive path lands.
  std::string saved(const std::string &rest) const { return drive_path(rest); }
#else
  std::string drive_path(const std::string &rest) const { return "C:\\" + rest; }
  std::string local(const std::string &rest) const {
    std::string native = scratch_.path() + "/C/" + rest;
    for (char &c : native) if (c == '\\') c = '/';
    return native;
  }
  // The store opens a drive path as it stands: a file of that name in the current directory.
  std::string saved(const std::string &rest) const {
    return scratch_.path() + "/C/" + drive_path(rest);
  }
#endif
  // The program is started from dir (drive form): argument 0 is dir + "KORV5.EXE".
  void start_program(const std::string &dir) {
    std::string arg0 = dir + "KORV5.EXE";
    char *argv[] = {&arg0[0], nullptr};
    ASSERT_EQ(1, startup_read_command_line(1, argv));
  }

  kxtest::ScratchDir scratch_;
  kxtest::BoxRecorder boxes_;
};

TEST_F(Locate, TriesUserThenMachineThenTheProgramsOwnFile) {
  // Files A (user's), B (machine's), own SYSTEM.WCO; each marks the store with its name.
  struct Row {
    int n;
    const char *user;     // "A": the file A, "-": a missing file, "": empty value
    const char *system;   // "B", "-", ""
    bool own;             // the program's SYSTEM.WCO exists
    Flag result;
    const char *found;    // "A", "B", "own", or "" for none (configuration_path unchanged)
  } rows[] = {
      {1, "A", "B", true, 1, "A"},   {2, "", "B", true, 1, "B"},
      {3, "-", "B", true, 1, "B"},   {4, "A", "-", false, 1, "A"},
      {5, "-", "", true, 1, "own"}, {6, "", "", true, 1, "own"},
      {7, "-", "", false, 0, ""},    {8, "", "-", false, 0, ""},
  };
  const std::string a = scratch_.file("A.WCO"), b = scratch_.file("B.WCO");
  const std::string own_dir = scratch_.path() + SEP;
  ASSERT_TRUE(kxtest::write_bytes(a, marker_file("A")));
  ASSERT_TRUE(kxtest::write_bytes(b, marker_file("B")));
  for (const Row &r : rows) {
    clear_store();
    const std::string own = own_dir + "SYSTEM.WCO";
    kxtest::write_bytes(own, marker_file("own"));
    if (!r.own) std::remove(own.c_str());
    auto pick = [&](const char *which, const std::string &file) -> std::string {
      return which[0] == '\0' ? "" : which[0] == '-' ? scratch_.file("GONE.WCO") : file;
    };
    set_values(pick(r.user, a), pick(r.system, b));
    // The program's own directory: the scratch directory itself, given without a drive.
    startup_read_command_line(0, nullptr);
    strcpy(program_dir, own_dir.c_str());
    strcpy(configuration_path, "unchanged");
    EXPECT_EQ(r.result, LocateConfiguration()) << "row " << r.n;
    std::string want = std::string(r.found) == "A"     ? a
                       : std::string(r.found) == "B"   ? b
                       : std::string(r.found) == "own" ? own
                                                       : "unchanged";
    EXPECT_EQ(want, configuration_path) << "row " << r.n;
    EXPECT_EQ(r.found[0] ? r.found : "<none>", store_text("CO_common", "marker")) << "row " << r.n;
  }
  EXPECT_EQ(0u, boxes_.count()) << boxes_.dump();
}

TEST_F(Locate, OwnFileRepairsTheInstalledPathsOfTheRegistry) {
  // The machine names an installation whose configuration is gone; the program runs from
  // elsewhere (PROG\EXE) and has its own SYSTEM.WCO.
  const std::string registry = drive_path("KORV5\\EXE\\SYSTEM.WCO");
  set_values("", registry);
  ASSERT_EQ(1, plat_make_directory(drive_path("PROG").c_str()));
  ASSERT_EQ(1, plat_make_directory(drive_path("PROG\\EXE").c_str()));
  start_program(drive_path("PROG\\EXE\\"));
  // Natively the store opens the own file by its drive path as it stands.
  ASSERT_TRUE(kxtest::write_bytes(saved("PROG\\EXE\\SYSTEM.WCO"), marker_file("own")));
  ASSERT_EQ(1, LocateConfiguration());
  EXPECT_EQ(registry, configuration_path);
  EXPECT_EQ(0u, boxes_.count()) << boxes_.dump();
  for (const char *d : {"KORV5", "KORV5\\Navrhy", "KORV5\\EXE"})
    EXPECT_TRUE(plat_directory_exists(drive_path(d).c_str())) << d;

  char upper[KX_PATH];
  ASSERT_EQ(1, startup_install_root(registry.c_str(), upper));
  // system_path: the program's directory without its drive, upper-cased, cut before EXE.
  std::string system = std::string(program_dir);
  system = system.substr(0, system.size() - 4);
  for (char &c : system) c = (char)toupper((unsigned char)c);
  struct Want {
    const char *section, *key;
    std::string value;
  } wants[] = {
      {"CO_common", "system_path", system},
      {"CO_common", "initial_directory", std::string(upper) + "Navrhy"},
      {"CO_schematic", "schema_default_library_path", program_drive + system + "SLIB\\"},
      {"CO_layout", "layout_default_library_path", program_drive + system + "LLIB\\"},
      {"CO_edit", "edit_default_library_path", program_drive + system + "ELIB\\"},
      {"CO_simulator", "default_model_library_path", program_drive + system + "MLIB\\"},
      {"CO_common", "marker", "own"},
  };
  const std::string file = kxtest::read_bytes(saved("KORV5\\EXE\\SYSTEM.WCO"));
  for (const Want &w : wants) {
    EXPECT_EQ(w.value, store_text(w.section, w.key)) << w.key;
    EXPECT_NE(std::string::npos, file.find(w.key + std::string(42 - 3 - strlen(w.key), ' ') +
                                           "=  " + w.value))
        << w.key << " in the saved file:\n" << file;
  }
}

TEST_F(Locate, RepairFailuresNameThePathAndLeaveTheKeys) {
  struct Row {
    int n;
    std::string registry;
    const char *blocker;   // a file where a directory must go (drive form), or null
    std::string box;       // expected message ("" none)
    Flag result;
  } rows[] = {
      {1, "", nullptr, "", 1},
      {2, "KORV5\\EXE\\SYSTEM.WCO", nullptr, "Chybná cesta KORV5\\EXE\\SYSTEM.WCO", 0},
      {3, "Q:\\KORV5\\EXE\\SYSTEM.WCO", nullptr, "Nelze najít disk Q::", 0},
      {4, drive_path("BLOK\\EXE\\SYSTEM.WCO"), "BLOK",
       "Nelze vytvořit adresář BLOK na disku ", 0},
      {5, drive_path("K5\\EXE\\SYSTEM.WCO"), "K5\\Navrhy",
       "Nelze vytvořit adresář Navrhy na disku ", 0},
  };
  for (const Row &r : rows) {
    clear_store();
    boxes_.clear();
    set_values("", r.registry);
    start_program(drive_path("PROG\\EXE\\"));
    if (r.blocker != nullptr) {
      std::string b = r.blocker;
      if (b.find('\\') != std::string::npos)
        plat_make_directory(drive_path(b.substr(0, b.find('\\'))).c_str());
      ASSERT_TRUE(kxtest::write_bytes(local(b), "x")) << "row " << r.n;
    }
    strcpy(configuration_path, "unchanged");
    EXPECT_EQ(r.result, RepairInstalledPaths()) << "row " << r.n;
    ASSERT_EQ(r.box.empty() ? 0u : 1u, boxes_.count()) << "row " << r.n << ": " << boxes_.dump();
    if (!r.box.empty()) {
      EXPECT_EQ(0u, boxes_.only().text.find(r.box)) << "row " << r.n << ": " << boxes_.dump();
      EXPECT_EQ(" Chyba ", boxes_.only().title) << "row " << r.n;
    }
    EXPECT_EQ("<none>", store_text("CO_common", "system_path")) << "row " << r.n;
    EXPECT_STREQ("unchanged", configuration_path) << "row " << r.n;
  }
}

TEST(StartupPaths, InstallRootAndSystemPath) {
  struct Row {
    int n;
    std::string in, want;
  } roots[] = {
      {1, "c:\\korv5\\exe\\system.wco", "C:\\KORV5\\"},
      {2, "D:\\Programy\\Korv\\EXE\\SYSTEM.WCO", "D:\\PROGRAMY\\KORV\\"},
      {3, "C:\\TEXEDIT\\EXE\\SYSTEM.WCO", "C:\\T"},   // cut at the first EXE, whatever it is in
      {4, "C:\\KORV5\\SYSTEM.WCO", "C:\\KORV5\\SYSTEM.WCO"},
      {5, "c:\\návrhy\\exe\\x", "C:\\NÁVRHY\\"},
      {6, "C:\\" + pat(1030), "C:\\" + pat(1020)},   // cut at 1023, then upper-cased
  };
  for (const Row &r : roots) {
    char out[KX_PATH + 8];
    memset(out, '#', sizeof out);
    ASSERT_EQ(1, startup_install_root(r.in.c_str(), out)) << "row " << r.n;
    std::string want = r.want;
    if (r.n == 6)
      for (char &c : want) c = (char)toupper((unsigned char)c);
    EXPECT_EQ(want, out) << "row " << r.n;
    EXPECT_EQ('#', out[KX_PATH]) << "row " << r.n << ": wrote past the buffer";
  }
  struct DirRow {
    int n;
    const char *dir, *want;
  } dirs[] = {
      {1, "\\KORV5\\EXE\\", "\\KORV5\\"},   {2, "\\korv5\\exe\\", "\\KORV5\\"},
      {3, "\\TOOLS\\", "\\TOOLS\\"},       {4, "\\EXEC\\EXE\\", "\\EXEC\\"},
      {5, "\\A\\EXE", "\\A\\"},            {6, "", ""},
      {7, "\\EXE\\", "\\"},
  };
  for (const DirRow &r : dirs) {
    strcpy(program_dir, r.dir);
    char out[KX_PATH];
    ASSERT_EQ(1, startup_system_path(out)) << "row " << r.n;
    EXPECT_STREQ(r.want, out) << "row " << r.n;
  }
  kxtest::BoxRecorder boxes;
  EXPECT_EQ(0, startup_install_root(nullptr, nullptr));
  EXPECT_EQ(0, startup_system_path(nullptr));
  EXPECT_EQ(2u, boxes.count()) << boxes.dump();
}

}  // namespace
