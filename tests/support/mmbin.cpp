#include "mmbin.h"

#include "kxtest.h"

#include <stdio.h>
#include <string.h>

namespace kxtest {

namespace {

const size_t RECORD_SIZE = 38;
const size_t TEXT_SIZE = 210;
const size_t NAME_FIELD = 14;
const size_t TEXT_FIELD = 200;

uint16_t u16_at(const std::string &b, size_t at) {
  return (uint16_t)((unsigned char)b[at] | (unsigned char)b[at + 1] << 8);
}

uint32_t u32_at(const std::string &b, size_t at) {
  uint32_t v = 0;
  for (int i = 3; i >= 0; i--) v = v << 8 | (unsigned char)b[at + i];
  return v;
}

// Text of a NUL-terminated field; false when the field holds no NUL.
bool cstring_at(const std::string &b, size_t at, size_t width, std::string &text) {
  std::string field = b.substr(at, width);
  size_t nul = field.find('\0');
  if (nul == std::string::npos) return false;
  text = field.substr(0, nul);
  return true;
}

std::string fault(const char *what, size_t offset, size_t have, size_t need) {
  char buf[160];
  snprintf(buf, sizeof buf, "%s at offset %zu: %zu of %zu bytes", what, offset, have, need);
  return buf;
}

}  // namespace

bool parse_mmbin(const std::string &bytes, std::vector<MmLogRecord> &out, std::string &error) {
  out.clear();
  error.clear();
  size_t at = 0;
  while (at < bytes.size()) {
    if (bytes.size() - at < RECORD_SIZE) {
      error = fault("truncated allocation record", at, bytes.size() - at, RECORD_SIZE);
      return false;
    }
    MmLogRecord r;
    r.offset = at;
    r.kind = u16_at(bytes, at + 0);
    r.address = u32_at(bytes, at + 2);
    r.size = u32_at(bytes, at + 6);
    r.count = u32_at(bytes, at + 10);
    r.seq = u32_at(bytes, at + 14);
    r.raw_name = bytes.substr(at + 18, NAME_FIELD);
    r.line = u32_at(bytes, at + 32);
    r.error = u16_at(bytes, at + 36);
    if (r.kind < 1 || r.kind > 8) {
      error = "unknown record kind " + std::to_string(r.kind) + " at offset " + std::to_string(at);
      return false;
    }
    if (!cstring_at(bytes, at + 18, NAME_FIELD, r.name)) {
      error = "name field without NUL at offset " + std::to_string(at + 18);
      return false;
    }
    at += RECORD_SIZE;
    if (r.kind <= 3) {
      if (bytes.size() - at < TEXT_SIZE) {
        error = fault("truncated text record", at, bytes.size() - at, TEXT_SIZE);
        return false;
      }
      r.has_text = true;
      MmTextRecord &t = r.text;
      t.year = u32_at(bytes, at + 0);
      t.day = (uint8_t)bytes[at + 4];
      t.month = (uint8_t)bytes[at + 5];
      t.minute = (uint8_t)bytes[at + 6];
      t.hour = (uint8_t)bytes[at + 7];
      t.hundredths = (uint8_t)bytes[at + 8];
      t.second = (uint8_t)bytes[at + 9];
      t.raw = bytes.substr(at + 10, TEXT_FIELD);
      if (!cstring_at(bytes, at + 10, TEXT_FIELD, t.text)) {
        error = "text field without NUL at offset " + std::to_string(at + 10);
        return false;
      }
      at += TEXT_SIZE;
    }
    out.push_back(r);
  }
  return true;
}

bool read_mmbin(const std::string &path, std::vector<MmLogRecord> &out, std::string &error) {
  out.clear();
  if (!exists(path)) {
    error = "no file " + path;
    return false;
  }
  return parse_mmbin(read_bytes(path), out, error);
}

std::string dump_mmbin(const std::vector<MmLogRecord> &records) {
  std::string s;
  char buf[400];
  for (const MmLogRecord &r : records) {
    snprintf(buf, sizeof buf,
             "@%zu kind %u addr %08X size %08X count %u seq %u name '%s' line %u error %u",
             r.offset, r.kind, (unsigned)r.address, (unsigned)r.size, (unsigned)r.count,
             (unsigned)r.seq, r.name.c_str(), (unsigned)r.line, r.error);
    s += buf;
    if (r.has_text) s += " text '" + r.text.text + "'";
    s += "\n";
  }
  return s;
}

}  // namespace kxtest
