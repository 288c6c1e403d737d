// listedit.cpp - reading UNINST.LST and editing DISKLIST.LST in place (see listedit.h).
#include "tools/mkmedium/listedit.h"

#include "common/mm.h"
#include "common/st.h"
#include "lists/ilst.h"
#include "tools/mkmedium/medium.h"
#include "tools/mkmedium/medium_plat.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static Flag edit_number(const char *value, unsigned long most, unsigned long *number) {
  char *end = nullptr;
  if (!*value || *value == '-') return 0;
  *number = strtoul(value, &end, 10);
  return !*end && *number <= most;
}

int medium_uninstall_list_main(int argc, char **argv) {
  if (argc != 1) {
    fputs("mkmedium: --uninstall-list wants one FILE (see mkmedium --help)\n", stderr);
    return 2;
  }
  FILE *f = fopen(argv[0], "rb");
  if (!f) {
    fprintf(stderr, "mkmedium: %s: cannot read the file\n", argv[0]);
    return 1;
  }
  static unsigned char bytes[ILST_UNINSTALL_SIZE];
  static char utf8[ILST_UNINSTALL_PATH_FIELD * 3];
  size_t got = 0;
  long records = 0;
  while ((got = fread(bytes, 1, sizeof bytes, f)) == sizeof bytes) {
    UninstallRecord r;
    ilst_decode_uninstall(bytes, &r);
    medium_cp1250_to_utf8(r.path, utf8, sizeof utf8);
    printf("%u\t%s\n", (unsigned)r.kind, utf8);
    records++;
  }
  fclose(f);
  fflush(stdout);
  if (got != 0) {
    fprintf(stderr, "mkmedium: %s: %lu bytes after record %ld, less than a record\n", argv[0],
            (unsigned long)got, records);
    return 1;
  }
  return 0;
}

int medium_uninstall_write_main(int argc, char **argv) {
  if (argc != 1) {
    fputs("mkmedium: --uninstall-write wants one FILE (see mkmedium --help)\n", stderr);
    return 2;
  }
  // The records are checked whole before the file is touched: kept as bytes in a temporary file.
  FILE *records = tmpfile();
  static char line[ILST_UNINSTALL_PATH_FIELD * 3 + 16];
  static unsigned char bytes[ILST_UNINSTALL_SIZE];
  long number = 0;
  int rc = records ? 0 : 1;
  while (rc == 0 && fgets(line, sizeof line, stdin)) {
    number++;
    size_t n = strcspn(line, "\r\n");
    line[n] = 0;
    char *tab = strchr(line, '\t');
    unsigned long kind = 0;
    UninstallRecord r;
    if (tab) *tab = 0;
    if (!tab || !edit_number(line, 0xFFFF, &kind) ||
        medium_utf8_to_cp1250(tab + 1, r.path, sizeof r.path, nullptr) != MEDIUM_TEXT_OK) {
      fprintf(stderr, "mkmedium: line %ld: not KIND<tab>PATH, or the path does not fit a record\n",
              number);
      rc = 2;
      break;
    }
    r.kind = (uint16_t)kind;
    ilst_encode_uninstall(&r, bytes);
    if (fwrite(bytes, 1, sizeof bytes, records) != sizeof bytes) rc = 1;
  }
  FILE *out = rc == 0 ? fopen(argv[0], "wb") : nullptr;
  if (out) {
    rewind(records);
    while (rc == 0 && fread(bytes, 1, sizeof bytes, records) == sizeof bytes)
      if (fwrite(bytes, 1, sizeof bytes, out) != sizeof bytes) rc = 1;
    if (fclose(out) != 0) rc = 1;
  } else if (rc == 0) {
    rc = 1;
  }
  if (rc == 1) fprintf(stderr, "mkmedium: cannot write %s\n", argv[0]);
  if (records) fclose(records);
  return rc;
}

// ---- editing DISKLIST.LST ----------------------------------------------------------------

struct TextField {
  const char *name;
  int16_t at, field;  // offset in the header or record, bytes of the field
};

// clang-format off
static const TextField kRecordTexts[] = {
    {"name", ILST_AT_NAME, ILST_NAME_FIELD},
    {"stored", ILST_AT_STORED, ILST_NAME_FIELD},
    {"directory", ILST_AT_DIRECTORY, ILST_NAME_FIELD},
    {"description", ILST_AT_DESCRIPTION, ILST_DESCRIPTION_FIELD},
};
// clang-format on

// value (UTF-8 with \xHH escapes) as Windows-1250 bytes into out (size bytes); *length the
// bytes. 0 when the value is not valid or longer than size.
static Flag edit_text(const char *value, char *out, size_t size, size_t *length) {
  char text[KX_PATH];
  if (medium_utf8_to_cp1250(value, text, sizeof text, nullptr) != MEDIUM_TEXT_OK) return 0;
  size_t n = 0;
  for (const char *p = text; *p; p++) {
    unsigned hex = 0;
    if (p[0] == '\\' && p[1] == 'x' && sscanf(p + 2, "%2x", &hex) == 1 &&
        strspn(p + 2, "0123456789abcdefABCDEF") >= 2) {
      p += 3;
    } else {
      hex = (unsigned char)*p;
    }
    if (n == size) return 0;
    out[n++] = (char)hex;
  }
  *length = n;
  return 1;
}

// Writes a text of length bytes into the field at bytes + at: the rest of the field zero.
static void put_text(unsigned char *bytes, const TextField &t, const char *text, size_t length) {
  memset(bytes + t.at, 0, (size_t)t.field);
  memcpy(bytes + t.at, text, length);
}

// One edit of a record (bytes: its 140 bytes). 0 when the field or the value is wrong.
static Flag edit_record(unsigned char *bytes, const char *field, const char *value) {
  char text[ILST_DESCRIPTION_FIELD];
  size_t length = 0;
  for (const TextField &t : kRecordTexts)
    if (strcmp(field, t.name) == 0) {
      if (!edit_text(value, text, (size_t)t.field, &length)) return 0;
      put_text(bytes, t, text, length);
      return 1;
    }
  ListRecord r;
  unsigned long n = 0;
  ilst_decode_record(bytes, &r);
  if (strcmp(field, "size") == 0 && edit_number(value, 0xFFFFFFFFul, &n)) r.size = (uint32_t)n;
  else if (strcmp(field, "disk") == 0 && edit_number(value, 0x10000ul, &n) && n > 0)
    r.disk = (uint16_t)(n - 1);
  else return 0;
  // Encoded again through the list module; the text fields keep their bytes as they were.
  unsigned char texts[ILST_RECORD_SIZE];
  memcpy(texts, bytes, sizeof texts);
  ilst_encode_record(&r, bytes);
  for (const TextField &t : kRecordTexts) memcpy(bytes + t.at, texts + t.at, (size_t)t.field);
  return 1;
}

static Flag edit_header(unsigned char *bytes, const char *field, const char *value) {
  ListHeader h;
  unsigned long n = 0;
  ilst_decode_header(bytes, &h);
  if (strcmp(field, "text") == 0) {
    char text[ILST_HEADER_TEXT_FIELD];
    size_t length = 0;
    if (!edit_text(value, text, sizeof text, &length)) return 0;
    put_text(bytes, TextField{"text", ILST_AT_TEXT, ILST_HEADER_TEXT_FIELD}, text, length);
    return 1;
  }
  if (strcmp(field, "count") == 0 && edit_number(value, 0xFFFF, &n)) h.count = (uint16_t)n;
  else if (strcmp(field, "packed") == 0 && edit_number(value, 0xFFFF, &n)) h.packed = (uint16_t)n;
  else return 0;
  unsigned char text[ILST_HEADER_TEXT_FIELD];
  memcpy(text, bytes + ILST_AT_TEXT, sizeof text);
  ilst_encode_header(&h, bytes);
  memcpy(bytes + ILST_AT_TEXT, text, sizeof text);
  return 1;
}

// The record an edit names: its index, or -1.
static long find_record(const unsigned char *data, long records, const char *which) {
  if (strcmp(which, "last") == 0) return records - 1;
  unsigned long n = 0;
  if (which[0] == '#')
    return edit_number(which + 1, (unsigned long)records, &n) && n > 0 ? (long)n - 1 : -1;
  char name[ILST_NAME_FIELD + 1];
  if (medium_utf8_to_cp1250(which, name, sizeof name, nullptr) != MEDIUM_TEXT_OK) return -1;
  for (long i = 0; i < records; i++) {
    ListRecord r;
    ilst_decode_record(data + ILST_HEADER_SIZE + ILST_RECORD_SIZE * i, &r);
    if (strcmp(r.name, name) == 0) return i;
  }
  return -1;
}

int medium_edit_main(int argc, char **argv) {
  if (argc < 2) {
    fputs("mkmedium: --edit wants a LIST and at least one EDIT (see mkmedium --help)\n", stderr);
    return 2;
  }
  const char *path = argv[0];
  FILE *f = fopen(path, "rb");
  long length = -1;
  if (f && fseek(f, 0, SEEK_END) == 0) length = ftell(f);
  unsigned char *data =
      length >= ILST_HEADER_SIZE ? (unsigned char *)mm_alloc((int32_t)length, MM_HERE) : nullptr;
  Flag ok =
      data && fseek(f, 0, SEEK_SET) == 0 && fread(data, 1, (size_t)length, f) == (size_t)length;
  if (f) fclose(f);
  if (!ok) {
    fprintf(stderr, "mkmedium: %s: cannot read a list (at least a header's %d bytes)\n", path,
            ILST_HEADER_SIZE);
    mm_free(data, MM_HERE);
    return 1;
  }
  long records = (length - ILST_HEADER_SIZE) / ILST_RECORD_SIZE;
  int rc = 0;
  for (int i = 1; i < argc && rc == 0; i++) {
    char edit[KX_PATH];
    st_put(edit, sizeof edit, argv[i]);
    char *equals = strchr(edit, '=');
    char *colon = strchr(edit, ':');
    if (!equals || (colon && colon > equals)) colon = nullptr;
    Flag done = 0;
    if (equals) {
      *equals = 0;
      if (!colon) {
        done = edit_header(data, edit, equals + 1);
      } else {
        *colon = 0;
        long at = find_record(data, records, edit);
        done = at >= 0 &&
               edit_record(data + ILST_HEADER_SIZE + ILST_RECORD_SIZE * at, colon + 1, equals + 1);
      }
    }
    if (!done) {
      fprintf(stderr,
              "mkmedium: %s: the edit %s names no field or record, or its value does not fit\n",
              path, argv[i]);
      rc = 2;
    }
  }
  if (rc == 0) {
    f = fopen(path, "wb");
    if (!f || fwrite(data, 1, (size_t)length, f) != (size_t)length) rc = 1;
    if (f && fclose(f) != 0) rc = 1;
    if (rc) fprintf(stderr, "mkmedium: cannot write %s\n", path);
  }
  mm_free(data, MM_HERE);
  return rc;
}
