// verify.cpp - checks an installation medium as the installer will read it (see verify.h).
#include "tools/mkmedium/verify.h"

#include "tools/mkmedium/medium.h"
#include "tools/mkmedium/medium_plat.h"

#include "common/mm.h"
#include "common/st.h"
#include "common/we.h"
#include "lists/ilst.h"
#include "pack/ssc.h"
#include "pack/zip_util.h"

#include <stdarg.h>
#include <stdlib.h>
#include <string.h>

namespace {

const char LIST_NAME[] = "DISKLIST.LST";
const uint64_t BOMB_ROOM = 64u << 20;  // how far past its listed size a packed file is inflated
const size_t ID_LINE = 80;             // characters the installer reads of an id file's line
const size_t NATIVE_MAX = 80;          // bytes of a native name of at most 16 characters

struct Check {
  const VerifyAccess *a;
  VerifyResult *r;
};

void report(Check *c, const char *format, ...) KX_PRINTF(2, 3);
void report(Check *c, const char *format, ...) {
  char line[KX_PATH];
  va_list args;
  va_start(args, format);
  vsnprintf(line, sizeof line, format, args);
  va_end(args);
  c->r->problems++;
  if (c->a->line) c->a->line(c->a->line_context, line);
}

// A Windows-1250 text as UTF-8 for a line, with \xNN for bytes that do not print.
struct Shown {
  char text[ILST_DESCRIPTION_MAX * 4 + 8];
};

const char *show(Shown *s, const char *text) {
  size_t at = 0;
  for (const unsigned char *p = (const unsigned char *)text; *p && at + 5 < sizeof s->text; p++) {
    char one[2] = {(char)*p, 0}, utf8[8];
    medium_cp1250_to_utf8(one, utf8, sizeof utf8);
    if (*p < 0x20 || *p == 0x7F || strcmp(utf8, "\xEF\xBF\xBD") == 0)
      at += (size_t)snprintf(s->text + at, sizeof s->text - at, "\\x%02X", *p);
    else if (at + strlen(utf8) < sizeof s->text)
      at += (size_t)snprintf(s->text + at, sizeof s->text - at, "%s", utf8);
  }
  s->text[at] = 0;
  return s->text;
}

// SUBDIR\NAME (or NAME) of a record, as UTF-8.
const char *installed(Shown *s, const ListRecord *r) {
  char path[ILST_NAME_FIELD * 2 + 2];
  if (strcmp(r->directory, ILST_ROOT_DIRECTORY) == 0) st_put(path, sizeof path, r->name);
  else snprintf(path, sizeof path, "%s\\%s", r->directory, r->name);
  return show(s, path);
}

// The identification file of disk: there, names its own number, no other keyword.
void check_disk_id(Check *c, uint16_t disk) {
  char name[ILST_DISK_ID_NAME];
  ilst_disk_id_name(disk, name);
  unsigned char *bytes = nullptr;
  uint32_t length = 0;
  if (!c->a->load(c->a->context, disk, name, &bytes, &length)) {
    report(c, "DISK%u: %s is missing", disk + 1u, name);
    return;
  }
  uint32_t at = 0;
  while (at < length) {
    char line[ID_LINE + 1];
    size_t n = 0;
    while (at < length && bytes[at] != '\n' && n < ID_LINE) line[n++] = (char)bytes[at++];
    if (at < length && bytes[at] == '\n') at++;
    line[n] = 0;
    for (size_t i = 0; i < n; i++)
      if (line[i] == '\r' || line[i] == 0) line[i] = ' ';
    char keyword[ID_LINE + 1];
    if (!SplitFirstWord(line, keyword, sizeof keyword)) continue;
    Shown s;
    if (strcmp(keyword, "DISK:") == 0) {
      int number = atoi(line);
      if (number != disk + 1) report(c, "DISK%u: %s says DISK: %d", disk + 1u, name, number);
      continue;
    }
    report(c, "DISK%u: %s holds the unknown keyword %s", disk + 1u, name, show(&s, keyword));
    break;
  }
  mm_free(bytes, MM_HERE);
}

// The three names of record number: each one a plain name Windows takes. 0 after a line.
Flag names_are_plain(Check *c, uint32_t number, const ListRecord *r) {
  const char *fields[3] = {r->name, r->stored, r->directory};
  const char *labels[3] = {"installed name", "stored name", "subdirectory"};
  Flag ok = 1;
  for (int i = 0; i < 3; i++) {
    if (i == 2 && strcmp(r->directory, ILST_ROOT_DIRECTORY) == 0) continue;
    char what[160];
    const char *fault = medium_name_fault(fields[i], what, sizeof what);
    if (!fault) continue;
    Shown s;
    report(c, "record %lu: the %s \"%s\": %s", (unsigned long)number, labels[i],
           show(&s, fields[i]), fault);
    ok = 0;
  }
  return ok;
}

// The stored file of a packed record inflates to the listed size.
void check_packed(Check *c, uint32_t number, const ListRecord *r, uint16_t disk) {
  Shown si, ss;
  unsigned char *packed = nullptr;
  uint32_t length = 0;
  if (!c->a->load(c->a->context, disk, r->stored, &packed, &length)) {
    report(c, "record %lu %s: %s cannot be read", (unsigned long)number, installed(&si, r),
           show(&ss, r->stored));
    return;
  }
  // Measured, not kept: a packed file that would give gigabytes costs nothing, and inflating
  // stops some way past the listed size.
  uint64_t room = (uint64_t)r->size + BOMB_ROOM;
  uint32_t limit = room < 0xFFFFFFFFu ? (uint32_t)room : 0xFFFFFFFFu;
  ZipUtil zip;
  ZipInit(&zip);
  uint32_t plain = 0;
  Flag ok = InflatedLength(&zip, packed, length, limit, &plain);
  int16_t code = GetError(&zip);
  if (ok && plain >= limit && plain != r->size) {
    report(c, "record %lu %s: %s inflates to at least %lu bytes, the list says %lu",
           (unsigned long)number, installed(&si, r), show(&ss, r->stored), (unsigned long)limit,
           (unsigned long)r->size);
  } else if (ok && plain != r->size) {
    report(c, "record %lu %s: %s inflates to %lu bytes, the list says %lu", (unsigned long)number,
           installed(&si, r), show(&ss, r->stored), (unsigned long)plain, (unsigned long)r->size);
  } else if (!ok && code == -3) {
    report(c, "record %lu %s: %s is not a good zlib stream (damaged data or Adler-32)",
           (unsigned long)number, installed(&si, r), show(&ss, r->stored));
  } else if (!ok && code == -5) {
    report(c, "record %lu %s: %s is cut short", (unsigned long)number, installed(&si, r),
           show(&ss, r->stored));
  } else if (!ok) {
    report(c, "record %lu %s: %s does not inflate: zlib error %d", (unsigned long)number,
           installed(&si, r), show(&ss, r->stored), code);
  }
  mm_free(packed, MM_HERE);
}

void check_record(Check *c, uint32_t number, const ListRecord *r, Flag packed) {
  if (!names_are_plain(c, number, r)) return;
  Shown si, ss;
  uint16_t disk = c->a->flat ? 0 : r->disk;
  uint64_t size = 0;
  if (!c->a->flat && r->disk >= c->a->disks) {
    report(c, "record %lu %s: the list puts it on DISK%u, the medium has %u disk(s)",
           (unsigned long)number, installed(&si, r), r->disk + 1u, (unsigned)c->a->disks);
    return;
  }
  if (!c->a->find(c->a->context, disk, r->stored, &size)) {
    for (uint16_t other = 0; !c->a->flat && other < c->a->disks; other++) {
      if (other != disk && c->a->find(c->a->context, other, r->stored, &size)) {
        report(c, "record %lu %s: %s is on DISK%u, the list says DISK%u", (unsigned long)number,
               installed(&si, r), show(&ss, r->stored), other + 1u, disk + 1u);
        return;
      }
    }
    if (c->a->flat)
      report(c, "record %lu %s: %s is missing", (unsigned long)number, installed(&si, r),
             show(&ss, r->stored));
    else
      report(c, "record %lu %s: %s is missing from DISK%u", (unsigned long)number,
             installed(&si, r), show(&ss, r->stored), disk + 1u);
    return;
  }
  // The installer takes a stored file from whatever disk is in the drive: a second one of the
  // same name on another disk may be taken in its place.
  for (uint16_t other = 0; !c->a->flat && other < c->a->disks; other++) {
    uint64_t ignored;
    if (other != disk && c->a->find(c->a->context, other, r->stored, &ignored))
      report(c, "record %lu %s: %s is on DISK%u too, the installer may take that one",
             (unsigned long)number, installed(&si, r), show(&ss, r->stored), other + 1u);
  }
  if (packed) {
    check_packed(c, number, r, disk);
  } else if (size != r->size) {
    report(c, "record %lu %s: %s has %llu bytes, the list says %lu", (unsigned long)number,
           installed(&si, r), show(&ss, r->stored), (unsigned long long)size,
           (unsigned long)r->size);
  }
}

}  // namespace

Flag verify_check(const VerifyAccess *access, VerifyResult *result) {
  if (!access || !result || !access->find || !access->load || access->disks < 1 ||
      access->disks > ILST_DISKS_MAX) {
    InternalError("verify", __LINE__);
    return 0;
  }
  memset(result, 0, sizeof *result);
  Check c = {access, result};
  unsigned char *list = nullptr;
  uint32_t length = 0;
  if (!access->load(access->context, 0, LIST_NAME, &list, &length)) {
    report(&c, "%s: not on the first disk", LIST_NAME);
  } else if (length < ILST_HEADER_SIZE) {
    report(&c, "%s: %lu bytes, shorter than a list header", LIST_NAME, (unsigned long)length);
  } else {
    ListHeader header;
    ilst_decode_header(list, &header);
    result->packed = header.packed;
    result->listed = 1;
    uint32_t present = (length - ILST_HEADER_SIZE) / ILST_RECORD_SIZE;
    if (present < header.count)
      report(&c, "%s: the header counts %u records, the file holds %lu", LIST_NAME,
             (unsigned)header.count, (unsigned long)present);
    for (uint16_t disk = 0; disk < (access->flat ? 1 : access->disks); disk++)
      check_disk_id(&c, disk);
    uint32_t records = present < header.count ? present : header.count;
    for (uint32_t i = 0; i < records; i++) {
      ListRecord r;
      ilst_decode_record(list + ILST_HEADER_SIZE + (size_t)ILST_RECORD_SIZE * i, &r);
      check_record(&c, i + 1, &r, header.packed != 0);
      result->records++;
    }
  }
  mm_free(list, MM_HERE);
  return result->problems == 0;
}

// ---- A medium in a directory -------------------------------------------------------------------

namespace {

struct DirEntry {
  char key[ILST_NAME_MAX + 1];  // the Windows-1250 name upper-cased
  char native[NATIVE_MAX];
  uint64_t size;
};

struct DirDisk {
  char path[KX_PATH];
  DirEntry *entries;
  uint32_t count, room;
  Flag full;  // out of memory while listing
};

struct DirMedium {
  DirDisk disks[ILST_DISKS_MAX];
  uint16_t count;
};

Flag on_entry(void *context, const char *native, int16_t kind, uint64_t size) {
  DirDisk *d = (DirDisk *)context;
  char text[KX_PATH], key[KX_PATH];
  if (kind != MEDIUM_FILE || !medium_plat_to_cp1250(native, text, sizeof text) ||
      strlen(text) > ILST_NAME_MAX || strlen(native) >= NATIVE_MAX)
    return 1;  // no record can name it
  if (d->count == d->room) {
    uint32_t room = d->room ? d->room * 2 : 64;
    DirEntry *more = (DirEntry *)mm_alloc((int32_t)(room * sizeof(DirEntry)), MM_HERE);
    if (!more || room > 0x7FFFFFFFu / sizeof(DirEntry)) {
      mm_free(more, MM_HERE);
      d->full = 1;
      return 0;
    }
    if (d->count) memcpy(more, d->entries, d->count * sizeof(DirEntry));
    mm_free(d->entries, MM_HERE);
    d->entries = more;
    d->room = room;
  }
  DirEntry *e = &d->entries[d->count++];
  medium_upper(text, key, sizeof key);
  memcpy(e->key, key, strlen(key) + 1);
  memcpy(e->native, native, strlen(native) + 1);
  e->size = size;
  return 1;
}

int by_key(const void *a, const void *b) {
  return strcmp(((const DirEntry *)a)->key, ((const DirEntry *)b)->key);
}

const DirEntry *lookup(const DirMedium *m, uint16_t disk, const char *name) {
  if (disk >= m->count || strlen(name) > ILST_NAME_MAX) return nullptr;
  DirEntry probe;
  medium_upper(name, probe.key, sizeof probe.key);
  const DirDisk *d = &m->disks[disk];
  return d->count
             ? (const DirEntry *)bsearch(&probe, d->entries, d->count, sizeof(DirEntry), by_key)
             : nullptr;
}

Flag dir_find(void *context, uint16_t disk, const char *name, uint64_t *size) {
  const DirEntry *e = lookup((const DirMedium *)context, disk, name);
  if (e) *size = e->size;
  return e != nullptr;
}

Flag dir_load(void *context, uint16_t disk, const char *name, unsigned char **bytes,
              uint32_t *length) {
  const DirMedium *m = (const DirMedium *)context;
  const DirEntry *e = lookup(m, disk, name);
  *bytes = nullptr;
  *length = 0;
  char path[KX_PATH * 2 + 2];
  if (!e || e->size >= 0x7FFFFFFFu) return 0;
  snprintf(path, sizeof path, "%s%c%s", m->disks[disk].path, medium_plat_separator, e->native);
  FILE *f = fopen(path, "rb");
  if (!f) return 0;
  Flag ok = 1;
  if (e->size) {
    *bytes = (unsigned char *)mm_alloc((int32_t)e->size, MM_HERE);
    ok = *bytes && fread(*bytes, 1, (size_t)e->size, f) == e->size;
  }
  fclose(f);
  if (!ok) {
    mm_free(*bytes, MM_HERE);
    *bytes = nullptr;
    return 0;
  }
  *length = (uint32_t)e->size;
  return 1;
}

void to_stream(void *context, const char *line) { fprintf((FILE *)context, "%s\n", line); }

Flag fail(char *message, size_t size, const char *format, ...) KX_PRINTF(3, 4);
Flag fail(char *message, size_t size, const char *format, ...) {
  va_list args;
  va_start(args, format);
  if (message && size) vsnprintf(message, size, format, args);
  va_end(args);
  return 0;
}

}  // namespace

Flag verify_directory(const char *path, FILE *out, VerifyResult *result, char *message,
                      size_t size) {
  if (!path || !out || !result) {
    InternalError("verify", __LINE__);
    return 0;
  }
  memset(result, 0, sizeof *result);
  if (message && size) message[0] = 0;
  if (medium_plat_kind(path) != MEDIUM_DIRECTORY)
    return fail(message, size, "%s: not a directory", path);
  DirMedium *m = (DirMedium *)mm_zalloc(sizeof(DirMedium), MM_HERE);
  if (!m) return fail(message, size, "out of memory");
  char probe[KX_PATH];
  Flag flat = 0, ok = 1;
  if (snprintf(probe, sizeof probe, "%s%c%s", path, medium_plat_separator, LIST_NAME) >=
      (int)sizeof probe) {
    ok = fail(message, size, "%s: the path is too long", path);
  } else if (medium_plat_kind(probe) == MEDIUM_FILE) {
    flat = 1;
    snprintf(m->disks[0].path, KX_PATH, "%s", path);
    m->count = 1;
  } else {
    for (uint16_t d = 0; d < ILST_DISKS_MAX; d++) {
      char *disk = m->disks[d].path;
      if (snprintf(disk, KX_PATH, "%s%cDISK%u", path, medium_plat_separator, d + 1u) >= KX_PATH) {
        ok = fail(message, size, "%s: the path is too long", path);
        break;
      }
      if (medium_plat_kind(disk) != MEDIUM_DIRECTORY) break;
      m->count = (uint16_t)(d + 1);
    }
    if (ok && m->count == 0)
      ok = fail(message, size, "%s: neither %s nor DISK1 is there", path, LIST_NAME);
  }
  for (uint16_t d = 0; ok && d < m->count; d++) {
    DirDisk *disk = &m->disks[d];
    medium_plat_scan(disk->path, on_entry, disk);
    if (disk->full) ok = fail(message, size, "out of memory");
    else if (disk->count) qsort(disk->entries, disk->count, sizeof(DirEntry), by_key);
  }
  Flag clean = 0;
  if (ok) {
    VerifyAccess access = {m, m->count, flat, dir_find, dir_load, to_stream, out};
    clean = verify_check(&access, result);
    fprintf(out, "verify: %lu records on %u disk(s), %s: ", (unsigned long)result->records,
            (unsigned)m->count,
            !result->listed  ? "no list"
            : result->packed ? "packed"
                             : "plain");
    if (clean) fputs("no problems\n", out);
    else fprintf(out, "%lu problem(s)\n", (unsigned long)result->problems);
    fflush(out);
  }
  for (uint16_t d = 0; d < ILST_DISKS_MAX; d++) mm_free(m->disks[d].entries, MM_HERE);
  mm_free(m, MM_HERE);
  return clean;
}
