// The install lists as bytes: DISKLIST.LST header and records, UNINST.LST records, disk
// identification file names. Bytes are placed by hand at their offsets, never through the code
// under test.
#include "lists/ilst.h"
#include "tests/support/kxtest.h"

#include <gtest/gtest.h>

#include <string.h>

#include <string>

namespace {

const char kFill = (char)0xA5;   // what every buffer holds before a call

std::string pat(size_t n) { return kxtest::pattern_text(n); }
std::string z(const std::string &text) { return text + std::string(1, '\0'); }
unsigned char *bytes(std::string &b) { return (unsigned char *)&b[0]; }

void place(std::string &b, size_t at, const std::string &text) { b.replace(at, text.size(), text); }

void place_le(std::string &b, size_t at, uint32_t v, int width) {
  for (int i = 0; i < width; i++) b[at + i] = (char)(v >> (8 * i));
}

TEST(IlstRecord, DecodesTextFieldsPlacedByHand) {
  struct Field { size_t at, width, limit; } fields[] = {{0, 17, 16}, {17, 17, 16}, {34, 17, 16}, {58, 82, 80}};
  const char *others[4] = {"INSTALLED", "STORED", "DIR", "Popis"};
  for (size_t f = 0; f < 4; f++) {
    const Field &at = fields[f];
    // A shorter field leaves the fill pattern after it; row 4 has no NUL up to the field's end.
    struct Row { int n; std::string field, want; } rows[] = {
        {1, z(""), ""}, {2, z(pat(at.limit - 1)), pat(at.limit - 1)}, {3, z(pat(at.limit)), pat(at.limit)},
        {4, pat(at.width), pat(at.limit)}, {5, z("Přehled.txt") + "ZZZZZ", "Přehled.txt"}};
    for (const Row &r : rows) {
      // The other fields hold their own texts, so a field read at a wrong offset or run into its
      // neighbour shows.
      std::string b(ILST_RECORD_SIZE, kFill);
      for (size_t o = 0; o < 4; o++) place(b, fields[o].at, z(others[o]));
      place(b, at.at, r.field);
      place_le(b, 52, 0xF2345678, 4);
      place_le(b, 56, 0x8102, 2);
      ListRecord rec;
      memset(&rec, 0x5A, sizeof rec);
      ASSERT_EQ(1, ilst_decode_record(bytes(b), &rec));
      const char *got[4] = {rec.name, rec.stored, rec.directory, rec.description};
      for (size_t o = 0; o < 4; o++)
        EXPECT_EQ(o == f ? r.want : std::string(others[o]), got[o]) << "field " << f << " row " << r.n << " read " << o;
      EXPECT_EQ(0xF2345678u, rec.size) << "field " << f << " row " << r.n;
      EXPECT_EQ(0x8102, rec.disk) << "field " << f << " row " << r.n;
    }
  }
}

TEST(IlstRecord, EncodesEveryFieldAtItsOffset) {
  // Arrays filled to the last byte without a NUL (name, description) are cut at their limits;
  // the rest of every field is zero-filled, and nothing is written past the record.
  ListRecord rec = {"", "", "Knihovny", 0xFEDCBA98, 0x0A0B, ""};
  memcpy(rec.stored, pat(16).c_str(), 17);
  memset(rec.name, 'N', sizeof rec.name);
  memset(rec.description, 'D', sizeof rec.description);
  std::string want(ILST_RECORD_SIZE, '\0'), got(ILST_RECORD_SIZE + 8, kFill);
  place(want, 0, std::string(16, 'N'));
  place(want, 17, pat(16));
  place(want, 34, "Knihovny");
  place_le(want, 52, 0xFEDCBA98, 4);
  place_le(want, 56, 0x0A0B, 2);
  place(want, 58, std::string(80, 'D'));
  ASSERT_EQ(1, ilst_encode_record(&rec, bytes(got)));
  EXPECT_EQ(want + std::string(8, kFill), got);
}

TEST(IlstHeader, DecodesAndEncodesByHand) {
  std::string b(ILST_HEADER_SIZE, kFill);
  place_le(b, 0, 0x1122, 2);
  place(b, 2, z("KORVEX 5"));
  place_le(b, 84, 0x3344, 2);
  place_le(b, 86, 0xFFFF, 2);
  place_le(b, 88, 0x5566, 2);
  place_le(b, 90, 0x0100, 2);
  ListHeader h;
  memset(&h, 0x5A, sizeof h);
  ASSERT_EQ(1, ilst_decode_header(bytes(b), &h));
  EXPECT_EQ(0x1122, h.reserved0);
  EXPECT_STREQ("KORVEX 5", h.text);
  EXPECT_EQ(0x3344, h.reserved84);
  EXPECT_EQ(0xFFFF, h.count);
  EXPECT_EQ(0x5566, h.reserved88);
  EXPECT_EQ(0x0100, h.packed) << "any non-zero word is kept as it stands";

  // Encoding gives the same bytes with the text zero-filled, and nothing past the header.
  place(b, 11, std::string(73, '\0'));
  std::string got(ILST_HEADER_SIZE + 4, kFill);
  ASSERT_EQ(1, ilst_encode_header(&h, bytes(got)));
  EXPECT_EQ(b + std::string(4, kFill), got);

  // A text field without a NUL: 80 characters are read, and the count behind it is intact.
  place(b, 2, pat(82));
  ASSERT_EQ(1, ilst_decode_header(bytes(b), &h));
  EXPECT_EQ(pat(80), std::string(h.text));
  EXPECT_EQ(0xFFFF, h.count);
}

TEST(IlstUninstall, PathsAtTheLimitAndBeyond) {
  // Characters in the field before a NUL (1026: no NUL at all), and what is read of them.
  struct Row { int n; size_t length, want; } rows[] = {
      {1, 0, 0}, {2, 1022, 1022}, {3, 1023, 1023}, {4, 1024, 1023}, {5, 1025, 1023}, {6, 1026, 1023}};
  for (const Row &r : rows) {
    std::string b(ILST_UNINSTALL_SIZE, kFill);
    place_le(b, 0, 0x0203, 2);
    place(b, 2, r.length < 1026 ? z(pat(r.length)) : pat(r.length));
    UninstallRecord rec;
    memset(&rec, 0x5A, sizeof rec);
    ASSERT_EQ(1, ilst_decode_uninstall(bytes(b), &rec)) << "row " << r.n;
    EXPECT_EQ(0x0203, rec.kind) << "row " << r.n;
    EXPECT_EQ(pat(r.want), std::string(rec.path)) << "row " << r.n;
  }

  // Encoding: kind, path, zeros to the record's end, nothing past it; an unterminated array
  // gives 1023 characters.
  UninstallRecord rec;
  rec.kind = UNINST_MACHINE_KEY;
  memset(rec.path, 'p', sizeof rec.path);
  std::string got(ILST_UNINSTALL_SIZE + 4, kFill);
  ASSERT_EQ(1, ilst_encode_uninstall(&rec, bytes(got)));
  EXPECT_EQ(std::string("\3\0", 2) + std::string(1023, 'p') + std::string(3, '\0') + std::string(4, kFill), got);
}

TEST(IlstDiskId, LettersAToZ) {
  struct Row { int n; uint16_t disk; Flag result; const char *name; } rows[] = {
      {1, 0, 1, "A.KORV"}, {2, 1, 1, "B.KORV"}, {3, 25, 1, "Z.KORV"}, {4, 26, 0, ""}, {5, 0xFFFF, 0, ""}};
  for (const Row &r : rows) {
    char name[ILST_DISK_ID_NAME + 4];
    memset(name, 'x', sizeof name);
    EXPECT_EQ(r.result, ilst_disk_id_name(r.disk, name)) << "row " << r.n;
    EXPECT_STREQ(r.name, name) << "row " << r.n;
  }
}

TEST(IlstGuards, NullArgumentsAreInternalErrors) {
  std::string buffer(ILST_UNINSTALL_SIZE, kFill);
  unsigned char *b = bytes(buffer);
  ListHeader h = {};
  ListRecord rec = {};
  UninstallRecord u = {};
  kxtest::BoxRecorder boxes;
  Flag results[] = {
      ilst_encode_header(nullptr, b),   ilst_encode_header(&h, nullptr),   ilst_decode_header(nullptr, &h),
      ilst_decode_header(b, nullptr),   ilst_encode_record(nullptr, b),    ilst_encode_record(&rec, nullptr),
      ilst_decode_record(nullptr, &rec), ilst_decode_record(b, nullptr),   ilst_encode_uninstall(nullptr, b),
      ilst_encode_uninstall(&u, nullptr), ilst_decode_uninstall(nullptr, &u), ilst_decode_uninstall(b, nullptr),
      ilst_disk_id_name(0, nullptr),
  };
  for (size_t i = 0; i < KX_COUNT(results); i++) EXPECT_EQ(0, results[i]) << "call " << i + 1;
  ASSERT_EQ(KX_COUNT(results), boxes.count()) << boxes.dump();
  for (const kxtest::Box &b : boxes.boxes()) EXPECT_LT(0, kxtest::internal_error_line(b, "ilst"));
  EXPECT_EQ(std::string(ILST_UNINSTALL_SIZE, kFill), buffer) << "a refused call wrote into the buffer";
}

}  // namespace
