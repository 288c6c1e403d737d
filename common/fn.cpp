// fn.cpp - file names and paths (see fn.h).
#include "common/fn.h"

#include "common/fe.h"
#include "common/we.h"
#include "platform/fn_plat.h"

#include <string.h>

#define MODULE "fn"

namespace {

// Copies n characters of text into target (KX_PATH bytes), cut to fit, terminated.
void put_part(char *target, const char *text, size_t n) {
  if (!target) return;
  if (n > KX_PATH - 1) n = KX_PATH - 1;
  memcpy(target, text, n);
  target[n] = 0;
}

// Appends text to target (KX_PATH bytes, terminated), cut to fit.
void append(char *target, const char *text) {
  size_t n = strlen(target);
  while (*text && n < KX_PATH - 1) target[n++] = *text++;
  target[n] = 0;
}

// The splitter's cut points: the drive is [0, dir), the directory [dir, name), the name
// [name, ext), the extension [ext, end).
struct Cuts {
  size_t dir, name, ext, end;
};

Cuts cut_path(const char *path) {
  Cuts c;
  c.end = strlen(path);
  c.dir = (path[0] && path[1] == ':') ? 2 : 0;
  c.name = c.dir;
  for (size_t i = c.dir; i < c.end; i++)
    if (path[i] == '\\' || path[i] == '/') c.name = i + 1;
  c.ext = c.end;
  for (size_t i = c.name; i < c.end; i++)
    if (path[i] == '.') c.ext = i;
  return c;
}

void upper_ascii(char *text) {
  for (; *text; text++)
    if (*text >= 'a' && *text <= 'z') *text = (char)(*text - 'a' + 'A');
}

bool dropped_from_source(char c) { return c && strchr(".\\/*?:|~,; ", c) != nullptr; }

}  // namespace

Flag path_split_parts(const char *path, char *drive, char *directory, char *name, char *extension) {
  if (!path) {
    InternalError(MODULE, __LINE__);
    put_part(drive, "", 0);
    put_part(directory, "", 0);
    put_part(name, "", 0);
    put_part(extension, "", 0);
    return 0;
  }
  Cuts c = cut_path(path);
  put_part(drive, path, c.dir);
  put_part(directory, path + c.dir, c.name - c.dir);
  put_part(name, path + c.name, c.ext - c.name);
  put_part(extension, path + c.ext, c.end - c.ext);
  return 1;
}

Flag path_merge_parts(char *path, const char *drive, const char *directory, const char *name,
                      const char *extension) {
  if (!path) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  // The parts may lie in path itself: build in a buffer of our own.
  char merged[KX_PATH];
  merged[0] = 0;
  if (drive && drive[0]) {
    char d[3] = {drive[0], ':', 0};
    append(merged, d);
  }
  if (directory && directory[0]) {
    append(merged, directory);
    char last = directory[strlen(directory) - 1];
    if (last != '\\' && last != '/') append(merged, "\\");
  }
  if (name) append(merged, name);
  if (extension && extension[0]) {
    if (extension[0] != '.') append(merged, ".");
    append(merged, extension);
  }
  memcpy(path, merged, strlen(merged) + 1);
  return 1;
}

Flag path_join(char *name, const char *directory) {
  if (!name || !directory) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  if (!directory[0]) return 0;
  char joined[KX_PATH];
  put_part(joined, directory, strlen(directory));
  if (directory[strlen(directory) - 1] != '\\') append(joined, "\\");
  append(joined, name);
  memcpy(name, joined, strlen(joined) + 1);
  return 1;
}

Flag path_split(const char *path, char *directory, char *name) {
  if (!path || !directory || !name) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  Cuts c = cut_path(path);
  // Into buffers of our own first: the outputs may overlap the path.
  char dir[KX_PATH], file[KX_PATH];
  put_part(dir, path, c.name);
  size_t n = strlen(dir);
  if (n > 0 && dir[n - 1] == '\\' && c.name <= KX_PATH - 1) dir[n - 1] = 0;
  put_part(file, path + c.name, c.end - c.name);
  memcpy(directory, dir, strlen(dir) + 1);
  memcpy(name, file, strlen(file) + 1);
  return 1;
}

Flag same_directory(const char *path, const char *directory) {
  if (!path || !directory) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  char part[KX_PATH], name[KX_PATH], given[KX_PATH];
  path_split(path, part, name);
  put_part(given, directory, strlen(directory));
  size_t n = strlen(given);
  if (n > 0 && given[n - 1] == '\\') given[n - 1] = 0;
  upper_ascii(part);
  upper_ascii(given);
  return strlen(part) == strlen(given) && strcmp(part, given) == 0 ? 1 : 0;
}

Flag name_from_pattern(const char *pattern, const char *source, char *result) {
  if (!pattern || !source || !result) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  char cleaned[KX_PATH];
  size_t n = 0;
  for (const char *p = source; *p && n < KX_PATH - 1; p++)
    if (!dropped_from_source(*p)) cleaned[n++] = *p;
  cleaned[n] = 0;

  const char *slash = strrchr(pattern, '\\');
  size_t prefix_length = slash ? (size_t)(slash - pattern) + 1 : 0;
  const char *name_pattern = pattern + prefix_length;
  const char *star = strchr(name_pattern, '*');

  char made[KX_PATH];
  if (!star) {
    put_part(made, pattern, strlen(pattern));
  } else {
    // Room for all three pieces, so that a long source cannot push the pattern's extension
    // out; the name is cut to 8 characters below anyway.
    char name[3 * KX_PATH];
    size_t before = (size_t)(star - name_pattern);
    if (before > KX_PATH - 1) before = KX_PATH - 1;
    memcpy(name, name_pattern, before);
    name[before] = 0;
    strcat(name, cleaned);
    strncat(name, star + 1, KX_PATH - 1);
    char extension[4] = "";
    const char *ext = name_extension(name);
    bool had_dot = ext != nullptr;
    if (ext) {
      size_t k = 0;
      while (k < 3 && ext[k]) k++;
      put_part(extension, ext, k);
    }
    name_cut_extension(name);
    if (strlen(name) > 8) name[8] = 0;
    put_part(made, pattern, prefix_length);
    append(made, name);
    if (had_dot && !strchr(name, '.')) {
      append(made, ".");
      append(made, extension);
    }
  }

  // Relative to the current directory: "X:\" + that drive's directory + "\".
  char letter = 0, directory[KX_PATH];
  if (fn_plat_current_directory(&letter, directory, sizeof directory)) {
    char prefix[KX_PATH + 8] = {letter, ':', '\\', 0};
    size_t d = strlen(directory);
    memcpy(prefix + 3, directory, d);
    prefix[3 + d] = '\\';
    prefix[4 + d] = 0;
    size_t p = strlen(prefix);
    if (strncmp(made, prefix, p) == 0) memmove(made, made + p, strlen(made + p) + 1);
  }
  memcpy(result, made, strlen(made) + 1);
  return 1;
}

Flag path_normalise(char *path) {
  if (!path) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  char drive[KX_PATH], directory[KX_PATH], name[KX_PATH], extension[KX_PATH];
  path_split_parts(path, drive, directory, name, extension);
  return path_merge_parts(path, drive, directory, name, extension);
}
