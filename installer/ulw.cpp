// ulw.cpp - the UNINST.LST writer: one record at a time, flushed, with room held ahead.
#include "installer/ulw.h"

#include "common/file.h"
#include "common/log.h"
#include "common/st.h"
#include "common/we.h"
#include "installer/inst.h"
#include "platform/inst_plat.h"

#include <string.h>

static const char UNINSTALL_LIST_NAME[] = "UNINST.LST";

static Flag encode(uint16_t kind, const char *path, unsigned char *bytes) {
  UninstallRecord entry;
  entry.kind = kind;
  st_put(entry.path, sizeof entry.path, path);
  return ilst_encode_uninstall(&entry, bytes);
}

// Writes bytes (one record, or none) at the next place, then the room held, and hands it all
// to the system. After a failure the list is closed and opened again. 1 when the record is in
// the file (or there is no list), 0 after the file layer's message.
static Flag put(UninstallWriter *w, const unsigned char *bytes) {
  if (!w->file) return 1;
  Flag ok = file_seek(w->file, w->count * ILST_UNINSTALL_SIZE, FILE_FROM_START);
  if (ok && bytes) ok = file_write(w->file, bytes, ILST_UNINSTALL_SIZE);
  for (int i = 0; ok && w->room && i < ULW_ROOM_RECORDS; i++)
    ok = file_write(w->file, w->room_record, ILST_UNINSTALL_SIZE);
  if (ok) ok = file_flush(w->file);
  if (!ok) {
    file_close(w->file, 0);
    if (!file_open(w->file, FILE_UPDATE_BINARY)) {
      file_destroy(&w->file);
      return 0;
    }
  }
  if (ok && bytes) w->count++;
  return ok;
}

Flag ulw_record(UninstallWriter *w, uint16_t kind, const char *path) {
  if (!w->file) return 1;
  log_line("UNINST.LST: záznam %u %s", (unsigned)kind, path ? path : "");
  unsigned char bytes[ILST_UNINSTALL_SIZE];
  if (!encode(kind, path, bytes)) return 0;
  return put(w, bytes);
}

Flag ulw_record_in_room(UninstallWriter *w, uint16_t kind, const char *path) {
  Flag room = w->room;
  w->room = 0;
  Flag ok = ulw_record(w, kind, path);
  w->room = room;
  return ok;
}

Flag ulw_hold_room(UninstallWriter *w, uint16_t kind, const char *path) {
  if (!w->file) return 1;
  w->room = encode(kind, path, w->room_record);
  return w->room ? put(w, nullptr) : 0;
}

void ulw_release_room(UninstallWriter *w) { w->room = 0; }

void ulw_close(UninstallWriter *w) {
  w->room = 0;
  if (!w->file) return;
  int32_t size = file_size(w->file);
  file_destroy(&w->file);
  if (size > w->count * ILST_UNINSTALL_SIZE)
    plat_truncate_file(w->path, w->count * ILST_UNINSTALL_SIZE);
}

void ulw_open(UninstallWriter *w) {
  ulw_close(w);
  w->count = 0;
  char here[KX_PATH];
  if (!plat_current_directory(here, KX_PATH) ||
      !st_join(w->path, sizeof w->path, here, here[0] && here[strlen(here) - 1] == '\\' ? "" : "\\",
               UNINSTALL_LIST_NAME))
    st_put(w->path, sizeof w->path, UNINSTALL_LIST_NAME);
  if (!file_create(&w->file, w->path)) return;
  Flag existing = file_exists(w->path);
  if (!file_open(w->file, existing ? FILE_UPDATE_BINARY : FILE_WRITE_BINARY)) {
    file_destroy(&w->file);
    return;
  }
  int32_t size = file_size(w->file);
  if (size < 0) {
    file_destroy(&w->file);
    return;
  }
  w->count = size / ILST_UNINSTALL_SIZE;
}

// ---- The install's list: the Record* calls of inst.h -------------------------------------------

UninstallWriter inst_uninstall;

static Flag record(uint16_t kind, const char *path) {
  ulw_record(&inst_uninstall, kind, path);
  return 1;
}

void ulw_record_path(char *whole, const char *path, const char *part2, const char *part3) {
  st_put(whole, KX_PATH, path);
  const char *parts[2] = {part2, part3};
  for (const char *part : parts) {
    if (!part || !part[0]) continue;
    size_t n = strlen(whole);
    if (n == 0 || whole[n - 1] != '\\') st_append(whole, KX_PATH, "\\");
    st_append(whole, KX_PATH, part);
  }
}

Flag RecordInstalledFile(const char *path, const char *part2, const char *part3) {
  if (!path) {
    InternalError("inst", __LINE__);
    return 1;
  }
  char whole[KX_PATH];
  ulw_record_path(whole, path, part2, part3);
  return record(UNINST_FILE, whole);
}

Flag RecordCreatedDirectory(const char *path) {
  if (!path) {
    InternalError("inst", __LINE__);
    return 1;
  }
  char directory[KX_PATH];
  st_put(directory, sizeof directory, path);
  size_t n = strlen(directory);
  if (n > 0 && directory[n - 1] == '\\') directory[n - 1] = 0;
  return record(UNINST_DIRECTORY, directory);
}

Flag RecordOtherItem(const char *key) {
  if (!key) {
    InternalError("inst", __LINE__);
    return 1;
  }
  return record(UNINST_CLASSES_KEY, key);
}

Flag RecordMachineKey(const char *key) {
  if (!key) {
    InternalError("inst", __LINE__);
    return 1;
  }
  return record(UNINST_MACHINE_KEY, key);
}
