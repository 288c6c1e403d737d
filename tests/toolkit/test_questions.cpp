// The question, notice and message dialogs, shown for real and answered through the thread's
// message loop as a user would: a button click, Esc, the close box, Enter.
#include "tk_watch.h"

#include "tests/support/kxtest.h"
#include "swin/wgd.h"
#include "win/we.h"

#include <stdlib.h>

namespace {

using Buttons = std::vector<std::string>;

const Buttons kYesNo = {"&Ano", "&Ne"};
const Buttons kYesNoCancel = {"&Ano", "&Ne", "&Storno"};
const Buttons kYesNoAllCancel = {"&Ano", "&Ne", "&Vše", "&Storno"};

enum Action { PRESS, ESC, CLOSE, ENTER };

struct Row {
  int line;
  int16_t kind;
  Action action;
  const char *button;
  int16_t expected;
};

int16_t ask(int16_t kind, const char *text) {
  switch (kind) {
    case WE_DIALOG_QUESTION: return QuestionBox(text);
    case WE_DIALOG_QUESTION_CANCEL: return QuestionBoxCancel(text);
    default: return QuestionBoxAll(text);
  }
}

std::function<void(HWND)> action_of(const Row &r) {
  switch (r.action) {
    case PRESS: return tk::press(r.button);
    case ESC: return tk::escape();
    case CLOSE: return tk::close_box();
    default: return tk::enter();
  }
}

TEST(QuestionDialog, EveryButtonAndEveryWayOfClosing) {
  const Row rows[] = {
      {__LINE__, WE_DIALOG_QUESTION, PRESS, "&Ano", 1},
      {__LINE__, WE_DIALOG_QUESTION, PRESS, "&Ne", 0},
      {__LINE__, WE_DIALOG_QUESTION, ESC, nullptr, 0},
      {__LINE__, WE_DIALOG_QUESTION, CLOSE, nullptr, 0},
      {__LINE__, WE_DIALOG_QUESTION, ENTER, nullptr, 1},
      {__LINE__, WE_DIALOG_QUESTION_CANCEL, PRESS, "&Ano", 1},
      {__LINE__, WE_DIALOG_QUESTION_CANCEL, PRESS, "&Ne", 0},
      {__LINE__, WE_DIALOG_QUESTION_CANCEL, PRESS, "&Storno", -1},
      {__LINE__, WE_DIALOG_QUESTION_CANCEL, ESC, nullptr, -1},
      {__LINE__, WE_DIALOG_QUESTION_CANCEL, CLOSE, nullptr, -1},
      {__LINE__, WE_DIALOG_QUESTION_ALL, PRESS, "&Ano", 1},
      {__LINE__, WE_DIALOG_QUESTION_ALL, PRESS, "&Ne", 0},
      {__LINE__, WE_DIALOG_QUESTION_ALL, PRESS, "&Vše", 2},
      {__LINE__, WE_DIALOG_QUESTION_ALL, PRESS, "&Storno", -1},
      {__LINE__, WE_DIALOG_QUESTION_ALL, ESC, nullptr, -1},
      {__LINE__, WE_DIALOG_QUESTION_ALL, CLOSE, nullptr, -1},
  };
  const char *text = "Soubor C:\\KORV5\\EXE\\SYSTEM.WCO již existuje.\nPřepsat ?";
  for (const Row &r : rows) {
    SCOPED_TRACE(testing::Message() << "row at line " << r.line);
    kxtest::BoxRecorder boxes;
    tk::Watch watch("Dotaz", action_of(r));
    int16_t got = ask(r.kind, text);
    ASSERT_TRUE(watch.fired) << "the dialog never showed";
    ASSERT_FALSE(watch.timed_out);
    EXPECT_EQ(r.expected, got);
    const Buttons &want = r.kind == WE_DIALOG_QUESTION          ? kYesNo
                          : r.kind == WE_DIALOG_QUESTION_CANCEL ? kYesNoCancel
                                                                : kYesNoAllCancel;
    EXPECT_EQ(want, watch.seen.buttons);
    ASSERT_EQ(1u, watch.seen.statics.size());
    EXPECT_EQ(text, watch.seen.statics[0]);
    EXPECT_EQ(0u, boxes.count()) << boxes.dump();
    EXPECT_EQ(nullptr, tk::find_dialog("")) << "a dialog is left on the screen";
  }
}

// The item numbers are the result codes: "&Ano" and "&O.K." are IDOK, "&Vše" IDYES,
// "&Ne" IDNO, "&Storno" IDCANCEL.
TEST(QuestionDialog, CzechTextsArriveIntact) {
  // Every letter of code page 1250 that Czech uses, in both cases.
  const char *text = "Příliš žluťoučký kůň úpěl ďábelské ódy\nPŘÍLIŠ ŽLUŤOUČKÝ KŮŇ ÚPĚL ĎÁBELSKÉ ÓDY";
  tk::Watch watch("Dotaz", tk::press("&Vše"));
  EXPECT_EQ(2, QuestionBoxAll(text));
  ASSERT_EQ(1u, watch.seen.statics.size());
  EXPECT_EQ(text, watch.seen.statics[0]);
  EXPECT_EQ("Dotaz", watch.seen.title);
  EXPECT_EQ("&Vše", watch.seen.buttons.at(2));
  // The run under another ANSI code page really has it.
  const char *expect_acp = getenv("KX_EXPECT_ACP");
  if (expect_acp) {
    EXPECT_EQ((UINT)atoi(expect_acp), GetACP());
  }
}

TEST(QuestionDialog, BodyIsSizedToTheText) {
  std::string line(90, 'W');
  std::string text = line + "\n2\n3\n4\n5";
  tk::Watch watch("Dotaz", [](HWND d) {
    HWND body = GetDlgItem(d, 100);
    RECT r;
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
    RECT client, button;
    GetClientRect(d, &client);
    GetWindowRect(GetDlgItem(d, 7), &button);
    MapWindowPoints(nullptr, d, (POINT *)&button, 2);
    EXPECT_LE(button.bottom, client.bottom) << "the buttons are cut off";
    PostMessageA(d, WM_COMMAND, IDCANCEL, 0);
  });
  EXPECT_EQ(0, QuestionBox(text.c_str()));
  EXPECT_TRUE(watch.fired);
}

TEST(QuestionDialog, OwnerIsTheGivenWindowOrTheMainWindow) {
  HWND main = CreateWindowA("STATIC", "hlavni", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 10, 10, 200,
                            100, nullptr, nullptr, nullptr, nullptr);
  HWND other = CreateWindowA("STATIC", "jine", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 250, 10, 200,
                             100, nullptr, nullptr, nullptr, nullptr);
  WeMainWindow mw = {main, nullptr, nullptr};
  we_set_main_window(&mw);
  {
    tk::Watch watch("Dotaz", tk::press("&Ano"));
    EXPECT_EQ(1, QuestionBox("bez vlastníka"));
    EXPECT_EQ(main, watch.seen.owner);
  }
  {
    tk::Watch watch("Dotaz", tk::press("&Ne"));
    EXPECT_EQ(0, QuestionBoxCancelF(other, "s vlastníkem %d", 2));
    EXPECT_EQ(other, watch.seen.owner);
  }
  we_set_main_window(nullptr);
  {
    tk::Watch watch("Dotaz", tk::press("&Ano"));
    EXPECT_EQ(1, QuestionBoxAllF("bez hlavního okna %s", "x"));
    EXPECT_EQ(nullptr, watch.seen.owner);
  }
  EXPECT_TRUE(IsWindowEnabled(main));
  EXPECT_TRUE(IsWindowEnabled(other));
  DestroyWindow(main);
  DestroyWindow(other);
}

struct MessageRow {
  int line;
  int form;  // 0 NoticeBox, 1 InfoBox, 2 ErrorDialog, 3 ErrorDialogF, 4 Switch, 5 Internal
  const char *title;
  const char *body;
};

TEST(MessageDialog, TitlesBodiesAndTheOneButton) {
  const MessageRow rows[] = {
      {__LINE__, 0, "Oznámení", "Instalace proběhla úspěšně"},
      {__LINE__, 1, "Oznámení", "Vlož DISK3"},
      {__LINE__, 2, " Chyba ", "Nelze zapsat soubor C:\\KORV5\\INST.LST"},
      {__LINE__, 3, " Chyba ", "Chyba 17 v řádku 3"},
      {__LINE__, 4, " Chyba switch, informujte dodavatele ", "Chyba v souboru inst řádek 77"},
      {__LINE__, 5, " Interní chyba, informujte dodavatele ", "Chyba v souboru zip_util řádek 104"},
  };
  for (const MessageRow &r : rows) {
    SCOPED_TRACE(testing::Message() << "row at line " << r.line);
    tk::Watch watch(r.title, tk::press("&O.K."));
    Flag shown = 0;
    switch (r.form) {
      case 0: shown = NoticeBox(r.body); break;
      case 1: shown = InfoBox(r.body); break;
      case 2: shown = ErrorDialog(nullptr, r.body); break;
      case 3: shown = ErrorDialogF(nullptr, "Chyba %d v řádku %d", 17, 3); break;
      case 4: shown = SwitchErrorDialog(nullptr, "inst", 77); break;
      case 5: shown = InternalErrorDialog(nullptr, "zip_util", 104); break;
    }
    EXPECT_EQ(1, shown);
    ASSERT_TRUE(watch.fired);
    EXPECT_FALSE(watch.timed_out);
    EXPECT_EQ((Buttons{"&O.K."}), watch.seen.buttons);
    ASSERT_EQ(1u, watch.seen.statics.size());
    EXPECT_EQ(r.body, watch.seen.statics[0]);
  }
}

TEST(MessageDialog, InternalErrorDialogLeavesEveryThreadWindowEnabled) {
  HWND disabled = CreateWindowA("STATIC", "zakazane", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 10, 10,
                                200, 100, nullptr, nullptr, nullptr, nullptr);
  EnableWindow(disabled, FALSE);
  bool disabled_meanwhile = false;
  tk::Watch watch(" Interní chyba, informujte dodavatele ", [&](HWND d) {
    HWND ok = tk::find_button(d, "&O.K.");
    disabled_meanwhile = !IsWindowEnabled(disabled) && IsWindowEnabled(d);
    PostMessageA(ok, BM_CLICK, 0, 0);
  });
  EXPECT_EQ(1, InternalErrorDialog(nullptr, "we", 5));
  EXPECT_TRUE(disabled_meanwhile);
  EXPECT_TRUE(IsWindowEnabled(disabled));
  DestroyWindow(disabled);
}

TEST(QuestionDialog, NullTextIsAnInternalErrorAndTheNegativeAnswer) {
  kxtest::BoxRecorder boxes;
  EXPECT_EQ(0, QuestionBox((const char *)nullptr));
  EXPECT_EQ(0, QuestionBoxCancel((void *)nullptr, nullptr));
  EXPECT_EQ(0, QuestionBoxAll((const char *)nullptr));
  EXPECT_EQ(0, NoticeBox(nullptr));
  EXPECT_EQ(0, ErrorDialog(nullptr, nullptr));
  ASSERT_EQ(5u, boxes.count()) << boxes.dump();
  for (const kxtest::Box &b : boxes.boxes()) EXPECT_GT(kxtest::internal_error_line(b, "we"), 0);
  EXPECT_EQ(nullptr, tk::find_dialog(""));
}

// ---- Through the test hook: the raw codes a dialog may end with, and the formatting ------------

struct Hooked {
  int16_t kind;
  void *owner;
  std::string title, text;
  int calls;
};
Hooked hooked;
int16_t hook_code;

int16_t hook(int16_t kind, void *owner, const char *title, const char *text) {
  hooked.kind = kind;
  hooked.owner = owner;
  hooked.title = title ? title : "(null)";
  hooked.text = text ? text : "(null)";
  hooked.calls++;
  return hook_code;
}

TEST(QuestionHook, RawCodesMapToAnswers) {
  struct R {
    int line;
    int16_t code, yes_no, cancel, all;
  } rows[] = {
      {__LINE__, 1, 1, 1, 1},    {__LINE__, 7, 0, 0, 0},   {__LINE__, 6, 0, -1, 2},
      {__LINE__, 2, 0, -1, -1},  {__LINE__, 3, 0, -1, 0},  {__LINE__, 0, 0, 0, 0},
  };
  WeDialogHook previous = we_set_dialog_hook(hook);
  for (const R &r : rows) {
    SCOPED_TRACE(testing::Message() << "row at line " << r.line << ", code " << r.code);
    hook_code = r.code;
    hooked = Hooked();
    EXPECT_EQ(r.yes_no, QuestionBox("a"));
    EXPECT_EQ(WE_DIALOG_QUESTION, hooked.kind);
    EXPECT_EQ(r.cancel, QuestionBoxCancel("a"));
    EXPECT_EQ(WE_DIALOG_QUESTION_CANCEL, hooked.kind);
    EXPECT_EQ(r.all, QuestionBoxAll("a"));
    EXPECT_EQ(WE_DIALOG_QUESTION_ALL, hooked.kind);
    EXPECT_EQ("Dotaz", hooked.title);
    EXPECT_EQ(3, hooked.calls);
  }
  we_set_dialog_hook(previous);
}

TEST(QuestionHook, FormattedTextIsCutAt199) {
  WeDialogHook previous = we_set_dialog_hook(hook);
  hook_code = 1;
  for (size_t n : {198u, 199u, 200u, 201u, 1025u}) {
    std::string long_text = kxtest::pattern_text(n);
    hooked = Hooked();
    EXPECT_EQ(1, QuestionBoxF("%s", long_text.c_str()));
    EXPECT_EQ(long_text.substr(0, 199), hooked.text) << "n=" << n;
    EXPECT_EQ(1, ErrorDialogF(nullptr, "%s", long_text.c_str()));
    EXPECT_EQ(long_text.substr(0, 199), hooked.text) << "n=" << n;
    EXPECT_EQ(WE_DIALOG_ERROR, hooked.kind);
    EXPECT_EQ(" Chyba ", hooked.title);
  }
  we_set_dialog_hook(previous);
}

}  // namespace

namespace {

}  // namespace
