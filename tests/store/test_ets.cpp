// Enumeration names: every name of every table read back, and the fallbacks.
#include "store/ets.h"

#include "tests/support/kxtest.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// A file of tests/store/golden (Wine sees the source tree on drive Z:); test_ifl.cpp uses it too.
std::string store_golden_file(const char *name) {
  std::string dir = __FILE__;
  dir = dir.substr(0, dir.find_last_of("/\\") + 1);
#ifdef KX_WIN32
  if (!dir.empty() && dir[0] == '/') dir = "Z:" + dir;
#endif
  return dir + "golden/" + name;
}

namespace {

struct Read {
  const char *text;
  int16_t value;
};

struct Table {
  const EnumNames *names;
  const char *what;
  int16_t fallback;
  std::vector<const char *> written;  // value 0, 1, ...
  std::vector<Read> reads;            // how stored texts read, row by row
};

// clang-format off
const Table tables[] = {
    {&ets_flag, "flag", 0, {"Ne ", "Ano"},
     {/* 0 */ {"Ano", 1}, {"yes", 1}, {"On", 1}, {"NONE", 1}, {"áno", 1},
      /* 5 */ {"xxANO", 1}, {"xxxANO", 0},  // only the first five characters count
      /* 7 */ {"Ne", 0}, {"false", 0}, {"1", 0}, {"", 0}, {"TRUE", 0}}},
    {&ets_draw_mode, "drawing mode", 0, {"REPLACE", "AND", "OR", "XOR"},
     {/* 0 */ {"xor", 3}, {"or", 2}, {"and", 1}, {"copy", 0}, {"color", 2},
      /* 5 */ {"AND_XOR", 3}, {"NOR_AND", 2},  // XOR before OR before AND
      /* 7 */ {"abcdefgXOR", 3}, {"abcdefghXOR", 0},  // ten characters: "ABCDEFGHXO"
      /* 9 */ {"abcdefghOR", 2}, {"abcdefghiOR", 0}}},
    {&ets_colour, "colour", 15,
     {"černá", "modrá", "zelená", "modrozelená", "červená", "fialová", "hnědá", "světle šedá",
      "tmavě šedá", "světle modrá", "světle zelená", "světle modrozelená", "světle červená",
      "světle fialová", "žlutá", "bílá"},
     {/* 0 */ {"cerna", 0}, {"BLACK", 0}, {"SVĚTLE ŠEDÁ", 7}, {"svetle seda", 7},
      /* 4 */ {"SVETLESEDA", 7}, {"LightGray", 7}, {"lightcyan", 11}, {"Yellow", 14},
      /* 8 */ {"purple", 15}, {"", 15}, {"LIGHT GRAY", 15},  // English names have no blank
      /* 11 */ {"LIGHTMAGENTA        X", 13},  // 21 characters: the X is past the twentieth
      /* 12 */ {"LIGHTMAGENTA       X", 15},   // 20 characters: the X counts
      /* 13 */ {"  modrá", 1}, {"modrá zelená", 15}}},
    {&ets_units, "units", 0, {"mm", "mils", "m", "km", "inch"},
     {{"MM", 0}, {"Mils", 1}, {"KM", 3}, {"cm", 0}, {"mmm", 0}, {"", 0}, {"mil", 0}}},
    {&ets_cursor, "cursor type", 0, {"NORMAL_CURSOR", "LINE_CURSOR", "OBLIQUE_LINE_CURSOR"},
     {{"line_cursor", 1}, {"Oblique_Line_Cursor", 2}, {"LINE_CURSORS", 0}}},
    {&ets_code_page, "code page", 0,
     {"Nastavení při použití", "KEYBCS2", "LATIN2", "CP1250", "ASCII"},
     {{"nastaveni pri pouziti", 0}, {"NASTAVENÍ PŘI POUŽITÍ", 0}, {"cp1250", 3}, {"Latin2", 2},
      {"ascii", 4}, {"keybcs2", 1}, {"UTF-8", 0}, {"CP125", 0}}},
    {&ets_toolbar, "toolbar", 0,
     {"TOP_TOOLBAR", "BOTTOM_TOOLBAR", "LEFT_TOOLBAR", "RIGHT_TOOLBAR", "FLOATING_TOOLBAR",
      "HIDDEN_TOOLBAR"},
     {{"hidden_toolbar", 5}, {"TOOLBAR", 0}}},
    {&ets_text_window, "text window", 0,
     {"NO_TEXT_WINDOW", "TOP_TEXT_WINDOW", "BOTTOM_TEXT_WINDOW", "LEFT_TEXT_WINDOW",
      "RIGHT_TEXT_WINDOW", "FLOATING_TEXT_WINDOW"},
     {{"floating_text_window", 5}, {"FLOATING", 0}}},
    {&ets_panning, "panning", 0,
     {"NO_PANNING", "SCROLLBAR_PANNING", "BLOCKS_PANNING", "BOTH_PANNING"},
     {{"both_panning", 3}, {"BOTH", 0}}},
    {&ets_line_style, "line style", 0,
     {"Plný", "Tečkovaný", "Čárkovaný", "Otvor", "Vyplněný", "Mřížovaný", "čeRchovaný",
      "vzor_3", "vzor_4", "vzor_5", "vzor_6", "vzor_7", "vzor_8"},
     {{"ČERCHOVANÝ", 6}, {"cerchovany", 6}, {"mrizovany", 5}, {"VZOR_8", 12}, {"vzor_9", 0}}},
    // every key name: KeyNamesAreThoseOfTheTableWordForWord; read byte for byte
    {&ets_key, "key", 0, {"KB_null"},
     {/* 0 */ {"a", 222}, {"A", 144}, {"Mezera", 10}, {"mezera", 0},
      /* 4 */ {"Control+Backspace", 0},  // the table says BackSpace
      /* 5 */ {"Alt'", 331}, {"Alt_'", 0}, {"Šipka_vlevo", 38}, {"Sipka_vlevo", 0},
      /* 9 */ {"Break", 311}, {"Break ", 0}, {"", 0}, {"KB_null", 0}}},
};
// clang-format on

// Every recorded box is an internal error of ets; returns how many there were.
size_t ets_faults(const kxtest::BoxRecorder &rec) {
  for (const kxtest::Box &b : rec.boxes()) EXPECT_GT(kxtest::internal_error_line(b, "ets"), 0);
  return rec.count();
}

}  // namespace

TEST(Ets, EveryNameRoundTripsAndStoredTextsRead) {
  kxtest::BoxRecorder boxes;
  for (const Table &t : tables) {
    for (size_t i = 0; i < t.reads.size(); i++)
      EXPECT_EQ(t.reads[i].value, t.names->read(t.reads[i].text))
          << t.what << " row " << i << ": \"" << t.reads[i].text << "\"";
    if (t.names == &ets_key) continue;
    ASSERT_EQ((int)t.written.size(), ets_count(t.names)) << t.what;
    for (size_t v = 0; v < t.written.size(); v++) {
      const char *got = t.names->write((int16_t)v);
      EXPECT_STREQ(t.written[v], got) << t.what << " value " << v;
      EXPECT_EQ((int16_t)v, t.names->read(got)) << t.what << " reads back \"" << got << "\"";
    }
  }
  EXPECT_EQ(0u, boxes.count()) << boxes.dump();
  EXPECT_EQ(0, ets_count(nullptr));
}

TEST(Ets, BadValuesAndNullTextsGiveTheFallbackWithAReport) {
  for (const Table &t : tables) {
    const bool flag = t.names == &ets_flag;  // any non-zero flag is true, without a report
    for (int16_t value : {ets_count(t.names), (int16_t)-1, (int16_t)-32768}) {
      kxtest::BoxRecorder boxes;
      EXPECT_STREQ(flag ? "Ano" : t.written[t.fallback], t.names->write(value))
          << t.what << " " << value;
      EXPECT_EQ(flag ? 0u : 1u, ets_faults(boxes)) << t.what << " " << value << boxes.dump();
    }
    kxtest::BoxRecorder boxes;
    EXPECT_EQ(t.fallback, t.names->read(nullptr)) << t.what;
    EXPECT_EQ(1u, ets_faults(boxes)) << t.what << "\n" << boxes.dump();
  }
}
