// Dates and times: validity, day numbers, parsing, day arithmetic, texts.
#include "common/date.h"
#include "common/we.h"
#include "tests/support/kxtest.h"

#include <gtest/gtest.h>

#include <stdio.h>

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

#undef TXT
#undef NUM

}  // namespace
