// wgd.h - the application shell: one process-wide application object (instance, main window,
// accelerators, the registry of running dialogs), the main message loop and the non-blocking
// pump that long operations call. Internal error reports carry the name "wgd". Windows only.
#ifndef KX_WGD_H
#define KX_WGD_H

#include "common/co.h"
#include "toolkit/dialog.h"

enum { APP_MAIN_WINDOW_SIZE = 646 };  // bytes of the main window object (zero-filled, mm_zalloc)

struct MainWindow;  // the toolkit's main window object (wgd.cpp)

struct Application {
  void *instance;                   // HINSTANCE
  void *main_window;                // HWND accelerators are translated for
  MainWindow *main_object;          // null until created
  void *accelerators;               // HACCEL or null
  Dialog *modal[DIALOG_MODAL_MAX];  // 0 = free
  Dialog *modeless;
};

extern Application *application;  // the one application object, null outside app_run

// Window factory: called by app_run to open the program's main window. For a type it knows it
// creates the window object (a dialog opened modeless, for example), stores it in *out and
// returns 1; otherwise it returns 0 and leaves *out null.
typedef Flag (*AppWindowFactory)(void *parent, Dialog **out, int16_t type);
void app_set_window_factory(AppWindowFactory factory, int16_t main_type);
// The program registers its factory and the type of its main window before app_run.

int32_t app_run(void *instance, int32_t show_command);
// The whole life of the toolkit: creates the application object, registers the window classes
// (seven routines, all called even after a failure), creates the main window object (646
// zero-filled bytes) and the main window through the factory, loops on GetMessageA until
// WM_QUIT and tears down. Returns WM_QUIT's wParam; 0 on any failure before the loop.

Flag app_pump(void);
// Processes all waiting messages without blocking; 1 when at least one was taken. A WM_QUIT is
// posted again with the same code so that the main loop ends too. Every message is offered to
// the modal dialogs (IsDialogMessageA, answer ignored) and then translated and dispatched.

Flag app_close_dialogs(void);
// Ends every modal dialog (slot order) and the modeless one with code 3, then pumps once. 1.

Flag app_add_dialog(Application *app, Dialog *dialog);
Flag app_remove_dialog(Application *app, Dialog *dialog);
// Enter into the first free modal slot / clear the slot holding it; 0 when full / not found.

Flag app_set_modeless(Application *app, Dialog *dialog);
// Fills the modeless slot (dialog null clears it); 0 when another modeless dialog is there.

void app_quit(int32_t code);
// Ends the main loop (PostQuitMessage).

// ---- Additions of the toolkit ---------------------------------------------------------------

Application *app_current(void);
// application while app_run runs; before and after it a standing application object of the
// program (no main window, no accelerators) so that dialogs, questions and app_pump work at
// any time. Never null.

// The main window of a program whose factory opens a modeless dialog is that dialog: app_run
// registers its handle with the reporting module (we_set_main_window) together with the status
// sink below, so that SetStatusText reaches it. When that dialog's window is destroyed (by
// dialog_end with a code, or otherwise), the main loop ends with that code (0 when destroyed
// without dialog_end) unless app_quit was called before.
typedef void (*AppStatusSink)(void *context, const char *text);
void app_set_status_sink(AppStatusSink sink, void *context);
// The program's status-line writer for SetStatusText (null: none). Call before app_run, or at
// any time while it runs (re-registered at once).

typedef Flag (*AppPreTranslate)(void *message);
void app_set_pre_translate(AppPreTranslate hook);
// The main window object's pre-translation hook (message: MSG *); non-null sets the object's
// pre-translation flag. A hook that returns 1 has taken the message.

void app_set_accelerators(void *accelerators);
// The accelerator table (HACCEL) translated for the main window; null: none. Set before
// app_run or while it runs; forgotten when app_run ends (the table stays the caller's).

void app_dialog_destroyed(Dialog *dialog, int32_t code);
// Called by the dialog engine when the modeless dialog's window is destroyed (code: the code of
// dialog_end, else 0). Internal to the toolkit.

#endif
