// Configuration store: the file as written and read, when a save writes, typed values, limits,
// damaged files. Literals are Windows-1250 in the binary ("á" is the byte 0xE1).
#include "common/mm.h"
#include "store/wco.h"
#include "tests/support/kxtest.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <functional>
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
  for (char c : text) out += c == '\n' ? std::string("\r\n") : std::string(1, c);
  return out;
#else
  return text;
#endif
}

struct Store {
  ConfigStore *s = nullptr;
  Store() { EXPECT_EQ(1, wco::create(&s)); }
  ~Store() { if (s) wco::destroy(&s); }
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

std::string text_of(ConfigStore *s, const char *section, const char *key) {
  const char *value = nullptr;
  return wco::get_text_pointer(s, section, key, &value) ? value : "(missing)";
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
              k40 = kxtest::pattern_text(40), v300(300, 'v');
  ASSERT_EQ(1, wco::save(st.s, "EMPTY.WCO"));  // nothing in it: header and empty line only
  EXPECT_EQ(eol(HEAD), kxtest::read_bytes("EMPTY.WCO"));
  wco::set_text(st.s, "CO_pp", "zeta", "  last  ");
  wco::set_text(st.s, "CO_pp", "long", v300.c_str());
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
                     "   long" + std::string(35, ' ') + "=  " + v300 + "\n" +  // whole
                     "   zeta" + std::string(35, ' ') + "=  last\n" +
                     "END[CO_pp]\n\n";
  EXPECT_EQ(eol(want), kxtest::read_bytes("A.WCO"));
  EXPECT_EQ(0u, rec.count()) << rec.dump();
  // Read back: the 39- and 40-character keys have become one shortened key (the last wins).
  Store back;
  ASSERT_EQ(1, wco::load(back.s, "A.WCO"));
  EXPECT_EQ("forty", text_of(back.s, "CO_common", (k38.substr(0, 38) + ">").c_str()));
  EXPECT_EQ("(missing)", text_of(back.s, "CO_common", k39.c_str()));
}

TEST(WcoFile, ReadRules) {
  std::string k41 = kxtest::pattern_text(41), n41 = "S" + kxtest::pattern_text(40),
              v197(197, 'v'),  // "k=" and 197 characters: one whole piece of the reader
              b39(39, ' ');
  // modified: the flag of every section after the load (only what the obsolete-settings step
  // removes counts as a change).
  struct Row { int n; std::string file, want; size_t faults; Flag dirty, modified = 0; } rows[] = {
      {1, "BEGIN[CO_a]\nEND[CO_a]\nBEGIN[CO_b]\nx=1\nEND[CO_b]\n", "[CO_b]x=1;", 0, 1},
      {2, "BEGIN[CO_common]\nx=1\nEND[CO_pp]\ny=2\n", "[CO_common]x=1;", 1, 0},
      {3, "BEGIN[S]\nkey = a = b\n", "[S]key=a = b;", 0, 0},
      {4, " \tBEGIN[ S \t]\t\n  k \t=\t v  v \t\n", "[S]k=v  v;", 0, 0},
      {5, "BEGIN[S]\nk=1\nk=2\nEND[S]\nBEGIN[S]\nk=3\nj=0\n", "[S]j=0;k=3;", 0, 0},
      {6, "BEGIN[S]\nno equals\n=\n  = v\nx=\n", "[S]x=;", 0, 0},
      {7, "BEGIN[CO_x\nx=1\n", "", 1, 0},                       // unterminated BEGIN
      {8, "BEGIN[]\nx=1\nBEGIN[ ]\n", "", 3, 0},                 // empty names, entry outside
      {9, "BEGIN[" + n41 + "]\n" + k41 + "=v\n",
       "[" + n41.substr(0, 40) + "]" + k41.substr(0, 40) + "=v;", 2, 0},
      {10, "x=1\nBEGIN[S]\nEND[S]\n", "", 1, 1},
      {11, "BEGIN[S]\r\nb=2\r\na=1\r\nEND[S]\r\n", "[S]a=1;b=2;", 0, 0},
      {12, "begin[S]\nBEGIN[S] x\nEND[S]=1\n", "", 1, 0},          // none of them opens S
      {13, "BEGIN[CO_common]\nbrowse_timeout=5\nkeep=1\nBEGIN[CO_gex_output]\n"
           "default_gex_config_extension=x\n", "[CO_common]keep=1;", 0, 1, 1},
      {14, "BEGIN[S]\nk=" + v197 + "\n", "[S]k=" + v197 + ";", 0, 0},
      {15, "BEGIN[S]\nk=" + v197 + "w\n", "[S]k=" + v197 + ";", 0, 0},  // "w" alone: no "="
      {16, "BEGIN[S]\nk=" + v197 + "t = x\n", "[S]k=" + v197 + ";t=x;", 0, 0},
      // Cut at 40 inside a run of blanks: the cut name and key lose their trailing blanks.
      {17, "BEGIN[T" + b39 + "y]\nk" + b39 + "x=v\n", "[T]k=v;", 2, 0},
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
  EXPECT_EQ(1, wco::save(st.s, nullptr));
  EXPECT_TRUE(kxtest::exists("NONE.WCO"));
  for (size_t length : {1023u, 1024u, 1025u}) {  // paths are cut at 1023 characters
    EXPECT_EQ(0, wco::load(st.s, std::string(length, 'p').c_str())) << length;
    EXPECT_EQ(std::string(1023, 'p'), st.s->path) << length;
  }
  EXPECT_EQ(0u, rec.count()) << rec.dump();
}

TEST(WcoSave, WritesOnlyWhenNeeded) {
  ScratchDir dir;
  BoxRecorder rec;
  Store st;
  ConfigStore *s = st.s;
  wco::set_text(s, "A", "a", "1");
  wco::set_text(s, "B", "b", "2");
  ASSERT_EQ(1, wco::save(s, "S.WCO"));
  // Before each save a sentinel is put in the file behind the store's back.
  struct Step { int n; std::function<void()> change; const char *file, *save_path; bool writes; }
  steps[] = {
      {1, [] {}, "S.WCO", nullptr, false},
      {2, [] {}, "S.WCO", "S.WCO", false},
      {3, [] {}, "s.wco", "s.wco", false},  // same path but for case
      {4, [&] { wco::set_int(s, "A", "a", 1); }, "s.wco", nullptr, false},  // the same text
      {5, [&] { wco::set_text(s, "A", "a", "one"); }, "s.wco", nullptr, true},
      {6, [] {}, "s.wco", nullptr, false},
      {7, [] { std::remove("s.wco"); }, "", nullptr, true},  // missing
      {8, [] {}, "T.WCO", "T.WCO", true},                    // another path
      {9, [&] { wco::remove_key(s, "B", "b"); }, "T.WCO", nullptr, true},
      {10, [] {}, "T.WCO", nullptr, true},  // an emptied section keeps every save writing ...
      {11, [&] { wco::remove_section(s, "B"); }, "T.WCO", nullptr, true},
      {12, [] {}, "T.WCO", nullptr, false},  // ... until it is removed
  };
  for (const Step &step : steps) {
    step.change();
    if (*step.file) kxtest::write_bytes(step.file, "sentinel");
    EXPECT_EQ(1, wco::save(s, step.save_path)) << "step " << step.n;
    std::string file = kxtest::read_bytes(s->path);
    EXPECT_EQ(step.writes, file != "sentinel") << "step " << step.n << ": " << file.substr(0, 60);
  }
  kxtest::write_bytes("T.WCO", "sentinel");
  EXPECT_EQ(1, wco::save_always(s, nullptr));
  EXPECT_EQ(eol(HEAD + "BEGIN[A]\n   a" + std::string(38, ' ') + "=  one\nEND[A]\n\n"),
            kxtest::read_bytes("T.WCO"));
  EXPECT_EQ(0u, rec.count()) << rec.dump();
  // The file cannot be opened: the file layer's message, 0, flags kept for the next save.
  wco::set_text(s, "A", "a", "two");
  EXPECT_EQ(0, wco::save(s, "no_such_dir/X.WCO"));
  ASSERT_EQ(1u, rec.count()) << rec.dump();
  EXPECT_EQ(" Chyba ", rec.only().title);
  EXPECT_EQ(1, s->sections[0]->modified);
  EXPECT_EQ(1, wco::save(s, "X.WCO"));
  EXPECT_NE(std::string::npos, kxtest::read_bytes("X.WCO").find("=  two"));
}

TEST(WcoTyped, TextsWritten) {
  // The scalar, real and enumeration forms are those of the system file (test_ifl.cpp).
  BoxRecorder rec;
  Store st;
  ConfigStore *s = st.s;
  const int32_t ints[] = {1, -2, 2147483647};
  const int16_t shorts[] = {-32768, 0};
  const double doubles[] = {0.5, -210};
  const uint8_t bytes[] = {0, 0xAB, 0x0F};
  const WcoPair pairs[] = {{1, 2}, {-3, 4}};
  const WcoRect rect = {1, 2, 3, -4};
  WcoFont font = {8, 1, 238, "Arial CE"};
  ASSERT_EQ(1, wco::select_section(s, "T"));
  struct Row { int n; Flag done; const char *key, *text; } rows[] = {
      {1, wco::set_ushort(s, "ushort", 65535), "ushort", "65535"},
      {2, wco::set_ulong(s, "ulong", 4294967295u), "ulong", "-1"},
      {3, wco::set_int_list(s, "ints", ints, 3), "ints", "1, -2, 2147483647"},
      {4, wco::set_short_list(s, "shorts", shorts, 2), "shorts", "-32768, 0"},
      {5, wco::set_double_list(s, "doubles", doubles, 2), "doubles", "0.500000, -210.000000"},
      {6, wco::set_byte_list(s, "bytes", bytes, 3), "bytes", "0, AB, F"},
      {7, wco::set_pair_list(s, "pairs", pairs, 2), "pairs", "1, 2, -3, 4"},
      {8, wco::set_rect(s, "rect", &rect), "rect", "1, 2, 3, -4"},
      {9, wco::set_font(s, "font", &font), "font", "8, 1, 238, Arial CE"},
  };
  for (const Row &r : rows) {
    EXPECT_EQ(1, r.done) << "row " << r.n;
    EXPECT_EQ(r.text, text_of(s, "T", r.key)) << "row " << r.n;
  }
  uint32_t ulong = 0;
  EXPECT_EQ(1, wco::get_ulong(s, "ulong", &ulong));
  EXPECT_EQ(4294967295u, ulong);
  // A face of 32 characters without its NUL is written 31 characters long.
  memset(font.face, 'F', sizeof font.face);
  EXPECT_EQ(1, wco::set_font(s, "font", &font));
  EXPECT_EQ("8, 1, 238, " + std::string(31, 'F'), text_of(s, "T", "font"));
  EXPECT_EQ(0u, rec.count()) << rec.dump();
}

TEST(WcoTyped, TextsParsed) {
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
  struct List { int n; const char *text; std::vector<int32_t> want; } lists[] = {
      {1, "1,2 , 3", {1, 2, 3}}, {2, "1 2", {1, 2}}, {3, "1;2", {1}}, {4, "1,,2", {1}},
      {5, "1, x, 3", {1}}, {6, "1,2,", {1, 2}}, {7, "x", {}}, {8, "", {}},
  };
  for (const List &r : lists) {
    wco::set_text(s, "v", r.text);
    int32_t *values = nullptr, count = -1;
    EXPECT_EQ(r.want.empty() ? 0 : 1, wco::get_int_list(s, "v", &values, &count)) << "row " << r.n;
    EXPECT_EQ(r.want, std::vector<int32_t>(values, values ? values + count : values))
        << "row " << r.n << " '" << r.text << "'";
    EXPECT_EQ(r.want.empty() ? -1 : (int32_t)r.want.size(), count) << "row " << r.n;
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
  struct Fixed { int n; const char *text; Flag rect, rpair, font; const char *face; } fixed[] = {
      {1, "1, 2, 3", 0, 1, 0, "keep"}, {2, "1 2 3 4 5", 1, 1, 1, "4 5"},
      {3, "1.5", 0, 0, 0, "keep"}, {4, "1, 2, 3,", 0, 1, 1, ""}, {5, "1.5, 2", 0, 1, 0, "keep"},
  };
  for (const Fixed &r : fixed) {
    wco::set_text(s, "v", r.text);
    WcoRect rect = {9, 9, 9, 9};
    WcoRealPair rpair = {9, 9};
    WcoFont font = {9, 9, 9, "keep"};
    EXPECT_EQ(r.rect, wco::get_rect(s, "v", &rect)) << "row " << r.n;
    EXPECT_EQ(r.rpair, wco::get_real_pair(s, "v", &rpair)) << "row " << r.n;
    EXPECT_EQ(r.font, wco::get_font(s, "v", &font)) << "row " << r.n;
    EXPECT_EQ(r.rect ? 1 : 9, rect.left) << "row " << r.n;
    EXPECT_EQ(r.font ? 3 : 9, font.c) << "row " << r.n;
    EXPECT_STREQ(r.face, font.face) << "row " << r.n;
  }
}

TEST(WcoTyped, ListLimitsAndTextAccess) {
  BoxRecorder rec;
  Store st;
  ConfigStore *s = st.s;
  std::vector<int32_t> ones(335, 1);
  // 334 elements "1" joined by ", " are exactly 1000 characters; 335 would be 1003.
  ASSERT_EQ(1, wco::set_int_list(s, "L", "fit", ones.data(), 334));
  EXPECT_EQ(0u, rec.count()) << rec.dump();
  ASSERT_EQ(1, wco::set_int_list(s, "L", "cut", ones.data(), 335));
  EXPECT_EQ(1u, wco_faults(rec));
  std::string fit = text_of(s, "L", "fit");
  EXPECT_EQ(1000u, fit.size());
  EXPECT_EQ(fit.substr(0, 999) + "\xAF", text_of(s, "L", "cut"));  // the cut mark
  int32_t *values = nullptr, count = 0;
  ASSERT_EQ(1, wco::get_int_list(s, "L", "fit", &values, &count));
  EXPECT_EQ(334, count);
  mm_free(values, MM_HERE);
  rec.clear();
  // get_text: size characters at most, always terminated, nothing written past the text.
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
  EXPECT_EQ(2, s->section_count);  // a get does not create its section
  char *copy = nullptr;
  EXPECT_EQ(1, wco::get_text_copy(s, "S", "k", &copy));
  EXPECT_STREQ("0123456789", copy);
  mm_free(copy, MM_HERE);
  // Equal values leave the flag alone; a change, also of case only, sets it.
  ConfigSection *section = s->sections[1];
  for (const char *value : {"\t0123456789 ", "abc", "ABC"}) {
    section->modified = 0;
    wco::set_text(s, "S", " k ", value);
    EXPECT_EQ(value[0] == '\t' ? 0 : 1, section->modified) << value;
  }
  EXPECT_EQ(0u, rec.count()) << rec.dump();
  // Keys of 40 and values of 1000 characters are kept whole, longer ones cut with a report.
  struct Limit { int n; size_t key, value; size_t faults; } limits[] = {
      {1, 40, 1000, 0}, {2, 41, 1000, 1}, {3, 40, 1001, 1}, {4, 200, 5000, 2}};
  for (const Limit &l : limits) {
    rec.clear();
    std::string key = kxtest::pattern_text(l.key);
    EXPECT_EQ(1, wco::set_text(s, "S", key.c_str(), std::string(l.value, 'v').c_str())) << l.n;
    EXPECT_EQ(std::string(1000, 'v'), text_of(s, "S", key.substr(0, 40).c_str())) << "row " << l.n;
    EXPECT_EQ(l.faults, wco_faults(rec)) << "row " << l.n;
  }
}

TEST(WcoSections, CurrentSectionAndRemoval) {
  BoxRecorder rec;
  Store st;
  ConfigStore *s = st.s;
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

TEST(WcoStore, LifetimeAndMisuse) {
  Store st;
  ConfigStore *s = st.s, *none = nullptr;
  ASSERT_EQ(1, wco::set_text(s, "S", "k", "v"));  // no section current, no path
  char buffer[8], *copy = buffer;
  int32_t value = 0, *busy = &value, count = 0;  // a result pointer that is not null
  int16_t e = 0;
  const double d = 1;
  std::function<Flag()> calls[] = {
      /* 0 */ [&] { return wco::load(s, nullptr); }, [&] { return wco::load(nullptr, "X.WCO"); },
      /* 2 */ [&] { return wco::save(s, nullptr); }, [&] { return wco::save(nullptr, "X.WCO"); },
      /* 4 */ [&] { return wco::set_int(s, "k", 1); }, [&] { return wco::get_int(s, "k", &value); },
      /* 6 */ [&] { return wco::remove_key(s, "k"); }, [&] { return wco::remove_section(s, ""); },
      /* 8 */ [&] { return wco::remove_section(s, nullptr); },
      /* 9 */ [&] { return wco::select_section(s, " "); },
      /* 10 */ [&] { return wco::set_text(s, "S", " ", "v"); },
      /* 11 */ [&] { return wco::set_text(s, "S", "k", nullptr); },
      /* 12 */ [&] { return wco::get_text(s, "S", "k", nullptr, 5); },
      /* 13 */ [&] { return wco::get_text(s, "S", "k", buffer, 0); },
      /* 14 */ [&] { return wco::get_text_copy(s, "S", "k", &copy); },
      /* 15 */ [&] { return wco::get_int_list(s, "S", "k", &busy, &count); },
      /* 16 */ [&] { return wco::set_double_list(s, "S", "bad", nullptr, 1); },
      /* 17 */ [&] { return wco::set_double_list(s, "S", "bad", &d, 0); },
      /* 18 */ [&] { return wco::set_rect(s, "S", "bad", nullptr); },
      /* 19 */ [&] { return wco::get_enum(s, "S", "k", nullptr, &e); },
      /* 20 */ [&] { return wco::purge_obsolete(nullptr, nullptr); },
      /* 21 */ [&] { return wco::destroy(&none); }, [&] { return wco::create(nullptr); },
  };
  for (size_t i = 0; i < KX_COUNT(calls); i++) {
    BoxRecorder rec;
    EXPECT_EQ(0, calls[i]()) << "call " << i;
    EXPECT_EQ(1u, wco_faults(rec)) << "call " << i << "\n" << rec.dump();
  }
  EXPECT_EQ("[S]k=v;", dump(s));
  EXPECT_EQ(buffer, copy);
  EXPECT_EQ(&value, busy);
  EXPECT_EQ(-1, s->current);
  EXPECT_EQ(1, wco::destroy(&st.s));
  EXPECT_EQ(nullptr, st.s);
  EXPECT_EQ(wco::system_store(), wco::system_store());
}

TEST(WcoStore, GrowthAndOutOfMemory) {
  BoxRecorder rec;
  Store st;
  ConfigStore *s = st.s;
  char name[16];
  for (int i = 19; i >= 0; i--) {  // each new section goes to the front
    snprintf(name, sizeof name, "S%02d", i);
    ASSERT_EQ(1, wco::set_int(s, name, "k", i));
  }
  mm_test_fail_after(0);  // the 21st section cannot have its room
  EXPECT_EQ(0, wco::set_int(s, "S20", "k", 1));
  EXPECT_EQ(20, s->section_count);
  ASSERT_EQ(1u, rec.count());
  EXPECT_EQ(WE_TEXT_NO_MEMORY, rec.only().text);
  ASSERT_EQ(1, wco::set_int(s, "S20", "k", 1));
  EXPECT_EQ(25, s->section_capacity);
  for (int i = 99; i >= 0; i--) {
    snprintf(name, sizeof name, "k%03d", i);
    ASSERT_EQ(1, wco::set_int(s, "S00", name, i));
  }
  ConfigSection *big = s->sections[0];
  EXPECT_EQ(110, big->entry_capacity);
  mm_test_fail_after(0);  // key copy fails: the entry is not there
  EXPECT_EQ(0, wco::set_int(s, "S00", "new", 1));
  EXPECT_EQ(101, big->entry_count);  // "k" and k000..k099
  EXPECT_EQ(2u, rec.count());
  for (int i = 0; i < 100; i++) {
    snprintf(name, sizeof name, "k%03d", i);
    EXPECT_EQ(std::to_string(i), text_of(s, "S00", name));
    EXPECT_LT(strcmp(big->entries[i].key, big->entries[i + 1].key), 0) << i;
  }
  for (int i = 1; i < s->section_count; i++)
    EXPECT_LT(strcmp(s->sections[i - 1]->name, s->sections[i]->name), 0) << i;
  // Out of memory while loading stops at that line: what was read stays, the result is 0.
  ScratchDir dir;
  kxtest::write_bytes("B.WCO", "BEGIN[X]\na=1\nb=2\nEND[X]\n");
  Store other;
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
    EXPECT_EQ(k, text_of(s, "S", k));
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
  // Binary garbage (no 0x1A: Windows' text mode ends the file there) after a good section.
  std::string garbage = "BEGIN[CO_before]\nk=v\nEND[CO_before]\n";
  uint32_t seed = 12345;
  for (int i = 0; i < 200000; i++) {
    seed = seed * 1103515245u + 12345u;
    char c = (char)(seed >> 16);
    garbage += c == '\x1A' ? '\n' : c;
  }
  // One line of 100 MB, long "=" lines; each before a good section.
  const std::string after = "[CO_after]key=value;";
  struct Row { int n; std::string body, want; bool faults; } rows[] = {
      {1, garbage, after + "[CO_before]k=v;", true},
      {2, "BEGIN[S]\n" + std::string(100u << 20, 'L') + "\nkey=value\nEND[S]\n",
       after + "[S]key=value;", false},
      {3, std::string(5000, '=') + "\n=\n==\n = = \n", after, false},
  };
  for (Row &r : rows) {
    BoxRecorder rec;
    Store st, again;
    {
      std::ofstream out("G.WCO", std::ios::binary);
      out << r.body << "\nBEGIN[CO_after]\nkey=value\nEND[CO_after]\n";
    }
    std::string().swap(r.body);
    EXPECT_EQ(1, wco::load(st.s, "G.WCO")) << "row " << r.n;
    EXPECT_EQ(r.want, dump(st.s)) << "row " << r.n;
    EXPECT_EQ(r.faults, wco_faults(rec) > 0) << "row " << r.n << rec.dump().substr(0, 500);
    EXPECT_EQ(1, wco::save_always(st.s, "G2.WCO")) << "row " << r.n;
    EXPECT_EQ(1, wco::load(again.s, "G2.WCO")) << "row " << r.n;
    EXPECT_EQ(r.want, dump(again.s)) << "row " << r.n;
  }
}

}  // namespace
