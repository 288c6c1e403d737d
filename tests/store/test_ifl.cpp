// The options record and its loader, over the process-wide configuration store.
#include "store/ifl.h"

#include "tests/support/kxtest.h"

#include <gtest/gtest.h>

#include <string.h>

#include <algorithm>
#include <string>

std::string store_golden_file(const char *name);  // test_ets.cpp

namespace {

// The golden SYSTEM.WCO as this build writes it: the file holds CR LF, the native build LF.
std::string golden_system_wco() {
  std::string text = kxtest::read_bytes(store_golden_file("SYSTEM.WCO"));
#ifndef KX_WIN32
  text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
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
  return wco::get_text_pointer(store, section, key, &value) ? value : "(missing)";
}

int entry_count(ConfigStore *store) {
  int n = 0;
  for (int32_t i = 0; i < store->section_count; i++) n += store->sections[i]->entry_count;
  return n;
}

}  // namespace

TEST(Ifl, DefaultsWriteTheGoldenFileWhichReadsBackUnchanged) {
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
  std::string want = golden_system_wco();
  ASSERT_FALSE(want.empty()) << store_golden_file("SYSTEM.WCO");
  EXPECT_EQ(want, kxtest::read_bytes("SYSTEM.WCO"));  // a failure shows the lines that differ

  // The golden file loaded into an empty store: every value reads as its default, nothing changes.
  ASSERT_TRUE(kxtest::write_bytes("SYSTEM.WCO", want));
  store = empty_system_store();
  ASSERT_EQ(1, wco::load(store, "SYSTEM.WCO"));
  ASSERT_EQ(1, load_options(&record));
  EXPECT_EQ(0, memcmp(&record, &ifl_defaults, sizeof record)) << "a value read differs";
  EXPECT_EQ(211, entry_count(store));
  EXPECT_EQ(0, store->dirty);
  for (int32_t i = 0; i < store->section_count; i++)
    EXPECT_EQ(0, store->sections[i]->modified) << store->sections[i]->name;
  EXPECT_EQ(0u, boxes.count()) << boxes.dump();
}

// A field of the record as a number, and the key of the same name in its section.
#define FIELD(f) [](const OptionsRecord &r) { return (double)r.f; }
#define KEY(section, key) FIELD(key), section, #key

TEST(Ifl, ValuesReadBadValuesRewrittenUnknownWordsKept) {
  kxtest::BoxRecorder boxes;
  ConfigStore *store = empty_system_store();
  ASSERT_NE(nullptr, store);
  struct Entry {
    double (*field)(const OptionsRecord &);
    const char *section, *key, *text;
    double want;
    const char *after = nullptr;  // the store's text after the load; null: unchanged
  } entries[] = {
      /* 0 */ {KEY("CO_common", bg_dash_multiple), "abc", 3, "3"},
      /* 1 */ {KEY("CO_common", save_timeout), "-5", -5},
      /* 2 */ {KEY("CO_common", percent_msg_window_size), "400", 400},  // no clamping
      /* 3 */ {KEY("CO_common", cursor_delta), "70000", 70000 & 0xFFFF},
      /* 4 */ {KEY("CO_common", check_file_overwrite), "Ne", 0},
      /* 5 */ {KEY("CO_common", check_file_owerwrite), "yes", 1},
      /* 6 */ {KEY("CO_common", macro_end_character), "F1", 66},
      /* 7 */ {KEY("CO_common", output_code), "CP1250", 3},
      /* 8 */ {KEY("CO_common", trace_cursor_type), "OBLIQUE_LINE_CURSOR", 2},
      // the named-section keys, whatever section is current when they are read
      /* 9 */ {KEY("CO_common", enable_context_menu), "Ne", 0},
      /* 10 */ {KEY("CO_common", dynamic_info_first_timeout), "soon", 2000, "2000"},
      /* 11 */ {KEY("CO_colors", rename_noname_at_save_design), "Ne", 1},  // wrong section
      /* 12 */ {KEY("CO_colors", trace_color), "purple", 15},
      /* 13 */ {KEY("CO_colors", draw_priority), "xor", 3},
      /* 14 */ {KEY("CO_printer_output", default_pcf_black_color), "červená", 4},
      /* 15 */ {KEY("CO_printer_output", real_printer_minimal_width), "0.5", 0.5},
      /* 16 */ {FIELD(real_schematic_primary_grid_factor.y), "CO_schematic",
                "real_schematic_primary_grid_factor", "1.5 2.5", 2.5},
      /* 17 */ {KEY("CO_schematic", schema_obmp_mm_size_x), "100.25", 100.25},
      /* 18 */ {KEY("CO_schematic", real_schema_size), "x2", 2, "2.000000"},
      /* 19 */ {KEY("CO_layout", layout_units), "MILS", 1},
      /* 20 */ {KEY("CO_edit", edit_units), "parsec", 0},
      /* 21 */ {FIELD(real_default_edit_boundary_edit.bottom), "CO_edit",
                "real_default_edit_boundary", "1, 2, 3, 4", 4},
      /* 22 */ {FIELD(real_default_edit_boundary_pp.left), "CO_pp", "real_default_edit_boundary",
                "5 6 7 8", 5},
      /* 23 */ {KEY("CO_edit", real_edit_thick), "abc", 0, "0"},
      /* 24 */ {KEY("CO_edit", real_edit_hot_point_radius), "7", 7},
      /* 25 */ {FIELD(default_design_extension[4]), "CO_common", "default_design_extension",
                "ABCDEFG", 0},  // cut to four characters
  };
  for (const Entry &e : entries) ASSERT_EQ(1, wco::set_text(store, e.section, e.key, e.text));
  std::string long_path = kxtest::pattern_text(1000);
  ASSERT_EQ(1, wco::set_text(store, "CO_common", "system_path", long_path.c_str()));

  OptionsRecord r;
  copy_record(&r, &ifl_defaults);
  ASSERT_EQ(1, load_options(&r));
  EXPECT_EQ(0u, boxes.count()) << boxes.dump();
  for (size_t i = 0; i < KX_COUNT(entries); i++) {
    const Entry &e = entries[i];
    EXPECT_EQ(e.want, e.field(r)) << "row " << i << " " << e.key;
    EXPECT_EQ(e.after ? e.after : e.text, stored(store, e.section, e.key))
        << "row " << i << " " << e.section << "/" << e.key;
  }
  EXPECT_EQ(1.5f, r.real_schematic_primary_grid_factor.x);
  EXPECT_EQ(1.0f, r.real_default_edit_boundary_edit.left);
  EXPECT_EQ(8.0f, r.real_default_edit_boundary_pp.bottom);
  EXPECT_STREQ("ABCD", r.default_design_extension);
  EXPECT_EQ(long_path, r.system_path);
  // a key left alone keeps its default
  EXPECT_EQ(5, r.no_bak_version);
  EXPECT_EQ(0.33f, r.real_schema_add_y_port_name);
  // a key found in a wrong section is not read there; its own gets the default
  EXPECT_EQ("Ano", stored(store, "CO_common", "rename_noname_at_save_design"));
  EXPECT_EQ(211 + 1, entry_count(store));
}
