// Strings: buffers, trimming, comparisons and collation, bounded copy and join, wildcards.
// Literals are Windows-1250 in the binary, so "č" here is the byte 0xE8.
#include "common/st.h"
#include "tests/support/kxtest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string.h>
#include <vector>

using kxtest::BoxRecorder;

namespace {

TEST(Strings, TrimSqueezeCase) {
  struct Row { int n; Flag (*f)(char *); const char *in, *out; int ret; } rows[] = {
      {1, st_trim, " \t ab  c\t ", "ab  c", 1}, {2, st_trim, " \t \t", "", 0}, {3, st_trim, "x", "x", 1},
      {4, st_squeeze, "  a   b\t\t c  ", "a b\t\t c", 1}, {5, st_squeeze, "\ta  ", "\ta", 1},
      {6, st_squeeze, "   ", "", 1}, {7, st_lower, "ŽLUŤOUČKÝ Kůň", "žluťoučký kůň", 1},
      {8, st_lower, "abc 1", "abc 1", 0}, {9, st_upper, "čáp", "ČÁP", 1}};
  for (const Row &r : rows) {
    char buffer[32];
    memset(buffer, '#', sizeof buffer);
    strcpy(buffer, r.in);
    EXPECT_EQ(r.ret, r.f(buffer)) << "row " << r.n;
    EXPECT_STREQ(r.out, buffer) << "row " << r.n;
    EXPECT_EQ('#', buffer[strlen(r.in) + 1]) << "row " << r.n << ": wrote past the text";
  }
}

TEST(Strings, Comparisons) {
  typedef int16_t (*Compare)(const char *, const char *);
  const Compare cmp = st_cmp, right = st_cmp_right, same = st_same, coll = st_collate,
                label = st_collate_label, nat = st_natural;
  const std::string a80 = kxtest::pattern_text(80), x97(97, 'x'), x98(98, 'x');
  struct Row { int n; Compare f; std::string a, b; int want; } rows[] = {
      {1, cmp, "abc", "abd", -1}, {2, cmp, "abc", "abc", 0}, {3, cmp, "ab", "abc", -1},
      {4, cmp, "é", "a", -1}, {5, cmp, "", "\x80", 1}, {6, cmp, "xé", "xa", 1},  // first bytes signed, then not
      {7, right, "9", "12", -1}, {8, right, "12", "9", 1}, {9, right, "12", "12", 0}, {10, right, "ab", "b", 1},
      {51, right, "a", "!a", -1},  // padded with blanks, which sort before "!"
      {11, right, a80 + "x", a80 + "y", 0}, {12, right, a80.substr(1) + "x", a80.substr(1) + "y", -1},
      {13, same, "Žluťoučký  kůň", " zlutoucky Kun ", 1}, {14, same, "abc", "abd", 0}, {15, same, "a b", "ab", 0},
      {16, same, "a\tb", "a b", 0}, {17, same, "", "  ", 1}, {18, same, a80 + "x", a80 + "y", 1},
      {19, same, a80 + "x", a80, 1}, {20, same, "x" + a80, "y" + a80, 0},
      {21, coll, "a", "A", -1}, {22, coll, "A", "á", -1}, {23, coll, "a", "á", -1}, {24, coll, "á", "Á", -1},
      {25, coll, "z", "č", 1}, {26, coll, "ab", "abc", -1}, {27, coll, "abc", "ab", 1},
      {28, coll, "abc", "abc", 0},
      {29, coll, "a", "Á", 1},  // case and accent differ: the capital base letter sorts first
      {30, label, "&Ano", "A&no", 0}, {31, label, "&Konec", "&Kopírovat", -1},
      {32, label, "&Uložit", "Uložit &jako", -1}, {33, label, "Ne", "&Ano", 1}, {34, label, "&a", "Ab", -1},
      {35, label, "x", "", 1}, {36, label, "", "", 0}, {37, label, "Soubor", "&Soubor", 0},
      {38, label, "&Soubor", "Soubor", 1},  // the end of b is tested at a's position
      {39, nat, "file2", "file10", -1}, {40, nat, "file10", "file2", 1}, {41, nat, "file10a", "file10b", -1},
      {42, nat, "file7", "file007", 0}, {43, nat, "file", "file2", -1}, {44, nat, "b1", "a2", 1},
      {45, nat, "č2", "d1", -1}, {46, nat, "a32767", "a32766", 1},
      {47, nat, "a32768", "a1", 0},  // no 16-bit value
      {48, nat, "a123456", "a1", 0}, {49, nat, x97 + "10", x97 + "9", 1},  // 99 characters: by number
      {50, nat, x98 + "10", x98 + "9", -1}};                              // 100: plain collation
  BoxRecorder rec;
  for (const Row &r : rows) EXPECT_EQ(r.want, r.f(r.a.c_str(), r.b.c_str())) << "row " << r.n << ": " << r.a;
  EXPECT_EQ(0, st_cmp(nullptr, nullptr));
  EXPECT_EQ(-1, st_cmp(nullptr, ""));
  EXPECT_EQ(1, st_cmp("", nullptr));
  char ta[] = " \tzeta ", tb[] = "zeta\t";
  EXPECT_EQ(0, st_cmp_trimmed(ta, tb));
  EXPECT_EQ("zeta zeta", std::string(ta) + " " + tb);
  EXPECT_EQ(0u, rec.count()) << rec.dump();
  // No digraphs: "ch" is two letters; bytes of 128 or more that are no letter come first.
  const std::vector<std::string> order = {
      "§ 5", "10", "abeceda", "Adam", "ábel", "cest", "cesta", "chata", "Cesta", "čáp", "čert",
      "dům", "hrad", "rak", "řeka", "sova", "šála", "zima", "Zuzana", "žába"};
  for (size_t i = 0; i < order.size(); i++)
    for (size_t j = 0; j < order.size(); j++)
      EXPECT_EQ(i < j ? -1 : i > j ? 1 : 0, st_collate(order[i].c_str(), order[j].c_str()))
          << order[i] << " / " << order[j];
}

TEST(Strings, BoundedCopyAndJoin) {
  const char kCut = '\xAF';
  struct Row { int n; bool cat; const char *dest, *src; int limit; std::string want; } rows[] = {
      {1, false, "", "abcde", 4, "abcd"}, {2, false, "", "abcde", 5, "abcde"}, {3, false, "", "abcde", 0, "abcde"},
      {4, false, "zz", "", 3, ""}, {5, true, "abcdef", "ghijkl", 12, "abcdefghijkl"},  // exact fit
      {6, true, "abcdef", "ghijkl", 11, std::string("abcdefghij") + kCut},          // one too small
      {7, true, "abcdef", "ghijkl", 0, "abcdefghijkl"}, {8, true, "abcdef", "ghijkl", -5, "abcdefghijkl"},
      {9, true, "abcdef", "x", 4, std::string("abc") + kCut}, {10, true, "ab", "c", 1, std::string(1, kCut)}};
  for (const Row &r : rows) {
    char buffer[40];
    memset(buffer, '#', sizeof buffer);
    strcpy(buffer, r.dest);
    EXPECT_EQ(1, r.cat ? st_cat(buffer, r.src, (int16_t)r.limit) : st_copy(buffer, r.src, (int16_t)r.limit))
        << "row " << r.n;
    EXPECT_EQ(r.want, buffer) << "row " << r.n;
    size_t used = std::max(r.want.size() + 1, strlen(r.dest) + 1);
    EXPECT_EQ(std::string(sizeof buffer - used, '#'), std::string(buffer + used, sizeof buffer - used)) << r.n;
  }
  // Path buffers: 1023 characters at most.
  for (size_t length : {1022u, 1023u, 1024u, 1025u, 5000u}) {
    std::string text = kxtest::pattern_text(length);
    std::vector<char> path(KX_PATH + 8, '#');
    st_copy(path.data(), text.c_str(), KX_PATH - 1);
    EXPECT_EQ(text.substr(0, KX_PATH - 1), path.data()) << "copy of " << length;
    EXPECT_EQ('#', path[KX_PATH]) << "copy of " << length;
    std::fill(path.begin(), path.end(), '#');
    strcpy(path.data(), text.substr(0, 1000).c_str());
    st_cat(path.data(), text.substr(1000).c_str(), KX_PATH - 1);
    EXPECT_EQ(length <= 1023 ? text : text.substr(0, 1022) + kCut, path.data()) << "join of " << length;
    EXPECT_EQ('#', path[KX_PATH]) << "join of " << length;
  }
  char t[8] = "abc";
  EXPECT_EQ(1, st_cat_char(t, 'd', 4));
  EXPECT_EQ(0, st_cat_char(t, 'e', 4));
  EXPECT_EQ(1, st_cat_char(t, 'e', 0));
  EXPECT_STREQ("abcde", t);
}

TEST(Strings, SearchAndWildcardsWithoutBacktracking) {
  const char *text = "a.b,c.d";
  EXPECT_EQ(text + 1, st_chr(text, '.'));
  EXPECT_EQ(text + 5, st_rchr(text, '.'));
  EXPECT_EQ(nullptr, st_chr(text, 'x'));
  EXPECT_EQ(text + 4, st_str(text, "c."));
  EXPECT_EQ(nullptr, st_str(text, "c,"));
  EXPECT_EQ(text + 3, st_chr_any(text, "x,."));  // ',' comes first in the set
  EXPECT_EQ(nullptr, st_chr_any(text, "xyz"));
  struct Row { int n; const char *text, *pattern; int want; } rows[] = {
      {1, "abc", "abc", 1}, {2, "abc", "ab", 0}, {3, "abc", "a?c", 1}, {4, "ab", "a?c", 0},
      {5, "abc", "*", 1}, {6, "", "*", 1}, {7, "", "", 1}, {8, "a", "a*", 1}, {9, "ab", "abc*", 0},
      {10, "xyz.txt", "*.txt", 1}, {11, "a.b.txt", "*.txt", 0}, {12, "banana", "*a", 0},
      {13, "ba", "*a", 1}, {14, "xab", "*a?", 1}, {15, "aab", "*a?", 0}, {16, "abc", "*?", 0},
      {17, "KORV5.EXE", "KORV?.EXE", 1}, {18, "KORV5.EXE", "korv?.exe", 0},
      {19, "abcdef", "ab*ef", 1}, {20, "axbxc", "a*x*c", 1}, {21, "abc", "**c", 1}, {22, "abc", "?*", 1}};
  for (const Row &r : rows) EXPECT_EQ(r.want, st_match(r.text, r.pattern)) << "row " << r.n;
}

TEST(Strings, PutAppendJoinIntoABufferOfKnownSize) {
  // op: 'p' put, 'n' put the first two characters, 'a' append to "ab", 'j' join "ab" + text +
  // "/"; size: the buffer's bytes.
  struct Row { int n; char op; size_t size; const char *text, *want; Flag whole; } rows[] = {
      {1, 'p', 4, "abc", "abc", 1}, {2, 'p', 3, "abc", "ab", 0}, {3, 'p', 1, "abc", "", 0},
      {4, 'p', 4, nullptr, "", 1}, {5, 'a', 5, "cd", "abcd", 1}, {6, 'a', 4, "cd", "abc", 0},
      {7, 'a', 3, "", "ab", 1}, {8, 'j', 6, "cd", "abcd/", 1}, {9, 'j', 5, "cd", "abcd", 0},
      {10, 'j', 6, nullptr, "ab/", 1}, {11, 'p', 0, "abc", "", 0}, {12, 'n', 3, "abc", "ab", 1},
      {13, 'n', 2, "abc", "a", 0}, {14, 'n', 3, "a", "a", 1}};
  for (const Row &r : rows) {
    char buffer[12];
    memset(buffer, '#', sizeof buffer);
    if (r.op == 'a') memcpy(buffer, "ab", 3);
    Flag whole = r.op == 'p'   ? st_put(buffer, r.size, r.text)
                 : r.op == 'n' ? st_put_part(buffer, r.size, r.text, 2)
                 : r.op == 'a' ? st_append(buffer, r.size, r.text)
                               : st_join(buffer, r.size, "ab", r.text, "/");
    EXPECT_EQ(r.whole, whole) << "row " << r.n;
    if (r.size > 0) {
      EXPECT_EQ(std::string(r.want), buffer) << "row " << r.n;
    }
    EXPECT_EQ(std::string(sizeof buffer - r.size, '#'), std::string(buffer + r.size, sizeof buffer - r.size))
        << "row " << r.n << ": written past the buffer";
  }
  char full[4] = {'a', 'b', 'c', 'd'};  // no NUL within the size: counts as full
  EXPECT_EQ(0, st_append(full, sizeof full, "e"));
  EXPECT_EQ(std::string("abc"), full);
}

}  // namespace
