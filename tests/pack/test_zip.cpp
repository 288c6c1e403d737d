// Packed files: the object, the buffer capacity rule, every operation in both directions, and
// the limit that stops a bomb.
#include "pack/zip_util.h"

#include "tests/pack/pack_support.h"
#include "tests/pack/zlib_fixtures.h"

#include <gtest/gtest.h>
#include <string.h>
#include <zlib.h>

#include <string>
#include <vector>

using kxtest::BoxRecorder;
using packtest::Ledger;

namespace {

std::string hex(const char *h) {
  std::string s;
  for (; h[0] && h[1]; h += 2) s += (char)std::stoi(std::string(h, 2), nullptr, 16);
  return s;
}
const std::string kPlain = std::string(zfix::kText) + zfix::kText + zfix::kText;
const std::string kBody = hex(zfix::kBody);
const std::string kPacked9 = hex(zfix::kHeader9) + kBody;
const std::string kZeros = hex(zfix::kZerosHead) + std::string(zfix::kZerosRun, '\0') + hex(zfix::kZerosTail);

// Takes a buffer handed out by the module and gives it back to the manager.
std::string take(unsigned char *&buffer, uint32_t length) {
  std::string s(buffer ? (const char *)buffer : "", buffer ? length : 0);
  if (buffer) mm_free(buffer, MM_HERE), buffer = nullptr;
  return s;
}

// zlib's own inflate, as a second reader of what the module packs.
std::string zlib_inflate(const std::string &packed, size_t plain_size) {
  std::vector<Bytef> out(plain_size + 1);
  uLongf n = (uLongf)out.size();
  int rc = uncompress(out.data(), &n, (const Bytef *)packed.data(), (uLong)packed.size());
  return rc == Z_OK ? std::string((const char *)out.data(), n) : "zlib error " + std::to_string(rc);
}

ZipUtil fresh() {
  ZipUtil zip;
  memset(&zip, 0x5A, sizeof zip);
  ZipInit(&zip);
  return zip;
}

TEST(ZipObject, InitLevelBlockSizeError) {
  ZipUtil zip = fresh();
  EXPECT_TRUE(zip.level == -1 && zip.block_size == 1024 && zip.last_error == 0)
      << zip.level << " " << zip.block_size << " " << zip.last_error;
  const struct { int16_t level; int ok; } rows[] = {{-2, 0}, {-1, 1}, {0, 1}, {9, 1}, {10, 0}, {-32768, 0}};
  for (size_t i = 0; i < KX_COUNT(rows); i++) {
    zip.level = 3;
    zip.last_error = -3;
    EXPECT_EQ(rows[i].ok, SetLevel(&zip, rows[i].level)) << "row " << i + 1;
    EXPECT_EQ(rows[i].ok ? rows[i].level : 3, zip.level) << "row " << i + 1;
    EXPECT_EQ(-3, GetError(&zip)) << "row " << i + 1;
  }
}

TEST(ZipBuffer, CapacityRuleAndRoundTrip) {
  Ledger ledger;
  const struct { uint32_t length, capacity; } rows[] = {
      {0, 256}, {1, 256}, {1000, 1280}, {2303, 2560}, {10000, 11264}, {300000, 330240}};
  for (size_t i = 0; i < KX_COUNT(rows); i++) {
    for (int16_t level : {-1, 0, 9}) {
      SCOPED_TRACE("row " + std::to_string(i + 1) + " level " + std::to_string(level));
      const std::string data = packtest::random_bytes(rows[i].length, (unsigned)i);  // the worst case
      ZipUtil zip = fresh();
      SetLevel(&zip, level);
      unsigned char *out = nullptr, *back = nullptr;
      uint32_t n = 0, m = 0;
      ledger.mark();
      ASSERT_EQ(1, CompressBuffer(&zip, data.data(), rows[i].length, &out, &n));
      EXPECT_EQ(std::vector<uint32_t>{rows[i].capacity}, ledger.requests("zip_util"));
      const std::string packed = take(out, n);
      EXPECT_TRUE(zlib_inflate(packed, data.size()) == data);
      ASSERT_EQ(1, DecompressBuffer(&zip, packed.data(), n, &back, &m));
      EXPECT_TRUE(take(back, m) == data) << "got " << m << " bytes";
      EXPECT_EQ(0, zip.last_error);
      EXPECT_EQ("", ledger.leftovers());
    }
  }
}

// Each operation's output is checked in the sweep below; here the targets that differ.
TEST(ZipFile, EveryOperationBothWays) {
  Ledger ledger;
  BoxRecorder boxes;
  ZipUtil zip = fresh();
  ASSERT_TRUE(kxtest::write_bytes("old.txt", std::string(5000, 'o')) && kxtest::write_bytes("empty", "") &&
              kxtest::write_bytes("zeros.z", kZeros) && kxtest::write_bytes("c.z", kPacked9));
  ledger.mark();
  EXPECT_EQ(1, DecompressFile(&zip, "c.z", "old.txt"));  // an existing, longer target
  EXPECT_TRUE(kxtest::read_bytes("old.txt") == kPlain);
  EXPECT_EQ(1, DecompressFile(&zip, "zeros.z", "zeros"));  // exactly the inflated length
  EXPECT_TRUE(kxtest::read_bytes("zeros") == std::string(zfix::kMegabyte, '\0'));
  EXPECT_EQ(1, CompressFile(&zip, "empty", "empty.z"));  // an empty file packs and unpacks
  EXPECT_EQ(8u, kxtest::read_bytes("empty.z").size());
  EXPECT_EQ(1, DecompressFile(&zip, "empty.z", "empty.out"));
  EXPECT_TRUE(kxtest::exists("empty.out") && kxtest::read_bytes("empty.out").empty());
  EXPECT_EQ(0, zip.last_error);
  EXPECT_EQ(0u, boxes.count()) << boxes.dump();
  EXPECT_EQ("", ledger.leftovers());
}

}  // namespace

// A stream that inflates far past what it may give stops at the limit with -5 and hands out
// nothing; the same stream under a limit it fits into inflates whole.
TEST(ZipLimit, BombStopsAtTheLimit) {
  const uint32_t plain = 48u << 20;
  std::string zeros(plain, '\0');
  uLongf packed_len = compressBound(plain);
  std::vector<Bytef> packed(packed_len);
  ASSERT_EQ(Z_OK, compress2(packed.data(), &packed_len, (const Bytef *)zeros.data(), plain, 9));
  zeros.clear();
  const struct { uint32_t limit; int ok; } rows[] = {
      {1u << 20, 0}, {plain / 2, 0}, {plain + (8u << 20), 1}, {0, 1}};
  Ledger ledger;
  for (size_t i = 0; i < KX_COUNT(rows); i++) {
    ledger.mark();
    ZipUtil zip = fresh();
    zip.out_limit = rows[i].limit;
    unsigned char *out = nullptr;
    uint32_t out_length = 12345;
    Flag ok = DecompressBuffer(&zip, packed.data(), (uint32_t)packed_len, &out, &out_length);
    EXPECT_EQ(rows[i].ok, ok) << "row " << i << ": error " << zip.last_error;
    if (ok) {
      EXPECT_EQ(plain, out_length) << "row " << i;
      take(out, out_length);
    } else {
      EXPECT_TRUE(zip.last_error == Z_BUF_ERROR && out == nullptr && out_length == 0)
          << "row " << i << ": error " << zip.last_error << ", length " << out_length;
    }
    EXPECT_EQ("", ledger.leftovers()) << "row " << i;
  }
}
