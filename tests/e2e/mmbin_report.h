// mmbin_report.h - what the memory manager's log MMBIN.MM says about a run: the blocks granted
// and freed, the blocks still held when the statistics ended (leaks), damaged blocks and the
// manager's damage messages. Used by the tool kx_mmbin (mmbin_main.cpp) and its tests.
//
// The log is read with kxtest::parse_mmbin (tests/support/mmbin.h). The walk, record by record:
//   kinds 4, 5, 7 (allocations): a record with an address and no error flag grants a block of
//     size bytes (count x size for kind 5); one with the error flag is a refused or failed
//     request; an address granted again while still held is a fault of its own;
//   kinds 6, 8 (release, check before a release): the block is no longer held; the error flag
//     marks it damaged; address 0 is a release of null (allowed, counted only); an address that
//     is not held is a release of a block not granted (twice, or never);
//   kind 1: a text that starts with "      Chyba!" is a damage message of the manager;
//   kind 3: the end of the statistics; what is held then is a leak. A log without it ended
//     with the program cut short; what is held at the end of the file counts as leaked.
#ifndef KX_E2E_MMBIN_REPORT_H
#define KX_E2E_MMBIN_REPORT_H

#include "tests/support/mmbin.h"

#include <stdint.h>

#include <string>
#include <vector>

namespace e2e {

struct MmbinSummary {
  size_t records = 0;
  bool begun = false;            // the first record is the start of the statistics (kind 2)
  bool ended = false;            // a kind 3 record was found
  std::string command_line;      // the text of the kind 2 record
  uint32_t granted = 0;          // blocks granted
  uint64_t granted_bytes = 0;
  uint32_t freed = 0;            // granted blocks released (kinds 6 and 8)
  uint32_t held = 0;             // still held at the end: leaks
  uint64_t held_bytes = 0;
  uint32_t damaged = 0;          // releases with the error flag
  uint32_t damage_messages = 0;  // kind 1 texts "      Chyba! ..."
  uint32_t refused = 0;          // allocations with the error flag
  uint32_t not_held = 0;         // releases of an address that was not held
  uint32_t granted_twice = 0;    // an address granted again while held
  uint32_t null_releases = 0;    // releases of null
  uint32_t after_end = 0;        // records after the end of the statistics
  std::vector<std::string> findings;  // one line per fault: "leak: inst.cpp:412 size 40 seq 17"
};

// Walks the records as above.
MmbinSummary summarize_mmbin(const std::vector<kxtest::MmLogRecord> &records);

// 1 only when the log is whole (begun and ended, nothing after the end) and holds no leak, no
// damaged block, no damage message, no refused request, no release of a block not held and no
// block granted twice.
bool mmbin_clean(const MmbinSummary &s);

// The summary as printed by kx_mmbin: the figures, then every finding, then "result: clean" or
// "result: FAULTS".
std::string format_mmbin(const MmbinSummary &s);

}  // namespace e2e

#endif
