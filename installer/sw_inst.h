// sw_inst.h - the installer dialog: the one window of SETUP.EXE.
//
// A modeless dialog of the toolkit (toolkit/dialog.h) that the program's window factory opens as
// its main window (installer/instmain.h, window type 100). It shows the welcome text, takes the
// source and target directories and the two icon options, runs the install procedure
// (installer/inst.h) from its Start button, shows the progress and the result, and ends the
// program from its "&Konec" button. It owns the InstallState.
//
// Items (control ids) and what they are:
//   1 heading "Instalace systému KORVEX" (Times New Roman)
//   4 "Verze :"                5 version line "5.003-016"
//   6 "&Zdrojová cesta :"      7 source path field        8 "P&rocházet ..." (browse source)
//   9 "&Cílová cesta :"       10 target path field       11 "Pr&ocházet ..." (browse target)
//  12 desktop icon check box  13 quick-launch icon check box
//  14 "&Start instalace"      16 "&Přerušit instalaci"   15 "&Konec"
//  17 status line (a plain static with a sunken edge: SetStatusText writes it, WM_GETTEXT
//     reads it)
//  18-21 text lines: welcome, progress and closing texts
//
// Layout. Positions are kept in the installer's layout units, thousandths of an inch, and
// turned into dialog units when the template is built: x * 8 / 100 and y * 7 / 100 (with the
// dialog font of 8 points a dialog unit is about 1.5 pixels across and 1.6 down at 96 dots per
// inch, so the whole dialog is about 680 x 480 pixels and fits a 800 x 600 work area).
//
// Internal error reports carry the name "sw_inst". All texts are Windows-1250. Windows only.
#ifndef KX_SW_INST_H
#define KX_SW_INST_H

#include "common/co.h"
#include "toolkit/dialog.h"

struct InstallState;
struct SetupSwitches;

// ---- Items -----------------------------------------------------------------------------------
enum {
  SW_INST_HEADING = 1,
  SW_INST_VERSION_LABEL = 4,
  SW_INST_VERSION = 5,
  SW_INST_SOURCE_LABEL = 6,
  SW_INST_SOURCE = 7,
  SW_INST_SOURCE_BROWSE = 8,
  SW_INST_TARGET_LABEL = 9,
  SW_INST_TARGET = 10,
  SW_INST_TARGET_BROWSE = 11,
  SW_INST_DESKTOP = 12,
  SW_INST_QUICK_LAUNCH = 13,
  SW_INST_START = 14,
  SW_INST_END = 15,
  SW_INST_ABORT = 16,
  SW_INST_STATUS = 17,
  SW_INST_LINE_FIRST = 18,  // four text lines, 18 to 21
  SW_INST_LINE_COUNT = 4
};

enum { SW_INST_WINDOW_TYPE = 100 };  // the window type the factory opens this dialog for

// ---- Fixed texts -----------------------------------------------------------------------------
extern const char SW_INST_TITLE[];  // "Instalace návrhového systému pro elektroniku KORVEX"
extern const char SW_INST_HEADING_FONT[];                      // "Times New Roman"
extern const char *const SW_INST_WELCOME[SW_INST_LINE_COUNT];  // lines 18..21 at opening
extern const char *const SW_INST_CLOSING[SW_INST_LINE_COUNT];  // lines 18..21 after success
extern const char SW_INST_TEXT_SUCCESS[];                      // "Instalace proběhla úspěšně"
extern const char SW_INST_TEXT_FAILURE[];                      // "Instalace nebyla úspěšná"
extern const char
    SW_INST_SHELL_FOLDERS[];  // "Software\Microsoft\Windows\CurrentVersion\Explorer\Shell Folders"
extern const char SW_INST_QUICK_LAUNCH_TAIL[];  // "Microsoft\Internet Explorer\Quick Launch"

// ---- Text rules (no window needed) -----------------------------------------------------------

Flag sw_inst_version_text(char *buffer, int32_t size);
// "%d.%03d-%03d" of KX_VERSION_MAJOR, _MINOR, _BUILD ("5.003-016"), cut to size - 1 characters.
// 0 for a null buffer or size < 1 (nothing written); else 1.

Flag sw_inst_add_backslash(char *path);
// Appends "\" to a KX_PATH buffer whose text does not end with one. A text of KX_PATH - 1
// characters has no room: its last character is replaced by "\" instead (cut, never overrun).
// An empty text becomes "\". 0 for a null path; else 1.

Flag sw_inst_accept_path(char *field, char *state_path);
// The rule of a path field when it is left. field (KX_PATH buffer) gets its trailing "\" as
// sw_inst_add_backslash gives it; then, when its second character is ":", it is copied into
// state_path (KX_PATH buffer) and 1 is returned; otherwise state_path is copied into field
// (the last valid path comes back) and 0 is returned. 0 also for a null argument.

Flag sw_inst_target_from_folder(const char *folder, char *target);
// The target path from a folder the browser returned: folder + "\" when missing; when its
// upper-cased form (code page 1250) has no "KORV5" in it, "KORV5\" is appended. Written into
// target (KX_PATH buffer), cut at KX_PATH - 1 characters. 0 for a null argument; else 1.

Flag sw_inst_quick_launch_path(const char *app_data, char *path);
// app_data + "\" when missing + "Microsoft\Internet Explorer\Quick Launch" into path (KX_PATH
// buffer), cut at KX_PATH - 1 characters. 0 for a null argument; else 1.

// ---- The dialog ------------------------------------------------------------------------------

class InstallerDialog : public Dialog {
 public:
  explicit InstallerDialog(void *parent_window);
  // Building: creates the InstallState from the program's own path (inst_create_state) and
  // registers the dialog with the install module (inst_set_dialog). When the state can't be
  // made (out of memory, reported) state stays null and opening refuses.
  ~InstallerDialog() override;
  // Frees the InstallState (its open list is closed) and the heading font.

  Flag on_init() override;
  // Opening: the system check (Win32s is refused with its message; the dialog then closes),
  // abort button disabled, welcome text, focus on the source field, desktop box checked, the
  // quick-launch folder looked up (box 13 checked and enabled when it exists, else disabled).
  Flag on_message(unsigned message, uintptr_t wparam, intptr_t lparam) override;
  // Buttons 8, 11, 12, 13, 14, 15, 16, the path fields' EN_KILLFOCUS, and Cancel (the close
  // box, Esc) as "&Konec" while that button is enabled.

  Flag open();                                    // the opening as above (on_init runs it once)
  void set_status(const char *text);              // item 17
  void set_line(int16_t item, const char *text);  // items 18..21; other items are ignored
  void run_install();                             // what Start does
  void end();  // what "&Konec" does: closes the dialog, ends the program

  int16_t window_type;  // stored by the window factory
  InstallState *state;
  Flag quick_launch_available;
  Flag installing;     // InstallProcedure is running
  Flag opened;         // the opening has run (it runs once)
  Flag closing;        // "&Konec" taken: the window is going away
  void *heading_font;  // HFONT of item 1, null until opening
};

void sw_inst_run_unattended(const SetupSwitches *switches, Flag by_itself);
// When the dialog has opened, the given switches fill its fields and check boxes (quick launch
// only where the system offers it). by_itself 1 (/SILENT): Start is pressed by itself and the
// dialog closes by itself after the run; 0: the user drives the dialog from there. Null (the
// default): the dialog opens as it always has. The switches must stay until the dialog is gone.

Flag sw_inst_open(InstallerDialog *dialog);
// Builds the dialog's template and opens it modeless (dialog_open). 1 when the window exists.
// 0 for a null dialog (internal error) or when the template or the window can't be made.

#endif
