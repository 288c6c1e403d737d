// functions.h - the function table of the sample main program KORV5.EXE: a representative
// part of the suite's commands (files, editing, view, schematic, layout, simulation, help)
// with their Czech menu texts, help lines and configuration names, and its text source for
// the function-table module (pack/pfu.h).
#ifndef KX_SUITE_FUNCTIONS_H
#define KX_SUITE_FUNCTIONS_H

#include "common/co.h"
#include "pack/pfu.h"

// One command of the table as the menus show it.
struct SuiteCommand {
  int32_t id;
  const char *menu;  // menu text with its "&" letter
  const char *help;  // help line (status bar)
};

extern const SuiteCommand suite_commands[];
extern const int32_t suite_command_count;  // listed commands (all with a menu text)
extern FunctionRecord suite_function_table[];
// The static table: suite_command_count listed records, one unlisted record (the key of the
// context help, PFU_FT_UNLISTED) and the end record.

const char *suite_function_text(int32_t id, int16_t which);
// The text source for pfu_set_text_source: the menu text (PFU_TEXT_MENU) or help line
// (PFU_TEXT_HELP) of the command with the id; null for an unknown id or kind.

Flag suite_write_function_list(void);
// Registers the text source and the table in a new function table, writes PFU_LIST.PFU into
// the current directory (WriteFunctionList) and frees the table again. The table's key
// placeholders are resolved on the first call only (a static table keeps them).
// Returns WriteFunctionList's result; 0 when the table can't be created or registered (the
// message has been shown).

#endif
