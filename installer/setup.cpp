// setup.cpp - SETUP.EXE: the main body.
//
// The runtime's entry calls WinMain, which hands the instance, the previous instance, the
// command line and the show-command to setup_main:
//   1. the memory manager sees the arguments ("$m" / "$M": the guarded mode with its log);
//   2. the command line is read (installer/startup.h);
//   3. "$f" / "$F": the installer's function table is written to PFU_LIST.PFU in the current
//      directory and the program ends with 0, without a window;
//   4. otherwise the options record is filled (built-in defaults), the toolkit runs with the
//      installer dialog as its main window (window type 100) until the dialog is closed, the
//      options record is handed back, the process-wide configuration store is freed (before
//      the memory statistics end, so that the log shows it given back), and the toolkit's
//      result is the exit code.
#include "common/mm.h"
#include "installer/inst.h"
#include "installer/instmain.h"
#include "installer/startup.h"
#include "installer/sw_inst.h"
#include "pack/pfu.h"
#include "store/ifl.h"
#include "store/wco.h"
#include "toolkit/questions.h"
#include "toolkit/wgd.h"

#include <windows.h>
#include <objbase.h>
#include <stdlib.h>

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

static FunctionRecord setup_functions[] = {
    {SETUP_FN_START, 0, 0, PFU_FT_ALL_MODES, 0, 0, function_start, "setup_start", 0},
    {SETUP_FN_ABORT, 0, 0, PFU_FT_ALL_MODES, 0, 0, function_abort, "setup_abort", 0},
    {SETUP_FN_END, 0, 0, PFU_FT_ALL_MODES, 0, 0, function_end, "setup_end", 0},
    {0, PFU_ST_END, 0, 0, 0, 0, nullptr, nullptr, 0},
};

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

  load_options(&ifl_options);
  HRESULT com = CoInitialize(nullptr);  // the folder browser and the shell links
  instmain_install();
  int32_t code = app_run(instance, show_command);
  instmain_release();
  if (SUCCEEDED(com)) CoUninitialize();
  finish_options(&ifl_options);
  wco::release_system_store();  // keep this: its blocks would show as held in MMBIN.MM
  mm_stat_end();
  return code;
}

int WINAPI WinMain(HINSTANCE instance, HINSTANCE previous, LPSTR command_line, int show_command) {
  return (int)setup_main(instance, previous, command_line, show_command);
}
