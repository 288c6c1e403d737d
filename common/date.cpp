// date.cpp - calendar dates, times of day and durations (see date.h).
#include "common/date.h"

#include "common/cz.h"
#include "common/file.h"
#include "common/st.h"
#include "common/we.h"

#include <stdio.h>
#include <string.h>

#ifdef KX_WIN32
#include <windows.h>
#else
#include <sys/time.h>
#include <time.h>
#endif

// ---- Names ---------------------------------------------------------------------------------

static const char *const day_cz[7] = {"pondělí", "úterý",  "středa", "čtvrtek",
                                      "pátek",   "sobota", "neděle"};
static const char *const day_en[7] = {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};
// clang-format off
static const char *const month_cz[12] = {"leden", "únor", "březen", "duben",
                                         "květen", "červen", "červenec", "srpen",
                                         "září", "říjen", "listopad", "prosinec"};
// clang-format on
static const char *const month_en[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                         "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

static const int16_t month_days[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

static const char NO_NAME[] = "???";
static const char NO_YEAR_CZ[] = "?rok?";
static const char NO_MONTH_CZ[] = "?měsíc?";
static const char NO_DAY_CZ[] = "?den?";
static const char NO_YEAR_EN[] = "?year?";
static const char NO_DAY_EN[] = "?day?";

// Every text routine has its own buffer; the longest text (the mail header with every field at
// its 16-bit extreme) stays well below this.
enum { TEXT_SIZE = 96 };

static const char *name_of(const char *const *table, int16_t count, int16_t index, int16_t line) {
  if (index < 0 || index >= count) {
    SwitchError("date", line);
    return NO_NAME;
  }
  return table[index];
}

const char *date_day_cz(int16_t index) { return name_of(day_cz, 7, index, __LINE__); }
const char *date_day_en(int16_t index) { return name_of(day_en, 7, index, __LINE__); }
const char *date_month_cz(int16_t index) { return name_of(month_cz, 12, index, __LINE__); }
const char *date_month_en(int16_t index) { return name_of(month_en, 12, index, __LINE__); }

static bool leap_year(int32_t year) { return year % 4 == 0; }

int16_t date_month_days(int16_t month, int16_t year) {
  if (month < 1 || month > 12) return 0;
  if (month == 2 && leap_year(year)) return 29;
  return month_days[month];
}

// Month names with no report for a bad month, for the date texts.
static const char *month_name_cz(int16_t month) {
  return (month >= 1 && month <= 12) ? month_cz[month - 1] : NO_MONTH_CZ;
}

static const char *month_name_en(int16_t month) {
  return (month >= 1 && month <= 12) ? month_en[month - 1] : NO_NAME;
}

// ---- The clock -----------------------------------------------------------------------------

// One reading of the clock, local or universal.
struct ClockReading {
  int32_t year, month, day, hours, minutes, seconds, milliseconds;
};

static void read_clock(ClockReading *r, bool universal) {
#ifdef KX_WIN32
  SYSTEMTIME st;
  if (universal) GetSystemTime(&st);
  else GetLocalTime(&st);
  r->year = st.wYear;
  r->month = st.wMonth;
  r->day = st.wDay;
  r->hours = st.wHour;
  r->minutes = st.wMinute;
  r->seconds = st.wSecond;
  r->milliseconds = st.wMilliseconds;
#else
  struct timeval tv;
  gettimeofday(&tv, nullptr);
  time_t now = tv.tv_sec;
  struct tm tm;
  if (universal) gmtime_r(&now, &tm);
  else localtime_r(&now, &tm);
  r->year = tm.tm_year + 1900;
  r->month = tm.tm_mon + 1;
  r->day = tm.tm_mday;
  r->hours = tm.tm_hour;
  r->minutes = tm.tm_min;
  r->seconds = tm.tm_sec;
  r->milliseconds = (int32_t)(tv.tv_usec / 1000);
#endif
}

static void reading_to_date(const ClockReading *r, Date *date) {
  date->year = (int16_t)r->year;
  date->month = (int16_t)r->month;
  date->day = (int16_t)r->day;
}

static void reading_to_time(const ClockReading *r, Time *time) {
  time->hours = (int16_t)r->hours;
  time->minutes = (int16_t)r->minutes;
  time->seconds = (int16_t)r->seconds;
  time->hundredths = (int16_t)(r->milliseconds / 10);
}

int16_t date_zone_offset(void) {
#ifdef KX_WIN32
  TIME_ZONE_INFORMATION zone;
  DWORD kind = GetTimeZoneInformation(&zone);
  LONG bias = zone.Bias;
  if (kind == TIME_ZONE_ID_DAYLIGHT) bias += zone.DaylightBias;
  else if (kind == TIME_ZONE_ID_STANDARD) bias += zone.StandardBias;
  return (int16_t)-bias;
#else
  time_t now = time(nullptr);
  struct tm tm;
  localtime_r(&now, &tm);
  return (int16_t)(tm.tm_gmtoff / 60);
#endif
}

Flag date_time_now_utc(Date *date, Time *time) {
  if (!date || !time) {
    InternalError("date", __LINE__);
    return 0;
  }
  ClockReading r;
  read_clock(&r, true);
  reading_to_date(&r, date);
  reading_to_time(&r, time);
  return 1;
}

// ---- Construction --------------------------------------------------------------------------

Date date_new(void) {
  Date date;
  date_today(&date);
  return date;
}

Time time_new(void) {
  Time time;
  time_now(&time);
  return time;
}

Duration duration_new(void) {
  Duration duration;
  duration_clear(&duration);
  return duration;
}

// ---- Dates ---------------------------------------------------------------------------------

Flag date_today(Date *date) {
  if (!date) {
    InternalError("date", __LINE__);
    return 0;
  }
  ClockReading r;
  read_clock(&r, false);
  reading_to_date(&r, date);
  return 1;
}

Flag date_set(Date *date, int16_t day, int16_t month, int16_t year) {
  if (!date) {
    InternalError("date", __LINE__);
    return 0;
  }
  date->day = day;
  date->month = month;
  date->year = year;
  return 1;
}

// Day within its month: 1 to the month's days, 29 February in a leap year only.
static bool day_fits(int16_t day, int16_t month, int16_t year) {
  return day >= 1 && day <= date_month_days(month, year);
}

Flag date_valid(const Date *date) {
  if (!date) {
    InternalError("date", __LINE__);
    return 0;
  }
  if (date->year < 1993) return 0;
  if (date->month < 1 || date->month > 12) return 0;
  return day_fits(date->day, date->month, date->year) ? 1 : 0;
}

// Days from 1 January 1992 to the date, for a year from 1992 on, a month 1-12 and a day that
// fits its month; 32-bit, so that the day of the week is right for any year.
static int32_t day_count(const Date *date) {
  int32_t y = date->year - 1992;
  int32_t count = 365 * y + (y + 3) / 4;
  for (int16_t m = 1; m < date->month; m++) count += month_days[m];
  if (date->month > 2 && leap_year(date->year)) count++;
  return count + date->day - 1;
}

int16_t date_number(const Date *date) {
  if (!date) {
    InternalError("date", __LINE__);
    return 0;
  }
  if (date->year < 1992) {
    InternalError("date", __LINE__);
    return 0;
  }
  if (date->month < 1 || date->month > 12) return 0;
  if (!day_fits(date->day, date->month, date->year)) {
    InternalError("date", __LINE__);
    return 0;
  }
  return (int16_t)day_count(date);
}

const char *date_day_name(const Date *date) {
  if (!date) {
    InternalError("date", __LINE__);
    return NO_NAME;
  }
  if (date->year < 1992) return NO_YEAR_CZ;
  if (date->month < 1 || date->month > 12) return NO_MONTH_CZ;
  if (!day_fits(date->day, date->month, date->year)) return NO_DAY_CZ;
  return day_cz[(day_count(date) + 2) % 7];
}

const char *date_day_name_en(const Date *date) {
  if (!date) {
    InternalError("date", __LINE__);
    return NO_NAME;
  }
  if (date->year < 1992) return NO_YEAR_EN;
  if (date->month < 1 || date->month > 12) return NO_DAY_EN;
  if (!day_fits(date->day, date->month, date->year)) return NO_DAY_EN;
  return day_en[(day_count(date) + 2) % 7];
}

const char *date_month_name(const Date *date) {
  if (!date) {
    InternalError("date", __LINE__);
    return NO_NAME;
  }
  return month_name_cz(date->month);
}

const char *date_text_long(const Date *date) {
  static char text[TEXT_SIZE];
  if (!date) {
    InternalError("date", __LINE__);
    return NO_NAME;
  }
  snprintf(text, sizeof text, "%2d. %s %4d", date->day, month_name_cz(date->month), date->year);
  return text;
}

const char *date_text_dots(const Date *date) {
  static char text[TEXT_SIZE];
  if (!date) {
    InternalError("date", __LINE__);
    return NO_NAME;
  }
  snprintf(text, sizeof text, "%2d.%2d.%2d", date->day, date->month, date->year);
  return text;
}

const char *date_text_short(const Date *date) {
  static char text[TEXT_SIZE];
  if (!date) {
    InternalError("date", __LINE__);
    return NO_NAME;
  }
  snprintf(text, sizeof text, "%02d%02d%02d", date->day, date->month, date->year % 100);
  return text;
}

const char *date_text_compact(const Date *date) {
  static char text[TEXT_SIZE];
  if (!date) {
    InternalError("date", __LINE__);
    return NO_NAME;
  }
  snprintf(text, sizeof text, "%02d%02d%04d", date->day, date->month, date->year);
  return text;
}

// ---- Parsing -------------------------------------------------------------------------------

enum { PARSE_LIMIT = 100 };

static bool is_digit(char c) { return c >= '0' && c <= '9'; }

static bool is_white(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// One or two digits at *p; moves *p past them. False when *p is no digit.
static bool take_number(char **p, int16_t *value) {
  if (!is_digit(**p)) return false;
  int16_t v = (int16_t)(*(*p)++ - '0');
  if (is_digit(**p)) v = (int16_t)(v * 10 + (*(*p)++ - '0'));
  *value = v;
  return true;
}

// A full Czech month name, diacritics and case ignored, at the start of p (already stripped
// and lower-cased). The names are tried from December back to January, so that "cervenec" is
// found before "cerven". Returns the month 1-12 and its name's length, or 0.
static int16_t take_month_name(const char *p, size_t *length) {
  for (int16_t m = 11; m >= 0; m--) {
    char name[16];
    snprintf(name, sizeof name, "%s", month_cz[m]);
    cz_strip(name);
    cz_lower(name);
    size_t n = strlen(name);
    if (strncmp(p, name, n) == 0) {
      *length = n;
      return (int16_t)(m + 1);
    }
  }
  return 0;
}

// The year as a signed decimal number: white space, one sign, digits up to the first
// non-digit (none: 0). Years below 100 are taken into 1993-2092. False when it does not fit.
static bool read_year(const char *p, int16_t *year) {
  while (is_white(*p)) p++;
  bool negative = false;
  if (*p == '+' || *p == '-') negative = *p++ == '-';
  int32_t v = 0;
  for (; is_digit(*p); p++) {
    v = v * 10 + (*p - '0');
    if (v > 32768) return false;
  }
  if (negative) v = -v;
  if (v > 32767) return false;
  if (v < 100) v += v < 93 ? 2000 : 1900;
  *year = (int16_t)v;
  return true;
}

static void skip_separator(char **p) {
  if (**p == '.' || **p == ',') (*p)++;
}

Flag date_parse(Date *date, const char *text) {
  if (!date || !text) {
    InternalError("date", __LINE__);
    return 0;
  }
  char copy[PARSE_LIMIT + 1];
  snprintf(copy, sizeof copy, "%s", text);
  cz_strip(copy);

  Date result;
  char *p = copy;
  st_trim(p);
  if (!take_number(&p, &result.day)) return 0;
  skip_separator(&p);

  st_trim(p);
  if (!take_number(&p, &result.month)) {
    cz_lower(p);
    size_t length = 0;
    result.month = take_month_name(p, &length);
    if (result.month == 0) return 0;
    p += length;
  }
  skip_separator(&p);

  st_trim(p);
  if (*p == '\0') return 0;
  if (!read_year(p, &result.year)) return 0;

  if (!date_valid(&result)) return 0;
  *date = result;
  return 1;
}

Flag date_parse_compact(Date *date, const char *text) {
  if (!date || !text) {
    InternalError("date", __LINE__);
    return 0;
  }
  const char *name = strrchr(text, '\\');
  name = name ? name + 1 : text;
  for (int i = 0; i < 6; i++)
    if (!is_digit(name[i])) return 0;
  int16_t yy = (int16_t)((name[4] - '0') * 10 + (name[5] - '0'));
  Date result;
  result.day = (int16_t)((name[0] - '0') * 10 + (name[1] - '0'));
  result.month = (int16_t)((name[2] - '0') * 10 + (name[3] - '0'));
  result.year = (int16_t)(yy < 93 ? 2000 + yy : 1900 + yy);
  if (!date_valid(&result)) return 0;
  *date = result;
  return 1;
}

// ---- Arithmetic ----------------------------------------------------------------------------

Flag date_add_days(Date *date, int16_t count) {
  if (!date) {
    InternalError("date", __LINE__);
    return 0;
  }
  if (!date_valid(date) || count < 0) return 0;
  if (count == 0) return 1;
  int32_t day = date->day + count;
  int32_t month = date->month;
  int32_t year = date->year;
  for (;;) {
    int32_t days = (month == 2 && leap_year(year)) ? 29 : month_days[month];
    if (day <= days) break;
    day -= days;
    if (++month > 12) {
      month = 1;
      year++;
    }
  }
  if (year > 32767) return 0;
  date->day = (int16_t)day;
  date->month = (int16_t)month;
  date->year = (int16_t)year;
  return 1;
}

Flag date_next_month(Date *date) {
  if (!date) {
    InternalError("date", __LINE__);
    return 0;
  }
  date->month++;
  if (date->month > 12) {
    date->month = 1;
    date->year++;
  }
  return 1;
}

// -1 when b comes after a, 1 when before, 0 when equal, field by field.
static int16_t compare_fields(const int16_t *a, const int16_t *b, int count) {
  for (int i = 0; i < count; i++) {
    if (a[i] < b[i]) return -1;
    if (a[i] > b[i]) return 1;
  }
  return 0;
}

int16_t date_compare(const Date *a, const Date *b) {
  if (!a || !b) {
    InternalError("date", __LINE__);
    return 0;
  }
  const int16_t fa[3] = {a->year, a->month, a->day};
  const int16_t fb[3] = {b->year, b->month, b->day};
  return compare_fields(fa, fb, 3);
}

int16_t date_span(const Date *a, const Date *b) {
  if (!a || !b) {
    InternalError("date", __LINE__);
    return 0;
  }
  return (int16_t)(date_number(b) - date_number(a) + 1);
}

// ---- Stored forms --------------------------------------------------------------------------

// Each field as two bytes, low byte first, one file_write per field; stops at the first that
// fails.
static Flag write_fields(FileObject *file, const int16_t *fields, int count) {
  for (int i = 0; i < count; i++) {
    uint16_t v = (uint16_t)fields[i];
    unsigned char bytes[2] = {(unsigned char)(v & 0xFF), (unsigned char)(v >> 8)};
    if (!file_write(file, bytes, 2)) return 0;
  }
  return 1;
}

static Flag read_fields(FileObject *file, int16_t *fields, int count) {
  for (int i = 0; i < count; i++) {
    unsigned char bytes[2];
    if (!file_read(file, bytes, 2)) return 0;
    fields[i] = (int16_t)(uint16_t)(bytes[0] | (bytes[1] << 8));
  }
  return 1;
}

Flag date_write(const Date *date, FileObject *file) {
  if (!date || !file) {
    InternalError("date", __LINE__);
    return 0;
  }
  const int16_t fields[3] = {date->day, date->month, date->year};
  return write_fields(file, fields, 3);
}

Flag date_read(Date *date, FileObject *file) {
  if (!date || !file) {
    InternalError("date", __LINE__);
    return 0;
  }
  int16_t fields[3];
  if (!read_fields(file, fields, 3)) return 0;
  date->day = fields[0];
  date->month = fields[1];
  date->year = fields[2];
  return 1;
}

Flag time_write(const Time *time, FileObject *file) {
  if (!time || !file) {
    InternalError("date", __LINE__);
    return 0;
  }
  const int16_t fields[4] = {time->hours, time->minutes, time->seconds, time->hundredths};
  return write_fields(file, fields, 4);
}

Flag time_read(Time *time, FileObject *file) {
  if (!time || !file) {
    InternalError("date", __LINE__);
    return 0;
  }
  int16_t fields[4];
  if (!read_fields(file, fields, 4)) return 0;
  time->hours = fields[0];
  time->minutes = fields[1];
  time->seconds = fields[2];
  time->hundredths = fields[3];
  return 1;
}

// ---- Times ---------------------------------------------------------------------------------

Flag time_now(Time *time) {
  if (!time) {
    InternalError("date", __LINE__);
    return 0;
  }
  ClockReading r;
  read_clock(&r, false);
  reading_to_time(&r, time);
  return 1;
}

Flag time_set(Time *time, int16_t hours, int16_t minutes, int16_t seconds) {
  if (!time) {
    InternalError("date", __LINE__);
    return 0;
  }
  time->hours = hours;
  time->minutes = minutes;
  time->seconds = seconds;
  return 1;
}

const char *time_text(const Time *time) {
  static char text[TEXT_SIZE];
  if (!time) {
    InternalError("date", __LINE__);
    return NO_NAME;
  }
  snprintf(text, sizeof text, "%02d:%02d.%02d", time->hours, time->minutes, time->seconds);
  return text;
}

Flag time_add_minutes(Time *time, int16_t minutes) {
  if (!time) {
    InternalError("date", __LINE__);
    return 0;
  }
  int32_t h = time->hours + minutes / 60;
  int32_t m = time->minutes + minutes % 60;
  if (m > 59) {
    m -= 60;
    h++;
  }
  if (h >= 24) h -= 24;
  time->hours = (int16_t)h;
  time->minutes = (int16_t)m;
  return 1;
}

int16_t time_compare(const Time *a, const Time *b) {
  if (!a || !b) {
    InternalError("date", __LINE__);
    return 0;
  }
  const int16_t fa[3] = {a->hours, a->minutes, a->seconds};
  const int16_t fb[3] = {b->hours, b->minutes, b->seconds};
  return compare_fields(fa, fb, 3);
}

// ---- Durations -----------------------------------------------------------------------------

Flag duration_clear(Duration *duration) {
  if (!duration) {
    InternalError("date", __LINE__);
    return 0;
  }
  duration->days = 0;
  duration->hours = 0;
  duration->minutes = 0;
  duration->seconds = 0;
  duration->hundredths = 0;
  return 1;
}

Flag duration_normalize(Duration *duration) {
  if (!duration) {
    InternalError("date", __LINE__);
    return 0;
  }
  Duration *d = duration;
  if (d->days < 0 || d->hours < 0 || d->minutes < 0 || d->seconds < 0 || d->hundredths < 0)
    return 0;
  // Division gives what subtracting one unit at a time would give; 32-bit so that a full
  // field plus its carry cannot overflow.
  int32_t hundredths = d->hundredths;
  int32_t seconds = d->seconds + hundredths / 100;
  int32_t minutes = d->minutes + seconds / 60;
  int32_t hours = d->hours + minutes / 60;
  int32_t days = d->days + hours / 24;
  if (days > 32767) return 0;
  d->hundredths = (int16_t)(hundredths % 100);
  d->seconds = (int16_t)(seconds % 60);
  d->minutes = (int16_t)(minutes % 60);
  d->hours = (int16_t)(hours % 24);
  d->days = (int16_t)days;
  return 1;
}

// ---- Date and time together ----------------------------------------------------------------

const char *date_time_text(const Date *date, const Time *time) {
  static char text[TEXT_SIZE];
  if (!date || !time) {
    InternalError("date", __LINE__);
    return NO_NAME;
  }
  snprintf(text, sizeof text, "%2d. %s %4d %02d:%02d.%02d", date->day, month_name_cz(date->month),
           date->year, time->hours, time->minutes, time->seconds);
  return text;
}

const char *date_time_text_dots(const Date *date, const Time *time) {
  static char text[TEXT_SIZE];
  if (!date || !time) {
    InternalError("date", __LINE__);
    return NO_NAME;
  }
  snprintf(text, sizeof text, "%2d.%2d.%4d %02d:%02d.%02d", date->day, date->month, date->year,
           time->hours, time->minutes, time->seconds);
  return text;
}

const char *date_time_text_utc(int16_t form, const Date *date, const Time *time) {
  static char text[TEXT_SIZE];
  if (!date || !time) {
    InternalError("date", __LINE__);
    return NO_NAME;
  }
  const Date *d = date;
  const Time *t = time;
  switch (form) {
    case DATE_UTC_LONG_TIME:
      snprintf(text, sizeof text, "%2d. %s %4d %02d:%02d.%02d UTC", d->day, month_name_cz(d->month),
               d->year, t->hours, t->minutes, t->seconds);
      break;
    case DATE_UTC_DOTS_TIME:
      snprintf(text, sizeof text, "%2d.%2d.%4d %02d:%02d.%02d UTC", d->day, d->month, d->year,
               t->hours, t->minutes, t->seconds);
      break;
    case DATE_UTC_LONG:
      snprintf(text, sizeof text, "%2d. %s %4d UTC", d->day, month_name_cz(d->month), d->year);
      break;
    case DATE_UTC_DOTS:
      snprintf(text, sizeof text, "%2d.%2d.%4d UTC", d->day, d->month, d->year);
      break;
    case DATE_UTC_TIME:
      snprintf(text, sizeof text, "%02d:%02d.%02d UTC", t->hours, t->minutes, t->seconds);
      break;
    case DATE_UTC_DAY_TIME:
      snprintf(text, sizeof text, "%2d %s %02d:%02d:%02d UTC", d->day, month_name_en(d->month),
               t->hours, t->minutes, t->seconds);
      break;
    default: SwitchError("date", __LINE__); return NO_NAME;
  }
  return text;
}

const char *date_mail_text(const Date *date, const Time *time, int16_t offset) {
  static char text[TEXT_SIZE];
  if (!date || !time) {
    InternalError("date", __LINE__);
    return NO_NAME;
  }
  const char *day = date_day_name_en(date);
  const char *month = month_name_en(date->month);
  if (offset >= 0)
    snprintf(text, sizeof text, "%s, %d %s %d %02d:%02d:%02d +%02d%02d", day, date->day, month,
             date->year, time->hours, time->minutes, time->seconds, offset / 60, offset % 60);
  else
    snprintf(text, sizeof text, "%s, %d %s %d %02d:%02d:%02d -%02d%02d", day, date->day, month,
             date->year, time->hours, time->minutes, time->seconds, -(offset / 60), -(offset % 60));
  return text;
}
