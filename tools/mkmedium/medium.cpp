// medium.cpp - makes installation media and prints install lists (see medium.h).
#include "tools/mkmedium/medium.h"

#include "tools/mkmedium/medium_plat.h"

#include "common/cz.h"
#include "common/file.h"
#include "common/mm.h"
#include "common/st.h"
#include "common/we.h"
#include "lists/ilst.h"
#include "pack/zip_util.h"

#include <stdarg.h>
#include <stdlib.h>
#include <string.h>

const char MEDIUM_TITLE_DEFAULT[] = "KORVEX 5";

int16_t (*medium_scan)(const char *directory, MediumScanEntry entry,
                       void *context) = medium_plat_scan;

// ---- Windows-1250 text -----------------------------------------------------------------------

int16_t medium_utf8_to_cp1250(const char *utf8, char *text, size_t size, uint32_t *code) {
  if (!utf8 || !text) {
    InternalError("medium", __LINE__);
    return MEDIUM_TEXT_INVALID;
  }
  if (size > 0) text[0] = 0;
  const unsigned char *p = (const unsigned char *)utf8;
  size_t n = 0;
  while (*p) {
    uint32_t c;
    uint32_t least;
    int length;
    if (*p < 0x80) {
      c = *p, least = 0, length = 1;
    } else if ((*p & 0xE0) == 0xC0) {
      c = *p & 0x1F, least = 0x80, length = 2;
    } else if ((*p & 0xF0) == 0xE0) {
      c = *p & 0x0F, least = 0x800, length = 3;
    } else if ((*p & 0xF8) == 0xF0) {
      c = *p & 0x07, least = 0x10000, length = 4;
    } else {
      return MEDIUM_TEXT_INVALID;
    }
    for (int i = 1; i < length; i++) {
      // A NUL is no continuation byte, so this never reads past the end.
      if ((p[i] & 0xC0) != 0x80) return MEDIUM_TEXT_INVALID;
      c = (c << 6) | (p[i] & 0x3F);
    }
    if (c < least || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) return MEDIUM_TEXT_INVALID;
    unsigned char byte = 0;
    if (c < 0x80) {
      byte = (unsigned char)c;
    } else {
      for (int i = 0; i < 128; i++) {
        if (cz_unicode((unsigned char)(0x80 + i)) == c) {
          byte = (unsigned char)(0x80 + i);
          break;
        }
      }
      if (!byte) {
        if (code) *code = c;
        return MEDIUM_TEXT_UNMAPPED;
      }
    }
    if (n + 1 >= size) return MEDIUM_TEXT_TOO_LONG;
    text[n++] = (char)byte;
    text[n] = 0;
    p += length;
  }
  return MEDIUM_TEXT_OK;
}

Flag medium_cp1250_to_utf8(const char *text, char *utf8, size_t size) {
  if (!text || !utf8) {
    InternalError("medium", __LINE__);
    return 0;
  }
  return cz_to_utf8(text, utf8, size);
}

static unsigned char upper_byte(unsigned char c) {
  if (c >= 'a' && c <= 'z') return (unsigned char)(c - 32);
  switch (c) {
    case 0x9A: return 0x8A;  // š
    case 0x9C:
    case 0x9D:
    case 0x9E:
    case 0x9F: return (unsigned char)(c - 0x10);  // ś ť ž ź
    case 0xB3: return 0xA3;                       // ł
    case 0xB9: return 0xA5;                       // ą
    case 0xBA: return 0xAA;                       // ş
    case 0xBE: return 0xBC;                       // ľ
    case 0xBF: return 0xAF;                       // ż
    case 0xF7: return 0xF7;                       // ÷
    case 0xFF: return 0xFF;                       // ˙
    default: break;
  }
  if (c >= 0xE0) return (unsigned char)(c - 0x20);
  return c;
}

Flag medium_upper(const char *text, char *upper, size_t size) {
  if (!text || !upper) {
    InternalError("medium", __LINE__);
    return 0;
  }
  if (size == 0) return 0;
  size_t n = 0;
  for (; text[n]; n++) {
    if (n + 1 >= size) {
      upper[n] = 0;
      return 0;
    }
    upper[n] = (char)upper_byte((unsigned char)text[n]);
  }
  upper[n] = 0;
  return 1;
}

// ---- The builder's records ---------------------------------------------------------------------

enum {
  NAME_SIZE = ILST_NAME_MAX + 1,
  NATIVE_SIZE = ILST_NAME_MAX * 4 + 1,  // a valid name in its native code page
  RAW_NAME_SIZE = 261,                  // longest native name a directory lists
  LONGEST_FILE = 0x7FFFFFFF
};

// A directory entry as listed, before any check.
struct Raw {
  char native[RAW_NAME_SIZE];
  int16_t kind;
  uint64_t size;
};

struct Subdirectory {
  char name[NAME_SIZE];  // Windows-1250
  char key[NAME_SIZE];   // upper case
  char native[NATIVE_SIZE];
};

struct Entry {
  char name[NAME_SIZE];  // installed name, Windows-1250
  char key[NAME_SIZE];   // upper case of name
  int32_t directory;     // index into the subdirectories, -1: the target directory
  char directory_key[NAME_SIZE];
  char native[NATIVE_SIZE];
  char stored[NAME_SIZE];
  char description[ILST_DESCRIPTION_MAX + 1];
  int32_t described;  // line of the description file, 0: none
  uint32_t size;      // installed size
  uint32_t stored_size;
  uint16_t disk;
};

// A set of upper-case names (open addressing; never full: sized for every name put in).
struct NameSet {
  char (*slots)[NAME_SIZE];
  uint32_t mask;
};

struct Build {
  const MediumOptions *options;
  MediumResult *result;
  Subdirectory *directories;
  int32_t directory_count;
  Entry *files;
  int32_t file_count;
  int32_t file_capacity;
  uint32_t tree_files;  // files listed so far, for the limit
  NameSet directory_keys;
  NameSet used;            // stored names and what they must not be
  uint32_t fixed_size[3];  // DISKLIST.LST, README.TXT, SETUP.EXE on the first disk
  uint16_t disks;
};

static Flag fail(Build *b, const char *format, ...) KX_PRINTF(2, 3);
static Flag fail(Build *b, const char *format, ...) {
  va_list args;
  va_start(args, format);
  vsnprintf(b->result->message, MEDIUM_MESSAGE_SIZE, format, args);
  va_end(args);
  return 0;
}

// A Windows-1250 name shown in a message (UTF-8), optionally after its subdirectory.
struct Shown {
  char text[RAW_NAME_SIZE * 2 + 8];
};

static const char *show(Shown *s, const char *directory, const char *name) {
  char a[NAME_SIZE * 3 + 1], c[RAW_NAME_SIZE * 3 + 1];
  medium_cp1250_to_utf8(directory ? directory : "", a, sizeof a);
  medium_cp1250_to_utf8(name, c, sizeof c);
  st_join(s->text, sizeof s->text, a, directory ? "\\" : "", c);
  return s->text;
}

// The same for a native name that is not (yet) known to be Windows-1250.
static const char *show_native(Shown *s, const char *directory, const char *native) {
  char a[NAME_SIZE * 3 + 1];
  medium_cp1250_to_utf8(directory ? directory : "", a, sizeof a);
  st_join(s->text, sizeof s->text, a, directory ? "\\" : "", native);
  return s->text;
}

// dir + separator + name into path (KX_PATH bytes); 0 when it does not fit.
static Flag join(char *path, const char *directory, const char *name) {
  const char separator[] = {medium_plat_separator, 0};
  return st_join(path, KX_PATH, directory, separator, name);
}

static Flag join_failed(Build *b, const char *directory, const char *name) {
  return fail(b, "%s%c%s: the path is too long", directory, medium_plat_separator, name);
}

static uint32_t hash(const char *key) {
  uint32_t h = 2166136261u;
  for (const unsigned char *p = (const unsigned char *)key; *p; p++) h = (h ^ *p) * 16777619u;
  return h;
}

static Flag set_make(NameSet *set, uint32_t names) {
  uint32_t slots = 64;
  while (slots < names * 2 + 64) slots *= 2;
  set->slots = (char(*)[NAME_SIZE])mm_zalloc((int32_t)(slots * NAME_SIZE), MM_HERE);
  set->mask = slots - 1;
  return set->slots != nullptr;
}

static void set_free(NameSet *set) {
  mm_free(set->slots, MM_HERE);
  set->slots = nullptr;
}

// 1 when key is in the set; else puts it in when add is set, and returns 0.
static Flag set_find(NameSet *set, const char *key, Flag add) {
  uint32_t i = hash(key) & set->mask;
  while (set->slots[i][0]) {
    if (strcmp(set->slots[i], key) == 0) return 1;
    i = (i + 1) & set->mask;
  }
  if (add) st_put(set->slots[i], NAME_SIZE, key);
  return 0;
}

// Decimal text of a 64-bit number (the C runtimes differ in their formats for it).
static const char *decimal(uint64_t value, char *text) {
  char digits[24];
  int n = 0;
  do {
    digits[n++] = (char)('0' + value % 10);
    value /= 10;
  } while (value);
  for (int i = 0; i < n; i++) text[i] = digits[n - 1 - i];
  text[n] = 0;
  return text;
}

static uint32_t round_up(uint64_t size, uint32_t cluster) {
  uint64_t r = (size + cluster - 1) / cluster * cluster;
  return r > 0xFFFFFFFFu ? 0xFFFFFFFFu : (uint32_t)r;
}

// ---- Names -------------------------------------------------------------------------------------

static Flag is_device_name(const char *name) {
  char base[NAME_SIZE];
  size_t n = 0;
  while (name[n] && name[n] != '.' && n < ILST_NAME_MAX) {
    base[n] = (char)upper_byte((unsigned char)name[n]);
    n++;
  }
  base[n] = 0;
  static const char *const devices[] = {"CON", "PRN", "AUX", "NUL"};
  for (const char *d : devices)
    if (strcmp(base, d) == 0) return 1;
  return n == 4 && (memcmp(base, "COM", 3) == 0 || memcmp(base, "LPT", 3) == 0) && base[3] >= '1' &&
         base[3] <= '9';
}

const char *medium_name_fault(const char *name, char *what, size_t size) {
  size_t n = strlen(name);
  if (n > ILST_NAME_MAX) {
    snprintf(what, size, "the name has %u characters, at most %d are allowed", (unsigned)n,
             ILST_NAME_MAX);
    return what;
  }
  for (const unsigned char *p = (const unsigned char *)name; *p; p++) {
    if (*p < 0x20) {
      snprintf(what, size, "the name holds \\x%02X, which Windows does not allow in file names",
               *p);
      return what;
    }
    if (strchr("\\/:*?\"<>|", *p)) {
      snprintf(what, size, "the name holds %c, which Windows does not allow in file names", *p);
      return what;
    }
  }
  if (n == 0 || name[0] == ' ' || name[n - 1] == ' ' || name[n - 1] == '.') {
    snprintf(what, size, "a name may not begin with a blank nor end with a blank or a dot");
    return what;
  }
  if (is_device_name(name)) {
    snprintf(what, size, "the name is a device name on Windows");
    return what;
  }
  return nullptr;
}

// Converts and checks one native name of a directory (directory: Windows-1250, or null for the
// target directory). Fills name; 0 with the message set.
static Flag take_name(Build *b, const char *directory, const char *native, char *name) {
  char text[KX_PATH];
  Shown s;
  if (!medium_plat_to_cp1250(native, text, sizeof text))
    return fail(b, "%s: the name cannot be written in Windows-1250",
                show_native(&s, directory, native));
  char what[120];
  if (medium_name_fault(text, what, sizeof what))
    return fail(b, "%s: %s", show(&s, directory, text), what);
  st_put(name, NAME_SIZE, text);
  return 1;
}

static Flag is_list_name(const char *key) {
  return strcmp(key, "DISKLIST.LST") == 0 || strcmp(key, "INST.LST") == 0 ||
         strcmp(key, "UNINST.LST") == 0;
}

// ---- Scanning the tree -------------------------------------------------------------------------

struct Listing {
  Build *build;
  Raw *raw;
  int32_t count;
  int32_t capacity;
  Flag too_many;
  Flag no_memory;
};

static Flag on_entry(void *context, const char *native, int16_t kind, uint64_t size) {
  Listing *l = (Listing *)context;
  if (kind == MEDIUM_FILE && ++l->build->tree_files > MEDIUM_FILES_MAX) {
    l->too_many = 1;
    return 0;
  }
  if (l->count == l->capacity) {
    int32_t capacity = l->capacity ? l->capacity * 2 : 64;
    Raw *grown = (Raw *)mm_zalloc(capacity * (int32_t)sizeof(Raw), MM_HERE);
    if (!grown) {
      l->no_memory = 1;
      return 0;
    }
    if (l->count) memcpy(grown, l->raw, (size_t)l->count * sizeof(Raw));
    mm_free(l->raw, MM_HERE);
    l->raw = grown;
    l->capacity = capacity;
  }
  Raw *r = &l->raw[l->count++];
  st_put(r->native, sizeof r->native, native);
  r->kind = kind;
  r->size = size;
  return 1;
}

static int by_native(const void *a, const void *b) {
  return strcmp(((const Raw *)a)->native, ((const Raw *)b)->native);
}

// Lists path into l, sorted by native name. 0 with the message set.
static Flag list_directory(Build *b, const char *path, Listing *l) {
  memset(l, 0, sizeof *l);
  l->build = b;
  int16_t listed = medium_scan(path, on_entry, l);
  if (l->too_many) return fail(b, "the tree holds more than %d files", MEDIUM_FILES_MAX);
  if (l->no_memory) return fail(b, "out of memory");
  if (listed != 1) return fail(b, "cannot read the directory %s", path);
  if (l->count > 1) qsort(l->raw, (size_t)l->count, sizeof(Raw), by_native);
  return 1;
}

static Flag add_file(Build *b, const Raw *raw, const char *name, int32_t directory) {
  Shown s;
  const char *dir_name = directory < 0 ? nullptr : b->directories[directory].name;
  if (raw->size > LONGEST_FILE) {
    char number[24];
    return fail(b, "%s: %s bytes, a file must be smaller than 2 GiB", show(&s, dir_name, name),
                decimal(raw->size, number));
  }
  if (b->file_count == b->file_capacity) {
    int32_t capacity = b->file_capacity ? b->file_capacity * 2 : 64;
    if (capacity > MEDIUM_FILES_MAX) capacity = MEDIUM_FILES_MAX;
    Entry *grown = (Entry *)mm_zalloc(capacity * (int32_t)sizeof(Entry), MM_HERE);
    if (!grown) return fail(b, "out of memory");
    if (b->file_count) memcpy(grown, b->files, (size_t)b->file_count * sizeof(Entry));
    mm_free(b->files, MM_HERE);
    b->files = grown;
    b->file_capacity = capacity;
  }
  Entry *e = &b->files[b->file_count++];
  st_put(e->name, sizeof e->name, name);
  medium_upper(name, e->key, sizeof e->key);
  e->directory = directory;
  if (directory >= 0) memcpy(e->directory_key, b->directories[directory].key, NAME_SIZE);
  st_put(e->native, sizeof e->native, raw->native);
  e->size = (uint32_t)raw->size;
  if (is_list_name(e->key))
    return fail(b, "%s: the name is kept for the installer's own list", show(&s, dir_name, name));
  return 1;
}

static int by_key(const void *a, const void *b) {
  const Subdirectory *x = (const Subdirectory *)a, *y = (const Subdirectory *)b;
  int c = strcmp(x->key, y->key);
  return c ? c : strcmp(x->name, y->name);
}

// List order: subdirectory files first, by subdirectory and name; then the target directory's.
static int by_place(const void *a, const void *b) {
  const Entry *x = (const Entry *)a, *y = (const Entry *)b;
  int xr = x->directory < 0, yr = y->directory < 0;
  if (xr != yr) return xr - yr;
  int c = strcmp(x->directory_key, y->directory_key);
  if (c) return c;
  c = strcmp(x->key, y->key);
  return c ? c : strcmp(x->name, y->name);
}

static Flag scan_tree(Build *b) {
  const char *source = b->options->source;
  Shown s, t;
  Listing root;
  if (!list_directory(b, source, &root)) {
    mm_free(root.raw, MM_HERE);
    return 0;
  }
  Flag ok = 1;
  // Subdirectories first, so that files can refer to them by index.
  int32_t dirs = 0;
  for (int32_t i = 0; i < root.count; i++) dirs += root.raw[i].kind == MEDIUM_DIRECTORY;
  if (dirs) {
    b->directories = (Subdirectory *)mm_zalloc(dirs * (int32_t)sizeof(Subdirectory), MM_HERE);
    if (!b->directories) ok = fail(b, "out of memory");
  }
  for (int32_t i = 0; ok && i < root.count; i++) {
    const Raw *r = &root.raw[i];
    char name[NAME_SIZE];
    if (!take_name(b, nullptr, r->native, name)) {
      ok = 0;
    } else if (r->kind == MEDIUM_DIRECTORY) {
      Subdirectory *d = &b->directories[b->directory_count++];
      memcpy(d->name, name, NAME_SIZE);
      medium_upper(name, d->key, sizeof d->key);
      st_put(d->native, sizeof d->native, r->native);
    } else if (r->kind != MEDIUM_FILE) {
      ok = fail(b, "%s: not a regular file", show(&s, nullptr, name));
    }
  }
  if (ok && b->directory_count > 1)
    qsort(b->directories, (size_t)b->directory_count, sizeof(Subdirectory), by_key);
  for (int32_t i = 1; ok && i < b->directory_count; i++) {
    if (strcmp(b->directories[i - 1].key, b->directories[i].key) == 0)
      ok = fail(b, "%s and %s differ only in case", show(&s, nullptr, b->directories[i - 1].name),
                show(&t, nullptr, b->directories[i].name));
  }
  if (ok && !set_make(&b->directory_keys, (uint32_t)b->directory_count))
    ok = fail(b, "out of memory");
  for (int32_t i = 0; ok && i < b->directory_count; i++)
    set_find(&b->directory_keys, b->directories[i].key, 1);
  for (int32_t i = 0; ok && i < root.count; i++) {
    const Raw *r = &root.raw[i];
    if (r->kind != MEDIUM_FILE) continue;
    char name[NAME_SIZE];
    ok = take_name(b, nullptr, r->native, name) && add_file(b, r, name, -1);
  }
  mm_free(root.raw, MM_HERE);

  for (int32_t d = 0; ok && d < b->directory_count; d++) {
    const Subdirectory *dir = &b->directories[d];
    char path[KX_PATH];
    if (!join(path, source, dir->native)) return join_failed(b, source, dir->native);
    Listing sub;
    ok = list_directory(b, path, &sub);
    for (int32_t i = 0; ok && i < sub.count; i++) {
      const Raw *r = &sub.raw[i];
      char name[NAME_SIZE];
      if (!take_name(b, dir->name, r->native, name)) {
        ok = 0;
      } else if (r->kind == MEDIUM_DIRECTORY) {
        ok = fail(b, "%s: nesting deeper than one subdirectory is not allowed",
                  show(&s, dir->name, name));
      } else if (r->kind != MEDIUM_FILE) {
        ok = fail(b, "%s: not a regular file", show(&s, dir->name, name));
      } else {
        ok = add_file(b, r, name, d);
      }
    }
    mm_free(sub.raw, MM_HERE);
  }
  if (!ok) return 0;

  if (b->file_count > 1) qsort(b->files, (size_t)b->file_count, sizeof(Entry), by_place);
  for (int32_t i = 0; i < b->file_count; i++) {
    const Entry *e = &b->files[i];
    const char *dir_name = e->directory < 0 ? nullptr : b->directories[e->directory].name;
    if (i > 0 && e[-1].directory == e->directory && strcmp(e[-1].key, e->key) == 0)
      return fail(b, "%s and %s differ only in case", show(&s, dir_name, e[-1].name),
                  show(&t, dir_name, e->name));
    if (set_find(&b->directory_keys, e->key, 0)) {
      const Subdirectory *clash = nullptr;
      for (int32_t d = 0; d < b->directory_count; d++)
        if (strcmp(b->directories[d].key, e->key) == 0) clash = &b->directories[d];
      if (e->directory < 0)
        return fail(b, "%s and %s differ only in case", show(&s, nullptr, e->name),
                    show(&t, nullptr, clash->name));
      if (b->options->packed)
        return fail(b, "%s: a packed file may not have the name of the subdirectory %s",
                    show(&s, dir_name, e->name), show(&t, nullptr, clash->name));
    }
  }
  return 1;
}

// ---- Descriptions ------------------------------------------------------------------------------

static Entry *find_file(Build *b, const char *directory, const char *name) {
  Entry probe;
  memset(&probe, 0, sizeof probe);
  medium_upper(name, probe.key, sizeof probe.key);
  if (directory) {
    medium_upper(directory, probe.directory_key, sizeof probe.directory_key);
    probe.directory = 0;
  } else {
    probe.directory = -1;
  }
  int32_t low = 0, high = b->file_count - 1;
  while (low <= high) {
    int32_t mid = (low + high) / 2;
    const Entry *e = &b->files[mid];
    int xr = e->directory < 0, yr = probe.directory < 0;
    int c = xr != yr ? xr - yr : strcmp(e->directory_key, probe.directory_key);
    if (c == 0) c = strcmp(e->key, probe.key);
    if (c == 0) return &b->files[mid];
    if (c < 0) low = mid + 1;
    else high = mid - 1;
  }
  return nullptr;
}

static char *trim(char *text, const char *blanks) {
  while (*text && strchr(blanks, *text)) text++;
  size_t n = strlen(text);
  while (n > 0 && strchr(blanks, text[n - 1])) text[--n] = 0;
  return text;
}

// One line (UTF-8, without its line break) of the description file.
static Flag describe(Build *b, const char *file, int32_t number, char *line) {
  char *text = trim(line, " ");
  if (!*text || *text == '#') return 1;
  char *tab = strchr(text, '\t');
  if (!tab)
    return fail(b, "%s line %d: no tab between the file and its description", file, (int)number);
  *tab = 0;
  char *path = trim(text, " ");
  char *description = trim(tab + 1, " \t");

  char name[KX_PATH], words[KX_PATH];
  uint32_t code = 0;
  int16_t r = medium_utf8_to_cp1250(path, name, sizeof name, &code);
  if (r == MEDIUM_TEXT_OK) r = medium_utf8_to_cp1250(description, words, sizeof words, &code);
  if (r == MEDIUM_TEXT_INVALID)
    return fail(b, "%s line %d: the text is not UTF-8", file, (int)number);
  if (r == MEDIUM_TEXT_UNMAPPED)
    return fail(b, "%s line %d: U+%04X has no place in Windows-1250", file, (int)number,
                (unsigned)code);
  if (r != MEDIUM_TEXT_OK) return fail(b, "%s line %d: the line is too long", file, (int)number);
  for (const unsigned char *p = (const unsigned char *)words; *p; p++)
    if (*p < 0x20)
      return fail(b, "%s line %d: the description holds a control character", file, (int)number);
  size_t length = strlen(words);
  if (length > ILST_DESCRIPTION_MAX)
    return fail(b, "%s line %d: the description has %u characters, at most %d are allowed", file,
                (int)number, (unsigned)length, ILST_DESCRIPTION_MAX);

  char *directory = nullptr;
  char *leaf = name;
  char *separator = strpbrk(name, "\\/");
  if (separator) {
    *separator = 0;
    directory = name;
    leaf = separator + 1;
  }
  Entry *e = nullptr;
  if (strlen(leaf) <= ILST_NAME_MAX && (!directory || strlen(directory) <= ILST_NAME_MAX))
    e = find_file(b, directory, leaf);
  if (!e) return fail(b, "%s line %d: %s names no file of the tree", file, (int)number, path);
  if (e->described) {
    Shown s;
    const char *dir_name = e->directory < 0 ? nullptr : b->directories[e->directory].name;
    return fail(b, "%s line %d: %s is described twice (first on line %d)", file, (int)number,
                show(&s, dir_name, e->name), (int)e->described);
  }
  e->described = number;
  memcpy(e->description, words, length + 1);
  return 1;
}

// Reads a whole file into a new block (length bytes, plus a NUL); null data for an empty file.
static Flag read_whole(const char *path, unsigned char **data, int32_t *length) {
  *data = nullptr;
  *length = 0;
  FileObject *f = nullptr;
  if (!file_create(&f, path)) return 0;
  Flag ok = file_open(f, FILE_READ_BINARY);
  if (ok) {
    int32_t size = file_size(f);
    ok = size >= 0;
    if (ok && size > 0) {
      *data = (unsigned char *)mm_zalloc(size + 1, MM_HERE);
      ok = *data && file_read(f, *data, size);
      if (ok) *length = size;
    }
    if (!file_close(f, 0)) ok = 0;
  }
  file_destroy(&f);
  if (!ok) {
    mm_free(*data, MM_HERE);
    *data = nullptr;
    *length = 0;
  }
  return ok;
}

static Flag read_descriptions(Build *b) {
  const char *file = b->options->descriptions;
  if (!file) return 1;
  if (medium_plat_kind(file) != MEDIUM_FILE) return fail(b, "%s: no such file", file);
  unsigned char *data = nullptr;
  int32_t length = 0;
  if (!read_whole(file, &data, &length)) return fail(b, "%s: cannot read the file", file);
  Flag ok = 1;
  char *text = (char *)data;
  if (text && length >= 3 && memcmp(text, "\xEF\xBB\xBF", 3) == 0) text += 3;
  if (text && (int32_t)strlen((char *)data) != length)
    ok = fail(b, "%s: the file holds a NUL byte", file);
  int32_t number = 0;
  while (ok && text && *text) {
    char *end = strchr(text, '\n');
    if (end) *end = 0;
    size_t n = strlen(text);
    if (n > 0 && text[n - 1] == '\r') text[n - 1] = 0;
    ok = describe(b, file, ++number, text);
    text = end ? end + 1 : nullptr;
  }
  mm_free(data, MM_HERE);
  return ok;
}

// ---- Stored names ------------------------------------------------------------------------------

static void ascii_name(const char *name, char *out) {
  size_t n = strlen(name);
  st_put(out, NAME_SIZE, name);
  cz_strip(out);
  for (size_t i = 0; i < n; i++)
    if ((unsigned char)out[i] >= 0x80) out[i] = '_';
}

// Candidate k (0, 1, ...) of the stored name of an entry whose ASCII name is base.
static void candidate(const char *base, Flag packed, uint32_t k, char *out) {
  size_t n = strlen(base);
  if (!packed) {
    if (k == 0) {
      st_put(out, NAME_SIZE, base);
      return;
    }
    k--;
  }
  if (k == 0) {
    st_put(out, NAME_SIZE, base);
    out[n - 1] = '_';
    return;
  }
  char number[16];
  int digits = snprintf(number, sizeof number, "%u_", (unsigned)k);
  size_t keep = n > (size_t)digits ? n - (size_t)digits : 0;
  st_put_part(out, NAME_SIZE, base, keep);
  st_append(out, NAME_SIZE, number);
}

static Flag assign_stored_names(Build *b) {
  static const char *const kept[] = {"DISKLIST.LST", "README.TXT", "SETUP.EXE", "INST.LST",
                                     "UNINST.LST"};
  for (const char *k : kept) set_find(&b->used, k, 1);
  for (uint16_t d = 0; d < ILST_DISKS_MAX; d++) {
    char id[ILST_DISK_ID_NAME];
    ilst_disk_id_name(d, id);
    set_find(&b->used, id, 1);
  }
  if (b->options->packed)
    for (int32_t i = 0; i < b->file_count; i++) set_find(&b->used, b->files[i].key, 1);
  for (int32_t i = 0; i < b->file_count; i++) {
    Entry *e = &b->files[i];
    char base[NAME_SIZE], name[NAME_SIZE], key[NAME_SIZE], what[120];
    ascii_name(e->name, base);
    Flag found = 0;
    for (uint32_t k = 0; !found && k < 1000000; k++) {
      candidate(base, b->options->packed, k, name);
      medium_upper(name, key, sizeof key);
      if (!medium_name_fault(name, what, sizeof what) && !set_find(&b->used, key, 1)) found = 1;
    }
    if (!found) {
      Shown s;
      return fail(b, "%s: no free name for the medium", show(&s, nullptr, e->name));
    }
    memcpy(e->stored, name, NAME_SIZE);
  }
  return 1;
}

// ---- Sizes and disks ---------------------------------------------------------------------------

static Flag source_path(Build *b, const Entry *e, char *path) {
  const char *source = b->options->source;
  if (e->directory < 0) {
    if (!join(path, source, e->native)) return join_failed(b, source, e->native);
    return 1;
  }
  char directory[KX_PATH];
  const char *native = b->directories[e->directory].native;
  if (!join(directory, source, native)) return join_failed(b, source, native);
  if (!join(path, directory, e->native)) return join_failed(b, directory, e->native);
  return 1;
}

// The packed form of an entry's file, in a block of the memory manager.
static Flag pack(Build *b, const Entry *e, unsigned char **packed, uint32_t *length) {
  Shown s;
  const char *dir_name = e->directory < 0 ? nullptr : b->directories[e->directory].name;
  char path[KX_PATH];
  if (!source_path(b, e, path)) return 0;
  unsigned char *data = nullptr;
  int32_t size = 0;
  if (!read_whole(path, &data, &size))
    return fail(b, "%s: cannot read the file", show(&s, dir_name, e->name));
  if ((uint32_t)size != e->size) {
    mm_free(data, MM_HERE);
    return fail(b, "%s: the file changed while the medium was made", show(&s, dir_name, e->name));
  }
  ZipUtil zip;
  ZipInit(&zip);
  SetLevel(&zip, b->options->level);
  static const unsigned char nothing[1] = {0};
  *packed = nullptr;
  *length = 0;
  Flag ok = CompressBuffer(&zip, data ? data : nothing, (uint32_t)size, packed, length);
  mm_free(data, MM_HERE);
  if (!ok) {
    mm_free(*packed, MM_HERE);
    *packed = nullptr;
    char why[200];
    medium_cp1250_to_utf8(ZipErrorText(GetError(&zip)), why, sizeof why);
    return fail(b, "%s: packing failed: %s", show(&s, dir_name, e->name), why);
  }
  return 1;
}

static uint32_t disk_id_size(uint16_t disk) {
  char text[32];
  return (uint32_t)snprintf(text, sizeof text, "DISK: %u\r\n", (unsigned)disk + 1);
}

static Flag size_of(Build *b, const char *path, uint32_t *size) {
  if (medium_plat_kind(path) != MEDIUM_FILE) return fail(b, "%s: no such file", path);
  FileObject *f = nullptr;
  int32_t n = -1;
  if (file_create(&f, path) && file_open(f, FILE_READ_BINARY)) {
    n = file_size(f);
    file_close(f, 0);
  }
  file_destroy(&f);
  if (n < 0) return fail(b, "%s: cannot read the file", path);
  *size = (uint32_t)n;
  return 1;
}

static Flag plan_disks(Build *b) {
  const MediumOptions *o = b->options;
  for (int32_t i = 0; i < b->file_count; i++) {
    Entry *e = &b->files[i];
    if (!o->packed) {
      e->stored_size = e->size;
      continue;
    }
    unsigned char *packed = nullptr;
    uint32_t length = 0;
    if (!pack(b, e, &packed, &length)) return 0;
    e->stored_size = length;
    mm_free(packed, MM_HERE);
  }
  b->fixed_size[0] = ILST_HEADER_SIZE + ILST_RECORD_SIZE * (uint32_t)b->file_count;
  if (o->readme && !size_of(b, o->readme, &b->fixed_size[1])) return 0;
  if (o->setup && !size_of(b, o->setup, &b->fixed_size[2])) return 0;
  b->disks = 1;
  if (o->flat) return 1;

  uint32_t cluster = o->cluster;
  uint64_t used = round_up(disk_id_size(0), cluster);
  for (int f = 0; f < 3; f++) used += round_up(b->fixed_size[f], cluster);
  if (used > o->capacity) {
    char number[24];
    return fail(b,
                "the first disk cannot hold DISKLIST.LST, README.TXT, SETUP.EXE and A.KORV (%s "
                "bytes) within %lu bytes",
                decimal(used, number), (unsigned long)o->capacity);
  }
  uint16_t disk = 0;
  for (int32_t i = 0; i < b->file_count; i++) {
    Entry *e = &b->files[i];
    uint64_t need = round_up(e->stored_size, cluster);
    if (used + need > o->capacity) {
      uint16_t next = (uint16_t)(disk + 1);
      uint64_t fresh = round_up(disk_id_size(next < ILST_DISKS_MAX ? next : 0), cluster);
      if (fresh + need > o->capacity) {
        Shown s;
        const char *dir_name = e->directory < 0 ? nullptr : b->directories[e->directory].name;
        return fail(b, "%s: %lu bytes on the medium do not fit on a disk of %lu bytes",
                    show(&s, dir_name, e->name), (unsigned long)e->stored_size,
                    (unsigned long)o->capacity);
      }
      if (next >= ILST_DISKS_MAX)
        return fail(b, "the files need more than %d disks", ILST_DISKS_MAX);
      disk = next;
      used = fresh;
    }
    used += need;
    e->disk = disk;
  }
  b->disks = (uint16_t)(disk + 1);
  return 1;
}

// ---- Writing -------------------------------------------------------------------------------------

static Flag write_bytes(Build *b, const char *path, const void *data, uint32_t length) {
  FileObject *f = nullptr;
  Flag ok = file_create(&f, path) && file_open(f, FILE_WRITE_BINARY);
  if (ok && length > 0) ok = file_write(f, data, (int32_t)length);
  if (f && !file_destroy(&f)) ok = 0;
  return ok ? 1 : fail(b, "cannot write %s", path);
}

static Flag copy_file(Build *b, const char *from, const char *to, uint32_t size) {
  FileObject *in = nullptr, *out = nullptr;
  Flag ok = file_create(&in, from) && file_open(in, FILE_READ_BINARY);
  if (!ok) {
    if (in) file_destroy(&in);
    return fail(b, "%s: cannot read the file", from);
  }
  if (file_size(in) != (int32_t)size) {
    file_destroy(&in);
    return fail(b, "%s: the file changed while the medium was made", from);
  }
  ok = file_create(&out, to) && file_open(out, FILE_WRITE_BINARY);
  if (ok && size > 0) ok = file_copy_block(out, in, 0, (int32_t)size);
  if (out && !file_destroy(&out)) ok = 0;
  file_destroy(&in);
  return ok ? 1 : fail(b, "cannot write %s", to);
}

static Flag disk_directory(Build *b, uint16_t disk, char *path) {
  const char *output = b->options->output;
  if (b->options->flat) {
    st_put(path, KX_PATH, output);
    return 1;
  }
  char name[16];
  snprintf(name, sizeof name, "DISK%u", (unsigned)disk + 1);
  if (!join(path, output, name)) return join_failed(b, output, name);
  return 1;
}

static Flag write_list(Build *b, const char *path) {
  uint32_t length = ILST_HEADER_SIZE + ILST_RECORD_SIZE * (uint32_t)b->file_count;
  unsigned char *bytes = (unsigned char *)mm_zalloc((int32_t)length, MM_HERE);
  if (!bytes) return fail(b, "out of memory");
  ListHeader h;
  memset(&h, 0, sizeof h);
  st_put(h.text, sizeof h.text, b->options->title ? b->options->title : MEDIUM_TITLE_DEFAULT);
  h.count = (uint16_t)b->file_count;
  h.packed = b->options->packed ? 1 : 0;
  ilst_encode_header(&h, bytes);
  for (int32_t i = 0; i < b->file_count; i++) {
    const Entry *e = &b->files[i];
    ListRecord r;
    memset(&r, 0, sizeof r);
    memcpy(r.name, e->name, NAME_SIZE);
    memcpy(r.stored, e->stored, NAME_SIZE);
    if (e->directory < 0) st_put(r.directory, sizeof r.directory, ILST_ROOT_DIRECTORY);
    else memcpy(r.directory, b->directories[e->directory].name, NAME_SIZE);
    r.size = e->size;
    r.disk = e->disk;
    memcpy(r.description, e->description, sizeof r.description);
    ilst_encode_record(&r, bytes + ILST_HEADER_SIZE + ILST_RECORD_SIZE * i);
  }
  Flag ok = write_bytes(b, path, bytes, length);
  mm_free(bytes, MM_HERE);
  return ok;
}

static Flag write_medium(Build *b) {
  const MediumOptions *o = b->options;
  if (medium_plat_kind(o->output) == MEDIUM_MISSING && !medium_plat_make_directory(o->output))
    return fail(b, "cannot make the output directory %s", o->output);
  char directory[KX_PATH], path[KX_PATH];
  for (uint16_t d = 0; d < b->disks; d++) {
    if (!disk_directory(b, d, directory)) return 0;
    if (!o->flat && !medium_plat_make_directory(directory))
      return fail(b, "cannot make the directory %s", directory);
    char id[ILST_DISK_ID_NAME], text[32];
    ilst_disk_id_name(d, id);
    int n = snprintf(text, sizeof text, "DISK: %u\r\n", (unsigned)d + 1);
    if (!join(path, directory, id)) return join_failed(b, directory, id);
    if (!write_bytes(b, path, text, (uint32_t)n)) return 0;
    if (d != 0) continue;
    if (!join(path, directory, "DISKLIST.LST")) return join_failed(b, directory, "DISKLIST.LST");
    if (!write_list(b, path)) return 0;
    if (o->readme) {
      if (!join(path, directory, "README.TXT")) return join_failed(b, directory, "README.TXT");
      if (!copy_file(b, o->readme, path, b->fixed_size[1])) return 0;
    }
    if (o->setup) {
      if (!join(path, directory, "SETUP.EXE")) return join_failed(b, directory, "SETUP.EXE");
      if (!copy_file(b, o->setup, path, b->fixed_size[2])) return 0;
    }
  }
  for (int32_t i = 0; i < b->file_count; i++) {
    const Entry *e = &b->files[i];
    if (!disk_directory(b, e->disk, directory)) return 0;
    if (!join(path, directory, e->stored)) return join_failed(b, directory, e->stored);
    if (!o->packed) {
      char from[KX_PATH];
      if (!source_path(b, e, from) || !copy_file(b, from, path, e->size)) return 0;
      continue;
    }
    unsigned char *packed = nullptr;
    uint32_t length = 0;
    if (!pack(b, e, &packed, &length)) return 0;
    Flag ok = length == e->stored_size;
    if (!ok) {
      Shown s;
      const char *dir_name = e->directory < 0 ? nullptr : b->directories[e->directory].name;
      fail(b, "%s: the file changed while the medium was made", show(&s, dir_name, e->name));
    }
    if (ok) ok = write_bytes(b, path, packed, length);
    mm_free(packed, MM_HERE);
    if (!ok) return 0;
  }
  return 1;
}

// ---- The whole medium -------------------------------------------------------------------------

void medium_default_options(MediumOptions *options) {
  if (!options) {
    InternalError("medium", __LINE__);
    return;
  }
  memset(options, 0, sizeof *options);
  options->packed = 1;
  options->level = -1;
  options->capacity = MEDIUM_CAPACITY_DEFAULT;
  options->cluster = MEDIUM_CLUSTER_DEFAULT;
}

static Flag count_entry(void *context, const char *, int16_t, uint64_t) {
  ++*(int32_t *)context;
  return 0;
}

static Flag check_options(Build *b) {
  const MediumOptions *o = b->options;
  if (o->level < -1 || o->level > 9) return fail(b, "the compression level must be -1 to 9");
  if (o->capacity < 1 || o->cluster < 1)
    return fail(b, "the capacity and the cluster must be at least 1");
  if (o->title && strlen(o->title) > ILST_HEADER_TEXT_MAX)
    return fail(b, "the title has %u characters, at most %d are allowed",
                (unsigned)strlen(o->title), ILST_HEADER_TEXT_MAX);
  if (medium_plat_kind(o->source) != MEDIUM_DIRECTORY)
    return fail(b, "cannot read the directory %s", o->source);
  int16_t kind = medium_plat_kind(o->output);
  if (kind == MEDIUM_DIRECTORY) {
    int32_t entries = 0;
    if (medium_plat_scan(o->output, count_entry, &entries) == 0)
      return fail(b, "cannot read the directory %s", o->output);
    if (entries) return fail(b, "the output directory %s is not empty", o->output);
  } else if (kind != MEDIUM_MISSING) {
    return fail(b, "cannot make the output directory %s", o->output);
  }
  return 1;
}

Flag medium_make(const MediumOptions *options, MediumResult *result) {
  if (!options || !result || !options->source || !options->output) {
    InternalError("medium", __LINE__);
    return 0;
  }
  memset(result, 0, sizeof *result);
  Build build;
  memset(&build, 0, sizeof build);
  Build *b = &build;
  b->options = options;
  b->result = result;
  Flag ok = check_options(b);
  if (ok) ok = scan_tree(b);
  if (ok) ok = read_descriptions(b);
  if (ok) ok = set_make(&b->used, 2 * (uint32_t)b->file_count + 40) || fail(b, "out of memory");
  if (ok) ok = assign_stored_names(b);
  if (ok) ok = plan_disks(b);
  if (ok) ok = write_medium(b);
  if (ok) {
    result->files = (uint32_t)b->file_count;
    result->disks = b->disks;
    result->message[0] = 0;
  }
  set_free(&b->directory_keys);
  set_free(&b->used);
  mm_free(b->files, MM_HERE);
  mm_free(b->directories, MM_HERE);
  return ok;
}

// ---- Printing a list ---------------------------------------------------------------------------

// A Windows-1250 field text in quotes, UTF-8, with \xNN for what does not print.
static void print_text(FILE *out, const char *text) {
  fputc('"', out);
  for (const unsigned char *p = (const unsigned char *)text; *p; p++) {
    if (*p < 0x20 || *p == '"' || *p == 0x7F || (*p >= 0x80 && cz_unicode(*p) == 0)) {
      fprintf(out, "\\x%02X", *p);
    } else {
      char one[2] = {(char)*p, 0}, utf8[4];
      medium_cp1250_to_utf8(one, utf8, sizeof utf8);
      fputs(utf8, out);
    }
  }
  fputs("\"\n", out);
}

static Flag list_fail(char *message, size_t size, const char *format, ...) KX_PRINTF(3, 4);
static Flag list_fail(char *message, size_t size, const char *format, ...) {
  va_list args;
  va_start(args, format);
  if (message && size) vsnprintf(message, size, format, args);
  va_end(args);
  return 0;
}

Flag medium_list(const char *path, FILE *out, char *message, size_t size) {
  if (!path || !out) {
    InternalError("medium", __LINE__);
    return 0;
  }
  if (message && size) message[0] = 0;
  char list[KX_PATH];
  st_put(list, sizeof list, path);
  if (medium_plat_kind(path) == MEDIUM_DIRECTORY) {
    char disk1[KX_PATH];
    if (!join(list, path, "DISKLIST.LST"))
      return list_fail(message, size, "%s: the path is too long", path);
    if (medium_plat_kind(list) != MEDIUM_FILE &&
        (!join(disk1, path, "DISK1") || !join(list, disk1, "DISKLIST.LST")))
      return list_fail(message, size, "%s: the path is too long", path);
  }
  if (medium_plat_kind(list) != MEDIUM_FILE)
    return list_fail(message, size, "%s: no DISKLIST.LST", path);
  unsigned char *data = nullptr;
  int32_t length = 0;
  if (!read_whole(list, &data, &length))
    return list_fail(message, size, "%s: cannot read the file", list);
  if (length < ILST_HEADER_SIZE) {
    mm_free(data, MM_HERE);
    return list_fail(message, size, "%s: %d bytes, shorter than a list header", list, (int)length);
  }
  ListHeader h;
  ilst_decode_header(data, &h);
  fputs("header\n", out);
  fprintf(out, "  reserved0   %u\n", (unsigned)h.reserved0);
  fputs("  text        ", out);
  print_text(out, h.text);
  fprintf(out, "  reserved84  %u\n", (unsigned)h.reserved84);
  fprintf(out, "  count       %u\n", (unsigned)h.count);
  fprintf(out, "  reserved88  %u\n", (unsigned)h.reserved88);
  fprintf(out, "  packed      %u\n", (unsigned)h.packed);
  int32_t present = (length - ILST_HEADER_SIZE) / ILST_RECORD_SIZE;
  int32_t shown = present < h.count ? present : h.count;
  for (int32_t i = 0; i < shown; i++) {
    ListRecord r;
    ilst_decode_record(data + ILST_HEADER_SIZE + ILST_RECORD_SIZE * i, &r);
    fprintf(out, "record %d\n", (int)i + 1);
    fputs("  name        ", out);
    print_text(out, r.name);
    fputs("  stored      ", out);
    print_text(out, r.stored);
    fputs("  directory   ", out);
    print_text(out, r.directory);
    fprintf(out, "  size        %lu\n", (unsigned long)r.size);
    fprintf(out, "  disk        %u (raw %u)\n", (unsigned)r.disk + 1, (unsigned)r.disk);
    fputs("  description ", out);
    print_text(out, r.description);
  }
  int32_t rest = length - ILST_HEADER_SIZE - ILST_RECORD_SIZE * shown;
  if (shown == h.count && rest > 0) fprintf(out, "%d bytes follow the last record\n", (int)rest);
  mm_free(data, MM_HERE);
  if (shown < h.count)
    return list_fail(message, size, "%s: the header counts %u records, the file holds %d", list,
                     (unsigned)h.count, (int)present);
  return 1;
}
