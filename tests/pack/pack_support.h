// pack_support.h - what the copy and zip tests share: a ledger of memory blocks read back from
// the memory manager's guarded-mode log, so a test can tell which blocks an operation took and
// did not give back (on Windows under Wine as well as on the native build).
#ifndef KX_TEST_PACK_SUPPORT_H
#define KX_TEST_PACK_SUPPORT_H

#include "common/mm.h"
#include "tests/support/kxtest.h"
#include "tests/support/mmbin.h"

#include <gtest/gtest.h>
#include <stdio.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace packtest {

// One block request as the log tells it.
struct Request {
  std::string name;
  uint32_t line;
  uint32_t size;
  bool granted;
};

// A guarded run in a scratch directory (the current directory while it lives). mark() starts a
// new account; requests() and live() cover everything after the last mark.
class Ledger {
 public:
  Ledger() {
    mm_test_reset();
    const char *argv[] = {"KORV5.EXE", "$m"};
    mm_stat_begin(2, argv);
    mark();
  }
  ~Ledger() {
    mm_test_fail_after(-1);
    mm_test_reset();
  }
  const kxtest::ScratchDir &dir() const { return dir_; }

  void mark() { mm_log("ledger", ++marks_, "mark"); }

  std::vector<Request> requests() const {
    std::vector<Request> out;
    for (const kxtest::MmLogRecord &r : since_mark()) {
      if (r.kind == MM_KIND_ALLOC || r.kind == MM_KIND_CALLOC || r.kind == MM_KIND_ZALLOC)
        out.push_back(Request{r.name, r.line, r.size, r.address != 0 && r.error == 0});
    }
    return out;
  }

  // "name:line size" of every block granted since the mark and not released, one per line.
  std::string live() const {
    std::map<uint32_t, std::string> held;
    for (const kxtest::MmLogRecord &r : since_mark()) {
      if ((r.kind == MM_KIND_ALLOC || r.kind == MM_KIND_CALLOC || r.kind == MM_KIND_ZALLOC) &&
          r.address != 0 && r.error == 0)
        held[r.address] = r.name + ":" + std::to_string(r.line) + " " + std::to_string(r.size);
      else if (r.kind == MM_KIND_FREE && r.address != 0)
        held.erase(r.address);
    }
    std::string text;
    for (const auto &h : held) text += h.second + "\n";
    return text;
  }

  // The manager's damage messages since the mark (a write past a block's end shows here).
  std::string damage() const {
    std::string text;
    for (const kxtest::MmLogRecord &r : since_mark())
      if (r.kind == MM_KIND_LOG || (r.kind == MM_KIND_FREE && r.error)) text += r.text.text + "\n";
    return text;
  }

 private:
  std::vector<kxtest::MmLogRecord> since_mark() const {
    std::vector<kxtest::MmLogRecord> all;
    std::string error;
    if (!kxtest::read_mmbin(dir_.file(MM_LOG_NAME), all, error)) {
      ADD_FAILURE() << "memory log: " << error;
      return {};
    }
    for (size_t i = all.size(); i-- > 0;) {
      if (all[i].kind == MM_KIND_LOG && all[i].name == "ledger" && all[i].line == (uint32_t)marks_)
        return std::vector<kxtest::MmLogRecord>(all.begin() + (long)i + 1, all.end());
    }
    ADD_FAILURE() << "no ledger mark in the memory log";
    return {};
  }

  kxtest::ScratchDir dir_;
  int32_t marks_ = 0;
};

// A device that takes no bytes: /dev/full on Linux; under Wine the same device through the Z:
// drive, when the prefix maps it and a write to it fails. Null when there is none (the tests
// that need it are then skipped).
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

}  // namespace packtest

#endif
