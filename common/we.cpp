// we.cpp - error boxes, fault reports and the status line.
#include "common/we.h"

#include "platform/we_plat.h"

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
static WeReporter reporter;
static int reporter_set;

void we_set_reporter(const WeReporter *given) {
  if (given) {
    reporter = *given;
    reporter_set = 1;
  } else {
    memset(&reporter, 0, sizeof reporter);
    reporter_set = 0;
  }
}

// What the reporter makes of a box before it is shown: WE_REPORT_SHOW or the code taken.
static int report_before(int16_t kind, const char *title, const char *text) {
  if (!reporter_set || !reporter.before) return WE_REPORT_SHOW;
  return reporter.before(reporter.context, kind, title ? title : "", text ? text : "");
}

static void report_after(int16_t kind, const char *title, const char *text, int code) {
  if (reporter_set && reporter.after)
    reporter.after(reporter.context, kind, title ? title : "", text ? text : "", (int16_t)code);
}

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
  if (report_before(WE_REPORT_BOX, title, text) != WE_REPORT_SHOW) {
    report_after(WE_REPORT_BOX, title, text, 1);
    return;
  }
  void *owner = we_main_window_handle();
  DisableThreadWindows();
  if (box_hook) box_hook(owner, text ? text : "", title, flags);
  else we_plat_message_box(owner, text ? text : "", title, flags);
  EnableThreadWindows();
  report_after(WE_REPORT_BOX, title, text, 1);
}

// vsnprintf that never overruns and leaves a terminated (possibly cut) text.
static void format_bounded(char *buffer, size_t size, const char *format, va_list args) {
  buffer[0] = 0;
  if (!format) return;
  int n = vsnprintf(buffer, size, format, args);
  if (n < 0) buffer[0] = 0;
  buffer[size - 1] = 0;
}

void ErrorBox(const char *text) {
  show_box(text, WE_TITLE_ERROR, WE_MB_BOX | WE_MB_ICONEXCLAMATION);
}

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

void InfoMessageBox(const char *title, const char *text) {
  show_box(text, title ? title : "", WE_MB_BOX | WE_MB_ICONINFORMATION);
}

void OutOfMemoryError(void) { ErrorBox(WE_TEXT_NO_MEMORY); }

static void fault_report(const char *title, const char *module, int16_t line) {
  char body[WE_FAULT_SIZE];
  snprintf(body, sizeof body, WE_FAULT_BODY, module ? module : "", (int)line);
  show_box(body, title, WE_MB_BOX | WE_MB_ICONSTOP);
}

void SwitchError(const char *module, int16_t line) { fault_report(WE_TITLE_SWITCH, module, line); }

void InternalError(const char *module, int16_t line) {
  fault_report(WE_TITLE_INTERNAL, module, line);
}

Flag SetStatusText(const char *text) {
  if (text && reporter_set && reporter.status) reporter.status(reporter.context, text);
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

// ---- Questions and notices -----------------------------------------------------------------

const char WE_TITLE_QUESTION[] = "Dotaz";
const char WE_TITLE_NOTICE[] = "Oznámení";

static WeDialogHook dialog_hook;

WeDialogHook we_set_dialog_hook(WeDialogHook hook) {
  WeDialogHook previous = dialog_hook;
  dialog_hook = hook;
  return previous;
}

static WeDialogHook dialog_ui;

WeDialogHook we_set_dialog_ui(WeDialogHook ui) {
  WeDialogHook previous = dialog_ui;
  dialog_ui = ui;
  return previous;
}

// Runs the dialog (or asks the hook) and gives the raw code; 0 after a report when it could not
// be built.
static int dialog_code(int16_t kind, void *owner, const char *title, const char *text) {
  if (!text) {
    InternalError("we", __LINE__);
    return 0;
  }
  int code = report_before(kind, title, text);
  if (code != WE_REPORT_SHOW) {
    report_after(kind, title, text, code);
    return code;
  }
  code = dialog_hook ? dialog_hook(kind, owner, title, text)
         : dialog_ui ? dialog_ui(kind, owner, title, text)
                     : we_plat_dialog(kind, owner, title, text);
  if (code < 0) {
    InternalError("we", __LINE__);
    return 0;
  }
  report_after(kind, title, text, code);
  return code;
}

static int16_t answer(int16_t kind, void *owner, const char *text) {
  int code = dialog_code(kind, owner, WE_TITLE_QUESTION, text);
  if (code == 0) return 0;  // not shown: the negative answer
  switch (kind) {
    case WE_DIALOG_QUESTION: return code == WE_ANSWER_YES ? 1 : 0;
    case WE_DIALOG_QUESTION_CANCEL:
      return code == WE_ANSWER_YES ? 1 : code == WE_ANSWER_NO ? 0 : -1;
    default:
      return code == WE_ANSWER_YES      ? 1
             : code == WE_ANSWER_ALL    ? 2
             : code == WE_ANSWER_CANCEL ? -1
                                        : 0;
  }
}

// Formats into the 200-byte buffer; 0 (reported) for a null format.
static Flag format_question(char *text, const char *format, va_list args) {
  if (!format) {
    InternalError("we", __LINE__);
    return 0;
  }
  format_bounded(text, WE_TEXT_SIZE, format, args);
  return 1;
}

#define KX_QUESTION_FORMS(Name, kind)                                                    \
  int16_t Name(const char *text) { return answer(kind, we_main_window_handle(), text); } \
  int16_t Name(void *owner, const char *text) { return answer(kind, owner, text); }      \
  int16_t Name##F(const char *format, ...) {                                             \
    char text[WE_TEXT_SIZE];                                                             \
    va_list args;                                                                        \
    va_start(args, format);                                                              \
    Flag ok = format_question(text, format, args);                                       \
    va_end(args);                                                                        \
    return ok ? answer(kind, we_main_window_handle(), text) : 0;                         \
  }                                                                                      \
  int16_t Name##F(void *owner, const char *format, ...) {                                \
    char text[WE_TEXT_SIZE];                                                             \
    va_list args;                                                                        \
    va_start(args, format);                                                              \
    Flag ok = format_question(text, format, args);                                       \
    va_end(args);                                                                        \
    return ok ? answer(kind, owner, text) : 0;                                           \
  }

KX_QUESTION_FORMS(QuestionBox, WE_DIALOG_QUESTION)
KX_QUESTION_FORMS(QuestionBoxCancel, WE_DIALOG_QUESTION_CANCEL)
KX_QUESTION_FORMS(QuestionBoxAll, WE_DIALOG_QUESTION_ALL)

Flag NoticeBox(const char *text) {
  return dialog_code(WE_DIALOG_NOTICE, we_main_window_handle(), WE_TITLE_NOTICE, text) ? 1 : 0;
}

Flag InfoBox(const char *text) { return NoticeBox(text); }

Flag ErrorDialog(void *owner, const char *text) {
  return dialog_code(WE_DIALOG_ERROR, owner, WE_TITLE_ERROR, text) ? 1 : 0;
}

Flag ErrorDialogF(void *owner, const char *format, ...) {
  char text[WE_TEXT_SIZE];
  va_list args;
  va_start(args, format);
  Flag ok = format_question(text, format, args);
  va_end(args);
  return ok ? ErrorDialog(owner, text) : 0;
}

Flag SwitchErrorDialog(void *owner, const char *module, int16_t line) {
  char body[WE_FAULT_SIZE];
  snprintf(body, sizeof body, WE_FAULT_BODY, module ? module : "", (int)line);
  return dialog_code(WE_DIALOG_ERROR, owner, WE_TITLE_SWITCH, body) ? 1 : 0;
}

Flag InternalErrorDialog(void *owner, const char *module, int16_t line) {
  char body[WE_FAULT_SIZE];
  snprintf(body, sizeof body, WE_FAULT_BODY, module ? module : "", (int)line);
  DisableThreadWindows();
  Flag shown = dialog_code(WE_DIALOG_ERROR, owner, WE_TITLE_INTERNAL, body) ? 1 : 0;
  EnableThreadWindows();
  return shown;
}
