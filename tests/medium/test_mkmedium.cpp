// The medium builder: the split over disks, the refusals with their messages, and the texts
// (UTF-8 descriptions, Windows-1250 lists).
#include "lists/ilst.h"
#include "tests/support/kxtest.h"
#include "tools/mkmedium/medium.h"

#include <gtest/gtest.h>

#include <string.h>

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace fs = std::filesystem;
using kxtest::BoxRecorder;
using kxtest::ScratchDir;
using Files = std::map<std::string, std::string>;   // relative path -> contents

namespace {

// Our literals are Windows-1250; file names on the native build are UTF-8.
std::string native(const std::string &cp1250) {
#ifdef KX_WIN32
  return cp1250;
#else
  char out[4096];
  EXPECT_EQ(1, medium_cp1250_to_utf8(cp1250.c_str(), out, sizeof out));
  return out;
#endif
}

// Writes a file of the test tree; rel is a Windows-1250 path with "/" and ASCII directories.
// (File names go to the system as they stand: the Windows runtime's std::filesystem would read
// them as Latin-1.)
void put(const std::string &rel, const std::string &data) {
  fs::create_directories(rel.substr(0, rel.rfind('/')));
  ASSERT_TRUE(kxtest::write_bytes(native(rel), data)) << rel;
}

// Bytes that do not compress, the same for the same seed.
std::string noise(size_t n, uint32_t seed) {
  std::string s(n, 0);
  for (size_t i = 0; i < n; i++) s[i] = (char)((seed = seed * 1103515245u + 12345u) >> 16);
  return s;
}

// Every error box of a test body is a failure (and under Wine a real box would wait for a click).
struct NoBoxes {
  BoxRecorder boxes;
  ~NoBoxes() { EXPECT_EQ(0u, boxes.count()) << boxes.dump(); }
};

MediumOptions options(int16_t packed, int16_t flat, const char *source = "src", const char *output = "out") {
  MediumOptions o;
  medium_default_options(&o);
  o.source = source, o.output = output, o.packed = packed, o.flat = flat;
  return o;
}

struct List { ListHeader header; std::vector<ListRecord> records; std::string raw; };

List read_list(const std::string &path) {
  List l;
  l.raw = kxtest::read_bytes(path);
  std::string padded = l.raw + std::string(ILST_HEADER_SIZE, '\0');   // a short file fails below
  ilst_decode_header((const unsigned char *)padded.data(), &l.header);
  EXPECT_EQ((size_t)ILST_HEADER_SIZE + ILST_RECORD_SIZE * l.header.count, l.raw.size()) << path;
  for (size_t at = ILST_HEADER_SIZE; at + ILST_RECORD_SIZE <= l.raw.size(); at += ILST_RECORD_SIZE) {
    l.records.emplace_back();
    ilst_decode_record((const unsigned char *)l.raw.data() + at, &l.records.back());
  }
  return l;
}

TEST(MediumSplit, ExactFitAndOneByteShort) {
  ScratchDir dir;
  NoBoxes quiet;
  const Files data = {{"A.BIN", noise(1000, 5)}, {"B.BIN", noise(2000, 6)}, {"C.BIN", noise(10, 7)}};
  for (const auto &f : data) put("src/" + f.first, f.second);
  // The first disk holds A.KORV (9 bytes) and DISKLIST.LST (92 + 3 * 140 = 512 bytes) besides files.
  // disks: those of the records A, B, C; "": refused. Row 3: C fills disk 2 exactly, no going back.
  struct Row { int n; uint32_t cluster, capacity; const char *disks, *message; } rows[] = {
      {1, 1, 3531, "000", ""}, {2, 1, 3530, "001", ""}, {3, 1, 2019, "011", ""}, {4, 1, 2018, "012", ""},
      {5, 1, 2008, "", "B.BIN: 2000 bytes on the medium do not fit on a disk of 2008 bytes"},
      {6, 1, 520, "",
       "the first disk cannot hold DISKLIST.LST, README.TXT, SETUP.EXE and A.KORV (521 bytes) within 520 bytes"},
      {7, 512, 4608, "000", ""}, {8, 512, 4607, "001", ""}};   // 512 + 512 + 1024 + 2048 + 512
  for (const Row &r : rows) {
    fs::remove_all("out");
    MediumOptions o = options(0, 0);
    o.cluster = r.cluster, o.capacity = r.capacity;
    MediumResult result;
    EXPECT_EQ((Flag)(*r.disks != 0), medium_make(&o, &result)) << "row " << r.n << ": " << result.message;
    EXPECT_EQ(std::string(r.message), result.message) << "row " << r.n;
    if (!*r.disks) {
      EXPECT_FALSE(kxtest::exists("out")) << "row " << r.n << ": nothing is written after a refusal";
      continue;
    }
    std::string disks;
    for (const ListRecord &rec : read_list("out/DISK1/DISKLIST.LST").records) {
      disks += (char)('0' + rec.disk);
      EXPECT_EQ(data.at(rec.name), kxtest::read_bytes("out/DISK" + std::to_string(rec.disk + 1) + "/" + rec.stored))
          << "row " << r.n << " " << rec.name;
    }
    EXPECT_EQ(std::string(r.disks), disks) << "row " << r.n;
    EXPECT_EQ(r.disks[2] - '0' + 1, result.disks) << "row " << r.n;
    for (int d = 1; d <= result.disks; d++)
      EXPECT_EQ("DISK: " + std::to_string(d) + "\r\n",
                kxtest::read_bytes("out/DISK" + std::to_string(d) + "/" + (char)('A' + d - 1) + ".KORV"))
          << "row " << r.n << " disk " << d;
  }
}

TEST(MediumRefusals, EveryRefusalWithItsMessage) {
  NoBoxes quiet;
  const std::string d80 = std::string(80, 'd');
  auto none = [](MediumOptions &) {};
  // host_only: names that a Windows file system cannot hold; tree: native relative paths of empty
  // files; descriptions: UTF-8, empty: none.
  struct Row { int n; bool host_only; std::vector<std::string> tree; std::string descriptions;
               std::function<void(MediumOptions &)> tweak; std::string message; };
  std::vector<Row> rows = {
      {1, false, {"ABCDEFGHIJKLMNOP", "ABCDEFGHIJKLMNOPQ"}, "", none,
       "ABCDEFGHIJKLMNOPQ: the name has 17 characters, at most 16 are allowed"},
      {2, false, {"DOC/DEEP/X"}, "", none, "DOC\\DEEP: nesting deeper than one subdirectory is not allowed"},
      {3, false, {"DOC/INST.LST"}, "", none, "DOC\\INST.LST: the name is kept for the installer's own list"},
      {4, false, {"LIB/doc", "DOC/X"}, "", none,
       "LIB\\doc: a packed file may not have the name of the subdirectory DOC"},
      {5, true, {"A*B"}, "", none, "A*B: the name holds *, which Windows does not allow in file names"},
      {6, true, {"NAME."}, "", none, "NAME.: a name may not begin with a blank nor end with a blank or a dot"},
      {7, true, {"com1.txt"}, "", none, "com1.txt: the name is a device name on Windows"},
      {8, true, {"a.txt", "A.TXT"}, "", none, "A.TXT and a.txt differ only in case"},
      {9, true, {"doc", "DOC/X"}, "", none, "doc and DOC differ only in case"},
      {10, true, {"\xC3\xB8.txt"}, "", none, "\xC3\xB8.txt: the name cannot be written in Windows-1250"},
      {11, false, {"KORV5.EXE"}, "KORV5.EXE Hlavni", none,
       "desc.txt line 1: no tab between the file and its description"},
      {12, false, {"KORV5.EXE", "X"}, "X\t" + d80 + "\nKORV5.EXE\t" + d80 + "d\n", none,
       "desc.txt line 2: the description has 81 characters, at most 80 are allowed"},
      {13, false, {"KORV5.EXE"}, "NOPE.EXE\tx", none, "desc.txt line 1: NOPE.EXE names no file of the tree"},
      {14, false, {"KORV5.EXE"}, "korv5.exe\ta\n\nKORV5.EXE\tb", none,
       "desc.txt line 3: KORV5.EXE is described twice (first on line 1)"},
      {15, false, {"KORV5.EXE"}, "KORV5.EXE\t\xC3\x28", none, "desc.txt line 1: the text is not UTF-8"},
      {16, false, {"KORV5.EXE"}, "KORV5.EXE\t\xC3\xB8", none, "desc.txt line 1: U+00F8 has no place in Windows-1250"},
      {17, false, {"KORV5.EXE"}, "KORV5.EXE\ta\x01z", none,
       "desc.txt line 1: the description holds a control character"},
      {18, false, {"X"}, "", [](MediumOptions &o) { static const std::string t(81, 't'); o.title = t.c_str(); },
       "the title has 81 characters, at most 80 are allowed"},
      {19, false, {"X"}, "", [](MediumOptions &o) { o.level = 10; }, "the compression level must be -1 to 9"},
      {20, false, {"X"}, "", [](MediumOptions &o) { o.capacity = 0; },
       "the capacity and the cluster must be at least 1"},
      {21, false, {"X"}, "", [](MediumOptions &o) { o.source = "nosuch"; }, "cannot read the directory nosuch"},
      {22, false, {"X"}, "", [](MediumOptions &o) { o.readme = "nosuch.txt"; }, "nosuch.txt: no such file"},
      {23, false, {"X", "../out/old"}, "", none, "the output directory out is not empty"},
  };
  for (const Row &r : rows) {
#ifdef KX_WIN32
    if (r.host_only) continue;
#endif
    ScratchDir dir;
    for (const std::string &f : r.tree) {
      fs::create_directories(fs::path("src/" + f).parent_path());
      ASSERT_TRUE(kxtest::write_bytes("src/" + f, "")) << "row " << r.n;
    }
    MediumOptions o = options(1, 0);
    if (!r.descriptions.empty()) kxtest::write_bytes("desc.txt", r.descriptions), o.descriptions = "desc.txt";
    r.tweak(o);
    MediumResult result;
    EXPECT_EQ(0, medium_make(&o, &result)) << "row " << r.n;
    EXPECT_EQ(r.message, result.message) << "row " << r.n;
    EXPECT_EQ(&r == &rows.back(), kxtest::exists("out")) << "row " << r.n << ": nothing is written after a refusal";
  }
}

TEST(MediumText, Utf8AndWindows1250) {
  struct Row { int n; std::string utf8; size_t size; int16_t result; std::string cp1250; uint32_t code; } rows[] = {
      {1, "P\xC5\x99\xC3\xADli\xC5\xA1 \xC5\xBElu\xC5\xA5ou\xC4\x8Dk\xC3\xBD k\xC5\xAF\xC5\x88", 64, MEDIUM_TEXT_OK,
       "Příliš žluťoučký kůň", 0},
      {2, "\xE2\x82\xAC\xE2\x80\x9E\xCB\x99", 4, MEDIUM_TEXT_OK, "\x80\x84\xFF", 0},   // exact fit
      {3, "\xE2\x82\xAC\xE2\x80\x9E\xCB\x99", 3, MEDIUM_TEXT_TOO_LONG, "\x80\x84", 0},
      {4, "a\xC3\xB8", 8, MEDIUM_TEXT_UNMAPPED, "a", 0xF8},
      {5, "\xC2\x81", 8, MEDIUM_TEXT_UNMAPPED, "", 0x81},    // a byte Windows-1250 leaves empty
      {6, "\xC0\x80", 8, MEDIUM_TEXT_INVALID, "", 0},        // overlong NUL
      {7, "\xED\xA0\x80", 8, MEDIUM_TEXT_INVALID, "", 0},    // surrogate
      {8, "\xF4\x90\x80\x80", 8, MEDIUM_TEXT_INVALID, "", 0},
      {9, "ab\xE2\x82", 8, MEDIUM_TEXT_INVALID, "ab", 0},   // cut short at the end
      {10, "\x80", 8, MEDIUM_TEXT_INVALID, "", 0},
  };
  for (const Row &r : rows) {
    char text[64];
    memset(text, 'x', sizeof text);
    uint32_t code = 0;
    EXPECT_EQ(r.result, medium_utf8_to_cp1250(r.utf8.c_str(), text, r.size, &code)) << "row " << r.n;
    EXPECT_EQ(r.cp1250, std::string(text)) << "row " << r.n;
    EXPECT_EQ(r.code, code) << "row " << r.n;
  }
  char u[40];
  EXPECT_EQ(1, medium_cp1250_to_utf8("\x81\x83\x88\x90\x98\x80\x8A\xFF", u, sizeof u));
  EXPECT_EQ(std::string("\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xE2\x82\xAC\xC5\xA0\xCB\x99"), u)
      << "bytes Windows-1250 leaves empty show as U+FFFD";
  char cut[6];
  EXPECT_EQ(0, medium_cp1250_to_utf8("ab\x9E\x9E", cut, sizeof cut));
  EXPECT_STREQ("ab\xC5\xBE", cut) << "cut at a character's boundary";
  char upper[40];
  EXPECT_EQ(1, medium_upper("žluťoučký kůň łąľż ß÷ şa", upper, sizeof upper));
  EXPECT_STREQ("ŽLUŤOUČKÝ KŮŇ ŁĄĽŻ ß÷ ŞA", upper);
}

}  // namespace
