// The medium builder: media read back record by record, packed files inflated, the split over
// disks, stored names, refusals, determinism, the printed list, and the tool run as a process.
#include "lists/ilst.h"
#include "pack/zip_util.h"
#include "tests/support/kxtest.h"
#include "tools/mkmedium/medium.h"
#include "tools/mkmedium/medium_plat.h"

#include <gtest/gtest.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#ifdef KX_WIN32
#include <windows.h>
#else
#include <sys/wait.h>
#endif

namespace fs = std::filesystem;
using kxtest::BoxRecorder;
using kxtest::ScratchDir;
using Files = std::map<std::string, std::string>;   // relative path -> contents

namespace {

// Our literals are Windows-1250; file names on the native build are UTF-8.
std::string utf8(const std::string &cp1250) {
  char out[4096];
  EXPECT_EQ(1, medium_cp1250_to_utf8(cp1250.c_str(), out, sizeof out));
  return out;
}

std::string native(const std::string &cp1250) {
#ifdef KX_WIN32
  return cp1250;
#else
  return utf8(cp1250);
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

// Contents in short, so that a difference between two sets of files prints readably.
std::string digest(const std::string &data) {
  uint32_t h = 2166136261u;
  for (unsigned char c : data) h = (h ^ c) * 16777619u;
  return std::to_string(data.size()) + " bytes #" + std::to_string(h);
}

// Every file below root: relative path -> digest.
Files files_below(const std::string &root) {
  Files m;
  for (const auto &e : fs::recursive_directory_iterator(root))
    if (e.is_regular_file())
      m[fs::relative(e.path(), root).generic_string()] = digest(kxtest::read_bytes(e.path().string()));
  return m;
}

std::string inflated(const std::string &packed_path) {
  ZipUtil zip;
  ZipInit(&zip);
  fs::remove("inflated.tmp");
  EXPECT_EQ(1, DecompressFile(&zip, packed_path.c_str(), "inflated.tmp"))
      << packed_path << ": " << ZipErrorText(GetError(&zip));
  return kxtest::read_bytes("inflated.tmp");
}

struct Want { const char *name, *stored, *directory; std::string data; const char *description; };

void put_tree(const char *root, const std::vector<Want> &want) {
  for (const Want &w : want)
    put(root + (std::string(w.directory) == "." ? "" : std::string(w.directory) + "/") + w.name, w.data);
}

// Checks the list in dir record by record against want (all on the first disk), every stored file
// (inflated when packed) against its data, and that dir holds nothing but these and the others.
void expect_medium(const std::string &dir, const std::vector<Want> &want, Files others) {
  List l = read_list(dir + "/DISKLIST.LST");
  others["DISKLIST.LST"] = digest(l.raw);
  ASSERT_EQ(want.size(), l.records.size());
  for (size_t i = 0; i < want.size(); i++) {
    const Want &w = want[i];
    const ListRecord &r = l.records[i];
    EXPECT_EQ(std::string(w.name) + "|" + w.stored + "|" + w.directory + "|" + std::to_string(w.data.size()) + "|0|" +
                  w.description,
              std::string(r.name) + "|" + r.stored + "|" + r.directory + "|" + std::to_string(r.size) + "|" +
                  std::to_string(r.disk) + "|" + r.description)
        << "record " << i + 1;
    std::string path = dir + "/" + r.stored;
    EXPECT_EQ(w.data, l.header.packed ? inflated(path) : kxtest::read_bytes(path)) << "record " << i + 1;
    others[r.stored] = digest(kxtest::read_bytes(path));
  }
  EXPECT_EQ(others, files_below(dir));
}

TEST(MediumMake, PackedMediumReadsBackRecordByRecord) {
  ScratchDir dir;
  NoBoxes quiet;
  std::vector<Want> want = {
      {"NAVOD.HTM", "NAVOD.HT_", "DOC", std::string(3000, 'n'), "Návod k použití"},
      {"A.LIB", "A.LI_", "LIB", noise(300, 1), "Knihovna A"},
      {"b.lib", "b.li_", "LIB", "b", ""},
      {"EMPTY.DAT", "EMPTY.DA_", ".", "", ""},
      {"KORV5.EXE", "KORV5.EX_", ".", noise(5000, 2), "Hlavní program"},
      {"Čti mě.txt", "Cti me.tx_", ".", std::string(2000, 'c'), ""},
  };
  put_tree("src/", want);
  kxtest::write_bytes("desc.txt", "\xEF\xBB\xBF# popisy\r\n\r\nKORV5.EXE\t" + utf8("Hlavní program") +
                                      "\r\ndoc/navod.htm\t  " + utf8("Návod k použití") +
                                      "  \nLIB\\A.LIB\t\tKnihovna A");
  MediumOptions o = options(1, 0);
  o.descriptions = "desc.txt";
  MediumResult result;
  ASSERT_EQ(1, medium_make(&o, &result)) << result.message;
  EXPECT_EQ(want.size(), result.files);
  EXPECT_EQ(1, result.disks);
  List l = read_list("out/DISK1/DISKLIST.LST");
  EXPECT_EQ(1, l.header.packed);
  EXPECT_EQ(0, l.header.reserved0 | l.header.reserved84 | l.header.reserved88);
  EXPECT_EQ(std::string("KORVEX 5") + std::string(74, '\0'), l.raw.substr(2, 82)) << "title, then zeros";
  expect_medium("out/DISK1", want, {{"A.KORV", digest("DISK: 1\r\n")}});

  // The same tree, its files made in the other order, gives the same medium byte for byte.
  put_tree("src2/", std::vector<Want>(want.rbegin(), want.rend()));
  o.source = "src2", o.output = "out2";
  ASSERT_EQ(1, medium_make(&o, &result)) << result.message;
  EXPECT_EQ(files_below("out"), files_below("out2"));
}

TEST(MediumMake, FlatMediaTakeTheFirstFreeStoredName) {
  const std::vector<Want> plain = {
      {"X.DAT", "X.DAT", "DOC", noise(700, 3), ""},
      {"X.DAT", "X.DA_", "LIB", noise(900, 4), ""},
      {"README.TXT", "README.TX_", ".", "not the medium's own", ""},
      {"Čti.txt", "Cti.txt", ".", "c", ""},
  };
  // Packed: never an installed name of the list either.
  const std::vector<Want> packed = {
      {"A", "_", ".", "a", ""},        {"A.DAT", "A.D1_", ".", "ad", ""},      {"A.DA_", "A.D2_", ".", "ad_", ""},
      {"B", "1_", ".", "b", ""},       {"Mäß.txt", "M__.tx_", ".", "m", ""}, {"Žába.txt", "Zaba.tx_", ".", "z", ""},
  };
  for (int16_t p = 0; p < 2; p++) {
    ScratchDir dir;
    NoBoxes quiet;
    put_tree("src/", p ? packed : plain);
    kxtest::write_bytes("medium-readme", "medium readme");
    MediumOptions o = options(p, 1);
    o.readme = "medium-readme";
    o.title = "KORVEX 5.1 – zkušební";
    MediumResult result;
    ASSERT_EQ(1, medium_make(&o, &result)) << result.message;
    List l = read_list("out/DISKLIST.LST");
    EXPECT_EQ(p, l.header.packed);
    EXPECT_STREQ("KORVEX 5.1 – zkušební", l.header.text);
    expect_medium("out", p ? packed : plain,
                  {{"A.KORV", digest("DISK: 1\r\n")}, {"README.TXT", digest("medium readme")}});
  }
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

TEST(MediumSplit, TwentySixDisksAtMost) {
  ScratchDir dir;
  NoBoxes quiet;
  // DISK1 holds the list only; every further disk holds one file.
  for (int i = 0; i < 26; i++) put("src/F" + std::to_string(100 + i), noise(3000, (uint32_t)i));
  MediumOptions o = options(0, 0);
  o.cluster = 1;
  o.capacity = 6000;   // the list and a file exceed it; two files and an identification file too
  MediumResult result;
  EXPECT_EQ(0, medium_make(&o, &result));
  EXPECT_STREQ("the files need more than 26 disks", result.message);
  fs::remove("src/F125");
  ASSERT_EQ(1, medium_make(&o, &result)) << result.message;
  EXPECT_EQ(26, result.disks);
  EXPECT_EQ("DISK: 26\r\n", kxtest::read_bytes("out/DISK26/Z.KORV"));
  EXPECT_EQ(25, read_list("out/DISK1/DISKLIST.LST").records.back().disk);
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

// A tree of `fake_files` empty files that exist only in the lister: 40,000 in the target
// directory, the rest in DOC.
uint32_t fake_files;

int16_t fake_scan(const char *directory, MediumScanEntry entry, void *context) {
  bool doc = strstr(directory, "DOC") != nullptr;
  if (!doc && !entry(context, "DOC", MEDIUM_DIRECTORY, 0)) return -1;
  for (uint32_t i = doc ? 40000 : 0; i < (doc ? fake_files : 40000); i++)
    if (!entry(context, std::to_string(i).c_str(), MEDIUM_FILE, 0)) return -1;
  return 1;
}

TEST(MediumRefusals, AtMost65535Files) {
  ScratchDir dir;
  NoBoxes quiet;
  fs::create_directories("src");
  struct Lister {
    Lister() { medium_scan = fake_scan; }
    ~Lister() { medium_scan = medium_plat_scan; }   // also when an assertion returns early
  } lister;
  MediumOptions o = options(0, 0);
  o.cluster = 1;
  MediumResult result;
  fake_files = 65536;
  EXPECT_EQ(0, medium_make(&o, &result));
  EXPECT_STREQ("the tree holds more than 65535 files", result.message);
  // 65,535 files pass; the list of 92 + 65,535 * 140 bytes and A.KORV then overflow the disk.
  fake_files = 65535;
  EXPECT_EQ(0, medium_make(&o, &result));
  EXPECT_STREQ("the first disk cannot hold DISKLIST.LST, README.TXT, SETUP.EXE and A.KORV (9175001 bytes) within "
               "1457664 bytes", result.message);
}

// A DISKLIST.LST: the header with count, the first `records` of two records, extra bytes.
std::string hand_list(uint16_t count, int records, size_t extra) {
  ListHeader h = {7, "Zkouš\x01", 257, count, 2, 1};
  ListRecord r[2] = {{"KORV5.EXE", "KORV5.EX_", ".", 300000, 0, "Hlavní program"},
                     {"ABCDEFGHIJKLMNOP", "A\"B", "D\x01R", 0, 0xFFFF, "x\x81y"}};
  std::string s(ILST_HEADER_SIZE + 2 * ILST_RECORD_SIZE, '\0');
  ilst_encode_header(&h, (unsigned char *)&s[0]);
  for (int i = 0; i < 2; i++) ilst_encode_record(&r[i], (unsigned char *)&s[ILST_HEADER_SIZE + ILST_RECORD_SIZE * i]);
  return s.substr(0, ILST_HEADER_SIZE + ILST_RECORD_SIZE * records) + std::string(extra, 'z');
}

const char kListed[] =
    "header\n"
    "  reserved0   7\n"
    "  text        \"Zkou\xC5\xA1\\x01\"\n"
    "  reserved84  257\n"
    "  count       2\n"
    "  reserved88  2\n"
    "  packed      1\n"
    "record 1\n"
    "  name        \"KORV5.EXE\"\n"
    "  stored      \"KORV5.EX_\"\n"
    "  directory   \".\"\n"
    "  size        300000\n"
    "  disk        1 (raw 0)\n"
    "  description \"Hlavn\xC3\xAD program\"\n"
    "record 2\n"
    "  name        \"ABCDEFGHIJKLMNOP\"\n"
    "  stored      \"A\\x22B\"\n"
    "  directory   \"D\\x01R\"\n"
    "  size        0\n"
    "  disk        65536 (raw 65535)\n"
    "  description \"x\\x81y\"\n";

std::string listed(const char *path, Flag want, const std::string &message) {
  FILE *f = fopen("listed.txt", "wb");
  EXPECT_NE(nullptr, f);
  if (!f) return "";
  char got[MEDIUM_MESSAGE_SIZE];
  memset(got, 'x', sizeof got);
  EXPECT_EQ(want, medium_list(path, f, got, sizeof got)) << path;
  EXPECT_EQ(message, got) << path;
  fclose(f);
  return kxtest::read_bytes("listed.txt");
}

TEST(MediumList, PrintsHeaderAndRecordsReadably) {
  ScratchDir dir;
  NoBoxes quiet;
  kxtest::write_bytes("exact.lst", hand_list(2, 2, 0));
  kxtest::write_bytes("extra.lst", hand_list(2, 2, 10));
  kxtest::write_bytes("short.lst", hand_list(3, 2, 10));
  kxtest::write_bytes("tiny.lst", hand_list(2, 0, 0).substr(0, 91));
  fs::create_directories("medium/DISK1");
  kxtest::write_bytes("medium/DISK1/DISKLIST.LST", hand_list(2, 2, 0));
  fs::create_directories("empty");
  EXPECT_EQ(kListed, listed("exact.lst", 1, ""));
  EXPECT_EQ(std::string(kListed) + "10 bytes follow the last record\n", listed("extra.lst", 1, ""));
  std::string three = kListed;
  three.replace(three.find("count       2"), 13, "count       3");
  EXPECT_EQ(three, listed("short.lst", 0, "short.lst: the header counts 3 records, the file holds 2"));
  EXPECT_EQ("", listed("tiny.lst", 0, "tiny.lst: 91 bytes, shorter than a list header"));
  EXPECT_EQ(kListed, listed("medium", 1, "")) << "a medium directory is listed from DISK1";
  EXPECT_EQ("", listed("empty", 0, "empty: no DISKLIST.LST"));
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

// ---- The tool as a process --------------------------------------------------------------------

struct ToolRun { int code; std::string out, err; };

ToolRun run_tool(const std::string &args) {
#ifdef KX_WIN32
  char self[MAX_PATH];
  GetModuleFileNameA(nullptr, self, MAX_PATH);
  fs::path tool = fs::path(self).parent_path().parent_path() / "tools" / "mkmedium.exe";
#else
  fs::path tool = fs::read_symlink("/proc/self/exe").parent_path().parent_path() / "tools" / "mkmedium";
#endif
  int code = system(("\"" + tool.string() + "\" " + args + " >tool.out 2>tool.err").c_str());
#ifndef KX_WIN32
  code = WIFEXITED(code) ? WEXITSTATUS(code) : -1;
#endif
  return {code, kxtest::read_bytes("tool.out"), kxtest::read_bytes("tool.err")};
}

TEST(MediumTool, RunsAsAProcess) {
  ScratchDir dir;
  NoBoxes quiet;
  put("src/KORV5.EXE", noise(3000, 11));
  put("src/DOC/NAVOD.HTM", std::string(4000, 'n'));
  kxtest::write_bytes("desc.txt", "KORV5.EXE\t" + utf8("Hlavní program") + "\n");
  struct Row { int n; const char *args; int code; std::string out_start, err; } rows[] = {
      {1, "--help", 0, "usage: mkmedium [options] SOURCE OUTPUT\n", ""},
      {2, "--descriptions desc.txt --setup desc.txt --capacity 4000 src out", 0,
       "mkmedium: 2 files on 2 disk(s) in out (packed)\n", ""},
      {3, "--plain --flat src flat", 0, "mkmedium: 2 files in flat (flat, plain)\n", ""},
      {4, "src out", 1, "", "mkmedium: the output directory out is not empty\n"},
      {5, "--bogus", 2, "", "mkmedium: unknown option --bogus (see mkmedium --help)\n"},
      {6, "--level 12 src x", 2, "", "mkmedium: --level wants a number from -1 to 9 (see mkmedium --help)\n"},
      {7, "--list nowhere", 1, "", "mkmedium: nowhere: no DISKLIST.LST\n"},
  };
  for (const Row &r : rows) {
    ToolRun got = run_tool(r.args);
    EXPECT_EQ(r.code, got.code) << "row " << r.n << ": " << got.err;
    EXPECT_EQ(r.out_start, got.out.substr(0, r.out_start.empty() ? std::string::npos : r.out_start.size()))
        << "row " << r.n;
    EXPECT_EQ(r.err, got.err) << "row " << r.n;
  }
  // The tool's --list prints what the module prints, and the medium it made reads back.
  ToolRun list = run_tool("--list out");
  EXPECT_EQ(0, list.code) << list.err;
  EXPECT_EQ(listed("out", 1, ""), list.out);
  EXPECT_NE(std::string::npos, list.out.find("disk        2 (raw 1)\n  description \"Hlavn\xC3\xAD program\""))
      << list.out;
  EXPECT_EQ(noise(3000, 11), inflated("out/DISK2/KORV5.EX_"));
  EXPECT_EQ(kxtest::read_bytes("desc.txt"), kxtest::read_bytes("out/DISK1/SETUP.EXE"));
  EXPECT_EQ(std::string(4000, 'n'), kxtest::read_bytes("flat/NAVOD.HTM"));
}

}  // namespace
