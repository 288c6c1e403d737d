#include "tests/support/kxtest.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string.h>

namespace fs = std::filesystem;

namespace kxtest {

static std::vector<Box> recorded;

static void record_box(void *owner, const char *text, const char *title, unsigned flags) {
  recorded.push_back(Box{owner, text ? text : "(null)", title ? title : "(null)", flags});
}

BoxRecorder::BoxRecorder() {
  recorded.clear();
  previous_ = we_set_box_hook(record_box);
}

BoxRecorder::~BoxRecorder() { we_set_box_hook(previous_); }

const std::vector<Box> &BoxRecorder::boxes() const { return recorded; }

void BoxRecorder::clear() { recorded.clear(); }

Box BoxRecorder::only() const {
  EXPECT_EQ(1u, recorded.size()) << dump();
  if (recorded.size() != 1) return Box{nullptr, "", "", 0};
  return recorded[0];
}

std::string BoxRecorder::dump() const {
  std::ostringstream out;
  out << recorded.size() << " box(es):\n";
  for (const Box &b : recorded)
    out << "  [" << b.title << "] " << b.text << " (flags 0x" << std::hex << b.flags << std::dec
        << ")\n";
  return out.str();
}

int internal_error_line(const Box &box, const char *module) {
  EXPECT_EQ(std::string(WE_TITLE_INTERNAL), box.title);
  EXPECT_EQ((unsigned)(WE_MB_BOX | WE_MB_ICONSTOP), box.flags);
  std::string prefix = std::string("Chyba v souboru ") + module + " řádek ";
  if (box.text.compare(0, prefix.size(), prefix) != 0) {
    ADD_FAILURE() << "fault body '" << box.text << "' does not name module " << module;
    return -1;
  }
  return atoi(box.text.c_str() + prefix.size());
}

ScratchDir::ScratchDir() {
  previous_ = fs::current_path().string();
  std::random_device rd;
  fs::path base = fs::temp_directory_path();
  for (int attempt = 0; attempt < 100; attempt++) {
    fs::path p = base / ("kxt" + std::to_string(rd() % 1000000));
    std::error_code ec;
    if (fs::create_directory(p, ec)) {
      path_ = p.string();
      break;
    }
  }
  if (path_.empty()) {
    ADD_FAILURE() << "cannot make a scratch directory under " << base.string();
    return;
  }
  fs::current_path(path_);
}

ScratchDir::~ScratchDir() {
  std::error_code ec;
  fs::current_path(previous_, ec);
  if (!path_.empty()) fs::remove_all(path_, ec);
}

std::string ScratchDir::file(const std::string &name) const {
  return (fs::path(path_) / name).string();
}

std::string read_bytes(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

bool write_bytes(const std::string &path, const std::string &data) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(data.data(), (std::streamsize)data.size());
  return (bool)out;
}

bool exists(const std::string &path) {
  std::error_code ec;
  return fs::exists(path, ec);
}

std::string pattern_text(size_t n) {
  std::string s(n, 'a');
  for (size_t i = 0; i < n; i++) s[i] = (char)('a' + i % 26);
  return s;
}

}  // namespace kxtest
