// Error boxes, fault reports and the status line, checked through the box hook.
#include "common/we.h"
#include "tests/support/kxtest.h"

#include <gtest/gtest.h>

#include <string>

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

struct StatusSpy {
  std::string last;
  int calls = 0;
  static void set(void *context, const char *text) {
    StatusSpy *s = static_cast<StatusSpy *>(context);
    s->last = text;
    s->calls++;
  }
};

TEST(StatusText, GoesToTheMainWindowsStatusBarOnly) {
  BoxRecorder rec;
  StatusSpy spy;
  int dummy;
  // No main window, then one without a status bar: nothing, no box.
  WeMainWindow bare = {&dummy, nullptr, nullptr}, w = {&dummy, StatusSpy::set, &spy};
  for (const WeMainWindow *none : {(const WeMainWindow *)nullptr, (const WeMainWindow *)&bare}) {
    we_set_main_window(none);
    EXPECT_EQ(1, SetStatusText("Kopírování souborů"));
    EXPECT_EQ(1, SetStatusTextF("Disk %d", 2));
  }
  we_set_main_window(&w);
  EXPECT_EQ(1, SetStatusText("Kopírování souborů"));
  EXPECT_EQ("Kopírování souborů", spy.last);
  EXPECT_EQ(1, SetStatusTextF("Vlož DISK%d", 4));
  EXPECT_EQ("Vlož DISK4", spy.last);
  EXPECT_EQ(1, SetStatusText(nullptr));
  EXPECT_EQ(1, SetStatusTextF(nullptr));
  EXPECT_EQ(2, spy.calls) << "null texts must not reach the status bar";
  std::string longer = kxtest::pattern_text(1025);
  SetStatusTextF("%s", longer.c_str());
  EXPECT_EQ(longer.substr(0, 199), spy.last);
  we_set_main_window(nullptr);
  EXPECT_EQ(0u, rec.count()) << rec.dump();
}

}  // namespace
