// log.cpp - the run log: UTF-8 lines with their time.
#include "common/log.h"

#include "common/cz.h"
#include "common/file.h"
#include "common/st.h"

#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#ifdef KX_WIN32
#include <windows.h>
#endif

static FILE *log_stream;

// The second of the universal clock, asked without the time zone.
static long long clock_second(void) {
#ifdef KX_WIN32
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  return (long long)(((unsigned long long)now.dwHighDateTime << 32 | now.dwLowDateTime) /
                     10000000u);
#else
  return (long long)time(nullptr);
#endif
}
static char log_path[KX_PATH];

Flag log_open(const char *path) {
  log_close();
  if (!path || !path[0] || strlen(path) >= KX_PATH) return 0;
  log_stream = file_open_new_binary(path);
  if (!log_stream) return 0;
  st_put(log_path, sizeof log_path, path);
  return 1;
}

void log_close(void) {
  if (log_stream) fclose(log_stream);
  log_stream = nullptr;
  log_path[0] = 0;
}

Flag log_active(void) { return log_stream ? 1 : 0; }

const char *log_file(void) { return log_path; }

void log_text(const char *text) {
  if (!log_stream) return;
  // One event, one line: breaks become " / ", other control characters blanks.
  char flat[LOG_LINE_SIZE];
  size_t n = 0;
  for (const unsigned char *c = (const unsigned char *)(text ? text : "");
       *c && n + 4 < sizeof flat; c++) {
    if (*c == '\n') {
      memcpy(flat + n, " / ", 3);
      n += 3;
    } else if (*c == '\r') {
      continue;
    } else {
      flat[n++] = *c < 32 || *c == 127 ? ' ' : (char)*c;
    }
  }
  flat[n] = 0;
  static char utf8[LOG_LINE_SIZE * 3];
  cz_to_utf8(flat, utf8, sizeof utf8);
  // The local time is worked out once a second: the runtime's time() and localtime() ask the
  // system for its time zone every time (two file lookups under Wine).
  static long long stamped = -1;
  static char stamp[32];
  long long second = clock_second();
  if (second != stamped || !stamp[0]) {
    time_t now = time(nullptr);
    struct tm *local = localtime(&now);
    st_put(stamp, sizeof stamp, "0000-00-00 00:00:00");
    if (local) strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S", local);
    stamped = second;
  }
  if (fprintf(log_stream, "%s %s\r\n", stamp, utf8) < 0 || fflush(log_stream) != 0) {
    fclose(log_stream);
    log_stream = nullptr;
  }
}

void log_line(const char *format, ...) {
  if (!log_stream) return;
  char text[LOG_LINE_SIZE];
  text[0] = 0;
  if (format) {
    va_list args;
    va_start(args, format);
    if (vsnprintf(text, sizeof text, format, args) < 0) text[0] = 0;
    va_end(args);
  }
  log_text(text);
}

Flag log_temp_path(const char *name, char *path, size_t size) {
  if (!name || !path || size == 0) return 0;
  const char *directory = getenv("TEMP");
  if (!directory || !directory[0]) directory = getenv("TMP");
  if (!directory) directory = "";
  size_t length = strlen(directory);
  const char *separator =
      length && directory[length - 1] != '\\' && directory[length - 1] != '/' ? "\\" : "";
  int n = snprintf(path, size, "%s%s%s", directory, separator, name);
  if (n < 0 || (size_t)n >= size) {
    path[0] = 0;
    return 0;
  }
  return 1;
}
