// instmain.cpp - window factory and status hook of SETUP.EXE.
#include "installer/instmain.h"

#include "common/mm.h"
#include "common/we.h"
#include "installer/sw_inst.h"
#include "toolkit/wgd.h"

#include <windows.h>
#include <new>

static InstallerDialog *installer;

InstallerDialog *instmain_dialog(void) { return installer; }

void instmain_release(void) {
  if (!installer) return;
  InstallerDialog *dialog = installer;
  installer = nullptr;
  if (dialog->window && IsWindow((HWND)dialog->window)) dialog_end(dialog, 0);
  dialog->~InstallerDialog();
  mm_free(dialog, MM_HERE);
}

Flag instmain_factory(void *parent, Dialog **out, int16_t type) {
  if (!out) {
    InternalError("instmain", __LINE__);
    return 0;
  }
  *out = nullptr;
  if (type != INSTMAIN_TYPE_INSTALLER) return 0;
  if (installer) {
    InternalError("instmain", __LINE__);
    return 0;
  }
  void *memory = mm_zalloc((int32_t)sizeof(InstallerDialog), MM_HERE);
  if (!memory) {
    OutOfMemoryError();
    return 0;
  }
  InstallerDialog *dialog = new (memory) InstallerDialog(parent);
  dialog->window_type = type;
  installer = dialog;
  if (!sw_inst_open(dialog)) {
    instmain_release();
    return 0;
  }
  *out = dialog;
  return 1;
}

void instmain_status(void *context, const char *text) {
  InstallerDialog *dialog = context ? (InstallerDialog *)context : installer;
  if (!dialog || !text || dialog->window_type != INSTMAIN_TYPE_INSTALLER) return;
  dialog->set_status(text);
}

Flag instmain_install(void) {
  app_set_window_factory(instmain_factory, INSTMAIN_TYPE_INSTALLER);
  app_set_status_sink(instmain_status, nullptr);
  return 1;
}
