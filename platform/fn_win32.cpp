// fn_win32.cpp - the file-name module's platform half for Windows: the C runtime's current
// drive and that drive's current directory.
#include "platform/fn_plat.h"

#include <direct.h>
#include <string.h>

Flag fn_plat_current_directory(char *letter, char *directory, size_t size) {
  int drive = _getdrive();  // 1 = A:
  if (drive < 1 || drive > 26) return 0;
  char full[KX_PATH];
  if (!_getdcwd(drive, full, (int)sizeof full)) return 0;
  // "C:\OUT\SUB" -> "OUT\SUB"; "C:\" -> ""
  const char *rest = full;
  if (rest[0] && rest[1] == ':') rest += 2;
  if (*rest == '\\' || *rest == '/') rest++;
  size_t n = strlen(rest);
  if (n >= size) return 0;
  memcpy(directory, rest, n + 1);
  *letter = (char)('A' + drive - 1);
  return 1;
}
