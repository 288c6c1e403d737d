// floor.cpp - the floor of an install on this machine: the least work any installer of a packed
// medium must do. Reads DISKLIST.LST of a flat medium, and for each file reads the stored file
// once, inflates it with zlib's one-call uncompress into a buffer of the size the list gives,
// and writes it once to TARGET\directory\name. No dialog, no lists written, no checks beyond
// zlib's own.
//
// Usage: floor MEDIUM TARGET      (both directories, with or without a trailing backslash)
// Prints "floor: N files, B bytes, T ms" (T measured inside, from the list read to the last
// close) and exits 0, or prints what failed and exits 1.
#include <windows.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <zlib.h>

#include "lists/ilst.h"

static void join(char *out, size_t size, const char *dir, const char *name) {
  size_t n = strlen(dir);
  snprintf(out, size, "%s%s%s", dir, n && dir[n - 1] != '\\' ? "\\" : "", name);
}

// Reads the whole file into a new block; its size in *size. Null when it fails.
static unsigned char *read_all(const char *path, DWORD *size) {
  HANDLE h = CreateFileA(path, GENERIC_READ, FILE_SHARE_READ, NULL, OPEN_EXISTING,
                         FILE_FLAG_SEQUENTIAL_SCAN, NULL);
  if (h == INVALID_HANDLE_VALUE) return NULL;
  *size = GetFileSize(h, NULL);
  unsigned char *data = (unsigned char *)malloc(*size ? *size : 1);
  DWORD got = 0;
  if (!data || !ReadFile(h, data, *size, &got, NULL) || got != *size) {
    free(data);
    data = NULL;
  }
  CloseHandle(h);
  return data;
}

static int write_all(const char *path, const unsigned char *data, DWORD size) {
  HANDLE h = CreateFileA(path, GENERIC_WRITE, 0, NULL, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, NULL);
  if (h == INVALID_HANDLE_VALUE) return 0;
  DWORD put = 0;
  int ok = WriteFile(h, data, size, &put, NULL) && put == size;
  return CloseHandle(h) && ok;
}

int main(int argc, char **argv) {
  if (argc != 3) {
    fprintf(stderr, "usage: floor MEDIUM TARGET\n");
    return 2;
  }
  LARGE_INTEGER freq, t0, t1;
  QueryPerformanceFrequency(&freq);
  QueryPerformanceCounter(&t0);

  char path[MAX_PATH * 2], dir[MAX_PATH * 2];
  join(path, sizeof path, argv[1], "DISKLIST.LST");
  DWORD list_size = 0;
  unsigned char *list = read_all(path, &list_size);
  ListHeader header;
  if (!list || list_size < ILST_HEADER_SIZE || !ilst_decode_header(list, &header) ||
      list_size < ILST_HEADER_SIZE + (DWORD)header.count * ILST_RECORD_SIZE) {
    fprintf(stderr, "floor: cannot read %s\n", path);
    return 1;
  }
  CreateDirectoryA(argv[2], NULL);
  unsigned long long bytes = 0;
  for (unsigned i = 0; i < header.count; i++) {
    ListRecord r;
    ilst_decode_record(list + ILST_HEADER_SIZE + (size_t)i * ILST_RECORD_SIZE, &r);
    join(path, sizeof path, argv[1], r.stored);
    DWORD packed_size = 0;
    unsigned char *packed = read_all(path, &packed_size);
    if (!packed) {
      fprintf(stderr, "floor: cannot read %s\n", path);
      return 1;
    }
    if (strcmp(r.directory, ".") == 0) {
      snprintf(dir, sizeof dir, "%s", argv[2]);
    } else {
      join(dir, sizeof dir, argv[2], r.directory);
      CreateDirectoryA(dir, NULL);
    }
    join(path, sizeof path, dir, r.name);
    const unsigned char *plain = packed;
    unsigned char *inflated = NULL;
    if (header.packed) {
      inflated = (unsigned char *)malloc(r.size ? r.size : 1);
      uLongf n = r.size;
      int rc = inflated ? uncompress(inflated, &n, packed, packed_size) : Z_MEM_ERROR;
      if (rc != Z_OK || n != r.size) {
        fprintf(stderr, "floor: %s: uncompress %d, %lu of %lu bytes\n", r.stored, rc,
                (unsigned long)n, (unsigned long)r.size);
        return 1;
      }
      plain = inflated;
    }
    if (!write_all(path, plain, r.size)) {
      fprintf(stderr, "floor: cannot write %s\n", path);
      return 1;
    }
    bytes += r.size;
    free(inflated);
    free(packed);
  }
  free(list);
  QueryPerformanceCounter(&t1);
  printf("floor: %u files, %llu bytes, %.0f ms\n", (unsigned)header.count, bytes,
         (double)(t1.QuadPart - t0.QuadPart) * 1000.0 / (double)freq.QuadPart);
  return 0;
}
