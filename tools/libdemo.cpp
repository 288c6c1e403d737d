// libdemo - shows the common library at work, as a console program under Windows (or Wine):
// code pages, Czech collation, date parsing, file names, the open-file statistics, and last a
// real error box. With "--close-box-after N" the box closes itself after N seconds, so the demo
// can run unattended (the demo script takes a screenshot meanwhile).
#include "common/cz.h"
#include "common/date.h"
#include "common/file.h"
#include "common/fn.h"
#include "common/st.h"
#include "common/we.h"

#include <windows.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static void hex_line(const char *label, const char *text) {
  printf("  %-9s", label);
  for (const unsigned char *p = (const unsigned char *)text; *p; p++) printf(" %02X", *p);
  printf("\n");
}

static void show_code_pages(void) {
  static const char sentence[] = "Žluťoučký kůň úpěl ďábelské ódy";
  printf("Code pages: \"%s\"\n", sentence);
  char text[64];
  st_put(text, sizeof text, sentence);
  hex_line("WINDOWS", text);
  cz_convert(CZ_WINDOWS, CZ_KEYBCS2, text);
  hex_line("KEYBCS2", text);
  st_put(text, sizeof text, sentence);
  cz_convert(CZ_WINDOWS, CZ_LATIN2, text);
  hex_line("LATIN2", text);
  st_put(text, sizeof text, sentence);
  cz_convert(CZ_WINDOWS, CZ_ASCII, text);
  printf("  %-9s %s\n", "ASCII", text);
}

static void show_collation(void) {
  const char *words[] = {"čaj",  "Chata", "cukr", "Ábel", "zebra", "abeceda",
                         "ěšče", "Čech",  "echo", "ábel", "A"};
  const int n = (int)KX_COUNT(words);
  for (int i = 1; i < n; i++)
    for (int j = i; j > 0 && st_collate(words[j - 1], words[j]) > 0; j--) {
      const char *t = words[j];
      words[j] = words[j - 1];
      words[j - 1] = t;
    }
  printf("\nCzech collation:");
  for (int i = 0; i < n; i++) printf(" %s", words[i]);
  printf("\n");
}

static void show_dates(void) {
  const char *typed[] = {"5.3.97",    "5. březen 1997", "1. cervenec 1997",
                         "29.2.1996", "29.2.1997",      "5. bre 1997"};
  printf("\nDates typed by a user:\n");
  for (const char *t : typed) {
    Date d = date_new();
    if (date_parse(&d, t))
      printf("  %-18s -> %s, %s (day %d)\n", t, date_text_long(&d), date_day_name(&d),
             date_number(&d));
    else printf("  %-18s -> not a date\n", t);
  }
  Date today = date_new();
  Time now = time_new();
  printf("  today: %s %s\n", date_text_long(&today), time_text(&now));
}

static void show_names(void) {
  char result[KX_PATH];
  printf("\nFile names:\n");
  char name[KX_PATH] = "A.TXT";
  path_join(name, "C:\\WORK");
  printf("  path_join(A.TXT, C:\\WORK)             = %s\n", name);
  name_from_pattern("C:\\OUT\\*.BAK", "my file.txt", result);
  printf("  name_from_pattern(C:\\OUT\\*.BAK, my file.txt) = %s\n", result);
}

static void show_statistics(void) {
  printf("\nOpen-file statistics (DATA.FI):\n");
  statistics_start();
  FileObject *a = nullptr, *b = nullptr;
  file_create(&a, "DEMO1.TXT");
  file_create(&b, "DEMO2.TXT");
  file_open(a, 2);
  file_write_line(a, "první řádek");
  file_open(b, 2);
  file_close(a, 1);
  statistics_end();  // DEMO2.TXT is still open: the log says so
  file_close(b, 1);
  file_destroy(&a);
  file_destroy(&b);
  FILE *log = fopen("DATA.FI", "rt");
  char line[256];
  while (log && fgets(line, sizeof line, log)) printf("  | %s", line);
  if (log) fclose(log);
  remove("DATA.FI");
  printf("\n");
}

static DWORD close_after_ms;
static DWORD main_thread;

static BOOL CALLBACK close_box(HWND window, LPARAM) {
  wchar_t cls[64];
  if (GetClassNameW(window, cls, 64) && lstrcmpW(cls, L"#32770") == 0)
    PostMessageW(window, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
  return TRUE;
}

static DWORD WINAPI box_closer(void *) {
  Sleep(close_after_ms);
  // The box is shown by this process's main thread: close it through that thread's windows.
  EnumThreadWindows(main_thread, close_box, 0);
  return 0;
}

int main(int argc, char **argv) {
  for (int i = 1; i + 1 < argc; i++)
    if (strcmp(argv[i], "--close-box-after") == 0) close_after_ms = (DWORD)atoi(argv[i + 1]) * 1000;

  printf("KORVEX common library demo (ANSI code page %u)\n\n", GetACP());
  show_code_pages();
  show_collation();
  show_dates();
  show_names();
  show_statistics();

  printf("\nError box: \"Soubor C:\\KORV5\\EXE\\SYSTEM.WCO nelze otevřít\"\n");
  fflush(stdout);
  main_thread = GetCurrentThreadId();
  if (close_after_ms) CloseHandle(CreateThread(nullptr, 0, box_closer, nullptr, 0, nullptr));
  ErrorBoxF("Soubor %s nelze otevřít", "C:\\KORV5\\EXE\\SYSTEM.WCO");
  printf("closed.\n");
  return 0;
}
