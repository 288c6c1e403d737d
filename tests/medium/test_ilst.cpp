// The install lists as bytes: DISKLIST.LST header and records, UNINST.LST records, disk
// identification file names. Bytes are placed by hand at their offsets, never through the code
// under test.
#include "installer/ilst.h"
#include "tests/support/kxtest.h"

#include <gtest/gtest.h>

#include <string.h>

#include <string>
#include <vector>

using kxtest::BoxRecorder;

namespace {

const unsigned char kFill = 0xA5;   // what every buffer holds before a call

std::vector<unsigned char> filled(size_t n) { return std::vector<unsigned char>(n, kFill); }

void place(std::vector<unsigned char> &b, size_t at, const std::string &bytes) {
  memcpy(b.data() + at, bytes.data(), bytes.size());
}

void place_u16(std::vector<unsigned char> &b, size_t at, unsigned v) {
  b[at] = (unsigned char)(v & 0xFF);
  b[at + 1] = (unsigned char)(v >> 8);
}

void place_u32(std::vector<unsigned char> &b, size_t at, uint32_t v) {
  for (int i = 0; i < 4; i++) b[at + i] = (unsigned char)(v >> (8 * i));
}

std::string hex_diff(const std::vector<unsigned char> &want, const std::vector<unsigned char> &got) {
  for (size_t i = 0; i < want.size() && i < got.size(); i++)
    if (want[i] != got[i]) {
      char text[80];
      snprintf(text, sizeof text, "first difference at offset %u: want 0x%02X, got 0x%02X", (unsigned)i, want[i],
               got[i]);
      return text;
    }
  return "sizes differ";
}

// Name fields as they may stand on a medium, and what must be read from them.
struct NameRow {
  int n;
  std::string field;   // the 17 bytes (shorter: the rest stays the fill pattern)
  std::string want;
};

const std::vector<NameRow> &name_rows() {
  static const std::vector<NameRow> rows = {
      {1, std::string("\0", 1), ""},
      {2, std::string("A\0", 2), "A"},
      {3, std::string("KORV5.EXE\0", 10), "KORV5.EXE"},   // the fill after the NUL is ignored
      {4, kxtest::pattern_text(15) + std::string("\0", 1), kxtest::pattern_text(15)},
      {5, kxtest::pattern_text(16) + std::string("\0", 1), kxtest::pattern_text(16)},
      {6, kxtest::pattern_text(17), kxtest::pattern_text(16)},   // no NUL at all: cut at 16
      {7, "Přehled.txt" + std::string("\0ZZZZZ", 6), "Přehled.txt"},
  };
  return rows;
}

TEST(IlstRecord, DecodesNameFieldsPlacedByHand) {
  for (const NameRow &r : name_rows()) {
    // The same row in each of the three name fields, the others holding distinct names, so
    // that a field read at a wrong offset or run into its neighbour shows.
    for (size_t field = 0; field < 3; field++) {
      std::vector<unsigned char> b = filled(ILST_RECORD_SIZE);
      const char *others[3] = {"INSTALLED\0", "STORED\0", "DIR\0"};
      for (size_t f = 0; f < 3; f++) place(b, 17 * f, std::string(others[f], strlen(others[f]) + 1));
      place(b, 17 * field, r.field);
      place_u32(b, 52, 0x12345678);
      place_u16(b, 56, 0x0102);
      place(b, 58, std::string("Popis\0", 6));
      ListRecord rec;
      memset(&rec, 0x5A, sizeof rec);
      ASSERT_EQ(1, ilst_decode_record(b.data(), &rec));
      const char *got[3] = {rec.name, rec.stored, rec.directory};
      for (size_t f = 0; f < 3; f++)
        EXPECT_EQ(f == field ? r.want : std::string(others[f]), got[f]) << "row " << r.n << " field " << field;
      EXPECT_EQ(0x12345678u, rec.size) << "row " << r.n;
      EXPECT_EQ(0x0102, rec.disk) << "row " << r.n;
      EXPECT_STREQ("Popis", rec.description) << "row " << r.n;
    }
  }
}

TEST(IlstRecord, DescriptionIsCutAtEightyCharacters) {
  struct Row {
    int n;
    std::string field;   // up to 82 bytes at offset 58
    std::string want;
  } rows[] = {
      {1, kxtest::pattern_text(79) + std::string("\0", 1), kxtest::pattern_text(79)},
      {2, kxtest::pattern_text(80) + std::string("\0", 1), kxtest::pattern_text(80)},
      {3, kxtest::pattern_text(81) + std::string("\0", 1), kxtest::pattern_text(80)},
      {4, kxtest::pattern_text(82), kxtest::pattern_text(80)},   // no NUL up to the record's end
      {5, std::string("Hlavní program\0žžž", 18), "Hlavní program"},
  };
  for (const Row &r : rows) {
    std::vector<unsigned char> b = filled(ILST_RECORD_SIZE);
    place(b, 58, r.field);
    ListRecord rec;
    ASSERT_EQ(1, ilst_decode_record(b.data(), &rec));
    EXPECT_EQ(r.want, std::string(rec.description)) << "row " << r.n;
  }
}

TEST(IlstRecord, EncodesEveryFieldAtItsOffset) {
  ListRecord rec;
  memset(&rec, 0, sizeof rec);
  strcpy(rec.name, "KVWPRN.EXE");
  memcpy(rec.stored, kxtest::pattern_text(16).c_str(), 17);
  strcpy(rec.directory, "Knihovny");
  rec.size = 0xFEDCBA98;
  rec.disk = 0x0A0B;
  strcpy(rec.description, "Tisk výkresů");

  std::vector<unsigned char> want(ILST_RECORD_SIZE, 0);
  place(want, 0, "KVWPRN.EXE");
  place(want, 17, kxtest::pattern_text(16));
  place(want, 34, "Knihovny");
  place_u32(want, 52, 0xFEDCBA98);
  place_u16(want, 56, 0x0A0B);
  place(want, 58, "Tisk výkresů");

  std::vector<unsigned char> got = filled(ILST_RECORD_SIZE + 8);
  ASSERT_EQ(1, ilst_encode_record(&rec, got.data()));
  std::vector<unsigned char> record(got.begin(), got.begin() + ILST_RECORD_SIZE);
  EXPECT_EQ(want, record) << hex_diff(want, record);
  for (size_t i = ILST_RECORD_SIZE; i < got.size(); i++) EXPECT_EQ(kFill, got[i]) << "written past the record at " << i;

  // Arrays filled to the last byte without a NUL are cut at their limits.
  memset(rec.name, 'N', sizeof rec.name);
  memset(rec.description, 'D', sizeof rec.description);
  ASSERT_EQ(1, ilst_encode_record(&rec, got.data()));
  EXPECT_EQ(std::string(16, 'N') + std::string(1, '\0'), std::string((char *)got.data(), 17));
  EXPECT_EQ(std::string(80, 'D') + std::string(2, '\0'), std::string((char *)got.data() + 58, 82));
}

TEST(IlstRecord, RoundTripsExtremeValues) {
  ListRecord rows[3] = {};
  strcpy(rows[1].name, "KORV5.EXE"), strcpy(rows[1].directory, "."), strcpy(rows[1].description, "Hlavní program");
  rows[1].size = 1, rows[1].disk = 25;
  strcpy(rows[2].name, "ABCDEFGHIJKLMNOP"), strcpy(rows[2].stored, "ŘÍZENÍ-ŠUMAVA.AB");
  strcpy(rows[2].description, kxtest::pattern_text(80).c_str());
  rows[2].size = 0xFFFFFFFF, rows[2].disk = 0xFFFF;
  for (int n = 0; n < 3; n++) {
    const ListRecord &in = rows[n];
    unsigned char bytes[ILST_RECORD_SIZE];
    ListRecord out;
    memset(&out, 0x5A, sizeof out);
    ASSERT_EQ(1, ilst_encode_record(&in, bytes));
    ASSERT_EQ(1, ilst_decode_record(bytes, &out));
    EXPECT_EQ(std::string(in.name) + "|" + in.stored + "|" + in.directory + "|" + in.description,
              std::string(out.name) + "|" + out.stored + "|" + out.directory + "|" + out.description)
        << "row " << n;
    EXPECT_EQ(in.size, out.size) << "row " << n;
    EXPECT_EQ(in.disk, out.disk) << "row " << n;
  }
}

TEST(IlstHeader, DecodesAndEncodesByHand) {
  std::vector<unsigned char> b = filled(ILST_HEADER_SIZE);
  place_u16(b, 0, 0x1122);
  place(b, 2, std::string("KORVEX 5\0", 9));
  place_u16(b, 84, 0x3344);
  place_u16(b, 86, 0xFFFF);
  place_u16(b, 88, 0x5566);
  place_u16(b, 90, 0x0100);
  ListHeader h;
  memset(&h, 0x5A, sizeof h);
  ASSERT_EQ(1, ilst_decode_header(b.data(), &h));
  EXPECT_EQ(0x1122, h.reserved0);
  EXPECT_STREQ("KORVEX 5", h.text);
  EXPECT_EQ(0x3344, h.reserved84);
  EXPECT_EQ(0xFFFF, h.count);
  EXPECT_EQ(0x5566, h.reserved88);
  EXPECT_EQ(0x0100, h.packed) << "any non-zero word is kept as it stands";

  // Encoding: the text zero-filled to the end of its field, nothing written past the header.
  std::vector<unsigned char> want(ILST_HEADER_SIZE, 0);
  place_u16(want, 0, 0x1122);
  place(want, 2, "KORVEX 5");
  place_u16(want, 84, 0x3344);
  place_u16(want, 86, 0xFFFF);
  place_u16(want, 88, 0x5566);
  place_u16(want, 90, 0x0100);
  std::vector<unsigned char> got = filled(ILST_HEADER_SIZE + 4);
  ASSERT_EQ(1, ilst_encode_header(&h, got.data()));
  std::vector<unsigned char> header(got.begin(), got.begin() + ILST_HEADER_SIZE);
  EXPECT_EQ(want, header) << hex_diff(want, header);
  EXPECT_EQ(kFill, got[ILST_HEADER_SIZE]);

  // A text field without a NUL: 80 characters are read, and the count behind it is intact.
  place(b, 2, kxtest::pattern_text(82));
  ASSERT_EQ(1, ilst_decode_header(b.data(), &h));
  EXPECT_EQ(kxtest::pattern_text(80), std::string(h.text));
  EXPECT_EQ(0xFFFF, h.count);
}

TEST(IlstUninstall, PathsAtTheLimitAndBeyond) {
  struct Row {
    int n;
    size_t length;   // characters in the field before a NUL (1026: no NUL at all)
    size_t want;
  } rows[] = {{1, 0, 0}, {2, 1022, 1022}, {3, 1023, 1023}, {4, 1024, 1023}, {5, 1025, 1023}, {6, 1026, 1023}};
  for (const Row &r : rows) {
    std::vector<unsigned char> b = filled(ILST_UNINSTALL_SIZE);
    place_u16(b, 0, 0x0203);
    std::string path = kxtest::pattern_text(r.length);
    place(b, 2, path);
    if (r.length < 1026) b[2 + r.length] = 0;
    UninstallRecord rec;
    memset(&rec, 0x5A, sizeof rec);
    ASSERT_EQ(1, ilst_decode_uninstall(b.data(), &rec)) << "row " << r.n;
    EXPECT_EQ(0x0203, rec.kind) << "row " << r.n;
    EXPECT_EQ(path.substr(0, r.want), std::string(rec.path)) << "row " << r.n;
  }

  // Encoding: kind, path, zeros to the record's end; an unterminated array gives 1023 chars.
  UninstallRecord rec;
  rec.kind = UNINST_MACHINE_KEY;
  strcpy(rec.path, "Software\\KORV\\KORVEX\\5");
  std::vector<unsigned char> want(ILST_UNINSTALL_SIZE, 0);
  place_u16(want, 0, 3);
  place(want, 2, "Software\\KORV\\KORVEX\\5");
  std::vector<unsigned char> got = filled(ILST_UNINSTALL_SIZE + 4);
  ASSERT_EQ(1, ilst_encode_uninstall(&rec, got.data()));
  std::vector<unsigned char> record(got.begin(), got.begin() + ILST_UNINSTALL_SIZE);
  EXPECT_EQ(want, record) << hex_diff(want, record);
  EXPECT_EQ(kFill, got[ILST_UNINSTALL_SIZE]);
  memset(rec.path, 'p', sizeof rec.path);
  ASSERT_EQ(1, ilst_encode_uninstall(&rec, got.data()));
  EXPECT_EQ(std::string(1023, 'p') + std::string(3, '\0'), std::string((char *)got.data() + 2, 1026));
}

TEST(IlstDiskId, LettersAToZ) {
  struct Row {
    int n;
    uint16_t disk;
    Flag result;
    const char *name;
  } rows[] = {{1, 0, 1, "A.KORV"}, {2, 1, 1, "B.KORV"}, {3, 25, 1, "Z.KORV"}, {4, 26, 0, ""}, {5, 0xFFFF, 0, ""}};
  for (const Row &r : rows) {
    char name[ILST_DISK_ID_NAME + 4];
    memset(name, 'x', sizeof name);
    EXPECT_EQ(r.result, ilst_disk_id_name(r.disk, name)) << "row " << r.n;
    EXPECT_STREQ(r.name, name) << "row " << r.n;
  }
}

TEST(IlstGuards, NullArgumentsAreInternalErrors) {
  unsigned char bytes[ILST_UNINSTALL_SIZE];
  ListHeader h = {};
  ListRecord rec = {};
  UninstallRecord u = {};
  memset(bytes, kFill, sizeof bytes);
  BoxRecorder boxes;
  Flag results[] = {
      ilst_encode_header(nullptr, bytes), ilst_encode_header(&h, nullptr), ilst_decode_header(nullptr, &h),
      ilst_decode_header(bytes, nullptr), ilst_encode_record(nullptr, bytes), ilst_encode_record(&rec, nullptr),
      ilst_decode_record(nullptr, &rec), ilst_decode_record(bytes, nullptr), ilst_encode_uninstall(nullptr, bytes),
      ilst_encode_uninstall(&u, nullptr), ilst_decode_uninstall(nullptr, &u), ilst_decode_uninstall(bytes, nullptr),
      ilst_disk_id_name(0, nullptr),
  };
  for (size_t i = 0; i < KX_COUNT(results); i++) EXPECT_EQ(0, results[i]) << "call " << i + 1;
  ASSERT_EQ(KX_COUNT(results), boxes.count()) << boxes.dump();
  for (const kxtest::Box &b : boxes.boxes()) EXPECT_LT(0, kxtest::internal_error_line(b, "ilst"));
  for (unsigned char c : bytes) ASSERT_EQ(kFill, c) << "a refused call wrote into the buffer";
}

}  // namespace
