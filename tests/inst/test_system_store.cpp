// The process-wide configuration store given back at the end of a run: SETUP.EXE frees it
// before the memory statistics end, and in a guarded run ("$m") the log then shows every block
// of the store released.
#include "common/mm.h"
#include "store/wco.h"
#include "tests/support/kxtest.h"
#include "tests/support/mmbin.h"

#include <gtest/gtest.h>

#include <map>
#include <stdio.h>

namespace {

// The blocks that module granted and the log does not show released: "name:line size N" each.
std::string held_by(const std::vector<kxtest::MmLogRecord> &log, const char *module, int *granted) {
  std::map<uint32_t, const kxtest::MmLogRecord *> held;
  *granted = 0;
  for (const kxtest::MmLogRecord &r : log) {
    if ((r.kind == 4 || r.kind == 5 || r.kind == 7) && r.address != 0 && r.name == module) {
      held[r.address] = &r;
      ++*granted;
    }
    if (r.kind == 6 || r.kind == 8) held.erase(r.address);
  }
  std::string out;
  for (auto &h : held) {
    char buf[80];
    snprintf(buf, sizeof buf, "%s:%u size %u\n", h.second->name.c_str(), (unsigned)h.second->line,
             (unsigned)h.second->size);
    out += buf;
  }
  return out;
}

}  // namespace

// Rows: stores of no, one and many sections and keys (the section and entry tables grow past
// their first size), released at the end of a guarded run.
TEST(SystemStoreRelease, GuardedRunShowsEveryBlockGivenBack) {
  const struct {
    int sections, keys;
  } rows[] = {{0, 0}, {1, 1}, {25, 40}};
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; i++) {
    wco::release_system_store();  // one of an earlier test is a plain heap block: not in the run
    mm_test_reset();
    kxtest::ScratchDir dir;
    const char *argv[] = {"C:\\KORV5\\SETUP.EXE", "$m"};
    mm_stat_begin(2, argv);
    ConfigStore *store = wco::system_store();
    ASSERT_NE(nullptr, store) << "row " << i;
    char section[32], key[32];
    for (int s = 0; s < rows[i].sections; s++) {
      for (int k = 0; k < rows[i].keys; k++) {
        snprintf(section, sizeof section, "CO_oddil%02d", s);
        snprintf(key, sizeof key, "klic_%02d", k);
        ASSERT_EQ(1, wco::set_text(store, section, key, "hodnota s textem")) << "row " << i;
      }
    }
    EXPECT_EQ(1, wco::release_system_store()) << "row " << i;
    // The next call makes a new, empty store; a second release of it leaves none.
    char value[64] = "xxxx";
    store = wco::system_store();
    ASSERT_NE(nullptr, store) << "row " << i;
    if (rows[i].sections > 0) {
      EXPECT_EQ(0, wco::get_text(store, "CO_oddil00", "klic_00", value, sizeof value)) << "row " << i;
    }
    EXPECT_EQ(1, wco::release_system_store()) << "row " << i;
    EXPECT_EQ(1, wco::release_system_store()) << "row " << i << ": no store";
    mm_stat_end();

    std::vector<kxtest::MmLogRecord> log;
    std::string error;
    ASSERT_TRUE(kxtest::read_mmbin(dir.file("MMBIN.MM"), log, error)) << "row " << i << ": " << error;
    int granted = 0;
    EXPECT_EQ("", held_by(log, "wco", &granted)) << "row " << i << "\n" << kxtest::dump_mmbin(log);
    EXPECT_GE(granted, 4 + 3 * rows[i].sections * (rows[i].keys > 0)) << "row " << i;
    mm_test_reset();
  }
}
