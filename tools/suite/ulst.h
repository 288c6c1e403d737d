// ulst.h - reading UNINST.LST, the list of everything an install created (files, directories,
// registry keys), as the uninstaller walks it: record by record from either end.
//
// The list is a plain sequence of 1028-byte records (lists/ilst.h has the layout). It is
// opened through the file layer in binary-read mode and read by record number, so it can be
// walked backwards without holding it in memory. A short tail (a record cut off by a broken
// install) is not a record: count covers the whole records only.
#ifndef KX_ULST_H
#define KX_ULST_H

#include "common/co.h"
#include "common/file.h"
#include "lists/ilst.h"

extern const char ULST_NAME[];  // "UNINST.LST"

struct UninstallList {
  FileObject *file;  // open while the list is open; null otherwise
  int32_t count;     // whole records in the file
  int32_t tail;      // bytes after the last whole record (0 for a sound list)
};

Flag ulst_open(UninstallList *list, const char *path);
// Opens the list at path. A missing file: ErrorBoxF "Chybná cesta/soubor nenalezen: %s"
// (path), 0. A file that can't be opened or whose size can't be read: the file layer's message,
// 0. Otherwise 1 with count and tail set. list is reset first (file null, count 0). An empty
// file is a list of 0 records.
// 0 after InternalError("ulst") for a null list or path.

Flag ulst_read(UninstallList *list, int32_t index, UninstallRecord *record);
// Reads record number index (0 = the first written) and decodes it (ilst_decode_uninstall).
// Returns 1; 0 after the file layer's message when the read fails; 0 after InternalError for
// a null argument, a closed list, or an index outside 0..count-1.

Flag ulst_close(UninstallList *list);
// Closes and frees the file object; list->file becomes null. Returns 1; a list already closed
// is 1 too. 0 after InternalError for a null list.

#endif
