// fuzz_date.cpp - the date parsers: dates typed by the user (date_parse) and dates out of file
// names (date_parse_compact), then every text form of what they give. The first bytes are also
// taken as a raw date and time of any field values for the text forms, whose buffers must hold
// the widest 16-bit numbers.
#include "fuzz/fuzz_support.h"

#include "common/date.h"

#include <stdlib.h>
#include <string.h>

static const Date PATTERN = {0x5A5A, 0x5A5A, 0x5A5A};

static void check_parsed(Flag ok, const Date &date, const char *what) {
  if (ok) {
    FUZZ_CHECK(date_valid(&date), "%s gave 1 with the invalid date %d.%d.%d", what, date.day,
               date.month, date.year);
  } else {
    FUZZ_CHECK(!memcmp(&date, &PATTERN, sizeof date), "%s failed but changed the date to %d.%d.%d",
               what, date.day, date.month, date.year);
  }
}

static void texts(const Date &date, const Time &time) {
  // clang-format off
  const char *forms[] = {
      date_text_long(&date), date_text_dots(&date), date_text_short(&date),
      date_text_compact(&date), date_day_name(&date), date_month_name(&date),
      date_time_text(&date, &time), date_time_text_dots(&date, &time),
      date_day_name_en(&date), date_mail_text(&date, &time, (int16_t)(date.day * 7)),
  };
  // clang-format on
  for (const char *text : forms) FUZZ_CHECK(text && strlen(text) < 200, "text form too long");
  for (int16_t form = -1; form <= 6; form++) {
    const char *text = date_time_text_utc(form, &date, &time);
    FUZZ_CHECK(text && strlen(text) < 200, "utc form %d too long", form);
  }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  char *text = fuzz_text(data, size);

  Date date = PATTERN;
  check_parsed(date_parse(&date, text), date, "date_parse");
  Time time;
  time_set(&time, 9, 5, 30);
  time.hundredths = 0;
  if (date_valid(&date)) texts(date, time);

  date = PATTERN;
  check_parsed(date_parse_compact(&date, text), date, "date_parse_compact");
  if (date_valid(&date)) texts(date, time);

  if (size >= 14) {
    Date raw;
    Time any;
    int16_t v[7];
    for (int i = 0; i < 7; i++) v[i] = (int16_t)(data[2 * i] | data[2 * i + 1] << 8);
    date_set(&raw, v[0], v[1], v[2]);
    time_set(&any, v[3], v[4], v[5]);
    any.hundredths = v[6];
    texts(raw, any);
    date_number(&raw);
    date_compare(&raw, &date);
    Date moved = raw;
    date_add_days(&moved, v[6]);
    date_next_month(&moved);
    time_add_minutes(&any, v[6]);
    Duration span = {v[0], v[1], v[2], v[3], v[4]};
    duration_normalize(&span);
  }
  free(text);
  return 0;
}
