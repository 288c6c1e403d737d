// inst_plat.h - what the installer and the suite's start-up need of the platform. The Windows
// half (inst_win32.cpp) calls kernel32 / shell32; the native half (inst_host.cpp) works on the
// Linux file system with a few test controls, so that the procedure can be tested natively.
// No function here shows a message: callers report.
#ifndef KX_INST_PLAT_H
#define KX_INST_PLAT_H

#include "common/co.h"

#include <stdint.h>

Flag plat_drive_ready(const char *drive);
// drive "C:" (two characters): 1 when the drive exists and is ready.
Flag plat_free_space(const char *drive, uint32_t *free_clusters, uint32_t *sectors_per_cluster,
                     uint32_t *bytes_per_sector);
// GetDiskFreeSpaceA of the drive's root. 0 on failure.
Flag plat_change_directory(const char *path);  // SetCurrentDirectoryA; 1 on success
Flag plat_make_directory(const char *path);    // CreateDirectoryA; 1 on success
Flag plat_remove_directory(const char *path);  // RemoveDirectoryA (empty only); 1 on success
// A null path gives 0 in all three. Natively the drive letter of a path given in drive form
// becomes the drive that "\..." paths lie on.
Flag plat_current_directory(char *buffer, int32_t size);
// The current directory in drive form ("C:\KORV5", "C:\" at a root) into buffer. 0 with an
// empty buffer when it does not fit into size bytes; 0 for a null buffer or a size below 1.
Flag plat_move_file(const char *from, const char *to);
// MoveFileA: 1 when moved; 0 when from is missing or to exists already (nothing is replaced).
Flag plat_move_file_over(const char *from, const char *to);
// MoveFileExW with MOVEFILE_REPLACE_EXISTING: as plat_move_file, but a file at to is replaced
// (the end is that of deleting it first, without a second search for the name).
// A file written by the installer and kept open so that it can be moved by its handle: the
// move then needs no second open of the file (each open is a round trip to the Wine server).
// Windows: a kernel32 handle with delete access; natively a descriptor and the native path.
struct PlatFile {
  intptr_t handle;  // -1 while not open
  char path[2 * KX_PATH + 16];
};

Flag plat_file_create_new(PlatFile *file, const char *path);
// Creates path as a new file for writing (CreateFileW, CREATE_NEW: 0 when it exists) and keeps
// it open in *file. 1 when open; 0 (file->handle -1, nothing shown) when it can't be created.
Flag plat_file_write(PlatFile *file, const void *data, uint32_t count);
// Writes count bytes at the file's end. 1 when all are written; 0 (what fitted stays) else.
Flag plat_file_rename(PlatFile *file, const char *to);
// Moves the open file to the path to (full, in drive form), replacing a file there, as
// plat_move_file_over. 1 when moved; 0 when not (the file stays where it is, open).
Flag plat_file_delete(PlatFile *file);
// Deletes the open file: it goes when it is closed, which this does. 1 when gone; 0 when it
// could not be marked (the file is still open and stays).
void plat_file_close(PlatFile *file);
// Closes the file when it is open; the handle is -1 afterwards.

Flag plat_real_case(const char *path, char *buffer, int32_t size);
// The existing path as the file system spells it (GetLongPathNameW: every component with the
// case of its directory entry) into buffer, so that opening it needs no case-blind search of
// each directory on a system whose names are case-sensitive (Wine). 0, with path copied as it
// is (cut to size), when it can't be looked up or does not fit; 0 for a null path or buffer
// or a size below 1. Natively the path is copied as it is (1 when it fits).
Flag plat_truncate_file(const char *path, int32_t size);
// Cuts the file at path to size bytes (0 <= size <= its length); 1 on success, 0 when the file
// can't be opened for writing or cut.
Flag plat_directory_exists(const char *path);
// 1 when path (with or without a trailing "\") names a directory; 0 otherwise.
Flag plat_run_and_wait(const char *program, const char *argument, const char *directory,
                       int32_t *exit_code);
// Starts program with argv[1] = argument (null: none) in directory (null: the current one) and
// waits for it to end. 0 when it could not be started; else 1 and *exit_code set.
Flag plat_library_present(const char *name);
// LoadLibraryA + FreeLibrary: 1 when the library loads.
void plat_sleep(int32_t milliseconds);
Flag plat_windows_platform(int32_t *platform_id);
// GetVersionExA's dwPlatformId (0 = Win32s). Native: 2.
Flag plat_program_path(char *buffer, int32_t size);
// The running program's own full path (GetModuleFileNameA).

// ---- For tests only ------------------------------------------------------------------------
// Both builds: replaces what plat_free_space reports for every drive (active 0: the real
// figures again). Product code never calls this.
void plat_test_set_free_space(Flag active, uint32_t free_clusters, uint32_t sectors_per_cluster,
                              uint32_t bytes_per_sector);

// Native build only (inst_host.cpp). Paths in drive form ("C:\KORV5\EXE") are mapped to native
// ones: with no root set "X:\a\b" is "/a/b" (the drive's root is "/", as the file-name module
// takes it); with a root set it is root + "/X/a/b". A path that starts with "\" lies on the
// drive last entered with plat_change_directory (C: at first); other relative paths have their
// "\" turned into "/"; a path that starts with "/" is native already and stays as it is.
#ifndef KX_WIN32
void inst_host_set_root(const char *directory);
// Native directory holding one directory per drive letter; null or "" switches the root off.
void inst_host_set_drive_ready(char letter, Flag ready);
// Which drives plat_drive_ready reports as ready: at first only C:.
void inst_host_reset(void);
// Root off, only C: ready, real free space, no fake libraries, real sleeping, sleep total 0.
Flag inst_host_native_path(const char *path, char *buffer, int32_t size);
// The native form of path into buffer (size bytes). 0 when it does not fit (buffer "") or path
// is null.
void inst_host_set_library(const char *name, Flag present);
// plat_library_present answers present for name (compared without case) instead of trying
// dlopen; up to 8 names. A null name forgets all of them.
void inst_host_fake_sleep(Flag fake);
// 1: plat_sleep only adds to inst_host_slept and returns at once.
extern int32_t inst_host_slept;  // milliseconds asked of plat_sleep since the last reset
#endif

#endif
