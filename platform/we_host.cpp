// we_host.cpp - the reporting module's platform half for the native (non-Windows) build of the
// portable core: there is no message box, so a box is written to standard error as one line.
// Tests record boxes through the box hook instead.
#include "platform/we_plat.h"

#include <stdio.h>

void we_plat_message_box(void *owner, const char *text, const char *title, unsigned flags) {
  fprintf(stderr, "[box%s flags=0x%05x] %s: %s\n", owner ? " owned" : "", flags, title, text);
}

void we_plat_enable_thread_windows(int) {}

int we_plat_dialog(int kind, void *owner, const char *title, const char *text) {
  fprintf(stderr, "[dialog%s kind=%d] %s: %s\n", owner ? " owned" : "", kind, title, text);
  return kind <= 2 ? 2 : 1;  // WE_DIALOG_QUESTION* answer as closed
}
