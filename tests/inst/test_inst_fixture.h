// test_inst_fixture.h - a whole install on a scratch directory: the dialog, the status line and
// the questions are recorded and answered by the test; natively drive paths ("C:\KORV5\") live
// below the scratch directory (inst_host's root) and the file layer's opens are mapped there.
#ifndef KX_TEST_INST_FIXTURE_H
#define KX_TEST_INST_FIXTURE_H

#include "installer/inst.h"
#include "lists/ilst.h"
#include "tests/support/kxtest.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace insttest {

struct Asked {
  int16_t kind;
  std::string text;
};

struct Medium {
  std::vector<ListRecord> records;
};

ListRecord file_record(const char *name, const char *stored, const char *directory, uint32_t size,
                       uint16_t disk, const char *description);

class InstallTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // Paths in the installer's (drive) form and their local form for reading back.
  std::string root_path() const;  // "C:\" natively, the scratch dir + "\"
  std::string local(const std::string &path) const;

  void set_target(const std::string &target);
  // Leaves the target (Windows can't remove the current directory) and removes it.
  void clear_target();
  // Writes DISKLIST.LST, A.KORV and every stored file (contents: the stored name repeated to
  // the record's size) into the source directory.
  void write_medium(const Medium &medium);
  void write_source_file(const std::string &name, const std::string &data);
  void write_local(const std::string &path, const std::string &data);

  Flag run() { return InstallProcedure(state_); }

  // UNINST.LST of the target as (kind, path) pairs.
  std::vector<std::pair<int, std::string>> uninstall_records() const;
  std::vector<std::string> install_lines() const;
  std::string dump_records() const { return dump(uninstall_records()); }
  static std::string dump(const std::vector<std::pair<int, std::string>> &records);
  std::string dump_asked() const;
  int asked_count(const std::string &text) const;

  kxtest::ScratchDir scratch_;
  kxtest::BoxRecorder boxes_;
  InstallState *state_ = nullptr;
  std::string source_;  // drive form, with trailing separator
  std::string target_;

 public:
  // Answers per question text (exact); unlisted questions answer Yes. Notices answer OK.
  static std::vector<Asked> asked;
  static std::vector<std::pair<std::string, std::vector<int16_t>>> answers;
  static std::function<void(const std::string &)> on_notice;
  static std::vector<std::string> statuses;
  static std::vector<std::string> lines[4];
  static std::function<void()> on_pump;
  static size_t boxes_at_later_steps;
  static kxtest::BoxRecorder *recorder;
};

}  // namespace insttest

#endif
