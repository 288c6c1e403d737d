// UNINSTAL.EXE - the suite's uninstaller. It lies in the installation's EXE directory and
// removes what the installation's UNINST.LST (in the directory above EXE) records: files,
// directories, registry keys, then the list itself. It asks first ("Dotaz"), unless started
// with "-r", as the installer does when it replaces an earlier installation.
//
// Switches for deployment tools (names in any case, "/" or "-" alike): /SILENT (or /S) removes
// as "-r" does and shows no box at all; /LOG=file writes a log (UTF-8, common/log.h), which the
// silent mode always writes, by default to %TEMP%\KORVEX-UNINSTAL.LOG. Every file that could
// not be deleted is named in the log, and in the box when one is shown, with the reason.
//
// The running program and its EXE directory go at the next start of Windows, but with "-r": the
// installer then writes the new installation's uninstaller in its place.
//
// Exit codes: 0 done, 1 list missing or unreadable, 2 the user said No, 3 some files could not
// be deleted (uninst.h).
#include "common/log.h"
#include "common/st.h"
#include "common/we.h"
#include "installer/startup.h"
#include "platform/inst_plat.h"
#include "platform/wtext.h"
#include "toolkit/questions.h"
#include "tools/suite/uninst.h"

#include <windows.h>

#include <stdio.h>
#include <string.h>

namespace {

char own_program[KX_PATH];
Flag replacing;  // "-r": the installer writes a new installation here as soon as we are done

// The running program can't delete itself: it goes at the next start of Windows, and so does
// its directory when that is empty by then. Not so when the installer replaces the
// installation: the new uninstaller takes this one's place, and a deletion left for the next
// start would take the new one.
Flag delete_later(const char *path) {
  wchar_t wide[WTEXT_PATH], own[WTEXT_PATH];
  if (!wtext_in(path, wide, WTEXT_PATH) || !wtext_in(own_program, own, WTEXT_PATH) ||
      lstrcmpiW(wide, own) != 0)
    return 0;
  if (replacing) {
    log_line("%s zůstává: nahradí ho nová instalace", path);
    return 1;
  }
  if (!MoveFileExW(wide, nullptr, MOVEFILE_DELAY_UNTIL_REBOOT)) return 0;
  wchar_t *last = wcsrchr(wide, L'\\');
  if (last != nullptr) {
    *last = 0;
    MoveFileExW(wide, nullptr, MOVEFILE_DELAY_UNTIL_REBOOT);
  }
  return 1;
}

// The installation root: the directory above the program's own directory ("C:\KORV5\" for
// "C:\KORV5\EXE\UNINSTAL.EXE").
Flag installation_root(const char *program, char *root) {
  st_put(root, KX_PATH, program);
  for (int level = 0; level < 2; level++) {
    char *last = strrchr(root, '\\');
    if (last == nullptr) return 0;
    if (level == 0) *last = '\0';
    else last[1] = '\0';
  }
  return 1;
}

// Why a file can't be deleted: the system's answer to a second try.
void why_not_deleted(const char *path, char *why, size_t size) {
  wchar_t wide[KX_PATH];
  if (MultiByteToWideChar(1250, 0, path, -1, wide, KX_PATH) <= 0) return;
  if (DeleteFileW(wide)) {
    snprintf(why, size, "smazán až napodruhé");
    return;
  }
  DWORD error = GetLastError();
  if (error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION)
    snprintf(why, size, "soubor je používán jiným programem");
  else if (error == ERROR_ACCESS_DENIED) snprintf(why, size, "přístup odepřen");
  else snprintf(why, size, "chyba systému %lu", (unsigned long)error);
}

Flag silent_mode;

int16_t before(void *, int16_t kind, const char *, const char *) {
  if (!silent_mode) return WE_REPORT_SHOW;
  return kind <= WE_DIALOG_QUESTION_ALL ? WE_ANSWER_NO : 1;
}

void after(void *, int16_t kind, const char *title, const char *text, int16_t code) {
  log_line("%s \"%s\": %s -> %s", silent_mode ? "Okno (nezobrazeno)" : "Okno", title, text,
           kind > WE_DIALOG_QUESTION_ALL ? "O.K."
           : code == WE_ANSWER_YES       ? "Ano"
                                         : "Ne");
}

// "/NAME" or "-NAME" in any case, with the rest after it in *rest.
Flag is_switch(const char *argument, const char *name, const char **rest) {
  if (argument[0] != '/' && argument[0] != '-') return 0;
  size_t n = strlen(name);
  if (strncasecmp(argument + 1, name, n) != 0) return 0;
  *rest = argument + 1 + n;
  return 1;
}

}  // namespace

int main(int, char **) {
  int argc = 0;
  char **argv = nullptr;
  questions_install();              // the toolkit's dialogs for questions and notices
  startup_arguments(&argc, &argv);  // in 1250, from the wide command line
  Flag ask = 1;
  const char *log_given = nullptr;
  for (int i = 1; i < argc; i++) {
    const char *rest = nullptr;
    if (argv[i] == nullptr) continue;
    if (strcmp(argv[i], "-r") == 0 || strcmp(argv[i], "-R") == 0) ask = 0, replacing = 1;
    else if ((is_switch(argv[i], "SILENT", &rest) || is_switch(argv[i], "S", &rest)) && !rest[0])
      silent_mode = 1, ask = 0;
    else if (is_switch(argv[i], "LOG=", &rest) && rest[0]) log_given = rest;
  }
  char log_path[KX_PATH] = "";
  if (log_given) st_put(log_path, sizeof log_path, log_given);
  else if (silent_mode) log_temp_path("KORVEX-UNINSTAL.LOG", log_path, sizeof log_path);
  if (log_path[0]) log_open(log_path);
  WeReporter reporter = {nullptr, before, after, nullptr};
  we_set_reporter(&reporter);
  uninstall_set_why(why_not_deleted);

  if (!plat_program_path(own_program, sizeof own_program)) {
    st_put(own_program, sizeof own_program, argc > 0 && argv[0] != nullptr ? argv[0] : "");
  }
  log_line("UNINSTAL.EXE %s, %s", own_program,
           silent_mode ? "tichý režim"
           : ask       ? "s dotazem"
                       : "-r");
  char root[KX_PATH];
  int16_t code;
  if (!installation_root(own_program, root)) {
    ErrorBoxF("Chybná cesta %s", own_program);
    code = UNINSTALL_NO_LIST;
  } else {
    code = uninstall_run(root, ask, delete_later, nullptr);
  }
  log_line("Konec, návratový kód %d", (int)code);
  log_close();
  return code;
}
