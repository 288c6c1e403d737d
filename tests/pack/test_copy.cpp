// File copy: sizes around the 32,767-byte pass, the buffer fallback, the three messages, and
// every block given back (read from the memory manager's guarded log, which also notices a
// write past the copy buffer).
#include "pack/copy.h"

#include "tests/pack/pack_support.h"

#include <gtest/gtest.h>
#include <stdio.h>

#include <random>
#include <string>
#include <vector>

using kxtest::BoxRecorder;
using packtest::Ledger;

namespace {

std::string random_bytes(size_t n, unsigned seed) {
  std::mt19937 gen(seed);
  std::string s(n, '\0');
  for (char &c : s) c = (char)(gen() & 0xFF);
  return s;
}

std::string open_text(const std::string &path) { return "Nelze otevřít soubor " + path; }

TEST(Copy, SizesAroundOnePass) {
  Ledger ledger;
  const size_t sizes[] = {0, 1, 32766, 32767, 32768, 65533, 65534, 65535, 100000};
  for (size_t i = 0; i < KX_COUNT(sizes); i++) {
    std::string data = random_bytes(sizes[i], (unsigned)i);
    ASSERT_TRUE(kxtest::write_bytes("src.bin", data));
    BoxRecorder boxes;
    ledger.mark();
    EXPECT_EQ(1, CopyFile("src.bin", "dst.bin")) << "row " << i + 1 << " size " << sizes[i];
    EXPECT_TRUE(kxtest::read_bytes("dst.bin") == data) << "row " << i + 1 << " size " << sizes[i]
                                                      << " got " << kxtest::read_bytes("dst.bin").size();
    EXPECT_EQ(0u, boxes.count()) << boxes.dump();
    EXPECT_EQ("", ledger.live()) << "row " << i + 1;
    std::vector<packtest::Request> req = ledger.requests();
    ASSERT_EQ(1u, req.size()) << "row " << i + 1;
    EXPECT_EQ("copy", req[0].name);
    EXPECT_EQ(32767u, req[0].size);
    // Row 7 copies over a longer target: it must be truncated.
    if (i == 5) {
      ASSERT_TRUE(kxtest::write_bytes("dst.bin", random_bytes(200000, 99)));
    }
  }
}

TEST(Copy, FailuresShowTheirPathAndGiveBackTheBuffer) {
  Ledger ledger;
  ASSERT_TRUE(kxtest::write_bytes("src.bin", "12345"));
  const std::string missing_dir = ledger.dir().file("nodir") + "/dst.bin";
  const std::string long_missing = ledger.dir().file(std::string(KX_PATH + 1, 'n'));
  struct { const char *what; std::string source, target, text, absent; } rows[] = {
      {"missing source", "nothere.bin", "dst.bin", open_text("nothere.bin"), "dst.bin"},
      {"target in a missing directory", "src.bin", missing_dir, open_text(missing_dir), missing_dir},
      // The box holds at most 199 characters: a long path is cut there.
      {"long missing source", long_missing, "dst.bin", open_text(long_missing).substr(0, 199), "dst.bin"},
  };
  for (auto &r : rows) {
    BoxRecorder boxes;
    ledger.mark();
    EXPECT_EQ(0, CopyFile(r.source.c_str(), r.target.c_str())) << r.what;
    kxtest::Box box = boxes.only();
    EXPECT_EQ(r.text, box.text) << r.what;
    EXPECT_EQ(WE_TITLE_ERROR, box.title) << r.what;
    EXPECT_FALSE(kxtest::exists(r.absent)) << r.what;
    EXPECT_EQ("", ledger.live()) << r.what;
  }
  EXPECT_EQ("12345", kxtest::read_bytes("src.bin"));
  BoxRecorder boxes;
  EXPECT_EQ(0, CopyFile(nullptr, "dst.bin"));
  EXPECT_EQ(0, CopyFile("src.bin", nullptr));
  ASSERT_EQ(2u, boxes.count());
  for (const kxtest::Box &box : boxes.boxes()) EXPECT_GT(kxtest::internal_error_line(box, "copy"), 0);
}

TEST(Copy, FullDiskEndsWithTheWriteMessage) {
  const char *device = packtest::full_device();
  if (!device) GTEST_SKIP() << "no full device to write to on this system";
  Ledger ledger;
  // Row 1 fails in the loop's write, row 2 (fits the stream's buffer) only when it is closed.
  for (size_t size : {(size_t)100000, (size_t)100}) {
    ASSERT_TRUE(kxtest::write_bytes("src.bin", random_bytes(size, 7)));
    BoxRecorder boxes;
    ledger.mark();
    EXPECT_EQ(0, CopyFile("src.bin", device)) << size;
    EXPECT_EQ("Chyba při kopírování (zapsaná délka != přečtené délce)", boxes.only().text) << size;
    EXPECT_EQ("", ledger.live()) << size;
  }
}

// Hands out blocks only up to a limit, recording every size asked for.
int32_t g_limit;
std::vector<int32_t> g_asked;
void *limited_alloc(int32_t size, const char *file, int32_t line) {
  g_asked.push_back(size);
  return size <= g_limit ? mm_zalloc(size, file, line) : nullptr;
}

TEST(Copy, SmallerBuffersWhenMemoryIsShort) {
  Ledger ledger;
  std::string data = random_bytes(70000, 3);
  ASSERT_TRUE(kxtest::write_bytes("src.bin", data));
  // The manager's own failure injection: the first request fails, 16,383 bytes serve.
  ledger.mark();
  mm_test_fail_after(0);
  EXPECT_EQ(1, CopyFile("src.bin", "dst.bin"));
  std::vector<packtest::Request> req = ledger.requests();
  ASSERT_EQ(2u, req.size());
  EXPECT_TRUE(req[0].size == 32767 && !req[0].granted && req[1].size == 16383 && req[1].granted);
  EXPECT_TRUE(kxtest::read_bytes("dst.bin") == data);
  EXPECT_EQ("", ledger.live() + ledger.damage());

  // A run of refusals through the test allocator: the whole halving sequence.
  const std::vector<int32_t> all = {32767, 16383, 8191, 4095, 2047, 1023, 511, 255, 127, 63, 31, 15};
  struct { int32_t limit; size_t asked; size_t file_size; } rows[] = {
      {32766, 2, 70000}, {63, 10, 63 * 3}, {63, 10, 63 * 3 + 1}, {15, 12, 1000}, {15, 12, 15},
  };
  CopyAllocator previous = copy_test_set_allocator(limited_alloc);
  for (size_t i = 0; i < KX_COUNT(rows); i++) {
    std::string part = data.substr(0, rows[i].file_size);
    ASSERT_TRUE(kxtest::write_bytes("src.bin", part));
    g_limit = rows[i].limit;
    g_asked.clear();
    ledger.mark();
    BoxRecorder boxes;
    EXPECT_EQ(1, CopyFile("src.bin", "dst.bin")) << "row " << i + 1;
    EXPECT_TRUE(std::vector<int32_t>(all.begin(), all.begin() + (long)rows[i].asked) == g_asked) << "row " << i + 1;
    EXPECT_TRUE(kxtest::read_bytes("dst.bin") == part) << "row " << i + 1;
    EXPECT_EQ("", ledger.live() + ledger.damage()) << "row " << i + 1;
    EXPECT_EQ(0u, boxes.count()) << boxes.dump();
  }
  // Not even 15 bytes: " Málo paměti", and nothing is opened.
  g_limit = 14;
  g_asked.clear();
  BoxRecorder boxes;
  EXPECT_EQ(0, CopyFile("src.bin", "new.bin"));
  EXPECT_TRUE(all == g_asked);
  EXPECT_EQ(" Málo paměti", boxes.only().text);
  EXPECT_FALSE(kxtest::exists("new.bin"));
  copy_test_set_allocator(previous);
}

}  // namespace
