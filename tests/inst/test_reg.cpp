// Registry strings: the same cases against the in-memory registry of the native build and
// against the real registry under Wine (below HKEY_CURRENT_USER\Software\KorvexRegTest, removed
// again after every case).
#include "platform/reg.h"
#include "tests/support/kxtest.h"

#include <gtest/gtest.h>

#include <string.h>

#include <string>

namespace {

const char BASE[] = "Software\\KorvexRegTest";
const int16_t USER = REG_ROOT_CURRENT_USER;

// Removes BASE and everything below it, deepest first (the seam deletes only empty keys).
void remove_tree(const std::string &key) {
  for (int round = 0; round < 8 && reg_subkey_count(USER, key.c_str()) > 0; round++) {
    for (const char *child : {"A", "B", "C", "a", "b"}) remove_tree(key + "\\" + child);
  }
  reg_delete_key(USER, key.c_str());
}

class Reg : public ::testing::Test {
 protected:
  void SetUp() override {
    reg_test_reset();
    remove_tree(BASE);
  }
  void TearDown() override { remove_tree(BASE); }
  std::string key(const char *rest = nullptr) const {
    return rest ? std::string(BASE) + "\\" + rest : std::string(BASE);
  }
};

TEST_F(Reg, StringsRoundTripAndAreCutToTheBuffer) {
  struct Row {
    int n;
    size_t length;   // of the stored text
    int32_t size;    // of the buffer
    size_t expect;   // characters read back
  } rows[] = {
      {1, 0, 1, 0},       {2, 1, 2, 1},          {3, 1, 1, 0},          {4, 10, 11, 10},
      {5, 10, 10, 9},     {6, 1022, 1024, 1022}, {7, 1023, 1024, 1023}, {8, 1023, 1023, 1022},
      {9, 1023, 5, 4},
  };
  for (const Row &r : rows) {
    std::string text = kxtest::pattern_text(r.length);
    ASSERT_EQ(1, reg_set_string(USER, key("A").c_str(), "value", text.c_str())) << "row " << r.n;
    char buffer[1100];
    memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(1, reg_get_string(USER, key("A").c_str(), "value", buffer, r.size))
        << "row " << r.n;
    EXPECT_EQ(text.substr(0, r.expect), std::string(buffer)) << "row " << r.n;
    EXPECT_EQ('#', buffer[r.size]) << "row " << r.n << ": wrote past the buffer";
  }
}

TEST_F(Reg, MissingKeyOrValueGivesZeroAndAnEmptyBuffer) {
  ASSERT_EQ(1, reg_set_string(USER, key("A").c_str(), "there", "x"));
  struct Row {
    int n;
    std::string key;
    const char *value;
  } rows[] = {
      {1, key("A"), "missing"},
      {2, key("B"), "there"},
      {3, key("A\\B"), "there"},
      {4, key("A"), nullptr},   // the default value was never set
  };
  for (const Row &r : rows) {
    char buffer[16];
    memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(0, reg_get_string(USER, r.key.c_str(), r.value, buffer, sizeof buffer))
        << "row " << r.n;
    EXPECT_STREQ("", buffer) << "row " << r.n;
  }
  char buffer[4] = "##";
  EXPECT_EQ(0, reg_get_string(USER, nullptr, "there", buffer, sizeof buffer));
  EXPECT_EQ(0, reg_get_string(USER, key("A").c_str(), "there", nullptr, 4));
  EXPECT_EQ(0, reg_get_string(7, key("A").c_str(), "there", buffer, sizeof buffer));
  EXPECT_EQ(0, reg_set_string(7, key("A").c_str(), "there", "x"));
  EXPECT_EQ(0, reg_set_string(USER, nullptr, "there", "x"));
}

TEST_F(Reg, ParentsAreCreatedAndOnlyEmptyKeysAreDeleted) {
  ASSERT_EQ(1, reg_set_string(USER, key("A\\B\\C").c_str(), "v", "1"));
  ASSERT_EQ(1, reg_set_string(USER, key("A\\b").c_str(), "w", "2"));
  ASSERT_EQ(1, reg_set_string(USER, key("B").c_str(), "v", "3"));
  struct Row {
    int n;
    std::string key;
    int32_t count;
  } rows[] = {
      {1, key(), 2}, {2, key("A"), 1}, {3, key("A\\B"), 1}, {4, key("A\\B\\C"), 0},
      {5, key("B"), 0}, {6, key("C"), -1},
  };
  for (const Row &r : rows) {
    EXPECT_EQ(r.count, reg_subkey_count(USER, r.key.c_str())) << "row " << r.n;
    EXPECT_EQ(r.count >= 0, reg_key_exists(USER, r.key.c_str()) == 1) << "row " << r.n;
  }
  EXPECT_EQ(0, reg_delete_key(USER, key("A").c_str())) << "has sub-keys";
  EXPECT_EQ(1, reg_key_exists(USER, key("A\\B\\C").c_str()));
  EXPECT_EQ(1, reg_delete_key(USER, key("A\\B\\C").c_str()));
  EXPECT_EQ(0, reg_key_exists(USER, key("A\\B\\C").c_str()));
  EXPECT_EQ(0, reg_delete_key(USER, key("A\\B\\C").c_str())) << "already gone";
  char buffer[4];
  EXPECT_EQ(1, reg_get_string(USER, key("A\\B").c_str(), "w", buffer, sizeof buffer))
      << "the value written through the other spelling";
  EXPECT_STREQ("2", buffer);
}


}  // namespace
