// medium_host.cpp - the medium builder's platform half for the native build: POSIX directories,
// UTF-8 file names.
#include "tools/mkmedium/medium_plat.h"

#include "tools/mkmedium/medium.h"

#include <dirent.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

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

Flag medium_plat_scratch_directory(char *path, size_t size) {
  const char *tmp = getenv("TMPDIR");
  int n = snprintf(path, size, "%s/mkmedium.XXXXXX", tmp && *tmp ? tmp : "/tmp");
  if (n < 0 || (size_t)n >= size) return 0;
  return mkdtemp(path) ? 1 : 0;
}

static Flag remove_entry(void *context, const char *name, int16_t, uint64_t) {
  char path[KX_PATH * 2];
  if (snprintf(path, sizeof path, "%s/%s", (const char *)context, name) < (int)sizeof path)
    medium_plat_remove_tree(path);
  return 1;
}

void medium_plat_remove_tree(const char *path) {
  struct stat st;
  if (lstat(path, &st) != 0) return;
  if (S_ISDIR(st.st_mode)) {
    chmod(path, 0700);  // unpacked CD images are read-only
    medium_plat_scan(path, remove_entry, (void *)path);
    rmdir(path);
  } else {
    unlink(path);
  }
}

Flag medium_plat_quote(const char *text, char *quoted, size_t size) {
  size_t at = 0;
  if (size < 3) return 0;
  quoted[at++] = '\'';
  for (const char *p = text; *p; p++) {
    const char *piece = *p == '\'' ? "'\\''" : nullptr;
    size_t n = piece ? strlen(piece) : 1;
    if (at + n + 2 > size) return 0;
    if (piece) memcpy(quoted + at, piece, n);
    else quoted[at] = *p;
    at += n;
  }
  quoted[at++] = '\'';
  quoted[at] = 0;
  return 1;
}

int medium_plat_run(const char *command) {
  fflush(stdout);
  fflush(stderr);
  int status = system(command);
  if (status == -1 || !WIFEXITED(status)) return -1;
  return WEXITSTATUS(status);
}
