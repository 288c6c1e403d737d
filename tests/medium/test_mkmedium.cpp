// The medium builder: media read back record by record, packed files inflated, the split over
// disks, stored names, refusals, determinism, the printed list, and the tool run as a process.
#include "installer/ilst.h"
#include "tests/support/kxtest.h"
#include "tools/mkmedium/medium.h"
#include "zip/zip_util.h"

#include <gtest/gtest.h>

#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#ifdef KX_WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
extern char **environ;
#endif

namespace fs = std::filesystem;
using kxtest::BoxRecorder;
using kxtest::ScratchDir;

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

// Writes a file of the test tree; rel is a Windows-1250 path with "/". (Narrow names go to the
// system as they stand: the Windows runtime's std::filesystem would read them as Latin-1.)
void put(const std::string &rel, const std::string &data) {
  std::string name = native(rel);
  for (size_t slash = name.find('/'); slash != std::string::npos; slash = name.find('/', slash + 1)) {
#ifdef KX_WIN32
    CreateDirectoryA(name.substr(0, slash).c_str(), nullptr);
#else
    mkdir(name.substr(0, slash).c_str(), 0777);
#endif
  }
  ASSERT_TRUE(kxtest::write_bytes(name, data)) << rel;
}

// Bytes that do not compress, the same for the same seed.
std::string noise(size_t n, uint32_t seed) {
  std::string s(n, 0);
  for (size_t i = 0; i < n; i++) {
    seed = seed * 1103515245u + 12345u;
    s[i] = (char)(seed >> 16);
  }
  return s;
}

// Every error box of a test body is a failure (and under Wine a real box would wait for a click).
struct NoBoxes {
  BoxRecorder boxes;
  ~NoBoxes() { EXPECT_EQ(0u, boxes.count()) << boxes.dump(); }
};

MediumOptions options(const char *source = "src", const char *output = "out") {
  MediumOptions o;
  medium_default_options(&o);
  o.source = source;
  o.output = output;
  return o;
}

struct List {
  ListHeader header;
  std::vector<ListRecord> records;
  std::string raw;
};

List read_list(const std::string &path) {
  List l;
  l.raw = kxtest::read_bytes(path);
  memset(&l.header, 0, sizeof l.header);
  if (l.raw.size() < (size_t)ILST_HEADER_SIZE) {
    ADD_FAILURE() << path << ": " << l.raw.size() << " bytes";
    return l;
  }
  ilst_decode_header((const unsigned char *)l.raw.data(), &l.header);
  EXPECT_EQ((size_t)ILST_HEADER_SIZE + ILST_RECORD_SIZE * l.header.count, l.raw.size()) << path;
  for (size_t at = ILST_HEADER_SIZE; at + ILST_RECORD_SIZE <= l.raw.size(); at += ILST_RECORD_SIZE) {
    ListRecord r;
    ilst_decode_record((const unsigned char *)l.raw.data() + at, &r);
    l.records.push_back(r);
  }
  return l;
}

// Every file below root: relative path -> contents.
std::map<std::string, std::string> files_below(const std::string &root) {
  std::map<std::string, std::string> m;
  for (const auto &e : fs::recursive_directory_iterator(root))
    if (e.is_regular_file()) m[fs::relative(e.path(), root).generic_string()] = kxtest::read_bytes(e.path().string());
  return m;
}

// The same files with the same contents; a difference is named briefly.
void expect_same_files(const std::map<std::string, std::string> &want, const std::map<std::string, std::string> &got) {
  std::string a, b;
  for (const auto &f : want) a += f.first + " ";
  for (const auto &f : got) b += f.first + " ";
  EXPECT_EQ(a, b) << "names of the files";
  for (const auto &f : want) {
    auto g = got.find(f.first);
    if (g != got.end()) {
      EXPECT_TRUE(f.second == g->second) << f.first << ": contents differ";
    }
  }
}

std::string inflated(const std::string &packed_path) {
  ZipUtil zip;
  ZipInit(&zip);
  fs::remove("inflated.tmp");
  EXPECT_EQ(1, DecompressFile(&zip, packed_path.c_str(), "inflated.tmp"))
      << packed_path << ": " << ZipErrorText(GetError(&zip));
  return kxtest::read_bytes("inflated.tmp");
}

struct Want {
  const char *name, *stored, *directory;
  std::string data;
  const char *description;
};

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
  for (const Want &w : want)
    put(std::string("src/") + (std::string(w.directory) == "." ? "" : std::string(w.directory) + "/") + w.name, w.data);
  kxtest::write_bytes("desc.txt", "\xEF\xBB\xBF# popisy\r\n\r\nKORV5.EXE\t" + utf8("Hlavní program") +
                                      "\r\ndoc/navod.htm\t  " + utf8("Návod k použití") + "  \nLIB\\A.LIB\t\tKnihovna A");
  MediumOptions o = options();
  o.descriptions = "desc.txt";
  MediumResult result;
  BoxRecorder boxes;
  ASSERT_EQ(1, medium_make(&o, &result)) << result.message;
  EXPECT_EQ(0u, boxes.count()) << boxes.dump();
  EXPECT_EQ(want.size(), result.files);
  EXPECT_EQ(1, result.disks);

  List l = read_list("out/DISK1/DISKLIST.LST");
  EXPECT_EQ(want.size(), l.header.count);
  EXPECT_EQ(1, l.header.packed);
  EXPECT_EQ(0, l.header.reserved0 | l.header.reserved84 | l.header.reserved88);
  EXPECT_EQ(std::string("KORVEX 5") + std::string(74, '\0'), l.raw.substr(2, 82)) << "title, then zeros";
  ASSERT_EQ(want.size(), l.records.size());
  std::map<std::string, std::string> expected_files = {{"A.KORV", "DISK: 1\r\n"}, {"DISKLIST.LST", l.raw}};
  for (size_t i = 0; i < want.size(); i++) {
    const ListRecord &r = l.records[i];
    EXPECT_STREQ(want[i].name, r.name) << "record " << i + 1;
    EXPECT_STREQ(want[i].stored, r.stored) << "record " << i + 1;
    EXPECT_STREQ(want[i].directory, r.directory) << "record " << i + 1;
    EXPECT_EQ(want[i].data.size(), r.size) << "record " << i + 1;
    EXPECT_EQ(0, r.disk) << "record " << i + 1;
    EXPECT_STREQ(want[i].description, r.description) << "record " << i + 1;
    std::string packed = "out/DISK1/" + native(r.stored);
    EXPECT_EQ(want[i].data, inflated(packed)) << "record " << i + 1;
    expected_files[native(r.stored)] = kxtest::read_bytes(packed);
  }
  expect_same_files(expected_files, files_below("out/DISK1"));
  EXPECT_EQ(std::vector<std::string>{"DISK1"}, [] {
    std::vector<std::string> v;
    for (const auto &e : fs::directory_iterator("out")) v.push_back(e.path().filename().string());
    return v;
  }());
}

TEST(MediumMake, PlainFlatMediumKeepsNamesUnlessTheyClash) {
  ScratchDir dir;
  NoBoxes quiet;
  std::vector<Want> want = {
      {"X.DAT", "X.DAT", "DOC", noise(700, 3), ""},
      {"X.DAT", "X.DA_", "LIB", noise(900, 4), ""},
      {"README.TXT", "README.TX_", ".", "not the medium's own", ""},
      {"Čti.txt", "Cti.txt", ".", "c", ""},
  };
  for (const Want &w : want)
    put(std::string("src/") + (std::string(w.directory) == "." ? "" : std::string(w.directory) + "/") + w.name, w.data);
  kxtest::write_bytes("medium-readme", "medium readme");
  MediumOptions o = options();
  o.packed = 0;
  o.flat = 1;
  o.readme = "medium-readme";
  o.title = "KORVEX 5.1 – zkušební";
  MediumResult result;
  ASSERT_EQ(1, medium_make(&o, &result)) << result.message;
  List l = read_list("out/DISKLIST.LST");
  EXPECT_EQ(0, l.header.packed);
  EXPECT_STREQ("KORVEX 5.1 – zkušební", l.header.text);
  ASSERT_EQ(want.size(), l.records.size());
  std::map<std::string, std::string> expected_files = {
      {"A.KORV", "DISK: 1\r\n"}, {"DISKLIST.LST", l.raw}, {"README.TXT", "medium readme"}};
  for (size_t i = 0; i < want.size(); i++) {
    EXPECT_STREQ(want[i].name, l.records[i].name) << "record " << i + 1;
    EXPECT_STREQ(want[i].stored, l.records[i].stored) << "record " << i + 1;
    EXPECT_STREQ(want[i].directory, l.records[i].directory) << "record " << i + 1;
    EXPECT_EQ(0, l.records[i].disk) << "record " << i + 1;
    expected_files[want[i].stored] = want[i].data;
  }
  expect_same_files(expected_files, files_below("out"));
}

TEST(MediumMake, PackedStoredNamesAvoidInstalledAndEachOther) {
  ScratchDir dir;
  NoBoxes quiet;
  const char *names[] = {"B", "A.DA_", "Mäß.txt", "A", "Žába.txt", "A.DAT"};
  for (const char *n : names) put(std::string("src/") + n, n);
  MediumOptions o = options();
  o.flat = 1;
  MediumResult result;
  ASSERT_EQ(1, medium_make(&o, &result)) << result.message;
  List l = read_list("out/DISKLIST.LST");
  struct Row {
    int n;
    const char *name, *stored;
  } rows[] = {
      {1, "A", "_"},          {2, "A.DAT", "A.D1_"},      {3, "A.DA_", "A.D2_"},
      {4, "B", "1_"},         {5, "Mäß.txt", "M__.tx_"},  {6, "Žába.txt", "Zaba.tx_"},
  };
  ASSERT_EQ(KX_COUNT(rows), l.records.size());
  for (const Row &r : rows) {
    EXPECT_STREQ(r.name, l.records[r.n - 1].name) << "row " << r.n;
    EXPECT_STREQ(r.stored, l.records[r.n - 1].stored) << "row " << r.n;
    EXPECT_EQ(std::string(r.name), inflated("out/" + std::string(r.stored))) << "row " << r.n;
  }
}

uint64_t clusters(uint64_t size, uint64_t cluster) { return (size + cluster - 1) / cluster * cluster; }

TEST(MediumSplit, DisksStayWithinCapacityAndHoldTheirFilesTogether) {
  ScratchDir dir;
  NoBoxes quiet;
  std::map<std::string, std::string> sources;
  for (int i = 0; i < 14; i++) {
    std::string rel = (i % 3 == 0 ? "" : i % 3 == 1 ? "DOC/" : "LIB/") + std::string("F") + std::to_string(i) + ".BIN";
    sources[rel] = noise(100 + (size_t)i * 337, (uint32_t)i);
    put("src/" + rel, sources[rel]);
  }
  for (uint32_t cluster : {512u, 1u}) {
    SCOPED_TRACE("cluster " + std::to_string(cluster));
    fs::remove_all("out");
    const uint32_t capacity = 6000;
    MediumOptions o = options();
    o.packed = 0;
    o.capacity = capacity;
    o.cluster = cluster;
    MediumResult result;
    ASSERT_EQ(1, medium_make(&o, &result)) << result.message;
    List l = read_list("out/DISK1/DISKLIST.LST");
    ASSERT_EQ(14u, l.records.size());
    std::map<int, uint64_t> used;   // disk directory -> bytes counted
    int disks = 0;
    for (const auto &e : fs::directory_iterator("out")) {
      disks++;
      std::string name = e.path().filename().string();
      ASSERT_EQ(0u, name.find("DISK")) << name;
      int n = std::stoi(name.substr(4));
      std::string id = std::string(1, (char)('A' + n - 1)) + ".KORV";
      EXPECT_EQ("DISK: " + std::to_string(n) + "\r\n", kxtest::read_bytes(e.path().string() + "/" + id)) << name;
      for (const auto &f : fs::directory_iterator(e.path())) used[n] += clusters(fs::file_size(f.path()), cluster);
      EXPECT_LE(used[n], capacity) << name;
    }
    EXPECT_EQ(result.disks, disks);
    EXPECT_GE(disks, 3) << "the test wants a real split";
    for (size_t i = 0; i < l.records.size(); i++) {
      const ListRecord &r = l.records[i];
      if (i > 0) {
        uint16_t before = l.records[i - 1].disk;
        EXPECT_TRUE(r.disk == before || r.disk == before + 1) << "record " << i + 1 << " disk " << r.disk;
        if (r.disk == before + 1) {
          EXPECT_GT(used[before + 1] + clusters(r.size, cluster), capacity)
              << "record " << i + 1 << " would have fit on disk " << before + 1;
        }
      }
      std::string rel = std::string(r.directory) == "." ? r.name : std::string(r.directory) + "/" + r.name;
      for (int d = 1; d <= disks; d++)
        EXPECT_EQ(d == r.disk + 1, kxtest::exists("out/DISK" + std::to_string(d) + "/" + r.stored))
            << "record " << i + 1 << " on disk " << d;
      EXPECT_EQ(sources[rel], kxtest::read_bytes("out/DISK" + std::to_string(r.disk + 1) + "/" + r.stored)) << rel;
    }
  }
}

TEST(MediumSplit, ExactFitAndOneByteShort) {
  ScratchDir dir;
  NoBoxes quiet;
  put("src/A.BIN", noise(1000, 5));
  put("src/B.BIN", noise(2000, 6));
  // A.KORV 9 + DISKLIST.LST 92 + 2 * 140 + 1000 + 2000
  const uint32_t fit = 9 + 372 + 3000;
  struct Row {
    int n;
    uint32_t capacity;
    Flag result;
    uint16_t disks;
    const char *message;
  } rows[] = {
      {1, fit, 1, 1, ""},
      {2, fit - 1, 1, 2, ""},
      {3, 2009, 1, 2, ""},   // a fresh disk holds B.BIN beside B.KORV exactly
      {4, 2008, 0, 0, "B.BIN: 2000 bytes on the medium do not fit on a disk of 2008 bytes"},
      {5, 9 + 372 - 1, 0, 0,
       "the first disk cannot hold DISKLIST.LST, README.TXT, SETUP.EXE and A.KORV (381 bytes) within 380 bytes"},
  };
  for (const Row &r : rows) {
    fs::remove_all("out");
    MediumOptions o = options();
    o.packed = 0;
    o.cluster = 1;
    o.capacity = r.capacity;
    MediumResult result;
    EXPECT_EQ(r.result, medium_make(&o, &result)) << "row " << r.n << ": " << result.message;
    EXPECT_EQ(std::string(r.message), result.message) << "row " << r.n;
    EXPECT_EQ(r.disks, result.disks) << "row " << r.n;
    EXPECT_EQ(r.result == 1, kxtest::exists("out")) << "row " << r.n << ": nothing is written after a refusal";
  }
}

TEST(MediumSplit, TwentySixDisksAtMost) {
  ScratchDir dir;
  NoBoxes quiet;
  // DISK1 holds the list only; every further disk holds one file.
  for (int i = 0; i < 26; i++) put("src/F" + std::to_string(100 + i), noise(3000, (uint32_t)i));
  MediumOptions o = options();
  o.packed = 0;
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

struct Refusal {
  int n;
  bool host_only;                        // names that a Windows file system cannot hold
  std::vector<std::pair<std::string, std::string>> tree;   // native relative paths
  std::string descriptions;              // UTF-8; empty: none
  std::function<void(MediumOptions &)> tweak;
  std::string message;
};

TEST(MediumRefusals, EveryRefusalWithItsMessage) {
  NoBoxes quiet;
  const std::string d80 = std::string(80, 'd');
  auto none = [](MediumOptions &) {};
  std::vector<Refusal> rows = {
      {1, false, {{"ABCDEFGHIJKLMNOP", ""}, {"ABCDEFGHIJKLMNOPQ", ""}}, "", none,
       "ABCDEFGHIJKLMNOPQ: the name has 17 characters, at most 16 are allowed"},
      {2, false, {{"ABCDEFGHIJKLMNOPQR/X", ""}}, "", none,
       "ABCDEFGHIJKLMNOPQR: the name has 18 characters, at most 16 are allowed"},
      {3, false, {{"DOC/DEEP/X", ""}}, "", none, "DOC\\DEEP: nesting deeper than one subdirectory is not allowed"},
      {4, false, {{"DOC/INST.LST", ""}}, "", none, "DOC\\INST.LST: the name is kept for the installer's own list"},
      {5, false, {{"LIB/doc", ""}, {"DOC/X", ""}}, "", none,
       "LIB\\doc: a packed file may not have the name of the subdirectory DOC"},
      {6, true, {{"A*B", ""}}, "", none, "A*B: the name holds *, which Windows does not allow in file names"},
      {7, true, {{"NAME.", ""}}, "", none, "NAME.: a name may not begin with a blank nor end with a blank or a dot"},
      {8, true, {{"com1.txt", ""}}, "", none, "com1.txt: the name is a device name on Windows"},
      {9, true, {{"a.txt", ""}, {"A.TXT", ""}}, "", none, "A.TXT and a.txt differ only in case"},
      {10, true, {{"doc", ""}, {"DOC/X", ""}}, "", none, "doc and DOC differ only in case"},
      {11, true, {{"\xC3\xB8.txt", ""}}, "", none, "\xC3\xB8.txt: the name cannot be written in Windows-1250"},
      {12, false, {{"KORV5.EXE", ""}}, "KORV5.EXE Hlavni", none,
       "desc.txt line 1: no tab between the file and its description"},
      {13, false, {{"KORV5.EXE", ""}, {"X", ""}}, "X\t" + d80 + "\nKORV5.EXE\t" + d80 + "d\n", none,
       "desc.txt line 2: the description has 81 characters, at most 80 are allowed"},
      {14, false, {{"KORV5.EXE", ""}}, "NOPE.EXE\tx", none, "desc.txt line 1: NOPE.EXE names no file of the tree"},
      {15, false, {{"KORV5.EXE", ""}}, "korv5.exe\ta\n\nKORV5.EXE\tb", none,
       "desc.txt line 3: KORV5.EXE is described twice (first on line 1)"},
      {16, false, {{"KORV5.EXE", ""}}, "KORV5.EXE\t\xC3\x28", none, "desc.txt line 1: the text is not UTF-8"},
      {17, false, {{"KORV5.EXE", ""}}, "KORV5.EXE\t\xC3\xB8", none,
       "desc.txt line 1: U+00F8 has no place in Windows-1250"},
      {18, false, {{"KORV5.EXE", ""}}, "KORV5.EXE\ta\x01z", none,
       "desc.txt line 1: the description holds a control character"},
      {19, false, {{"X", ""}}, "", [](MediumOptions &o) {
         static const std::string title(81, 't');
         o.title = title.c_str();
       },
       "the title has 81 characters, at most 80 are allowed"},
      {20, false, {{"X", ""}}, "", [](MediumOptions &o) { o.level = 10; }, "the compression level must be -1 to 9"},
      {21, false, {{"X", ""}}, "", [](MediumOptions &o) { o.capacity = 0; },
       "the capacity and the cluster must be at least 1"},
      {22, false, {{"X", ""}}, "", [](MediumOptions &o) { o.source = "nosuch"; }, "cannot read the directory nosuch"},
      {23, false, {{"X", ""}}, "", [](MediumOptions &o) { o.readme = "nosuch.txt"; }, "nosuch.txt: no such file"},
      {24, false, {{"X", ""}, {"../out/old", ""}}, "", none, "the output directory out is not empty"},
  };
  for (const Refusal &r : rows) {
#ifdef KX_WIN32
    if (r.host_only) continue;
#endif
    ScratchDir dir;
    for (const auto &f : r.tree) {
      fs::path p = fs::path("src") / f.first;
      fs::create_directories(p.parent_path());
      ASSERT_TRUE(kxtest::write_bytes(p.string(), f.second)) << "row " << r.n;
    }
    MediumOptions o = options();
    if (!r.descriptions.empty()) {
      kxtest::write_bytes("desc.txt", r.descriptions);
      o.descriptions = "desc.txt";
    }
    r.tweak(o);
    MediumResult result;
    BoxRecorder boxes;
    EXPECT_EQ(0, medium_make(&o, &result)) << "row " << r.n;
    EXPECT_EQ(r.message, result.message) << "row " << r.n;
    EXPECT_EQ(0u, boxes.count()) << "row " << r.n << ": " << boxes.dump();
    EXPECT_EQ(r.n == 24, kxtest::exists("out")) << "row " << r.n << ": nothing is written after a refusal";
  }
}

TEST(MediumRefusals, AtMost65535Files) {
#ifdef KX_WIN32
  GTEST_SKIP() << "65,536 files take minutes under Wine; the native build runs this case";
#endif
  ScratchDir dir;
  NoBoxes quiet;
  fs::create_directories("src/DOC");
  for (int i = 0; i < 65536; i++) {
    FILE *f = fopen(((i < 40000 ? "src/" : "src/DOC/") + std::to_string(i)).c_str(), "wb");
    ASSERT_NE(nullptr, f) << i;
    fclose(f);
  }
  MediumOptions o = options();
  o.packed = 0;
  o.flat = 1;
  MediumResult result;
  EXPECT_EQ(0, medium_make(&o, &result));
  EXPECT_STREQ("the tree holds more than 65535 files", result.message);
  fs::remove("src/DOC/65535");
  ASSERT_EQ(1, medium_make(&o, &result)) << result.message;
  List l = read_list("out/DISKLIST.LST");
  EXPECT_EQ(65535, l.header.count);
  EXPECT_STREQ("65534", l.records[25535 - 1].name) << "the last file of DOC";
}

TEST(MediumMake, SameTreeGivesTheSameMediumByteForByte) {
  ScratchDir dir;
  NoBoxes quiet;
  std::vector<std::pair<std::string, std::string>> tree = {
      {"KORV5.EXE", noise(4000, 7)}, {"DOC/A.HTM", std::string(5000, 'a')}, {"DOC/B.HTM", noise(900, 8)},
      {"LIB/Ř.LIB", noise(1500, 9)}, {"C.TXT", "c"},
  };
  for (auto &f : tree) put("src1/" + f.first, f.second);
  std::reverse(tree.begin(), tree.end());
  for (auto &f : tree) put("src2/" + f.first, f.second);   // made in the other order
  for (int packed = 0; packed < 2; packed++) {
    fs::remove_all("out1");
    fs::remove_all("out2");
    MediumOptions a = options("src1", "out1"), b = options("src2", "out2");
    a.packed = b.packed = (int16_t)packed;
    a.capacity = b.capacity = 8192;
    MediumResult result;
    ASSERT_EQ(1, medium_make(&a, &result)) << result.message;
    ASSERT_EQ(1, medium_make(&b, &result)) << result.message;
    EXPECT_GE(result.disks, 2) << "packed " << packed;
    SCOPED_TRACE("packed " + std::to_string(packed));
    expect_same_files(files_below("out1"), files_below("out2"));
  }
}

// A DISKLIST.LST placed by hand: count, then the records as given, then extra bytes.
std::string hand_list(uint16_t count, int records, size_t extra) {
  std::string s(ILST_HEADER_SIZE, '\0');
  s.replace(2, 6, "Zkouš\x01");
  s[0] = 7, s[84] = 1, s[85] = 1, s[86] = (char)(count & 0xFF), s[87] = (char)(count >> 8), s[88] = 2, s[90] = 1;
  for (int i = 0; i < records; i++) {
    std::string r(ILST_RECORD_SIZE, '\0');
    if (i == 0) {
      r.replace(0, 9, "KORV5.EXE");
      r.replace(17, 9, "KORV5.EX_");
      r.replace(34, 1, ".");
      r[52] = (char)0xE0, r[53] = (char)0x93, r[54] = 0x04;   // 300000
      r.replace(58, 14, "Hlavní program");
    } else {
      r.replace(0, 17, "ABCDEFGHIJKLMNOPQ");   // no NUL: the name is cut at 16
      r.replace(17, 3, "A\"B");
      r.replace(34, 3, "D\x01R");
      r[56] = (char)0xFF, r[57] = (char)0xFF;
      r.replace(58, 3, "x\x81y");
    }
    s += r;
  }
  return s + std::string(extra, 'z');
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
  struct Row {
    int n;
    std::string utf8;
    size_t size;
    int16_t result;
    std::string cp1250;
    uint32_t code;
  } rows[] = {
      {1, "P\xC5\x99\xC3\xADli\xC5\xA1 \xC5\xBElu\xC5\xA5ou\xC4\x8Dk\xC3\xBD k\xC5\xAF\xC5\x88", 64, MEDIUM_TEXT_OK,
       "Příliš žluťoučký kůň", 0},
      {2, "\xE2\x82\xAC\xE2\x80\x9E\xCB\x99", 4, MEDIUM_TEXT_OK, "\x80\x84\xFF", 0},   // exact fit
      {3, "\xE2\x82\xAC\xE2\x80\x9E\xCB\x99", 3, MEDIUM_TEXT_TOO_LONG, "\x80\x84", 0},
      {4, "a\xC3\xB8", 8, MEDIUM_TEXT_UNMAPPED, "a", 0xF8},
      {5, "\xE4\xB8\xAD", 8, MEDIUM_TEXT_UNMAPPED, "", 0x4E2D},
      {6, "\xC2\x81", 8, MEDIUM_TEXT_UNMAPPED, "", 0x81},    // a byte Windows-1250 leaves empty
      {7, "\xC0\x80", 8, MEDIUM_TEXT_INVALID, "", 0},        // overlong NUL
      {8, "\xED\xA0\x80", 8, MEDIUM_TEXT_INVALID, "", 0},    // surrogate
      {9, "\xF4\x90\x80\x80", 8, MEDIUM_TEXT_INVALID, "", 0},
      {10, "ab\xE2\x82", 8, MEDIUM_TEXT_INVALID, "ab", 0},   // cut short at the end
      {11, "\x80", 8, MEDIUM_TEXT_INVALID, "", 0},
  };
  for (const Row &r : rows) {
    char text[64];
    memset(text, 'x', sizeof text);
    uint32_t code = 0;
    EXPECT_EQ(r.result, medium_utf8_to_cp1250(r.utf8.c_str(), text, r.size, &code)) << "row " << r.n;
    EXPECT_EQ(r.cp1250, std::string(text)) << "row " << r.n;
    EXPECT_EQ(r.code, code) << "row " << r.n;
  }
  // Every defined byte goes to UTF-8 and back unchanged; the undefined ones show as U+FFFD.
  for (int c = 0x20; c < 0x100; c++) {
    char one[2] = {(char)c, 0}, u[8], back[4];
    ASSERT_EQ(1, medium_cp1250_to_utf8(one, u, sizeof u)) << c;
    if (std::string(u) == "\xEF\xBF\xBD") {
      EXPECT_TRUE(c == 0x81 || c == 0x83 || c == 0x88 || c == 0x90 || c == 0x98) << "byte " << c;
      continue;
    }
    EXPECT_EQ(MEDIUM_TEXT_OK, medium_utf8_to_cp1250(u, back, sizeof back, nullptr)) << "byte " << c;
    EXPECT_EQ(std::string(one), back) << "byte " << c;
  }
  char cut[6];
  EXPECT_EQ(0, medium_cp1250_to_utf8("ab\x9E\x9E", cut, sizeof cut));
  EXPECT_STREQ("ab\xC5\xBE", cut) << "cut at a character's boundary";
  char upper[40];
  EXPECT_EQ(1, medium_upper("žluťoučký kůň łąľż ß÷ şa", upper, sizeof upper));
  EXPECT_STREQ("ŽLUŤOUČKÝ KŮŇ ŁĄĽŻ ß÷ ŞA", upper);
}

// ---- The tool as a process --------------------------------------------------------------------

std::string tool_path() {
#ifdef KX_WIN32
  char self[MAX_PATH];
  GetModuleFileNameA(nullptr, self, MAX_PATH);
  return (fs::path(self).parent_path().parent_path() / "tools" / "mkmedium.exe").string();
#else
  return (fs::read_symlink("/proc/self/exe").parent_path().parent_path() / "tools" / "mkmedium").string();
#endif
}

struct ToolRun {
  int code;
  std::string out, err;
};

ToolRun run_tool(const std::vector<std::string> &args) {
  ToolRun r{-1, "", ""};
  std::string tool = tool_path();
#ifdef KX_WIN32
  std::string line = "\"" + tool + "\"";
  for (const std::string &a : args) line += " \"" + a + "\"";
  SECURITY_ATTRIBUTES inherit = {sizeof inherit, nullptr, TRUE};
  HANDLE out = CreateFileA("tool.out", GENERIC_WRITE, 0, &inherit, CREATE_ALWAYS, 0, nullptr);
  HANDLE err = CreateFileA("tool.err", GENERIC_WRITE, 0, &inherit, CREATE_ALWAYS, 0, nullptr);
  STARTUPINFOA si = {};
  si.cb = sizeof si;
  si.dwFlags = STARTF_USESTDHANDLES;
  si.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
  si.hStdOutput = out;
  si.hStdError = err;
  PROCESS_INFORMATION pi = {};
  std::vector<char> cmd(line.begin(), line.end());
  cmd.push_back(0);
  if (CreateProcessA(nullptr, cmd.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &si, &pi)) {
    WaitForSingleObject(pi.hProcess, 60000);
    DWORD code = 0;
    GetExitCodeProcess(pi.hProcess, &code);
    r.code = (int)code;
    CloseHandle(pi.hProcess);
    CloseHandle(pi.hThread);
  } else {
    ADD_FAILURE() << "cannot start " << line;
  }
  CloseHandle(out);
  CloseHandle(err);
#else
  std::vector<char *> argv;
  argv.push_back((char *)tool.c_str());
  for (const std::string &a : args) argv.push_back((char *)a.c_str());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "tool.out", O_WRONLY | O_CREAT | O_TRUNC, 0644);
  posix_spawn_file_actions_addopen(&actions, 2, "tool.err", O_WRONLY | O_CREAT | O_TRUNC, 0644);
  pid_t pid;
  if (posix_spawn(&pid, tool.c_str(), &actions, nullptr, argv.data(), environ) == 0) {
    int status = 0;
    waitpid(pid, &status, 0);
    r.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  } else {
    ADD_FAILURE() << "cannot start " << tool;
  }
  posix_spawn_file_actions_destroy(&actions);
#endif
  r.out = kxtest::read_bytes("tool.out");
  r.err = kxtest::read_bytes("tool.err");
  return r;
}

TEST(MediumTool, RunsAsAProcess) {
  ScratchDir dir;
  NoBoxes quiet;
  put("src/KORV5.EXE", noise(3000, 11));
  put("src/DOC/NAVOD.HTM", std::string(4000, 'n'));
  kxtest::write_bytes("desc.txt", "KORV5.EXE\t" + utf8("Hlavní program") + "\n");
  struct Row {
    int n;
    std::vector<std::string> args;
    int code;
    std::string out_start, err;
  } rows[] = {
      {1, {"--help"}, 0, "usage: mkmedium [options] SOURCE OUTPUT\n", ""},
      {2, {"--descriptions", "desc.txt", "--setup", "desc.txt", "--capacity", "4000", "src", "out"}, 0,
       "mkmedium: 2 files on 2 disk(s) in out (packed)\n", ""},
      {3, {"--plain", "--flat", "src", "flat"}, 0, "mkmedium: 2 files in flat (flat, plain)\n", ""},
      {4, {"src", "out"}, 1, "", "mkmedium: the output directory out is not empty\n"},
      {5, {"--bogus"}, 2, "", "mkmedium: unknown option --bogus (see mkmedium --help)\n"},
      {6, {"--level", "12", "src", "x"}, 2, "", "mkmedium: --level wants a number from -1 to 9 (see mkmedium --help)\n"},
      {7, {"--list", "nowhere"}, 1, "", "mkmedium: nowhere: no DISKLIST.LST\n"},
  };
  for (const Row &r : rows) {
    ToolRun got = run_tool(r.args);
    EXPECT_EQ(r.code, got.code) << "row " << r.n << ": " << got.err;
    EXPECT_EQ(r.out_start, got.out.substr(0, r.out_start.size())) << "row " << r.n;
    if (r.out_start.empty()) {
      EXPECT_EQ("", got.out) << "row " << r.n;
    }
    EXPECT_EQ(r.err, got.err) << "row " << r.n;
  }
  // The tool's --list prints what the module prints, and the medium it made reads back.
  ToolRun list = run_tool({"--list", "out"});
  EXPECT_EQ(0, list.code) << list.err;
  EXPECT_EQ(listed("out", 1, ""), list.out);
  List l = read_list("out/DISK1/DISKLIST.LST");
  ASSERT_EQ(2u, l.records.size());
  EXPECT_STREQ("NAVOD.HTM", l.records[0].name);
  EXPECT_STREQ("Hlavní program", l.records[1].description);
  EXPECT_EQ(1, l.records[1].disk);
  EXPECT_EQ(noise(3000, 11), inflated("out/DISK2/KORV5.EX_"));
  EXPECT_EQ(kxtest::read_bytes("desc.txt"), kxtest::read_bytes("out/DISK1/SETUP.EXE"));
  EXPECT_EQ(std::string(4000, 'n'), kxtest::read_bytes("flat/NAVOD.HTM"));
}

}  // namespace
