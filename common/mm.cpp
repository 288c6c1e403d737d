// mm.cpp - memory manager: plain heap with argument checks, or guarded blocks with the MMBIN.MM
// log. The layout of the guarded block and of the log is written down in mm.h.
#include "common/mm.h"

#include "common/file.h"
#include "common/we.h"

#include <malloc.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#ifdef KX_WIN32
#include <windows.h>
#else
#include <sys/time.h>
#include <time.h>
#endif

static const char MODULE[] = "mm";
const char MM_LOG_NAME[] = "MMBIN.MM";

static const char UNKNOWN_PLACE[] = "UNKNOWN";
static const char MSG_WATCHED_DAMAGED[] =
    "      Chyba! Pamet kontrolovaneho ukazatele %08lX byla prepsana!";
static const char MSG_FREE_DAMAGED[] =
    "      Chyba! Uvolnovana pamet byla na zacatku nebo konci bloku prepsana";
static const char MSG_TAIL_DAMAGED[] = "      Chyba! Uvolnovana pamet byla na konci bloku prepsana";
static const char MSG_HEAD_DAMAGED[] =
    "      Chyba! Uvolnovana pamet byla na zacatku bloku prepsana";
static const char MSG_TEST_WATCHED[] = "Test kontrolovanych ukazatelu";
static const char MSG_CANNOT_OPEN[] = "Nelze otevrit soubor %s!";
static const char MSG_STATISTICS_ON[] =
    "\nStatistika alokace pameti aktivni - spust program MMCH32.EXE !!!\n";

static const uint32_t NO_SIZE = 0xFFFFFFFFu;    // size field of releases and checks
static const int32_t MAX_GUARDED = 0x7FFFFFFF;  // largest user area of a guarded block

// The allocation record and the text record of the log, as the program holds them.
struct MmRecord {
  uint16_t kind;
  uint32_t address;
  uint32_t size;
  uint32_t count;
  uint32_t seq;
  char name[MM_NAME_SIZE];
  uint32_t line;
  uint16_t error;
};

struct MmText {
  uint32_t year;
  uint8_t day, month, minute, hour, hundredths, second;
  char text[MM_TEXT_SIZE];
};

// ---- Manager state ---------------------------------------------------------------------------

static Flag mm_off = 1;      // 1 while guarded mode is off
static Flag mm_started = 0;  // guarded mode has been switched on in this run
static FILE *mm_log_file = NULL;
static uint32_t mm_seq = 0;
uint32_t mm_watch_seq = 0xFFFFFFFFu;
static void *mm_watched[MM_WATCH_MAX];

static MmRecord mm_record;      // shared by kinds 2..8: unwritten fields keep their values
static MmRecord mm_log_record;  // kind 1 only
static MmText mm_text;
static char mm_command_line[MM_TEXT_SIZE];

static int32_t mm_fail_countdown = -1;  // test hook: heap requests left before the failing one

// ---- Platform --------------------------------------------------------------------------------

static void take_local_time(MmText *t) {
#ifdef KX_WIN32
  SYSTEMTIME st;
  GetLocalTime(&st);
  t->year = st.wYear;
  t->month = (uint8_t)st.wMonth;
  t->day = (uint8_t)st.wDay;
  t->hour = (uint8_t)st.wHour;
  t->minute = (uint8_t)st.wMinute;
  t->second = (uint8_t)st.wSecond;
  t->hundredths = (uint8_t)(st.wMilliseconds / 10);
#else
  struct timeval tv;
  gettimeofday(&tv, NULL);
  time_t seconds = tv.tv_sec;
  struct tm tm;
  localtime_r(&seconds, &tm);
  t->year = (uint32_t)(tm.tm_year + 1900);
  t->month = (uint8_t)(tm.tm_mon + 1);
  t->day = (uint8_t)tm.tm_mday;
  t->hour = (uint8_t)tm.tm_hour;
  t->minute = (uint8_t)tm.tm_min;
  t->second = (uint8_t)tm.tm_sec;
  t->hundredths = (uint8_t)(tv.tv_usec / 1000 / 10);
#endif
}

// Usable size of a heap block (at least what was asked for).
static size_t heap_block_size(void *block) {
#ifdef KX_WIN32
  return _msize(block);
#else
  return malloc_usable_size(block);
#endif
}

// ---- Heap ------------------------------------------------------------------------------------

// 1 when the test hook makes this heap request fail.
static int injected_failure(void) {
  if (mm_fail_countdown < 0) return 0;
  if (mm_fail_countdown == 0) {
    mm_fail_countdown = -1;
    return 1;
  }
  mm_fail_countdown--;
  return 0;
}

static void *heap_take(size_t bytes, int zero) {
  if (injected_failure()) return NULL;
  return zero ? calloc(1, bytes) : malloc(bytes);
}

static void *heap_take_counted(size_t count, size_t size) {
  if (injected_failure()) return NULL;
  return calloc(count, size);
}

// ---- Guarded blocks --------------------------------------------------------------------------

static uint32_t get_word(const unsigned char *p) {
  uint32_t w;
  memcpy(&w, p, sizeof w);
  return w;
}

static void put_word(unsigned char *p, uint32_t w) { memcpy(p, &w, sizeof w); }

static int guard_uniform(const unsigned char *guard) {
  for (int i = 1; i < MM_GUARD_WORDS; i++)
    if (get_word(guard + 4 * i) != get_word(guard + 4 * (i - 1))) return 0;
  return 1;
}

enum GuardState { GUARDS_INTACT, HEAD_DAMAGED, TAIL_DAMAGED };

// Checks a guarded block by its user-area address. The tail is found through the first head
// word; a head word that would put the tail past the heap block counts as head damage, so that
// a wild size is never followed.
static GuardState guard_state(void *user) {
  unsigned char *block = (unsigned char *)user - MM_GUARD_SIZE;
  if (!guard_uniform(block)) return HEAD_DAMAGED;
  uint64_t size = get_word(block);
  if (size + 2 * MM_GUARD_SIZE > (uint64_t)heap_block_size(block)) return HEAD_DAMAGED;
  if (!guard_uniform((unsigned char *)user + size)) return TAIL_DAMAGED;
  return GUARDS_INTACT;
}

// Takes a guarded block with a user area of size bytes; returns the user area or null.
static void *guarded_take(int32_t size, int zero) {
  unsigned char *block = (unsigned char *)heap_take((size_t)size + 2 * MM_GUARD_SIZE, zero);
  if (block == NULL) return NULL;
  unsigned char *user = block + MM_GUARD_SIZE;
  for (int i = 0; i < MM_GUARD_WORDS; i++) {
    put_word(block + 4 * i, (uint32_t)size);
    put_word(user + size + 4 * i, (uint32_t)size);
  }
  return user;
}

static void guarded_give(void *user) { free((unsigned char *)user - MM_GUARD_SIZE); }

// ---- The log ---------------------------------------------------------------------------------

static uint32_t address_of(const void *p) { return (uint32_t)(uintptr_t)p; }

static void set_name(char *field, const char *file) {
  if (file == NULL) file = UNKNOWN_PLACE;
  const char *slash = strrchr(file, '\\');
  const char *base = slash ? slash + 1 : file;
  memset(field, 0, MM_NAME_SIZE);
  size_t n = strlen(base);
  if (n > MM_NAME_MAX) n = MM_NAME_MAX;
  memcpy(field, base, n);
}

static void put_u16(unsigned char *p, uint16_t v) {
  p[0] = (unsigned char)v;
  p[1] = (unsigned char)(v >> 8);
}

static void put_u32(unsigned char *p, uint32_t v) {
  for (int i = 0; i < 4; i++) p[i] = (unsigned char)(v >> (8 * i));
}

static void emit(const unsigned char *bytes, size_t n) {
  if (mm_log_file == NULL) return;
  fwrite(bytes, 1, n, mm_log_file);
  fflush(mm_log_file);
}

static void write_record(const MmRecord *r) {
  unsigned char b[MM_RECORD_SIZE];
  put_u16(b + 0, r->kind);
  put_u32(b + 2, r->address);
  put_u32(b + 6, r->size);
  put_u32(b + 10, r->count);
  put_u32(b + 14, r->seq);
  memcpy(b + 18, r->name, MM_NAME_SIZE);
  put_u32(b + 32, r->line);
  put_u16(b + 36, r->error);
  emit(b, sizeof b);
}

static void write_text(const MmText *t) {
  unsigned char b[MM_TEXT_RECORD_SIZE];
  put_u32(b + 0, t->year);
  b[4] = t->day;
  b[5] = t->month;
  b[6] = t->minute;
  b[7] = t->hour;
  b[8] = t->hundredths;
  b[9] = t->second;
  memcpy(b + 10, t->text, MM_TEXT_SIZE);
  emit(b, sizeof b);
}

// Fills the shared record as every allocation, release and check starts it; the count field is
// left alone.
static void fill_record(uint16_t kind, uint32_t address, uint32_t size, const char *file,
                        int32_t line) {
  mm_record.kind = kind;
  mm_record.address = address;
  mm_record.size = size;
  mm_record.seq = mm_seq;
  set_name(mm_record.name, file);
  mm_record.line = (uint32_t)line;
  mm_record.error = 0;
}

// A kind 1 entry: its own record and the formatted text.
static void log_text_v(const char *file, int32_t line, const char *format, va_list args) {
  memset(mm_text.text, 0, sizeof mm_text.text);
  if (format != NULL) vsnprintf(mm_text.text, sizeof mm_text.text, format, args);
  take_local_time(&mm_text);
  memset(&mm_log_record, 0, sizeof mm_log_record);
  mm_log_record.kind = MM_KIND_LOG;
  mm_log_record.seq = mm_seq;
  set_name(mm_log_record.name, file);
  mm_log_record.line = (uint32_t)line;
  mm_seq++;
  write_record(&mm_log_record);
  write_text(&mm_text);
}

static void log_text(const char *file, int32_t line, const char *format, ...) KX_PRINTF(3, 4);
static void log_text(const char *file, int32_t line, const char *format, ...) {
  va_list args;
  va_start(args, format);
  log_text_v(file, line, format, args);
  va_end(args);
}

// Kinds 2 and 3: the shared record with kind and sequence number, and the command line.
static void write_statistics_mark(uint16_t kind) {
  mm_record.kind = kind;
  mm_record.seq = mm_seq;
  write_record(&mm_record);
  memset(mm_text.text, 0, sizeof mm_text.text);
  memcpy(mm_text.text, mm_command_line, sizeof mm_text.text);
  take_local_time(&mm_text);
  write_text(&mm_text);
}

// ---- Watched blocks --------------------------------------------------------------------------

// Checks every watched block; logs each damaged one with the given place. 1 when all are intact.
static Flag check_watched(const char *file, int32_t line) {
  Flag intact = 1;
  for (int i = 0; i < MM_WATCH_MAX; i++) {
    if (mm_watched[i] == NULL || guard_state(mm_watched[i]) == GUARDS_INTACT) continue;
    intact = 0;
    log_text(file, line, MSG_WATCHED_DAMAGED, (unsigned long)address_of(mm_watched[i]));
  }
  return intact;
}

static Flag watch_add(void *block) {
  for (int i = 0; i < MM_WATCH_MAX; i++) {
    if (mm_watched[i] == NULL) {
      mm_watched[i] = block;
      return 1;
    }
  }
  InternalError(MODULE, __LINE__);
  return 0;
}

static void watch_remove(void *block) {
  for (int i = 0; i < MM_WATCH_MAX; i++)
    if (mm_watched[i] == block) mm_watched[i] = NULL;
}

// ---- Guarded allocation ----------------------------------------------------------------------

// A refused request: record with the error flag, next sequence number.
static void refuse(void) {
  mm_record.error = 1;
  write_record(&mm_record);
  mm_seq++;
}

// The end of every logged guarded allocation: record, automatic watch, watched check.
static void *finish_allocation(void *user, const char *file, int32_t line) {
  mm_record.address = address_of(user);
  mm_record.error = user == NULL ? 1 : 0;
  write_record(&mm_record);
  if (user != NULL && mm_seq == mm_watch_seq) watch_add(user);
  check_watched(file, line);
  mm_seq++;
  return user;
}

// ---- Start and end ---------------------------------------------------------------------------

static int switches_guarded_mode(const char *arg) {
  return arg != NULL && arg[0] == '$' && (arg[1] == 'm' || arg[1] == 'M');
}

static void build_command_line(int argc, const char *const *argv) {
  size_t used = 0;
  memset(mm_command_line, 0, sizeof mm_command_line);
  for (int i = 0; argv != NULL && i < argc; i++) {
    const char *arg = argv[i] ? argv[i] : "";
    size_t n = strlen(arg);
    for (size_t k = 0; k <= n && used < sizeof mm_command_line - 1; k++)
      mm_command_line[used++] = k < n ? arg[k] : ' ';
  }
}

void mm_stat_begin(int argc, const char *const *argv) {
  if (mm_started) return;
  int found = 0;
  for (int i = 1; argv != NULL && i < argc; i++)
    if (switches_guarded_mode(argv[i])) found = 1;
  if (!found) return;

  mm_started = 1;
  mm_off = 0;
  mm_seq = 1;
  mm_log_file = fopen(MM_LOG_NAME, "wb");
  if (mm_log_file == NULL) {
    printf(MSG_CANNOT_OPEN, MM_LOG_NAME);
    fflush(stdout);
    mm_off = 1;
    return;
  }
  build_command_line(argc, argv);
  write_statistics_mark(MM_KIND_BEGIN);
  statistics_start();
}

void mm_stat_end(void) {
  if (mm_off) return;
  statistics_end();
  write_statistics_mark(MM_KIND_END);
  fclose(mm_log_file);
  mm_log_file = NULL;
  printf("%s", MSG_STATISTICS_ON);
  fflush(stdout);
  mm_off = 1;
}

// ---- Allocation ------------------------------------------------------------------------------

void *mm_alloc(int32_t size, const char *file, int32_t line) {
  if (mm_off) {
    if (size < 1) {
      InternalError(MODULE, __LINE__);
      return NULL;
    }
    return heap_take((size_t)size, 0);
  }
  fill_record(MM_KIND_ALLOC, 0, (uint32_t)size, file, line);
  if (size < 1) {
    refuse();
    InternalError(MODULE, __LINE__);
    return NULL;
  }
  return finish_allocation(guarded_take(size, 0), file, line);
}

void *mm_calloc(int32_t count, int32_t size, const char *file, int32_t line) {
  if (mm_off) {
    if (count < 1 || size < 1) {
      InternalError(MODULE, __LINE__);
      return NULL;
    }
    return heap_take_counted((size_t)count, (size_t)size);
  }
  fill_record(MM_KIND_CALLOC, 0, (uint32_t)size, file, line);
  mm_record.count = (uint32_t)count;
  if (count < 1 || size < 1) {
    refuse();
    InternalError(MODULE, __LINE__);
    return NULL;
  }
  int64_t total = (int64_t)count * size;
  void *user = total <= MAX_GUARDED ? guarded_take((int32_t)total, 1) : NULL;
  return finish_allocation(user, file, line);
}

void *mm_zalloc(int32_t size, const char *file, int32_t line) {
  if (mm_off) {
    if (size < 1) {
      InternalError(MODULE, __LINE__);
      return NULL;
    }
    return heap_take((size_t)size, 1);
  }
  fill_record(MM_KIND_ZALLOC, 0, (uint32_t)size, file, line);
  if (size < 1) {
    refuse();  // keep this: the guarded run logs a zero request without a report
    return NULL;
  }
  return finish_allocation(guarded_take(size, 1), file, line);
}

void *mm_zalloc_anon(int32_t size) {
  if (mm_off) return mm_zalloc(size, UNKNOWN_PLACE, 0);
  fill_record(MM_KIND_ZALLOC, 0, (uint32_t)size, UNKNOWN_PLACE, 0);
  if (size < 1) {
    refuse();
    return NULL;
  }
  return guarded_take(size, 1);
}

// ---- Release ---------------------------------------------------------------------------------

void mm_free(void *block, const char *file, int32_t line) {
  if (mm_off) {
    free(block);
    return;
  }
  watch_remove(block);
  fill_record(MM_KIND_FREE, address_of(block), NO_SIZE, file, line);
  mm_seq++;
  if (block == NULL) {
    mm_record.error = 1;
    write_record(&mm_record);
    return;
  }
  GuardState state = guard_state(block);
  mm_record.error = state != GUARDS_INTACT;
  write_record(&mm_record);
  if (state != GUARDS_INTACT) log_text(file, line, "%s", MSG_FREE_DAMAGED);
  check_watched(file, line);
  guarded_give(block);
}

void mm_check_release(void *block, const char *file, int32_t line) {
  if (mm_off) return;
  fill_record(MM_KIND_CHECK_RELEASE, address_of(block), NO_SIZE, file, line);
  mm_seq++;
  if (block == NULL) {
    mm_record.error = 1;
    write_record(&mm_record);
    return;
  }
  GuardState state = guard_state(block);
  if (state == HEAD_DAMAGED) log_text(file, line, "%s", MSG_HEAD_DAMAGED);
  if (state == TAIL_DAMAGED) log_text(file, line, "%s", MSG_TAIL_DAMAGED);
  mm_record.error = state != GUARDS_INTACT;
  write_record(&mm_record);
  watch_remove(block);
  check_watched(file, line);
}

void mm_release(void *block) {
  if (block == NULL) return;
  if (mm_off) free(block);
  else guarded_give(block);
}

// ---- Checks and the watched table ------------------------------------------------------------

Flag mm_check(void *block) {
  if (block == NULL) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  return guard_state(block) == GUARDS_INTACT;
}

void mm_log(const char *file, int32_t line, const char *format, ...) {
  if (mm_off) return;
  va_list args;
  va_start(args, format);
  log_text_v(file, line, format, args);
  va_end(args);
}

Flag mm_watch(void *block) {
  if (mm_off) return 1;
  return watch_add(block);
}

Flag mm_unwatch(void *block) {
  if (mm_off) return 1;
  watch_remove(block);
  return 1;
}

Flag mm_test_watched(const char *file, int32_t line) {
  if (mm_off) return 1;
  log_text(file, line, "%s", MSG_TEST_WATCHED);
  return check_watched(file, line);
}

// ---- Test hooks ------------------------------------------------------------------------------

void mm_test_reset(void) {
  if (!mm_off) statistics_end();  // its table is a guarded block: give it back while guarded
  if (mm_log_file != NULL) fclose(mm_log_file);
  mm_log_file = NULL;
  mm_off = 1;
  mm_started = 0;
  mm_seq = 0;
  mm_watch_seq = 0xFFFFFFFFu;
  memset(mm_watched, 0, sizeof mm_watched);
  memset(&mm_record, 0, sizeof mm_record);
  memset(&mm_log_record, 0, sizeof mm_log_record);
  memset(&mm_text, 0, sizeof mm_text);
  memset(mm_command_line, 0, sizeof mm_command_line);
  mm_fail_countdown = -1;
}

void mm_test_fail_after(int32_t n) { mm_fail_countdown = n < 0 ? -1 : n; }
