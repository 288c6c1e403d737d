// The dialog engine: placement, the shared procedure's routing, and the item helpers, on real
// dialogs of this thread.
#include "tests/toolkit/tk_dialogs.h"
#include "tests/toolkit/tk_watch.h"

#include "common/we.h"
#include "tests/support/kxtest.h"
#include "toolkit/wgd.h"

#include <string>

namespace {

int modal_slots_used() {
  int n = 0;
  for (Dialog *slot : app_current()->modal) n += slot != nullptr;
  return n;
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

// ---- Control table ---------------------------------------------------------------------------

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
