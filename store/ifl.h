// ifl.h - the options record: the suite's settings at run time, and their loader.
//
// One process-wide record, ifl_options, holds a field for every key of the suite's system
// configuration file. It is a static object whose initial contents are the built-in defaults
// (a constant initializer: it is complete before any code runs or any file is read). At
// start-up, once the configuration file is loaded into the process-wide store
// (wco::system_store()), load_options fills the record from the store key by key and writes
// every missing or unreadable key back into the store with its default. finish_options ends
// the record's use at exit.
//
// The record is plain data, nothing in it is allocated. Its fields, their types and defaults
// are those of the settings list, store/ifl_keys.h, in its order (section by section), each
// named as its key (real_default_edit_boundary has two: real_default_edit_boundary_edit and
// _pp).
#ifndef KX_IFL_H
#define KX_IFL_H

#include "common/co.h"
#include "store/wco.h"

enum {
  IFL_LONG_TEXT = 1024,  // text limit of paths and names
  IFL_SHORT_TEXT = 4,    // text limit of file-name extensions
  IFL_FIRST_FIELD = 20   // size of the record's first field
};

typedef char IflText[IFL_LONG_TEXT + 1];
typedef char IflExtension[IFL_SHORT_TEXT + 1];

// The field type of each kind of the settings list.
#define IFL_FIELD_TEXT IflText
#define IFL_FIELD_EXTENSION IflExtension
#define IFL_FIELD_FLAG Flag
#define IFL_FIELD_SHORT int16_t
#define IFL_FIELD_USHORT uint16_t
#define IFL_FIELD_INT int32_t
#define IFL_FIELD_ULONG uint32_t
#define IFL_FIELD_REAL float
#define IFL_FIELD_DOUBLE double
#define IFL_FIELD_REAL_PAIR WcoRealPair
#define IFL_FIELD_REAL_RECT WcoRealRect
#define IFL_FIELD_COLOUR uint8_t
#define IFL_FIELD_DRAW_MODE uint8_t
#define IFL_FIELD_UNITS int16_t
#define IFL_FIELD_CURSOR int16_t
#define IFL_FIELD_CODE_PAGE int16_t
#define IFL_FIELD_KEY int16_t

struct OptionsRecord {
  // Not a setting: no operation of the installer reads or writes it, and it stays as it is
  // (empty).
  char record_tag[IFL_FIRST_FIELD];
#define IFL_GROUP(step, section)
#define IFL_NAMED(step, section)
#define IFL_SETTING(kind, field, ...) IFL_FIELD_##kind field;
#define IFL_SETTING_AS(kind, key, field, ...) IFL_FIELD_##kind field;
#define IFL_AGAIN(kind, field)
#include "store/ifl_keys.h"
};

// The process-wide record; holds the defaults until load_options runs.
extern OptionsRecord ifl_options;

// The built-in defaults, the initial contents of ifl_options.
extern const OptionsRecord ifl_defaults;

Flag load_options(OptionsRecord *record);
// Fills the record from the process-wide store (wco::system_store()). The keys are visited
// group by group, in this order, each group after wco::select_section of its section (which
// creates a missing section):
//   CO_common          initial_directory ... check_file_owerwrite (13 keys)
//   CO_printer_output  all its keys
//   CO_simulator       all its keys
//   CO_common          bg_dash_multiple ... sound_on (17 keys)
//   CO_colors          all its keys
//   CO_common          output_code ... show_distance_character (5 keys)
//   then the nine keys enable_context_menu ... rename_noname_at_save_design through the
//   named-section operations with "CO_common" (the current section stays CO_common),
//   CO_schematic, CO_layout, CO_edit (real_edit_thick is read twice in a row) and CO_pp, each
//   with all its keys in record order.
// For each key the typed get_ reads into the field (texts pass their limit, IFL_LONG_TEXT or
// IFL_SHORT_TEXT). When it returns 0 -- the key is missing, or a number does not parse -- the
// matching set_ writes the field's present value (still the default) into the store, and the
// field keeps it. Values read are not range-checked or clamped. Flags and enumerations always
// read when the key is present (an unknown word gives the table's fallback; the store keeps
// the word). Afterwards CO_pp is the current section, and every section written to is marked
// modified, so the next save writes the defaults into the file.
// A store operation that fails (out of memory) has shown its message; the loader goes on with
// the next key.
// Returns 1; 0 after InternalError("ifl", line) for a null record, and 0 when there is no
// process-wide store (after the out-of-memory message); the record is then left as it was.

Flag finish_options(OptionsRecord *record);
// Ends the use of the record at exit. Does nothing (saving the store is the caller's task,
// wco::save_always) and returns 1.

#endif
