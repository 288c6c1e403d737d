// inst_list.h - the installer's reading of its medium: DISKLIST.LST record by record into the
// install state, and the disk identification files (DiskIdFile, declared in inst.h). The bytes
// are the list module's (lists/ilst.h); this module opens, seeks and checks. Internal error
// reports carry the name "inst".
#ifndef KX_INST_LIST_H
#define KX_INST_LIST_H

#include "common/co.h"

struct InstallState;

extern const char INST_DISK_LIST[];       // "DISKLIST.LST"
extern const char INST_TEXT_NOT_FOUND[];  // "Chybná cesta/soubor nenalezen: %s"

Flag inst_list_rewind(InstallState *state);
// Opens DISKLIST.LST from the current directory when state->list is not open yet, seeks to the
// start and reads the header into state->header; no record read yet. 1; 0 after the message
// "Chybná cesta/soubor nenalezen: DISKLIST.LST" (missing, unreadable or shorter than a header).

int16_t inst_list_next(InstallState *state);
// Reads the next record into state->record. 1: a record; 0: the end of the list (the header's
// count is reached, or a whole record is not there); -1: a record whose name, stored name or
// directory may not be joined to a path (empty, a separator, a drive colon, "..", a control
// character; the directory may be "."), after the message "Chybný záznam v seznamu souborů: %s"
// with control characters shown as "?".

void inst_list_close(InstallState *state);
// Closes DISKLIST.LST if it is open. A null state is ignored.

Flag inst_list_is_root(const char *directory);
// 1 when the record's directory field names the target directory itself (".").

// The subdirectories that the directory step has made sure of in this run, upper-cased, and
// whether it made them itself. A directory is then not entered again for each further file of
// it, and the overwrite check knows that no file can exist yet in one the step made (nothing is
// put into the target in between). A directory that does not fit in the table (64 of them) is
// simply not known, and dealt with as any other.

void inst_list_forget_directories(void);
// Empties the table (the start of the directory step).

void inst_list_know_directory(const char *directory, Flag made);
// Adds directory (compared without case) with made: 1 when the step made it itself.

Flag inst_list_known_directory(const char *directory, Flag *made);
// 1 when directory is in the table, with its flag in *made unless made is null; 0 otherwise.

#endif
