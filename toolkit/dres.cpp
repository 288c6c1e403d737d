// dres.cpp - dialog templates built in memory, and the two tables that find them by number.
//
// The template is written field by field, little-endian, in the layout of DLGTEMPLATE and
// DLGITEMTEMPLATE: header, menu (none), class (none), title, [point size, font name], then the
// items, each starting on a DWORD boundary. Strings are UTF-16, WORD-aligned by construction.
#include "toolkit/dres.h"

#include "common/mm.h"
#include "common/we.h"
#include "platform/wtext.h"

#include <windows.h>
#include <string.h>

struct DialogTemplate {
  uint8_t *bytes;
  int32_t size;
  int32_t capacity;
};

enum { DRES_TABLE_SIZE = 64 };

struct DresEntry {
  int32_t number;
  DialogTemplate *tpl;
};

static DresEntry modal_table[DRES_TABLE_SIZE];
static DresEntry modeless_table[DRES_TABLE_SIZE];

// Makes room for n more bytes; 0 (reported) when the memory manager refuses.
static Flag reserve(DialogTemplate *tpl, int32_t n) {
  if (tpl->size + n <= tpl->capacity) return 1;
  int32_t capacity = tpl->capacity ? tpl->capacity : 256;
  while (capacity < tpl->size + n) capacity *= 2;
  uint8_t *bytes = (uint8_t *)mm_zalloc(capacity, MM_HERE);
  if (!bytes) {
    OutOfMemoryError();
    return 0;
  }
  if (tpl->size) memcpy(bytes, tpl->bytes, (size_t)tpl->size);
  mm_free(tpl->bytes, MM_HERE);
  tpl->bytes = bytes;
  tpl->capacity = capacity;
  return 1;
}

static void put16(DialogTemplate *tpl, uint16_t v) {
  tpl->bytes[tpl->size++] = (uint8_t)(v & 0xFF);
  tpl->bytes[tpl->size++] = (uint8_t)(v >> 8);
}

static void put32(DialogTemplate *tpl, uint32_t v) {
  put16(tpl, (uint16_t)(v & 0xFFFF));
  put16(tpl, (uint16_t)(v >> 16));
}

static void set16(DialogTemplate *tpl, int32_t at, uint16_t v) {
  tpl->bytes[at] = (uint8_t)(v & 0xFF);
  tpl->bytes[at + 1] = (uint8_t)(v >> 8);
}

// Number of UTF-16 units of text (code page 1250) without the terminator.
static int32_t wide_length(const char *text) { return wtext_units(text); }

// Appends text as a terminated UTF-16 string; the room is reserved by the caller.
static void put_text(DialogTemplate *tpl, const char *text, int32_t units) {
  if (units > 0) {
    wchar_t *wide = (wchar_t *)mm_zalloc((units + 1) * (int32_t)sizeof(wchar_t), MM_HERE);
    if (wide) {
      wtext_in(text, wide, (size_t)units + 1);
      for (int32_t i = 0; i < units; i++) put16(tpl, (uint16_t)wide[i]);
      mm_free(wide, MM_HERE);
    } else {
      for (int32_t i = 0; i < units; i++) put16(tpl, (uint16_t)'?');
    }
  }
  put16(tpl, 0);
}

DialogTemplate *dres_create(const char *title, uint32_t style, int16_t x, int16_t y, int16_t cx,
                            int16_t cy, const char *font, int16_t point_size) {
  DialogTemplate *tpl = (DialogTemplate *)mm_zalloc((int32_t)sizeof(DialogTemplate), MM_HERE);
  if (!tpl) {
    OutOfMemoryError();
    return nullptr;
  }
  int32_t title_units = wide_length(title);
  int32_t font_units = wide_length(font);
  if (!reserve(tpl, 18 + 4 + 2 * (title_units + 1) + (font ? 2 + 2 * (font_units + 1) : 0))) {
    mm_free(tpl, MM_HERE);
    return nullptr;
  }
  if (font) style |= DS_SETFONT;
  else style &= ~(uint32_t)DS_SETFONT;
  put32(tpl, style);
  put32(tpl, 0);  // extended style
  put16(tpl, 0);  // item count, raised by dres_add
  put16(tpl, (uint16_t)x);
  put16(tpl, (uint16_t)y);
  put16(tpl, (uint16_t)cx);
  put16(tpl, (uint16_t)cy);
  put16(tpl, 0);  // no menu
  put16(tpl, 0);  // the standard dialog class
  put_text(tpl, title, title_units);
  if (font) {
    put16(tpl, (uint16_t)point_size);
    put_text(tpl, font, font_units);
  }
  return tpl;
}

Flag dres_add(DialogTemplate *tpl, uint16_t class_atom, const char *text, int32_t id,
              uint32_t style, int16_t x, int16_t y, int16_t cx, int16_t cy) {
  if (!tpl || !tpl->bytes) {
    InternalError("dres", __LINE__);
    return 0;
  }
  int32_t units = wide_length(text);
  int32_t pad = (4 - (tpl->size & 3)) & 3;
  if (!reserve(tpl, pad + 18 + 4 + 2 * (units + 1) + 2)) return 0;
  while (pad--) tpl->bytes[tpl->size++] = 0;
  put32(tpl, style | WS_CHILD | WS_VISIBLE);
  put32(tpl, 0);  // extended style
  put16(tpl, (uint16_t)x);
  put16(tpl, (uint16_t)y);
  put16(tpl, (uint16_t)cx);
  put16(tpl, (uint16_t)cy);
  put16(tpl, (uint16_t)(id & 0xFFFF));
  put16(tpl, 0xFFFF);  // class by atom
  put16(tpl, class_atom);
  put_text(tpl, text, units);
  put16(tpl, 0);  // no creation data
  uint16_t count = (uint16_t)(tpl->bytes[8] | (tpl->bytes[9] << 8));
  set16(tpl, 8, (uint16_t)(count + 1));
  return 1;
}

const void *dres_bytes(const DialogTemplate *tpl) { return tpl ? tpl->bytes : nullptr; }

void dres_destroy(DialogTemplate **tpl) {
  if (!tpl || !*tpl) return;
  // A registered template leaves its table with it.
  for (int i = 0; i < DRES_TABLE_SIZE; i++) {
    if (modal_table[i].tpl == *tpl) modal_table[i].tpl = nullptr;
    if (modeless_table[i].tpl == *tpl) modeless_table[i].tpl = nullptr;
  }
  mm_free((*tpl)->bytes, MM_HERE);
  mm_free(*tpl, MM_HERE);
  *tpl = nullptr;
}

Flag dres_register(int32_t number, DialogTemplate *tpl, Flag modeless) {
  if (!tpl) {
    InternalError("dres", __LINE__);
    return 0;
  }
  DresEntry *table = modeless ? modeless_table : modal_table;
  int free_slot = -1;
  for (int i = 0; i < DRES_TABLE_SIZE; i++) {
    if (table[i].tpl && table[i].number == number) {
      table[i].tpl = tpl;  // a number registered again takes the new template
      return 1;
    }
    if (!table[i].tpl && free_slot < 0) free_slot = i;
  }
  if (free_slot < 0) {
    InternalError("dres", __LINE__);
    return 0;
  }
  table[free_slot].number = number;
  table[free_slot].tpl = tpl;
  return 1;
}

static const void *find(const DresEntry *table, int32_t number) {
  for (int i = 0; i < DRES_TABLE_SIZE; i++)
    if (table[i].tpl && table[i].number == number) return table[i].tpl->bytes;
  return nullptr;
}

const void *dres_find_modal(int32_t number) { return find(modal_table, number); }
const void *dres_find_modeless(int32_t number) { return find(modeless_table, number); }

int32_t dres_size(const DialogTemplate *tpl) { return tpl ? tpl->size : 0; }
