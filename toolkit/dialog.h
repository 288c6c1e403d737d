// dialog.h - the dialog engine: every dialog of the suite is an object of a class derived from
// Dialog. The engine runs it as a modal or modeless Win32 dialog built from an in-memory template
// (see dres.h), routes the messages of all dialogs through one shared dialog procedure to the
// object's virtual operations, places the dialog on the screen and keeps the table of control
// objects that stand for its items.
//
// Internal error reports of this module carry the name "dialog". Windows only: the native build
// has no dialogs (the module is not built there).
#ifndef KX_DIALOG_H
#define KX_DIALOG_H

#include "common/co.h"

enum {
  DIALOG_CONTROLS_MAX = 99,          // controls per dialog
  DIALOG_MODAL_MAX = 30,             // running modal dialogs (nested)
  DIALOG_MSG_PLACED = 0x0400 + 120,  // WM_USER + 120: posted after initialisation -> on_placed
  DIALOG_MSG_HELP = 0x0400 + 204     // WM_USER + 204: the toolkit's context help
};

struct Control;

// The dialog base class. Fields in this order; the derived class fills the flags and the
// position before the dialog runs.
class Dialog {
 public:
  Dialog();
  virtual ~Dialog();  // slot 0: the class's own first operation, never called by the engine

  virtual Flag on_init();    // during WM_INITDIALOG; 0 closes the dialog as cancelled.
                             // Default: 1.
  virtual void on_placed();  // once the window rectangle is known. Default: nothing.
  virtual Flag on_ok();      // OK/Yes not handled by on_message; 1 ends with code 1
                             // (a modeless dialog as by dialog_end: destroyed, and
                             // when it is the main window the program ends).
                             // Default: 1. While a modeless dialog exists, OK/Yes in
                             // any dialog asks on_message a second time and, if not
                             // handled, the modeless dialog's on_ok, which on 1 ends
                             // the dialog that got OK/Yes with 1.
  virtual void on_size(uintptr_t wparam, intptr_t lparam);  // every WM_SIZE. Default: nothing.
  virtual Flag on_message(unsigned message, uintptr_t wparam, intptr_t lparam);
  // commands, characters, scroll messages; 1 = handled.
  // Default: 0.

  void *parent;             // parent window handle (HWND) or null
  int32_t template_number;  // template looked up when dialog_run/dialog_open get none
  void *window;             // dialog window handle (HWND), null until the first message
  Flag awaiting_handle;
  Flag cancelled;          // set when ended with code 2
  Flag explicit_position;  // place at (position_x, position_y), screen coordinates
  Flag parent_relative;    // (position_x, position_y) relative to the parent's client area
  Flag center_on_parent;
  Flag center_on_screen;
  int32_t position_x, position_y;  // stored position
  int32_t current_x, current_y;    // updated on WM_MOVE and after initialisation
  int32_t client_width, client_height;
  int32_t window_width, window_height;
  int32_t control_count;
  Control *controls[DIALOG_CONTROLS_MAX];
};

// Control object: base of the toolkit's widget classes.
struct Control {
  Control();
  virtual ~Control();
  virtual void on_notify(uintptr_t wparam, intptr_t lparam);  // default: nothing
  int16_t kind;         // 1 = an item control that dialog_find_control may return
  void *dialog_window;  // owning dialog's window handle (HWND)
  int32_t item;         // item number
};

int32_t dialog_run(Dialog *dialog, const void *dialog_template);
// Runs the dialog modally: DialogBoxIndirectParamA where the system's ANSI code page is 1250,
// else DialogBoxIndirectParamW, so that the template's texts reach the items intact whatever
// the ANSI code page is (the same for dialog_open). dialog_template null: the modal template of
// dialog->template_number (dres_find_modal). Returns the code given to dialog_end; 0 after an
// internal error report (no free modal slot, not in the registry afterwards) or when no template
// is found; 3 after an internal error report when the dialog could not be created.

Flag dialog_open(Dialog *dialog, const void *dialog_template);
// Opens the dialog modeless (CreateDialogIndirectParamA / ...W as above; template as above, dres_find_modeless).
// Only one modeless dialog exists at a time: a second is an internal error report, result 0.
// Returns 1 when the window exists and is initialised.

void dialog_end(Dialog *dialog, int32_t code);
// Ends the dialog with code (modal: EndDialog; modeless: the window is destroyed and the slot
// freed). Code 2 sets dialog->cancelled first.

Flag dialog_set_focus(Dialog *dialog);
Flag dialog_set_title(Dialog *dialog, const char *text);
Flag dialog_get_title(Dialog *dialog, char *buffer, int32_t size);
// On the dialog window. Null dialog / text / buffer: internal error report, 0.

Flag dialog_add_control(Dialog *dialog, Control *control);
// Appends to the control table; the hundredth is an internal error report, 0.
Control *dialog_find_control(Dialog *dialog, int32_t item);
// The control with that item number, or null. A found control whose kind is not 1 is an
// internal error report, null.

void dialog_to_units(Dialog *dialog, int32_t *x, int32_t *y);
// Pixels -> dialog units: a 4 x 8 unit rectangle is mapped to pixels (MapDialogRect), then
// x = x * 4 / mapped width, y = y * 8 / mapped height (integer division).

// Item helpers: each works on control->dialog_window and control->item and returns 1 on success.
Flag control_set_text(Control *control, const char *text);
Flag control_clear_text(Control *control);
Flag control_get_text(Control *control, char *buffer, int32_t size);  // buffer cleared first
Flag control_select_all(Control *control);                            // EM_SETSEL 0, -1
Flag control_limit_text(Control *control, int32_t limit);             // EM_LIMITTEXT
Flag control_get_limit(Control *control, int32_t *limit);   // EM_GETLIMITTEXT; 0 when negative
Flag control_list_reset(Control *control);                  // LB_RESETCONTENT
Flag control_list_add(Control *control, const char *text);  // LB_ADDSTRING

// ---- Additions of the toolkit ---------------------------------------------------------------

Flag dialog_window_set_text(void *window, const char *text);
Flag dialog_window_get_text(void *window, char *buffer, int32_t size);
// Text of any window (HWND) in code page 1250, converted explicitly to and from the window's
// UTF-16 whatever the ANSI code page is. get: buffer cleared first, an over-long text is cut at
// size - 1. 1 on success; 0 for a null window/text/buffer (no report) or a failed conversion.

void dialog_trace(const char *format, ...) KX_PRINTF(1, 2);
// The toolkit's trace: one line appended to the file named by the environment variable KX_TRACE;
// nothing when it is unset or empty.

typedef void (*DialogHelpHook)(Dialog *dialog);
DialogHelpHook dialog_set_help_hook(DialogHelpHook hook);
// The context-help action (WM_RBUTTONDOWN, DIALOG_MSG_HELP) calls hook with the dialog; null:
// only a trace line. Returns the previous hook.

struct DialogRect {
  int32_t left, top, right, bottom;
};

// Everything the placement of a dialog depends on (screen coordinates).
struct DialogPlacement {
  DialogRect work;    // the desktop work area
  DialogRect window;  // the dialog's window rectangle (width and height are used)
  Flag has_parent;
  Flag child;                                // the dialog is a child window of its parent
  int32_t parent_client_x, parent_client_y;  // parent's client origin on the screen
  DialogRect parent_window;                  // parent's window rectangle
  Flag explicit_position, parent_relative, center_on_parent, center_on_screen;
  int32_t position_x, position_y;
};

void dialog_place(const DialogPlacement *placement, int32_t *x, int32_t *y);
// The top-left corner the initialisation moves the dialog to. Neither explicit_position nor
// parent_relative: center on the work area (no parent, or center_on_screen), else the parent's
// client origin (no center_on_parent), else center on the parent's window; centering is
// (a + b) / 2 - size / 2, integer division. Otherwise the stored position, plus the parent's
// client origin with parent_relative. Then kept in the work area: x >= left, then x + w <=
// right (this wins), the same for y. A child dialog gets the corner in its parent's client
// coordinates.

// The shared dialog procedure (INT_PTR CALLBACK (HWND, UINT, WPARAM, LPARAM)), exposed for tests.
intptr_t dialog_procedure(void *window, unsigned message, uintptr_t wparam, intptr_t lparam);

#endif
