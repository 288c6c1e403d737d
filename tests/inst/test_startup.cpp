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
      {7, "AB:\\X\\Y.EXE", "AB:", "\\X\\", "c:"},  // no drive letter: the system drive stays
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
  ASSERT_EQ(1, reg_set_string(REG_ROOT_LOCAL_MACHINE, STARTUP_REGISTRY_KEY, STARTUP_SYSTEM_VALUE,
                              system.c_str()));
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
  kxtest::ScratchDir scratch_;
  kxtest::BoxRecorder boxes_;
};

TEST_F(Locate, TriesUserThenMachineThenTheProgramsOwnFile) {
  // Files A (user's), B (machine's), own SYSTEM.WCO; each marks the store with its name.
  struct Row {
    int n;
    const char *user;    // "A": the file A, "-": a missing file, "": empty value
    const char *system;  // "B", "-", ""
    bool own;            // the program's SYSTEM.WCO exists
    Flag result;
    const char *found;  // "A", "B", "own", or "" for none (configuration_path unchanged)
  } rows[] = {
      {1, "A", "B", true, 1, "A"},  {2, "", "B", true, 1, "B"},   {3, "-", "B", true, 1, "B"},
      {4, "A", "-", false, 1, "A"}, {5, "-", "", true, 1, "own"}, {6, "", "", true, 1, "own"},
      {7, "-", "", false, 0, ""},   {8, "", "-", false, 0, ""},
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

}  // namespace
