// pfu.cpp - the function table and PFU_LIST.PFU (see pfu.h).
#include "pack/pfu.h"

#include "common/cz.h"
#include "common/file.h"
#include "common/mm.h"
#include "common/st.h"
#include "common/we.h"

#include <stdio.h>
#include <string.h>

#define PFU_FAULT() InternalError("pfu", __LINE__)

const char PFU_LIST_NAME[] = "PFU_LIST.PFU";

// ---- The toolkit's side --------------------------------------------------------------------

static PfuTextSource text_source = NULL;
static PfuKeyConversion key_plain = pfu_key_plain;
static PfuKeyConversion key_second = pfu_key_second;
static PfuStatusRefresh status_refresh = NULL;

PfuTextSource pfu_set_text_source(PfuTextSource source) {
  PfuTextSource previous = text_source;
  text_source = source;
  return previous;
}

void pfu_set_key_conversions(PfuKeyConversion plain, PfuKeyConversion second) {
  key_plain = plain ? plain : pfu_key_plain;
  key_second = second ? second : pfu_key_second;
}

PfuStatusRefresh pfu_set_status_refresh(PfuStatusRefresh refresh) {
  PfuStatusRefresh previous = status_refresh;
  status_refresh = refresh;
  return previous;
}

uint16_t pfu_key_plain(char letter) {
  char c = letter;
  if (c == 0) return 0;
  cz_strip_char(&c);  // an accented letter sits on the key of its base letter
  if (c >= 'a' && c <= 'z') c = (char)(c - 'a' + 'A');
  if ((c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')) return (uint16_t)(unsigned char)c;
  return 0;
}

uint16_t pfu_key_second(char letter) { return (uint16_t)(unsigned char)letter; }

// The function's text of the given kind; never null (none is empty).
static const char *function_text(int32_t id, int16_t which) {
  const char *text = text_source ? text_source(id, which) : NULL;
  return text ? text : "";
}

// The character after the first "&" of the function's menu text; 0 when there is none.
static char amp_letter(int32_t id) {
  const char *amp = strchr(function_text(id, PFU_TEXT_MENU), '&');
  return amp ? amp[1] : 0;
}

// ---- The table -----------------------------------------------------------------------------

Flag pfu_create(FunctionTable **result) {
  if (!result) {
    PFU_FAULT();
    return 0;
  }
  *result = (FunctionTable *)mm_zalloc((int32_t)sizeof(FunctionTable), "pfu", __LINE__);
  if (!*result) {
    OutOfMemoryError();
    return 0;
  }
  return 1;
}

Flag pfu_destroy(FunctionTable **table) {
  if (!table || !*table) {
    PFU_FAULT();
    return 0;
  }
  mm_free(*table, "pfu", __LINE__);
  *table = NULL;
  return 1;
}

Flag pfu_register(FunctionTable *table, FunctionRecord *static_table) {
  if (!table || !static_table) {
    PFU_FAULT();
    return 0;
  }
  if (table->table_count < 0 || table->table_count >= PFU_MAX_TABLES) {
    PFU_FAULT();
    return 0;
  }
  for (int32_t t = 0; t < table->table_count; t++) {
    if (table->tables[t] == static_table) {
      PFU_FAULT();
      return 0;
    }
  }
  table->tables[table->table_count++] = static_table;
  for (FunctionRecord *r = static_table; !(r->status & PFU_ST_END); r++) {
    if (r->key == PFU_KEY_AMP_LETTER) {
      char letter = amp_letter(r->id);
      r->key = letter ? key_plain(letter) : 0;
    } else if (r->key == PFU_KEY_AMP_UPPER) {
      char letter = amp_letter(r->id);
      if (letter) cz_upper_char(&letter);
      r->key = letter ? key_second(letter) : 0;
    }
    table->total++;
  }
  return 1;
}

int32_t FunctionCount(FunctionTable *table) {
  if (!table) {
    PFU_FAULT();
    return 0;
  }
  return table->total;
}

// ---- Look-up, status, invocation -----------------------------------------------------------

FunctionRecord *FindFunction(FunctionTable *table, int32_t id) {
  if (!table) {
    PFU_FAULT();
    return NULL;
  }
  for (int32_t t = 0; t < table->table_count; t++) {
    for (FunctionRecord *r = table->tables[t]; !(r->status & PFU_ST_END); r++) {
      if (r->id == id) return r;
    }
  }
  ErrorBoxF("Funkce (id=%d) není v žádné tabulce funkcí", (int)id);
  return NULL;
}

uint16_t FunctionStatus(FunctionTable *table, int32_t id) {
  if (!table) {
    PFU_FAULT();
    return 0;
  }
  FunctionRecord *record = FindFunction(table, id);
  if (!record) {
    PFU_FAULT();
    return 0;
  }
  return record->status;
}

// The bits a status change knows, in the order it sets them, each with the bits it keeps.
static const struct {
  uint16_t bit;
  uint16_t keeps;
} status_order[] = {
    {0x0001, 0}, {0x0002, 0x0004}, {0x0008, 0}, {0x0004, 0x000A}, {0x0020, 0},
    {0x0040, 0}, {0x0080, 0},      {0x0100, 0}, {0x0200, 0},
};

// The bits a status change may clear: 0x0001 to 0x0200 less 0x0010.
enum { CLEARABLE = 0x03EF };

Flag SetFunctionStatus(FunctionTable *table, Flag conditional, int32_t id, uint16_t bits) {
  if (!table) {
    PFU_FAULT();
    return 0;
  }
  Flag found = 0;
  for (int32_t t = 0; t < table->table_count; t++) {
    for (FunctionRecord *r = table->tables[t]; !(r->status & PFU_ST_END); r++) {
      if (r->id != id) continue;
      found = 1;
      if (conditional && (r->options & PFU_OPT_EXEMPT)) continue;
      Flag changed = 0;
      for (size_t i = 0; i < KX_COUNT(status_order); i++) {
        uint16_t bit = status_order[i].bit;
        if (!(bits & bit) || (r->status & bit)) continue;
        r->status = (uint16_t)((r->status & ~(CLEARABLE & ~(bit | status_order[i].keeps))) | bit);
        if (bit != PFU_ST_QUIET) changed = 1;
      }
      // The record may just have become an end record (0x0200): the scan of this table ends
      // with it, as it would on the next look-up.
      if (changed && status_refresh) status_refresh(id);
    }
  }
  if (!found) {
    ErrorBoxF("Změna statu funkce (id=%d) - není v žádné tabulce funkcí", (int)id);
    return 0;
  }
  return 1;
}

int32_t InvokeFunction(FunctionTable *table, int32_t argument, int32_t id) {
  if (!table) {
    PFU_FAULT();
    return 0;
  }
  FunctionRecord *record = FindFunction(table, id);
  if (!record) return 0;
  if (record->status & (PFU_ST_DISABLED | PFU_ST_UNAVAILABLE)) return 0;
  if (!record->handler) return 0;
  return record->handler(argument);
}

// ---- Descriptors ---------------------------------------------------------------------------

// The type bit of each mode besides PFU_FT_ALL_MODES; mode 0 has none.
static const uint16_t mode_bit[PFU_MODE_MAX + 1] = {
    0, PFU_FT_MODE1, PFU_FT_MODE2, PFU_FT_MODE3, PFU_FT_MODE4, PFU_FT_MODE5, PFU_FT_MODE6,
};

Flag FillDescriptor(FunctionTable *table, const PfuWindow *window, const FunctionRecord *record,
                    FunctionRecord *descriptor) {
  if (!table || !record || !descriptor) {
    PFU_FAULT();
    return 0;
  }
  // 1. The fields; the descriptor's own bit stays.
  descriptor->id = record->id;
  descriptor->status =
      (uint16_t)((record->status & ~PFU_ST_OWN) | (descriptor->status & PFU_ST_OWN));
  descriptor->options = record->options;
  descriptor->type = record->type;

  // 2. Availability in the window's mode.
  if (window) {
    Flag available = 0;
    if (window->mode < 0 || window->mode > PFU_MODE_MAX) {
      PFU_FAULT();
    } else {
      available = (record->type & PFU_FT_ALL_MODES) || (record->type & mode_bit[window->mode]);
    }
    if (!available) descriptor->status |= PFU_ST_UNAVAILABLE;
  }

  // 3. Exactly one of link and handler.
  descriptor->help_code = record->help_code;
  descriptor->link = record->link;
  descriptor->handler = record->handler;
  if (descriptor->link && descriptor->handler) {
    PFU_FAULT();
    descriptor->link = 0;
  } else if (!descriptor->link && !descriptor->handler) {
    PFU_FAULT();
  }

  // 4. The descriptor's own copy of the configuration name, kept when the new name fits.
  char *copy = (char *)descriptor->config_name;
  const char *name = record->config_name;
  if (copy && (!name || strlen(name) > strlen(copy))) {
    mm_free(copy, "pfu", __LINE__);
    copy = NULL;
  }
  if (name) {
    size_t length = strlen(name);
    if (!copy) {
      copy = (char *)mm_alloc((int32_t)(length + 1), "pfu", __LINE__);
      if (!copy) {
        descriptor->config_name = NULL;
        OutOfMemoryError();
        return 0;
      }
    }
    memmove(copy, name, length + 1);
  }
  descriptor->config_name = copy;

  // 5. The key, from the record or from the menu text's "&" letter.
  if (record->key) {
    descriptor->key = record->key;
  } else {
    char letter = amp_letter(record->id);
    descriptor->key = letter ? key_plain(letter) : 0;
  }
  return 1;
}

Flag FillDescriptors(FunctionTable *table, const PfuWindow *window, FunctionRecord *descriptors) {
  if (!table || !descriptors) {
    PFU_FAULT();
    return 0;
  }
  for (FunctionRecord *d = descriptors; !(d->status & PFU_ST_END); d++) {
    if (d->id == 0) continue;
    FunctionRecord *record = FindFunction(table, d->id);
    if (!record) {
      PFU_FAULT();
      continue;
    }
    if (!FillDescriptor(table, window, record, d)) return 0;
  }
  return 1;
}

Flag FillDescriptorByName(FunctionTable *table, const PfuWindow *window, FunctionRecord *descriptor,
                          const char *config_name) {
  if (!table || !descriptor || !config_name) {
    PFU_FAULT();
    return 0;
  }
  for (int32_t t = 0; t < table->table_count; t++) {
    for (FunctionRecord *r = table->tables[t]; !(r->status & PFU_ST_END); r++) {
      if (st_cmp(r->config_name, config_name) == 0)
        return FillDescriptor(table, window, r, descriptor);
    }
  }
  return 0;
}

Flag pfu_free_descriptor(FunctionRecord *descriptor) {
  if (!descriptor) {
    PFU_FAULT();
    return 0;
  }
  // The guarded log marks the release of a null block as an error: free only a real copy.
  if (descriptor->config_name) mm_free((void *)descriptor->config_name, "pfu", __LINE__);
  descriptor->config_name = NULL;
  return 1;
}

// ---- PFU_LIST.PFU --------------------------------------------------------------------------

// One line of keyword and text, cut at PFU_LINE_MAX characters.
static Flag write_text_line(FileObject *file, const char *keyword, const char *text) {
  char line[PFU_LINE_MAX + 1];
  snprintf(line, sizeof line, "%s%s", keyword, text ? text : "");
  return file_write_line(file, line);
}

// The seven lines of one function; 0 at the first write that failed.
static Flag write_function(FileObject *file, const FunctionRecord *r, const char *menu_text) {
  char line[PFU_LINE_MAX + 1];
  snprintf(line, sizeof line, "ID_CODE  : %d", (int)r->id);
  if (!file_write_line(file, line)) return 0;
  // The menu text is written before the help line is asked for: the text source's answer
  // lasts only until its next call.
  if (!write_text_line(file, "TEXT     : ", menu_text)) return 0;
  if (!write_text_line(file, "HELP     : ", function_text(r->id, PFU_TEXT_HELP))) return 0;
  if (!write_text_line(file, "CONFIG   : ", r->config_name)) return 0;
  snprintf(line, sizeof line, "HELP_CODE: %d", (int)(int32_t)r->help_code);
  if (!file_write_line(file, line)) return 0;
  snprintf(line, sizeof line, "FT_TYPE  : 0x%04X", (unsigned)(uint16_t)r->type);
  if (!file_write_line(file, line)) return 0;
  return file_write_line(file, " ");
}

Flag WriteFunctionList(FunctionTable *table) {
  if (!table) {
    PFU_FAULT();
    return 0;
  }
  FileObject *file = NULL;
  if (!file_create(&file, PFU_LIST_NAME)) return 0;
  if (!file_open(file, FILE_WRITE_TEXT)) {
    file_destroy(&file);
    return 0;
  }
  // A failed write has been reported by the file layer; nothing more is written after it.
  Flag writing = 1;
  for (int32_t t = 0; writing && t < table->table_count; t++) {
    for (FunctionRecord *r = table->tables[t]; writing && !(r->status & PFU_ST_END); r++) {
      if (r->type & PFU_FT_UNLISTED) continue;
      const char *menu_text = function_text(r->id, PFU_TEXT_MENU);
      if (!*menu_text) continue;
      writing = write_function(file, r, menu_text);
    }
  }
  if (writing) file_write_line(file, "KONEC");
  file_destroy(&file);
  return 1;
}
