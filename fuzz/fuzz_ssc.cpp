// fuzz_ssc.cpp - the line scanners. The first byte picks the out-buffer size (1 to 64) and the
// characters passed to RemoveChar, ExtractDelimited and ReplaceChar; the rest is the line. Each
// scanner works on an exact-size copy and an exact-size out buffer, and must never lengthen
// the line nor fill an out buffer past its size - 1 characters.
#include "fuzz/fuzz_support.h"

#include "pack/ssc.h"

#include <stdlib.h>
#include <string.h>

static const char CHARS[] = {'|', ';', ' ', '\t', ':', '"', '0', 0};

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 1) return 0;
  int32_t out_size = 1 + (data[0] & 63);
  char c = CHARS[(data[0] >> 6) & 7 & 7];
  char c2 = CHARS[((data[0] >> 3) ^ data[0]) & 7];
  const uint8_t *line = data + 1;
  size_t length = size - 1;
  size_t before = strnlen((const char *)line, length);

  struct Case {
    const char *name;
    int op;
  } cases[] = {{"SplitFirstWord", 0},   {"CleanListLine", 1},     {"RemoveChar", 2},
               {"ExtractDelimited", 3}, {"StripLeadingZeros", 4}, {"ReplaceChar", 5},
               {"StringsEqual", 6}};
  for (const Case &k : cases) {
    char *text = fuzz_text(line, length);
    char *out = (char *)malloc(out_size);
    memset(out, 0x5A, out_size);
    out[out_size - 1] = 0;
    Flag ok = 0;
    switch (k.op) {
      case 0: ok = SplitFirstWord(text, out, out_size); break;
      case 1: ok = CleanListLine(text); break;
      case 2: ok = RemoveChar(text, c); break;
      case 3: ok = ExtractDelimited(text, out, c ? c : '|', out_size); break;
      case 4: ok = StripLeadingZeros(text); break;
      case 5: ok = ReplaceChar(text, c, c2); break;
      case 6: {
        char *other = fuzz_text(line, before);
        ok = StringsEqual(text, other);
        FUZZ_CHECK(ok == 1, "StringsEqual of a text with its copy gave %d", ok);
        if (before > 0) {
          other[before - 1] ^= 1;
          ok = StringsEqual(text, other);
          FUZZ_CHECK(ok == 0, "StringsEqual of different texts gave %d", ok);
        }
        free(other);
        break;
      }
    }
    FUZZ_CHECK(ok == 0 || ok == 1, "%s returned %d", k.name, ok);
    size_t after = strnlen(text, length + 1);
    FUZZ_CHECK(after <= before, "%s made the line longer: %zu -> %zu", k.name, before, after);
    size_t out_length = strnlen(out, out_size);
    FUZZ_CHECK(out_length < (size_t)out_size, "%s left the out buffer unterminated", k.name);
    if (k.op == 0 && !ok) FUZZ_CHECK(out[0] == 0, "SplitFirstWord failed with a word \"%s\"", out);
    if (k.op == 0 && ok && out_size > 1)
      FUZZ_CHECK(out[0] != 0, "SplitFirstWord found an empty word");
    if (k.op == 2 && c) FUZZ_CHECK(!strchr(text, c), "RemoveChar left a '%c'", c);
    if (k.op == 4) FUZZ_CHECK(text[0] != '0', "StripLeadingZeros left a leading zero");
    free(out);
    free(text);
  }
  return 0;
}
