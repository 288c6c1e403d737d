// The question, notice and message dialogs, shown for real and answered through the thread's
// message loop as a user would: a button click, Esc, the close box, Enter.
#include "tests/toolkit/tk_watch.h"

#include "common/we.h"
#include "tests/support/kxtest.h"
#include "toolkit/questions.h"
#include "toolkit/wgd.h"

#include <stdlib.h>

namespace {

// The dialogs under test are the toolkit's, as in a program that has started the toolkit.
const int installed = (questions_install(), 0);

using Texts = std::vector<std::string>;

enum Action { ESC, CLOSE, ENTER };

std::function<void(HWND)> act(int action) {
  return [action](HWND d) {
    HWND to = GetFocus() ? GetFocus() : d;
    if (action == CLOSE) PostMessageA(d, WM_SYSCOMMAND, SC_CLOSE, 0);
    if (action == ENTER) PostMessageA(to, WM_KEYDOWN, VK_RETURN, 1);
    if (action == ESC) PostMessageA(to, WM_KEYDOWN, VK_ESCAPE, 1), PostMessageA(to, WM_KEYUP, VK_ESCAPE, 0xC0000001);
  };
}

// Esc, the close box and Enter; which raw code gives which answer the hook test below pins down
// for every code, and the robot's toolkit script clicks each button from outside.
TEST(QuestionDialog, ButtonSetsAndEveryWayOfClosing) {
  if (const char *acp = getenv("KX_EXPECT_ACP")) {
    EXPECT_EQ((UINT)atoi(acp), GetACP()) << "not under the code page it claims";
  }
  const char *file = "Soubor C:\\KORV5\\EXE\\SYSTEM.WCO již existuje.\nPřepsat ?";
  // Every letter of code page 1250 that Czech uses, in both cases.
  const char *czech = "Příliš žluťoučký kůň úpěl ďábelské ódy\nPŘÍLIŠ ŽLUŤOUČKÝ KŮŇ ÚPĚL ĎÁBELSKÉ ÓDY";
  const Texts sets[] = {{"&Ano", "&Ne"}, {"&Ano", "&Ne", "&Storno"}, {"&Ano", "&Ne", "&Vše", "&Storno"}};
  const struct {
    int16_t kind;
    int action;
    int16_t expected;
  } rows[] = {
      /* 0 */ {WE_DIALOG_QUESTION, ENTER, 1},
      /* 1 */ {WE_DIALOG_QUESTION, CLOSE, 0},
      /* 2 */ {WE_DIALOG_QUESTION_CANCEL, ESC, -1},
      /* 3 */ {WE_DIALOG_QUESTION_ALL, CLOSE, -1},  // with the Czech text
  };
  for (size_t i = 0; i < KX_COUNT(rows); i++) {
    SCOPED_TRACE(testing::Message() << "row " << i);
    const char *text = i == 3 ? czech : file;
    kxtest::BoxRecorder boxes;
    tk::Watch watch("Dotaz", act(rows[i].action));
    int k = rows[i].kind;
    int16_t got = k == WE_DIALOG_QUESTION ? QuestionBox(text) : k == WE_DIALOG_QUESTION_CANCEL ? QuestionBoxCancel(text) : QuestionBoxAll(text);
    ASSERT_TRUE(watch.fired && !watch.timed_out) << "the dialog never showed";
    EXPECT_EQ(rows[i].expected, got);
    EXPECT_EQ(sets[k - WE_DIALOG_QUESTION], watch.seen.buttons);
    EXPECT_EQ(Texts{text}, watch.seen.statics);
    EXPECT_EQ(0u, boxes.count()) << boxes.dump();
    EXPECT_EQ(nullptr, tk::find_dialog("")) << "a dialog is left on the screen";
  }
}

TEST(QuestionDialog, BodyIsSizedToTheText) {
  std::string text = std::string(90, 'W') + "\n2\n3\n4\n5";
  tk::Watch watch("Dotaz", [](HWND d) {
    HWND body = GetDlgItem(d, 100);
    RECT r, client, button;
    GetClientRect(body, &r);
    HDC dc = GetDC(body);
    HGDIOBJ old = SelectObject(dc, (HFONT)SendMessageA(d, WM_GETFONT, 0, 0));
    SIZE one;
    GetTextExtentPoint32A(dc, "WWWWWWWWWW", 10, &one);
    TEXTMETRICA tm;
    GetTextMetricsA(dc, &tm);
    SelectObject(dc, old);
    ReleaseDC(body, dc);
    EXPECT_GE(r.right, one.cx * 9) << "the longest line does not fit: " << r.right;
    EXPECT_GE(r.bottom, tm.tmHeight * 5) << "five lines do not fit: " << r.bottom;
    GetClientRect(d, &client);
    GetWindowRect(GetDlgItem(d, 7), &button);
    MapWindowPoints(nullptr, d, (POINT *)&button, 2);
    EXPECT_LE(button.bottom, client.bottom) << "the buttons are cut off";
    PostMessageA(d, WM_COMMAND, IDCANCEL, 0);
  });
  EXPECT_EQ(0, QuestionBox(text.c_str()));
  EXPECT_TRUE(watch.fired);
}

// ---- Through the test hook: the raw codes a dialog may end with, and the formatting ------------

int16_t hooked_kind, hook_code;
std::string hooked_title, hooked_text;

int16_t hook(int16_t kind, void *, const char *title, const char *text) {
  hooked_kind = kind;
  hooked_title = title ? title : "(null)";
  hooked_text = text ? text : "(null)";
  return hook_code;
}

TEST(QuestionHook, RawCodesMapToAnswers) {
  const struct {
    int16_t code, yes_no, cancel, all;
  } rows[] = {{1, 1, 1, 1}, {7, 0, 0, 0}, {6, 0, -1, 2}, {2, 0, -1, -1}, {3, 0, -1, 0}, {0, 0, 0, 0}};
  WeDialogHook previous = we_set_dialog_hook(hook);
  for (const auto &r : rows) {
    SCOPED_TRACE(testing::Message() << "code " << r.code);
    hook_code = r.code;
    EXPECT_EQ(r.yes_no, QuestionBox("a"));
    EXPECT_EQ(WE_DIALOG_QUESTION, hooked_kind);
    EXPECT_EQ(r.cancel, QuestionBoxCancel("a"));
    EXPECT_EQ(WE_DIALOG_QUESTION_CANCEL, hooked_kind);
    EXPECT_EQ(r.all, QuestionBoxAll("a"));
    EXPECT_EQ(WE_DIALOG_QUESTION_ALL, hooked_kind);
    EXPECT_EQ("Dotaz", hooked_title);
  }
  we_set_dialog_hook(previous);
}

}  // namespace
