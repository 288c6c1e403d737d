// ulw.h - the writer of UNINST.LST: the records of everything an install makes, each in the file
// before the install goes on. The record bytes are the list module's (lists/ilst.h).
//
// Flush and room: every record is written at the place after the list's whole records (a torn
// record that a full disk left is written over) and the stream flushed. While room is held (see
// ulw_hold_room) the list ends with three copies of one reserved record beyond its last real
// record: each new record writes over the first of them and puts them all back behind itself,
// so records written into the room (ulw_record_in_room) need no new room on a full disk. After a
// failed write the list is closed and opened again so that the next record starts on a clean
// stream. On close the file is cut back to its whole records.
#ifndef KX_ULW_H
#define KX_ULW_H

#include "common/co.h"
#include "lists/ilst.h"

struct FileObject;

enum { ULW_ROOM_RECORDS = 3 };

struct UninstallWriter {
  FileObject *file;  // null while the list is not open
  int32_t count;     // whole records in the file: the next goes to this place
  Flag room;         // room is held after the last record
  unsigned char room_record[ILST_UNINSTALL_SIZE];
  char path[KX_PATH];  // the list's full path, for reopening and cutting
};

void ulw_open(UninstallWriter *writer);
// Closes the writer's list if open, then opens UNINST.LST in the current directory by its full
// path: an existing list is kept and written on after its whole records, a missing one is
// created. When it can't be opened the writer stays closed (records are then not written).

void ulw_close(UninstallWriter *writer);
// Gives up the room, closes the list and cuts it to its whole records. Nothing when closed.

Flag ulw_record(UninstallWriter *writer, uint16_t kind, const char *path);
// Appends one record of kind (UNINST_*) with path (cut at 1023 characters) and flushes it.
// 1 when it is in the file or the list is not open; 0 when the disk did not take it (the file
// layer has shown its message; the next record is written over it).

Flag ulw_record_in_room(UninstallWriter *writer, uint16_t kind, const char *path);
// As ulw_record, but into the room held: the room is not put back behind it.

Flag ulw_hold_room(UninstallWriter *writer, uint16_t kind, const char *path);
// Holds room after the last record: ULW_ROOM_RECORDS copies of the record (kind, path) are
// written after it and flushed. 1 when held (or the list is not open).

void ulw_release_room(UninstallWriter *writer);
// Stops holding room: the next record writes over it, and closing cuts it off.

// ---- The install's list ----------------------------------------------------------------------

extern UninstallWriter inst_uninstall;
// The install's UNINST.LST: the procedure opens it at its step 4 and closes it after the run;
// RecordInstalledFile and the other Record* calls of inst.h write to it.

void ulw_record_path(char *whole, const char *path, const char *part2, const char *part3);
// The path of a file record into whole (KX_PATH bytes): path, and each further non-empty part
// after a "\" (added only where the text so far does not end in one), cut at KX_PATH - 1.

#endif
