// ilst.cpp - the install lists as bytes (see ilst.h for the layouts).
#include "lists/ilst.h"

#include "common/st.h"
#include "common/we.h"

#include <string.h>

const char ILST_ROOT_DIRECTORY[] = ".";

// ---- Fields --------------------------------------------------------------------------------

static void put_u16(unsigned char *at, uint16_t value) {
  at[0] = (unsigned char)(value & 0xFF);
  at[1] = (unsigned char)(value >> 8);
}

static void put_u32(unsigned char *at, uint32_t value) {
  at[0] = (unsigned char)(value & 0xFF);
  at[1] = (unsigned char)((value >> 8) & 0xFF);
  at[2] = (unsigned char)((value >> 16) & 0xFF);
  at[3] = (unsigned char)(value >> 24);
}

static uint16_t get_u16(const unsigned char *at) { return (uint16_t)(at[0] | (at[1] << 8)); }

static uint32_t get_u32(const unsigned char *at) {
  return (uint32_t)at[0] | ((uint32_t)at[1] << 8) | ((uint32_t)at[2] << 16) |
         ((uint32_t)at[3] << 24);
}

// Writes at most limit characters of text into a field of field bytes, zero after them.
// limit < field always, so a text field keeps its terminating NUL.
static void put_text(unsigned char *at, size_t field, const char *text, size_t limit) {
  memset(at, 0, field);
  st_put_part((char *)at, limit + 1, text, limit);
}

// Takes a field's text up to its first NUL and at most limit characters; text has limit + 1
// bytes.
static void get_text(const unsigned char *at, size_t limit, char *text) {
  st_put_part(text, limit + 1, (const char *)at, limit);
}

// ---- DISKLIST.LST --------------------------------------------------------------------------

Flag ilst_encode_header(const ListHeader *header, unsigned char *bytes) {
  if (!header || !bytes) {
    InternalError("ilst", __LINE__);
    return 0;
  }
  put_u16(bytes + ILST_AT_RESERVED0, header->reserved0);
  put_text(bytes + ILST_AT_TEXT, ILST_HEADER_TEXT_FIELD, header->text, ILST_HEADER_TEXT_MAX);
  put_u16(bytes + ILST_AT_RESERVED84, header->reserved84);
  put_u16(bytes + ILST_AT_COUNT, header->count);
  put_u16(bytes + ILST_AT_RESERVED88, header->reserved88);
  put_u16(bytes + ILST_AT_PACKED, header->packed);
  return 1;
}

Flag ilst_decode_header(const unsigned char *bytes, ListHeader *header) {
  if (!bytes || !header) {
    InternalError("ilst", __LINE__);
    return 0;
  }
  header->reserved0 = get_u16(bytes + ILST_AT_RESERVED0);
  get_text(bytes + ILST_AT_TEXT, ILST_HEADER_TEXT_MAX, header->text);
  header->reserved84 = get_u16(bytes + ILST_AT_RESERVED84);
  header->count = get_u16(bytes + ILST_AT_COUNT);
  header->reserved88 = get_u16(bytes + ILST_AT_RESERVED88);
  header->packed = get_u16(bytes + ILST_AT_PACKED);
  return 1;
}

Flag ilst_encode_record(const ListRecord *record, unsigned char *bytes) {
  if (!record || !bytes) {
    InternalError("ilst", __LINE__);
    return 0;
  }
  put_text(bytes + ILST_AT_NAME, ILST_NAME_FIELD, record->name, ILST_NAME_MAX);
  put_text(bytes + ILST_AT_STORED, ILST_NAME_FIELD, record->stored, ILST_NAME_MAX);
  put_text(bytes + ILST_AT_DIRECTORY, ILST_NAME_FIELD, record->directory, ILST_NAME_MAX);
  bytes[ILST_AT_PADDING] = 0;
  put_u32(bytes + ILST_AT_SIZE, record->size);
  put_u16(bytes + ILST_AT_DISK, record->disk);
  put_text(bytes + ILST_AT_DESCRIPTION, ILST_DESCRIPTION_FIELD, record->description,
           ILST_DESCRIPTION_MAX);
  return 1;
}

Flag ilst_decode_record(const unsigned char *bytes, ListRecord *record) {
  if (!bytes || !record) {
    InternalError("ilst", __LINE__);
    return 0;
  }
  get_text(bytes + ILST_AT_NAME, ILST_NAME_MAX, record->name);
  get_text(bytes + ILST_AT_STORED, ILST_NAME_MAX, record->stored);
  get_text(bytes + ILST_AT_DIRECTORY, ILST_NAME_MAX, record->directory);
  record->size = get_u32(bytes + ILST_AT_SIZE);
  record->disk = get_u16(bytes + ILST_AT_DISK);
  get_text(bytes + ILST_AT_DESCRIPTION, ILST_DESCRIPTION_MAX, record->description);
  return 1;
}

// ---- UNINST.LST ----------------------------------------------------------------------------

Flag ilst_encode_uninstall(const UninstallRecord *record, unsigned char *bytes) {
  if (!record || !bytes) {
    InternalError("ilst", __LINE__);
    return 0;
  }
  put_u16(bytes + ILST_AT_KIND, record->kind);
  put_text(bytes + ILST_AT_PATH, ILST_UNINSTALL_PATH_FIELD, record->path, ILST_UNINSTALL_PATH_MAX);
  return 1;
}

Flag ilst_decode_uninstall(const unsigned char *bytes, UninstallRecord *record) {
  if (!bytes || !record) {
    InternalError("ilst", __LINE__);
    return 0;
  }
  record->kind = get_u16(bytes + ILST_AT_KIND);
  get_text(bytes + ILST_AT_PATH, ILST_UNINSTALL_PATH_MAX, record->path);
  return 1;
}

// ---- Disk identification files -------------------------------------------------------------

Flag ilst_disk_id_name(uint16_t disk, char *name) {
  if (!name) {
    InternalError("ilst", __LINE__);
    return 0;
  }
  if (disk >= ILST_DISKS_MAX) {
    name[0] = 0;
    return 0;
  }
  name[0] = (char)('A' + disk);
  memcpy(name + 1, ".KORV", 6);
  return 1;
}
