// ets.h - enumeration names: the tables through which flags, colours and other enumerated
// settings are written to and read from the configuration files as words.
//
// Each table maps a small integer to its name. Writing gives one name per value; reading takes
// the stored text (as the configuration store hands it over: trimmed) and gives the value whose
// name it matches, or the table's fallback value when it matches none. Reading never fails and
// never reports a bad text: a configuration file written by hand may hold anything, and the
// caller keeps the unknown text in the file.
//
// All names are Windows-1250. Upper-casing and folding below mean cz_upper, then cz_strip
// (common/cz.h): "světle šedá" folds to "SVETLE SEDA".
//
// Programming errors are reported with InternalError("ets", line): a null text to read (the
// fallback value is returned), a value to write that the table does not hold (the fallback
// value's name is returned). A write never returns null.
#ifndef KX_ETS_H
#define KX_ETS_H

#include "common/co.h"

// One enumeration: how a value is written and how a stored text is read back.
struct EnumNames {
  const char *what;                     // the enumeration's name, for reports ("flag", "colour")
  const char *(*write)(int16_t value);  // the name written for the value (never null)
  int16_t (*read)(const char *text);    // the value of a stored text; the table's fallback when
                                        // the text matches no name (reading never fails)
};

extern const EnumNames ets_flag;
// Flag, what "flag". Values 0 and 1.
//   write: 1 "Ano", 0 "Ne " (with the blank; the store trims it, so files hold "Ne"). Any
//     other non-zero value is true and writes "Ano", without a report.
//   read: the first 5 characters, upper-cased and folded; 1 when they contain "ON", "YES" or
//     "ANO" anywhere, else 0. So "Ano", "yes", "ON" and also "NONE" are 1; "Ne", "0", "false",
//     "" are 0; "xxxxxANO" is 0 (the word lies past the fifth character).

extern const EnumNames ets_draw_mode;
// Drawing mode, what "drawing mode". 0 "REPLACE", 1 "AND", 2 "OR", 3 "XOR".
//   read: the first 10 characters, upper-cased and folded; containing "XOR" gives 3, else
//     containing "OR" gives 2, else containing "AND" gives 1, else 0 (so "copy" is 0 and
//     "color" is 2).
//   fallback 0 (REPLACE).

extern const EnumNames ets_colour;
// Colour, what "colour": the 16 colours of the text-mode palette, written in Czech:
//    0 "černá"         BLACK          4 "červená"        RED          8 "tmavě šedá"    DARKGRAY
//    1 "modrá"         BLUE           5 "fialová"        MAGENTA      9 "světle modrá"  LIGHTBLUE
//    2 "zelená"        GREEN          6 "hnědá"          BROWN       10 "světle zelená" LIGHTGREEN
//    3 "modrozelená"   CYAN           7 "světle šedá"    LIGHTGRAY   11 "světle modrozelená"
//                                                                        LIGHTCYAN
//   12 "světle červená" LIGHTRED     13 "světle fialová" LIGHTMAGENTA 14 "žlutá" YELLOW
//   15 "bílá" (white)
//   read: the first 20 characters, upper-cased, folded and trimmed, compared for equality with
//     each colour's names: the folded Czech name ("SVETLE SEDA"), the same without the blank
//     ("SVETLESEDA") and the English name ("LIGHTGRAY"). Anything else, "bílá" and "WHITE"
//     included, is 15: white is the fallback.

extern const EnumNames ets_units;
// Units, what "units". 0 "mm", 1 "mils", 2 "m", 3 "km", 4 "inch".
//   read: the whole text, compared ignoring case and diacritics ("MM" is 0).
//   fallback 0 (mm).

extern const EnumNames ets_cursor;
// Cursor type, what "cursor type". 0 "NORMAL_CURSOR", 1 "LINE_CURSOR",
// 2 "OBLIQUE_LINE_CURSOR".
//   read: the whole text, compared ignoring case and diacritics.
//   fallback 0 (NORMAL_CURSOR).

extern const EnumNames ets_code_page;
// Code page of text output, what "code page". 0 "Nastavení při použití" (the code page set at
// the time of use), 1 "KEYBCS2", 2 "LATIN2", 3 "CP1250", 4 "ASCII"; values 1-4 are the
// encoding codes of common/cz.h.
//   read: the whole text, compared ignoring case and diacritics ("nastaveni pri pouziti" is 0).
//   fallback 0 (the code page set at the time of use).

enum { ETS_KEY_CODES = 368 };
extern const EnumNames ets_key;
// Keyboard key, what "key": key codes 0 to 367 (ETS_KEY_CODES names). English key words with
// "Shift+", "Alt+" or "Control+" for modified keys (0 "KB_null", 1 "Control+Break", 2 "Enter",
// 10 "Mezera" the space bar, 38 "Šipka_vlevo", ...), the characters themselves for character
// keys (114 "0", 144 "A", 222 "a", 278 "!", 295 the backslash, 299 the double quote, 301 the
// back quote), Czech names for the Czech letters (248 "a_s_čárkou", 267 "u_s_kroužkem"), and
// the table's own odd spellings, kept as they are: 17 "Control+BackSpace" beside 14
// "Backspace", 318 "Control_\", 319 "Alt_\", 331 "Alt'" (no underscore).
//   read: the whole text, compared byte for byte: case counts ("a" is 222, "A" is 144).
//   fallback 0 (KB_null).

extern const EnumNames ets_toolbar;
// Toolbar position, what "toolbar". 0 "TOP_TOOLBAR", 1 "BOTTOM_TOOLBAR", 2 "LEFT_TOOLBAR",
// 3 "RIGHT_TOOLBAR", 4 "FLOATING_TOOLBAR", 5 "HIDDEN_TOOLBAR".
//   read: the whole text, ignoring case and diacritics. fallback 0 (TOP_TOOLBAR).

extern const EnumNames ets_text_window;
// Text-window position, what "text window". 0 "NO_TEXT_WINDOW", 1 "TOP_TEXT_WINDOW",
// 2 "BOTTOM_TEXT_WINDOW", 3 "LEFT_TEXT_WINDOW", 4 "RIGHT_TEXT_WINDOW",
// 5 "FLOATING_TEXT_WINDOW".
//   read: the whole text, ignoring case and diacritics. fallback 0 (NO_TEXT_WINDOW).

extern const EnumNames ets_panning;
// Panning, what "panning". 0 "NO_PANNING", 1 "SCROLLBAR_PANNING", 2 "BLOCKS_PANNING",
// 3 "BOTH_PANNING".
//   read: the whole text, ignoring case and diacritics. fallback 0 (NO_PANNING).

extern const EnumNames ets_line_style;
// Line style (Czech, for display), what "line style". 0 "Plný", 1 "Tečkovaný", 2 "Čárkovaný",
// 3 "Otvor", 4 "Vyplněný", 5 "Mřížovaný", 6 "čeRchovaný" (so written), 7 to 12 "vzor_3" to
// "vzor_8".
//   read: the whole text, ignoring case and diacritics ("CERCHOVANY" is 6). fallback 0 (Plný).

// Number of values of a table (the values are 0 to count - 1): 2 for ets_flag, 16 for
// ets_colour, ETS_KEY_CODES for ets_key, and so on. 0 for a null or unknown table.
int16_t ets_count(const EnumNames *names);

#endif
