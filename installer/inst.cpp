// inst.cpp - the install procedure: the steps from the source check to the configuration update,
// INST.LST, the transfer loop over the disks, the previous installation, the progress lines and
// the abort question. DISKLIST.LST and the disk identification files are read by inst_list,
// UNINST.LST is written by ulw.
#include "installer/inst.h"
#include "installer/unatt.h"

#include "common/file.h"
#include "common/mm.h"
#include "common/st.h"
#include "common/we.h"
#include "installer/inst_list.h"
#include "installer/startup.h"
#include "installer/ulw.h"
#include "pack/copy.h"
#include "pack/zip_util.h"
#include "platform/inst_plat.h"
#include "platform/reg.h"
#include "store/ifl.h"
#include "store/wco.h"

#include <stdio.h>
#include <string.h>

Flag abort_requested = 0;
Flag config_taken_over = 0;
int16_t current_disk = 0;

namespace {

const char MODULE[] = "inst";

// Texts of the procedure (Windows-1250 in the binary).
const char TEXT_BAD_TARGET[] = "Chybná cílová cesta %s";
const char TEXT_NO_DRIVE[] = "Nelze najít disk %s:";
const char TEXT_NO_CHDIR[] = "Nelze změnit adresář na disku %s";
const char TEXT_NO_MKDIR[] = "Nelze vytvořit adresář %s na disku %s";
const char TEXT_COPYING[] = "Kopíruje se %s -> %s ...";
const char TEXT_COPY_FAILED[] = "Chyba při kopírování souboru %s";
const char TEXT_NO_SPACE[] = "Málo místa na disku, je třeba %lu B";
const char TEXT_NO_FREE_SPACE_INFO[] = "Nelze zjistit volné místo na disku %s";
const char TEXT_CANNOT_OPEN[] = "Nelze otevřít soubor %s";
const char TEXT_PATH_TOO_LONG[] = "Příliš dlouhá cesta %s";

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

// Joins the pieces into a KX_PATH buffer; when the path does not fit tells the user so: the
// caller fails.
Flag join_path(char *out, const char *a, const char *b = nullptr, const char *c = nullptr,
               const char *d = nullptr) {
  if (st_join(out, KX_PATH, a, b, c, d)) return 1;
  ErrorBoxF(TEXT_PATH_TOO_LONG, out);
  return 0;
}

// target + (directory + "\" unless ".") + name.
Flag installed_path(const InstallState *state, char *out) {
  if (inst_list_is_root(state->record.directory))
    return join_path(out, state->target_path, state->record.name);
  return join_path(out, state->target_path, state->record.directory, "\\", state->record.name);
}

// ---- Dialog --------------------------------------------------------------------------------

void pump(void) {
  if (dialog_set && dialog.pump) dialog.pump(dialog.context);
}

// Paints the status text just set before a step of the current file when the file is large.
void paint_before_long_step(void) {
  if (dialog_set && dialog.paint && state_now && state_now->record.size >= INST_LONG_FILE)
    dialog.paint(dialog.context);
}

void set_line(int16_t item, const char *text) {
  if (dialog_set && dialog.set_line) dialog.set_line(dialog.context, item, text);
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
  if (!join_path(path, state->source_path, INST_DISK_LIST)) return 0;
  if (!file_exists(path)) {
    ErrorBoxF(INST_TEXT_NOT_FOUND, path);
    return 0;
  }
  return 1;
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
      configuration[0] && file_exists(configuration) && wco::readable(configuration))
    found = 1;
  if (!found && st_join(configuration, KX_PATH, state->target_path, "EXE", "\\", "SYSTEM.WCO") &&
      file_exists(configuration) && wco::readable(configuration))
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
  st_put(rest, sizeof rest, state->target_path);
  for (int i = 0; i < 3 && rest[i]; i++) rest[i] = ' ';
  st_trim(rest);
  char built[KX_PATH];
  st_put(built, sizeof built, root);
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
    st_append(built, sizeof built, component);
    if (plat_change_directory(component)) {
      st_append(built, sizeof built, "\\");
      continue;
    }
    if (!plat_make_directory(component)) {
      ErrorBoxF(TEXT_NO_MKDIR, component, state->target_path);
      return 0;
    }
    RecordCreatedDirectory(built);
    st_append(built, sizeof built, "\\");
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
  if (file_exists(path)) ulw_record_in_room(&inst_uninstall, UNINST_FILE, path);
}

// Copies source to target with its status text, and records the target. 0 after the message.
// With keep, the copied bytes are handed back there (see CopyFileKeeping; the caller frees them).
// opened: the source's path as it is opened (see source_spelling), null: source itself.
// target_open: see CopyFileKeeping.
Flag copy_and_record(const char *source, const char *target, unsigned char **keep = nullptr,
                     uint32_t *kept = nullptr, const char *opened = nullptr,
                     PlatFile *target_open = nullptr) {
  SetStatusTextF(TEXT_COPYING, source, target);
  paint_before_long_step();
  const char *from = opened ? opened : source;
  if (!(keep ? CopyFileKeeping(from, target, keep, kept, source, target_open)
             : CopyFile(from, target, source))) {
    ErrorBoxF(TEXT_COPY_FAILED, source);
    record_partial(target);
    return 0;
  }
  ulw_record(&inst_uninstall, UNINST_FILE, target);
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
  if (!join_path(source, state->source_path, INST_DISK_LIST) ||
      !join_path(target, state->target_path, INST_DISK_LIST))
    return 0;
  if (!file_exists(source)) {
    ErrorBoxF(INST_TEXT_NOT_FOUND, source);
    return 0;
  }
  if (!copy_and_record(source, target)) return 0;
  return CheckAbort() ? 0 : 1;
}

// Makes sure the subdirectory of the current (target) directory exists.
Flag ensure_directory(InstallState *state, const char *directory) {
  char path[KX_PATH];
  st_join(path, KX_PATH, state->target_path, directory);
  RecordCreatedDirectory(path);
  if (inst_list_known_directory(directory, nullptr)) return 1;
  if (!plat_change_directory(directory)) {
    if (!plat_make_directory(directory)) {
      ErrorBoxF(TEXT_NO_MKDIR, directory, state->target_path);
      return 0;
    }
    inst_list_know_directory(directory, 1);
    return 1;
  }
  if (!plat_change_directory("..")) {
    ErrorBoxF(TEXT_NO_CHDIR, state->target_path);
    return 0;
  }
  inst_list_know_directory(directory, 0);
  return 1;
}

// Step 6; every record is checked before the first directory is made.
Flag create_directories(InstallState *state) {
  SetStatusText("Vytváření adresářů ...");
  inst_list_forget_directories();
  if (!inst_list_rewind(state)) return 0;
  int16_t got;
  while ((got = inst_list_next(state)) > 0) {
    char path[KX_PATH];
    if (!installed_path(state, path)) return 0;
  }
  if (got < 0) return 0;
  if (!inst_list_rewind(state)) return 0;
  while ((got = inst_list_next(state)) > 0)
    if (!inst_list_is_root(state->record.directory) &&
        !ensure_directory(state, state->record.directory))
      return 0;
  if (got < 0) return 0;
  return ensure_directory(state, DESIGNS_DIRECTORY);
}

// Step 8.
Flag check_overwrite(InstallState *state) {
  if (!inst_list_rewind(state)) return 0;
  Flag asked = 0;
  int16_t got;
  while ((got = inst_list_next(state)) > 0) {
    char path[KX_PATH];
    if (!installed_path(state, path)) return 0;
    if (!inst_list_is_root(state->record.directory)) {
      Flag made = 0;
      if (inst_list_known_directory(state->record.directory, &made) && made) continue;
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
  if (!inst_list_rewind(state)) return 0;
  uint32_t clusters = 0, bytes = 0;
  state->total_size = 0;
  int16_t got;
  while ((got = inst_list_next(state)) > 0) {
    state->total_size += state->record.size;
    uint32_t charged = state->record.size / cluster + 1;
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

Flag alternative_executable(const char *name) {
  char upper[ILST_NAME_MAX + 1];
  st_put(upper, sizeof upper, name);
  st_upper(upper);
  for (const char *alternative : ALTERNATIVE_EXECUTABLES)
    if (strcmp(upper, alternative) == 0) return 1;
  return 0;
}

// Shows the current file in the progress lines.
void show_file(const InstallState *state, const char *installed) {
  char line18[LINE_SIZE], line19[WE_TEXT_SIZE], line20[WE_TEXT_SIZE];
  st_put(line18, sizeof line18, "Instaluje se  : ");
  st_append(line18, sizeof line18, installed);
  snprintf(line19, sizeof line19, "Popis souboru : %s", state->record.description);
  snprintf(line20, sizeof line20, "Číslo diskety : %d", state->record.disk + 1);
  inst_show_lines(line18, line19, line20);
}

// One record of a packed list: copy into the target directory (the copy kept open in
// packed_file where it can be, so that it is deleted by its handle), unpack there (into
// target), move into the subdirectory. 1: installed; 0: the loop fails; -1: unpacking failed
// (reported), go on. The caller closes both files.
int16_t unpack_and_move(InstallState *state, const char *source, const char *opened,
                        const char *installed, PlatFile *unpacked_file, PlatFile *packed_file) {
  char packed_copy[KX_PATH], unpacked[KX_PATH];
  if (!join_path(packed_copy, state->target_path, state->record.stored) ||
      !join_path(unpacked, state->target_path, state->record.name))
    return 0;
  // The packed bytes stay in memory from the copy to the unpacking: the copy is not read back.
  unsigned char *packed = nullptr;
  uint32_t packed_length = 0;
  if (!copy_and_record(source, packed_copy, &packed, &packed_length, opened, packed_file)) return 0;
  SetStatusText("");
  if (CheckAbort()) {
    if (packed) mm_free(packed, MM_HERE);
    return 0;
  }
  SetStatusTextF("Rozbaluje se %s ...", packed_copy);
  paint_before_long_step();
  ZipUtil zip;
  ZipInit(&zip);
  // A file may come out somewhat larger than the list says and still be installed; one that
  // grows far past it is a damaged or hostile medium, stopped before it fills memory and disk.
  uint64_t limit = 2 * (uint64_t)state->record.size + INST_UNPACK_SLACK;
  zip.out_limit = limit < 0x7FFFFFFF ? (uint32_t)limit : 0x7FFFFFFF;
  // An empty packed file goes the file road, which fails on it with a code of the table (and
  // opens the copy again: it is closed first).
  if (!packed || !packed_length) {
    plat_file_close(packed_file);
    file_delete(unpacked);
  }
  UnpackTarget target;
  ZipSink sink = UnpackTargetSink(&target, unpacked, unpacked_file);
  Flag unpacked_ok = packed && packed_length
                         ? DecompressBufferToSink(&zip, packed, packed_length, &sink)
                         : DecompressFile(&zip, packed_copy, unpacked);
  if (packed) mm_free(packed, MM_HERE);
  if (!unpacked_ok) {
    if (!target.opened) file_delete(unpacked);
    ErrorBox(ZipErrorText(GetError(&zip)));
    record_partial(unpacked);
    return -1;
  }
  ulw_record(&inst_uninstall, UNINST_FILE, unpacked);
  SetStatusText("");
  if (CheckAbort()) return 0;
  if (!plat_file_delete(packed_file)) {
    plat_file_close(packed_file);
    file_delete(packed_copy);
  }
  if (!inst_list_is_root(state->record.directory)) {
    SetStatusTextF(TEXT_COPYING, unpacked, installed);
    // The copy ends with the file in the subdirectory and none in the target directory; on
    // the same disk a rename does that without writing the file a second time. A file there
    // already is replaced, as deleting it first would.
    Flag moved = plat_file_rename(unpacked_file, installed);
    plat_file_close(unpacked_file);
    if (!moved && !plat_move_file_over(unpacked, installed)) {
      file_delete(installed);
      if (!CopyFile(unpacked, installed)) {
        ErrorBoxF(TEXT_COPY_FAILED, unpacked);
        record_partial(installed);
        return 0;
      }
      file_delete(unpacked);
    }
    ulw_record(&inst_uninstall, UNINST_FILE, installed);
  }
  return 1;
}

int16_t install_packed(InstallState *state, const char *source, const char *opened,
                       const char *installed) {
  PlatFile unpacked_file, packed_file;
  unpacked_file.handle = packed_file.handle = -1;
  int16_t result = unpack_and_move(state, source, opened, installed, &unpacked_file, &packed_file);
  plat_file_close(&unpacked_file);
  plat_file_close(&packed_file);
  return result;
}

Flag transfer_loop(InstallState *state);

// The source directory as the file system spells it (plat_real_case), where the loop opens the
// source files: on Wine an upper-cased path that the disk spells otherwise costs a case-blind
// search of every directory above it for each open. Texts keep naming the source path.
char source_spelling[KX_PATH];

void learn_source_spelling(const InstallState *state) {
  size_t n;
  if (!plat_real_case(state->source_path, source_spelling, KX_PATH) ||
      ((n = strlen(source_spelling)) > 0 && source_spelling[n - 1] != '\\' &&
       !st_append(source_spelling, KX_PATH, "\\")))
    st_put(source_spelling, KX_PATH, state->source_path);
}

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
  if (!inst_list_rewind(state)) return 0;
  learn_source_spelling(state);
  Flag packed = state->header.packed != 0;
  int16_t got;
  while ((got = inst_list_next(state)) > 0) {
    char installed[KX_PATH], source[KX_PATH], opened[KX_PATH];
    if (!installed_path(state, installed)) return 0;
    show_file(state, installed);
    if (!join_path(source, state->source_path, state->record.stored)) return 0;
    if (!st_join(opened, KX_PATH, source_spelling, state->record.stored))
      st_put(opened, KX_PATH, source);
    Flag present = file_exists(opened);
    if (!present) {
      current_disk = (int16_t)state->record.disk;
      for (;;) {
        char prompt[WE_TEXT_SIZE];
        snprintf(prompt, sizeof prompt, "Vlož DISK%d", current_disk + 1);
        InfoBox(prompt);
        if (DiskIdFile(state)) break;
        if (!QuestionBox("Zkusit znovu")) return 0;
      }
      learn_source_spelling(state);
      if (!st_join(opened, KX_PATH, source_spelling, state->record.stored))
        st_put(opened, KX_PATH, source);
      present = file_exists(opened);
    }
    if (!present) {
      if (QuestionBoxF("Soubor %s nenalezen, vynechat", source)) continue;
      return 0;
    }
    if (CheckAbort()) return 0;
    if (!packed) {
      if (!copy_and_record(source, installed, nullptr, nullptr, opened)) return 0;
      SetStatusText("");
      if (CheckAbort()) return 0;
    } else {
      int16_t result = install_packed(state, source, opened, installed);
      if (result == 0) return 0;
      if (result < 0) continue;
    }
    if (alternative_executable(state->record.name)) {
      char main_path[KX_PATH];
      size_t keep = strlen(installed) - strlen(state->record.name);
      st_put(main_path, keep + 1, installed);
      if (st_append(main_path, sizeof main_path, MAIN_EXECUTABLE)) {
        file_delete(main_path);
        plat_move_file(installed, main_path);
        RecordInstalledFile(main_path, nullptr, nullptr);
      }
    }
    unatt_log_file(source, installed, state->record.size);
    if (install_list) {
      char line[KX_PATH + ILST_DESCRIPTION_MAX + 2];
      st_put(line, sizeof line, installed);
      st_append(line, sizeof line, " ");
      char description[ILST_DESCRIPTION_MAX + 1];
      st_put(description, sizeof description, state->record.description);
      // One line per file: a control character of the medium's text is shown as a blank.
      for (char *c = description; *c; c++)
        if ((unsigned char)*c < 32) *c = ' ';
      st_append(line, sizeof line, description);
      file_write_line(install_list, line);
    }
  }
  if (got < 0) return 0;
  inst_clear_lines();
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
  st_put(state->source_path, sizeof state->source_path, program_path);
  char *last = strrchr(state->source_path, '\\');
  if (last) last[1] = 0;
  else state->source_path[0] = 0;
  st_upper(state->source_path);
  st_put(state->target_path, sizeof state->target_path, "C:\\KORV5\\");
  return state;
}

void inst_destroy_state(InstallState **state) {
  if (!state || !*state) return;
  inst_list_close(*state);
  if (state_now == *state) state_now = nullptr;
  mm_free(*state, MM_HERE);
  *state = nullptr;
}

void inst_close_lists(InstallState *state) {
  ulw_close(&inst_uninstall);
  if (install_list) file_destroy(&install_list);
  inst_list_close(state);
}

Flag CheckAbort(void) {
  pump();
  if (!abort_requested) return 0;
  if (QuestionBox("Přerušit instalaci ?")) return 1;
  abort_requested = 0;
  return 0;
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

  if (!check_source(state)) return 0;          // 1
  if (!remove_previous(state)) return 0;       // 2
  if (!check_target(state)) return 0;          // 3
  ulw_open(&inst_uninstall);                   // 4
  if (!copy_lists(state)) return 0;            // 5
  if (!create_directories(state)) return 0;    // 6
  RecordCreatedDirectory(state->target_path);  // 7
  if (!check_overwrite(state)) return 0;       // 8
  if (!check_space(state)) return 0;           // 9

  if (install_list) file_destroy(&install_list);  // 10
  if (!file_create(&install_list, INSTALL_LIST_NAME) || !file_open(install_list, FILE_WRITE_TEXT)) {
    if (install_list) file_destroy(&install_list);
    ErrorBoxF(TEXT_CANNOT_OPEN, INSTALL_LIST_NAME);
  } else {
    char path[KX_PATH];
    ulw_record_path(path, state->target_path, INSTALL_LIST_NAME, nullptr);
    ulw_hold_room(&inst_uninstall, UNINST_FILE, path);
  }

  Flag transferred = transfer_files(state);  // 11

  if (install_list) file_destroy(&install_list);  // 12
  ulw_release_room(&inst_uninstall);              // its place is written now
  RecordInstalledFile(state->target_path, INSTALL_LIST_NAME, nullptr);
  inst_clear_lines();

  if (!transferred) return 0;  // 13

  UpdateConfiguration(state);  // 14

  inst_list_close(state);  // 15: an open file can't be deleted
  file_delete(INST_DISK_LIST);

  SetStatusText("Aktualizace nabídky Start ...");  // 16
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

  SetStatusText("");  // 17
  return 1;
}
