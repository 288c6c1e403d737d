// medium_plat.h - what the medium builder needs of the platform (medium_win32.cpp on Windows,
// medium_host.cpp elsewhere): directories and the code page of file names. Internal to the tool.
#ifndef KX_MEDIUM_PLAT_H
#define KX_MEDIUM_PLAT_H

#include "common/co.h"

// Kinds of directory entries and paths.
enum { MEDIUM_MISSING = 0, MEDIUM_FILE = 1, MEDIUM_DIRECTORY = 2, MEDIUM_OTHER = 3 };

// The separator of native paths: '/' or '\'.
extern const char medium_plat_separator;

// Called for every entry of a directory but "." and "..": its native name, kind and size in
// bytes (files only). Returning 0 stops the listing.
typedef Flag (*MediumEntry)(void *context, const char *name, int16_t kind, uint64_t size);

int16_t medium_plat_scan(const char *directory, MediumEntry entry, void *context);
// Lists directory in no particular order. Returns 1 when every entry was handed over, 0 when
// the directory cannot be read, -1 when entry stopped the listing.

int16_t medium_plat_kind(const char *path);
// MEDIUM_MISSING, MEDIUM_FILE, MEDIUM_DIRECTORY or MEDIUM_OTHER (links are followed).

Flag medium_plat_make_directory(const char *path);
// Makes the directory (its parent must exist). Returns 1 when made, else 0.

Flag medium_plat_to_cp1250(const char *native, char *text, size_t size);
// Converts a native name (UTF-8 on the native build; Windows-1250 already on Windows, where the
// names come through the wide calls and one that 1250 cannot hold comes with "?") to
// Windows-1250 into text (size bytes). Returns 1; 0 when the name is not valid in its code page,
// holds a character that Windows-1250 lacks, or does not fit.

// ---- For the release steps (release.cpp) --------------------------------------------------

Flag medium_plat_scratch_directory(char *path, size_t size);
// Makes a new empty directory of its own under the system's directory for temporary files and
// puts its path (size bytes) into path. Returns 1; 0 when none could be made.

void medium_plat_remove_tree(const char *path);
// Removes the file or directory path with everything below it, read-only files too; what
// cannot be removed stays, without a message.

Flag medium_plat_quote(const char *text, char *quoted, size_t size);
// text as one word of the command interpreter (sh: in single quotes; Windows: in double
// quotes). Returns 1; 0 when it does not fit into size bytes or cannot be quoted (a double
// quote on Windows).

int medium_plat_run(const char *command);
// Runs command through the command interpreter and waits for it. Returns its exit code; -1
// when it could not be run or ended by a signal.

#endif
