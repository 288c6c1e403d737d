// wtext_win32.cpp - 1250 <-> UTF-16 with the system's explicit code-page conversions, and the C
// runtime's file opens on wide names.
#include "platform/wtext.h"

#include <windows.h>
#include <shellapi.h>

#include <fcntl.h>
#include <io.h>
#include <stdlib.h>
#include <sys/stat.h>

// Every character of 1250 is one byte and one wide character (1250 has no surrogates), so the
// part of a text that fits a buffer of n is its first n - 1 characters either way.

Flag wtext_in(const char *text, wchar_t *wide, size_t count) {
  if (!wide || count == 0) return 0;
  wide[0] = 0;
  if (!text) return 0;
  int32_t units = wtext_units(text);
  if ((size_t)units < count) return MultiByteToWideChar(1250, 0, text, -1, wide, (int)count) > 0;
  int n = MultiByteToWideChar(1250, 0, text, (int)count - 1, wide, (int)count - 1);
  wide[n > 0 ? n : 0] = 0;
  return 0;
}

Flag wtext_out(const wchar_t *wide, char *text, size_t size) {
  if (!text || size == 0) return 0;
  text[0] = 0;
  if (!wide) return 0;
  BOOL lost = FALSE;
  int needed =
      WideCharToMultiByte(1250, WC_NO_BEST_FIT_CHARS, wide, -1, nullptr, 0, nullptr, &lost);
  if (needed <= 0 || lost) return 0;  // a character that 1250 lacks: no "?" for it
  if ((size_t)needed <= size)
    return WideCharToMultiByte(1250, WC_NO_BEST_FIT_CHARS, wide, -1, text, (int)size, nullptr,
                               nullptr) > 0;
  int n = WideCharToMultiByte(1250, WC_NO_BEST_FIT_CHARS, wide, (int)size - 1, text, (int)size - 1,
                              nullptr, nullptr);
  text[n > 0 ? n : 0] = 0;
  return 0;
}

int32_t wtext_units(const char *text) {
  if (!text || !text[0]) return 0;
  int n = MultiByteToWideChar(1250, 0, text, -1, nullptr, 0);
  return n > 0 ? n - 1 : 0;
}

Flag wtext_arguments(int *argc, char ***argv) {
  static char **arguments;
  if (!argc || !argv) return 0;
  *argc = 0;
  *argv = arguments;
  int count = 0;
  wchar_t **wide = CommandLineToArgvW(GetCommandLineW(), &count);
  if (!wide) return 0;
  Flag ok = 1;
  if (!arguments) arguments = (char **)calloc((size_t)count + 1, sizeof(char *));
  for (int i = 0; arguments && i < count; i++) {
    size_t size = wcslen(wide[i]) + 1;  // one byte a character in 1250
    arguments[i] = (char *)malloc(size);
    if (!arguments[i]) {
      arguments = nullptr;  // (what was taken goes with the process)
      break;
    }
    if (!wtext_out(wide[i], arguments[i], size)) ok = 0;
  }
  LocalFree(wide);
  if (!arguments) return 0;
  *argc = count;
  *argv = arguments;
  return ok;
}

FILE *wtext_fopen(const char *path, const char *mode) {
  wchar_t wide_path[WTEXT_PATH], wide_mode[16];
  if (!wtext_in(path, wide_path, WTEXT_PATH) || !wtext_in(mode, wide_mode, 16)) return nullptr;
  return _wfopen(wide_path, wide_mode);
}

int wtext_open_new(const char *path) {
  wchar_t wide[WTEXT_PATH];
  if (!wtext_in(path, wide, WTEXT_PATH)) return -1;
  return _wopen(wide, _O_WRONLY | _O_CREAT | _O_EXCL | _O_BINARY, _S_IREAD | _S_IWRITE);
}

Flag wtext_remove(const char *path) {
  wchar_t wide[WTEXT_PATH];
  return wtext_in(path, wide, WTEXT_PATH) && _wremove(wide) == 0 ? 1 : 0;
}

Flag wtext_exists(const char *path) {
  wchar_t wide[WTEXT_PATH];
  return wtext_in(path, wide, WTEXT_PATH) && GetFileAttributesW(wide) != INVALID_FILE_ATTRIBUTES
             ? 1
             : 0;
}
