// The application shell: app_run with a modeless main dialog from the factory, the ways the loop
// ends and the status sink.
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

}  // namespace
