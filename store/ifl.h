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
// The record is plain data, nothing in it is allocated. Fields stand in the order of the key
// table below (section by section) and are named as their keys, odd spellings included:
// check_file_owerwrite is a key of its own beside check_file_overwrite (with the opposite
// default), the _mantisa keys, real_schema_short_circuit_hight and the *_mark_hight keys are so
// spelt. The key real_default_edit_boundary is in CO_edit and in CO_pp, with different
// defaults, and has two fields: real_default_edit_boundary_edit and _pp. The real_edit_ keys of
// CO_edit that are unsigned 32-bit hold whole numbers in spite of their prefix.
//
// Field types and how they are written in the file (wco.h, ets.h):
//   char[N + 1]   text of at most N characters (IFL_LONG_TEXT for paths and names,
//                 IFL_SHORT_TEXT for extensions)
//   Flag          0 or 1, "Ano" / "Ne"
//   int16_t, uint16_t, int32_t, uint32_t   "%d"
//   float, double "%f"; WcoRealPair "%f %f"; WcoRealRect "%f, %f, %f, %f"
//   uint8_t       a colour (ets_colour, 0-15) or, for the CO_colors *_priority keys, a drawing
//                 mode (ets_draw_mode, 0-3)
//   int16_t       also the units (ets_units), cursor types (ets_cursor), the code page
//                 (ets_code_page) and the keyboard keys (ets_key), as marked below
// The comment of each field is its default as written in the file (enumerations with their
// value).
#ifndef KX_IFL_H
#define KX_IFL_H

#include "common/co.h"
#include "store/wco.h"

enum {
  IFL_LONG_TEXT = 1024,  // text limit of paths and names
  IFL_SHORT_TEXT = 4,    // text limit of file-name extensions
  IFL_FIRST_FIELD = 20   // size of the record's first field
};

struct OptionsRecord {
  // Not a setting: no operation of the installer reads or writes it, and it stays as it is
  // (empty).
  char record_tag[IFL_FIRST_FIELD];

  // CO_common
  char initial_directory[IFL_LONG_TEXT + 1];                   // "."
  char default_design_name[IFL_LONG_TEXT + 1];                 // "DESIGN"
  char default_design_extension[IFL_SHORT_TEXT + 1];           // "D32"
  char default_design_V3_extension[IFL_SHORT_TEXT + 1];        // "DES"
  char default_text_extension[IFL_SHORT_TEXT + 1];             // "TXT"
  Flag small_check_design_integrity;                           // "Ano"
  Flag check_design_file_integrity;                            // "Ano"
  Flag check_file_overwrite;                                   // "Ano"
  char default_macro_extension[IFL_SHORT_TEXT + 1];            // "WMC"
  int16_t macro_end_character;                                 // "Break", key 311
  char system_path[IFL_LONG_TEXT + 1];                         // "\KORV5\"
  char system_default_design_name[IFL_LONG_TEXT + 1];          // "DEFAULT"
  Flag check_file_owerwrite;                                   // "Ne"
  int16_t bg_dash_multiple;                                    // 3
  int16_t bg_dash_dot_multiple;                                // 8
  char default_pp_output_directory[IFL_LONG_TEXT + 1];         // ""
  char autosave_subpath[IFL_LONG_TEXT + 1];                    // "AUTOSAVE"
  char autosave_subname[IFL_LONG_TEXT + 1];                    // "-AUTOSAVE"
  int16_t save_timeout;                                        // 0
  Flag autopanning;                                            // "Ne"
  int16_t cursor_type;                                         // "NORMAL_CURSOR" (0)
  int16_t trace_cursor_type;                                   // "LINE_CURSOR" (1)
  Flag move_trace_cursor;                                      // "Ano"
  int16_t percent_msg_window_size;                             // 10
  int16_t percent_tbar_divider_position;                       // 500
  Flag scroll_with_redraw;                                     // "Ano"
  Flag scroll_with_pour_polygon;                               // "Ne"
  int16_t no_bak_version;                                      // 5
  int16_t grid_dots_distance;                                  // 5
  Flag sound_on;                                               // "Ano"
  int16_t output_code;                                         // "Nastavení při použití" (0)
  uint16_t cursor_delta;                                       // 5
  Flag draw_close_polygon_segment;                             // "Ano"
  int16_t show_temporary_character;                            // "q", key 238
  int16_t show_distance_character;                             // "w", key 244
  Flag enable_context_menu;                                    // "Ano"
  int32_t context_menu_timeout;                                // 160
  Flag dynamic_info_enable;                                    // "Ano"
  Flag dynamic_info_enable_ldoubleclick;                       // "Ano"
  Flag dynamic_info_only_idle;                                 // "Ano"
  int32_t dynamic_info_first_timeout;                          // 2000
  int32_t dynamic_info_next_timeout;                           // 4000
  Flag rename_noname_at_close_window;                          // "Ano"
  Flag rename_noname_at_save_design;                           // "Ano"

  // CO_printer_output
  char default_prn_output_file[IFL_LONG_TEXT + 1];             // "*.T"
  char default_pcf_file_name[IFL_LONG_TEXT + 1];               // "LASER300.PCF"
  char default_pcf_extension[IFL_SHORT_TEXT + 1];              // "PCF"
  uint8_t default_pcf_black_color;                             // "světle šedá" (7)
  uint8_t default_pcf_first_color;                             // "žlutá" (14)
  float real_printer_minimal_width;                            // 0.2
  Flag printer_disable_dot_line;                               // "Ne"
  Flag printer_disable_dash_line;                              // "Ne"
  int16_t printer_dash_multiple;                               // 3
  Flag printer_disable_dash_dot_line;                          // "Ne"
  int16_t printer_dash_dot_multiple;                           // 8

  // CO_simulator
  char default_model_library_path[IFL_LONG_TEXT + 1];          // "c:\"
  char default_model_library_extension[IFL_SHORT_TEXT + 1];    // "MOD"

  // CO_colors
  uint8_t draw_priority;                                       // "OR" (2)
  uint8_t bad_atom_color;                                      // "světle šedá" (7)
  uint8_t bad_atom_priority;                                   // "OR" (2)
  uint8_t flexi_color;                                         // "světle zelená" (10)
  uint8_t flexi_priority;                                      // "XOR" (3)
  uint8_t select_color;                                        // "bílá" (15)
  uint8_t select_priority;                                     // "REPLACE" (0)
  uint8_t erase_color;                                         // "černá" (0)
  uint8_t erase_priority;                                      // "REPLACE" (0)
  uint8_t schematic_hilight_color;                             // "světle fialová" (13)
  uint8_t schematic_hilight_priority;                          // "REPLACE" (0)
  uint8_t layout_hilight_color;                                // "žlutá" (14)
  uint8_t layout_hilight_priority;                             // "REPLACE" (0)
  uint8_t trace_color;                                         // "žlutá" (14)
  uint8_t trace_priority;                                      // "REPLACE" (0)
  uint8_t dot_grid_color;                                      // "bílá" (15)
  uint8_t dot_grid_priority;                                   // "XOR" (3)
  uint8_t line_grid_color;                                     // "bílá" (15)
  uint8_t line_grid_priority;                                  // "XOR" (3)

  // CO_schematic
  int16_t schematic_units;                                     // "mm" (0)
  int16_t schematic_resolution_mantisa;                        // 1
  int16_t schematic_resolution_exponent;                       // -1
  WcoRealRect real_default_schematic_boundary;                 // 0.0, 0.0, 170.0, 120.0
  WcoRealRect real_default_symbolic_boundary;                  // 0.0, 0.0, 170.0, 120.0
  Flag schematic_primary_grid_on;                              // "Ano"
  WcoRealPair real_schematic_primary_grid_factor;              // 3.0 3.0
  WcoRealPair real_schematic_primary_grid_offset;              // 0.0 0.0
  Flag schematic_secondary_grid_on;                            // "Ano"
  WcoRealPair real_schematic_secondary_grid_factor;            // 30.0 30.0
  WcoRealPair real_schematic_secondary_grid_offset;            // 0.0 0.0
  char schema_default_library_path[IFL_LONG_TEXT + 1];         // "c:\korv\lib"
  char schema_default_library_extension[IFL_SHORT_TEXT + 1];   // "S32"
  char schema_default_library_V3_extension[IFL_SHORT_TEXT + 1];  // "SDL"
  Flag schema_junction_square;                                 // "Ne"
  float real_schema_junction_radius;                           // 1.0
  float real_schema_join_radius;                               // 1.5
  float real_schema_port_name_size;                            // 1.8
  float real_schema_port_width;                                // 0.3
  float real_schema_add_x_port_name;                           // 0.3
  float real_schema_add_y_port_name;                           // 0.33
  float real_schema_add_non_port_name;                         // 0.66
  float real_schema_port_power_radius;                         // 1.0
  float real_symbol_default_port_size;                         // 2.0
  float real_symbol_default_port_thick;                        // 0.0
  float real_schema_size;                                      // 2.0
  float real_schema_thick;                                     // 0.0
  float real_schema_netname_cross;                             // 1.0
  float real_schema_hot_point_radius;                          // 1.0
  float real_schema_bus_width;                                 // 1.0
  float real_schema_busbit_text_size;                          // 1.8
  float real_schema_reference_text_size;                       // 2.0
  float real_schema_name_text_size;                            // 1.8
  float real_schema_socle_text_size;                           // 1.8
  float real_schema_value_text_size;                           // 1.8
  float real_schema_model_text_size;                           // 1.8
  float real_schema_pin_text_size;                             // 1.8
  float real_schema_short_circuit_width;                       // 3.0
  float real_schema_short_circuit_hight;                       // 6.0
  float real_schema_mark_width;                                // 3.0
  float real_schema_mark_hight;                                // 6.0
  float real_schema_dot_step_size;                             // 0.5
  float real_schema_pour_polygon_clearance;                    // 0.4
  float real_schema_fill_distance;                             // 1.0
  float real_schema_minimal_area;                              // 1.0
  int32_t schema_obmp_pixel_size_x;                            // 800
  int32_t schema_obmp_pixel_size_y;                            // 600
  double schema_obmp_mm_size_x;                                // 210.0
  double schema_obmp_mm_size_y;                                // 297.0
  int32_t schema_obmp_dpi_resolution;                          // 300
  Flag schema_obmp_color;                                      // "Ne"
  uint8_t schema_obmp_background;                              // "bílá" (15)
  float real_schema_obmp_minimal_width;                        // 0.0
  Flag schema_oemf_color_metafile;                             // "Ano"
  Flag schema_oemf_transparent;                                // "Ne"
  uint8_t schema_oemf_background;                              // "bílá" (15)
  uint8_t schema_oemf_foreground;                              // "černá" (0)
  float real_schema_oemf_minimal_width;                        // 0.0
  Flag schema_update_block_by_reference;                       // "Ano"
  Flag schema_autochange_reference;                            // "Ano"

  // CO_layout
  int16_t layout_units;                                        // "mm" (0)
  int16_t layout_resolution_mantisa;                           // 1
  int16_t layout_resolution_exponent;                          // -2
  WcoRealRect real_default_layout_boundary;                    // 0.0, 0.0, 170.0, 120.0
  WcoRealRect real_default_socle_boundary;                     // 0.0, 0.0, 80.0, 60.0
  Flag layout_primary_grid_on;                                 // "Ano"
  WcoRealPair real_layout_primary_grid_factor;                 // 1.25 1.25
  WcoRealPair real_layout_primary_grid_offset;                 // 0.0 0.0
  Flag layout_secondary_grid_on;                               // "Ano"
  WcoRealPair real_layout_secondary_grid_factor;               // 10.0 10.0
  WcoRealPair real_layout_secondary_grid_offset;               // 0.0 0.0
  char layout_default_library_path[IFL_LONG_TEXT + 1];         // "c:\korv\lib"
  char layout_default_library_extension[IFL_SHORT_TEXT + 1];   // "L32"
  char layout_default_library_V3_extension[IFL_SHORT_TEXT + 1];  // "LDL"
  float real_layout_join_radius;                               // 1.5
  float real_layout_size;                                      // 2.0
  float real_layout_thick;                                     // 0.0
  float real_layout_netname_cross;                             // 2.0
  float real_layout_hot_point_radius;                          // 0.5
  float real_layout_pin_text_size;                             // 1.2
  float real_layout_reference_text_size;                       // 2.0
  float real_layout_name_text_size;                            // 1.8
  float real_layout_socle_text_size;                           // 1.8
  float real_layout_value_text_size;                           // 1.8
  float real_layout_model_text_size;                           // 1.8
  float real_layout_mark_width;                                // 3.0
  float real_layout_mark_hight;                                // 6.0
  float real_layout_short_circuit_width;                       // 2.5
  float real_layout_dot_step_size;                             // 0.5
  float real_layout_maximal_clearance;                         // 2.0
  float real_layout_clearance;                                 // 0.3
  float real_layout_pour_polygon_clearance;                    // 0.4
  float real_layout_fill_distance;                             // 1.0
  float real_layout_minimal_area;                              // 1.0
  float real_thermopoint_left;                                 // 1.5
  float real_thermopoint_right;                                // 1.5
  float real_thermopoint_up;                                   // 1.5
  float real_thermopoint_down;                                 // 1.5
  float real_thermopoint_radius;                               // 1.5
  float real_place_point_radius;                               // 1.2
  float real_drsm_point_radius;                                // 0.5
  Flag independent_layout_socle;                               // "Ne"
  int32_t layout_obmp_pixel_size_x;                            // 800
  int32_t layout_obmp_pixel_size_y;                            // 600
  double layout_obmp_mm_size_x;                                // 210.0
  double layout_obmp_mm_size_y;                                // 297.0
  int32_t layout_obmp_dpi_resolution;                          // 300
  Flag layout_obmp_color;                                      // "Ne"
  uint8_t layout_obmp_background;                              // "bílá" (15)
  float real_layout_obmp_minimal_width;                        // 0.0
  Flag layout_oemf_color_metafile;                             // "Ano"
  Flag layout_oemf_transparent;                                // "Ne"
  uint8_t layout_oemf_background;                              // "bílá" (15)
  uint8_t layout_oemf_foreground;                              // "černá" (0)
  float real_layout_oemf_minimal_width;                        // 0.0
  Flag layout_autochange_reference;                            // "Ano"

  // CO_edit
  int16_t edit_units;                                          // "mm" (0)
  int16_t edit_resolution_mantisa;                             // 1
  int16_t edit_resolution_exponent;                            // -2
  WcoRealRect real_default_edit_boundary_edit;                 // 0.0, 0.0, 170.0, 120.0
  Flag edit_primary_grid_on;                                   // "Ano"
  WcoRealPair real_edit_primary_grid_factor;                   // 1.25 1.25
  WcoRealPair real_edit_primary_grid_offset;                   // 0.0 0.0
  Flag edit_secondary_grid_on;                                 // "Ano"
  WcoRealPair real_edit_secondary_grid_factor;                 // 10.0 10.0
  WcoRealPair real_edit_secondary_grid_offset;                 // 0.0 0.0
  char edit_default_library_path[IFL_LONG_TEXT + 1];           // "c:\KORV\LIB\"
  char edit_default_library_extension[IFL_SHORT_TEXT + 1];     // "LDL"
  uint32_t real_edit_thick;                                    // 0, read twice
  uint32_t real_edit_hot_point_radius;                         // 2
  uint32_t real_edit_title_text_size;                          // 2
  float real_edit_pour_polygon_clearance;                      // 0.4
  float real_edit_fill_distance;                               // 1.0
  float real_edit_minimal_area;                                // 1.0

  // CO_pp
  WcoRealRect real_default_edit_boundary_pp;                   // 0.0, 0.0, 600.0, 400.0
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
