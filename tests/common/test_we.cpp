// Error boxes, fault reports and the status line, checked through the box hook.
#include "common/we.h"
#include "tests/support/kxtest.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using kxtest::BoxRecorder;

namespace {

TEST(ErrorBoxes, FormattedTextCutAt199AndFaultBodyAt99) {
  // fault: the text is the module name of an internal error, whose body is cut at 99
  struct Row { int n; bool fault; size_t length; } rows[] = {
      {1, false, 198}, {2, false, 199}, {3, false, 200}, {4, false, 1025}, {5, false, 5000},
      {6, true, 60},   {7, true, 77},   {8, true, 78},   {9, true, 1023},  {10, true, 1024}, {11, true, 1025}};
  for (const Row &r : rows) {
    BoxRecorder rec;
    std::string text = kxtest::pattern_text(r.length);
    if (r.fault) InternalError(text.c_str(), 12345);
    else ErrorBoxF("%s", text.c_str());
    ASSERT_EQ(1u, rec.count()) << "row " << r.n;
    std::string full = r.fault ? "Chyba v souboru " + text + " řádek 12345" : text;
    EXPECT_EQ(full.substr(0, r.fault ? 99 : 199), rec.boxes()[0].text)
        << "row " << r.n << " length " << rec.boxes()[0].text.size();
  }
}

TEST(StatusText, ReachesTheMainWindowsStatusBarOnlyCutAt199) {
  BoxRecorder rec;
  std::vector<std::string> seen;
  auto sink = [](void *context, const char *text) { static_cast<std::vector<std::string> *>(context)->push_back(text); };
  WeMainWindow bare = {&seen, nullptr, nullptr}, w = {&seen, sink, &seen};
  we_set_main_window(&bare);
  EXPECT_EQ(1, SetStatusText("bez lišty"));  // no status bar: nothing, no box
  we_set_main_window(&w);
  const std::string longer = kxtest::pattern_text(1025);
  EXPECT_EQ(1, SetStatusTextF("Vlož DISK%d", 4));
  EXPECT_EQ(1, SetStatusText(nullptr));  // a null text does not reach it
  SetStatusTextF("%s", longer.c_str());
  we_set_main_window(nullptr);
  EXPECT_EQ(1, SetStatusText("po konci"));
  EXPECT_EQ((std::vector<std::string>{"Vlož DISK4", longer.substr(0, 199)}), seen);
  EXPECT_EQ(0u, rec.count()) << rec.dump();
}

}  // namespace
