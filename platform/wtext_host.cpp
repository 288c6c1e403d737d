// wtext_host.cpp - the file calls of wtext.h on the native build: names are bytes there.
#include "platform/wtext.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

FILE *wtext_fopen(const char *path, const char *mode) {
  return path && mode ? fopen(path, mode) : nullptr;
}

int wtext_open_new(const char *path) {
  return path ? open(path, O_WRONLY | O_CREAT | O_EXCL, 0666) : -1;
}

Flag wtext_remove(const char *path) { return path && remove(path) == 0 ? 1 : 0; }

Flag wtext_exists(const char *path) {
  struct stat info;
  return path && stat(path, &info) == 0 ? 1 : 0;
}
