// Dialog templates in memory: the bytes as the platform reads them, and the two lookup tables.
#include "toolkit/dres.h"

#include "tests/support/kxtest.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

namespace {

uint16_t word_at(const uint8_t *p, size_t at) { return (uint16_t)(p[at] | (p[at + 1] << 8)); }
uint32_t dword_at(const uint8_t *p, size_t at) {
  return (uint32_t)word_at(p, at) | ((uint32_t)word_at(p, at + 2) << 16);
}

// Reads a terminated UTF-16 string at *at and moves past it.
std::wstring string_at(const uint8_t *p, size_t *at) {
  std::wstring s;
  for (;;) {
    uint16_t c = word_at(p, *at);
    *at += 2;
    if (!c) return s;
    s.push_back((wchar_t)c);
  }
}

// Every header form, each followed by items whose texts have odd and even lengths, so that
// every padding (0 and 2 bytes) occurs.
TEST(Dres, HeaderAndItemsFieldByField) {
  const struct {
    const char *title, *font;
    std::wstring wide_title;
  } headers[] = {
      /* 0 */ {"Instalace", "MS Sans Serif", L"Instalace"},
      /* 1 */ {"Přerušit instalaci ?", "Tahoma", L"P\u0159eru\u0161it instalaci ?"},
      /* 2 */ {"", nullptr, L""},
      /* 3 */ {nullptr, "MS Sans Serif", L""},
  };
  const struct {
    uint16_t atom;
    const char *text;
    int32_t id;
    std::wstring wide;
  } items[] = {
      {DRES_BUTTON, "&Ano", 1, L"&Ano"},  {DRES_EDIT, "", 0x12345, L""}, {DRES_STATIC, "Vlož DISK1", 100, L"Vlo\u017e DISK1"},
      {DRES_LISTBOX, "x", 7, L"x"},       {DRES_SCROLLBAR, "ab", 8, L"ab"}, {DRES_COMBOBOX, "abc", 9, L"abc"},
  };
  for (size_t i = 0; i < KX_COUNT(headers); i++) {
    const auto &h = headers[i];
    SCOPED_TRACE(testing::Message() << "header " << i);
    DialogTemplate *t = dres_create(h.title, WS_POPUP | WS_CAPTION | DS_SETFONT, -3, 4, 200, 150, h.font, 9);
    ASSERT_NE(nullptr, t);
    int16_t y = 0;
    for (const auto &r : items) ASSERT_EQ(1, dres_add(t, r.atom, r.text, r.id, WS_TABSTOP, 1, y++, 30, 12));
    const uint8_t *p = (const uint8_t *)dres_bytes(t);
    uint32_t style = dword_at(p, 0);
    EXPECT_EQ(h.font ? (uint32_t)DS_SETFONT : 0u, style & DS_SETFONT) << std::hex << style;
    EXPECT_EQ((uint32_t)(WS_POPUP | WS_CAPTION), style & ~(uint32_t)DS_SETFONT);
    EXPECT_EQ(0u, dword_at(p, 4));  // extended style
    // items, x, y, cx, cy, menu, class
    const uint16_t words[] = {6, (uint16_t)-3, 4, 200, 150, 0, 0};
    for (size_t w = 0; w < 7; w++) EXPECT_EQ(words[w], word_at(p, 8 + 2 * w)) << "at " << 8 + 2 * w;
    size_t at = 22;
    EXPECT_EQ(h.wide_title, string_at(p, &at));
    if (h.font) {
      EXPECT_EQ(9, word_at(p, at));
      at += 2;
      std::string font(h.font);
      EXPECT_EQ(std::wstring(font.begin(), font.end()), string_at(p, &at));
    }
    y = 0;
    for (const auto &r : items) {
      SCOPED_TRACE(testing::Message() << "item " << r.text);
      for (; at % 4; at++) EXPECT_EQ(0, p[at]) << "padding at " << at;
      EXPECT_EQ((uint32_t)(WS_TABSTOP | WS_CHILD | WS_VISIBLE), dword_at(p, at));
      EXPECT_EQ(0u, dword_at(p, at + 4));
      // x, y, cx, cy, id (low word), class atom
      const uint16_t item_words[] = {1, (uint16_t)y++, 30, 12, (uint16_t)r.id, 0xFFFF, r.atom};
      for (size_t w = 0; w < 7; w++) EXPECT_EQ(item_words[w], word_at(p, at + 8 + 2 * w)) << "at +" << 8 + 2 * w;
      at += 22;
      EXPECT_EQ(r.wide, string_at(p, &at));
      EXPECT_EQ(0, word_at(p, at));  // no creation data
      at += 2;
    }
    EXPECT_EQ((int32_t)at, dres_size(t));
    dres_destroy(&t);
    EXPECT_EQ(nullptr, t);
  }
}

TEST(Dres, LongTextsGrowTheTemplate) {
  DialogTemplate *t = dres_create("t", 0, 0, 0, 10, 10, nullptr, 0);
  ASSERT_NE(nullptr, t);
  for (size_t n : {1023u, 1024u, 1025u, 5000u}) {
    std::string text = kxtest::pattern_text(n);
    int32_t before = dres_size(t);
    ASSERT_EQ(1, dres_add(t, DRES_STATIC, text.c_str(), 1, 0, 0, 0, 1, 1));
    int32_t padded = (before + 3) & ~3;
    EXPECT_EQ(padded + 22 + 2 * (int32_t)(n + 1) + 2, dres_size(t)) << "n=" << n;
    const uint8_t *p = (const uint8_t *)dres_bytes(t);
    size_t at = (size_t)padded + 22;
    std::wstring wide = string_at(p, &at);
    ASSERT_EQ(n, wide.size());
    EXPECT_EQ((wchar_t)text[n - 1], wide[n - 1]);
  }
  dres_destroy(&t);
}

TEST(Dres, TablesByNumberOnePerKind) {
  kxtest::BoxRecorder boxes;
  DialogTemplate *a = dres_create("A", 0, 0, 0, 10, 10, nullptr, 0);
  DialogTemplate *b = dres_create("B", 0, 0, 0, 10, 10, nullptr, 0);
  ASSERT_EQ(1, dres_register(31, a, 0));
  ASSERT_EQ(1, dres_register(31, b, 1));
  EXPECT_EQ(dres_bytes(a), dres_find_modal(31));
  EXPECT_EQ(dres_bytes(b), dres_find_modeless(31));
  EXPECT_EQ(nullptr, dres_find_modal(32));
  EXPECT_EQ(nullptr, dres_find_modeless(32));
  ASSERT_EQ(1, dres_register(31, b, 0));  // again: the new template
  EXPECT_EQ(dres_bytes(b), dres_find_modal(31));
  EXPECT_EQ(0u, boxes.count());

  EXPECT_EQ(0, dres_register(33, nullptr, 0));
  EXPECT_EQ(0, dres_add(nullptr, DRES_BUTTON, "x", 1, 0, 0, 0, 1, 1));
  ASSERT_EQ(2u, boxes.count()) << boxes.dump();
  for (const kxtest::Box &box : boxes.boxes()) EXPECT_GT(kxtest::internal_error_line(box, "dres"), 0);

  dres_destroy(&b);
  EXPECT_EQ(nullptr, dres_find_modal(31));
  EXPECT_EQ(nullptr, dres_find_modeless(31));
  dres_destroy(&a);
  dres_destroy(&a);  // null again: nothing
}

}  // namespace
