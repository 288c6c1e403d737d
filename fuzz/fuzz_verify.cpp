// fuzz_verify.cpp - the medium checker (mkmedium --verify) on a medium held in memory. The first
// byte: bit 0 flat, the rest the number of disks (1 to 26); then files, each as disk (1 byte),
// name length (1 byte), name, data length (2 bytes, little-endian), data -- DISKLIST.LST,
// A.KORV and the stored files among them. The checker must end with a flag whose problem count
// matches its lines, show no box, and give back every block it loaded (the leak check).
#include "fuzz/fuzz_support.h"

#include "common/mm.h"
#include "tools/mkmedium/verify.h"

#include <string.h>
#include <strings.h>

namespace {

struct File {
  uint8_t disk;
  char name[64];
  const uint8_t *data;
  uint32_t length;
};

struct Medium {
  File files[64];
  int count;
  long lines;
};

const File *lookup(Medium *m, uint16_t disk, const char *name) {
  for (int i = 0; i < m->count; i++)
    if (m->files[i].disk == disk && strcasecmp(m->files[i].name, name) == 0) return &m->files[i];
  return nullptr;
}

Flag find(void *context, uint16_t disk, const char *name, uint64_t *size) {
  const File *f = lookup((Medium *)context, disk, name);
  if (f) *size = f->length;
  return f != nullptr;
}

Flag load(void *context, uint16_t disk, const char *name, unsigned char **bytes, uint32_t *length) {
  const File *f = lookup((Medium *)context, disk, name);
  *bytes = nullptr;
  *length = 0;
  if (!f) return 0;
  if (f->length) {
    *bytes = (unsigned char *)mm_alloc((int32_t)f->length, MM_HERE);  // exact size for ASan
    memcpy(*bytes, f->data, f->length);
  }
  *length = f->length;
  return 1;
}

void line(void *context, const char *text) {
  FUZZ_CHECK(strlen(text) < KX_PATH, "a line of %zu bytes", strlen(text));
  ((Medium *)context)->lines++;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 1) return 0;
  static Medium m;
  memset(&m, 0, sizeof m);
  size_t at = 1;
  while (m.count < 64 && at + 2 <= size) {
    File *f = &m.files[m.count];
    f->disk = data[at];
    size_t n = data[at + 1];
    if (at + 2 + n + 2 > size || n >= sizeof f->name) break;
    memcpy(f->name, data + at + 2, n);
    at += 2 + n;
    size_t length = data[at] | (size_t)data[at + 1] << 8;
    at += 2;
    if (length > size - at) length = size - at;
    f->data = data + at;
    f->length = (uint32_t)length;
    at += length;
    m.count++;
  }
  VerifyAccess access = {
      &m, (uint16_t)((data[0] >> 1) % 26 + 1), (int16_t)(data[0] & 1), find, load, line, &m};
  VerifyResult result;
  Flag ok = verify_check(&access, &result);
  FUZZ_CHECK(ok == (result.problems == 0), "flag %d with %lu problems", ok,
             (unsigned long)result.problems);
  FUZZ_CHECK(result.problems == (uint32_t)m.lines, "%lu problems, %ld lines",
             (unsigned long)result.problems, m.lines);
  FUZZ_CHECK(fuzz_box_count() == 0, "a box was shown");
  return 0;
}
