// uninst.cpp - removing what UNINST.LST records.
#include "tools/suite/uninst.h"

#include "common/file.h"
#include "common/log.h"
#include "common/st.h"
#include "common/we.h"
#include "platform/inst_plat.h"
#include "platform/reg.h"
#include "tools/suite/ulst.h"

#include <stdio.h>
#include <string.h>

namespace {

UninstallWhy why_hook;

Flag is_separator(char c) { return c == '\\' || c == '/'; }

char ascii_upper(char c) { return c >= 'a' && c <= 'z' ? (char)(c - 'a' + 'A') : c; }

// The same path, letters compared regardless of ASCII case, one trailing separator ignored.
Flag same_path(const char *a, const char *b) {
  size_t la = strlen(a), lb = strlen(b);
  if (la > 0 && is_separator(a[la - 1])) la--;
  if (lb > 0 && is_separator(b[lb - 1])) lb--;
  if (la != lb) return 0;
  for (size_t i = 0; i < la; i++) {
    if (is_separator(a[i]) && is_separator(b[i])) continue;
    if (ascii_upper(a[i]) != ascii_upper(b[i])) return 0;
  }
  return 1;
}

// The first n characters of a and b are the same path, as same_path compares.
Flag same_path_prefix(const char *a, const char *b, size_t n) {
  for (size_t i = 0; i < n; i++) {
    if (is_separator(a[i]) && is_separator(b[i])) continue;
    if (ascii_upper(a[i]) != ascii_upper(b[i])) return 0;
  }
  return 1;
}

struct Walk {
  UninstallList list;
  UninstallCounts *counts;
  UninstallLater later;
  const char *root;
  Flag root_recorded;
  Flag read_failed;
};

void remove_file(Walk *walk, const char *path) {
  if (!file_exists(path)) return;
  if (file_delete(path)) {
    walk->counts->files++;
    log_line("Smazán soubor %s", path);
    return;
  }
  if (walk->later != nullptr && walk->later(path)) return;
  UninstallCounts *counts = walk->counts;
  if (counts->failed++ == 0) st_put(counts->first_failed, sizeof counts->first_failed, path);
  char why[200] = "nelze smazat";
  if (why_hook) why_hook(path, why, sizeof why);
  log_line("Nelze smazat %s: %s", path, why);
  char line[KX_PATH + 220];
  snprintf(line, sizeof line, "%s (%s)\n", path, why);
  // Room is kept for the "..." that says the text is cut.
  size_t used = strlen(counts->failed_text);
  if (used + strlen(line) + 4 < sizeof counts->failed_text)
    st_append(counts->failed_text, sizeof counts->failed_text, line);
  else if (used + 4 < sizeof counts->failed_text && !strstr(counts->failed_text, "..."))
    st_append(counts->failed_text, sizeof counts->failed_text, "...");
}

// 1 when something went.
Flag remove_directory(Walk *walk, const char *path) {
  if (same_path(path, walk->root)) walk->root_recorded = 1;
  if (!plat_directory_exists(path)) return 0;
  if (plat_remove_directory(path)) {
    walk->counts->directories++;
    log_line("Odstraněn adresář %s", path);
    return 1;
  }
  return 0;
}

// The installs keep the application-path key under a parent of this suite's own spelling
// ("AppPaths" in one word, which Windows itself does not use) and record only the key; the
// parent goes with the last key under it.
const char APP_PATHS[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\AppPaths";

Flag remove_key(Walk *walk, int16_t root, const char *key) {
  if (key[0] == '\0' || !reg_key_exists(root, key)) return 0;
  if (reg_subkey_count(root, key) == 0 && reg_delete_key(root, key)) {
    walk->counts->keys++;
    log_line("Odstraněn klíč registru %s\\%s", root == REG_ROOT_CLASSES ? "HKCR" : "HKLM", key);
    size_t n = sizeof APP_PATHS - 1;
    if (root == REG_ROOT_LOCAL_MACHINE && strlen(key) > n && is_separator(key[n]) &&
        same_path_prefix(key, APP_PATHS, n) && reg_subkey_count(root, APP_PATHS) == 0)
      reg_delete_key(root, APP_PATHS);
    return 1;
  }
  return 0;
}

// One walk from the last record to the first; files only on the first walk. Returns 1 when a
// directory or key went.
Flag walk_once(Walk *walk, Flag with_files) {
  Flag progress = 0;
  for (int32_t i = walk->list.count - 1; i >= 0; i--) {
    UninstallRecord record;
    if (!ulst_read(&walk->list, i, &record)) {
      walk->read_failed = 1;
      return 0;
    }
    if (record.path[0] == '\0') continue;
    switch (record.kind) {
      case UNINST_FILE:
        if (with_files) remove_file(walk, record.path);
        break;
      case UNINST_DIRECTORY:
        if (remove_directory(walk, record.path)) progress = 1;
        break;
      case UNINST_CLASSES_KEY:
        if (remove_key(walk, REG_ROOT_CLASSES, record.path)) progress = 1;
        break;
      case UNINST_MACHINE_KEY:
        if (remove_key(walk, REG_ROOT_LOCAL_MACHINE, record.path)) progress = 1;
        break;
      default: break;  // a kind of a later installer: not ours to guess
    }
  }
  return progress;
}

// What stays: directories and keys that still exist after the last walk.
void count_kept(Walk *walk) {
  for (int32_t i = walk->list.count - 1; i >= 0; i--) {
    UninstallRecord record;
    if (!ulst_read(&walk->list, i, &record)) return;
    if (record.path[0] == '\0') continue;
    if ((record.kind == UNINST_DIRECTORY && plat_directory_exists(record.path)) ||
        (record.kind == UNINST_CLASSES_KEY && reg_key_exists(REG_ROOT_CLASSES, record.path)) ||
        (record.kind == UNINST_MACHINE_KEY && reg_key_exists(REG_ROOT_LOCAL_MACHINE, record.path)))
      walk->counts->kept++;
  }
}

// root's parent directory: root cut after the separator before its last component.
void parent_of(const char *root, char *parent, size_t size) {
  st_put(parent, size, root);
  size_t n = strlen(parent);
  if (n > 0 && is_separator(parent[n - 1])) n--;
  while (n > 0 && !is_separator(parent[n - 1])) n--;
  parent[n] = '\0';
}

}  // namespace

void uninstall_set_why(UninstallWhy why) { why_hook = why; }

int16_t uninstall_run(const char *root, Flag ask, UninstallLater later, UninstallCounts *counts) {
  UninstallCounts own;
  if (counts == nullptr) counts = &own;
  memset(counts, 0, sizeof *counts);
  if (root == nullptr) {
    InternalError("uninst", __LINE__);
    return UNINSTALL_NO_LIST;
  }
  char list_path[KX_PATH];
  if (!st_join(list_path, sizeof list_path, root, ULST_NAME)) {
    ErrorBoxF("Chybná cesta/soubor nenalezen: %s", root);
    return UNINSTALL_NO_LIST;
  }

  Walk walk;
  memset(&walk, 0, sizeof walk);
  walk.counts = counts;
  walk.later = later;
  walk.root = root;
  if (!ulst_open(&walk.list, list_path)) return UNINSTALL_NO_LIST;
  if (ask && !QuestionBoxF("Má být odstraněna instalace KORVEX z adresáře %s ?", root)) {
    ulst_close(&walk.list);
    return UNINSTALL_CANCELLED;
  }

  char parent[KX_PATH];
  parent_of(root, parent, sizeof parent);
  if (parent[0] != '\0') plat_change_directory(parent);

  // Each walk that removes something can free at most the next level up: never more walks
  // than records.
  Flag progress = walk_once(&walk, 1);
  for (int32_t n = 0; progress && !walk.read_failed && n < walk.list.count; n++)
    progress = walk_once(&walk, 0);
  if (!walk.read_failed) count_kept(&walk);
  ulst_close(&walk.list);
  if (walk.read_failed) return UNINSTALL_NO_LIST;

  if (counts->failed > 0) {
    char text[sizeof counts->failed_text + 64];
    snprintf(text, sizeof text, "Nelze smazat %d soubor(ů):\n%s", (int)counts->failed,
             counts->failed_text);
    ErrorBox(text);
    return UNINSTALL_INCOMPLETE;
  }
  file_delete(list_path);
  if (walk.root_recorded && plat_directory_exists(root) && plat_remove_directory(root)) {
    counts->directories++;
  }
  if (ask) NoticeBox("Instalace KORVEX byla odstraněna.");
  return UNINSTALL_DONE;
}
