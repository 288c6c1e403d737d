// setup.cpp - SETUP.EXE: the main body.
//
// The runtime's entry calls WinMain, which hands the instance, the previous instance, the
// command line and the show-command to setup_main:
//   1. the memory manager sees the arguments ("$m" / "$M": the guarded mode with its log);
//   2. the command line is read (installer/startup.h);
//   3. "$f" / "$F": the installer's function table is written to PFU_LIST.PFU in the current
//      directory and the program ends with 0, without a window;
//   4. the switches of unattended installs are read (installer/switches.h) and the log is
//      opened when one is asked for (/LOG=, always in the silent modes); a malformed switch
//      ends the program with 1 (its reason in the log and, unless very silent, in a box);
//      /HELP and /? show the switches and exit codes and end with 0;
//   5. otherwise the options record is filled (built-in defaults) and the install runs: the
//      toolkit with the installer dialog as its main window (window type 100) until the dialog
//      is closed (with /SILENT the dialog runs by itself), or with /VERYSILENT the procedure
//      without any window; then the options record is handed back, the process-wide
//      configuration store is freed (before the memory statistics end, so that the log shows
//      it given back). Started with any of the switches, the exit code says how the last install
//      run ended (installer/unatt.h; 2 when none ran), in the dialog as in the silent modes;
//      started with none, it is the toolkit's result, as it always was.
#include "common/cz.h"
#include "common/log.h"
#include "common/mm.h"
#include "common/st.h"
#include "common/we.h"
#include "installer/inst.h"
#include "installer/instmain.h"
#include "installer/startup.h"
#include "installer/sw_inst.h"
#include "installer/switches.h"
#include "installer/unatt.h"
#include "pack/pfu.h"
#include "platform/inst_plat.h"
#include "store/ifl.h"
#include "store/wco.h"
#include "toolkit/questions.h"
#include "toolkit/wgd.h"

#include <windows.h>
#include <objbase.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

// ---- The installer's functions ---------------------------------------------------------------
//
// The three buttons of the installer dialog, as functions of the suite's function table.
enum { SETUP_FN_START = 14001, SETUP_FN_END = 14002, SETUP_FN_ABORT = 14003 };

static int32_t function_start(int32_t) {
  InstallerDialog *dialog = instmain_dialog();
  if (!dialog) return 0;
  dialog->run_install();
  return 1;
}

static int32_t function_end(int32_t) {
  InstallerDialog *dialog = instmain_dialog();
  if (!dialog) return 0;
  dialog->end();
  return 1;
}

static int32_t function_abort(int32_t) {
  abort_requested = 1;
  return 1;
}

// clang-format off
static FunctionRecord setup_functions[] = {
    {SETUP_FN_START, 0, 0, PFU_FT_ALL_MODES, 0, 0, function_start, "setup_start", 0},
    {SETUP_FN_ABORT, 0, 0, PFU_FT_ALL_MODES, 0, 0, function_abort, "setup_abort", 0},
    {SETUP_FN_END, 0, 0, PFU_FT_ALL_MODES, 0, 0, function_end, "setup_end", 0},
    {0, PFU_ST_END, 0, 0, 0, 0, nullptr, nullptr, 0},
};
// clang-format on

static const char *function_text(int32_t id, int16_t which) {
  Flag menu = which == PFU_TEXT_MENU;
  switch (id) {
    case SETUP_FN_START: return menu ? "&Start instalace" : "Spustí instalaci systému KORVEX";
    case SETUP_FN_ABORT: return menu ? "&Přerušit instalaci" : "Přeruší běžící instalaci";
    case SETUP_FN_END: return menu ? "&Konec" : "Ukončí instalační program";
    default: return nullptr;
  }
}

// PFU_LIST.PFU of the installer's functions into the current directory.
static void write_function_list(void) {
  FunctionTable *table = nullptr;
  if (!pfu_create(&table)) return;
  PfuTextSource previous = pfu_set_text_source(function_text);
  if (pfu_register(table, setup_functions)) WriteFunctionList(table);
  pfu_set_text_source(previous);
  pfu_destroy(&table);
}

// ---- Switches, help and the log --------------------------------------------------------------

static const char HELP_TEXT[] =
    "KORVEX 5.003-016 - instalační program\n"
    "\n"
    "SETUP.EXE [/SILENT | /VERYSILENT] [/DIR=cesta] [/SOURCE=cesta] [/DESKTOP=0|1]\n"
    "          [/QUICKLAUNCH=0|1] [/KEEPCONFIG=0|1] [/LOG=soubor] [/HELP | /?]\n"
    "\n"
    "/SILENT           dialog se vyplní z přepínačů a instalace proběhne sama, bez dotazů\n"
    "/VERYSILENT       instalace bez okna a bez dotazů\n"
    "/DIR=cesta        cílový adresář s jednotkou (výchozí C:\\KORV5\\)\n"
    "/SOURCE=cesta     zdrojový adresář (výchozí adresář programu SETUP.EXE)\n"
    "/DESKTOP=0|1      ikona na pracovní ploše (výchozí 1)\n"
    "/QUICKLAUNCH=0|1  ikona v systémové liště (výchozí 1, nabízí-li ji systém)\n"
    "/KEEPCONFIG=0|1   převzít systémovou konfiguraci předchozí instalace (výchozí 1)\n"
    "/LOG=soubor       protokol v UTF-8; v tichých režimech vždy,\n"
    "                  výchozí %TEMP%\\KORVEX-SETUP.LOG\n"
    "/HELP, /?         tento přehled\n"
    "\n"
    "Návratové kódy (při spuštění s přepínači, v dialogu i v tichých režimech):\n"
    "0  nainstalováno\n"
    "1  chybný příkazový řádek, nic nebylo provedeno\n"
    "2  zrušeno uživatelem (odmítnutý dotaz, přerušení, dialog zavřen bez instalace)\n"
    "3  chyba při instalaci\n"
    "4  předchozí instalaci nelze odstranit\n"
    "5  neúplné instalační médium (chybí disketa nebo soubor)\n"
    "6  málo místa na disku\n"
    "7  nainstalováno, ale některé soubory nebyly rozbaleny nebo byly vynechány\n"
    "Spuštěn bez přepínačů končí program jako dosud výsledkem dialogu.\n";

static const char DEFAULT_LOG[] = "KORVEX-SETUP.LOG";

// Text for the console the program was started from, or for the file its output goes to:
// UTF-16 to a console, UTF-8 to a file or pipe. 0 when there is neither.
static Flag write_to_console(const char *text) {
  HANDLE out = GetStdHandle(STD_OUTPUT_HANDLE);
  Flag attached = 0;
  if (!out || out == INVALID_HANDLE_VALUE || GetFileType(out) == FILE_TYPE_UNKNOWN) {
    if (!AttachConsole(ATTACH_PARENT_PROCESS)) return 0;
    attached = 1;
    out = CreateFileW(L"CONOUT$", GENERIC_WRITE, FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                      nullptr);
    if (out == INVALID_HANDLE_VALUE) {
      FreeConsole();
      return 0;
    }
  }
  DWORD mode = 0, written = 0;
  Flag ok;
  if (GetConsoleMode(out, &mode)) {
    static wchar_t wide[sizeof HELP_TEXT * 2];
    int n = MultiByteToWideChar(1250, 0, text, -1, wide, (int)(sizeof wide / sizeof wide[0]));
    ok = n > 1 && WriteConsoleW(out, wide, (DWORD)(n - 1), &written, nullptr);
  } else {
    static char utf8[sizeof HELP_TEXT * 3];
    ok = cz_to_utf8(text, utf8, sizeof utf8) &&
         WriteFile(out, utf8, (DWORD)strlen(utf8), &written, nullptr);
  }
  if (attached) {
    CloseHandle(out);
    FreeConsole();
  }
  return ok;
}

// 1 when path lies in the directory tree (both Windows-1250, compared without case).
static Flag inside_tree(const char *path, const char *tree) {
  char a[KX_PATH], b[KX_PATH];
  if (!st_put(a, sizeof a, path) || !st_put(b, sizeof b, tree)) return 0;
  cz_upper(a);
  cz_upper(b);
  for (char *c = a; *c; c++)
    if (*c == '/') *c = '\\';
  return b[0] && strncmp(a, b, strlen(b)) == 0;
}

// The log's full path: a relative one is taken from the current directory (the install
// changes it later). 0 when it does not fit.
static Flag log_full_path(const char *given, char *path) {
  Flag absolute = (given[0] && given[1] == ':') || given[0] == '\\' || given[0] == '/';
  char here[KX_PATH];
  if (absolute || !plat_current_directory(here, KX_PATH)) here[0] = 0;
  size_t n = strlen(here);
  const char *slash = n && here[n - 1] != '\\' ? "\\" : "";
  return st_join(path, KX_PATH, here, slash, given);
}

// The command line and the options in effect: those given, else the ones the dialog opens with
// (the source: the directory of program).
static void log_start(int argc, char **argv, const SetupSwitches *s, const char *program) {
  char line[LOG_LINE_SIZE];
  line[0] = 0;
  for (int i = 0; i < argc; i++) {
    Flag blank = strchr(argv[i], ' ') != nullptr;
    size_t used = strlen(line);
    snprintf(line + used, sizeof line - used, "%s%s%s%s", i ? " " : "", blank ? "\"" : "", argv[i],
             blank ? "\"" : "");
  }
  log_line("Příkazový řádek: %s", line);
  static const char *const MODES[] = {"interaktivní", "tichý (/SILENT)",
                                      "velmi tichý (/VERYSILENT)"};
  char source[KX_PATH];
  st_put(source, sizeof source, s->source[0] ? s->source : program);
  char *last = s->source[0] ? nullptr : strrchr(source, '\\');
  if (last) last[1] = 0;
  if (!s->source[0]) st_upper(source);
  log_line(
      "Režim %s, /DIR=%s, /SOURCE=%s, /DESKTOP=%d, /QUICKLAUNCH=%d, /KEEPCONFIG=%d, "
      "protokol %s",
      MODES[s->mode], s->target[0] ? s->target : "C:\\KORV5\\", source, (int)(s->desktop != 0),
      (int)unatt_quick_launch(s->quick_launch), (int)s->keep_config, log_file());
}

// ---- The main body ---------------------------------------------------------------------------

int32_t setup_main(void *instance, void *previous, const char *command_line, int32_t show_command);

// The main body: instance, previous instance, command line and show-command in, exit code out.
// The arguments are taken from the system's wide command line, split as the runtime splits it,
// in 1250.
int32_t setup_main(void *instance, void *, const char *, int32_t show_command) {
  int argc = 0;
  char **argv = nullptr;
  questions_install();
  startup_arguments(&argc, &argv);
  mm_stat_begin(argc, (const char *const *)argv);
  startup_read_command_line(argc, argv);

  if (function_list_switch) {
    write_function_list();
    mm_stat_end();
    return 0;
  }

  // The switches of unattended installs; without them everything runs as it always did.
  static SetupSwitches switches;
  Flag well_formed = setup_read_switches(argc, (const char *const *)argv, &switches);
  char log_path[KX_PATH] = "";
  if (switches.log[0] && !log_full_path(switches.log, log_path)) {
    well_formed = 0;
    snprintf(switches.reason, sizeof switches.reason, "Příliš dlouhá cesta protokolu %.60s",
             switches.log);
  }
  if (!log_path[0] && switches.mode != SETUP_INTERACTIVE)
    log_temp_path(DEFAULT_LOG, log_path, sizeof log_path);
  const char *target = switches.target[0] ? switches.target : "C:\\KORV5\\";
  if (well_formed && log_path[0] && inside_tree(log_path, target)) {
    well_formed = 0;
    snprintf(switches.reason, sizeof switches.reason,
             "Protokol nesmí ležet v cílovém adresáři %.60s", target);
    if (!switches.log[0]) log_path[0] = 0;  // nothing may be written there
  }
  if (log_path[0] && !inside_tree(log_path, target)) log_open(log_path);
  char program[KX_PATH];
  if (!plat_program_path(program, KX_PATH)) program[0] = 0;
  log_start(argc, argv, &switches, program);
  int32_t code;
  int32_t toolkit_code = 0;  // the dialog's run ends with the toolkit's result, as it always has
  if (!well_formed) {
    log_line("Chybný příkazový řádek: %s", switches.reason);
    if (switches.mode != SETUP_VERY_SILENT) ErrorBox(switches.reason);
    code = UNATT_REFUSED;
  } else if (switches.help) {
    log_text(HELP_TEXT);
    if (!write_to_console(HELP_TEXT) && switches.mode != SETUP_VERY_SILENT)
      InfoMessageBox("Instalace návrhového systému pro elektroniku KORVEX", HELP_TEXT);
    code = UNATT_INSTALLED;
  } else {
    unatt_begin(switches.mode, switches.keep_config);
    load_options(&ifl_options);
    HRESULT com = CoInitialize(nullptr);  // the folder browser and the shell links
    if (switches.mode == SETUP_VERY_SILENT) {
      unatt_install(&switches, program);
    } else {
      if (switches.given) sw_inst_run_unattended(&switches, switches.mode == SETUP_SILENT);
      instmain_install();
      toolkit_code = app_run(instance, show_command);
      instmain_release();
    }
    if (SUCCEEDED(com)) CoUninitialize();
    finish_options(&ifl_options);
    wco::release_system_store();  // keep this: its blocks would show as held in MMBIN.MM
    unatt_end();
    // Started without any of the switches, the program ends as it always has, with the
    // toolkit's result; with one of them the exit code tells how the last install run ended.
    code = switches.given ? unatt_exit_code() : toolkit_code;
  }
  log_line("Konec, návratový kód %d", (int)code);
  log_close();
  mm_stat_end();
  return code;
}

int WINAPI WinMain(HINSTANCE instance, HINSTANCE previous, LPSTR command_line, int show_command) {
  return (int)setup_main(instance, previous, command_line, show_command);
}
