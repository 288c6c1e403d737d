// inst_plat.h - what the installer and the suite's start-up need of the platform. The Windows
// half (inst_win32.cpp) calls kernel32 / shell32; the native half (inst_host.cpp) works on the
// Linux file system with a few test controls, so that the procedure can be tested natively.
// No function here shows a message: callers report.
#ifndef KX_INST_PLAT_H
#define KX_INST_PLAT_H

#include "../common/co.h"

Flag plat_drive_ready(const char *drive);
// drive "C:" (two characters): 1 when the drive exists and is ready.
Flag plat_free_space(const char *drive, uint32_t *free_clusters, uint32_t *sectors_per_cluster,
                     uint32_t *bytes_per_sector);
// GetDiskFreeSpaceA of the drive's root. 0 on failure.
Flag plat_change_directory(const char *path);   // SetCurrentDirectoryA; 1 on success
Flag plat_make_directory(const char *path);     // CreateDirectoryA; 1 on success
Flag plat_remove_directory(const char *path);   // RemoveDirectoryA (empty only); 1 on success
Flag plat_current_directory(char *buffer, int32_t size);
Flag plat_move_file(const char *from, const char *to);
Flag plat_directory_exists(const char *path);
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

#endif
