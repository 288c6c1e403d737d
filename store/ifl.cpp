// ifl.cpp - the options record and its loader.
#include "store/ifl.h"

#include "common/we.h"

#include <stddef.h>

namespace {

// The value type of a key, and the loader's own row kind.
enum IflType : uint8_t {
  IFL_SELECT,   // a group: select the row's section; the group's keys use it
  IFL_BY_NAME,  // a group whose keys name the row's section in each call
  IFL_TEXT,
  IFL_FLAG,
  IFL_SHORT,
  IFL_USHORT,
  IFL_INT,
  IFL_ULONG,
  IFL_REAL,
  IFL_DOUBLE,
  IFL_REAL_PAIR,
  IFL_REAL_RECT,
  IFL_COLOUR,     // uint8_t field
  IFL_DRAW_MODE,  // uint8_t field
  IFL_UNITS,
  IFL_CURSOR,
  IFL_CODE_PAGE,
  IFL_KEY
};

// One row of the loader: the start of a group of keys, or a key to read into a field of the
// record. The rows stand in the list's order; the loader takes the groups in step order.
struct IflRow {
  IflType type;
  uint8_t step;         // a group: its turn in the loader, from 1
  const char *section;  // a group: its section
  const char *key;
  size_t offset;  // of the field in OptionsRecord
  size_t size;    // of the field
};

// The row type of each kind of the settings list.
constexpr IflType IFL_ROW_TEXT = IFL_TEXT, IFL_ROW_EXTENSION = IFL_TEXT, IFL_ROW_FLAG = IFL_FLAG,
                  IFL_ROW_SHORT = IFL_SHORT, IFL_ROW_USHORT = IFL_USHORT, IFL_ROW_INT = IFL_INT,
                  IFL_ROW_ULONG = IFL_ULONG, IFL_ROW_REAL = IFL_REAL, IFL_ROW_DOUBLE = IFL_DOUBLE,
                  IFL_ROW_REAL_PAIR = IFL_REAL_PAIR, IFL_ROW_REAL_RECT = IFL_REAL_RECT,
                  IFL_ROW_COLOUR = IFL_COLOUR, IFL_ROW_DRAW_MODE = IFL_DRAW_MODE,
                  IFL_ROW_UNITS = IFL_UNITS, IFL_ROW_CURSOR = IFL_CURSOR,
                  IFL_ROW_CODE_PAGE = IFL_CODE_PAGE, IFL_ROW_KEY = IFL_KEY;

#define IFL_FIELD_SIZE(field) sizeof(static_cast<OptionsRecord *>(nullptr)->field)
#define IFL_ROW(kind, key, field) \
  {IFL_ROW_##kind, 0, nullptr, key, offsetof(OptionsRecord, field), IFL_FIELD_SIZE(field)},

const IflRow ifl_rows[] = {
#define IFL_GROUP(step, section) {IFL_SELECT, step, section, nullptr, 0, 0},
#define IFL_NAMED(step, section) {IFL_BY_NAME, step, section, nullptr, 0, 0},
#define IFL_SETTING(kind, field, ...) IFL_ROW(kind, #field, field)
#define IFL_SETTING_AS(kind, key, field, ...) IFL_ROW(kind, key, field)
#define IFL_AGAIN(kind, field) IFL_ROW(kind, #field, field)
#include "store/ifl_keys.h"
};

const EnumNames *enum_names(IflType type) {
  switch (type) {
    case IFL_FLAG: return &ets_flag;
    case IFL_COLOUR: return &ets_colour;
    case IFL_DRAW_MODE: return &ets_draw_mode;
    case IFL_UNITS: return &ets_units;
    case IFL_CURSOR: return &ets_cursor;
    case IFL_CODE_PAGE: return &ets_code_page;
    case IFL_KEY: return &ets_key;
    default: return nullptr;
  }
}

// get_ of the row's key into the field (named form when the row has a section).
Flag get_value(ConfigStore *store, const char *s, const IflRow &row, void *field) {
  const char *k = row.key;
  switch (row.type) {
    case IFL_TEXT: {
      char *text = static_cast<char *>(field);
      int32_t limit = static_cast<int32_t>(row.size) - 1;
      return s ? wco::get_text(store, s, k, text, limit) : wco::get_text(store, k, text, limit);
    }
    case IFL_SHORT: {
      int16_t *v = static_cast<int16_t *>(field);
      return s ? wco::get_short(store, s, k, v) : wco::get_short(store, k, v);
    }
    case IFL_USHORT: {
      uint16_t *v = static_cast<uint16_t *>(field);
      return s ? wco::get_ushort(store, s, k, v) : wco::get_ushort(store, k, v);
    }
    case IFL_INT: {
      int32_t *v = static_cast<int32_t *>(field);
      return s ? wco::get_int(store, s, k, v) : wco::get_int(store, k, v);
    }
    case IFL_ULONG: {
      uint32_t *v = static_cast<uint32_t *>(field);
      return s ? wco::get_ulong(store, s, k, v) : wco::get_ulong(store, k, v);
    }
    case IFL_REAL: {
      float *v = static_cast<float *>(field);
      return s ? wco::get_real(store, s, k, v) : wco::get_real(store, k, v);
    }
    case IFL_DOUBLE: {
      double *v = static_cast<double *>(field);
      return s ? wco::get_double(store, s, k, v) : wco::get_double(store, k, v);
    }
    case IFL_REAL_PAIR: {
      WcoRealPair *v = static_cast<WcoRealPair *>(field);
      return s ? wco::get_real_pair(store, s, k, v) : wco::get_real_pair(store, k, v);
    }
    case IFL_REAL_RECT: {
      WcoRealRect *v = static_cast<WcoRealRect *>(field);
      return s ? wco::get_real_rect(store, s, k, v) : wco::get_real_rect(store, k, v);
    }
    case IFL_COLOUR:
    case IFL_DRAW_MODE: {
      // one-byte fields: read through a 16-bit value, stored as read
      uint8_t *byte = static_cast<uint8_t *>(field);
      int16_t v = *byte;
      const EnumNames *names = enum_names(row.type);
      Flag ok = s ? wco::get_enum(store, s, k, names, &v) : wco::get_enum(store, k, names, &v);
      if (ok) *byte = static_cast<uint8_t>(v);
      return ok;
    }
    case IFL_FLAG:
    case IFL_UNITS:
    case IFL_CURSOR:
    case IFL_CODE_PAGE:
    case IFL_KEY: {
      int16_t *v = static_cast<int16_t *>(field);
      const EnumNames *names = enum_names(row.type);
      return s ? wco::get_enum(store, s, k, names, v) : wco::get_enum(store, k, names, v);
    }
    case IFL_SELECT:
    case IFL_BY_NAME: break;
  }
  SwitchError("ifl", __LINE__);
  return 0;
}

// set_ of the row's key with the field's present value.
Flag set_value(ConfigStore *store, const char *s, const IflRow &row, const void *field) {
  const char *k = row.key;
  switch (row.type) {
    case IFL_TEXT: {
      const char *v = static_cast<const char *>(field);
      return s ? wco::set_text(store, s, k, v) : wco::set_text(store, k, v);
    }
    case IFL_SHORT: {
      int16_t v = *static_cast<const int16_t *>(field);
      return s ? wco::set_short(store, s, k, v) : wco::set_short(store, k, v);
    }
    case IFL_USHORT: {
      uint16_t v = *static_cast<const uint16_t *>(field);
      return s ? wco::set_ushort(store, s, k, v) : wco::set_ushort(store, k, v);
    }
    case IFL_INT: {
      int32_t v = *static_cast<const int32_t *>(field);
      return s ? wco::set_int(store, s, k, v) : wco::set_int(store, k, v);
    }
    case IFL_ULONG: {
      uint32_t v = *static_cast<const uint32_t *>(field);
      return s ? wco::set_ulong(store, s, k, v) : wco::set_ulong(store, k, v);
    }
    case IFL_REAL: {
      float v = *static_cast<const float *>(field);
      return s ? wco::set_real(store, s, k, v) : wco::set_real(store, k, v);
    }
    case IFL_DOUBLE: {
      double v = *static_cast<const double *>(field);
      return s ? wco::set_double(store, s, k, v) : wco::set_double(store, k, v);
    }
    case IFL_REAL_PAIR: {
      const WcoRealPair *v = static_cast<const WcoRealPair *>(field);
      return s ? wco::set_real_pair(store, s, k, v) : wco::set_real_pair(store, k, v);
    }
    case IFL_REAL_RECT: {
      const WcoRealRect *v = static_cast<const WcoRealRect *>(field);
      return s ? wco::set_real_rect(store, s, k, v) : wco::set_real_rect(store, k, v);
    }
    case IFL_COLOUR:
    case IFL_DRAW_MODE: {
      int16_t v = *static_cast<const uint8_t *>(field);
      const EnumNames *names = enum_names(row.type);
      return s ? wco::set_enum(store, s, k, names, v) : wco::set_enum(store, k, names, v);
    }
    case IFL_FLAG:
    case IFL_UNITS:
    case IFL_CURSOR:
    case IFL_CODE_PAGE:
    case IFL_KEY: {
      int16_t v = *static_cast<const int16_t *>(field);
      const EnumNames *names = enum_names(row.type);
      return s ? wco::set_enum(store, s, k, names, v) : wco::set_enum(store, k, names, v);
    }
    case IFL_SELECT:
    case IFL_BY_NAME: break;
  }
  SwitchError("ifl", __LINE__);
  return 0;
}

}  // namespace

constexpr OptionsRecord ifl_initial = {
    "",  // record_tag
#define IFL_GROUP(step, section)
#define IFL_NAMED(step, section)
#define IFL_SETTING(kind, field, ...) __VA_ARGS__,
#define IFL_SETTING_AS(kind, key, field, ...) __VA_ARGS__,
#define IFL_AGAIN(kind, field)
#include "store/ifl_keys.h"
};

const OptionsRecord ifl_defaults = ifl_initial;
OptionsRecord ifl_options = ifl_initial;

Flag load_options(OptionsRecord *record) {
  if (record == nullptr) {
    InternalError("ifl", __LINE__);
    return 0;
  }
  ConfigStore *store = wco::system_store();
  if (store == nullptr) return 0;
  unsigned char *base = reinterpret_cast<unsigned char *>(record);
  const size_t rows = sizeof ifl_rows / sizeof ifl_rows[0];
  for (uint8_t step = 1;; step++) {
    size_t i = 0;
    while (i < rows && !(ifl_rows[i].step == step && ifl_rows[i].key == nullptr)) i++;
    if (i == rows) return 1;
    const char *named = nullptr;  // the section each call names, or null: the current one
    if (ifl_rows[i].type == IFL_SELECT) wco::select_section(store, ifl_rows[i].section);
    else named = ifl_rows[i].section;
    for (i++; i < rows && ifl_rows[i].key != nullptr; i++) {
      const IflRow &row = ifl_rows[i];
      void *field = base + row.offset;
      if (!get_value(store, named, row, field)) set_value(store, named, row, field);
    }
  }
}

Flag finish_options(OptionsRecord *) { return 1; }
