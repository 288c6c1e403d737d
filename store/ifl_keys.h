// ifl_keys.h - the suite's settings, each written once: the key, its kind, its field in the
// options record and its default. ifl.h makes the record's fields from this list, ifl.cpp the
// loader's rows and the record's initial contents; nothing else names a setting twice.
//
// Not a header of its own: the includer defines the five macros, the list undefines them.
//   IFL_GROUP(STEP, SECTION)  the keys that follow, up to the next group, are read at the
//                             loader's STEP-th turn, after select_section(SECTION)
//   IFL_NAMED(STEP, SECTION)  the same, but through the named-section operations (no section
//                             is selected; the current one stays)
//   IFL_SETTING(KIND, FIELD, DEFAULT)         the key FIELD, into the field of that name
//   IFL_SETTING_AS(KIND, KEY, FIELD, DEFAULT) the key KEY (a string), into FIELD
//   IFL_AGAIN(KIND, FIELD)    the key before, read and written once more
// DEFAULT is the field's initializer (braces for pairs and rectangles). The list stands in the
// record's order, section by section; the loader reads group by group in STEP order, and in the
// list's order within a group.
//
// KIND    field type      text form (wco.h, ets.h)
// TEXT       IflText       text of at most IFL_LONG_TEXT characters (paths, names)
// EXTENSION  IflExtension  text of at most IFL_SHORT_TEXT characters (file-name extensions)
// FLAG       Flag          "Ano" for 1, "Ne" for 0
// SHORT, USHORT, INT, ULONG   int16_t, uint16_t, int32_t, uint32_t: "%d"
// REAL, DOUBLE   float, double: "%f"
// REAL_PAIR, REAL_RECT   WcoRealPair "%f %f", WcoRealRect "%f, %f, %f, %f"
// COLOUR     uint8_t       ets_colour (0-15)
// DRAW_MODE  uint8_t       ets_draw_mode (0-3), the CO_colors *_priority keys
// UNITS, CURSOR, CODE_PAGE, KEY   int16_t: ets_units, ets_cursor, ets_code_page, ets_key
// The comment of an enumerated key is its default's word.
//
// Keys keep their own spellings: check_file_owerwrite is a key of its own beside
// check_file_overwrite (with the opposite default); the _mantisa keys,
// real_schema_short_circuit_hight and the *_mark_hight keys are so spelt.
// real_default_edit_boundary is in CO_edit and in CO_pp, with different defaults and fields.
// The ULONG real_edit_ keys of CO_edit hold whole numbers in spite of their prefix.

// clang-format off
IFL_GROUP(1, "CO_common")
IFL_SETTING(TEXT, initial_directory, ".")
IFL_SETTING(TEXT, default_design_name, "DESIGN")
IFL_SETTING(EXTENSION, default_design_extension, "D32")
IFL_SETTING(EXTENSION, default_design_V3_extension, "DES")
IFL_SETTING(EXTENSION, default_text_extension, "TXT")
IFL_SETTING(FLAG, small_check_design_integrity, 1)
IFL_SETTING(FLAG, check_design_file_integrity, 1)
IFL_SETTING(FLAG, check_file_overwrite, 1)
IFL_SETTING(EXTENSION, default_macro_extension, "WMC")
IFL_SETTING(KEY, macro_end_character, 311)                                  // "Break"
IFL_SETTING(TEXT, system_path, "\\KORV5\\")
IFL_SETTING(TEXT, system_default_design_name, "DEFAULT")
IFL_SETTING(FLAG, check_file_owerwrite, 0)

IFL_GROUP(4, "CO_common")
IFL_SETTING(SHORT, bg_dash_multiple, 3)
IFL_SETTING(SHORT, bg_dash_dot_multiple, 8)
IFL_SETTING(TEXT, default_pp_output_directory, "")
IFL_SETTING(TEXT, autosave_subpath, "AUTOSAVE")
IFL_SETTING(TEXT, autosave_subname, "-AUTOSAVE")
IFL_SETTING(SHORT, save_timeout, 0)
IFL_SETTING(FLAG, autopanning, 0)
IFL_SETTING(CURSOR, cursor_type, 0)                                         // "NORMAL_CURSOR"
IFL_SETTING(CURSOR, trace_cursor_type, 1)                                   // "LINE_CURSOR"
IFL_SETTING(FLAG, move_trace_cursor, 1)
IFL_SETTING(SHORT, percent_msg_window_size, 10)
IFL_SETTING(SHORT, percent_tbar_divider_position, 500)
IFL_SETTING(FLAG, scroll_with_redraw, 1)
IFL_SETTING(FLAG, scroll_with_pour_polygon, 0)
IFL_SETTING(SHORT, no_bak_version, 5)
IFL_SETTING(SHORT, grid_dots_distance, 5)
IFL_SETTING(FLAG, sound_on, 1)

IFL_GROUP(6, "CO_common")
IFL_SETTING(CODE_PAGE, output_code, 0)                                      // "Nastavení při použití"
IFL_SETTING(USHORT, cursor_delta, 5)
IFL_SETTING(FLAG, draw_close_polygon_segment, 1)
IFL_SETTING(KEY, show_temporary_character, 238)                             // "q"
IFL_SETTING(KEY, show_distance_character, 244)                              // "w"

IFL_NAMED(7, "CO_common")
IFL_SETTING(FLAG, enable_context_menu, 1)
IFL_SETTING(INT, context_menu_timeout, 160)
IFL_SETTING(FLAG, dynamic_info_enable, 1)
IFL_SETTING(FLAG, dynamic_info_enable_ldoubleclick, 1)
IFL_SETTING(FLAG, dynamic_info_only_idle, 1)
IFL_SETTING(INT, dynamic_info_first_timeout, 2000)
IFL_SETTING(INT, dynamic_info_next_timeout, 4000)
IFL_SETTING(FLAG, rename_noname_at_close_window, 1)
IFL_SETTING(FLAG, rename_noname_at_save_design, 1)

IFL_GROUP(2, "CO_printer_output")
IFL_SETTING(TEXT, default_prn_output_file, "*.T")
IFL_SETTING(TEXT, default_pcf_file_name, "LASER300.PCF")
IFL_SETTING(EXTENSION, default_pcf_extension, "PCF")
IFL_SETTING(COLOUR, default_pcf_black_color, 7)                             // "světle šedá"
IFL_SETTING(COLOUR, default_pcf_first_color, 14)                            // "žlutá"
IFL_SETTING(REAL, real_printer_minimal_width, 0.2f)
IFL_SETTING(FLAG, printer_disable_dot_line, 0)
IFL_SETTING(FLAG, printer_disable_dash_line, 0)
IFL_SETTING(SHORT, printer_dash_multiple, 3)
IFL_SETTING(FLAG, printer_disable_dash_dot_line, 0)
IFL_SETTING(SHORT, printer_dash_dot_multiple, 8)

IFL_GROUP(3, "CO_simulator")
IFL_SETTING(TEXT, default_model_library_path, "c:\\")
IFL_SETTING(EXTENSION, default_model_library_extension, "MOD")

IFL_GROUP(5, "CO_colors")
IFL_SETTING(DRAW_MODE, draw_priority, 2)                                    // "OR"
IFL_SETTING(COLOUR, bad_atom_color, 7)                                      // "světle šedá"
IFL_SETTING(DRAW_MODE, bad_atom_priority, 2)                                // "OR"
IFL_SETTING(COLOUR, flexi_color, 10)                                        // "světle zelená"
IFL_SETTING(DRAW_MODE, flexi_priority, 3)                                   // "XOR"
IFL_SETTING(COLOUR, select_color, 15)                                       // "bílá"
IFL_SETTING(DRAW_MODE, select_priority, 0)                                  // "REPLACE"
IFL_SETTING(COLOUR, erase_color, 0)                                         // "černá"
IFL_SETTING(DRAW_MODE, erase_priority, 0)                                   // "REPLACE"
IFL_SETTING(COLOUR, schematic_hilight_color, 13)                            // "světle fialová"
IFL_SETTING(DRAW_MODE, schematic_hilight_priority, 0)                       // "REPLACE"
IFL_SETTING(COLOUR, layout_hilight_color, 14)                               // "žlutá"
IFL_SETTING(DRAW_MODE, layout_hilight_priority, 0)                          // "REPLACE"
IFL_SETTING(COLOUR, trace_color, 14)                                        // "žlutá"
IFL_SETTING(DRAW_MODE, trace_priority, 0)                                   // "REPLACE"
IFL_SETTING(COLOUR, dot_grid_color, 15)                                     // "bílá"
IFL_SETTING(DRAW_MODE, dot_grid_priority, 3)                                // "XOR"
IFL_SETTING(COLOUR, line_grid_color, 15)                                    // "bílá"
IFL_SETTING(DRAW_MODE, line_grid_priority, 3)                               // "XOR"

IFL_GROUP(8, "CO_schematic")
IFL_SETTING(UNITS, schematic_units, 0)                                      // "mm"
IFL_SETTING(SHORT, schematic_resolution_mantisa, 1)
IFL_SETTING(SHORT, schematic_resolution_exponent, -1)
IFL_SETTING(REAL_RECT, real_default_schematic_boundary, {0.0f, 0.0f, 170.0f, 120.0f})
IFL_SETTING(REAL_RECT, real_default_symbolic_boundary, {0.0f, 0.0f, 170.0f, 120.0f})
IFL_SETTING(FLAG, schematic_primary_grid_on, 1)
IFL_SETTING(REAL_PAIR, real_schematic_primary_grid_factor, {3.0f, 3.0f})
IFL_SETTING(REAL_PAIR, real_schematic_primary_grid_offset, {0.0f, 0.0f})
IFL_SETTING(FLAG, schematic_secondary_grid_on, 1)
IFL_SETTING(REAL_PAIR, real_schematic_secondary_grid_factor, {30.0f, 30.0f})
IFL_SETTING(REAL_PAIR, real_schematic_secondary_grid_offset, {0.0f, 0.0f})
IFL_SETTING(TEXT, schema_default_library_path, "c:\\korv\\lib")
IFL_SETTING(EXTENSION, schema_default_library_extension, "S32")
IFL_SETTING(EXTENSION, schema_default_library_V3_extension, "SDL")
IFL_SETTING(FLAG, schema_junction_square, 0)
IFL_SETTING(REAL, real_schema_junction_radius, 1.0f)
IFL_SETTING(REAL, real_schema_join_radius, 1.5f)
IFL_SETTING(REAL, real_schema_port_name_size, 1.8f)
IFL_SETTING(REAL, real_schema_port_width, 0.3f)
IFL_SETTING(REAL, real_schema_add_x_port_name, 0.3f)
IFL_SETTING(REAL, real_schema_add_y_port_name, 0.33f)
IFL_SETTING(REAL, real_schema_add_non_port_name, 0.66f)
IFL_SETTING(REAL, real_schema_port_power_radius, 1.0f)
IFL_SETTING(REAL, real_symbol_default_port_size, 2.0f)
IFL_SETTING(REAL, real_symbol_default_port_thick, 0.0f)
IFL_SETTING(REAL, real_schema_size, 2.0f)
IFL_SETTING(REAL, real_schema_thick, 0.0f)
IFL_SETTING(REAL, real_schema_netname_cross, 1.0f)
IFL_SETTING(REAL, real_schema_hot_point_radius, 1.0f)
IFL_SETTING(REAL, real_schema_bus_width, 1.0f)
IFL_SETTING(REAL, real_schema_busbit_text_size, 1.8f)
IFL_SETTING(REAL, real_schema_reference_text_size, 2.0f)
IFL_SETTING(REAL, real_schema_name_text_size, 1.8f)
IFL_SETTING(REAL, real_schema_socle_text_size, 1.8f)
IFL_SETTING(REAL, real_schema_value_text_size, 1.8f)
IFL_SETTING(REAL, real_schema_model_text_size, 1.8f)
IFL_SETTING(REAL, real_schema_pin_text_size, 1.8f)
IFL_SETTING(REAL, real_schema_short_circuit_width, 3.0f)
IFL_SETTING(REAL, real_schema_short_circuit_hight, 6.0f)
IFL_SETTING(REAL, real_schema_mark_width, 3.0f)
IFL_SETTING(REAL, real_schema_mark_hight, 6.0f)
IFL_SETTING(REAL, real_schema_dot_step_size, 0.5f)
IFL_SETTING(REAL, real_schema_pour_polygon_clearance, 0.4f)
IFL_SETTING(REAL, real_schema_fill_distance, 1.0f)
IFL_SETTING(REAL, real_schema_minimal_area, 1.0f)
IFL_SETTING(INT, schema_obmp_pixel_size_x, 800)
IFL_SETTING(INT, schema_obmp_pixel_size_y, 600)
IFL_SETTING(DOUBLE, schema_obmp_mm_size_x, 210.0)
IFL_SETTING(DOUBLE, schema_obmp_mm_size_y, 297.0)
IFL_SETTING(INT, schema_obmp_dpi_resolution, 300)
IFL_SETTING(FLAG, schema_obmp_color, 0)
IFL_SETTING(COLOUR, schema_obmp_background, 15)                             // "bílá"
IFL_SETTING(REAL, real_schema_obmp_minimal_width, 0.0f)
IFL_SETTING(FLAG, schema_oemf_color_metafile, 1)
IFL_SETTING(FLAG, schema_oemf_transparent, 0)
IFL_SETTING(COLOUR, schema_oemf_background, 15)                             // "bílá"
IFL_SETTING(COLOUR, schema_oemf_foreground, 0)                              // "černá"
IFL_SETTING(REAL, real_schema_oemf_minimal_width, 0.0f)
IFL_SETTING(FLAG, schema_update_block_by_reference, 1)
IFL_SETTING(FLAG, schema_autochange_reference, 1)

IFL_GROUP(9, "CO_layout")
IFL_SETTING(UNITS, layout_units, 0)                                         // "mm"
IFL_SETTING(SHORT, layout_resolution_mantisa, 1)
IFL_SETTING(SHORT, layout_resolution_exponent, -2)
IFL_SETTING(REAL_RECT, real_default_layout_boundary, {0.0f, 0.0f, 170.0f, 120.0f})
IFL_SETTING(REAL_RECT, real_default_socle_boundary, {0.0f, 0.0f, 80.0f, 60.0f})
IFL_SETTING(FLAG, layout_primary_grid_on, 1)
IFL_SETTING(REAL_PAIR, real_layout_primary_grid_factor, {1.25f, 1.25f})
IFL_SETTING(REAL_PAIR, real_layout_primary_grid_offset, {0.0f, 0.0f})
IFL_SETTING(FLAG, layout_secondary_grid_on, 1)
IFL_SETTING(REAL_PAIR, real_layout_secondary_grid_factor, {10.0f, 10.0f})
IFL_SETTING(REAL_PAIR, real_layout_secondary_grid_offset, {0.0f, 0.0f})
IFL_SETTING(TEXT, layout_default_library_path, "c:\\korv\\lib")
IFL_SETTING(EXTENSION, layout_default_library_extension, "L32")
IFL_SETTING(EXTENSION, layout_default_library_V3_extension, "LDL")
IFL_SETTING(REAL, real_layout_join_radius, 1.5f)
IFL_SETTING(REAL, real_layout_size, 2.0f)
IFL_SETTING(REAL, real_layout_thick, 0.0f)
IFL_SETTING(REAL, real_layout_netname_cross, 2.0f)
IFL_SETTING(REAL, real_layout_hot_point_radius, 0.5f)
IFL_SETTING(REAL, real_layout_pin_text_size, 1.2f)
IFL_SETTING(REAL, real_layout_reference_text_size, 2.0f)
IFL_SETTING(REAL, real_layout_name_text_size, 1.8f)
IFL_SETTING(REAL, real_layout_socle_text_size, 1.8f)
IFL_SETTING(REAL, real_layout_value_text_size, 1.8f)
IFL_SETTING(REAL, real_layout_model_text_size, 1.8f)
IFL_SETTING(REAL, real_layout_mark_width, 3.0f)
IFL_SETTING(REAL, real_layout_mark_hight, 6.0f)
IFL_SETTING(REAL, real_layout_short_circuit_width, 2.5f)
IFL_SETTING(REAL, real_layout_dot_step_size, 0.5f)
IFL_SETTING(REAL, real_layout_maximal_clearance, 2.0f)
IFL_SETTING(REAL, real_layout_clearance, 0.3f)
IFL_SETTING(REAL, real_layout_pour_polygon_clearance, 0.4f)
IFL_SETTING(REAL, real_layout_fill_distance, 1.0f)
IFL_SETTING(REAL, real_layout_minimal_area, 1.0f)
IFL_SETTING(REAL, real_thermopoint_left, 1.5f)
IFL_SETTING(REAL, real_thermopoint_right, 1.5f)
IFL_SETTING(REAL, real_thermopoint_up, 1.5f)
IFL_SETTING(REAL, real_thermopoint_down, 1.5f)
IFL_SETTING(REAL, real_thermopoint_radius, 1.5f)
IFL_SETTING(REAL, real_place_point_radius, 1.2f)
IFL_SETTING(REAL, real_drsm_point_radius, 0.5f)
IFL_SETTING(FLAG, independent_layout_socle, 0)
IFL_SETTING(INT, layout_obmp_pixel_size_x, 800)
IFL_SETTING(INT, layout_obmp_pixel_size_y, 600)
IFL_SETTING(DOUBLE, layout_obmp_mm_size_x, 210.0)
IFL_SETTING(DOUBLE, layout_obmp_mm_size_y, 297.0)
IFL_SETTING(INT, layout_obmp_dpi_resolution, 300)
IFL_SETTING(FLAG, layout_obmp_color, 0)
IFL_SETTING(COLOUR, layout_obmp_background, 15)                             // "bílá"
IFL_SETTING(REAL, real_layout_obmp_minimal_width, 0.0f)
IFL_SETTING(FLAG, layout_oemf_color_metafile, 1)
IFL_SETTING(FLAG, layout_oemf_transparent, 0)
IFL_SETTING(COLOUR, layout_oemf_background, 15)                             // "bílá"
IFL_SETTING(COLOUR, layout_oemf_foreground, 0)                              // "černá"
IFL_SETTING(REAL, real_layout_oemf_minimal_width, 0.0f)
IFL_SETTING(FLAG, layout_autochange_reference, 1)

IFL_GROUP(10, "CO_edit")
IFL_SETTING(UNITS, edit_units, 0)                                           // "mm"
IFL_SETTING(SHORT, edit_resolution_mantisa, 1)
IFL_SETTING(SHORT, edit_resolution_exponent, -2)
IFL_SETTING_AS(REAL_RECT, "real_default_edit_boundary", real_default_edit_boundary_edit,
           {0.0f, 0.0f, 170.0f, 120.0f})
IFL_SETTING(FLAG, edit_primary_grid_on, 1)
IFL_SETTING(REAL_PAIR, real_edit_primary_grid_factor, {1.25f, 1.25f})
IFL_SETTING(REAL_PAIR, real_edit_primary_grid_offset, {0.0f, 0.0f})
IFL_SETTING(FLAG, edit_secondary_grid_on, 1)
IFL_SETTING(REAL_PAIR, real_edit_secondary_grid_factor, {10.0f, 10.0f})
IFL_SETTING(REAL_PAIR, real_edit_secondary_grid_offset, {0.0f, 0.0f})
IFL_SETTING(TEXT, edit_default_library_path, "c:\\KORV\\LIB\\")
IFL_SETTING(EXTENSION, edit_default_library_extension, "LDL")
IFL_SETTING(ULONG, real_edit_thick, 0)
IFL_AGAIN(ULONG, real_edit_thick)
IFL_SETTING(ULONG, real_edit_hot_point_radius, 2)
IFL_SETTING(ULONG, real_edit_title_text_size, 2)
IFL_SETTING(REAL, real_edit_pour_polygon_clearance, 0.4f)
IFL_SETTING(REAL, real_edit_fill_distance, 1.0f)
IFL_SETTING(REAL, real_edit_minimal_area, 1.0f)

IFL_GROUP(11, "CO_pp")
IFL_SETTING_AS(REAL_RECT, "real_default_edit_boundary", real_default_edit_boundary_pp,
           {0.0f, 0.0f, 600.0f, 400.0f})
// clang-format on

#undef IFL_GROUP
#undef IFL_NAMED
#undef IFL_SETTING
#undef IFL_SETTING_AS
#undef IFL_AGAIN
