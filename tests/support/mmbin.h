// mmbin.h - reader of the memory manager's log MMBIN.MM, for tests.
//
// Parses the file field by field (little-endian) into records: the 38-byte allocation record
// and, for kinds 1 to 3, the 210-byte text record that follows it. The reader knows the layout
// on its own (it does not use the manager's header), so that a fault in the writer shows.
#ifndef KX_TEST_MMBIN_H
#define KX_TEST_MMBIN_H

#include <stdint.h>

#include <string>
#include <vector>

namespace kxtest {

struct MmTextRecord {
  uint32_t year = 0;
  uint8_t day = 0, month = 0, minute = 0, hour = 0, hundredths = 0, second = 0;
  std::string text;  // up to the NUL
  std::string raw;   // the whole 200-byte field
};

struct MmLogRecord {
  size_t offset = 0;  // of the allocation record in the file
  uint16_t kind = 0;
  uint32_t address = 0;
  uint32_t size = 0;
  uint32_t count = 0;
  uint32_t seq = 0;
  std::string name;      // up to the NUL
  std::string raw_name;  // the whole 14-byte field
  uint32_t line = 0;
  uint16_t error = 0;
  bool has_text = false;  // kinds 1, 2, 3
  MmTextRecord text;
};

// Parses a whole log. On success returns true with every record in out. A file that ends inside
// a record, a kind outside 1..8, or a name or text field without its NUL is rejected: false, and
// error says what and at which offset (out then holds the records before the fault).
bool parse_mmbin(const std::string &bytes, std::vector<MmLogRecord> &out, std::string &error);

// Reads and parses the file at path; a missing file is an error too.
bool read_mmbin(const std::string &path, std::vector<MmLogRecord> &out, std::string &error);

// One line per record, for failure messages.
std::string dump_mmbin(const std::vector<MmLogRecord> &records);

}  // namespace kxtest

#endif
