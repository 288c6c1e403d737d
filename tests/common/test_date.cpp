// Dates, times and durations: validity, day numbers, parsing, arithmetic, texts, stored forms.
#include "common/date.h"
#include "common/file.h"
#include "common/we.h"
#include "tests/support/kxtest.h"

#include <gtest/gtest.h>

#include <stdio.h>
#include <stdlib.h>

#include <string>

using kxtest::BoxRecorder;

namespace {

// "d.m.y" as a date, stored unchecked.
Date date_of(const char *text) {
  int d = 0, m = 0, y = 0;
  Date date;
  sscanf(text, "%d.%d.%d", &d, &m, &y);
  date_set(&date, (int16_t)d, (int16_t)m, (int16_t)y);
  return date;
}

Time mkt(int h, int m, int s, int hs) {
  Time t;
  t.hundredths = (int16_t)hs;
  time_set(&t, (int16_t)h, (int16_t)m, (int16_t)s);
  return t;
}

std::string join(std::initializer_list<int> fields, char separator) {
  std::string s;
  for (int f : fields) s += (s.empty() ? "" : std::string(1, separator)) + std::to_string(f);
  return s;
}
std::string show(const Date &d) { return join({d.day, d.month, d.year}, '.'); }
std::string show(const Time &t) { return join({t.hours, t.minutes, t.seconds, t.hundredths}, ':'); }
std::string show(const Duration &d) { return join({d.days, d.hours, d.minutes, d.seconds, d.hundredths}, ' '); }

// The one box must be a fault report of module date under the given title.
void expect_fault(const BoxRecorder &rec, const char *title, int row) {
  ASSERT_EQ(1u, rec.count()) << "row " << row << ": " << rec.dump();
  EXPECT_EQ(std::string(title), rec.boxes()[0].title) << "row " << row;
  EXPECT_EQ(0u, rec.boxes()[0].text.find("Chyba v souboru date ")) << "row " << row << ": " << rec.boxes()[0].text;
}

TEST(Date, ValidityDayNumbersAndDayNames) {
  // number -1: not called (the 16-bit count wraps); fault: date_number reports it; names null:
  // not checked. Names never report.
  struct Row { int n; const char *date; int valid, number, fault; const char *cz, *en; } rows[] = {
      {1, "1.1.1992", 0, 0, 0, "středa", "Wed"},         {2, "29.2.1992", 0, 59, 0, "sobota", "Sat"},
      {3, "31.12.1992", 0, 365, 0, "čtvrtek", "Thu"},    {4, "1.1.1993", 1, 366, 0, "pátek", "Fri"},
      {5, "29.2.1996", 1, 1520, 0, "čtvrtek", "Thu"},    {6, "5.3.1997", 1, 1890, 0, "středa", "Wed"},
      {7, "28.2.1997", 1, 1885, 0, "pátek", "Fri"},      {8, "30.4.1997", 1, 1946, 0, "středa", "Wed"},
      {9, "1.1.2000", 1, 2922, 0, "sobota", "Sat"},      {10, "29.2.2000", 1, 2981, 0, "úterý", "Tue"},
      {11, "17.9.2081", 1, 32767, 0, "středa", "Wed"},   {12, "1.1.2100", 1, -1, 0, "pátek", "Fri"},
      {13, "29.2.2100", 1, -1, 0, "pondělí", "Mon"},     {14, "31.12.32767", 1, -1, 0, nullptr, nullptr},
      {15, "29.2.1997", 0, 0, 1, "?den?", "?day?"},      {16, "31.4.1997", 0, 0, 1, "?den?", "?day?"},
      {17, "0.5.1997", 0, 0, 1, "?den?", "?day?"},       {18, "1.0.1997", 0, 0, 0, "?měsíc?", "?day?"},
      {19, "1.13.1997", 0, 0, 0, "?měsíc?", "?day?"},    {20, "1.1.1991", 0, 0, 1, "?rok?", "?year?"}};
  for (const Row &r : rows) {
    Date d = date_of(r.date);
    BoxRecorder rec;
    EXPECT_EQ(r.valid, date_valid(&d)) << "row " << r.n;
    if (r.cz) {
      EXPECT_STREQ(r.cz, date_day_name(&d)) << "row " << r.n;
      EXPECT_STREQ(r.en, date_day_name_en(&d)) << "row " << r.n;
    }
    EXPECT_EQ(0u, rec.count()) << "row " << r.n << ": " << rec.dump();
    if (r.number < 0) continue;
    EXPECT_EQ(r.number, date_number(&d)) << "row " << r.n;
    EXPECT_EQ(r.fault ? 1u : 0u, rec.count()) << "row " << r.n << ": " << rec.dump();
    if (rec.count()) expect_fault(rec, WE_TITLE_INTERNAL, r.n);
  }
}

TEST(Date, ParseTypedAndFromFileNames) {
  const auto P = date_parse, C = date_parse_compact;
  // "5.3." + blanks + "97", length characters: at most 100 are read, so the year goes when longer.
  auto pad = [](size_t length) { return "5.3." + std::string(length - 6, ' ') + "97"; };
  struct Row { int n; Flag (*parse)(Date *, const char *); std::string text; const char *want; } rows[] = {
      {1, P, "5.3.97", "5.3.1997"},             {2, P, "5. brezen 1997", "5.3.1997"},
      {3, P, "05,3,1997", "5.3.1997"},          {4, P, "5 Březen 97", "5.3.1997"},
      {5, P, "5.3.92", "5.3.2092"},             {6, P, "5.3.93", "5.3.1993"},
      {7, P, "5.3.x", "5.3.2000"},              {8, P, "5.3.-5", "5.3.1995"},
      {9, P, "5.3.+1997", "5.3.1997"},          {10, P, "1. cervenec 1997", "1.7.1997"},
      {11, P, "1. červen 1997", "1.6.1997"},    {12, P, "\t 12.PROSINEC2005 ", "12.12.2005"},
      {13, P, "5.Říjen.97", "5.10.1997"},       {14, P, "5.3.1997 10:30", "5.3.1997"},
      {15, P, "5. listopadu 1997", "5.11.2000"}, {16, P, "5. bre 1997", ""},
      {17, P, "1. July 1997", ""},              {18, P, "29.2.97", ""},
      {19, P, "5.3.", ""},                      {20, P, "x.3.1997", ""},
      {21, P, "5.3.67533", ""},                 {22, P, "", ""},
      {23, P, pad(100), "5.3.1997"},            {24, P, pad(101), "5.3.2009"},
      {25, P, pad(1024), ""},                   {26, C, "C:\\LOG\\150797.TXT", "15.7.1997"},
      {27, C, "150797", "15.7.1997"},           {28, C, "D:\\DATA\\050392", "5.3.2092"},
      {29, C, "010193", "1.1.1993"},            {30, C, "311297x", "31.12.1997"},
      {31, C, "C:\\LOG\\1507a7.TXT", ""},       {32, C, "C:\\150797\\X.TXT", ""},
      {33, C, "290297", ""},                    {34, C, "15079", ""},
      {35, C, "C:/LOG/150797", ""}};
  for (const Row &r : rows) {
    BoxRecorder rec;
    Date d = date_of("7.7.7777");
    EXPECT_EQ(*r.want ? 1 : 0, r.parse(&d, r.text.c_str())) << "row " << r.n << " '" << r.text << "'";
    EXPECT_EQ(*r.want ? r.want : "7.7.7777", show(d)) << "row " << r.n << " '" << r.text << "'";
    EXPECT_EQ(0u, rec.count()) << "row " << r.n << ": " << rec.dump();
  }
}

TEST(Date, AddDaysNextMonthCompareAndSpan) {
  struct Row { int n; const char *date; int count, ok; const char *want; } rows[] = {
      {1, "1.1.1996", 365, 1, "31.12.1996"},  {2, "1.1.1997", 365, 1, "1.1.1998"},
      {3, "28.2.1996", 1, 1, "29.2.1996"},    {4, "28.2.1997", 1, 1, "1.3.1997"},
      {5, "31.12.1997", 1, 1, "1.1.1998"},    {6, "5.3.1997", 0, 1, "5.3.1997"},
      {7, "5.3.1997", -1, 0, "5.3.1997"},     {8, "31.2.1997", 1, 0, "31.2.1997"},
      {9, "1.1.1993", 32767, 1, "18.9.2082"}, {10, "1.1.32767", 365, 0, "1.1.32767"}};
  for (const Row &r : rows) {
    Date d = date_of(r.date);
    EXPECT_EQ(r.ok, date_add_days(&d, (int16_t)r.count)) << "row " << r.n;
    EXPECT_EQ(r.want, show(d)) << "row " << r.n;
  }
  // Day by day from 1993 on: every step is valid, counts one and compares as later.
  Date d = date_of("1.1.1993"), before = d;
  for (int i = 0; i < 4000; i++, before = d) {
    ASSERT_EQ(1, date_add_days(&d, 1)) << show(before);
    ASSERT_EQ(1, date_valid(&d)) << show(d);
    ASSERT_EQ(date_number(&before) + 1, date_number(&d)) << show(d);
    ASSERT_EQ(2, date_span(&before, &d)) << show(d);
    ASSERT_EQ(-1, date_compare(&before, &d)) << show(d);
  }
  Date next[] = {date_of("31.1.1997"), date_of("15.12.1997"), date_of("1.13.1997")};
  for (Date &n : next) EXPECT_EQ(1, date_next_month(&n));
  EXPECT_EQ("31.2.1997 15.1.1998 1.1.1998", show(next[0]) + " " + show(next[1]) + " " + show(next[2]));
  Date a = date_of("31.12.1996"), b = date_of("1.1.1996");
  EXPECT_EQ(1, date_compare(&a, &b));
  EXPECT_EQ(-364, date_span(&a, &b));
  EXPECT_EQ(0, date_compare(&a, &a));
  EXPECT_EQ(1, date_span(&a, &a));
}

TEST(DateTime, AddMinutesCompareAndDurations) {
  struct Row { int n, h, m, add; const char *want; } rows[] = {
      {1, 10, 30, 45, "11:15:17:42"}, {2, 23, 59, 1, "0:0:17:42"}, {3, 10, 30, -45, "10:-15:17:42"},
      {4, 0, 10, -60, "-1:10:17:42"}, {5, 23, 30, 1500, "24:30:17:42"}, {6, 22, 59, 61, "0:0:17:42"}};
  for (const Row &r : rows) {
    Time t = mkt(r.h, r.m, 17, 42);
    EXPECT_EQ(1, time_add_minutes(&t, (int16_t)r.add)) << "row " << r.n;
    EXPECT_EQ(r.want, show(t)) << "row " << r.n;
  }
  Time a = mkt(9, 5, 30, 10), b = mkt(9, 5, 30, 99), c = mkt(9, 5, 31, 0), e = mkt(10, 0, 0, 0);
  EXPECT_EQ(0, time_compare(&a, &b)) << "hundredths do not count";
  EXPECT_EQ(-1, time_compare(&a, &c));
  EXPECT_EQ(1, time_compare(&e, &c));

  struct DRow { int n; Duration in; int ok; const char *want; } drows[] = {
      {1, {0, 23, 59, 59, 100}, 1, "1 0 0 0 0"}, {2, {0, 0, 0, 0, 32767}, 1, "0 0 5 27 67"},
      {3, {1, 25, 61, 61, 101}, 1, "2 2 2 2 1"}, {4, {0, 0, -1, 0, 0}, 0, "0 0 -1 0 0"},
      {5, {32767, 24, 0, 0, 0}, 0, "32767 24 0 0 0"}, {6, {3, 4, 5, 6, 7}, 1, "3 4 5 6 7"}};
  for (const DRow &r : drows) {
    Duration d = r.in;
    EXPECT_EQ(r.ok, duration_normalize(&d)) << "row " << r.n;
    EXPECT_EQ(r.want, show(d)) << "row " << r.n;
  }
}

TEST(DateText, FormsNamesAndTheirBuffers) {
  Date d = date_of("5.3.1997"), end = date_of("31.12.2005"), bad = date_of("5.13.1997");
  Time t = mkt(9, 5, 30, 42), late = mkt(23, 59, 0, 0);
  auto utc = [&](int16_t form) { return std::string(date_time_text_utc(form, &d, &t)); };
  auto mail = [&](const Date &date, int16_t offset) { return std::string(date_mail_text(&date, &t, offset)); };
  struct Row { int n; std::string got, want; } rows[] = {
      {1, date_text_long(&d), " 5. b\xF8" "ezen 1997"}, {2, date_text_long(&end), "31. prosinec 2005"},
      {3, date_text_long(&bad), " 5. ?měsíc? 1997"},   {4, date_text_dots(&d), " 5. 3.1997"},
      {5, date_text_short(&d), "050397"},              {6, date_text_short(&end), "311205"},
      {7, date_text_compact(&d), "05031997"},          {8, date_month_name(&d), "březen"},
      {9, date_month_name(&bad), "?měsíc?"},           {10, time_text(&t), "09:05.30"},
      {11, time_text(&late), "23:59.00"},              {12, date_time_text(&d, &t), " 5. březen 1997 09:05.30"},
      {13, date_time_text_dots(&d, &t), " 5. 3.1997 09:05.30"},   {14, utc(0), " 5. březen 1997 09:05.30 UTC"},
      {15, utc(1), " 5. 3.1997 09:05.30 UTC"},   {16, utc(2), " 5. březen 1997 UTC"},
      {17, utc(3), " 5. 3.1997 UTC"}, {18, utc(4), "09:05.30 UTC"}, {19, utc(5), " 5 Mar 09:05:30 UTC"},
      {20, mail(d, 60), "Wed, 5 Mar 1997 09:05:30 +0100"}, {21, mail(end, 330), "Sat, 31 Dec 2005 09:05:30 +0530"},
      {22, mail(d, -300), "Wed, 5 Mar 1997 09:05:30 -0500"}, {23, mail(d, -30), "Wed, 5 Mar 1997 09:05:30 -0030"},
      {24, mail(bad, 0), "?day?, 5 ??? 1997 09:05:30 +0000"}, {25, date_day_cz(0), "pondělí"},
      {26, date_day_cz(6), "neděle"}, {27, date_day_en(6), "Sun"}, {28, date_month_cz(0), "leden"},
      {29, date_month_cz(9), "říjen"}, {30, date_month_en(11), "Dec"}};
  for (const Row &r : rows) EXPECT_EQ(r.want, r.got) << "row " << r.n;

  // One buffer per routine: the next call of the same routine overwrites it, others do not.
  const char *first = date_text_long(&d), *dots = date_text_dots(&d), *second = date_text_long(&end);
  EXPECT_EQ(first, second);
  EXPECT_STREQ("31. prosinec 2005", first);
  EXPECT_STREQ(" 5. 3.1997", dots);
  const char *clock = time_text(&t);
  time_text(&late);
  EXPECT_STREQ("23:59.00", clock);
}

#define TXT(call) [] { return std::string(call); }
#define NUM(call) [] { return std::to_string(call); }

TEST(DateText, BadIndexesAndNullArgumentsAreReported) {
  static Date x = date_of("5.3.1997");
  static const Time t = mkt(9, 5, 30, 0);
  const char *S = WE_TITLE_SWITCH, *I = WE_TITLE_INTERNAL;
  struct Row { int n; std::string (*call)(); const char *want, *title; } rows[] = {
      {1, TXT(date_day_cz(7)), "???", S},        {2, TXT(date_day_cz(-1)), "???", S},
      {3, TXT(date_day_en(7)), "???", S},        {4, TXT(date_month_cz(12)), "???", S},
      {5, TXT(date_month_en(-1)), "???", S},     {6, TXT(date_month_en(32767)), "???", S},
      {7, TXT(date_time_text_utc(6, &x, &t)), "???", S},
      {8, [] { return std::to_string(date_parse(&x, nullptr)) + " " + show(x); }, "0 5.3.1997", I},
      {9, [] { return std::to_string(date_parse_compact(&x, nullptr)) + " " + show(x); }, "0 5.3.1997", I},
      {10, TXT(date_text_long(nullptr)), "???", I}, {11, TXT(date_day_name(nullptr)), "???", I},
      {12, TXT(time_text(nullptr)), "???", I},      {13, TXT(date_mail_text(&x, nullptr, 60)), "???", I},
      {14, NUM(date_valid(nullptr)), "0", I},       {15, NUM(date_compare(&x, nullptr)), "0", I},
      {16, NUM(date_write(&x, nullptr)), "0", I},   {17, NUM(date_today(nullptr)), "0", I},
      {18, NUM(duration_normalize(nullptr)), "0", I}};
  for (const Row &r : rows) {
    BoxRecorder rec;
    EXPECT_EQ(r.want, r.call()) << "row " << r.n;
    expect_fault(rec, r.title, r.n);
  }
}

#undef TXT
#undef NUM

TEST(DateStored, BytesAndReadingBack) {
  kxtest::ScratchDir dir;
  BoxRecorder rec;
  Date d = date_of("5.3.1997"), odd = date_of("-2.258.-1"), rd = date_of("1.1.2000"), rodd = rd;
  Time t = mkt(9, 5, 30, 42), rt = mkt(0, 0, 0, 0);
  FileObject *f = nullptr;
  ASSERT_EQ(1, file_create(&f, "STAMP.BIN"));
  ASSERT_EQ(1, file_open(f, 6));
  EXPECT_EQ(3, date_write(&d, f) + time_write(&t, f) + date_write(&odd, f));
  file_close(f, 0);
  // Day, month, year; hours, minutes, seconds, hundredths: 16 bits each, little-endian.
  EXPECT_EQ(std::string("\x05\0\x03\0\xCD\x07" "\x09\0\x05\0\x1E\0\x2A\0" "\xFE\xFF\x02\x01\xFF\xFF", 20),
            kxtest::read_bytes("STAMP.BIN"));
  ASSERT_EQ(1, file_open(f, 5));
  EXPECT_EQ(3, date_read(&rd, f) + time_read(&rt, f) + date_read(&rodd, f));
  EXPECT_EQ("5.3.1997 9:5:30:42 -2.258.-1", show(rd) + " " + show(rt) + " " + show(rodd));
  EXPECT_EQ(0u, rec.count()) << rec.dump();
  file_close(f, 0);
  // A stored date cut after two fields fails at the third and changes nothing; so does a time.
  ASSERT_TRUE(kxtest::write_bytes("STAMP.BIN", std::string("\x05\x00\x03\x00\xCD", 5)));
  rd = date_of("1.1.2000");
  ASSERT_EQ(1, file_open(f, 5));
  EXPECT_EQ(0, date_read(&rd, f));
  EXPECT_EQ(0, time_read(&rt, f));
  EXPECT_EQ("1.1.2000 9:5:30:42", show(rd) + " " + show(rt));
  EXPECT_EQ(2u, rec.count()) << rec.dump();
  file_destroy(&f);
}

TEST(DateClock, NowLocalAndUniversal) {
  Date today = date_new(), utc_day;
  Time now = time_new(), utc_time;
  Duration zero = duration_new();
  EXPECT_EQ(1, date_valid(&today)) << show(today);
  EXPECT_GE(today.year, 2024);
  EXPECT_TRUE(now.hours >= 0 && now.hours < 24 && now.minutes >= 0 && now.minutes < 60 && now.seconds >= 0 &&
              now.seconds < 61 && now.hundredths >= 0 && now.hundredths < 100) << show(now);
  EXPECT_EQ("0 0 0 0 0", show(zero));
  EXPECT_EQ(1, date_time_now_utc(&utc_day, &utc_time));
  // Local minus universal time is the zone offset (give or take a minute turning over).
  int local = date_number(&today) * 1440 + now.hours * 60 + now.minutes;
  int universal = date_number(&utc_day) * 1440 + utc_time.hours * 60 + utc_time.minutes;
  EXPECT_LE(abs(local - universal - date_zone_offset()), 1)
      << "local " << show(today) << " " << show(now) << ", universal " << show(utc_day) << " " << show(utc_time)
      << ", offset " << date_zone_offset();
}

}  // namespace
