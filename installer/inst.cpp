// inst.cpp - the install procedure: the steps from the source check to the configuration update,
// the list files (DISKLIST.LST read, INST.LST and UNINST.LST written), the disks and the
// transfer loop, the previous installation, the progress lines and the abort question.
#include "installer/inst.h"
#include "installer/unatt.h"
#include "common/log.h"

#include "common/file.h"
#include "common/mm.h"
#include "common/st.h"
#include "common/we.h"
#include "installer/startup.h"
#include "pack/copy.h"
#include "pack/ssc.h"
#include "pack/zip_util.h"
#include "platform/inst_plat.h"
#include "platform/reg.h"
#include "store/ifl.h"
#include "store/wco.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

Flag abort_requested = 0;
Flag config_taken_over = 0;
int16_t current_disk = 0;

namespace {

const char MODULE[] = "inst";

// Texts of the procedure (Windows-1250 in the binary).
const char TEXT_PATH_NOT_FOUND[] = "Chybná cesta/soubor nenalezen: %s";
const char TEXT_BAD_TARGET[] = "Chybná cílová cesta %s";
const char TEXT_NO_DRIVE[] = "Nelze najít disk %s:";
const char TEXT_NO_CHDIR[] = "Nelze změnit adresář na disku %s";
const char TEXT_NO_MKDIR[] = "Nelze vytvořit adresář %s na disku %s";
const char TEXT_COPYING[] = "Kopíruje se %s -> %s ...";
const char TEXT_COPY_FAILED[] = "Chyba při kopírování souboru %s";
const char TEXT_NO_SPACE[] = "Málo místa na disku, je třeba %lu B";
const char TEXT_NO_FREE_SPACE_INFO[] = "Nelze zjistit volné místo na disku %s";
const char TEXT_CANNOT_OPEN[] = "Nelze otevřít soubor %s";
const char TEXT_BAD_RECORD[] = "Chybný záznam v seznamu souborů: %s";
const char TEXT_PATH_TOO_LONG[] = "Příliš dlouhá cesta %s";

const char LIST_NAME[] = "DISKLIST.LST";
const char INSTALL_LIST_NAME[] = "INST.LST";
const char UNINSTALL_LIST_NAME[] = "UNINST.LST";
const char README_NAME[] = "README.TXT";
const char DESIGNS_DIRECTORY[] = "Navrhy";
const char MAIN_EXECUTABLE[] = "KORV5.EXE";
const char REGISTRY_KEY[] = "Software\\KORV\\KORVEX\\5";
const char REGISTRY_WCO_VALUE[] = "system_wco_path";

const char *const ALTERNATIVE_EXECUTABLES[] = {"KVWPRN.EXE", "KVWPP.EXE", "KVWALL.EXE",
                                               "KVWALLR.EXE"};

enum { LINE_SIZE = 81, MILLION = 1000000, UNINSTALL_WAIT = 2000 };
// Room a packed file may take beyond twice its declared size before it counts as a bomb.
static const uint32_t INST_UNPACK_SLACK = 16u << 20;
// A file of this size or more takes long enough to copy or unpack (from a floppy disk, the
// copy of a far smaller one does) that its status text is painted before the step starts.
static const uint32_t INST_LONG_FILE = 64u << 10;

InstallDialog dialog;
Flag dialog_set = 0;
InstallState *state_now = nullptr;
FileObject *install_list = nullptr;
FileObject *uninstall_list = nullptr;

// ---- Bounded texts ---------------------------------------------------------------------------

// Copies text into buffer (size bytes), cut at size - 1. Returns 0 when it was cut.
Flag copy_cut(char *buffer, size_t size, const char *text) {
  if (!text) text = "";
  size_t n = strlen(text);
  Flag whole = 1;
  if (n >= size) {
    n = size - 1;
    whole = 0;
  }
  memcpy(buffer, text, n);
  buffer[n] = 0;
  return whole;
}

// Appends text to buffer (size bytes), cut at size - 1. Returns 0 when it was cut.
Flag append_cut(char *buffer, size_t size, const char *text) {
  size_t used = strlen(buffer);
  return copy_cut(buffer + used, size - used, text);
}

// Joins the pieces (null pieces count as empty) into a KX_PATH buffer. Returns 0 when the
// whole does not fit: the buffer then holds it cut.
Flag join(char *out, const char *a, const char *b = nullptr, const char *c = nullptr,
          const char *d = nullptr) {
  out[0] = 0;
  Flag whole = append_cut(out, KX_PATH, a);
  if (b) whole = append_cut(out, KX_PATH, b) && whole;
  if (c) whole = append_cut(out, KX_PATH, c) && whole;
  if (d) whole = append_cut(out, KX_PATH, d) && whole;
  return whole;
}

// The same, and when the path does not fit tells the user so: the caller fails.
Flag join_path(char *out, const char *a, const char *b = nullptr, const char *c = nullptr,
               const char *d = nullptr) {
  if (join(out, a, b, c, d)) return 1;
  ErrorBoxF(TEXT_PATH_TOO_LONG, out);
  return 0;
}

Flag is_root_directory(const char *directory) { return strcmp(directory, ILST_ROOT_DIRECTORY) == 0; }

// target + (directory + "\" unless ".") + name.
Flag installed_path(const InstallState *state, char *out) {
  if (is_root_directory(state->directory))
    return join_path(out, state->target_path, state->file_name);
  return join_path(out, state->target_path, state->directory, "\\", state->file_name);
}

// ---- Dialog --------------------------------------------------------------------------------

void pump(void) {
  if (dialog_set && dialog.pump) dialog.pump(dialog.context);
}

// Paints the status text just set before a step of the current file when the file is large.
void paint_before_long_step(void) {
  if (dialog_set && dialog.paint && state_now && state_now->size >= INST_LONG_FILE)
    dialog.paint(dialog.context);
}

void set_line(int16_t item, const char *text) {
  if (dialog_set && dialog.set_line) dialog.set_line(dialog.context, item, text);
}

// ---- DISKLIST.LST --------------------------------------------------------------------------

void close_list(InstallState *state) {
  if (state && state->list) file_destroy(&state->list);
}

// Seeks to the start and reads the header; opens the list from the current directory first.
Flag list_rewind(InstallState *state) {
  if (!state->list) {
    if (!file_create(&state->list, LIST_NAME)) return 0;
    if (!file_exists(LIST_NAME) || !file_open(state->list, FILE_READ_BINARY)) {
      file_destroy(&state->list);
      ErrorBoxF(TEXT_PATH_NOT_FOUND, LIST_NAME);
      return 0;
    }
  }
  unsigned char bytes[ILST_HEADER_SIZE];
  ListHeader header;
  if (!file_seek(state->list, 0, FILE_FROM_START) || file_size(state->list) < ILST_HEADER_SIZE ||
      !file_read(state->list, bytes, ILST_HEADER_SIZE) || !ilst_decode_header(bytes, &header)) {
    ErrorBoxF(TEXT_PATH_NOT_FOUND, LIST_NAME);
    return 0;
  }
  state->header_word0 = header.reserved0;
  copy_cut(state->header_text, sizeof state->header_text, header.text);
  state->header_words[0] = header.reserved84;
  state->header_words[1] = header.count;
  state->header_words[2] = header.reserved88;
  state->header_words[3] = header.packed;
  state->records_read = 0;
  return 1;
}

// A name from the list that may be joined to a path: not empty, no path separator, drive
// colon, parent reference or control character. The directory field may also be ".".
Flag name_ok(const char *name, Flag directory) {
  if (!name[0]) return 0;
  if (directory && is_root_directory(name)) return 1;
  if (strcmp(name, ".") == 0 || strstr(name, "..")) return 0;
  for (const unsigned char *c = (const unsigned char *)name; *c; c++)
    if (*c < 32 || *c == 127 || *c == '\\' || *c == '/' || *c == ':') return 0;
  return 1;
}

// Reads the next record into the state. 1: a record; 0: the end of the list (the count is
// reached or a whole record is not there); -1: a record with a name that must not be used
// (told to the user).
int16_t list_next(InstallState *state) {
  if (!state->list || state->records_read >= state->header_words[1]) return 0;
  int32_t at = file_tell(state->list);
  int32_t size = file_size(state->list);
  if (at < 0 || size < 0 || size - at < ILST_RECORD_SIZE) return 0;
  unsigned char bytes[ILST_RECORD_SIZE];
  ListRecord record;
  if (!file_read(state->list, bytes, ILST_RECORD_SIZE) || !ilst_decode_record(bytes, &record))
    return 0;
  copy_cut(state->file_name, sizeof state->file_name, record.name);
  copy_cut(state->stored_name, sizeof state->stored_name, record.stored);
  copy_cut(state->directory, sizeof state->directory, record.directory);
  state->size = record.size;
  state->disk = record.disk;
  copy_cut(state->description, sizeof state->description, record.description);
  state->records_read++;
  const char *bad = !name_ok(state->file_name, 0)     ? state->file_name
                    : !name_ok(state->stored_name, 0) ? state->stored_name
                    : !name_ok(state->directory, 1)   ? state->directory
                                                      : nullptr;
  if (bad) {
    // Control characters would reach the box as they are: show them as "?".
    char shown[ILST_NAME_MAX + 1];
    copy_cut(shown, sizeof shown, bad);
    for (char *c = shown; *c; c++)
      if ((unsigned char)*c < 32 || *c == 127) *c = '?';
    ErrorBoxF(TEXT_BAD_RECORD, shown);
    return -1;
  }
  return 1;
}

// ---- UNINST.LST ----------------------------------------------------------------------------

// Whole records of UNINST.LST on the disk: the next record goes to this place (a torn record
// that a full disk left behind is written over).
int32_t uninstall_count = 0;
// While INST.LST is open, UNINST.LST ends with copies of INST.LST's record beyond the last
// real record: each record writes over the first and puts them all back behind itself. So the
// records of files that a full disk cut short (an unpacking that failed and the copy that ended
// the loop) and the record of step 12 go where room was taken before, and a disk that the
// transfer filled can't keep them out of the list. The list is cut back to its whole records
// when it is closed.
enum { AHEAD_RECORDS = 3 };
Flag install_list_ahead = 0;
unsigned char install_list_record[ILST_UNINSTALL_SIZE];
char uninstall_path[KX_PATH];

Flag encode_record(uint16_t kind, const char *path, unsigned char *bytes) {
  UninstallRecord entry;
  entry.kind = kind;
  copy_cut(entry.path, sizeof entry.path, path);
  return ilst_encode_uninstall(&entry, bytes);
}

// Writes bytes (one record, or none) at the next place, then the room held ahead, and hands
// it all to the system: what is written is in the file before the install goes on. After a
// failure the list is closed and opened again, so that the next record starts on a clean
// stream. Returns 1 when the record is in the file (or there is no list), 0 after the file
// layer's message.
Flag put_record(const unsigned char *bytes) {
  if (!uninstall_list) return 1;
  Flag ok = file_seek(uninstall_list, uninstall_count * ILST_UNINSTALL_SIZE, FILE_FROM_START);
  if (ok && bytes) ok = file_write(uninstall_list, bytes, ILST_UNINSTALL_SIZE);
  for (int i = 0; ok && install_list_ahead && i < AHEAD_RECORDS; i++)
    ok = file_write(uninstall_list, install_list_record, ILST_UNINSTALL_SIZE);
  if (ok) ok = file_flush(uninstall_list);
  if (!ok) {
    file_close(uninstall_list, 0);
    if (!file_open(uninstall_list, FILE_UPDATE_BINARY)) {
      file_destroy(&uninstall_list);
      return 0;
    }
  }
  if (ok && bytes) uninstall_count++;
  return ok;
}

// Appends one record. 1 when it is on the disk (or there is no list).
Flag record_now(uint16_t kind, const char *path) {
  if (!uninstall_list) return 1;
  log_line("UNINST.LST: záznam %u %s", (unsigned)kind, path ? path : "");
  unsigned char bytes[ILST_UNINSTALL_SIZE];
  if (!encode_record(kind, path, bytes)) return 0;
  return put_record(bytes);
}

Flag record(uint16_t kind, const char *path) {
  record_now(kind, path);
  return 1;
}

// Closes UNINST.LST and cuts it back to its whole records (what was held ahead, a torn record).
void close_uninstall_list(void) {
  install_list_ahead = 0;
  if (!uninstall_list) return;
  int32_t size = file_size(uninstall_list);
  file_destroy(&uninstall_list);
  if (size > uninstall_count * ILST_UNINSTALL_SIZE)
    plat_truncate_file(uninstall_path, uninstall_count * ILST_UNINSTALL_SIZE);
}

// The path of a file record: path, and each further non-empty part after a "\\" (added only
// where the text so far does not end in one), cut at KX_PATH - 1.
void record_path(char *whole, const char *path, const char *part2, const char *part3) {
  copy_cut(whole, KX_PATH, path);
  const char *parts[2] = {part2, part3};
  for (const char *part : parts) {
    if (!part || !part[0]) continue;
    size_t n = strlen(whole);
    if (n == 0 || whole[n - 1] != '\\') append_cut(whole, KX_PATH, "\\");
    append_cut(whole, KX_PATH, part);
  }
}

// Opens UNINST.LST in the current directory for appending records: an existing list is kept
// and written on after its whole records, a missing one is created. The list may be opened
// again after a failed record (put_record), also from the later steps' directories, and cut
// when it is closed: it is named by its full path, taken here.
void open_uninstall_list(void) {
  close_uninstall_list();
  uninstall_count = 0;
  char here[KX_PATH], path[KX_PATH];
  if (!plat_current_directory(here, KX_PATH) ||
      !join(path, here, here[0] && here[strlen(here) - 1] == '\\' ? "" : "\\", UNINSTALL_LIST_NAME))
    copy_cut(path, sizeof path, UNINSTALL_LIST_NAME);
  copy_cut(uninstall_path, sizeof uninstall_path, path);
  if (!file_create(&uninstall_list, path)) return;
  Flag existing = file_exists(path);
  if (!file_open(uninstall_list, existing ? FILE_UPDATE_BINARY : FILE_WRITE_BINARY)) {
    file_destroy(&uninstall_list);
    return;
  }
  int32_t size = file_size(uninstall_list);
  if (size < 0) {
    file_destroy(&uninstall_list);
    return;
  }
  uninstall_count = size / ILST_UNINSTALL_SIZE;
}

// ---- Steps ---------------------------------------------------------------------------------

// The two-character drive of the target, upper-cased, after the ":" check. 0 after the message.
Flag target_drive(const InstallState *state, char drive[3]) {
  if (state->target_path[0] == 0 || state->target_path[1] != ':') {
    ErrorBoxF(TEXT_BAD_TARGET, state->target_path);
    return 0;
  }
  drive[0] = state->target_path[0];
  drive[1] = ':';
  drive[2] = 0;
  st_upper(drive);
  if (!plat_drive_ready(drive)) {
    ErrorBoxF(TEXT_NO_DRIVE, drive);
    return 0;
  }
  return 1;
}

// Step 1.
Flag check_source(InstallState *state) {
  SetStatusText("Kontrola zdrojové cesty ...");
  char path[KX_PATH];
  if (!join_path(path, state->source_path, LIST_NAME)) return 0;
  if (!file_exists(path)) {
    ErrorBoxF(TEXT_PATH_NOT_FOUND, path);
    return 0;
  }
  return 1;
}

// An earlier configuration that is worth offering: a text that the store reads without a
// complaint -- every entry inside a section, section names and keys of 1 to 40 characters, no
// control character -- and that holds one entry at least. A damaged file or another program's
// bytes would only bring internal-error boxes and defaults in place of this install's paths;
// such a file is not offered, and the install writes its own configuration.
Flag configuration_readable(const char *path) {
  FileObject *file = nullptr;
  if (!file_create(&file, path)) return 0;
  if (!file_open(file, FILE_READ_TEXT)) {
    file_destroy(&file);
    return 0;
  }
  char line[WCO_READ_SIZE];
  Flag ok = 1, in_section = 0;
  int32_t entries = 0;
  while (ok && file_read_line(file, line, sizeof line)) {
    for (const unsigned char *c = (const unsigned char *)line; *c; c++)
      if (*c < 32 && *c != '\t') ok = 0;
    if (!ok || !st_trim(line)) continue;
    size_t length = strlen(line);
    if (length >= 7 && strncmp(line, "BEGIN[", 6) == 0 && line[length - 1] == ']') {
      line[length - 1] = 0;
      char *name = line + 6;
      in_section = st_trim(name) && strlen(name) <= WCO_NAME_MAX;
      ok = in_section;
      continue;
    }
    if (length >= 5 && strncmp(line, "END[", 4) == 0 && line[length - 1] == ']') {
      in_section = 0;
      continue;
    }
    char *equals = strchr(line, '=');
    if (!equals) continue;
    *equals = 0;
    if (!st_trim(line)) continue;
    ok = in_section && strlen(line) <= WCO_NAME_MAX;
    entries++;
  }
  file_destroy(&file);
  return ok && entries > 0;
}

// Step 2.
Flag remove_previous(InstallState *state) {
  SetStatusText("Odstranění předchozí instalace ...");
  char drive[3];
  if (!target_drive(state, drive)) return 0;
  char list[KX_PATH], uninstaller[KX_PATH];
  if (!join_path(list, state->target_path, UNINSTALL_LIST_NAME) ||
      !join_path(uninstaller, state->target_path, "EXE\\UNINSTAL.EXE"))
    return 0;
  if (!file_exists(list) || !file_exists(uninstaller)) return 1;
  if (!QuestionBox("Na cílové cestě byla nalezena předchozí instalace KORVEX.\n"
                   "Před novou instalací je třeba minulou odstranit. Pokračovat?"))
    return 0;
  char configuration[KX_PATH];
  Flag found = 0;
  if (reg_get_string(REG_ROOT_LOCAL_MACHINE, REGISTRY_KEY, REGISTRY_WCO_VALUE, configuration,
                     KX_PATH) &&
      configuration[0] && file_exists(configuration) && configuration_readable(configuration))
    found = 1;
  if (!found && join(configuration, state->target_path, "EXE", "\\", "SYSTEM.WCO") &&
      file_exists(configuration) && configuration_readable(configuration))
    found = 1;
  if (found && QuestionBox("Pro novou instalaci může být převzata systémová konfigurace\n"
                           "z předchozí instalace KORVEX. Má se převzít systémová\n"
                           "konfigurace z předchozí instalace?")) {
    ConfigStore *store = wco::system_store();
    if (store) wco::load(store, configuration);
    config_taken_over = 1;
  }
  int32_t exit_code = 0;
  if (!plat_run_and_wait(uninstaller, "-r", nullptr, &exit_code) || exit_code != 0) {
    ErrorBox("Chyba při spuštění odinstalačního programu KORVEX");
    return 0;
  }
  SetStatusText("Dokončení odstranění předchozí instalace ...");
  if (dialog.bring_to_front) dialog.bring_to_front(dialog.context);
  pump();
  plat_sleep(UNINSTALL_WAIT);
  return 1;
}

// Step 3: walks the target from the drive's root, creating what is missing; ends in it.
Flag check_target(InstallState *state) {
  SetStatusText("Kontrola cílové cesty ...");
  char drive[3];
  if (!target_drive(state, drive)) return 0;
  char root[4] = {drive[0], ':', '\\', 0};
  if (!plat_change_directory(root)) {
    ErrorBoxF(TEXT_NO_CHDIR, state->target_path);
    return 0;
  }
  char rest[KX_PATH];
  copy_cut(rest, sizeof rest, state->target_path);
  for (int i = 0; i < 3 && rest[i]; i++) rest[i] = ' ';
  st_trim(rest);
  char built[KX_PATH];
  copy_cut(built, sizeof built, root);
  char *next = rest;
  while (next) {
    char *component = next;
    char *slash = strchr(next, '\\');
    if (slash) {
      *slash = 0;
      next = slash + 1;
    } else {
      next = nullptr;
    }
    if (!st_trim(component)) continue;
    append_cut(built, sizeof built, component);
    if (plat_change_directory(component)) {
      append_cut(built, sizeof built, "\\");
      continue;
    }
    if (!plat_make_directory(component)) {
      ErrorBoxF(TEXT_NO_MKDIR, component, state->target_path);
      return 0;
    }
    RecordCreatedDirectory(built);
    append_cut(built, sizeof built, "\\");
    if (!plat_change_directory(component)) {
      ErrorBoxF(TEXT_NO_CHDIR, state->target_path);
      return 0;
    }
  }
  return 1;
}

// After a failed copy or unpacking (its boxes shown): the part of path that was written (a full
// disk) stays, as the copy leaves it, and is recorded so that the uninstaller knows it. Its
// record goes into the room held ahead, which is not taken anew: the disk may have none left.
// Nothing is recorded when nothing was made.
void record_partial(const char *path) {
  if (!file_exists(path)) return;
  Flag ahead = install_list_ahead;
  install_list_ahead = 0;
  record_now(UNINST_FILE, path);
  install_list_ahead = ahead;
}

// Copies source to target with its status text, and records the target. 0 after the message.
// With keep, the copied bytes are handed back there (see CopyFileKeeping; the caller frees them).
Flag copy_and_record(const char *source, const char *target, unsigned char **keep = nullptr,
                     uint32_t *kept = nullptr) {
  SetStatusTextF(TEXT_COPYING, source, target);
  paint_before_long_step();
  if (!(keep ? CopyFileKeeping(source, target, keep, kept) : CopyFile(source, target))) {
    ErrorBoxF(TEXT_COPY_FAILED, source);
    record_partial(target);
    return 0;
  }
  record_now(UNINST_FILE, target);
  return 1;
}

// Step 5.
Flag copy_lists(InstallState *state) {
  char source[KX_PATH], target[KX_PATH];
  // keep this: only the last abort question of the step ends the install.
  CheckAbort();
  if (!join_path(source, state->source_path, README_NAME) ||
      !join_path(target, state->target_path, README_NAME))
    return 0;
  if (file_exists(source) && !copy_and_record(source, target)) return 0;
  CheckAbort();
  if (!join_path(source, state->source_path, LIST_NAME) ||
      !join_path(target, state->target_path, LIST_NAME))
    return 0;
  if (!file_exists(source)) {
    ErrorBoxF(TEXT_PATH_NOT_FOUND, source);
    return 0;
  }
  if (!copy_and_record(source, target)) return 0;
  return CheckAbort() ? 0 : 1;
}

// The subdirectories that step 6 has made sure of in this run, upper-cased, and whether it made
// them itself. A directory is then not entered again for each further file of it, and step 8
// knows that no file can exist yet in one that step 6 made (nothing is put into the target in
// between). A directory that does not fit in the table is simply dealt with as before.
enum { KNOWN_DIRECTORIES = 64 };
struct KnownDirectory {
  char name[ILST_NAME_MAX + 1];
  Flag made;
};
KnownDirectory known_directories[KNOWN_DIRECTORIES];
int known_count = 0;

KnownDirectory *known_directory(const char *directory) {
  char upper[ILST_NAME_MAX + 1];
  copy_cut(upper, sizeof upper, directory);
  st_upper(upper);
  for (int i = 0; i < known_count; i++)
    if (strcmp(known_directories[i].name, upper) == 0) return &known_directories[i];
  return nullptr;
}

void know_directory(const char *directory, Flag made) {
  if (known_count >= KNOWN_DIRECTORIES || strlen(directory) > ILST_NAME_MAX) return;
  KnownDirectory &entry = known_directories[known_count++];
  copy_cut(entry.name, sizeof entry.name, directory);
  st_upper(entry.name);
  entry.made = made;
}

// Makes sure the subdirectory of the current (target) directory exists.
Flag ensure_directory(InstallState *state, const char *directory) {
  char path[KX_PATH];
  join(path, state->target_path, directory);
  RecordCreatedDirectory(path);
  if (known_directory(directory)) return 1;
  if (!plat_change_directory(directory)) {
    if (!plat_make_directory(directory)) {
      ErrorBoxF(TEXT_NO_MKDIR, directory, state->target_path);
      return 0;
    }
    know_directory(directory, 1);
    return 1;
  }
  if (!plat_change_directory("..")) {
    ErrorBoxF(TEXT_NO_CHDIR, state->target_path);
    return 0;
  }
  know_directory(directory, 0);
  return 1;
}

// Step 6; every record is checked before the first directory is made.
Flag create_directories(InstallState *state) {
  SetStatusText("Vytváření adresářů ...");
  known_count = 0;
  if (!list_rewind(state)) return 0;
  int16_t got;
  while ((got = list_next(state)) > 0) {
    char path[KX_PATH];
    if (!installed_path(state, path)) return 0;
  }
  if (got < 0) return 0;
  if (!list_rewind(state)) return 0;
  while ((got = list_next(state)) > 0)
    if (!is_root_directory(state->directory) && !ensure_directory(state, state->directory))
      return 0;
  if (got < 0) return 0;
  return ensure_directory(state, DESIGNS_DIRECTORY);
}

// Step 8.
Flag check_overwrite(InstallState *state) {
  if (!list_rewind(state)) return 0;
  Flag asked = 0;
  int16_t got;
  while ((got = list_next(state)) > 0) {
    char path[KX_PATH];
    if (!installed_path(state, path)) return 0;
    if (!is_root_directory(state->directory)) {
      const KnownDirectory *known = known_directory(state->directory);
      if (known && known->made) continue;
    }
    if (!file_exists(path)) continue;
    if (!asked) {
      if (!QuestionBox("Existující soubory budou přepsány, pokračovat")) return 0;
      asked = 1;
    }
    SetStatusTextF("Maže se : %s", path);
    file_delete(path);
    if (CheckAbort()) return 0;
  }
  if (got < 0) return 0;
  SetStatusText("");
  return 1;
}

// Step 9. The sums are 32-bit on purpose, and every file is charged one cluster more than its
// whole clusters (also an exact multiple); keep both.
Flag check_space(InstallState *state) {
  SetStatusText("Kontrola místa na disku ...");
  char drive[3] = {state->target_path[0], ':', 0};
  st_upper(drive);
  uint32_t available = 0, sectors = 0, bytes_per_sector = 0;
  if (!plat_free_space(drive, &available, &sectors, &bytes_per_sector) ||
      sectors * bytes_per_sector == 0) {
    ErrorBoxF(TEXT_NO_FREE_SPACE_INFO, drive);
    return 0;
  }
  uint32_t cluster = sectors * bytes_per_sector;
  if (!list_rewind(state)) return 0;
  uint32_t clusters = 0, bytes = 0;
  state->total_size = 0;
  int16_t got;
  while ((got = list_next(state)) > 0) {
    state->total_size += state->size;
    uint32_t charged = state->size / cluster + 1;
    clusters += charged;
    bytes += charged * cluster;
  }
  if (got < 0) return 0;
  uint32_t reserve = (uint32_t)MILLION / cluster;
  if (clusters + reserve > available) {
    ErrorBoxF(TEXT_NO_SPACE, (unsigned long)(uint32_t)(bytes + (uint32_t)MILLION));
    return 0;
  }
  return 1;
}

// ---- Disks and the transfer loop -----------------------------------------------------------

}  // namespace

// Checks that the source holds disk current_disk by its identification file.
Flag DiskIdFile(InstallState *state) {
  char name[ILST_DISK_ID_NAME];
  char path[KX_PATH];
  if (current_disk < 0 || !ilst_disk_id_name((uint16_t)current_disk, name) ||
      !join(path, state->source_path, name) || !file_exists(path)) {
    ErrorBox("Nesprávná disketa");
    return 0;
  }
  FileObject *file = nullptr;
  if (!file_create(&file, path)) return 0;
  if (!file_open(file, FILE_READ_TEXT)) {
    file_destroy(&file);
    return 0;
  }
  Flag ok = 1;
  char line[LINE_SIZE];
  while (file_read_line(file, line, sizeof line)) {
    char keyword[LINE_SIZE];
    if (!SplitFirstWord(line, keyword, sizeof keyword)) continue;
    if (strcmp(keyword, "DISK:") == 0) {
      int number = atoi(line);
      if (number != current_disk + 1) {
        ErrorBoxF("Nesprávné pořadové číslo diskety (%d)", number);
        ok = 0;
      }
      continue;
    }
    ErrorBoxF("Neznámé klíčové slovo v souboru %s", path);
    file_destroy(&file);
    return 0;
  }
  file_destroy(&file);
  return ok;
}

namespace {

Flag alternative_executable(const char *name) {
  char upper[ILST_NAME_MAX + 1];
  copy_cut(upper, sizeof upper, name);
  st_upper(upper);
  for (const char *alternative : ALTERNATIVE_EXECUTABLES)
    if (strcmp(upper, alternative) == 0) return 1;
  return 0;
}

// Shows the current file in the progress lines.
void show_file(const InstallState *state, const char *installed) {
  char line18[LINE_SIZE], line19[WE_TEXT_SIZE], line20[WE_TEXT_SIZE];
  copy_cut(line18, sizeof line18, "Instaluje se  : ");
  append_cut(line18, sizeof line18, installed);
  snprintf(line19, sizeof line19, "Popis souboru : %s", state->description);
  snprintf(line20, sizeof line20, "Číslo diskety : %d", state->disk + 1);
  inst_show_lines(line18, line19, line20);
}

// One record of a packed list: copy into the target directory, unpack there, move into the
// subdirectory. 1: installed; 0: the loop fails; -1: unpacking failed (reported), go on.
int16_t install_packed(InstallState *state, const char *source, const char *installed) {
  char packed_copy[KX_PATH], unpacked[KX_PATH];
  if (!join_path(packed_copy, state->target_path, state->stored_name) ||
      !join_path(unpacked, state->target_path, state->file_name))
    return 0;
  // The packed bytes stay in memory from the copy to the unpacking: the copy is not read back.
  unsigned char *packed = nullptr;
  uint32_t packed_length = 0;
  if (!copy_and_record(source, packed_copy, &packed, &packed_length)) return 0;
  SetStatusText("");
  if (CheckAbort()) {
    if (packed) mm_free(packed, MM_HERE);
    return 0;
  }
  SetStatusTextF("Rozbaluje se %s ...", packed_copy);
  paint_before_long_step();
  file_delete(unpacked);
  ZipUtil zip;
  ZipInit(&zip);
  // A file may come out somewhat larger than the list says and still be installed; one that
  // grows far past it is a damaged or hostile medium, stopped before it fills memory and disk.
  uint64_t limit = 2 * (uint64_t)state->size + INST_UNPACK_SLACK;
  zip.out_limit = limit < 0x7FFFFFFF ? (uint32_t)limit : 0x7FFFFFFF;
  // An empty packed file goes the file road, which fails on it with a code of the table.
  Flag unpacked_ok = packed && packed_length ? DecompressBufferToFile(&zip, packed, packed_length, unpacked)
                                             : DecompressFile(&zip, packed_copy, unpacked);
  if (packed) mm_free(packed, MM_HERE);
  if (!unpacked_ok) {
    ErrorBox(ZipErrorText(GetError(&zip)));
    record_partial(unpacked);
    return -1;
  }
  record_now(UNINST_FILE, unpacked);
  SetStatusText("");
  if (CheckAbort()) return 0;
  file_delete(packed_copy);
  if (!is_root_directory(state->directory)) {
    SetStatusTextF(TEXT_COPYING, unpacked, installed);
    // The copy ends with the file in the subdirectory and none in the target directory; on
    // the same disk a rename does that without writing the file a second time.
    file_delete(installed);
    if (!plat_move_file(unpacked, installed)) {
      if (!CopyFile(unpacked, installed)) {
        ErrorBoxF(TEXT_COPY_FAILED, unpacked);
        record_partial(installed);
        return 0;
      }
      file_delete(unpacked);
    }
    record_now(UNINST_FILE, installed);
  }
  return 1;
}

Flag transfer_loop(InstallState *state);

// Step 11: the loop, with the dialog told that per-file texts come.
Flag transfer_files(InstallState *state) {
  if (dialog_set && dialog.batch) dialog.batch(dialog.context, 1);
  Flag ok = transfer_loop(state);
  if (dialog_set && dialog.batch) dialog.batch(dialog.context, 0);
  return ok;
}

Flag transfer_loop(InstallState *state) {
  current_disk = 0;
  if (!DiskIdFile(state)) return 0;
  if (!list_rewind(state)) return 0;
  Flag packed = state->header_words[3] != 0;
  int16_t got;
  while ((got = list_next(state)) > 0) {
    char installed[KX_PATH], source[KX_PATH];
    if (!installed_path(state, installed)) return 0;
    show_file(state, installed);
    if (!join_path(source, state->source_path, state->stored_name)) return 0;
    if (!file_exists(source)) {
      current_disk = (int16_t)state->disk;
      for (;;) {
        char prompt[WE_TEXT_SIZE];
        snprintf(prompt, sizeof prompt, "Vlož DISK%d", current_disk + 1);
        InfoBox(prompt);
        if (DiskIdFile(state)) break;
        if (!QuestionBox("Zkusit znovu")) return 0;
      }
    }
    if (!file_exists(source)) {
      if (QuestionBoxF("Soubor %s nenalezen, vynechat", source)) continue;
      return 0;
    }
    if (CheckAbort()) return 0;
    if (!packed) {
      if (!copy_and_record(source, installed)) return 0;
      SetStatusText("");
      if (CheckAbort()) return 0;
    } else {
      int16_t result = install_packed(state, source, installed);
      if (result == 0) return 0;
      if (result < 0) continue;
    }
    if (alternative_executable(state->file_name)) {
      char main_path[KX_PATH];
      size_t keep = strlen(installed) - strlen(state->file_name);
      copy_cut(main_path, keep + 1, installed);
      if (append_cut(main_path, sizeof main_path, MAIN_EXECUTABLE)) {
        file_delete(main_path);
        plat_move_file(installed, main_path);
        RecordInstalledFile(main_path, nullptr, nullptr);
      }
    }
    unatt_log_file(source, installed, state->size);
    if (install_list) {
      char line[KX_PATH + ILST_DESCRIPTION_MAX + 2];
      copy_cut(line, sizeof line, installed);
      append_cut(line, sizeof line, " ");
      char description[ILST_DESCRIPTION_MAX + 1];
      copy_cut(description, sizeof description, state->description);
      // One line per file: a control character of the medium's text is shown as a blank.
      for (char *c = description; *c; c++)
        if ((unsigned char)*c < 32) *c = ' ';
      append_cut(line, sizeof line, description);
      file_write_line(install_list, line);
    }
  }
  if (got < 0) return 0;
  inst_clear_lines();
  return 1;
}

// ---- Configuration update (step 14) --------------------------------------------------------

void set_path(ConfigStore *store, const char *section, const char *key, char *field,
              const char *a, const char *b = nullptr, const char *c = nullptr) {
  char value[KX_PATH];
  join(value, a, b, c);
  copy_cut(field, IFL_LONG_TEXT + 1, value);
  if (store) wco::set_text(store, section, key, field);
}

Flag update_configuration(InstallState *state) {
  SetStatusText("Zápis/oprava konfiguračního souboru");
  ConfigStore *store = wco::system_store();
  const char *target = state->target_path;
  set_path(store, "CO_common", "system_path", ifl_options.system_path,
           strlen(target) >= 2 ? target + 2 : "");
  join(program_dir, target, "EXE", "\\");
  if (!config_taken_over) {
    set_path(store, "CO_common", "initial_directory", ifl_options.initial_directory, target,
             DESIGNS_DIRECTORY);
    set_path(store, "CO_schematic", "schema_default_library_path",
             ifl_options.schema_default_library_path, target, "SLIB", "\\");
    set_path(store, "CO_layout", "layout_default_library_path",
             ifl_options.layout_default_library_path, target, "LLIB", "\\");
    set_path(store, "CO_edit", "edit_default_library_path", ifl_options.edit_default_library_path,
             target, "ELIB", "\\");
    set_path(store, "CO_simulator", "default_model_library_path",
             ifl_options.default_model_library_path, target, "MLIB", "\\");
  }
  char path[KX_PATH];
  if (store && join(path, target, "EXE", "\\", "SYSTEM.WCO")) wco::save_always(store, path);
  RecordInstalledFile(target, "EXE", "SYSTEM.WCO");
  SetStatusText("");
  return 1;
}

}  // namespace

// ---- Interface -----------------------------------------------------------------------------

Flag inst_set_dialog(const InstallDialog *description) {
  if (!description) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  dialog = *description;
  dialog_set = 1;
  return 1;
}

InstallState *inst_create_state(const char *program_path) {
  InstallState *state = (InstallState *)mm_zalloc((int32_t)sizeof(InstallState), MM_HERE);
  if (!state) {
    OutOfMemoryError();
    return nullptr;
  }
  copy_cut(state->source_path, sizeof state->source_path, program_path);
  char *last = strrchr(state->source_path, '\\');
  if (last) last[1] = 0;
  else state->source_path[0] = 0;
  st_upper(state->source_path);
  copy_cut(state->target_path, sizeof state->target_path, "C:\\KORV5\\");
  return state;
}

void inst_destroy_state(InstallState **state) {
  if (!state || !*state) return;
  close_list(*state);
  if (state_now == *state) state_now = nullptr;
  mm_free(*state, MM_HERE);
  *state = nullptr;
}

void inst_close_lists(InstallState *state) {
  close_uninstall_list();
  if (install_list) file_destroy(&install_list);
  close_list(state);
}

Flag CheckAbort(void) {
  pump();
  if (!abort_requested) return 0;
  if (QuestionBox("Přerušit instalaci ?")) return 1;
  abort_requested = 0;
  return 0;
}

Flag RecordInstalledFile(const char *path, const char *part2, const char *part3) {
  if (!path) {
    InternalError(MODULE, __LINE__);
    return 1;
  }
  char whole[KX_PATH];
  record_path(whole, path, part2, part3);
  return record(UNINST_FILE, whole);
}

Flag RecordCreatedDirectory(const char *path) {
  if (!path) {
    InternalError(MODULE, __LINE__);
    return 1;
  }
  char directory[KX_PATH];
  copy_cut(directory, sizeof directory, path);
  size_t n = strlen(directory);
  if (n > 0 && directory[n - 1] == '\\') directory[n - 1] = 0;
  return record(UNINST_DIRECTORY, directory);
}

Flag RecordOtherItem(const char *key) {
  if (!key) {
    InternalError(MODULE, __LINE__);
    return 1;
  }
  return record(UNINST_CLASSES_KEY, key);
}

Flag RecordMachineKey(const char *key) {
  if (!key) {
    InternalError(MODULE, __LINE__);
    return 1;
  }
  return record(UNINST_MACHINE_KEY, key);
}

void inst_show_lines(const char *line18, const char *line19, const char *line20) {
  set_line(INST_LINE_FIRST, line18 ? line18 : "");
  set_line(INST_LINE_FIRST + 1, line19 ? line19 : "");
  set_line(INST_LINE_FIRST + 2, line20 ? line20 : "");
}

void inst_clear_lines(void) {
  for (int16_t item = INST_LINE_FIRST; item <= INST_LINE_LAST; item++) set_line(item, "");
}

Flag InstallProcedure(InstallState *state) {
  if (!state || !dialog_set) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  abort_requested = 0;
  state_now = state;
  state->source_path[KX_PATH - 1] = 0;
  state->target_path[KX_PATH - 1] = 0;

  if (!check_source(state)) return 0;                   // 1
  if (!remove_previous(state)) return 0;                // 2
  if (!check_target(state)) return 0;                   // 3
  open_uninstall_list();                                // 4
  if (!copy_lists(state)) return 0;                     // 5
  if (!create_directories(state)) return 0;             // 6
  RecordCreatedDirectory(state->target_path);           // 7
  if (!check_overwrite(state)) return 0;                // 8
  if (!check_space(state)) return 0;                    // 9

  if (install_list) file_destroy(&install_list);        // 10
  if (!file_create(&install_list, INSTALL_LIST_NAME) ||
      !file_open(install_list, FILE_WRITE_TEXT)) {
    if (install_list) file_destroy(&install_list);
    ErrorBoxF(TEXT_CANNOT_OPEN, INSTALL_LIST_NAME);
  } else if (uninstall_list) {
    char path[KX_PATH];
    record_path(path, state->target_path, INSTALL_LIST_NAME, nullptr);
    install_list_ahead = encode_record(UNINST_FILE, path, install_list_record);
    if (install_list_ahead) put_record(nullptr);
  }

  Flag transferred = transfer_files(state);            // 11

  if (install_list) file_destroy(&install_list);        // 12
  install_list_ahead = 0;                               // its place is written now
  RecordInstalledFile(state->target_path, INSTALL_LIST_NAME, nullptr);
  inst_clear_lines();

  if (!transferred) return 0;                           // 13

  update_configuration(state);                          // 14

  close_list(state);                                    // 15: an open file can't be deleted
  file_delete(LIST_NAME);

  SetStatusText("Aktualizace nabídky Start ...");       // 16
  UpdateStartMenu(state);
  SetStatusText("Aktualizace pracovní plochy ...");
  UpdateDesktop(state);
  SetStatusText("Aktualizace systémové lišty ...");
  UpdateQuickLaunch(state);
  SetStatusText("Aktualizace registru (registrace aplikace) ...");
  RegisterAppPath(state);
  SetStatusText("Aktualizace registru (odinstalace) ...");
  RegisterUninstall(state);
  SetStatusText("Aktualizace registru (ikony souborů) ...");
  RegisterFileTypes(state);
  SetStatusText("Aktualizace registru (cesta systémové konfigurace) ...");
  RegisterConfigPath(state);
  CheckHtmlHelp(state);
  CreateFunctionList(state);

  SetStatusText("");                                    // 17
  return 1;
}
