// kx_mmbin FILE: the summary of a memory manager log MMBIN.MM (mmbin_report.h). Exit code 0
// when the log is clean (no leak, no damaged block), 1 when it shows faults, 2 when it cannot
// be read (missing, cut inside a record, unknown kind) or on a usage error.
#include "tests/e2e/mmbin_report.h"

#include <stdio.h>

int main(int argc, char **argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: kx_mmbin MMBIN.MM\n");
    return 2;
  }
  std::vector<kxtest::MmLogRecord> records;
  std::string error;
  if (!kxtest::read_mmbin(argv[1], records, error)) {
    printf("%s: unreadable: %s\n", argv[1], error.c_str());
    return 2;
  }
  e2e::MmbinSummary s = e2e::summarize_mmbin(records);
  printf("%s\n%s", argv[1], e2e::format_mmbin(s).c_str());
  return e2e::mmbin_clean(s) ? 0 : 1;
}
