// we.cpp - error boxes, fault reports and the status line.
#include "we.h"
#include "we_plat.h"

#include <stdio.h>
#include <string.h>

const char WE_TITLE_ERROR[] = " Chyba ";
const char WE_FAULT_BODY[] = "Chyba v souboru %s řádek %d";
const char WE_TITLE_SWITCH[] = " Chyba switch, informujte dodavatele ";
const char WE_TITLE_INTERNAL[] = " Interní chyba, informujte dodavatele ";
const char WE_TEXT_NO_MEMORY[] = " Málo paměti";

static WeMainWindow main_window;
static int main_window_set;
static WeBoxHook box_hook;

void we_set_main_window(const WeMainWindow *window) {
  if (window) {
    main_window = *window;
    main_window_set = 1;
  } else {
    memset(&main_window, 0, sizeof main_window);
    main_window_set = 0;
  }
}

void *we_main_window_handle(void) { return main_window_set ? main_window.handle : nullptr; }

WeBoxHook we_set_box_hook(WeBoxHook hook) {
  WeBoxHook previous = box_hook;
  box_hook = hook;
  return previous;
}

void DisableThreadWindows(void) { we_plat_enable_thread_windows(0); }
void EnableThreadWindows(void) { we_plat_enable_thread_windows(1); }

// The common road of every error box: owner, disable, show, enable everything.
static void show_box(const char *text, const char *title, unsigned flags) {
  void *owner = we_main_window_handle();
  DisableThreadWindows();
  if (box_hook)
    box_hook(owner, text ? text : "", title, flags);
  else
    we_plat_message_box(owner, text ? text : "", title, flags);
  EnableThreadWindows();
}

// vsnprintf that never overruns and leaves a terminated (possibly cut) text.
static void format_bounded(char *buffer, size_t size, const char *format, va_list args) {
  buffer[0] = 0;
  if (!format) return;
  int n = vsnprintf(buffer, size, format, args);
  if (n < 0) buffer[0] = 0;
  buffer[size - 1] = 0;
}

void ErrorBox(const char *text) { show_box(text, WE_TITLE_ERROR, WE_MB_BOX | WE_MB_ICONEXCLAMATION); }

void ErrorBoxV(const char *format, va_list args) {
  char text[WE_TEXT_SIZE];
  format_bounded(text, sizeof text, format, args);
  ErrorBox(text);
}

void ErrorBoxF(const char *format, ...) {
  va_list args;
  va_start(args, format);
  ErrorBoxV(format, args);
  va_end(args);
}

void OutOfMemoryError(void) { ErrorBox(WE_TEXT_NO_MEMORY); }

static void fault_report(const char *title, const char *module, int16_t line) {
  char body[WE_FAULT_SIZE];
  snprintf(body, sizeof body, WE_FAULT_BODY, module ? module : "", (int)line);
  show_box(body, title, WE_MB_BOX | WE_MB_ICONSTOP);
}

void SwitchError(const char *module, int16_t line) { fault_report(WE_TITLE_SWITCH, module, line); }

void InternalError(const char *module, int16_t line) { fault_report(WE_TITLE_INTERNAL, module, line); }

Flag SetStatusText(const char *text) {
  if (!text || !main_window_set || !main_window.set_status) return 1;
  main_window.set_status(main_window.context, text);
  return 1;
}

Flag SetStatusTextF(const char *format, ...) {
  if (!format) return 1;
  char text[WE_TEXT_SIZE];
  va_list args;
  va_start(args, format);
  format_bounded(text, sizeof text, format, args);
  va_end(args);
  return SetStatusText(text);
}
