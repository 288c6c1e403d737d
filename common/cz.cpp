// cz.cpp - Czech and Slovak letters in the four encodings of the suite, diacritics, case.
#include "common/cz.h"

#include "common/we.h"

#include <string.h>

// Columns: KEYBCS2, LATIN2, WINDOWS. Searched from the top, first match wins.
// Keep this: rows 30-33 carry the other letter of the pair ĺ/ľ (Ĺ/Ľ) in the WINDOWS column and
// the Ô row has the KEYBCS2 byte of Ľ; texts written by earlier versions rely on it.
// clang-format off
const unsigned char cz_table[CZ_TABLE_ROWS][3] = {
    {0xA0, 0xA0, 0xE1},  //  0 á
    {0x8F, 0xB5, 0xC1},  //  1 Á
    {0x82, 0x82, 0xE9},  //  2 é
    {0x90, 0x90, 0xC9},  //  3 É
    {0xA1, 0xA1, 0xED},  //  4 í
    {0x8B, 0xD6, 0xCD},  //  5 Í
    {0xA2, 0xA2, 0xF3},  //  6 ó
    {0x95, 0xE0, 0xD3},  //  7 Ó
    {0xA3, 0xA3, 0xFA},  //  8 ú
    {0x97, 0xE9, 0xDA},  //  9 Ú
    {0x98, 0xEC, 0xFD},  // 10 ý
    {0x9D, 0xED, 0xDD},  // 11 Ý
    {0x87, 0x9F, 0xE8},  // 12 č
    {0x80, 0xAC, 0xC8},  // 13 Č
    {0x83, 0xD4, 0xEF},  // 14 ď
    {0x85, 0xD2, 0xCF},  // 15 Ď
    {0x88, 0xD8, 0xEC},  // 16 ě
    {0x89, 0xB7, 0xCC},  // 17 Ě
    {0xA4, 0xE5, 0xF2},  // 18 ň
    {0xA5, 0xD5, 0xD2},  // 19 Ň
    {0xA9, 0xFD, 0xF8},  // 20 ř
    {0x9E, 0xFC, 0xD8},  // 21 Ř
    {0xA8, 0xE7, 0x9A},  // 22 š
    {0x9B, 0xE6, 0x8A},  // 23 Š
    {0x9F, 0x9C, 0x9D},  // 24 ť
    {0x86, 0x9B, 0x8D},  // 25 Ť
    {0x96, 0x85, 0xF9},  // 26 ů
    {0xA6, 0xDE, 0xD9},  // 27 Ů
    {0x91, 0xA7, 0x9E},  // 28 ž
    {0x92, 0xA6, 0x8E},  // 29 Ž
    {0x8D, 0x92, 0xBE},  // 30 ĺ (WINDOWS: ľ)
    {0x8A, 0x91, 0xBC},  // 31 Ĺ (WINDOWS: Ľ)
    {0x8C, 0x96, 0xE5},  // 32 ľ (WINDOWS: ĺ)
    {0x9C, 0x95, 0xC5},  // 33 Ľ (WINDOWS: Ĺ)
    {0x93, 0x93, 0xF4},  // 34 ô
    {0x9C, 0xE2, 0xD4},  // 35 Ô (KEYBCS2: Ľ)
    {0xAE, 0xAE, 0xAB},  // 36 «
    {0xAF, 0xAF, 0xBB},  // 37 »
};
// clang-format on

// Letter, lower-case form, upper-case form, ASCII base letter; code page 895.
// Keep this: the Ô row holds Ľ (0x9C) and ľ (0x8C), so 0x9C always reads as Ľ (row 33 comes
// first) and the real Ô (0xA7) is in no row and never changed.
// clang-format off
const unsigned char cz_letters_kbcs[CZ_LETTER_ROWS][4] = {
    {0xA0, 0xA0, 0x8F, 'a'},  // á
    {0x8F, 0xA0, 0x8F, 'A'},  // Á
    {0x82, 0x82, 0x90, 'e'},  // é
    {0x90, 0x82, 0x90, 'E'},  // É
    {0xA1, 0xA1, 0x8B, 'i'},  // í
    {0x8B, 0xA1, 0x8B, 'I'},  // Í
    {0xA2, 0xA2, 0x95, 'o'},  // ó
    {0x95, 0xA2, 0x95, 'O'},  // Ó
    {0xA3, 0xA3, 0x97, 'u'},  // ú
    {0x97, 0xA3, 0x97, 'U'},  // Ú
    {0x98, 0x98, 0x9D, 'y'},  // ý
    {0x9D, 0x98, 0x9D, 'Y'},  // Ý
    {0x87, 0x87, 0x80, 'c'},  // č
    {0x80, 0x87, 0x80, 'C'},  // Č
    {0x83, 0x83, 0x85, 'd'},  // ď
    {0x85, 0x83, 0x85, 'D'},  // Ď
    {0x88, 0x88, 0x89, 'e'},  // ě
    {0x89, 0x88, 0x89, 'E'},  // Ě
    {0xA4, 0xA4, 0xA5, 'n'},  // ň
    {0xA5, 0xA4, 0xA5, 'N'},  // Ň
    {0xA9, 0xA9, 0x9E, 'r'},  // ř
    {0x9E, 0xA9, 0x9E, 'R'},  // Ř
    {0xA8, 0xA8, 0x9B, 's'},  // š
    {0x9B, 0xA8, 0x9B, 'S'},  // Š
    {0x9F, 0x9F, 0x86, 't'},  // ť
    {0x86, 0x9F, 0x86, 'T'},  // Ť
    {0x96, 0x96, 0xA6, 'u'},  // ů
    {0xA6, 0x96, 0xA6, 'U'},  // Ů
    {0x91, 0x91, 0x92, 'z'},  // ž
    {0x92, 0x91, 0x92, 'Z'},  // Ž
    {0x8D, 0x8D, 0x8A, 'l'},  // ĺ
    {0x8A, 0x8D, 0x8A, 'L'},  // Ĺ
    {0x8C, 0x8C, 0x9C, 'l'},  // ľ
    {0x9C, 0x8C, 0x9C, 'L'},  // Ľ
    {0x93, 0x93, 0xA7, 'o'},  // ô
    {0x9C, 0x8C, 0xA7, 'O'},  // Ô (see above)
};
// clang-format on

// Letter, lower-case form, upper-case form, ASCII base letter; Windows-1250.
// clang-format off
const unsigned char cz_letters_win[CZ_LETTER_ROWS][4] = {
    {0xE1, 0xE1, 0xC1, 'a'},  // á
    {0xC1, 0xE1, 0xC1, 'A'},  // Á
    {0xE9, 0xE9, 0xC9, 'e'},  // é
    {0xC9, 0xE9, 0xC9, 'E'},  // É
    {0xED, 0xED, 0xCD, 'i'},  // í
    {0xCD, 0xED, 0xCD, 'I'},  // Í
    {0xF3, 0xF3, 0xD3, 'o'},  // ó
    {0xD3, 0xF3, 0xD3, 'O'},  // Ó
    {0xFA, 0xFA, 0xDA, 'u'},  // ú
    {0xDA, 0xFA, 0xDA, 'U'},  // Ú
    {0xFD, 0xFD, 0xDD, 'y'},  // ý
    {0xDD, 0xFD, 0xDD, 'Y'},  // Ý
    {0xE8, 0xE8, 0xC8, 'c'},  // č
    {0xC8, 0xE8, 0xC8, 'C'},  // Č
    {0xEF, 0xEF, 0xCF, 'd'},  // ď
    {0xCF, 0xEF, 0xCF, 'D'},  // Ď
    {0xEC, 0xEC, 0xCC, 'e'},  // ě
    {0xCC, 0xEC, 0xCC, 'E'},  // Ě
    {0xF2, 0xF2, 0xD2, 'n'},  // ň
    {0xD2, 0xF2, 0xD2, 'N'},  // Ň
    {0xF8, 0xF8, 0xD8, 'r'},  // ř
    {0xD8, 0xF8, 0xD8, 'R'},  // Ř
    {0x9A, 0x9A, 0x8A, 's'},  // š
    {0x8A, 0x9A, 0x8A, 'S'},  // Š
    {0x9D, 0x9D, 0x8D, 't'},  // ť
    {0x8D, 0x9D, 0x8D, 'T'},  // Ť
    {0xF9, 0xF9, 0xD9, 'u'},  // ů
    {0xD9, 0xF9, 0xD9, 'U'},  // Ů
    {0x9E, 0x9E, 0x8E, 'z'},  // ž
    {0x8E, 0x9E, 0x8E, 'Z'},  // Ž
    {0xE5, 0xE5, 0xC5, 'l'},  // ĺ
    {0xC5, 0xE5, 0xC5, 'L'},  // Ĺ
    {0xBE, 0xBE, 0xBC, 'l'},  // ľ
    {0xBC, 0xBE, 0xBC, 'L'},  // Ľ
    {0xF4, 0xF4, 0xD4, 'o'},  // ô
    {0xD4, 0xF4, 0xD4, 'O'},  // Ô
};
// clang-format on

enum { LETTER = 0, LOWER = 1, UPPER = 2, BASE = 3 };

// Row of the letter table whose letter byte is c, or -1.
static int letter_row(const unsigned char (*letters)[4], unsigned char c) {
  for (int row = 0; row < CZ_LETTER_ROWS; row++)
    if (letters[row][LETTER] == c) return row;
  return -1;
}

// Replaces every byte of 128 or more found in column `from` of cz_table by the byte of column
// `to` of the same row. 1 when any byte was found (even when the target byte is the same).
static Flag convert_columns(char *text, int from, int to) {
  Flag found = 0;
  for (unsigned char *p = (unsigned char *)text; *p; p++) {
    if (*p < 0x80) continue;
    for (int row = 0; row < CZ_TABLE_ROWS; row++) {
      if (cz_table[row][from] == *p) {
        *p = cz_table[row][to];
        found = 1;
        break;
      }
    }
  }
  return found;
}

// Replaces every letter of the table by its base letter; 1 when any was replaced.
static Flag strip_with(char *text, const unsigned char (*letters)[4]) {
  if (!text) return 0;
  Flag replaced = 0;
  for (unsigned char *p = (unsigned char *)text; *p; p++) {
    if (*p < 0x80) continue;
    int row = letter_row(letters, *p);
    if (row >= 0) {
      *p = letters[row][BASE];
      replaced = 1;
    }
  }
  return replaced;
}

// Case change of WINDOWS text: column LOWER or UPPER of the letter table.
static Flag change_case(char *text, int column) {
  if (!text) return 0;
  Flag hit = 0;
  for (unsigned char *p = (unsigned char *)text; *p; p++) {
    if (*p >= 0x80) {
      int row = letter_row(cz_letters_win, *p);
      if (row >= 0) {
        *p = cz_letters_win[row][column];
        hit = 1;
      }
    } else if (column == LOWER && *p >= 'A' && *p <= 'Z') {
      *p += 32;
      hit = 1;
    } else if (column == UPPER && *p >= 'a' && *p <= 'z') {
      *p -= 32;
      hit = 1;
    }
  }
  return hit;
}

enum { COL_KEYBCS2 = 0, COL_LATIN2 = 1, COL_WINDOWS = 2 };

Flag cz_convert(int16_t from, int16_t to, char *text) {
  if (!text) return 0;
  switch (from) {
    case CZ_LATIN2: InternalError("cz", __LINE__); return 0;
    case CZ_ASCII: return 1;
    case CZ_WINDOWS:
      switch (to) {
        case CZ_LATIN2: return convert_columns(text, COL_WINDOWS, COL_LATIN2);
        case CZ_WINDOWS: return 0;
        case CZ_ASCII: cz_strip(text); return 0;
        default: return convert_columns(text, COL_WINDOWS, COL_KEYBCS2);
      }
    default:  // 0, 1 and any other code: KEYBCS2
      switch (to) {
        case CZ_LATIN2: return convert_columns(text, COL_KEYBCS2, COL_LATIN2);
        case CZ_WINDOWS: return convert_columns(text, COL_KEYBCS2, COL_WINDOWS);
        case CZ_ASCII: cz_strip(text); return 0;
        default: return 0;
      }
  }
}

Flag cz_strip(char *text) { return strip_with(text, cz_letters_win); }

Flag cz_strip_kbcs(char *text) { return strip_with(text, cz_letters_kbcs); }

Flag cz_lower(char *text) { return change_case(text, LOWER); }

Flag cz_upper(char *text) { return change_case(text, UPPER); }

// The byte as a one-character string through the string routine, written back on 1.
static Flag on_char(char *c, Flag (*routine)(char *)) {
  if (!c) return 0;
  char one[2] = {*c, 0};
  Flag result = routine(one);
  if (result) *c = one[0];
  return result;
}

Flag cz_strip_char(char *c) { return on_char(c, cz_strip); }

Flag cz_lower_char(char *c) { return on_char(c, cz_lower); }

Flag cz_upper_char(char *c) { return on_char(c, cz_upper); }

// ---- Unicode -------------------------------------------------------------------------------

// Unicode of the bytes 0x80-0xFF; 0 where Windows-1250 defines no character.
// clang-format off
static const uint16_t cp1250_high[128] = {
    0x20AC, 0x0000, 0x201A, 0x0000, 0x201E, 0x2026, 0x2020, 0x2021,
    0x0000, 0x2030, 0x0160, 0x2039, 0x015A, 0x0164, 0x017D, 0x0179,
    0x0000, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x0000, 0x2122, 0x0161, 0x203A, 0x015B, 0x0165, 0x017E, 0x017A,
    0x00A0, 0x02C7, 0x02D8, 0x0141, 0x00A4, 0x0104, 0x00A6, 0x00A7,
    0x00A8, 0x00A9, 0x015E, 0x00AB, 0x00AC, 0x00AD, 0x00AE, 0x017B,
    0x00B0, 0x00B1, 0x02DB, 0x0142, 0x00B4, 0x00B5, 0x00B6, 0x00B7,
    0x00B8, 0x0105, 0x015F, 0x00BB, 0x013D, 0x02DD, 0x013E, 0x017C,
    0x0154, 0x00C1, 0x00C2, 0x0102, 0x00C4, 0x0139, 0x0106, 0x00C7,
    0x010C, 0x00C9, 0x0118, 0x00CB, 0x011A, 0x00CD, 0x00CE, 0x010E,
    0x0110, 0x0143, 0x0147, 0x00D3, 0x00D4, 0x0150, 0x00D6, 0x00D7,
    0x0158, 0x016E, 0x00DA, 0x0170, 0x00DC, 0x00DD, 0x0162, 0x00DF,
    0x0155, 0x00E1, 0x00E2, 0x0103, 0x00E4, 0x013A, 0x0107, 0x00E7,
    0x010D, 0x00E9, 0x0119, 0x00EB, 0x011B, 0x00ED, 0x00EE, 0x010F,
    0x0111, 0x0144, 0x0148, 0x00F3, 0x00F4, 0x0151, 0x00F6, 0x00F7,
    0x0159, 0x016F, 0x00FA, 0x0171, 0x00FC, 0x00FD, 0x0163, 0x02D9,
};
// clang-format on

uint32_t cz_unicode(unsigned char c) { return c < 0x80 ? c : cp1250_high[c - 0x80]; }

Flag cz_to_utf8(const char *text, char *utf8, size_t size) {
  if (!text || !utf8 || size == 0) return 0;
  size_t n = 0;
  utf8[0] = 0;
  for (const unsigned char *p = (const unsigned char *)text; *p; p++) {
    uint32_t c = cz_unicode(*p);
    if (c == 0) c = 0xFFFD;
    char bytes[3];
    size_t length;
    if (c < 0x80) {
      bytes[0] = (char)c, length = 1;
    } else if (c < 0x800) {
      bytes[0] = (char)(0xC0 | (c >> 6)), bytes[1] = (char)(0x80 | (c & 0x3F)), length = 2;
    } else {
      bytes[0] = (char)(0xE0 | (c >> 12)), bytes[1] = (char)(0x80 | ((c >> 6) & 0x3F));
      bytes[2] = (char)(0x80 | (c & 0x3F)), length = 3;
    }
    if (n + length >= size) return 0;
    memcpy(utf8 + n, bytes, length);
    n += length;
    utf8[n] = 0;
  }
  return 1;
}
