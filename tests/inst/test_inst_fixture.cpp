// test_inst_fixture.cpp - the install fixture (see test_inst_fixture.h).
#include "tests/inst/test_inst_fixture.h"

#include "platform/inst_plat.h"
#include "platform/reg.h"
#include "store/wco.h"

#include <filesystem>
#include <sstream>

#include <string.h>

#ifndef KX_WIN32
#include <dlfcn.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <sys/stat.h>

// The native build opens files by the path as given; the installer's drive paths (such as
// C:\KORV5\EXE\KORV5.EXE) are mapped below the scratch root while a test runs, for the file
// layer, the copy and the store as for the installer's own directory calls.
namespace {
bool map_paths = false;

const char *mapped(const char *path, char *buffer, size_t size) {
  if (!map_paths || !path || !path[0] || path[1] != ':') return path;
  return inst_host_native_path(path, buffer, (int32_t)size) ? buffer : path;
}
}  // namespace

extern "C" FILE *fopen(const char *path, const char *mode) {
  static auto real = (FILE * (*)(const char *, const char *)) dlsym(RTLD_NEXT, "fopen");
  char buffer[3 * KX_PATH];
  return real(mapped(path, buffer, sizeof buffer), mode);
}

// The file layer creates a new file with open(O_CREAT | O_EXCL) before it falls back to fopen.
extern "C" int open(const char *path, int flags, ...) {
  static auto real = (int (*)(const char *, int, ...))dlsym(RTLD_NEXT, "open");
  mode_t mode = 0;
  if (flags & O_CREAT) {
    va_list arguments;
    va_start(arguments, flags);
    mode = (mode_t)va_arg(arguments, int);
    va_end(arguments);
  }
  char buffer[3 * KX_PATH];
  return real(mapped(path, buffer, sizeof buffer), flags, mode);
}

extern "C" int remove(const char *path) noexcept {
  static auto real = (int (*)(const char *))dlsym(RTLD_NEXT, "remove");
  char buffer[3 * KX_PATH];
  return real(mapped(path, buffer, sizeof buffer));
}

extern "C" int stat(const char *path, struct stat *info) noexcept {
  static auto real = (int (*)(const char *, struct stat *))dlsym(RTLD_NEXT, "stat");
  char buffer[3 * KX_PATH];
  return real(mapped(path, buffer, sizeof buffer), info);
}
#endif

namespace fs = std::filesystem;

namespace insttest {

std::vector<Asked> InstallTest::asked;
std::vector<std::pair<std::string, std::vector<int16_t>>> InstallTest::answers;
std::function<void(const std::string &)> InstallTest::on_notice;
std::vector<std::string> InstallTest::statuses;
std::vector<std::string> InstallTest::lines[4];
std::function<void()> InstallTest::on_pump;
size_t InstallTest::boxes_at_later_steps = (size_t)-1;
kxtest::BoxRecorder *InstallTest::recorder = nullptr;

namespace {

int16_t answer(int16_t kind, void *, const char *, const char *text) {
  InstallTest::asked.push_back({kind, text ? text : ""});
  if (kind == WE_DIALOG_NOTICE) {
    if (InstallTest::on_notice) InstallTest::on_notice(text ? text : "");
    return 1;
  }
  for (auto &row : InstallTest::answers) {
    if (row.first == text && !row.second.empty()) {
      int16_t code = row.second.front();
      if (row.second.size() > 1) row.second.erase(row.second.begin());
      return code;
    }
  }
  return WE_ANSWER_YES;
}

void status(void *, const char *text) {
  InstallTest::statuses.push_back(text);
  // Boxes up to the later steps belong to the procedure itself.
  if (strcmp(text, "Aktualizace nabídky Start ...") == 0 && InstallTest::recorder)
    InstallTest::boxes_at_later_steps = InstallTest::recorder->count();
}

void set_line(void *, int16_t item, const char *text) {
  if (item >= INST_LINE_FIRST && item <= INST_LINE_LAST)
    InstallTest::lines[item - INST_LINE_FIRST].push_back(text);
}

void pump(void *) {
  if (InstallTest::on_pump) InstallTest::on_pump();
}

}  // namespace

ListRecord file_record(const char *name, const char *stored, const char *directory, uint32_t size,
                       uint16_t disk, const char *description) {
  ListRecord r;
  memset(&r, 0, sizeof r);
  strncpy(r.name, name, ILST_NAME_MAX);
  strncpy(r.stored, stored, ILST_NAME_MAX);
  strncpy(r.directory, directory, ILST_NAME_MAX);
  r.size = size;
  r.disk = disk;
  strncpy(r.description, description, ILST_DESCRIPTION_MAX);
  return r;
}

void InstallTest::SetUp() {
  asked.clear();
  answers.clear();
  on_notice = nullptr;
  statuses.clear();
  for (auto &l : lines) l.clear();
  on_pump = nullptr;
  boxes_at_later_steps = (size_t)-1;
  recorder = &boxes_;
  reg_test_reset();
  abort_requested = 0;
  config_taken_over = 0;
#ifndef KX_WIN32
  inst_host_reset();
  inst_host_set_root(scratch_.path().c_str());
  inst_host_fake_sleep(1);
  inst_host_set_library("HHCTRL.OCX", 1);
  fs::create_directory(scratch_.file("C"));
  map_paths = true;
#endif
  // Plenty of room unless a test says otherwise.
  plat_test_set_free_space(1, 4000000, 8, 512);
  we_set_dialog_hook(answer);
  static WeMainWindow window = {nullptr, status, nullptr};
  we_set_main_window(&window);
  static InstallDialog dialog = {nullptr, set_line, pump, nullptr, nullptr, nullptr};
  inst_set_dialog(&dialog);
  state_ = inst_create_state("C:\\SETUP\\SETUP.EXE");
  ASSERT_NE(state_, nullptr);
  source_ = root_path() + "MEDIUM\\";
  fs::create_directories(local(source_));
  snprintf(state_->source_path, KX_PATH, "%s", source_.c_str());
  set_target(root_path() + "KORV5\\");
}

void InstallTest::TearDown() {
  inst_close_lists(state_);
  inst_destroy_state(&state_);
  we_set_dialog_hook(nullptr);
  we_set_main_window(nullptr);
  plat_test_set_free_space(0, 0, 0, 0);
  recorder = nullptr;
  // Back to the scratch directory, which the scratch object leaves and removes.
  fs::current_path(scratch_.path());
#ifndef KX_WIN32
  map_paths = false;
  inst_host_reset();
#endif
}

std::string InstallTest::root_path() const {
#ifdef KX_WIN32
  return scratch_.path() + "\\";
#else
  return "C:\\";
#endif
}

std::string InstallTest::local(const std::string &path) const {
#ifdef KX_WIN32
  return path;
#else
  char buffer[3 * KX_PATH];
  if (!inst_host_native_path(path.c_str(), buffer, sizeof buffer)) return "";
  return buffer;
#endif
}

void InstallTest::set_target(const std::string &target) {
  target_ = target;
  snprintf(state_->target_path, KX_PATH, "%s", target.c_str());
}

void InstallTest::clear_target() {
  fs::current_path(scratch_.path());
  std::error_code ec;
  fs::remove_all(local(target_), ec);
}

void InstallTest::write_local(const std::string &path, const std::string &data) {
  fs::create_directories(fs::path(path).parent_path());
  ASSERT_TRUE(kxtest::write_bytes(path, data)) << path;
}

void InstallTest::write_source_file(const std::string &name, const std::string &data) {
  write_local(local(source_ + name), data);
}

void InstallTest::write_medium(const Medium &medium) {
  ListHeader header;
  memset(&header, 0, sizeof header);
  strcpy(header.text, "KORVEX 5");
  header.count = (uint16_t)medium.records.size();
  std::string list(ILST_HEADER_SIZE, '\0');
  ilst_encode_header(&header, (unsigned char *)&list[0]);
  for (const ListRecord &r : medium.records) {
    std::string bytes(ILST_RECORD_SIZE, '\0');
    ilst_encode_record(&r, (unsigned char *)&bytes[0]);
    list += bytes;
    if (r.stored[0]) {
      std::string data;
      while (data.size() < r.size) data += r.stored;
      data.resize(r.size);
      write_source_file(r.stored, data);
    }
  }
  write_source_file("DISKLIST.LST", list);
  write_source_file("A.KORV", "DISK: 1\r\n");
}

std::vector<std::pair<int, std::string>> InstallTest::uninstall_records() const {
  std::string bytes = kxtest::read_bytes(local(target_ + "UNINST.LST"));
  std::vector<std::pair<int, std::string>> out;
  EXPECT_EQ(bytes.size() % ILST_UNINSTALL_SIZE, 0u) << "UNINST.LST has " << bytes.size();
  for (size_t at = 0; at + ILST_UNINSTALL_SIZE <= bytes.size(); at += ILST_UNINSTALL_SIZE) {
    const std::string one = bytes.substr(at, ILST_UNINSTALL_SIZE);
    // Every byte after the path's NUL is zero.
    size_t end = one.find('\0', 2);
    EXPECT_NE(end, std::string::npos);
    EXPECT_EQ(one.find_first_not_of('\0', end), std::string::npos) << "record at " << at;
    out.push_back({(uint8_t)one[0] | ((uint8_t)one[1] << 8), one.substr(2, end - 2)});
  }
  return out;
}

std::vector<std::string> InstallTest::install_lines() const {
  std::istringstream in(kxtest::read_bytes(local(target_ + "INST.LST")));
  std::vector<std::string> out;
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    out.push_back(line);
  }
  return out;
}

std::string InstallTest::dump(const std::vector<std::pair<int, std::string>> &records) {
  std::string out;
  for (auto &r : records) out += std::to_string(r.first) + " " + r.second + "\n";
  return out;
}

std::string InstallTest::dump_asked() const {
  std::string out;
  for (auto &a : asked) out += std::to_string(a.kind) + " [" + a.text + "]\n";
  return out + boxes_.dump();
}

int InstallTest::asked_count(const std::string &text) const {
  int n = 0;
  for (auto &a : asked) n += a.text == text;
  return n;
}

}  // namespace insttest
