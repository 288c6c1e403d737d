// inst_win32.cpp - the installer's platform half on Windows: kernel32 drives, directories,
// processes and libraries. Names go to the wide calls and come back through wtext (1250).
#include <windows.h>

#include "platform/inst_plat.h"
#include "platform/wtext.h"

#include <stddef.h>
#include <stdio.h>
#include <string.h>

namespace {

Flag free_fake = 0;
uint32_t fake_clusters = 0, fake_sectors = 0, fake_bytes = 0;

// "X:\" of a drive text "X:"; 0 when it is not one.
Flag drive_root(const char *drive, wchar_t root[4]) {
  if (!drive || !drive[0] || drive[1] != ':' || (unsigned char)drive[0] >= 0x80) return 0;
  root[0] = (wchar_t)drive[0];
  root[1] = L':';
  root[2] = L'\\';
  root[3] = 0;
  return 1;
}

// A 1250 path as the wide calls take it (one buffer per argument of a call).
struct Wide {
  wchar_t text[WTEXT_PATH];
  Flag ok;
  explicit Wide(const char *path) : ok(wtext_in(path, text, WTEXT_PATH)) {}
};

}  // namespace

void plat_test_set_free_space(Flag active, uint32_t free_clusters, uint32_t sectors_per_cluster,
                              uint32_t bytes_per_sector) {
  free_fake = active;
  fake_clusters = free_clusters;
  fake_sectors = sectors_per_cluster;
  fake_bytes = bytes_per_sector;
}

Flag plat_drive_ready(const char *drive) {
  wchar_t root[4];
  if (!drive_root(drive, root)) return 0;
  UINT type = GetDriveTypeW(root);
  if (type == DRIVE_NO_ROOT_DIR || type == DRIVE_UNKNOWN) return 0;
  // An empty floppy or CD drive exists but is not ready; ask it without the system's
  // "no disk" box.
  UINT previous = SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
  DWORD sectors, bytes, free_clusters, clusters;
  BOOL ok = GetDiskFreeSpaceW(root, &sectors, &bytes, &free_clusters, &clusters);
  SetErrorMode(previous);
  return ok ? 1 : 0;
}

Flag plat_free_space(const char *drive, uint32_t *free_clusters, uint32_t *sectors_per_cluster,
                     uint32_t *bytes_per_sector) {
  if (!free_clusters || !sectors_per_cluster || !bytes_per_sector) return 0;
  if (free_fake) {
    *free_clusters = fake_clusters;
    *sectors_per_cluster = fake_sectors;
    *bytes_per_sector = fake_bytes;
    return 1;
  }
  wchar_t root[4];
  if (!drive_root(drive, root)) return 0;
  DWORD sectors = 0, bytes = 0, available = 0, clusters = 0;
  UINT previous = SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
  BOOL ok = GetDiskFreeSpaceW(root, &sectors, &bytes, &available, &clusters);
  SetErrorMode(previous);
  if (!ok) return 0;
  *free_clusters = available;
  *sectors_per_cluster = sectors;
  *bytes_per_sector = bytes;
  return 1;
}

Flag plat_change_directory(const char *path) {
  Wide wide(path);
  return wide.ok && SetCurrentDirectoryW(wide.text) ? 1 : 0;
}

Flag plat_make_directory(const char *path) {
  Wide wide(path);
  return wide.ok && CreateDirectoryW(wide.text, nullptr) ? 1 : 0;
}

Flag plat_remove_directory(const char *path) {
  Wide wide(path);
  return wide.ok && RemoveDirectoryW(wide.text) ? 1 : 0;
}

Flag plat_current_directory(char *buffer, int32_t size) {
  if (!buffer || size < 1) return 0;
  buffer[0] = 0;
  wchar_t wide[WTEXT_PATH];
  DWORD n = GetCurrentDirectoryW(WTEXT_PATH, wide);
  if (n == 0 || n >= WTEXT_PATH) return 0;
  return wtext_out(wide, buffer, (size_t)size);
}

Flag plat_move_file(const char *from, const char *to) {
  Wide wide_from(from), wide_to(to);
  return wide_from.ok && wide_to.ok && MoveFileW(wide_from.text, wide_to.text) ? 1 : 0;
}

Flag plat_move_file_over(const char *from, const char *to) {
  Wide wide_from(from), wide_to(to);
  return wide_from.ok && wide_to.ok &&
                 MoveFileExW(wide_from.text, wide_to.text, MOVEFILE_REPLACE_EXISTING)
             ? 1
             : 0;
}

Flag plat_file_create_new(PlatFile *file, const char *path) {
  file->handle = -1;
  file->path[0] = 0;
  Wide wide(path);
  if (!wide.ok) return 0;
  HANDLE handle = CreateFileW(wide.text, GENERIC_WRITE | DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                              NULL, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, NULL);
  if (handle == INVALID_HANDLE_VALUE) return 0;
  file->handle = (intptr_t)handle;
  return 1;
}

Flag plat_file_write(PlatFile *file, const void *data, uint32_t count) {
  const char *at = (const char *)data;
  while (count > 0) {
    DWORD wrote = 0;
    if (!WriteFile((HANDLE)file->handle, at, count, &wrote, NULL) || wrote == 0) return 0;
    at += wrote;
    count -= wrote;
  }
  return 1;
}

namespace {

// ntdll's NtSetInformationFile with FileRenameInformation (10): kernel32 has no call that
// renames a file by a handle on every system this program runs on.
struct IoStatus {
  union {
    LONG status;
    void *pointer;
  };
  ULONG_PTR information;
};
struct RenameInformation {
  BOOLEAN replace;
  HANDLE root;
  ULONG length;  // bytes of name
  WCHAR name[WTEXT_PATH + 8];
};
typedef LONG(WINAPI *SetInformationFile)(HANDLE, IoStatus *, void *, ULONG, int);
const int FILE_RENAME_INFORMATION = 10, FILE_DISPOSITION_INFORMATION = 13;

SetInformationFile set_information(void) {
  static SetInformationFile call = (SetInformationFile)(void *)GetProcAddress(
      GetModuleHandleW(L"ntdll.dll"), "NtSetInformationFile");
  return call;
}

}  // namespace

Flag plat_file_delete(PlatFile *file) {
  if (!set_information() || file->handle == -1) return 0;
  BOOLEAN gone = TRUE;
  IoStatus io;
  memset(&io, 0, sizeof io);
  if (set_information()((HANDLE)file->handle, &io, &gone, sizeof gone,
                        FILE_DISPOSITION_INFORMATION) != 0)
    return 0;
  plat_file_close(file);
  return 1;
}

Flag plat_file_rename(PlatFile *file, const char *to) {
  Wide wide(to);
  if (!set_information() || file->handle == -1 || !wide.ok) return 0;
  RenameInformation info;
  memset(&info, 0, sizeof info);
  wcscpy(info.name, L"\\??\\");
  DWORD n = GetFullPathNameW(wide.text, WTEXT_PATH, info.name + 4, NULL);
  if (n == 0 || n >= WTEXT_PATH) return 0;
  info.replace = TRUE;
  info.length = (ULONG)((4 + n) * sizeof(WCHAR));
  IoStatus io;
  memset(&io, 0, sizeof io);
  return set_information()((HANDLE)file->handle, &io, &info,
                           (ULONG)(offsetof(RenameInformation, name) + info.length),
                           FILE_RENAME_INFORMATION) == 0
             ? 1
             : 0;
}

void plat_file_close(PlatFile *file) {
  if (file->handle != -1) CloseHandle((HANDLE)file->handle);
  file->handle = -1;
}

Flag plat_real_case(const char *path, char *buffer, int32_t size) {
  if (!path || !buffer || size < 1) return 0;
  snprintf(buffer, (size_t)size, "%s", path);
  Wide wide(path);
  wchar_t real[WTEXT_PATH];
  if (!wide.ok) return 0;
  DWORD n = GetLongPathNameW(wide.text, real, WTEXT_PATH);
  if (n == 0 || n >= WTEXT_PATH) return 0;
  char text[WTEXT_PATH];
  if (!wtext_out(real, text, sizeof text) || strlen(text) >= (size_t)size) return 0;
  strcpy(buffer, text);
  return 1;
}

Flag plat_truncate_file(const char *path, int32_t size) {
  Wide wide(path);
  if (!wide.ok || size < 0) return 0;
  HANDLE file = CreateFileW(wide.text, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, NULL,
                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, NULL);
  if (file == INVALID_HANDLE_VALUE) return 0;
  Flag ok = SetFilePointer(file, size, NULL, FILE_BEGIN) != INVALID_SET_FILE_POINTER &&
            SetEndOfFile(file);
  CloseHandle(file);
  return ok;
}

Flag plat_directory_exists(const char *path) {
  Wide wide(path);
  if (!wide.ok) return 0;
  DWORD attributes = GetFileAttributesW(wide.text);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) ? 1 : 0;
}

Flag plat_run_and_wait(const char *program, const char *argument, const char *directory,
                       int32_t *exit_code) {
  if (!program || !exit_code) return 0;
  // Argument 0 is the program's path in quotes, argument 1 follows after one blank.
  char command[2 * KX_PATH + 8];
  int n = argument ? snprintf(command, sizeof command, "\"%s\" %s", program, argument)
                   : snprintf(command, sizeof command, "\"%s\"", program);
  if (n < 0 || (size_t)n >= sizeof command) return 0;
  Wide wide_program(program), wide_directory(directory);
  wchar_t wide_command[2 * KX_PATH + 8];  // CreateProcessW may write into it
  if (!wide_program.ok || (directory && !wide_directory.ok) ||
      !wtext_in(command, wide_command, 2 * KX_PATH + 8))
    return 0;
  STARTUPINFOW start;
  memset(&start, 0, sizeof start);
  start.cb = sizeof start;
  PROCESS_INFORMATION process;
  memset(&process, 0, sizeof process);
  if (!CreateProcessW(wide_program.text, wide_command, nullptr, nullptr, FALSE, 0, nullptr,
                      directory ? wide_directory.text : nullptr, &start, &process))
    return 0;
  WaitForSingleObject(process.hProcess, INFINITE);
  DWORD code = 0;
  BOOL ok = GetExitCodeProcess(process.hProcess, &code);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  if (!ok) return 0;
  *exit_code = (int32_t)code;
  return 1;
}

Flag plat_library_present(const char *name) {
  Wide wide(name);
  if (!wide.ok) return 0;
  HMODULE library = LoadLibraryW(wide.text);
  if (!library) return 0;
  FreeLibrary(library);
  return 1;
}

void plat_sleep(int32_t milliseconds) { Sleep(milliseconds > 0 ? (DWORD)milliseconds : 0); }

Flag plat_windows_platform(int32_t *platform_id) {
  if (!platform_id) return 0;
  OSVERSIONINFOW version;
  memset(&version, 0, sizeof version);
  version.dwOSVersionInfoSize = sizeof version;
  if (!GetVersionExW(&version)) return 0;
  *platform_id = (int32_t)version.dwPlatformId;
  return 1;
}

Flag plat_program_path(char *buffer, int32_t size) {
  if (!buffer || size < 1) return 0;
  buffer[0] = 0;
  wchar_t wide[WTEXT_PATH];
  DWORD n = GetModuleFileNameW(nullptr, wide, WTEXT_PATH);
  if (n == 0 || n >= WTEXT_PATH) return 0;
  return wtext_out(wide, buffer, (size_t)size);
}
