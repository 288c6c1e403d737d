// dres.h - dialog templates built in memory (the DLGTEMPLATE / DLGITEMTEMPLATE layout that
// DialogBoxIndirectParamW and CreateDialogIndirectParamW take), and their lookup by number.
//
// Texts are given in Windows-1250 and converted explicitly with code page 1250 into the
// template's UTF-16, so they are right whatever the system's ANSI code page is.
// Coordinates are dialog units. Windows only.
#ifndef KX_DRES_H
#define KX_DRES_H

#include "common/co.h"

struct DialogTemplate;  // opaque; bytes DWORD-aligned as the platform wants them

enum {
  DRES_BUTTON = 0x0080,
  DRES_EDIT = 0x0081,
  DRES_STATIC = 0x0082,
  DRES_LISTBOX = 0x0083,
  DRES_SCROLLBAR = 0x0084,
  DRES_COMBOBOX = 0x0085
};

DialogTemplate *dres_create(const char *title, uint32_t style, int16_t x, int16_t y, int16_t cx,
                            int16_t cy, const char *font, int16_t point_size);
// A template with no items. font null: no DS_SETFONT. Null on allocation failure (reported).

Flag dres_add(DialogTemplate *tpl, uint16_t class_atom, const char *text, int32_t id,
              uint32_t style, int16_t x, int16_t y, int16_t cx, int16_t cy);
// Appends an item of a predefined class (DRES_*). WS_CHILD | WS_VISIBLE are added. 0 on
// allocation failure (reported) or a null template (internal error).

const void *dres_bytes(const DialogTemplate *tpl);
// The template as the platform takes it (valid until the next dres_add or dres_destroy).

int32_t dres_size(const DialogTemplate *tpl);
// Number of bytes of the template so far (0 for a null template).

void dres_destroy(DialogTemplate **tpl);
// Frees the template (removing it from both tables) and sets *tpl to null. Null is allowed.

Flag dres_register(int32_t number, DialogTemplate *tpl, Flag modeless);
const void *dres_find_modal(int32_t number);
const void *dres_find_modeless(int32_t number);
// The lookup by template number, one table per kind (64 entries each). dres_register keeps the
// pointer (the template must live while registered); a number registered again takes the new
// template. Returns 1; 0 with an internal error report for a null template or a full table.
// dres_find_*: the template's bytes, or null for an unknown number.

#endif
