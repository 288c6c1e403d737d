// CONFIG.EXE - the configuration viewer of the demonstration medium: locates the system
// configuration as the suite's programs do (registry, then its own SYSTEM.WCO with the repair
// of the installed paths) and lists its sections and keys.
//
// Items of the window (for the UI robot): 101 the configuration file, 102 the list ("[section]"
// lines, each key as "   key = value"), 1 "&Konec". Exit code 0; 1 when no configuration
// file was found (the window says so).
#include "common/we.h"
#include "installer/startup.h"
#include "platform/inst_plat.h"
#include "store/wco.h"
#include "toolkit/dialog.h"
#include "toolkit/dres.h"
#include "toolkit/questions.h"

#include <windows.h>

#include <stdio.h>

namespace {

const char kTitle[] = "KORVEX 5 - systémová konfigurace";

class ConfigWindow : public Dialog {
 public:
  ConfigWindow() { center_on_screen = 1; }
  Flag on_init() override {
    Control list;
    list.dialog_window = window;
    list.item = 102;
    ConfigStore *store = wco::system_store();
    if (store == nullptr) return 1;
    char line[WCO_NAME_MAX + WCO_VALUE_MAX + 16];
    for (int32_t s = 0; s < store->section_count; s++) {
      const ConfigSection *section = store->sections[s];
      snprintf(line, sizeof line, "[%s]", section->name);
      control_list_add(&list, line);
      for (int32_t e = 0; e < section->entry_count; e++) {
        snprintf(line, sizeof line, "   %s = %s", section->entries[e].key,
                 section->entries[e].value);
        control_list_add(&list, line);
      }
    }
    return 1;
  }
};

}  // namespace

int main(int, char **) {
  int argc = 0;
  char **argv = nullptr;
  questions_install();              // the toolkit's dialogs for questions and notices
  startup_arguments(&argc, &argv);  // in 1250, from the wide command line
  char own_path[KX_PATH];
  if (argc > 0 && plat_program_path(own_path, sizeof own_path)) argv[0] = own_path;
  startup_read_command_line(argc, argv);
  Flag found = LocateConfiguration();

  char heading[KX_PATH + 40];
  if (found) snprintf(heading, sizeof heading, "Konfigurace: %s", configuration_path);
  else snprintf(heading, sizeof heading, "Systémová konfigurace nebyla nalezena.");
  DialogTemplate *tpl = dres_create(kTitle, WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME, 0,
                                    0, 320, 220, "MS Sans Serif", 8);
  if (tpl == nullptr) return 1;
  dres_add(tpl, DRES_STATIC, heading, 101, SS_LEFT | SS_NOPREFIX, 8, 8, 304, 18);
  dres_add(tpl, DRES_LISTBOX, "", 102,
           WS_BORDER | WS_VSCROLL | WS_HSCROLL | LBS_NOINTEGRALHEIGHT | WS_TABSTOP, 8, 30, 304,
           162);
  dres_add(tpl, DRES_BUTTON, "&Konec", IDOK, BS_DEFPUSHBUTTON | WS_TABSTOP, 131, 199, 58, 14);
  ConfigWindow window;
  dialog_run(&window, dres_bytes(tpl));
  dres_destroy(&tpl);
  return found ? 0 : 1;
}
