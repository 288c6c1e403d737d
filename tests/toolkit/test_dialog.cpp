// The dialog engine: placement, the shared procedure's routing, the registry of running dialogs,
// the control table and the item helpers, on real dialogs of this thread.
#include "tests/toolkit/tk_dialogs.h"
#include "tests/toolkit/tk_watch.h"

#include "common/we.h"
#include "tests/support/kxtest.h"
#include "toolkit/wgd.h"

#include <stdio.h>
#include <stdlib.h>

#include <string>

namespace {

int modal_slots_used() {
  int n = 0;
  for (Dialog *slot : app_current()->modal) n += slot != nullptr;
  return n;
}

// Exactly one internal error box from module "dialog".
void expect_one_internal_error(kxtest::BoxRecorder &boxes) {
  ASSERT_EQ(1u, boxes.count()) << boxes.dump();
  EXPECT_GT(kxtest::internal_error_line(boxes.only(), "dialog"), 0);
  boxes.clear();
}

void post(Dialog *d, WPARAM command) { PostMessageA((HWND)d->window, WM_COMMAND, command, 0); }

// ---- Placement: the corner chosen, without windows -------------------------------------------

TEST(DialogPlace, Table) {
  // Work area around the origin (a second monitor left and above): centering rounds toward zero.
  const DialogRect work = {-1000, -800, 1000, 800}, little = {0, 0, 201, 101}, big = {0, 0, 2500, 2000};
  enum { P_EXPLICIT = 1, P_RELATIVE = 2, P_ON_PARENT = 4, P_ON_SCREEN = 8, P_PARENT = 16, P_CHILD = 32 };
  const struct {
    int flags;
    DialogRect window;
    int32_t px, py;  // stored position
    int32_t x, y;    // expected corner
  } rows[] = {
      /* 0 */ {0, little, 0, 0, -100, -50},  // no parent: work area centre
      /* 1 */ {P_PARENT | P_ON_SCREEN, little, 0, 0, -100, -50},
      /* 2 */ {P_PARENT | P_ON_SCREEN | P_ON_PARENT, little, 0, 0, -100, -50},
      /* 3 */ {P_PARENT, little, 0, 0, 110, 130},                // parent's client origin
      /* 4 */ {P_PARENT | P_ON_PARENT, little, 0, 0, -300, -200},  // -401/2 = -200, not -201
      /* 5 */ {P_EXPLICIT, little, 50, 60, 50, 60},
      /* 6 */ {P_EXPLICIT | P_PARENT, little, 50, 60, 50, 60},   // screen coordinates
      /* 7 */ {P_EXPLICIT, little, 1500, 900, 799, 699},         // kept inside: right, bottom
      /* 8 */ {P_EXPLICIT, little, -2000, -2000, -1000, -800},   // left, top
      /* 9 */ {P_EXPLICIT, little, 799, 699, 799, 699},          // exactly fits
      /* 10 */ {P_EXPLICIT, little, 800, 700, 799, 699},         // one over
      /* 11 */ {P_EXPLICIT, big, 0, 0, -1500, -1200},           // larger: right/bottom win
      /* 12 */ {P_EXPLICIT, big, -3000, -3000, -1500, -1200},
      /* 13 */ {P_RELATIVE | P_PARENT, little, 10, 20, 120, 150},
      /* 14 */ {P_RELATIVE | P_PARENT | P_CHILD, little, 10, 20, 10, 20},
      /* 15 */ {P_RELATIVE | P_PARENT | P_CHILD, little, 2000, 0, 689, 0},
      /* 16 */ {P_PARENT | P_CHILD, little, 0, 0, 0, 0},
  };
  for (size_t i = 0; i < KX_COUNT(rows); i++) {
    int f = rows[i].flags;
    DialogPlacement p = {};
    p.work = work;
    p.window = rows[i].window;
    p.has_parent = (f & P_PARENT) != 0;
    p.child = (f & P_CHILD) != 0;
    p.parent_client_x = 110;
    p.parent_client_y = 130;
    p.parent_window = {-301, -201, -100, -100};
    p.explicit_position = (f & P_EXPLICIT) != 0;
    p.parent_relative = (f & P_RELATIVE) != 0;
    p.center_on_parent = (f & P_ON_PARENT) != 0;
    p.center_on_screen = (f & P_ON_SCREEN) != 0;
    p.position_x = rows[i].px;
    p.position_y = rows[i].py;
    int32_t x = 12345, y = 12345;
    dialog_place(&p, &x, &y);
    EXPECT_EQ(rows[i].x, x) << "row " << i;
    EXPECT_EQ(rows[i].y, y) << "row " << i;
  }
}

// ---- Placement of real dialogs ---------------------------------------------------------------

// The work area, the window's size and the parent's client origin reach the placement.
// 0: far outside on the left and top: pulled in; 1: larger than the work area: ends at its right
// and bottom; 2: a child, at 10, 20 in its parent's client area.
TEST(DialogPlacement, RealDialogsInTheWorkAreaAndInTheirParent) {
  RECT w, r;
  SystemParametersInfoA(SPI_GETWORKAREA, 0, &w, 0);
  HWND parent = CreateWindowA("STATIC", "rodič", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 120, 90, 500, 400, nullptr,
                              nullptr, nullptr, nullptr);
  for (int row = 0; row < 3; row++) {
    SCOPED_TRACE(testing::Message() << "row " << row);
    tk::Template t("Mimo", row == 1 ? 2000 : 100, row == 1 ? 1500 : 60,
                   row == 2 ? DS_CONTROL | WS_CHILD | WS_VISIBLE : WS_POPUP | WS_CAPTION);
    tk::TestDialog d;
    d.explicit_position = row < 2;
    d.parent_relative = row == 2;
    d.parent = row == 2 ? parent : nullptr;
    d.position_x = row == 2 ? 10 : row ? 0 : -5000;
    d.position_y = row == 2 ? 20 : row ? 0 : -5000;
    ASSERT_EQ(1, dialog_open(&d, t.bytes()));
    app_pump();  // on_placed: the window's corner and size as placed
    GetWindowRect((HWND)d.window, &r);
    POINT corner = {r.left, r.top};
    if (row == 2) ScreenToClient(parent, &corner);
    EXPECT_EQ(row == 2 ? parent : nullptr, GetParent((HWND)d.window));
    EXPECT_TRUE(row != 1 || r.right - r.left > w.right - w.left) << "the dialog is not larger than the screen";
    const LONG want[3][2] = {{w.left, w.top}, {w.right - (r.right - r.left), w.bottom - (r.bottom - r.top)}, {10, 20}};
    EXPECT_EQ(want[row][0], corner.x);
    EXPECT_EQ(want[row][1], corner.y);
    EXPECT_EQ(r.left, d.current_x);
    EXPECT_EQ(r.top, d.current_y);
    EXPECT_EQ(r.right - r.left, d.window_width);
    dialog_end(&d, 0);
    EXPECT_EQ(nullptr, app_current()->modeless);
  }
  DestroyWindow(parent);
}

// ---- Running and ending ----------------------------------------------------------------------

TEST(DialogRun, InitOkAndCancelRouting) {
  const struct {
    Flag init_result;
    WPARAM command;
    Flag ok_result, message_result;
    int32_t code;  // the dialog's result
    int ok_calls;
    Flag cancelled;
  } rows[] = {
      /* 0 */ {0, IDOK, 1, 0, 2, 0, 1},  // on_init refuses: cancelled, never placed
      /* 1 */ {1, IDOK, 1, 0, 1, 1, 0},
      /* 2 */ {1, IDYES, 1, 0, 1, 1, 0},
      /* 3 */ {1, IDOK, 0, 0, 2, 1, 1},  // on_ok 0: stays open until the Cancel after it
      /* 4 */ {1, IDOK, 1, 1, 9, 0, 0},  // handled by on_message: on_ok not asked
      /* 5 */ {1, IDCANCEL, 1, 0, 2, 0, 1},
      /* 6 */ {1, IDCANCEL, 1, 1, 9, 0, 0},  // handled: does not end
  };
  tk::Template t("Směrování");
  for (size_t i = 0; i < KX_COUNT(rows); i++) {
    const auto &r = rows[i];
    SCOPED_TRACE(testing::Message() << "row " << i);
    tk::TestDialog d;
    d.init_result = r.init_result;
    d.ok_result = r.ok_result;
    d.handler = [&](tk::TestDialog *self, unsigned m, uintptr_t w, intptr_t) -> Flag {
      if (m == WM_COMMAND && LOWORD(w) == tk::BUTTON_ITEM) return dialog_end(self, 9), 1;
      return (m == WM_COMMAND && LOWORD(w) == r.command) ? r.message_result : 0;
    };
    d.placed = [&](tk::TestDialog *self) {
      post(self, r.command);
      if (r.command != IDCANCEL && !r.ok_result) post(self, IDCANCEL);
      post(self, tk::BUTTON_ITEM);
    };
    EXPECT_EQ(r.code, dialog_run(&d, t.bytes()));
    EXPECT_EQ(r.ok_calls, d.ok_calls);
    EXPECT_EQ(r.cancelled, d.cancelled);
    EXPECT_EQ(1, d.init_calls);
    EXPECT_EQ(r.init_result, d.placed_calls);
    ASSERT_FALSE(d.messages.empty());
    EXPECT_EQ((unsigned)WM_COMMAND, d.messages[0].message) << "on_message comes first";
    EXPECT_EQ(0, modal_slots_used());
  }
}

Dialog *helped;
int help_calls;
void help(Dialog *d) { helped = d, help_calls++; }

// Each row is handed straight to the shared procedure for the running dialog's window.
TEST(DialogRun, MessageRoutingTable) {
  enum { NONE, SCROLL, EDIT, FOREIGN };
  const struct {
    unsigned message;
    uintptr_t wparam;
    int lparam_kind;
    Flag handled;             // what on_message answers
    intptr_t result;          // what the procedure returns
    int passed;               // on_message calls
    uintptr_t passed_wparam;  // as on_message saw it
  } rows[] = {
      /* 0 */ {WM_HSCROLL, SB_LINERIGHT, SCROLL, 1, 1, 1, tk::SCROLL_ITEM | (SB_LINERIGHT << 16)},
      /* 1 */ {WM_VSCROLL, MAKEWPARAM(SB_THUMBTRACK, 77), SCROLL, 1, 1, 1, tk::SCROLL_ITEM | (SB_THUMBTRACK << 16)},
      /* 2 */ {WM_HSCROLL, SB_LINERIGHT, SCROLL, 0, 0, 1, tk::SCROLL_ITEM | (SB_LINERIGHT << 16)},
      /* 3 */ {WM_HSCROLL, SB_LINERIGHT, EDIT, 1, 0, 0, 0},     // not one of the controls
      /* 4 */ {WM_HSCROLL, SB_LINERIGHT, FOREIGN, 1, 0, 0, 0},  // another window altogether
      /* 5 */ {WM_VSCROLL, SB_LINEDOWN, NONE, 1, 0, 0, 0},      // the dialog's own bar
      /* 6 */ {WM_COMMAND, 300, NONE, 1, 1, 1, 300},
      /* 7 */ {WM_COMMAND, 300, NONE, 0, 0, 1, 300},
      /* 8 */ {WM_CHAR, 'a', NONE, 1, 1, 1, 'a'},
      /* 9 */ {WM_CHAR, 'a', NONE, 0, 0, 1, 'a'},
      /* 10 */ {WM_USER + 7, 0, NONE, 1, 0, 0, 0},
      /* 11 */ {WM_KEYDOWN, 'A', NONE, 1, 0, 0, 0},
      /* 12 */ {WM_RBUTTONDOWN, 0, NONE, 1, 1, 0, 0},  // help
      /* 13 */ {DIALOG_MSG_HELP, 0, NONE, 1, 1, 0, 0},  // help
  };
  HWND foreign = CreateWindowA("SCROLLBAR", "", WS_POPUP, 0, 0, 50, 20, nullptr, nullptr, nullptr, nullptr);
  tk::Template t("Tabulka");
  tk::TestDialog d;
  Control scroll;
  DialogHelpHook previous_help = dialog_set_help_hook(help);
  help_calls = 0;
  d.placed = [&](tk::TestDialog *self) {
    HWND w = (HWND)self->window;
    scroll.item = tk::SCROLL_ITEM;
    scroll.dialog_window = w;
    ASSERT_EQ(1, dialog_add_control(self, &scroll));
    const LPARAM lparams[] = {0, (LPARAM)GetDlgItem(w, tk::SCROLL_ITEM), (LPARAM)GetDlgItem(w, tk::EDIT_ITEM), (LPARAM)foreign};
    for (size_t i = 0; i < KX_COUNT(rows); i++) {
      const auto &r = rows[i];
      SCOPED_TRACE(testing::Message() << "row " << i);
      self->messages.clear();
      self->message_result = r.handled;
      EXPECT_EQ(r.result, dialog_procedure(w, r.message, r.wparam, lparams[r.lparam_kind]));
      ASSERT_EQ((size_t)r.passed, self->messages.size());
      if (r.passed) {
        EXPECT_EQ(r.message, self->messages[0].message);
        EXPECT_EQ(r.passed_wparam, self->messages[0].wparam);
      }
      EXPECT_EQ(i < 12 ? 0 : (int)i - 11, help_calls);
    }
    EXPECT_EQ(self, helped);
    // A window that is no running dialog's: nobody is asked.
    self->messages.clear();
    EXPECT_EQ(0, dialog_procedure(foreign, WM_COMMAND, 300, 0));
    EXPECT_TRUE(self->messages.empty());
    dialog_end(self, 4);
  };
  EXPECT_EQ(4, dialog_run(&d, t.bytes()));
  dialog_set_help_hook(previous_help);
  DestroyWindow(foreign);
}

// 30 modal dialogs nested in each other; the 31st is refused.
TEST(DialogRun, ThirtyNestedModalDialogs) {
  kxtest::BoxRecorder boxes;
  tk::Template t("Vnořený");
  tk::TestDialog levels[DIALOG_MODAL_MAX + 1];
  int32_t results[DIALOG_MODAL_MAX + 1];
  int full_slots = -1;
  for (int i = 0; i <= DIALOG_MODAL_MAX; i++) {
    results[i] = -1;
    levels[i].placed = [&, i](tk::TestDialog *self) {
      if (i + 1 == DIALOG_MODAL_MAX) full_slots = modal_slots_used();
      if (i + 1 <= DIALOG_MODAL_MAX) results[i + 1] = dialog_run(&levels[i + 1], t.bytes());
      dialog_end(self, 100 + i);
    };
  }
  results[0] = dialog_run(&levels[0], t.bytes());
  EXPECT_EQ(DIALOG_MODAL_MAX, full_slots);
  for (int i = 0; i < DIALOG_MODAL_MAX; i++) EXPECT_EQ(100 + i, results[i]) << "level " << i;
  EXPECT_EQ(0, results[DIALOG_MODAL_MAX]) << "the 31st ran";
  EXPECT_EQ(0, levels[DIALOG_MODAL_MAX].init_calls);
  expect_one_internal_error(boxes);
  EXPECT_EQ(0, modal_slots_used());
}

TEST(DialogRun, CloseDialogsEndsEveryRunningDialogWithThree) {
  tk::Template t("Zavřít vše");
  tk::TestDialog outer, inner, modeless;
  int32_t inner_code = -1;
  outer.placed = [&](tk::TestDialog *) { inner_code = dialog_run(&inner, t.bytes()); };
  inner.placed = [&](tk::TestDialog *) {
    ASSERT_EQ(1, dialog_open(&modeless, t.bytes()));
    EXPECT_EQ(1, app_close_dialogs());
  };
  EXPECT_EQ(3, dialog_run(&outer, t.bytes()));
  EXPECT_EQ(3, inner_code);
  EXPECT_EQ(nullptr, app_current()->modeless);
  EXPECT_EQ(nullptr, modeless.window);
}

TEST(DialogRun, TemplatesByNumberMissingAndRefused) {
  kxtest::BoxRecorder boxes;
  tk::Template t("Podle čísla");
  ASSERT_EQ(1, dres_register(4711, t.tpl, 0));
  tk::TestDialog d, missing, refused;
  d.template_number = 4711;
  d.placed = [](tk::TestDialog *self) { dialog_end(self, 12); };
  EXPECT_EQ(12, dialog_run(&d, nullptr));
  missing.template_number = 4712;
  EXPECT_EQ(0, dialog_run(&missing, nullptr));
  missing.template_number = 4711;  // registered for modal only
  EXPECT_EQ(0, dialog_open(&missing, nullptr));
  EXPECT_EQ(0u, boxes.count()) << boxes.dump();
  EXPECT_EQ(nullptr, app_current()->modeless);
  // A dialog of a class nobody registered: the platform refuses it, 3 and an internal error.
  std::vector<uint16_t> w = {0x0000, 0x80C8, 0, 0, 0, 0, 0, 100, 50, 0};
  for (const char *c = "KxNoSuchClass"; *c; c++) w.push_back((uint16_t)*c);
  w.insert(w.end(), {0, 0, 0});  // class end, no title, no font
  EXPECT_EQ(3, dialog_run(&refused, w.data()));
  expect_one_internal_error(boxes);
  EXPECT_EQ(0, modal_slots_used());
}

// ---- Modeless --------------------------------------------------------------------------------

TEST(DialogModeless, OneAtATimeAndTheTraceLine) {
  kxtest::ScratchDir dir;
  std::string trace = dir.file("trace.txt");
  _putenv(("KX_TRACE=" + trace).c_str());
  kxtest::BoxRecorder boxes;
  tk::Template t("Nemodální");
  tk::TestDialog first, second;
  ASSERT_EQ(1, dialog_open(&first, t.bytes()));
  EXPECT_EQ(&first, app_current()->modeless);
  EXPECT_EQ(1, first.init_calls);
  EXPECT_EQ(0, dialog_open(&second, t.bytes()));
  expect_one_internal_error(boxes);
  EXPECT_EQ(nullptr, second.window);
  EXPECT_EQ(&first, app_current()->modeless);
  dialog_procedure(first.window, WM_USER + 33, 0, 0);
  HWND w = (HWND)first.window;
  dialog_end(&first, 0);
  EXPECT_FALSE(IsWindow(w));
  EXPECT_EQ(nullptr, app_current()->modeless);
  ASSERT_EQ(1, dialog_open(&second, t.bytes()));
  dialog_end(&second, 2);
  EXPECT_EQ(1, second.cancelled);
  _putenv("KX_TRACE=");

  char line[64];
  snprintf(line, sizeof line, "Modeless adresa hWnd: 0x%010lX", (unsigned long)(uintptr_t)w);
  std::string text = kxtest::read_bytes(trace);
  EXPECT_NE(std::string::npos, text.find(line)) << "no '" << line << "' in:\n" << text.substr(0, 400);
  EXPECT_NE(std::string::npos, text.find("DIALOG - WM_USER"));
}

TEST(DialogModeless, OkWhileAModelessDialogExistsAsksItToo) {
  tk::Template t("OK s nemodálním");
  const struct {
    Flag modal_ok, modeless_ok;
    int32_t code;
  } rows[] = {
      /* 0 */ {1, 0, 1},
      /* 1 */ {0, 1, 1},  // the modeless dialog's on_ok ends the modal one
      /* 2 */ {0, 0, 2},  // nobody accepts: ended by the Cancel after it
  };
  for (size_t i = 0; i < KX_COUNT(rows); i++) {
    SCOPED_TRACE(testing::Message() << "row " << i);
    tk::TestDialog modeless, modal;
    modeless.ok_result = rows[i].modeless_ok;
    modal.ok_result = rows[i].modal_ok;
    ASSERT_EQ(1, dialog_open(&modeless, t.bytes()));
    modal.placed = [](tk::TestDialog *self) { post(self, IDOK), post(self, IDCANCEL); };
    EXPECT_EQ(rows[i].code, dialog_run(&modal, t.bytes()));
    int ok_messages = 0;
    for (const tk::Msg &m : modal.messages) ok_messages += m.message == WM_COMMAND && m.wparam == IDOK;
    EXPECT_EQ(2, ok_messages) << "on_message is asked twice for OK";
    EXPECT_EQ(1, modal.ok_calls);
    EXPECT_EQ(1, modeless.ok_calls);
    EXPECT_TRUE(IsWindow((HWND)modeless.window));
    dialog_end(&modeless, 0);
  }
}

// ---- The pump --------------------------------------------------------------------------------

TEST(AppPump, QuitIsPostedAgainWithTheSameCode) {
  MSG m;
  while (PeekMessageA(&m, nullptr, 0, 0, PM_REMOVE)) {
  }
  EXPECT_EQ(0, app_pump()) << "nothing was waiting";
  for (int code : {0, 7, -1, 65536}) {
    PostQuitMessage(code);
    EXPECT_EQ(1, app_pump());
    ASSERT_TRUE(PeekMessageA(&m, nullptr, 0, 0, PM_REMOVE)) << "code " << code;
    EXPECT_EQ((UINT)WM_QUIT, m.message);
    EXPECT_EQ(code, (int)m.wParam);
  }
}

TEST(AppPump, KeyboardMessageForAModalDialogIsDispatchedToo) {
  tk::Template t("Pumpa");
  tk::TestDialog d;
  std::string typed;
  Flag pumped = -1;
  d.placed = [&](tk::TestDialog *self) {
    HWND edit = GetDlgItem((HWND)self->window, tk::EDIT_ITEM);
    PostMessageA(edit, WM_CHAR, 'x', 1);
    pumped = app_pump();
    typed = tk::text_1250(edit);
    dialog_end(self, 1);
  };
  EXPECT_EQ(1, dialog_run(&d, t.bytes()));
  EXPECT_EQ(1, pumped);
  EXPECT_EQ("xx", typed) << "once through IsDialogMessageA, once more through DispatchMessageA";
}

// ---- Control table ---------------------------------------------------------------------------

TEST(DialogControls, NinetyNineFitTheHundredthIsRefused) {
  kxtest::BoxRecorder boxes;
  tk::TestDialog d;
  static Control controls[DIALOG_CONTROLS_MAX + 1];
  for (int i = 0; i < DIALOG_CONTROLS_MAX; i++) {
    controls[i].item = 1000 + i;
    ASSERT_EQ(1, dialog_add_control(&d, &controls[i])) << "control " << i;
  }
  EXPECT_EQ(0u, boxes.count());
  EXPECT_EQ(0, dialog_add_control(&d, &controls[DIALOG_CONTROLS_MAX]));
  EXPECT_EQ(DIALOG_CONTROLS_MAX, d.control_count);
  expect_one_internal_error(boxes);
  EXPECT_EQ(&controls[0], dialog_find_control(&d, 1000));
  EXPECT_EQ(&controls[98], dialog_find_control(&d, 1098));
  EXPECT_EQ(nullptr, dialog_find_control(&d, 1099));
  EXPECT_EQ(0u, boxes.count());
  controls[5].kind = 2;  // not a control of this table's kind
  EXPECT_EQ(nullptr, dialog_find_control(&d, 1005));
  expect_one_internal_error(boxes);
  controls[5].kind = 1;
}

TEST(DialogControls, ItemHelpersAndTitlesInCodePage1250) {
  tk::Template t("Pomocníci");
  tk::TestDialog d;
  d.placed = [&](tk::TestDialog *self) {
    HWND w = (HWND)self->window, ew = GetDlgItem(w, tk::EDIT_ITEM), lb = GetDlgItem(w, tk::LIST_ITEM);
    Control edit, list;
    edit.dialog_window = list.dialog_window = w;
    edit.item = tk::EDIT_ITEM;
    list.item = tk::LIST_ITEM;
    const std::string czech = "Žluťoučký kůň";  // 13 characters
    EXPECT_EQ(1, control_set_text(&edit, czech.c_str()));
    EXPECT_EQ(1, dialog_set_title(self, "Nový titulek ěščř"));
    // Rows 0-2 read the edit, 3-4 the title: exact fit, one too small (cut), one byte.
    const struct {
      int32_t size;
      std::string want;
    } rows[] = {{14, czech}, {13, czech.substr(0, 12)}, {1, ""}, {64, "Nový titulek ěščř"}, {5, "Nový"}};
    for (int i = 0; i < 5; i++) {
      char buffer[80];
      memset(buffer, '#', sizeof buffer);
      EXPECT_EQ(1, i < 3 ? control_get_text(&edit, buffer, rows[i].size) : dialog_get_title(self, buffer, rows[i].size)) << "row " << i;
      EXPECT_EQ(rows[i].want, std::string(buffer)) << "row " << i;
      EXPECT_EQ('#', buffer[rows[i].size]) << "written past the buffer, row " << i;
    }
    EXPECT_EQ(1, control_select_all(&edit));
    DWORD from = 99, to = 99;
    SendMessageA(ew, EM_GETSEL, (WPARAM)&from, (LPARAM)&to);
    EXPECT_EQ(0u, from);
    EXPECT_EQ(13u, to);
    EXPECT_EQ(1, control_clear_text(&edit));
    EXPECT_EQ("", tk::text_1250(ew));
    EXPECT_EQ(1, control_limit_text(&edit, 10));
    int32_t limit = -5;
    EXPECT_EQ(1, control_get_limit(&edit, &limit));
    EXPECT_EQ(10, limit);
    // Adding in code page 1250 is CONFIG.EXE's list (the suite's test); emptying the list:
    SendMessageA(lb, LB_ADDSTRING, 0, (LPARAM) "x");
    EXPECT_EQ(1, control_list_reset(&list));
    EXPECT_EQ(0, (int)SendMessageA(lb, LB_GETCOUNT, 0, 0));
    EXPECT_EQ(1, dialog_set_focus(self));
    dialog_end(self, 1);
  };
  EXPECT_EQ(1, dialog_run(&d, t.bytes()));
}

}  // namespace
