// ulst.cpp - reading UNINST.LST record by record.
#include "tools/suite/ulst.h"

#include "common/we.h"

const char ULST_NAME[] = "UNINST.LST";

Flag ulst_open(UninstallList *list, const char *path) {
  if (list == nullptr || path == nullptr) {
    InternalError("ulst", __LINE__);
    return 0;
  }
  list->file = nullptr;
  list->count = 0;
  list->tail = 0;
  if (!file_exists(path)) {
    ErrorBoxF("Chybná cesta/soubor nenalezen: %s", path);
    return 0;
  }
  FileObject *file = nullptr;
  if (!file_create(&file, path)) return 0;
  if (!file_open(file, FILE_READ_BINARY)) {
    file_destroy(&file);
    return 0;
  }
  int32_t size = file_size(file);
  if (size < 0) {
    file_destroy(&file);
    return 0;
  }
  list->file = file;
  list->count = size / ILST_UNINSTALL_SIZE;
  list->tail = size % ILST_UNINSTALL_SIZE;
  return 1;
}

Flag ulst_read(UninstallList *list, int32_t index, UninstallRecord *record) {
  if (list == nullptr || record == nullptr || list->file == nullptr || index < 0 ||
      index >= list->count) {
    InternalError("ulst", __LINE__);
    return 0;
  }
  if (!file_seek(list->file, index * ILST_UNINSTALL_SIZE, FILE_FROM_START)) return 0;
  unsigned char bytes[ILST_UNINSTALL_SIZE];
  if (!file_read(list->file, bytes, ILST_UNINSTALL_SIZE)) return 0;
  return ilst_decode_uninstall(bytes, record);
}

Flag ulst_close(UninstallList *list) {
  if (list == nullptr) {
    InternalError("ulst", __LINE__);
    return 0;
  }
  if (list->file != nullptr) file_destroy(&list->file);
  list->file = nullptr;
  return 1;
}
