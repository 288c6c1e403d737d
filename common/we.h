// we.h - error reporting: the one way the suite tells the user of a failure.
//
// Every other module reports through these calls and then returns its own failure flag; no
// other module calls the platform's message box itself. All texts are Windows-1250.
//
// Error boxes are the platform's message box with one OK button, task-modal and brought to the
// foreground, owned by the main window when one exists (see we_set_main_window), else unowned.
// While a box is up every top-level window of the calling thread is disabled; afterwards every
// top-level window of the thread is enabled again -- including windows that were disabled before
// the box (a blanket re-enable, kept on purpose).
//
// Formatting into the fixed buffers is bounded: an over-long text is cut at the buffer's size,
// never overrun.
#ifndef KX_WE_H
#define KX_WE_H

#include "common/co.h"

#include <stdarg.h>

// ---- Fixed texts ---------------------------------------------------------------------------
extern const char WE_TITLE_ERROR[];     // " Chyba "
extern const char WE_FAULT_BODY[];      // "Chyba v souboru %s řádek %d"
extern const char WE_TITLE_SWITCH[];    // " Chyba switch, informujte dodavatele "
extern const char WE_TITLE_INTERNAL[];  // " Interní chyba, informujte dodavatele "
extern const char WE_TEXT_NO_MEMORY[];  // " Málo paměti"

// Buffer sizes: formatted box and status texts (so at most 199 characters), fault bodies.
enum { WE_TEXT_SIZE = 200, WE_FAULT_SIZE = 100 };

// Message box flags as the platform defines them (MB_*), so that portable code and tests can
// name them without the Windows headers.
enum {
  WE_MB_OK = 0x0000,
  WE_MB_ICONSTOP = 0x0010,
  WE_MB_ICONEXCLAMATION = 0x0030,
  WE_MB_ICONINFORMATION = 0x0040,
  WE_MB_TASKMODAL = 0x2000,
  WE_MB_SETFOREGROUND = 0x10000,
  // The flags of every error box, less the icon.
  WE_MB_BOX = WE_MB_OK | WE_MB_TASKMODAL | WE_MB_SETFOREGROUND
};

// ---- Error boxes ---------------------------------------------------------------------------

void ErrorBox(const char *text);
// Shows text under the title " Chyba " with the exclamation icon. A null text shows an empty
// body. Returns when the user has closed the box.

void ErrorBoxF(const char *format, ...) KX_PRINTF(1, 2);
void ErrorBoxV(const char *format, va_list args);
// Formats into a 200-byte buffer (at most 199 characters; longer output is cut) and shows the
// result with ErrorBox. A null format shows an empty body.

void OutOfMemoryError(void);
// ErrorBox(" Málo paměti").

void SwitchError(const char *module, int16_t line);
// Reports a value that matched no case of a multi-way choice: body "Chyba v souboru %s řádek %d"
// with the module name (the source file name without directory and extension, such as
// "zip_util") and the line, formatted into a 100-byte buffer (cut at 99 characters); title
// " Chyba switch, informujte dodavatele "; stop icon.

void InternalError(const char *module, int16_t line);
// Reports a programming error (an argument the contract forbids, a state that must not occur,
// a full table): the same body as SwitchError under " Interní chyba, informujte dodavatele ",
// stop icon. The caller then returns 0 or goes on with a cut value.

// ---- Status line ---------------------------------------------------------------------------

Flag SetStatusText(const char *text);
Flag SetStatusTextF(const char *format, ...) KX_PRINTF(1, 2);
// Writes the text (formatted: at most 199 characters) into the first pane of the main window's
// status bar and has the main window bring it up to date. Does nothing, and shows nothing, when
// the text is null, there is no main window, or the main window has no status bar.
// Always returns 1.

// ---- Information box ---------------------------------------------------------------------

void InfoMessageBox(const char *title, const char *text);
// A message box with the title, the text as body, the information icon and one OK button, as
// the error boxes are shown (task-modal, foreground, owned by the main window when there is
// one). Null texts show as empty.

// ---- Thread windows ------------------------------------------------------------------------

void DisableThreadWindows(void);
void EnableThreadWindows(void);
// Disable, respectively enable, every top-level window of the calling thread.

// ---- The main window as the reporting module sees it ---------------------------------------
//
// The window toolkit registers its main window object here when it has created it and
// unregisters it (null) when the window is gone. Until then boxes have no owner and status
// texts go nowhere.
struct WeMainWindow {
  void *handle;                                         // platform window handle (HWND)
  void (*set_status)(void *context, const char *text);  // null: the window has no status bar
  void *context;                                        // handed to set_status
};

void we_set_main_window(const WeMainWindow *window);
// Registers (a copy of) the main window description; null: no main window.

void *we_main_window_handle(void);
// The registered main window's handle, or null.

// ---- Test seam -----------------------------------------------------------------------------
//
// A box hook, when set, receives every error box instead of the platform: owner handle, body,
// title and flags, exactly as they would go to the message box. The thread-window disabling and
// enabling still happen around it. Tests use it to check texts without a display; the native
// (non-Windows) build, which has no message box, only records boxes through it and otherwise
// shows them on standard error.
typedef void (*WeBoxHook)(void *owner, const char *text, const char *title, unsigned flags);
WeBoxHook we_set_box_hook(WeBoxHook hook);
// Installs hook (null: the platform again) and returns the previous one.

// ---- Questions and notices (toolkit dialogs) -------------------------------------------------
//
// Question dialogs are titled "Dotaz", with the text as body, modal. Buttons and their result
// codes: "&Ano" 1, "&Ne" 7, "&Vše" 6, "&Storno" 2, "&O.K." 1; closing without a button
// (Esc, the close box) ends with 2. The forms with an owner window take it as owner; the
// others take the main window. A format is formatted into a 200-byte buffer (cut at 199).
// A null text is InternalError("we"), result 0; so is a dialog that can't be created.

extern const char WE_TITLE_QUESTION[];  // "Dotaz"
extern const char WE_TITLE_NOTICE[];    // "Oznámení"

enum { WE_ANSWER_YES = 1, WE_ANSWER_NO = 7, WE_ANSWER_ALL = 6, WE_ANSWER_CANCEL = 2 };

int16_t QuestionBox(const char *text);
int16_t QuestionBoxF(const char *format, ...) KX_PRINTF(1, 2);
int16_t QuestionBox(void *owner, const char *text);
int16_t QuestionBoxF(void *owner, const char *format, ...) KX_PRINTF(2, 3);
// "&Ano", "&Ne": 1 for "&Ano", else 0 (also when closed).

int16_t QuestionBoxCancel(const char *text);
int16_t QuestionBoxCancelF(const char *format, ...) KX_PRINTF(1, 2);
int16_t QuestionBoxCancel(void *owner, const char *text);
int16_t QuestionBoxCancelF(void *owner, const char *format, ...) KX_PRINTF(2, 3);
// "&Ano", "&Ne", "&Storno": 1 "&Ano", 0 "&Ne", -1 "&Storno" or closed.

int16_t QuestionBoxAll(const char *text);
int16_t QuestionBoxAllF(const char *format, ...) KX_PRINTF(1, 2);
int16_t QuestionBoxAll(void *owner, const char *text);
int16_t QuestionBoxAllF(void *owner, const char *format, ...) KX_PRINTF(2, 3);
// "&Ano", "&Ne", "&Vše", "&Storno": 1 "&Ano", 2 "&Vše", -1 "&Storno" or closed, 0 otherwise.
// All three answer 0 when the question could not be shown (null text or format, a dialog that
// could not be built or run).

Flag NoticeBox(const char *text);
// The notice dialog "Oznámení" with the text and "&O.K.", modal. Null text: internal error, 0.
Flag InfoBox(const char *text);
// The information box of the installer ("Vlož DISK%d"): the notice dialog as NoticeBox.

Flag ErrorDialog(void *owner, const char *text);
Flag ErrorDialogF(void *owner, const char *format, ...) KX_PRINTF(2, 3);
// The toolkit's message dialog titled " Chyba " with the text and "&O.K.", owned by owner.
// 1 when shown; 0 for a null text or format (internal error) or a dialog that could not be shown.
Flag SwitchErrorDialog(void *owner, const char *module, int16_t line);
Flag InternalErrorDialog(void *owner, const char *module, int16_t line);
// As SwitchError / InternalError, as the toolkit's message dialog owned by owner; the thread's
// windows are disabled around InternalErrorDialog as for the error boxes.

// Test seam for the dialogs: when set, the hook answers every question / notice / message
// dialog instead of showing it. kind: WE_DIALOG_*; the hook returns the raw result code the
// dialog would have ended with (1, 7, 6, 2).
enum {
  WE_DIALOG_QUESTION = 0,
  WE_DIALOG_QUESTION_CANCEL = 1,
  WE_DIALOG_QUESTION_ALL = 2,
  WE_DIALOG_NOTICE = 3,
  WE_DIALOG_ERROR = 4
};
typedef int16_t (*WeDialogHook)(int16_t kind, void *owner, const char *title, const char *text);
WeDialogHook we_set_dialog_hook(WeDialogHook hook);
// Installs hook (null: the real dialogs) and returns the previous one.

WeDialogHook we_set_dialog_ui(WeDialogHook ui);
// The program's real dialogs: the window toolkit hands its own to the reporting module when the
// application starts (toolkit/questions.h); ui returns the code the dialog ended with (as a hook
// does), 0 when it could not run it and -1 when it could not build it. Returns the previous one;
// null: none. Without one, on Windows the system's plain message box asks instead (yes/no
// buttons, no "&Vše"); the native build has no dialogs: every question answers as closed (2)
// and notices are written to standard error. A hook set with we_set_dialog_hook goes first.

// ---- The reporter: watching and answering every box -----------------------------------------
//
// A program that runs unattended (or keeps a log) registers a reporter. It sees every error box
// (kind WE_REPORT_BOX, title and body as they would be shown), every question, notice and
// message dialog (kinds WE_DIALOG_*) and every status text, also when there is no main window.
// Its before call decides whether the box is shown: WE_REPORT_SHOW lets it come up as usual;
// any other value is taken as the code the box or dialog ended with (1, 7, 6, 2 as the buttons
// give them) and nothing is shown, nor are the thread's windows disabled. Its after call gets
// the code the box ended with, shown or not (an error box: 1). The test hooks above still
// stand in for the platform when a box is shown.
enum { WE_REPORT_BOX = 5, WE_REPORT_SHOW = -1 };
struct WeReporter {
  void *context;
  int16_t (*before)(void *context, int16_t kind, const char *title, const char *text);
  void (*after)(void *context, int16_t kind, const char *title, const char *text, int16_t code);
  void (*status)(void *context, const char *text);  // may be null
};

void we_set_reporter(const WeReporter *reporter);
// Registers (a copy of) the reporter; null: none, every box is shown.

#endif
