// ets.cpp - enumeration names.
#include "store/ets.h"

#include "common/cz.h"
#include "common/st.h"
#include "common/we.h"

#include <string.h>

namespace {

// A table of names, one per value, with the value that an unknown text reads as.
struct Table {
  const char *const *names;
  int16_t count;
  int16_t fallback;
};

#define ETS_TABLE(names, fallback) \
  { names, (int16_t)KX_COUNT(names), fallback }

const char *write_name(const Table &table, int16_t value, int line) {
  if (value < 0 || value >= table.count) {
    InternalError("ets", (int16_t)line);
    value = table.fallback;
  }
  return table.names[value];
}

// Upper case, then diacritics off, of one Windows-1250 byte.
char fold_char(char c) {
  cz_upper_char(&c);
  cz_strip_char(&c);
  return c;
}

// Upper case, then diacritics off, in place.
void fold(char *text) {
  cz_upper(text);
  cz_strip(text);
}

// The value whose name equals the whole text, ignoring case and diacritics.
int16_t read_folded(const Table &table, const char *text, int line) {
  if (text == nullptr) {
    InternalError("ets", (int16_t)line);
    return table.fallback;
  }
  for (int16_t value = 0; value < table.count; value++) {
    const char *name = table.names[value];
    size_t i = 0;
    while (text[i] != 0 && name[i] != 0 && fold_char(text[i]) == fold_char(name[i])) i++;
    if (text[i] == 0 && name[i] == 0) return value;
  }
  return table.fallback;
}

// Copies at most limit characters of text into buffer (limit + 1 bytes) and folds them.
void fold_prefix(char *buffer, const char *text, size_t limit) {
  size_t n = strlen(text);
  if (n > limit) n = limit;
  memcpy(buffer, text, n);
  buffer[n] = 0;
  fold(buffer);
}

// ---- Flag ------------------------------------------------------------------------------------

enum { FLAG_READ_CHARS = 5 };

const char *flag_write(int16_t value) { return value != 0 ? "Ano" : "Ne "; }

int16_t flag_read(const char *text) {
  if (text == nullptr) {
    InternalError("ets", __LINE__);
    return 0;
  }
  char buffer[FLAG_READ_CHARS + 1];
  fold_prefix(buffer, text, FLAG_READ_CHARS);
  return strstr(buffer, "ON") != nullptr || strstr(buffer, "YES") != nullptr ||
                 strstr(buffer, "ANO") != nullptr
             ? 1
             : 0;
}

// ---- Drawing mode ----------------------------------------------------------------------------

enum { DRAW_READ_CHARS = 10 };

const char *const draw_mode_names[] = {"REPLACE", "AND", "OR", "XOR"};
const Table draw_mode_table = ETS_TABLE(draw_mode_names, 0);

const char *draw_mode_write(int16_t value) { return write_name(draw_mode_table, value, __LINE__); }

int16_t draw_mode_read(const char *text) {
  if (text == nullptr) {
    InternalError("ets", __LINE__);
    return 0;
  }
  char buffer[DRAW_READ_CHARS + 1];
  fold_prefix(buffer, text, DRAW_READ_CHARS);
  // keep this order: every "XOR" also contains "OR"
  if (strstr(buffer, "XOR") != nullptr) return 3;
  if (strstr(buffer, "OR") != nullptr) return 2;
  if (strstr(buffer, "AND") != nullptr) return 1;
  return 0;
}

// ---- Colour ----------------------------------------------------------------------------------

enum { COLOUR_READ_CHARS = 20, COLOUR_WHITE = 15 };

// clang-format off
const char *const colour_names[] = {
    /*  0 */ "černá", "modrá", "zelená", "modrozelená",
    /*  4 */ "červená", "fialová", "hnědá", "světle šedá",
    /*  8 */ "tmavě šedá", "světle modrá", "světle zelená", "světle modrozelená",
    /* 12 */ "světle červená", "světle fialová", "žlutá", "bílá"};
// clang-format on
const Table colour_table = ETS_TABLE(colour_names, COLOUR_WHITE);

// The names each colour is read by (upper case, no diacritics); white has none of its own.
// clang-format off
const char *const colour_read_names[COLOUR_WHITE][3] = {
    {"CERNA", "BLACK", "CERNA"},
    {"MODRA", "BLUE", "MODRA"},
    {"ZELENA", "GREEN", "ZELENA"},
    {"MODROZELENA", "CYAN", "MODROZELENA"},
    {"CERVENA", "RED", "CERVENA"},
    {"FIALOVA", "MAGENTA", "FIALOVA"},
    {"HNEDA", "BROWN", "HNEDA"},
    {"SVETLE SEDA", "LIGHTGRAY", "SVETLESEDA"},
    {"TMAVE SEDA", "DARKGRAY", "TMAVESEDA"},
    {"SVETLE MODRA", "LIGHTBLUE", "SVETLEMODRA"},
    {"SVETLE ZELENA", "LIGHTGREEN", "SVETLEZELENA"},
    {"SVETLE MODROZELENA", "LIGHTCYAN", "SVETLEMODROZELENA"},
    {"SVETLE CERVENA", "LIGHTRED", "SVETLECERVENA"},
    {"SVETLE FIALOVA", "LIGHTMAGENTA", "SVETLEFIALOVA"},
    {"ZLUTA", "YELLOW", "ZLUTA"}};
// clang-format on

const char *colour_write(int16_t value) { return write_name(colour_table, value, __LINE__); }

int16_t colour_read(const char *text) {
  if (text == nullptr) {
    InternalError("ets", __LINE__);
    return COLOUR_WHITE;
  }
  char buffer[COLOUR_READ_CHARS + 1];
  fold_prefix(buffer, text, COLOUR_READ_CHARS);
  st_trim(buffer);
  for (int16_t value = 0; value < COLOUR_WHITE; value++)
    for (const char *name : colour_read_names[value])
      if (strcmp(buffer, name) == 0) return value;
  return COLOUR_WHITE;
}

// ---- Tables read whole, ignoring case and diacritics -----------------------------------------

const char *const units_names[] = {"mm", "mils", "m", "km", "inch"};
const Table units_table = ETS_TABLE(units_names, 0);
const char *units_write(int16_t value) { return write_name(units_table, value, __LINE__); }
int16_t units_read(const char *text) { return read_folded(units_table, text, __LINE__); }

const char *const cursor_names[] = {"NORMAL_CURSOR", "LINE_CURSOR", "OBLIQUE_LINE_CURSOR"};
const Table cursor_table = ETS_TABLE(cursor_names, 0);
const char *cursor_write(int16_t value) { return write_name(cursor_table, value, __LINE__); }
int16_t cursor_read(const char *text) { return read_folded(cursor_table, text, __LINE__); }

const char *const code_page_names[] = {"Nastavení při použití", "KEYBCS2", "LATIN2", "CP1250",
                                       "ASCII"};
const Table code_page_table = ETS_TABLE(code_page_names, 0);
const char *code_page_write(int16_t value) { return write_name(code_page_table, value, __LINE__); }
int16_t code_page_read(const char *text) { return read_folded(code_page_table, text, __LINE__); }

const char *const toolbar_names[] = {"TOP_TOOLBAR",   "BOTTOM_TOOLBAR",   "LEFT_TOOLBAR",
                                     "RIGHT_TOOLBAR", "FLOATING_TOOLBAR", "HIDDEN_TOOLBAR"};
const Table toolbar_table = ETS_TABLE(toolbar_names, 0);
const char *toolbar_write(int16_t value) { return write_name(toolbar_table, value, __LINE__); }
int16_t toolbar_read(const char *text) { return read_folded(toolbar_table, text, __LINE__); }

// clang-format off
const char *const text_window_names[] = {"NO_TEXT_WINDOW",    "TOP_TEXT_WINDOW",
                                         "BOTTOM_TEXT_WINDOW", "LEFT_TEXT_WINDOW",
                                         "RIGHT_TEXT_WINDOW", "FLOATING_TEXT_WINDOW"};
// clang-format on
const Table text_window_table = ETS_TABLE(text_window_names, 0);
const char *text_window_write(int16_t value) {
  return write_name(text_window_table, value, __LINE__);
}
int16_t text_window_read(const char *text) {
  return read_folded(text_window_table, text, __LINE__);
}

const char *const panning_names[] = {"NO_PANNING", "SCROLLBAR_PANNING", "BLOCKS_PANNING",
                                     "BOTH_PANNING"};
const Table panning_table = ETS_TABLE(panning_names, 0);
const char *panning_write(int16_t value) { return write_name(panning_table, value, __LINE__); }
int16_t panning_read(const char *text) { return read_folded(panning_table, text, __LINE__); }

// keep this: "čeRchovaný" is the program's own text
// clang-format off
const char *const line_style_names[] = {"Plný",      "Tečkovaný", "Čárkovaný", "Otvor",
                                        "Vyplněný",  "Mřížovaný", "čeRchovaný", "vzor_3",
                                        "vzor_4",    "vzor_5",    "vzor_6",    "vzor_7",
                                        "vzor_8"};
// clang-format on
const Table line_style_table = ETS_TABLE(line_style_names, 0);
const char *line_style_write(int16_t value) {
  return write_name(line_style_table, value, __LINE__);
}
int16_t line_style_read(const char *text) { return read_folded(line_style_table, text, __LINE__); }

// ---- Keys ------------------------------------------------------------------------------------

// keep every spelling of this table as it stands; files in use hold these names
// clang-format off
const char *const key_names[ETS_KEY_CODES] = {
    /*   0 */ "KB_null", "Control+Break", "Enter", "Shift+Enter",
    /*   4 */ "Alt+Enter", "Control+Enter", "Esc", "Shift+Esc",
    /*   8 */ "Alt+Esc", "Control+Esc", "Mezera", "Shift+Mezera",
    /*  12 */ "Alt+Mezera", "Control+Mezera", "Backspace", "Shift+Backspace",
    /*  16 */ "Alt+Backspace", "Control+BackSpace", "Tab", "Shift+Tab",
    /*  20 */ "Alt+Tab", "Control+Tab", "PageUp", "Shift+PageUp",
    /*  24 */ "Alt+PageUp", "Control+PageUp", "PageDown", "Shift+PageDown",
    /*  28 */ "Alt+PageDown", "Control+PageDown", "End", "Shift+End",
    /*  32 */ "Alt+End", "Control+End", "Home", "Shift+Home",
    /*  36 */ "Alt+Home", "Control+Home", "Šipka_vlevo", "Shift+Šipka_vlevo",
    /*  40 */ "Alt+Šipka_vlevo", "Control+Šipka_vlevo", "Šipka_vpravo", "Shift+Šipka_vpravo",
    /*  44 */ "Alt+Šipka_vpravo", "Control+Šipka_vpravo", "Šipka_nahoru", "Shift+Šipka_nahoru",
    /*  48 */ "Alt+Šipka_nahoru", "Control+Šipka_nahoru", "Šipka_dolu", "Shift+Šipka_dolu",
    /*  52 */ "Alt+Šipka_dolu", "Control+Šipka_dolu", "Insert", "Shift+Insert",
    /*  56 */ "Alt+Insert", "Control+Insert", "Delete", "Shift+Delete",
    /*  60 */ "Alt+Delete", "Control+Delete", "Tilda`/~", "Shift+Tilda`/~",
    /*  64 */ "Alt+Tilda`/~", "Control+Tilda`/~", "F1", "Shift+F1",
    /*  68 */ "Alt+F1", "Control+F1", "F2", "Shift+F2",
    /*  72 */ "Alt+F2", "Control+F2", "F3", "Shift+F3",
    /*  76 */ "Alt+F3", "Control+F3", "F4", "Shift+F4",
    /*  80 */ "Alt+F4", "Control+F4", "F5", "Shift+F5",
    /*  84 */ "Alt+F5", "Control+F5", "F6", "Shift+F6",
    /*  88 */ "Alt+F6", "Control+F6", "F7", "Shift+F7",
    /*  92 */ "Alt+F7", "Control+F7", "F8", "Shift+F8",
    /*  96 */ "Alt+F8", "Control+F8", "F9", "Shift+F9",
    /* 100 */ "Alt+F9", "Control+F9", "F10", "Shift+F10",
    /* 104 */ "Alt+F10", "Control+F10", "F11", "Shift+F11",
    /* 108 */ "Alt+F11", "Control+F11", "F12", "Shift+F12",
    /* 112 */ "Alt+F12", "Control+F12", "0", "Alt+0",
    /* 116 */ "Control+0", "1", "Alt+1", "Control+1",
    /* 120 */ "2", "Alt+2", "Control+2", "3",
    /* 124 */ "Alt+3", "Control+3", "4", "Alt+4",
    /* 128 */ "Control+4", "5", "Alt+5", "Control+5",
    /* 132 */ "6", "Alt+6", "Control+6", "7",
    /* 136 */ "Alt+7", "Control+7", "8", "Alt+8",
    /* 140 */ "Control+8", "9", "Alt+9", "Control+9",
    /* 144 */ "A", "Alt+A", "Control+A", "B",
    /* 148 */ "Alt+B", "Control+B", "C", "Alt+C",
    /* 152 */ "Control+C", "D", "Alt+D", "Control+D",
    /* 156 */ "E", "Alt+E", "Control+E", "F",
    /* 160 */ "Alt+F", "Control+F", "G", "Alt+G",
    /* 164 */ "Control+G", "H", "Alt+H", "Control+H",
    /* 168 */ "I", "Alt+I", "Control+I", "J",
    /* 172 */ "Alt+J", "Control+J", "K", "Alt+K",
    /* 176 */ "Control+K", "L", "Alt+L", "Control+L",
    /* 180 */ "M", "Alt+M", "Control+M", "N",
    /* 184 */ "Alt+N", "Control+N", "O", "Alt+O",
    /* 188 */ "Control+O", "P", "Alt+P", "Control+P",
    /* 192 */ "Q", "Alt+Q", "Control+Q", "R",
    /* 196 */ "Alt+R", "Control+R", "S", "Alt+S",
    /* 200 */ "Control+S", "T", "Alt+T", "Control+T",
    /* 204 */ "U", "Alt+U", "Control+U", "V",
    /* 208 */ "Alt+V", "Control+V", "W", "Alt+W",
    /* 212 */ "Control+W", "X", "Alt+X", "Control+X",
    /* 216 */ "Y", "Alt+Y", "Control+Y", "Z",
    /* 220 */ "Alt+Z", "Control+Z", "a", "b",
    /* 224 */ "c", "d", "e", "f",
    /* 228 */ "g", "h", "i", "j",
    /* 232 */ "k", "l", "m", "n",
    /* 236 */ "o", "p", "q", "r",
    /* 240 */ "s", "t", "u", "v",
    /* 244 */ "w", "x", "y", "z",
    /* 248 */ "a_s_čárkou", "e_s_čárkou", "i_s_čárkou", "o_s_čárkou",
    /* 252 */ "u_s_čárkou", "y_s_čárkou", "A_s_čárkou", "E_s_čárkou",
    /* 256 */ "I_s_čárkou", "O_s_čárkou", "U_s_čárkou", "Y_s_čárkou",
    /* 260 */ "c_s_háčkem", "d_s_háčkem", "e_s_háčkem", "n_s_háčkem",
    /* 264 */ "r_s_háčkem", "s_s_háčkem", "t_s_háčkem", "u_s_kroužkem",
    /* 268 */ "z_s_háčkem", "C_s_háčkem", "D_s_háčkem", "E_s_háčkem",
    /* 272 */ "N_s_háčkem", "R_s_háčkem", "S_s_háčkem", "T_s_háčkem",
    /* 276 */ "U_s_kroužkem", "Z_s_háčkem", "!", "@",
    /* 280 */ "#", "$", "%", "^",
    /* 284 */ "&", "*", "(", ")",
    /* 288 */ "[", "]", "{", "}",
    /* 292 */ "-", "+", "/", "\\",
    /* 296 */ "=", "_", "|", "\"",
    /* 300 */ "'", "`", ":", ";",
    /* 304 */ ",", ".", "?", "<",
    /* 308 */ ">", "~", "paragraf", "Break",
    /* 312 */ "Shift+Break", "Alt+Break", "Klávesa_aplikace", "Shift+Klávesa_aplikace",
    /* 316 */ "Alt+Klávesa_aplikace", "Control+Klávesa_aplikace", "Control_\\", "Alt_\\",
    /* 320 */ "Control_=", "Alt_=", "Control_-", "Alt_-",
    /* 324 */ "Control_[", "Alt_[", "Control_]", "Alt_]",
    /* 328 */ "Control_;", "Alt_;", "Control_'", "Alt'",
    /* 332 */ "Control_,", "Alt_,", "Control_.", "Alt_.",
    /* 336 */ "Control_/", "Alt_/", "Control_numpad_0", "Alt_numpad_0",
    /* 340 */ "Control_numpad_1", "Alt_numpad_1", "Control_numpad_2", "Alt_numpad_2",
    /* 344 */ "Control_numpad_3", "Alt_numpad_3", "Control_numpad_4", "Alt_numpad_4",
    /* 348 */ "Control_numpad_5", "Alt_numpad_5", "Control_numpad_6", "Alt_numpad_6",
    /* 352 */ "Control_numpad_7", "Alt_numpad_7", "Control_numpad_8", "Alt_numpad_8",
    /* 356 */ "Control_numpad_9", "Alt_numpad_9", "Control_numpad_*", "Alt_numpad_*",
    /* 360 */ "Control_numpad_+", "Alt_numpad_+", "Control_numpad_/", "Alt_numpad_/",
    /* 364 */ "Control_numpad_-", "Alt_numpad_-", "Control_numpad_.", "Alt_numpad_."
};
// clang-format on
const Table key_table = {key_names, ETS_KEY_CODES, 0};

const char *key_write(int16_t value) { return write_name(key_table, value, __LINE__); }

int16_t key_read(const char *text) {
  if (text == nullptr) {
    InternalError("ets", __LINE__);
    return key_table.fallback;
  }
  for (int16_t value = 0; value < key_table.count; value++)
    if (strcmp(text, key_names[value]) == 0) return value;
  return key_table.fallback;
}

}  // namespace

const EnumNames ets_flag = {"flag", flag_write, flag_read};
const EnumNames ets_draw_mode = {"drawing mode", draw_mode_write, draw_mode_read};
const EnumNames ets_colour = {"colour", colour_write, colour_read};
const EnumNames ets_units = {"units", units_write, units_read};
const EnumNames ets_cursor = {"cursor type", cursor_write, cursor_read};
const EnumNames ets_code_page = {"code page", code_page_write, code_page_read};
const EnumNames ets_key = {"key", key_write, key_read};
const EnumNames ets_toolbar = {"toolbar", toolbar_write, toolbar_read};
const EnumNames ets_text_window = {"text window", text_window_write, text_window_read};
const EnumNames ets_panning = {"panning", panning_write, panning_read};
const EnumNames ets_line_style = {"line style", line_style_write, line_style_read};

int16_t ets_count(const EnumNames *names) {
  if (names == &ets_flag) return 2;
  if (names == &ets_draw_mode) return draw_mode_table.count;
  if (names == &ets_colour) return colour_table.count;
  if (names == &ets_units) return units_table.count;
  if (names == &ets_cursor) return cursor_table.count;
  if (names == &ets_code_page) return code_page_table.count;
  if (names == &ets_key) return key_table.count;
  if (names == &ets_toolbar) return toolbar_table.count;
  if (names == &ets_text_window) return text_window_table.count;
  if (names == &ets_panning) return panning_table.count;
  if (names == &ets_line_style) return line_style_table.count;
  return 0;
}
