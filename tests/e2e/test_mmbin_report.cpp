// Tests of the MMBIN.MM summary: logs built field by field, each with its known faults.
#include "tests/e2e/mmbin_report.h"

#include <gtest/gtest.h>

#include <string.h>

namespace {

// A log written the way the manager writes it: little-endian fields, the text record after
// kinds 1 to 3.
struct Log {
  std::string bytes;
  uint32_t seq = 1;
  void u16(uint16_t v) { for (int i = 0; i < 2; i++) bytes += (char)(v >> (8 * i)); }
  void u32(uint32_t v) { for (int i = 0; i < 4; i++) bytes += (char)(v >> (8 * i)); }
  void fixed(const char *text, size_t width) {
    std::string f(width, '\0');
    memcpy(&f[0], text, strlen(text) < width - 1 ? strlen(text) : width - 1);
    bytes += f;
  }
  void record(uint16_t kind, uint32_t address, uint32_t size, uint32_t count, const char *name,
              uint32_t line, uint16_t error, const char *text = nullptr) {
    u16(kind), u32(address), u32(size), u32(count), u32(seq++);
    fixed(name, 14);
    u32(line), u16(error);
    if (kind <= 3) {
      u32(2026), bytes += std::string("\x17\x0b\x10\x02\x05\x07", 6);
      fixed(text ? text : "", 200);
    }
  }
  Log &begin() { record(2, 0, 0, 0, "", 0, 0, "SETUP.exe $m "); return *this; }
  Log &end() { record(3, 0, 0, 0, "", 0, 0, "SETUP.exe $m "); return *this; }
  Log &alloc(uint16_t kind, uint32_t address, uint32_t size, const char *name, uint32_t line,
             uint32_t count = 0, uint16_t error = 0) {
    record(kind, address, size, count, name, line, error);
    return *this;
  }
  Log &release(uint16_t kind, uint32_t address, const char *name, uint32_t line, uint16_t error = 0) {
    record(kind, address, 0xFFFFFFFFu, 0, name, line, error);
    return *this;
  }
  Log &message(const char *text, const char *name, uint32_t line) {
    record(1, 0, 0, 0, name, line, 0, text);
    return *this;
  }
};

e2e::MmbinSummary summary_of(const Log &log) {
  std::vector<kxtest::MmLogRecord> records;
  std::string error;
  EXPECT_TRUE(kxtest::parse_mmbin(log.bytes, records, error)) << error;
  return e2e::summarize_mmbin(records);
}

std::string findings(const e2e::MmbinSummary &s) {
  std::string all;
  for (const std::string &f : s.findings) all += f + "\n";
  return all;
}

}  // namespace

// A whole run: every kind of grant released by both kinds of release, a null release.
TEST(MmbinReport, CleanRunCountsEveryBlock) {
  Log log;
  log.begin()
      .alloc(4, 0x1000, 10, "file.cpp", 11)
      .alloc(7, 0x2000, 20, "wco.cpp", 22)
      .alloc(5, 0x3000, 8, "st.cpp", 33, 3)
      .release(6, 0x1000, "file.cpp", 12)
      .release(8, 0x2000, "wco.cpp", 23)
      .release(6, 0, "inst.cpp", 40, 1)
      .message("Test kontrolovanych ukazatelu", "inst.cpp", 41)
      .release(6, 0x3000, "st.cpp", 34)
      .alloc(7, 0x1000, 5, "file.cpp", 13)  // an address given back is granted again
      .release(6, 0x1000, "file.cpp", 14)
      .end();
  e2e::MmbinSummary s = summary_of(log);
  EXPECT_TRUE(e2e::mmbin_clean(s)) << e2e::format_mmbin(s);
  EXPECT_EQ("SETUP.exe $m ", s.command_line);
  EXPECT_EQ(12u, s.records);
  EXPECT_EQ(4u, s.granted);
  EXPECT_EQ(10u + 20u + 24u + 5u, s.granted_bytes);
  EXPECT_EQ(4u, s.freed);
  EXPECT_EQ(0u, s.held);
  EXPECT_EQ(1u, s.null_releases);
  EXPECT_EQ("", findings(s));
  EXPECT_NE(std::string::npos, e2e::format_mmbin(s).find("result: clean\n"));
}

// Each row: one fault in an otherwise clean log, the figure it raises and the finding it prints.
TEST(MmbinReport, EachFaultIsFoundAndNamed) {
  struct Row {
    const char *what;
    Log log;
    uint32_t e2e::MmbinSummary::*figure;
    const char *finding;
  };
  std::vector<Row> rows;
  {
    Log l;  // 0: a block never released
    l.begin().alloc(4, 0x1000, 10, "file.cpp", 11).alloc(7, 0x2000, 40, "inst.cpp", 412)
        .release(6, 0x1000, "file.cpp", 12).end();
    rows.push_back({"leak", l, &e2e::MmbinSummary::held, "leak: inst.cpp:412 size 40 seq 3 addr 00002000\n"});
  }
  {
    Log l;  // 1: a counted block never released: count x size bytes
    l.begin().alloc(5, 0x3000, 12, "st.cpp", 7, 5).end();
    rows.push_back({"counted leak", l, &e2e::MmbinSummary::held, "leak: st.cpp:7 size 60 seq 2 addr 00003000\n"});
  }
  {
    Log l;  // 2: damaged guards found on release
    l.begin().alloc(7, 0x2000, 20, "wco.cpp", 22).release(6, 0x2000, "wco.cpp", 30, 1).end();
    rows.push_back({"damaged", l, &e2e::MmbinSummary::damaged,
                    "damaged: wco.cpp:22 size 20 seq 2 addr 00002000, released at wco.cpp:30\n"});
  }
  {
    Log l;  // 3: the manager's message of a damaged block
    l.begin().alloc(7, 0x2000, 20, "wco.cpp", 22)
        .message("      Chyba! Uvolnovana pamet byla na konci bloku prepsana", "wco.cpp", 30)
        .release(8, 0x2000, "wco.cpp", 30).end();
    rows.push_back({"message", l, &e2e::MmbinSummary::damage_messages,
                    "damage message: wco.cpp:30 \"      Chyba! Uvolnovana pamet byla na konci bloku prepsana\"\n"});
  }
  {
    Log l;  // 4: a request of 0 bytes, refused
    l.begin().alloc(7, 0, 0, "txt.cpp", 9, 0, 1).end();
    rows.push_back({"refused", l, &e2e::MmbinSummary::refused, "refused: txt.cpp:9 size 0 seq 2 addr 00000000\n"});
  }
  {
    Log l;  // 5: a block released twice
    l.begin().alloc(4, 0x1000, 10, "file.cpp", 11).release(6, 0x1000, "file.cpp", 12)
        .release(6, 0x1000, "file.cpp", 99).end();
    rows.push_back({"twice", l, &e2e::MmbinSummary::not_held, "released, not held: file.cpp:99 addr 00001000 seq 4\n"});
  }
  {
    Log l;  // 6: an address granted again while it is held
    l.begin().alloc(4, 0x1000, 10, "file.cpp", 11).alloc(4, 0x1000, 16, "file.cpp", 15)
        .release(6, 0x1000, "file.cpp", 12).end();
    rows.push_back({"granted twice", l, &e2e::MmbinSummary::granted_twice,
                    "granted while held: file.cpp:15 size 16 seq 3 addr 00001000, held since file.cpp:11 size 10 seq 2 addr 00001000\n"});
  }
  {
    Log l;  // 7: a record after the end of the statistics
    l.begin().end().alloc(4, 0x1000, 10, "file.cpp", 11);
    rows.push_back({"after end", l, &e2e::MmbinSummary::after_end, "after the end: kind 4 file.cpp:11\n"});
  }
  for (size_t i = 0; i < rows.size(); i++) {
    e2e::MmbinSummary s = summary_of(rows[i].log);
    EXPECT_FALSE(e2e::mmbin_clean(s)) << "row " << i << " " << rows[i].what << "\n" << e2e::format_mmbin(s);
    EXPECT_EQ(1u, s.*rows[i].figure) << "row " << i << " " << rows[i].what;
    EXPECT_EQ(rows[i].finding, findings(s)) << "row " << i << " " << rows[i].what;
    EXPECT_NE(std::string::npos, e2e::format_mmbin(s).find("result: FAULTS\n")) << "row " << i;
  }
}

// A log cut short (the program ended without the end record, or died): what it held counts as
// leaked; a log that starts with something else than the start record is not a whole run.
TEST(MmbinReport, LogWithoutEndOrStart) {
  Log cut;
  cut.begin().alloc(4, 0x1000, 10, "file.cpp", 11).alloc(4, 0x2000, 30, "file.cpp", 12)
      .release(6, 0x1000, "file.cpp", 13);
  e2e::MmbinSummary s = summary_of(cut);
  EXPECT_FALSE(s.ended);
  EXPECT_FALSE(e2e::mmbin_clean(s));
  EXPECT_EQ(1u, s.held);
  EXPECT_EQ(30u, s.held_bytes);
  EXPECT_EQ("the log has no end of the statistics: the program was cut short\n"
            "leak: file.cpp:12 size 30 seq 3 addr 00002000\n", findings(s));

  Log headless;
  headless.alloc(4, 0x1000, 10, "file.cpp", 11).release(6, 0x1000, "file.cpp", 12).end();
  s = summary_of(headless);
  EXPECT_FALSE(s.begun);
  EXPECT_FALSE(e2e::mmbin_clean(s));
  EXPECT_EQ("the log does not begin with the start of the statistics\n", findings(s));

  e2e::MmbinSummary empty = e2e::summarize_mmbin({});
  EXPECT_FALSE(e2e::mmbin_clean(empty));
  EXPECT_EQ(0u, empty.records);
}
