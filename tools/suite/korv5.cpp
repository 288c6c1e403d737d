// KORV5.EXE - the sample main program of the demonstration medium. It is not the design
// system: it starts up as the suite's programs do and shows what it found, so that the
// installer's last step, the shortcuts and the file-type association can be tried for real.
//
//   KORV5.EXE $f         writes PFU_LIST.PFU (the function table) into the current directory
//                        and ends with 0 (1 when the file could not be written)
//   KORV5.EXE [design]   locates the system configuration (registry, then its own
//                        SYSTEM.WCO with the repair of the installed paths), fills the options
//                        record and shows a window with the design file it was opened with
//                        and the configuration in use; ends with 0 when the window is closed
//
// Items of the window (for the UI robot): 101 design file, 102 configuration file, 103 system
// path, 104 rest of the command line, 1 "&Konec".
#include "common/we.h"
#include "installer/startup.h"
#include "platform/inst_plat.h"
#include "store/ifl.h"
#include "store/wco.h"
#include "toolkit/dialog.h"
#include "toolkit/dres.h"
#include "toolkit/questions.h"
#include "tools/suite/functions.h"

#include <windows.h>

#include <stdio.h>
#include <string.h>

namespace {

const char kTitle[] = "KORVEX 5 - ukázkový hlavní program";

class SampleWindow : public Dialog {
 public:
  SampleWindow() { center_on_screen = 1; }
};

// Shows the window and waits until it is closed. 0; 1 when the window could not be built.
int run_window(void) {
  char configuration[KX_PATH + 40];
  if (configuration_path[0] != '\0')
    snprintf(configuration, sizeof configuration, "Konfigurace: %s", configuration_path);
  else
    snprintf(configuration, sizeof configuration, "%s",
             "Konfigurace: nenalezena, platí výchozí hodnoty");
  char design[KX_PATH + 20];
  snprintf(design, sizeof design, "Návrh: %s", design_file_name);
  char system[KX_PATH + 40];
  snprintf(system, sizeof system, "Systémová cesta: %s%s", program_drive, ifl_options.system_path);
  char rest[KX_PATH + 40];
  snprintf(rest, sizeof rest, "Další parametry: %s", command_rest);

  DialogTemplate *tpl = dres_create(kTitle, WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME, 0,
                                    0, 300, 118, "MS Sans Serif", 8);
  if (tpl == nullptr) return 1;
  dres_add(tpl, DRES_STATIC,
           "Ukázkový hlavní program demonstračního média KORVEX.\n"
           "Návrhový systém sám na tomto médiu není.",
           100, SS_LEFT, 8, 8, 284, 18);
  dres_add(tpl, DRES_STATIC, design, 101, SS_LEFT | SS_NOPREFIX, 8, 32, 284, 10);
  dres_add(tpl, DRES_STATIC, configuration, 102, SS_LEFT | SS_NOPREFIX, 8, 46, 284, 18);
  dres_add(tpl, DRES_STATIC, system, 103, SS_LEFT | SS_NOPREFIX, 8, 68, 284, 10);
  dres_add(tpl, DRES_STATIC, rest, 104, SS_LEFT | SS_NOPREFIX, 8, 80, 284, 10);
  dres_add(tpl, DRES_BUTTON, "&Konec", IDOK, BS_DEFPUSHBUTTON | WS_TABSTOP, 121, 97, 58, 14);
  SampleWindow window;
  dialog_run(&window, dres_bytes(tpl));
  dres_destroy(&tpl);
  return 0;
}

}  // namespace

int main(int, char **) {
  int argc = 0;
  char **argv = nullptr;
  questions_install();              // the toolkit's dialogs for questions and notices
  startup_arguments(&argc, &argv);  // in 1250, from the wide command line
  // keep this: argument 0 is taken from the system, so that a start by a bare name (as a
  // process started with "KORV5.EXE $f") still knows the program's drive and directory.
  char own_path[KX_PATH];
  if (argc > 0 && plat_program_path(own_path, sizeof own_path)) argv[0] = own_path;
  startup_read_command_line(argc, argv);
  if (function_list_switch) return suite_write_function_list() ? 0 : 1;

  LocateConfiguration();
  load_options(&ifl_options);
  int code = run_window();
  finish_options(&ifl_options);
  return code;
}
