// date.h - calendar dates, times of day and durations.
//
// Small value types with Czech and English names of days and months, fixed text forms,
// parsing of dates typed by the user or taken from file names, validation and simple
// arithmetic. All texts are Windows-1250.
//
// Calendar arithmetic counts days from 1 January 1992 (day 0, a Wednesday). The system's
// valid dates begin in 1993: every date of 1992 is invalid although day numbers count from it.
// A year is a leap year when it is divisible by 4 (there is no century rule).
//
// Text forms: every routine that returns a text builds it in a static buffer of its own; the
// next call of the same routine overwrites it (calls of other routines do not). Copy the text
// if it must live longer. There is one thread; nothing here is locked.
//
// Programming errors (a null argument, a table index out of range, the day number of an
// impossible date) are reported with InternalError or SwitchError of module "date" (common/we.h);
// the call then returns its documented fallback. Parsing and validation fail silently, by
// their result only, and leave the target unchanged.
#ifndef KX_DATE_H
#define KX_DATE_H

#include "common/co.h"

struct FileObject;

// ---- Types ---------------------------------------------------------------------------------
// Plain structures of signed 16-bit fields, in this order.

struct Date {
  int16_t year;   // four digits
  int16_t day;    // day of month, 1-31
  int16_t month;  // 1-12
};

struct Time {
  int16_t hundredths;
  int16_t seconds;
  int16_t minutes;
  int16_t hours;
};

struct Duration {
  int16_t days;
  int16_t hours;
  int16_t minutes;
  int16_t seconds;
  int16_t hundredths;
};

Date date_new(void);
// A new date: today's local date.

Time time_new(void);
// A new time: the current local time, hundredths = milliseconds / 10.

Duration duration_new(void);
// A new duration: all fields zero.

// ---- Names ---------------------------------------------------------------------------------
// Days are indexed from Monday (0) to Sunday (6), months from January (0) to December (11).

const char *date_day_cz(int16_t index);    // "pondělí" ... "neděle"
const char *date_day_en(int16_t index);    // "Mon" ... "Sun"
const char *date_month_cz(int16_t index);  // "leden" ... "prosinec"
const char *date_month_en(int16_t index);  // "Jan" ... "Dec"
// The name of the given index. An index out of range raises SwitchError and returns "???".
// The names are constant texts, not static buffers.

int16_t date_month_days(int16_t month, int16_t year);
// Days of month 1-12 in the given year: 31, 28 (29 in a leap year), 31, 30, ... 31.
// A month outside 1-12 returns 0 (no report).

// ---- Dates ---------------------------------------------------------------------------------

Flag date_today(Date *date);
// Sets the date to today's local date. Returns 1; a null date is an internal error (0).

Flag date_set(Date *date, int16_t day, int16_t month, int16_t year);
// Stores the three values as they are, without checking them. Returns 1; a null date is an
// internal error (0).

Flag date_valid(const Date *date);
// 1 when the year is 1993 or later, the month 1-12 and the day 1 to the days of that month
// (1-29 in February of a leap year); else 0. A null date is an internal error (0).

const char *date_text_long(const Date *date);
// "%2d." of the day, one blank, the Czech month name, " %4d" of the year:
// " 5. březen 1997". A month outside 1-12 gives "?měsíc?" in place of the name.

const char *date_text_dots(const Date *date);
// "%2d.%2d.%2d" of day, month and the full year: " 5. 3.1997".

const char *date_text_short(const Date *date);
// "%02d%02d%02d" of day, month and the year modulo 100: "050397".

const char *date_text_compact(const Date *date);
// "%02d%02d%04d" of day, month and year: "05031997".

const char *date_day_name(const Date *date);
// The Czech name of the day of the week ("středa" for 1 January 1992). Instead of a name:
// "?rok?" for a year before 1992, "?měsíc?" for a month outside 1-12, "?den?" for a day outside
// its month (29 February is accepted in a leap year only). No report for these.

const char *date_month_name(const Date *date);
// The Czech month name, or "?měsíc?" for a month outside 1-12 (no report).
//
// For all the date texts above a null date is an internal error and returns "???".

Flag date_parse(Date *date, const char *text);
// Reads a date typed by the user: day, month, year, such as "5.3.97", "5. brezen 1997",
// "05,3,1997" or "5 Březen 97". Returns 1 and sets the date when the result is a valid date;
// returns 0 and leaves the date unchanged otherwise.
//  - At most the first 100 characters are read; diacritics are ignored; before the day, the
//    month and the year, blanks and tabs are skipped.
//  - The day is one or two digits and must come first.
//  - One "." or "," may follow the day and the month.
//  - The month is one or two digits or a full Czech month name in any case, with or without
//    diacritics ("cervenec" is July, not June followed by "ec"); abbreviations and English
//    names are not accepted.
//  - The year must not be missing. It is read as a signed decimal number, leading white space
//    and one sign allowed, up to the first non-digit; a rest without digits reads as 0.
//    Years below 100 (negative ones included) mean 2000 + year below 93, else 1900 + year:
//    "97" is 1997, "92" is 2092, "x" is 2000. A year that does not fit in 16 bits fails.
// A null text is an internal error (0).

Flag date_parse_compact(Date *date, const char *text);
// Reads a date out of a file name: the text after the last "\" (the whole text when there is
// none) must begin with six digits DDMMYY; the year is 2000 + YY when YY is below 93, else
// 1900 + YY; the result must be a valid date. "C:\LOG\150797.TXT" gives 15 July 1997.
// Returns 1 and sets the date, or 0 with the date unchanged. A null text is an internal error.

Flag date_add_days(Date *date, int16_t count);
// Moves a valid date count days forward. Returns 0, leaving the date unchanged, when the date
// is not valid, the count is negative or the year would pass 32767; a count of 0 only checks
// the date. Returns 1 otherwise.

Flag date_next_month(Date *date);
// Month + 1; after month 12 (or any month above 12) comes month 1 of the next year. The day is
// kept as it is: 31 January becomes 31 February, left for the caller to check. Returns 1.

int16_t date_number(const Date *date);
// Day number counted from 1 January 1992 (0). Returns 0 for a month outside 1-12 (no report);
// a year before 1992 or a day outside its month is an internal error and returns 0. The number
// is 16-bit: dates after 17 September 2081 (day 32767) wrap around.

int16_t date_compare(const Date *a, const Date *b);
// -1 when b is later than a, 1 when b is earlier, 0 when both are the same day. Compares the
// fields (year, month, day), so it works for any dates. A null argument is an internal error
// (0).

int16_t date_span(const Date *a, const Date *b);
// date_number(b) - date_number(a) + 1: the number of days from a to b, both counted; 1 for a
// date with itself. 16-bit, like date_number.

Flag date_write(const Date *date, FileObject *file);
// Writes the date as 6 bytes through file_write: day, month, year, each 16-bit little-endian.
// Returns 1, or 0 at the first field that could not be written (the file layer has told the
// user). A null argument is an internal error (0).

Flag date_read(Date *date, FileObject *file);
// Reads 6 bytes written by date_write through file_read. Returns 1 and sets the date, or 0 at
// the first field that could not be read (the file layer has told the user), the date
// unchanged. A null argument is an internal error (0).

// ---- Times ---------------------------------------------------------------------------------

Flag time_now(Time *time);
// Sets the time to the current local time (hundredths = milliseconds / 10). Returns 1; a null
// time is an internal error (0).

Flag time_set(Time *time, int16_t hours, int16_t minutes, int16_t seconds);
// Stores the three values without checking them; the hundredths are left as they are.
// Returns 1; a null time is an internal error (0).

const char *time_text(const Time *time);
// "%02d:%02d.%02d" of hours, minutes and seconds; the seconds stand behind a full stop:
// "09:05.30". A null time is an internal error and returns "???".

Flag time_add_minutes(Time *time, int16_t minutes);
// hours += minutes / 60 and minutes += minutes % 60 (both truncating toward zero); then a
// minute field above 59 gives 60 to the hours as one hour, and an hour field of 24 or more has
// 24 taken away once. The date is not touched and negative results are not corrected.
// Returns 1; a null time is an internal error (0).

int16_t time_compare(const Time *a, const Time *b);
// -1 when b is later than a, 1 when b is earlier, 0 when equal; hours, minutes and seconds
// only. A null argument is an internal error (0).

Flag time_write(const Time *time, FileObject *file);
Flag time_read(Time *time, FileObject *file);
// As date_write and date_read with 8 bytes: hours, minutes, seconds, hundredths.

// ---- Durations -----------------------------------------------------------------------------

Flag duration_clear(Duration *duration);
// Sets every field to 0. Returns 1; a null duration is an internal error (0).

Flag duration_normalize(Duration *duration);
// Carries hundredths of 100 or more into seconds, seconds of 60 or more into minutes, minutes
// of 60 or more into hours and hours of 24 or more into days. Returns 0, leaving the duration
// unchanged, when any field is negative or the days would pass 32767; else 1. A null duration
// is an internal error (0).

// ---- Date and time together: logs and mail headers -------------------------------------------
// These texts put a date and a time side by side; neither is checked. A month outside 1-12
// gives "?měsíc?" (Czech) or "???" (English) in place of the name, without a report.

const char *date_time_text(const Date *date, const Time *time);
// Local form "%2d. %s %4d %02d:%02d.%02d": " 5. březen 1997 09:05.30".

const char *date_time_text_dots(const Date *date, const Time *time);
// Local form "%2d.%2d.%4d %02d:%02d.%02d": " 5. 3.1997 09:05.30".

// Forms of date_time_text_utc.
enum {
  DATE_UTC_LONG_TIME = 0,  // "%2d. %s %4d %02d:%02d.%02d UTC"  " 5. březen 1997 09:05.30 UTC"
  DATE_UTC_DOTS_TIME = 1,  // "%2d.%2d.%4d %02d:%02d.%02d UTC"  " 5. 3.1997 09:05.30 UTC"
  DATE_UTC_LONG = 2,       // "%2d. %s %4d UTC"                 " 5. březen 1997 UTC"
  DATE_UTC_DOTS = 3,       // "%2d.%2d.%4d UTC"                 " 5. 3.1997 UTC"
  DATE_UTC_TIME = 4,       // "%02d:%02d.%02d UTC"              "09:05.30 UTC"
  DATE_UTC_DAY_TIME = 5    // "%2d %s %02d:%02d:%02d UTC"       " 5 Mar 09:05:30 UTC"
};

const char *date_time_text_utc(int16_t form, const Date *date, const Time *time);
// A universal date and time (see date_time_now_utc) in one of the forms above, ending in
// " UTC". The Czech month name is used in the long forms, the English one in the day-time
// form. Nothing is converted: the values are printed as given. A form outside 0-5 raises
// SwitchError and returns "???"; a null date or time is an internal error ("???").

Flag date_time_now_utc(Date *date, Time *time);
// Sets both to the current universal date and time, read from the clock at once. Returns 1;
// a null argument is an internal error (0).

int16_t date_zone_offset(void);
// Minutes east of universal time of the local clock now, daylight saving included (local time
// minus universal time): 60 in Prague in winter, 120 in summer.

const char *date_day_name_en(const Date *date);
// The English name of the day of the week ("Wed" for 1 January 1992), or "?year?" for a year
// before 1992 and "?day?" for a month or day out of range (no report). A null date is an
// internal error ("???").

const char *date_mail_text(const Date *date, const Time *time, int16_t offset);
// A mail-style header date of a local date and time whose clock is offset minutes east of
// universal time (date_zone_offset): "%s, %d %s %d %02d:%02d:%02d +%02d%02d" of the English
// day name, day, English month name, year, hours, minutes, seconds and the offset as hours and
// minutes: "Wed, 5 Mar 1997 09:05:30 +0100". An offset west of universal time is written with
// "-" in place of "+": "-0500". A null date or time is an internal error ("???").

#endif
