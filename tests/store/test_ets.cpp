// Enumeration names: every name of every table, the reading rules and the fallbacks.
#include "util/ets.h"

#include "tests/support/kxtest.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

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

struct Table {
  const EnumNames *names;
  const char *what;
  int16_t fallback;
  std::vector<const char *> written;  // value 0, 1, ...
};

const std::vector<Table> &tables() {
  static const std::vector<Table> t = {
      {&ets_flag, "flag", 0, {"Ne ", "Ano"}},
      {&ets_draw_mode, "drawing mode", 0, {"REPLACE", "AND", "OR", "XOR"}},
      {&ets_colour, "colour", 15,
       {"černá", "modrá", "zelená", "modrozelená", "červená", "fialová", "hnědá", "světle šedá",
        "tmavě šedá", "světle modrá", "světle zelená", "světle modrozelená", "světle červená",
        "světle fialová", "žlutá", "bílá"}},
      {&ets_units, "units", 0, {"mm", "mils", "m", "km", "inch"}},
      {&ets_cursor, "cursor type", 0, {"NORMAL_CURSOR", "LINE_CURSOR", "OBLIQUE_LINE_CURSOR"}},
      {&ets_code_page, "code page", 0,
       {"Nastavení při použití", "KEYBCS2", "LATIN2", "CP1250", "ASCII"}},
      {&ets_toolbar, "toolbar", 0,
       {"TOP_TOOLBAR", "BOTTOM_TOOLBAR", "LEFT_TOOLBAR", "RIGHT_TOOLBAR", "FLOATING_TOOLBAR",
        "HIDDEN_TOOLBAR"}},
      {&ets_text_window, "text window", 0,
       {"NO_TEXT_WINDOW", "TOP_TEXT_WINDOW", "BOTTOM_TEXT_WINDOW", "LEFT_TEXT_WINDOW",
        "RIGHT_TEXT_WINDOW", "FLOATING_TEXT_WINDOW"}},
      {&ets_panning, "panning", 0,
       {"NO_PANNING", "SCROLLBAR_PANNING", "BLOCKS_PANNING", "BOTH_PANNING"}},
      {&ets_line_style, "line style", 0,
       {"Plný", "Tečkovaný", "Čárkovaný", "Otvor", "Vyplněný", "Mřížovaný", "čeRchovaný",
        "vzor_3", "vzor_4", "vzor_5", "vzor_6", "vzor_7", "vzor_8"}},
  };
  return t;
}

// The key names as written down from the key table, one "code name" per line (Windows-1250).
std::vector<std::string> key_names_from_file() {
  std::vector<std::string> names;
  std::ifstream in(golden_file("KEYNAMES.TXT"), std::ios::binary);
  std::string line;
  while (std::getline(in, line)) {
    size_t blank = line.find(' ');
    if (blank == std::string::npos || std::stoi(line.substr(0, blank)) != (int)names.size())
      return {};
    names.push_back(line.substr(blank + 1));
  }
  return names;
}

struct ReadRow {
  const char *text;
  int16_t value;
};

void check_reads(const EnumNames &names, const std::vector<ReadRow> &rows) {
  for (size_t i = 0; i < rows.size(); i++)
    EXPECT_EQ(rows[i].value, names.read(rows[i].text))
        << names.what << " row " << i << ": \"" << rows[i].text << "\"";
}

}  // namespace

TEST(Ets, EveryNameOfEveryTableAndItsRoundTrip) {
  kxtest::BoxRecorder boxes;
  for (const Table &t : tables()) {
    EXPECT_STREQ(t.what, t.names->what);
    ASSERT_EQ((int)t.written.size(), ets_count(t.names)) << t.what;
    for (size_t v = 0; v < t.written.size(); v++) {
      const char *got = t.names->write((int16_t)v);
      ASSERT_NE(nullptr, got) << t.what << " " << v;
      EXPECT_STREQ(t.written[v], got) << t.what << " value " << v;
      EXPECT_EQ((int16_t)v, t.names->read(got)) << t.what << " reads back \"" << got << "\"";
    }
  }
  EXPECT_EQ(0u, boxes.count()) << boxes.dump();
  EXPECT_EQ(0, ets_count(nullptr));
}

TEST(Ets, KeyNamesAreThoseOfTheTableWordForWord) {
  std::vector<std::string> expected = key_names_from_file();
  ASSERT_EQ((size_t)ETS_KEY_CODES, expected.size()) << golden_file("KEYNAMES.TXT");
  ASSERT_EQ(ETS_KEY_CODES, ets_count(&ets_key));
  for (int code = 0; code < ETS_KEY_CODES; code++) {
    const char *got = ets_key.write((int16_t)code);
    EXPECT_EQ(expected[code], got) << "key " << code;
    EXPECT_EQ(code, ets_key.read(expected[code].c_str())) << "key " << code;
  }
  // the odd ones, spelt out once more
  EXPECT_STREQ("\\", ets_key.write(295));
  EXPECT_STREQ("\"", ets_key.write(299));
  EXPECT_STREQ("Control_\\", ets_key.write(318));
  EXPECT_STREQ("Alt'", ets_key.write(331));
  EXPECT_STREQ("Control+BackSpace", ets_key.write(17));
}

TEST(Ets, OutOfRangeValuesWriteTheFallbackName) {
  struct Row {
    const EnumNames *names;
    int16_t value;
    const char *written;
  } rows[] = {
      /* 0 */ {&ets_draw_mode, 4, "REPLACE"},
      /* 1 */ {&ets_colour, 16, "bílá"},
      /* 2 */ {&ets_colour, -1, "bílá"},
      /* 3 */ {&ets_units, 5, "mm"},
      /* 4 */ {&ets_cursor, 3, "NORMAL_CURSOR"},
      /* 5 */ {&ets_code_page, 5, "Nastavení při použití"},
      /* 6 */ {&ets_key, ETS_KEY_CODES, "KB_null"},
      /* 7 */ {&ets_key, -32768, "KB_null"},
      /* 8 */ {&ets_line_style, 13, "Plný"},
  };
  for (size_t i = 0; i < KX_COUNT(rows); i++) {
    kxtest::BoxRecorder boxes;
    EXPECT_STREQ(rows[i].written, rows[i].names->write(rows[i].value)) << "row " << i;
    ASSERT_EQ(1u, boxes.count()) << "row " << i << "\n" << boxes.dump();
    EXPECT_GT(kxtest::internal_error_line(boxes.only(), "ets"), 0) << "row " << i;
  }
  // a flag is true whenever it is not 0, without a report
  kxtest::BoxRecorder boxes;
  EXPECT_STREQ("Ano", ets_flag.write(2));
  EXPECT_STREQ("Ano", ets_flag.write(-1));
  EXPECT_EQ(0u, boxes.count()) << boxes.dump();
}

TEST(Ets, NullTextReadsTheFallbackWithAReport) {
  for (const Table &t : tables()) {
    kxtest::BoxRecorder boxes;
    EXPECT_EQ(t.fallback, t.names->read(nullptr)) << t.what;
    ASSERT_EQ(1u, boxes.count()) << t.what << "\n" << boxes.dump();
    EXPECT_GT(kxtest::internal_error_line(boxes.only(), "ets"), 0) << t.what;
  }
  kxtest::BoxRecorder boxes;
  EXPECT_EQ(0, ets_key.read(nullptr));
  EXPECT_EQ(1u, boxes.count()) << boxes.dump();
}

TEST(Ets, FlagReadsOnYesAnoInTheFirstFiveCharacters) {
  check_reads(ets_flag, {
      /* 0 */ {"Ano", 1},
      /* 1 */ {"yes", 1},
      /* 2 */ {"On", 1},
      /* 3 */ {"NONE", 1},        // contains ON
      /* 4 */ {"áno", 1},         // folded
      /* 5 */ {"xxANO", 1},       // within five characters
      /* 6 */ {"xxxANO", 0},      // the O is the sixth
      /* 7 */ {"Ne", 0},
      /* 8 */ {"Ne ", 0},
      /* 9 */ {"0", 0},
      /* 10 */ {"false", 0},
      /* 11 */ {"1", 0},          // a digit is no word
      /* 12 */ {"", 0},
      /* 13 */ {"OFF", 0},
      /* 14 */ {"TRUE", 0},
  });
}

TEST(Ets, DrawingModeTestsXorBeforeOrWithinTenCharacters) {
  check_reads(ets_draw_mode, {
      /* 0 */ {"xor", 3},
      /* 1 */ {"or", 2},
      /* 2 */ {"and", 1},
      /* 3 */ {"copy", 0},
      /* 4 */ {"REPLACE", 0},
      /* 5 */ {"color", 2},       // any OR
      /* 6 */ {"AND_XOR", 3},     // XOR wins over AND
      /* 7 */ {"NOR_AND", 2},     // OR wins over AND
      /* 8 */ {"abcdefgXOR", 3},  // ends at the tenth character
      /* 9 */ {"abcdefghXOR", 0},  // "ABCDEFGHXO": neither XOR nor OR
      /* 10 */ {"abcdefghOR", 2},
      /* 11 */ {"abcdefghiOR", 0},
      /* 12 */ {"", 0},
  });
}

TEST(Ets, ColourReadsCzechAndEnglishNamesWhiteOtherwise) {
  check_reads(ets_colour, {
      /* 0 */ {"černá", 0},
      /* 1 */ {"CERNA", 0},
      /* 2 */ {"cerna", 0},
      /* 3 */ {"BLACK", 0},
      /* 4 */ {"black", 0},
      /* 5 */ {"světle šedá", 7},
      /* 6 */ {"SVĚTLE ŠEDÁ", 7},
      /* 7 */ {"svetle seda", 7},
      /* 8 */ {"SVETLESEDA", 7},
      /* 9 */ {"LightGray", 7},
      /* 10 */ {"tmavě šedá", 8},
      /* 11 */ {"DarkGray", 8},
      /* 12 */ {"světle modrozelená", 11},
      /* 13 */ {"lightcyan", 11},
      /* 14 */ {"žlutá", 14},
      /* 15 */ {"Yellow", 14},
      /* 16 */ {"purple", 15},
      /* 17 */ {"bílá", 15},
      /* 18 */ {"", 15},
      /* 19 */ {"LIGHT GRAY", 15},           // English names have no blank
      /* 20 */ {"LIGHTMAGENTA        X", 13}, // 21 characters: the X is past the twentieth
      /* 21 */ {"LIGHTMAGENTA       X", 15},  // 20 characters: the X counts
      /* 22 */ {"  modrá", 1},                // trimmed
      /* 23 */ {"modrá zelená", 15},
  });
}

TEST(Ets, WholeWordTablesIgnoreCaseAndDiacritics) {
  check_reads(ets_units, {
      /* 0 */ {"MM", 0}, {"Mils", 1}, {"M", 2}, {"KM", 3}, {"inch", 4},
      /* 5 */ {"cm", 0}, {"mmm", 0}, {"", 0}, {"mil", 0},
  });
  check_reads(ets_cursor, {
      /* 0 */ {"line_cursor", 1}, {"Oblique_Line_Cursor", 2}, {"LINE", 0}, {"LINE_CURSORS", 0},
  });
  check_reads(ets_code_page, {
      /* 0 */ {"nastaveni pri pouziti", 0}, {"NASTAVENÍ PŘI POUŽITÍ", 0}, {"cp1250", 3},
      /* 3 */ {"Latin2", 2}, {"ascii", 4}, {"keybcs2", 1}, {"UTF-8", 0}, {"CP125", 0},
  });
  check_reads(ets_line_style, {
      /* 0 */ {"ČERCHOVANÝ", 6}, {"cerchovany", 6}, {"mrizovany", 5}, {"VZOR_8", 12},
      /* 4 */ {"vzor_9", 0},
  });
  check_reads(ets_panning, {{"both_panning", 3}, {"BOTH", 0}});
  check_reads(ets_toolbar, {{"hidden_toolbar", 5}, {"TOOLBAR", 0}});
  check_reads(ets_text_window, {{"floating_text_window", 5}, {"FLOATING", 0}});
}

TEST(Ets, KeyNamesAreMatchedExactly) {
  check_reads(ets_key, {
      /* 0 */ {"a", 222},
      /* 1 */ {"A", 144},
      /* 2 */ {"Mezera", 10},
      /* 3 */ {"mezera", 0},            // case counts
      /* 4 */ {"Control+Backspace", 0}, // the table says BackSpace
      /* 5 */ {"Alt'", 331},
      /* 6 */ {"Alt_'", 0},
      /* 7 */ {"Šipka_vlevo", 38},
      /* 8 */ {"Sipka_vlevo", 0},       // diacritics count
      /* 9 */ {"Break", 311},
      /* 10 */ {"Break ", 0},
      /* 11 */ {"", 0},
      /* 12 */ {"KB_null", 0},
  });
}
