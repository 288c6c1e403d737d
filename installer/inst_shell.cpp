// inst_shell.cpp - the later steps of the install: the Start-menu group with its shortcuts, the
// desktop and quick-launch shortcuts, the registry entries (application path, uninstall entry,
// file types, configuration path), the HTML Help check and the function list.
//
// None of these steps can fail the install: each shows its own messages, and the procedure
// ignores the result. Every shortcut, group folder and registry key made here is recorded in
// UNINST.LST (in the order the uninstaller must remove them).
#include "installer/inst.h"

#include "common/cz.h"
#include "common/file.h"
#include "common/log.h"
#include "common/st.h"
#include "common/we.h"
#include "installer/startup.h"
#include "platform/inst_plat.h"
#include "platform/reg.h"
#include "platform/shl.h"
#include "store/ifl.h"
#include "store/wco.h"

#include <stdio.h>
#include <string.h>

namespace {

// The maker's server, named in the HTML Help notices.
const char MAKER_SERVER[] = "http://www.korvex.cz/";

const char SHELL_FOLDERS[] =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
const char APP_PATH_KEY[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\AppPaths\\KORV5.EXE";
const char UNINSTALL_KEY[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\KORVEX";
const char CONFIG_KEY_1[] = "SOFTWARE\\KORV";
const char CONFIG_KEY_2[] = "SOFTWARE\\KORV\\KORVEX";
const char CONFIG_KEY_3[] = "SOFTWARE\\KORV\\KORVEX\\5";

const char MAIN_PROGRAM[] = "KORV5.EXE";
const char LINK_NAME[] = "KORVEX.LNK";
const char NO_MAIN_PROGRAM[] = "Nelze najít spustitelný program systému KORVEX";
const char MAIN_DESCRIPTION[] = "KORVEX - Návrhový systém pro elektroniku %d.%03d-%03d";

// File-exists test of a path in drive form (the native build maps it first).
Flag exists(const char *path) {
#ifdef KX_WIN32
  return file_exists(path);
#else
  char native[KX_PATH];
  return inst_host_native_path(path, native, sizeof native) && file_exists(native);
#endif
}

Flag ends_in_backslash(const char *text) {
  size_t n = strlen(text);
  return n > 0 && text[n - 1] == '\\';
}

void drop_one_backslash(char *text) {
  if (ends_in_backslash(text)) text[strlen(text) - 1] = 0;
}

void main_description(char *out, size_t size) {
  snprintf(out, size, MAIN_DESCRIPTION, KX_VERSION_MAJOR, KX_VERSION_MINOR, KX_VERSION_BUILD);
}

// Reads a shell folder into folder (KX_PATH bytes). 0 only when the key opens and the value
// can't be read. A key that can't be opened leaves folder empty and counts as found.
Flag shell_folder(int16_t root, const char *value, char *folder) {
  folder[0] = 0;
  if (!reg_key_exists(root, SHELL_FOLDERS)) return 1;
  return reg_get_string(root, SHELL_FOLDERS, value, folder, KX_PATH);
}

// A shortcut in the current directory, with its line in the log.
void make_link(const char *name, const char *target, const char *description,
               const char *directory) {
  Flag made = CreateShellLink(name, target, description, directory);
  char here[KX_PATH];
  if (!plat_current_directory(here, KX_PATH)) here[0] = 0;
  log_line("Zástupce %s%s%s -> %s%s", here, ends_in_backslash(here) ? "" : "\\", name, target,
           made ? "" : " (nevytvořen)");
}

// The main program's shortcut (Start menu, desktop, quick launch) in the current directory.
void main_program_link(const InstallState *state) {
  char target[KX_PATH], directory[KX_PATH], description[KX_PATH];
  st_join(target, sizeof target, program_dir, MAIN_PROGRAM);
  if (!exists(target)) ErrorBox(NO_MAIN_PROGRAM);
  st_join(directory, sizeof directory, state->target_path, "Navrhy");
  main_description(description, sizeof description);
  make_link(LINK_NAME, target, description, directory);
}

// One shortcut beside the main program's in the group folder: target, its description and
// working directory, with the message for a missing target; then its record.
void group_link(const char *folder, const char *name, const char *program, const char *missing,
                const char *description, const char *directory) {
  char target[KX_PATH], record[KX_PATH];
  st_join(target, sizeof target, program_dir, program);
  if (!exists(target)) ErrorBox(missing);
  make_link(name, target, description, directory);
  st_join(record, sizeof record, folder, "\\", name);
  RecordInstalledFile(record, nullptr, nullptr);
}

const char *root_name(int16_t root) {
  return root == REG_ROOT_CLASSES ? "HKCR" : root == REG_ROOT_CURRENT_USER ? "HKCU" : "HKLM";
}

Flag SetRegistryValue(int16_t root, const char *key, const char *value, const char *text) {
  Flag ok = reg_set_string(root, key, value, text);
  log_line("Registr %s\\%s [%s] = \"%s\"%s", root_name(root), key, value ? value : "(výchozí)",
           text ? text : "", ok ? "" : " (nezapsáno)");
  return ok;
}

Flag SetRegistryDefault(int16_t root, const char *key, const char *text) {
  return SetRegistryValue(root, key, nullptr, text);
}

Flag SetRegistryNumber(int16_t root, const char *key, const char *value, uint32_t number) {
  Flag ok = reg_set_dword(root, key, value, number);
  log_line("Registr %s\\%s [%s] = %lu (DWORD)%s", root_name(root), key, value,
           (unsigned long)number, ok ? "" : " (nezapsáno)");
  return ok;
}

void flush_root(int16_t root) {
  if (!reg_flush(root, nullptr)) ErrorBox("Chyba při ukládání registru\n(RegFlushKey)");
}

}  // namespace

// ---- Shortcuts ---------------------------------------------------------------------------------

Flag UpdateStartMenu(InstallState *state) {
  if (!state) {
    InternalError("inst", __LINE__);
    return 0;
  }
  SetStatusText("Aktualizace nabídky Start ...");

  char folder[KX_PATH];
  switch (shl_windows_system()) {
    case SHL_SYSTEM_NT:
      if (!shell_folder(REG_ROOT_LOCAL_MACHINE, "Common Programs", folder)) {
        ErrorBox("Windows NT - Nelze zjistit adresář nabídky Start|Programy");
        return 0;
      }
      break;
    case SHL_SYSTEM_98:
      if (!shell_folder(REG_ROOT_CURRENT_USER, "Programs", folder)) {
        ErrorBox("windows 98 - Nelze zjistit adresář nabídky Start|Programy");
        return 0;
      }
      break;
    case SHL_SYSTEM_95:
      if (!shell_folder(REG_ROOT_CURRENT_USER, "Programs", folder)) {
        ErrorBox("Windows 95 - Nelze zjistit adresář nabídky Start|Programy");
        return 0;
      }
      break;
    default:
      ErrorBox(
          "Neznámá verze operačního systému¨\nNelze zjistit adresář nabídky "
          "Start|Programy");
      return 0;
  }

  // Keep this: an empty folder (no Shell Folders key) gets no backslash, so the group is then
  // made relative to the current directory.
  char group[KX_PATH];
  st_join(group, sizeof group, folder, (folder[0] && !ends_in_backslash(folder)) ? "\\" : "",
          "KORVEX");
  plat_make_directory(group);
  if (!plat_change_directory(group)) {
    ErrorBoxF("Nelze přejít do adresáře %s", group);
    return 0;
  }
  RecordCreatedDirectory(group);

  char directory[KX_PATH], record[KX_PATH];
  main_program_link(state);
  st_join(record, sizeof record, group, "\\", LINK_NAME);
  RecordInstalledFile(record, nullptr, nullptr);

  st_join(directory, sizeof directory, state->target_path, "EXE");
  drop_one_backslash(directory);
  group_link(group, "Konfigurace KORVEX.LNK", "CONFIG.EXE",
             "Nelze najít konfigurační program systému KORVEX", "Konfigurace KORVEX", directory);

  st_join(directory, sizeof directory, state->target_path);
  drop_one_backslash(directory);
  group_link(group, "Odinstalace KORVEX.LNK", "UNINSTAL.EXE",
             "Nelze najít odinstalační program systému KORVEX", "Odinstalace KORVEX", directory);
  return 1;
}

// The main program's link in folder, recorded; cd_error (with the folder for %s) when the
// folder cannot be entered.
static Flag main_link_in(InstallState *state, const char *folder, const char *cd_error) {
  if (!plat_change_directory(folder)) {
    ErrorBoxF(cd_error, folder);
    return 0;
  }
  main_program_link(state);
  char record[KX_PATH];
  st_join(record, sizeof record, folder, "\\", LINK_NAME);
  RecordInstalledFile(record, nullptr, nullptr);
  return 1;
}

Flag UpdateDesktop(InstallState *state) {
  if (!state) {
    InternalError("inst", __LINE__);
    return 0;
  }
  if (!state->desktop_icon) return 0;
  SetStatusText("Aktualizace pracovní plochy ...");
  char folder[KX_PATH];
  if (!shell_folder(REG_ROOT_CURRENT_USER, "Desktop", folder)) {
    ErrorBox("Nelze zjistit adresář složky Pracovní plocha");
    return 0;
  }
  return main_link_in(state, folder, "Nelze přejít do adresáře %s");
}

Flag UpdateQuickLaunch(InstallState *state) {
  if (!state) {
    InternalError("inst", __LINE__);
    return 0;
  }
  if (!state->quick_launch_icon) return 0;
  SetStatusText("Aktualizace systémové lišty ...");
  char data[KX_PATH];
  if (!shell_folder(REG_ROOT_CURRENT_USER, "AppData", data)) {
    ErrorBox("Nelze zjistit adresář složky Data aplikací");
    return 0;
  }
  char folder[KX_PATH];
  st_join(folder, sizeof folder, data, ends_in_backslash(data) ? "" : "\\",
          "Microsoft\\Internet Explorer\\Quick Launch");
  return main_link_in(state, folder,
                      "Nelze přejít do adresáře %s\nDo systémové lišty nelze doplnit ikonu,\nVáš "
                      "systém Windows tuto funkci nepodporuje.");
}

// ---- Registry ----------------------------------------------------------------------------------

Flag RegisterAppPath(InstallState *state) {
  if (!state) {
    InternalError("inst", __LINE__);
    return 0;
  }
  SetStatusText("Aktualizace registru (registrace aplikace) ...");
  char data[KX_PATH];
  st_join(data, sizeof data, program_dir, MAIN_PROGRAM);
  if (!SetRegistryDefault(REG_ROOT_LOCAL_MACHINE, APP_PATH_KEY, data))
    ErrorBox("Chyba při do ukládání registru");
  st_join(data, sizeof data, program_dir);
  drop_one_backslash(data);
  if (!SetRegistryValue(REG_ROOT_LOCAL_MACHINE, APP_PATH_KEY, "Path", data))
    ErrorBox("Chyba při do ukládání registru");
  flush_root(REG_ROOT_LOCAL_MACHINE);
  RecordMachineKey(APP_PATH_KEY);
  return 1;
}

Flag UninstallDetails(const InstallState *state) {
  if (!state) {
    InternalError("inst", __LINE__);
    return 0;
  }
  // For the system's list of programs and for deployment tools. A value that can't be written
  // is only logged: these values are no step of their own and show no box.
  const int16_t root = REG_ROOT_LOCAL_MACHINE;
  char data[KX_PATH + 16];
  Flag ok = 1;
  snprintf(data, sizeof data, "%d.%03d-%03d", KX_VERSION_MAJOR, KX_VERSION_MINOR, KX_VERSION_BUILD);
  ok = SetRegistryValue(root, UNINSTALL_KEY, "DisplayVersion", data) && ok;
  ok = SetRegistryValue(root, UNINSTALL_KEY, "InstallLocation", state->target_path) && ok;
  st_join(data, sizeof data, program_dir, MAIN_PROGRAM, ",0");
  ok = SetRegistryValue(root, UNINSTALL_KEY, "DisplayIcon", data) && ok;
  uint32_t kib = (uint32_t)((state->total_size + 1023) / 1024);
  ok = SetRegistryNumber(root, UNINSTALL_KEY, "EstimatedSize", kib) && ok;
  ok = SetRegistryNumber(root, UNINSTALL_KEY, "NoModify", 1) && ok;
  ok = SetRegistryNumber(root, UNINSTALL_KEY, "NoRepair", 1) && ok;
  st_join(data, sizeof data, "\"", program_dir, "UNINSTAL.EXE\" /SILENT");
  ok = SetRegistryValue(root, UNINSTALL_KEY, "QuietUninstallString", data) && ok;
  return ok;
}

Flag RegisterUninstall(InstallState *state) {
  if (!state) {
    InternalError("inst", __LINE__);
    return 0;
  }
  SetStatusText("Aktualizace registru (odinstalace) ...");
  char data[KX_PATH];
  snprintf(data, sizeof data, "KORVEX V%d.%03d-%03d", KX_VERSION_MAJOR, KX_VERSION_MINOR,
           KX_VERSION_BUILD);
  if (!SetRegistryValue(REG_ROOT_LOCAL_MACHINE, UNINSTALL_KEY, "DisplayName", data))
    ErrorBox("Chyba při ukládání do registru");
  st_join(data, sizeof data, program_dir, "UNINSTAL.EXE");
  if (!SetRegistryValue(REG_ROOT_LOCAL_MACHINE, UNINSTALL_KEY, "UninstallString", data))
    ErrorBox("Chyba při ukládání registru");
  UninstallDetails(state);
  flush_root(REG_ROOT_LOCAL_MACHINE);
  RecordMachineKey(UNINSTALL_KEY);
  return 1;
}

namespace {

// The three file types: configuration key of the extension, its default, the type key, its
// description, the icon number and the type's name in the messages.
struct FileType {
  const char *section;
  const char *key;
  const char *fallback;
  const char *type;
  const char *text;
  int icon;
  const char *name_fault;
  const char *description_fault;
};

const FileType FILE_TYPES[3] = {
    {"CO_common", "default_design_extension", "D32", "d32_file", "Soubor návrhu KORVEX", 10,
     "Do systémového registru nelze doplnit příponu D32",
     "Do systémového registru nelze doplnit popis přípony D32"},
    {"CO_schematic", "schema_default_library_extension", "S32", "s32_file",
     "Knihovna značek KORVEX", 11, "Do systémového registru nelze doplnit příponu S32",
     "Do systémového registru nelze doplnit popis přípony S32"},
    {"CO_layout", "layout_default_library_extension", "L32", "l32_file", "Knihovna patic KORVEX",
     12, "Do systémového registru nelze doplnit příponu L32",
     "Do systémového registru nelze doplnit popis přípony L32"},
};

// ".d32" and the like: the configured extension (at most three characters) or the default,
// in lower case.
void extension_key(const FileType &type, char *out, size_t size) {
  char extension[4] = "";
  ConfigStore *store = wco::system_store();
  if (!store || !wco::get_text(store, type.section, type.key, extension, 3))
    st_join(extension, sizeof extension, type.fallback);
  cz_lower(extension);
  st_join(out, size, ".", extension);
}

}  // namespace

Flag RegisterFileTypes(InstallState *state) {
  if (!state) {
    InternalError("inst", __LINE__);
    return 0;
  }
  SetStatusText("Aktualizace registru (ikony souborů) ...");
  char key[KX_PATH], data[KX_PATH];
  for (const FileType &type : FILE_TYPES) {
    extension_key(type, key, sizeof key);
    if (!SetRegistryDefault(REG_ROOT_CLASSES, key, type.type))
      ErrorBoxF("Do systémového registru nelze doplnit příponu %s", key);
    RecordOtherItem(key);
  }
  for (const FileType &type : FILE_TYPES)
    if (!SetRegistryDefault(REG_ROOT_CLASSES, type.type, type.text)) ErrorBox(type.name_fault);
  for (const FileType &type : FILE_TYPES) {
    char icon[16];
    snprintf(icon, sizeof icon, "%d", type.icon);
    st_join(key, sizeof key, type.type, "\\DefaultIcon");
    st_join(data, sizeof data, program_dir, MAIN_PROGRAM, ",-", icon);
    if (!SetRegistryDefault(REG_ROOT_CLASSES, key, data)) ErrorBox(type.description_fault);
  }
  for (const FileType &type : FILE_TYPES) {
    st_join(key, sizeof key, type.type, "\\Shell");
    if (!SetRegistryDefault(REG_ROOT_CLASSES, key, "")) ErrorBox(type.description_fault);
  }
  for (const FileType &type : FILE_TYPES) {
    st_join(key, sizeof key, type.type, "\\Shell\\Open");
    if (!SetRegistryDefault(REG_ROOT_CLASSES, key, "&Otevřít")) ErrorBox(type.description_fault);
  }
  for (const FileType &type : FILE_TYPES) {
    st_join(key, sizeof key, type.type, "\\Shell\\Open\\command");
    st_join(data, sizeof data, program_dir, MAIN_PROGRAM, " \"%1\"");
    if (!SetRegistryDefault(REG_ROOT_CLASSES, key, data)) ErrorBox(type.description_fault);
  }
  flush_root(REG_ROOT_CLASSES);
  shl_notify_associations();

  // Deepest keys first, so that deleting in list order always meets a key without sub-keys.
  static const char *const SUFFIXES[] = {"\\Shell\\Open\\command", "\\Shell\\Open", "\\Shell",
                                         "\\DefaultIcon", ""};
  for (const char *suffix : SUFFIXES)
    for (const FileType &type : FILE_TYPES) {
      st_join(key, sizeof key, type.type, suffix);
      RecordOtherItem(key);
    }
  return 1;
}

Flag RegisterConfigPath(InstallState *state) {
  if (!state) {
    InternalError("inst", __LINE__);
    return 0;
  }
  SetStatusText("Aktualizace registru (cesta systémové konfigurace) ...");
  if (!SetRegistryDefault(REG_ROOT_LOCAL_MACHINE, CONFIG_KEY_1, ""))
    ErrorBox("Chyba při do ukládání registru");
  if (!SetRegistryDefault(REG_ROOT_LOCAL_MACHINE, CONFIG_KEY_2, ""))
    ErrorBox("Chyba při do ukládání registru");
  char data[KX_PATH];
  st_join(data, sizeof data, state->target_path, "EXE", "\\", "SYSTEM.WCO");
  if (!SetRegistryValue(REG_ROOT_LOCAL_MACHINE, CONFIG_KEY_3, "system_wco_path", data))
    ErrorBox("Chyba při do ukládání registru");
  RecordMachineKey(CONFIG_KEY_3);
  RecordMachineKey(CONFIG_KEY_2);
  RecordMachineKey(CONFIG_KEY_1);
  flush_root(REG_ROOT_LOCAL_MACHINE);
  return 1;
}

// ---- HTML Help and the function list -----------------------------------------------------------

Flag CheckHtmlHelp(InstallState *state) {
  if (!state) {
    InternalError("inst", __LINE__);
    return 0;
  }
  if (plat_library_present("HHCTRL.OCX")) return 1;
  char package[KX_PATH];
  st_join(package, sizeof package, state->target_path, "hhlppack\\hhupd.exe");
  char text[512];
  if (!exists(package)) {
    st_join(text, sizeof text,
            "Nebyla nalezena knihovna HHCTRL.OCX. Pro práci s nápovědou je třeba nainstalovat "
            "aplikaci HTML HELP (Microsoft). Servisní balíček HHUPD.EXE lze získat zdarma na "
            "serverech firmy Microsoft nebo na našem serveru ",
            MAKER_SERVER, " ");
    NoticeBox(text);
    return 1;
  }
  if (!QuestionBox("Nebyla nalezena knihovna HHCTRL.OCX. Pro práci s nápovědou je třeba "
                   "nainstalovat aplikaci HTML HELP (Microsoft). Má se nyní spustit instalace "
                   "tohoto servisního balíčku?")) {
    st_join(text, sizeof text,
            "Do systému je třeba doinstalovat aplikaci HTML HELP (Microsoft). Servisní balíček "
            "HHUPD.EXE lze získat zdarma na serverech firmy Microsoft nebo na našem serveru ",
            MAKER_SERVER, " ");
    NoticeBox(text);
    return 1;
  }
  int32_t exit_code = 0;
  if (!plat_run_and_wait(package, nullptr, nullptr, &exit_code))
    ErrorBox("Chyba při spuštění instalace HTML Help - hhupd.exe (soubor nenalezen?)");
  return 1;
}

Flag CreateFunctionList(InstallState *state) {
  if (!state) {
    InternalError("inst", __LINE__);
    return 0;
  }
  char drive[3] = {state->target_path[0], state->target_path[0] ? state->target_path[1] : '\0',
                   '\0'};
  char change[3] = {drive[0], drive[1], '\0'};
  if (change[0] >= 'a' && change[0] <= 'z') change[0] = (char)(change[0] - 'a' + 'A');
  plat_change_directory(change);

  char path[KX_PATH];
  st_join(path, sizeof path, state->target_path, "EXE");
  if (!plat_change_directory(path)) {
    ErrorBoxF("Nelze změnit adresář na disku %s", drive);
    return 0;
  }
  st_join(path, sizeof path, state->target_path, "EXE", "\\", MAIN_PROGRAM);
  int32_t exit_code = -1;
  if (!plat_run_and_wait(path, "$f", nullptr, &exit_code) || exit_code != 0) {
    ErrorBox("Chyba při vytvoření seznamu konfiguračního seznamu funkcí");
    return 0;
  }
  st_join(path, sizeof path, state->target_path, "EXE", "\\", "PFU_LIST.PFU");
  RecordInstalledFile(path, nullptr, nullptr);
  if (!plat_change_directory("..")) {
    ErrorBoxF("Nelze změnit adresář na disku %s", drive);
    return 0;
  }
  return 1;
}

// ---- Configuration update ------------------------------------------------------------------

static void set_path(ConfigStore *store, const char *section, const char *key, char *field,
                     const char *a, const char *b = nullptr, const char *c = nullptr) {
  char value[KX_PATH];
  st_join(value, KX_PATH, a, b, c);
  st_put(field, IFL_LONG_TEXT + 1, value);
  if (store) wco::set_text(store, section, key, field);
}

Flag UpdateConfiguration(InstallState *state) {
  SetStatusText("Zápis/oprava konfiguračního souboru");
  ConfigStore *store = wco::system_store();
  const char *target = state->target_path;
  set_path(store, "CO_common", "system_path", ifl_options.system_path,
           strlen(target) >= 2 ? target + 2 : "");
  st_join(program_dir, KX_PATH, target, "EXE", "\\");
  if (!config_taken_over) {
    set_path(store, "CO_common", "initial_directory", ifl_options.initial_directory, target,
             "Navrhy");
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
  if (store && st_join(path, KX_PATH, target, "EXE", "\\", "SYSTEM.WCO"))
    wco::save_always(store, path);
  RecordInstalledFile(target, "EXE", "SYSTEM.WCO");
  SetStatusText("");
  return 1;
}
