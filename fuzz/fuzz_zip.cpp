// fuzz_zip.cpp - DecompressBuffer on any bytes. The harness first inflates the input itself
// with zlib into a fixed window and counts the plain bytes; an input that would inflate past
// PLAIN_LIMIT is not handed on (DecompressBuffer has no output limit of its own: its cost for
// such bombs is measured separately). Otherwise DecompressBuffer must agree with zlib: success
// exactly when the stream ends properly, the same bytes and length; on failure a null buffer, a
// zero length and an error code. What inflated is packed again and must come back unchanged.
// InflatedLength must measure the same stream alike: the same length, or limit + 1 beyond a
// limit the input chooses, and failure exactly when zlib fails within it.
#include "fuzz/fuzz_support.h"

#include "common/mm.h"
#include "pack/zip_util.h"

#include <stdlib.h>
#include <string.h>
#include <zlib.h>

enum { PLAIN_LIMIT = 256 * 1024 };

// Inflates with zlib into plain (PLAIN_LIMIT + 1 bytes). Returns 1 for a complete stream, 0 for
// a bad or cut one, -1 when it passes the limit.
static int reference(const uint8_t *data, size_t size, uint8_t *plain, size_t *plain_length) {
  z_stream s;
  memset(&s, 0, sizeof s);
  s.next_in = (Bytef *)data;
  s.avail_in = (uInt)size;
  s.next_out = plain;
  s.avail_out = PLAIN_LIMIT + 1;
  if (inflateInit(&s) != Z_OK) return 0;
  int rc;
  do {
    rc = inflate(&s, Z_NO_FLUSH);
  } while (rc == Z_OK && s.avail_out > 0);
  *plain_length = s.total_out;
  inflateEnd(&s);
  if (*plain_length > PLAIN_LIMIT || (rc == Z_OK && s.avail_out == 0)) return -1;
  return rc == Z_STREAM_END ? 1 : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static uint8_t *plain = (uint8_t *)malloc(PLAIN_LIMIT + 1);
  size_t plain_length = 0;
  int expected = reference(data, size, plain, &plain_length);
  if (expected < 0) return 0;

  uint8_t *input = fuzz_block(data, size);
  ZipUtil zip;
  ZipInit(&zip);
  unsigned char *out = NULL;
  uint32_t out_length = 0x5A5A5A5A;
  Flag ok = DecompressBuffer(&zip, size ? input : NULL, (uint32_t)size, &out, &out_length);
  if (expected == 1) {
    FUZZ_CHECK(ok == 1, "DecompressBuffer failed (%d) on a good stream of %zu bytes",
               GetError(&zip), size);
    FUZZ_CHECK(out_length == plain_length, "length %u, zlib gives %zu", out_length, plain_length);
    FUZZ_CHECK(out != NULL && (plain_length == 0 || !memcmp(out, plain, plain_length)),
               "the inflated bytes differ from zlib's");
    FUZZ_CHECK(GetError(&zip) == 0, "last error %d after success", GetError(&zip));
  } else {
    FUZZ_CHECK(ok == 0, "DecompressBuffer accepted a stream zlib refuses (%zu bytes)", size);
    FUZZ_CHECK(out == NULL && out_length == 0, "failure left out %p, length %u", (void *)out,
               out_length);
    FUZZ_CHECK(GetError(&zip) != 0, "failure with last error 0");
  }

  uint32_t limit = size ? data[size - 1] * 64u : 0, measured = 0x5A5A5A5A;
  Flag whole = InflatedLength(&zip, size ? input : NULL, (uint32_t)size, PLAIN_LIMIT, &measured);
  FUZZ_CHECK(whole == ok && measured == (ok ? out_length : 0),
             "InflatedLength %d, %u; DecompressBuffer %d, %u", whole, measured, ok, out_length);
  if (ok) {
    Flag part = InflatedLength(&zip, input, (uint32_t)size, limit, &measured);
    FUZZ_CHECK(part == 1 && measured == (out_length > limit ? limit + 1 : out_length),
               "InflatedLength %d, %u with the limit %u for %u bytes", part, measured, limit,
               out_length);
  }

  if (ok) {
    // Pack again at a level of the input's choosing and inflate: the same bytes must return.
    SetLevel(&zip, (int16_t)(size ? data[0] % 11 - 1 : -1));
    unsigned char *packed = NULL;
    uint32_t packed_length = 0;
    Flag packed_ok =
        CompressBuffer(&zip, out_length ? out : NULL, out_length, &packed, &packed_length);
    FUZZ_CHECK(packed_ok == 1, "CompressBuffer failed (%d) on %u bytes", GetError(&zip),
               out_length);
    unsigned char *back = NULL;
    uint32_t back_length = 0;
    FUZZ_CHECK(DecompressBuffer(&zip, packed, packed_length, &back, &back_length) == 1,
               "own stream does not inflate (%d)", GetError(&zip));
    FUZZ_CHECK(back_length == out_length && (out_length == 0 || !memcmp(back, out, out_length)),
               "own stream inflates to other bytes");
    mm_free(back, "fuzz_zip", __LINE__);
    mm_free(packed, "fuzz_zip", __LINE__);
  }
  mm_free(out, "fuzz_zip", __LINE__);
  free(input);
  return 0;
}
