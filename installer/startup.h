// startup.h - the suite's shared start-up: the command line, the program's own drive and
// directory, the design file name, and the location of the system configuration file.
// Used by SETUP.EXE and by the suite's programs (KORV5.EXE, CONFIG.EXE, UNINSTAL.EXE).
#ifndef KX_STARTUP_H
#define KX_STARTUP_H

#include "common/co.h"

enum { STARTUP_DRIVE = 4 };

extern char program_drive[STARTUP_DRIVE];  // "C:" or ""
extern char program_dir[KX_PATH];          // "\SETUP\"
extern char design_file_name[KX_PATH];     // "DESIGN.D32" by default
extern char command_rest[KX_PATH];         // every argument but the design name, blank-separated
extern Flag function_list_switch;          // "$f" / "$F"
extern Flag second_switch;                 // "$m" / "$M"
extern char configuration_path[KX_PATH];   // the system configuration file in use
extern char system_drive[STARTUP_DRIVE];   // "c:", the drive of the default system_path
                                           // "\KORV5\"; its letter follows the program's drive
extern int16_t extra_argument_count;       // plain arguments after the design name

extern const char STARTUP_DEFAULT_DESIGN[];     // "DESIGN"
extern const char STARTUP_DEFAULT_EXTENSION[];  // "D32"

Flag startup_arguments(int *argc, char ***argv);
// Windows: the program's arguments in 1250, taken from the system's wide command line (so that
// a name with Czech letters is right whatever the system's ANSI code page), for
// startup_read_command_line. An argument that 1250 cannot hold becomes "" after the error box
// "Příkazový řádek obsahuje znaky, které systém KORVEX nedokáže zapsat."; returns 0 then.

Flag startup_read_command_line(int argc, char **argv);
// Fills the globals above from the argument vector (argv[0] the program's path). Resets them
// first (design "DESIGN.D32", system drive "c:", everything else empty or 0), so it may be
// called again.
//   argv[0]: program_drive = its first three characters cut after ":" ("C:"; "" when there is
//     no ":" among them); program_dir = the rest after the drive, cut after the last backslash
//     ("\SETUP\"; "" when there is none). When the second character is ":", the letter of
//     system_drive becomes the path's first character ("D:\X.EXE" gives "D:").
//   Each further argument, in order:
//     "$f" / "$F" sets function_list_switch, "$m" / "$M" second_switch; any other "$..." is
//       ignored; all of them go to command_rest;
//     "-..." / "/...": a switch for someone else, goes to command_rest only;
//     the first other argument is the design name: taken as it stands when its last
//       component has a ".", else ".D32" is added (a name too long for the buffer is cut so
//       that the extension still fits); it is not added to command_rest;
//     later other arguments count in extra_argument_count and go to command_rest.
//   command_rest: the arguments above joined by one blank, in order.
//   An empty or null argument is skipped. Every buffer is cut at 1023 characters (the drive
//   at 3), never overrun.
// Returns 1 (also for a null argv or argc < 1: the globals keep their reset values).

// ---- The system configuration ------------------------------------------------------------
//
// The registry key of the suite, under HKEY_CURRENT_USER and HKEY_LOCAL_MACHINE, and its values.
extern const char STARTUP_REGISTRY_KEY[];      // "Software\KORV\KORVEX\5"
extern const char STARTUP_USER_VALUE[];        // "user_wco_path"   (HKEY_CURRENT_USER)
extern const char STARTUP_SYSTEM_VALUE[];      // "system_wco_path" (HKEY_LOCAL_MACHINE)
extern const char STARTUP_SYSTEM_FILE[];       // "SYSTEM.WCO"
extern const char STARTUP_DESIGN_DIRECTORY[];  // "Navrhy"

Flag LocateConfiguration(void);
// Finds the system configuration file and loads it into the process-wide store
// (wco::system_store()). Tries, in order, and stops at the first file that exists and loads:
//   1. HKEY_CURRENT_USER  STARTUP_REGISTRY_KEY  user_wco_path   (empty or missing: skipped)
//   2. HKEY_LOCAL_MACHINE STARTUP_REGISTRY_KEY  system_wco_path (empty or missing: skipped)
//   3. program_drive + program_dir + "SYSTEM.WCO" (startup_read_command_line must have run).
//      When it loads, RepairInstalledPaths runs (its result is ignored); when it exists but
//      does not load, that is still a success.
// The path found becomes configuration_path (steps 1 and 2 only when the file loaded).
// A registry file that exists but does not load has shown the file layer's message; no other
// message is shown.
// Returns 1 when a file was found as above; 0 when none of the three exists (configuration_path
// unchanged).

Flag RepairInstalledPaths(void);
// For a configuration taken from the program's own directory while the registry names the
// system configuration: makes the registry's installation usable from this program's place.
//   1. Reads system_wco_path (HKEY_LOCAL_MACHINE). Empty or missing: nothing is done, 1.
//   2. Install root = that path upper-cased, cut at its first "EXE" (startup_install_root).
//      Its second character not ":": "Chybná cesta %s" (the registry path), 0. Its drive (two
//      characters) not ready: "Nelze najít disk %s:" (so the text shows "C::"), 0.
//   3. From the drive's root the install root is walked component by component (blanks
//      trimmed, empty components skipped); each component is entered, or created and entered;
//      then "Navrhy" and "EXE" are each entered or created and left with "..". Failures:
//      "Nelze vytvořit adresář %s na disku %s" (component, drive), "Nelze změnit adresář na
//      disku %s" (drive), 0. Afterwards the caller's current directory is restored.
//   4. In the store: CO_common system_path = startup_system_path; CO_common initial_directory
//      = install root + "Navrhy"; CO_schematic schema_default_library_path, CO_layout
//      layout_default_library_path, CO_edit edit_default_library_path and CO_simulator
//      default_model_library_path = program_drive + system_path + "SLIB\" / "LLIB\" / "ELIB\"
//      / "MLIB\".
//   5. The store is saved to the registry path, which becomes configuration_path.
// Returns 1 when done; 0 after the message of the first failure (the file layer's for the
// save; the keys stay unchanged when a step before 4 failed).

Flag startup_install_root(const char *system_wco_path, char *root);
// root (KX_PATH bytes) = system_wco_path upper-cased (Windows-1250), cut at its first "EXE"
// ("c:\korv5\exe\system.wco" gives "C:\KORV5\"; without "EXE" the whole path).
// Returns 1; 0 after InternalError for a null argument.

Flag startup_system_path(char *system_path);
// system_path (KX_PATH bytes) = program_dir upper-cased, cut after the "\" before its first
// component "EXE" ("\korv5\exe\" gives "\KORV5\"; without such a component program_dir as it
// stands, upper-cased). Returns 1; 0 after InternalError for a null argument.

#endif
