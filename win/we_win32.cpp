// we_win32.cpp - the reporting module's platform half on Windows: the message box and the
// thread's top-level windows.
#include "we_plat.h"

#include <windows.h>

// Our texts are Windows-1250 whatever the system's ANSI code page is, so the box gets them
// converted explicitly to UTF-16 with code page 1250.
static wchar_t *to_wide(const char *text, wchar_t *buffer, int size) {
  int n = MultiByteToWideChar(1250, 0, text, -1, buffer, size);
  if (n <= 0) {
    // Too long for the buffer: convert what fits.
    n = MultiByteToWideChar(1250, 0, text, size - 1, buffer, size - 1);
    buffer[n > 0 ? n : 0] = 0;
  }
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
