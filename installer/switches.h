// switches.h - the switches of SETUP.EXE for unattended installs.
//
// The suite's start-up (startup.h) ignores every argument that starts with "-" or "/". SETUP.EXE
// gives meaning to these, and only these (names in any case, "/" or "-" alike):
//   /SILENT              the dialog is shown, filled from the switches, and runs by itself
//   /VERYSILENT          no window at all (wins over /SILENT)
//   /DIR=path            target directory: must start with a drive ("C:"); "\" is added
//   /SOURCE=path         source directory: any path ("\" is added), also a network path
//   /DESKTOP=0|1         the desktop icon check box
//   /QUICKLAUNCH=0|1     the quick-launch icon check box
//   /KEEPCONFIG=0|1      the answer to taking over an earlier system configuration
//   /LOG=file            where the log goes
//   /HELP, /?            the switches and exit codes, nothing installed
// Any other argument starting with "-" or "/" stays ignored. A switch of the list given
// without its value, with a value it does not take, with a value out of its range, or with a
// path that does not fit the path buffers (with the "\" added) is refused.
// Texts are Windows-1250. Portable: no window, no file is touched.
#ifndef KX_SWITCHES_H
#define KX_SWITCHES_H

#include "common/co.h"

enum { SETUP_INTERACTIVE = 0, SETUP_SILENT = 1, SETUP_VERY_SILENT = 2 };
enum { SETUP_NOT_GIVEN = -1 };
enum { SETUP_REASON_SIZE = 200 };

struct SetupSwitches {
  int16_t mode;                    // SETUP_INTERACTIVE, _SILENT or _VERY_SILENT
  int16_t given;                   // how many switches of the list were given (also bad ones)
  Flag help;                       // /HELP or /?
  char target[KX_PATH];            // "" when not given; else with its trailing "\"
  char source[KX_PATH];            // "" when not given; else with its trailing "\"
  int16_t desktop;                 // 0, 1 or SETUP_NOT_GIVEN
  int16_t quick_launch;            // 0, 1 or SETUP_NOT_GIVEN
  int16_t keep_config;             // 0 or 1; 1 when not given
  char log[KX_PATH];               // "" when not given
  char reason[SETUP_REASON_SIZE];  // why the command line was refused (Czech), else ""
};

Flag setup_read_switches(int argc, const char *const *argv, SetupSwitches *switches);
// Reads argv[1] .. argv[argc - 1] into switches (all fields set; a switch given twice: the last
// one counts). Returns 1 when every switch of the list is well formed; 0 when one is not:
// reason names the first bad argument (cut to 60 characters) and what is wrong with it; the
// well-formed switches are read all the same (so /VERYSILENT keeps a refusal quiet). 0 with a
// reason also for a null argument.

#endif
