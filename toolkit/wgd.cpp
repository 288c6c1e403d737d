// wgd.cpp - the application shell: the application object, the window classes of the toolkit,
// the main window object, the main message loop and the non-blocking pump.
#include "toolkit/wgd.h"

#include "common/mm.h"
#include "common/we.h"
#include "toolkit/questions.h"

#include <windows.h>
#include <new>
#include <string.h>

// The toolkit's main window object. The memory manager gives it APP_MAIN_WINDOW_SIZE
// zero-filled bytes; it is constructed in place there.
struct MainWindow {
  MainWindow() : window(nullptr), dialog(nullptr), pre_translate(0), pre_translate_hook(nullptr) {}
  ~MainWindow() {}
  void *window;        // HWND of the main window
  Dialog *dialog;      // the modeless dialog that is the main window, or null
  Flag pre_translate;  // offer every message to the hook before translation
  AppPreTranslate pre_translate_hook;
};

static_assert(sizeof(MainWindow) <= APP_MAIN_WINDOW_SIZE, "the main window object must fit");

Application *application;

static Application standby;  // the application object outside app_run
static AppWindowFactory window_factory;
static int16_t main_window_type;
static AppStatusSink status_sink;
static void *status_context;
static AppPreTranslate pre_translate_hook;
static void *accelerator_table;  // for the next app_run
static Flag looping;             // app_run is in its message loop
static Flag quit_requested;      // a WM_QUIT is on its way; the main dialog posts no other

Application *app_current(void) {
  questions_install();
  if (application) return application;
  if (!standby.instance) standby.instance = GetModuleHandleA(nullptr);
  return &standby;
}

void app_set_window_factory(AppWindowFactory factory, int16_t main_type) {
  window_factory = factory;
  main_window_type = main_type;
}

static void register_main_window(void) {
  Application *app = application;
  if (!app || !app->main_window) return;
  WeMainWindow w;
  w.handle = app->main_window;
  w.set_status = status_sink;
  w.context = status_context;
  we_set_main_window(&w);
}

void app_set_status_sink(AppStatusSink sink, void *context) {
  status_sink = sink;
  status_context = context;
  register_main_window();
}

void app_set_pre_translate(AppPreTranslate hook) {
  pre_translate_hook = hook;
  if (application && application->main_object) {
    application->main_object->pre_translate_hook = hook;
    application->main_object->pre_translate = hook ? 1 : 0;
  }
}

void app_set_accelerators(void *accelerators) {
  accelerator_table = accelerators;
  app_current()->accelerators = accelerators;
}

// ---- Window classes --------------------------------------------------------------------------
//
// The toolkit's own window classes, one registration routine per window module. A class that a
// previous run registered already counts as registered.

static const char *const class_names[] = {"KxMainWindow", "KxBitmap", "KxButton", "KxEdit",
                                          "KxList",       "KxStatic", "KxTable"};

static Flag register_class(HINSTANCE instance, const char *name, UINT style, int brush) {
  WNDCLASSA wc;
  memset(&wc, 0, sizeof wc);
  wc.style = style;
  wc.lpfnWndProc = DefWindowProcA;
  wc.hInstance = instance;
  wc.hCursor = LoadCursorA(nullptr, (LPCSTR)IDC_ARROW);
  wc.hbrBackground = (HBRUSH)(intptr_t)(brush + 1);
  wc.lpszClassName = name;
  if (RegisterClassA(&wc)) return 1;
  return GetLastError() == ERROR_CLASS_ALREADY_EXISTS ? 1 : 0;
}

static Flag register_main(HINSTANCE i) {
  return register_class(i, class_names[0], CS_HREDRAW | CS_VREDRAW, COLOR_BTNFACE);
}
static Flag register_bitmap(HINSTANCE i) {
  return register_class(i, class_names[1], CS_HREDRAW | CS_VREDRAW, COLOR_WINDOW);
}
static Flag register_button(HINSTANCE i) {
  return register_class(i, class_names[2], CS_DBLCLKS, COLOR_BTNFACE);
}
static Flag register_edit(HINSTANCE i) {
  return register_class(i, class_names[3], CS_DBLCLKS, COLOR_WINDOW);
}
static Flag register_list(HINSTANCE i) {
  return register_class(i, class_names[4], CS_DBLCLKS, COLOR_WINDOW);
}
static Flag register_static(HINSTANCE i) {
  return register_class(i, class_names[5], 0, COLOR_BTNFACE);
}
static Flag register_table(HINSTANCE i) {
  return register_class(i, class_names[6], CS_DBLCLKS, COLOR_WINDOW);
}

static void unregister_classes(HINSTANCE instance) {
  for (size_t i = 0; i < KX_COUNT(class_names); i++) UnregisterClassA(class_names[i], instance);
}

// ---- The life of the toolkit -----------------------------------------------------------------

static void tear_down(Application *app) {
  looping = 0;
  if (app->main_object) {
    MainWindow *mw = app->main_object;
    if (mw->dialog && app->modeless == mw->dialog && mw->dialog->window)
      DestroyWindow((HWND)mw->dialog->window);
    mw->~MainWindow();
    mm_free(mw, MM_HERE);
    app->main_object = nullptr;
  }
  if (app->main_window) we_set_main_window(nullptr);
  unregister_classes((HINSTANCE)app->instance);
  accelerator_table = nullptr;
  application = nullptr;
  mm_free(app, MM_HERE);
}

int32_t app_run(void *instance, int32_t show_command) {
  questions_install();
  Application *app = (Application *)mm_zalloc((int32_t)sizeof(Application), MM_HERE);
  if (!app) return 0;
  app->instance = instance ? instance : (void *)GetModuleHandleA(nullptr);
  app->accelerators = accelerator_table;
  application = app;
  quit_requested = 0;
  looping = 0;

  HINSTANCE hinst = (HINSTANCE)app->instance;
  Flag (*const routines[7])(HINSTANCE) = {register_main, register_bitmap, register_button,
                                          register_edit, register_list,   register_static,
                                          register_table};
  Flag registered = 1;
  for (int i = 0; i < 7; i++)
    if (!routines[i](hinst)) registered = 0;
  if (!registered) {
    tear_down(app);
    return 0;
  }

  void *memory = mm_zalloc(APP_MAIN_WINDOW_SIZE, MM_HERE);
  if (!memory) {
    tear_down(app);
    return 0;
  }
  MainWindow *mw = new (memory) MainWindow();
  mw->pre_translate_hook = pre_translate_hook;
  mw->pre_translate = pre_translate_hook ? 1 : 0;
  app->main_object = mw;

  Dialog *main_dialog = nullptr;
  if (!window_factory || !window_factory(nullptr, &main_dialog, main_window_type) || !main_dialog ||
      !main_dialog->window || !IsWindow((HWND)main_dialog->window)) {
    tear_down(app);
    return 0;
  }
  mw->dialog = main_dialog;
  mw->window = main_dialog->window;
  app->main_window = main_dialog->window;
  register_main_window();
  ShowWindow((HWND)app->main_window, show_command);

  looping = 1;
  MSG msg;
  memset(&msg, 0, sizeof msg);
  BOOL got;
  while ((got = GetMessageA(&msg, nullptr, 0, 0)) != 0) {
    if (got == -1) {
      msg.wParam = 0;
      break;
    }
    if (app->accelerators &&
        TranslateAcceleratorA((HWND)app->main_window, (HACCEL)app->accelerators, &msg))
      continue;
    if (app->modeless && app->modeless->window &&
        IsDialogMessageA((HWND)app->modeless->window, &msg))
      continue;
    if (app->main_object && app->main_object->pre_translate &&
        app->main_object->pre_translate_hook && app->main_object->pre_translate_hook(&msg))
      continue;
    TranslateMessage(&msg);
    DispatchMessageA(&msg);
  }
  int32_t code = (int32_t)msg.wParam;
  tear_down(app);
  return code;
}

void app_dialog_destroyed(Dialog *dialog, int32_t code) {
  Application *app = application;
  if (!app || !app->main_object || app->main_object->dialog != dialog) return;
  app->main_object->dialog = nullptr;
  app->main_object->window = nullptr;
  app->main_window = nullptr;
  we_set_main_window(nullptr);
  if (looping && !quit_requested) {
    quit_requested = 1;
    PostQuitMessage(code);
  }
}

// ---- Pump and registry -----------------------------------------------------------------------

Flag app_pump(void) {
  Flag taken = 0;
  MSG msg;
  while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) {
    taken = 1;
    if (msg.message == WM_QUIT) {
      PostQuitMessage((int)msg.wParam);
      return 1;
    }
    Application *app = app_current();
    if (app->accelerators &&
        TranslateAcceleratorA((HWND)app->main_window, (HACCEL)app->accelerators, &msg))
      continue;
    // keep this: every modal dialog sees the message, and it is dispatched whatever they say
    for (int i = 0; i < DIALOG_MODAL_MAX; i++)
      if (app->modal[i] && app->modal[i]->window)
        IsDialogMessageA((HWND)app->modal[i]->window, &msg);
    TranslateMessage(&msg);
    DispatchMessageA(&msg);
  }
  return taken;
}

Flag app_close_dialogs(void) {
  Application *app = app_current();
  for (int i = 0; i < DIALOG_MODAL_MAX; i++)
    if (app->modal[i]) dialog_end(app->modal[i], 3);
  if (app->modeless) dialog_end(app->modeless, 3);
  app_pump();
  return 1;
}

Flag app_add_dialog(Application *app, Dialog *dialog) {
  if (!app || !dialog) return 0;
  for (int i = 0; i < DIALOG_MODAL_MAX; i++) {
    if (!app->modal[i]) {
      app->modal[i] = dialog;
      return 1;
    }
  }
  return 0;
}

Flag app_remove_dialog(Application *app, Dialog *dialog) {
  if (!app || !dialog) return 0;
  for (int i = 0; i < DIALOG_MODAL_MAX; i++) {
    if (app->modal[i] == dialog) {
      app->modal[i] = nullptr;
      return 1;
    }
  }
  return 0;
}

Flag app_set_modeless(Application *app, Dialog *dialog) {
  if (!app) return 0;
  if (dialog && app->modeless && app->modeless != dialog) return 0;
  app->modeless = dialog;
  return 1;
}

void app_quit(int32_t code) {
  quit_requested = 1;
  PostQuitMessage(code);
}
