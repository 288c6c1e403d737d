// inst.h - the install procedure and its steps: source and target checks, the previous
// installation, the list copies, directories, overwrite and space checks, the transfer loop over
// the disks, the configuration update, shortcuts, registry entries, the HTML Help check and the
// function list. Internal error reports carry the name "inst".
//
// The procedure runs on the GUI thread inside the installer dialog's Start handler. Every step
// returns a success flag and has shown its own message before it returns 0; the first failing
// step ends the run. Relative file operations work in the process's current directory, which
// the target check leaves at the target.
#ifndef KX_INST_H
#define KX_INST_H

#include "common/co.h"
#include "lists/ilst.h"

struct FileObject;

// The installer's one state record, owned by the installer dialog.
struct InstallState {
  ListHeader header;  // DISKLIST.LST's header as read by the last rewind
  ListRecord record;  // its current record (installer/inst_list.h)

  char source_path[KX_PATH];  // with trailing "\"
  char target_path[KX_PATH];  // drive, ":" and trailing "\"
  Flag desktop_icon;
  Flag quick_launch_icon;
  FileObject *list;  // the open DISKLIST.LST, null until the first rewind
  uint16_t records_read;
  uint64_t total_size;  // sum of the sizes of the list's records (the space check)
};

// What the procedure needs of the installer dialog. The dialog registers itself with
// inst_set_dialog before the first run.
struct InstallDialog {
  void *context;
  void (*set_line)(void *context, int16_t item, const char *text);  // progress items 18..21
  void (*pump)(void *context);            // process pending window messages
  void (*bring_to_front)(void *context);  // make the dialog active and the foreground window
  // Both may be null. batch(1): the texts of one file after another follow, which the dialog
  // may paint at a slower pace (their windows hold every text at once all the same); batch(0):
  // that has ended, whatever is not painted yet is painted. paint: paint the status line and
  // the progress lines now, a long step follows.
  void (*batch)(void *context, Flag on);
  void (*paint)(void *context);
};

enum { INST_LINE_FIRST = 18, INST_LINE_LAST = 21 };

// Module state.
extern Flag abort_requested;    // set by the abort button; cleared at the start of each run
extern Flag config_taken_over;  // the previous installation's configuration was loaded
extern int16_t current_disk;    // 0-based disk the transfer loop expects

Flag inst_set_dialog(const InstallDialog *dialog);
// Stores (a copy of) the dialog description. Null: InternalError("inst"), 0. Else 1.

InstallState *inst_create_state(const char *program_path);
// A new state: source = the directory of program_path (cut after its last "\", upper-cased),
// target "C:\KORV5\", both icon flags 0, no list open. Null after an out-of-memory report.
void inst_destroy_state(InstallState **state);
// Closes the list if open and frees the state; *state becomes null.

Flag InstallProcedure(InstallState *state);
// Runs the steps in their fixed order; 1 when the install counts as successful, 0 when a step
// failed (its message has been shown). Null state or no dialog set: InternalError, 0.

void inst_close_lists(InstallState *state);
// Closes UNINST.LST and DISKLIST.LST after a run (the dialog calls this after every run).

Flag DiskIdFile(InstallState *state);  // (inst_list.cpp)
// The disk check: reads source + ("A" + current_disk) + ".KORV" and checks its "DISK:" line
// (messages "Nesprávná disketa", "Nesprávné pořadové číslo diskety (%d)", "Neznámé klíčové slovo
// v souboru %s"). 1 when the disk in the source directory is disk current_disk.

Flag CheckAbort(void);
// Lets the dialog process its pending messages; when abort_requested is set asks
// "Přerušit instalaci ?": Yes returns 1 (stop), No clears abort_requested and returns 0.

Flag RecordInstalledFile(const char *path, const char *part2, const char *part3);
Flag RecordCreatedDirectory(const char *path);
Flag RecordOtherItem(const char *key);   // key under HKEY_CLASSES_ROOT
Flag RecordMachineKey(const char *key);  // key under HKEY_LOCAL_MACHINE
// Append one UNINST.LST record of kind 0, 1, 2, 3; the path is the concatenation of the given
// parts (null parts are empty). Do nothing while UNINST.LST is not open. Always 1; a null first
// argument is an internal error.
// Each record is in the file when the call returns (the list's stream is flushed after it);
// one that the disk can't take has shown "Do souboru UNINST.LST nelze zapisovat (plný
// disk?)" and is written over by the next. A run writes after the whole records of an existing
// list (a torn tail is written over, and cut off when the list is closed). The transfer
// records a file once it is made, and after a failed copy or unpacking the part that a full
// disk left; while INST.LST is open the list holds room for three records beyond its end, so
// that these records and INST.LST's after the transfer need no new room on a full disk.

void inst_show_lines(const char *line18, const char *line19, const char *line20);
void inst_clear_lines(void);
// The progress lines of the dialog (items 18..21).

// ---- The later steps: results are reported but never fail the install ----------------------
Flag UpdateConfiguration(InstallState *state);
// Step 14: the paths of the target into the options record and the system configuration
// (the library paths only when no earlier configuration was taken over), SYSTEM.WCO written
// into the target's EXE directory and recorded. 1. (inst_shell.cpp)
Flag UpdateStartMenu(InstallState *state);
Flag UpdateDesktop(InstallState *state);
Flag UpdateQuickLaunch(InstallState *state);
Flag RegisterAppPath(InstallState *state);
Flag RegisterUninstall(InstallState *state);
Flag UninstallDetails(const InstallState *state);
// Part of RegisterUninstall, after its two values: DisplayVersion "5.003-016", InstallLocation
// (the target), DisplayIcon (program directory + "KORV5.EXE,0"), EstimatedSize (DWORD, KiB of
// total_size, rounded up), NoModify and NoRepair (DWORD 1), QuietUninstallString (the
// uninstaller's path in quotes + " /SILENT"). A failed write is logged, not shown. 1 when all
// were written; 0 otherwise or for a null state (internal error).
Flag RegisterFileTypes(InstallState *state);
Flag RegisterConfigPath(InstallState *state);
Flag CheckHtmlHelp(InstallState *state);
Flag CreateFunctionList(InstallState *state);

// The version built into the program: 5.003-016.
enum { KX_VERSION_MAJOR = 5, KX_VERSION_MINOR = 3, KX_VERSION_BUILD = 16 };

#endif
