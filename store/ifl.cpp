// ifl.cpp - the options record and its loader.
#include "store/ifl.h"

#include "common/we.h"

#include <stddef.h>

namespace {

// The value type of a key, and the loader's own row kind.
enum IflType : uint8_t {
  IFL_SELECT,  // select the row's section; the rows that follow use it
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

// One step of the loader: a section to select, or a key to read into a field of the record.
struct IflRow {
  IflType type;
  const char *section;  // IFL_SELECT: the section; a key row: null for the current section,
                        // else the section named in each call
  const char *key;
  size_t offset;        // of the field in OptionsRecord
  size_t size;          // of the field
};

#define IFL_FIELD_SIZE(field) sizeof(static_cast<OptionsRecord *>(nullptr)->field)
#define IFL_SELECT(section) {IFL_SELECT, section, nullptr, 0, 0}
#define IFL_KEY_ROW(type, field) \
  {type, nullptr, #field, offsetof(OptionsRecord, field), IFL_FIELD_SIZE(field)}
#define IFL_KEY_AS(type, key, field) \
  {type, nullptr, key, offsetof(OptionsRecord, field), IFL_FIELD_SIZE(field)}
#define IFL_COMMON_ROW(type, field) \
  {type, "CO_common", #field, offsetof(OptionsRecord, field), IFL_FIELD_SIZE(field)}

// keep this order: it is the order in which the suite has always read its settings
const IflRow ifl_rows[] = {
    IFL_SELECT("CO_common"),
    IFL_KEY_ROW(IFL_TEXT, initial_directory),
    IFL_KEY_ROW(IFL_TEXT, default_design_name),
    IFL_KEY_ROW(IFL_TEXT, default_design_extension),
    IFL_KEY_ROW(IFL_TEXT, default_design_V3_extension),
    IFL_KEY_ROW(IFL_TEXT, default_text_extension),
    IFL_KEY_ROW(IFL_FLAG, small_check_design_integrity),
    IFL_KEY_ROW(IFL_FLAG, check_design_file_integrity),
    IFL_KEY_ROW(IFL_FLAG, check_file_overwrite),
    IFL_KEY_ROW(IFL_TEXT, default_macro_extension),
    IFL_KEY_ROW(IFL_KEY, macro_end_character),
    IFL_KEY_ROW(IFL_TEXT, system_path),
    IFL_KEY_ROW(IFL_TEXT, system_default_design_name),
    IFL_KEY_ROW(IFL_FLAG, check_file_owerwrite),
    IFL_SELECT("CO_printer_output"),
    IFL_KEY_ROW(IFL_TEXT, default_prn_output_file),
    IFL_KEY_ROW(IFL_TEXT, default_pcf_file_name),
    IFL_KEY_ROW(IFL_TEXT, default_pcf_extension),
    IFL_KEY_ROW(IFL_COLOUR, default_pcf_black_color),
    IFL_KEY_ROW(IFL_COLOUR, default_pcf_first_color),
    IFL_KEY_ROW(IFL_REAL, real_printer_minimal_width),
    IFL_KEY_ROW(IFL_FLAG, printer_disable_dot_line),
    IFL_KEY_ROW(IFL_FLAG, printer_disable_dash_line),
    IFL_KEY_ROW(IFL_SHORT, printer_dash_multiple),
    IFL_KEY_ROW(IFL_FLAG, printer_disable_dash_dot_line),
    IFL_KEY_ROW(IFL_SHORT, printer_dash_dot_multiple),
    IFL_SELECT("CO_simulator"),
    IFL_KEY_ROW(IFL_TEXT, default_model_library_path),
    IFL_KEY_ROW(IFL_TEXT, default_model_library_extension),
    IFL_SELECT("CO_common"),
    IFL_KEY_ROW(IFL_SHORT, bg_dash_multiple),
    IFL_KEY_ROW(IFL_SHORT, bg_dash_dot_multiple),
    IFL_KEY_ROW(IFL_TEXT, default_pp_output_directory),
    IFL_KEY_ROW(IFL_TEXT, autosave_subpath),
    IFL_KEY_ROW(IFL_TEXT, autosave_subname),
    IFL_KEY_ROW(IFL_SHORT, save_timeout),
    IFL_KEY_ROW(IFL_FLAG, autopanning),
    IFL_KEY_ROW(IFL_CURSOR, cursor_type),
    IFL_KEY_ROW(IFL_CURSOR, trace_cursor_type),
    IFL_KEY_ROW(IFL_FLAG, move_trace_cursor),
    IFL_KEY_ROW(IFL_SHORT, percent_msg_window_size),
    IFL_KEY_ROW(IFL_SHORT, percent_tbar_divider_position),
    IFL_KEY_ROW(IFL_FLAG, scroll_with_redraw),
    IFL_KEY_ROW(IFL_FLAG, scroll_with_pour_polygon),
    IFL_KEY_ROW(IFL_SHORT, no_bak_version),
    IFL_KEY_ROW(IFL_SHORT, grid_dots_distance),
    IFL_KEY_ROW(IFL_FLAG, sound_on),
    IFL_SELECT("CO_colors"),
    IFL_KEY_ROW(IFL_DRAW_MODE, draw_priority),
    IFL_KEY_ROW(IFL_COLOUR, bad_atom_color),
    IFL_KEY_ROW(IFL_DRAW_MODE, bad_atom_priority),
    IFL_KEY_ROW(IFL_COLOUR, flexi_color),
    IFL_KEY_ROW(IFL_DRAW_MODE, flexi_priority),
    IFL_KEY_ROW(IFL_COLOUR, select_color),
    IFL_KEY_ROW(IFL_DRAW_MODE, select_priority),
    IFL_KEY_ROW(IFL_COLOUR, erase_color),
    IFL_KEY_ROW(IFL_DRAW_MODE, erase_priority),
    IFL_KEY_ROW(IFL_COLOUR, schematic_hilight_color),
    IFL_KEY_ROW(IFL_DRAW_MODE, schematic_hilight_priority),
    IFL_KEY_ROW(IFL_COLOUR, layout_hilight_color),
    IFL_KEY_ROW(IFL_DRAW_MODE, layout_hilight_priority),
    IFL_KEY_ROW(IFL_COLOUR, trace_color),
    IFL_KEY_ROW(IFL_DRAW_MODE, trace_priority),
    IFL_KEY_ROW(IFL_COLOUR, dot_grid_color),
    IFL_KEY_ROW(IFL_DRAW_MODE, dot_grid_priority),
    IFL_KEY_ROW(IFL_COLOUR, line_grid_color),
    IFL_KEY_ROW(IFL_DRAW_MODE, line_grid_priority),
    IFL_SELECT("CO_common"),
    IFL_KEY_ROW(IFL_CODE_PAGE, output_code),
    IFL_KEY_ROW(IFL_USHORT, cursor_delta),
    IFL_KEY_ROW(IFL_FLAG, draw_close_polygon_segment),
    IFL_KEY_ROW(IFL_KEY, show_temporary_character),
    IFL_KEY_ROW(IFL_KEY, show_distance_character),
    // read through the section name, whatever section is current
    IFL_COMMON_ROW(IFL_FLAG, enable_context_menu),
    IFL_COMMON_ROW(IFL_INT, context_menu_timeout),
    IFL_COMMON_ROW(IFL_FLAG, dynamic_info_enable),
    IFL_COMMON_ROW(IFL_FLAG, dynamic_info_enable_ldoubleclick),
    IFL_COMMON_ROW(IFL_FLAG, dynamic_info_only_idle),
    IFL_COMMON_ROW(IFL_INT, dynamic_info_first_timeout),
    IFL_COMMON_ROW(IFL_INT, dynamic_info_next_timeout),
    IFL_COMMON_ROW(IFL_FLAG, rename_noname_at_close_window),
    IFL_COMMON_ROW(IFL_FLAG, rename_noname_at_save_design),
    IFL_SELECT("CO_schematic"),
    IFL_KEY_ROW(IFL_UNITS, schematic_units),
    IFL_KEY_ROW(IFL_SHORT, schematic_resolution_mantisa),
    IFL_KEY_ROW(IFL_SHORT, schematic_resolution_exponent),
    IFL_KEY_ROW(IFL_REAL_RECT, real_default_schematic_boundary),
    IFL_KEY_ROW(IFL_REAL_RECT, real_default_symbolic_boundary),
    IFL_KEY_ROW(IFL_FLAG, schematic_primary_grid_on),
    IFL_KEY_ROW(IFL_REAL_PAIR, real_schematic_primary_grid_factor),
    IFL_KEY_ROW(IFL_REAL_PAIR, real_schematic_primary_grid_offset),
    IFL_KEY_ROW(IFL_FLAG, schematic_secondary_grid_on),
    IFL_KEY_ROW(IFL_REAL_PAIR, real_schematic_secondary_grid_factor),
    IFL_KEY_ROW(IFL_REAL_PAIR, real_schematic_secondary_grid_offset),
    IFL_KEY_ROW(IFL_TEXT, schema_default_library_path),
    IFL_KEY_ROW(IFL_TEXT, schema_default_library_extension),
    IFL_KEY_ROW(IFL_TEXT, schema_default_library_V3_extension),
    IFL_KEY_ROW(IFL_FLAG, schema_junction_square),
    IFL_KEY_ROW(IFL_REAL, real_schema_junction_radius),
    IFL_KEY_ROW(IFL_REAL, real_schema_join_radius),
    IFL_KEY_ROW(IFL_REAL, real_schema_port_name_size),
    IFL_KEY_ROW(IFL_REAL, real_schema_port_width),
    IFL_KEY_ROW(IFL_REAL, real_schema_add_x_port_name),
    IFL_KEY_ROW(IFL_REAL, real_schema_add_y_port_name),
    IFL_KEY_ROW(IFL_REAL, real_schema_add_non_port_name),
    IFL_KEY_ROW(IFL_REAL, real_schema_port_power_radius),
    IFL_KEY_ROW(IFL_REAL, real_symbol_default_port_size),
    IFL_KEY_ROW(IFL_REAL, real_symbol_default_port_thick),
    IFL_KEY_ROW(IFL_REAL, real_schema_size),
    IFL_KEY_ROW(IFL_REAL, real_schema_thick),
    IFL_KEY_ROW(IFL_REAL, real_schema_netname_cross),
    IFL_KEY_ROW(IFL_REAL, real_schema_hot_point_radius),
    IFL_KEY_ROW(IFL_REAL, real_schema_bus_width),
    IFL_KEY_ROW(IFL_REAL, real_schema_busbit_text_size),
    IFL_KEY_ROW(IFL_REAL, real_schema_reference_text_size),
    IFL_KEY_ROW(IFL_REAL, real_schema_name_text_size),
    IFL_KEY_ROW(IFL_REAL, real_schema_socle_text_size),
    IFL_KEY_ROW(IFL_REAL, real_schema_value_text_size),
    IFL_KEY_ROW(IFL_REAL, real_schema_model_text_size),
    IFL_KEY_ROW(IFL_REAL, real_schema_pin_text_size),
    IFL_KEY_ROW(IFL_REAL, real_schema_short_circuit_width),
    IFL_KEY_ROW(IFL_REAL, real_schema_short_circuit_hight),
    IFL_KEY_ROW(IFL_REAL, real_schema_mark_width),
    IFL_KEY_ROW(IFL_REAL, real_schema_mark_hight),
    IFL_KEY_ROW(IFL_REAL, real_schema_dot_step_size),
    IFL_KEY_ROW(IFL_REAL, real_schema_pour_polygon_clearance),
    IFL_KEY_ROW(IFL_REAL, real_schema_fill_distance),
    IFL_KEY_ROW(IFL_REAL, real_schema_minimal_area),
    IFL_KEY_ROW(IFL_INT, schema_obmp_pixel_size_x),
    IFL_KEY_ROW(IFL_INT, schema_obmp_pixel_size_y),
    IFL_KEY_ROW(IFL_DOUBLE, schema_obmp_mm_size_x),
    IFL_KEY_ROW(IFL_DOUBLE, schema_obmp_mm_size_y),
    IFL_KEY_ROW(IFL_INT, schema_obmp_dpi_resolution),
    IFL_KEY_ROW(IFL_FLAG, schema_obmp_color),
    IFL_KEY_ROW(IFL_COLOUR, schema_obmp_background),
    IFL_KEY_ROW(IFL_REAL, real_schema_obmp_minimal_width),
    IFL_KEY_ROW(IFL_FLAG, schema_oemf_color_metafile),
    IFL_KEY_ROW(IFL_FLAG, schema_oemf_transparent),
    IFL_KEY_ROW(IFL_COLOUR, schema_oemf_background),
    IFL_KEY_ROW(IFL_COLOUR, schema_oemf_foreground),
    IFL_KEY_ROW(IFL_REAL, real_schema_oemf_minimal_width),
    IFL_KEY_ROW(IFL_FLAG, schema_update_block_by_reference),
    IFL_KEY_ROW(IFL_FLAG, schema_autochange_reference),
    IFL_SELECT("CO_layout"),
    IFL_KEY_ROW(IFL_UNITS, layout_units),
    IFL_KEY_ROW(IFL_SHORT, layout_resolution_mantisa),
    IFL_KEY_ROW(IFL_SHORT, layout_resolution_exponent),
    IFL_KEY_ROW(IFL_REAL_RECT, real_default_layout_boundary),
    IFL_KEY_ROW(IFL_REAL_RECT, real_default_socle_boundary),
    IFL_KEY_ROW(IFL_FLAG, layout_primary_grid_on),
    IFL_KEY_ROW(IFL_REAL_PAIR, real_layout_primary_grid_factor),
    IFL_KEY_ROW(IFL_REAL_PAIR, real_layout_primary_grid_offset),
    IFL_KEY_ROW(IFL_FLAG, layout_secondary_grid_on),
    IFL_KEY_ROW(IFL_REAL_PAIR, real_layout_secondary_grid_factor),
    IFL_KEY_ROW(IFL_REAL_PAIR, real_layout_secondary_grid_offset),
    IFL_KEY_ROW(IFL_TEXT, layout_default_library_path),
    IFL_KEY_ROW(IFL_TEXT, layout_default_library_extension),
    IFL_KEY_ROW(IFL_TEXT, layout_default_library_V3_extension),
    IFL_KEY_ROW(IFL_REAL, real_layout_join_radius),
    IFL_KEY_ROW(IFL_REAL, real_layout_size),
    IFL_KEY_ROW(IFL_REAL, real_layout_thick),
    IFL_KEY_ROW(IFL_REAL, real_layout_netname_cross),
    IFL_KEY_ROW(IFL_REAL, real_layout_hot_point_radius),
    IFL_KEY_ROW(IFL_REAL, real_layout_pin_text_size),
    IFL_KEY_ROW(IFL_REAL, real_layout_reference_text_size),
    IFL_KEY_ROW(IFL_REAL, real_layout_name_text_size),
    IFL_KEY_ROW(IFL_REAL, real_layout_socle_text_size),
    IFL_KEY_ROW(IFL_REAL, real_layout_value_text_size),
    IFL_KEY_ROW(IFL_REAL, real_layout_model_text_size),
    IFL_KEY_ROW(IFL_REAL, real_layout_mark_width),
    IFL_KEY_ROW(IFL_REAL, real_layout_mark_hight),
    IFL_KEY_ROW(IFL_REAL, real_layout_short_circuit_width),
    IFL_KEY_ROW(IFL_REAL, real_layout_dot_step_size),
    IFL_KEY_ROW(IFL_REAL, real_layout_maximal_clearance),
    IFL_KEY_ROW(IFL_REAL, real_layout_clearance),
    IFL_KEY_ROW(IFL_REAL, real_layout_pour_polygon_clearance),
    IFL_KEY_ROW(IFL_REAL, real_layout_fill_distance),
    IFL_KEY_ROW(IFL_REAL, real_layout_minimal_area),
    IFL_KEY_ROW(IFL_REAL, real_thermopoint_left),
    IFL_KEY_ROW(IFL_REAL, real_thermopoint_right),
    IFL_KEY_ROW(IFL_REAL, real_thermopoint_up),
    IFL_KEY_ROW(IFL_REAL, real_thermopoint_down),
    IFL_KEY_ROW(IFL_REAL, real_thermopoint_radius),
    IFL_KEY_ROW(IFL_REAL, real_place_point_radius),
    IFL_KEY_ROW(IFL_REAL, real_drsm_point_radius),
    IFL_KEY_ROW(IFL_FLAG, independent_layout_socle),
    IFL_KEY_ROW(IFL_INT, layout_obmp_pixel_size_x),
    IFL_KEY_ROW(IFL_INT, layout_obmp_pixel_size_y),
    IFL_KEY_ROW(IFL_DOUBLE, layout_obmp_mm_size_x),
    IFL_KEY_ROW(IFL_DOUBLE, layout_obmp_mm_size_y),
    IFL_KEY_ROW(IFL_INT, layout_obmp_dpi_resolution),
    IFL_KEY_ROW(IFL_FLAG, layout_obmp_color),
    IFL_KEY_ROW(IFL_COLOUR, layout_obmp_background),
    IFL_KEY_ROW(IFL_REAL, real_layout_obmp_minimal_width),
    IFL_KEY_ROW(IFL_FLAG, layout_oemf_color_metafile),
    IFL_KEY_ROW(IFL_FLAG, layout_oemf_transparent),
    IFL_KEY_ROW(IFL_COLOUR, layout_oemf_background),
    IFL_KEY_ROW(IFL_COLOUR, layout_oemf_foreground),
    IFL_KEY_ROW(IFL_REAL, real_layout_oemf_minimal_width),
    IFL_KEY_ROW(IFL_FLAG, layout_autochange_reference),
    IFL_SELECT("CO_edit"),
    IFL_KEY_ROW(IFL_UNITS, edit_units),
    IFL_KEY_ROW(IFL_SHORT, edit_resolution_mantisa),
    IFL_KEY_ROW(IFL_SHORT, edit_resolution_exponent),
    IFL_KEY_AS(IFL_REAL_RECT, "real_default_edit_boundary", real_default_edit_boundary_edit),
    IFL_KEY_ROW(IFL_FLAG, edit_primary_grid_on),
    IFL_KEY_ROW(IFL_REAL_PAIR, real_edit_primary_grid_factor),
    IFL_KEY_ROW(IFL_REAL_PAIR, real_edit_primary_grid_offset),
    IFL_KEY_ROW(IFL_FLAG, edit_secondary_grid_on),
    IFL_KEY_ROW(IFL_REAL_PAIR, real_edit_secondary_grid_factor),
    IFL_KEY_ROW(IFL_REAL_PAIR, real_edit_secondary_grid_offset),
    IFL_KEY_ROW(IFL_TEXT, edit_default_library_path),
    IFL_KEY_ROW(IFL_TEXT, edit_default_library_extension),
    IFL_KEY_ROW(IFL_ULONG, real_edit_thick),
    IFL_KEY_ROW(IFL_ULONG, real_edit_thick),
    IFL_KEY_ROW(IFL_ULONG, real_edit_hot_point_radius),
    IFL_KEY_ROW(IFL_ULONG, real_edit_title_text_size),
    IFL_KEY_ROW(IFL_REAL, real_edit_pour_polygon_clearance),
    IFL_KEY_ROW(IFL_REAL, real_edit_fill_distance),
    IFL_KEY_ROW(IFL_REAL, real_edit_minimal_area),
    IFL_SELECT("CO_pp"),
    IFL_KEY_AS(IFL_REAL_RECT, "real_default_edit_boundary", real_default_edit_boundary_pp),
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
Flag get_value(ConfigStore *store, const IflRow &row, void *field) {
  const char *s = row.section;
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
      break;
  }
  SwitchError("ifl", __LINE__);
  return 0;
}

// set_ of the row's key with the field's present value.
Flag set_value(ConfigStore *store, const IflRow &row, const void *field) {
  const char *s = row.section;
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
      break;
  }
  SwitchError("ifl", __LINE__);
  return 0;
}

}  // namespace

constexpr OptionsRecord ifl_initial = {
    "",  // record_tag
    // CO_common
    ".",  // initial_directory
    "DESIGN",  // default_design_name
    "D32",  // default_design_extension
    "DES",  // default_design_V3_extension
    "TXT",  // default_text_extension
    1,  // small_check_design_integrity
    1,  // check_design_file_integrity
    1,  // check_file_overwrite
    "WMC",  // default_macro_extension
    311,  // macro_end_character
    "\\KORV5\\",  // system_path
    "DEFAULT",  // system_default_design_name
    0,  // check_file_owerwrite
    3,  // bg_dash_multiple
    8,  // bg_dash_dot_multiple
    "",  // default_pp_output_directory
    "AUTOSAVE",  // autosave_subpath
    "-AUTOSAVE",  // autosave_subname
    0,  // save_timeout
    0,  // autopanning
    0,  // cursor_type
    1,  // trace_cursor_type
    1,  // move_trace_cursor
    10,  // percent_msg_window_size
    500,  // percent_tbar_divider_position
    1,  // scroll_with_redraw
    0,  // scroll_with_pour_polygon
    5,  // no_bak_version
    5,  // grid_dots_distance
    1,  // sound_on
    0,  // output_code
    5,  // cursor_delta
    1,  // draw_close_polygon_segment
    238,  // show_temporary_character
    244,  // show_distance_character
    1,  // enable_context_menu
    160,  // context_menu_timeout
    1,  // dynamic_info_enable
    1,  // dynamic_info_enable_ldoubleclick
    1,  // dynamic_info_only_idle
    2000,  // dynamic_info_first_timeout
    4000,  // dynamic_info_next_timeout
    1,  // rename_noname_at_close_window
    1,  // rename_noname_at_save_design
    // CO_printer_output
    "*.T",  // default_prn_output_file
    "LASER300.PCF",  // default_pcf_file_name
    "PCF",  // default_pcf_extension
    7,  // default_pcf_black_color
    14,  // default_pcf_first_color
    0.2f,  // real_printer_minimal_width
    0,  // printer_disable_dot_line
    0,  // printer_disable_dash_line
    3,  // printer_dash_multiple
    0,  // printer_disable_dash_dot_line
    8,  // printer_dash_dot_multiple
    // CO_simulator
    "c:\\",  // default_model_library_path
    "MOD",  // default_model_library_extension
    // CO_colors
    2,  // draw_priority
    7,  // bad_atom_color
    2,  // bad_atom_priority
    10,  // flexi_color
    3,  // flexi_priority
    15,  // select_color
    0,  // select_priority
    0,  // erase_color
    0,  // erase_priority
    13,  // schematic_hilight_color
    0,  // schematic_hilight_priority
    14,  // layout_hilight_color
    0,  // layout_hilight_priority
    14,  // trace_color
    0,  // trace_priority
    15,  // dot_grid_color
    3,  // dot_grid_priority
    15,  // line_grid_color
    3,  // line_grid_priority
    // CO_schematic
    0,  // schematic_units
    1,  // schematic_resolution_mantisa
    -1,  // schematic_resolution_exponent
    {0.0f, 0.0f, 170.0f, 120.0f},  // real_default_schematic_boundary
    {0.0f, 0.0f, 170.0f, 120.0f},  // real_default_symbolic_boundary
    1,  // schematic_primary_grid_on
    {3.0f, 3.0f},  // real_schematic_primary_grid_factor
    {0.0f, 0.0f},  // real_schematic_primary_grid_offset
    1,  // schematic_secondary_grid_on
    {30.0f, 30.0f},  // real_schematic_secondary_grid_factor
    {0.0f, 0.0f},  // real_schematic_secondary_grid_offset
    "c:\\korv\\lib",  // schema_default_library_path
    "S32",  // schema_default_library_extension
    "SDL",  // schema_default_library_V3_extension
    0,  // schema_junction_square
    1.0f,  // real_schema_junction_radius
    1.5f,  // real_schema_join_radius
    1.8f,  // real_schema_port_name_size
    0.3f,  // real_schema_port_width
    0.3f,  // real_schema_add_x_port_name
    0.33f,  // real_schema_add_y_port_name
    0.66f,  // real_schema_add_non_port_name
    1.0f,  // real_schema_port_power_radius
    2.0f,  // real_symbol_default_port_size
    0.0f,  // real_symbol_default_port_thick
    2.0f,  // real_schema_size
    0.0f,  // real_schema_thick
    1.0f,  // real_schema_netname_cross
    1.0f,  // real_schema_hot_point_radius
    1.0f,  // real_schema_bus_width
    1.8f,  // real_schema_busbit_text_size
    2.0f,  // real_schema_reference_text_size
    1.8f,  // real_schema_name_text_size
    1.8f,  // real_schema_socle_text_size
    1.8f,  // real_schema_value_text_size
    1.8f,  // real_schema_model_text_size
    1.8f,  // real_schema_pin_text_size
    3.0f,  // real_schema_short_circuit_width
    6.0f,  // real_schema_short_circuit_hight
    3.0f,  // real_schema_mark_width
    6.0f,  // real_schema_mark_hight
    0.5f,  // real_schema_dot_step_size
    0.4f,  // real_schema_pour_polygon_clearance
    1.0f,  // real_schema_fill_distance
    1.0f,  // real_schema_minimal_area
    800,  // schema_obmp_pixel_size_x
    600,  // schema_obmp_pixel_size_y
    210.0,  // schema_obmp_mm_size_x
    297.0,  // schema_obmp_mm_size_y
    300,  // schema_obmp_dpi_resolution
    0,  // schema_obmp_color
    15,  // schema_obmp_background
    0.0f,  // real_schema_obmp_minimal_width
    1,  // schema_oemf_color_metafile
    0,  // schema_oemf_transparent
    15,  // schema_oemf_background
    0,  // schema_oemf_foreground
    0.0f,  // real_schema_oemf_minimal_width
    1,  // schema_update_block_by_reference
    1,  // schema_autochange_reference
    // CO_layout
    0,  // layout_units
    1,  // layout_resolution_mantisa
    -2,  // layout_resolution_exponent
    {0.0f, 0.0f, 170.0f, 120.0f},  // real_default_layout_boundary
    {0.0f, 0.0f, 80.0f, 60.0f},  // real_default_socle_boundary
    1,  // layout_primary_grid_on
    {1.25f, 1.25f},  // real_layout_primary_grid_factor
    {0.0f, 0.0f},  // real_layout_primary_grid_offset
    1,  // layout_secondary_grid_on
    {10.0f, 10.0f},  // real_layout_secondary_grid_factor
    {0.0f, 0.0f},  // real_layout_secondary_grid_offset
    "c:\\korv\\lib",  // layout_default_library_path
    "L32",  // layout_default_library_extension
    "LDL",  // layout_default_library_V3_extension
    1.5f,  // real_layout_join_radius
    2.0f,  // real_layout_size
    0.0f,  // real_layout_thick
    2.0f,  // real_layout_netname_cross
    0.5f,  // real_layout_hot_point_radius
    1.2f,  // real_layout_pin_text_size
    2.0f,  // real_layout_reference_text_size
    1.8f,  // real_layout_name_text_size
    1.8f,  // real_layout_socle_text_size
    1.8f,  // real_layout_value_text_size
    1.8f,  // real_layout_model_text_size
    3.0f,  // real_layout_mark_width
    6.0f,  // real_layout_mark_hight
    2.5f,  // real_layout_short_circuit_width
    0.5f,  // real_layout_dot_step_size
    2.0f,  // real_layout_maximal_clearance
    0.3f,  // real_layout_clearance
    0.4f,  // real_layout_pour_polygon_clearance
    1.0f,  // real_layout_fill_distance
    1.0f,  // real_layout_minimal_area
    1.5f,  // real_thermopoint_left
    1.5f,  // real_thermopoint_right
    1.5f,  // real_thermopoint_up
    1.5f,  // real_thermopoint_down
    1.5f,  // real_thermopoint_radius
    1.2f,  // real_place_point_radius
    0.5f,  // real_drsm_point_radius
    0,  // independent_layout_socle
    800,  // layout_obmp_pixel_size_x
    600,  // layout_obmp_pixel_size_y
    210.0,  // layout_obmp_mm_size_x
    297.0,  // layout_obmp_mm_size_y
    300,  // layout_obmp_dpi_resolution
    0,  // layout_obmp_color
    15,  // layout_obmp_background
    0.0f,  // real_layout_obmp_minimal_width
    1,  // layout_oemf_color_metafile
    0,  // layout_oemf_transparent
    15,  // layout_oemf_background
    0,  // layout_oemf_foreground
    0.0f,  // real_layout_oemf_minimal_width
    1,  // layout_autochange_reference
    // CO_edit
    0,  // edit_units
    1,  // edit_resolution_mantisa
    -2,  // edit_resolution_exponent
    {0.0f, 0.0f, 170.0f, 120.0f},  // real_default_edit_boundary_edit
    1,  // edit_primary_grid_on
    {1.25f, 1.25f},  // real_edit_primary_grid_factor
    {0.0f, 0.0f},  // real_edit_primary_grid_offset
    1,  // edit_secondary_grid_on
    {10.0f, 10.0f},  // real_edit_secondary_grid_factor
    {0.0f, 0.0f},  // real_edit_secondary_grid_offset
    "c:\\KORV\\LIB\\",  // edit_default_library_path
    "LDL",  // edit_default_library_extension
    0,  // real_edit_thick
    2,  // real_edit_hot_point_radius
    2,  // real_edit_title_text_size
    0.4f,  // real_edit_pour_polygon_clearance
    1.0f,  // real_edit_fill_distance
    1.0f,  // real_edit_minimal_area
    // CO_pp
    {0.0f, 0.0f, 600.0f, 400.0f},  // real_default_edit_boundary_pp
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
  for (const IflRow &row : ifl_rows) {
    if (row.type == IFL_SELECT) {
      wco::select_section(store, row.section);
      continue;
    }
    void *field = base + row.offset;
    if (!get_value(store, row, field)) set_value(store, row, field);
  }
  return 1;
}

Flag finish_options(OptionsRecord *) { return 1; }
