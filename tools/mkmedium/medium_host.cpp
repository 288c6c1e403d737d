// medium_host.cpp - the medium builder's platform half for the native build: POSIX directories,
// UTF-8 file names.
#include "medium_plat.h"

#include "medium.h"

#include <dirent.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/types.h>

const char medium_plat_separator = '/';

int16_t medium_plat_kind(const char *path) {
  struct stat st;
  if (stat(path, &st) != 0) return MEDIUM_MISSING;
  if (S_ISREG(st.st_mode)) return MEDIUM_FILE;
  if (S_ISDIR(st.st_mode)) return MEDIUM_DIRECTORY;
  return MEDIUM_OTHER;
}

int16_t medium_plat_scan(const char *directory, MediumEntry entry, void *context) {
  DIR *dir = opendir(directory);
  if (!dir) return 0;
  int16_t result = 1;
  char path[KX_PATH * 2];
  for (struct dirent *e = readdir(dir); e; e = readdir(dir)) {
    if (strcmp(e->d_name, ".") == 0 || strcmp(e->d_name, "..") == 0) continue;
    int n = snprintf(path, sizeof path, "%s/%s", directory, e->d_name);
    int16_t kind = MEDIUM_OTHER;
    uint64_t size = 0;
    struct stat st;
    if (n > 0 && (size_t)n < sizeof path && stat(path, &st) == 0) {
      if (S_ISREG(st.st_mode)) {
        kind = MEDIUM_FILE;
        size = (uint64_t)st.st_size;
      } else if (S_ISDIR(st.st_mode)) {
        kind = MEDIUM_DIRECTORY;
      }
    }
    if (!entry(context, e->d_name, kind, size)) {
      result = -1;
      break;
    }
  }
  closedir(dir);
  return result;
}

Flag medium_plat_make_directory(const char *path) { return mkdir(path, 0777) == 0 ? 1 : 0; }

Flag medium_plat_to_cp1250(const char *native, char *text, size_t size) {
  return medium_utf8_to_cp1250(native, text, size, nullptr) == MEDIUM_TEXT_OK ? 1 : 0;
}
