// Configuration store: the file as written and read, when a save writes, typed values, limits,
// damaged files. Literals are Windows-1250 in the binary ("á" is the byte 0xE1).
#include "common/mm.h"
#include "swin/wco.h"
#include "tests/support/kxtest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <string.h>
#include <vector>

using kxtest::BoxRecorder;
using kxtest::ScratchDir;

namespace {

// The file's line breaks on this build.
std::string eol(const std::string &text) {
#ifdef KX_WIN32
  std::string out;
  for (char c : text) {
    if (c == '\n') out += '\r';
    out += c;
  }
  return out;
#else
  return text;
#endif
}

struct Store {
  ConfigStore *s = nullptr;
  Store() { EXPECT_EQ(1, wco::create(&s)); }
  ~Store() {
    if (s) wco::destroy(&s);
  }
};

// The whole store as "[section]key=value;..." in array order.
std::string dump(const ConfigStore *s) {
  std::string out;
  for (int32_t i = 0; i < s->section_count; i++) {
    out += std::string("[") + s->sections[i]->name + "]";
    for (int32_t e = 0; e < s->sections[i]->entry_count; e++)
      out += std::string(s->sections[i]->entries[e].key) + "=" + s->sections[i]->entries[e].value + ";";
  }
  return out;
}

// Every recorded box is an internal error of wco; returns how many there were.
size_t wco_faults(const BoxRecorder &rec) {
  for (const kxtest::Box &b : rec.boxes()) EXPECT_GT(kxtest::internal_error_line(b, "wco"), 0);
  return rec.count();
}

const std::string HEAD = "Konfiguracni soubor KORVEX\n\n";

TEST(WcoFile, WrittenByteForByte) {
  ScratchDir dir;
  BoxRecorder rec;
  Store st;
  std::string k38 = kxtest::pattern_text(38), k39 = kxtest::pattern_text(39),
              k40 = kxtest::pattern_text(40);
  ASSERT_EQ(1, wco::save(st.s, "EMPTY.WCO"));  // nothing in it: header and empty line only
  EXPECT_EQ(eol(HEAD), kxtest::read_bytes("EMPTY.WCO"));
  wco::set_text(st.s, "CO_pp", "zeta", "  last  ");
  wco::set_text(st.s, "CO_common", k40.c_str(), "forty");
  wco::set_text(st.s, "CO_common", k39.c_str(), "39");
  wco::set_text(st.s, "CO_common", k38.c_str(), "");
  wco::set_text(st.s, "CO_common", "check_file_overwrite", "Ano");
  wco::select_section(st.s, "CO_empty");  // no entries: never written
  ASSERT_EQ(1, wco::save(st.s, "A.WCO"));
  std::string want = HEAD + "BEGIN[CO_common]\n" +
                     "   " + k38 + " =  \n" +                   // 3 + 38 + 1 = 42
                     "   " + k39.substr(0, 38) + ">=  39\n" +   // cut to 42, mark
                     "   " + k40.substr(0, 38) + ">=  forty\n" +
                     "   check_file_overwrite" + std::string(19, ' ') + "=  Ano\n" +
                     "END[CO_common]\n\nBEGIN[CO_pp]\n" +
                     "   zeta" + std::string(35, ' ') + "=  last\n" +
                     "END[CO_pp]\n\n";
  EXPECT_EQ(eol(want), kxtest::read_bytes("A.WCO"));
  EXPECT_EQ(0u, rec.count()) << rec.dump();
  // Read back: the 39- and 40-character keys have become one shortened key (the last wins).
  Store back;
  ASSERT_EQ(1, wco::load(back.s, "A.WCO"));
  const char *value = nullptr;
  EXPECT_EQ(1, wco::get_text_pointer(back.s, "CO_common", (k38.substr(0, 38) + ">").c_str(), &value));
  EXPECT_STREQ("forty", value);
  EXPECT_EQ(0, wco::get_text_pointer(back.s, "CO_common", k39.c_str(), &value));
}

TEST(WcoFile, ReadRules) {
  std::string k41 = kxtest::pattern_text(41), n41 = "S" + kxtest::pattern_text(40);
  // modified: the flag of every section after the load (only what the obsolete-settings step
  // removes counts as a change).
  struct Row { int n; std::string file, want; size_t faults; Flag dirty, modified = 0; } rows[] = {
      {1, "Konfiguracni soubor KORVEX\n", "", 0, 0},
      {2, "BEGIN[CO_a]\nEND[CO_a]\nBEGIN[CO_b]\nx=1\nEND[CO_b]\n", "[CO_b]x=1;", 0, 1},
      {3, "BEGIN[CO_common]\nx=1\nEND[CO_pp]\ny=2\n", "[CO_common]x=1;", 1, 0},
      {4, "BEGIN[S]\nkey = a = b\n", "[S]key=a = b;", 0, 0},
      {5, " \tBEGIN[ S \t]\t\n  k \t=\t v  v \t\n", "[S]k=v  v;", 0, 0},
      {6, "BEGIN[S]\nk=1\nk=2\nEND[S]\nBEGIN[S]\nk=3\nj=0\n", "[S]j=0;k=3;", 0, 0},
      {7, "BEGIN[S]\nno equals\n=\n  = v\nx=\n", "[S]x=;", 0, 0},
      {8, "BEGIN[CO_x\nx=1\n", "", 1, 0},                       // unterminated BEGIN
      {9, "BEGIN[]\nx=1\nBEGIN[ ]\n", "", 3, 0},                 // empty names, entry outside
      {10, "BEGIN[" + n41 + "]\n" + k41 + "=v\n",
       "[" + n41.substr(0, 40) + "]" + k41.substr(0, 40) + "=v;", 2, 0},
      {11, "x=1\nBEGIN[S]\nEND[S]\n", "", 1, 1},
      {12, "BEGIN[S]\r\nb=2\r\na=1\r\nEND[S]\r\n", "[S]a=1;b=2;", 0, 0},
      {13, "begin[S]\nBEGIN[S] x\nEND[S]=1\n", "", 1, 0},          // none of them opens S
      {14, "BEGIN[CO_common]\nbrowse_timeout=5\nkeep=1\nBEGIN[CO_gex_output]\n"
           "default_gex_config_extension=x\n", "[CO_common]keep=1;", 0, 1, 1},
  };
  ScratchDir dir;
  for (const Row &r : rows) {
    BoxRecorder rec;
    Store st;
    ASSERT_TRUE(kxtest::write_bytes("R.WCO", r.file));
    EXPECT_EQ(1, wco::load(st.s, "R.WCO")) << "row " << r.n;
    EXPECT_EQ(r.want, dump(st.s)) << "row " << r.n;
    EXPECT_EQ(r.faults, wco_faults(rec)) << "row " << r.n << "\n" << rec.dump();
    EXPECT_EQ(r.dirty, st.s->dirty) << "row " << r.n;
    for (int32_t i = 0; i < st.s->section_count; i++)
      EXPECT_EQ(r.modified, st.s->sections[i]->modified) << "row " << r.n;
  }
}

TEST(WcoFile, LongLinesComeInPieces) {
  // A written entry carries 45 characters before its value, the reader takes 199 at a time.
  struct Row { int n; size_t length; std::string tail, want; } rows[] = {
      {1, 154, "", "k=<154>;"},
      {2, 155, "", "k=<154>;"},                        // the 1 character left has no "="
      {3, 250, "", "k=<154>;"},
      {4, 154, "tail = x", "k=<154>;tail=x;"},       // the rest parsed as a line of its own
  };
  ScratchDir dir;
  for (const Row &r : rows) {
    BoxRecorder rec;
    Store st, back;
    std::string value = std::string(r.length, 'v') + r.tail;
    ASSERT_EQ(1, wco::set_text(st.s, "S", "k", value.c_str()));
    ASSERT_EQ(1, wco::save(st.s, "L.WCO"));
    std::string file = kxtest::read_bytes("L.WCO");
    EXPECT_NE(std::string::npos, file.find("=  " + value + eol("\n"))) << "row " << r.n;
    ASSERT_EQ(1, wco::load(back.s, "L.WCO"));
    std::string want = r.want;
    want.replace(want.find("<154>"), 5, std::string(154, 'v'));
    EXPECT_EQ("[S]" + want, dump(back.s)) << "row " << r.n;
    EXPECT_EQ(0u, rec.count()) << "row " << r.n << rec.dump();
  }
}

TEST(WcoFile, LoadMergesAndKeepsPath) {
  ScratchDir dir;
  BoxRecorder rec;
  Store st;
  wco::set_text(st.s, "A", "x", "old");
  wco::set_text(st.s, "A", "keep", "1");
  wco::select_section(st.s, "Z");  // empty: removed by the load
  kxtest::write_bytes("M.WCO", "BEGIN[A]\nx=new\nEND[A]\nBEGIN[B]\ny=1\nEND[B]\n");
  ASSERT_EQ(1, wco::load(st.s, "M.WCO"));
  EXPECT_EQ("[A]keep=1;x=new;[B]y=1;", dump(st.s));
  EXPECT_EQ(1, st.s->dirty);
  // A missing file: 0, sections as they were, but the path is taken for the save.
  EXPECT_EQ(0, wco::load(st.s, "NONE.WCO"));
  EXPECT_EQ("[A]keep=1;x=new;[B]y=1;", dump(st.s));
  EXPECT_STREQ("NONE.WCO", st.s->path);
  EXPECT_EQ(1, wco::save(st.s, nullptr));
  EXPECT_TRUE(kxtest::exists("NONE.WCO"));
  // Paths are cut at 1023 characters.
  for (size_t length : {1023u, 1024u, 1025u, 5000u}) {
    std::string path(length, 'p');
    EXPECT_EQ(0, wco::load(st.s, path.c_str())) << length;
    EXPECT_EQ(std::string(length > 1023 ? 1023 : length, 'p'), st.s->path) << length;
  }
  EXPECT_EQ(0u, rec.count()) << rec.dump();
  EXPECT_EQ(0, wco::load(st.s, nullptr));
  EXPECT_EQ(0, wco::load(nullptr, "M.WCO"));
  EXPECT_EQ(2u, wco_faults(rec));
}

// Writes a sentinel over the file behind the store's back: a save that leaves it did not write.
bool untouched_by(ConfigStore *s, const char *path, const char *save_path = nullptr) {
  kxtest::write_bytes(path, "sentinel");
  EXPECT_EQ(1, wco::save(s, save_path));
  return kxtest::read_bytes(path) == "sentinel";
}

TEST(WcoSave, WritesOnlyWhenNeeded) {
  ScratchDir dir;
  BoxRecorder rec;
  Store st;
  wco::set_text(st.s, "A", "a", "1");
  wco::set_text(st.s, "B", "b", "2");
  ASSERT_EQ(1, wco::save(st.s, "S.WCO"));
  EXPECT_TRUE(untouched_by(st.s, "S.WCO"));
  EXPECT_TRUE(untouched_by(st.s, "S.WCO", "S.WCO"));
  EXPECT_TRUE(untouched_by(st.s, "s.wco", "s.wco"));         // same path but for case
  EXPECT_EQ(1, wco::set_text(st.s, "A", "a", "1"));          // the same value
  EXPECT_TRUE(untouched_by(st.s, "s.wco"));
  EXPECT_EQ(1, wco::set_int(st.s, "A", "a", 1));             // "1" again, through a number
  EXPECT_TRUE(untouched_by(st.s, "s.wco"));
  wco::set_text(st.s, "A", "a", "one");
  EXPECT_FALSE(untouched_by(st.s, "s.wco"));
  EXPECT_TRUE(untouched_by(st.s, "s.wco"));
  std::remove("s.wco");
  EXPECT_EQ(1, wco::save(st.s, nullptr));                    // missing: written
  EXPECT_TRUE(kxtest::exists("s.wco"));
  EXPECT_FALSE(untouched_by(st.s, "T.WCO", "T.WCO"));        // another path
  EXPECT_FALSE(kxtest::read_bytes("T.WCO").empty());
  wco::set_text(st.s, "A", "a", "ONE");                      // case counts
  EXPECT_EQ(1, st.s->sections[0]->modified);
  EXPECT_FALSE(untouched_by(st.s, "T.WCO"));
  // An emptied section is not written but keeps every later save writing ...
  ASSERT_EQ(1, wco::remove_key(st.s, "B", "b"));
  EXPECT_FALSE(untouched_by(st.s, "T.WCO"));
  EXPECT_EQ(eol(HEAD + "BEGIN[A]\n   a" + std::string(38, ' ') + "=  ONE\nEND[A]\n\n"),
            kxtest::read_bytes("T.WCO"));
  EXPECT_FALSE(untouched_by(st.s, "T.WCO"));
  // ... until it is removed.
  ASSERT_EQ(1, wco::remove_section(st.s, "B"));
  EXPECT_FALSE(untouched_by(st.s, "T.WCO"));
  EXPECT_TRUE(untouched_by(st.s, "T.WCO"));
  EXPECT_EQ(1, wco::save_always(st.s, nullptr));
  EXPECT_NE("sentinel", kxtest::read_bytes("T.WCO"));
  EXPECT_EQ(0u, rec.count()) << rec.dump();
  // The file cannot be opened: the file layer's message, 0, flags kept for the next save.
  wco::set_text(st.s, "A", "a", "two");
  EXPECT_EQ(0, wco::save(st.s, "no_such_dir/X.WCO"));
  ASSERT_EQ(1u, rec.count()) << rec.dump();
  EXPECT_EQ(" Chyba ", rec.only().title);
  EXPECT_EQ(1, st.s->sections[0]->modified);
  EXPECT_EQ(1, wco::save(st.s, "X.WCO"));
  EXPECT_NE(std::string::npos, kxtest::read_bytes("X.WCO").find("=  two"));
  // Obsolete settings found by a load make the next save rewrite the file without them.
  kxtest::write_bytes("O.WCO", "BEGIN[CO_common]\nbrowse_timeout=9\nx=1\nEND[CO_common]\n");
  Store old;
  ASSERT_EQ(1, wco::load(old.s, "O.WCO"));
  EXPECT_FALSE(untouched_by(old.s, "O.WCO"));
  EXPECT_EQ(std::string::npos, kxtest::read_bytes("O.WCO").find("browse_timeout"));
}

TEST(WcoTyped, TextsWritten) {
  BoxRecorder rec;
  Store st;
  ConfigStore *s = st.s;
  const int32_t ints[] = {1, -2, 2147483647};
  const int16_t shorts[] = {-32768, 0};
  const double doubles[] = {0.5, -210};
  const uint8_t bytes[] = {0, 0xAB, 0x0F};
  const WcoPair pairs[] = {{1, 2}, {-3, 4}};
  const WcoRect rect = {1, 2, 3, -4};
  const WcoRealPair rpair = {1, 2};
  const WcoRealRect rrect = {1, 2, 3, 4.25f};
  WcoFont font = {8, 1, 238, "Arial CE"};
  ASSERT_EQ(1, wco::select_section(s, "T"));
  struct Row { int n; Flag done; const char *key, *text; } rows[] = {
      {1, wco::set_int(s, "int", -5), "int", "-5"},
      {2, wco::set_short(s, "short", -32768), "short", "-32768"},
      {3, wco::set_ushort(s, "ushort", 65535), "ushort", "65535"},
      {4, wco::set_ulong(s, "ulong", 4294967295u), "ulong", "-1"},
      {5, wco::set_real(s, "real", 1.5f), "real", "1.500000"},
      {6, wco::set_double(s, "double", 210), "double", "210.000000"},
      {7, wco::set_int_list(s, "ints", ints, 3), "ints", "1, -2, 2147483647"},
      {8, wco::set_short_list(s, "shorts", shorts, 2), "shorts", "-32768, 0"},
      {9, wco::set_double_list(s, "doubles", doubles, 2), "doubles", "0.500000, -210.000000"},
      {10, wco::set_byte_list(s, "bytes", bytes, 3), "bytes", "0, AB, F"},
      {11, wco::set_pair_list(s, "pairs", pairs, 2), "pairs", "1, 2, -3, 4"},
      {12, wco::set_rect(s, "rect", &rect), "rect", "1, 2, 3, -4"},
      {13, wco::set_real_pair(s, "rpair", &rpair), "rpair", "1.000000 2.000000"},
      {14, wco::set_real_rect(s, "rrect", &rrect), "rrect", "1.000000, 2.000000, 3.000000, 4.250000"},
      {15, wco::set_font(s, "font", &font), "font", "8, 1, 238, Arial CE"},
      {16, wco::set_flag(s, "yes", 1), "yes", "Ano"},
      {17, wco::set_flag(s, "no", 0), "no", "Ne"},
      {18, wco::set_key(s, "T", "break", 311), "break", "Break"},
  };
  for (const Row &r : rows) {
    EXPECT_EQ(1, r.done) << "row " << r.n;
    const char *text = nullptr;
    EXPECT_EQ(1, wco::get_text_pointer(s, "T", r.key, &text)) << "row " << r.n;
    EXPECT_STREQ(r.text, text) << "row " << r.n;
  }
  // And back.
  uint32_t ulong = 0;
  EXPECT_EQ(1, wco::get_ulong(s, "ulong", &ulong));
  EXPECT_EQ(4294967295u, ulong);
  WcoFont f2;
  memset(&f2, '#', sizeof f2);
  EXPECT_EQ(1, wco::get_font(s, "font", &f2));
  EXPECT_EQ(8, f2.a); EXPECT_EQ(1, f2.b); EXPECT_EQ(238, f2.c);
  EXPECT_STREQ("Arial CE", f2.face);
  WcoRealRect rr;
  EXPECT_EQ(1, wco::get_real_rect(s, "T", "rrect", &rr));
  EXPECT_EQ(4.25f, rr.bottom);
  int16_t flag = 7, keycode = 0;
  EXPECT_EQ(1, wco::get_flag(s, "no", &flag));
  EXPECT_EQ(0, flag);
  EXPECT_EQ(1, wco::get_key(s, "break", &keycode));
  EXPECT_EQ(311, keycode);
  // Any enumeration: a missing key leaves the variable, an unknown text gives the table's
  // fallback and stays in the store as it was.
  static const EnumNames ab = {"ab", [](int16_t v) -> const char * { return v ? "B" : "A"; },
                               [](const char *t) -> int16_t { return strcmp(t, "B") ? 9 : 1; }};
  int16_t e = -1;
  EXPECT_EQ(0, wco::get_enum(s, "enum", &ab, &e));
  EXPECT_EQ(-1, e);
  EXPECT_EQ(1, wco::set_enum(s, "enum", &ab, 1));
  EXPECT_EQ(1, wco::get_enum(s, "T", "enum", &ab, &e));
  EXPECT_EQ(1, e);
  wco::set_text(s, "enum", "purple");
  EXPECT_EQ(1, wco::get_enum(s, "enum", &ab, &e));
  EXPECT_EQ(9, e);
  const char *kept = nullptr;
  wco::get_text_pointer(s, "enum", &kept);
  EXPECT_STREQ("purple", kept);
  // A face of 32 characters without its NUL is written 31 characters long.
  memset(font.face, 'F', sizeof font.face);
  EXPECT_EQ(1, wco::set_font(s, "font", &font));
  EXPECT_EQ(1, wco::get_font(s, "font", &f2));
  EXPECT_EQ(std::string(31, 'F'), f2.face);
  EXPECT_EQ(0u, rec.count()) << rec.dump();
}

TEST(WcoTyped, NumbersParsed) {
  struct Row { int n; const char *text; Flag ok; int32_t i; } ints[] = {
      {1, "42", 1, 42}, {2, " \t-7", 1, -7}, {3, "1-2", 1, -12}, {4, "-1+2", 1, 12},
      {5, "+5", 1, 5}, {6, "12abc", 1, 12}, {7, "3 4", 1, 3}, {8, "4294967295", 1, -1},
      {9, "abc", 0, 0}, {10, "-", 0, 0}, {11, "", 0, 0}, {12, "- 5", 0, 0},
  };
  Store st;
  ConfigStore *s = st.s;
  wco::select_section(s, "N");
  for (const Row &r : ints) {
    wco::set_text(s, "v", r.text);
    int32_t value = 0x5A5A5A5A;
    EXPECT_EQ(r.ok, wco::get_int(s, "v", &value)) << "row " << r.n << " '" << r.text << "'";
    EXPECT_EQ(r.ok ? r.i : 0x5A5A5A5A, value) << "row " << r.n << " '" << r.text << "'";
  }
  struct Real { int n; const char *text; Flag ok; double d; } reals[] = {
      {1, "1.5", 1, 1.5}, {2, "-.5", 1, -0.5}, {3, "+5.", 1, 5}, {4, "1e5", 1, 1},
      {5, "2.5x", 1, 2.5}, {6, "1.2.3", 0, 0}, {7, ".", 0, 0}, {8, "+", 0, 0}, {9, "x1", 0, 0},
  };
  for (const Real &r : reals) {
    wco::set_text(s, "v", r.text);
    double value = -99;
    EXPECT_EQ(r.ok, wco::get_double(s, "v", &value)) << "row " << r.n << " '" << r.text << "'";
    EXPECT_EQ(r.ok ? r.d : -99, value) << "row " << r.n << " '" << r.text << "'";
  }
  // A 16-bit field keeps its value when the text does not parse, the low 16 bits when it does.
  int16_t small = 3;
  wco::set_text(s, "v", "abc");
  EXPECT_EQ(0, wco::get_short(s, "v", &small));
  EXPECT_EQ(3, small);
  wco::set_text(s, "v", "70000");
  EXPECT_EQ(1, wco::get_short(s, "v", &small));
  EXPECT_EQ(4464, small);
}

TEST(WcoTyped, ListsAndCompoundsParsed) {
  struct Row { int n; const char *text; std::vector<int32_t> want; } rows[] = {
      {1, "1,2 , 3", {1, 2, 3}}, {2, "1 2", {1, 2}}, {3, "1;2", {1}}, {4, "1,,2", {1}},
      {5, "1, x, 3", {1}}, {6, "1,2,", {1, 2}}, {7, "x", {}}, {8, "", {}},
  };
  Store st;
  ConfigStore *s = st.s;
  wco::select_section(s, "L");
  for (const Row &r : rows) {
    wco::set_text(s, "v", r.text);
    int32_t *values = nullptr, count = -1;
    EXPECT_EQ(r.want.empty() ? 0 : 1, wco::get_int_list(s, "v", &values, &count)) << "row " << r.n;
    std::vector<int32_t> got(values, values ? values + count : values);
    EXPECT_EQ(r.want, got) << "row " << r.n << " '" << r.text << "'";
    if (!values) {
      EXPECT_EQ(-1, count) << "row " << r.n;
    }
    mm_free(values, MM_HERE);
  }
  wco::set_text(s, "v", "ff, 1G");  // bytes: hexadecimal, the list ends at "G"
  uint8_t *bytes = nullptr;
  int32_t count = 0;
  ASSERT_EQ(1, wco::get_byte_list(s, "v", &bytes, &count));
  ASSERT_EQ(2, count);
  EXPECT_EQ(0xFF, bytes[0]); EXPECT_EQ(1, bytes[1]);
  mm_free(bytes, MM_HERE);
  wco::set_text(s, "v", "1, 2, 3");  // pairs: an odd last number is dropped
  WcoPair *pairs = nullptr;
  ASSERT_EQ(1, wco::get_pair_list(s, "v", &pairs, &count));
  EXPECT_EQ(1, count); EXPECT_EQ(2, pairs[0].b);
  mm_free(pairs, MM_HERE);
  struct Fixed { int n; const char *text; Flag rect, rpair, font; } fixed[] = {
      {1, "1, 2, 3", 0, 1, 0}, {2, "1 2 3 4 5", 1, 1, 1}, {3, "1.5", 0, 0, 0},
      {4, "1, 2, 3,", 0, 1, 1}, {5, "1.5, 2", 0, 1, 0},
  };
  for (const Fixed &r : fixed) {
    wco::set_text(s, "v", r.text);
    WcoRect rect = {9, 9, 9, 9};
    WcoRealPair rpair = {9, 9};
    WcoFont font = {9, 9, 9, "keep"};
    EXPECT_EQ(r.rect, wco::get_rect(s, "v", &rect)) << "row " << r.n;
    EXPECT_EQ(r.rpair, wco::get_real_pair(s, "v", &rpair)) << "row " << r.n;
    EXPECT_EQ(r.font, wco::get_font(s, "v", &font)) << "row " << r.n;
    if (!r.rect) {
      EXPECT_EQ(9, rect.left) << "row " << r.n;
    }
    if (!r.font) {
      EXPECT_STREQ("keep", font.face) << "row " << r.n;
    }
  }
}

TEST(WcoTyped, ListLimitsAndMisuse) {
  BoxRecorder rec;
  Store st;
  ConfigStore *s = st.s;
  wco::select_section(s, "L");
  std::vector<int32_t> ones(335, 1);
  // 334 elements "1" joined by ", " are exactly 1000 characters; 335 would be 1003.
  ASSERT_EQ(1, wco::set_int_list(s, "fit", ones.data(), 334));
  EXPECT_EQ(0u, rec.count()) << rec.dump();
  ASSERT_EQ(1, wco::set_int_list(s, "cut", ones.data(), 335));
  EXPECT_EQ(1u, wco_faults(rec));
  const char *fit = nullptr, *cut = nullptr;
  wco::get_text_pointer(s, "fit", &fit);
  wco::get_text_pointer(s, "cut", &cut);
  EXPECT_EQ(1000u, strlen(fit));
  ASSERT_EQ(1000u, strlen(cut));
  EXPECT_EQ('\xAF', cut[999]);
  int32_t *values = nullptr, count = 0;
  ASSERT_EQ(1, wco::get_int_list(s, "fit", &values, &count));
  EXPECT_EQ(334, count);
  int32_t *busy = values;  // a result pointer that is not null: nothing is read
  EXPECT_EQ(0, wco::get_int_list(s, "fit", &busy, &count));
  EXPECT_EQ(values, busy);
  mm_free(values, MM_HERE);
  EXPECT_EQ(2u, wco_faults(rec));
  rec.clear();
  const double d = 1;
  EXPECT_EQ(0, wco::set_double_list(s, "bad", nullptr, 1));
  EXPECT_EQ(0, wco::set_double_list(s, "bad", &d, 0));
  EXPECT_EQ(0, wco::set_double_list(s, "bad", &d, -1));
  EXPECT_EQ(0, wco::get_text_pointer(s, "bad", &fit));  // nothing was stored
  EXPECT_EQ(3u, wco_faults(rec));
}

TEST(WcoTyped, TextAccess) {
  BoxRecorder rec;
  Store st;
  ConfigStore *s = st.s;
  wco::set_text(s, "S", "k", "0123456789");
  struct Row { int n; int32_t size; const char *want; } rows[] = {
      {1, 11, "0123456789"}, {2, 10, "0123456789"}, {3, 9, "012345678"}, {4, 1, "0"}};
  for (const Row &r : rows) {
    char buffer[16];
    memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(1, wco::get_text(s, "S", "k", buffer, r.size)) << "row " << r.n;
    EXPECT_STREQ(r.want, buffer) << "row " << r.n;
    EXPECT_EQ('#', buffer[strlen(r.want) + 1]) << "row " << r.n << ": wrote past the text";
  }
  char buffer[4] = "##";
  EXPECT_EQ(0, wco::get_text(s, "S", "missing", buffer, 3));
  EXPECT_EQ(0, wco::get_text(s, "NoSection", "k", buffer, 3));
  EXPECT_STREQ("##", buffer);
  EXPECT_EQ(1, s->section_count);  // a get does not create its section
  char *copy = nullptr;
  EXPECT_EQ(1, wco::get_text_copy(s, "S", "k", &copy));
  EXPECT_STREQ("0123456789", copy);
  mm_free(copy, MM_HERE);
  // Equal values leave the flag alone; a change, also of case only, sets it.
  s->sections[0]->modified = 0;
  wco::set_text(s, "S", " k ", "\t0123456789 ");
  EXPECT_EQ(0, s->sections[0]->modified);
  wco::set_text(s, "S", "k", "abc");
  EXPECT_EQ(1, s->sections[0]->modified);
  EXPECT_EQ(0u, rec.count()) << rec.dump();
  // Limits: keys of 40 and values of 1000 characters are kept whole, longer ones cut.
  struct Limit { int n; size_t key, value; size_t faults; } limits[] = {
      {1, 40, 1000, 0}, {2, 41, 1000, 1}, {3, 40, 1001, 1}, {4, 200, 5000, 2}};
  for (const Limit &l : limits) {
    rec.clear();
    std::string key = kxtest::pattern_text(l.key), value(l.value, 'v');
    EXPECT_EQ(1, wco::set_text(s, "S", key.c_str(), value.c_str())) << "row " << l.n;
    const char *got = nullptr;
    EXPECT_EQ(1, wco::get_text_pointer(s, "S", key.substr(0, 40).c_str(), &got)) << "row " << l.n;
    EXPECT_EQ(std::min<size_t>(l.value, 1000), got ? strlen(got) : 0) << "row " << l.n;
    EXPECT_EQ(l.faults, wco_faults(rec)) << "row " << l.n;
  }
  rec.clear();
  copy = (char *)"x";
  EXPECT_EQ(0, wco::get_text_copy(s, "S", "k", &copy));
  EXPECT_EQ(0, wco::set_text(s, "S", "", "v"));
  EXPECT_EQ(0, wco::set_text(s, "S", nullptr, "v"));
  EXPECT_EQ(0, wco::set_text(s, "S", "k", nullptr));
  EXPECT_EQ(0, wco::get_text(s, "S", "k", nullptr, 5));
  EXPECT_EQ(0, wco::get_text(s, "S", "k", buffer, 0));
  EXPECT_EQ(6u, wco_faults(rec));
}

TEST(WcoSections, CurrentSectionAndRemoval) {
  BoxRecorder rec;
  Store st;
  ConfigStore *s = st.s;
  int32_t value = 0;
  EXPECT_EQ(0, wco::set_int(s, "k", 1));  // no section selected
  EXPECT_EQ(0, wco::get_int(s, "k", &value));
  EXPECT_EQ(2u, wco_faults(rec));
  rec.clear();
  ASSERT_EQ(1, wco::select_section(s, "M"));
  EXPECT_EQ(1, s->dirty);
  wco::set_int(s, "k", 7);
  wco::set_int(s, "A", "a", 1);  // a section before the current one
  wco::set_int(s, "k", 8);       // still goes to M
  EXPECT_EQ("[A]a=1;[M]k=8;", dump(s));
  EXPECT_EQ(1, wco::remove_key(s, "k"));
  EXPECT_EQ(0, wco::remove_key(s, "k"));
  EXPECT_EQ(0, wco::remove_section(s, "nothing"));
  EXPECT_EQ(1, wco::remove_section(s, "M"));  // the current one: none is current now
  EXPECT_EQ(-1, s->current);
  EXPECT_EQ(1, wco::select_section(s, nullptr));
  EXPECT_EQ(0u, rec.count()) << rec.dump();
  EXPECT_EQ(0, wco::remove_section(s, ""));
  EXPECT_EQ(0, wco::remove_section(s, nullptr));
  EXPECT_EQ(0, wco::select_section(s, " "));
  EXPECT_EQ(3u, wco_faults(rec));
  rec.clear();
  wco::set_int(s, "B", "b", 2);
  wco::set_int(s, "C", "c", 3);
  wco::set_int(s, "C", "d", 4);
  s->dirty = 0;
  const WcoObsolete table[] = {{"A", nullptr}, {"C", "c"}, {"Q", "q"}, {nullptr, nullptr}};
  EXPECT_EQ(1, wco::purge_obsolete(s, table));
  EXPECT_EQ("[B]b=2;[C]d=4;", dump(s));
  EXPECT_EQ(1, s->dirty);
  s->dirty = 0;
  EXPECT_EQ(1, wco::purge_obsolete(s, nullptr));  // nothing of the built-in table here
  EXPECT_EQ(0, s->dirty);
  EXPECT_EQ(0u, rec.count()) << rec.dump();
}

TEST(WcoStore, GrowthAndOutOfMemory) {
  BoxRecorder rec;
  Store st;
  ConfigStore *s = st.s;
  char name[16];
  for (int i = 0; i < 20; i++) {
    snprintf(name, sizeof name, "S%02d", 19 - i);
    ASSERT_EQ(1, wco::set_int(s, name, "k", i));
  }
  EXPECT_EQ(20, s->section_capacity);
  mm_test_fail_after(0);  // the 21st section cannot have its room
  EXPECT_EQ(0, wco::set_int(s, "S20", "k", 1));
  EXPECT_EQ(20, s->section_count);
  EXPECT_EQ(20, s->section_capacity);
  ASSERT_EQ(1u, rec.count());
  EXPECT_EQ(WE_TEXT_NO_MEMORY, rec.only().text);
  ASSERT_EQ(1, wco::set_int(s, "S20", "k", 1));
  EXPECT_EQ(25, s->section_capacity);
  for (int i = 0; i < 100; i++) {
    snprintf(name, sizeof name, "k%03d", 99 - i);
    ASSERT_EQ(1, wco::set_int(s, "S00", name, i));
  }
  ConfigSection *big = s->sections[0];
  EXPECT_EQ(101, big->entry_count);  // "k" and k000..k099
  EXPECT_EQ(110, big->entry_capacity);
  rec.clear();
  mm_test_fail_after(0);  // key copy fails: the entry is not there
  EXPECT_EQ(0, wco::set_int(s, "S00", "new", 1));
  EXPECT_EQ(101, big->entry_count);
  EXPECT_EQ(1u, rec.count());
  for (int i = 0; i < 100; i++) {
    snprintf(name, sizeof name, "k%03d", i);
    int32_t v = -1;
    ASSERT_EQ(1, wco::get_int(s, "S00", name, &v)) << name;
    EXPECT_EQ(99 - i, v) << name;
    EXPECT_LT(strcmp(big->entries[i].key, big->entries[i + 1].key), 0) << i;
  }
  // Out of memory while loading stops at that line: what was read stays, the result is 0.
  ScratchDir dir;
  kxtest::write_bytes("B.WCO", "BEGIN[X]\na=1\nb=2\nEND[X]\n");
  Store other;
  rec.clear();
  mm_test_fail_after(6);  // file object, section, entries, name, a's key and value; not b's key
  EXPECT_EQ(0, wco::load(other.s, "B.WCO"));
  mm_test_fail_after(-1);
  EXPECT_EQ("[X]a=1;", dump(other.s));
}

TEST(WcoStore, MixedCaseAndAccentKeys) {
  // st_collate puts a < á < Á but Á < a; after these inserts a binary search for "á" from the
  // middle ("Á") turns the wrong way. Every key must still be found, and none stored twice.
  BoxRecorder rec;
  Store st;
  ConfigStore *s = st.s;
  const char *keys[] = {"a", "á", "Á", "0", "1"};
  for (const char *k : keys) ASSERT_EQ(1, wco::set_text(s, "S", k, k));
  EXPECT_EQ("[S]0=0;1=1;Á=Á;a=a;á=á;", dump(s));
  for (const char *k : keys) {
    const char *v = nullptr;
    EXPECT_EQ(1, wco::get_text_pointer(s, "S", k, &v)) << k;
    EXPECT_STREQ(k, v);
    EXPECT_EQ(1, wco::set_text(s, "S", k, "again"));
  }
  EXPECT_EQ(5, s->sections[0]->entry_count);
  ScratchDir dir;
  ASSERT_EQ(1, wco::save(s, "C.WCO"));
  Store back;
  ASSERT_EQ(1, wco::load(back.s, "C.WCO"));
  EXPECT_EQ(5, back.s->sections[0]->entry_count);
  EXPECT_EQ(0u, rec.count()) << rec.dump();
}

TEST(WcoStore, DamagedFilesSurvive) {
  ScratchDir dir;
  const std::string good = "BEGIN[CO_after]\nkey=value\nEND[CO_after]\n";
  // Binary garbage (no 0x1A: Windows' text mode ends the file there) between two good sections.
  std::string garbage = "BEGIN[CO_before]\nk=v\nEND[CO_before]\n";
  uint32_t seed = 12345;
  for (int i = 0; i < 200000; i++) {
    seed = seed * 1103515245u + 12345u;
    char c = (char)(seed >> 16);
    garbage += c == '\x1A' ? '\n' : c;
  }
  // One line of 100 MB, "=" lines only, a BEGIN without its bracket, over-long names, keys and
  // values. Each load must stay well below 10 s, also under Wine.
  const size_t huge = 100u << 20;
  std::string longest = "BEGIN[S]\n" + kxtest::pattern_text(huge) + "\nkey=value\nEND[S]\n";
  struct Row { int n; std::string body; std::string want; bool faults; } rows[] = {
      {1, garbage, "[CO_before]k=v;", true},
      {2, std::move(longest), "[S]key=value;", false},
      {3, std::string(5000, '=') + "\n=\n==\n = = \n", "", false},
      {4, "BEGIN[S\nx=1\n", "", true},
      {5, "BEGIN[" + std::string(300, 'N') + "]\n" + std::string(300, 'K') + "=" +
              std::string(3000, 'V') + "\n", "", true},
  };
  for (const Row &r : rows) {
    BoxRecorder rec;
    Store st;
    {
      std::ofstream out("G.WCO", std::ios::binary);
      out << r.body << "\n" << good;
    }
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(1, wco::load(st.s, "G.WCO")) << "row " << r.n;
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_LT(seconds, 10.0) << "row " << r.n;
    const char *value = nullptr;
    EXPECT_EQ(1, wco::get_text_pointer(st.s, "CO_after", "key", &value)) << "row " << r.n;
    EXPECT_STREQ("value", value) << "row " << r.n;
    if (!r.want.empty()) {
      EXPECT_NE(std::string::npos, dump(st.s).find(r.want)) << "row " << r.n;
    }
    EXPECT_EQ(r.faults, wco_faults(rec) > 0) << "row " << r.n << rec.dump().substr(0, 500);
    EXPECT_EQ(1, wco::save_always(st.s, "G2.WCO")) << "row " << r.n;
    Store again;
    EXPECT_EQ(1, wco::load(again.s, "G2.WCO")) << "row " << r.n;
  }
}

TEST(WcoStore, LifetimeAndSystemStore) {
  BoxRecorder rec;
  ConfigStore *s = nullptr;
  EXPECT_EQ(0, wco::destroy(&s));
  EXPECT_EQ(0, wco::destroy(nullptr));
  EXPECT_EQ(0, wco::create(nullptr));
  EXPECT_EQ(3u, wco_faults(rec));
  ASSERT_EQ(1, wco::create(&s));
  EXPECT_EQ(-1, s->current);
  EXPECT_EQ(20, s->section_capacity);
  EXPECT_STREQ("", s->path);
  wco::set_text(s, "A", "k", "v");
  EXPECT_EQ(1, wco::destroy(&s));
  EXPECT_EQ(nullptr, s);
  ConfigStore *system = wco::system_store();
  ASSERT_NE(nullptr, system);
  EXPECT_EQ(system, wco::system_store());
}

}  // namespace
