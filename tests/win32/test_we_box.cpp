// The error boxes for real: a watcher thread finds the box of this process from outside, reads
// its title, body, icon and owner, checks the reporting thread's windows while the box is up,
// and presses OK. CTest runs this once more under ANSI code page 1252: the body is read back as
// UTF-16 and compared in code page 1250, so a box converting through the ANSI code page fails.
#include "common/we.h"
#include "tests/toolkit/tk_watch.h"

#include <stdlib.h>

namespace {

struct Seen {
  std::string title;  // to wait for
  HWND watched;       // a window of the reporting thread, enabled before the box
  bool found = false, ok_button = false, watched_disabled = false;
  std::string body;
  HICON icon = nullptr;
  HWND owner = nullptr;
};

DWORD WINAPI watcher(void *param) {
  Seen *s = (Seen *)param;
  HWND box = nullptr;
  for (int i = 0; i < 1000 && !(box = tk::find_dialog(s->title, GetCurrentProcessId())); i++) Sleep(10);
  if (!box) return 1;
  Sleep(50);  // let the box finish its set-up
  s->found = true;
  s->owner = GetWindow(box, GW_OWNER);
  s->ok_button = GetDlgItem(box, IDOK) != nullptr;
  s->watched_disabled = !IsWindowEnabled(s->watched);
  for (HWND c = GetWindow(box, GW_CHILD); c; c = GetWindow(c, GW_HWNDNEXT)) {
    if (!tk::is_class(c, "Static")) continue;
    if ((GetWindowLongW(c, GWL_STYLE) & SS_TYPEMASK) == SS_ICON) s->icon = (HICON)SendMessageW(c, STM_GETICON, 0, 0);
    else if (s->body.empty()) s->body = tk::text_1250(c);
  }
  PostMessageW(box, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
  return 0;
}

HWND make_window(const char *title) {
  return CreateWindowA("Static", title, WS_OVERLAPPEDWINDOW, 10, 10, 200, 100, nullptr, nullptr, nullptr, nullptr);
}

TEST(RealErrorBox, TitleBodyIconOwnerAndTheThreadsWindows) {
  if (const char *acp = getenv("KX_EXPECT_ACP")) {
    EXPECT_EQ((UINT)atoi(acp), GetACP()) << "not under the code page it claims";
  }
  const HICON exclamation = LoadIconW(nullptr, (LPCWSTR)IDI_EXCLAMATION), stop = LoadIconW(nullptr, (LPCWSTR)IDI_HAND);
  const struct {
    const char *title, *body;
    HICON icon;
    bool main;  // a main window is registered: it owns the box
  } rows[] = {
      /* 0 */ {" Chyba ", "Soubor C:\\KORV5\\EXE\\SYSTEM.WCO nelze otevřít", exclamation, false},
      /* 1 */ {" Interní chyba, informujte dodavatele ", "Chyba v souboru zip_util řádek 104", stop, true},
      /* 2 */ {" Chyba switch, informujte dodavatele ", "Chyba v souboru date řádek 77", stop, false},
      /* 3 */ {" Chyba ", " Málo paměti", exclamation, true},
  };
  for (int i = 0; i < 4; i++) {
    SCOPED_TRACE(testing::Message() << "row " << i);
    HWND main = make_window("KX main"), other = make_window("KX other");
    ASSERT_TRUE(main && other);
    EnableWindow(other, FALSE);  // disabled before the box: enabled afterwards all the same
    WeMainWindow mw = {main, nullptr, nullptr};
    if (rows[i].main) we_set_main_window(&mw);
    Seen s;
    s.title = rows[i].title;
    s.watched = main;
    HANDLE thread = CreateThread(nullptr, 0, watcher, &s, 0, nullptr);
    if (i == 0) ErrorBox(rows[i].body);
    if (i == 1) InternalError("zip_util", 104);
    if (i == 2) SwitchError("date", 77);
    if (i == 3) OutOfMemoryError();
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(thread, 15000)) << "the watcher did not finish";
    CloseHandle(thread);
    we_set_main_window(nullptr);
    ASSERT_TRUE(s.found) << "no box titled '" << rows[i].title << "'";
    EXPECT_EQ(rows[i].body, s.body);
    EXPECT_EQ(rows[i].icon, s.icon) << "got icon " << (void *)s.icon;
    EXPECT_EQ(rows[i].main ? main : nullptr, s.owner);
    EXPECT_TRUE(s.ok_button);
    EXPECT_TRUE(s.watched_disabled) << "the thread's windows are disabled while the box is up";
    EXPECT_TRUE(IsWindowEnabled(main) && IsWindowEnabled(other)) << "and all enabled afterwards";
    EXPECT_EQ(nullptr, tk::find_dialog("", GetCurrentProcessId())) << "OK closes the box";
    DestroyWindow(other);
    DestroyWindow(main);
  }
}

}  // namespace
