// The error boxes for real: a watcher thread finds the box from outside, reads its title, body
// and icon, checks the windows of the reporting thread while the box is up, and presses OK.
#include "win/we.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <stdlib.h>
#include <string>

namespace {

std::string narrow1250(const wchar_t *w) {
  char buffer[2048];
  int n = WideCharToMultiByte(1250, 0, w, -1, buffer, sizeof buffer, nullptr, nullptr);
  return n > 0 ? std::string(buffer) : std::string("<unconvertible>");
}

// WM_GETTEXT works across threads and processes, unlike GetWindowText for controls.
std::string window_text(HWND window) {
  wchar_t buffer[1024];
  buffer[0] = 0;
  SendMessageW(window, WM_GETTEXT, 1024, (LPARAM)buffer);
  return narrow1250(buffer);
}

// What the watcher saw of one box.
struct Seen {
  const wchar_t *title;     // the title to wait for
  HWND box = nullptr;
  std::string caption, body;
  HICON icon = nullptr;
  HWND owner = nullptr;
  bool ok_button = false;
  bool other_disabled = false;     // our extra window, seen while the box was up
  HWND other = nullptr;
};

BOOL CALLBACK visit_child(HWND child, LPARAM param) {
  Seen *seen = (Seen *)param;
  wchar_t cls[64];
  GetClassNameW(child, cls, 64);
  if (lstrcmpiW(cls, L"Static") == 0) {
    LONG style = GetWindowLongW(child, GWL_STYLE);
    if ((style & SS_TYPEMASK) == SS_ICON)
      seen->icon = (HICON)SendMessageW(child, STM_GETICON, 0, 0);
    else if (seen->body.empty())
      seen->body = window_text(child);
  } else if (lstrcmpiW(cls, L"Button") == 0 && GetDlgCtrlID(child) == IDOK) {
    seen->ok_button = true;
  }
  return TRUE;
}

// The box of this process with the title: other test programs may show boxes of the same
// title at the same moment.
struct Search {
  const wchar_t *title;
  HWND found;
};

BOOL CALLBACK visit_top(HWND window, LPARAM param) {
  Search *search = (Search *)param;
  DWORD pid = 0;
  GetWindowThreadProcessId(window, &pid);
  wchar_t cls[64], title[256];
  if (pid != GetCurrentProcessId() || !GetClassNameW(window, cls, 64) || lstrcmpW(cls, L"#32770") != 0)
    return TRUE;
  title[0] = 0;
  SendMessageW(window, WM_GETTEXT, 256, (LPARAM)title);
  if (lstrcmpW(title, search->title) != 0) return TRUE;
  search->found = window;
  return FALSE;
}

HWND find_box(const wchar_t *title) {
  Search search = {title, nullptr};
  EnumWindows(visit_top, (LPARAM)&search);
  return search.found;
}

DWORD WINAPI watcher(void *param) {
  Seen *seen = (Seen *)param;
  for (int i = 0; i < 1000 && !seen->box; i++) {
    seen->box = find_box(seen->title);
    if (!seen->box) Sleep(10);
  }
  if (!seen->box) return 1;
  Sleep(50);  // let the box finish its set-up
  seen->caption = window_text(seen->box);
  seen->owner = GetWindow(seen->box, GW_OWNER);
  EnumChildWindows(seen->box, visit_child, (LPARAM)seen);
  if (seen->other) seen->other_disabled = !IsWindowEnabled(seen->other);
  PostMessageW(seen->box, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
  return 0;
}

HWND make_window(const wchar_t *title) {
  HWND w = CreateWindowExW(0, L"Static", title, WS_OVERLAPPEDWINDOW, 10, 10, 200, 100, nullptr, nullptr,
                           GetModuleHandleW(nullptr), nullptr);
  return w;
}

// Runs show() on this thread with a watcher on another; returns what the watcher saw.
template <typename F>
Seen run_box(const wchar_t *title, HWND other, F show) {
  Seen seen;
  seen.title = title;
  seen.other = other;
  HANDLE thread = CreateThread(nullptr, 0, watcher, &seen, 0, nullptr);
  show();
  DWORD r = WaitForSingleObject(thread, 15000);
  EXPECT_EQ(WAIT_OBJECT_0, r) << "watcher did not finish";
  CloseHandle(thread);
  return seen;
}

TEST(RealErrorBox, ErrorBoxTitleBodyIconAndOk) {
  HWND mine = make_window(L"KX test window");
  ASSERT_NE(nullptr, mine);
  Seen seen = run_box(L" Chyba ", mine, [] { ErrorBox("Soubor C:\\KORV5\\EXE\\SYSTEM.WCO nelze otevřít"); });
  ASSERT_NE(nullptr, seen.box) << "no box titled ' Chyba ' appeared";
  EXPECT_EQ(" Chyba ", seen.caption);
  EXPECT_EQ("Soubor C:\\KORV5\\EXE\\SYSTEM.WCO nelze otevřít", seen.body);
  EXPECT_EQ(LoadIconW(nullptr, (LPCWSTR)IDI_EXCLAMATION), seen.icon) << "got icon " << (void *)seen.icon;
  EXPECT_TRUE(seen.ok_button);
  EXPECT_EQ(nullptr, seen.owner) << "no main window registered, so no owner";
  EXPECT_TRUE(seen.other_disabled) << "the thread's windows must be disabled while the box is up";
  EXPECT_TRUE(IsWindowEnabled(mine)) << "and enabled again afterwards";
  EXPECT_FALSE(IsWindow(seen.box)) << "OK closes the box";
  DestroyWindow(mine);
}

TEST(RealErrorBox, InternalErrorIsAStopBoxOwnedByTheMainWindow) {
  HWND main = make_window(L"KX main");
  HWND other = make_window(L"KX other");
  ASSERT_NE(nullptr, main);
  // A window that was disabled before the box is enabled afterwards all the same.
  EnableWindow(other, FALSE);
  WeMainWindow w = {main, nullptr, nullptr};
  we_set_main_window(&w);
  Seen seen = run_box(L" Interní chyba, informujte dodavatele ", main, [] { InternalError("zip_util", 104); });
  we_set_main_window(nullptr);
  ASSERT_NE(nullptr, seen.box);
  EXPECT_EQ(" Interní chyba, informujte dodavatele ", seen.caption);
  EXPECT_EQ("Chyba v souboru zip_util řádek 104", seen.body);
  EXPECT_EQ(LoadIconW(nullptr, (LPCWSTR)IDI_HAND), seen.icon) << "got icon " << (void *)seen.icon;
  EXPECT_EQ(main, seen.owner);
  EXPECT_TRUE(seen.other_disabled);
  EXPECT_TRUE(IsWindowEnabled(main));
  EXPECT_TRUE(IsWindowEnabled(other)) << "the blanket re-enable reaches windows disabled before the box";
  DestroyWindow(other);
  DestroyWindow(main);
}

TEST(RealErrorBox, SwitchErrorAndOutOfMemory) {
  Seen s1 = run_box(L" Chyba switch, informujte dodavatele ", nullptr, [] { SwitchError("date", 77); });
  ASSERT_NE(nullptr, s1.box);
  EXPECT_EQ("Chyba v souboru date řádek 77", s1.body);
  EXPECT_EQ(LoadIconW(nullptr, (LPCWSTR)IDI_HAND), s1.icon);
  Seen s2 = run_box(L" Chyba ", nullptr, [] { OutOfMemoryError(); });
  ASSERT_NE(nullptr, s2.box);
  EXPECT_EQ(" Málo paměti", s2.body);
  EXPECT_EQ(LoadIconW(nullptr, (LPCWSTR)IDI_EXCLAMATION), s2.icon);
}

TEST(RealErrorBox, CzechLettersArriveAsTheirCodePoints) {
  // The box converts with code page 1250 itself, so Czech letters arrive whatever the
  // process's ANSI code page (CTest runs this program a second time under code page 1252);
  // the body is read back as UTF-16 and compared by code points.
  const char *want_acp = getenv("KX_EXPECT_ACP");
  if (want_acp) {
    EXPECT_EQ((UINT)atoi(want_acp), GetACP()) << "the run is not under the code page it claims";
  }
  Seen seen = run_box(L" Chyba ", nullptr, [] { ErrorBox("Přerušit instalaci ?"); });
  ASSERT_NE(nullptr, seen.box);
  wchar_t expected[] = L"P\x0159" L"eru\x0161it instalaci ?";
  EXPECT_EQ(narrow1250(expected), seen.body);
}

}  // namespace
