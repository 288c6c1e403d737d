// release.cpp - signing, CD and floppy images, and checking a medium or an image set (see
// release.h).
#include "tools/mkmedium/release.h"

#include "tools/mkmedium/medium_plat.h"
#include "tools/mkmedium/verify.h"

#include "common/mm.h"
#include "common/st.h"

#include <stdarg.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

namespace {

enum { COMMAND_SIZE = KX_PATH * 4 };

const char EPOCH_DEFAULT[] = "SOURCE_DATE_EPOCH=946684800";  // 2000-01-01 00:00:00 UTC

Flag fail(MediumResult *result, const char *format, ...) KX_PRINTF(2, 3);
Flag fail(MediumResult *result, const char *format, ...) {
  va_list args;
  va_start(args, format);
  vsnprintf(result->message, sizeof result->message, format, args);
  va_end(args);
  return 0;
}

Flag join(char *path, const char *directory, const char *name) {
  int n = snprintf(path, KX_PATH, "%s%c%s", directory, medium_plat_separator, name);
  return n > 0 && n < KX_PATH;
}

// The fixed date of every image: SOURCE_DATE_EPOCH, set to ours when the caller has none, and
// its text for xorriso (YYYYMMDDhhmmsscc, UTC).
void image_date(char *text, size_t size) {
  const char *epoch = getenv("SOURCE_DATE_EPOCH");
  if (!epoch || !*epoch) {
    putenv((char *)EPOCH_DEFAULT);
    epoch = strchr(EPOCH_DEFAULT, '=') + 1;
  }
  time_t t = (time_t)strtoll(epoch, nullptr, 10);
  struct tm *tm = gmtime(&t);
  if (!tm) snprintf(text, size, "2000010100000000");
  else strftime(text, size, "%Y%m%d%H%M%S00", tm);
}

// ---- Files of a directory in name order --------------------------------------------------

struct Names {
  char (*names)[KX_PATH];
  int16_t *kinds;
  uint32_t count, room;
  Flag full;
};

Flag on_name(void *context, const char *name, int16_t kind, uint64_t) {
  Names *n = (Names *)context;
  if (n->count == n->room) {
    uint32_t room = n->room ? n->room * 2 : 32;
    char(*names)[KX_PATH] = (char(*)[KX_PATH])mm_alloc((int32_t)(room * KX_PATH), MM_HERE);
    int16_t *kinds = (int16_t *)mm_alloc((int32_t)(room * sizeof(int16_t)), MM_HERE);
    if (!names || !kinds || room > 0x7FFFFFFFu / KX_PATH) {
      mm_free(names, MM_HERE);
      mm_free(kinds, MM_HERE);
      n->full = 1;
      return 0;
    }
    if (n->count) {
      memcpy(names, n->names, (size_t)n->count * KX_PATH);
      memcpy(kinds, n->kinds, n->count * sizeof(int16_t));
    }
    mm_free(n->names, MM_HERE);
    mm_free(n->kinds, MM_HERE);
    n->names = names, n->kinds = kinds, n->room = room;
  }
  snprintf(n->names[n->count], KX_PATH, "%s", name);
  n->kinds[n->count++] = kind;
  return 1;
}

void names_free(Names *n) {
  mm_free(n->names, MM_HERE);
  mm_free(n->kinds, MM_HERE);
  memset(n, 0, sizeof *n);
}

// Lists directory into n, sorted by name (so that images come out the same). 0: cannot.
Flag list_names(const char *directory, Names *n) {
  memset(n, 0, sizeof *n);
  if (medium_plat_scan(directory, on_name, n) != 1 || n->full) {
    names_free(n);
    return 0;
  }
  // A simple insertion sort: a directory of a medium holds a few hundred names.
  for (uint32_t i = 1; i < n->count; i++)
    for (uint32_t j = i; j > 0 && strcmp(n->names[j - 1], n->names[j]) > 0; j--) {
      char swap[KX_PATH];
      memcpy(swap, n->names[j], KX_PATH);
      memcpy(n->names[j], n->names[j - 1], KX_PATH);
      memcpy(n->names[j - 1], swap, KX_PATH);
      int16_t k = n->kinds[j];
      n->kinds[j] = n->kinds[j - 1], n->kinds[j - 1] = k;
    }
  return 1;
}

// ---- Running the tools -------------------------------------------------------------------

// Appends words to command: plain ones as they are, those after a "%q" marker quoted.
Flag append(char *command, const char *text, Flag quote) {
  char quoted[KX_PATH * 2 + 8];
  if (quote && !medium_plat_quote(text, quoted, sizeof quoted)) return 0;
  size_t at = strlen(command);
  int n = snprintf(command + at, COMMAND_SIZE - at, "%s%s", at ? " " : "", quote ? quoted : text);
  return n > 0 && (size_t)n < COMMAND_SIZE - at;
}

// ---- Signing -----------------------------------------------------------------------------

Flag is_program(const char *name) {
  size_t n = strlen(name);
  if (n < 4) return 0;
  const char *e = name + n - 4;
  return e[0] == '.' && ((strchr("eE", e[1]) && strchr("xX", e[2]) && strchr("eE", e[3])) ||
                         (strchr("dD", e[1]) && strchr("lL", e[2]) && strchr("lL", e[3])));
}

Flag copy_file(const char *from, const char *to) {
  FILE *in = fopen(from, "rb");
  if (!in) return 0;
  FILE *out = fopen(to, "wb");
  Flag ok = out != nullptr;
  char block[65536];
  size_t n;
  while (ok && (n = fread(block, 1, sizeof block, in)) > 0) ok = fwrite(block, 1, n, out) == n;
  if (ferror(in)) ok = 0;
  fclose(in);
  if (out && fclose(out) != 0) ok = 0;
  return ok;
}

Flag sign_one(const char *command, const char *path, MediumResult *result) {
  char line[COMMAND_SIZE] = "", quoted[KX_PATH * 2 + 8];
  if (!medium_plat_quote(path, quoted, sizeof quoted))
    return fail(result, "%s: the path cannot be quoted", path);
  for (const char *p = command; *p; p++) {
    const char one[] = {*p, 0};
    const bool braces = p[0] == '{' && p[1] == '}';
    if (!st_append(line, sizeof line, braces ? quoted : one))
      return fail(result, "the signing command is too long");
    if (braces) p++;
  }
  int code = medium_plat_run(line);
  if (code != 0) return fail(result, "signing %s failed (exit %d)", path, code);
  return 1;
}

// Copies directory from into to (made here) and signs the programs in it; depth 0 is the
// tree's root, whose subdirectories are copied too (deeper ones are made empty, for
// medium_make to refuse).
Flag copy_and_sign(const char *from, const char *to, int depth, const char *command,
                   MediumResult *result) {
  if (!medium_plat_make_directory(to)) return fail(result, "cannot make the directory %s", to);
  Names n;
  if (!list_names(from, &n)) return fail(result, "cannot read the directory %s", from);
  Flag ok = 1;
  for (uint32_t i = 0; ok && i < n.count; i++) {
    char source[KX_PATH], target[KX_PATH];
    if (!join(source, from, n.names[i]) || !join(target, to, n.names[i])) {
      ok = fail(result, "%s: the path is too long", from);
    } else if (n.kinds[i] == MEDIUM_DIRECTORY) {
      ok = depth == 0 ? copy_and_sign(source, target, 1, command, result)
                      : medium_plat_make_directory(target);
      if (!ok && !result->message[0]) fail(result, "cannot make the directory %s", target);
    } else if (n.kinds[i] != MEDIUM_FILE) {
      ok = fail(result, "%s: not a regular file", source);
    } else if (!copy_file(source, target)) {
      ok = fail(result, "cannot copy %s", source);
    } else if (is_program(n.names[i])) {
      ok = sign_one(command, target, result);
    }
  }
  names_free(&n);
  return ok;
}

// ---- Images ------------------------------------------------------------------------------

// The CD's volume label: the title in capitals, A-Z, 0-9 and "_", at most 32 characters.
void volume_label(const char *title, char *label) {
  size_t n = 0;
  for (const char *p = title ? title : MEDIUM_TITLE_DEFAULT; *p && n < 32; p++) {
    char c = *p >= 'a' && *p <= 'z' ? (char)(*p - 'a' + 'A') : *p;
    label[n++] = (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ? c : '_';
  }
  if (n == 0) label[n++] = '_';
  label[n] = 0;
}

Flag make_iso(const MediumOptions *options, const char *file, MediumResult *result) {
  char date[32], label[40], command[COMMAND_SIZE] = "";
  image_date(date, sizeof date);
  volume_label(options->title, label);
  Flag ok = append(command, "xorriso -no_rc -report_about FAILURE -outdev", 0) &&
            append(command, file, 1) && append(command, "-volid", 0) && append(command, label, 1) &&
            append(command, "-joliet on -rockridge off -volume_date uuid", 0) &&
            append(command, date, 0) && append(command, "-volume_date all_file_dates", 0) &&
            append(command, date, 0) && append(command, "-map", 0) &&
            append(command, options->output, 1) && append(command, "/ -commit", 0);
  if (!ok) return fail(result, "%s: the path is too long", file);
  int code = medium_plat_run(command);
  if (code != 0) return fail(result, "xorriso failed (exit %d); is it installed?", code);
  return 1;
}

Flag make_floppy(const char *disk, const char *image, uint16_t number, MediumResult *result) {
  char command[COMMAND_SIZE] = "", label[16], serial[16];
  snprintf(label, sizeof label, "DISK%u", (unsigned)number);
  snprintf(serial, sizeof serial, "4B4F%04X", (unsigned)number);
  if (!append(command, "mformat -C -f 1440 -i", 0) || !append(command, image, 1) ||
      !append(command, "-v", 0) || !append(command, label, 0) || !append(command, "-N", 0) ||
      !append(command, serial, 0) || !append(command, "::", 0))
    return fail(result, "%s: the path is too long", image);
  int code = medium_plat_run(command);
  if (code != 0)
    return fail(result, "mformat failed (exit %d) for %s; is mtools installed?", code, image);
  Names n;
  if (!list_names(disk, &n)) return fail(result, "cannot read the directory %s", disk);
  Flag ok = 1;
  for (uint32_t i = 0; ok && i < n.count; i++) {
    char path[KX_PATH];
    command[0] = 0;
    if (!join(path, disk, n.names[i]) || !append(command, "mcopy -i", 0) ||
        !append(command, image, 1) || !append(command, path, 1) || !append(command, "::/", 0)) {
      ok = fail(result, "%s: the path is too long", disk);
    } else if ((code = medium_plat_run(command)) != 0) {
      ok = fail(result, "mcopy failed (exit %d) for %s", code, path);
    }
  }
  names_free(&n);
  return ok;
}

Flag make_floppies(const MediumOptions *options, const MediumResult *made, const char *directory,
                   MediumResult *result) {
  char date[32];
  image_date(date, sizeof date);
  for (uint16_t d = 1; d <= made->disks; d++) {
    char name[16], disk[KX_PATH], image[KX_PATH];
    snprintf(name, sizeof name, "DISK%u", (unsigned)d);
    if (!join(disk, options->output, name))
      return fail(result, "%s: the path is too long", options->output);
    snprintf(name, sizeof name, "DISK%u.IMG", (unsigned)d);
    if (!join(image, directory, name)) return fail(result, "%s: the path is too long", directory);
    if (!make_floppy(disk, image, d, result)) return 0;
  }
  return 1;
}

// Checks that the image file or directory is free to be written: 1, or 0 with the message.
Flag image_target_free(const char *path, Flag directory, MediumResult *result) {
  int16_t kind = medium_plat_kind(path);
  if (!directory)
    return kind == MEDIUM_MISSING ? 1
                                  : fail(result, "%s exists: the image is not written over", path);
  if (kind == MEDIUM_MISSING) return 1;
  Names n;
  if (kind != MEDIUM_DIRECTORY || !list_names(path, &n))
    return fail(result, "cannot make %s", path);
  uint32_t count = n.count;
  names_free(&n);
  return count ? fail(result, "%s is not empty", path) : 1;
}

}  // namespace

int16_t release_option(const char *argument, const char *value, ReleaseOptions *release) {
  const char **slot = strcmp(argument, "--verify") == 0          ? &release->verify
                      : strcmp(argument, "--sign") == 0          ? &release->sign
                      : strcmp(argument, "--iso") == 0           ? &release->iso
                      : strcmp(argument, "--floppy-images") == 0 ? &release->floppies
                                                                 : nullptr;
  if (!slot) return 0;
  if (!value) return -1;
  *slot = value;
  return 2;
}

Flag release_make(MediumOptions *options, const ReleaseOptions *release, MediumResult *result) {
  memset(result, 0, sizeof *result);
  if (release->iso && release->floppies)
    return fail(result, "--iso makes a flat medium, --floppy-images one of disks: not both");
  if (release->floppies && options->flat)
    return fail(result, "--floppy-images wants disks, not --flat");
  if (release->sign && !strstr(release->sign, "{}"))
    return fail(result, "--sign wants a command with {} for the file");
  if (release->iso) options->flat = 1;
  if ((release->iso && !image_target_free(release->iso, 0, result)) ||
      (release->floppies && !image_target_free(release->floppies, 1, result)))
    return 0;
  char scratch[KX_PATH] = "";
  Flag ok = 1;
  MediumOptions staged = *options;
  if (release->sign) {
    char tree[KX_PATH], setup[KX_PATH];
    if (!medium_plat_scratch_directory(scratch, sizeof scratch))
      return fail(result, "cannot make a scratch directory");
    ok = join(tree, scratch, "tree") && join(setup, scratch, "SETUP.EXE");
    if (!ok) fail(result, "%s: the path is too long", scratch);
    if (ok) ok = copy_and_sign(options->source, tree, 0, release->sign, result);
    if (ok && options->setup) {
      if (!copy_file(options->setup, setup)) ok = fail(result, "cannot copy %s", options->setup);
      else ok = sign_one(release->sign, setup, result);
    }
    staged.source = tree;
    if (options->setup) staged.setup = setup;
    if (ok) ok = medium_make(&staged, result);
  } else {
    ok = medium_make(&staged, result);
  }
  if (scratch[0]) medium_plat_remove_tree(scratch);
  if (!ok) return 0;
  if (release->iso) ok = make_iso(options, release->iso, result);
  if (ok && release->floppies) {
    if (medium_plat_kind(release->floppies) == MEDIUM_MISSING &&
        !medium_plat_make_directory(release->floppies))
      return fail(result, "cannot make %s", release->floppies);
    MediumResult made = *result;
    ok = make_floppies(options, &made, release->floppies, result);
  }
  return ok;
}

int release_verify(const char *medium, FILE *out, FILE *err) {
  int16_t kind = medium_plat_kind(medium);
  char probe[KX_PATH], scratch[KX_PATH] = "", message[MEDIUM_MESSAGE_SIZE] = "";
  const char *directory = medium;
  Flag images = kind == MEDIUM_DIRECTORY && join(probe, medium, "DISK1.IMG") &&
                medium_plat_kind(probe) == MEDIUM_FILE;
  if (images && join(probe, medium, "DISKLIST.LST") && medium_plat_kind(probe) != MEDIUM_MISSING)
    images = 0;
  if (images && join(probe, medium, "DISK1") && medium_plat_kind(probe) != MEDIUM_MISSING)
    images = 0;
  char unpacked[KX_PATH];
  if (kind == MEDIUM_FILE || images) {
    putenv((char *)"MTOOLS_SKIP_CHECK=1");
    if (!medium_plat_scratch_directory(scratch, sizeof scratch) ||
        !join(unpacked, scratch, "medium") || !medium_plat_make_directory(unpacked)) {
      fprintf(err, "mkmedium: cannot make a scratch directory\n");
      if (scratch[0]) medium_plat_remove_tree(scratch);
      return 1;
    }
    directory = unpacked;
  }
  Flag ok = 1;
  if (kind == MEDIUM_FILE) {
    char command[COMMAND_SIZE] = "";
    ok = append(command, "xorriso -no_rc -report_about FAILURE -osirrox on -indev", 0) &&
         append(command, medium, 1) && append(command, "-extract /", 0) &&
         append(command, unpacked, 1);
    int code = ok ? medium_plat_run(command) : -1;
    if (code != 0)
      snprintf(message, sizeof message, "%.400s: xorriso cannot read it as a CD image (exit %d)",
               medium, code);
    ok = code == 0;
  }
  for (uint16_t d = 1; images && ok && d <= 26; d++) {
    char name[16], image[KX_PATH], disk[KX_PATH], command[COMMAND_SIZE] = "";
    snprintf(name, sizeof name, "DISK%u.IMG", (unsigned)d);
    if (!join(image, medium, name) || medium_plat_kind(image) != MEDIUM_FILE) break;
    snprintf(name, sizeof name, "DISK%u", (unsigned)d);
    ok = join(disk, unpacked, name) && medium_plat_make_directory(disk) &&
         append(command, "mcopy -n -m -i", 0) && append(command, image, 1) &&
         append(command, "::*", 1) && append(command, disk, 1);
    int code = ok ? medium_plat_run(command) : -1;
    if (code != 0)
      snprintf(message, sizeof message, "%.400s: mcopy cannot read it as a floppy image (exit %d)",
               image, code);
    ok = code == 0;
  }
  int exit_code = 1;
  VerifyResult result;
  if (ok && verify_directory(directory, out, &result, message, sizeof message)) exit_code = 0;
  if (message[0]) fprintf(err, "mkmedium: %s\n", message);
  if (scratch[0]) medium_plat_remove_tree(scratch);
  return exit_code;
}
