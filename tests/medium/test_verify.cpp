// Checking a medium before it goes out: good media pass, each damage gives its own line; the
// release steps: signing commands, reproducible CD and floppy images that verify.
#include "common/mm.h"
#include "lists/ilst.h"
#include "pack/zip_util.h"
#include "tests/support/kxtest.h"
#include "tools/mkmedium/medium.h"
#include "tools/mkmedium/release.h"
#include "tools/mkmedium/verify.h"

#include <gtest/gtest.h>

#include <stdio.h>

#include <filesystem>
#include <functional>
#include <string>

namespace fs = std::filesystem;
using kxtest::read_bytes;
using kxtest::ScratchDir;
using kxtest::write_bytes;

namespace {

void put(const std::string &path, const std::string &data) {
  if (fs::path(path).has_parent_path()) fs::create_directories(fs::path(path).parent_path());
  ASSERT_TRUE(write_bytes(path, data)) << path;
}

// Bytes that do not pack.
std::string noise(size_t n) {
  std::string s(n, 0);
  uint32_t seed = 7;
  for (char &c : s) c = (char)((seed = seed * 1103515245u + 12345u) >> 16);
  return s;
}

// The tree: three files in two subdirectories and the target directory.
void make_tree() {
  put("src/EXE/KORV5.EXE", "MZ program");
  put("src/SLIB/ZAKLAD.S32", noise(200000));
  put("src/DATA.BIN", noise(300000));
}

// A medium of the tree: on two disks (EXE and SLIB on DISK1, DATA.BIN on DISK2), or flat.
bool make(const char *out, int16_t packed, int16_t flat) {
  MediumOptions o;
  medium_default_options(&o);
  o.source = "src", o.output = out, o.packed = packed, o.flat = flat, o.capacity = 310000;
  MediumResult r;
  bool ok = medium_make(&o, &r);
  EXPECT_TRUE(ok) << r.message;
  return ok;
}

struct Verified { bool ok; std::string report; };

Verified verify(const std::string &dir) {
  FILE *out = tmpfile();
  VerifyResult result;
  char message[MEDIUM_MESSAGE_SIZE];
  bool ok = verify_directory(dir.c_str(), out, &result, message, sizeof message);
  std::string report(message);
  rewind(out);
  for (int c; (c = fgetc(out)) != EOF;) report += (char)c;
  fclose(out);
  return {ok, report};
}

// Changes bytes of a file in place: n bytes at offset at (negative: from the end).
void patch(const std::string &path, long at, const std::string &bytes) {
  std::string data = read_bytes(path);
  size_t where = at < 0 ? data.size() + at : (size_t)at;
  ASSERT_LE(where + bytes.size(), data.size()) << path;
  data.replace(where, bytes.size(), bytes);
  ASSERT_TRUE(write_bytes(path, data));
}

std::string u16(uint16_t v) { return std::string{(char)(v & 0xFF), (char)(v >> 8)}; }
std::string u32(uint32_t v) { return u16((uint16_t)v) + u16((uint16_t)(v >> 16)); }
long record(int n, int field) { return ILST_HEADER_SIZE + ILST_RECORD_SIZE * (n - 1) + field; }

const std::string LIST = "m/DISK1/DISKLIST.LST";

TEST(Verify, GoodMediaPassAndEachDamageGivesItsOwnLine) {
  ScratchDir dir;
  kxtest::BoxRecorder boxes;
  make_tree();
  struct Row {
    int n;
    int16_t packed, flat;
    std::function<void()> damage;
    std::string line;   // the one problem line; empty: no problem
  } rows[] = {
      {1, 1, 0, [] {}, ""},
      {2, 0, 0, [] {}, ""},
      {3, 1, 1, [] {}, ""},
      {4, 1, 0, [] { fs::remove("m/DISK2/DATA.BI_"); }, "record 3 DATA.BIN: DATA.BI_ is missing from DISK2"},
      {5, 1, 0, [] { fs::rename("m/DISK2/DATA.BI_", "m/DISK1/DATA.BI_"); },
       "record 3 DATA.BIN: DATA.BI_ is on DISK1, the list says DISK2"},
      {6, 1, 0, [] { fs::resize_file("m/DISK1/ZAKLAD.S3_", fs::file_size("m/DISK1/ZAKLAD.S3_") / 2); },
       "record 2 SLIB\\ZAKLAD.S32: ZAKLAD.S3_ is cut short"},
      {7, 1, 0, [] { patch("m/DISK1/ZAKLAD.S3_", -1, "\x55"); },
       "record 2 SLIB\\ZAKLAD.S32: ZAKLAD.S3_ is not a good zlib stream (damaged data or Adler-32)"},
      {8, 1, 0, [] { patch(LIST, record(1, ILST_AT_SIZE), u32(11)); },
       "record 1 EXE\\KORV5.EXE: KORV5.EX_ inflates to 10 bytes, the list says 11"},
      {9, 1, 0, [] { patch(LIST, record(2, ILST_AT_SIZE), u32(2)); },
       "record 2 SLIB\\ZAKLAD.S32: ZAKLAD.S3_ inflates to 200000 bytes, the list says 2"},
      {10, 0, 0, [] { patch(LIST, record(3, ILST_AT_SIZE), u32(299999)); },
       "record 3 DATA.BIN: DATA.BIN has 300000 bytes, the list says 299999"},
      {11, 1, 0, [] { write_bytes("m/DISK2/B.KORV", "DISK: 3\r\n"); }, "DISK2: B.KORV says DISK: 3"},
      {12, 1, 0, [] { write_bytes("m/DISK1/A.KORV", "DISK: 1\r\nSVAZEK: 1\r\n"); },
       "DISK1: A.KORV holds the unknown keyword SVAZEK:"},
      {13, 1, 0, [] { fs::remove("m/DISK2/B.KORV"); }, "DISK2: B.KORV is missing"},
      {14, 1, 0, [] { patch(LIST, ILST_AT_COUNT, u16(5)); },
       "DISKLIST.LST: the header counts 5 records, the file holds 3"},
      {15, 1, 0, [] { patch(LIST, record(1, ILST_AT_DIRECTORY), std::string("..\\WINDOWS\0", 11)); },
       "record 1: the subdirectory \"..\\WINDOWS\": the name holds \\, which Windows does not allow in file names"},
      {16, 1, 0, [] { patch(LIST, record(3, ILST_AT_NAME), std::string("C:\\AUTOEXEC.BAT\0", 16)); },
       "record 3: the installed name \"C:\\AUTOEXEC.BAT\": the name holds :, which Windows does not allow in file "
       "names"},
      {17, 1, 0, [] { patch(LIST, record(2, ILST_AT_STORED), std::string("NUL\0", 4)); },
       "record 2: the stored name \"NUL\": the name is a device name on Windows"},
      {18, 1, 0, [] { patch(LIST, record(3, ILST_AT_DISK), u16(7)); },
       "record 3 DATA.BIN: the list puts it on DISK8, the medium has 2 disk(s)"},
      {19, 1, 0, [] { fs::resize_file(LIST, 50); }, "DISKLIST.LST: 50 bytes, shorter than a list header"},
      {20, 1, 1, [] { fs::remove("m/DISKLIST.LST"); }, "m: neither DISKLIST.LST nor DISK1 is there"},
      {21, 0, 1, [] { fs::rename("m/DATA.BIN", "m/data.bin"); }, ""},   // found without regard to case
      {22, 1, 0, [] { fs::copy_file("m/DISK1/KORV5.EX_", "m/DISK2/korv5.ex_"); },
       "record 1 EXE\\KORV5.EXE: KORV5.EX_ is on DISK2 too, the installer may take that one"},
  };
  for (const Row &r : rows) {
    fs::remove_all("m");
    if (!make("m", r.packed, r.flat)) continue;
    r.damage();
    Verified got = verify("m");
    std::string summary = r.line.empty() ? ": no problems\n" : ": 1 problem(s)\n";
    if (r.n == 20) summary = "";   // no medium at all: the message only
    EXPECT_EQ(r.line.empty(), got.ok) << "row " << r.n << ":\n" << got.report;
    EXPECT_EQ(0u, got.report.find(r.line.empty() ? "verify: 3 records on " : r.line + (summary.empty() ? "" : "\n")))
        << "row " << r.n << ":\n" << got.report;
    EXPECT_NE(std::string::npos, got.report.find(summary)) << "row " << r.n << ":\n" << got.report;
  }
  EXPECT_EQ(0u, boxes.count()) << boxes.dump();
}

#ifndef KX_WIN32
// What the release steps make: signed copies (the tree untouched), images byte for byte the
// same from the same tree, and image sets that verify. Needs xorriso and mtools.
bool release(const char *out, ReleaseOptions r, int16_t flat = 0, std::string *message = nullptr) {
  MediumOptions o;
  medium_default_options(&o);
  o.source = "src", o.output = out, o.setup = "setup.exe", o.flat = flat, o.capacity = 310000;
  MediumResult result;
  bool ok = release_make(&o, &r, &result);
  if (message) *message = result.message;
  return ok;
}

std::string inflated(const std::string &path) {
  std::string packed = read_bytes(path);
  ZipUtil zip;
  ZipInit(&zip);
  unsigned char *out = nullptr;
  uint32_t length = 0;
  EXPECT_EQ(1, DecompressBuffer(&zip, packed.data(), (uint32_t)packed.size(), &out, &length)) << path;
  std::string plain((const char *)out, length);
  mm_free(out, MM_HERE);
  return plain;
}

TEST(Release, SigningImagesAndTheirCheck) {
  ScratchDir dir;
  make_tree();
  put("src/EXE/HELPER.dll", "MZ library");
  put("setup.exe", "MZ setup");
  // Signing: every program and library gets the mark, nothing else does, the tree stays as it is.
  std::string message;
  ASSERT_TRUE(release("signed", {nullptr, "sh -c 'printf \" signed\" >>\"$1\"' sign {}", nullptr, nullptr}, 1, &message))
      << message;
  struct Row { int n; std::string file, content; } rows[] = {
      {1, "signed/SETUP.EXE", "MZ setup signed"},
      {2, "signed/KORV5.EX_", "MZ program signed"},
      {3, "signed/HELPER.dl_", "MZ library signed"},
      {4, "signed/ZAKLAD.S3_", noise(200000)},
      {5, "src/EXE/KORV5.EXE", "MZ program"},
      {6, "setup.exe", "MZ setup"},
  };
  for (const Row &r : rows) {
    std::string got = r.n >= 5 || r.n == 1 ? read_bytes(r.file) : inflated(r.file);
    EXPECT_TRUE(r.content == got) << "row " << r.n << ": " << got.substr(0, 40);
  }
  EXPECT_FALSE(release("unsigned", {nullptr, "false {}", nullptr, nullptr}, 1, &message));
  EXPECT_EQ("signing ", message.substr(0, 8)) << message;
  EXPECT_FALSE(fs::exists("unsigned/DISKLIST.LST")) << "a failed signature leaves no medium";
  // Two CD images and two floppy sets of the same tree are the same; each verifies.
  ASSERT_TRUE(release("cd1", {nullptr, nullptr, "cd1.iso", nullptr}, 0, &message)) << message;
  ASSERT_TRUE(release("cd2", {nullptr, nullptr, "cd2.iso", nullptr}, 0, &message)) << message;
  ASSERT_TRUE(release("fd1", {nullptr, nullptr, nullptr, "img1"}, 0, &message)) << message;
  ASSERT_TRUE(release("fd2", {nullptr, nullptr, nullptr, "img2"}, 0, &message)) << message;
  EXPECT_TRUE(read_bytes("cd1.iso") == read_bytes("cd2.iso")) << "the CD images differ";
  EXPECT_TRUE(fs::exists("img1/DISK2.IMG") && !fs::exists("img1/DISK3.IMG"));
  for (const char *image : {"DISK1.IMG", "DISK2.IMG"}) {
    EXPECT_EQ(1474560u, read_bytes(std::string("img1/") + image).size()) << image;
    EXPECT_TRUE(read_bytes(std::string("img1/") + image) == read_bytes(std::string("img2/") + image)) << image;
  }
  EXPECT_FALSE(release("cd3", {nullptr, nullptr, "cd1.iso", nullptr}, 0, &message)) << "an image is not written over";
  FILE *out = tmpfile();
  EXPECT_EQ(0, release_verify("cd1.iso", out, out));
  EXPECT_EQ(0, release_verify("img1", out, out));
  patch("img1/DISK2.IMG", 0, std::string(512, 0));   // no boot sector: no file system
  EXPECT_EQ(1, release_verify("img1", out, out));
  fclose(out);
}
#endif

}  // namespace
