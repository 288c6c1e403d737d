// unatt.h - how a run of SETUP.EXE ends, its log, and the answers of the unattended modes.
//
// The module registers itself as the reporting module's reporter (common/we.h) and so sees every
// box, question, notice and status text of the run:
//   - each one goes to the run log (common/log.h), with the answer taken;
//   - in the silent modes no box is shown: each question gets its fixed answer, and error,
//     information and notice boxes are taken as if their button had been pressed:
//       "Na cílové cestě byla nalezena předchozí instalace ..."   Yes
//       "Pro novou instalaci může být převzata systémová ..."     /KEEPCONFIG (default Yes)
//       "Existující soubory budou přepsány, pokračovat"            Yes
//       "Zkusit znovu" (after "Vlož DISK%d")                       No: the install fails
//       "Soubor %s nenalezen, vynechat"                            No: the install fails
//       the HTML Help question                                     No
//       any other question                                         No
//   - the messages and answers of an install tell how it failed, which gives the exit code
//     (UNATT_* below): every failing step has shown its message before the procedure ends, so
//     the last telling message before the end names the failure.
// Interactive runs show every box as before; only the log and the exit code are added.
#ifndef KX_UNATT_H
#define KX_UNATT_H

#include "common/co.h"

// Exit codes of SETUP.EXE.
enum {
  UNATT_INSTALLED = 0,  // installed, nothing skipped, every file unpacked
  UNATT_REFUSED = 1,    // command line refused, nothing done
  UNATT_CANCELLED = 2,  // the user declined, aborted, or closed without a successful install
  UNATT_FAILED = 3,     // an install step failed
  UNATT_PREVIOUS = 4,   // the earlier installation's uninstaller failed
  UNATT_MEDIUM = 5,     // a disk or a listed file is missing
  UNATT_NO_SPACE = 6,   // not enough free space
  UNATT_PARTIAL = 7     // installed, but files failed to unpack or were skipped
};

void unatt_begin(int16_t mode, int16_t keep_config);
// Registers the reporter. mode: SETUP_INTERACTIVE, SETUP_SILENT or SETUP_VERY_SILENT
// (installer/switches.h); keep_config: the answer to the configuration question (0 or 1).
void unatt_end(void);
// Unregisters it.

struct InstallState;
struct SetupSwitches;

void unatt_run_begin(const InstallState *state);
// An install starts: what earlier runs told is forgotten; the paths and icon options it runs
// with go to the log.
void unatt_run_end(Flag installed);
// The install ended (installed: InstallProcedure's result); logs the result and its exit code.

int16_t unatt_exit_code(void);
// The exit code of the last install run; UNATT_CANCELLED when none has ended.

Flag unatt_install(const SetupSwitches *switches, const char *program_path);
// The very silent install: the install procedure without any window. The state is made as the
// dialog makes it (source: program_path's directory, target "C:\KORV5\"), then the switches
// fill it; the desktop icon is on unless /DESKTOP=0, the quick-launch icon is on when the
// system offers its folder (read as the dialog reads it) unless /QUICKLAUNCH=0. Progress goes to
// the log only. Returns the procedure's result (0 also when the state can't be made).

int16_t unatt_quick_launch(int16_t given);
// The quick-launch option in effect for the /QUICKLAUNCH value given (0, 1 or SETUP_NOT_GIVEN):
// 1 when it is not 0 and the system offers the quick-launch folder; looked up without a box.

void unatt_log_file(const char *source, const char *target, uint32_t size);
// One installed file in the log: source, target and size in bytes.

#endif
