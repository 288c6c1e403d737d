#include "tests/support/mmbin.h"

#include "tests/support/kxtest.h"

#include <stdio.h>

namespace kxtest {

namespace {

const size_t RECORD_SIZE = 38, TEXT_SIZE = 210, NAME_FIELD = 14, TEXT_FIELD = 200;

// The little-endian number of width bytes at at.
uint32_t le(const std::string &b, size_t at, int width) {
  uint32_t v = 0;
  for (int i = width - 1; i >= 0; i--) v = v << 8 | (unsigned char)b[at + i];
  return v;
}

// The whole field of width bytes at at, and its text up to the NUL; false when it holds no NUL.
bool field(const std::string &b, size_t at, size_t width, std::string &raw, std::string &text) {
  raw = b.substr(at, width);
  size_t nul = raw.find('\0');
  text = raw.substr(0, nul);
  return nul != std::string::npos;
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
  for (size_t at = 0; at < bytes.size();) {
    if (bytes.size() - at < RECORD_SIZE) {
      error = fault("truncated allocation record", at, bytes.size() - at, RECORD_SIZE);
      return false;
    }
    MmLogRecord r;
    r.offset = at;
    r.kind = (uint16_t)le(bytes, at, 2);
    r.address = le(bytes, at + 2, 4), r.size = le(bytes, at + 6, 4), r.count = le(bytes, at + 10, 4);
    r.seq = le(bytes, at + 14, 4), r.line = le(bytes, at + 32, 4), r.error = (uint16_t)le(bytes, at + 36, 2);
    if (r.kind < 1 || r.kind > 8) {
      error = "unknown record kind " + std::to_string(r.kind) + " at offset " + std::to_string(at);
      return false;
    }
    if (!field(bytes, at + 18, NAME_FIELD, r.raw_name, r.name)) {
      error = "name field without NUL at offset " + std::to_string(at + 18);
      return false;
    }
    at += RECORD_SIZE;
    if (r.kind <= 3) {
      if (bytes.size() - at < TEXT_SIZE) {
        error = fault("truncated text record", at, bytes.size() - at, TEXT_SIZE);
        return false;
      }
      MmTextRecord &t = r.text;
      r.has_text = true;
      t.year = le(bytes, at, 4);
      t.day = (uint8_t)bytes[at + 4], t.month = (uint8_t)bytes[at + 5], t.minute = (uint8_t)bytes[at + 6];
      t.hour = (uint8_t)bytes[at + 7], t.hundredths = (uint8_t)bytes[at + 8], t.second = (uint8_t)bytes[at + 9];
      if (!field(bytes, at + 10, TEXT_FIELD, t.raw, t.text)) {
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
    snprintf(buf, sizeof buf, "@%zu kind %u addr %08X size %08X count %u seq %u name '%s' line %u error %u",
             r.offset, r.kind, (unsigned)r.address, (unsigned)r.size, (unsigned)r.count, (unsigned)r.seq,
             r.name.c_str(), (unsigned)r.line, r.error);
    s += buf + (r.has_text ? " text '" + r.text.text + "'" : std::string()) + "\n";
  }
  return s;
}

}  // namespace kxtest
