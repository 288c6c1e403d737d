// fn_host.cpp - the file-name module's platform half for the native build: the working
// directory is taken as the current directory of drive C:, its "/" turned into "\"
// ("/tmp/x" is C:\tmp\x, "/" is the root C:\).
#include "platform/fn_plat.h"

#include <string.h>
#include <unistd.h>

Flag fn_plat_current_directory(char *letter, char *directory, size_t size) {
  char full[KX_PATH];
  if (!getcwd(full, sizeof full)) return 0;
  const char *rest = full[0] == '/' ? full + 1 : full;
  size_t n = strlen(rest);
  if (n >= size) return 0;
  for (size_t i = 0; i <= n; i++) directory[i] = rest[i] == '/' ? '\\' : rest[i];
  *letter = 'C';
  return 1;
}
