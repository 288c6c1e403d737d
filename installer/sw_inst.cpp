// sw_inst.cpp - the installer dialog: template, opening, path fields, browse buttons, Start,
// abort and end.
#include "installer/sw_inst.h"

#include "common/cz.h"
#include "common/mm.h"
#include "common/st.h"
#include "common/we.h"
#include "installer/inst.h"
#include "installer/switches.h"
#include "installer/unatt.h"
#include "platform/inst_plat.h"
#include "platform/reg.h"
#include "platform/wtext.h"
#include "toolkit/dres.h"
#include "toolkit/wgd.h"

#include <windows.h>
#include <shlobj.h>
#include <stdio.h>
#include <string.h>

const char SW_INST_TITLE[] = "Instalace návrhového systému pro elektroniku KORVEX";
const char SW_INST_HEADING_FONT[] = "Times New Roman";
const char SW_INST_TEXT_SUCCESS[] = "Instalace proběhla úspěšně";
const char SW_INST_TEXT_FAILURE[] = "Instalace nebyla úspěšná";
const char SW_INST_SHELL_FOLDERS[] =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
const char SW_INST_QUICK_LAUNCH_TAIL[] = "Microsoft\\Internet Explorer\\Quick Launch";

// clang-format off
const char *const SW_INST_WELCOME[SW_INST_LINE_COUNT] = {
    "Vážení přátelé, blahopřejeme Vám k pořízení nové verze systému KORVEX.",
    "Před instalací zvolte zdrojový adresář, ODKUD se bude instalovat a cílový adresář",
    "se bude instalovat. Můžete rovněž zvolit umístění ikon do systémové lišty a/nebo na plochu.",
    "Případná předchozí instalace na cílové cestě bude před novou instalací odinstalována"};
// clang-format on

// clang-format off
const char *const SW_INST_CLOSING[SW_INST_LINE_COUNT] = {
    "Instalace systému KORVEX proběhla úspěšně. Další informace o systému najdete v souboru",
    "README.TXT a v systému nápovědy. KORVEX spustíte výběrem z nabídky",
    "\"Start | Programy | KORVEX\" kliknutím na ikonu KORVEX.",
    "Hodně štěstí ve Vaší práci přejí                                     Autoři       "};
// clang-format on

static const char TEXT_WRONG_SYSTEM[] =
    "Nesprávná verze operačního systému Windows.\nSystém KORVEX vyžaduje minimálně Windows 95.";
static const char TEXT_NO_APP_DATA[] = "Nelze zjistit adresář složky Data aplikací";
static const char TEXT_BROWSE_SOURCE[] = "Vyberte složku, odkud se bude instalovat";
static const char TEXT_BROWSE_TARGET[] = "Vyberte složku, kam se bude instalovat";
static const char TEXT_NOT_1250[] =
    "Název vybrané složky obsahuje znaky, které systém KORVEX nedokáže zapsat.";
static const char TARGET_NAME[] = "KORV5";

// ---- Text rules ------------------------------------------------------------------------------

Flag sw_inst_version_text(char *buffer, int32_t size) {
  if (!buffer || size < 1) return 0;
  snprintf(buffer, (size_t)size, "%d.%03d-%03d", (int)KX_VERSION_MAJOR, (int)KX_VERSION_MINOR,
           (int)KX_VERSION_BUILD);
  return 1;
}

Flag sw_inst_add_backslash(char *path) {
  if (!path) return 0;
  size_t n = strnlen(path, KX_PATH - 1);
  path[n] = 0;  // a text that filled the whole buffer is taken as cut at KX_PATH - 1
  if (n > 0 && path[n - 1] == '\\') return 1;
  if (n == KX_PATH - 1) n--;  // no room: the last character gives way to the backslash
  path[n] = '\\';
  path[n + 1] = 0;
  return 1;
}

Flag sw_inst_accept_path(char *field, char *state_path) {
  if (!field || !state_path) return 0;
  sw_inst_add_backslash(field);
  if (field[0] && field[1] == ':') {
    st_put(state_path, KX_PATH, field);
    return 1;
  }
  st_put(field, KX_PATH, state_path);
  return 0;
}

Flag sw_inst_target_from_folder(const char *folder, char *target) {
  if (!folder || !target) return 0;
  char path[KX_PATH];
  st_put(path, KX_PATH, folder);
  sw_inst_add_backslash(path);
  char upper[KX_PATH];
  st_put(upper, KX_PATH, path);
  cz_upper(upper);
  if (!strstr(upper, TARGET_NAME)) {
    st_append(path, KX_PATH, TARGET_NAME);
    st_append(path, KX_PATH, "\\");
  }
  st_put(target, KX_PATH, path);
  return 1;
}

Flag sw_inst_quick_launch_path(const char *app_data, char *path) {
  if (!app_data || !path) return 0;
  char result[KX_PATH];
  st_put(result, KX_PATH, app_data);
  size_t n = strlen(result);
  if (n == 0 || result[n - 1] != '\\') st_append(result, KX_PATH, "\\");
  st_append(result, KX_PATH, SW_INST_QUICK_LAUNCH_TAIL);
  st_put(path, KX_PATH, result);
  return 1;
}

// ---- Layout ----------------------------------------------------------------------------------
//
// Thousandths of an inch, as the items are laid out, to dialog units.
static int16_t unit_x(int32_t x) { return (int16_t)(x * 7 / 100); }
static int16_t unit_y(int32_t y) { return (int16_t)(y * 7 / 100); }

enum {
  CLIENT_WIDTH = 5650,  // the rightmost items end at 5550, a margin of 100 as on the left
  STATUS_TOP = 3960,    // the status line under the last text line (3640 + 210)
  STATUS_HEIGHT = 230,
  CLIENT_HEIGHT = STATUS_TOP + STATUS_HEIGHT
};

struct ItemLayout {
  int32_t id;
  uint16_t atom;
  uint32_t style;
  int32_t x, y, cx, cy;  // layout units
};

static const uint32_t LABEL = SS_LEFT;
static const uint32_t LINE = SS_LEFT | SS_NOPREFIX;
static const uint32_t FIELD = WS_BORDER | WS_TABSTOP | ES_AUTOHSCROLL | ES_LEFT;
static const uint32_t BUTTON = WS_TABSTOP | BS_PUSHBUTTON;
static const uint32_t CHECK = WS_TABSTOP | BS_CHECKBOX;

// In tab order: each label stands right before its field, so that its "&" letter reaches it.
// clang-format off
static const ItemLayout ITEMS[] = {
    {SW_INST_HEADING, DRES_STATIC, SS_CENTER | SS_NOPREFIX, 50, 50, CLIENT_WIDTH - 100, 600},
    {SW_INST_VERSION_LABEL, DRES_STATIC, LABEL, 250, 960, 1300, 210},
    {SW_INST_VERSION, DRES_STATIC, LINE, 1600, 960, 2600, 210},
    {SW_INST_SOURCE_LABEL, DRES_STATIC, LABEL, 250, 1320, 1300, 210},
    {SW_INST_SOURCE, DRES_EDIT, FIELD, 1600, 1320, 2600, 210},
    {SW_INST_SOURCE_BROWSE, DRES_BUTTON, BUTTON, 4250, 1320, 1300, 210},
    {SW_INST_TARGET_LABEL, DRES_STATIC, LABEL, 250, 1580, 1300, 210},
    {SW_INST_TARGET, DRES_EDIT, FIELD, 1600, 1580, 2600, 210},
    {SW_INST_TARGET_BROWSE, DRES_BUTTON, BUTTON, 4250, 1580, 1300, 210},
    {SW_INST_DESKTOP, DRES_BUTTON, CHECK, 1600, 1940, 2600, 210},
    {SW_INST_QUICK_LAUNCH, DRES_BUTTON, CHECK, 1600, 2200, 2600, 210},
    {SW_INST_START, DRES_BUTTON, WS_TABSTOP | BS_DEFPUSHBUTTON, 900, 2560, 1300, 300},
    {SW_INST_ABORT, DRES_BUTTON, BUTTON, 2300, 2560, 1300, 300},
    {SW_INST_END, DRES_BUTTON, BUTTON, 3700, 2560, 1300, 300},
    {SW_INST_LINE_FIRST, DRES_STATIC, LINE, 900, 3010, 4550, 210},
    {SW_INST_LINE_FIRST + 1, DRES_STATIC, LINE, 900, 3220, 4550, 210},
    {SW_INST_LINE_FIRST + 2, DRES_STATIC, LINE, 900, 3430, 4550, 210},
    {SW_INST_LINE_FIRST + 3, DRES_STATIC, LINE, 900, 3640, 4550, 210},
    {SW_INST_STATUS, DRES_STATIC, SS_LEFT | SS_NOPREFIX | SS_SUNKEN | SS_LEFTNOWORDWRAP, 0,
     STATUS_TOP, CLIENT_WIDTH, STATUS_HEIGHT},
};
// clang-format on

static const char *item_text(int32_t id, const char *version) {
  switch (id) {
    case SW_INST_HEADING: return "Instalace systému KORVEX";
    case SW_INST_VERSION_LABEL: return "Verze :";
    case SW_INST_VERSION: return version;
    case SW_INST_SOURCE_LABEL: return "&Zdrojová cesta :";
    case SW_INST_TARGET_LABEL: return "&Cílová cesta :";
    case SW_INST_SOURCE_BROWSE: return "P&rocházet ...";
    case SW_INST_TARGET_BROWSE: return "Pr&ocházet ...";
    case SW_INST_DESKTOP: return "&Umístit ikonu aplikace na pracovní plochu";
    case SW_INST_QUICK_LAUNCH: return "Umístit ikonu aplikace do systémové &lišty";
    case SW_INST_START: return "&Start instalace";
    case SW_INST_ABORT: return "&Přerušit instalaci";
    case SW_INST_END: return "&Konec";
    case SW_INST_LINE_FIRST: return "Řádek 1";  // placeholders until the opening
    case SW_INST_LINE_FIRST + 1: return "Řádek 2";
    case SW_INST_LINE_FIRST + 2: return "Řádek 3";
    case SW_INST_LINE_FIRST + 3: return "Řádek 4";
    default: return "";
  }
}

// ---- The dialog's items ----------------------------------------------------------------------

// The status line and the progress lines are written eight times per installed file. Looking an
// item up and setting its text are each a trip to the window system (under Wine a round trip to
// its server), so these items' windows are looked up once per dialog window, and a text such an
// item already shows is not set and repainted again (lines 19 and 20 stay the same for most
// files). The other items are set as they come.
enum {
  PROGRESS_FIRST = SW_INST_STATUS,
  PROGRESS_COUNT = SW_INST_LINE_FIRST + SW_INST_LINE_COUNT - SW_INST_STATUS
};
static HWND progress_parent;
static HWND progress_windows[PROGRESS_COUNT];

static Flag progress_item(int32_t id) {
  return id >= PROGRESS_FIRST && id < PROGRESS_FIRST + PROGRESS_COUNT;
}

static HWND item_window(InstallerDialog *d, int32_t id) {
  if (!d->window) return nullptr;
  HWND parent = (HWND)d->window;
  if (!progress_item(id)) return GetDlgItem(parent, id);
  if (parent != progress_parent) {
    progress_parent = parent;
    for (int i = 0; i < PROGRESS_COUNT; i++) progress_windows[i] = nullptr;
  }
  HWND &w = progress_windows[id - PROGRESS_FIRST];
  if (!w || !IsWindow(w)) w = GetDlgItem(parent, id);
  return w;
}

// 1 when the window shows exactly text (Windows-1250) already. Texts too long for the buffers
// count as different and are set.
static Flag shows_text(HWND w, const char *text) {
  enum { COMPARED = 512 };
  wchar_t wanted[COMPARED], shown[COMPARED];
  if (!wtext_in(text, wanted, COMPARED)) return 0;
  int n = (int)wcslen(wanted) + 1;  // with the terminator
  int m = GetWindowTextW(w, shown, COMPARED);
  return m == n - 1 && memcmp(wanted, shown, (size_t)m * sizeof(wchar_t)) == 0 ? 1 : 0;
}

// While the install module writes per-file texts (between its batch calls), the status line
// and the progress lines take every text at once, so that a program that reads an item always
// gets the current text, but they are painted only by a timer every PAINT_INTERVAL_MS (nobody
// reads faster; a static control paints itself at every text it is given, and each paint is a
// round trip to the window system), and when the install module announces a long step. The
// timer also fires in the message loop of a box, so a box never stands over stale lines.
// Messages are taken then once for each file (at the first pump after its first progress
// line) and otherwise at most every PUMP_INTERVAL_MS.
enum { PAINT_INTERVAL_MS = 100, PUMP_INTERVAL_MS = 20, PAINT_TIMER = 1717 };
static InstallerDialog *batching;  // the dialog whose texts are painted by the timer
static unsigned unpainted;         // one bit per progress item whose text is not painted yet
static DWORD last_pump;
static Flag next_file;  // a file's first progress line came since the last pump

static void paint_progress(InstallerDialog *d) {
  for (int i = 0; i < PROGRESS_COUNT; i++) {
    if (!(unpainted & (1u << i))) continue;
    HWND w = item_window(d, PROGRESS_FIRST + i);
    if (w) RedrawWindow(w, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
  }
  unpainted = 0;
}

static void CALLBACK paint_timer(HWND, UINT, UINT_PTR, DWORD) {
  if (batching && unpainted) paint_progress(batching);
}

// Gives the window its text (Windows-1250) without painting it. 0 when it can't be converted.
static Flag store_text(HWND w, const char *text) {
  enum { LONGEST = 1024 };
  wchar_t wide[LONGEST];
  if (MultiByteToWideChar(1250, 0, text, -1, wide, LONGEST) <= 0) return 0;
  DefWindowProcW(w, WM_SETTEXT, 0, (LPARAM)wide);
  return 1;
}

static void set_item_text(InstallerDialog *d, int32_t id, const char *text) {
  HWND w = item_window(d, id);
  if (!w) return;
  if (!text) text = "";
  if (id == SW_INST_LINE_FIRST && text[0]) next_file = 1;
  if (progress_item(id) && shows_text(w, text)) return;
  if (progress_item(id) && batching == d && store_text(w, text)) {
    unpainted |= 1u << (id - PROGRESS_FIRST);
    return;
  }
  dialog_window_set_text(w, text);
}

static void enable_item(InstallerDialog *d, int32_t id, Flag on) {
  HWND w = item_window(d, id);
  if (w) EnableWindow(w, on ? TRUE : FALSE);
}

static Flag item_enabled(InstallerDialog *d, int32_t id) {
  HWND w = item_window(d, id);
  return w && IsWindowEnabled(w) ? 1 : 0;
}

static void set_check(InstallerDialog *d, int32_t id, Flag on) {
  HWND w = item_window(d, id);
  if (w) SendMessageA(w, BM_SETCHECK, on ? BST_CHECKED : BST_UNCHECKED, 0);
}

static Flag is_checked(InstallerDialog *d, int32_t id) {
  HWND w = item_window(d, id);
  return w && SendMessageA(w, BM_GETCHECK, 0, 0) == BST_CHECKED ? 1 : 0;
}

static void focus_item(InstallerDialog *d, int32_t id) {
  HWND w = item_window(d, id);
  if (w) SendMessageA((HWND)d->window, WM_NEXTDLGCTL, (WPARAM)w, TRUE);
}

static void show_lines(InstallerDialog *d, const char *const *lines) {
  for (int i = 0; i < SW_INST_LINE_COUNT; i++)
    set_item_text(d, SW_INST_LINE_FIRST + i, lines ? lines[i] : "");
}

// ---- What the install module calls back ------------------------------------------------------

static void callback_set_line(void *context, int16_t item, const char *text) {
  if (context) ((InstallerDialog *)context)->set_line(item, text);
}

static void callback_pump(void *context) {
  DWORD now = GetTickCount();
  if (batching && batching == context && !next_file && now - last_pump < PUMP_INTERVAL_MS) return;
  last_pump = now;
  next_file = 0;
  app_pump();
}

static void callback_paint(void *context) {
  if (context && batching == context) paint_progress((InstallerDialog *)context);
}

static void callback_batch(void *context, Flag on) {
  InstallerDialog *d = (InstallerDialog *)context;
  if (!d || !d->window) return;
  if (on && !batching) {
    batching = d;
    SetTimer((HWND)d->window, PAINT_TIMER, PAINT_INTERVAL_MS, paint_timer);
  } else if (!on && batching == d) {
    KillTimer((HWND)d->window, PAINT_TIMER);
    paint_progress(d);
    batching = nullptr;
  }
}

static void callback_bring_to_front(void *context) {
  InstallerDialog *d = (InstallerDialog *)context;
  if (!d || !d->window) return;
  HWND w = (HWND)d->window;
  if (IsIconic(w)) ShowWindow(w, SW_RESTORE);
  SetForegroundWindow(w);
  BringWindowToTop(w);
  SetActiveWindow(w);
}

// ---- Building and destroying -----------------------------------------------------------------

InstallerDialog::InstallerDialog(void *parent_window)
    : window_type(0),
      state(nullptr),
      quick_launch_available(0),
      installing(0),
      opened(0),
      closing(0),
      heading_font(nullptr) {
  parent = parent_window;
  center_on_screen = 1;
  char program[KX_PATH];
  program[0] = 0;
  if (!plat_program_path(program, KX_PATH)) program[0] = 0;
  state = inst_create_state(program);
  InstallDialog callbacks;
  callbacks.context = this;
  callbacks.set_line = callback_set_line;
  callbacks.pump = callback_pump;
  callbacks.bring_to_front = callback_bring_to_front;
  callbacks.paint = callback_paint;
  callbacks.batch = callback_batch;
  inst_set_dialog(&callbacks);
}

InstallerDialog::~InstallerDialog() {
  if (state) inst_destroy_state(&state);
  if (heading_font) {
    DeleteObject((HFONT)heading_font);
    heading_font = nullptr;
  }
}

Flag sw_inst_open(InstallerDialog *dialog) {
  if (!dialog) {
    InternalError("sw_inst", __LINE__);
    return 0;
  }
  char version[32];
  sw_inst_version_text(version, sizeof version);
  DialogTemplate *tpl = dres_create(
      SW_INST_TITLE, WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX | WS_VISIBLE | DS_3DLOOK,
      0, 0, unit_x(CLIENT_WIDTH), unit_y(CLIENT_HEIGHT), "MS Sans Serif", 8);
  if (!tpl) return 0;
  for (size_t i = 0; i < KX_COUNT(ITEMS); i++) {
    const ItemLayout &it = ITEMS[i];
    if (!dres_add(tpl, it.atom, item_text(it.id, version), it.id, it.style, unit_x(it.x),
                  unit_y(it.y), unit_x(it.cx), unit_y(it.cy))) {
      dres_destroy(&tpl);
      return 0;
    }
  }
  // CreateDialogIndirectParamA has made its own copy once it returns.
  Flag opened = dialog_open(dialog, dres_bytes(tpl));
  dres_destroy(&tpl);
  return opened;
}

// ---- Opening ---------------------------------------------------------------------------------

// The heading's font: Times New Roman at two thirds of the item's height, smaller when the
// heading would not fit the item's width at that size.
static HFONT heading_font(int height) {
  return CreateFontA(-height, 0, 0, 0, FW_BOLD, FALSE, FALSE, FALSE, EASTEUROPE_CHARSET,
                     OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY,
                     VARIABLE_PITCH | FF_ROMAN, SW_INST_HEADING_FONT);
}

static void set_heading_font(InstallerDialog *d) {
  HWND w = item_window(d, SW_INST_HEADING);
  if (!w) return;
  RECT r;
  GetClientRect(w, &r);
  int width = r.right - r.left;
  int height = (r.bottom - r.top) * 2 / 3;
  char text[WE_TEXT_SIZE];
  wchar_t wide[WE_TEXT_SIZE];
  if (!dialog_window_get_text(w, text, WE_TEXT_SIZE)) text[0] = 0;
  wtext_in(text, wide, WE_TEXT_SIZE);
  int length = (int)wcslen(wide);
  HFONT font = nullptr;
  HDC dc = GetDC(w);
  for (; height >= 8; height = height * 9 / 10) {
    font = heading_font(height);
    if (!font || !dc || length <= 0) break;
    HGDIOBJ old = SelectObject(dc, font);
    SIZE size;
    BOOL measured = GetTextExtentPoint32W(dc, wide, length, &size);
    SelectObject(dc, old);
    if (!measured || size.cx <= width) break;
    DeleteObject(font);
    font = nullptr;
  }
  if (dc) ReleaseDC(w, dc);
  if (!font) return;
  d->heading_font = font;
  SendMessageA(w, WM_SETFONT, (WPARAM)font, TRUE);
}

// The switches the dialog opens with (null: none), and whether it runs by itself (/SILENT).
static const SetupSwitches *unattended;
static Flag by_itself;

void sw_inst_run_unattended(const SetupSwitches *switches, Flag silent) {
  unattended = switches;
  by_itself = switches && silent;
}

// The switches go into the fields; a silent run's Start is pressed as soon as the dialog takes
// messages. Quick launch is only ever checked when the system offers it.
static void start_unattended(InstallerDialog *d) {
  const SetupSwitches *s = unattended;
  if (s->source[0]) {
    st_put(d->state->source_path, KX_PATH, s->source);
    set_item_text(d, SW_INST_SOURCE, s->source);
  }
  if (s->target[0]) {
    st_put(d->state->target_path, KX_PATH, s->target);
    set_item_text(d, SW_INST_TARGET, s->target);
  }
  if (s->desktop != SETUP_NOT_GIVEN) set_check(d, SW_INST_DESKTOP, s->desktop);
  if (s->quick_launch != SETUP_NOT_GIVEN)
    set_check(d, SW_INST_QUICK_LAUNCH, s->quick_launch && d->quick_launch_available);
  if (by_itself)
    PostMessageA((HWND)d->window, WM_COMMAND, MAKEWPARAM(SW_INST_START, BN_CLICKED), 0);
}

Flag InstallerDialog::on_init() {
  if (opened) return 1;
  Flag ok = open();
  if (ok && state && unattended) start_unattended(this);
  return ok;
}

Flag InstallerDialog::open() {
  opened = 1;
  if (!state) return 0;  // no memory for the state: reported when it was made

  int32_t platform = 2;
  if (plat_windows_platform(&platform) && platform == 0) {
    ErrorBox(TEXT_WRONG_SYSTEM);
    return 0;  // the engine closes the dialog as cancelled; Cancel ends the program
  }

  set_heading_font(this);
  const int32_t fields[] = {SW_INST_SOURCE, SW_INST_TARGET};
  for (int32_t id : fields) {
    HWND field = item_window(this, id);
    if (field) SendMessageA(field, EM_LIMITTEXT, KX_PATH - 1, 0);
  }
  set_item_text(this, SW_INST_SOURCE, state->source_path);
  set_item_text(this, SW_INST_TARGET, state->target_path);
  set_item_text(this, SW_INST_STATUS, "");

  enable_item(this, SW_INST_ABORT, 0);
  show_lines(this, SW_INST_WELCOME);
  focus_item(this, SW_INST_SOURCE);
  set_check(this, SW_INST_DESKTOP, 1);

  char app_data[KX_PATH];
  if (!reg_get_string(REG_ROOT_CURRENT_USER, SW_INST_SHELL_FOLDERS, "AppData", app_data, KX_PATH)) {
    ErrorBox(TEXT_NO_APP_DATA);
    return 1;
  }
  char quick_launch[KX_PATH];
  sw_inst_quick_launch_path(app_data, quick_launch);
  if (plat_directory_exists(quick_launch)) {
    set_check(this, SW_INST_QUICK_LAUNCH, 1);
    quick_launch_available = 1;
  } else {
    enable_item(this, SW_INST_QUICK_LAUNCH, 0);
    quick_launch_available = 0;
  }
  return 1;
}

// ---- Path fields -----------------------------------------------------------------------------

static void leave_field(InstallerDialog *d, int32_t id) {
  if (!d->state || d->closing) return;
  HWND w = item_window(d, id);
  if (!w) return;
  char text[KX_PATH];
  if (!dialog_window_get_text(w, text, KX_PATH)) text[0] = 0;
  char *path = id == SW_INST_SOURCE ? d->state->source_path : d->state->target_path;
  char before[KX_PATH];
  st_put(before, KX_PATH, text);
  sw_inst_accept_path(text, path);
  if (strcmp(before, text) != 0) dialog_window_set_text(w, text);
}

// ---- Browse buttons --------------------------------------------------------------------------

static int CALLBACK browse_callback(HWND window, UINT message, LPARAM, LPARAM data) {
  if (message == BFFM_INITIALIZED && data) SendMessageW(window, BFFM_SETSELECTIONW, TRUE, data);
  return 0;
}

// Code page 1250 <-> UTF-16, whatever the system's ANSI code page is.

// The chosen folder in code page 1250 into folder (KX_PATH); 0 when cancelled.
static Flag browse(InstallerDialog *d, const char *title, const char *start, char *folder) {
  wchar_t wide_title[WE_TEXT_SIZE];
  wtext_in(title, wide_title, WE_TEXT_SIZE);
  wchar_t wide_start[KX_PATH];
  if (start) wtext_in(start, wide_start, KX_PATH);
  wchar_t display[MAX_PATH];
  display[0] = 0;
  BROWSEINFOW info;
  memset(&info, 0, sizeof info);
  info.hwndOwner = (HWND)d->window;
  info.pszDisplayName = display;
  info.lpszTitle = wide_title;
  info.ulFlags = BIF_RETURNONLYFSDIRS;
  if (start && wide_start[0]) {
    info.lpfn = browse_callback;
    info.lParam = (LPARAM)wide_start;
  }
  HRESULT com = CoInitialize(nullptr);
  LPITEMIDLIST chosen = SHBrowseForFolderW(&info);
  Flag ok = 0;
  if (chosen) {
    wchar_t wide_path[MAX_PATH];
    if (SHGetPathFromIDListW(chosen, wide_path)) {
      // A name that 1250 cannot write is no path for us: said so, and nothing changes.
      ok = wtext_out(wide_path, folder, KX_PATH) && folder[0] ? 1 : 0;
      if (!ok) ErrorBox(TEXT_NOT_1250);
    }
    CoTaskMemFree(chosen);
  }
  if (SUCCEEDED(com)) CoUninitialize();
  return ok;
}

static void browse_source(InstallerDialog *d) {
  char folder[KX_PATH];
  if (!d->state || !browse(d, TEXT_BROWSE_SOURCE, nullptr, folder)) return;
  sw_inst_add_backslash(folder);
  st_put(d->state->source_path, KX_PATH, folder);
  set_item_text(d, SW_INST_SOURCE, folder);
}

static void browse_target(InstallerDialog *d) {
  char folder[KX_PATH];
  if (!d->state || !browse(d, TEXT_BROWSE_TARGET, d->state->target_path, folder)) return;
  char target[KX_PATH];
  sw_inst_target_from_folder(folder, target);
  st_put(d->state->target_path, KX_PATH, target);
  set_item_text(d, SW_INST_TARGET, target);
}

// ---- Start, abort, end -----------------------------------------------------------------------

// clang-format off
static const int32_t INPUTS[] = {SW_INST_SOURCE,  SW_INST_SOURCE_BROWSE, SW_INST_TARGET,
                                 SW_INST_TARGET_BROWSE, SW_INST_DESKTOP, SW_INST_QUICK_LAUNCH,
                                 SW_INST_START,   SW_INST_END};
// clang-format on

static void make_default(InstallerDialog *d, int32_t id, int32_t previous) {
  HWND w = (HWND)d->window;
  SendMessageA(w, DM_SETDEFID, (WPARAM)id, 0);
  HWND old = item_window(d, previous);
  if (old) SendMessageA(old, BM_SETSTYLE, BS_PUSHBUTTON, TRUE);
  HWND now = item_window(d, id);
  if (now) SendMessageA(now, BM_SETSTYLE, BS_DEFPUSHBUTTON, TRUE);
}

void InstallerDialog::run_install() {
  if (!state || installing) return;
  state->desktop_icon = is_checked(this, SW_INST_DESKTOP);
  state->quick_launch_icon = is_checked(this, SW_INST_QUICK_LAUNCH);
  show_lines(this, nullptr);
  for (size_t i = 0; i < KX_COUNT(INPUTS); i++) enable_item(this, INPUTS[i], 0);
  enable_item(this, SW_INST_ABORT, 1);

  installing = 1;
  unatt_run_begin(state);
  Flag ok = InstallProcedure(state);
  unatt_run_end(ok);
  installing = 0;
  callback_batch(this, 0);

  if (ok) {
    set_status(SW_INST_TEXT_SUCCESS);
    show_lines(this, nullptr);
    show_lines(this, SW_INST_CLOSING);
    enable_item(this, SW_INST_ABORT, 0);
    enable_item(this, SW_INST_END, 1);
    make_default(this, SW_INST_END, SW_INST_START);
    focus_item(this, SW_INST_END);
  } else {
    set_status(SW_INST_TEXT_FAILURE);
    for (size_t i = 0; i < KX_COUNT(INPUTS); i++)
      if (INPUTS[i] != SW_INST_QUICK_LAUNCH || quick_launch_available)
        enable_item(this, INPUTS[i], 1);
    enable_item(this, SW_INST_ABORT, 0);
    focus_item(this, SW_INST_START);
  }
  inst_close_lists(state);
  if (by_itself) end();  // a silent run closes by itself
}

void InstallerDialog::end() {
  if (closing) return;
  closing = 1;
  dialog_end(this, 0);  // the main window going away ends the main loop with this code
}

void InstallerDialog::set_status(const char *text) { set_item_text(this, SW_INST_STATUS, text); }

void InstallerDialog::set_line(int16_t item, const char *text) {
  if (item < SW_INST_LINE_FIRST || item >= SW_INST_LINE_FIRST + SW_INST_LINE_COUNT) return;
  set_item_text(this, item, text);
}

Flag InstallerDialog::on_message(unsigned message, uintptr_t wparam, intptr_t) {
  if (message != WM_COMMAND) return 0;
  int32_t id = LOWORD(wparam);
  unsigned code = HIWORD(wparam);
  switch (id) {
    case SW_INST_SOURCE:
    case SW_INST_TARGET:
      if (code == EN_KILLFOCUS) leave_field(this, id);
      return 1;
    case IDOK: return 1;  // Enter goes to the default button; a bare OK means nothing here
    case IDCANCEL:
      // The close box and Esc: as "&Konec" while it may be pressed.
      if (!installing && item_enabled(this, SW_INST_END)) end();
      return 1;
    default: break;
  }
  if (code != BN_CLICKED) return 0;
  switch (id) {
    case SW_INST_SOURCE_BROWSE: browse_source(this); return 1;
    case SW_INST_TARGET_BROWSE: browse_target(this); return 1;
    case SW_INST_DESKTOP:
    case SW_INST_QUICK_LAUNCH: set_check(this, id, is_checked(this, id) ? 0 : 1); return 1;
    case SW_INST_START: run_install(); return 1;
    case SW_INST_ABORT: abort_requested = 1; return 1;
    case SW_INST_END:
      if (!installing) end();
      return 1;
    default: return 0;
  }
}
