// Configuration store: the file as written and read, typed values parsed, list limits, keys in
// mixed case. Literals are Windows-1250 in the binary ("á" is the byte 0xE1).
#include "common/mm.h"
#include "store/wco.h"
#include "tests/support/kxtest.h"

#include <gtest/gtest.h>

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
  wco::set_text(s, "v", "fF, 1G");  // bytes: hexadecimal, the list ends at "G"
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

}  // namespace
