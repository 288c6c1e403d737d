// Memory manager: both modes, the guard words, the watched table and the MMBIN.MM log read back
// field by field.
#include "common/mm.h"
#include "tests/support/kxtest.h"
#include "tests/support/mmbin.h"

#include <gtest/gtest.h>

#include <math.h>
#include <stdio.h>
#include <string.h>
#include <time.h>

#include <filesystem>
#include <string>
#include <vector>

using kxtest::BoxRecorder;
using kxtest::MmLogRecord;
using kxtest::ScratchDir;
using Log = std::vector<MmLogRecord>;

namespace {

const uint32_t kNoSize = 0xFFFFFFFFu;
const std::string kEndMessage = "\nStatistika alokace pameti aktivni - spust program MMCH32.EXE !!!\n";

uint32_t word_at(const void *p, long offset) {
  uint32_t w;
  memcpy(&w, (const unsigned char *)p + offset, 4);
  return w;
}
uint32_t addr(const void *p) { return (uint32_t)(uintptr_t)p; }

// A block from the allocator of kind: 4 mm_alloc, 5 mm_calloc, 7 mm_zalloc, 0 mm_zalloc_anon.
void *take(int kind, int32_t count, int32_t size, int line) {
  return kind == 4 ? mm_alloc(size, "r", line) : kind == 5 ? mm_calloc(count, size, "r", line)
       : kind == 7 ? mm_zalloc(size, "r", line) : mm_zalloc_anon(size);
}

// Expected allocation record; seq counts from the seq0 given to expect_log; text (when given) is
// that of the text record.
struct Rec {
  uint16_t kind;
  uint32_t address, size, count, seq;
  std::string name;
  uint32_t line;
  uint16_t error;
  const char *text = nullptr;
};

// got (only its first want.size() records unless whole) against want, compared as dumped lines
// so that a mismatch shows every field of every record (the texts when given).
void expect_log(Log got, const std::vector<Rec> &want, uint32_t seq0, const std::string &where,
                bool whole = true) {
  if (!whole && got.size() > want.size()) got.resize(want.size());
  Log w = got;
  w.resize(want.size());
  for (size_t i = 0; i < want.size(); i++) {
    const Rec &r = want[i];
    w[i].kind = r.kind, w[i].address = r.address, w[i].size = r.size, w[i].count = r.count;
    w[i].seq = seq0 + r.seq, w[i].name = r.name, w[i].line = r.line, w[i].error = r.error;
    if (r.text) w[i].text.text = r.text;
  }
  EXPECT_EQ(kxtest::dump_mmbin(w), kxtest::dump_mmbin(got)) << where;
}

// A run in a scratch directory with the given argument, the manager reset at both ends. Other
// modules log their own entries after the start (the file layer's statistics), so the start ends
// with a marker: a counted allocation (the shared count field becomes 1) and the entry "start".
// mine() holds the records after the marker, seq0 the first sequence number after it.
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
  Log records() {
    Log r;
    std::string error;
    EXPECT_TRUE(kxtest::read_mmbin(dir.file("MMBIN.MM"), r, error)) << error;
    return r;
  }
  Log mine() {
    Log all = records();
    for (size_t i = 0; i < all.size(); i++)
      if (all[i].kind == 1 && all[i].name == "run" && all[i].text.text == "start") {
        seq0 = all[i].seq + 1;
        return Log(all.begin() + (long)i + 1, all.end());
      }
    ADD_FAILURE() << "no start marker in\n" << kxtest::dump_mmbin(all);
    return {};
  }
  void expect(const std::vector<Rec> &want, const std::string &where, bool whole = true) {
    Log got = mine();
    expect_log(got, want, seq0, where, whole);
  }
};

TEST(MmSwitch, OnlyDollarMArgumentsSwitchGuardedModeOnOnce) {
  struct Row { int n; const char *args[3]; int argc; bool guarded; } rows[] = {
      {1, {"prog", "$m"}, 2, true}, {2, {"prog", "$M"}, 2, true}, {3, {"prog", "$mfoo"}, 2, true},
      {4, {"prog", "x.d32", "$M"}, 3, true}, {5, {"prog", "-m"}, 2, false}, {6, {"prog", "$x"}, 2, false},
      {7, {"$m"}, 1, false}, {8, {"prog", "a$m"}, 2, false}};
  for (const Row &r : rows) {
    ScratchDir dir;
    BoxRecorder boxes;
    mm_test_reset();
    testing::internal::CaptureStdout();
    mm_stat_begin(r.argc, r.args);
    EXPECT_EQ(r.guarded, kxtest::exists(dir.file("MMBIN.MM"))) << "row " << r.n;
    // A zero mm_zalloc is reported in normal mode only: tells the modes apart from outside.
    EXPECT_EQ(nullptr, mm_zalloc(0, "row", r.n));
    mm_stat_end();
    const size_t size = kxtest::read_bytes(dir.file("MMBIN.MM")).size();
    mm_stat_end();                  // normal mode now: nothing
    mm_stat_begin(r.argc, r.args);  // guarded mode comes once per run
    EXPECT_EQ(nullptr, mm_zalloc(0, "row", r.n));
    EXPECT_EQ(r.guarded ? 1u : 2u, boxes.count()) << "row " << r.n << ": " << boxes.dump();
    EXPECT_EQ(size, kxtest::read_bytes(dir.file("MMBIN.MM")).size()) << "row " << r.n << ": logged after the end";
    EXPECT_EQ(r.guarded ? "Statistika otevrenych souboru : DATA.FI\n" + kEndMessage : "",
              testing::internal::GetCapturedStdout()) << "row " << r.n;
    mm_test_reset();
  }
}

TEST(MmGuarded, BlocksHave400ByteGuardsFilledWithTheSize) {
  GuardedRun run;
  struct Row { int n, kind; int32_t count, size; } rows[] = {
      {1, 4, 1, 1}, {2, 4, 1, 37}, {3, 5, 3, 5}, {4, 5, 1000, 1}, {5, 7, 1, 4096}, {6, 0, 1, 9}};
  for (const Row &r : rows) {
    unsigned char *p = (unsigned char *)take(r.kind, r.count, r.size, r.n);
    ASSERT_NE(nullptr, p) << "row " << r.n;
    uint32_t total = (uint32_t)(r.count * r.size);
    for (int i = 0; i < 100; i++) {
      ASSERT_EQ(total, word_at(p, -400 + 4 * i)) << "row " << r.n << " head word " << i;
      ASSERT_EQ(total, word_at(p, total + 4 * i)) << "row " << r.n << " tail word " << i;
    }
    if (r.kind != 4) { EXPECT_EQ(std::string(total, '\0'), std::string((char *)p, total)) << "row " << r.n; }
    memset(p, 0xA5, total);  // the user area is the caller's to the last byte
    EXPECT_EQ(1, mm_check(p)) << "row " << r.n;
    mm_free(p, "g", r.n);
  }
  // 5 logged allocations, 6 releases: the anonymous one is neither logged nor counted.
  Log recs = run.mine();
  ASSERT_EQ(11u, recs.size()) << kxtest::dump_mmbin(recs);
  EXPECT_EQ(run.seq0 + 10, recs[10].seq);
}

TEST(MmLog, RecordsReadBackFieldByField) {
  GuardedRun run("$mfoo");
  void *p1 = mm_calloc(4, 6, "C:\\src\\common\\st.cpp", 12);
  void *p2 = mm_alloc(5, "file", 20);
  mm_log("dir\\averyveryverylongname.cpp", 33, "x=%d %s", 5, "ř");
  void *p3 = mm_zalloc(8, "a/b/c.cpp", 40);
  mm_free(p2, "file", 21);
  mm_check_release(p1, "\\thirteen_char", 50);
  mm_release(p1);
  mm_free(p3, "fourteen_chars", 60);
  testing::internal::CaptureStdout();
  mm_stat_end();
  testing::internal::GetCapturedStdout();
  // The count of a kind 5 entry stays in every later shared record; kind 1 has its own record.
  Log all = run.records(), recs = run.mine();
  expect_log(recs,
             {{5, addr(p1), 6, 4, 0, "st.cpp", 12, 0}, {4, addr(p2), 5, 4, 1, "file", 20, 0},
              {1, 0, 0, 0, 2, "averyveryvery", 33, 0, "x=5 \xF8"}, {7, addr(p3), 8, 4, 3, "a/b/c.cpp", 40, 0},
              {6, addr(p2), kNoSize, 4, 4, "file", 21, 0}, {8, addr(p1), kNoSize, 4, 5, "thirteen_char", 50, 0},
              {6, addr(p3), kNoSize, 4, 6, "fourteen_char", 60, 0}},
             run.seq0, "records", false);
  expect_log({all.at(0)}, {{2, 0, 0, 0, 1, "", 0, 0}}, 0, "start");
  EXPECT_EQ("C:\\KORVEX\\EXE\\KORV5.EXE $mfoo ", all[0].text.text);
  ASSERT_LT(7u, recs.size());
  for (const MmLogRecord &r : all)
    EXPECT_EQ(r.name + std::string(14 - r.name.size(), '\0'), r.raw_name) << "name field not NUL-padded";
  // The end record writes kind and sequence number; the rest is the previous entry's.
  const MmLogRecord &end = recs.back(), &before = recs[recs.size() - 2];
  expect_log({end}, {{3, before.address, before.size, before.count, 1, before.name, before.line, before.error}},
             before.seq, "end");
  EXPECT_EQ(all[0].text.text, end.text.text);
  // Text records carry the local time, field by field: within two minutes of the clock.
  for (const MmLogRecord *r : {&all[0], &recs[2], &recs.back()}) {
    const kxtest::MmTextRecord &t = r->text;
    struct tm tm = {};
    tm.tm_year = (int)t.year - 1900, tm.tm_mon = t.month - 1, tm.tm_mday = t.day, tm.tm_isdst = -1;
    tm.tm_hour = t.hour, tm.tm_min = t.minute, tm.tm_sec = t.second;
    EXPECT_LE(fabs(difftime(time(nullptr), mktime(&tm))), 120.0) << t.year << "-" << +t.month << "-" << +t.day
                                                                  << " " << +t.hour << ":" << +t.minute;
    EXPECT_LT(t.hundredths, 100);
    EXPECT_EQ(t.text + std::string(200 - t.text.size(), '\0'), t.raw) << "text field not NUL-padded";
  }
}

TEST(MmLog, TextsAreCutAt199Characters) {
  for (size_t length : {198u, 199u, 200u, 1025u}) {
    // The program path and its blank are 24 characters; every argument is followed by a blank.
    std::string arg = "$m" + kxtest::pattern_text(length - 27);
    GuardedRun run(arg.c_str());
    mm_log("t", 1, "%s", kxtest::pattern_text(length).c_str());
    run.expect({{1, 0, 0, 0, 0, "t", 1, 0, kxtest::pattern_text(std::min<size_t>(length, 199)).c_str()}}, arg);
    EXPECT_EQ(("C:\\KORVEX\\EXE\\KORV5.EXE " + arg + " ").substr(0, 199), run.records()[0].text.text) << length;
  }
}

TEST(MmDamage, GuardsFindWritesJustOutsideTheBlock) {
  enum { NONE, BEFORE, PAST_END, TAIL_SAME, HEAD_WILD };
  const std::string head = "      Chyba! Uvolnovana pamet byla na zacatku bloku prepsana",
                    tail = "      Chyba! Uvolnovana pamet byla na konci bloku prepsana";
  struct Row { int n, damage; int32_t size; std::string message; } rows[] = {  // message "": intact
      {1, NONE, 24, ""}, {2, BEFORE, 24, head}, {3, PAST_END, 24, tail}, {4, PAST_END, 1, tail},
      {5, TAIL_SAME, 24, ""}, {6, BEFORE, 3, head}, {7, HEAD_WILD, 24, head}};
  for (const Row &r : rows) {
    GuardedRun run;
    BoxRecorder boxes;
    unsigned char *p = (unsigned char *)mm_alloc(r.size, "d", r.n);
    if (r.damage == BEFORE) p[-1] = 0x5A;  // into the last head word
    if (r.damage == PAST_END) p[r.size] ^= 0xFF;
    if (r.damage == TAIL_SAME) memset(p + r.size, 0x77, 400);  // neighbours stay equal
    if (r.damage == HEAD_WILD) memset(p - 400, 0x7F, 400);     // a size far past the block
    const bool bad = !r.message.empty();
    EXPECT_EQ(bad ? 0 : 1, mm_check(p)) << "row " << r.n;
    mm_check_release(p, "d", 100 + r.n);
    mm_free(p, "d", 200 + r.n);
    const std::string where = "row " + std::to_string(r.n);
    const uint32_t a = addr(p), n = (uint32_t)r.n;
    if (!bad) {
      run.expect({{4, a, (uint32_t)r.size, 1, 0, "d", n, 0}, {8, a, kNoSize, 1, 1, "d", 100 + n, 0},
                  {6, a, kNoSize, 1, 2, "d", 200 + n, 0}}, where);
      continue;
    }
    // The message of mm_check_release comes before its record, that of mm_free after it.
    const char *freed = "      Chyba! Uvolnovana pamet byla na zacatku nebo konci bloku prepsana";
    run.expect({{4, a, (uint32_t)r.size, 1, 0, "d", n, 0}, {1, 0, 0, 0, 2, "d", 100 + n, 0, r.message.c_str()},
                {8, a, kNoSize, 1, 1, "d", 100 + n, 1}, {6, a, kNoSize, 1, 3, "d", 200 + n, 1},
                {1, 0, 0, 0, 4, "d", 200 + n, 0, freed}}, where);
    EXPECT_EQ(0u, boxes.count()) << where << ": damage is logged, not shown";
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
  // A damage message during an allocation has the allocation's place and number; each advances.
  char bad[80];
  snprintf(bad, sizeof bad, "      Chyba! Pamet kontrolovaneho ukazatele %08X byla prepsana!", addr(p));
  const char *test = "Test kontrolovanych ukazatelu";
  run.expect({{4, addr(p), 16, 1, 0, "w", 1, 0}, {4, addr(q), 4, 1, 1, "alloc", 77, 0},
              {1, 0, 0, 0, 1, "alloc", 77, 0, bad}, {1, 0, 0, 0, 3, "tw", 88, 0, test},
              {1, 0, 0, 0, 4, "tw", 88, 0, bad}, {1, 0, 0, 0, 5, "tw", 99, 0, test},
              {6, addr(q), kNoSize, 1, 6, "w", 2, 0}, {6, addr(p), kNoSize, 1, 7, "w", 3, 0}}, "watched");

  // The allocation whose sequence number is mm_watch_seq is watched without a call.
  mm_watch_seq = run.seq0 + 8;
  unsigned char *b = (unsigned char *)mm_alloc(8, "s", 1);
  b[-1] = 1;
  EXPECT_EQ(0, mm_test_watched("s", 2));
  mm_free(b, "s", 3);  // leaves the table
  EXPECT_EQ(1, mm_test_watched("s", 4));
}

TEST(MmRefusal, SizesBelowOneAndNullBlocks) {
  // report: an internal error also in guarded mode (normal mode always reports)
  struct Row { int n, kind; int32_t count, size; bool report; } rows[] = {
      {1, 5, 0, 7, true}, {2, 5, 7, 0, true}, {3, 5, -1, 7, true}, {4, 4, 1, 0, true}, {5, 4, 1, -3, true},
      {6, 7, 1, 0, false}, {7, 0, 1, 0, false}};
  for (bool guarded : {false, true})
    for (const Row &r : rows) {
      const std::string where = (guarded ? "guarded row " : "normal row ") + std::to_string(r.n);
      GuardedRun run(guarded ? "$m" : "-m");
      BoxRecorder boxes;
      EXPECT_EQ(nullptr, take(r.kind, r.count, r.size, r.n)) << where;
      ASSERT_EQ(!guarded || r.report ? 1u : 0u, boxes.count()) << where << ": " << boxes.dump();
      if (boxes.count()) { EXPECT_GT(kxtest::internal_error_line(boxes.boxes()[0], "mm"), 0) << where; }
      if (!guarded) continue;
      mm_log("r", 0, "next");  // its number shows that the refusal advanced it
      run.expect({{(uint16_t)(r.kind ? r.kind : 7), 0, (uint32_t)r.size, r.kind == 5 ? (uint32_t)r.count : 1, 0,
                   r.kind ? "r" : "UNKNOWN", r.kind ? (uint32_t)r.n : 0, 1},
                  {1, 0, 0, 0, 1, "r", 0, 0, "next"}}, where);
    }
  GuardedRun run;
  BoxRecorder boxes;
  mm_free(nullptr, "n", 1);
  mm_check_release(nullptr, "n", 2);
  EXPECT_EQ(0u, boxes.count()) << boxes.dump();
  EXPECT_EQ(0, mm_check(nullptr));
  EXPECT_GT(kxtest::internal_error_line(boxes.only(), "mm"), 0);
  run.expect({{6, 0, kNoSize, 1, 0, "n", 1, 1}, {8, 0, kNoSize, 1, 1, "n", 2, 1}}, "null");
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
    if (guarded)
      run.expect({{7, addr(p[0]), 8, 1, 0, "i", 1, 0}, {5, addr(p[1]), 4, 2, 1, "i", 2, 0},
                  {4, 0, 8, 2, 2, "i", 3, 1}}, "failed allocation", false);
  }
}

TEST(MmLifecycle, AnUnopenableLogLeavesNormalMode) {
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
