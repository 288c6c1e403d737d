// we_win32.cpp - the reporting module's platform half on Windows: the message box and the
// thread's top-level windows.
#include "platform/we_plat.h"
#include "platform/wtext.h"

#include <windows.h>

// Our texts are Windows-1250 whatever the system's ANSI code page is, so the box gets them
// converted explicitly to UTF-16 with code page 1250.
static wchar_t *to_wide(const char *text, wchar_t *buffer, int size) {
  wtext_in(text, buffer, (size_t)size);  // a text too long for the buffer: the part that fits
  return buffer;
}

void we_plat_message_box(void *owner, const char *text, const char *title, unsigned flags) {
  wchar_t wtext[1024], wtitle[256];
  MessageBoxW((HWND)owner, to_wide(text, wtext, 1024), to_wide(title, wtitle, 256), flags);
}

static BOOL CALLBACK enable_one(HWND window, LPARAM enable) {
  EnableWindow(window, (BOOL)enable);
  return TRUE;
}

void we_plat_enable_thread_windows(int enable) {
  EnumThreadWindows(GetCurrentThreadId(), enable_one, (LPARAM)(enable ? TRUE : FALSE));
}

// Without the toolkit's dialogs: the plain message box with the nearest buttons. Kinds 0..2 are
// the questions (yes/no, yes/no/cancel, yes/no/all/cancel, the last without "all"), 3 and 4 the
// notice and the message. The box's answers become the dialogs' codes (yes 1, no 7, cancel 2).
int we_plat_dialog(int kind, void *owner, const char *title, const char *text) {
  UINT buttons = kind == 0 ? MB_YESNO : kind <= 2 ? MB_YESNOCANCEL : MB_OK;
  UINT icon = kind <= 2 ? MB_ICONQUESTION : kind == 4 ? MB_ICONEXCLAMATION : MB_ICONINFORMATION;
  wchar_t wtext[1024], wtitle[256];
  int got = MessageBoxW((HWND)owner, to_wide(text, wtext, 1024), to_wide(title, wtitle, 256),
                        buttons | icon | MB_TASKMODAL | MB_SETFOREGROUND);
  switch (got) {
    case IDYES: return 1;
    case IDNO: return 7;
    case IDCANCEL: return 2;
    case IDOK: return 1;
    default: return 0;
  }
}
