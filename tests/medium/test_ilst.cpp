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

}  // namespace
