// medium_win32.cpp - the medium builder's platform half on Windows: Win32 directories, file names
// in the system's ANSI code page.
#include "tools/mkmedium/medium_plat.h"

#include <windows.h>

#include <stdio.h>
#include <stdlib.h>
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

Flag medium_plat_scratch_directory(char *path, size_t size) {
  char base[MAX_PATH + 1];
  DWORD n = GetTempPathA(sizeof base, base);
  if (n == 0 || n > MAX_PATH) return 0;
  for (unsigned attempt = 0; attempt < 100; attempt++) {
    int m = snprintf(path, size, "%smkmedium.%lu.%u", base, (unsigned long)GetCurrentProcessId(), attempt);
    if (m < 0 || (size_t)m >= size) return 0;
    if (CreateDirectoryA(path, nullptr)) return 1;
  }
  return 0;
}

static Flag remove_entry(void *context, const char *name, int16_t, uint64_t) {
  char path[KX_PATH * 2];
  if (snprintf(path, sizeof path, "%s\\%s", (const char *)context, name) < (int)sizeof path) medium_plat_remove_tree(path);
  return 1;
}

void medium_plat_remove_tree(const char *path) {
  DWORD attributes = GetFileAttributesA(path);
  if (attributes == INVALID_FILE_ATTRIBUTES) return;
  SetFileAttributesA(path, attributes & ~(DWORD)FILE_ATTRIBUTE_READONLY);
  if (attributes & FILE_ATTRIBUTE_DIRECTORY) {
    medium_plat_scan(path, remove_entry, (void *)path);
    RemoveDirectoryA(path);
  } else {
    DeleteFileA(path);
  }
}

Flag medium_plat_quote(const char *text, char *quoted, size_t size) {
  size_t n = strlen(text);
  if (strchr(text, '"') || n + 3 > size) return 0;
  snprintf(quoted, size, "\"%s\"", text);
  return 1;
}

int medium_plat_run(const char *command) {
  fflush(stdout);
  fflush(stderr);
  // cmd /c drops the outer quotes of a line that begins with one: one more pair keeps them.
  size_t n = strlen(command) + 3;
  char *line = (char *)malloc(n);
  if (!line) return -1;
  snprintf(line, n, "\"%s\"", command);
  int code = system(line);
  free(line);
  return code;
}
