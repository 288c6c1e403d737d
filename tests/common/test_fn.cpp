// File names and paths: joining, splitting (checked against the C runtime's own splitter on
// Windows), directory comparison, names from "*" patterns, extensions; all bounded to KX_PATH.
#include "common/fe.h"
#include "common/fn.h"
#include "tests/support/kxtest.h"

#include <gtest/gtest.h>

#include <string.h>
#include <string>

using kxtest::BoxRecorder;

namespace {

// A KX_PATH buffer with 16 guard bytes behind it, all pre-filled with '#'.
struct PathBuffer {
  char text[KX_PATH + 16];
  explicit PathBuffer(const std::string &start = "") {
    memset(text, '#', sizeof text);
    memcpy(text, start.c_str(), start.size() + 1);
  }
  bool guard_intact() const { return std::string(text + KX_PATH, 16) == std::string(16, '#'); }
};

TEST(PathJoin, JoinsWithOneBackslashAndCutsAt1023) {
  const std::string d1017 = kxtest::pattern_text(1017), d1018 = kxtest::pattern_text(1018);
  struct Row { int n; std::string name, directory; Flag result; std::string expected; } rows[] = {
      {1, "A.TXT", "C:\\WORK", 1, "C:\\WORK\\A.TXT"}, {2, "A.TXT", "C:\\WORK\\", 1, "C:\\WORK\\A.TXT"},
      {3, "A.TXT", "", 0, "A.TXT"}, {4, "", "C:\\", 1, "C:\\"}, {5, "A.TXT", "C:/WORK/", 1, "C:/WORK/\\A.TXT"},
      {6, "A.TXT", d1017, 1, d1017 + "\\A.TXT"},  // exactly 1023
      {7, "A.TXT", d1018, 1, d1018 + "\\A.TX"},   // one over: cut
      {8, "A.TXT", kxtest::pattern_text(3000), 1, kxtest::pattern_text(1023)}};
  for (const Row &r : rows) {
    PathBuffer name(r.name);
    EXPECT_EQ(r.result, path_join(name.text, r.directory.c_str())) << "row " << r.n;
    EXPECT_EQ(r.expected, name.text) << "row " << r.n;
    EXPECT_TRUE(name.guard_intact()) << "row " << r.n;
  }
}

TEST(PathSplit, PartsAndDirectoryOfEveryRow) {
  // want: drive|directory|name|extension|path_split's directory
  struct Row { int n; const char *path, *want; } rows[] = {
      {1, "C:\\WORK\\A.TXT", "C:|\\WORK\\|A|.TXT|C:\\WORK"}, {2, "C:\\A.TXT", "C:|\\|A|.TXT|C:"},
      {3, "A.TXT", "||A|.TXT|"}, {4, "C:A.TXT", "C:||A|.TXT|C:"}, {5, "C:\\A.B\\NAME", "C:|\\A.B\\|NAME||C:\\A.B"},
      {6, "dir/sub/n.tar.gz", "|dir/sub/|n.tar|.gz|dir/sub/"}, {7, "NAME.", "||NAME|.|"},
      {8, "\\\\srv\\share\\x.y", "|\\\\srv\\share\\|x|.y|\\\\srv\\share"},
      {9, "..\\.profile", "|..\\||.profile|.."},
      {10, "C:\\DIR\\", "C:|\\DIR\\|||C:\\DIR"}, {11, "C:\\\\x", "C:|\\\\|x||C:\\"}, {12, "", "||||"},
      {13, ":\\x", "|:\\|x||:"}, {14, "1:a.b.", "1:||a.b|.|1:"}};
  for (const Row &r : rows) {
    PathBuffer drive, dir, name, ext, directory, whole;
    ASSERT_EQ(1, path_split_parts(r.path, drive.text, dir.text, name.text, ext.text));
    ASSERT_EQ(1, path_split(r.path, directory.text, whole.text));
    const std::string parts = std::string(drive.text) + "|" + dir.text + "|" + name.text + "|" + ext.text;
    EXPECT_EQ(r.want, parts + "|" + directory.text) << "row " << r.n;
    EXPECT_EQ(std::string(name.text) + ext.text, whole.text) << "row " << r.n;
#ifdef KX_WIN32
    // The runtime's own splitter and merger agree with ours.
    char d[_MAX_DRIVE], p[_MAX_DIR], f[_MAX_FNAME], e[_MAX_EXT], merged[_MAX_PATH];
    _splitpath(r.path, d, p, f, e);
    EXPECT_EQ(std::string(d) + "|" + p + "|" + f + "|" + e, parts) << "row " << r.n << ": _splitpath";
    _makepath(merged, d, p, f, e);
    PathBuffer normal(r.path);
    ASSERT_EQ(1, path_normalise(normal.text));
    EXPECT_EQ(std::string(merged), normal.text) << "row " << r.n << ": _makepath";
#endif
  }
  PathBuffer merged;
  ASSERT_EQ(1, path_merge_parts(merged.text, "d", "X", "N", "E"));
  EXPECT_EQ("d:X\\N.E", std::string(merged.text));
}

TEST(SameDirectory, ComparesUpperCasedDirectories) {
  struct Row { int n; const char *path, *directory; Flag same; } rows[] = {
      {1, "c:\\work\\a.txt", "C:\\WORK\\", 1}, {2, "c:\\work\\a.txt", "C:\\WORK", 1},
      {3, "c:\\work\\sub\\a.txt", "C:\\WORK\\", 0}, {4, "C:\\WORK\\A.TXT", "C:\\WOR", 0},
      {5, "C:\\A.TXT", "C:\\", 1}, {6, "A.TXT", "", 1}, {7, "C:\\WORK\\A", "C:\\WORKX", 0},
      {8, "C:\\WORK\\\\A", "c:\\work\\\\", 1}, {9, "C:\\WORK\\A", "C:\\WORK\\\\", 0}};
  for (const Row &r : rows) EXPECT_EQ(r.same, same_directory(r.path, r.directory)) << "row " << r.n;
}

TEST(NameFromPattern, BuildsEightThreeNamesFromTheSource) {
  kxtest::ScratchDir dir;  // the current directory is elsewhere
  const std::string long_source = kxtest::pattern_text(5000), prefix = "C:\\" + kxtest::pattern_text(1018) + "\\";
  struct Row { int n; std::string pattern, source, expected; } rows[] = {
      {1, "C:\\OUT\\*.BAK", "my file.txt", "C:\\OUT\\myfiletx.BAK"},
      {2, "C:\\OUT\\X*.BAK", "a.b", "C:\\OUT\\Xab.BAK"},
      {3, "C:\\OUT\\*.BAKUP", "abc", "C:\\OUT\\abc.BAK"}, {4, "C:\\OUT\\NAME.TXT", "abc", "C:\\OUT\\NAME.TXT"},
      {5, "*", "a?b*c:d|e~f,g;h i/j\\k.l", "abcdefgh"}, {6, "C:\\OUT\\*", "abc.txt", "C:\\OUT\\abctxt"},
      {7, "C:\\OUT\\A.B*.X", "src", "C:\\OUT\\A.Bsrc"},  // the name keeps its own "."
      {8, "C:\\OUT\\*.", "ab", "C:\\OUT\\ab."},
      {9, "C:\\OUT\\*A*.BAK", "x", "C:\\OUT\\xA*.BAK"},  // only the first "*" takes the source
      {10, "D:/OUT/*.BAK", "abc", "D:/OUT/a.BAK"},      // "/" starts no directory prefix
      {11, "C:\\OUT\\*.BAK", long_source, "C:\\OUT\\abcdefgh.BAK"},
      {12, prefix + "*.BAK", long_source, (prefix + "abcdefgh.BAK").substr(0, 1023)}};  // cut at 1023
  for (const Row &r : rows) {
    PathBuffer result;
    EXPECT_EQ(1, name_from_pattern(r.pattern.c_str(), r.source.c_str(), result.text)) << "row " << r.n;
    EXPECT_EQ(r.expected, std::string(result.text)) << "row " << r.n;
    EXPECT_TRUE(result.guard_intact()) << "row " << r.n;
  }
}

TEST(Extensions, OfTheLastComponentOnly) {
  struct Row { int n; const char *name, *extension, *cut; } rows[] = {  // extension null: none
      {1, "A.TXT", "TXT", "A"}, {2, "C:\\A.B\\NAME", nullptr, "C:\\A.B\\NAME"},
      {3, "ARCHIV.TAR.GZ", "GZ", "ARCHIV.TAR"}, {4, "NAME.", "", "NAME"}, {5, "C:X.Y", "Y", "C:X"},
      {6, "dir/a.b/c", nullptr, "dir/a.b/c"}, {7, ".profile", "profile", ""}, {8, "", nullptr, ""}};
  for (const Row &r : rows) {
    const char *e = name_extension(r.name);
    EXPECT_EQ(r.extension ? r.extension : "(none)", std::string(e ? e : "(none)")) << "row " << r.n;
    PathBuffer cut(r.name), added(r.name);
    EXPECT_EQ(r.extension ? 1 : 0, name_cut_extension(cut.text)) << "row " << r.n;
    EXPECT_EQ(r.cut, std::string(cut.text)) << "row " << r.n;
    EXPECT_EQ(r.extension ? 0 : 1, name_add_extension(added.text, "BAK")) << "row " << r.n;
    EXPECT_EQ(std::string(r.name) + (r.extension ? "" : ".BAK"), added.text) << "row " << r.n;
  }
  for (size_t m : {1018u, 1019u, 1020u, 1023u}) {
    PathBuffer name(kxtest::pattern_text(m));
    EXPECT_EQ(1, name_add_extension(name.text, "BAK")) << "m " << m;
    EXPECT_EQ((kxtest::pattern_text(m) + ".BAK").substr(0, 1023), name.text) << "m " << m;
    EXPECT_TRUE(name.guard_intact()) << "m " << m;
  }
}

}  // namespace
