// inst_list.cpp - DISKLIST.LST read record by record, and the disk identification files.
#include "installer/inst_list.h"

#include "common/file.h"
#include "common/st.h"
#include "common/we.h"
#include "installer/inst.h"
#include "pack/ssc.h"

#include <stdlib.h>
#include <string.h>

const char INST_DISK_LIST[] = "DISKLIST.LST";
const char INST_TEXT_NOT_FOUND[] = "Chybná cesta/soubor nenalezen: %s";

namespace {

const char TEXT_BAD_RECORD[] = "Chybný záznam v seznamu souborů: %s";

enum { LINE_SIZE = 81 };

int32_t list_size = -1;  // of the open list, learnt at the rewind

// A name from the list that may be joined to a path: not empty, no path separator, drive
// colon, parent reference or control character. The directory field may also be ".".
Flag name_ok(const char *name, Flag directory) {
  if (!name[0]) return 0;
  if (directory && inst_list_is_root(name)) return 1;
  if (strcmp(name, ".") == 0 || strstr(name, "..")) return 0;
  for (const unsigned char *c = (const unsigned char *)name; *c; c++)
    if (*c < 32 || *c == 127 || *c == '\\' || *c == '/' || *c == ':') return 0;
  return 1;
}

}  // namespace

Flag inst_list_is_root(const char *directory) {
  return strcmp(directory, ILST_ROOT_DIRECTORY) == 0;
}

void inst_list_close(InstallState *state) {
  if (state && state->list) file_destroy(&state->list);
}

Flag inst_list_rewind(InstallState *state) {
  if (!state->list) {
    if (!file_create(&state->list, INST_DISK_LIST)) return 0;
    if (!file_exists(INST_DISK_LIST) || !file_open(state->list, FILE_READ_BINARY)) {
      file_destroy(&state->list);
      ErrorBoxF(INST_TEXT_NOT_FOUND, INST_DISK_LIST);
      return 0;
    }
  }
  unsigned char bytes[ILST_HEADER_SIZE];
  list_size = -1;
  if (!file_seek(state->list, 0, FILE_FROM_START) ||
      (list_size = file_size(state->list)) < ILST_HEADER_SIZE ||
      !file_read(state->list, bytes, ILST_HEADER_SIZE) ||
      !ilst_decode_header(bytes, &state->header)) {
    ErrorBoxF(INST_TEXT_NOT_FOUND, INST_DISK_LIST);
    return 0;
  }
  state->records_read = 0;
  return 1;
}

int16_t inst_list_next(InstallState *state) {
  if (!state->list || state->records_read >= state->header.count) return 0;
  // The list is not written while it is read: its size is learnt once per rewind.
  int32_t at = ILST_HEADER_SIZE + state->records_read * (int32_t)ILST_RECORD_SIZE;
  if (list_size < 0 || list_size - at < ILST_RECORD_SIZE) return 0;
  unsigned char bytes[ILST_RECORD_SIZE];
  ListRecord *record = &state->record;
  if (!file_read(state->list, bytes, ILST_RECORD_SIZE) || !ilst_decode_record(bytes, record))
    return 0;
  state->records_read++;
  const char *bad = !name_ok(record->name, 0)        ? record->name
                    : !name_ok(record->stored, 0)    ? record->stored
                    : !name_ok(record->directory, 1) ? record->directory
                                                     : nullptr;
  if (bad) {
    // Control characters would reach the box as they are: show them as "?".
    char shown[ILST_NAME_MAX + 1];
    st_put(shown, sizeof shown, bad);
    for (char *c = shown; *c; c++)
      if ((unsigned char)*c < 32 || *c == 127) *c = '?';
    ErrorBoxF(TEXT_BAD_RECORD, shown);
    return -1;
  }
  return 1;
}

// Checks that the source holds disk current_disk by its identification file.
Flag DiskIdFile(InstallState *state) {
  char name[ILST_DISK_ID_NAME];
  char path[KX_PATH];
  if (current_disk < 0 || !ilst_disk_id_name((uint16_t)current_disk, name) ||
      !st_join(path, sizeof path, state->source_path, name) || !file_exists(path)) {
    ErrorBox("Nesprávná disketa");
    return 0;
  }
  FileObject *file = nullptr;
  if (!file_create(&file, path)) return 0;
  if (!file_open(file, FILE_READ_TEXT)) {
    file_destroy(&file);
    return 0;
  }
  Flag ok = 1;
  char line[LINE_SIZE];
  while (file_read_line(file, line, sizeof line)) {
    char keyword[LINE_SIZE];
    if (!SplitFirstWord(line, keyword, sizeof keyword)) continue;
    if (strcmp(keyword, "DISK:") == 0) {
      int number = atoi(line);
      if (number != current_disk + 1) {
        ErrorBoxF("Nesprávné pořadové číslo diskety (%d)", number);
        ok = 0;
      }
      continue;
    }
    ErrorBoxF("Neznámé klíčové slovo v souboru %s", path);
    file_destroy(&file);
    return 0;
  }
  file_destroy(&file);
  return ok;
}

// ---- Subdirectories made sure of ---------------------------------------------------------------

namespace {

enum { KNOWN_DIRECTORIES = 64 };
struct KnownDirectory {
  char name[ILST_NAME_MAX + 1];
  Flag made;
};
KnownDirectory known_directories[KNOWN_DIRECTORIES];
int known_count = 0;

}  // namespace

void inst_list_forget_directories(void) { known_count = 0; }

void inst_list_know_directory(const char *directory, Flag made) {
  if (known_count >= KNOWN_DIRECTORIES || strlen(directory) > ILST_NAME_MAX) return;
  KnownDirectory &entry = known_directories[known_count++];
  st_put(entry.name, sizeof entry.name, directory);
  st_upper(entry.name);
  entry.made = made;
}

Flag inst_list_known_directory(const char *directory, Flag *made) {
  char upper[ILST_NAME_MAX + 1];
  st_put(upper, sizeof upper, directory);
  st_upper(upper);
  for (int i = 0; i < known_count; i++)
    if (strcmp(known_directories[i].name, upper) == 0) {
      if (made) *made = known_directories[i].made;
      return 1;
    }
  return 0;
}
