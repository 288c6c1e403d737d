// The application shell: app_run with a modeless main dialog from the factory, the ways the loop
// ends, the pre-translation hook, the status sink and app_pump.
#include "tests/toolkit/tk_dialogs.h"
#include "tests/toolkit/tk_watch.h"

#include "common/we.h"
#include "tests/support/kxtest.h"
#include "toolkit/wgd.h"

namespace {

// The program's main dialog for these tests, opened by the factory for type 100.
tk::TestDialog *main_dialog;
int factory_calls;
int16_t factory_type;
void *factory_parent;

Flag factory(void *parent, Dialog **out, int16_t type) {
  static tk::Template tpl("Hlavní okno", 160, 100, WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_VISIBLE);
  factory_calls++, factory_type = type, factory_parent = parent;
  *out = nullptr;
  if (type != 100 || !dialog_open(main_dialog, tpl.bytes())) return 0;
  *out = main_dialog;
  return 1;
}

Flag refusing_factory(void *, Dialog **out, int16_t) { return *out = nullptr, 0; }

// Runs the application with dialog as its main dialog, act running on it once it is on the
// screen (from inside the loop); afterwards nothing of it is left.
int32_t run_with(tk::TestDialog *dialog, std::function<void(HWND)> act) {
  main_dialog = dialog;
  factory_calls = 0, factory_type = -1, factory_parent = (void *)1;
  app_set_window_factory(factory, 100);
  tk::Watch watch("Hlavní okno", std::move(act));
  int32_t code = app_run(GetModuleHandleA(nullptr), SW_SHOWNORMAL);
  EXPECT_TRUE(watch.fired && !watch.timed_out);
  app_set_window_factory(nullptr, 0);
  EXPECT_EQ(nullptr, application);
  EXPECT_EQ(nullptr, app_current()->modeless);
  EXPECT_EQ(nullptr, we_main_window_handle());
  MSG m;
  while (PeekMessageA(&m, nullptr, 0, 0, PM_REMOVE)) {
  }
  return code;
}

TEST(AppRun, WaysTheLoopEnds) {
  const struct {
    int how;  // 0 dialog_end(5); 1 app_quit(4), then dialog_end(8); 2 WM_QUIT taken by app_pump
    int32_t code;
  } rows[] = {{0, 5}, {1, 4}, {2, 9}};
  for (const auto &r : rows) {
    SCOPED_TRACE(testing::Message() << "row " << r.how);
    tk::TestDialog d;
    void *handle_during = nullptr;
    Flag pumped = -1;
    EXPECT_EQ(r.code, run_with(&d, [&](HWND w) {
                handle_during = we_main_window_handle();
                EXPECT_EQ(w, application->main_window);
                EXPECT_EQ(&d, application->modeless);
                EXPECT_NE(nullptr, application->main_object);
                if (r.how == 1) app_quit(4);
                if (r.how == 2) PostQuitMessage(9), pumped = app_pump();
                else dialog_end(&d, r.how ? 8 : 5);
              }));
    EXPECT_EQ(r.how == 2 ? 1 : -1, pumped);
    EXPECT_EQ(1, factory_calls);
    EXPECT_EQ(100, factory_type);
    EXPECT_EQ(nullptr, factory_parent);
    EXPECT_EQ(1, d.init_calls) << "the modeless dialog was initialised twice";
    EXPECT_NE(nullptr, handle_during);
    EXPECT_FALSE(IsWindow((HWND)handle_during));
  }
}

TEST(AppRun, FailuresBeforeTheLoopGiveZeroAndNoWindow) {
  for (AppWindowFactory f : {(AppWindowFactory) nullptr, refusing_factory}) {
    SCOPED_TRACE(testing::Message() << "factory " << (void *)f);
    app_set_window_factory(f, 100);
    EXPECT_EQ(0, app_run(GetModuleHandleA(nullptr), SW_SHOWNORMAL));
    EXPECT_EQ(nullptr, tk::find_dialog(""));
    EXPECT_EQ(nullptr, application);
  }
  app_set_window_factory(nullptr, 0);
}

std::string status_seen;
void *status_context_seen;

TEST(AppRun, StatusTextReachesTheProgramsSinkOnlyWhileRunning) {
  int context = 0;
  app_set_status_sink([](void *c, const char *text) { status_context_seen = c, status_seen = text; }, &context);
  status_seen = "(nic)";
  SetStatusText("před startem");
  EXPECT_EQ("(nic)", status_seen);
  tk::TestDialog d;
  EXPECT_EQ(0, run_with(&d, [&](HWND) { SetStatusTextF("Kopíruji %d", 7), dialog_end(&d, 0); }));
  EXPECT_EQ("Kopíruji 7", status_seen);
  EXPECT_EQ(&context, status_context_seen);
  status_seen = "(nic)";
  SetStatusText("po konci");
  EXPECT_EQ("(nic)", status_seen);
  app_set_status_sink(nullptr, nullptr);
}

std::vector<UINT> pre_translated;

TEST(AppRun, PreTranslationHookMayTakeAMessage) {
  pre_translated.clear();
  app_set_pre_translate([](void *message) -> Flag {
    const MSG *m = (const MSG *)message;
    pre_translated.push_back(m->message);
    return m->message == WM_KEYDOWN && m->wParam == 'Q';
  });
  HWND plain = nullptr;
  std::string typed = "(nic)";
  tk::TestDialog d;
  d.handler = [&](tk::TestDialog *self, unsigned message, uintptr_t wparam, intptr_t) -> Flag {
    if (message != WM_COMMAND || LOWORD(wparam) != tk::BUTTON_ITEM) return 0;
    typed = tk::text_1250(plain);
    return dialog_end(self, 6), 1;
  };
  EXPECT_EQ(6, run_with(&d, [&](HWND w) {
              // A window that is no dialog's child goes past IsDialogMessageA to the hook.
              plain = CreateWindowA("EDIT", "", WS_POPUP, 0, 0, 50, 20, nullptr, nullptr, nullptr, nullptr);
              PostMessageA(plain, WM_KEYDOWN, 'Q', 1);  // taken: no character comes of it
              PostMessageA(plain, WM_CHAR, 'x', 1);
              PostMessageA(w, WM_COMMAND, tk::BUTTON_ITEM, 0);
            }));
  app_set_pre_translate(nullptr);
  EXPECT_EQ("x", typed);
  size_t keydown = 0, chars = 0;
  for (UINT m : pre_translated) keydown += m == WM_KEYDOWN, chars += m == WM_CHAR;
  EXPECT_EQ(1u, keydown);
  EXPECT_EQ(1u, chars);
  DestroyWindow(plain);
}

}  // namespace
