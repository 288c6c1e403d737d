// functions.cpp - the sample main program's function table.
#include "tools/suite/functions.h"

namespace {

// Every command does the same in the sample program: nothing, and says so with its argument.
int32_t sample_handler(int32_t argument) { return argument; }

}  // namespace

// clang-format off
const SuiteCommand suite_commands[] = {
    {1001, "&Nový návrh", "Založí nový prázdný návrh"},
    {1002, "&Otevřít návrh ...", "Otevře návrh ze souboru D32"},
    {1003, "&Uložit", "Uloží návrh do jeho souboru"},
    {1004, "Uložit &jako ...", "Uloží návrh do nového souboru"},
    {1005, "&Tisk ...", "Vytiskne schéma nebo desku"},
    {1006, "Nastavení tis&kárny ...", "Volba tiskárny a formátu papíru"},
    {1007, "&Konec", "Ukončí program KORVEX"},
    {1101, "&Zpět", "Vrátí poslední změnu"},
    {1102, "Z&novu", "Provede znovu vrácenou změnu"},
    {1103, "&Vyjmout", "Přesune výběr do schránky"},
    {1104, "&Kopírovat", "Zkopíruje výběr do schránky"},
    {1105, "V&ložit", "Vloží obsah schránky"},
    {1106, "&Smazat", "Smaže vybrané objekty"},
    {1107, "Vybrat &vše", "Vybere všechny objekty listu"},
    {1201, "&Zvětšit", "Zvětší měřítko zobrazení"},
    {1202, "Z&menšit", "Zmenší měřítko zobrazení"},
    {1203, "&Celý návrh", "Zobrazí celý návrh v okně"},
    {1204, "&Překreslit", "Znovu vykreslí obsah okna"},
    {1205, "&Mřížka", "Zapne nebo vypne mřížku"},
    {1301, "Vložit &součástku ...", "Vloží součástku ze schematické knihovny"},
    {1302, "Kreslit &spoj", "Kreslí elektrický spoj mezi vývody"},
    {1303, "Vložit &návěští", "Pojmenuje spoj návěštím"},
    {1304, "Kontrola &elektrických pravidel", "Zkontroluje schéma (ERC)"},
    {1305, "Vytvořit &netlist", "Vytvoří seznam spojů pro desku"},
    {1401, "Načíst &netlist", "Přenese spoje ze schématu na desku"},
    {1402, "&Rozmístit pouzdra", "Rozmístí pouzdra součástek na desce"},
    {1403, "&Autorouter ...", "Automaticky propojí spoje na desce"},
    {1404, "Kontrola &návrhových pravidel", "Zkontroluje izolační vzdálenosti (DRC)"},
    {1405, "Výstup &Gerber ...", "Vytvoří data pro výrobu desky"},
    {1406, "&Vrtací data ...", "Vytvoří soubor vrtání"},
    {1501, "Spustit &simulaci", "Spustí simulaci obvodu"},
    {1502, "&Modely ...", "Správa knihovny simulačních modelů"},
    {1503, "&Průběhy", "Zobrazí časové průběhy simulace"},
    {1601, "&Knihovny ...", "Správa knihoven značek a pouzder"},
    {1602, "K&onfigurace ...", "Nastavení programu (SYSTEM.WCO)"},
    {1701, "&Obsah nápovědy", "Otevře nápovědu KORVEX"},
    {1702, "&O programu ...", "Verze a autorská práva"},
};
// clang-format on
const int32_t suite_command_count = (int32_t)KX_COUNT(suite_commands);

namespace {

const int32_t kContextHelp = 1799;  // the F1 key of every window: unlisted, keyed by itself
const uint16_t kKeyF1 = 0x70;       // VK_F1

#define KX_FN(id, type, help, name) \
  { id, 0, 0, (int16_t)(type), help, 0, sample_handler, name, PFU_KEY_AMP_LETTER }
#define KX_ALL PFU_FT_ALL_MODES
#define KX_SCH PFU_FT_MODE1
#define KX_PCB PFU_FT_MODE2
#define KX_SIM PFU_FT_MODE3

}  // namespace

// clang-format off
FunctionRecord suite_function_table[] = {
    KX_FN(1001, KX_ALL, 100, "file_new"),
    KX_FN(1002, KX_ALL, 101, "file_open"),
    KX_FN(1003, KX_ALL, 102, "file_save"),
    KX_FN(1004, KX_ALL, 103, "file_save_as"),
    KX_FN(1005, KX_ALL, 104, "file_print"),
    KX_FN(1006, KX_ALL, 105, "file_printer_setup"),
    KX_FN(1007, KX_ALL | PFU_FT_AMP_KEY, 106, "file_exit"),
    KX_FN(1101, KX_ALL, 200, "edit_undo"),
    KX_FN(1102, KX_ALL, 201, "edit_redo"),
    KX_FN(1103, KX_SCH | KX_PCB, 202, "edit_cut"),
    KX_FN(1104, KX_SCH | KX_PCB, 203, "edit_copy"),
    KX_FN(1105, KX_SCH | KX_PCB, 204, "edit_paste"),
    KX_FN(1106, KX_SCH | KX_PCB, 205, "edit_delete"),
    KX_FN(1107, KX_SCH | KX_PCB, 206, "edit_select_all"),
    KX_FN(1201, KX_ALL, 300, "view_zoom_in"),
    KX_FN(1202, KX_ALL, 301, "view_zoom_out"),
    KX_FN(1203, KX_ALL, 302, "view_zoom_all"),
    KX_FN(1204, KX_ALL, 303, "view_redraw"),
    KX_FN(1205, KX_SCH | KX_PCB, 304, "view_grid"),
    KX_FN(1301, KX_SCH, 400, "schema_place_part"),
    KX_FN(1302, KX_SCH, 401, "schema_wire"),
    KX_FN(1303, KX_SCH, 402, "schema_label"),
    KX_FN(1304, KX_SCH, 403, "schema_erc"),
    KX_FN(1305, KX_SCH, 404, "schema_netlist"),
    KX_FN(1401, KX_PCB, 500, "layout_load_netlist"),
    KX_FN(1402, KX_PCB, 501, "layout_place"),
    KX_FN(1403, KX_PCB, 502, "layout_autoroute"),
    KX_FN(1404, KX_PCB, 503, "layout_drc"),
    KX_FN(1405, KX_PCB, 504, "layout_gerber"),
    KX_FN(1406, KX_PCB, 505, "layout_drill"),
    KX_FN(1501, KX_SIM, 600, "sim_run"),
    KX_FN(1502, KX_SIM, 601, "sim_models"),
    KX_FN(1503, KX_SIM, 602, "sim_waves"),
    KX_FN(1601, KX_ALL, 700, "tools_libraries"),
    KX_FN(1602, KX_ALL, 701, "tools_configuration"),
    KX_FN(1701, KX_ALL, 800, "help_contents"),
    KX_FN(1702, KX_ALL, 801, nullptr),
    {kContextHelp, 0, 0, (int16_t)(KX_ALL | PFU_FT_UNLISTED), 899, 0, sample_handler,
     "help_context", kKeyF1},
    {0, PFU_ST_END, 0, 0, 0, 0, nullptr, nullptr, 0},
};
// clang-format on

const char *suite_function_text(int32_t id, int16_t which) {
  if (id == kContextHelp) return which == PFU_TEXT_HELP ? "Nápověda k oknu" : nullptr;
  for (int32_t i = 0; i < suite_command_count; i++) {
    if (suite_commands[i].id != id) continue;
    if (which == PFU_TEXT_MENU) return suite_commands[i].menu;
    if (which == PFU_TEXT_HELP) return suite_commands[i].help;
    return nullptr;
  }
  return nullptr;
}

Flag suite_write_function_list(void) {
  pfu_set_text_source(suite_function_text);
  FunctionTable *table = nullptr;
  if (!pfu_create(&table)) return 0;
  Flag ok = pfu_register(table, suite_function_table);
  if (ok) ok = WriteFunctionList(table);
  pfu_destroy(&table);
  return ok;
}
