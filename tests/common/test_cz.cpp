// Code pages: the tables byte by byte, conversions between the encodings, diacritics and case.
#include "common/cz.h"
#include "tests/support/kxtest.h"

#include <gtest/gtest.h>

#include <stdio.h>
#include <string>

using kxtest::BoxRecorder;

namespace {

// A table's bytes in hex, one row a line, against rows written with blanks between them.
void expect_table(const char *want, const unsigned char *table, int rows, int columns, const char *name) {
  std::string got, lines = want;
  char b[4];
  for (int i = 0; i < rows * columns; i++) {
    snprintf(b, sizeof b, "%02X", table[i]);
    got += b + std::string(i % columns == columns - 1 ? "\n" : "");
  }
  for (char &c : lines) c = c == ' ' ? '\n' : c;
  EXPECT_EQ(lines, got) << name;
}

TEST(CodePages, TablesEveryByte) {
  // Written from the code page charts, with the suite's own ĺ/ľ, Ĺ/Ľ and Ô rows. Conversion:
  // KEYBCS2, LATIN2, WINDOWS per row. Letters: letter, small, capital, ASCII base.
  expect_table("A0A0E1 8FB5C1 8282E9 9090C9 A1A1ED 8BD6CD A2A2F3 95E0D3 A3A3FA 97E9DA 98ECFD 9DEDDD "
               "879FE8 80ACC8 83D4EF 85D2CF 88D8EC 89B7CC A4E5F2 A5D5D2 A9FDF8 9EFCD8 A8E79A 9BE68A "
               "9F9C9D 869B8D 9685F9 A6DED9 91A79E 92A68E 8D92BE 8A91BC 8C96E5 9C95C5 9393F4 9CE2D4 "
               "AEAEAB AFAFBB ", &cz_table[0][0], CZ_TABLE_ROWS, 3, "cz_table");
  expect_table("E1E1C161 C1E1C141 E9E9C965 C9E9C945 EDEDCD69 CDEDCD49 F3F3D36F D3F3D34F FAFADA75 DAFADA55 "
               "FDFDDD79 DDFDDD59 E8E8C863 C8E8C843 EFEFCF64 CFEFCF44 ECECCC65 CCECCC45 F2F2D26E D2F2D24E "
               "F8F8D872 D8F8D852 9A9A8A73 8A9A8A53 9D9D8D74 8D9D8D54 F9F9D975 D9F9D955 9E9E8E7A 8E9E8E5A "
               "E5E5C56C C5E5C54C BEBEBC6C BCBEBC4C F4F4D46F D4F4D44F ", &cz_letters_win[0][0],
               CZ_LETTER_ROWS, 4, "cz_letters_win");
  expect_table("A0A08F61 8FA08F41 82829065 90829045 A1A18B69 8BA18B49 A2A2956F 95A2954F A3A39775 97A39755 "
               "98989D79 9D989D59 87878063 80878043 83838564 85838544 88888965 89888945 A4A4A56E A5A4A54E "
               "A9A99E72 9EA99E52 A8A89B73 9BA89B53 9F9F8674 869F8654 9696A675 A696A655 9191927A 9291925A "
               "8D8D8A6C 8A8D8A4C 8C8C9C6C 9C8C9C4C 9393A76F 9C8CA74F ", &cz_letters_kbcs[0][0],
               CZ_LETTER_ROWS, 4, "cz_letters_kbcs");
}

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
      {3, cz_lower, "K\xD8\xCD\x8EX 1", "k\xF8\xED\x9Ex 1", 1}, {4, cz_upper, "\xC1", "\xC1", 1},
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
