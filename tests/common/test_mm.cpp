// Memory manager: both modes, the guard words, the watched table and the MMBIN.MM log read back
// field by field.
#include "common/mm.h"
#include "tests/support/kxtest.h"
#include "tests/support/mmbin.h"

#include <gtest/gtest.h>

#include <stdio.h>
#include <string.h>

#include <filesystem>
#include <string>
#include <vector>

using kxtest::BoxRecorder;
using kxtest::MmLogRecord;
using kxtest::ScratchDir;

namespace {

const uint32_t kNoSize = 0xFFFFFFFFu;
const std::string kEndMessage = "\nStatistika alokace pameti aktivni - spust program MMCH32.EXE !!!\n";

uint32_t word_at(const void *p, long offset) {
  uint32_t w;
  memcpy(&w, (const unsigned char *)p + offset, 4);
  return w;
}

uint32_t addr(const void *p) { return (uint32_t)(uintptr_t)p; }

bool ends_with(const std::string &s, const std::string &tail) {
  return s.size() >= tail.size() && s.compare(s.size() - tail.size(), tail.size(), tail) == 0;
}

// A run in a scratch directory with the given argument; the manager is put back to its start
// state at both ends. Other modules may log their own entries after the start (the file layer's
// statistics), so a guarded run ends its start with a marker: a counted allocation that sets the
// shared count field to 1, and the kind 1 entry "start". mine() holds the records after the
// marker, seq0 the first sequence number after it.
struct GuardedRun {
  ScratchDir dir;
  uint32_t seq0 = 0;
  explicit GuardedRun(const char *arg = "$m") {
    mm_test_reset();
    const char *argv[] = {"C:\\KORVEX\\EXE\\KORV5.EXE", arg};
    mm_stat_begin(2, argv);
    mm_free(mm_calloc(1, 1, "run", 0), "run", 0);
    mm_log("run", 0, "start");
  }
  ~GuardedRun() { mm_test_reset(); }
  std::vector<MmLogRecord> records() {
    std::vector<MmLogRecord> r;
    std::string error;
    EXPECT_TRUE(kxtest::read_mmbin(dir.file("MMBIN.MM"), r, error)) << error;
    return r;
  }
  std::vector<MmLogRecord> mine() {
    std::vector<MmLogRecord> all = records();
    for (size_t i = 0; i < all.size(); i++) {
      if (all[i].kind == 1 && all[i].name == "run" && all[i].text.text == "start") {
        seq0 = all[i].seq + 1;
        return std::vector<MmLogRecord>(all.begin() + i + 1, all.end());
      }
    }
    ADD_FAILURE() << "no start marker in\n" << kxtest::dump_mmbin(all);
    return {};
  }
};

// Expected allocation record; seq counts from seq0.
struct Rec {
  uint16_t kind;
  uint32_t address, size, count, seq;
  std::string name;
  uint32_t line;
  uint16_t error;
};

// Compared as one line each, so that a mismatch shows every field.
void expect_record(const Rec &w, const MmLogRecord &got, const std::string &where, uint32_t seq0) {
  MmLogRecord want = got;
  want.kind = w.kind, want.address = w.address, want.size = w.size, want.count = w.count;
  want.seq = seq0 + w.seq, want.name = w.name, want.line = w.line, want.error = w.error;
  EXPECT_EQ(kxtest::dump_mmbin({want}), kxtest::dump_mmbin({got})) << where;
}

void expect_plausible_time(const MmLogRecord &r) {
  const kxtest::MmTextRecord &t = r.text;
  EXPECT_TRUE(r.has_text && t.year >= 2020 && t.year < 2200 && t.month >= 1 && t.month <= 12 &&
              t.day >= 1 && t.day <= 31 && t.hour < 24 && t.minute < 60 && t.second < 61 && t.hundredths < 100)
      << t.year << "-" << +t.month << "-" << +t.day << " " << +t.hour << ":" << +t.minute << ":"
      << +t.second << "." << +t.hundredths;
  EXPECT_EQ(t.text + std::string(200 - t.text.size(), '\0'), t.raw) << "text field not NUL-padded";
}

TEST(MmSwitch, OnlyDollarMArgumentsSwitchGuardedModeOn) {
  struct Row {
    int n;
    const char *args[3];
    int argc;
    bool guarded;
  } rows[] = {
      {1, {"prog", "$m"}, 2, true},    {2, {"prog", "$M"}, 2, true},  {3, {"prog", "$mfoo"}, 2, true},
      {4, {"prog", "x.d32", "$M"}, 3, true}, {5, {"prog", "m"}, 2, false}, {6, {"prog", "-m"}, 2, false},
      {7, {"prog", "$x"}, 2, false},   {8, {"prog", "$"}, 2, false},  {9, {"$m"}, 1, false},
      {10, {"prog", "a$m"}, 2, false},
  };
  for (const Row &r : rows) {
    ScratchDir dir;
    BoxRecorder boxes;
    mm_test_reset();
    mm_stat_begin(r.argc, r.args);
    EXPECT_EQ(r.guarded, kxtest::exists(dir.file("MMBIN.MM"))) << "row " << r.n;
    unsigned char *p = (unsigned char *)mm_alloc(10, "row", r.n);
    ASSERT_NE(nullptr, p) << "row " << r.n;
    if (r.guarded) {
      EXPECT_EQ(10u, word_at(p, -400)) << "row " << r.n;
    }
    mm_free(p, "row", r.n);
    // A zero mm_zalloc is reported in normal mode only: tells the modes apart from outside.
    EXPECT_EQ(nullptr, mm_zalloc(0, "row", r.n));
    EXPECT_EQ(r.guarded ? 0u : 1u, boxes.count()) << "row " << r.n << ": " << boxes.dump();
    testing::internal::CaptureStdout();
    mm_stat_end();
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(r.guarded ? ends_with(out, kEndMessage) : out.empty()) << "row " << r.n << " printed: " << out;
    mm_test_reset();
  }
}

TEST(MmGuarded, BlocksHave400ByteGuardsFilledWithTheSize) {
  GuardedRun run;
  struct Row {
    int n;
    int kind;  // 4 alloc, 5 calloc, 7 zalloc, 0 anonymous
    int32_t count, size;
  } rows[] = {{1, 4, 1, 1}, {2, 4, 1, 37}, {3, 5, 3, 5}, {4, 5, 1000, 1}, {5, 7, 1, 4096}, {6, 0, 1, 9}};
  for (const Row &r : rows) {
    unsigned char *p = (unsigned char *)(r.kind == 4   ? mm_alloc(r.size, "g", r.n)
                                         : r.kind == 5 ? mm_calloc(r.count, r.size, "g", r.n)
                                         : r.kind == 7 ? mm_zalloc(r.size, "g", r.n)
                                                       : mm_zalloc_anon(r.size));
    ASSERT_NE(nullptr, p) << "row " << r.n;
    uint32_t total = (uint32_t)(r.count * r.size);
    for (int i = 0; i < 100; i++) {
      ASSERT_EQ(total, word_at(p, -400 + 4 * i)) << "row " << r.n << " head word " << i;
      ASSERT_EQ(total, word_at(p, total + 4 * i)) << "row " << r.n << " tail word " << i;
    }
    if (r.kind != 4) {
      EXPECT_EQ(std::string(total, '\0'), std::string((char *)p, total)) << "row " << r.n << ": not zeroed";
    }
    memset(p, 0xA5, total);  // the user area is the caller's to the last byte
    EXPECT_EQ(1, mm_check(p)) << "row " << r.n;
    mm_free(p, "g", r.n);
  }
  // 5 logged allocations, 6 releases: the anonymous one is neither logged nor counted.
  std::vector<MmLogRecord> recs = run.mine();
  ASSERT_EQ(11u, recs.size()) << kxtest::dump_mmbin(recs);
  EXPECT_EQ(run.seq0 + 10, recs[10].seq);
}

TEST(MmLog, RecordsReadBackFieldByField) {
  std::vector<MmLogRecord> all, recs;
  uint32_t a1, a2, a3, seq0;
  {
    GuardedRun run("$mfoo");
    void *p1 = mm_calloc(4, 6, "C:\\src\\common\\st.cpp", 12);
    void *p2 = mm_alloc(5, "file", 20);
    mm_log("dir\\averyveryverylongname.cpp", 33, "x=%d %s", 5, "ř");
    void *p3 = mm_zalloc(8, "a/b/c.cpp", 40);
    a1 = addr(p1), a2 = addr(p2), a3 = addr(p3);
    mm_free(p2, "file", 21);
    mm_check_release(p1, "\\thirteen_char", 50);
    mm_release(p1);
    mm_free(p3, "fourteen_chars", 60);
    testing::internal::CaptureStdout();
    mm_stat_end();
    testing::internal::GetCapturedStdout();
    all = run.records();
    recs = run.mine();
    seq0 = run.seq0;
  }
  ASSERT_LE(2u, all.size());
  expect_record({2, 0, 0, 0, 1, "", 0, 0}, all[0], "start", 0);
  EXPECT_EQ("C:\\KORVEX\\EXE\\KORV5.EXE $mfoo ", all[0].text.text);
  // The count of a kind 5 entry stays in every later shared record; kind 1 has its own record.
  const Rec want[] = {
      {5, a1, 6, 4, 0, "st.cpp", 12, 0},
      {4, a2, 5, 4, 1, "file", 20, 0},
      {1, 0, 0, 0, 2, "averyveryvery", 33, 0},
      {7, a3, 8, 4, 3, "a/b/c.cpp", 40, 0},
      {6, a2, kNoSize, 4, 4, "file", 21, 0},
      {8, a1, kNoSize, 4, 5, "thirteen_char", 50, 0},
      {6, a3, kNoSize, 4, 6, "fourteen_char", 60, 0},
  };
  ASSERT_LT(KX_COUNT(want), recs.size()) << kxtest::dump_mmbin(recs);
  for (size_t i = 0; i < KX_COUNT(want); i++) expect_record(want[i], recs[i], "record " + std::to_string(i), seq0);
  EXPECT_EQ("x=5 \xF8", recs[2].text.text);
  for (const MmLogRecord &r : all)
    EXPECT_EQ(r.name + std::string(14 - r.name.size(), '\0'), r.raw_name) << "name field not NUL-padded";
  // The end record writes kind and sequence number; the rest is the previous entry's.
  const MmLogRecord &end = recs.back(), &before = recs[recs.size() - 2];
  expect_record({3, before.address, before.size, before.count, 1, before.name, before.line, before.error}, end,
                "end", before.seq);
  EXPECT_EQ(all[0].text.text, end.text.text);
  expect_plausible_time(all[0]);
  expect_plausible_time(recs[2]);
  expect_plausible_time(end);
}

TEST(MmLog, ReaderRejectsATruncatedOrForeignFile) {
  std::string log;
  {
    GuardedRun run;
    log = kxtest::read_bytes(run.dir.file("MMBIN.MM"));
  }
  ASSERT_LE(248u + 3 * 38, log.size());  // start, allocation, release, marker
  struct Row {
    int n;
    std::string bytes;
    const char *error;  // null: accepted
  } rows[] = {
      {1, log, nullptr},
      {2, "", nullptr},
      {3, log.substr(0, 37), "truncated allocation record at offset 0: 37 of 38 bytes"},
      {4, log.substr(0, 38 + 209), "truncated text record at offset 38: 209 of 210 bytes"},
      {5, log.substr(0, 248 + 37), "truncated allocation record at offset 248: 37 of 38 bytes"},
      {6, log.substr(0, log.size() - 1), "truncated text record"},
      {7, std::string("\x09\0", 2) + log.substr(2), "unknown record kind 9 at offset 0"},
      {8, log.substr(0, 18) + std::string(14, 'x') + log.substr(32), "name field without NUL at offset 18"},
      {9, log.substr(0, 48) + std::string(200, 'x') + log.substr(248), "text field without NUL at offset 48"},
  };
  for (const Row &r : rows) {
    std::vector<MmLogRecord> recs;
    std::string error;
    bool ok = kxtest::parse_mmbin(r.bytes, recs, error);
    EXPECT_EQ(r.error == nullptr, ok) << "row " << r.n << ": " << error;
    EXPECT_EQ(0u, error.find(r.error ? r.error : "")) << "row " << r.n << " got: " << error;
  }
}

TEST(MmLog, TextsAreCutAt199Characters) {
  struct Row {
    int n;
    size_t length, logged;
  } rows[] = {{1, 198, 198}, {2, 199, 199}, {3, 200, 199}, {4, 1025, 199}};
  for (const Row &r : rows) {
    // The program path and its blank are 24 characters; every argument is followed by a blank.
    std::string arg = "$m" + kxtest::pattern_text(r.length - 27);
    std::string line = "C:\\KORVEX\\EXE\\KORV5.EXE " + arg + " ";
    ASSERT_EQ(r.length, line.size());
    GuardedRun run(arg.c_str());
    mm_log("t", r.n, "%s", kxtest::pattern_text(r.length).c_str());
    std::vector<MmLogRecord> recs = run.mine();
    ASSERT_EQ(1u, recs.size()) << "row " << r.n;
    EXPECT_EQ(line.substr(0, 199), run.records()[0].text.text) << "row " << r.n;
    EXPECT_EQ(kxtest::pattern_text(r.logged), recs[0].text.text) << "row " << r.n;
  }
}

TEST(MmDamage, GuardsFindWritesJustOutsideTheBlock) {
  enum { NONE, BEFORE, PAST_END, TAIL_SAME, HEAD_WILD };
  const char *head = "      Chyba! Uvolnovana pamet byla na zacatku bloku prepsana";
  const char *tail = "      Chyba! Uvolnovana pamet byla na konci bloku prepsana";
  struct Row {
    int n;
    int damage;
    int32_t size;
    const char *check_message;  // of mm_check_release; null: intact
  } rows[] = {{1, NONE, 24, nullptr},      {2, BEFORE, 24, head}, {3, PAST_END, 24, tail}, {4, PAST_END, 1, tail},
              {5, TAIL_SAME, 24, nullptr}, {6, BEFORE, 3, head},  {7, HEAD_WILD, 24, head}};
  for (const Row &r : rows) {
    GuardedRun run;
    BoxRecorder boxes;
    unsigned char *p = (unsigned char *)mm_alloc(r.size, "d", r.n);
    if (r.damage == BEFORE) p[-1] = 0x5A;  // into the last head word
    if (r.damage == PAST_END) p[r.size] ^= 0xFF;
    if (r.damage == TAIL_SAME) memset(p + r.size, 0x77, 400);  // neighbours stay equal
    if (r.damage == HEAD_WILD) memset(p - 400, 0x7F, 400);     // a size far past the block
    EXPECT_EQ(r.check_message ? 0 : 1, mm_check(p)) << "row " << r.n;
    mm_check_release(p, "d", 100 + r.n);
    mm_free(p, "d", 200 + r.n);
    std::vector<MmLogRecord> recs = run.mine();
    std::string where = "row " + std::to_string(r.n) + "\n" + kxtest::dump_mmbin(recs);
    if (!r.check_message) {
      ASSERT_EQ(3u, recs.size()) << where;
      expect_record({8, addr(p), kNoSize, 1, 1, "d", 100u + r.n, 0}, recs[1], where, run.seq0);
      expect_record({6, addr(p), kNoSize, 1, 2, "d", 200u + r.n, 0}, recs[2], where, run.seq0);
      continue;
    }
    // The message of mm_check_release comes before its record, that of mm_free after it.
    ASSERT_EQ(5u, recs.size()) << where;
    expect_record({1, 0, 0, 0, 2, "d", 100u + r.n, 0}, recs[1], where, run.seq0);
    expect_record({8, addr(p), kNoSize, 1, 1, "d", 100u + r.n, 1}, recs[2], where, run.seq0);
    expect_record({6, addr(p), kNoSize, 1, 3, "d", 200u + r.n, 1}, recs[3], where, run.seq0);
    expect_record({1, 0, 0, 0, 4, "d", 200u + r.n, 0}, recs[4], where, run.seq0);
    EXPECT_EQ(r.check_message, recs[1].text.text) << where;
    EXPECT_EQ("      Chyba! Uvolnovana pamet byla na zacatku nebo konci bloku prepsana", recs[4].text.text) << where;
    EXPECT_EQ(0u, boxes.count()) << "row " << r.n << ": damage is logged, not shown";
  }
}

TEST(MmWatch, TableOf100AndDamagedWatchedBlocksAreLogged) {
  GuardedRun run;
  BoxRecorder boxes;
  unsigned char *p = (unsigned char *)mm_alloc(16, "w", 1);
  for (int i = 0; i < 100; i++) ASSERT_EQ(1, mm_watch(p)) << "entry " << i + 1 << boxes.dump();
  EXPECT_EQ(0, mm_watch(p));
  EXPECT_GT(kxtest::internal_error_line(boxes.only(), "mm"), 0);
  EXPECT_EQ(1, mm_unwatch(p));  // every entry of p goes
  EXPECT_EQ(1, mm_watch(p));

  p[16] = 0;  // tail
  void *q = mm_alloc(4, "alloc", 77);
  EXPECT_EQ(0, mm_test_watched("tw", 88));
  p[16] = 16;
  EXPECT_EQ(1, mm_test_watched("tw", 99));
  mm_free(q, "w", 2);
  mm_free(p, "w", 3);

  std::vector<MmLogRecord> recs = run.mine();
  char message[80];
  snprintf(message, sizeof message, "      Chyba! Pamet kontrolovaneho ukazatele %08X byla prepsana!", (unsigned)addr(p));
  ASSERT_EQ(8u, recs.size()) << kxtest::dump_mmbin(recs);
  expect_record({4, addr(q), 4, 1, 1, "alloc", 77, 0}, recs[1], "allocation", run.seq0);
  expect_record({1, 0, 0, 0, 1, "alloc", 77, 0}, recs[2], "message with the allocation's place", run.seq0);
  expect_record({1, 0, 0, 0, 3, "tw", 88, 0}, recs[3], "test", run.seq0);
  expect_record({1, 0, 0, 0, 4, "tw", 88, 0}, recs[4], "test finds p", run.seq0);
  EXPECT_EQ(message, recs[2].text.text);
  EXPECT_EQ("Test kontrolovanych ukazatelu", recs[3].text.text);
  EXPECT_EQ(message, recs[4].text.text);
  EXPECT_EQ("Test kontrolovanych ukazatelu", recs[5].text.text);
  EXPECT_EQ(6u, recs[6].kind) << "repaired: no message";

  // The allocation whose sequence number is mm_watch_seq is watched without a call.
  mm_watch_seq = run.mine().back().seq + 1;
  unsigned char *b = (unsigned char *)mm_alloc(8, "s", 1);
  b[-1] = 1;
  EXPECT_EQ(0, mm_test_watched("s", 2));
  mm_free(b, "s", 3);  // leaves the table
  EXPECT_EQ(1, mm_test_watched("s", 4));
}

TEST(MmRefusal, SizesBelowOneAndNullBlocks) {
  struct Row {
    int n;
    int kind;
    int32_t count, size;
    bool guarded_report;
  } rows[] = {{1, 5, 0, 7, true},  {2, 5, 7, 0, true},  {3, 5, -1, 7, true}, {4, 4, 1, 0, true},
              {5, 4, 1, -3, true}, {6, 7, 1, 0, false}, {7, 0, 1, 0, false}};
  for (bool guarded : {false, true}) {
    for (const Row &r : rows) {
      std::string where = std::string(guarded ? "guarded" : "normal") + " row " + std::to_string(r.n);
      GuardedRun run(guarded ? "$m" : "-m");
      BoxRecorder boxes;
      void *p = r.kind == 4 ? mm_alloc(r.size, "r", r.n)
              : r.kind == 5 ? mm_calloc(r.count, r.size, "r", r.n)
              : r.kind == 7 ? mm_zalloc(r.size, "r", r.n)
                            : mm_zalloc_anon(r.size);
      EXPECT_EQ(nullptr, p) << where;
      ASSERT_EQ(!guarded || r.guarded_report ? 1u : 0u, boxes.count()) << where << ": " << boxes.dump();
      if (boxes.count()) {
        EXPECT_GT(kxtest::internal_error_line(boxes.boxes()[0], "mm"), 0) << where;
      }
      if (!guarded) {
        EXPECT_FALSE(kxtest::exists(run.dir.file("MMBIN.MM"))) << where;
        continue;
      }
      mm_log("r", 0, "next");
      std::vector<MmLogRecord> recs = run.mine();
      ASSERT_EQ(2u, recs.size()) << where;
      expect_record({(uint16_t)(r.kind ? r.kind : 7), 0, (uint32_t)r.size, r.kind == 5 ? (uint32_t)r.count : 1, 0,
                     r.kind ? "r" : "UNKNOWN", r.kind ? (uint32_t)r.n : 0, 1},
                    recs[0], where, run.seq0);
      EXPECT_EQ(run.seq0 + 1, recs[1].seq) << where << ": sequence not advanced";
    }
  }
  GuardedRun run;
  BoxRecorder boxes;
  mm_free(nullptr, "n", 1);
  mm_check_release(nullptr, "n", 2);
  EXPECT_EQ(0u, boxes.count()) << boxes.dump();
  EXPECT_EQ(0, mm_check(nullptr));
  EXPECT_GT(kxtest::internal_error_line(boxes.only(), "mm"), 0);
  std::vector<MmLogRecord> recs = run.mine();
  ASSERT_EQ(2u, recs.size());
  expect_record({6, 0, kNoSize, 1, 0, "n", 1, 1}, recs[0], "mm_free", run.seq0);
  expect_record({8, 0, kNoSize, 1, 1, "n", 2, 1}, recs[1], "mm_check_release", run.seq0);
}

TEST(MmInjection, TheChosenHeapRequestFailsOnce) {
  for (bool guarded : {false, true}) {
    GuardedRun run(guarded ? "$M" : "");
    BoxRecorder boxes;
    mm_test_fail_after(2);
    void *p[4] = {mm_zalloc(8, "i", 1), mm_calloc(2, 4, "i", 2), mm_alloc(8, "i", 3), mm_alloc(8, "i", 4)};
    EXPECT_TRUE(p[0] && p[1] && !p[2] && p[3]) << (guarded ? "guarded" : "normal");
    mm_test_fail_after(0);
    mm_test_fail_after(-1);
    void *q = mm_alloc(8, "i", 5);
    EXPECT_NE(nullptr, q) << "negative switches injection off";
    EXPECT_EQ(0u, boxes.count()) << boxes.dump();
    for (void *b : p) mm_free(b, "i", 6);
    mm_free(q, "i", 7);
    if (guarded) {
      std::vector<MmLogRecord> recs = run.mine();
      ASSERT_LE(3u, recs.size());
      expect_record({4, 0, 8, 2, 2, "i", 3, 1}, recs[2], "failed allocation", run.seq0);
    }
  }
}

TEST(MmLifecycle, EndReturnsToNormalModeForGoodAndAnUnopenableLogLeavesIt) {
  {
    GuardedRun run;
    mm_stat_end();
    size_t size = kxtest::read_bytes(run.dir.file("MMBIN.MM")).size();
    testing::internal::CaptureStdout();
    mm_stat_end();  // normal mode now: nothing
    const char *argv[] = {"prog", "$m"};
    mm_stat_begin(2, argv);  // once per run
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    BoxRecorder boxes;
    mm_free(mm_alloc(8, "e", 1), "e", 2);
    EXPECT_EQ(nullptr, mm_zalloc(0, "e", 3));
    EXPECT_EQ(1u, boxes.count()) << "normal mode reports a zero mm_zalloc";
    EXPECT_EQ(size, kxtest::read_bytes(run.dir.file("MMBIN.MM")).size()) << "logged after the end";
  }
  ScratchDir dir;
  mm_test_reset();
  ASSERT_TRUE(std::filesystem::create_directory(dir.file("MMBIN.MM")));
  BoxRecorder boxes;
  const char *argv[] = {"prog", "$m"};
  testing::internal::CaptureStdout();
  mm_stat_begin(2, argv);
  EXPECT_EQ("Nelze otevrit soubor MMBIN.MM!", testing::internal::GetCapturedStdout());
  EXPECT_EQ(nullptr, mm_zalloc(0, "o", 1));
  EXPECT_EQ(1u, boxes.count()) << "normal mode reports a zero mm_zalloc";
  mm_test_reset();
}

}  // namespace
