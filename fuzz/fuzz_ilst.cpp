// fuzz_ilst.cpp - the DISKLIST.LST reader: the input is a list file (the 92-byte header, then
// 140-byte records; a short tail is dropped as the installer drops it), and also read as
// UNINST.LST records of 1028 bytes. Every block is decoded from an exact-size copy; each text
// must stay within its limit, and encoding what was decoded must decode to the same record.
#include "fuzz/fuzz_support.h"

#include "lists/ilst.h"

#include <stdlib.h>
#include <string.h>

static void check_text(const char *text, size_t field, size_t max, const char *what) {
  const char *end = (const char *)memchr(text, 0, field);
  FUZZ_CHECK(end != NULL, "%s is not terminated", what);
  FUZZ_CHECK((size_t)(end - text) <= max, "%s has %zu characters", what, (size_t)(end - text));
}

static void header(const uint8_t *data) {
  uint8_t *bytes = fuzz_block(data, ILST_HEADER_SIZE);
  ListHeader h, again;
  memset(&h, 0x5A, sizeof h);
  FUZZ_CHECK(ilst_decode_header(bytes, &h) == 1, "decode_header failed");
  check_text(h.text, sizeof h.text, ILST_HEADER_TEXT_MAX, "header text");
  FUZZ_CHECK(h.count == (uint16_t)(data[ILST_AT_COUNT] | data[ILST_AT_COUNT + 1] << 8), "count %u",
             h.count);
  FUZZ_CHECK(h.packed == (uint16_t)(data[ILST_AT_PACKED] | data[ILST_AT_PACKED + 1] << 8),
             "packed %u", h.packed);
  uint8_t *encoded = fuzz_block(data, ILST_HEADER_SIZE);
  FUZZ_CHECK(ilst_encode_header(&h, encoded) == 1, "encode_header failed");
  memset(&again, 0x33, sizeof again);
  ilst_decode_header(encoded, &again);
  FUZZ_CHECK(again.reserved0 == h.reserved0 && again.reserved84 == h.reserved84 &&
                 again.count == h.count && again.reserved88 == h.reserved88 &&
                 again.packed == h.packed && !strcmp(again.text, h.text),
             "header does not read back");
  free(encoded);
  free(bytes);
}

static void record(const uint8_t *data, int index) {
  uint8_t *bytes = fuzz_block(data, ILST_RECORD_SIZE);
  ListRecord r, again;
  memset(&r, 0x5A, sizeof r);
  FUZZ_CHECK(ilst_decode_record(bytes, &r) == 1, "decode_record %d failed", index);
  check_text(r.name, sizeof r.name, ILST_NAME_MAX, "name");
  check_text(r.stored, sizeof r.stored, ILST_NAME_MAX, "stored name");
  check_text(r.directory, sizeof r.directory, ILST_NAME_MAX, "directory");
  check_text(r.description, sizeof r.description, ILST_DESCRIPTION_MAX, "description");
  FUZZ_CHECK(!strncmp(r.name, (const char *)data, ILST_NAME_MAX), "record %d: name differs", index);
  uint8_t *encoded = fuzz_block(data, ILST_RECORD_SIZE);
  FUZZ_CHECK(ilst_encode_record(&r, encoded) == 1, "encode_record failed");
  FUZZ_CHECK(encoded[ILST_AT_PADDING] == 0, "padding byte %u", encoded[ILST_AT_PADDING]);
  memset(&again, 0x33, sizeof again);
  ilst_decode_record(encoded, &again);
  FUZZ_CHECK(!strcmp(again.name, r.name) && !strcmp(again.stored, r.stored) &&
                 !strcmp(again.directory, r.directory) && again.size == r.size &&
                 again.disk == r.disk && !strcmp(again.description, r.description),
             "record %d does not read back", index);
  char id[ILST_DISK_ID_NAME];
  Flag named = ilst_disk_id_name(r.disk, id);
  FUZZ_CHECK(named == (r.disk < ILST_DISKS_MAX), "disk %u: name flag %d", r.disk, named);
  FUZZ_CHECK(strlen(id) == (named ? 6u : 0u), "disk %u: name \"%s\"", r.disk, id);
  free(encoded);
  free(bytes);
}

static void uninstall(const uint8_t *data) {
  uint8_t *bytes = fuzz_block(data, ILST_UNINSTALL_SIZE);
  UninstallRecord *u = (UninstallRecord *)malloc(sizeof *u);
  memset(u, 0x5A, sizeof *u);
  FUZZ_CHECK(ilst_decode_uninstall(bytes, u) == 1, "decode_uninstall failed");
  check_text(u->path, sizeof u->path, ILST_UNINSTALL_PATH_MAX, "uninstall path");
  uint8_t *encoded = fuzz_block(data, ILST_UNINSTALL_SIZE);
  FUZZ_CHECK(ilst_encode_uninstall(u, encoded) == 1, "encode_uninstall failed");
  for (size_t i = ILST_AT_PATH + strlen(u->path); i < ILST_UNINSTALL_SIZE; i++)
    FUZZ_CHECK(encoded[i] == 0, "uninstall byte %zu is %u, not 0", i, encoded[i]);
  free(encoded);
  free(u);
  free(bytes);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size >= ILST_HEADER_SIZE) {
    header(data);
    int index = 0;
    for (size_t at = ILST_HEADER_SIZE; at + ILST_RECORD_SIZE <= size; at += ILST_RECORD_SIZE)
      record(data + at, index++);
  }
  for (size_t at = 0; at + ILST_UNINSTALL_SIZE <= size; at += ILST_UNINSTALL_SIZE)
    uninstall(data + at);
  return 0;
}
