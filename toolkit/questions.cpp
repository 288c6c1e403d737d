// questions.cpp - the question, notice and message dialogs of the reporting module, built as
// dialogs of the toolkit and handed to we as its dialogs.
#include "toolkit/questions.h"

#include "common/mm.h"
#include "common/we.h"
#include "toolkit/dialog.h"
#include "toolkit/dres.h"

#include <windows.h>

namespace {

struct WeButton {
  const char *text;
  int code;
};

const WeButton kYes = {"&Ano", WE_ANSWER_YES};
const WeButton kNo = {"&Ne", WE_ANSWER_NO};
const WeButton kAll = {"&Vše", WE_ANSWER_ALL};
const WeButton kCancel = {"&Storno", WE_ANSWER_CANCEL};
const WeButton kOk = {"&O.K.", 1};

enum { BODY_ITEM = 100, MAX_BUTTONS = 4 };

const DWORD kDialogStyle = DS_MODALFRAME | WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_SETFOREGROUND;

// The question / notice dialog: the text as body, a row of buttons below it; every button ends
// the dialog with its code, Esc and the close box with 2.
class WeDialog : public Dialog {
 public:
  WeDialog() : button_count(0) {}

  Flag on_init() override {
    layout();
    return 1;
  }

  Flag on_message(unsigned message, uintptr_t wparam, intptr_t) override {
    if (message != WM_COMMAND || HIWORD(wparam) != BN_CLICKED) return 0;
    int item = LOWORD(wparam);
    if (item != WE_ANSWER_CANCEL) {
      int i = 0;
      while (i < button_count && codes[i] != item) i++;
      if (i == button_count) return 0;
    }
    dialog_end(this, item);
    return 1;
  }

  int button_count;
  int codes[MAX_BUTTONS];

 private:
  // Sizes the body to its text and the dialog to both; buttons centred under the text.
  void layout() {
    HWND hwnd = (HWND)window;
    HWND body = GetDlgItem(hwnd, BODY_ITEM);
    if (!body) return;
    RECT margin = {0, 0, 7, 7}, button = {0, 0, 50, 14}, gap = {0, 0, 4, 0},
         widest = {0, 0, 360, 0}, narrowest = {0, 0, 120, 0};
    MapDialogRect(hwnd, &margin);
    MapDialogRect(hwnd, &button);
    MapDialogRect(hwnd, &gap);
    MapDialogRect(hwnd, &widest);
    MapDialogRect(hwnd, &narrowest);

    int length = GetWindowTextLengthW(body);
    wchar_t small[512];
    wchar_t *text = length < 512 ? small : (wchar_t *)mm_zalloc((length + 1) * 2, MM_HERE);
    if (!text) return;
    GetWindowTextW(body, text, length + 1);
    HDC dc = GetDC(hwnd);
    HGDIOBJ old = SelectObject(dc, (HFONT)SendMessageA(hwnd, WM_GETFONT, 0, 0));
    RECT extent = {0, 0, widest.right, 0};
    DrawTextW(dc, text, -1, &extent,
              DT_CALCRECT | DT_NOPREFIX | DT_EXPANDTABS | DT_WORDBREAK | DT_LEFT);
    SelectObject(dc, old);
    ReleaseDC(hwnd, dc);
    if (text != small) mm_free(text, MM_HERE);

    int text_w = extent.right - extent.left, text_h = extent.bottom - extent.top;
    int buttons_w = button_count * button.right + (button_count - 1) * gap.right;
    int content_w = text_w;
    if (content_w < buttons_w) content_w = buttons_w;
    if (content_w < narrowest.right) content_w = narrowest.right;
    int client_w = content_w + 2 * margin.right;
    int row_y = margin.bottom + text_h + margin.bottom;
    int client_h = row_y + button.bottom + margin.bottom;

    MoveWindow(body, margin.right, margin.bottom, content_w, text_h, FALSE);
    int x = (client_w - buttons_w) / 2;
    for (int i = 0; i < button_count; i++) {
      HWND b = GetDlgItem(hwnd, codes[i]);
      if (b)
        MoveWindow(b, x + i * (button.right + gap.right), row_y, button.right, button.bottom,
                   FALSE);
    }
    RECT outer = {0, 0, client_w, client_h};
    AdjustWindowRectEx(&outer, (DWORD)GetWindowLongA(hwnd, GWL_STYLE), FALSE,
                       (DWORD)GetWindowLongA(hwnd, GWL_EXSTYLE));
    SetWindowPos(hwnd, nullptr, 0, 0, outer.right - outer.left, outer.bottom - outer.top,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
  }
};

}  // namespace

int16_t questions_run(int16_t kind, void *owner, const char *title, const char *text) {
  const WeButton *buttons[MAX_BUTTONS];
  int count = 0;
  switch (kind) {
    case WE_DIALOG_QUESTION:
      buttons[count++] = &kYes;
      buttons[count++] = &kNo;
      break;
    case WE_DIALOG_QUESTION_CANCEL:
      buttons[count++] = &kYes;
      buttons[count++] = &kNo;
      buttons[count++] = &kCancel;
      break;
    case WE_DIALOG_QUESTION_ALL:
      buttons[count++] = &kYes;
      buttons[count++] = &kNo;
      buttons[count++] = &kAll;
      buttons[count++] = &kCancel;
      break;
    default: buttons[count++] = &kOk; break;
  }

  DialogTemplate *tpl = dres_create(title, kDialogStyle, 0, 0, 200, 60, "MS Sans Serif", 8);
  if (!tpl) return -1;
  Flag built = dres_add(tpl, DRES_STATIC, text, BODY_ITEM, SS_LEFT | SS_NOPREFIX, 7, 7, 186, 24);
  WeDialog dialog;
  for (int i = 0; built && i < count; i++) {
    // The button's item number is its code: "&Ano" and "&O.K." are IDOK, so Enter answers them.
    built = dres_add(tpl, DRES_BUTTON, buttons[i]->text, buttons[i]->code,
                     (i == 0 ? BS_DEFPUSHBUTTON | WS_GROUP : BS_PUSHBUTTON) | WS_TABSTOP,
                     (int16_t)(7 + i * 54), 38, 50, 14);
    dialog.codes[dialog.button_count++] = buttons[i]->code;
  }
  if (!built) {
    dres_destroy(&tpl);
    return -1;
  }
  dialog.parent = owner;
  dialog.center_on_parent = 1;
  int16_t code = (int16_t)dialog_run(&dialog, dres_bytes(tpl));
  dres_destroy(&tpl);
  return code;
}

void questions_install(void) { we_set_dialog_ui(questions_run); }
