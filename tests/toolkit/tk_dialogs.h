// tk_dialogs.h - small dialogs built in memory for the toolkit tests.
#ifndef KX_TK_DIALOGS_H
#define KX_TK_DIALOGS_H

#include "toolkit/dialog.h"
#include "toolkit/dres.h"

#include <windows.h>

#include <functional>
#include <vector>

namespace tk {

enum { EDIT_ITEM = 201, BUTTON_ITEM = 202, SCROLL_ITEM = 203, LIST_ITEM = 204 };

// A template: title, an edit, a push button "Dál", a scroll bar and a list box.
struct Template {
  DialogTemplate *tpl = nullptr;
  explicit Template(const char *title, int16_t cx = 160, int16_t cy = 100,
                    uint32_t style = DS_MODALFRAME | WS_POPUP | WS_CAPTION | WS_SYSMENU) {
    tpl = dres_create(title, style, 0, 0, cx, cy, "MS Sans Serif", 8);
    dres_add(tpl, DRES_EDIT, "", EDIT_ITEM, WS_BORDER | WS_TABSTOP | ES_AUTOHSCROLL, 5, 5, 100, 12);
    dres_add(tpl, DRES_BUTTON, "Dál", BUTTON_ITEM, BS_PUSHBUTTON | WS_TABSTOP, 5, 20, 40, 14);
    dres_add(tpl, DRES_SCROLLBAR, "", SCROLL_ITEM, SBS_HORZ, 5, 38, 100, 10);
    dres_add(tpl, DRES_LISTBOX, "", LIST_ITEM, WS_BORDER | LBS_NOTIFY, 5, 50, 100, 30);
  }
  ~Template() { dres_destroy(&tpl); }
  const void *bytes() const { return dres_bytes(tpl); }
};

struct Msg {
  unsigned message;
  uintptr_t wparam;
  intptr_t lparam;
};

// A dialog whose operations record their calls and run the test's lambdas.
class TestDialog : public Dialog {
 public:
  Flag init_result = 1, ok_result = 1, message_result = 0;
  int init_calls = 0, placed_calls = 0, ok_calls = 0;
  std::vector<Msg> messages;
  std::function<void(TestDialog *)> placed;                                  // runs in on_placed
  std::function<Flag(TestDialog *, unsigned, uintptr_t, intptr_t)> handler;  // on_message

  Flag on_init() override { return init_calls++, init_result; }
  void on_placed() override {
    placed_calls++;
    if (placed) placed(this);
  }
  Flag on_ok() override { return ok_calls++, ok_result; }
  Flag on_message(unsigned message, uintptr_t wparam, intptr_t lparam) override {
    messages.push_back(Msg{message, wparam, lparam});
    return handler ? handler(this, message, wparam, lparam) : message_result;
  }
};

}  // namespace tk

#endif
