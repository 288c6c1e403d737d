// wco.h - the configuration store: the in-memory image of one .WCO configuration file.
//
// A .WCO file is a list of named sections, each holding entries that pair a key with a value.
// A ConfigStore reads such a file whole (wco::load), lets the program look entries up and change
// them by section and key through typed operations (wco::get_<type>, wco::set_<type>), and
// writes the whole file back when something has changed (wco::save). Every value is kept as
// text; the typed operations convert on the way in and out. The store does not know which keys
// exist: the vocabulary and its defaults belong to the options loader (store/ifl).
//
// Calling pattern: select a section, then for each setting call the typed get_; when it
// returns 0 (key missing or its text does not parse) call the matching set_ with the caller's
// default, so that a missing or unreadable key is written back. The store never invents values.
//
// ---- The file --------------------------------------------------------------------------------
//
// Windows-1250 text, written in text mode (each line ends in CR LF on Windows, LF on the native
// build), in this order:
//   "Konfiguracni soubor KORVEX"                   header line
//   ""                                             one empty line
//   per section with at least one entry, in sorted order of section names:
//     "BEGIN[name]"
//     per entry in sorted key order: three blanks and the key padded with blanks to exactly 42
//     characters, then "=  " and the value. When the three blanks and the key are 42 or more
//     characters (a key of 39 or 40 characters) they are cut to 42 and the 42nd becomes ">":
//     such a key reads back as a different key (the suite's keys stay below 39 characters).
//     "END[name]"
//     ""
//
// Reading is lenient:
//   - Lines are read through the file layer's text-line reader into a 201-byte buffer: at most
//     199 characters a time, so a longer physical line is parsed as several lines. An entry
//     carries 45 characters before its value, so a value of more than 154 characters is written
//     whole but does not read back intact.
//   - Each line is trimmed of blanks and tabs; empty lines are skipped.
//   - "BEGIN[name]" (starts with "BEGIN[", last character "]") opens the section of that name,
//     creating it when it is new. The name is trimmed; over 40 characters it is cut to 40 with
//     an internal error. An empty name ("BEGIN[]") is an internal error and leaves no section
//     open.
//   - "END[anything]" closes the open section, whatever name it carries.
//   - Any other line is split at its first "=": key before it, value after it, both trimmed. A
//     line without "=", or with an empty key, is ignored (so the header and any comment are
//     skipped). A key over 40 characters is cut to 40, a value over 1000 characters to 1000,
//     each with an internal error. A value may contain "=" but cannot begin or end with blanks.
//   - An entry while no section is open is an internal error and is dropped; reading goes on.
//   - A key met twice in a section keeps the last value.
//
// ---- Order, lookups ----------------------------------------------------------------------------
//
// Sections and entries are kept sorted with st_collate (common/st.h), and found by binary
// search. Texts that differ only in case are different keys. st_collate is not transitive for
// texts that differ in case and accent at the same place (a < á < Á, Á < a); the suite's keys and
// section names are ASCII, where it is. For other texts a binary search that misses is followed
// by a linear scan for the exact text, so every key stays unique and can always be found again;
// only the sorted order of such texts is then not consistent.
//
// ---- Errors ------------------------------------------------------------------------------------
//
// Every operation returns the 16-bit flag: 1 success, 0 failure, and shows its own message first.
// Programming errors (null store or arguments, empty keys or names, no current section,
// over-long texts, entries outside a section while loading, a result pointer that is not null
// on entry) raise InternalError("wco", line); the operation then returns 0, or for over-long
// texts goes on with the cut text. Out of memory raises OutOfMemoryError() and returns 0; the
// store stays consistent. File errors are shown by the file layer (common/file.h).
//
// One thread only; nothing is locked.
#ifndef KX_WCO_H
#define KX_WCO_H

#include "common/co.h"
#include "store/ets.h"

enum {
  WCO_NAME_MAX = 40,        // longest section name and key
  WCO_VALUE_MAX = 1000,     // longest value
  WCO_LINE_SIZE = 1052,     // line buffer of the store, scratch buffer of a section
  WCO_READ_SIZE = 201,      // the piece of a line that one read takes (199 characters + break)
  WCO_KEY_COLUMN = 42,      // three blanks and the key are padded (or cut) to this width
  WCO_SECTIONS_FIRST = 20,  // room for sections at creation, and the growth step
  WCO_SECTIONS_STEP = 5,
  WCO_ENTRIES_FIRST = 100,  // room for entries of a new section, and the growth step
  WCO_ENTRIES_STEP = 10,
  WCO_LIST_FIRST = 5,  // room of a list read, and its growth step
  WCO_LIST_STEP = 5,
  WCO_FACE_SIZE = 32  // font face name: 31 characters and the NUL (as LF_FACESIZE)
};

// The header line of every file written (without its line break).
extern const char WCO_HEADER[];  // "Konfiguracni soubor KORVEX"

// ---- The store -------------------------------------------------------------------------------
// Plain structures, readable by callers (tests check flags through them); change them only
// through the operations below.

struct ConfigEntry {
  char *key;    // 1 to 40 characters, trimmed, owned
  char *value;  // 0 to 1000 characters, trimmed, owned
};

struct ConfigSection {
  char *name;            // 1 to 40 characters, trimmed, owned
  ConfigEntry *entries;  // entry_count in use, sorted by key
  int32_t entry_count;
  int32_t entry_capacity;       // 100 at first, grows by 10
  char scratch[WCO_LINE_SIZE];  // typed values are formatted and parsed here
  Flag modified;                // an entry was added, changed or removed since load or save
};

struct ConfigStore {
  ConfigSection **sections;  // section_count in use, sorted by name; each owned
  int32_t section_count;
  int32_t section_capacity;  // 20 at first, grows by 5
  char line[WCO_LINE_SIZE];  // the line being read or written
  char path[KX_PATH];        // file loaded from and saved to; empty at creation
  int32_t current;           // index of the current section; -1: none
  Flag dirty;                // a section was added or removed, or the load cleaned up
};

// One row of a table of obsolete settings for wco::purge_obsolete: a key of a section, or (key
// null) a whole section. A table ends with a row of two nulls.
struct WcoObsolete {
  const char *section;
  const char *key;
};

// Compound values.
struct WcoPair {
  int32_t a, b;
};
struct WcoRect {
  int32_t left, top, right, bottom;
};
struct WcoRealPair {
  float x, y;
};
struct WcoRealRect {
  float left, top, right, bottom;
};
// A font description: three one-byte numbers whose meaning belongs to the caller, and a face
// name of at most 31 characters.
struct WcoFont {
  uint8_t a, b, c;
  char face[WCO_FACE_SIZE];
};

namespace wco {

// ---- Lifetime --------------------------------------------------------------------------------

Flag create(ConfigStore **result);
// Allocates an empty store: room for 20 sections, empty path, no current section, not dirty.
// Returns 1 and sets *result. 0 after OutOfMemoryError() (*result null); 0 after an internal
// error for a null result.

Flag destroy(ConfigStore **store);
// Frees every section, entry and text and the store, and sets *store to null. Returns 1; 0
// after an internal error when store or *store is null.

ConfigStore *system_store(void);
// The process-wide store, created empty on the first call and kept for the whole run (until
// release_system_store). Null only when it could not be created (after OutOfMemoryError()); a
// later call tries again.

Flag release_system_store(void);
// Frees the process-wide store with everything in it; the next system_store() creates a new
// empty one. A program's main body calls it at the very end, before the memory statistics end
// (mm_stat_end), so that the guarded memory log shows every block of the store given back.
// Returns 1, also when there is no store.

// ---- Files -------------------------------------------------------------------------------------

Flag load(ConfigStore *store, const char *path);
// Reads the file at path into the store (see "The file" above).
//   1. The path (cut at 1023 characters) becomes the store's path, even when the file is
//      missing, so that a later save(store, nullptr) writes there.
//   2. A missing file, or one that cannot be opened (the file layer's message): 0, the sections
//      stay as they were.
//   3. The lines are parsed into the store, merging: sections and keys read are added to or
//      overwrite those present. Out of memory stops the reading at that line (what was read
//      stays; the steps below still run) and makes the result 0.
//   4. The modified flag of every section and the dirty flag are cleared.
//   5. Every section without entries is removed (then dirty is set).
//   6. Sections and entries are sorted (a safeguard: they are kept sorted anyway).
//   7. purge_obsolete with the built-in table (whatever it removes sets dirty, so that the next
//      save rewrites the file).
// Returns 1. 0 as above, and 0 after an internal error for a null store or path.

Flag save(ConfigStore *store, const char *path);
// Writes the store's file when needed. A non-null path replaces the store's path (cut at 1023
// characters); when it differs from the old one other than in case (compared after st_upper)
// the file is written. The file is also written when it does not exist, when the store is dirty
// or when a section is modified. Otherwise nothing touches the disk and the result is 1.
// Writing truncates the file and writes the header, the empty line and every section that has
// entries; the written sections' modified flags and the dirty flag are cleared. A section
// without entries is not written and keeps its modified flag, so a section emptied by
// remove_key makes every later save rewrite the file until the section is removed or the store
// reloaded.
// Returns 1. 0 when the file cannot be opened or written (the file layer's message; all flags
// stay, so a later save tries again); 0 after an internal error for a null store or when the
// store has no path.

Flag save_always(ConfigStore *store, const char *path);
// Sets the dirty flag, then save: the file is written in any case. Returns as save.

Flag readable(const char *path);
// 1 when the file at path is a configuration that load takes without a complaint and that
// holds one entry at least: every entry inside a section, section names and keys of 1 to 40
// characters, no control character other than a tab. 0 for a missing or unreadable file and
// for anything else (a damaged file, another program's bytes). Shows nothing; a null path: 0.

// ---- Sections ----------------------------------------------------------------------------------

Flag select_section(ConfigStore *store, const char *name);
// Makes the section of that name (trimmed; cut at 40 characters with an internal error) the
// current one, creating it (and setting dirty) when it is new. A null name makes no section
// current and returns 1. Returns 1; 0 after OutOfMemoryError() (no section current then); 0
// after an internal error for a null store or an empty name (no section current then).
// The current section stays the same section when others are added or removed; it is none
// again after it is removed itself.

Flag remove_section(ConfigStore *store, const char *name);
// Deletes the section with all its entries and sets dirty. Returns 1; 0 when there is no such
// section; 0 after an internal error for a null store or a null or empty name.

Flag remove_key(ConfigStore *store, const char *section, const char *key);
Flag remove_key(ConfigStore *store, const char *key);
// Deletes one entry of the named, resp. the current, section and sets the section's modified
// flag. The section stays, also when it is now empty. A key over 40 characters is reported
// (internal error) and searched cut to 40. Returns 1; 0 when the section or the key is not
// there; 0 after an internal error for a null store, a null or empty key, or (second form) no
// current section.

Flag purge_obsolete(ConfigStore *store, const WcoObsolete *table);
// Removes, row by row, the key of the section (a row with a key) or the whole section (a row
// without one), then every section without entries; sets dirty when anything was removed.
// A null table means the built-in table of obsolete settings:
//   CO_common: browse_timeout, use_local_config, make_text_file_without_czech,
//              xmax_ratsnest_points, real_schema_sjoin_width
//   CO_gex_output: default_gex_config_extension
//   TP_table_print_window: text_space
//   CO_gerin_input: default_gerin_input_file
// A row with a key but no section is an internal error and is skipped. Returns 1; 0 after an
// internal error for a null store.

// ---- Typed access ------------------------------------------------------------------------------
//
// Every type has get_ and set_ in two forms: with the section name (store, section, key, ...)
// and for the current section (store, key, ...).
//   - The current-section form with no current section: internal error, 0.
//   - A named set_ creates a missing section (setting dirty); a named get_ does not, and returns
//     0 when the section is missing.
//   - Keys are trimmed; an empty or null key is an internal error (0); a key over 40 characters
//     is reported and used cut to 40.
//   - set_ stores the value's text (formats below) exactly as set_text does.
//   - A numeric or list get_ parses a copy of the text and writes the caller's variable only
//     when the parse succeeds; it returns 0, leaving the variable as it was, when the key is
//     missing or the text does not parse.
//   - flag, enum and key get_ return 0 only for a missing key; any present text gives a value
//     (an unknown one the table's fallback), and the file keeps the text as it is.
//
// Texts written (printf conversions):
//   int, short, ushort, ulong   "%d" (ulong values above 2147483647 are written negative and
//                               read back to the same bits)
//   real, double                "%f" (six decimals)
//   int_list, short_list        "%d" each, joined with ", "
//   double_list                 "%lf" each, joined with ", "
//   byte_list                   "%0X" each (upper-case hexadecimal, no padding), joined with ", "
//   pair_list                   "%d, %d" per pair, joined with ", "
//   rect                        "%d, %d, %d, %d"
//   real_pair                   "%f %f" (one blank, no comma)
//   real_rect                   "%f, %f, %f, %f"
//   font                        "%d, %d, %d, %s"
//   enum, flag, key             the value's name from the table (names->write)
// A list whose text would pass 1000 characters is reported (internal error) and stored cut at
// 1000 by st_cat: its 1000th character is the cut mark 0xAF. A list given with a null array or
// a count below 1 is an internal error and stores nothing (0).
//
// Texts read:
//   integer  blanks (and tabs) are skipped; then digits, "+" and "-" are taken up to the first
//            other character. The digits make the number in decimal (overflow wraps modulo
//            2^32); the last sign among the characters taken decides ("1-2" is -12, "-1+2" is
//            12). At least one digit is needed. Short and ushort keep the low 16 bits.
//   real     blanks skipped, an optional "+" or "-", then digits with at most one "." (a second
//            "." fails the parse) up to the first other character; at least one digit. No
//            exponent: "1e5" reads 1.
//   hex byte blanks skipped, hexadecimal digits of either case up to the first other character,
//            at least one; the low 8 bits are kept.
//   lists    element after element: after an element, when the next character is neither a
//            blank nor ",", the list ends; otherwise blanks and one "," are skipped and the next
//            element is read; when it does not parse the list ends before it. A list needs at
//            least one element. A pair list takes the numbers two at a time (an odd last one
//            is dropped; at least one pair). A rect needs 4 integers, a real pair 2 reals, a real
//            rect 4 reals: more are ignored, fewer fail. (So a real pair also reads "1, 2" and
//            a real rect "1 2 3 4".)
//   font     three integers as a list, then the separator after the third, then the rest
//            trimmed and cut at 31 characters is the face (possibly empty). Without the
//            separator the parse fails.
// List results are allocated by the store through the memory manager (room for 5, growing by
// 5) and belong to the caller, who releases them with mm_free; *values must be null on entry
// (else internal error, nothing read) and stays null when nothing is returned.

Flag set_text(ConfigStore *store, const char *section, const char *key, const char *value);
Flag set_text(ConfigStore *store, const char *key, const char *value);
// Trims key and value (value over 1000 characters: internal error, cut). A new key is inserted
// at its sorted place; an existing key whose value differs (st_collate) gets the new value;
// either sets the section's modified flag. An equal value changes nothing.
// Returns 1; 0 after an internal error (null store, null/empty key, null value, no current
// section) or OutOfMemoryError().

Flag get_text(ConfigStore *store, const char *section, const char *key, char *buffer, int32_t size);
Flag get_text(ConfigStore *store, const char *key, char *buffer, int32_t size);
// Copies the value into buffer, at most size characters, always terminated: buffer must hold
// size + 1 bytes (a text field of N characters passes N). Returns 1; 0 when the section or key
// is missing (buffer untouched); 0 after an internal error for a null buffer or size below 1.

Flag get_text_copy(ConfigStore *store, const char *section, const char *key, char **result);
Flag get_text_copy(ConfigStore *store, const char *key, char **result);
// *result = a new copy of the value, owned by the caller (release with mm_free). *result must
// be null on entry (else internal error, 0). Returns 1; 0 when missing (*result stays null); 0
// after OutOfMemoryError().

Flag get_text_pointer(ConfigStore *store, const char *section, const char *key,
                      const char **result);
Flag get_text_pointer(ConfigStore *store, const char *key, const char **result);
// *result = the stored value itself, valid until the entry is changed or removed. Returns 1;
// 0 with *result null when missing; 0 after an internal error for a null result.

Flag get_int(ConfigStore *store, const char *section, const char *key, int32_t *value);
Flag get_int(ConfigStore *store, const char *key, int32_t *value);
Flag set_int(ConfigStore *store, const char *section, const char *key, int32_t value);
Flag set_int(ConfigStore *store, const char *key, int32_t value);

Flag get_short(ConfigStore *store, const char *section, const char *key, int16_t *value);
Flag get_short(ConfigStore *store, const char *key, int16_t *value);
Flag set_short(ConfigStore *store, const char *section, const char *key, int16_t value);
Flag set_short(ConfigStore *store, const char *key, int16_t value);

Flag get_ushort(ConfigStore *store, const char *section, const char *key, uint16_t *value);
Flag get_ushort(ConfigStore *store, const char *key, uint16_t *value);
Flag set_ushort(ConfigStore *store, const char *section, const char *key, uint16_t value);
Flag set_ushort(ConfigStore *store, const char *key, uint16_t value);

Flag get_ulong(ConfigStore *store, const char *section, const char *key, uint32_t *value);
Flag get_ulong(ConfigStore *store, const char *key, uint32_t *value);
Flag set_ulong(ConfigStore *store, const char *section, const char *key, uint32_t value);
Flag set_ulong(ConfigStore *store, const char *key, uint32_t value);

Flag get_real(ConfigStore *store, const char *section, const char *key, float *value);
Flag get_real(ConfigStore *store, const char *key, float *value);
Flag set_real(ConfigStore *store, const char *section, const char *key, float value);
Flag set_real(ConfigStore *store, const char *key, float value);

Flag get_double(ConfigStore *store, const char *section, const char *key, double *value);
Flag get_double(ConfigStore *store, const char *key, double *value);
Flag set_double(ConfigStore *store, const char *section, const char *key, double value);
Flag set_double(ConfigStore *store, const char *key, double value);

Flag get_int_list(ConfigStore *store, const char *section, const char *key, int32_t **values,
                  int32_t *count);
Flag get_int_list(ConfigStore *store, const char *key, int32_t **values, int32_t *count);
Flag set_int_list(ConfigStore *store, const char *section, const char *key, const int32_t *values,
                  int32_t count);
Flag set_int_list(ConfigStore *store, const char *key, const int32_t *values, int32_t count);

Flag get_short_list(ConfigStore *store, const char *section, const char *key, int16_t **values,
                    int32_t *count);
Flag get_short_list(ConfigStore *store, const char *key, int16_t **values, int32_t *count);
Flag set_short_list(ConfigStore *store, const char *section, const char *key, const int16_t *values,
                    int32_t count);
Flag set_short_list(ConfigStore *store, const char *key, const int16_t *values, int32_t count);

Flag get_double_list(ConfigStore *store, const char *section, const char *key, double **values,
                     int32_t *count);
Flag get_double_list(ConfigStore *store, const char *key, double **values, int32_t *count);
Flag set_double_list(ConfigStore *store, const char *section, const char *key, const double *values,
                     int32_t count);
Flag set_double_list(ConfigStore *store, const char *key, const double *values, int32_t count);

Flag get_byte_list(ConfigStore *store, const char *section, const char *key, uint8_t **values,
                   int32_t *count);
Flag get_byte_list(ConfigStore *store, const char *key, uint8_t **values, int32_t *count);
Flag set_byte_list(ConfigStore *store, const char *section, const char *key, const uint8_t *values,
                   int32_t count);
Flag set_byte_list(ConfigStore *store, const char *key, const uint8_t *values, int32_t count);

Flag get_pair_list(ConfigStore *store, const char *section, const char *key, WcoPair **values,
                   int32_t *count);
Flag get_pair_list(ConfigStore *store, const char *key, WcoPair **values, int32_t *count);
// count: number of pairs.
Flag set_pair_list(ConfigStore *store, const char *section, const char *key, const WcoPair *values,
                   int32_t count);
Flag set_pair_list(ConfigStore *store, const char *key, const WcoPair *values, int32_t count);

// The compound get_ and set_ below take a pointer to the value; a null one is an internal error.
Flag get_rect(ConfigStore *store, const char *section, const char *key, WcoRect *value);
Flag get_rect(ConfigStore *store, const char *key, WcoRect *value);
Flag set_rect(ConfigStore *store, const char *section, const char *key, const WcoRect *value);
Flag set_rect(ConfigStore *store, const char *key, const WcoRect *value);

Flag get_real_pair(ConfigStore *store, const char *section, const char *key, WcoRealPair *value);
Flag get_real_pair(ConfigStore *store, const char *key, WcoRealPair *value);
Flag set_real_pair(ConfigStore *store, const char *section, const char *key,
                   const WcoRealPair *value);
Flag set_real_pair(ConfigStore *store, const char *key, const WcoRealPair *value);

Flag get_real_rect(ConfigStore *store, const char *section, const char *key, WcoRealRect *value);
Flag get_real_rect(ConfigStore *store, const char *key, WcoRealRect *value);
Flag set_real_rect(ConfigStore *store, const char *section, const char *key,
                   const WcoRealRect *value);
Flag set_real_rect(ConfigStore *store, const char *key, const WcoRealRect *value);

Flag get_font(ConfigStore *store, const char *section, const char *key, WcoFont *value);
Flag get_font(ConfigStore *store, const char *key, WcoFont *value);
// The face is written at most 31 characters long (also when value->face is not terminated).
Flag set_font(ConfigStore *store, const char *section, const char *key, const WcoFont *value);
Flag set_font(ConfigStore *store, const char *key, const WcoFont *value);

// Enumerations (store/ets.h): written as names->write(value), read as names->read(text). A null
// names table or value pointer is an internal error.
Flag get_enum(ConfigStore *store, const char *section, const char *key, const EnumNames *names,
              int16_t *value);
Flag get_enum(ConfigStore *store, const char *key, const EnumNames *names, int16_t *value);
Flag set_enum(ConfigStore *store, const char *section, const char *key, const EnumNames *names,
              int16_t value);
Flag set_enum(ConfigStore *store, const char *key, const EnumNames *names, int16_t value);

// get_enum / set_enum with ets_flag ("Ano", "Ne").
Flag get_flag(ConfigStore *store, const char *section, const char *key, int16_t *value);
Flag get_flag(ConfigStore *store, const char *key, int16_t *value);
Flag set_flag(ConfigStore *store, const char *section, const char *key, int16_t value);
Flag set_flag(ConfigStore *store, const char *key, int16_t value);

// get_enum / set_enum with ets_key (key names 0 to 367).
Flag get_key(ConfigStore *store, const char *section, const char *key, int16_t *value);
Flag get_key(ConfigStore *store, const char *key, int16_t *value);
Flag set_key(ConfigStore *store, const char *section, const char *key, int16_t value);
Flag set_key(ConfigStore *store, const char *key, int16_t value);

}  // namespace wco

#endif
