// pfu.h - the function table: every command of a program (menu item, tool-bar button, key) is a
// function with a numeric id, kept in static tables of function records that the program
// registers here.
//
// The module looks functions up by id or by configuration name, changes their status (enabled,
// checked and the like) and has the user interface refresh them, calls their handlers, fills the
// descriptors that windows keep of the functions they show, and writes the whole table as the
// text file PFU_LIST.PFU, from which the configuration tools offer the function list.
//
// Static tables. A static table is an array of FunctionRecord ending in a record whose status
// has PFU_ST_END (0x0200). The tables are writable program data, not const: a status change
// writes the status of the table's records, and registration replaces the key placeholders
// PFU_KEY_AMP_LETTER and PFU_KEY_AMP_UPPER in the records themselves. A table stays owned by the
// program and must live as long as the FunctionTable that lists it.
//
// Descriptors. A descriptor is a FunctionRecord owned by a window, filled from a table record
// (FillDescriptor). Its configuration name is its own copy from the memory manager (place
// "pfu"): start a descriptor zero-filled (name null), never put any other pointer into its name,
// and give the copy back with pfu_free_descriptor when the descriptor goes away. An array of
// descriptors ends like a static table, in a record with PFU_ST_END.
//
// Reports: unknown ids with ErrorBoxF (texts at FindFunction and SetFunctionStatus, title
// " Chyba "); programming errors (null arguments, a full table, an impossible mode, a record
// with both or neither of link and handler) with InternalError("pfu", line); no memory with
// OutOfMemoryError. All texts are Windows-1250.
//
// The toolkit's side. The text tables that give a function's menu text and help line, the
// conversion of a menu letter to a key code, and the frame's refresh of a function whose status
// changed belong to the window toolkit; the program hands them in through the set calls at the
// end of this header. They are process-wide; one thread only, like the rest of the suite.
#ifndef KX_PFU_H
#define KX_PFU_H

#include "common/co.h"

// ---- Records -------------------------------------------------------------------------------

typedef int32_t (*PfuHandler)(int32_t argument);

struct FunctionRecord {
  int32_t id;               // ID_CODE; 0 in a descriptor means no function
  uint16_t status;          // PFU_ST_* bits
  uint16_t options;         // copied with the record; PFU_OPT_EXEMPT, see SetFunctionStatus
  int16_t type;             // FT_TYPE: PFU_FT_* bits
  uint32_t help_code;       // HELP_CODE: the help topic number
  uint32_t link;            // a target other than a handler, opaque here (the toolkit's menus)
  PfuHandler handler;       // the action run by InvokeFunction
  const char *config_name;  // CONFIG: name in the configuration files, may be null. In a
                            // static table the program's text; in a descriptor its own copy.
  uint16_t key;             // accelerator key code; 0: taken from the menu text's "&" letter
};

// Status bits. A status change (SetFunctionStatus) knows the bits 0x0001, 0x0002, 0x0004, 0x0008,
// 0x0020, 0x0040, 0x0080, 0x0100 and 0x0200; setting one of them clears the others of these
// except the ones it keeps: 0x0002 keeps 0x0004, 0x0004 keeps 0x0002 and 0x0008, every other bit
// keeps none. Bit 0x0010 and the bits from 0x0400 up are never cleared (nor set) by a status
// change. The bits with a meaning of their own here:
enum {
  PFU_ST_DISABLED = 0x0002,     // forbids InvokeFunction
  PFU_ST_OWN = 0x0010,          // a descriptor's own bit: FillDescriptor keeps it
  PFU_ST_QUIET = 0x0080,        // setting it does not count as a change (no refresh)
  PFU_ST_UNAVAILABLE = 0x0100,  // not available in the window's mode; forbids InvokeFunction
  PFU_ST_END = 0x0200           // in a static table: the end record
};

// Option bit: a conditional status change passes the record over.
enum { PFU_OPT_EXEMPT = 0x0002 };

// Type bits (FT_TYPE). Modes 3 and 4 take their bits crossed, keep it so: 0x0010 is mode 3 and
// 0x0008 mode 4.
enum {
  PFU_FT_ALL_MODES = 0x0001,
  PFU_FT_MODE1 = 0x0002,
  PFU_FT_MODE2 = 0x0004,
  PFU_FT_MODE4 = 0x0008,
  PFU_FT_MODE3 = 0x0010,
  PFU_FT_MODE5 = 0x0020,
  PFU_FT_MODE6 = 0x0040,
  PFU_FT_UNLISTED = 0x0080,  // left out of PFU_LIST.PFU; keyed by its own key field
  PFU_FT_AMP_KEY = 0x0100    // keyed by the "&" letter of its menu text
};

// Key placeholders in static tables, replaced at registration (pfu_register).
enum {
  PFU_KEY_AMP_LETTER = 29999,  // the key code of the letter after "&" in the menu text
  PFU_KEY_AMP_UPPER = 29998    // that letter upper-cased, through the second key conversion
};

// Limits: registered tables, characters of the lines TEXT, HELP and CONFIG of PFU_LIST.PFU
// (keyword column included), the highest window mode.
enum { PFU_MAX_TABLES = 100, PFU_LINE_MAX = 250, PFU_MODE_MAX = 6 };

// The file WriteFunctionList writes into the current directory.
extern const char PFU_LIST_NAME[];  // "PFU_LIST.PFU"

struct FunctionTable {
  FunctionRecord *tables[PFU_MAX_TABLES];  // the registered static tables, in order
  int32_t table_count;                     // tables in use
  int32_t total;                           // functions in all tables (end records not counted)
};

// What FillDescriptor needs of a window: its mode, 0 to 6 (see the PFU_FT_* bits). Mode 0
// needs PFU_FT_ALL_MODES; mode n from 1 to 6 needs PFU_FT_ALL_MODES or its own bit.
struct PfuWindow {
  int32_t mode;
};

// ---- The table -----------------------------------------------------------------------------

Flag pfu_create(FunctionTable **result);
// Allocates a zero-filled table (no tables, total 0) and stores it in *result.
// Returns 1. Returns 0 with *result null after OutOfMemoryError when there is no memory; 0 after
// an internal error when result is null.

Flag pfu_destroy(FunctionTable **table);
// Frees the table (not the static tables it lists) and sets *table to null. Returns 1; a null
// table or *table is an internal error: 0.

Flag pfu_register(FunctionTable *table, FunctionRecord *static_table);
// Appends static_table to the table's list, counts its records (up to the end record) into the
// total and resolves its key placeholders in place, looking up each record's menu text by id
// through the text source:
//   key PFU_KEY_AMP_LETTER -> the plain key conversion of the character after the first "&";
//   key PFU_KEY_AMP_UPPER  -> the character after the first "&" upper-cased (cz_upper_char),
//                             through the second key conversion;
// a placeholder whose record has no menu text, no "&", or nothing after it becomes 0, so that
// FillDescriptor takes the key from the menu text when it fills a window. Register the text
// source and key conversions before the tables.
// Returns 1. Internal error, 0, and nothing changed: a null table or static_table, a table that
// is registered already, a 101st table.

int32_t FunctionCount(FunctionTable *table);
// The total number of functions of all registered tables (end records not counted).
// A null table is an internal error: 0.

// ---- Look-up, status, invocation -----------------------------------------------------------

FunctionRecord *FindFunction(FunctionTable *table, int32_t id);
// The first record with the id, the tables taken in registration order and each table up to
// its end record. Null after ErrorBoxF "Funkce (id=%d) není v žádné tabulce funkcí" when no
// table holds the id; null after an internal error for a null table.

uint16_t FunctionStatus(FunctionTable *table, int32_t id);
// The status of FindFunction's record. An unknown id is the caller's fault: FindFunction's
// message, then an internal error, and 0.

Flag SetFunctionStatus(FunctionTable *table, Flag conditional, int32_t id, uint16_t bits);
// Sets the status bits of bits in every record with the id, in all tables. With conditional
// set, records whose options have PFU_OPT_EXEMPT are passed over. Per record, the bits
// are taken in the order 0x0001, 0x0002, 0x0008, 0x0004, 0x0020, 0x0040, 0x0080, 0x0100, 0x0200;
// a bit the record has not yet clears the bits it does not keep (see PFU_ST_*) and is set.
// Other bits of bits (0x0010, 0x0400 up) are ignored; a bit the record already has changes
// nothing. Setting 0x0080 is not a change. The status refresh (pfu_set_status_refresh), when
// one is registered, is called with the id once for every record that changed.
// Returns 1 when a record had the id (also when all were passed over or nothing changed).
// Returns 0 after ErrorBoxF "Změna statu funkce (id=%d) - není v žádné tabulce funkcí" when none
// had it; 0 after an internal error for a null table.

int32_t InvokeFunction(FunctionTable *table, int32_t argument, int32_t id);
// Calls the handler of FindFunction's record with argument and returns its result. Returns 0
// without calling when the status has PFU_ST_DISABLED or PFU_ST_UNAVAILABLE, or the record has
// no handler (a function with a link is the menus' business); 0 after FindFunction's message
// for an unknown id, 0 after an internal error for a null table.

// ---- Descriptors ---------------------------------------------------------------------------

Flag FillDescriptor(FunctionTable *table, const PfuWindow *window, const FunctionRecord *record,
                    FunctionRecord *descriptor);
// Copies record into descriptor:
//   1. id, status, options and type; the descriptor keeps its own bit PFU_ST_OWN (the record's
//      0x0010 is not taken).
//   2. With a window: when the type does not make the function available in the window's mode,
//      PFU_ST_UNAVAILABLE is set. A mode outside 0..6 is an internal error and the function
//      counts as not available.
//   3. help code, link and handler. Both link and handler set: internal error, and the
//      descriptor's link is cleared. Neither set: internal error. The fill goes on after both.
//   4. The configuration name: the descriptor's copy is freed when the record has no name or a
//      longer one; then, when the record has a name, a copy of its length + 1 is allocated when
//      the descriptor holds none, and the name is copied.
//   5. The key: the record's key when not 0; else the plain key conversion of the character
//      after the first "&" of the function's menu text; no text, no "&" or nothing after it: 0.
// Returns 1, also after the internal errors of steps 2 and 3. Returns 0 after OutOfMemoryError
// when the name cannot be copied (steps 1 to 3 are done, the descriptor's name is then null and
// its key as it was); 0 after an internal error, nothing changed,
// for a null table, record or descriptor. table is not used otherwise; window may be null.

Flag FillDescriptors(FunctionTable *table, const PfuWindow *window, FunctionRecord *descriptors);
// Fills every descriptor of the array (up to its PFU_ST_END record, which is left as it is)
// whose id is not 0 from FindFunction's record of that id. An id that no table holds shows
// FindFunction's message, then an internal error, and the descriptor is passed over unchanged.
// Returns 1; 0 at the first fill that failed (the descriptors after it are not filled); 0 after
// an internal error for a null table or array.

Flag FillDescriptorByName(FunctionTable *table, const PfuWindow *window, FunctionRecord *descriptor,
                          const char *config_name);
// Fills descriptor from the first record (tables in order) whose configuration name equals
// config_name by st_cmp. Returns FillDescriptor's result; 0 without a message when no record
// has that name; 0 after an internal error for a null table, descriptor or config_name.

Flag pfu_free_descriptor(FunctionRecord *descriptor);
// Frees the descriptor's configuration-name copy and sets the name to null. Returns 1; a null
// descriptor is an internal error: 0.

// ---- PFU_LIST.PFU --------------------------------------------------------------------------

Flag WriteFunctionList(FunctionTable *table);
// Writes PFU_LIST.PFU into the current directory through the file layer in text mode (Windows:
// CR LF line breaks), Windows-1250 as the texts stand. For every record of every table, in
// table and record order, whose type has no PFU_FT_UNLISTED and whose menu text is not empty:
//     "ID_CODE  : %d"        the id
//     "TEXT     : "          + the menu text
//     "HELP     : "          + the help line (empty when the text source has none)
//     "CONFIG   : "          + the configuration name (empty when null)
//     "HELP_CODE: %d"        the help code, as a signed 32-bit number
//     "FT_TYPE  : 0x%04X"    the type's 16 bits
//     " "                    a line holding one blank
// and after the last function the line "KONEC". TEXT, HELP and CONFIG lines are cut at 250
// characters, keyword included. Without a text source no function has a menu text: the file
// holds only "KONEC".
// Returns 1. Returns 0 when the file object cannot be made or the file cannot be opened (the
// file layer has shown why). A write that fails midway is reported by the file layer; writing
// stops there, the file is closed, and the result is 1 all the same. A null table is an
// internal error: 0.

// ---- The toolkit's side --------------------------------------------------------------------

// Which text of a function the text source is asked for.
enum { PFU_TEXT_MENU = 1, PFU_TEXT_HELP = 2 };

typedef const char *(*PfuTextSource)(int32_t id, int16_t which);
// The function's menu text (with its "&" mark) or help line, or null when it has none.
// A returned text is only read until the next call.

PfuTextSource pfu_set_text_source(PfuTextSource source);
// Registers the text source (null: none, every text is empty) and returns the previous one.

typedef uint16_t (*PfuKeyConversion)(char letter);
// The key code of a menu letter, 0 for none.

void pfu_set_key_conversions(PfuKeyConversion plain, PfuKeyConversion second);
// Registers the plain conversion (the "&" letter as it stands) and the second one (the letter
// upper-cased, for PFU_KEY_AMP_UPPER); null puts the default back:
//   plain default:  the Win32 virtual-key code of the letter's key, keyboard layout aside:
//                   A-Z and a-z give 0x41-0x5A, 0-9 give 0x30-0x39, a Czech or Slovak accented
//                   letter the code of its base letter (ř -> 0x52); any other character 0;
//   second default: the character code itself as an unsigned byte ('Ř' -> 0xD8); NUL gives 0.

uint16_t pfu_key_plain(char letter);
uint16_t pfu_key_second(char letter);
// The two defaults above, for a toolkit that wants to fall back on them.

typedef void (*PfuStatusRefresh)(int32_t id);
// The frame's refresh of the menus and buttons of a function whose status changed.

PfuStatusRefresh pfu_set_status_refresh(PfuStatusRefresh refresh);
// Registers the refresh (set while the main window exists with its frame; null: none, status
// changes refresh nothing) and returns the previous one.

#endif
