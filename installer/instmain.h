// instmain.h - SETUP.EXE's side of the window toolkit: the window factory that opens the
// installer dialog as the program's main window, and the status hook that sends the toolkit's
// status texts (SetStatusText) to the dialog's status line. Windows only.
#ifndef KX_INSTMAIN_H
#define KX_INSTMAIN_H

#include "common/co.h"
#include "toolkit/dialog.h"

class InstallerDialog;

enum { INSTMAIN_TYPE_INSTALLER = 100 };  // the installer dialog (installer/sw_inst.h)

Flag instmain_factory(void *parent, Dialog **out, int16_t type);
// The window factory (AppWindowFactory of toolkit/wgd.h). Type 100: takes zero-filled memory for
// the installer dialog (mm_zalloc), constructs it, stores the type in it and opens it modeless;
// returns 1 with *out the dialog. Any other type: no window, 0 and *out null. 0 and *out null
// also when the memory or the window can't be had (the dialog is then destroyed again).
// A null out is an internal error: 0. Only one installer dialog exists at a time: a second
// request while one is there is an internal error, 0.

void instmain_status(void *context, const char *text);
// The status hook (AppStatusSink of toolkit/wgd.h): writes text into item 17 of the installer
// dialog when the main window is of type 100. context: the InstallerDialog, or null for the
// one the factory made. Null text or no such dialog: nothing.

Flag instmain_install(void);
// Registers the factory (main window type 100) and the status hook with the toolkit. 1.

InstallerDialog *instmain_dialog(void);
// The installer dialog the factory made, or null.

void instmain_release(void);
// Destroys the factory's dialog (its window if still there, the object, its InstallState) and
// gives its memory back. Called after app_run; nothing when there is none.

#endif
