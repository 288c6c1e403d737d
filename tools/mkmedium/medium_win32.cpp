// medium_win32.cpp - the medium builder's platform half on Windows: Win32 directories through the
// wide calls. Native names and paths are Windows-1250 here, as everywhere in the suite on
// Windows (platform/wtext.h converts them explicitly); nothing depends on the ANSI code page.
#include "tools/mkmedium/medium_plat.h"

#include "common/st.h"
#include "platform/wtext.h"

#include <windows.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

const char medium_plat_separator = '\\';

// The wide form of a path; an empty one (which names nothing) when it cannot be converted.
struct WidePath {
  wchar_t text[WTEXT_PATH];
  explicit WidePath(const char *path) {
    if (!wtext_in(path, text, WTEXT_PATH)) text[0] = 0;
  }
};

int16_t medium_plat_kind(const char *path) {
  DWORD attributes = GetFileAttributesW(WidePath(path).text);
  if (attributes == INVALID_FILE_ATTRIBUTES) return MEDIUM_MISSING;
  if (attributes & FILE_ATTRIBUTE_DIRECTORY) return MEDIUM_DIRECTORY;
  if (attributes & FILE_ATTRIBUTE_DEVICE) return MEDIUM_OTHER;
  return MEDIUM_FILE;
}

int16_t medium_plat_scan(const char *directory, MediumEntry entry, void *context) {
  char pattern[KX_PATH];
  if (!st_join(pattern, sizeof pattern, directory, "\\*")) return 0;
  WIN32_FIND_DATAW found;
  HANDLE find = FindFirstFileW(WidePath(pattern).text, &found);
  if (find == INVALID_HANDLE_VALUE) return GetLastError() == ERROR_FILE_NOT_FOUND ? 1 : 0;
  int16_t result = 1;
  do {
    if (wcscmp(found.cFileName, L".") == 0 || wcscmp(found.cFileName, L"..") == 0) continue;
    // A name that Windows-1250 cannot hold is handed over with "?" for what it lacks, a
    // character no file name has: medium_plat_to_cp1250 refuses it.
    char name[MAX_PATH * 2];
    if (!wtext_out(found.cFileName, name, sizeof name)) {
      WideCharToMultiByte(1250, WC_NO_BEST_FIT_CHARS, found.cFileName, -1, name, (int)sizeof name,
                          "?", nullptr);
      name[sizeof name - 1] = 0;
      if (!strchr(name, '?')) st_append(name, sizeof name, "?");
    }
    int16_t kind = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) ? MEDIUM_DIRECTORY
                   : (found.dwFileAttributes & FILE_ATTRIBUTE_DEVICE)  ? MEDIUM_OTHER
                                                                       : MEDIUM_FILE;
    uint64_t size = ((uint64_t)found.nFileSizeHigh << 32) | found.nFileSizeLow;
    if (!entry(context, name, kind, kind == MEDIUM_FILE ? size : 0)) {
      result = -1;
      break;
    }
  } while (FindNextFileW(find, &found));
  FindClose(find);
  return result;
}

Flag medium_plat_make_directory(const char *path) {
  return CreateDirectoryW(WidePath(path).text, nullptr) ? 1 : 0;
}

Flag medium_plat_to_cp1250(const char *native, char *text, size_t size) {
  if (size == 0) return 0;
  if (strchr(native, '?') || !st_put(text, size, native)) {
    text[0] = 0;
    return 0;
  }
  return 1;
}

Flag medium_plat_scratch_directory(char *path, size_t size) {
  wchar_t wide[MAX_PATH + 1];
  char base[KX_PATH];
  DWORD n = GetTempPathW(MAX_PATH + 1, wide);
  if (n == 0 || n > MAX_PATH || !wtext_out(wide, base, sizeof base)) return 0;
  for (unsigned attempt = 0; attempt < 100; attempt++) {
    int m = snprintf(path, size, "%smkmedium.%lu.%u", base, (unsigned long)GetCurrentProcessId(),
                     attempt);
    if (m < 0 || (size_t)m >= size) return 0;
    if (medium_plat_make_directory(path)) return 1;
  }
  return 0;
}

static Flag remove_entry(void *context, const char *name, int16_t, uint64_t) {
  char path[KX_PATH];
  if (st_join(path, sizeof path, (const char *)context, "\\", name)) medium_plat_remove_tree(path);
  return 1;
}

void medium_plat_remove_tree(const char *path) {
  WidePath wide(path);
  DWORD attributes = GetFileAttributesW(wide.text);
  if (attributes == INVALID_FILE_ATTRIBUTES) return;
  SetFileAttributesW(wide.text, attributes & ~(DWORD)FILE_ATTRIBUTE_READONLY);
  if (attributes & FILE_ATTRIBUTE_DIRECTORY) {
    medium_plat_scan(path, remove_entry, (void *)path);
    RemoveDirectoryW(wide.text);
  } else {
    DeleteFileW(wide.text);
  }
}

Flag medium_plat_quote(const char *text, char *quoted, size_t size) {
  if (strchr(text, '"')) return 0;
  return st_join(quoted, size, "\"", text, "\"");
}

int medium_plat_run(const char *command) {
  fflush(stdout);
  fflush(stderr);
  // cmd /c drops the outer quotes of a line that begins with one: one more pair keeps them.
  size_t count = (size_t)wtext_units(command) + 3;
  wchar_t *line = (wchar_t *)malloc(count * sizeof(wchar_t));
  if (!line) return -1;
  line[0] = L'"';
  int code = -1;
  if (wtext_in(command, line + 1, count - 2)) {
    wcscat(line, L"\"");
    code = _wsystem(line);
  }
  free(line);
  return code;
}
