// Memory manager: the guard words of guarded mode and the damage they find.
#include "common/mm.h"
#include "tests/support/kxtest.h"
#include "tests/support/mmbin.h"

#include <gtest/gtest.h>

#include <string.h>

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

}  // namespace
