// Error boxes, fault reports and the status line, checked through the box hook.
#include "tests/support/kxtest.h"
#include "win/we.h"

#include <gtest/gtest.h>

#include <string>

using kxtest::BoxRecorder;

namespace {

const unsigned kExclamation = WE_MB_OK | WE_MB_ICONEXCLAMATION | WE_MB_TASKMODAL | WE_MB_SETFOREGROUND;
const unsigned kStop = WE_MB_OK | WE_MB_ICONSTOP | WE_MB_TASKMODAL | WE_MB_SETFOREGROUND;

TEST(ErrorBoxes, TitlesBodiesAndFlags) {
  struct Row {
    int n;
    void (*show)();
    const char *text;
    const char *title;
    unsigned flags;
  } rows[] = {
      {1, [] { ErrorBox("Soubor C:\\A.TXT nelze otevřít"); }, "Soubor C:\\A.TXT nelze otevřít", " Chyba ", kExclamation},
      {2, [] { ErrorBoxF("Vlož DISK%d", 3); }, "Vlož DISK3", " Chyba ", kExclamation},
      {3, [] { OutOfMemoryError(); }, " Málo paměti", " Chyba ", kExclamation},
      {4, [] { InternalError("zip_util", 104); }, "Chyba v souboru zip_util řádek 104",
       " Interní chyba, informujte dodavatele ", kStop},
      {5, [] { SwitchError("date", -7); }, "Chyba v souboru date řádek -7",
       " Chyba switch, informujte dodavatele ", kStop},
      {6, [] { ErrorBox(nullptr); }, "", " Chyba ", kExclamation},
  };
  for (const Row &r : rows) {
    BoxRecorder rec;
    r.show();
    ASSERT_EQ(1u, rec.count()) << "row " << r.n << ": " << rec.dump();
    const kxtest::Box &b = rec.boxes()[0];
    EXPECT_EQ(r.text, b.text) << "row " << r.n;
    EXPECT_EQ(r.title, b.title) << "row " << r.n;
    EXPECT_EQ(r.flags, b.flags) << "row " << r.n << " got 0x" << std::hex << b.flags;
    EXPECT_EQ(nullptr, b.owner) << "row " << r.n << ": no main window, no owner";
  }
}

TEST(ErrorBoxes, TextsAreWindows1250) {
  // "í" is 0xED and "ř" is 0xF8 in Windows-1250; the literals of the build are in that code page.
  EXPECT_EQ(std::string("\x20Intern\xED chyba, informujte dodavatele "), WE_TITLE_INTERNAL);
  EXPECT_EQ(std::string("Chyba v souboru %s \xF8\xE1" "dek %d"), WE_FAULT_BODY);
  EXPECT_EQ(std::string(" M\xE1lo pam\xECti"), WE_TEXT_NO_MEMORY);
}

TEST(ErrorBoxes, FormattedTextIsCutAt199) {
  struct Row {
    int n;
    size_t length;
    size_t shown;
  } rows[] = {{1, 198, 198}, {2, 199, 199}, {3, 200, 199}, {4, 1025, 199}, {5, 5000, 199}};
  for (const Row &r : rows) {
    BoxRecorder rec;
    std::string text = kxtest::pattern_text(r.length);
    ErrorBoxF("%s", text.c_str());
    ASSERT_EQ(1u, rec.count()) << "row " << r.n;
    EXPECT_EQ(r.shown, rec.boxes()[0].text.size()) << "row " << r.n;
    EXPECT_EQ(text.substr(0, r.shown), rec.boxes()[0].text) << "row " << r.n;
  }
}

TEST(ErrorBoxes, FaultBodyIsCutAt99) {
  struct Row {
    int n;
    size_t module_length;
  } rows[] = {{1, 60}, {2, 77}, {3, 78}, {4, 1023}, {5, 1024}, {6, 1025}};
  for (const Row &r : rows) {
    BoxRecorder rec;
    std::string module = kxtest::pattern_text(r.module_length);
    InternalError(module.c_str(), 12345);
    ASSERT_EQ(1u, rec.count()) << "row " << r.n;
    std::string full = "Chyba v souboru " + module + " řádek 12345";
    std::string expected = full.substr(0, 99);
    EXPECT_EQ(expected, rec.boxes()[0].text) << "row " << r.n << " length " << rec.boxes()[0].text.size();
  }
}

TEST(ErrorBoxes, MainWindowOwnsTheBoxUntilItIsGone) {
  int dummy;
  WeMainWindow w = {&dummy, nullptr, nullptr};
  we_set_main_window(&w);
  {
    BoxRecorder rec;
    ErrorBox("x");
    InternalError("we", 1);
    ASSERT_EQ(2u, rec.count());
    EXPECT_EQ((void *)&dummy, rec.boxes()[0].owner);
    EXPECT_EQ((void *)&dummy, rec.boxes()[1].owner);
  }
  we_set_main_window(nullptr);
  {
    BoxRecorder rec;
    ErrorBox("y");
    ASSERT_EQ(1u, rec.count());
    EXPECT_EQ(nullptr, rec.boxes()[0].owner);
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
  // No main window: nothing, no box.
  we_set_main_window(nullptr);
  EXPECT_EQ(1, SetStatusText("Kopírování souborů"));
  EXPECT_EQ(1, SetStatusTextF("Disk %d", 2));
  // A main window without a status bar: nothing.
  int dummy;
  WeMainWindow bare = {&dummy, nullptr, nullptr};
  we_set_main_window(&bare);
  EXPECT_EQ(1, SetStatusText("x"));
  // With a status bar.
  WeMainWindow w = {&dummy, StatusSpy::set, &spy};
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
