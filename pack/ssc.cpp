// ssc.cpp - line scanning: see ssc.h.
#include "pack/ssc.h"

#include "common/st.h"
#include "common/we.h"

#include <string.h>

static const char MODULE[] = "ssc";

static int is_white(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

static void tabs_to_blanks(char *text) {
  for (; *text; text++)
    if (*text == '\t') *text = ' ';
}

// Removes leading blanks (shifting the text left).
static void trim_leading_blanks(char *text) {
  size_t skip = strspn(text, " ");
  if (skip) memmove(text, text + skip, strlen(text + skip) + 1);
}

static void trim_trailing_blanks(char *text) {
  size_t n = strlen(text);
  while (n > 0 && text[n - 1] == ' ') n--;
  text[n] = '\0';
}

Flag SplitFirstWord(char *line, char *word, int32_t word_size) {
  if (!line || !word || word_size < 1) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  word[0] = '\0';
  size_t n = strlen(line);
  if (n > 0 && line[n - 1] == '\n') line[n - 1] = '\0';
  tabs_to_blanks(line);
  trim_leading_blanks(line);
  trim_trailing_blanks(line);

  const char *start = line;
  while (*start && is_white(*start)) start++;
  if (!*start) return 0;
  const char *end = start;
  while (*end && !is_white(*end)) end++;
  st_put_part(word, (size_t)word_size, start, (size_t)(end - start));
  memmove(line, end, strlen(end) + 1);
  trim_leading_blanks(line);
  return 1;
}

Flag CleanListLine(char *line) {
  if (!line) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  if (!*line) return 0;
  for (char *p = line; *p; p++)
    if (*p == '\r' || *p == '\n') *p = ' ';
  char *comment = strchr(line, ';');
  if (comment) *comment = '\0';
  if (!*line) return 0;
  tabs_to_blanks(line);
  trim_leading_blanks(line);
  trim_trailing_blanks(line);
  return *line ? 1 : 0;
}

Flag RemoveChar(char *text, char c) {
  if (!text) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  char *to = text;
  for (const char *from = text; *from; from++)
    if (*from != c) *to++ = *from;
  *to = '\0';
  return 1;
}

Flag ExtractDelimited(char *line, char *out, char delimiter, int32_t out_size) {
  if (!line || !out || out_size < 1) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  if (delimiter == '\0') return 0;
  char *first = strchr(line, delimiter);
  if (!first) return 0;
  char *second = strchr(first + 1, delimiter);
  if (!second || second == first + 1) return 0;
  st_put_part(out, (size_t)out_size, first + 1, (size_t)(second - first - 1));
  memmove(first, second + 1, strlen(second + 1) + 1);
  return 1;
}

Flag StringsEqual(const char *a, const char *b) {
  if (!a || !b) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  return strcmp(a, b) == 0 ? 1 : 0;
}

Flag StripLeadingZeros(char *text) {
  if (!text) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  size_t skip = strspn(text, "0");
  if (skip) memmove(text, text + skip, strlen(text + skip) + 1);
  return *text ? 1 : 0;
}

Flag ReplaceChar(char *text, char from, char to) {
  if (!text) return 0;
  if (from == '\0') return 1;
  for (char *p = text; *p; p++) {
    if (*p == from) {
      *p = to;
      if (to == '\0') break;
    }
  }
  return 1;
}
