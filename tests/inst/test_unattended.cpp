// SETUP.EXE's switches, and the answers and exit codes of unattended runs.
#include "installer/switches.h"
#include "installer/unatt.h"
#include "common/we.h"

#include <gtest/gtest.h>

#include <string.h>

#include <string>
#include <vector>

namespace {

// Reads one command line given as its arguments after the program's name.
Flag read(std::vector<const char *> args, SetupSwitches *s) {
  args.insert(args.begin(), "SETUP.EXE");
  return setup_read_switches((int)args.size(), args.data(), s);
}

TEST(SetupSwitches, WellFormedLines) {
  const std::string long_dir = "C:\\" + std::string(KX_PATH - 5, 'x');   // 1022 with the "\"
  const std::string long_arg = "/DIR=" + long_dir, long_target = long_dir + "\\";
  struct Row {
    int n;
    std::vector<const char *> args;
    int16_t mode, desktop, quick_launch, keep;
    const char *target, *source, *log;
    Flag help;
  } rows[] = {
      {1, {}, SETUP_INTERACTIVE, -1, -1, 1, "", "", "", 0},
      {2, {"design.d32", "$m", "/UNKNOWN=5", "-x"}, SETUP_INTERACTIVE, -1, -1, 1, "", "", "", 0},
      {3, {"/silent"}, SETUP_SILENT, -1, -1, 1, "", "", "", 0},
      {4, {"-VerySilent", "/SILENT"}, SETUP_VERY_SILENT, -1, -1, 1, "", "", "", 0},
      {5, {"/DIR=C:\\Program Files\\KORV5"}, 0, -1, -1, 1, "C:\\Program Files\\KORV5\\", "", "", 0},
      {6, {"/dir=d:\\", "/DIR=E:"}, 0, -1, -1, 1, "E:\\", "", "", 0},
      {7, {"/SOURCE=\\\\server\\kit"}, 0, -1, -1, 1, "", "\\\\server\\kit\\", "", 0},
      {8, {"/DESKTOP=0", "-quicklaunch=1", "/KEEPCONFIG=0"}, 0, 0, 1, 0, "", "", "", 0},
      {9, {"/LOG=C:\\a b\\s.log", "/?"}, 0, -1, -1, 1, "", "", "C:\\a b\\s.log", 1},
      {10, {"-help"}, 0, -1, -1, 1, "", "", "", 1},
      {11, {long_arg.c_str()}, 0, -1, -1, 1, long_target.c_str(), "", "", 0},
  };
  for (const Row &r : rows) {
    SetupSwitches s;
    ASSERT_EQ(1, read(r.args, &s)) << "row " << r.n << ": " << s.reason;
    EXPECT_EQ(r.mode, s.mode) << "row " << r.n;
    EXPECT_EQ(r.desktop, s.desktop) << "row " << r.n;
    EXPECT_EQ(r.quick_launch, s.quick_launch) << "row " << r.n;
    EXPECT_EQ(r.keep, s.keep_config) << "row " << r.n;
    EXPECT_EQ(r.help, s.help) << "row " << r.n;
    EXPECT_STREQ(r.target, s.target) << "row " << r.n;
    EXPECT_STREQ(r.source, s.source) << "row " << r.n;
    EXPECT_STREQ(r.log, s.log) << "row " << r.n;
    EXPECT_STREQ("", s.reason) << "row " << r.n;
  }
}

TEST(SetupSwitches, MalformedLinesAreRefusedWithTheirReason) {
  const std::string too_long = "/DIR=C:\\" + std::string(KX_PATH, 'x');
  const std::string log_too_long = "/LOG=" + std::string(KX_PATH, 'y');
  struct Row {
    int n;
    std::vector<const char *> args;
    const char *reason_has;
  } rows[] = {
      {1, {"/DIR=KORV5"}, "jednotkou"},
      {2, {"/DIR=\\\\server\\share"}, "jednotkou"},
      {3, {"/DIR="}, "chybí hodnota"},
      {4, {"/DIR"}, "chybí hodnota"},
      {5, {"/DESKTOP=2"}, "0 nebo 1"},
      {6, {"/QUICKLAUNCH=yes"}, "0 nebo 1"},
      {7, {"/KEEPCONFIG=10"}, "0 nebo 1"},
      {8, {"/SILENT=1"}, "nemá hodnotu"},
      {9, {"/?=x"}, "nemá hodnotu"},
      {10, {"/LOG="}, "chybí hodnota"},
      {11, {too_long.c_str()}, "příliš dlouhá"},
      {12, {log_too_long.c_str()}, "příliš dlouhá"},
      {13, {"/SOURCE="}, "chybí hodnota"},
  };
  for (const Row &r : rows) {
    SetupSwitches s;
    EXPECT_EQ(0, read(r.args, &s)) << "row " << r.n;
    EXPECT_NE(nullptr, strstr(s.reason, r.reason_has)) << "row " << r.n << ": " << s.reason;
    EXPECT_LT(strlen(s.reason), (size_t)SETUP_REASON_SIZE) << "row " << r.n;
  }
}

// Questions and boxes of one run, as the procedure would raise them.
struct Event {
  int16_t kind;      // WE_DIALOG_* or WE_REPORT_BOX
  const char *text;
  int16_t answer;    // the interactive user's raw answer
};

void raise(const Event &e) {
  if (e.kind == WE_REPORT_BOX) ErrorBox(e.text);
  else if (e.kind == WE_DIALOG_NOTICE) NoticeBox(e.text);
  else QuestionBox(e.text);
}

int16_t scripted_answer;
int16_t scripted(int16_t, void *, const char *, const char *) { return scripted_answer; }
int shown;
void count_box(void *, const char *, const char *, unsigned) { shown++; }

TEST(Unattended, AnswersAndExitCodes) {
  const char *retry = "Zkusit znovu";
  const char *skip = "Soubor C:\\CD\\B.PAK nenalezen, vynechat";
  const char *previous = "Na cílové cestě byla nalezena předchozí instalace KORVEX.\nPřed novou "
                         "instalací je třeba minulou odstranit. Pokračovat?";
  struct Row {
    int n;
    int16_t mode;
    std::vector<Event> events;
    Flag installed;
    int16_t code;
    int16_t last_result;   // what the last question returned to its caller
  } rows[] = {
      {1, SETUP_SILENT, {{0, previous, 7}}, 1, UNATT_INSTALLED, 1},
      {2, SETUP_VERY_SILENT, {{WE_DIALOG_NOTICE, "Vlož DISK2", 1}, {0, retry, 1}}, 0, UNATT_MEDIUM, 0},
      {3, SETUP_SILENT, {{0, skip, 1}}, 0, UNATT_MEDIUM, 0},
      {4, SETUP_INTERACTIVE, {{0, skip, WE_ANSWER_YES}}, 1, UNATT_PARTIAL, 1},
      {5, SETUP_SILENT, {{WE_REPORT_BOX, "Komprese/dekomprese dat - chyba ve vstupních datech", 1}},
       1, UNATT_PARTIAL, 0},
      {6, SETUP_SILENT, {{WE_REPORT_BOX, "Málo místa na disku, je třeba 5000 B", 1}}, 0,
       UNATT_NO_SPACE, 0},
      {7, SETUP_SILENT, {{WE_REPORT_BOX, "Do souboru X nelze zapisovat (plný disk?)", 1},
                         {WE_REPORT_BOX, "Chyba při kopírování souboru X", 1}}, 0, UNATT_NO_SPACE, 0},
      {8, SETUP_SILENT, {{WE_REPORT_BOX, "Chyba při spuštění odinstalačního programu KORVEX", 1}}, 0,
       UNATT_PREVIOUS, 0},
      {9, SETUP_INTERACTIVE, {{0, previous, WE_ANSWER_NO}}, 0, UNATT_CANCELLED, 0},
      {10, SETUP_INTERACTIVE, {{0, "Přerušit instalaci ?", WE_ANSWER_YES}}, 0, UNATT_CANCELLED, 1},
      {11, SETUP_VERY_SILENT, {{0, "Pro novou instalaci může být převzata systémová konfigurace", 7}},
       1, UNATT_INSTALLED, 1},
      {12, SETUP_SILENT, {{0, "Nebyla nalezena knihovna HHCTRL.OCX. Má se nyní spustit?", 1}}, 1,
       UNATT_INSTALLED, 0},
  };
  WeDialogHook old_dialog = we_set_dialog_hook(scripted);
  WeBoxHook old_box = we_set_box_hook(count_box);
  for (const Row &r : rows) {
    unatt_begin(r.mode, 1);
    EXPECT_EQ(UNATT_CANCELLED, unatt_exit_code()) << "row " << r.n << ": no run has ended";
    unatt_run_begin(nullptr);
    shown = 0;
    int16_t result = -9;
    for (const Event &e : r.events) {
      scripted_answer = r.mode == SETUP_INTERACTIVE ? e.answer : 2;   // silent: never asked
      if (e.kind == WE_REPORT_BOX || e.kind == WE_DIALOG_NOTICE) raise(e);
      else result = QuestionBox(e.text);
    }
    unatt_run_end(r.installed);
    EXPECT_EQ(r.code, unatt_exit_code()) << "row " << r.n;
    if (result != -9) {
      EXPECT_EQ(r.last_result, result) << "row " << r.n;
    }
    if (r.mode != SETUP_INTERACTIVE) {
      EXPECT_EQ(0, shown) << "row " << r.n << ": a box was shown";
    }
    unatt_end();
  }
  we_set_dialog_hook(old_dialog);
  we_set_box_hook(old_box);
}

}  // namespace
