// medium_win32.cpp - the medium builder's platform half on Windows: Win32 directories, file names
// in the system's ANSI code page.
#include "medium_plat.h"

#include <windows.h>

#include <stdio.h>
#include <string.h>

const char medium_plat_separator = '\\';

int16_t medium_plat_kind(const char *path) {
  DWORD attributes = GetFileAttributesA(path);
  if (attributes == INVALID_FILE_ATTRIBUTES) return MEDIUM_MISSING;
  if (attributes & FILE_ATTRIBUTE_DIRECTORY) return MEDIUM_DIRECTORY;
  if (attributes & FILE_ATTRIBUTE_DEVICE) return MEDIUM_OTHER;
  return MEDIUM_FILE;
}

int16_t medium_plat_scan(const char *directory, MediumEntry entry, void *context) {
  char pattern[KX_PATH + 4];
  int n = snprintf(pattern, sizeof pattern, "%s\\*", directory);
  if (n < 0 || (size_t)n >= sizeof pattern) return 0;
  WIN32_FIND_DATAA found;
  HANDLE find = FindFirstFileA(pattern, &found);
  if (find == INVALID_HANDLE_VALUE) return GetLastError() == ERROR_FILE_NOT_FOUND ? 1 : 0;
  int16_t result = 1;
  do {
    if (strcmp(found.cFileName, ".") == 0 || strcmp(found.cFileName, "..") == 0) continue;
    int16_t kind = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) ? MEDIUM_DIRECTORY
                   : (found.dwFileAttributes & FILE_ATTRIBUTE_DEVICE) ? MEDIUM_OTHER
                                                                       : MEDIUM_FILE;
    uint64_t size = ((uint64_t)found.nFileSizeHigh << 32) | found.nFileSizeLow;
    if (!entry(context, found.cFileName, kind, kind == MEDIUM_FILE ? size : 0)) {
      result = -1;
      break;
    }
  } while (FindNextFileA(find, &found));
  FindClose(find);
  return result;
}

Flag medium_plat_make_directory(const char *path) { return CreateDirectoryA(path, nullptr) ? 1 : 0; }

Flag medium_plat_to_cp1250(const char *native, char *text, size_t size) {
  if (size == 0) return 0;
  // A name that the system could not give in its ANSI code page comes with "?" in it; that
  // character is refused as a name character later.
  wchar_t wide[KX_PATH];
  int n = MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, native, -1, wide, KX_PATH);
  if (n <= 0) return 0;
  BOOL lost = FALSE;
  int m = WideCharToMultiByte(1250, WC_NO_BEST_FIT_CHARS, wide, -1, text, (int)size, nullptr, &lost);
  if (m <= 0 || lost) {
    text[0] = 0;
    return 0;
  }
  return 1;
}
