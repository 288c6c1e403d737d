// Line scanning: each function over numbered rows, the text edited in a buffer pre-filled
// with '#' so that a write past the terminating NUL shows.
#include "pack/ssc.h"

#include "tests/support/kxtest.h"

#include <gtest/gtest.h>
#include <string.h>

#include <algorithm>
#include <string>

namespace {

const size_t kBuf = KX_PATH + 8;

struct Row {
  const char *in;
  int ok;
  const char *line;           // the text afterwards
  const char *out = nullptr;  // the word or part (null: not used)
  char c1 = 0, c2 = 0;        // characters handed over
  int size = kBuf;            // out size
};

// Runs fn on a copy of the row's text in a '#'-filled buffer; checks result, text, out
// buffer and that no byte after either terminating NUL was written.
template <class Fn>
void run(const char *name, const Row *rows, size_t n, Fn fn) {
  for (size_t i = 0; i < n; i++) {
    const Row &r = rows[i];
    char text[kBuf], out[kBuf];
    memset(text, '#', sizeof text);
    memset(out, '#', sizeof out);
    strcpy(text, r.in);
    SCOPED_TRACE(std::string(name) + " row " + std::to_string(i + 1) + " '" + r.in + "'");
    EXPECT_EQ(r.ok, fn(text, out, r));
    EXPECT_STREQ(r.line, text);
    for (size_t k = strlen(r.in) + 1; k < sizeof text; k++) ASSERT_EQ('#', text[k]) << "text byte " << k;
    if (!r.out) continue;
    EXPECT_STREQ(r.out, out[0] == '#' ? "(untouched)" : out);
    for (size_t k = out[0] == '#' ? 0 : strlen(out) + 1; k < sizeof out; k++)
      ASSERT_EQ('#', out[k]) << "out byte " << k << " of size " << r.size;
  }
}

TEST(Ssc, SplitFirstWord) {
  static const Row rows[] = {
      /* 1 */ {"\t  DISK:\t\t3  4 \t\n", 1, "3  4", "DISK:"},
      /* 2 */ {" \t \t ", 0, "", ""},
      /* 3 */ {"WORD", 1, "", "WORD"},
      /* 4 */ {"KEYWORDLONG   rest", 1, "rest", "KEYW", 0, 0, 5},  // word cut, line past it
      /* 5 */ {"AB rest", 1, "rest", "", 0, 0, 1},
      /* 6 */ {"x\n\n", 1, "\n", "x"},  // only the last line feed goes
  };
  run("SplitFirstWord", rows, KX_COUNT(rows),
      [](char *t, char *o, const Row &r) { return SplitFirstWord(t, o, r.size); });
  for (size_t n : {(size_t)KX_PATH - 1, (size_t)KX_PATH, (size_t)KX_PATH + 1, (size_t)3000}) {
    std::string line = kxtest::pattern_text(n) + "  tail";
    char word[KX_PATH + 1];
    memset(word, '#', sizeof word);
    EXPECT_EQ(1, SplitFirstWord(&line[0], word, KX_PATH)) << n;
    EXPECT_EQ(std::min(n, (size_t)KX_PATH - 1), strlen(word)) << n;
    EXPECT_EQ('#', word[KX_PATH]) << n;
    EXPECT_STREQ("tail", line.c_str()) << n;
  }
}

TEST(Ssc, CleanListLine) {
  static const Row rows[] = {
      /* 1 */ {"; comment", 0, ""}, /* 2 */ {"  NAME.EXE\t; note\r\n", 1, "NAME.EXE"}, /* 3 */ {"  \t \r\n", 0, ""},
      /* 4 */ {"A B\tC", 1, "A B C"}, /* 5 */ {"x;y;z", 1, "x"}, /* 6 */ {"a\rb\nc", 1, "a b c"},
  };
  run("CleanListLine", rows, KX_COUNT(rows), [](char *t, char *, const Row &) { return CleanListLine(t); });
}

TEST(Ssc, RemoveAndReplaceChar) {
  static const Row remove[] = {
      /* 1 */ {"a-b--c-", 1, "abc", nullptr, '-'}, /* 2 */ {"abc", 1, "abc", nullptr, '\0'},
      /* 3 */ {"čeština", 1, "eština", nullptr, "č"[0]},
  };
  run("RemoveChar", remove, KX_COUNT(remove), [](char *t, char *, const Row &r) { return RemoveChar(t, r.c1); });
  static const Row replace[] = {
      /* 1 */ {"C:/KORVEX/EXE/", 1, "C:\\KORVEX\\EXE\\", nullptr, '/', '\\'},
      /* 2 */ {"abc", 1, "abc", nullptr, 'x', 'y'}, /* 3 */ {"abcb", 1, "a", nullptr, 'b', '\0'},
      /* 4 */ {"abc", 1, "abc", nullptr, '\0', 'y'},
  };
  run("ReplaceChar", replace, KX_COUNT(replace),
      [](char *t, char *, const Row &r) { return ReplaceChar(t, r.c1, r.c2); });
}

TEST(Ssc, ExtractDelimited) {
  static const Row rows[] = {
      /* 1 */ {"x |ab| y", 1, "x  y", "ab", '|'},
      /* 2 */ {"x ||ab| y", 0, "x ||ab| y", "(untouched)", '|'},
      /* 3 */ {"one | bar", 0, "one | bar", "(untouched)", '|'},
      /* 4 */ {"|a|b|c|", 1, "b|c|", "a", '|'},
      /* 5 */ {"|abcdef|rest", 1, "rest", "abc", '|', 0, 4},
      /* 6 */ {"abc", 0, "abc", "(untouched)", '\0'},
  };
  run("ExtractDelimited", rows, KX_COUNT(rows),
      [](char *t, char *o, const Row &r) { return ExtractDelimited(t, o, r.c1, r.size); });
}

TEST(Ssc, StripLeadingZerosAndStringsEqual) {
  static const Row rows[] = {/* 1 */ {"000", 0, ""}, /* 2 */ {"007", 1, "7"}, /* 3 */ {"100", 1, "100"}};
  run("StripLeadingZeros", rows, KX_COUNT(rows), [](char *t, char *, const Row &) { return StripLeadingZeros(t); });
  static const struct { const char *a, *b; int eq; } pairs[] = {
      {"DISK:", "DISK:", 1}, {"disk:", "DISK:", 0}, {"ab", "abc", 0}, {"abc", "ab", 0}, {"ř", "Ř", 0},
  };
  for (size_t i = 0; i < KX_COUNT(pairs); i++)
    EXPECT_EQ(pairs[i].eq, StringsEqual(pairs[i].a, pairs[i].b)) << "row " << i + 1;
}

}  // namespace
