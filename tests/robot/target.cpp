// The robot's practice program: one dialog from an in-memory template with the kinds of items
// and boxes the installer has, so that the robot's own tests drive real windows.
//
//   kxrobot_target [ARGUMENT]...   the status line shows the arguments, each in [ ].
//
// Items: 101 path field (leaving it appends "\" when missing), 102 plain field (the exit code
// for 107), 103 check box, 104 error box, 105 question (a dialog of its own titled "Dotaz" with
// two text lines and &Ano/&Ne/&Storno; the answer goes to the status line), 106 a long job that
// pumps messages and asks for a disk half way, 107 ends with the code in 102, 108 status line,
// 109 a disabled button.
#include <windows.h>
#include <shellapi.h>

#include <stdio.h>

namespace {

enum {
  ITEM_PATH = 101, ITEM_CODE, ITEM_CHECK, ITEM_ERROR, ITEM_QUESTION, ITEM_JOB, ITEM_END,
  ITEM_STATUS, ITEM_OFF
};

const char kTitle[] = "Zkouška robota – příliš žluťoučký kůň";

// Our literals are code page 1250; the windows get UTF-16.
struct Wide {
  wchar_t text[400];
};

Wide wide(const char *s) {
  Wide w;
  if (!MultiByteToWideChar(1250, 0, s, -1, w.text, 400)) w.text[0] = 0;
  w.text[399] = 0;
  return w;
}

void set_status(HWND dlg, const char *s) { SetDlgItemTextW(dlg, ITEM_STATUS, wide(s).text); }

// A dialog template in memory, item by item.
struct Template {
  alignas(4) WORD words[1024];
  int n;
};

void put(Template *t, WORD w) {
  if (t->n < 1024) t->words[t->n++] = w;
}

void put_text(Template *t, const char *s) {
  Wide w = wide(s);
  const wchar_t *p = w.text;
  do put(t, (WORD)*p);
  while (*p++);
}

void begin(Template *t, const char *title, WORD items, short cx, short cy) {
  DWORD style = DS_MODALFRAME | DS_SETFONT | DS_CENTER | WS_POPUP | WS_CAPTION | WS_SYSMENU;
  t->n = 0;
  put(t, LOWORD(style));
  put(t, HIWORD(style));
  put(t, 0);  // extended style
  put(t, 0);
  put(t, items);
  put(t, 0);  // x, y
  put(t, 0);
  put(t, (WORD)cx);
  put(t, (WORD)cy);
  put(t, 0);  // no menu, the dialog class
  put(t, 0);
  put_text(t, title);
  put(t, 8);
  put_text(t, "MS Shell Dlg");
}

void item(Template *t, DWORD style, short x, short y, short cx, short cy, WORD id, WORD atom, const char *text) {
  if (t->n & 1) put(t, 0);
  style |= WS_CHILD | WS_VISIBLE;
  put(t, LOWORD(style));
  put(t, HIWORD(style));
  put(t, 0);
  put(t, 0);
  put(t, (WORD)x);
  put(t, (WORD)y);
  put(t, (WORD)cx);
  put(t, (WORD)cy);
  put(t, id);
  put(t, 0xFFFF);
  put(t, atom);
  put_text(t, text);
  put(t, 0);  // no creation data
}

const WORD BUTTON = 0x80, EDIT = 0x81, STATIC = 0x82;

INT_PTR CALLBACK question_proc(HWND dlg, UINT msg, WPARAM wp, LPARAM) {
  if (msg == WM_INITDIALOG) return TRUE;
  if (msg == WM_COMMAND && (LOWORD(wp) == IDYES || LOWORD(wp) == IDNO || LOWORD(wp) == IDCANCEL)) {
    EndDialog(dlg, LOWORD(wp));
    return TRUE;
  }
  return FALSE;
}

void ask(HWND dlg) {
  static Template t;
  begin(&t, "Dotaz", 5, 200, 70);
  item(&t, SS_LEFT, 10, 8, 180, 10, 201, STATIC, "Soubor C:\\KORV5\\EXE\\SYSTEM.WCO již existuje.");
  item(&t, SS_LEFT, 10, 20, 180, 10, 202, STATIC, "Přepsat ?");
  item(&t, BS_DEFPUSHBUTTON | WS_TABSTOP, 10, 45, 55, 14, IDYES, BUTTON, "&Ano");
  item(&t, BS_PUSHBUTTON | WS_TABSTOP, 72, 45, 55, 14, IDNO, BUTTON, "&Ne");
  item(&t, BS_PUSHBUTTON | WS_TABSTOP, 134, 45, 55, 14, IDCANCEL, BUTTON, "&Storno");
  INT_PTR r = DialogBoxIndirectParamW(GetModuleHandleW(nullptr), (DLGTEMPLATE *)t.words, dlg, question_proc, 0);
  char status[40];
  snprintf(status, sizeof status, "Odpověď %d", (int)r);
  set_status(dlg, status);
}

void pump(HWND dlg) {
  MSG m;
  while (PeekMessageW(&m, nullptr, 0, 0, PM_REMOVE)) {
    if (m.message == WM_QUIT) {
      PostQuitMessage((int)m.wParam);
      return;
    }
    if (!IsDialogMessageW(dlg, &m)) {
      TranslateMessage(&m);
      DispatchMessageW(&m);
    }
  }
}

// Like an install: about a second of steps that keep the window alive, a disk asked for half way.
void long_job(HWND dlg) {
  EnableWindow(GetDlgItem(dlg, ITEM_JOB), FALSE);
  bool stopped = false;
  for (int step = 1; step <= 20 && !stopped; step++) {
    char status[40];
    snprintf(status, sizeof status, "Krok %d z 20", step);
    set_status(dlg, status);
    if (step == 10)
      stopped = MessageBoxW(dlg, wide("Vlož DISK2").text, wide("Instalace").text, MB_OKCANCEL | MB_ICONQUESTION) == IDCANCEL;
    DWORD start = GetTickCount();
    while (GetTickCount() - start < 50) {
      pump(dlg);
      Sleep(5);
    }
  }
  set_status(dlg, stopped ? "Instalace přerušena" : "Instalace proběhla úspěšně");
  EnableWindow(GetDlgItem(dlg, ITEM_JOB), TRUE);
}

void error_box(HWND dlg, const char *text) {
  MessageBoxW(dlg, wide(text).text, wide(" Chyba ").text, MB_OK | MB_ICONEXCLAMATION | MB_TASKMODAL | MB_SETFOREGROUND);
}

void show_arguments(HWND dlg) {
  int argc = 0;
  wchar_t **argv = CommandLineToArgvW(GetCommandLineW(), &argc);
  wchar_t status[400] = L"";
  for (int i = 1; argv && i < argc; i++) {
    if (i > 1) lstrcatW(status, L" ");
    if (lstrlenW(status) + lstrlenW(argv[i]) + 3 >= 400) break;
    lstrcatW(status, L"[");
    lstrcatW(status, argv[i]);
    lstrcatW(status, L"]");
  }
  SetDlgItemTextW(dlg, ITEM_STATUS, status);
}

INT_PTR CALLBACK main_proc(HWND dlg, UINT msg, WPARAM wp, LPARAM) {
  switch (msg) {
    case WM_INITDIALOG:
      show_arguments(dlg);
      return TRUE;  // the focus goes to the first field
    case WM_COMMAND:
      break;
    default:
      return FALSE;
  }
  switch (LOWORD(wp)) {
    case ITEM_PATH:
      if (HIWORD(wp) == EN_KILLFOCUS) {
        wchar_t path[300];
        int n = GetDlgItemTextW(dlg, ITEM_PATH, path, 298);
        if (n > 0 && path[n - 1] != L'\\') {
          path[n] = L'\\';
          path[n + 1] = 0;
          SetDlgItemTextW(dlg, ITEM_PATH, path);
        }
      }
      return TRUE;
    case ITEM_ERROR:
      error_box(dlg, "Soubor C:\\KORV5\\EXE\\SYSTEM.WCO nelze otevřít");
      set_status(dlg, "Chyba potvrzena");
      return TRUE;
    case ITEM_QUESTION:
      ask(dlg);
      return TRUE;
    case ITEM_JOB:
      long_job(dlg);
      return TRUE;
    case ITEM_END: {
      BOOL ok = FALSE;
      UINT code = GetDlgItemInt(dlg, ITEM_CODE, &ok, FALSE);
      EndDialog(dlg, ok ? (INT_PTR)code : 0);
      return TRUE;
    }
    case IDCANCEL:
      EndDialog(dlg, 0);
      return TRUE;
  }
  return FALSE;
}

}  // namespace

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR, int) {
  static Template t;
  begin(&t, kTitle, 9, 260, 120);
  item(&t, ES_AUTOHSCROLL | WS_BORDER | WS_TABSTOP, 10, 10, 150, 12, ITEM_PATH, EDIT, "");
  item(&t, ES_AUTOHSCROLL | WS_BORDER | WS_TABSTOP, 10, 28, 150, 12, ITEM_CODE, EDIT, "");
  item(&t, BS_AUTOCHECKBOX | WS_TABSTOP, 10, 46, 150, 12, ITEM_CHECK, BUTTON, "&Ikona na ploše");
  item(&t, BS_PUSHBUTTON | WS_TABSTOP, 170, 10, 80, 14, ITEM_ERROR, BUTTON, "&Chyba");
  item(&t, BS_PUSHBUTTON | WS_TABSTOP, 170, 28, 80, 14, ITEM_QUESTION, BUTTON, "&Otázka");
  item(&t, BS_PUSHBUTTON | WS_TABSTOP, 170, 46, 80, 14, ITEM_JOB, BUTTON, "&Instalace");
  item(&t, BS_PUSHBUTTON | WS_TABSTOP, 170, 64, 80, 14, ITEM_END, BUTTON, "&Konec");
  item(&t, BS_PUSHBUTTON | WS_TABSTOP | WS_DISABLED, 170, 82, 80, 14, ITEM_OFF, BUTTON, "&Nedostupné");
  item(&t, SS_LEFT, 10, 102, 240, 10, ITEM_STATUS, STATIC, "");
  return (int)DialogBoxIndirectParamW(instance, (DLGTEMPLATE *)t.words, nullptr, main_proc, 0);
}
