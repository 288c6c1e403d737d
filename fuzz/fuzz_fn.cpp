// fuzz_fn.cpp - file names: name_from_pattern and path_split, with the other splitters and
// joiners of the module on the same texts. The input is the pattern, a NUL, then the source
// name (no NUL: both are the whole input). Outputs are exact KX_PATH heap buffers, so a result
// that is not cut at 1023 characters runs into ASan.
#include "fuzz/fuzz_support.h"

#include "common/fn.h"

#include <stdlib.h>
#include <string.h>

static char *path_buffer(void) {
  char *buffer = (char *)malloc(KX_PATH);
  memset(buffer, 0x5A, KX_PATH);
  buffer[KX_PATH - 1] = 0;
  return buffer;
}

static void check_path(const char *buffer, const char *what) {
  FUZZ_CHECK(memchr(buffer, 0, KX_PATH) != NULL, "%s left its KX_PATH buffer unterminated", what);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const uint8_t *nul = (const uint8_t *)memchr(data, 0, size);
  size_t first = nul ? (size_t)(nul - data) : size;
  char *pattern = fuzz_text(data, first);
  char *source = nul ? fuzz_text(nul + 1, size - first - 1) : fuzz_text(data, size);

  char *result = path_buffer();
  Flag ok = name_from_pattern(pattern, source, result);
  FUZZ_CHECK(ok == 1, "name_from_pattern returned %d", ok);
  check_path(result, "name_from_pattern");

  char *directory = path_buffer();
  char *name = path_buffer();
  ok = path_split(pattern, directory, name);
  FUZZ_CHECK(ok == 1, "path_split returned %d", ok);
  check_path(directory, "path_split (directory)");
  check_path(name, "path_split (name)");
  FUZZ_CHECK(!strchr(name, '\\') && !strchr(name, '/'), "path_split left a slash in the name");
  same_directory(pattern, directory);

  char drive[3];
  char *dir = path_buffer(), *base = path_buffer(), *ext = path_buffer();
  ok = path_split_parts(pattern, drive, dir, base, ext);
  FUZZ_CHECK(ok == 1, "path_split_parts returned %d", ok);
  check_path(dir, "path_split_parts");
  check_path(base, "path_split_parts");
  check_path(ext, "path_split_parts");
  FUZZ_CHECK(memchr(drive, 0, sizeof drive), "the drive is unterminated");
  char *merged = path_buffer();
  ok = path_merge_parts(merged, drive, dir, base, ext);
  check_path(merged, "path_merge_parts");

  // The splitter keeps every character, and a merge of its parts gives the path back.
  char *normal = path_buffer();
  strncpy(normal, pattern, KX_PATH - 1);
  normal[KX_PATH - 1] = 0;
  ok = path_normalise(normal);
  FUZZ_CHECK(ok == 1, "path_normalise returned %d", ok);
  FUZZ_CHECK(!strncmp(normal, pattern, KX_PATH - 1),
             "path_normalise changed \"%.80s\" to \"%.80s\"", pattern, normal);

  char *joined = path_buffer();
  strncpy(joined, source, KX_PATH - 1);
  joined[KX_PATH - 1] = 0;
  path_join(joined, pattern);
  check_path(joined, "path_join");

  char *all[] = {result, directory, name, dir, base, ext, merged, normal, joined, pattern, source};
  for (char *p : all) free(p);
  return 0;
}
