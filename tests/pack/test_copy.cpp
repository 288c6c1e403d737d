// File copy: sizes around the 32,767-byte pass, the smaller buffers, the three messages, and
// every block given back (the guarded log also notices a write past the copy buffer).
#include "pack/copy.h"

#include "tests/pack/pack_support.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using kxtest::BoxRecorder;
using packtest::Ledger;
using packtest::random_bytes;

namespace {

std::string open_text(const std::string &path) { return "Nelze otevřít soubor " + path; }

TEST(Copy, SizesAroundOnePass) {
  Ledger ledger;
  const size_t sizes[] = {0, 1, 32766, 32767, 32768, 65534, 65535, 100000};
  for (size_t i = 0; i < KX_COUNT(sizes); i++) {
    SCOPED_TRACE("row " + std::to_string(i + 1) + " size " + std::to_string(sizes[i]));
    std::string data = random_bytes(sizes[i], (unsigned)i);
    ASSERT_TRUE(kxtest::write_bytes("src.bin", data));
    ASSERT_TRUE(i != 2 || kxtest::write_bytes("dst.bin", random_bytes(200000, 99)));  // a longer target
    BoxRecorder boxes;
    ledger.mark();
    EXPECT_EQ(1, CopyFile("src.bin", "dst.bin"));
    std::string got = kxtest::read_bytes("dst.bin");
    EXPECT_TRUE(got == data) << "got " << got.size() << " bytes";
    EXPECT_EQ(0u, boxes.count()) << boxes.dump();
    EXPECT_EQ("", ledger.leftovers());
    EXPECT_EQ(std::vector<uint32_t>{32767}, ledger.requests("copy"));
  }
}

TEST(Copy, FailuresShowTheirPathAndGiveBackTheBuffer) {
  Ledger ledger;
  ASSERT_TRUE(kxtest::write_bytes("src.bin", "12345"));
  const std::string no_dir = ledger.dir().file("nodir") + "/dst.bin";
  const std::string long_missing = ledger.dir().file(std::string(KX_PATH + 1, 'n'));
  struct { std::string source, target, text, absent; } rows[] = {
      /* 1 */ {"nothere.bin", "dst.bin", open_text("nothere.bin"), "dst.bin"},
      /* 2 */ {"src.bin", no_dir, open_text(no_dir), no_dir},
      /* 3 */ {long_missing, "dst.bin", open_text(long_missing).substr(0, 199), "dst.bin"},  // cut
  };
  for (size_t i = 0; i < KX_COUNT(rows); i++) {
    BoxRecorder boxes;
    ledger.mark();
    EXPECT_EQ(0, CopyFile(rows[i].source.c_str(), rows[i].target.c_str())) << "row " << i + 1;
    kxtest::Box box = boxes.only();
    EXPECT_TRUE(box.text == rows[i].text && box.title == WE_TITLE_ERROR) << "row " << i + 1 << boxes.dump();
    EXPECT_FALSE(kxtest::exists(rows[i].absent)) << "row " << i + 1;
    EXPECT_EQ("", ledger.leftovers()) << "row " << i + 1;
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
  // 100,000 bytes fail in the loop's write, 100 (within the stream's buffer) only at the close.
  for (size_t size : {(size_t)100000, (size_t)100}) {
    ASSERT_TRUE(kxtest::write_bytes("src.bin", random_bytes(size, 7)));
    BoxRecorder boxes;
    ledger.mark();
    EXPECT_EQ(0, CopyFile("src.bin", device)) << size;
    EXPECT_EQ("Chyba při kopírování (zapsaná délka != přečtené délce)", boxes.only().text) << size;
    EXPECT_EQ("", ledger.leftovers()) << size;
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
  const std::string data = random_bytes(70000, 3);
  const std::vector<int32_t> all = {32767, 16383, 8191, 4095, 2047, 1023, 511, 255, 127, 63, 31, 15};
  struct { int32_t limit; size_t asked, file_size; } rows[] = {  // row 6: not even 15 bytes
      {32766, 2, 70000}, {63, 10, 63 * 3}, {63, 10, 63 * 3 + 1}, {15, 12, 1000}, {15, 12, 15}, {14, 12, 15},
  };
  CopyAllocator previous = copy_test_set_allocator(limited_alloc);
  for (size_t i = 0; i < KX_COUNT(rows); i++) {
    SCOPED_TRACE("row " + std::to_string(i + 1));
    const std::string part = data.substr(0, rows[i].file_size);
    ASSERT_TRUE(kxtest::write_bytes("src.bin", part));
    remove("dst.bin");
    g_limit = rows[i].limit;
    g_asked.clear();
    BoxRecorder boxes;
    ledger.mark();
    const bool enough = rows[i].limit >= 15;
    EXPECT_EQ(enough ? 1 : 0, CopyFile("src.bin", "dst.bin"));
    EXPECT_TRUE(std::vector<int32_t>(all.begin(), all.begin() + (long)rows[i].asked) == g_asked);
    if (enough) EXPECT_TRUE(kxtest::read_bytes("dst.bin") == part);
    else EXPECT_FALSE(kxtest::exists("dst.bin"));  // nothing is opened
    EXPECT_EQ(enough ? "" : " Málo paměti", boxes.count() ? boxes.only().text : "") << boxes.dump();
    EXPECT_EQ("", ledger.leftovers());
  }
  copy_test_set_allocator(previous);
}

// The copy that hands its bytes on: the same target as CopyFile, the bytes given back in one
// block of its own, and on a failure CopyFile's box and nothing held.
TEST(Copy, KeepingHandsBackTheBytesCopied) {
  Ledger ledger;
  for (size_t size : {(size_t)0, (size_t)1, (size_t)100000}) {
    SCOPED_TRACE("size " + std::to_string(size));
    const std::string data = random_bytes(size, 5);
    ASSERT_TRUE(kxtest::write_bytes("src.bin", data));
    remove("dst.bin");
    BoxRecorder boxes;
    ledger.mark();
    unsigned char *kept = nullptr;
    uint32_t length = 7;
    EXPECT_EQ(1, CopyFileKeeping("src.bin", "dst.bin", &kept, &length));
    EXPECT_TRUE(kxtest::read_bytes("dst.bin") == data);
    ASSERT_TRUE(kept != nullptr);
    EXPECT_TRUE(std::string((const char *)kept, length) == data) << length;
    mm_free(kept, MM_HERE);
    EXPECT_EQ(0u, boxes.count()) << boxes.dump();
    EXPECT_EQ("", ledger.leftovers());
  }
  // A target that cannot be made, after the source is open: nothing kept, nothing held.
  const std::string no_dir = ledger.dir().file("nodir") + "/dst.bin";
  BoxRecorder boxes;
  ledger.mark();
  unsigned char *kept = (unsigned char *)1;
  uint32_t length = 7;
  EXPECT_EQ(0, CopyFileKeeping("src.bin", no_dir.c_str(), &kept, &length));
  EXPECT_TRUE(kept == nullptr && length == 0);
  EXPECT_EQ(open_text(no_dir), boxes.only().text);
  EXPECT_EQ("", ledger.leftovers());
}

}  // namespace
