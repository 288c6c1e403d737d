// st.cpp - null-safe helpers over NUL-terminated Windows-1250 byte strings.
#include "common/st.h"

#include "common/cz.h"
#include "common/mm.h"
#include "common/we.h"

#include <string.h>

#define NULL_ARGUMENT() InternalError("st", __LINE__)

enum { COPY_MAX = 80, NATURAL_MAX = 100, CUT_MARK = 0xAF };

// ---- Allocation ----------------------------------------------------------------------------

// length + 1 zeroed bytes; reports and gives null on failure.
static char *take(int32_t length, int16_t line) {
  char *p = (char *)mm_calloc(length + 1, 1, "st", line);
  if (!p) OutOfMemoryError();
  return p;
}

Flag st_alloc(int16_t length, char **result) {
  if (!result) {
    NULL_ARGUMENT();
    return 0;
  }
  *result = nullptr;
  if (length < 0) {
    InternalError("st", __LINE__);
    return 0;
  }
  *result = take(length, __LINE__);
  return *result ? 1 : 0;
}

Flag st_free(char **text) {
  if (!text) {
    NULL_ARGUMENT();
    return 0;
  }
  if (*text) mm_free(*text, "st", __LINE__);
  *text = nullptr;
  return 1;
}

Flag st_dup(const char *text, char **result) {
  if (!result) {
    NULL_ARGUMENT();
    return 0;
  }
  *result = nullptr;
  if (!text) {
    NULL_ARGUMENT();
    return 0;
  }
  size_t length = strlen(text);
  if (length > 0x7FFFFFFE) {
    OutOfMemoryError();
    return 0;
  }
  char *copy = take((int32_t)length, __LINE__);
  if (!copy) return 0;
  memcpy(copy, text, length + 1);
  *result = copy;
  return 1;
}

// ---- Length, trimming, case ----------------------------------------------------------------

int16_t st_len(const char *text) {
  if (!text) return 0;
  size_t length = strlen(text);
  return length > 32767 ? (int16_t)32767 : (int16_t)length;
}

Flag st_trim(char *text) {
  if (!text) {
    NULL_ARGUMENT();
    return 0;
  }
  size_t start = 0;
  while (text[start] == ' ' || text[start] == '\t') start++;
  size_t end = start + strlen(text + start);
  while (end > start && (text[end - 1] == ' ' || text[end - 1] == '\t')) end--;
  memmove(text, text + start, end - start);
  text[end - start] = 0;
  return end > start ? 1 : 0;
}

Flag st_squeeze(char *text) {
  if (!text) {
    NULL_ARGUMENT();
    return 0;
  }
  char *out = text;
  const char *in = text;
  while (*in == ' ') in++;
  while (*in) {
    if (*in == ' ') {
      while (*in == ' ') in++;
      if (!*in) break;  // trailing spaces
      *out++ = ' ';
    }
    *out++ = *in++;
  }
  *out = 0;
  return 1;
}

Flag st_upper(char *text) {
  if (!text) {
    NULL_ARGUMENT();
    return 0;
  }
  return cz_upper(text);
}

Flag st_lower(char *text) {
  if (!text) {
    NULL_ARGUMENT();
    return 0;
  }
  return cz_lower(text);
}

// ---- Comparisons ---------------------------------------------------------------------------

static int16_t sign(int value) { return value < 0 ? -1 : value > 0 ? 1 : 0; }

int16_t st_cmp(const char *a, const char *b) {
  if (!a && !b) return 0;
  if (!a) return -1;
  if (!b) return 1;
  signed char first_a = (signed char)a[0], first_b = (signed char)b[0];
  if (first_a != first_b) return first_a < first_b ? -1 : 1;
  return sign(strcmp(a, b));
}

int16_t st_cmp_trimmed(char *a, char *b) {
  if (a) st_trim(a);
  if (b) st_trim(b);
  return st_cmp(a, b);
}

static unsigned char upper_of(unsigned char c) {
  char one = (char)c;
  cz_upper_char(&one);
  return (unsigned char)one;
}

static unsigned char strip_of(unsigned char c) {
  char one = (char)c;
  cz_strip_char(&one);
  return (unsigned char)one;
}

// Rank of the first differing pair x (from a) and y (from b): -1 or 1.
static int16_t rank_pair(unsigned char x, unsigned char y) {
  unsigned char ux = upper_of(x), uy = upper_of(y);
  unsigned char sx = strip_of(x), sy = strip_of(y);
  if (ux == uy) return sx <= sy ? 1 : -1;  // case only: the small letter first
  if (sx == sy) return ux >= uy ? 1 : -1;  // accent only: the plain letter first
  signed char bx = (signed char)upper_of(sx), by = (signed char)upper_of(sy);
  if (bx != by) return bx >= by ? 1 : -1;  // keep this: signed, as files are sorted so
  return sx >= sy ? 1 : -1;
}

int16_t st_collate(const char *a, const char *b) {
  if (!a || !b) {
    NULL_ARGUMENT();
    return 0;
  }
  while (*a && *a == *b) {
    a++;
    b++;
  }
  if (!*a && !*b) return 0;
  if (!*b) return 1;
  if (!*a) return -1;
  return rank_pair((unsigned char)*a, (unsigned char)*b);
}

int16_t st_collate_label(const char *a, const char *b) {
  if (!a || !b) {
    NULL_ARGUMENT();
    return 0;
  }
  size_t i = 0, j = 0;
  // Keep this: the end of b is tested at a's position, not at b's own. i moves by at most one
  // per step and b[i] is tested before every step, so b is never read past its NUL.
  while (a[i] && b[i]) {
    bool mark_a = a[i] == '&', mark_b = b[j] == '&';
    if (mark_a || mark_b) {
      if (mark_a) i++;
      if (mark_b) j++;
      continue;
    }
    if (a[i] != b[j]) return rank_pair((unsigned char)a[i], (unsigned char)b[j]);
    i++;
    j++;
  }
  if (!a[i]) return b[j] ? -1 : 0;
  return 1;
}

// Reads a run of digits as a 16-bit number: an empty run reads as 0; a value above 32767 does
// not fit and the conversion fails.
static Flag digits_to_number(const char *run, size_t length, int16_t *value) {
  int32_t v = 0;
  for (size_t k = 0; k < length; k++) {
    v = v * 10 + (run[k] - '0');
    if (v > 32767) return 0;
  }
  *value = (int16_t)v;
  return 1;
}

static bool is_digit(char c) { return c >= '0' && c <= '9'; }

int16_t st_natural(const char *a, const char *b) {
  if (!a || !b) {
    NULL_ARGUMENT();
    return 0;
  }
  size_t length_a = strlen(a), length_b = strlen(b);
  if (length_a >= NATURAL_MAX || length_b >= NATURAL_MAX) return st_collate(a, b);
  char lead_a[NATURAL_MAX], lead_b[NATURAL_MAX];
  size_t na = 0, nb = 0;
  while (a[na] && !is_digit(a[na])) na++;
  while (b[nb] && !is_digit(b[nb])) nb++;
  memcpy(lead_a, a, na);
  lead_a[na] = 0;
  memcpy(lead_b, b, nb);
  lead_b[nb] = 0;
  int16_t result = st_collate(lead_a, lead_b);
  if (result) return result;
  size_t da = 0, db = 0;
  while (is_digit(a[na + da])) da++;
  while (is_digit(b[nb + db])) db++;
  int16_t number_a, number_b;
  if (!digits_to_number(a + na, da, &number_a) || !digits_to_number(b + nb, db, &number_b))
    return 0;
  if (number_a != number_b) return number_a < number_b ? -1 : 1;
  return st_collate(a + na + da, b + nb + db);
}

// Copies at most COPY_MAX characters of text into buffer (COPY_MAX + 1 bytes).
static size_t copy_short(char *buffer, const char *text) {
  size_t length = strlen(text);
  if (length > COPY_MAX) length = COPY_MAX;
  memcpy(buffer, text, length);
  buffer[length] = 0;
  return length;
}

int16_t st_cmp_right(const char *a, const char *b) {
  if (!a || !b) {
    NULL_ARGUMENT();
    return 0;
  }
  char pa[COPY_MAX + 1], pb[COPY_MAX + 1];
  size_t la = copy_short(pa, a), lb = copy_short(pb, b);
  char *shorter = la < lb ? pa : pb;
  size_t from = la < lb ? la : lb, to = la < lb ? lb : la;
  if (from < to) {
    memmove(shorter + (to - from), shorter, from + 1);
    memset(shorter, ' ', to - from);
  }
  return st_cmp(pa, pb);
}

Flag st_same(const char *a, const char *b) {
  if (!a || !b) {
    NULL_ARGUMENT();
    return 0;
  }
  char pa[COPY_MAX + 1], pb[COPY_MAX + 1];
  copy_short(pa, a);
  copy_short(pb, b);
  st_squeeze(pa);
  st_squeeze(pb);
  if (strlen(pa) != strlen(pb)) return 0;
  cz_strip(pa);
  cz_strip(pb);
  cz_upper(pa);
  cz_upper(pb);
  return strcmp(pa, pb) == 0 ? 1 : 0;
}

// ---- Searching -----------------------------------------------------------------------------

char *st_chr(const char *text, char c) {
  if (!text) {
    NULL_ARGUMENT();
    return nullptr;
  }
  if (!c) return nullptr;
  return (char *)strchr(text, c);
}

char *st_rchr(const char *text, char c) {
  if (!text) {
    NULL_ARGUMENT();
    return nullptr;
  }
  if (!c) return nullptr;
  return (char *)strrchr(text, c);
}

char *st_str(const char *text, const char *part) {
  if (!text || !part) {
    NULL_ARGUMENT();
    return nullptr;
  }
  return (char *)strstr(text, part);
}

char *st_chr_any(const char *text, const char *set) {
  if (!text || !set) {
    NULL_ARGUMENT();
    return nullptr;
  }
  for (; *set; set++) {
    const char *found = strchr(text, *set);
    if (found) return (char *)found;
  }
  return nullptr;
}

// ---- Bounded copy and concatenation --------------------------------------------------------

Flag st_copy(char *destination, const char *source, int16_t limit) {
  if (!destination || !source) {
    NULL_ARGUMENT();
    return 0;
  }
  if (limit <= 0) {
    memmove(destination, source, strlen(source) + 1);
    return 1;
  }
  size_t n = 0;
  while (n < (size_t)limit && source[n]) n++;
  memmove(destination, source, n);
  destination[n] = 0;
  return 1;
}

Flag st_cat(char *destination, const char *source, int16_t limit) {
  if (!destination || !source) {
    NULL_ARGUMENT();
    return 0;
  }
  size_t have = strlen(destination), add = strlen(source);
  if (limit <= 0 || have + add <= (size_t)limit) {
    memmove(destination + have, source, add + 1);
    return 1;
  }
  size_t room = have < (size_t)limit ? (size_t)limit - have : 0;
  memmove(destination + have, source, room);
  destination[limit - 1] = (char)CUT_MARK;
  destination[limit] = 0;
  return 1;
}

Flag st_cat_char(char *text, char c, int16_t limit) {
  if (!text) {
    NULL_ARGUMENT();
    return 0;
  }
  size_t length = strlen(text);
  if (limit > 0 && length + 1 > (size_t)limit) return 0;
  text[length] = c;
  if (c) text[length + 1] = 0;
  return 1;
}

Flag st_put(char *buffer, size_t size, const char *text) {
  if (size == 0) return 0;
  if (!text) text = "";
  size_t n = strlen(text);
  Flag whole = n < size;
  if (!whole) n = size - 1;
  memmove(buffer, text, n);
  buffer[n] = 0;
  return whole;
}

Flag st_put_part(char *buffer, size_t size, const char *text, size_t n) {
  if (size == 0) return 0;
  if (!text) text = "";
  const char *end = (const char *)memchr(text, 0, n);
  if (end) n = (size_t)(end - text);
  Flag whole = n < size;
  if (!whole) n = size - 1;
  memmove(buffer, text, n);
  buffer[n] = 0;
  return whole;
}

Flag st_append(char *buffer, size_t size, const char *text) {
  if (size == 0) return 0;
  const char *end = (const char *)memchr(buffer, 0, size);
  if (!end) {
    buffer[size - 1] = 0;
    return 0;
  }
  size_t used = (size_t)(end - buffer);
  return st_put(buffer + used, size - used, text);
}

Flag st_join(char *buffer, size_t size, const char *a, const char *b, const char *c,
             const char *d) {
  if (size == 0) return 0;
  buffer[0] = 0;
  Flag whole = st_append(buffer, size, a);
  whole = st_append(buffer, size, b) && whole;
  whole = st_append(buffer, size, c) && whole;
  return st_append(buffer, size, d) && whole;
}

// ---- Wildcards -----------------------------------------------------------------------------

static Flag match(const char *text, const char *pattern) {
  const char *star = strchr(pattern, '*');
  if (!star) {
    if (strlen(text) != strlen(pattern)) return 0;
    for (; *pattern; pattern++, text++)
      if (*pattern != '?' && *pattern != *text) return 0;
    return 1;
  }
  if (star != pattern) {
    for (; pattern < star; pattern++, text++) {
      if (!*text) return 0;
      if (*pattern != '?' && *pattern != *text) return 0;
    }
    return match(text, star);
  }
  char next = pattern[1];
  if (!next) return 1;
  if (next != '?' && next != '*') {
    // Keep this: only the first occurrence is tried.
    text = strchr(text, next);
    if (!text) return 0;
  }
  return match(text, pattern + 1);
}

Flag st_match(const char *text, const char *pattern) {
  if (!text || !pattern) {
    NULL_ARGUMENT();
    return 0;
  }
  return match(text, pattern);
}
