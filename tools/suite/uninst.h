// uninst.h - the uninstaller's work: removes what UNINST.LST records, and nothing else.
//
// The records are taken from the last to the first:
//   kind 0 (file)        the file is deleted; a file already gone is passed over;
//   kind 1 (directory)   the directory is removed when it is empty, else it stays;
//   kind 2, 3 (key)      the key under HKEY_CLASSES_ROOT, resp. HKEY_LOCAL_MACHINE, is deleted
//                        when it has no sub-keys left, else it stays;
//   other kinds          passed over.
// A directory or key can only go once what it holds is gone, and the installer records a
// directory before the files in it and a parent key after its sub-keys; so after the first
// walk the directory and key records are walked again, as long as a walk removes something.
// Whatever the list does not name stays: a user's file keeps its directory, a key that gained
// a sub-key of its own keeps it and its parents.
//
// At the end UNINST.LST itself is deleted, and then the installation root, when the list
// records it and it is empty. When a file could not be deleted the list is kept, so that the
// uninstall can be run again.
#ifndef KX_UNINST_H
#define KX_UNINST_H

#include "common/co.h"

// Exit codes of UNINSTAL.EXE.
enum {
  UNINSTALL_DONE = 0,       // everything recorded that could go is gone
  UNINSTALL_NO_LIST = 1,    // UNINST.LST missing or unreadable (message shown)
  UNINSTALL_CANCELLED = 2,  // the user answered No to the question
  UNINSTALL_INCOMPLETE = 3  // some files could not be deleted (message shown)
};

struct UninstallCounts {
  int32_t files;            // files deleted
  int32_t directories;      // directories removed
  int32_t keys;             // registry keys deleted
  int32_t kept;             // directory and key records whose item still held something after
                            // the walks (UNINST.LST keeps the root until the very end)
  int32_t failed;           // files that exist but could not be deleted
  char first_failed[1024];  // the first of them
  char failed_text[800];    // each of them with its reason, one a line ("path (reason)"),
                            // as many as fit; "..." when more did not
};

// Called for a file that could not be deleted; returns 1 when it will go later (the running
// uninstaller's own program, for example), so that it does not count as failed.
typedef Flag (*UninstallLater)(const char *path);

// Says why path could not be deleted, into why (size bytes), as the user should read it (for
// example "soubor je používán"). Set by the program; without it the reason is "nelze smazat".
typedef void (*UninstallWhy)(const char *path, char *why, size_t size);
void uninstall_set_why(UninstallWhy why);

int16_t uninstall_run(const char *root, Flag ask, UninstallLater later, UninstallCounts *counts);
// Uninstalls the installation whose root directory (with its trailing separator) is root:
//   1. root + "UNINST.LST" is opened (ulst_open; its messages). Failure: UNINSTALL_NO_LIST.
//   2. With ask set: QuestionBoxF "Má být odstraněna instalace KORVEX z adresáře %s ?" (root);
//      No (or closed): UNINSTALL_CANCELLED, nothing changed.
//   3. The current directory moves to root's parent, so that no removal trips over it.
//   4. The records are removed as above. A record that can't be read ends the walks there
//      (the file layer's message), the list is kept and the result is UNINSTALL_NO_LIST.
//   5. Files that could not be deleted (and that later did not take): ErrorBox "Nelze smazat
//      %d soubor(ů):" with failed_text on the next lines, and UNINSTALL_INCOMPLETE; UNINST.LST
//      stays. Each such file also goes to the log (common/log.h) with its reason.
//   6. Otherwise UNINST.LST is deleted, the root removed as said above; with ask set the notice
//      "Instalace KORVEX byla odstraněna." is shown; UNINSTALL_DONE.
// counts (may be null) gets what was done. A null root is InternalError("uninst"):
// UNINSTALL_NO_LIST.

#endif
