// ssc.h - line scanning: cleaning and splitting the keyword and list lines of the text files on
// the installation medium.
//
// Every function works on a NUL-terminated text in place: the text only ever gets shorter, so
// the caller's buffer is never written beyond its terminating NUL. Out buffers come with their
// size; a part that does not fit is cut at size - 1 characters and always terminated.
//
// Words: "blank" below is the space character. Tabs are turned into blanks before a line is
// trimmed; a word ends at the first white-space character (blank, tab, CR, LF, VT, FF).
//
// All return the suite's success flag. A null text or buffer, or an out size below 1, is an
// internal error (InternalError("ssc", line)) and the function returns 0 -- except ReplaceChar,
// which returns 0 silently. No function shows any other message.
#ifndef KX_SSC_H
#define KX_SSC_H

#include "common/co.h"

Flag SplitFirstWord(char *line, char *word, int32_t word_size);
// Splits a keyword line into its first word and the rest.
//   1. A line feed at the very end is cut off; every tab becomes a blank; leading blanks are
//      removed (the text shifted left) and trailing blanks cut.
//   2. An empty line (or one with nothing but white space left) fails: returns 0, the line
//      holds what step 1 made of it, the word buffer is empty.
//   3. Otherwise the first word goes to word (cut at word_size - 1 characters) and the line is
//      shifted left to start just after the whole word, leading blanks removed again.
// Returns 1 when a word was found. So "DISK:   3\n" gives the word "DISK:" and leaves "3".

Flag CleanListLine(char *line);
// Cleans one line of a list file: CR and LF become blanks, the line is cut at the first ";"
// (the rest is a comment), tabs become blanks, leading and trailing blanks are removed.
// Returns 1 when something is left; 0 for a line that was empty, is empty after the cut (it
// began with ";") or held only blanks. So "  NAME.EXE\t; note\r\n" leaves "NAME.EXE".

Flag RemoveChar(char *text, char c);
// Removes every occurrence of c from text, closing the gaps. Returns 1 (also when there was
// none; c == NUL removes nothing).

Flag ExtractDelimited(char *line, char *out, char delimiter, int32_t out_size);
// Takes the first delimited part out of the line: the characters between the first and the
// second occurrence of delimiter go to out (cut at out_size - 1 characters), and the line loses
// the first delimiter through the second, the text after the second moving up.
// "x |ab| y" with '|' gives "ab" and leaves "x  y".
// Returns 1. Returns 0 with line and out unchanged when there are fewer than two delimiters or
// nothing stands between the first two (a NUL delimiter never occurs).

Flag StringsEqual(const char *a, const char *b);
// Returns 1 when a and b are equal byte for byte (case-sensitive), else 0.

Flag StripLeadingZeros(char *text);
// Removes the leading "0" characters ("007" -> "7"). Returns 1 when anything is left, 0 when
// the text is empty afterwards ("000" -> "", 0).

Flag ReplaceChar(char *text, char from, char to);
// Replaces every occurrence of from in text by to (to == NUL ends the text at the first one;
// from == NUL replaces nothing). Returns 1; a null text returns 0 WITHOUT any message.

#endif
