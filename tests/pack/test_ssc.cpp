// Line scanning: each function over numbered rows, the text edited in a buffer pre-filled
// with '#' so that a write past the terminating NUL shows.
#include "pack/ssc.h"

#include "tests/support/kxtest.h"

#include <gtest/gtest.h>
#include <string.h>

#include <algorithm>
#include <string>

using kxtest::BoxRecorder;

namespace {

const size_t kBuf = KX_PATH + 8;

struct Row {
  const char *in;
  int ok;
  const char *line;  // the text afterwards
  const char *out = nullptr;  // the word or part (null: not used)
  char c1 = 0, c2 = 0;        // characters handed over
  int size = 0;               // out size (0: the whole buffer)
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
    int size = r.size ? r.size : (int)sizeof out;
    int got = fn(text, out, r);
    SCOPED_TRACE(std::string(name) + " row " + std::to_string(i + 1) + " '" + r.in + "'");
    EXPECT_EQ(r.ok, got);
    EXPECT_STREQ(r.line, text);
    for (size_t k = strlen(r.in) + 1; k < sizeof text; k++) ASSERT_EQ('#', text[k]) << "text byte " << k;
    if (!r.out) continue;
    EXPECT_STREQ(r.out, out[0] == '#' ? "(untouched)" : out);
    for (size_t k = out[0] == '#' ? 0 : strlen(out) + 1; k < sizeof out; k++)
      ASSERT_EQ('#', out[k]) << "out byte " << k << " of size " << size;
  }
}

TEST(Ssc, SplitFirstWord) {
  static const Row rows[] = {
      /* 1 */ {"DISK:   3", 1, "3", "DISK:"},
      /* 2 */ {"DISK:   3\n", 1, "3", "DISK:"},
      /* 3 */ {"\t  DISK:\t\t3  4 \t\n", 1, "3  4", "DISK:"},
      /* 4 */ {" \t \t ", 0, "", ""},
      /* 5 */ {"", 0, "", ""},
      /* 6 */ {"\n", 0, "", ""},
      /* 7 */ {"WORD", 1, "", "WORD"},
      /* 8 */ {"KEYWORDLONG   rest", 1, "rest", "KEYW", 0, 0, 5},  // word cut, line past it
      /* 9 */ {"AB rest", 1, "rest", "", 0, 0, 1},
      /* 10 */ {"x\n\n", 1, "\n", "x"},  // only the last line feed goes
  };
  run("SplitFirstWord", rows, KX_COUNT(rows), [](char *t, char *o, const Row &r) {
    return SplitFirstWord(t, o, r.size ? r.size : (int32_t)kBuf);
  });
}

TEST(Ssc, SplitFirstWordAroundPathLength) {
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
      /* 1 */ {"; comment", 0, ""},
      /* 2 */ {"  NAME.EXE\t; note\r\n", 1, "NAME.EXE"},
      /* 3 */ {"", 0, ""},
      /* 4 */ {"  \t \r\n", 0, ""},
      /* 5 */ {"  ;", 0, ""},
      /* 6 */ {"A B\tC", 1, "A B C"},
      /* 7 */ {"x;y;z", 1, "x"},
      /* 8 */ {"a\rb\nc", 1, "a b c"},
  };
  run("CleanListLine", rows, KX_COUNT(rows), [](char *t, char *, const Row &) { return CleanListLine(t); });
}

TEST(Ssc, RemoveAndReplaceChar) {
  static const Row remove[] = {
      /* 1 */ {"a-b--c-", 1, "abc", nullptr, '-'},
      /* 2 */ {"---", 1, "", nullptr, '-'},
      /* 3 */ {"", 1, "", nullptr, 'x'},
      /* 4 */ {"abc", 1, "abc", nullptr, '\0'},
      /* 5 */ {"čeština", 1, "eština", nullptr, "č"[0]},
  };
  run("RemoveChar", remove, KX_COUNT(remove), [](char *t, char *, const Row &r) { return RemoveChar(t, r.c1); });
  static const Row replace[] = {
      /* 1 */ {"C:/KORVEX/EXE/", 1, "C:\\KORVEX\\EXE\\", nullptr, '/', '\\'},
      /* 2 */ {"abc", 1, "abc", nullptr, 'x', 'y'},
      /* 3 */ {"abcb", 1, "a", nullptr, 'b', '\0'},
      /* 4 */ {"abc", 1, "abc", nullptr, '\0', 'y'},
  };
  run("ReplaceChar", replace, KX_COUNT(replace),
      [](char *t, char *, const Row &r) { return ReplaceChar(t, r.c1, r.c2); });
}

TEST(Ssc, ExtractDelimited) {
  static const Row rows[] = {
      /* 1 */ {"x |ab| y", 1, "x  y", "ab", '|'},
      /* 2 */ {"x ||ab| y", 0, "x ||ab| y", "(untouched)", '|'},
      /* 3 */ {"no bars", 0, "no bars", "(untouched)", '|'},
      /* 4 */ {"one | bar", 0, "one | bar", "(untouched)", '|'},
      /* 5 */ {"|a|b|c|", 1, "b|c|", "a", '|'},
      /* 6 */ {"|abcdef|rest", 1, "rest", "abc", '|', 0, 4},
      /* 7 */ {"\"quoted name\" x", 1, " x", "quoted name", '"'},
      /* 8 */ {"abc", 0, "abc", "(untouched)", '\0'},
  };
  run("ExtractDelimited", rows, KX_COUNT(rows), [](char *t, char *o, const Row &r) {
    return ExtractDelimited(t, o, r.c1, r.size ? r.size : (int32_t)kBuf);
  });
}

TEST(Ssc, StripLeadingZerosAndStringsEqual) {
  static const Row rows[] = {
      /* 1 */ {"000", 0, ""}, /* 2 */ {"007", 1, "7"}, /* 3 */ {"0", 0, ""},
      /* 4 */ {"100", 1, "100"}, /* 5 */ {"", 0, ""}, /* 6 */ {"0a0", 1, "a0"},
  };
  run("StripLeadingZeros", rows, KX_COUNT(rows), [](char *t, char *, const Row &) { return StripLeadingZeros(t); });
  static const struct { const char *a, *b; int eq; } pairs[] = {
      {"DISK:", "DISK:", 1}, {"disk:", "DISK:", 0}, {"", "", 1}, {"ab", "abc", 0},
      {"abc", "ab", 0}, {"ř", "Ř", 0}, {"ř", "ř", 1},
  };
  for (size_t i = 0; i < KX_COUNT(pairs); i++)
    EXPECT_EQ(pairs[i].eq, StringsEqual(pairs[i].a, pairs[i].b)) << "row " << i + 1;
}

TEST(Ssc, NullArguments) {
  char line[8] = "a b", word[8];
  struct { const char *what; int (*call)(char *, char *); } rows[] = {
      {"SplitFirstWord line", [](char *, char *w) -> int { return SplitFirstWord(nullptr, w, 8); }},
      {"SplitFirstWord word", [](char *l, char *) -> int { return SplitFirstWord(l, nullptr, 8); }},
      {"SplitFirstWord size", [](char *l, char *w) -> int { return SplitFirstWord(l, w, 0); }},
      {"CleanListLine", [](char *, char *) -> int { return CleanListLine(nullptr); }},
      {"RemoveChar", [](char *, char *) -> int { return RemoveChar(nullptr, 'a'); }},
      {"ExtractDelimited line", [](char *, char *w) -> int { return ExtractDelimited(nullptr, w, '|', 8); }},
      {"ExtractDelimited out", [](char *l, char *) -> int { return ExtractDelimited(l, nullptr, '|', 8); }},
      {"ExtractDelimited size", [](char *l, char *w) -> int { return ExtractDelimited(l, w, '|', 0); }},
      {"StringsEqual a", [](char *l, char *) -> int { return StringsEqual(nullptr, l); }},
      {"StringsEqual b", [](char *l, char *) -> int { return StringsEqual(l, nullptr); }},
      {"StripLeadingZeros", [](char *, char *) -> int { return StripLeadingZeros(nullptr); }},
  };
  for (auto &r : rows) {
    BoxRecorder boxes;
    EXPECT_EQ(0, r.call(line, word)) << r.what;
    EXPECT_GT(kxtest::internal_error_line(boxes.only(), "ssc"), 0) << r.what;
    EXPECT_STREQ("a b", line) << r.what;
  }
  BoxRecorder boxes;
  EXPECT_EQ(0, ReplaceChar(nullptr, 'a', 'b'));
  EXPECT_EQ(0u, boxes.count()) << boxes.dump();
}

}  // namespace
