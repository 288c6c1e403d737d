// Function table: registration, look-up, status changes, descriptors and PFU_LIST.PFU.
#include "pack/pfu.h"

#include "tests/pack/pack_support.h"

#include <gtest/gtest.h>
#include <string.h>

#include <map>
#include <string>
#include <vector>

using kxtest::BoxRecorder;

namespace {

#ifdef KX_WIN32
const std::string NL = "\r\n";
#else
const std::string NL = "\n";
#endif

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
bool is_fault(const kxtest::Box &b) { return kxtest::internal_error_line(b, "pfu") > 0; }
std::string not_found(int id) { return "Funkce (id=" + std::to_string(id) + ") není v žádné tabulce funkcí"; }

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

TEST_F(Pfu, RegistersHundredTablesAndFindsTheFirstRecord) {
  static FunctionRecord t[101][3];
  for (int i = 0; i < 101; i++)  // odd tables hold two functions, the second one with id 1
    t[i][0] = fn(1000 + i), t[i][1] = i % 2 ? fn(1) : END, t[i][2] = END;
  BoxRecorder boxes;
  for (int i = 0; i < 100; i++) ASSERT_EQ(1, pfu_register(table, t[i])) << "table " << i;
  EXPECT_EQ(150, FunctionCount(table));
  EXPECT_EQ(&t[1][1], FindFunction(table, 1));
  EXPECT_EQ(&t[99][0], FindFunction(table, 1099));
  EXPECT_EQ(0u, boxes.count()) << boxes.dump();
  EXPECT_EQ(0, pfu_register(table, t[100]));
  EXPECT_TRUE(is_fault(boxes.only()));
  EXPECT_EQ(150, FunctionCount(table));
  boxes.clear();
  EXPECT_EQ(nullptr, FindFunction(table, 1100));
  EXPECT_TRUE(boxes.only().text == not_found(1100) && boxes.only().title == WE_TITLE_ERROR) << boxes.dump();
  boxes.clear();
  EXPECT_EQ(0, FunctionStatus(table, -7));  // the caller's fault: message, then internal error
  ASSERT_EQ(2u, boxes.count()) << boxes.dump();
  EXPECT_EQ(not_found(-7), boxes.boxes()[0].text);
  EXPECT_TRUE(is_fault(boxes.boxes()[1]));
}

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

TEST_F(Pfu, StatusChangeReachesEveryTableAndGuardsInvocation) {
  FunctionRecord a[] = {fn(5), END}, b[] = {fn(6), fn(5), END}, c[] = {fn(5), END};
  c[0].options = PFU_OPT_EXEMPT;
  pfu_register(table, a), pfu_register(table, b), pfu_register(table, c);
  EXPECT_EQ(1, SetFunctionStatus(table, 1, 5, 0x0008));  // conditional: c passed over
  EXPECT_EQ(std::vector<int32_t>({5, 5}), refreshed);
  EXPECT_EQ(std::vector<uint16_t>({8, 0, 8, 0}),
            std::vector<uint16_t>({a[0].status, b[0].status, b[1].status, c[0].status}));
  EXPECT_EQ(1, SetFunctionStatus(table, 0, 5, 0x0008));
  EXPECT_EQ(0x0008, c[0].status);
  EXPECT_EQ(3u, refreshed.size());

  BoxRecorder boxes;
  EXPECT_EQ(13, InvokeFunction(table, 6, 5));
  for (uint16_t forbid : {PFU_ST_DISABLED, PFU_ST_UNAVAILABLE}) {
    a[0].status = forbid;
    EXPECT_EQ(0, InvokeFunction(table, 6, 5)) << "status 0x" << std::hex << forbid;
  }
  EXPECT_EQ(0u, boxes.count()) << boxes.dump();
  EXPECT_EQ(0, InvokeFunction(table, 6, 4));
  EXPECT_EQ(not_found(4), boxes.only().text);
  boxes.clear();
  EXPECT_EQ(0, SetFunctionStatus(table, 0, 77, 0x0001));
  EXPECT_EQ("Změna statu funkce (id=77) - není v žádné tabulce funkcí", boxes.only().text);
}

TEST_F(Pfu, DescriptorAvailabilityFollowsTheWindowMode) {
  // Per mode 0..6, 1: available. Modes 3 and 4 take the bits 0x0010 and 0x0008 crossed.
  struct Row { int16_t type; const char *modes; } rows[] = {
      {0x0001, "1111111"}, {0x0002, "0100000"}, {0x0004, "0010000"}, {0x0010, "0001000"},
      {0x0008, "0000100"}, {0x0020, "0000010"}, {0x0040, "0000001"}, {0x0000, "0000000"},
      {0x0180, "0000000"}, {0x007E, "0111111"},
  };
  for (size_t i = 0; i < KX_COUNT(rows); i++) {
    for (int32_t mode = -1; mode <= 7; mode++) {  // -1: no window
      FunctionRecord rec = fn(1, nullptr, rows[i].type), d = {};
      PfuWindow w = {mode};
      BoxRecorder boxes;
      EXPECT_EQ(1, FillDescriptor(table, mode < 0 ? nullptr : &w, &rec, &d));
      bool want = mode < 0 || (mode < 7 && rows[i].modes[mode] == '1');
      EXPECT_EQ(want ? 0 : PFU_ST_UNAVAILABLE, d.status) << "row " << i << " mode " << mode;
      EXPECT_EQ(mode == 7 ? 1u : 0u, boxes.count()) << "row " << i << " mode " << mode;
    }
  }
}

TEST_F(Pfu, FillsDescriptorFields) {
  menu_texts[40] = "&Tisk";
  FunctionRecord rec = {40, 0x0025, 0x0003, 0x0101, 123, 0, twice, "tisk", 0}, d;
  memset(&d, 0xAA, sizeof d);
  d.status = 0x0010, d.config_name = nullptr;
  BoxRecorder boxes;
  ASSERT_EQ(1, FillDescriptor(table, nullptr, &rec, &d));
  EXPECT_TRUE(d.id == 40 && d.options == 3 && d.type == 0x0101 && d.help_code == 123 && d.link == 0 &&
              d.handler == twice);
  EXPECT_EQ(0x0035, d.status);  // the descriptor's own 0x0010 stays
  EXPECT_EQ('T', d.key);         // from the menu text
  EXPECT_STREQ("tisk", d.config_name);
  EXPECT_NE(rec.config_name, d.config_name);
  rec.status = 0x0010, d.status = 0, rec.key = 0x77;
  FillDescriptor(table, nullptr, &rec, &d);
  EXPECT_TRUE(d.status == 0 && d.key == 0x77) << d.status << " " << d.key;  // the record's 0x0010 is not taken
  // The name copy is kept while a new name fits, replaced by a longer one, freed for none.
  const char *first = d.config_name, *names[] = {"tis", "tisk_vse", nullptr};
  for (const char *name : names) {
    rec.config_name = name;
    FillDescriptor(table, nullptr, &rec, &d);
    EXPECT_STREQ(name, d.config_name);
    EXPECT_TRUE(name != names[0] || d.config_name == first) << "the fitting copy was replaced";
  }
  EXPECT_EQ(0u, boxes.count()) << boxes.dump();
  rec.link = 0x5000;  // link and handler: fault, link dropped
  EXPECT_EQ(1, FillDescriptor(table, nullptr, &rec, &d));
  EXPECT_EQ(0u, d.link);
  rec.link = 0, rec.handler = nullptr;  // neither: fault
  EXPECT_EQ(1, FillDescriptor(table, nullptr, &rec, &d));
  ASSERT_EQ(2u, boxes.count()) << boxes.dump();
  EXPECT_TRUE(is_fault(boxes.boxes()[0]) && is_fault(boxes.boxes()[1]));

  boxes.clear();
  rec.config_name = "jmeno", rec.handler = twice;
  mm_test_fail_after(0);
  EXPECT_EQ(0, FillDescriptor(table, nullptr, &rec, &d));
  mm_test_fail_after(-1);
  EXPECT_EQ(WE_TEXT_NO_MEMORY, boxes.only().text);
  EXPECT_EQ(nullptr, d.config_name);
}

TEST_F(Pfu, FillsDescriptorArraysAndByName) {
  menu_texts[2] = "Zo&brazit";
  FunctionRecord a[] = {fn(1, "jedna"), fn(2, "dva", 1, 0), END}, b[] = {fn(3, "jedna"), END};
  pfu_register(table, a), pfu_register(table, b);
  FunctionRecord d[] = {fn(2), fn(0), fn(99), fn(3), END};
  for (FunctionRecord &x : d) x.key = 0xAAAA;
  BoxRecorder boxes;
  EXPECT_EQ(1, FillDescriptors(table, nullptr, d));
  ASSERT_EQ(2u, boxes.count()) << boxes.dump();
  EXPECT_EQ(not_found(99), boxes.boxes()[0].text);
  EXPECT_TRUE(is_fault(boxes.boxes()[1]));
  EXPECT_EQ('B', d[0].key);
  EXPECT_STREQ("dva", d[0].config_name);
  EXPECT_STREQ("jedna", d[3].config_name);
  for (int i : {1, 2, 4}) EXPECT_EQ(0xAAAA, d[i].key) << "descriptor " << i << " was filled";
  for (FunctionRecord &x : d) pfu_free_descriptor(&x);

  boxes.clear();
  FunctionRecord one = {};
  EXPECT_EQ(1, FillDescriptorByName(table, nullptr, &one, "jedna"));
  EXPECT_EQ(1, one.id);  // the first table's record
  EXPECT_EQ(0, FillDescriptorByName(table, nullptr, &one, "JEDNA"));
  EXPECT_EQ(0u, boxes.count()) << boxes.dump();
  pfu_free_descriptor(&one);
}

TEST_F(Pfu, WritesTheFunctionListExactly) {
  const std::string list = ledger.dir().file("PFU_LIST.PFU");
  EXPECT_EQ(1, WriteFunctionList(table));  // no tables
  EXPECT_EQ("KONEC" + NL, kxtest::read_bytes(list));

  menu_texts = {{101, "&Soubor"}, {102, "Skrytá"}, {104, "&Řez"}, {105, ""}, {201, "Konec"}};
  help_texts = {{101, "Práce se soubory"}, {201, "Ukončí program"}};
  FunctionRecord empty[] = {END}, b[] = {fn(201, "konec", 0x0010), END};
  FunctionRecord a[] = {{101, 0, 0, 0x0101, 5, 0, twice, "file_menu", 29999},
                        fn(102, "skryta", 0x0081), fn(103, "bez_textu"),
                        {104, 0, 0, (int16_t)0x8001, 0xFFFFFFFF, 0, twice, nullptr, 0},
                        fn(105, "prazdny_text"), END};
  pfu_register(table, empty), pfu_register(table, a), pfu_register(table, b);
  BoxRecorder boxes;
  EXPECT_EQ(1, WriteFunctionList(table));
  EXPECT_EQ(0u, boxes.count()) << boxes.dump();
  std::string want;
  for (const char *line : {"ID_CODE  : 101", "TEXT     : &Soubor", "HELP     : Práce se soubory",
                           "CONFIG   : file_menu", "HELP_CODE: 5", "FT_TYPE  : 0x0101", " ",
                           "ID_CODE  : 104", "TEXT     : &Řez", "HELP     : ", "CONFIG   : ",
                           "HELP_CODE: -1", "FT_TYPE  : 0x8001", " ", "ID_CODE  : 201",
                           "TEXT     : Konec", "HELP     : Ukončí program", "CONFIG   : konec",
                           "HELP_CODE: 7", "FT_TYPE  : 0x0010", " ", "KONEC"})
    want += line + NL;
  EXPECT_EQ(want, kxtest::read_bytes(list));

  pfu_set_text_source(nullptr);  // no text source: nothing is listed
  EXPECT_EQ(1, WriteFunctionList(table));
  EXPECT_EQ("KONEC" + NL, kxtest::read_bytes(list));
}

TEST_F(Pfu, CutsListLinesAt250Characters) {
  const size_t lengths[] = {238, 239, 240, 1030};  // lines of 249, 250, 251 and 1041 characters
  std::string names[KX_COUNT(lengths)], want;
  std::vector<FunctionRecord> t;
  for (int32_t i = 0; i < (int32_t)KX_COUNT(lengths); i++) {
    names[i] = menu_texts[i + 1] = help_texts[i + 1] = kxtest::pattern_text(lengths[i]);
    t.push_back(fn(i + 1, names[i].c_str()));
    const std::string cut = names[i].substr(0, 239);
    want += "ID_CODE  : " + std::to_string(i + 1) + NL + "TEXT     : " + cut + NL + "HELP     : " + cut + NL +
            "CONFIG   : " + cut + NL + "HELP_CODE: 7" + NL + "FT_TYPE  : 0x0001" + NL + " " + NL;
  }
  t.push_back(END);
  pfu_register(table, t.data());
  ASSERT_EQ(1, WriteFunctionList(table));
  EXPECT_EQ(want + "KONEC" + NL, kxtest::read_bytes(ledger.dir().file("PFU_LIST.PFU")));
}

// Every block is given back (see TearDown), the replaced name copy too.
using PfuMemory = Pfu;
TEST_F(PfuMemory, GivesBackEveryBlock) {
  FunctionRecord t[] = {fn(1, "kratke"), fn(2, "mnohem_delsi_jmeno"), END}, d[] = {fn(1), fn(2), END};
  pfu_register(table, t);
  FillDescriptors(table, nullptr, d);
  FillDescriptor(table, nullptr, &t[1], &d[0]);  // the longer name replaces the copy
  for (FunctionRecord &x : d) pfu_free_descriptor(&x);
  EXPECT_EQ(4u, ledger.requests("pfu").size());  // the table and three name copies
}

}  // namespace
