// inst_host.cpp - the installer's platform half for the native build: drive paths are mapped to
// the Linux file system (see inst_plat.h), drive readiness, free space, libraries and sleeping
// can be set by tests, programs are started with fork and exec.
#include "platform/inst_plat.h"

#include <ctype.h>
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

int32_t inst_host_slept = 0;

namespace {

// Native paths have room for the root in front of a whole drive path.
enum { LIBRARY_FAKES = 8, LIBRARY_NAME = 64, NATIVE_PATH = 2 * KX_PATH + 16 };

char root[KX_PATH];
char ready_drives[27] = "C";
char current_drive = 'C';
Flag fake_sleep = 0;

Flag free_fake = 0;
uint32_t fake_clusters = 0, fake_sectors = 0, fake_bytes = 0;

struct LibraryFake {
  char name[LIBRARY_NAME];
  Flag present;
};
LibraryFake libraries[LIBRARY_FAKES];
int library_count = 0;

Flag append(char *buffer, int32_t size, int32_t *length, const char *text) {
  size_t n = strlen(text);
  if ((size_t)*length + n >= (size_t)size) return 0;
  memcpy(buffer + *length, text, n + 1);
  *length += (int32_t)n;
  return 1;
}

// Appends a native path with its '/' turned into '\'; on overflow the buffer is emptied.
Flag append_windows(char *buffer, int32_t size, int32_t *length, const char *native) {
  for (const char *c = native; *c; c++) {
    char one[2] = {*c == '/' ? '\\' : *c, 0};
    if (!append(buffer, size, length, one)) {
      buffer[0] = 0;
      return 0;
    }
  }
  return 1;
}

Flag drive_letter(const char *path, char *letter) {
  if (isalpha((unsigned char)path[0]) && path[1] == ':') {
    *letter = (char)toupper((unsigned char)path[0]);
    return 1;
  }
  return 0;
}

// Native path of a directory without its trailing "/" (but "/" stays "/").
Flag native_directory(const char *path, char *buffer, int32_t size) {
  if (!inst_host_native_path(path, buffer, size)) return 0;
  size_t n = strlen(buffer);
  while (n > 1 && buffer[n - 1] == '/') buffer[--n] = 0;
  return buffer[0] != 0;
}

}  // namespace

Flag inst_host_native_path(const char *path, char *buffer, int32_t size) {
  if (!buffer || size < 1) return 0;
  buffer[0] = 0;
  if (!path) return 0;
  int32_t length = 0;
  const char *rest = path;
  char letter = 0;
  Flag on_drive = 0;
  if (drive_letter(path, &letter)) {
    rest = path + 2;
    on_drive = 1;
  } else if (path[0] == '\\') {
    letter = current_drive;
    on_drive = 1;
  }
  if (on_drive) {
    if (root[0]) {
      char piece[4] = {'/', letter, 0, 0};
      if (!append(buffer, size, &length, root) || !append(buffer, size, &length, piece)) {
        buffer[0] = 0;
        return 0;
      }
    }
    // "C:" alone and "C:\" both name the drive's root.
    if (rest[0] != '\\' && rest[0] != '/' && !append(buffer, size, &length, "/")) {
      buffer[0] = 0;
      return 0;
    }
    if (!rest[0] && length > 1 && buffer[length - 1] == '/') buffer[--length] = 0;
  }
  for (const char *c = rest; *c; c++) {
    char one[2] = {*c == '\\' ? '/' : *c, 0};
    if (!append(buffer, size, &length, one)) {
      buffer[0] = 0;
      return 0;
    }
  }
  if (!buffer[0] && on_drive) return append(buffer, size, &length, "/");
  return buffer[0] ? 1 : 0;
}

void inst_host_set_root(const char *directory) {
  root[0] = 0;
  if (!directory) return;
  size_t n = strlen(directory);
  if (n >= sizeof root) return;
  memcpy(root, directory, n + 1);
  while (n > 1 && root[n - 1] == '/') root[--n] = 0;
}

void inst_host_set_drive_ready(char letter, Flag ready) {
  letter = (char)toupper((unsigned char)letter);
  if (letter < 'A' || letter > 'Z') return;
  char *at = strchr(ready_drives, letter);
  if (ready && !at) {
    size_t n = strlen(ready_drives);
    ready_drives[n] = letter;
    ready_drives[n + 1] = 0;
  } else if (!ready && at) {
    memmove(at, at + 1, strlen(at));
  }
}

void inst_host_reset(void) {
  root[0] = 0;
  strcpy(ready_drives, "C");
  current_drive = 'C';
  fake_sleep = 0;
  inst_host_slept = 0;
  free_fake = 0;
  library_count = 0;
}

void inst_host_set_library(const char *name, Flag present) {
  if (!name) {
    library_count = 0;
    return;
  }
  for (int i = 0; i < library_count; i++) {
    if (strcasecmp(libraries[i].name, name) == 0) {
      libraries[i].present = present;
      return;
    }
  }
  if (library_count >= LIBRARY_FAKES) return;
  snprintf(libraries[library_count].name, LIBRARY_NAME, "%s", name);
  libraries[library_count].present = present;
  library_count++;
}

void inst_host_fake_sleep(Flag fake) { fake_sleep = fake; }

void plat_test_set_free_space(Flag active, uint32_t free_clusters, uint32_t sectors_per_cluster,
                              uint32_t bytes_per_sector) {
  free_fake = active;
  fake_clusters = free_clusters;
  fake_sectors = sectors_per_cluster;
  fake_bytes = bytes_per_sector;
}

Flag plat_drive_ready(const char *drive) {
  char letter;
  if (!drive || !drive_letter(drive, &letter)) return 0;
  return strchr(ready_drives, letter) ? 1 : 0;
}

Flag plat_free_space(const char *drive, uint32_t *free_clusters, uint32_t *sectors_per_cluster,
                     uint32_t *bytes_per_sector) {
  if (!drive || !free_clusters || !sectors_per_cluster || !bytes_per_sector) return 0;
  if (free_fake) {
    *free_clusters = fake_clusters;
    *sectors_per_cluster = fake_sectors;
    *bytes_per_sector = fake_bytes;
    return 1;
  }
  char letter;
  if (!drive_letter(drive, &letter) || !plat_drive_ready(drive)) return 0;
  char rooted[4] = {letter, ':', '\\', 0};
  char native[NATIVE_PATH];
  if (!native_directory(rooted, native, sizeof native)) return 0;
  struct statvfs info;
  if (statvfs(native, &info) != 0) return 0;
  // Sectors of 512 bytes, clusters of the file system's fragment size; as GetDiskFreeSpaceA the
  // count is cut to 32 bits.
  uint64_t cluster = info.f_frsize ? info.f_frsize : 4096;
  uint64_t sectors = cluster / 512 ? cluster / 512 : 1;
  uint64_t clusters = (uint64_t)info.f_bavail;
  *free_clusters = clusters > 0xFFFFFFFFu ? 0xFFFFFFFFu : (uint32_t)clusters;
  *sectors_per_cluster = (uint32_t)sectors;
  *bytes_per_sector = 512;
  return 1;
}

Flag plat_change_directory(const char *path) {
  char native[NATIVE_PATH];
  if (!path || !native_directory(path, native, sizeof native)) return 0;
  if (chdir(native) != 0) return 0;
  char letter;
  if (drive_letter(path, &letter)) current_drive = letter;
  return 1;
}

Flag plat_make_directory(const char *path) {
  char native[NATIVE_PATH];
  if (!path || !native_directory(path, native, sizeof native)) return 0;
  return mkdir(native, 0777) == 0 ? 1 : 0;
}

Flag plat_remove_directory(const char *path) {
  char native[NATIVE_PATH];
  if (!path || !native_directory(path, native, sizeof native)) return 0;
  return rmdir(native) == 0 ? 1 : 0;
}

Flag plat_current_directory(char *buffer, int32_t size) {
  if (!buffer || size < 1) return 0;
  buffer[0] = 0;
  char full[NATIVE_PATH];
  if (!getcwd(full, sizeof full)) return 0;
  // Back into drive form: below the root "X:\...", elsewhere C: with "/" as the drive's root.
  const char *rest = full;
  char letter = 'C';
  size_t r = strlen(root);
  if (r && strncmp(full, root, r) == 0 && full[r] == '/' && isalpha((unsigned char)full[r + 1]) &&
      (full[r + 2] == '/' || full[r + 2] == 0)) {
    letter = full[r + 1];
    rest = full + r + 2;
  }
  int32_t length = 0;
  char drive[3] = {letter, ':', 0};
  if (!append(buffer, size, &length, drive)) return 0;
  if (!rest[0] && !append(buffer, size, &length, "\\")) {
    buffer[0] = 0;
    return 0;
  }
  return append_windows(buffer, size, &length, rest);
}

Flag plat_move_file(const char *from, const char *to) {
  char a[NATIVE_PATH], b[NATIVE_PATH];
  if (!from || !to || !inst_host_native_path(from, a, sizeof a) ||
      !inst_host_native_path(to, b, sizeof b))
    return 0;
  struct stat info;
  if (stat(b, &info) == 0) return 0;  // MoveFileA does not replace an existing file
  return rename(a, b) == 0 ? 1 : 0;
}

Flag plat_move_file_over(const char *from, const char *to) {
  char a[NATIVE_PATH], b[NATIVE_PATH];
  if (!from || !to || !inst_host_native_path(from, a, sizeof a) ||
      !inst_host_native_path(to, b, sizeof b))
    return 0;
  struct stat info;
  if (stat(b, &info) == 0 && S_ISDIR(info.st_mode)) return 0;  // a directory is not replaced
  return rename(a, b) == 0 ? 1 : 0;
}

Flag plat_file_create_new(PlatFile *file, const char *path) {
  file->handle = -1;
  if (!path || !inst_host_native_path(path, file->path, sizeof file->path)) return 0;
  int fd = open(file->path, O_WRONLY | O_CREAT | O_EXCL, 0644);
  if (fd < 0) return 0;
  file->handle = fd;
  return 1;
}

Flag plat_file_write(PlatFile *file, const void *data, uint32_t count) {
  const char *at = (const char *)data;
  while (count > 0) {
    ssize_t wrote = write((int)file->handle, at, count);
    if (wrote <= 0) return 0;
    at += wrote;
    count -= (uint32_t)wrote;
  }
  return 1;
}

Flag plat_file_rename(PlatFile *file, const char *to) {
  char native[NATIVE_PATH];
  if (file->handle == -1 || !to || !inst_host_native_path(to, native, sizeof native)) return 0;
  struct stat info;
  if (stat(native, &info) == 0 && S_ISDIR(info.st_mode)) return 0;
  if (rename(file->path, native) != 0) return 0;
  snprintf(file->path, sizeof file->path, "%s", native);
  return 1;
}

Flag plat_file_delete(PlatFile *file) {
  if (file->handle == -1 || unlink(file->path) != 0) return 0;
  plat_file_close(file);
  return 1;
}

void plat_file_close(PlatFile *file) {
  if (file->handle != -1) close((int)file->handle);
  file->handle = -1;
}

Flag plat_real_case(const char *path, char *buffer, int32_t size) {
  if (!path || !buffer || size < 1) return 0;
  return snprintf(buffer, (size_t)size, "%s", path) < size ? 1 : 0;
}

Flag plat_truncate_file(const char *path, int32_t size) {
  char native[NATIVE_PATH];
  if (!path || size < 0 || !inst_host_native_path(path, native, sizeof native)) return 0;
  return truncate(native, size) == 0 ? 1 : 0;
}

Flag plat_directory_exists(const char *path) {
  char native[NATIVE_PATH];
  if (!path || !native_directory(path, native, sizeof native)) return 0;
  struct stat info;
  return stat(native, &info) == 0 && S_ISDIR(info.st_mode) ? 1 : 0;
}

Flag plat_run_and_wait(const char *program, const char *argument, const char *directory,
                       int32_t *exit_code) {
  if (!program || !exit_code) return 0;
  char native[NATIVE_PATH], where[NATIVE_PATH];
  if (!inst_host_native_path(program, native, sizeof native)) return 0;
  if (directory && !native_directory(directory, where, sizeof where)) return 0;
  if (access(native, X_OK) != 0) return 0;
  // The child tells a failed exec through a pipe that closes on a successful one.
  int report[2];
  if (pipe2(report, O_CLOEXEC) != 0) return 0;
  pid_t child = fork();
  if (child < 0) {
    close(report[0]);
    close(report[1]);
    return 0;
  }
  if (child == 0) {
    close(report[0]);
    if ((directory && chdir(where) != 0)) {
      int e = errno;
      (void)!write(report[1], &e, sizeof e);
      _exit(127);
    }
    char *args[3] = {native, argument ? (char *)argument : nullptr, nullptr};
    execv(native, args);
    int e = errno;
    (void)!write(report[1], &e, sizeof e);
    _exit(127);
  }
  close(report[1]);
  int child_errno = 0;
  ssize_t got = read(report[0], &child_errno, sizeof child_errno);
  close(report[0]);
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {}
  if (got == (ssize_t)sizeof child_errno) return 0;
  *exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return 1;
}

Flag plat_library_present(const char *name) {
  if (!name) return 0;
  for (int i = 0; i < library_count; i++)
    if (strcasecmp(libraries[i].name, name) == 0) return libraries[i].present;
  void *library = dlopen(name, RTLD_LAZY | RTLD_LOCAL);
  if (!library) return 0;
  dlclose(library);
  return 1;
}

void plat_sleep(int32_t milliseconds) {
  if (milliseconds < 0) milliseconds = 0;
  inst_host_slept += milliseconds;
  if (fake_sleep) return;
  struct timespec wait = {milliseconds / 1000, (long)(milliseconds % 1000) * 1000000L};
  while (nanosleep(&wait, &wait) != 0 && errno == EINTR) {}
}

Flag plat_windows_platform(int32_t *platform_id) {
  if (!platform_id) return 0;
  *platform_id = 2;
  return 1;
}

Flag plat_program_path(char *buffer, int32_t size) {
  if (!buffer || size < 1) return 0;
  buffer[0] = 0;
  char full[NATIVE_PATH];
  ssize_t n = readlink("/proc/self/exe", full, sizeof full - 1);
  if (n <= 0) return 0;
  full[n] = 0;
  int32_t length = 0;
  if (!append(buffer, size, &length, "C:")) return 0;
  return append_windows(buffer, size, &length, full);
}
