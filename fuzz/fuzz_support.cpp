// fuzz_support.cpp - see fuzz_support.h.
#include "fuzz/fuzz_support.h"

#include "common/we.h"

#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static long boxes;

static void quiet_box(void *, const char *, const char *, unsigned) { boxes++; }

static int16_t quiet_dialog(int16_t, void *, const char *, const char *) {
  boxes++;
  return 7;  // "No" to every question; notices take any answer
}

long fuzz_box_count(void) { return boxes; }

[[maybe_unused]] static const int silenced =
    (we_set_box_hook(quiet_box), we_set_dialog_hook(quiet_dialog), 0);

// run.sh starts every target in a scratch directory of its own.
const char *fuzz_scratch_dir(void) { return "./"; }

void fuzz_write_file(const char *path, const uint8_t *data, size_t size) {
  FILE *f = fopen(path, "wb");
  if (!f) fuzz_fail(__FILE__, __LINE__, "cannot create %s", path);
  if (size && fwrite(data, 1, size, f) != size)
    fuzz_fail(__FILE__, __LINE__, "cannot write %s", path);
  if (fclose(f)) fuzz_fail(__FILE__, __LINE__, "cannot close %s", path);
}

char *fuzz_text(const uint8_t *data, size_t size) {
  char *text = (char *)malloc(size + 1);
  if (size) memcpy(text, data, size);
  text[size] = 0;
  return text;
}

uint8_t *fuzz_block(const uint8_t *data, size_t size) {
  uint8_t *block = (uint8_t *)malloc(size ? size : 1);
  if (size) memcpy(block, data, size);
  return block;
}

void fuzz_fail(const char *file, int line, const char *format, ...) {
  va_list args;
  va_start(args, format);
  fprintf(stderr, "\n==FUZZ CHECK FAILED== %s:%d: ", file, line);
  vfprintf(stderr, format, args);
  fprintf(stderr, "\n");
  va_end(args);
  abort();
}
