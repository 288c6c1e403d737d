// tkdemo: a small program on the window toolkit for the UI robot. Its main window is a modeless
// dialog "Toolkit" opened through the window factory; the buttons ask the three questions and
// show the notice, and the answer is written into item 110. "&Konec" ends the program with
// exit code 7, the close box with 0.
#include "common/we.h"
#include "toolkit/dialog.h"
#include "toolkit/dres.h"
#include "toolkit/wgd.h"

#include <windows.h>
#include <stdio.h>

namespace {

enum { ASK = 101, ASK_CANCEL = 102, ASK_ALL = 103, NOTICE = 104, END = 105, ANSWER = 110 };

class DemoDialog : public Dialog {
 public:
  Control answer;
  Flag on_init() override {
    answer.dialog_window = window;
    answer.item = ANSWER;
    dialog_add_control(this, &answer);
    return 1;
  }
  Flag on_message(unsigned message, uintptr_t wparam, intptr_t) override {
    int id = message == WM_COMMAND && HIWORD(wparam) == BN_CLICKED ? LOWORD(wparam) : 0;
    if (id == END) return dialog_end(this, 7), 1;
    if (id < ASK || id > NOTICE) return 0;
    int got = id == ASK          ? QuestionBox("Přepsat soubor ?")
              : id == ASK_CANCEL ? QuestionBoxCancelF("Soubor %s již existuje.\nPřepsat ?", "C:\\KORV5\\EXE\\SYSTEM.WCO")
              : id == ASK_ALL    ? QuestionBoxAll(window, "Přepsat všechny soubory ?")
                                 : NoticeBox("Vlož DISK2");
    char text[64];
    snprintf(text, sizeof text, "%s %d", id == NOTICE ? "oznámení" : "odpověď", got);
    control_set_text(&answer, text);
    return 1;
  }
};

DemoDialog *demo;
DialogTemplate *demo_template;

Flag factory(void *parent, Dialog **out, int16_t type) {
  *out = nullptr;
  if (type != 100) return 0;
  demo->parent = parent;
  if (!dialog_open(demo, dres_bytes(demo_template))) return 0;
  *out = demo;
  return 1;
}

}  // namespace

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR, int show) {
  demo_template = dres_create("Toolkit", WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX, 0,
                              0, 200, 110, "MS Sans Serif", 8);
  const struct {
    int id;
    const char *text;
  } buttons[] = {{ASK, "&Otázka"}, {ASK_CANCEL, "Otázka se &stornem"}, {ASK_ALL, "Otázka s &vše"},
                 {NOTICE, "&Oznámení"}, {END, "&Konec"}};
  int16_t y = 7;
  for (const auto &b : buttons) {
    dres_add(demo_template, DRES_BUTTON, b.text, b.id, BS_PUSHBUTTON | WS_TABSTOP, 7, y, 90, 14);
    y += 17;
  }
  dres_add(demo_template, DRES_STATIC, "", ANSWER, SS_LEFT, 105, 7, 88, 10);
  DemoDialog dialog;
  demo = &dialog;
  app_set_window_factory(factory, 100);
  int32_t code = app_run(instance, show);
  dres_destroy(&demo_template);
  return code;
}
