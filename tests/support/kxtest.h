// kxtest.h - support shared by the test programs (native build and Windows build under Wine).
#ifndef KX_TEST_SUPPORT_H
#define KX_TEST_SUPPORT_H

#include "common/we.h"

#include <string>
#include <vector>

namespace kxtest {

// One error box as it would have gone to the platform.
struct Box {
  void *owner;
  std::string text;
  std::string title;
  unsigned flags;
};

// Records every error box while alive (through the box hook), so that a test can check the
// exact texts, titles and flags without a display. Boxes nest: the previous hook is restored.
class BoxRecorder {
 public:
  BoxRecorder();
  ~BoxRecorder();
  const std::vector<Box> &boxes() const;
  size_t count() const { return boxes().size(); }
  // The one box recorded; fails the test (and returns an empty box) unless exactly one was.
  Box only() const;
  void clear();
  // Every recorded box, one per line, for failure messages.
  std::string dump() const;

 private:
  WeBoxHook previous_;
};

// Expected box of an internal-fault report of module at any line: checks title, icon and the
// body's module name; returns the line number from the body or -1.
int internal_error_line(const Box &box, const char *module);

// A fresh, empty directory that is the current directory while the object lives; removed with
// everything in it afterwards. path() ends without a separator.
class ScratchDir {
 public:
  ScratchDir();
  ~ScratchDir();
  const std::string &path() const { return path_; }
  // path() + separator + name
  std::string file(const std::string &name) const;

 private:
  std::string path_;
  std::string previous_;
};

std::string read_bytes(const std::string &path);  // whole file; empty when missing
bool write_bytes(const std::string &path, const std::string &data);
bool exists(const std::string &path);

// Text of n characters 'a'..'z' repeating, for length tests.
std::string pattern_text(size_t n);

}  // namespace kxtest

#endif
