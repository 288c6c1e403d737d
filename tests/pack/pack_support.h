// pack_support.h - shared by the pack tests: a ledger of memory blocks read back from the
// memory manager's guarded-mode log (native and under Wine), a full device, random data.
#ifndef KX_TEST_PACK_SUPPORT_H
#define KX_TEST_PACK_SUPPORT_H

#include "common/mm.h"
#include "tests/support/kxtest.h"
#include "tests/support/mmbin.h"

#include <gtest/gtest.h>
#include <stdio.h>

#include <map>
#include <random>
#include <string>
#include <vector>

namespace packtest {

inline bool is_request(const kxtest::MmLogRecord &r) {
  return r.kind == MM_KIND_ALLOC || r.kind == MM_KIND_CALLOC || r.kind == MM_KIND_ZALLOC;
}

// A guarded run in a scratch directory (the current directory while it lives). mark() starts a
// new account; requests() and leftovers() cover everything after the last mark.
class Ledger {
 public:
  Ledger() {
    const char *argv[] = {"KORV5.EXE", "$m"};
    mm_test_reset(), mm_stat_begin(2, argv), mark();
  }
  ~Ledger() { mm_test_fail_after(-1), mm_test_reset(); }
  const kxtest::ScratchDir &dir() const { return dir_; }
  void mark() { mm_log("ledger", ++marks_, "mark"); }

  // The sizes of the blocks asked for, by the given module or (null) by anyone.
  std::vector<uint32_t> requests(const char *module = nullptr) const {
    std::vector<uint32_t> sizes;
    for (const kxtest::MmLogRecord &r : since_mark())
      if (is_request(r) && (!module || r.name == module)) sizes.push_back(r.size);
    return sizes;
  }

  // "name:line size" of every block granted and not given back, then the manager's damage
  // messages (a write past a block's end shows here); empty when all is well.
  std::string leftovers() const {
    std::map<uint32_t, std::string> held;
    std::string damage;
    for (const kxtest::MmLogRecord &r : since_mark()) {
      if (is_request(r) && r.address != 0 && r.error == 0)
        held[r.address] =
            r.name + ":" + std::to_string(r.line) + " " + std::to_string(r.size) + "\n";
      else if (r.kind == MM_KIND_FREE && r.address != 0) held.erase(r.address);
      if (r.kind == MM_KIND_LOG || (r.kind == MM_KIND_FREE && r.error))
        damage += r.text.text + "\n";
    }
    std::string text;
    for (const auto &h : held) text += h.second;
    return text + damage;
  }

 private:
  std::vector<kxtest::MmLogRecord> since_mark() const {
    std::vector<kxtest::MmLogRecord> all;
    std::string error;
    if (!kxtest::read_mmbin(dir_.file(MM_LOG_NAME), all, error)) {
      ADD_FAILURE() << "memory log: " << error;
      return {};
    }
    for (size_t i = all.size(); i-- > 0;)
      if (all[i].kind == MM_KIND_LOG && all[i].name == "ledger" && all[i].line == (uint32_t)marks_)
        return std::vector<kxtest::MmLogRecord>(all.begin() + (long)i + 1, all.end());
    ADD_FAILURE() << "no ledger mark in the memory log";
    return {};
  }

  kxtest::ScratchDir dir_;
  int32_t marks_ = 0;
};

// A device that takes no bytes (/dev/full; under Wine the same through the Z: drive), or null
// when there is none or a write to it does not fail.
inline const char *full_device() {
#ifdef KX_WIN32
  const char *path = "Z:\\dev\\full";
#else
  const char *path = "/dev/full";
#endif
  FILE *f = fopen(path, "wb");
  if (!f) return nullptr;
  bool full = fputc('x', f) == EOF || fflush(f) != 0;
  fclose(f);
  return full ? path : nullptr;
}

inline std::string random_bytes(size_t n, unsigned seed) {
  std::mt19937 gen(seed);
  std::string s(n, '\0');
  for (char &c : s) c = (char)(gen() & 0xFF);
  return s;
}

}  // namespace packtest

#endif
