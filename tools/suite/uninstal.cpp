// UNINSTAL.EXE - the suite's uninstaller. It lies in the installation's EXE directory and
// removes what the installation's UNINST.LST (in the directory above EXE) records: files,
// directories, registry keys, then the list itself. It asks first ("Dotaz"), unless started
// with "-r", as the installer does when it replaces an earlier installation.
//
// Exit codes: 0 done, 1 list missing or unreadable, 2 the user said No, 3 some files could not
// be deleted (uninst.h).
#include "common/we.h"
#include "installer/startup.h"
#include "platform/inst_plat.h"
#include "platform/wtext.h"
#include "toolkit/questions.h"
#include "tools/suite/uninst.h"

#include <windows.h>

#include <string.h>

namespace {

char own_program[KX_PATH];

// The running program can't delete itself: it goes at the next start of Windows, and so does
// its directory when that is empty by then.
Flag delete_later(const char *path) {
  wchar_t wide[WTEXT_PATH], own[WTEXT_PATH];
  if (!wtext_in(path, wide, WTEXT_PATH) || !wtext_in(own_program, own, WTEXT_PATH) ||
      lstrcmpiW(wide, own) != 0)
    return 0;
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
  lstrcpynA(root, program, KX_PATH);
  for (int level = 0; level < 2; level++) {
    char *last = strrchr(root, '\\');
    if (last == nullptr) return 0;
    if (level == 0) *last = '\0';
    else last[1] = '\0';
  }
  return 1;
}

}  // namespace

int main(int, char **) {
  int argc = 0;
  char **argv = nullptr;
  questions_install();  // the toolkit's dialogs for questions and notices
  startup_arguments(&argc, &argv);  // in 1250, from the wide command line
  Flag ask = 1;
  for (int i = 1; i < argc; i++)
    if (argv[i] != nullptr && (strcmp(argv[i], "-r") == 0 || strcmp(argv[i], "-R") == 0)) ask = 0;

  if (!plat_program_path(own_program, sizeof own_program)) {
    lstrcpynA(own_program, argc > 0 && argv[0] != nullptr ? argv[0] : "", sizeof own_program);
  }
  char root[KX_PATH];
  if (!installation_root(own_program, root)) {
    ErrorBoxF("Chybná cesta %s", own_program);
    return UNINSTALL_NO_LIST;
  }
  return uninstall_run(root, ask, delete_later, nullptr);
}
