// The file layer: open modes and their messages, lines, length-prefixed strings, memory and
// counting modes, block copy.
#include "common/file.h"
#include "tests/support/kxtest.h"

#include <gtest/gtest.h>

#include <string.h>

#include <string>

using kxtest::BoxRecorder;
using kxtest::ScratchDir;

namespace {

#ifdef KX_WIN32
const char *const kBreak = "\r\n";
#else
const char *const kBreak = "\n";
#endif

// A file object for path, opened in mode; null (and a test failure) when that fails.
FileObject *opened(const std::string &path, int16_t mode) {
  FileObject *f = nullptr;
  EXPECT_EQ(1, file_create(&f, path.c_str()));
  if (f && !file_open(f, mode)) file_destroy(&f);
  EXPECT_NE(nullptr, f) << path << " mode " << mode;
  return f;
}

// The one recorded box: "" when there is none, "internal" for a fault report of module file,
// else its text.
std::string box_of(const BoxRecorder &rec) {
  if (rec.count() != 1) return rec.count() ? "boxes:\n" + rec.dump() : "";
  const kxtest::Box &box = rec.only();
  return box.title == WE_TITLE_INTERNAL && kxtest::internal_error_line(box, "file") > 0 ? "internal" : box.text;
}

TEST(FileOpen, EveryModeAndItsMessage) {
  ScratchDir dir;
  ASSERT_TRUE(kxtest::write_bytes("old", "x"));
  const std::string no_new = "Soubor new nelze otevřít", no = "Soubor dir-that-is-not/x nelze otevřít";
  // creates: the file "new" exists afterwards
  struct Row { int n; const char *path; int16_t mode; Flag result; std::string box; bool creates; } rows[] = {
      {1, "old", 1, 1, "", false},   {2, "new", 1, 0, no_new, false},  {3, "new", 2, 1, "", true},
      {4, "new", 3, 1, "", true},    {5, "old", 4, 1, "", false},      {6, "new", 4, 0, no_new, false},
      {7, "old", 5, 1, "", false},   {8, "new", 5, 0, no_new, false},  {9, "new", 6, 1, "", true},
      {10, "new", 7, 1, "", true},   {11, "old", 8, 1, "", false},     {12, "new", 8, 0, no_new, false},
      {13, "new", 9, 1, "", false},  {14, "new", 10, 0, "internal", false}, {15, "new", 11, 1, "", false},
      {16, "new", 12, 0, "internal", false}, {17, "new", 14, 0, "internal", false},
      {18, "new", 15, 0, "internal", false}, {19, "new", 0, 0, "internal", false},
      {20, "", 1, 0, "internal", false},     {21, "dir-that-is-not/x", 6, 0, no, false}};
  for (const Row &r : rows) {
    file_delete("new");
    FileObject *f = nullptr;
    ASSERT_EQ(1, file_create(&f, r.path)) << "row " << r.n;
    BoxRecorder rec;
    EXPECT_EQ(r.result, file_open(f, r.mode)) << "row " << r.n;
    EXPECT_EQ(r.box, box_of(rec)) << "row " << r.n;
    EXPECT_EQ(r.creates, kxtest::exists("new")) << "row " << r.n;
    rec.clear();
    EXPECT_EQ(1, file_destroy(&f)) << "row " << r.n << ": " << rec.dump();
    EXPECT_EQ(nullptr, f);
  }
  BoxRecorder rec;
  FileObject *f = opened("old", 5);
  EXPECT_EQ(0, file_open(f, 5)) << "an open file cannot be opened again";
  EXPECT_EQ(1, file_close(f, 1));
  EXPECT_FALSE(kxtest::exists("old")) << "delete_after";
  EXPECT_EQ(0, file_close(f, 0)) << "closing twice";
  EXPECT_EQ(0, file_destroy(nullptr));
  EXPECT_EQ(3u, rec.count()) << rec.dump();
  file_destroy(&f);
}

TEST(FileBlocks, ShortReadsAndWritesAreReported) {
  ScratchDir dir;
  ASSERT_TRUE(kxtest::write_bytes("five", "12345"));
  BoxRecorder rec;
  FileObject *f = opened("five", 5);
  char buffer[8] = "-------";
  EXPECT_EQ(1, file_read(f, buffer, 3));
  memset(buffer, '-', 7);
  EXPECT_EQ(0, file_read(f, buffer, 3)) << "only 2 bytes left";
  EXPECT_EQ("45-", std::string(buffer, 3));
  EXPECT_EQ("Ze souboru five nelze číst", box_of(rec));
  rec.clear();
  EXPECT_EQ(0, file_write(f, "abc", 3)) << "a read-only stream takes nothing";
  EXPECT_EQ("Do souboru five nelze zapisovat (plný disk?)", box_of(rec));
  file_destroy(&f);
  EXPECT_EQ("12345", kxtest::read_bytes("five"));
}

TEST(FileLines, TextLinesRoundTripAndLongLinesComeInPieces) {
  ScratchDir dir;
  FileObject *f = opened("t.txt", 2);
  ASSERT_NE(nullptr, f);
  EXPECT_EQ(2, file_write_line(f, "první") + file_write_line(f, ""));
  EXPECT_EQ(1, file_close(f, 0));
  EXPECT_EQ(std::string("první") + kBreak + kBreak, kxtest::read_bytes("t.txt"));

  const std::string l300 = kxtest::pattern_text(300), l199 = kxtest::pattern_text(199),
                    l200 = kxtest::pattern_text(200);
  // Both builds read CR LF and LF alike; a last line may lack its break. The caller's buffer
  // bounds the copy (size 1 keeps nothing, size 4 three characters); the line is taken whole.
  ASSERT_TRUE(kxtest::write_bytes("t.txt", "a\r\n\r\n" + l300 + "\r\n" + l199 + "\n" + l200 + "\r\nlast"));
  struct Row { int32_t size; std::string want; } rows[] = {
      {256, "a"}, {1, ""}, {4, "abc"}, {256, l300.substr(199)}, {256, l199}, {200, l200.substr(0, 199)},
      {256, l200.substr(199)}, {256, "last"}};
  ASSERT_EQ(1, file_open(f, 1));
  BoxRecorder rec;
  char line[260];
  for (size_t i = 0; i < KX_COUNT(rows); i++) {
    memset(line, '#', sizeof line);
    EXPECT_EQ(1, file_read_line(f, line, rows[i].size)) << "line " << i;
    EXPECT_EQ(rows[i].want, line) << "line " << i;
    EXPECT_EQ('#', line[rows[i].size]) << "line " << i << ": written past the buffer";
  }
  EXPECT_EQ(0, file_read_line(f, line, sizeof line)) << "end of file";
  EXPECT_EQ("", std::string(line));
  EXPECT_EQ(0u, rec.count()) << "the end of the file is no error: " << rec.dump();
  file_destroy(&f);
}

TEST(FileLines, LengthPrefixedStringsInBinaryModes) {
  ScratchDir dir;
  FileObject *f = opened("s.bin", 7);
  ASSERT_NE(nullptr, f);
  for (const char *s : {"Vlož", "", "12345678", "123456789"}) EXPECT_EQ(1, file_write_string(f, s)) << s;
  EXPECT_EQ(1, file_close(f, 0));
  const std::string bytes = kxtest::read_bytes("s.bin");
  ASSERT_EQ(8u * 4 + 4 + 8 + 9, bytes.size());
  EXPECT_EQ(std::string("\0\0\0\0\4\0\0\0Vlo\x9e\0\0\0\0\0\0\0\0", 20), bytes.substr(0, 20));
  // box: "" none; the text of the message; "internal": a fault report of module file
  struct Row { int n; int32_t size; Flag result; const char *text, *box; } rows[] = {
      {1, 9, 1, "Vlož", ""}, {2, 9, 1, "", ""},
      {3, 8, 1, "1234567", ""},  // exactly size: the last byte gives way to the NUL
      {4, 8, 0, "", "internal"},  // 9 > 8
      {5, 9, 0, "", "internal"},  // "12345678" read as a head: a huge length
      {6, 9, 0, "", "Ze souboru s.bin nelze číst"}};  // one byte left of a head
  ASSERT_EQ(1, file_open(f, 5));
  for (const Row &r : rows) {
    BoxRecorder rec;
    char text[16];
    memset(text, '#', sizeof text);
    EXPECT_EQ(r.result, file_read_line(f, text, r.size)) << "row " << r.n;
    EXPECT_EQ(std::string(r.text), text) << "row " << r.n;
    EXPECT_EQ('#', text[r.size]) << "row " << r.n;
    EXPECT_EQ(r.box, box_of(rec)) << "row " << r.n;
  }
  file_destroy(&f);
  // Mode 2 writes text but reads strings, not lines.
  FileObject *w = opened("s2.bin", 2);
  char got[16] = "#";
  ASSERT_EQ(1, file_write_string(w, "Vlož"));
  ASSERT_EQ(1, file_seek(w, 0, FILE_FROM_START));
  EXPECT_EQ(1, file_read_line(w, got, sizeof got));
  EXPECT_EQ(std::string("Vlož"), got) << "mode 2";
  file_destroy(&w);
}

TEST(FileMemory, CountingReadingAndWritingModes) {
  BoxRecorder rec;
  FileObject *f = opened("", 9);
  ASSERT_NE(nullptr, f);
  EXPECT_EQ(2, file_write_line(f, "abc") + file_write_string(f, "xy"));
  EXPECT_EQ(1, file_seek(f, 2, FILE_FROM_START));
  EXPECT_EQ(1, file_write(f, "z", 1));
  EXPECT_EQ(3, file_tell(f));
  EXPECT_EQ(14, file_size(f)) << "4 + 10 bytes counted; a write inside does not grow it";
  char c;
  EXPECT_EQ(0, file_read(f, &c, 1)) << "nothing to read in mode 9";
  EXPECT_EQ(1, file_close(f, 0));

  ASSERT_EQ(1, file_set_memory_size(f, 8));
  ASSERT_EQ(1, file_open(f, 11));
  EXPECT_EQ(1, file_write_line(f, "1234567"));
  EXPECT_EQ(0, file_write(f, "9", 1)) << "the 8-byte buffer is full";
  EXPECT_EQ(1, file_close(f, 0));
  int32_t length = -1;
  const char *memory = file_memory(f, &length);
  ASSERT_NE(nullptr, memory);
  EXPECT_EQ("1234567\n", std::string(memory, length));

  EXPECT_EQ(0, file_open(f, 10)) << "no buffer given";
  const char data[] = "ABCDEF";
  ASSERT_EQ(1, file_set_memory(f, data, 6));
  ASSERT_EQ(1, file_open(f, 10));
  char got[4] = "";
  EXPECT_EQ(1, file_seek(f, -2, FILE_FROM_END));
  EXPECT_EQ(0, file_read(f, got, 3));
  EXPECT_EQ("EF", std::string(got, 2));
  EXPECT_EQ(0, file_seek(f, 7, FILE_FROM_START));
  EXPECT_EQ(1, file_seek(f, 6, FILE_FROM_START)) << "the end of the memory is a position";
  EXPECT_EQ(0, file_read_line(f, got, 4)) << "no lines in memory modes";
  file_destroy(&f);
  ASSERT_EQ(6u, rec.count()) << rec.dump();
  EXPECT_EQ("Do souboru  nelze zapisovat (plný disk?)", rec.boxes()[1].text);
  EXPECT_EQ("Ze souboru  nelze číst", rec.boxes()[3].text);
}

TEST(FileCopy, BlocksOf512AndTheirMessages) {
  ScratchDir dir;
  const std::string source = kxtest::pattern_text(1400);
  ASSERT_TRUE(kxtest::write_bytes("src", source));
  FileObject *in = opened("src", 5), *out = opened("dst", 6);
  ASSERT_TRUE(in && out);
  EXPECT_EQ(1, file_write(out, "<", 1));
  EXPECT_EQ(1, file_copy_block(out, in, 100, 1300));
  EXPECT_EQ(1400, file_tell(in));
  // From offset 600 only 800 bytes are there: one whole block goes over, the second is short
  // and is not written (blocks of 256 would give 768 bytes, of 1024 none).
  BoxRecorder rec;
  EXPECT_EQ(0, file_copy_block(out, in, 600, 1300));
  EXPECT_EQ("Chyba kopírování - čtení !", box_of(rec));
  file_close(out, 0);
  EXPECT_EQ("<" + source.substr(100) + source.substr(600, 512), kxtest::read_bytes("dst"));

  rec.clear();
  FileObject *readonly = opened("dst", 5), *count = opened("", 9);
  EXPECT_EQ(0, file_copy_block(readonly, in, 0, 10));
  EXPECT_EQ("Chyba kopírování - zápis !", box_of(rec));
  rec.clear();
  EXPECT_EQ(1, file_write(count, "12345", 5));
  EXPECT_EQ(1, file_seek(count, 1, FILE_FROM_START));
  // Forward by count, or to offset + count when that lies beyond the size; rows in turn.
  struct Counted { int32_t offset, count, tell, size; } counted[] = {
      {0, 3, 4, 5}, {0, 1300, 1300, 1300}, {10, 5, 1305, 1305}};
  for (const Counted &c : counted) {
    EXPECT_EQ(1, file_copy_block(count, in, c.offset, c.count));
    EXPECT_EQ(c.tell, file_tell(count)) << "offset " << c.offset << " count " << c.count;
    EXPECT_EQ(c.size, file_size(count)) << "offset " << c.offset << " count " << c.count;
  }
  EXPECT_EQ(1, file_copy_block(count, in, 0, 0));
  EXPECT_EQ(0u, rec.count()) << rec.dump();
  EXPECT_EQ(0, file_copy_block(out, in, 0, 1)) << "closed destination";
  EXPECT_EQ(0, file_copy_block(readonly, in, -1, 1)) << "bad offset";
  EXPECT_EQ(2u, rec.count()) << rec.dump();
  for (FileObject *f : {in, out, readonly, count}) file_destroy(&f);
}

}  // namespace
