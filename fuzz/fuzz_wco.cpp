// fuzz_wco.cpp - the .WCO loader: the input is written to a scratch file and loaded into a new
// store; then every entry is read back through every typed get_ (which parse the texts), the
// store is written and loaded again. Checks what the loader promises of the store: names and
// keys of 1 to 40 characters, values of at most 1000, no empty section, and every key found
// again by its own text.
#include "fuzz/fuzz_support.h"

#include "common/mm.h"
#include "store/wco.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static char path[600], saved[600];

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
  snprintf(path, sizeof path, "%sIN.WCO", fuzz_scratch_dir());
  snprintf(saved, sizeof saved, "%sOUT.WCO", fuzz_scratch_dir());
  return 0;
}

static void read_every_type(ConfigStore *store, const char *section, const char *key) {
  int32_t i32;
  int16_t i16;
  uint16_t u16;
  uint32_t u32;
  float f;
  double d;
  wco::get_int(store, section, key, &i32);
  wco::get_short(store, section, key, &i16);
  wco::get_ushort(store, section, key, &u16);
  wco::get_ulong(store, section, key, &u32);
  wco::get_real(store, section, key, &f);
  wco::get_double(store, section, key, &d);
  wco::get_flag(store, section, key, &i16);
  wco::get_key(store, section, key, &i16);

  int32_t count = -1;
  int32_t *ints = NULL;
  if (wco::get_int_list(store, section, key, &ints, &count)) {
    FUZZ_CHECK(ints && count >= 1, "int list: %d", count);
    wco::set_int_list(store, section, "fuzz_ints", ints, count);
  }
  mm_free(ints, "fuzz_wco", __LINE__);
  int16_t *shorts = NULL;
  if (wco::get_short_list(store, section, key, &shorts, &count))
    wco::set_short_list(store, section, "fuzz_shorts", shorts, count);
  mm_free(shorts, "fuzz_wco", __LINE__);
  double *doubles = NULL;
  if (wco::get_double_list(store, section, key, &doubles, &count))
    wco::set_double_list(store, section, "fuzz_doubles", doubles, count);
  mm_free(doubles, "fuzz_wco", __LINE__);
  uint8_t *bytes = NULL;
  if (wco::get_byte_list(store, section, key, &bytes, &count))
    wco::set_byte_list(store, section, "fuzz_bytes", bytes, count);
  mm_free(bytes, "fuzz_wco", __LINE__);
  WcoPair *pairs = NULL;
  if (wco::get_pair_list(store, section, key, &pairs, &count))
    wco::set_pair_list(store, section, "fuzz_pairs", pairs, count);
  mm_free(pairs, "fuzz_wco", __LINE__);

  WcoRect rect;
  if (wco::get_rect(store, section, key, &rect)) wco::set_rect(store, section, "fuzz_rect", &rect);
  WcoRealPair real_pair;
  if (wco::get_real_pair(store, section, key, &real_pair))
    wco::set_real_pair(store, section, "fuzz_real_pair", &real_pair);
  WcoRealRect real_rect;
  if (wco::get_real_rect(store, section, key, &real_rect))
    wco::set_real_rect(store, section, "fuzz_real_rect", &real_rect);
  WcoFont font;
  memset(&font, 0x5A, sizeof font);
  if (wco::get_font(store, section, key, &font)) {
    FUZZ_CHECK(memchr(font.face, 0, sizeof font.face), "font face not terminated");
    wco::set_font(store, section, "fuzz_font", &font);
  }

  char small[9];
  memset(small, 0x5A, sizeof small);
  if (wco::get_text(store, section, key, small, 8))
    FUZZ_CHECK(strlen(small) <= 8, "get_text wrote %zu characters into 8", strlen(small));
  char *copy = NULL;
  if (wco::get_text_copy(store, section, key, &copy)) FUZZ_CHECK(copy, "get_text_copy gave null");
  mm_free(copy, "fuzz_wco", __LINE__);
}

static void check_store(ConfigStore *store) {
  for (int32_t s = 0; s < store->section_count; s++) {
    ConfigSection *section = store->sections[s];
    size_t n = strlen(section->name);
    FUZZ_CHECK(n >= 1 && n <= WCO_NAME_MAX, "section name of %zu characters", n);
    FUZZ_CHECK(section->entry_count >= 1, "section \"%s\" without entries after load",
               section->name);
    for (int32_t e = 0; e < section->entry_count; e++) {
      const ConfigEntry &entry = section->entries[e];
      size_t k = strlen(entry.key), v = strlen(entry.value);
      FUZZ_CHECK(k >= 1 && k <= WCO_NAME_MAX, "key of %zu characters", k);
      FUZZ_CHECK(v <= WCO_VALUE_MAX, "value of %zu characters", v);
      const char *found = NULL;
      FUZZ_CHECK(
          wco::get_text_pointer(store, section->name, entry.key, &found) && found == entry.value,
          "key \"%s\" of \"%s\" is not found again", entry.key, section->name);
    }
  }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz_write_file(path, data, size);
  ConfigStore *store = NULL;
  FUZZ_CHECK(wco::create(&store), "create failed");
  wco::load(store, path);
  check_store(store);

  // Keys are copied first: reading may add entries (the typed sets) and move the arrays.
  // At most READ_BUDGET keys in all: every typed get is a lookup, and the run must stay fast.
  enum { READ_BUDGET = 2 };
  int32_t budget = READ_BUDGET;
  int32_t sections = store->section_count;
  for (int32_t s = 0; s < sections && budget > 0; s++) {
    char name[WCO_NAME_MAX + 1];
    snprintf(name, sizeof name, "%s", store->sections[s]->name);
    int32_t index = -1;
    for (int32_t t = 0; t < store->section_count; t++)
      if (!strcmp(store->sections[t]->name, name)) index = t;
    if (index < 0) continue;
    int32_t entries = store->sections[index]->entry_count;
    char(*keys)[WCO_NAME_MAX + 1] = (char(*)[WCO_NAME_MAX + 1]) malloc(sizeof *keys * entries);
    for (int32_t e = 0; e < entries; e++)
      snprintf(keys[e], sizeof keys[e], "%s", store->sections[index]->entries[e].key);
    for (int32_t e = 0; e < entries && budget > 0; e++, budget--)
      read_every_type(store, name, keys[e]);
    free(keys);
  }

  wco::save_always(store, saved);
  ConfigStore *again = NULL;
  FUZZ_CHECK(wco::create(&again), "create failed");
  wco::load(again, saved);
  check_store(again);
  wco::destroy(&again);
  wco::destroy(&store);
  return 0;
}
