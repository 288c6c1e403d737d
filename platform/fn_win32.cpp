// fn_win32.cpp - the file-name module's platform half for Windows: the current drive and that
// drive's current directory (GetCurrentDirectoryW, brought back into 1250).
#include "platform/fn_plat.h"

#include "platform/wtext.h"

#include <windows.h>
#include <string.h>

Flag fn_plat_current_directory(char *letter, char *directory, size_t size) {
  wchar_t wide[WTEXT_PATH];
  DWORD got = GetCurrentDirectoryW(WTEXT_PATH, wide);
  if (got == 0 || got >= WTEXT_PATH) return 0;
  char full[KX_PATH];
  if (!wtext_out(wide, full, sizeof full)) return 0;
  char drive = full[0];
  if (drive >= 'a' && drive <= 'z') drive = (char)(drive - 'a' + 'A');
  if (full[1] != ':' || drive < 'A' || drive > 'Z') return 0;  // no drive (a network path)
  // "C:\OUT\SUB" -> "OUT\SUB"; "C:\" -> ""
  const char *rest = full + 2;
  if (*rest == '\\' || *rest == '/') rest++;
  size_t n = strlen(rest);
  if (n >= size) return 0;
  memcpy(directory, rest, n + 1);
  *letter = drive;
  return 1;
}
