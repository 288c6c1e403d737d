// Function table: key placeholders from the menu letter, status bits.
#include "pack/pfu.h"

#include "tests/pack/pack_support.h"

#include <gtest/gtest.h>
#include <string.h>

#include <map>
#include <string>
#include <vector>

namespace {

// The toolkit's side as the tests play it: menu texts and help lines by id, refreshed ids.
std::map<int32_t, std::string> menu_texts, help_texts;
std::vector<int32_t> refreshed;
const char *text_of(int32_t id, int16_t which) {
  std::map<int32_t, std::string> &m = which == PFU_TEXT_MENU ? menu_texts : help_texts;
  return m.count(id) ? m[id].c_str() : nullptr;
}
void refresh(int32_t id) { refreshed.push_back(id); }
uint16_t tag_plain(char c) { return (uint16_t)(0x1000 | (unsigned char)c); }
uint16_t tag_second(char c) { return (uint16_t)(0x2000 | (unsigned char)c); }
int32_t twice(int32_t a) { return 2 * a + 1; }

const FunctionRecord END = {0, PFU_ST_END, 0, 0, 0, 0, nullptr, nullptr, 0};
FunctionRecord fn(int32_t id, const char *name = nullptr, int16_t type = 1, uint16_t key = 0x41) {
  return FunctionRecord{id, 0, 0, type, 7, 0, twice, name, key};
}

// Each test runs in guarded memory mode: every block the module takes must come back.
class Pfu : public ::testing::Test {
 protected:
  packtest::Ledger ledger;
  FunctionTable *table = nullptr;
  void SetUp() override {
    menu_texts.clear(), help_texts.clear(), refreshed.clear();
    pfu_set_text_source(text_of);
    pfu_set_status_refresh(refresh);
    ASSERT_EQ(1, pfu_create(&table));
  }
  void TearDown() override {
    EXPECT_EQ(1, pfu_destroy(&table));
    EXPECT_EQ("", ledger.leftovers());
    pfu_set_text_source(nullptr);
    pfu_set_status_refresh(nullptr);
  }
};

TEST_F(Pfu, ResolvesKeyPlaceholdersFromTheMenuLetter) {
  struct Row { const char *menu; uint16_t key, want_default, want_tagged; } rows[] = {
      /* 0 */ {"&Soubor", 29999, 0x53, 0x1000 | 'S'},
      /* 1 */ {"Ote&vřít", 29999, 0x56, 0x1000 | 'v'},
      /* 2 */ {"Ote&vřít", 29998, 0x56, 0x2000 | 'V'},
      /* 3 */ {"&řez", 29998, 0xD8, 0x2000 | 0xD8},  // Ř through the second conversion
      /* 4 */ {"&řez", 29999, 0x52, 0x1000 | 0xF8},  // ř lies on the R key
      /* 5 */ {"Bez znaku", 29999, 0, 0},
      /* 6 */ {"Konec&", 29998, 0, 0},
      /* 7 */ {nullptr, 29999, 0, 0},
      /* 8 */ {"&Jiný", 0x1234, 0x1234, 0x1234},
  };
  std::vector<FunctionRecord> t[2];
  for (int tagged = 0; tagged < 2; tagged++) {
    for (int32_t i = 0, id = 100 * tagged + 10; i < (int32_t)KX_COUNT(rows); i++, id++) {
      t[tagged].push_back(fn(id, nullptr, 1, rows[i].key));
      if (rows[i].menu) menu_texts[id] = rows[i].menu;
    }
    t[tagged].push_back(END);
    if (tagged) pfu_set_key_conversions(tag_plain, tag_second);
    EXPECT_EQ(1, pfu_register(table, t[tagged].data()));
    pfu_set_key_conversions(nullptr, nullptr);
    for (size_t i = 0; i < KX_COUNT(rows); i++)
      EXPECT_EQ(tagged ? rows[i].want_tagged : rows[i].want_default, t[tagged][i].key)
          << "row " << i << (tagged ? " tagged" : " default") << " got 0x" << std::hex << t[tagged][i].key;
  }
}

TEST_F(Pfu, SetsStatusBitsInTheirOrder) {
  struct Row { uint16_t initial, bits, want; bool change; } rows[] = {
      /*  0 */ {0x0000, 0x0001, 0x0001, true},
      /*  1 */ {0x0001, 0x0004, 0x0004, true},   // 0x0004 drops 0x0001
      /*  2 */ {0x0004, 0x0002, 0x0006, true},   // 0x0002 keeps 0x0004
      /*  3 */ {0x000A, 0x0004, 0x000E, true},   // 0x0004 keeps 0x0002 and 0x0008
      /*  4 */ {0x0006, 0x0008, 0x0008, true},
      /*  5 */ {0x01C6, 0x0020, 0x0020, true},
      /*  6 */ {0xFC12, 0x0001, 0xFC11, true},   // 0x0010 and 0x0400 up stay
      /*  7 */ {0x0001, 0x0080, 0x0080, false},  // 0x0080 is no change
      /*  8 */ {0x0002, 0x0002, 0x0002, false},  // already set: nothing cleared
      /*  9 */ {0x0000, 0xFC10, 0x0000, false},  // bits outside the list are ignored
      /* 10 */ {0x0000, 0x0005, 0x0004, true},   // 0x0001 first, then 0x0004 drops it
      /* 11 */ {0x0000, 0x000A, 0x0008, true},   // 0x0002, then 0x0008 drops it
      /* 12 */ {0x0000, 0x000C, 0x000C, true},   // 0x0008, then 0x0004 keeps it
      /* 13 */ {0x0040, 0x0120, 0x0100, true},
      /* 14 */ {0x0004, 0x0081, 0x0080, true},
  };
  FunctionRecord t[KX_COUNT(rows) + 1];
  for (int32_t i = 0; i < (int32_t)KX_COUNT(rows); i++) t[i] = fn(100 + i), t[i].status = rows[i].initial;
  t[KX_COUNT(rows)] = END;
  pfu_register(table, t);
  for (int32_t i = 0; i < (int32_t)KX_COUNT(rows); i++) {
    refreshed.clear();
    EXPECT_EQ(1, SetFunctionStatus(table, 0, 100 + i, rows[i].bits)) << "row " << i;
    EXPECT_EQ(rows[i].want, t[i].status) << "row " << i << " got 0x" << std::hex << t[i].status;
    EXPECT_EQ(rows[i].change ? 1u : 0u, refreshed.size()) << "row " << i;
  }
}

// Every block is given back (see TearDown), the replaced name copy too.
using PfuMemory = Pfu;
}  // namespace
