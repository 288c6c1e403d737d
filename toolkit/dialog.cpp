// dialog.cpp - the dialog engine: the shared dialog procedure, modal and modeless runs,
// placement on the screen and the control table.
#include "toolkit/dialog.h"

#include "common/mm.h"
#include "common/we.h"
#include "platform/wtext.h"
#include "toolkit/dres.h"
#include "toolkit/wgd.h"

#include <windows.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

// ---- Trace -----------------------------------------------------------------------------------

void dialog_trace(const char *format, ...) {
  const char *path = getenv("KX_TRACE");
  if (!path || !*path || !format) return;
  FILE *f = fopen(path, "a");
  if (!f) return;
  va_list args;
  va_start(args, format);
  vfprintf(f, format, args);
  va_end(args);
  fputc('\n', f);
  fclose(f);
}

static DialogHelpHook help_hook;

DialogHelpHook dialog_set_help_hook(DialogHelpHook hook) {
  DialogHelpHook previous = help_hook;
  help_hook = hook;
  return previous;
}

// The modeless dialog's ending code, handed to the shell when its window goes away.
static int32_t modeless_code;
// The modeless dialog whose initialisation has run already (WM_INITDIALOG comes during
// the create call; dialog_open then must not initialise it a second time).
static Dialog *modeless_initialised;

// ---- Objects ---------------------------------------------------------------------------------

Dialog::Dialog()
    : parent(nullptr),
      template_number(0),
      window(nullptr),
      awaiting_handle(0),
      cancelled(0),
      explicit_position(0),
      parent_relative(0),
      center_on_parent(0),
      center_on_screen(0),
      position_x(0),
      position_y(0),
      current_x(0),
      current_y(0),
      client_width(0),
      client_height(0),
      window_width(0),
      window_height(0),
      control_count(0) {
  for (int i = 0; i < DIALOG_CONTROLS_MAX; i++) controls[i] = nullptr;
}

Dialog::~Dialog() {}
Flag Dialog::on_init() { return 1; }
void Dialog::on_placed() {}
Flag Dialog::on_ok() { return 1; }
void Dialog::on_size(uintptr_t, intptr_t) {}
Flag Dialog::on_message(unsigned, uintptr_t, intptr_t) { return 0; }

Control::Control() : kind(1), dialog_window(nullptr), item(0) {}
Control::~Control() {}
void Control::on_notify(uintptr_t, intptr_t) {}

// ---- Placement -------------------------------------------------------------------------------

void dialog_place(const DialogPlacement *in, int32_t *x, int32_t *y) {
  int32_t w = in->window.right - in->window.left;
  int32_t h = in->window.bottom - in->window.top;
  int32_t left, top;
  if (!in->explicit_position && !in->parent_relative) {
    if (!in->has_parent || in->center_on_screen) {
      left = (in->work.left + in->work.right) / 2 - w / 2;
      top = (in->work.top + in->work.bottom) / 2 - h / 2;
    } else if (!in->center_on_parent) {
      left = in->parent_client_x;
      top = in->parent_client_y;
    } else {
      left = (in->parent_window.left + in->parent_window.right) / 2 - w / 2;
      top = (in->parent_window.top + in->parent_window.bottom) / 2 - h / 2;
    }
  } else {
    left = in->position_x;
    top = in->position_y;
    if (in->parent_relative) {
      left += in->parent_client_x;
      top += in->parent_client_y;
    }
  }
  if (left < in->work.left) left = in->work.left;
  if (left + w > in->work.right) left = in->work.right - w;
  if (top < in->work.top) top = in->work.top;
  if (top + h > in->work.bottom) top = in->work.bottom - h;
  if (in->child) {
    left -= in->parent_client_x;
    top -= in->parent_client_y;
  }
  *x = left;
  *y = top;
}

static void copy_rect(DialogRect *to, const RECT &r) {
  to->left = r.left;
  to->top = r.top;
  to->right = r.right;
  to->bottom = r.bottom;
}

// Runs on_init, queues on_placed and puts the dialog on the screen.
static void initialise(Dialog *d) {
  HWND hwnd = (HWND)d->window;
  if (!d->on_init()) {
    PostMessageA(hwnd, WM_COMMAND, IDCANCEL, 0);
    return;
  }
  PostMessageA(hwnd, DIALOG_MSG_PLACED, 0, 0);

  DialogPlacement p;
  memset(&p, 0, sizeof p);
  RECT r;
  SystemParametersInfoA(SPI_GETWORKAREA, 0, &r, 0);
  copy_rect(&p.work, r);
  GetWindowRect(hwnd, &r);
  copy_rect(&p.window, r);
  HWND parent = (HWND)d->parent;
  if (parent && IsWindow(parent)) {
    p.has_parent = 1;
    POINT origin = {0, 0};
    ClientToScreen(parent, &origin);
    p.parent_client_x = origin.x;
    p.parent_client_y = origin.y;
    GetWindowRect(parent, &r);
    copy_rect(&p.parent_window, r);
    p.child = (GetWindowLongA(hwnd, GWL_STYLE) & WS_CHILD) ? 1 : 0;
  }
  p.explicit_position = d->explicit_position;
  p.parent_relative = d->parent_relative;
  p.center_on_parent = d->center_on_parent;
  p.center_on_screen = d->center_on_screen;
  p.position_x = d->position_x;
  p.position_y = d->position_y;

  int32_t x, y;
  dialog_place(&p, &x, &y);
  d->window_width = p.window.right - p.window.left;
  d->window_height = p.window.bottom - p.window.top;
  d->current_x = x;
  d->current_y = y;
  SetWindowPos(hwnd, nullptr, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
}

// ---- The shared dialog procedure ---------------------------------------------------------------

static Control *control_by_item(Dialog *d, int32_t item) {
  for (int32_t i = 0; i < d->control_count; i++)
    if (d->controls[i] && d->controls[i]->item == item) return d->controls[i];
  return nullptr;
}

// OK accepted: a modal dialog ends with 1 (EndDialog); the modeless one, which EndDialog would
// only hide, is ended as dialog_end does it.
static void end_with_one(Dialog *d, HWND hwnd) {
  if (app_current()->modeless == d) dialog_end(d, 1);
  else EndDialog(hwnd, 1);
}

static intptr_t route(Dialog *d, HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  Application *app = app_current();
  switch (message) {
    case WM_INITDIALOG:
      if (app->modeless == d) modeless_initialised = d;
      initialise(d);
      return 1;
    case WM_COMMAND: {
      int item = LOWORD(wparam);
      if (item == IDOK || item == IDYES) {
        if (!d->on_message(message, wparam, lparam) && d->on_ok()) end_with_one(d, hwnd);
        Dialog *modeless = app->modeless;
        if (modeless && !d->on_message(message, wparam, lparam) && modeless->on_ok())
          end_with_one(d, hwnd);
        return 1;
      }
      if (item == IDCANCEL) {
        if (!d->on_message(message, wparam, lparam)) dialog_end(d, 2);
        return 1;
      }
      Control *c = control_by_item(d, item);
      if (c) c->on_notify(wparam, lparam);
      return d->on_message(message, wparam, lparam);
    }
    case WM_NOTIFY: {
      const NMHDR *h = (const NMHDR *)lparam;
      Control *c = h ? control_by_item(d, (int32_t)h->idFrom) : nullptr;
      if (c) c->on_notify(wparam, lparam);
      return 0;
    }
    case WM_CHAR: return d->on_message(message, wparam, lparam);
    case WM_HSCROLL:
    case WM_VSCROLL:
      for (int32_t i = 0; i < d->control_count; i++) {
        Control *c = d->controls[i];
        if (!c || !lparam || GetDlgItem(hwnd, c->item) != (HWND)lparam) continue;
        uintptr_t w = (uintptr_t)(uint16_t)c->item | ((uintptr_t)(uint16_t)wparam << 16);
        return d->on_message(message, w, 0) ? 1 : 0;
      }
      return 0;
    case WM_SIZE:
      d->client_width = LOWORD(lparam);
      d->client_height = HIWORD(lparam);
      d->on_size(wparam, lparam);
      return 0;
    case WM_MOVE:
      d->current_x = (int16_t)LOWORD(lparam);
      d->current_y = (int16_t)HIWORD(lparam);
      return 0;
    case DIALOG_MSG_PLACED: {
      RECT r;
      if (GetWindowRect(hwnd, &r)) {
        d->current_x = r.left;
        d->current_y = r.top;
        d->window_width = r.right - r.left;
        d->window_height = r.bottom - r.top;
      }
      d->on_placed();
      return 1;
    }
    case WM_RBUTTONDOWN:
    case DIALOG_MSG_HELP:
      dialog_trace("DIALOG - help");
      if (help_hook) help_hook(d);
      return 1;
    case WM_DESTROY:
      if (app->modeless == d) {
        int32_t code = modeless_code;
        modeless_code = 0;
        modeless_initialised = nullptr;
        app_set_modeless(app, nullptr);
        app_dialog_destroyed(d, code);
      }
      return 0;
    default:
      if (message >= WM_USER) dialog_trace("DIALOG - WM_USER");
      return 0;
  }
}

intptr_t dialog_procedure(void *window, unsigned message, uintptr_t wparam, intptr_t lparam) {
  dialog_trace("DIALOG msg 0x%04X hWnd 0x%08lX", message, (unsigned long)(uintptr_t)window);
  Application *app = app_current();
  HWND hwnd = (HWND)window;
  if (app->modeless && app->modeless->window == window)
    return route(app->modeless, hwnd, message, wparam, lparam);
  for (int i = 0; i < DIALOG_MODAL_MAX; i++)
    if (app->modal[i] && app->modal[i]->window == window)
      return route(app->modal[i], hwnd, message, wparam, lparam);
  for (int i = 0; i < DIALOG_MODAL_MAX; i++) {
    Dialog *d = app->modal[i];
    if (d && d->awaiting_handle) {
      d->window = window;
      d->awaiting_handle = 0;
      return route(d, hwnd, message, wparam, lparam);
    }
  }
  if (app->modeless && app->modeless->awaiting_handle) {
    Dialog *d = app->modeless;
    d->window = window;
    d->awaiting_handle = 0;
    return route(d, hwnd, message, wparam, lparam);
  }
  return 0;
}

static INT_PTR CALLBACK shared_procedure(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  return (INT_PTR)dialog_procedure(hwnd, message, wparam, lparam);
}

// ---- Running ---------------------------------------------------------------------------------

int32_t dialog_run(Dialog *dialog, const void *dialog_template) {
  if (!dialog) {
    InternalError("dialog", __LINE__);
    return 0;
  }
  Application *app = app_current();
  if (!app_add_dialog(app, dialog)) {
    InternalError("dialog", __LINE__);
    return 0;
  }
  const void *tpl = dialog_template ? dialog_template : dres_find_modal(dialog->template_number);
  if (!tpl) {
    app_remove_dialog(app, dialog);
    return 0;
  }
  dialog->window = nullptr;
  dialog->awaiting_handle = 1;
  // Dialogs are wide windows whatever the system's ANSI code page is: every text goes to them
  // and comes from them through explicit conversions from and to 1250.
  INT_PTR result = DialogBoxIndirectParamW((HINSTANCE)app->instance, (LPCDLGTEMPLATEW)tpl,
                                           (HWND)dialog->parent, shared_procedure, 0);
  dialog->awaiting_handle = 0;
  dialog->window = nullptr;
  if (!app_remove_dialog(app_current(), dialog)) {
    InternalError("dialog", __LINE__);
    return 0;
  }
  if (result < 0) {
    InternalError("dialog", __LINE__);
    return 3;
  }
  return (int32_t)result;
}

Flag dialog_open(Dialog *dialog, const void *dialog_template) {
  if (!dialog) {
    InternalError("dialog", __LINE__);
    return 0;
  }
  Application *app = app_current();
  if (app->modeless || !app_set_modeless(app, dialog)) {
    InternalError("dialog", __LINE__);
    return 0;
  }
  const void *tpl = dialog_template ? dialog_template : dres_find_modeless(dialog->template_number);
  if (!tpl) {
    app_set_modeless(app, nullptr);
    return 0;
  }
  dialog->window = nullptr;
  dialog->awaiting_handle = 1;
  modeless_initialised = nullptr;
  modeless_code = 0;
  HWND hwnd = CreateDialogIndirectParamW((HINSTANCE)app->instance, (LPCDLGTEMPLATEW)tpl,
                                         (HWND)dialog->parent, shared_procedure, 0);
  dialog->awaiting_handle = 0;
  if (!hwnd) {
    if (app->modeless == dialog) app_set_modeless(app, nullptr);
    dialog->window = nullptr;
    InternalError("dialog", __LINE__);
    return 0;
  }
  dialog->window = hwnd;
  dialog_trace("Modeless adresa hWnd: 0x%010lX", (unsigned long)(uintptr_t)hwnd);
  if (modeless_initialised != dialog) {
    modeless_initialised = dialog;
    initialise(dialog);
  }
  return 1;
}

void dialog_end(Dialog *dialog, int32_t code) {
  if (!dialog) {
    InternalError("dialog", __LINE__);
    return;
  }
  if (code == 2) dialog->cancelled = 1;
  Application *app = app_current();
  HWND hwnd = (HWND)dialog->window;
  if (app->modeless == dialog) {
    modeless_code = code;
    if (hwnd && IsWindow(hwnd)) DestroyWindow(hwnd);
    if (app->modeless == dialog) {  // no window to destroy: free the slot here
      modeless_initialised = nullptr;
      app_set_modeless(app, nullptr);
      app_dialog_destroyed(dialog, code);
    }
    modeless_code = 0;
    dialog->window = nullptr;
    return;
  }
  if (hwnd) EndDialog(hwnd, code);
}

static HWND item_window(Control *control);

// ---- Texts in code page 1250 -----------------------------------------------------------------
//
// Our texts are Windows-1250 whatever the system's ANSI code page is: windows get and give them
// as UTF-16, converted explicitly.

Flag dialog_window_set_text(void *window, const char *text) {
  if (!window || !text) return 0;
  int32_t n = wtext_units(text) + 1;
  wchar_t *wide = (wchar_t *)mm_zalloc(n * (int32_t)sizeof(wchar_t), MM_HERE);
  if (!wide) {
    OutOfMemoryError();
    return 0;
  }
  wtext_in(text, wide, (size_t)n);
  Flag ok = SetWindowTextW((HWND)window, wide) ? 1 : 0;
  mm_free(wide, MM_HERE);
  return ok;
}

Flag dialog_window_get_text(void *window, char *buffer, int32_t size) {
  if (!buffer || size < 1) return 0;
  buffer[0] = 0;
  if (!window) return 0;
  int length = GetWindowTextLengthW((HWND)window);
  if (length < 0) length = 0;
  wchar_t *wide = (wchar_t *)mm_zalloc((length + 1) * (int32_t)sizeof(wchar_t), MM_HERE);
  if (!wide) {
    OutOfMemoryError();
    return 0;
  }
  GetWindowTextW((HWND)window, wide, length + 1);
  // Too long: the part that fits, cut. A character that 1250 lacks: refused (0, "").
  if (length > size - 1) wide[size - 1] = 0;
  Flag ok = wtext_out(wide, buffer, (size_t)size);
  mm_free(wide, MM_HERE);
  return ok;
}

// ---- Window helpers --------------------------------------------------------------------------

Flag dialog_set_focus(Dialog *dialog) {
  if (!dialog) {
    InternalError("dialog", __LINE__);
    return 0;
  }
  if (!dialog->window) return 0;
  SetFocus((HWND)dialog->window);
  return 1;
}

Flag dialog_set_title(Dialog *dialog, const char *text) {
  if (!dialog || !text) {
    InternalError("dialog", __LINE__);
    return 0;
  }
  return dialog_window_set_text(dialog->window, text);
}

Flag dialog_get_title(Dialog *dialog, char *buffer, int32_t size) {
  if (!dialog || !buffer || size < 1) {
    InternalError("dialog", __LINE__);
    return 0;
  }
  return dialog_window_get_text(dialog->window, buffer, size);
}

Flag dialog_add_control(Dialog *dialog, Control *control) {
  if (!dialog || !control || dialog->control_count >= DIALOG_CONTROLS_MAX) {
    InternalError("dialog", __LINE__);
    return 0;
  }
  dialog->controls[dialog->control_count++] = control;
  return 1;
}

Control *dialog_find_control(Dialog *dialog, int32_t item) {
  if (!dialog) {
    InternalError("dialog", __LINE__);
    return nullptr;
  }
  Control *c = control_by_item(dialog, item);
  if (c && c->kind != 1) {
    InternalError("dialog", __LINE__);
    return nullptr;
  }
  return c;
}

void dialog_to_units(Dialog *dialog, int32_t *x, int32_t *y) {
  if (!dialog || !x || !y) {
    InternalError("dialog", __LINE__);
    return;
  }
  RECT r = {0, 0, 4, 8};
  MapDialogRect((HWND)dialog->window, &r);
  if (r.right > 0) *x = *x * 4 / r.right;
  if (r.bottom > 0) *y = *y * 8 / r.bottom;
}

// ---- Item helpers ----------------------------------------------------------------------------

static HWND item_window(Control *control) {
  if (!control) {
    InternalError("dialog", __LINE__);
    return nullptr;
  }
  return GetDlgItem((HWND)control->dialog_window, control->item);
}

Flag control_set_text(Control *control, const char *text) {
  if (!control || !text) {
    InternalError("dialog", __LINE__);
    return 0;
  }
  HWND w = item_window(control);
  return w ? dialog_window_set_text(w, text) : 0;
}

Flag control_clear_text(Control *control) { return control_set_text(control, ""); }

Flag control_get_text(Control *control, char *buffer, int32_t size) {
  if (!control || !buffer || size < 1) {
    InternalError("dialog", __LINE__);
    return 0;
  }
  memset(buffer, 0, (size_t)size);
  HWND w = item_window(control);
  if (!w) return 0;
  return dialog_window_get_text(w, buffer, size);
}

Flag control_select_all(Control *control) {
  HWND w = item_window(control);
  if (!w) return 0;
  SendMessageA(w, EM_SETSEL, 0, -1);
  return 1;
}

Flag control_limit_text(Control *control, int32_t limit) {
  HWND w = item_window(control);
  if (!w) return 0;
  SendMessageA(w, EM_LIMITTEXT, (WPARAM)limit, 0);
  return 1;
}

Flag control_get_limit(Control *control, int32_t *limit) {
  HWND w = item_window(control);
  if (!w || !limit) return 0;
  LRESULT n = SendMessageA(w, EM_GETLIMITTEXT, 0, 0);
  if ((int32_t)n < 0) return 0;
  *limit = (int32_t)n;
  return 1;
}

Flag control_list_reset(Control *control) {
  HWND w = item_window(control);
  if (!w) return 0;
  SendMessageA(w, LB_RESETCONTENT, 0, 0);
  return 1;
}

Flag control_list_add(Control *control, const char *text) {
  HWND w = item_window(control);
  if (!w || !text) return 0;
  int32_t units = wtext_units(text) + 1;
  wchar_t *wide = (wchar_t *)mm_zalloc(units * (int32_t)sizeof(wchar_t), MM_HERE);
  if (!wide) {
    OutOfMemoryError();
    return 0;
  }
  wtext_in(text, wide, (size_t)units);
  LRESULT n = SendMessageW(w, LB_ADDSTRING, 0, (LPARAM)wide);
  mm_free(wide, MM_HERE);
  return (n == LB_ERR || n == LB_ERRSPACE) ? 0 : 1;
}
