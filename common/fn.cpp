// fn.cpp - file names and paths (see fn.h).
#include "common/fn.h"

#include "common/fe.h"
#include "common/st.h"
#include "common/we.h"
#include "platform/fn_plat.h"

#include <string.h>

#define MODULE "fn"

namespace {

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
    char *parts[] = {drive, directory, name, extension};
    for (char *part : parts)
      if (part) part[0] = 0;
    return 0;
  }
  Cuts c = cut_path(path);
  if (drive) st_put_part(drive, KX_PATH, path, c.dir);
  if (directory) st_put_part(directory, KX_PATH, path + c.dir, c.name - c.dir);
  if (name) st_put_part(name, KX_PATH, path + c.name, c.ext - c.name);
  if (extension) st_put_part(extension, KX_PATH, path + c.ext, c.end - c.ext);
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
    st_append(merged, KX_PATH, d);
  }
  if (directory && directory[0]) {
    st_append(merged, KX_PATH, directory);
    char last = directory[strlen(directory) - 1];
    if (last != '\\' && last != '/') st_append(merged, KX_PATH, "\\");
  }
  if (name) st_append(merged, KX_PATH, name);
  if (extension && extension[0]) {
    if (extension[0] != '.') st_append(merged, KX_PATH, ".");
    st_append(merged, KX_PATH, extension);
  }
  st_put(path, KX_PATH, merged);
  return 1;
}

Flag path_join(char *name, const char *directory) {
  if (!name || !directory) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  if (!directory[0]) return 0;
  char joined[KX_PATH];
  st_put(joined, KX_PATH, directory);
  if (directory[strlen(directory) - 1] != '\\') st_append(joined, KX_PATH, "\\");
  st_append(joined, KX_PATH, name);
  st_put(name, KX_PATH, joined);
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
  st_put_part(dir, KX_PATH, path, c.name);
  size_t n = strlen(dir);
  if (n > 0 && dir[n - 1] == '\\' && c.name <= KX_PATH - 1) dir[n - 1] = 0;
  st_put_part(file, KX_PATH, path + c.name, c.end - c.name);
  st_put(directory, KX_PATH, dir);
  st_put(name, KX_PATH, file);
  return 1;
}

Flag same_directory(const char *path, const char *directory) {
  if (!path || !directory) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  char part[KX_PATH], name[KX_PATH], given[KX_PATH];
  path_split(path, part, name);
  st_put(given, KX_PATH, directory);
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
    st_put(made, KX_PATH, pattern);
  } else {
    // Room for all three pieces, so that a long source cannot push the pattern's extension
    // out; the name is cut to 8 characters below anyway.
    char name[3 * KX_PATH];
    size_t before = (size_t)(star - name_pattern);
    if (before > KX_PATH - 1) before = KX_PATH - 1;
    st_put_part(name, sizeof name, name_pattern, before);
    st_append(name, sizeof name, cleaned);
    size_t used = strlen(name);
    st_put_part(name + used, sizeof name - used, star + 1, KX_PATH - 1);
    char extension[4] = "";
    const char *ext = name_extension(name);
    bool had_dot = ext != nullptr;
    if (ext) st_put_part(extension, sizeof extension, ext, 3);
    name_cut_extension(name);
    if (strlen(name) > 8) name[8] = 0;
    st_put_part(made, KX_PATH, pattern, prefix_length);
    st_append(made, KX_PATH, name);
    if (had_dot && !strchr(name, '.')) {
      st_append(made, KX_PATH, ".");
      st_append(made, KX_PATH, extension);
    }
  }

  // Relative to the current directory: "X:\" + that drive's directory + "\".
  char letter = 0, directory[KX_PATH];
  if (fn_plat_current_directory(&letter, directory, sizeof directory)) {
    const char drive[] = {letter, ':', '\\', 0};
    char prefix[KX_PATH + 8];
    st_join(prefix, sizeof prefix, drive, directory, "\\");
    size_t p = strlen(prefix);
    if (strncmp(made, prefix, p) == 0) memmove(made, made + p, strlen(made + p) + 1);
  }
  st_put(result, KX_PATH, made);
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
