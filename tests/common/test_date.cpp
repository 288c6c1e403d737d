// Dates, times and durations: validity, day numbers, parsing, arithmetic, texts, stored forms.
#include "common/date.h"
#include "common/file.h"
#include "tests/support/kxtest.h"
#include "win/we.h"

#include <gtest/gtest.h>

#include <stdlib.h>

#include <string>

using kxtest::BoxRecorder;

namespace {

Date mk(int d, int m, int y) {
  Date date;
  date_set(&date, (int16_t)d, (int16_t)m, (int16_t)y);
  return date;
}

Time mkt(int h, int m, int s, int hs) {
  Time t;
  t.hundredths = (int16_t)hs;
  time_set(&t, (int16_t)h, (int16_t)m, (int16_t)s);
  return t;
}

std::string show(const Date &d) {
  return std::to_string(d.day) + "." + std::to_string(d.month) + "." + std::to_string(d.year);
}

// The one box must be a fault report of module date under the given title.
void expect_fault(const BoxRecorder &rec, const char *title, int row) {
  ASSERT_EQ(1u, rec.count()) << "row " << row << ": " << rec.dump();
  EXPECT_EQ(std::string(title), rec.boxes()[0].title) << "row " << row;
  EXPECT_EQ(0u, rec.boxes()[0].text.find("Chyba v souboru date ")) << "row " << row << ": "
                                                                   << rec.boxes()[0].text;
}

TEST(Date, Validity) {
  struct Row { int n, d, m, y, valid; } rows[] = {
      {1, 29, 2, 1996, 1}, {2, 29, 2, 1997, 0}, {3, 1, 1, 1992, 0},  {4, 31, 12, 1992, 0},
      {5, 1, 1, 1993, 1},  {6, 30, 4, 1997, 1}, {7, 31, 4, 1997, 0}, {8, 0, 1, 1997, 0},
      {9, 1, 0, 1997, 0},  {10, 1, 13, 1997, 0}, {11, 32, 1, 1997, 0}, {12, 29, 2, 2100, 1},
      {13, 31, 12, 32767, 1}, {14, 28, 2, 1997, 1}, {15, 1, 1, -1, 0}};
  BoxRecorder rec;
  for (const Row &r : rows) {
    Date d = mk(r.d, r.m, r.y);
    EXPECT_EQ(r.valid, date_valid(&d)) << "row " << r.n << " " << show(d);
  }
  EXPECT_EQ(0u, rec.count()) << rec.dump();
}

TEST(Date, DayNumbersAndWeekdays) {
  // number -1: not checked (the 16-bit count has wrapped).
  struct Row { int n, d, m, y, number; const char *cz, *en; } rows[] = {
      {1, 1, 1, 1992, 0, "středa", "Wed"},       {2, 29, 2, 1992, 59, "sobota", "Sat"},
      {3, 1, 3, 1992, 60, "neděle", "Sun"},      {4, 31, 12, 1992, 365, "čtvrtek", "Thu"},
      {5, 1, 1, 1993, 366, "pátek", "Fri"},      {6, 1, 1, 1996, 1461, "pondělí", "Mon"},
      {7, 29, 2, 1996, 1520, "čtvrtek", "Thu"},  {8, 5, 3, 1997, 1890, "středa", "Wed"},
      {9, 1, 1, 2000, 2922, "sobota", "Sat"},    {10, 29, 2, 2000, 2981, "úterý", "Tue"},
      {11, 24, 12, 2023, 11680, "neděle", "Sun"}, {12, 17, 9, 2081, 32767, "středa", "Wed"},
      {13, 1, 1, 2100, -1, "pátek", "Fri"}};
  BoxRecorder rec;
  for (const Row &r : rows) {
    Date d = mk(r.d, r.m, r.y);
    if (r.number >= 0) {
      EXPECT_EQ(r.number, date_number(&d)) << "row " << r.n;
    }
    EXPECT_STREQ(r.cz, date_day_name(&d)) << "row " << r.n;
    EXPECT_STREQ(r.en, date_day_name_en(&d)) << "row " << r.n;
  }
  EXPECT_EQ(0u, rec.count()) << rec.dump();
}

TEST(Date, ImpossibleDatesHaveNoDayName) {
  struct Row { int n, d, m, y; const char *cz, *en; int number_fault; } rows[] = {
      {1, 1, 1, 1991, "?rok?", "?year?", 1}, {2, 1, 13, 1997, "?měsíc?", "?day?", 0},
      {3, 1, 0, 1997, "?měsíc?", "?day?", 0}, {4, 29, 2, 1997, "?den?", "?day?", 1},
      {5, 0, 5, 1997, "?den?", "?day?", 1},  {6, 31, 6, 1997, "?den?", "?day?", 1}};
  for (const Row &r : rows) {
    Date d = mk(r.d, r.m, r.y);
    BoxRecorder rec;
    EXPECT_STREQ(r.cz, date_day_name(&d)) << "row " << r.n;
    EXPECT_STREQ(r.en, date_day_name_en(&d)) << "row " << r.n;
    EXPECT_EQ(0u, rec.count()) << "row " << r.n << ": names report nothing";
    EXPECT_EQ(0, date_number(&d)) << "row " << r.n;
    if (r.number_fault)
      expect_fault(rec, WE_TITLE_INTERNAL, r.n);
    else
      EXPECT_EQ(0u, rec.count()) << "row " << r.n << ": " << rec.dump();
  }
}

TEST(Date, Parse) {
  struct Row { int n; const char *text; int ok, d, m, y; } rows[] = {
      {1, "5.3.97", 1, 5, 3, 1997},          {2, "5. brezen 1997", 1, 5, 3, 1997},
      {3, "05,3,1997", 1, 5, 3, 1997},       {4, "5 Březen 97", 1, 5, 3, 1997},
      {5, "5.3.92", 1, 5, 3, 2092},          {6, "5.3.x", 1, 5, 3, 2000},
      {7, "5. bre 1997", 0, 0, 0, 0},                 {8, "1. cervenec 1997", 1, 1, 7, 1997},
      {9, "1. červen 1997", 1, 1, 6, 1997},  {10, "\t 12.PROSINEC2005 ", 1, 12, 12, 2005},
      {11, "5.Říjen.97", 1, 5, 10, 1997},    {12, "1. July 1997", 0, 0, 0, 0},
      {13, "31.4.1997", 0, 0, 0, 0},                  {14, "5.3.", 0, 0, 0, 0},
      {15, "5.3", 0, 0, 0, 0},                        {16, "x.3.1997", 0, 0, 0, 0},
      {17, "5.3.-5", 1, 5, 3, 1995},         {18, "5.3.+1997", 1, 5, 3, 1997},
      {19, "5.3.93", 1, 5, 3, 1993},         {20, "1.1.1992", 0, 0, 0, 0},
      {21, "5.3.67533", 0, 0, 0, 0},                  {22, "", 0, 0, 0, 0},
      {23, "5 3 1997", 1, 5, 3, 1997},       {24, "29.2.96", 1, 29, 2, 1996},
      {25, "29.2.97", 0, 0, 0, 0},                    {26, "5.3.1997 10:30", 1, 5, 3, 1997},
      {27, "5. listopadu 1997", 1, 5, 11, 2000},          {28, "5.3.-", 1, 5, 3, 2000},
      {29, "5.3.999999999999", 0, 0, 0, 0}};
  for (const Row &r : rows) {
    BoxRecorder rec;
    Date d = mk(7, 7, 7777);
    EXPECT_EQ(r.ok, date_parse(&d, r.text)) << "row " << r.n << " '" << r.text << "' gave " << show(d);
    Date want = r.ok ? mk(r.d, r.m, r.y) : mk(7, 7, 7777);
    EXPECT_EQ(show(want), show(d)) << "row " << r.n << " '" << r.text << "'";
    EXPECT_EQ(0u, rec.count()) << "row " << r.n << ": " << rec.dump();
  }
}

TEST(Date, ParseReadsAtMost100Characters) {
  // "5.3." + blanks + "97": the year is cut off when the text is longer than 100.
  struct Row { int n; size_t length; int ok, y; } rows[] = {
      {1, 99, 1, 1997}, {2, 100, 1, 1997}, {3, 101, 1, 2009}, {4, 102, 0, 0},
      {5, 1023, 0, 0},  {6, 1024, 0, 0},   {7, 1025, 0, 0}};
  for (const Row &r : rows) {
    std::string text = "5.3." + std::string(r.length - 6, ' ') + "97";
    Date d = mk(7, 7, 7777);
    EXPECT_EQ(r.ok, date_parse(&d, text.c_str())) << "row " << r.n << " gave " << show(d);
    EXPECT_EQ(r.ok ? r.y : 7777, d.year) << "row " << r.n;
  }
}

TEST(Date, ParseCompact) {
  struct Row { int n; const char *text; int ok, d, m, y; } rows[] = {
      {1, "C:\\LOG\\150797.TXT", 1, 15, 7, 1997}, {2, "150797", 1, 15, 7, 1997},
      {3, "C:\\LOG\\1507a7.TXT", 0, 0, 0, 0},              {4, "1507a", 0, 0, 0, 0},
      {5, "C:\\150797\\X.TXT", 0, 0, 0, 0},                {6, "D:\\DATA\\050392", 1, 5, 3, 2092},
      {7, "290296", 1, 29, 2, 1996},              {8, "290297", 0, 0, 0, 0},
      {9, "311297x", 1, 31, 12, 1997},            {10, "15079", 0, 0, 0, 0},
      {11, "DIR\\", 0, 0, 0, 0},                           {12, "C:/LOG/150797", 0, 0, 0, 0},
      {13, "010193", 1, 1, 1, 1993},              {14, "311292", 1, 31, 12, 2092}};
  for (const Row &r : rows) {
    BoxRecorder rec;
    Date d = mk(7, 7, 7777);
    EXPECT_EQ(r.ok, date_parse_compact(&d, r.text)) << "row " << r.n << " '" << r.text << "'";
    EXPECT_EQ(show(r.ok ? mk(r.d, r.m, r.y) : mk(7, 7, 7777)), show(d)) << "row " << r.n;
    EXPECT_EQ(0u, rec.count()) << "row " << r.n << ": " << rec.dump();
  }
}

TEST(Date, AddDaysAndNextMonth) {
  struct Row { int n, d, m, y, count, ok, rd, rm, ry; } rows[] = {
      {1, 1, 1, 1996, 365, 1, 31, 12, 1996}, {2, 1, 1, 1997, 365, 1, 1, 1, 1998},
      {3, 28, 2, 1996, 1, 1, 29, 2, 1996},   {4, 28, 2, 1997, 1, 1, 1, 3, 1997},
      {5, 31, 12, 1997, 1, 1, 1, 1, 1998},   {6, 5, 3, 1997, 0, 1, 5, 3, 1997},
      {7, 5, 3, 1997, -1, 0, 5, 3, 1997},    {8, 31, 2, 1997, 1, 0, 31, 2, 1997},
      {9, 1, 1, 1993, 32767, 1, 18, 9, 2082}, {10, 1, 1, 32767, 365, 0, 1, 1, 32767}};
  for (const Row &r : rows) {
    Date d = mk(r.d, r.m, r.y);
    EXPECT_EQ(r.ok, date_add_days(&d, (int16_t)r.count)) << "row " << r.n;
    EXPECT_EQ(show(mk(r.rd, r.rm, r.ry)), show(d)) << "row " << r.n;
  }
  // Day by day from 1993 on: every step is valid, counts one and moves the weekday by one.
  Date d = mk(1, 1, 1993), before = d;
  for (int i = 0; i < 4000; i++) {
    ASSERT_EQ(1, date_add_days(&d, 1)) << show(before);
    ASSERT_EQ(1, date_valid(&d)) << show(d);
    ASSERT_EQ(date_number(&before) + 1, date_number(&d)) << show(d);
    ASSERT_EQ(2, date_span(&before, &d)) << show(d);
    ASSERT_EQ(-1, date_compare(&before, &d)) << show(d);
    before = d;
  }
  Date next[] = {mk(31, 1, 1997), mk(15, 12, 1997)};
  EXPECT_EQ(1, date_next_month(&next[0]));
  EXPECT_EQ("31.2.1997", show(next[0]));
  EXPECT_EQ(0, date_valid(&next[0]));
  EXPECT_EQ(1, date_next_month(&next[1]));
  EXPECT_EQ("15.1.1998", show(next[1]));
}

TEST(Date, CompareAndSpan) {
  struct Row { int n; Date a, b; int compare, span; } rows[] = {
      {1, mk(5, 3, 1997), mk(5, 3, 1997), 0, 1},      {2, mk(1, 1, 1996), mk(31, 12, 1996), -1, 366},
      {3, mk(31, 12, 1996), mk(1, 1, 1996), 1, -364}, {4, mk(30, 4, 1997), mk(1, 5, 1997), -1, 2},
      {5, mk(1, 12, 1997), mk(2, 1, 1998), -1, 33},   {6, mk(2, 1, 1998), mk(1, 12, 1997), 1, -31}};
  for (const Row &r : rows) {
    EXPECT_EQ(r.compare, date_compare(&r.a, &r.b)) << "row " << r.n;
    EXPECT_EQ(r.span, date_span(&r.a, &r.b)) << "row " << r.n;
  }
}

TEST(DateTime, AddMinutesCompareAndDurations) {
  struct Row { int n, h, m, add, rh, rm; } rows[] = {
      {1, 10, 30, 45, 11, 15}, {2, 23, 59, 1, 0, 0},     {3, 10, 0, 150, 12, 30},
      {4, 10, 30, -45, 10, -15}, {5, 0, 10, -60, -1, 10}, {6, 23, 30, 1500, 24, 30},
      {7, 22, 59, 61, 0, 0}};
  for (const Row &r : rows) {
    Time t = mkt(r.h, r.m, 17, 42);
    EXPECT_EQ(1, time_add_minutes(&t, (int16_t)r.add)) << "row " << r.n;
    EXPECT_EQ(r.rh, t.hours) << "row " << r.n;
    EXPECT_EQ(r.rm, t.minutes) << "row " << r.n;
    EXPECT_EQ(17, t.seconds) << "row " << r.n;
    EXPECT_EQ(42, t.hundredths) << "row " << r.n;
  }
  Time a = mkt(9, 5, 30, 10), b = mkt(9, 5, 30, 99), c = mkt(9, 5, 31, 0), e = mkt(10, 0, 0, 0);
  EXPECT_EQ(0, time_compare(&a, &b)) << "hundredths do not count";
  EXPECT_EQ(-1, time_compare(&a, &c));
  EXPECT_EQ(1, time_compare(&e, &c));

  struct DRow { int n; Duration in; int ok; Duration out; } drows[] = {
      {1, {0, 23, 59, 59, 100}, 1, {1, 0, 0, 0, 0}},
      {2, {0, 0, 0, 0, 32767}, 1, {0, 0, 5, 27, 67}},
      {3, {1, 25, 61, 61, 101}, 1, {2, 2, 2, 2, 1}},
      {4, {0, 0, -1, 0, 0}, 0, {0, 0, -1, 0, 0}},
      {5, {32767, 24, 0, 0, 0}, 0, {32767, 24, 0, 0, 0}},
      {6, {3, 4, 5, 6, 7}, 1, {3, 4, 5, 6, 7}}};
  for (const DRow &r : drows) {
    Duration d = r.in;
    EXPECT_EQ(r.ok, duration_normalize(&d)) << "row " << r.n;
    EXPECT_EQ(r.out.days, d.days) << "row " << r.n;
    EXPECT_EQ(r.out.hours, d.hours) << "row " << r.n;
    EXPECT_EQ(r.out.minutes, d.minutes) << "row " << r.n;
    EXPECT_EQ(r.out.seconds, d.seconds) << "row " << r.n;
    EXPECT_EQ(r.out.hundredths, d.hundredths) << "row " << r.n;
  }
}

TEST(DateText, FormsAndTheirBuffers) {
  Date d = mk(5, 3, 1997), end = mk(31, 12, 2005), bad = mk(5, 13, 1997);
  Time t = mkt(9, 5, 30, 42), late = mkt(23, 59, 0, 0);
  struct Row { int n; std::string got, want; } rows[] = {
      {1, date_text_long(&d), " 5. b\xF8" "ezen 1997"},
      {2, date_text_long(&end), "31. prosinec 2005"},
      {3, date_text_long(&bad), " 5. ?měsíc? 1997"},
      {4, date_text_dots(&d), " 5. 3.1997"},
      {5, date_text_short(&d), "050397"},
      {6, date_text_short(&end), "311205"},
      {7, date_text_compact(&d), "05031997"},
      {8, date_month_name(&d), "březen"},
      {9, date_month_name(&bad), "?měsíc?"},
      {10, time_text(&t), "09:05.30"},
      {11, time_text(&late), "23:59.00"},
      {12, date_time_text(&d, &t), " 5. březen 1997 09:05.30"},
      {13, date_time_text_dots(&d, &t), " 5. 3.1997 09:05.30"},
      {14, date_time_text_utc(DATE_UTC_LONG_TIME, &d, &t), " 5. březen 1997 09:05.30 UTC"},
      {15, date_time_text_utc(DATE_UTC_DOTS_TIME, &d, &t), " 5. 3.1997 09:05.30 UTC"},
      {16, date_time_text_utc(DATE_UTC_LONG, &d, &t), " 5. březen 1997 UTC"},
      {17, date_time_text_utc(DATE_UTC_DOTS, &d, &t), " 5. 3.1997 UTC"},
      {18, date_time_text_utc(DATE_UTC_TIME, &d, &t), "09:05.30 UTC"},
      {19, date_time_text_utc(DATE_UTC_DAY_TIME, &d, &t), " 5 Mar 09:05:30 UTC"},
      {20, date_mail_text(&d, &t, 60), "Wed, 5 Mar 1997 09:05:30 +0100"},
      {21, date_mail_text(&end, &t, 330), "Sat, 31 Dec 2005 09:05:30 +0530"},
      {22, date_mail_text(&d, &t, -300), "Wed, 5 Mar 1997 09:05:30 -0500"},
      {23, date_mail_text(&d, &t, -30), "Wed, 5 Mar 1997 09:05:30 -0030"},
      {24, date_mail_text(&bad, &t, 0), "?day?, 5 ??? 1997 09:05:30 +0000"}};
  for (const Row &r : rows) EXPECT_EQ(r.want, r.got) << "row " << r.n;

  // One buffer per routine: the next call of the same routine overwrites it, others do not.
  const char *first = date_text_long(&d);
  const char *dots = date_text_dots(&d);
  const char *second = date_text_long(&end);
  EXPECT_EQ(first, second);
  EXPECT_STREQ("31. prosinec 2005", first);
  EXPECT_STREQ(" 5. 3.1997", dots);
  const char *clock = time_text(&t);
  time_text(&late);
  EXPECT_STREQ("23:59.00", clock);
}

TEST(DateText, NameTablesAndBadIndexes) {
  EXPECT_STREQ("pond\xECl\xED", date_day_cz(0));
  EXPECT_STREQ("ned\xECle", date_day_cz(6));
  EXPECT_STREQ("Sun", date_day_en(6));
  EXPECT_STREQ("leden", date_month_cz(0));
  EXPECT_STREQ("\xF8\xEDjen", date_month_cz(9));
  EXPECT_STREQ("Dec", date_month_en(11));
  struct Row { int n; const char *(*name)(int16_t); int16_t index; } rows[] = {
      {1, date_day_cz, 7}, {2, date_day_cz, -1}, {3, date_day_en, 7},
      {4, date_month_cz, 12}, {5, date_month_en, -1}, {6, date_month_en, 32767}};
  for (const Row &r : rows) {
    BoxRecorder rec;
    EXPECT_STREQ("???", r.name(r.index)) << "row " << r.n;
    expect_fault(rec, WE_TITLE_SWITCH, r.n);
  }
  Date d = mk(5, 3, 1997);
  Time t = mkt(9, 5, 30, 0);
  BoxRecorder rec;
  EXPECT_STREQ("???", date_time_text_utc(6, &d, &t));
  expect_fault(rec, WE_TITLE_SWITCH, 7);
}

// Result of a parser given a null text, and the date it left.
std::string parse_null(Flag (*parse)(Date *, const char *)) {
  Date x = mk(5, 3, 1997);
  int result = parse(&x, nullptr);
  return std::to_string(result) + " " + show(x);
}

TEST(DateText, NullArgumentsAreInternalErrors) {
  struct Row { int n; std::string (*call)(); const char *want; } rows[] = {
      {1, [] { return parse_null(date_parse); }, "0 5.3.1997"},
      {2, [] { return parse_null(date_parse_compact); }, "0 5.3.1997"},
      {3, [] { return std::string(date_text_long(nullptr)); }, "???"},
      {4, [] { return std::string(date_day_name(nullptr)); }, "???"},
      {5, [] { return std::string(time_text(nullptr)); }, "???"},
      {6, [] { Date x = mk(5, 3, 1997); return std::string(date_mail_text(&x, nullptr, 60)); }, "???"},
      {7, [] { return std::to_string(date_valid(nullptr)); }, "0"},
      {8, [] { Date x = mk(5, 3, 1997); return std::to_string(date_compare(&x, nullptr)); }, "0"},
      {9, [] { Date x = mk(5, 3, 1997); return std::to_string(date_write(&x, nullptr)); }, "0"},
      {10, [] { return std::to_string(date_today(nullptr)); }, "0"},
      {11, [] { return std::to_string(duration_normalize(nullptr)); }, "0"}};
  for (const Row &r : rows) {
    BoxRecorder rec;
    EXPECT_EQ(r.want, r.call()) << "row " << r.n;
    expect_fault(rec, WE_TITLE_INTERNAL, r.n);
  }
}

TEST(DateStored, BytesAndReadingBack) {
  kxtest::ScratchDir dir;
  BoxRecorder rec;
  Date d = mk(5, 3, 1997), odd = mk(-2, 258, -1);
  Time t = mkt(9, 5, 30, 42);
  FileObject *f = nullptr;
  ASSERT_EQ(1, file_create(&f, "STAMP.BIN"));
  ASSERT_EQ(1, file_open(f, 6));
  EXPECT_EQ(1, date_write(&d, f));
  EXPECT_EQ(1, time_write(&t, f));
  EXPECT_EQ(1, date_write(&odd, f));
  file_close(f, 0);
  const unsigned char want[] = {5, 0, 3, 0, 0xCD, 0x07,                 // 5.3.1997
                                9, 0, 5, 0, 30, 0, 42, 0,               // 09:05:30.42
                                0xFE, 0xFF, 0x02, 0x01, 0xFF, 0xFF};    // -2, 258, -1
  std::string got = kxtest::read_bytes("STAMP.BIN");
  ASSERT_EQ(sizeof want, got.size());
  for (size_t i = 0; i < sizeof want; i++)
    EXPECT_EQ(want[i], (unsigned char)got[i]) << "byte " << i;

  ASSERT_EQ(1, file_open(f, 5));
  Date rd = mk(1, 1, 2000), rodd = rd;
  Time rt = mkt(0, 0, 0, 0);
  EXPECT_EQ(1, date_read(&rd, f));
  EXPECT_EQ(1, time_read(&rt, f));
  EXPECT_EQ(1, date_read(&rodd, f));
  EXPECT_EQ("5.3.1997", show(rd));
  EXPECT_EQ(std::string(time_text(&t)), time_text(&rt));
  EXPECT_EQ(42, rt.hundredths);
  EXPECT_EQ("-2.258.-1", show(rodd));
  EXPECT_EQ(0u, rec.count()) << rec.dump();
  // Past the end: the file layer reports, the date stays as it was.
  EXPECT_EQ(0, date_read(&rd, f));
  EXPECT_EQ("5.3.1997", show(rd));
  EXPECT_EQ(1u, rec.count()) << rec.dump();
  file_close(f, 0);

  // A stored date cut after two fields: fails at the third, nothing changes.
  ASSERT_TRUE(kxtest::write_bytes("STAMP.BIN", std::string("\x05\x00\x03\x00\xCD", 5)));
  rec.clear();
  ASSERT_EQ(1, file_open(f, 5));
  EXPECT_EQ(0, date_read(&rd, f));
  EXPECT_EQ(0, time_read(&rt, f));
  EXPECT_EQ("5.3.1997", show(rd));
  EXPECT_EQ(9, rt.hours);
  EXPECT_GE(rec.count(), 1u);
  file_close(f, 0);
  file_destroy(&f);
}

TEST(DateClock, NowLocalAndUniversal) {
  Date today = date_new(), utc_day;
  Time now = time_new(), utc_time;
  Duration zero = duration_new();
  EXPECT_EQ(1, date_valid(&today)) << show(today);
  EXPECT_GE(today.year, 2024);
  EXPECT_TRUE(now.hours >= 0 && now.hours < 24 && now.minutes >= 0 && now.minutes < 60 &&
              now.seconds >= 0 && now.seconds < 61 && now.hundredths >= 0 && now.hundredths < 100)
      << time_text(&now) << " ." << now.hundredths;
  EXPECT_TRUE(zero.days == 0 && zero.hours == 0 && zero.minutes == 0 && zero.seconds == 0 &&
              zero.hundredths == 0);
  EXPECT_EQ(1, date_time_now_utc(&utc_day, &utc_time));
  // Local minus universal time is the zone offset (give or take a minute turning over).
  int local = date_number(&today) * 1440 + now.hours * 60 + now.minutes;
  int universal = date_number(&utc_day) * 1440 + utc_time.hours * 60 + utc_time.minutes;
  int offset = date_zone_offset();
  EXPECT_LE(abs(local - universal - offset), 1)
      << "local " << date_text_dots(&today) << " " << time_text(&now) << ", universal "
      << show(utc_day) << " " << utc_time.hours << ":" << utc_time.minutes << ", offset " << offset;
}

}  // namespace
