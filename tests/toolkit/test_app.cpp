// The application shell: app_run with a modeless main dialog from the factory, the ways the loop
// ends, the pre-translation hook, the status sink and app_pump.
#include "tk_dialogs.h"
#include "tk_watch.h"

#include "swin/wgd.h"
#include "tests/support/kxtest.h"
#include "win/we.h"

#include <string>

namespace {

// The program's main dialog for these tests, opened by the factory.
tk::TestDialog *main_dialog;
tk::Template *main_template;
int factory_calls;
int16_t factory_type;
void *factory_parent;

Flag factory(void *parent, Dialog **out, int16_t type) {
  factory_calls++;
  factory_type = type;
  factory_parent = parent;
  *out = nullptr;
  if (type != 100 || !dialog_open(main_dialog, main_template->bytes())) return 0;
  *out = main_dialog;
  return 1;
}

Flag refusing_factory(void *, Dialog **out, int16_t) { return *out = nullptr, 0; }

struct AppFixture : testing::Test {
  tk::Template tpl{"Hlavní okno", 160, 100, WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_VISIBLE};
  tk::TestDialog dialog;
  void SetUp() override {
    main_dialog = &dialog;
    main_template = &tpl;
    factory_calls = 0;
    factory_type = -1;
    factory_parent = (void *)1;
    app_set_window_factory(factory, 100);
  }
  void TearDown() override {
    app_set_window_factory(nullptr, 0);
    app_set_pre_translate(nullptr);
    app_set_status_sink(nullptr, nullptr);
    EXPECT_EQ(nullptr, application);
    EXPECT_EQ(nullptr, app_current()->modeless);
    EXPECT_EQ(nullptr, we_main_window_handle());
    MSG m;
    while (PeekMessageA(&m, nullptr, 0, 0, PM_REMOVE)) {
    }
  }
  // Runs the action on the main dialog once it is on the screen (from inside the loop).
  int32_t run_with(std::function<void(HWND)> act) {
    tk::Watch watch("Hlavní okno", std::move(act));
    int32_t code = app_run(GetModuleHandleA(nullptr), SW_SHOWNORMAL);
    EXPECT_TRUE(watch.fired && !watch.timed_out);
    return code;
  }
};

TEST_F(AppFixture, WaysTheLoopEnds) {
  const struct {
    int how;  // 0 dialog_end(5); 1 app_quit(4), then dialog_end(8); 2 WM_QUIT taken by app_pump
    int32_t code;
  } rows[] = {{0, 5}, {1, 4}, {2, 9}};
  for (const auto &r : rows) {
    SCOPED_TRACE(testing::Message() << "row " << r.how);
    TearDown();  // leaves nothing of the row before
    SetUp();
    tk::TestDialog fresh;
    main_dialog = &fresh;
    void *handle_during = nullptr;
    Flag pumped = -1;
    EXPECT_EQ(r.code, run_with([&](HWND d) {
                handle_during = we_main_window_handle();
                EXPECT_EQ(d, application->main_window);
                EXPECT_EQ(&fresh, application->modeless);
                EXPECT_NE(nullptr, application->main_object);
                if (r.how == 1) app_quit(4);
                if (r.how == 2) PostQuitMessage(9), pumped = app_pump();
                else dialog_end(&fresh, r.how ? 8 : 5);
              }));
    EXPECT_EQ(r.how == 2 ? 1 : -1, pumped);
    EXPECT_EQ(1, factory_calls);
    EXPECT_EQ(100, factory_type);
    EXPECT_EQ(nullptr, factory_parent);
    EXPECT_EQ(1, fresh.init_calls) << "the modeless dialog was initialised twice";
    EXPECT_NE(nullptr, handle_during);
    EXPECT_FALSE(IsWindow((HWND)handle_during));
  }
}

TEST_F(AppFixture, FailuresBeforeTheLoopGiveZeroAndNoWindow) {
  const struct {
    AppWindowFactory factory;
    int16_t type;
  } rows[] = {{nullptr, 100}, {refusing_factory, 100}, {factory, 101} /* a type it does not know */};
  for (const auto &r : rows) {
    SCOPED_TRACE(testing::Message() << "type " << r.type);
    app_set_window_factory(r.factory, r.type);
    EXPECT_EQ(0, app_run(GetModuleHandleA(nullptr), SW_SHOWNORMAL));
    EXPECT_EQ(nullptr, tk::find_dialog(""));
    EXPECT_EQ(nullptr, application);
  }
}

std::string status_seen;
void *status_context_seen;
void status_sink(void *context, const char *text) {
  status_context_seen = context;
  status_seen = text;
}

TEST_F(AppFixture, StatusTextReachesTheProgramsSinkOnlyWhileRunning) {
  int context = 0;
  app_set_status_sink(status_sink, &context);
  status_seen = "(nic)";
  SetStatusText("před startem");
  EXPECT_EQ("(nic)", status_seen);
  EXPECT_EQ(0, run_with([&](HWND) {
              SetStatusTextF("Kopíruji %d", 7);
              dialog_end(&dialog, 0);
            }));
  EXPECT_EQ("Kopíruji 7", status_seen);
  EXPECT_EQ(&context, status_context_seen);
  status_seen = "(nic)";
  SetStatusText("po konci");
  EXPECT_EQ("(nic)", status_seen);
}

std::vector<UINT> pre_translated;
Flag swallow_q(void *message) {
  const MSG *m = (const MSG *)message;
  pre_translated.push_back(m->message);
  return m->message == WM_KEYDOWN && m->wParam == 'Q';
}

TEST_F(AppFixture, PreTranslationHookMayTakeAMessage) {
  pre_translated.clear();
  app_set_pre_translate(swallow_q);
  HWND plain = nullptr;
  std::string typed = "(nic)";
  dialog.handler = [&](tk::TestDialog *d, unsigned message, uintptr_t wparam, intptr_t) -> Flag {
    if (message != WM_COMMAND || LOWORD(wparam) != tk::BUTTON_ITEM) return 0;
    typed = tk::text_1250(plain);
    dialog_end(d, 6);
    return 1;
  };
  EXPECT_EQ(6, run_with([&](HWND d) {
              // A window that is no dialog's child goes past IsDialogMessageA to the hook.
              plain = CreateWindowA("EDIT", "", WS_POPUP, 0, 0, 50, 20, nullptr, nullptr, nullptr, nullptr);
              PostMessageA(plain, WM_KEYDOWN, 'Q', 1);  // taken: no character comes of it
              PostMessageA(plain, WM_CHAR, 'x', 1);
              PostMessageA(d, WM_COMMAND, tk::BUTTON_ITEM, 0);
            }));
  EXPECT_EQ("x", typed);
  size_t keydown = 0, chars = 0;
  for (UINT m : pre_translated) keydown += m == WM_KEYDOWN, chars += m == WM_CHAR;
  EXPECT_EQ(1u, keydown);
  EXPECT_EQ(1u, chars);
  DestroyWindow(plain);
}

}  // namespace
