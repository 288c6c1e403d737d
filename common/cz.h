// cz.h - code pages: Czech and Slovak letters in four encodings, diacritics and case.
//
// Every text of the suite is Windows-1250. Texts for older tools and printers may have to be in
// one of the other Czech encodings, and names and keys are often compared without diacritics.
// This module converts the Czech and Slovak letters between the encodings, strips diacritics
// and changes the case of Windows-1250 text.
//
// All routines work in place on NUL-terminated byte strings and know only the letters of the
// tables below (plus the guillemets « » in the conversion table): every byte below 128 other
// than the ASCII letters handled by the case routines, and every byte that is in no table, is
// left as it is. Nothing is allocated. A null text does nothing and gives 0, without a report.
//
// Every routine returns the 16-bit flag 1 or 0; 0 is not always a failure here -- it also means
// "nothing was to be done" (see each routine).
#ifndef KX_CZ_H
#define KX_CZ_H

#include "common/co.h"

// Encoding codes. Code 0 is accepted wherever a code is and is treated as CZ_KEYBCS2; so is any
// code outside 0-4. Nothing in this module produces code 0.
//   1 KEYBCS2  the Kamenický brothers' code page (code page 895)  name "KEYBCS2"
//   2 LATIN2   IBM code page 852                                  name "LATIN2"
//   3 WINDOWS  Windows-1250                                       name "CP1250"
//   4 ASCII    7-bit ASCII, diacritics removed                    name "ASCII"
enum { CZ_KEYBCS2 = 1, CZ_LATIN2 = 2, CZ_WINDOWS = 3, CZ_ASCII = 4 };

enum { CZ_TABLE_ROWS = 38, CZ_LETTER_ROWS = 36 };

extern const unsigned char cz_table[CZ_TABLE_ROWS][3];
// The conversion table: per row the byte of one character in KEYBCS2, LATIN2 and WINDOWS (in
// this column order), rows for á Á é É í Í ó Ó ú Ú ý Ý č Č ď Ď ě Ě ň Ň ř Ř š Š ť Ť ů Ů ž Ž ĺ Ĺ ľ
// Ľ ô Ô « ». A conversion searches the source column from row 0 to row 37; the first row whose
// byte equals the input byte gives the output byte from the target column.
// The table is the suite's own and differs from the published code pages on purpose: rows
// 30-33 (ĺ Ĺ ľ Ľ) hold the other letter of the pair in the WINDOWS column (ĺ <-> ľ, Ĺ <-> Ľ),
// and the Ô row (35) holds the KEYBCS2 byte of Ľ (0x9C), so KEYBCS2 0x9C always converts as Ľ
// and WINDOWS Ô (0xD4) converts to KEYBCS2 0x9C.

extern const unsigned char cz_letters_kbcs[CZ_LETTER_ROWS][4];
extern const unsigned char cz_letters_win[CZ_LETTER_ROWS][4];
// The letter tables of KEYBCS2 and WINDOWS: per row the letter, its lower-case form, its
// upper-case form and its ASCII base letter (which keeps the case: á -> a, Á -> A), for the
// letters á Á é É í Í ó Ó ú Ú ý Ý č Č ď Ď ě Ě ň Ň ř Ř š Š ť Ť ů Ů ž Ž ĺ Ĺ ľ Ľ ô Ô in this order.
// Rows are searched in order, first match wins. The bytes are those of the published code
// pages, with one departure in cz_letters_kbcs: the Ô row holds the letter 0x9C and the
// lower-case 0x8C (Ľ and ľ; its upper-case byte is Ô's own 0xA7), so 0x9C is always Ľ (row 33
// comes first) and the real KEYBCS2 Ô (0xA7) is in no letter column: cz_strip_kbcs never
// changes it.

Flag cz_convert(int16_t from, int16_t to, char *text);
// Converts text in place from encoding `from` to encoding `to`.
//   from LATIN2: not supported as a source: InternalError("cz", line), text unchanged, 0.
//   from ASCII: nothing to do, text unchanged, 1.
//   from WINDOWS: to KEYBCS2 (also 0 and any unknown code) the WINDOWS column to the KEYBCS2
//     column; to LATIN2 the WINDOWS column to the LATIN2 column; to WINDOWS nothing (0); to
//     ASCII cz_strip.
//   from KEYBCS2 (also 0 and any unknown code): to KEYBCS2 (0, unknown) nothing (0); to LATIN2
//     and to WINDOWS the KEYBCS2 column to the target column; to ASCII cz_strip -- the WINDOWS
//     letter table applied to the KEYBCS2 bytes as they stand (KEYBCS2 text meant for ASCII is
//     to be converted to WINDOWS first).
// A table conversion looks up every byte of 128 or more in the source column of cz_table
// (rows 0 to 37, first match wins) and replaces it by the target column's byte of that row;
// unmatched bytes stay.
// Returns 1 when a table conversion found at least one byte in the table (a found byte counts
// even when its target byte has the same value, such as á 0xA0 from KEYBCS2 to LATIN2).
// Returns 0 for a null text (no report), when there was nothing to do, after the LATIN2-source
// report, and for every conversion to ASCII whatever it changed.

Flag cz_strip(char *text);
// Replaces every byte found in the letter column of cz_letters_win by its ASCII base letter.
// Returns 1 when any byte was replaced; 0 when none was, or for a null text.

Flag cz_strip_kbcs(char *text);
// The same as cz_strip for KEYBCS2 text, with cz_letters_kbcs. KEYBCS2 Ô (0xA7) stays.

Flag cz_lower(char *text);
// Lower case of WINDOWS text: each byte of 128 or more found in the letter column of
// cz_letters_win becomes the row's lower-case byte; each byte A-Z gets 32 added. Other bytes
// stay (ä, ö and the like are not Czech letters and are not changed).
// Returns 1 when an ASCII letter was changed or any byte of 128 or more was found in the table,
// even one already in lower case (so the text "á" gives 1 and stays); 0 otherwise ("a" gives 0)
// and for a null text.

Flag cz_upper(char *text);
// Upper case of WINDOWS text, the mirror of cz_lower: the table's upper-case byte, a-z minus 32.
// Returns 1 when an ASCII letter was changed or any byte of 128 or more was found in the table,
// even one already in upper case; 0 otherwise and for a null text.

Flag cz_strip_char(char *c);
Flag cz_lower_char(char *c);
Flag cz_upper_char(char *c);
// The same for the single byte *c: the byte is put into a two-byte string, cz_strip, cz_lower
// resp. cz_upper is applied, and the byte is written back only when the routine returned 1.
// Return the routine's result; 0 for a null pointer (no report). A NUL byte gives 0.

// ---- Unicode -------------------------------------------------------------------------------
// The whole Windows-1250 code page (not only the Czech letters above), for texts that leave the
// suite in Unicode: the UTF-8 log, names for tools that read UTF-8.

uint32_t cz_unicode(unsigned char c);
// The Unicode code point of the Windows-1250 byte c; 0 for the five bytes the code page leaves
// undefined (0x81 0x83 0x88 0x90 0x98) and for c = 0.

Flag cz_to_utf8(const char *text, char *utf8, size_t size);
// Converts the Windows-1250 text to UTF-8 into utf8 (size bytes, always terminated when
// size > 0); an undefined byte becomes U+FFFD. Returns 1; 0 when the whole text did not fit
// (utf8 then holds the characters that did, none cut in half), when size is 0 or an argument
// is null (no report).
#endif
