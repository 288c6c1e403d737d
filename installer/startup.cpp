// startup.cpp - the suite's shared start-up: command line, program drive and directory, and the
// location of the system configuration file.
#include "installer/startup.h"

#include "common/file.h"
#include "common/st.h"
#include "common/we.h"
#include "platform/inst_plat.h"
#include "platform/reg.h"
#include "store/wco.h"
#ifdef KX_WIN32
#include "platform/wtext.h"
#endif

#include <string.h>

char program_drive[STARTUP_DRIVE];
char program_dir[KX_PATH];
char design_file_name[KX_PATH] = "DESIGN.D32";
char command_rest[KX_PATH];
Flag function_list_switch;
Flag second_switch;
char configuration_path[KX_PATH];
char system_drive[STARTUP_DRIVE] = "c:";
int16_t extra_argument_count;

const char STARTUP_DEFAULT_DESIGN[] = "DESIGN";
const char STARTUP_DEFAULT_EXTENSION[] = "D32";

// ---- Bounded text helpers ----------------------------------------------------------------------
// Paths are cut, never overrun; no mark is put at the cut (a cut path is still a path).

// 1 when the last component of name carries a "." (an extension, possibly empty).
static Flag has_extension(const char *name) {
  const char *dot = nullptr;
  for (const char *p = name; *p != '\0'; p++) {
    if (*p == '.') dot = p;
    else if (*p == '\\' || *p == '/' || *p == ':') dot = nullptr;
  }
  return dot != nullptr ? 1 : 0;
}

// ---- Command line ------------------------------------------------------------------------------

static void take_program_path(const char *path) {
  // The drive: the first three characters, cut after ":".
  char first[4];
  st_put(first, sizeof first, path);
  char *colon = strchr(first, ':');
  if (colon != nullptr) colon[1] = '\0';
  else first[0] = '\0';
  st_put(program_drive, sizeof program_drive, first);

  // The directory: the rest after ":", cut after the last "\".
  const char *rest = path + strlen(program_drive);
  st_put(program_dir, sizeof program_dir, rest);
  char *last = strrchr(program_dir, '\\');
  if (last != nullptr) last[1] = '\0';
  else program_dir[0] = '\0';

  // keep this: the built-in system drive follows the program's drive.
  if (path[0] != '\0' && path[1] == ':') system_drive[0] = path[0];
}

static void take_design_name(const char *argument) {
  if (has_extension(argument)) {
    st_put(design_file_name, sizeof design_file_name, argument);
    return;
  }
  // Room is kept for the extension: a cut name still gets ".D32".
  const size_t room = sizeof design_file_name - 1 - (1 + strlen(STARTUP_DEFAULT_EXTENSION));
  st_put(design_file_name, room + 1, argument);
  st_append(design_file_name, sizeof design_file_name, ".");
  st_append(design_file_name, sizeof design_file_name, STARTUP_DEFAULT_EXTENSION);
}

static void append_rest(const char *argument) {
  if (command_rest[0] != '\0') st_append(command_rest, sizeof command_rest, " ");
  st_append(command_rest, sizeof command_rest, argument);
}

Flag startup_read_command_line(int argc, char **argv) {
  program_drive[0] = '\0';
  program_dir[0] = '\0';
  st_put(design_file_name, sizeof design_file_name, STARTUP_DEFAULT_DESIGN);
  st_append(design_file_name, sizeof design_file_name, ".");
  st_append(design_file_name, sizeof design_file_name, STARTUP_DEFAULT_EXTENSION);
  command_rest[0] = '\0';
  function_list_switch = 0;
  second_switch = 0;
  st_put(system_drive, sizeof system_drive, "c:");
  extra_argument_count = 0;
  if (argv == nullptr || argc < 1) return 1;

  if (argv[0] != nullptr) take_program_path(argv[0]);

  Flag have_design = 0;
  for (int i = 1; i < argc; i++) {
    const char *argument = argv[i];
    if (argument == nullptr || argument[0] == '\0') continue;
    if (argument[0] == '$') {
      if (argument[1] == 'f' || argument[1] == 'F') function_list_switch = 1;
      else if (argument[1] == 'm' || argument[1] == 'M') second_switch = 1;
    } else if (argument[0] == '-' || argument[0] == '/') {
      // a switch of another program of the suite: kept in the rest only
    } else if (!have_design) {
      take_design_name(argument);
      have_design = 1;
      continue;
    } else {
      extra_argument_count++;
    }
    append_rest(argument);
  }
  return 1;
}

// ---- The system configuration ------------------------------------------------------------------

const char STARTUP_REGISTRY_KEY[] = "Software\\KORV\\KORVEX\\5";
const char STARTUP_USER_VALUE[] = "user_wco_path";
const char STARTUP_SYSTEM_VALUE[] = "system_wco_path";
const char STARTUP_SYSTEM_FILE[] = "SYSTEM.WCO";
const char STARTUP_DESIGN_DIRECTORY[] = "Navrhy";

// Loads path into the process-wide store when the file is there. 1 when it exists and loaded.
static Flag try_configuration(const char *path) {
  if (path[0] == '\0' || !file_exists(path)) return 0;
  ConfigStore *store = wco::system_store();
  if (store == nullptr) return 0;
  return wco::load(store, path);
}

Flag LocateConfiguration(void) {
  static const int16_t roots[2] = {REG_ROOT_CURRENT_USER, REG_ROOT_LOCAL_MACHINE};
  static const char *const values[2] = {STARTUP_USER_VALUE, STARTUP_SYSTEM_VALUE};
  char path[KX_PATH];
  for (int i = 0; i < 2; i++) {
    reg_get_string(roots[i], STARTUP_REGISTRY_KEY, values[i], path, sizeof path);
    if (try_configuration(path)) {
      st_put(configuration_path, sizeof configuration_path, path);
      return 1;
    }
  }

  st_put(path, sizeof path, program_drive);
  st_append(path, sizeof path, program_dir);
  st_append(path, sizeof path, STARTUP_SYSTEM_FILE);
  if (!file_exists(path)) return 0;
  st_put(configuration_path, sizeof configuration_path, path);
  if (try_configuration(path)) RepairInstalledPaths();
  return 1;
}

// Enters directory (one component) below the current directory, creating it when missing.
static Flag enter_or_create(const char *directory, const char *drive) {
  if (plat_change_directory(directory)) return 1;
  if (!plat_make_directory(directory)) {
    ErrorBoxF("Nelze vytvořit adresář %s na disku %s", directory, drive);
    return 0;
  }
  if (!plat_change_directory(directory)) {
    ErrorBoxF("Nelze změnit adresář na disku %s", drive);
    return 0;
  }
  return 1;
}

// Builds the install root level by level from the drive's root, and "Navrhy" and "EXE" in it.
static Flag build_install_tree(const char *root, const char *drive) {
  char here[4];
  st_put(here, sizeof here, drive);
  st_append(here, sizeof here, "\\");
  if (!plat_change_directory(here)) {
    ErrorBoxF("Nelze změnit adresář na disku %s", drive);
    return 0;
  }
  char rest[KX_PATH];
  st_put(rest, sizeof rest, root + 2);
  char *p = rest;
  while (*p != '\0') {
    char *end = strchr(p, '\\');
    if (end != nullptr) *end = '\0';
    char component[KX_PATH];
    st_put(component, sizeof component, p);
    st_trim(component);
    if (component[0] != '\0' && !enter_or_create(component, drive)) return 0;
    if (end == nullptr) break;
    p = end + 1;
  }
  static const char *const inside[2] = {STARTUP_DESIGN_DIRECTORY, "EXE"};
  for (int i = 0; i < 2; i++) {
    if (!enter_or_create(inside[i], drive)) return 0;
    if (!plat_change_directory("..")) {
      ErrorBoxF("Nelze změnit adresář na disku %s", drive);
      return 0;
    }
  }
  return 1;
}

Flag startup_install_root(const char *system_wco_path, char *root) {
  if (system_wco_path == nullptr || root == nullptr) {
    InternalError("startup", __LINE__);
    return 0;
  }
  st_put(root, KX_PATH, system_wco_path);
  st_upper(root);
  char *exe = strstr(root, "EXE");
  if (exe != nullptr) *exe = '\0';
  return 1;
}

Flag startup_system_path(char *system_path) {
  if (system_path == nullptr) {
    InternalError("startup", __LINE__);
    return 0;
  }
  st_put(system_path, KX_PATH, program_dir);
  st_upper(system_path);
  for (char *p = strstr(system_path, "\\EXE"); p != nullptr; p = strstr(p + 1, "\\EXE")) {
    if (p[4] == '\\' || p[4] == '\0') {
      p[1] = '\0';
      break;
    }
  }
  return 1;
}

Flag RepairInstalledPaths(void) {
  char registry_path[KX_PATH];
  reg_get_string(REG_ROOT_LOCAL_MACHINE, STARTUP_REGISTRY_KEY, STARTUP_SYSTEM_VALUE, registry_path,
                 sizeof registry_path);
  if (registry_path[0] == '\0') return 1;

  char root[KX_PATH];
  startup_install_root(registry_path, root);
  if (root[0] == '\0' || root[1] != ':') {
    ErrorBoxF("Chybná cesta %s", registry_path);
    return 0;
  }
  char drive[3] = {root[0], root[1], '\0'};
  if (!plat_drive_ready(drive)) {
    ErrorBoxF("Nelze najít disk %s:", drive);
    return 0;
  }

  // keep this: the caller's current directory is given back, whatever the walk did.
  char previous[KX_PATH];
  Flag have_previous = plat_current_directory(previous, sizeof previous);
  Flag built = build_install_tree(root, drive);
  if (have_previous) plat_change_directory(previous);
  if (!built) return 0;

  ConfigStore *store = wco::system_store();
  if (store == nullptr) return 0;
  char system_path[KX_PATH];
  startup_system_path(system_path);
  char value[KX_PATH];
  Flag ok = wco::set_text(store, "CO_common", "system_path", system_path);
  st_put(value, sizeof value, root);
  st_append(value, sizeof value, STARTUP_DESIGN_DIRECTORY);
  ok = (Flag)(wco::set_text(store, "CO_common", "initial_directory", value) && ok);
  static const struct {
    const char *section, *key, *library;
  } libraries[4] = {
      {"CO_schematic", "schema_default_library_path", "SLIB"},
      {"CO_layout", "layout_default_library_path", "LLIB"},
      {"CO_edit", "edit_default_library_path", "ELIB"},
      {"CO_simulator", "default_model_library_path", "MLIB"},
  };
  for (int i = 0; i < 4; i++) {
    st_put(value, sizeof value, program_drive);
    st_append(value, sizeof value, system_path);
    st_append(value, sizeof value, libraries[i].library);
    st_append(value, sizeof value, "\\");
    ok = (Flag)(wco::set_text(store, libraries[i].section, libraries[i].key, value) && ok);
  }
  if (!ok) return 0;
  if (!wco::save(store, registry_path)) return 0;
  st_put(configuration_path, sizeof configuration_path, registry_path);
  return 1;
}

#ifdef KX_WIN32
Flag startup_arguments(int *argc, char ***argv) {
  if (wtext_arguments(argc, argv)) return 1;
  ErrorBox("Příkazový řádek obsahuje znaky, které systém KORVEX nedokáže zapsat.");
  return 0;
}
#endif
