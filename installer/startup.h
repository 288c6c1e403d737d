// startup.h - the suite's shared start-up: the command line, the program's own drive and
// directory, the design file name, and the location of the system configuration file.
// Used by SETUP.EXE and by the suite's programs (KORV5.EXE, CONFIG.EXE, UNINSTAL.EXE).
#ifndef KX_STARTUP_H
#define KX_STARTUP_H

#include "../common/co.h"

enum { STARTUP_DRIVE = 4 };

extern char program_drive[STARTUP_DRIVE];   // "C:" or ""
extern char program_dir[KX_PATH];           // "\SETUP\"
extern char design_file_name[KX_PATH];      // "DESIGN.D32" by default
extern char command_rest[KX_PATH];          // every argument but the design name, blank-separated
extern Flag function_list_switch;           // "$f" / "$F"
extern Flag second_switch;                  // "$m" / "$M"
extern char configuration_path[KX_PATH];    // the system configuration file in use

Flag startup_read_command_line(int argc, char **argv);
// Fills the globals above from the argument vector (argv[0] the program's path). Resets them
// first, so it may be called again. Always 1.

Flag LocateConfiguration(void);
Flag RepairInstalledPaths(void);

#endif
