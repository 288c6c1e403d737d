// unatt.cpp - answers of the unattended modes, the run's log and its exit code.
#include "installer/unatt.h"

#include "common/log.h"
#include "common/st.h"
#include "common/we.h"
#include "installer/inst.h"
#include "installer/switches.h"
#include "platform/inst_plat.h"
#include "platform/reg.h"

#include <stdio.h>

#include <string.h>

namespace {

int16_t run_mode = SETUP_INTERACTIVE;
int16_t keep_answer = 1;
Flag run_ended = 0;
int16_t last_code = UNATT_CANCELLED;
int16_t failure = 0;  // what the last telling message said: an exit code, or 0
Flag partial = 0;     // a file was skipped or failed to unpack

const char QUESTION_PREVIOUS[] = "Na cílové cestě byla nalezena předchozí instalace KORVEX.";
const char QUESTION_CONFIG[] = "Pro novou instalaci může být převzata systémová konfigurace";
const char QUESTION_OVERWRITE[] = "Existující soubory budou přepsány, pokračovat";
const char QUESTION_RETRY[] = "Zkusit znovu";
const char QUESTION_ABORT[] = "Přerušit instalaci ?";
const char SKIP_HEAD[] = "Soubor ";
const char SKIP_TAIL[] = " nenalezen, vynechat";

Flag starts(const char *text, const char *head) { return strncmp(text, head, strlen(head)) == 0; }

Flag ends(const char *text, const char *tail) {
  size_t n = strlen(text), m = strlen(tail);
  return n >= m && strcmp(text + n - m, tail) == 0;
}

Flag is_skip_question(const char *text) { return starts(text, SKIP_HEAD) && ends(text, SKIP_TAIL); }

// The exit code an error box tells of: UNATT_FAILED for one that names no particular cause.
int16_t box_failure(const char *text) {
  if (starts(text, "Málo místa na disku") ||
      (starts(text, "Do souboru ") && ends(text, "(plný disk?)")))
    return UNATT_NO_SPACE;
  if (starts(text, "Chyba při spuštění odinstalačního programu")) return UNATT_PREVIOUS;
  if (starts(text, "Chybná cesta/soubor nenalezen") || starts(text, "Nesprávná disketa") ||
      starts(text, "Nesprávné pořadové číslo diskety"))
    return UNATT_MEDIUM;
  return UNATT_FAILED;
}

Flag unpack_failure(const char *text) {
  return starts(text, "Komprese/dekomprese dat") ||
         starts(text, "Neznámá chyba při kompresi/dekompresi dat");
}

// The fixed answer of a question in the silent modes (raw dialog code).
int16_t silent_answer(const char *text) {
  if (starts(text, QUESTION_PREVIOUS) || starts(text, QUESTION_OVERWRITE)) return WE_ANSWER_YES;
  if (starts(text, QUESTION_CONFIG)) return keep_answer ? WE_ANSWER_YES : WE_ANSWER_NO;
  return WE_ANSWER_NO;  // retry, skip, HTML Help, abort and anything else
}

const char *answer_name(int16_t kind, int16_t code) {
  if (kind == WE_REPORT_BOX || kind == WE_DIALOG_NOTICE || kind == WE_DIALOG_ERROR) return "O.K.";
  switch (code) {
    case WE_ANSWER_YES: return "Ano";
    case WE_ANSWER_NO: return "Ne";
    case WE_ANSWER_ALL: return "Vše";
    default: return "Storno";
  }
}

int16_t before(void *, int16_t kind, const char *, const char *text) {
  if (run_mode == SETUP_INTERACTIVE) return WE_REPORT_SHOW;
  if (kind == WE_DIALOG_QUESTION || kind == WE_DIALOG_QUESTION_CANCEL ||
      kind == WE_DIALOG_QUESTION_ALL)
    return silent_answer(text);
  return 1;
}

void after(void *, int16_t kind, const char *title, const char *text, int16_t code) {
  log_line("%s \"%s\": %s -> %s", run_mode == SETUP_INTERACTIVE ? "Okno" : "Okno (nezobrazeno)",
           title, text, answer_name(kind, code));
  Flag question = kind == WE_DIALOG_QUESTION || kind == WE_DIALOG_QUESTION_CANCEL ||
                  kind == WE_DIALOG_QUESTION_ALL;
  if (!question) {
    if (kind == WE_DIALOG_NOTICE) return;
    // A box that names no cause does not hide the one an earlier box named (a copy that
    // fails after "plný disk?").
    int16_t told = box_failure(text);
    if (unpack_failure(text)) partial = 1;
    else if (told != UNATT_FAILED || !failure) failure = told;
    return;
  }
  Flag yes = code == WE_ANSWER_YES;
  if (strcmp(text, QUESTION_RETRY) == 0) {
    failure = yes ? 0 : UNATT_MEDIUM;  // yes: the disk is checked again, with its own boxes
  } else if (is_skip_question(text)) {
    if (yes) partial = 1;
    else failure = UNATT_MEDIUM;
  } else if (strcmp(text, QUESTION_ABORT) == 0) {
    if (yes) failure = UNATT_CANCELLED;
  } else if (starts(text, QUESTION_PREVIOUS) || starts(text, QUESTION_OVERWRITE)) {
    if (!yes) failure = UNATT_CANCELLED;
  }
}

void status(void *, const char *text) {
  if (text && text[0]) log_line("Stav: %s", text);
}

}  // namespace

void unatt_begin(int16_t mode, int16_t keep_config) {
  run_mode = mode;
  keep_answer = keep_config ? 1 : 0;
  run_ended = 0;
  last_code = UNATT_CANCELLED;
  WeReporter reporter = {nullptr, before, after, status};
  we_set_reporter(&reporter);
}

void unatt_end(void) { we_set_reporter(nullptr); }

void unatt_run_begin(const InstallState *state) {
  failure = 0;
  partial = 0;
  if (!state) return;
  log_line("Instalace začíná: zdroj %s, cíl %s, ikona na ploše %d, ikona v liště %d",
           state->source_path, state->target_path, (int)state->desktop_icon,
           (int)state->quick_launch_icon);
}

void unatt_run_end(Flag installed) {
  run_ended = 1;
  if (installed) last_code = partial ? (int16_t)UNATT_PARTIAL : (int16_t)UNATT_INSTALLED;
  else last_code = failure ? failure : (int16_t)UNATT_FAILED;
  log_line("Instalace %s, kód %d", installed ? "proběhla" : "nebyla úspěšná", (int)last_code);
}

int16_t unatt_exit_code(void) { return run_ended ? last_code : (int16_t)UNATT_CANCELLED; }

void unatt_log_file(const char *source, const char *target, uint32_t size) {
  log_line("Soubor %s -> %s (%lu B)", source ? source : "", target ? target : "",
           (unsigned long)size);
}

// ---- The install without a window ------------------------------------------------------------

namespace {

void no_line(void *, int16_t, const char *) {}
void no_pump(void *) {}
void no_front(void *) {}

// Whether the system offers the quick-launch folder, looked up as the dialog does (report: with
// its box when the folder of application data is unknown).
Flag quick_launch_offered(Flag report) {
  char data[KX_PATH], folder[KX_PATH];
  if (!reg_get_string(REG_ROOT_CURRENT_USER,
                      "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders",
                      "AppData", data, KX_PATH)) {
    if (report) ErrorBox("Nelze zjistit adresář složky Data aplikací");
    return 0;
  }
  size_t n = strlen(data);
  int length = snprintf(folder, sizeof folder, "%s%sMicrosoft\\Internet Explorer\\Quick Launch",
                        data, n && data[n - 1] == '\\' ? "" : "\\");
  return length > 0 && (size_t)length < sizeof folder && plat_directory_exists(folder);
}

}  // namespace

int16_t unatt_quick_launch(int16_t given) { return given != 0 && quick_launch_offered(0); }

Flag unatt_install(const SetupSwitches *switches, const char *program_path) {
  if (!switches) return 0;
  InstallState *state = inst_create_state(program_path ? program_path : "");
  if (!state) return 0;
  InstallDialog sink = {nullptr, no_line, no_pump, no_front, nullptr, nullptr};
  inst_set_dialog(&sink);
  if (switches->source[0]) st_put(state->source_path, KX_PATH, switches->source);
  if (switches->target[0]) st_put(state->target_path, KX_PATH, switches->target);
  state->desktop_icon = switches->desktop != 0;
  Flag offered = quick_launch_offered(1);
  state->quick_launch_icon = offered && switches->quick_launch != 0;
  unatt_run_begin(state);
  Flag ok = InstallProcedure(state);
  unatt_run_end(ok);
  inst_close_lists(state);
  inst_destroy_state(&state);
  return ok;
}
