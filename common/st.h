// st.h - strings: null-safe helpers over NUL-terminated Windows-1250 byte strings.
//
// Allocation of string buffers, trimming and blank normalisation, bounded copy and
// concatenation with a visible cut mark, a Czech-aware collation, a natural comparison (text,
// then number, then text), a comparison blind to "&" accelerator marks for menu and button
// labels, a loose equality test and wildcard matching.
//
// Null arguments: every routine that gets a null pointer where it needs a string raises
// InternalError("st", line) and returns 0 (or null); the exceptions are named below (st_len,
// st_cmp, st_cmp_trimmed). Allocation failure raises OutOfMemoryError(). Nothing else is
// reported.
//
// Lengths and limits are signed 16-bit. Comparisons return -1, 0 or 1 (a before b, equal,
// a after b).
#ifndef KX_ST_H
#define KX_ST_H

#include "common/co.h"

#include <stddef.h>

// ---- Allocation ----------------------------------------------------------------------------

Flag st_alloc(int16_t length, char **result);
// Takes length + 1 zeroed bytes from the memory manager (counted allocator, place "st") and
// stores the buffer in *result.
// Returns 1 on success; 0 after OutOfMemoryError() when the memory manager has no block (then
// *result is null); 0 after InternalError for a null result or a negative length (*result is
// set to null when result is not null).

Flag st_free(char **text);
// Gives *text back to the memory manager (place "st") and sets *text to null; a null *text is
// left alone. Returns 1; 0 after InternalError when text itself is null.

Flag st_dup(const char *text, char **result);
// A new buffer (as st_alloc, of the text's length) holding a copy of text, stored in *result.
// Returns 1 on success; 0 after OutOfMemoryError() (then *result is null); 0 after
// InternalError for a null text or result (*result is null when result is not null).
// Release the copy with st_free.

// ---- Length, trimming, case ----------------------------------------------------------------

int16_t st_len(const char *text);
// The length of text in bytes. A null text has length 0, without a report. A text longer than
// 32767 bytes gives 32767.

Flag st_trim(char *text);
// Removes blanks and tabs at both ends, in place (the text moves to the start of the buffer).
// Returns 1 when the result is not empty; 0 when it is empty, and 0 after InternalError for a
// null text.

Flag st_squeeze(char *text);
// Removes spaces at both ends and replaces every run of spaces inside by one space, in place.
// Tabs are not touched. Returns 1; 0 after InternalError for a null text.

Flag st_upper(char *text);
Flag st_lower(char *text);
// cz_upper, resp. cz_lower of the text (Windows-1250 case change, see cz.h), with its result:
// 1 when an ASCII letter was changed or any Czech or Slovak letter was met, else 0.
// 0 after InternalError for a null text.

// ---- Comparisons ---------------------------------------------------------------------------

int16_t st_cmp(const char *a, const char *b);
// Byte comparison. Null texts are allowed and not reported: both null 0, only a null -1,
// only b null 1. Otherwise, when the first bytes differ they decide compared as signed bytes
// (so a text starting with a byte of 128 or more, or an empty text against one, sorts before
// a text starting with an ASCII byte: "é..." < "a...", "" > "\x80"); when they are equal the
// texts are compared as unsigned bytes (strcmp).

int16_t st_cmp_trimmed(char *a, char *b);
// st_trim on both texts in place (the callers' strings are changed, and stay trimmed), then
// st_cmp. Null texts as in st_cmp, without a report.

int16_t st_collate(const char *a, const char *b);
// Czech-aware ordering of Windows-1250 texts.
// Both texts are walked while their bytes are equal. If one ends there: both ended 0, a longer
// 1, b longer -1. At the first differing pair x (from a), y (from b), with upper and strip the
// single-byte cz_upper_char and cz_strip_char:
//   1. upper(x) = upper(y) (case only): 1 when strip(x) <= strip(y), else -1 -- a small letter
//      sorts before its capital (a < A, á < Á);
//   2. else strip(x) = strip(y) (accent only): 1 when upper(x) >= upper(y) as unsigned bytes,
//      else -1 -- a plain letter before its accented forms (a < á, c < č);
//   3. else, when upper(strip(x)) != upper(strip(y)), 1 when upper(strip(x)) >= upper(strip(y))
//      as signed bytes, else -1 -- base letters in alphabet order (č < d, z > č); bytes of 128
//      or more that are no letter sort before every ASCII byte;
//   4. else 1 when strip(x) >= strip(y) as unsigned bytes, else -1 (A < á).
// There is no digraph handling: "ch" is two letters (chata < čáp < hrad).
// Mind: only the first differing pair counts, and rules 1 and 4 together are not transitive
// when case and accent differ at once: a < á < Á, yet Á < a (rule 4). A list mixing a small
// plain letter with the accented capital of the same letter at the deciding position has no
// consistent order; sorting such a list gives an order that depends on the sort.
// 0 after InternalError for a null text.

int16_t st_collate_label(const char *a, const char *b);
// As st_collate, ignoring "&" accelerator marks, for menu and button labels.
// Both texts are walked with separate positions: when both stand on "&" both skip it; when only
// one does, only that one skips it. The walk stops at the first differing pair (ranked as in
// st_collate), or when a's byte at a's position is NUL, or when b's byte AT A'S POSITION (not at
// b's own) is NUL. A stop without a differing pair gives: a at its end and b at its own end 0;
// a at its end and b not -1; a not at its end 1. Once a mark was skipped in one text only, this
// end test is off by the number of marks skipped; that is wanted, and it makes for example
// ("&Soubor", "Soubor") 1 but ("Soubor", "&Soubor") 0. 0 after InternalError for a null text.

int16_t st_natural(const char *a, const char *b);
// Natural order: text, then number, then text (file2 < file10, file10a < file10b).
// When both texts are shorter than 100 bytes each is split into its leading run of non-digits,
// the following run of ASCII digits 0-9 and the rest. The leading runs are compared with
// st_collate, and a non-zero result is final. Then both digit runs are read as 16-bit numbers:
// an empty run reads as 0 (so "file" < "file2"), and a run whose value is above 32767 cannot be
// read -- then the result is 0. The smaller number ranks first; equal numbers (007 = 7) pass on
// to the rests, compared with st_collate.
// Texts of 100 bytes or more (either of them) are compared with st_collate only.
// 0 after InternalError for a null text.

int16_t st_cmp_right(const char *a, const char *b);
// Right-aligned comparison: both texts are copied (at most 80 bytes each), the shorter copy is
// padded on the left with blanks to the longer one's length, and the copies are compared with
// st_cmp -- so numbers written as digits compare by value (9 < 12). 0 after InternalError for a
// null text.

Flag st_same(const char *a, const char *b);
// Loose equality: both texts are copied (at most 80 bytes each) and squeezed (st_squeeze);
// they are the same when the copies have the same length and are equal after cz_strip and
// cz_upper. So "Žluťoučký  kůň" and " zlutoucky Kun " are the same. Returns 1 for the same,
// else 0; 0 after InternalError for a null text.

// ---- Searching -----------------------------------------------------------------------------

char *st_chr(const char *text, char c);
char *st_rchr(const char *text, char c);
// The first, resp. last, occurrence of c in text, or null when absent. A NUL c is never found
// (null). Null after InternalError for a null text.

char *st_str(const char *text, const char *part);
// The first occurrence of part in text, or null when absent; an empty part is found at the
// start of text. Null after InternalError for a null text or part.

char *st_chr_any(const char *text, const char *set);
// The characters of set are taken in set order; the first one that occurs in text at all is
// searched, and its first occurrence returned. Null when no character of set occurs (also for
// an empty set); null after InternalError for a null text or set.

// ---- Bounded copy and concatenation --------------------------------------------------------

Flag st_copy(char *destination, const char *source, int16_t limit);
// Copies source into destination, at most limit characters; when source is longer the
// destination gets a NUL at position limit (it needs limit + 1 bytes). A limit of 0 or less
// copies without bound. Source and destination may overlap. Returns 1; 0 after InternalError
// for a null destination or source (nothing written).

Flag st_cat(char *destination, const char *source, int16_t limit);
// Appends source to destination. When the joined length would exceed limit, only characters
// up to position limit are kept, then the byte 0xAF is put at position limit - 1 and NUL at
// position limit, so a cut text is exactly limit characters long and visibly ends in the mark
// (the destination needs limit + 1 bytes). A destination already longer than limit is cut the
// same way. A joined length of exactly limit is not cut. A limit of 0 or less appends without
// bound. Returns 1, also when the text was cut; 0 after InternalError for a null destination or
// source (nothing written).

Flag st_cat_char(char *text, char c, int16_t limit);
// Appends the one character c. Returns 0 and leaves text alone when limit > 0 and the new
// length would exceed limit (length + 1 > limit); else appends and returns 1 (a limit of 0 or
// less: no bound). 0 after InternalError for a null text.

// ---- Copy, append and join into a buffer of known size -----------------------------------------
//
// The one bounded copy of the suite's code: size is the buffer's size in bytes (its room for the
// NUL included), the result always terminated when size > 0, a text that does not fit cut at
// size - 1 characters (no mark). A null text counts as "". Each returns 1 when the whole text
// went in and 0 when it was cut (or size is 0: nothing written).

Flag st_put(char *buffer, size_t size, const char *text);
// buffer = text. buffer and text may overlap.

Flag st_put_part(char *buffer, size_t size, const char *text, size_t n);
// buffer = the first n characters of text (fewer when text ends before them; no byte of text
// past the n-th is read, so text may be a field without a NUL). 1 when those n went in whole.

Flag st_append(char *buffer, size_t size, const char *text);
// buffer = buffer + text. A buffer holding no NUL within size counts as full: it is terminated
// at size - 1 and the result is 0.

Flag st_join(char *buffer, size_t size, const char *a, const char *b = nullptr,
             const char *c = nullptr, const char *d = nullptr);
// buffer = a + b + c + d (null pieces empty): a path from its pieces, for example. 0 when the
// whole did not fit; the buffer then holds it cut.

// ---- Wildcards -----------------------------------------------------------------------------

Flag st_match(const char *text, const char *pattern);
// Wildcard match: "*" any run of characters (also none), "?" any one character, every other
// character itself (case counts). Recursive, without backtracking:
//   1. With no "*" in the pattern, the text must be exactly as long as the pattern and agree
//      with it at every position where the pattern has no "?".
//   2. With a "*" that is not the pattern's first character, the part before it must match the
//      start of the text position by position; the rest of the text is matched against the
//      pattern from the "*" on.
//   3. With a "*" first: a "*" at the end of the pattern matches any rest. When the next pattern
//      character is a plain one, the text moves on to the first occurrence of that character
//      (none: no match); when it is "?" (or another "*") the text does not move. The rest of
//      the text is matched against the pattern after the "*".
// Only the first occurrence is tried: "*a" does not match a text whose first "a" is not its
// last character ("banana"), and "*a?" matches "xab" but not "aab".
// Returns 1 on a match, else 0; 0 after InternalError for a null text or pattern.

#endif
