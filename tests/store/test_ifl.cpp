// The options record and its loader, over the process-wide configuration store.
#include "installer/ifl.h"

#include "tests/support/kxtest.h"

#include <gtest/gtest.h>

#include <string.h>

#include <string>

namespace {

// A file of tests/store/golden (Wine sees the source tree on drive Z:).
std::string golden_file(const char *name) {
  std::string dir = __FILE__;
  dir = dir.substr(0, dir.find_last_of("/\\") + 1);
#ifdef KX_WIN32
  if (!dir.empty() && dir[0] == '/') dir = "Z:" + dir;
#endif
  return dir + "golden/" + name;
}

// The file as this build writes it: the golden file holds CR LF; the native build writes LF.
std::string as_written_here(std::string text) {
#ifndef KX_WIN32
  std::string out;
  for (char c : text)
    if (c != '\r') out += c;
  text = out;
#endif
  return text;
}

// The process-wide store, emptied: no sections, none current.
ConfigStore *empty_system_store() {
  ConfigStore *store = wco::system_store();
  if (store == nullptr) return nullptr;
  while (store->section_count > 0) wco::remove_section(store, store->sections[0]->name);
  wco::select_section(store, nullptr);
  store->dirty = 0;
  return store;
}

// A copy of the record's bytes (padding included), so that records compare with memcmp.
void copy_record(OptionsRecord *to, const OptionsRecord *from) {
  memcpy(static_cast<void *>(to), from, sizeof *to);
}

std::string stored(ConfigStore *store, const char *section, const char *key) {
  const char *value = nullptr;
  if (!wco::get_text_pointer(store, section, key, &value)) return "(missing)";
  return value;
}

int entry_count(ConfigStore *store) {
  int n = 0;
  for (int32_t i = 0; i < store->section_count; i++) n += store->sections[i]->entry_count;
  return n;
}

bool anything_modified(ConfigStore *store) {
  if (store->dirty) return true;
  for (int32_t i = 0; i < store->section_count; i++)
    if (store->sections[i]->modified) return true;
  return false;
}

}  // namespace

TEST(Ifl, DefaultsOverAnEmptyStoreWriteTheGoldenFile) {
  kxtest::ScratchDir dir;
  kxtest::BoxRecorder boxes;
  ConfigStore *store = empty_system_store();
  ASSERT_NE(nullptr, store);
  // the process-wide record holds the defaults from the start
  ASSERT_EQ(0, memcmp(&ifl_options, &ifl_defaults, sizeof ifl_options));
  OptionsRecord record;
  copy_record(&record, &ifl_options);

  ASSERT_EQ(1, load_options(&record));
  EXPECT_EQ(0, memcmp(&record, &ifl_defaults, sizeof record)) << "the record changed";
  EXPECT_EQ(211, entry_count(store));
  ASSERT_GE(store->current, 0);
  EXPECT_STREQ("CO_pp", store->sections[store->current]->name);
  ASSERT_EQ(1, wco::save(store, "SYSTEM.WCO"));
  EXPECT_EQ(0u, boxes.count()) << boxes.dump();

  std::string expected = kxtest::read_bytes(golden_file("SYSTEM.WCO"));
  ASSERT_FALSE(expected.empty()) << golden_file("SYSTEM.WCO");
  std::string want = as_written_here(expected);
  std::string got = kxtest::read_bytes("SYSTEM.WCO");
  EXPECT_EQ(want.size(), got.size());
  // line by line, so that a failure names the line
  size_t w = 0, g = 0;
  for (int line = 1; w < want.size() && g < got.size(); line++) {
    size_t we = want.find('\n', w), ge = got.find('\n', g);
    std::string a = want.substr(w, we == std::string::npos ? std::string::npos : we + 1 - w);
    std::string b = got.substr(g, ge == std::string::npos ? std::string::npos : ge + 1 - g);
    ASSERT_EQ(a, b) << "line " << line;
    w += a.size();
    g += b.size();
  }
  EXPECT_TRUE(want == got);
}

TEST(Ifl, SecondLoadOfTheGoldenFileChangesNothing) {
  kxtest::ScratchDir dir;
  kxtest::BoxRecorder boxes;
  std::string golden = as_written_here(kxtest::read_bytes(golden_file("SYSTEM.WCO")));
  ASSERT_FALSE(golden.empty());
  ASSERT_TRUE(kxtest::write_bytes(dir.file("SYSTEM.WCO"), golden));
  ConfigStore *store = empty_system_store();
  ASSERT_NE(nullptr, store);
  ASSERT_EQ(1, wco::load(store, "SYSTEM.WCO"));
  ASSERT_FALSE(anything_modified(store));

  OptionsRecord record;
  copy_record(&record, &ifl_defaults);
  ASSERT_EQ(1, load_options(&record));
  EXPECT_EQ(0, memcmp(&record, &ifl_defaults, sizeof record)) << "a value read differs";
  EXPECT_EQ(211, entry_count(store));
  EXPECT_FALSE(anything_modified(store));

  // replaced behind the store's back: a save that has nothing to write leaves it alone
  ASSERT_TRUE(kxtest::write_bytes(dir.file("SYSTEM.WCO"), "untouched"));
  EXPECT_EQ(1, wco::save(store, nullptr));
  EXPECT_EQ("untouched", kxtest::read_bytes(dir.file("SYSTEM.WCO")));
  EXPECT_EQ(0u, boxes.count()) << boxes.dump();
}

TEST(Ifl, ValuesReadBadValuesRewrittenUnknownWordsKept) {
  kxtest::BoxRecorder boxes;
  ConfigStore *store = empty_system_store();
  ASSERT_NE(nullptr, store);
  struct Entry {
    const char *section, *key, *text;
    const char *after;  // the store's text after the load; null: unchanged
  } entries[] = {
      /* 0 */ {"CO_common", "bg_dash_multiple", "abc", "3"},
      /* 1 */ {"CO_common", "save_timeout", "-5", nullptr},
      /* 2 */ {"CO_common", "percent_msg_window_size", "400", nullptr},  // no clamping
      /* 3 */ {"CO_common", "cursor_delta", "70000", nullptr},           // 16 bits kept
      /* 4 */ {"CO_common", "check_file_overwrite", "Ne", nullptr},
      /* 5 */ {"CO_common", "check_file_owerwrite", "yes", nullptr},
      /* 6 */ {"CO_common", "autopanning", "NONE", nullptr},
      /* 7 */ {"CO_common", "move_trace_cursor", "false", nullptr},
      /* 8 */ {"CO_common", "default_design_extension", "ABCDEFG", nullptr},
      /* 9 */ {"CO_common", "macro_end_character", "F1", nullptr},
      /* 10 */ {"CO_common", "show_temporary_character", "Q", nullptr},
      /* 11 */ {"CO_common", "show_distance_character", "Ctrl+W", nullptr},  // unknown: 0
      /* 12 */ {"CO_common", "output_code", "CP1250", nullptr},
      /* 13 */ {"CO_common", "trace_cursor_type", "OBLIQUE_LINE_CURSOR", nullptr},
      // the named-section keys, whatever section is current when they are read
      /* 14 */ {"CO_common", "enable_context_menu", "Ne", nullptr},
      /* 15 */ {"CO_common", "context_menu_timeout", "99", nullptr},
      /* 16 */ {"CO_common", "dynamic_info_first_timeout", "soon", "2000"},
      /* 17 */ {"CO_colors", "rename_noname_at_save_design", "Ne", nullptr},  // wrong section
      /* 18 */ {"CO_colors", "trace_color", "purple", nullptr},
      /* 19 */ {"CO_colors", "bad_atom_color", "BLACK", nullptr},
      /* 20 */ {"CO_colors", "flexi_color", "svetle modra", nullptr},
      /* 21 */ {"CO_colors", "flexi_priority", "copy", nullptr},
      /* 22 */ {"CO_colors", "draw_priority", "xor", nullptr},
      /* 23 */ {"CO_printer_output", "default_pcf_black_color", "červená", nullptr},
      /* 24 */ {"CO_printer_output", "real_printer_minimal_width", "0.5", nullptr},
      /* 25 */ {"CO_schematic", "schematic_primary_grid_on", "0", nullptr},
      /* 26 */ {"CO_schematic", "schema_obmp_color", "yes", nullptr},
      /* 27 */ {"CO_schematic", "real_schematic_primary_grid_factor", "1.5 2.5", nullptr},
      /* 28 */ {"CO_schematic", "schema_obmp_mm_size_x", "100.25", nullptr},
      /* 29 */ {"CO_schematic", "real_schema_size", "x2", "2.000000"},
      /* 30 */ {"CO_layout", "layout_units", "MILS", nullptr},
      /* 31 */ {"CO_layout", "layout_resolution_exponent", "-3", nullptr},
      /* 32 */ {"CO_edit", "edit_units", "parsec", nullptr},
      /* 33 */ {"CO_edit", "real_default_edit_boundary", "1, 2, 3, 4", nullptr},
      /* 34 */ {"CO_pp", "real_default_edit_boundary", "5 6 7 8", nullptr},
      /* 35 */ {"CO_edit", "real_edit_thick", "abc", "0"},
      /* 36 */ {"CO_edit", "real_edit_hot_point_radius", "7", nullptr},
      /* 37 */ {"CO_simulator", "default_model_library_path", "d:\\models\\", nullptr},
  };
  for (const Entry &e : entries) ASSERT_EQ(1, wco::set_text(store, e.section, e.key, e.text));
  std::string long_path = kxtest::pattern_text(1000);
  ASSERT_EQ(1, wco::set_text(store, "CO_common", "system_path", long_path.c_str()));

  OptionsRecord r;
  copy_record(&r, &ifl_defaults);
  ASSERT_EQ(1, load_options(&r));
  EXPECT_EQ(0u, boxes.count()) << boxes.dump();

  EXPECT_EQ(3, r.bg_dash_multiple);
  EXPECT_EQ(-5, r.save_timeout);
  EXPECT_EQ(400, r.percent_msg_window_size);
  EXPECT_EQ(70000 & 0xFFFF, r.cursor_delta);
  EXPECT_EQ(0, r.check_file_overwrite);
  EXPECT_EQ(1, r.check_file_owerwrite);
  EXPECT_EQ(1, r.autopanning);
  EXPECT_EQ(0, r.move_trace_cursor);
  EXPECT_STREQ("ABCD", r.default_design_extension);
  EXPECT_EQ(66, r.macro_end_character);
  EXPECT_EQ(192, r.show_temporary_character);
  EXPECT_EQ(0, r.show_distance_character);
  EXPECT_EQ(3, r.output_code);
  EXPECT_EQ(2, r.trace_cursor_type);
  EXPECT_EQ(0, r.enable_context_menu);
  EXPECT_EQ(99, r.context_menu_timeout);
  EXPECT_EQ(2000, r.dynamic_info_first_timeout);
  EXPECT_EQ(1, r.rename_noname_at_save_design);
  EXPECT_EQ(15, r.trace_color);
  EXPECT_EQ(0, r.bad_atom_color);
  EXPECT_EQ(9, r.flexi_color);
  EXPECT_EQ(0, r.flexi_priority);
  EXPECT_EQ(3, r.draw_priority);
  EXPECT_EQ(4, r.default_pcf_black_color);
  EXPECT_EQ(0.5f, r.real_printer_minimal_width);
  EXPECT_EQ(0, r.schematic_primary_grid_on);
  EXPECT_EQ(1, r.schema_obmp_color);
  EXPECT_EQ(1.5f, r.real_schematic_primary_grid_factor.x);
  EXPECT_EQ(2.5f, r.real_schematic_primary_grid_factor.y);
  EXPECT_EQ(100.25, r.schema_obmp_mm_size_x);
  EXPECT_EQ(2.0f, r.real_schema_size);
  EXPECT_EQ(1, r.layout_units);
  EXPECT_EQ(-3, r.layout_resolution_exponent);
  EXPECT_EQ(0, r.edit_units);
  EXPECT_EQ(1.0f, r.real_default_edit_boundary_edit.left);
  EXPECT_EQ(4.0f, r.real_default_edit_boundary_edit.bottom);
  EXPECT_EQ(5.0f, r.real_default_edit_boundary_pp.left);
  EXPECT_EQ(8.0f, r.real_default_edit_boundary_pp.bottom);
  EXPECT_EQ(0u, r.real_edit_thick);
  EXPECT_EQ(7u, r.real_edit_hot_point_radius);
  EXPECT_STREQ("d:\\models\\", r.default_model_library_path);
  EXPECT_EQ(long_path, r.system_path);
  // a key left alone keeps its default
  EXPECT_EQ(5, r.no_bak_version);
  EXPECT_EQ(0.33f, r.real_schema_add_y_port_name);

  for (size_t i = 0; i < KX_COUNT(entries); i++) {
    const Entry &e = entries[i];
    EXPECT_EQ(e.after ? e.after : e.text, stored(store, e.section, e.key))
        << "row " << i << " " << e.section << "/" << e.key;
  }
  // a key found in a wrong section is not read there; its own gets the default
  EXPECT_EQ("Ano", stored(store, "CO_common", "rename_noname_at_save_design"));
  EXPECT_EQ(211 + 1, entry_count(store));

  // and the file keeps the words it was given
  kxtest::ScratchDir dir;
  ASSERT_EQ(1, wco::save(store, "SYSTEM.WCO"));
  std::string file = kxtest::read_bytes("SYSTEM.WCO");
  for (const char *line : {"   trace_color                            =  purple",
                           "   bad_atom_color                         =  BLACK",
                           "   edit_units                             =  parsec",
                           "   bg_dash_multiple                       =  3"})
    EXPECT_NE(std::string::npos, file.find(line)) << line;
  EXPECT_EQ(0u, boxes.count()) << boxes.dump();
}

TEST(Ifl, NullRecordAndFinish) {
  kxtest::BoxRecorder boxes;
  EXPECT_EQ(0, load_options(nullptr));
  ASSERT_EQ(1u, boxes.count()) << boxes.dump();
  EXPECT_GT(kxtest::internal_error_line(boxes.only(), "ifl"), 0);

  OptionsRecord record;
  copy_record(&record, &ifl_defaults);
  record.save_timeout = 12;
  OptionsRecord before;
  copy_record(&before, &record);
  EXPECT_EQ(1, finish_options(&record));
  EXPECT_EQ(0, memcmp(&before, &record, sizeof record));
  EXPECT_EQ(1, finish_options(&ifl_options));
}
