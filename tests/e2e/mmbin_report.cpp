// mmbin_report.cpp - the walk over the records of MMBIN.MM (see mmbin_report.h).
#include "tests/e2e/mmbin_report.h"

#include <stdio.h>
#include <string.h>

#include <map>

namespace e2e {

namespace {

const char DAMAGE_PREFIX[] = "      Chyba!";
const uint16_t KIND_LOG = 1, KIND_BEGIN = 2, KIND_END = 3, KIND_ALLOC = 4, KIND_CALLOC = 5,
               KIND_FREE = 6, KIND_ZALLOC = 7, KIND_CHECK_RELEASE = 8;

std::string place(const kxtest::MmLogRecord &r) {
  char buf[80];
  snprintf(buf, sizeof buf, "%s:%u", r.name.c_str(), (unsigned)r.line);
  return buf;
}

uint64_t bytes_of(const kxtest::MmLogRecord &r) {
  return r.kind == KIND_CALLOC ? (uint64_t)r.count * r.size : r.size;
}

std::string block_text(const kxtest::MmLogRecord &r) {
  char buf[160];
  snprintf(buf, sizeof buf, "%s size %llu seq %u addr %08X", place(r).c_str(),
           (unsigned long long)bytes_of(r), (unsigned)r.seq, (unsigned)r.address);
  return buf;
}

}  // namespace

MmbinSummary summarize_mmbin(const std::vector<kxtest::MmLogRecord> &records) {
  MmbinSummary s;
  s.records = records.size();
  std::map<uint32_t, kxtest::MmLogRecord> held;
  for (size_t i = 0; i < records.size(); i++) {
    const kxtest::MmLogRecord &r = records[i];
    if (s.ended) {
      s.after_end++;
      s.findings.push_back("after the end: kind " + std::to_string(r.kind) + " " + place(r));
      continue;
    }
    switch (r.kind) {
      case KIND_BEGIN:
        if (i == 0) {
          s.begun = true;
          s.command_line = r.text.text;
        } else {
          s.findings.push_back("a second start of the statistics at record " + std::to_string(i));
        }
        break;
      case KIND_END:
        s.ended = true;
        break;
      case KIND_LOG:
        if (r.text.text.compare(0, strlen(DAMAGE_PREFIX), DAMAGE_PREFIX) == 0) {
          s.damage_messages++;
          s.findings.push_back("damage message: " + place(r) + " \"" + r.text.text + "\"");
        }
        break;
      case KIND_ALLOC:
      case KIND_CALLOC:
      case KIND_ZALLOC:
        if (r.error != 0 || r.address == 0) {
          s.refused++;
          s.findings.push_back("refused: " + block_text(r));
          break;
        }
        if (held.count(r.address)) {
          s.granted_twice++;
          s.findings.push_back("granted while held: " + block_text(r) + ", held since " +
                               block_text(held[r.address]));
        }
        s.granted++;
        s.granted_bytes += bytes_of(r);
        held[r.address] = r;
        break;
      case KIND_FREE:
      case KIND_CHECK_RELEASE: {
        if (r.address == 0) {
          s.null_releases++;
          break;
        }
        auto it = held.find(r.address);
        if (it == held.end()) {
          s.not_held++;
          char buf[120];
          snprintf(buf, sizeof buf, "released, not held: %s addr %08X seq %u", place(r).c_str(),
                   (unsigned)r.address, (unsigned)r.seq);
          s.findings.push_back(buf);
        } else {
          s.freed++;
          if (r.error != 0) {
            s.damaged++;
            s.findings.push_back("damaged: " + block_text(it->second) + ", released at " + place(r));
          }
          held.erase(it);
        }
        break;
      }
      default:
        break;  // the parser takes kinds 1..8 only
    }
  }
  if (!s.begun) s.findings.push_back("the log does not begin with the start of the statistics");
  if (!s.ended) s.findings.push_back("the log has no end of the statistics: the program was cut short");
  // By sequence number: the order in which they were granted.
  std::map<uint32_t, const kxtest::MmLogRecord *> by_seq;
  for (auto &h : held) by_seq[h.second.seq] = &h.second;
  for (auto &b : by_seq) {
    s.held++;
    s.held_bytes += bytes_of(*b.second);
    s.findings.push_back("leak: " + block_text(*b.second));
  }
  return s;
}

bool mmbin_clean(const MmbinSummary &s) {
  return s.begun && s.ended && s.after_end == 0 && s.held == 0 && s.damaged == 0 &&
         s.damage_messages == 0 && s.refused == 0 && s.not_held == 0 && s.granted_twice == 0 &&
         s.findings.empty();
}

std::string format_mmbin(const MmbinSummary &s) {
  char buf[600];
  snprintf(buf, sizeof buf,
           "records: %zu, statistics %s%s, command line \"%s\"\n"
           "granted: %u blocks, %llu bytes\n"
           "freed: %u blocks\n"
           "still held at the end: %u blocks, %llu bytes\n"
           "damaged blocks: %u, damage messages: %u\n"
           "refused requests: %u, releases of blocks not held: %u, granted while held: %u, "
           "releases of null: %u\n",
           s.records, s.begun ? "started" : "NOT STARTED", s.ended ? " and ended" : ", NOT ENDED",
           s.command_line.c_str(), (unsigned)s.granted, (unsigned long long)s.granted_bytes,
           (unsigned)s.freed, (unsigned)s.held, (unsigned long long)s.held_bytes,
           (unsigned)s.damaged, (unsigned)s.damage_messages, (unsigned)s.refused,
           (unsigned)s.not_held, (unsigned)s.granted_twice, (unsigned)s.null_releases);
  std::string out = buf;
  for (const std::string &f : s.findings) out += "  " + f + "\n";
  out += mmbin_clean(s) ? "result: clean\n" : "result: FAULTS\n";
  return out;
}

}  // namespace e2e
