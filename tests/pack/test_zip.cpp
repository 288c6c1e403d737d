// Packed files: the object, the error texts, every operation in both directions, streams made
// by another producer, the file halves' failures, the argument guards, and a memory failure at
// every allocation of each operation with nothing left behind.
#include "pack/zip_util.h"

#include "tests/pack/pack_support.h"
#include "tests/pack/zlib_fixtures.h"

#include <gtest/gtest.h>
#include <string.h>
#include <zlib.h>

#include <functional>
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

TEST(ZipErrorText, EveryCode) {
  const char *unknown = "Neznámá chyba při kompresi/dekompresi dat";
  const struct { int16_t code; const char *text; } rows[] = {
      {0, "Komprese/dekomprese dat bez chyb"}, {1, "Komprese/dekomprese dat - konec dat"},
      {2, "Komprese/dekomprese dat - MSG_zip_need_dict"}, {-4, "Komprese/dekomprese dat - málo paměti"},
      {-1, "Komprese/dekomprese dat - chyba při práci se soubory"},
      {-2, "Komprese/dekomprese dat - neočekávaný konec dat"},
      {-3, "Komprese/dekomprese dat - chyba ve vstupních datech"},
      {-5, "Komprese/dekomprese dat - nepostačující buffer"}, {-6, "Komprese/dekomprese dat - chybná verze dat"},
      {-10, "Komprese/dekomprese dat - chyba při práci se soubory"},
      {3, unknown}, {-7, unknown}, {-9, unknown}, {-11, unknown},
  };
  for (size_t i = 0; i < KX_COUNT(rows); i++)
    EXPECT_STREQ(rows[i].text, ZipErrorText(rows[i].code)) << "row " << i + 1 << " code " << rows[i].code;
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

TEST(ZipBuffer, StreamsOfAnotherProducer) {
  Ledger ledger;
  const std::string p6 = hex(zfix::kHeader6) + kBody, megabyte(zfix::kMegabyte, '\0');
  std::string bad_header = p6;
  bad_header[1] ^= 1;
  const struct { std::string packed; int16_t code; const std::string &plain; } rows[] = {
      /* 1 */ {hex(zfix::kStoredHead) + kPlain + hex(zfix::kAdler), 0, kPlain},
      /* 2 */ {hex(zfix::kHeader1) + kBody, 0, kPlain},
      /* 3 */ {p6, 0, kPlain},
      /* 4 */ {kPacked9, 0, kPlain},
      /* 5 */ {p6 + std::string(300, 'X'), 0, kPlain},  // bytes after the stream
      /* 6 */ {kZeros, 0, megabyte},
      /* 7 */ {kBody.substr(0, kBody.size() - 4), -3, kPlain},  // raw deflate
      /* 8 */ {bad_header, -3, kPlain},
      /* 9 */ {p6.substr(0, p6.size() - 1), -5, kPlain},
      /* 10 */ {p6.substr(0, 1), -5, kPlain},
  };
  for (size_t i = 0; i < KX_COUNT(rows); i++) {
    SCOPED_TRACE("row " + std::to_string(i + 1));
    ZipUtil zip = fresh();
    unsigned char *out = nullptr;
    uint32_t n = 12345;
    ledger.mark();
    Flag ok = DecompressBuffer(&zip, rows[i].packed.data(), (uint32_t)rows[i].packed.size(), &out, &n);
    EXPECT_EQ(rows[i].code == 0, ok);
    EXPECT_EQ(rows[i].code, zip.last_error);
    EXPECT_EQ(ok ? rows[i].plain.size() : 0, n);
    EXPECT_TRUE(ok ? take(out, n) == rows[i].plain : out == nullptr);
    EXPECT_EQ("", ledger.leftovers());
    if (i == 5) {  // whole steps (the packed length rounded up to 256); the buffer handed out
                   // holds the fewest steps that hold the data, built from a handful of blocks
      const std::vector<uint32_t> req = ledger.requests("zip_util");
      ASSERT_GE(req.size(), 3u);
      EXPECT_EQ(1280u, req.front());
      EXPECT_EQ(820u * 1280, req.back());
      EXPECT_LE(req.size(), 14u) << "one block per step would be quadratic";
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

TEST(ZipFile, FailuresLeaveNoTargetAndTheirCode) {
  Ledger ledger;
  const std::string p6 = hex(zfix::kHeader6) + kBody;
  std::string bad_adler = p6;
  bad_adler.back() ^= 0x40;
  ASSERT_TRUE(kxtest::write_bytes("bad.z", bad_adler) && kxtest::write_bytes("cut.z", p6.substr(0, 100)) &&
              kxtest::write_bytes("good.z", p6) && kxtest::write_bytes("empty.z", "") &&
              kxtest::write_bytes("plain", kPlain));
  const std::string missing = ledger.dir().file("missing.z"), no_dir = ledger.dir().file("nodir") + "/t";
  const std::string box_missing = "Soubor " + missing + " nelze otevřít";
  const std::string box_no_dir = "Soubor " + no_dir + " nelze otevřít";
  // before: the last error before the call (99: a fresh object's 0); box: the file layer's.
  const struct { bool pack; std::string source, target; int16_t before, code; std::string box; } rows[] = {
      /* 1 */ {false, missing, "t", -3, -3, box_missing},
      /* 2 */ {false, missing, "t", 99, 0, box_missing},
      /* 3 */ {false, "good.z", no_dir, 0, -10, box_no_dir},
      /* 4 */ {false, "bad.z", "t", 0, -3, ""},
      /* 5 */ {false, "cut.z", "t", 0, -5, ""},
      /* 6 */ {false, "empty.z", "t", 0, -5, ""},
      /* 7 */ {true, missing, "t", -4, -4, box_missing},
      /* 8 */ {true, "plain", no_dir, 0, -10, box_no_dir},
  };
  for (size_t i = 0; i < KX_COUNT(rows); i++) {
    SCOPED_TRACE("row " + std::to_string(i + 1));
    const auto &r = rows[i];
    ASSERT_TRUE(kxtest::write_bytes("t", "previous"));
    ZipUtil zip = fresh();
    if (r.before != 99) zip.last_error = r.before;
    BoxRecorder boxes;
    ledger.mark();
    EXPECT_EQ(0, r.pack ? CompressFile(&zip, r.source.c_str(), r.target.c_str())
                        : DecompressFile(&zip, r.source.c_str(), r.target.c_str()));
    EXPECT_EQ(r.code, GetError(&zip));
    EXPECT_EQ(r.box, boxes.count() ? boxes.only().text : "") << boxes.dump();
    EXPECT_EQ("previous", kxtest::read_bytes("t")) << "an existing target is untouched";
    EXPECT_FALSE(kxtest::exists(no_dir));
    EXPECT_EQ("", ledger.leftovers());
  }
  EXPECT_TRUE(kxtest::read_bytes("good.z") == p6);  // the source of row 3 is left as it was
}

TEST(ZipFile, FullDiskIsAFileError) {
  const char *device = packtest::full_device();
  if (!device) GTEST_SKIP() << "no full device to write to on this system";
  Ledger ledger;
  ASSERT_TRUE(kxtest::write_bytes("big.z", kZeros) && kxtest::write_bytes("small.z", kPacked9));
  for (const char *source : {"big.z", "small.z"}) {  // small.z fails only when flushed at the close
    ZipUtil zip = fresh();
    BoxRecorder boxes;
    ledger.mark();
    EXPECT_EQ(0, DecompressFile(&zip, source, device)) << source;
    EXPECT_EQ(-10, zip.last_error) << source;
    EXPECT_EQ(std::string("Do souboru ") + device + " nelze zapisovat (plný disk?)", boxes.only().text) << source;
    EXPECT_EQ("", ledger.leftovers()) << source;
  }
}

TEST(ZipFile, FailedCompressionGivesBackItsBuffer) {
  Ledger ledger;
  ASSERT_TRUE(kxtest::write_bytes("plain", kPlain));
  ZipUtil zip = fresh();
  zip.level = 42;  // written past SetLevel: compress2 refuses it with -2
  unsigned char *out = nullptr;
  uint32_t n = 7;
  ledger.mark();
  EXPECT_EQ(0, CompressBuffer(&zip, kPlain.data(), (uint32_t)kPlain.size(), &out, &n));
  EXPECT_TRUE(out != nullptr && n == 0) << n;  // the caller's to free
  take(out, 0);
  EXPECT_EQ(0, CompressBufferToFile(&zip, kPlain.data(), (uint32_t)kPlain.size(), "t1"));
  EXPECT_EQ(0, CompressFile(&zip, "plain", "t2"));
  EXPECT_EQ(-2, zip.last_error);
  EXPECT_FALSE(kxtest::exists("t1") || kxtest::exists("t2"));
  EXPECT_EQ("", ledger.leftovers());
}

TEST(ZipBuffer, ArgumentGuardsLeaveTheFieldAlone) {
  Ledger ledger;
  ASSERT_TRUE(kxtest::write_bytes("t", kPacked9));
  ZipUtil zip = fresh();
  zip.last_error = 7;
  unsigned char held = 0, *out = nullptr, *full = &held;
  uint32_t n = 0;
  const char *d = "data";
  BoxRecorder boxes;
  ledger.mark();
  ZipInit(nullptr);
  const int16_t got[] = {
      /* 1 */ SetLevel(nullptr, 1),                         /* 2 */ SetBlockSize(nullptr, 1),
      /* 3 */ GetError(nullptr),                            /* 4 */ CompressBuffer(nullptr, d, 4, &out, &n),
      /* 5 */ CompressBuffer(&zip, d, 4, &full, &n),        /* 6 */ CompressBuffer(&zip, nullptr, 4, &out, &n),
      /* 7 */ DecompressBuffer(&zip, kPacked9.data(), 4, &full, &n),
      /* 8 */ CompressBufferToFile(&zip, nullptr, 4, "t"),  /* 9 */ CompressBufferToFile(&zip, d, 0, "t"),
      /* 10 */ CompressBufferToFile(&zip, d, 4, nullptr),   /* 11 */ DecompressBufferToFile(nullptr, d, 4, "t"),
      /* 12 */ CompressFileToBuffer(&zip, nullptr, &out, &n),
      /* 13 */ CompressFileToBuffer(&zip, "t", &full, &n),  /* 14 */ CompressFile(&zip, nullptr, "t2"),
      /* 15 */ DecompressFile(&zip, "t", nullptr),
  };
  for (size_t i = 0; i < KX_COUNT(got); i++) EXPECT_EQ(0, got[i]) << "row " << i + 1;
  ASSERT_EQ(KX_COUNT(got) + 1, boxes.count()) << boxes.dump();  // ZipInit reports too
  for (const kxtest::Box &box : boxes.boxes()) EXPECT_GT(kxtest::internal_error_line(box, "zip_util"), 0) << box.text;
  EXPECT_EQ(7, zip.last_error);
  EXPECT_TRUE(out == nullptr && full == &held && held == 0);
  EXPECT_TRUE(ledger.requests().empty());
  EXPECT_FALSE(kxtest::exists("t2"));
}

// zlib's infcover.c way: run each operation once (its output checked) to count its block
// requests, then again with the 1st, 2nd, ... request failing. Every run must fail with -4 or
// -10, show at most the file layer's " Málo paměti", write no target and give every block back.
TEST(ZipFailure, EveryAllocationOfEachOperation) {
  Ledger ledger;
  ASSERT_TRUE(kxtest::write_bytes("plain", kPlain) && kxtest::write_bytes("packed", kPacked9));
  const std::string &plain = kPlain, &packed = kPacked9;  // the output grows once on the way
  unsigned char *out = nullptr;
  uint32_t n = 0;
  const uint32_t pn = (uint32_t)plain.size(), kn = (uint32_t)packed.size();
  std::string got;  // the output of a buffer operation
  const std::function<Flag(ZipUtil *)> ops[] = {  // packing and unpacking alternate
      [&](ZipUtil *z) { Flag f = CompressBuffer(z, plain.data(), pn, &out, &n); got = take(out, n); return f; },
      [&](ZipUtil *z) { Flag f = DecompressBuffer(z, packed.data(), kn, &out, &n); got = take(out, n); return f; },
      [&](ZipUtil *z) { return CompressBufferToFile(z, plain.data(), pn, "t"); },
      [&](ZipUtil *z) { return DecompressBufferToFile(z, packed.data(), kn, "t"); },
      [&](ZipUtil *z) { Flag f = CompressFileToBuffer(z, "plain", &out, &n); got = take(out, n); return f; },
      [&](ZipUtil *z) { Flag f = DecompressFileToBuffer(z, "packed", &out, &n); got = take(out, n); return f; },
      [&](ZipUtil *z) { return CompressFile(z, "plain", "t"); },
      [&](ZipUtil *z) { return DecompressFile(z, "packed", "t"); },
  };
  for (size_t op = 0; op < KX_COUNT(ops); op++) {
    ZipUtil zip = fresh();
    remove("t");
    ledger.mark();
    ASSERT_EQ(1, ops[op](&zip)) << "operation " << op + 1;
    if (op % 4 >= 2) got = kxtest::read_bytes("t");
    EXPECT_TRUE((op % 2 ? got : zlib_inflate(got, pn)) == plain) << "operation " << op + 1;
    const size_t requests = ledger.requests().size();
    EXPECT_GE(requests, 1u) << "operation " << op + 1;
    for (size_t k = 0; k < requests; k++) {
      SCOPED_TRACE("operation " + std::to_string(op + 1) + ", request " + std::to_string(k + 1) + " of " +
                   std::to_string(requests));
      remove("t");
      BoxRecorder boxes;
      ledger.mark();
      mm_test_fail_after((int32_t)k);
      EXPECT_EQ(0, ops[op](&zip));
      mm_test_fail_after(-1);
      EXPECT_TRUE(zip.last_error == -4 || zip.last_error == -10) << zip.last_error;
      for (const kxtest::Box &box : boxes.boxes()) EXPECT_EQ(" Málo paměti", box.text);
      EXPECT_FALSE(kxtest::exists("t"));
      EXPECT_EQ("", ledger.leftovers());
    }
  }
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
