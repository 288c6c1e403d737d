// Code pages: conversions between the encodings, diacritics and case.
#include "common/cz.h"
#include "tests/support/kxtest.h"

#include <gtest/gtest.h>

#include <string>

using kxtest::BoxRecorder;

namespace {

TEST(CodePages, ConvertEveryPair) {
  const int K = CZ_KEYBCS2, L = CZ_LATIN2, W = CZ_WINDOWS, A = CZ_ASCII;
  struct Row { int n; int from, to; const char *in, *out; int ret; } rows[] = {
      {1, W, K, "P\xF8\xEDli\x9A \x9Elu\x9Do", "P\xA9\xA1li\xA8 \x91lu\x9Fo", 1},
      {2, W, K, "\xBE\xD4", "\x8D\x9C", 1},               // ľ -> ĺ, Ô -> Ľ: the suite's own rows
      {3, W, 0, "\xE1", "\xA0", 1}, {4, W, 9, "\xE1", "\xA0", 1}, {5, W, L, "\xBE\xC8", "\x92\xAC", 1},
      {6, W, W, "\xE1\xBE", "\xE1\xBE", 0},
      {7, W, A, "\x9Elu\x9Do\xE8k\xFD", "zlutocky", 0},   // changed, still 0
      {8, W, K, "\xA7\xB0 x", "\xA7\xB0 x", 0},           // § ° are no letters
      {9, K, W, "\x9C\x8C\x80", "\xC5\xE5\xC8", 1},       // 0x9C is Ľ, never Ô
      {10, K, L, "\xA0\x87", "\xA0\x9F", 1},              // á has the same byte, still found
      {11, K, W, "\xA7", "\xA7", 0}, {12, K, K, "\xA0", "\xA0", 0}, {13, K, 0, "\xA0", "\xA0", 0},
      {14, 0, W, "\x87", "\xE8", 1},
      {15, K, A, "\x9A\xE1\x87", "sa\x87", 0},            // the WINDOWS letter table, as it stands
      {16, A, K, "\xE1x", "\xE1x", 1}, {17, W, K, "", "", 0}, {18, K, W, "ascii only", "ascii only", 0}};
  for (const Row &r : rows) {
    BoxRecorder rec;
    std::string text = r.in;
    EXPECT_EQ(r.ret, cz_convert((int16_t)r.from, (int16_t)r.to, &text[0])) << "row " << r.n;
    EXPECT_EQ(std::string(r.out), text.c_str()) << "row " << r.n;
    EXPECT_EQ(0u, rec.count()) << "row " << r.n << ": " << rec.dump();
  }
  BoxRecorder rec;
  char latin2[] = "\xA0\x9F";
  EXPECT_EQ(0, cz_convert(CZ_LATIN2, CZ_WINDOWS, latin2));
  EXPECT_STREQ("\xA0\x9F", latin2);
  EXPECT_GT(kxtest::internal_error_line(rec.only(), "cz"), 0);
  rec.clear();
  EXPECT_EQ(0, cz_convert(CZ_WINDOWS, CZ_KEYBCS2, nullptr));
  EXPECT_EQ(0, cz_strip(nullptr) + cz_lower(nullptr) + cz_upper_char(nullptr));
  EXPECT_EQ(0u, rec.count()) << rec.dump();
}

TEST(CodePages, StripAndCaseResults) {
  // The single-byte routines get a byte followed by one they would change: it must stay.
  struct Row { int n; Flag (*f)(char *); const char *in, *out; int ret; } rows[] = {
      {1, cz_lower, "\xE1", "\xE1", 1}, {2, cz_lower, "a", "a", 0},  // already small, found: 1
      {3, cz_lower, "K\xD8\xCD\x8EZ 1", "k\xF8\xED\x9Ez 1", 1}, {4, cz_upper, "\xC1", "\xC1", 1},
      {5, cz_upper, "a\xBE\x9D\xE4\xF6", "A\xBC\x8D\xE4\xF6", 1},  // ä ö: no Czech letters
      {6, cz_upper, "12 \xA7", "12 \xA7", 0}, {7, cz_strip, "abc \xE4", "abc \xE4", 0},
      {8, cz_strip, "\xC8\xE1p", "Cap", 1}, {9, cz_strip_kbcs, "\x87\x80\x9C\x93", "cCLo", 1},
      {10, cz_strip_kbcs, "\xA7\xE1", "\xA7\xE1", 0},  // KEYBCS2 Ô stays
      {11, cz_upper_char, "aa", "Aa", 1}, {12, cz_upper_char, "1a", "1a", 0},
      {13, cz_upper_char, "\xF8\xF8", "\xD8\xF8", 1},
      {14, cz_lower_char, "\xD8\xD8", "\xF8\xD8", 1}, {15, cz_lower_char, "\xE1\xC1", "\xE1\xC1", 1},
      {16, cz_strip_char, "\x8A\x8A", "S\x8A", 1}, {17, cz_strip_char, "\xB0\xE1", "\xB0\xE1", 0},
      {18, cz_strip_char, "", "", 0}};
  for (const Row &r : rows) {
    std::string text = r.in;
    EXPECT_EQ(r.ret, r.f(&text[0])) << "row " << r.n;
    EXPECT_EQ(std::string(r.out), text.c_str()) << "row " << r.n;
  }
}

}  // namespace
