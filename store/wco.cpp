// wco.cpp - the configuration store: .WCO files read whole, kept sorted, typed access.
#include "store/wco.h"

#include "common/file.h"
#include "common/mm.h"
#include "common/st.h"
#include "common/we.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define FAULT() InternalError("wco", __LINE__)

const char WCO_HEADER[] = "Konfiguracni soubor KORVEX";

namespace {

// Settings the suite no longer uses; load drops them so that the next save rewrites the file
// without them.
// clang-format off
const WcoObsolete obsolete_settings[] = {
    {"CO_common", "browse_timeout"},
    {"CO_common", "use_local_config"},
    {"CO_common", "make_text_file_without_czech"},
    {"CO_common", "xmax_ratsnest_points"},
    {"CO_common", "real_schema_sjoin_width"},
    {"CO_gex_output", "default_gex_config_extension"},
    {"TP_table_print_window", "text_space"},
    {"CO_gerin_input", "default_gerin_input_file"},
    {nullptr, nullptr},
};
// clang-format on

ConfigStore *the_system_store = nullptr;

bool blank(char c) { return c == ' ' || c == '\t'; }

bool digit(char c) { return c >= '0' && c <= '9'; }

// ---- Texts -------------------------------------------------------------------------------------

// Copies text without its leading and trailing blanks into out, at most limit characters.
// Returns the trimmed length before the cut (so > limit means the text was cut).
int32_t copy_trimmed(char *out, const char *text, int32_t limit) {
  while (blank(*text)) text++;
  size_t length = strlen(text);
  while (length > 0 && blank(text[length - 1])) length--;
  size_t kept = length > (size_t)limit ? (size_t)limit : length;
  while (kept > 0 && blank(text[kept - 1])) kept--;  // keep this: a cut may end in blanks
  memcpy(out, text, kept);
  out[kept] = 0;
  return length > 0x7FFFFFFF ? 0x7FFFFFFF : (int32_t)length;
}

// A key or section name as the store keeps it: trimmed, at most 40 characters (a longer one is
// reported and cut). A null or empty one is reported: false.
bool normalise(const char *text, char out[WCO_NAME_MAX + 1]) {
  if (!text) {
    FAULT();
    return false;
  }
  int32_t length = copy_trimmed(out, text, WCO_NAME_MAX);
  if (length == 0) {
    FAULT();
    return false;
  }
  if (length > WCO_NAME_MAX) FAULT();
  return true;
}

// A key that is worth looking at: not null, not only blanks.
bool key_given(const char *key) {
  if (!key) return false;
  while (blank(*key)) key++;
  return *key != 0;
}

// A new heap copy of text.
char *heap_text(const char *text) {
  size_t length = strlen(text);
  char *copy = (char *)mm_zalloc((int32_t)length + 1, "wco", __LINE__);
  if (!copy) {
    OutOfMemoryError();
    return nullptr;
  }
  memcpy(copy, text, length + 1);
  return copy;
}

// ---- Sorted arrays -----------------------------------------------------------------------------

// Binary search by st_collate over count texts name(i). *place: the index found, or where the
// text belongs. st_collate is not transitive when case and accent differ at the same place, and
// then the search can miss a text that is there: a miss is confirmed by a scan for the exact
// text, so that nothing is ever stored twice.
template <class Name>
bool search(int32_t count, Name name, const char *text, int32_t *place) {
  int32_t low = 0, high = count - 1;
  while (low <= high) {
    int32_t middle = low + (high - low) / 2;
    int16_t order = st_collate(text, name(middle));
    if (order == 0) {
      *place = middle;
      return true;
    }
    if (order < 0) high = middle - 1;
    else low = middle + 1;
  }
  *place = low;
  for (int32_t i = 0; i < count; i++) {
    if (strcmp(name(i), text) == 0) {
      *place = i;
      return true;
    }
  }
  return false;
}

bool find_section(const ConfigStore *store, const char *name, int32_t *place) {
  return search(
      store->section_count, [store](int32_t i) { return store->sections[i]->name; }, name, place);
}

bool find_entry(const ConfigSection *section, const char *key, int32_t *place) {
  return search(
      section->entry_count, [section](int32_t i) { return section->entries[i].key; }, key, place);
}

// ---- Sections ----------------------------------------------------------------------------------

void free_section(ConfigSection *section) {
  for (int32_t i = 0; i < section->entry_count; i++) {
    mm_free(section->entries[i].key, "wco", __LINE__);
    mm_free(section->entries[i].value, "wco", __LINE__);
  }
  mm_free(section->entries, "wco", __LINE__);
  mm_free(section->name, "wco", __LINE__);
  mm_free(section, "wco", __LINE__);
}

ConfigSection *new_section(const char *name) {
  ConfigSection *section = (ConfigSection *)mm_zalloc(sizeof(ConfigSection), "wco", __LINE__);
  if (!section) {
    OutOfMemoryError();
    return nullptr;
  }
  section->entries =
      (ConfigEntry *)mm_zalloc(WCO_ENTRIES_FIRST * sizeof(ConfigEntry), "wco", __LINE__);
  if (!section->entries) {
    mm_free(section, "wco", __LINE__);
    OutOfMemoryError();
    return nullptr;
  }
  section->entry_capacity = WCO_ENTRIES_FIRST;
  section->name = heap_text(name);
  if (!section->name) {
    mm_free(section->entries, "wco", __LINE__);
    mm_free(section, "wco", __LINE__);
    return nullptr;
  }
  return section;
}

// The index of the section of that (normalised) name, created when new. -1 when out of memory
// (reported); the store is as it was.
int32_t add_section(ConfigStore *store, const char *name) {
  int32_t place;
  if (find_section(store, name, &place)) return place;
  store->section_count++;
  if (store->section_count > store->section_capacity) {
    int32_t capacity = store->section_capacity + WCO_SECTIONS_STEP;
    ConfigSection **bigger =
        (ConfigSection **)mm_zalloc(capacity * (int32_t)sizeof(ConfigSection *), "wco", __LINE__);
    if (!bigger) {
      store->section_count--;
      OutOfMemoryError();
      return -1;
    }
    memcpy(bigger, store->sections, (store->section_count - 1) * sizeof(ConfigSection *));
    mm_free(store->sections, "wco", __LINE__);
    store->sections = bigger;
    store->section_capacity = capacity;
  }
  ConfigSection *section = new_section(name);
  if (!section) {
    store->section_count--;
    return -1;
  }
  memmove(store->sections + place + 1, store->sections + place,
          (store->section_count - 1 - place) * sizeof(ConfigSection *));
  store->sections[place] = section;
  if (store->current >= place) store->current++;
  store->dirty = 1;
  return place;
}

void remove_section_at(ConfigStore *store, int32_t index) {
  free_section(store->sections[index]);
  memmove(store->sections + index, store->sections + index + 1,
          (store->section_count - 1 - index) * sizeof(ConfigSection *));
  store->section_count--;
  store->sections[store->section_count] = nullptr;
  if (store->current == index) store->current = -1;
  else if (store->current > index) store->current--;
  store->dirty = 1;
}

// ---- Entries -----------------------------------------------------------------------------------

// Stores key = value in the section, both already trimmed and within their limits. An equal
// value changes nothing; anything else sets the modified flag. 0 when out of memory (reported).
Flag put(ConfigSection *section, const char *key, const char *value) {
  int32_t place;
  if (find_entry(section, key, &place)) {
    ConfigEntry *entry = &section->entries[place];
    if (st_collate(entry->value, value) == 0) return 1;
    char *copy = heap_text(value);
    if (!copy) return 0;
    mm_free(entry->value, "wco", __LINE__);
    entry->value = copy;
    section->modified = 1;
    return 1;
  }
  section->entry_count++;
  if (section->entry_count > section->entry_capacity) {
    int32_t capacity = section->entry_capacity + WCO_ENTRIES_STEP;
    ConfigEntry *bigger =
        (ConfigEntry *)mm_zalloc(capacity * (int32_t)sizeof(ConfigEntry), "wco", __LINE__);
    if (!bigger) {
      section->entry_count--;
      OutOfMemoryError();
      return 0;
    }
    memcpy(bigger, section->entries, (section->entry_count - 1) * sizeof(ConfigEntry));
    mm_free(section->entries, "wco", __LINE__);
    section->entries = bigger;
    section->entry_capacity = capacity;
  }
  char *key_copy = heap_text(key);
  char *value_copy = key_copy ? heap_text(value) : nullptr;
  if (!value_copy) {
    mm_free(key_copy, "wco", __LINE__);
    section->entry_count--;
    return 0;
  }
  memmove(section->entries + place + 1, section->entries + place,
          (section->entry_count - 1 - place) * sizeof(ConfigEntry));
  section->entries[place].key = key_copy;
  section->entries[place].value = value_copy;
  section->modified = 1;
  return 1;
}

// The one way an entry gets in, from a file or a set_: trims and cuts (reporting over-long
// texts), then put. 0 for a bad key (reported) or out of memory.
Flag store_entry(ConfigSection *section, const char *key, const char *value) {
  char name[WCO_NAME_MAX + 1];
  if (!normalise(key, name)) return 0;
  char text[WCO_VALUE_MAX + 1];
  if (copy_trimmed(text, value, WCO_VALUE_MAX) > WCO_VALUE_MAX) FAULT();
  return put(section, name, text);
}

// The stored value of key, or null when missing (a bad key is reported).
const char *lookup(ConfigSection *section, const char *key) {
  char name[WCO_NAME_MAX + 1];
  if (!normalise(key, name)) return nullptr;
  int32_t place;
  if (!find_entry(section, name, &place)) return nullptr;
  return section->entries[place].value;
}

// The value of key copied into the section's scratch buffer, or null when missing.
const char *scratch_value(ConfigSection *section, const char *key) {
  const char *value = lookup(section, key);
  if (!value) return nullptr;
  size_t length = strlen(value);
  if (length > WCO_LINE_SIZE - 1) length = WCO_LINE_SIZE - 1;
  memcpy(section->scratch, value, length);
  section->scratch[length] = 0;
  return section->scratch;
}

// Removes the entry of key; 1 when it was there.
Flag remove_entry(ConfigSection *section, const char *key) {
  char name[WCO_NAME_MAX + 1];
  if (!normalise(key, name)) return 0;
  int32_t place;
  if (!find_entry(section, name, &place)) return 0;
  mm_free(section->entries[place].key, "wco", __LINE__);
  mm_free(section->entries[place].value, "wco", __LINE__);
  memmove(section->entries + place, section->entries + place + 1,
          (section->entry_count - 1 - place) * sizeof(ConfigEntry));
  section->entry_count--;
  section->modified = 1;
  return 1;
}

// Insertion sort: the arrays are sorted already, so this is one pass; it also stays safe when
// the order is not consistent (see search).
void sort_store(ConfigStore *store) {
  ConfigSection *current = store->current >= 0 && store->current < store->section_count
                               ? store->sections[store->current]
                               : nullptr;
  for (int32_t i = 1; i < store->section_count; i++) {
    ConfigSection *moving = store->sections[i];
    int32_t j = i - 1;
    while (j >= 0 && st_collate(store->sections[j]->name, moving->name) > 0) {
      store->sections[j + 1] = store->sections[j];
      j--;
    }
    store->sections[j + 1] = moving;
  }
  store->current = -1;
  for (int32_t s = 0; s < store->section_count; s++) {
    ConfigSection *section = store->sections[s];
    if (section == current) store->current = s;
    for (int32_t i = 1; i < section->entry_count; i++) {
      ConfigEntry moving = section->entries[i];
      int32_t j = i - 1;
      while (j >= 0 && st_collate(section->entries[j].key, moving.key) > 0) {
        section->entries[j + 1] = section->entries[j];
        j--;
      }
      section->entries[j + 1] = moving;
    }
  }
}

// ---- Where an operation works ------------------------------------------------------------------

// The section of a typed operation: the named one (section != null via named) or the current.
struct Target {
  ConfigStore *store;
  const char *section;
  bool named;
};

Target named_target(ConfigStore *store, const char *section) {
  return Target{store, section, true};
}
Target current_target(ConfigStore *store) { return Target{store, nullptr, false}; }

// The section to work on, checking store and key. A missing named section is created when
// create is set, else null without a report.
ConfigSection *resolve(const Target &target, const char *key, bool create) {
  ConfigStore *store = target.store;
  if (!store) {
    FAULT();
    return nullptr;
  }
  if (!key_given(key)) {
    FAULT();
    return nullptr;
  }
  if (!target.named) {
    if (store->current < 0 || store->current >= store->section_count) {
      FAULT();
      return nullptr;
    }
    return store->sections[store->current];
  }
  char name[WCO_NAME_MAX + 1];
  if (!normalise(target.section, name)) return nullptr;
  int32_t place;
  if (find_section(store, name, &place)) return store->sections[place];
  if (!create) return nullptr;
  place = add_section(store, name);
  return place < 0 ? nullptr : store->sections[place];
}

// ---- Number parsing ----------------------------------------------------------------------------

// An integer at *text: blanks, then digits, "+" and "-" (the last sign wins: "1-2" is -12).
// On success *text is left after the last digit.
bool parse_int(const char **text, int32_t *result) {
  const char *p = *text;
  while (blank(*p)) p++;
  uint32_t number = 0;
  bool negative = false;
  const char *end = nullptr;
  for (;; p++) {
    if (digit(*p)) {
      number = number * 10 + (uint32_t)(*p - '0');
      end = p + 1;
    } else if (*p == '-') {
      negative = true;
    } else if (*p == '+') {
      negative = false;
    } else {
      break;
    }
  }
  if (!end) return false;
  *result = (int32_t)(negative ? 0u - number : number);
  *text = end;
  return true;
}

// A real at *text: blanks, an optional sign, digits with at most one ".", at least one digit.
bool parse_real(const char **text, double *result) {
  const char *p = *text;
  while (blank(*p)) p++;
  const char *start = p;
  if (*p == '+' || *p == '-') p++;
  int32_t digits = 0;
  bool dot = false;
  for (;; p++) {
    if (digit(*p)) {
      digits++;
    } else if (*p == '.') {
      if (dot) return false;
      dot = true;
    } else {
      break;
    }
  }
  if (digits == 0) return false;
  // strtod on a copy of just these characters, so that it takes no exponent or other form.
  char number[WCO_LINE_SIZE];
  size_t length = (size_t)(p - start);
  if (length > sizeof number - 1) length = sizeof number - 1;
  memcpy(number, start, length);
  number[length] = 0;
  *result = strtod(number, nullptr);
  *text = p;
  return true;
}

// A hexadecimal byte at *text: blanks, then hexadecimal digits; the low 8 bits are kept.
bool parse_hex(const char **text, uint8_t *result) {
  const char *p = *text;
  while (blank(*p)) p++;
  uint32_t number = 0;
  int32_t digits = 0;
  for (;; p++, digits++) {
    char c = *p;
    if (digit(c)) number = number * 16 + (uint32_t)(c - '0');
    else if (c >= 'A' && c <= 'F') number = number * 16 + (uint32_t)(c - 'A' + 10);
    else if (c >= 'a' && c <= 'f') number = number * 16 + (uint32_t)(c - 'a' + 10);
    else break;
  }
  if (digits == 0) return false;
  *result = (uint8_t)number;
  *text = p;
  return true;
}

// Between two list elements: the list goes on only when a blank or "," follows; then blanks
// and one "," are skipped.
bool separator(const char **text) {
  const char *p = *text;
  if (!blank(*p) && *p != ',') return false;
  while (blank(*p)) p++;
  if (*p == ',') p++;
  *text = p;
  return true;
}

bool parse_short(const char **text, int16_t *result) {
  int32_t number;
  if (!parse_int(text, &number)) return false;
  *result = (int16_t)number;
  return true;
}

bool parse_float(const char **text, float *result) {
  double number;
  if (!parse_real(text, &number)) return false;
  *result = (float)number;
  return true;
}

bool parse_pair(const char **text, WcoPair *result) {
  const char *p = *text;
  WcoPair pair;
  if (!parse_int(&p, &pair.a) || !separator(&p) || !parse_int(&p, &pair.b)) return false;
  *result = pair;
  *text = p;
  return true;
}

// Exactly count elements (more are ignored).
template <class T, class Parse>
bool parse_fixed(const char *text, T *result, int32_t count, Parse parse) {
  for (int32_t i = 0; i < count; i++) {
    if (i > 0 && !separator(&text)) return false;
    if (!parse(&text, &result[i])) return false;
  }
  return true;
}

// ---- Typed access, the shared steps -------------------------------------------------------------

// Stores the formatted value that is in the section's scratch buffer.
Flag store_scratch(ConfigSection *section, const char *key) {
  return store_entry(section, key, section->scratch);
}

template <class T, class Parse>
Flag scalar_get(const Target &target, const char *key, T *value, Parse parse) {
  if (!value) {
    FAULT();
    return 0;
  }
  ConfigSection *section = resolve(target, key, false);
  if (!section) return 0;
  const char *text = scratch_value(section, key);
  T parsed;
  if (!text || !parse(&text, &parsed)) return 0;
  *value = parsed;
  return 1;
}

Flag int_get(const Target &target, const char *key, int32_t *value) {
  return scalar_get(target, key, value, parse_int);
}

template <class T>
Flag narrow_get(const Target &target, const char *key, T *value) {
  int32_t number = 0;
  if (!value) {
    FAULT();
    return 0;
  }
  if (!int_get(target, key, &number)) return 0;
  *value = (T)number;
  return 1;
}

// Formats into the section's scratch buffer (created when missing) and stores.
template <class Format>
Flag formatted_set(const Target &target, const char *key, Format format) {
  ConfigSection *section = resolve(target, key, true);
  if (!section) return 0;
  format(section->scratch, (size_t)WCO_LINE_SIZE);
  return store_scratch(section, key);
}

Flag int_set(const Target &target, const char *key, int32_t value) {
  return formatted_set(target, key,
                       [value](char *out, size_t size) { snprintf(out, size, "%d", (int)value); });
}

Flag double_set(const Target &target, const char *key, double value) {
  return formatted_set(target, key,
                       [value](char *out, size_t size) { snprintf(out, size, "%f", value); });
}

template <class T, class Parse>
Flag list_get(const Target &target, const char *key, T **values, int32_t *count, Parse parse) {
  if (!values || !count) {
    FAULT();
    return 0;
  }
  if (*values) {
    FAULT();
    return 0;
  }
  ConfigSection *section = resolve(target, key, false);
  if (!section) return 0;
  const char *text = scratch_value(section, key);
  if (!text) return 0;
  T *list = nullptr;
  int32_t length = 0, room = 0;
  for (;;) {
    T item;
    if (!parse(&text, &item)) break;
    if (length == room) {
      int32_t bigger_room = room == 0 ? WCO_LIST_FIRST : room + WCO_LIST_STEP;
      T *bigger = (T *)mm_zalloc(bigger_room * (int32_t)sizeof(T), "wco", __LINE__);
      if (!bigger) {
        mm_free(list, "wco", __LINE__);
        OutOfMemoryError();
        return 0;
      }
      if (list) memcpy(bigger, list, length * sizeof(T));
      mm_free(list, "wco", __LINE__);
      list = bigger;
      room = bigger_room;
    }
    list[length++] = item;
    if (!separator(&text)) break;
  }
  if (length == 0) {
    mm_free(list, "wco", __LINE__);
    return 0;
  }
  *values = list;
  *count = length;
  return 1;
}

// Joins the elements with ", " into the scratch buffer; a text that would pass 1000 characters
// is reported and cut by st_cat with its mark.
template <class T, class Format>
Flag list_set(const Target &target, const char *key, const T *values, int32_t count,
              Format format) {
  if (!values || count < 1) {
    FAULT();
    return 0;
  }
  ConfigSection *section = resolve(target, key, true);
  if (!section) return 0;
  char *text = section->scratch;
  text[0] = 0;
  size_t length = 0;
  for (int32_t i = 0; i < count; i++) {
    char piece[400];
    size_t used = 0;
    if (i > 0) {
      memcpy(piece, ", ", 3);
      used = 2;
    }
    format(piece + used, sizeof piece - used, values[i]);
    size_t add = strlen(piece);
    if (length + add > WCO_VALUE_MAX) {
      FAULT();
      st_cat(text, piece, WCO_VALUE_MAX);
      break;
    }
    memcpy(text + length, piece, add + 1);
    length += add;
  }
  return store_scratch(section, key);
}

// ---- Typed access, per type --------------------------------------------------------------------

Flag text_set(const Target &target, const char *key, const char *value) {
  if (!value) {
    FAULT();
    return 0;
  }
  ConfigSection *section = resolve(target, key, true);
  if (!section) return 0;
  return store_entry(section, key, value);
}

Flag text_get(const Target &target, const char *key, char *buffer, int32_t size) {
  if (!buffer || size < 1) {
    FAULT();
    return 0;
  }
  ConfigSection *section = resolve(target, key, false);
  if (!section) return 0;
  const char *value = lookup(section, key);
  if (!value) return 0;
  size_t length = strlen(value);
  if (length > (size_t)size) length = (size_t)size;
  memcpy(buffer, value, length);
  buffer[length] = 0;
  return 1;
}

Flag text_copy(const Target &target, const char *key, char **result) {
  if (!result || *result) {
    FAULT();
    return 0;
  }
  ConfigSection *section = resolve(target, key, false);
  if (!section) return 0;
  const char *value = lookup(section, key);
  if (!value) return 0;
  *result = heap_text(value);
  return *result ? 1 : 0;
}

Flag text_pointer(const Target &target, const char *key, const char **result) {
  if (!result) {
    FAULT();
    return 0;
  }
  *result = nullptr;
  ConfigSection *section = resolve(target, key, false);
  if (!section) return 0;
  *result = lookup(section, key);
  return *result ? 1 : 0;
}

Flag real_get(const Target &target, const char *key, float *value) {
  return scalar_get(target, key, value, parse_float);
}

Flag double_get(const Target &target, const char *key, double *value) {
  return scalar_get(target, key, value, parse_real);
}

Flag rect_get(const Target &target, const char *key, WcoRect *value) {
  return scalar_get(target, key, value, [](const char **text, WcoRect *rect) {
    int32_t v[4];
    if (!parse_fixed(*text, v, 4, parse_int)) return false;
    *rect = WcoRect{v[0], v[1], v[2], v[3]};
    return true;
  });
}

Flag rect_set(const Target &target, const char *key, const WcoRect *value) {
  if (!value) {
    FAULT();
    return 0;
  }
  WcoRect r = *value;
  return formatted_set(target, key, [r](char *out, size_t size) {
    snprintf(out, size, "%d, %d, %d, %d", (int)r.left, (int)r.top, (int)r.right, (int)r.bottom);
  });
}

Flag real_pair_get(const Target &target, const char *key, WcoRealPair *value) {
  return scalar_get(target, key, value, [](const char **text, WcoRealPair *pair) {
    float v[2];
    if (!parse_fixed(*text, v, 2, parse_float)) return false;
    *pair = WcoRealPair{v[0], v[1]};
    return true;
  });
}

Flag real_pair_set(const Target &target, const char *key, const WcoRealPair *value) {
  if (!value) {
    FAULT();
    return 0;
  }
  WcoRealPair p = *value;
  return formatted_set(target, key, [p](char *out, size_t size) {
    snprintf(out, size, "%f %f", (double)p.x, (double)p.y);
  });
}

Flag real_rect_get(const Target &target, const char *key, WcoRealRect *value) {
  return scalar_get(target, key, value, [](const char **text, WcoRealRect *rect) {
    float v[4];
    if (!parse_fixed(*text, v, 4, parse_float)) return false;
    *rect = WcoRealRect{v[0], v[1], v[2], v[3]};
    return true;
  });
}

Flag real_rect_set(const Target &target, const char *key, const WcoRealRect *value) {
  if (!value) {
    FAULT();
    return 0;
  }
  WcoRealRect r = *value;
  return formatted_set(target, key, [r](char *out, size_t size) {
    snprintf(out, size, "%f, %f, %f, %f", (double)r.left, (double)r.top, (double)r.right,
             (double)r.bottom);
  });
}

Flag font_get(const Target &target, const char *key, WcoFont *value) {
  return scalar_get(target, key, value, [](const char **text, WcoFont *font) {
    const char *p = *text;
    int32_t v[3];
    for (int32_t i = 0; i < 3; i++) {
      if (i > 0 && !separator(&p)) return false;
      if (!parse_int(&p, &v[i])) return false;
    }
    if (!separator(&p)) return false;
    WcoFont read;
    memset(&read, 0, sizeof read);
    read.a = (uint8_t)v[0];
    read.b = (uint8_t)v[1];
    read.c = (uint8_t)v[2];
    copy_trimmed(read.face, p, WCO_FACE_SIZE - 1);
    *font = read;
    return true;
  });
}

Flag font_set(const Target &target, const char *key, const WcoFont *value) {
  if (!value) {
    FAULT();
    return 0;
  }
  const WcoFont *f = value;
  return formatted_set(target, key, [f](char *out, size_t size) {
    snprintf(out, size, "%d, %d, %d, %.*s", f->a, f->b, f->c, (int)(WCO_FACE_SIZE - 1), f->face);
  });
}

Flag enum_get(const Target &target, const char *key, const EnumNames *names, int16_t *value) {
  if (!names || !names->read || !value) {
    FAULT();
    return 0;
  }
  ConfigSection *section = resolve(target, key, false);
  if (!section) return 0;
  const char *text = scratch_value(section, key);
  if (!text) return 0;
  *value = names->read(text);
  return 1;
}

Flag enum_set(const Target &target, const char *key, const EnumNames *names, int16_t value) {
  if (!names || !names->write) {
    FAULT();
    return 0;
  }
  const char *text = names->write(value);
  if (!text) {
    FAULT();
    return 0;
  }
  return text_set(target, key, text);
}

}  // namespace

// ---- Lifetime ----------------------------------------------------------------------------------

Flag wco::create(ConfigStore **result) {
  if (!result) {
    FAULT();
    return 0;
  }
  *result = nullptr;
  ConfigStore *store = (ConfigStore *)mm_zalloc(sizeof(ConfigStore), "wco", __LINE__);
  if (!store) {
    OutOfMemoryError();
    return 0;
  }
  store->sections = (ConfigSection **)mm_zalloc(
      WCO_SECTIONS_FIRST * (int32_t)sizeof(ConfigSection *), "wco", __LINE__);
  if (!store->sections) {
    mm_free(store, "wco", __LINE__);
    OutOfMemoryError();
    return 0;
  }
  store->section_capacity = WCO_SECTIONS_FIRST;
  store->current = -1;
  *result = store;
  return 1;
}

Flag wco::destroy(ConfigStore **store) {
  if (!store || !*store) {
    FAULT();
    return 0;
  }
  ConfigStore *s = *store;
  for (int32_t i = 0; i < s->section_count; i++) free_section(s->sections[i]);
  mm_free(s->sections, "wco", __LINE__);
  mm_free(s, "wco", __LINE__);
  *store = nullptr;
  return 1;
}

ConfigStore *wco::system_store(void) {
  if (!the_system_store) create(&the_system_store);
  return the_system_store;
}

Flag wco::release_system_store(void) {
  if (the_system_store) destroy(&the_system_store);
  return 1;
}

// ---- Files -------------------------------------------------------------------------------------

namespace {

// One line of the file in the store's line buffer: 0 only when out of memory.
Flag parse_line(ConfigStore *store) {
  char *line = store->line;
  if (!st_trim(line)) return 1;
  size_t length = strlen(line);
  if (length >= 7 && strncmp(line, "BEGIN[", 6) == 0 && line[length - 1] == ']') {
    line[length - 1] = 0;
    char name[WCO_NAME_MAX + 1];
    store->current = -1;
    if (!normalise(line + 6, name)) return 1;
    int32_t place = add_section(store, name);
    if (place < 0) return 0;
    store->current = place;
    return 1;
  }
  if (length >= 5 && strncmp(line, "END[", 4) == 0 && line[length - 1] == ']') {
    store->current = -1;
    return 1;
  }
  char *equals = strchr(line, '=');
  if (!equals) return 1;
  *equals = 0;
  if (!st_trim(line)) return 1;
  if (store->current < 0 || store->current >= store->section_count) {
    FAULT();
    return 1;
  }
  return store_entry(store->sections[store->current], line, equals + 1);
}

// "   key" padded or cut to 42 characters, "=  ", the value.
void format_entry(char *line, const ConfigEntry *entry) {
  int length = snprintf(line, WCO_LINE_SIZE, "   %s", entry->key);
  if (length >= WCO_KEY_COLUMN) {
    line[WCO_KEY_COLUMN - 1] = '>';
  } else {
    while (length < WCO_KEY_COLUMN) line[length++] = ' ';
  }
  snprintf(line + WCO_KEY_COLUMN, WCO_LINE_SIZE - WCO_KEY_COLUMN, "=  %s", entry->value);
}

Flag write_file(ConfigStore *store) {
  FileObject *file = nullptr;
  if (!file_create(&file, store->path)) return 0;
  if (!file_open(file, FILE_WRITE_TEXT)) {
    file_destroy(&file);
    return 0;
  }
  char *line = store->line;
  bool ok = file_write_line(file, WCO_HEADER) && file_write_line(file, "");
  for (int32_t s = 0; ok && s < store->section_count; s++) {
    const ConfigSection *section = store->sections[s];
    if (section->entry_count == 0) continue;
    snprintf(line, WCO_LINE_SIZE, "BEGIN[%s]", section->name);
    ok = file_write_line(file, line);
    for (int32_t e = 0; ok && e < section->entry_count; e++) {
      format_entry(line, &section->entries[e]);
      ok = file_write_line(file, line);
    }
    if (ok) {
      snprintf(line, WCO_LINE_SIZE, "END[%s]", section->name);
      ok = file_write_line(file, line) && file_write_line(file, "");
    }
  }
  if (!file_close(file, 0)) ok = false;
  file_destroy(&file);
  if (!ok) return 0;
  for (int32_t s = 0; s < store->section_count; s++)
    if (store->sections[s]->entry_count > 0) store->sections[s]->modified = 0;
  store->dirty = 0;
  return 1;
}

}  // namespace

Flag wco::load(ConfigStore *store, const char *path) {
  if (!store || !path) {
    FAULT();
    return 0;
  }
  st_put(store->path, KX_PATH, path);
  if (!file_exists(store->path)) return 0;
  FileObject *file = nullptr;
  if (!file_create(&file, store->path)) return 0;
  if (!file_open(file, FILE_READ_TEXT)) {
    file_destroy(&file);
    return 0;
  }
  Flag result = 1;
  store->current = -1;
  while (file_read_line(file, store->line, WCO_READ_SIZE)) {
    if (!parse_line(store)) {
      result = 0;
      break;
    }
  }
  file_close(file, 0);
  file_destroy(&file);
  store->dirty = 0;
  for (int32_t s = 0; s < store->section_count; s++) store->sections[s]->modified = 0;
  for (int32_t s = store->section_count - 1; s >= 0; s--)
    if (store->sections[s]->entry_count == 0) remove_section_at(store, s);
  sort_store(store);
  purge_obsolete(store, nullptr);
  return result;
}

Flag wco::save(ConfigStore *store, const char *path) {
  if (!store) {
    FAULT();
    return 0;
  }
  bool write = false;
  if (path) {
    char given[KX_PATH], old[KX_PATH];
    st_put(given, KX_PATH, path);
    st_put(old, KX_PATH, store->path);
    st_upper(given);
    st_upper(old);
    if (strcmp(given, old) != 0) write = true;
    st_put(store->path, KX_PATH, path);
  }
  if (!store->path[0]) {
    FAULT();
    return 0;
  }
  if (!write && !file_exists(store->path)) write = true;
  if (!write && store->dirty) write = true;
  for (int32_t s = 0; !write && s < store->section_count; s++)
    if (store->sections[s]->modified) write = true;
  if (!write) return 1;
  return write_file(store);
}

Flag wco::readable(const char *path) {
  if (!path) return 0;
  FileObject *file = nullptr;
  if (!file_create(&file, path)) return 0;
  if (!file_open(file, FILE_READ_TEXT)) {
    file_destroy(&file);
    return 0;
  }
  char line[WCO_READ_SIZE];
  Flag ok = 1, in_section = 0;
  int32_t entries = 0;
  while (ok && file_read_line(file, line, sizeof line)) {
    for (const unsigned char *c = (const unsigned char *)line; *c; c++)
      if (*c < 32 && *c != '\t') ok = 0;
    if (!ok || !st_trim(line)) continue;
    size_t length = strlen(line);
    if (length >= 7 && strncmp(line, "BEGIN[", 6) == 0 && line[length - 1] == ']') {
      line[length - 1] = 0;
      char *name = line + 6;
      in_section = st_trim(name) && strlen(name) <= WCO_NAME_MAX;
      ok = in_section;
      continue;
    }
    if (length >= 5 && strncmp(line, "END[", 4) == 0 && line[length - 1] == ']') {
      in_section = 0;
      continue;
    }
    char *equals = strchr(line, '=');
    if (!equals) continue;
    *equals = 0;
    if (!st_trim(line)) continue;
    ok = in_section && strlen(line) <= WCO_NAME_MAX;
    entries++;
  }
  file_destroy(&file);
  return ok && entries > 0;
}

Flag wco::save_always(ConfigStore *store, const char *path) {
  if (!store) {
    FAULT();
    return 0;
  }
  store->dirty = 1;
  return save(store, path);
}

// ---- Sections ----------------------------------------------------------------------------------

Flag wco::select_section(ConfigStore *store, const char *name) {
  if (!store) {
    FAULT();
    return 0;
  }
  store->current = -1;
  if (!name) return 1;
  char normal[WCO_NAME_MAX + 1];
  if (!normalise(name, normal)) return 0;
  int32_t place = add_section(store, normal);
  if (place < 0) return 0;
  store->current = place;
  return 1;
}

Flag wco::remove_section(ConfigStore *store, const char *name) {
  if (!store) {
    FAULT();
    return 0;
  }
  char normal[WCO_NAME_MAX + 1];
  if (!normalise(name, normal)) return 0;
  int32_t place;
  if (!find_section(store, normal, &place)) return 0;
  remove_section_at(store, place);
  return 1;
}

Flag wco::remove_key(ConfigStore *store, const char *section, const char *key) {
  ConfigSection *found = resolve(named_target(store, section), key, false);
  return found ? remove_entry(found, key) : 0;
}

Flag wco::remove_key(ConfigStore *store, const char *key) {
  ConfigSection *found = resolve(current_target(store), key, false);
  return found ? remove_entry(found, key) : 0;
}

Flag wco::purge_obsolete(ConfigStore *store, const WcoObsolete *table) {
  if (!store) {
    FAULT();
    return 0;
  }
  if (!table) table = obsolete_settings;
  bool removed = false;
  for (const WcoObsolete *row = table; row->section || row->key; row++) {
    if (!row->section) {
      FAULT();
      continue;
    }
    int32_t place;
    if (!find_section(store, row->section, &place)) continue;
    if (row->key) {
      if (remove_entry(store->sections[place], row->key)) removed = true;
    } else {
      remove_section_at(store, place);
      removed = true;
    }
  }
  for (int32_t s = store->section_count - 1; s >= 0; s--) {
    if (store->sections[s]->entry_count == 0) {
      remove_section_at(store, s);
      removed = true;
    }
  }
  if (removed) store->dirty = 1;
  return 1;
}

// ---- Typed access ------------------------------------------------------------------------------
// Each type in its two forms: the named section, the current section.

#define NAMED named_target(store, section)
#define CURRENT current_target(store)

Flag wco::set_text(ConfigStore *store, const char *section, const char *key, const char *value) {
  return text_set(NAMED, key, value);
}
Flag wco::set_text(ConfigStore *store, const char *key, const char *value) {
  return text_set(CURRENT, key, value);
}
Flag wco::get_text(ConfigStore *store, const char *section, const char *key, char *buffer,
                   int32_t size) {
  return text_get(NAMED, key, buffer, size);
}
Flag wco::get_text(ConfigStore *store, const char *key, char *buffer, int32_t size) {
  return text_get(CURRENT, key, buffer, size);
}
Flag wco::get_text_copy(ConfigStore *store, const char *section, const char *key, char **result) {
  return text_copy(NAMED, key, result);
}
Flag wco::get_text_copy(ConfigStore *store, const char *key, char **result) {
  return text_copy(CURRENT, key, result);
}
Flag wco::get_text_pointer(ConfigStore *store, const char *section, const char *key,
                           const char **result) {
  return text_pointer(NAMED, key, result);
}
Flag wco::get_text_pointer(ConfigStore *store, const char *key, const char **result) {
  return text_pointer(CURRENT, key, result);
}

// Scalars: get_NAME / set_NAME over T with the internal getter and setter given.
#define WCO_SCALAR(NAME, T, GET, SET)                                                        \
  Flag wco::get_##NAME(ConfigStore *store, const char *section, const char *key, T *value) { \
    return GET(NAMED, key, value);                                                           \
  }                                                                                          \
  Flag wco::get_##NAME(ConfigStore *store, const char *key, T *value) {                      \
    return GET(CURRENT, key, value);                                                         \
  }                                                                                          \
  Flag wco::set_##NAME(ConfigStore *store, const char *section, const char *key, T value) {  \
    return SET(NAMED, key, value);                                                           \
  }                                                                                          \
  Flag wco::set_##NAME(ConfigStore *store, const char *key, T value) {                       \
    return SET(CURRENT, key, value);                                                         \
  }

WCO_SCALAR(int, int32_t, int_get, int_set)
WCO_SCALAR(short, int16_t, narrow_get<int16_t>, int_set)
WCO_SCALAR(ushort, uint16_t, narrow_get<uint16_t>, int_set)
WCO_SCALAR(ulong, uint32_t, narrow_get<uint32_t>, int_set)
WCO_SCALAR(real, float, real_get, double_set)
WCO_SCALAR(double, double, double_get, double_set)

// Compounds passed by pointer.
#define WCO_COMPOUND(NAME, T)                                                                      \
  Flag wco::get_##NAME(ConfigStore *store, const char *section, const char *key, T *value) {       \
    return NAME##_get(NAMED, key, value);                                                          \
  }                                                                                                \
  Flag wco::get_##NAME(ConfigStore *store, const char *key, T *value) {                            \
    return NAME##_get(CURRENT, key, value);                                                        \
  }                                                                                                \
  Flag wco::set_##NAME(ConfigStore *store, const char *section, const char *key, const T *value) { \
    return NAME##_set(NAMED, key, value);                                                          \
  }                                                                                                \
  Flag wco::set_##NAME(ConfigStore *store, const char *key, const T *value) {                      \
    return NAME##_set(CURRENT, key, value);                                                        \
  }

WCO_COMPOUND(rect, WcoRect)
WCO_COMPOUND(real_pair, WcoRealPair)
WCO_COMPOUND(real_rect, WcoRealRect)
WCO_COMPOUND(font, WcoFont)

// Lists: element parser and element format.
#define WCO_LIST(NAME, T, PARSE, FORMAT)                                                          \
  Flag wco::get_##NAME(ConfigStore *store, const char *section, const char *key, T **values,      \
                       int32_t *count) {                                                          \
    return list_get(NAMED, key, values, count, PARSE);                                            \
  }                                                                                               \
  Flag wco::get_##NAME(ConfigStore *store, const char *key, T **values, int32_t *count) {         \
    return list_get(CURRENT, key, values, count, PARSE);                                          \
  }                                                                                               \
  Flag wco::set_##NAME(ConfigStore *store, const char *section, const char *key, const T *values, \
                       int32_t count) {                                                           \
    return list_set(NAMED, key, values, count, FORMAT);                                           \
  }                                                                                               \
  Flag wco::set_##NAME(ConfigStore *store, const char *key, const T *values, int32_t count) {     \
    return list_set(CURRENT, key, values, count, FORMAT);                                         \
  }

namespace {
void format_int(char *out, size_t size, int32_t value) { snprintf(out, size, "%d", (int)value); }
void format_short(char *out, size_t size, int16_t value) { snprintf(out, size, "%d", value); }
void format_double(char *out, size_t size, double value) { snprintf(out, size, "%lf", value); }
void format_byte(char *out, size_t size, uint8_t value) { snprintf(out, size, "%0X", value); }
void format_pair(char *out, size_t size, WcoPair pair) {
  snprintf(out, size, "%d, %d", (int)pair.a, (int)pair.b);
}
}  // namespace

WCO_LIST(int_list, int32_t, parse_int, format_int)
WCO_LIST(short_list, int16_t, parse_short, format_short)
WCO_LIST(double_list, double, parse_real, format_double)
WCO_LIST(byte_list, uint8_t, parse_hex, format_byte)
WCO_LIST(pair_list, WcoPair, parse_pair, format_pair)

Flag wco::get_enum(ConfigStore *store, const char *section, const char *key, const EnumNames *names,
                   int16_t *value) {
  return enum_get(NAMED, key, names, value);
}
Flag wco::get_enum(ConfigStore *store, const char *key, const EnumNames *names, int16_t *value) {
  return enum_get(CURRENT, key, names, value);
}
Flag wco::set_enum(ConfigStore *store, const char *section, const char *key, const EnumNames *names,
                   int16_t value) {
  return enum_set(NAMED, key, names, value);
}
Flag wco::set_enum(ConfigStore *store, const char *key, const EnumNames *names, int16_t value) {
  return enum_set(CURRENT, key, names, value);
}

Flag wco::get_flag(ConfigStore *store, const char *section, const char *key, int16_t *value) {
  return enum_get(NAMED, key, &ets_flag, value);
}
Flag wco::get_flag(ConfigStore *store, const char *key, int16_t *value) {
  return enum_get(CURRENT, key, &ets_flag, value);
}
Flag wco::set_flag(ConfigStore *store, const char *section, const char *key, int16_t value) {
  return enum_set(NAMED, key, &ets_flag, value);
}
Flag wco::set_flag(ConfigStore *store, const char *key, int16_t value) {
  return enum_set(CURRENT, key, &ets_flag, value);
}

Flag wco::get_key(ConfigStore *store, const char *section, const char *key, int16_t *value) {
  return enum_get(NAMED, key, &ets_key, value);
}
Flag wco::get_key(ConfigStore *store, const char *key, int16_t *value) {
  return enum_get(CURRENT, key, &ets_key, value);
}
Flag wco::set_key(ConfigStore *store, const char *section, const char *key, int16_t value) {
  return enum_set(NAMED, key, &ets_key, value);
}
Flag wco::set_key(ConfigStore *store, const char *key, int16_t value) {
  return enum_set(CURRENT, key, &ets_key, value);
}
