// Code pages: the tables byte by byte, conversions between the encodings, diacritics and case.
#include "common/cz.h"
#include "tests/support/kxtest.h"

#include <gtest/gtest.h>

#include <stdio.h>
#include <string>

using kxtest::BoxRecorder;

namespace {

std::string hex(const std::string &s) {
  std::string out;
  char b[8];
  for (unsigned char c : s) {
    snprintf(b, sizeof b, c >= 0x20 && c < 0x7F ? "%c" : "\\x%02X", c);
    out += b;
  }
  return out;
}

// KEYBCS2 LATIN2 WINDOWS, rows 0-37 in order (written from the code page charts, with the
// suite's own ĺ/ľ, Ĺ/Ľ and Ô rows).
const char kTable[] =
    "A0A0E1 8FB5C1 8282E9 9090C9 A1A1ED 8BD6CD A2A2F3 95E0D3 A3A3FA 97E9DA 98ECFD 9DEDDD "
    "879FE8 80ACC8 83D4EF 85D2CF 88D8EC 89B7CC A4E5F2 A5D5D2 A9FDF8 9EFCD8 A8E79A 9BE68A "
    "9F9C9D 869B8D 9685F9 A6DED9 91A79E 92A68E 8D92BE 8A91BC 8C96E5 9C95C5 9393F4 9CE2D4 "
    "AEAEAB AFAFBB";

TEST(CodePages, ConversionTableEveryRow) {
  std::string digits;
  for (const char *p = kTable; *p; p++)
    if (*p != ' ') digits += *p;
  ASSERT_EQ(38u * 6, digits.size());
  for (int row = 0; row < 38; row++)
    for (int col = 0; col < 3; col++) {
      unsigned want = (unsigned)std::stoul(digits.substr(row * 6 + col * 2, 2), nullptr, 16);
      EXPECT_EQ(want, cz_table[row][col]) << "row " << row << " column " << col;
    }
}

// Per letter pair: WINDOWS small, capital; KEYBCS2 small, capital; base letter.
const struct Pair { unsigned char win_lo, win_up, kb_lo, kb_up; char base; } kPairs[18] = {
    {0xE1, 0xC1, 0xA0, 0x8F, 'a'}, {0xE9, 0xC9, 0x82, 0x90, 'e'}, {0xED, 0xCD, 0xA1, 0x8B, 'i'},
    {0xF3, 0xD3, 0xA2, 0x95, 'o'}, {0xFA, 0xDA, 0xA3, 0x97, 'u'}, {0xFD, 0xDD, 0x98, 0x9D, 'y'},
    {0xE8, 0xC8, 0x87, 0x80, 'c'}, {0xEF, 0xCF, 0x83, 0x85, 'd'}, {0xEC, 0xCC, 0x88, 0x89, 'e'},
    {0xF2, 0xD2, 0xA4, 0xA5, 'n'}, {0xF8, 0xD8, 0xA9, 0x9E, 'r'}, {0x9A, 0x8A, 0xA8, 0x9B, 's'},
    {0x9D, 0x8D, 0x9F, 0x86, 't'}, {0xF9, 0xD9, 0x96, 0xA6, 'u'}, {0x9E, 0x8E, 0x91, 0x92, 'z'},
    {0xE5, 0xC5, 0x8D, 0x8A, 'l'}, {0xBE, 0xBC, 0x8C, 0x9C, 'l'}, {0xF4, 0xD4, 0x93, 0xA7, 'o'}};

TEST(CodePages, LetterTablesAndWholeAlphabet) {
  std::string small, capital, bases;
  for (int k = 0; k < 18; k++) {
    const Pair &p = kPairs[k];
    unsigned char base = (unsigned char)p.base, BASE = (unsigned char)(p.base - 32);
    const unsigned char win[2][4] = {{p.win_lo, p.win_lo, p.win_up, base}, {p.win_up, p.win_lo, p.win_up, BASE}};
    unsigned char kb[2][4] = {{p.kb_lo, p.kb_lo, p.kb_up, base}, {p.kb_up, p.kb_lo, p.kb_up, BASE}};
    if (k == 17) kb[1][0] = 0x9C, kb[1][1] = 0x8C;  // Ô row: Ľ, ľ; 0xA7 in no letter column
    for (int r = 0; r < 2; r++)
      for (int c = 0; c < 4; c++) {
        EXPECT_EQ(win[r][c], cz_letters_win[2 * k + r][c]) << "win row " << 2 * k + r << " col " << c;
        EXPECT_EQ(kb[r][c], cz_letters_kbcs[2 * k + r][c]) << "kbcs row " << 2 * k + r << " col " << c;
      }
    small += (char)p.win_lo, capital += (char)p.win_up;
    bases += (char)base, bases += (char)BASE;
  }
  std::string text;
  for (size_t i = 0; i < small.size(); i++) text += small[i], text += capital[i];
  std::string up = text, low = text, stripped = text;
  EXPECT_EQ(1, cz_upper(&up[0]));
  EXPECT_EQ(1, cz_lower(&low[0]));
  EXPECT_EQ(1, cz_strip(&stripped[0]));
  for (size_t i = 0; i < small.size(); i++) {
    EXPECT_EQ(capital[i], up[2 * i]) << "upper of " << hex(small.substr(i, 1));
    EXPECT_EQ(small[i], low[2 * i + 1]) << "lower of " << hex(capital.substr(i, 1));
  }
  EXPECT_EQ(bases, stripped) << hex(stripped);
}

TEST(CodePages, ConvertEveryPair) {
  const int K = CZ_KEYBCS2, L = CZ_LATIN2, W = CZ_WINDOWS, A = CZ_ASCII;
  struct Row { int n; int from, to; const char *in, *out; int ret; } rows[] = {
      {1, W, K, "P\xF8\xEDli\x9A \x9Elu\x9Do", "P\xA9\xA1li\xA8 \x91lu\x9Fo", 1},
      {2, W, K, "\xBE\xD4", "\x8D\x9C", 1},           // ľ -> ĺ, Ô -> Ľ: the suite's own rows
      {3, W, 0, "\xE1", "\xA0", 1}, {4, W, 9, "\xE1", "\xA0", 1}, {5, W, -1, "\xE1", "\xA0", 1},
      {6, W, L, "\xBE\xC8", "\x92\xAC", 1},
      {7, W, W, "\xE1\xBE", "\xE1\xBE", 0},
      {8, W, A, "\x9Elu\x9Do\xE8k\xFD", "zlutocky", 0},  // changed, still 0
      {9, W, K, "\xA7\xB0 x", "\xA7\xB0 x", 0},       // § ° are no letters
      {10, K, W, "\x9C\x8C\x80", "\xC5\xE5\xC8", 1},  // 0x9C is Ľ, never Ô
      {11, K, L, "\xA0\x87", "\xA0\x9F", 1},          // á has the same byte, still found
      {12, K, W, "\xA7", "\xA7", 0}, {13, K, L, "\xA7", "\xA7", 0}, {14, 0, W, "\xA7", "\xA7", 0},
      {15, K, K, "\xA0", "\xA0", 0}, {16, K, 0, "\xA0", "\xA0", 0}, {17, 0, W, "\x87", "\xE8", 1},
      {18, K, A, "\x9A\xE1\x87", "sa\x87", 0},        // the WINDOWS letter table, as it stands
      {19, A, K, "\xE1x", "\xE1x", 1}, {20, A, W, "", "", 1},
      {21, W, K, "", "", 0}, {22, K, W, "ascii only", "ascii only", 0},
  };
  for (const Row &r : rows) {
    BoxRecorder rec;
    std::string text = r.in;
    int ret = cz_convert((int16_t)r.from, (int16_t)r.to, &text[0]);
    EXPECT_EQ(r.ret, ret) << "row " << r.n;
    EXPECT_EQ(hex(r.out), hex(text.c_str())) << "row " << r.n;
    EXPECT_EQ(0u, rec.count()) << "row " << r.n << ": " << rec.dump();
  }
  BoxRecorder rec;
  char latin2[] = "\xA0\x9F";
  EXPECT_EQ(0, cz_convert(CZ_LATIN2, CZ_WINDOWS, latin2));
  EXPECT_EQ("\\xA0\\x9F", hex(latin2));
  EXPECT_GT(kxtest::internal_error_line(rec.only(), "cz"), 0);
  rec.clear();
  EXPECT_EQ(0, cz_convert(CZ_WINDOWS, CZ_KEYBCS2, nullptr));
  EXPECT_EQ(0, cz_strip(nullptr) + cz_lower(nullptr) + cz_upper_char(nullptr));
  EXPECT_EQ(0u, rec.count()) << rec.dump();
}

TEST(CodePages, StripAndCaseResults) {
  struct Row { int n; Flag (*f)(char *); const char *in, *out; int ret; } rows[] = {
      {1, cz_lower, "\xE1", "\xE1", 1},   // already small, found: 1
      {2, cz_lower, "a", "a", 0},
      {3, cz_lower, "K\xD8\xCD\x8EX 1", "k\xF8\xED\x9Ex 1", 1},
      {4, cz_upper, "\xC1", "\xC1", 1},
      {5, cz_upper, "a\xBE\x9D\xE4\xF6", "A\xBC\x8D\xE4\xF6", 1},  // ä ö: no Czech letters
      {6, cz_upper, "12 \xA7", "12 \xA7", 0},
      {7, cz_strip, "abc \xE4", "abc \xE4", 0},
      {8, cz_strip, "\xC8\xE1p", "Cap", 1},
      {9, cz_strip_kbcs, "\x87\x80\x9C\x93", "cCLo", 1},
      {10, cz_strip_kbcs, "\xA7\xE1", "\xA7\xE1", 0},  // KEYBCS2 Ô stays
  };
  for (const Row &r : rows) {
    std::string text = r.in;
    EXPECT_EQ(r.ret, r.f(&text[0])) << "row " << r.n;
    EXPECT_EQ(hex(r.out), hex(text.c_str())) << "row " << r.n;
  }
  struct One { int n; Flag (*f)(char *); unsigned char in, out; int ret; } ones[] = {
      {1, cz_upper_char, 'a', 'A', 1}, {2, cz_upper_char, '1', '1', 0}, {3, cz_upper_char, 0xF8, 0xD8, 1},
      {4, cz_lower_char, 0xD8, 0xF8, 1}, {5, cz_lower_char, 0xE1, 0xE1, 1}, {6, cz_strip_char, 0x8A, 'S', 1},
      {7, cz_strip_char, 0xB0, 0xB0, 0}, {8, cz_strip_char, 0, 0, 0},
  };
  for (const One &o : ones) {
    char c = (char)o.in;
    EXPECT_EQ(o.ret, o.f(&c)) << "char row " << o.n;
    EXPECT_EQ(o.out, (unsigned char)c) << "char row " << o.n;
  }
}

}  // namespace
