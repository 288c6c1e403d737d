// Tests of the installer dialog: the path rules where the robot's scripts can't reach them
// through the fields (an empty text, a buffer without a terminator, a browsed folder at the
// limit of 1023 characters, null arguments), and in-process under Wine its layout: every item
// inside the dialog, no two overlapping, every text it can show fitting its item, the whole
// window within 800 x 600 at 96 DPI (as much larger as the display's DPI is). Its texts,
// states and focus at opening are the robot's to check.
#include "installer/inst.h"
#include "installer/sw_inst.h"
#include "tests/support/kxtest.h"
#include "tests/toolkit/tk_watch.h"
#include "toolkit/wgd.h"

#include <windows.h>
#include <commctrl.h>
#include <stdlib.h>
#include <string.h>

namespace {

std::string x(size_t n) { return std::string(n, 'x'); }

TEST(SwInstPath, EmptyUnterminatedAndNull) {
  char path[KX_PATH];
  memset(path, '#', sizeof path);
  path[0] = 0;
  EXPECT_EQ(1, sw_inst_add_backslash(path));
  EXPECT_STREQ("\\", path);
  // A buffer filled to the last byte with no terminator is taken as cut at 1023.
  memset(path, 'y', sizeof path);
  EXPECT_EQ(1, sw_inst_add_backslash(path));
  EXPECT_EQ(KX_PATH - 2, (int)strspn(path, "y"));
  EXPECT_EQ('\\', path[KX_PATH - 2]);
  EXPECT_EQ(0, path[KX_PATH - 1]);
  const std::string before = path;
  EXPECT_EQ(0, sw_inst_add_backslash(nullptr));
  EXPECT_EQ(0, sw_inst_accept_path(nullptr, path));
  EXPECT_EQ(0, sw_inst_accept_path(path, nullptr));
  EXPECT_EQ(0, sw_inst_target_from_folder(nullptr, path));
  EXPECT_EQ(0, sw_inst_target_from_folder("C:\\", nullptr));
  EXPECT_EQ(before, path);
}

TEST(SwInstPath, TargetFromBrowsedFolder) {
  const struct {
    std::string folder, target;
  } rows[] = {
      /* 0 */ {"C:\\KORV", "C:\\KORV\\KORV5\\"},                     // KORV is no KORV5
      /* 1 */ {"C:\\" + x(1014), "C:\\" + x(1014) + "\\KORV5"},      // cut at 1023
      /* 2 */ {"C:\\" + x(1013), "C:\\" + x(1013) + "\\KORV5\\"},    // fits exactly
  };
  for (size_t i = 0; i < KX_COUNT(rows); i++) {
    char target[KX_PATH + 1];
    memset(target, '#', sizeof target);
    EXPECT_EQ(1, sw_inst_target_from_folder(rows[i].folder.c_str(), target)) << "row " << i;
    EXPECT_EQ('#', target[KX_PATH]) << "written past the buffer, row " << i;
    std::string got(target, strnlen(target, KX_PATH));
    EXPECT_TRUE(rows[i].target == got) << "row " << i << ": got \"" << got.substr(0, 60) << "\" (" << got.size() << " characters)";
  }
}

// ---- The dialog in-process -------------------------------------------------------------------

TEST(SwInstDialog, LayoutFitsAndNothingOverlaps) {
  kxtest::BoxRecorder boxes;
  InstallerDialog *dialog = new InstallerDialog(nullptr);
  ASSERT_EQ(1, sw_inst_open(dialog));
  HWND w = (HWND)dialog->window;
  RECT outer, client, r, common;
  // The display's DPI (tests/res/dpi_run.cmake sets it and names it in KX_EXPECT_DPI): the
  // dialog's font, and with it every item, follows it.
  HDC screen = GetDC(nullptr);
  int dpi = GetDeviceCaps(screen, LOGPIXELSY);
  ReleaseDC(nullptr, screen);
  if (getenv("KX_EXPECT_DPI")) {
    EXPECT_EQ(atoi(getenv("KX_EXPECT_DPI")), dpi) << "display DPI";
  }
  LOGFONTW font;
  GetObjectW((HFONT)SendMessageW(w, WM_GETFONT, 0, 0), sizeof font, &font);
  EXPECT_EQ(-MulDiv(8, dpi, 72), font.lfHeight) << "dialog font height at " << dpi << " DPI";
  GetWindowRect(w, &outer);
  EXPECT_LE(outer.right - outer.left, 800 * dpi / 96) << "window width";
  EXPECT_LE(outer.bottom - outer.top, 600 * dpi / 96) << "window height";
  GetClientRect(w, &client);
  MapWindowPoints(w, nullptr, (POINT *)&client, 2);
  std::vector<std::pair<int, RECT>> seen;
  std::vector<std::pair<int, std::string>> texts;
  for (int id : {1, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 16, 15, 17, 18, 19, 20, 21}) {
    HWND item = GetDlgItem(w, id);
    ASSERT_TRUE(item != nullptr) << "item " << id << " is missing";
    GetWindowRect(item, &r);
    EXPECT_TRUE(IntersectRect(&common, &r, &client) && EqualRect(&common, &r)) << "item " << id << " outside";
    for (const auto &s : seen) EXPECT_FALSE(IntersectRect(&common, &r, &s.second)) << "item " << id << " overlaps " << s.first;
    seen.push_back({id, r});
    if (id != SW_INST_SOURCE && id != SW_INST_TARGET) texts.push_back({id, tk::text_1250(item)});
  }
  // Every text that can be shown fits its item on one line: what the items show now (the
  // paths aside), the closing lines and the two results in the status line. Buttons leave
  // room for their frame, the boxes for the box.
  for (int i = 0; i < SW_INST_LINE_COUNT; i++) texts.push_back({SW_INST_LINE_FIRST + i, SW_INST_CLOSING[i]});
  texts.push_back({SW_INST_STATUS, SW_INST_TEXT_SUCCESS});
  texts.push_back({SW_INST_STATUS, SW_INST_TEXT_FAILURE});
  for (const auto &t : texts) {
    int id = t.first, room = id == 12 || id == 13 ? 20 : id == 17 ? 4 : id == 8 || id == 11 || (id >= 14 && id <= 16) ? 8 : 0;
    HWND item = GetDlgItem(w, id);
    HDC dc = GetDC(item);
    HGDIOBJ old = SelectObject(dc, (HFONT)SendMessageA(item, WM_GETFONT, 0, 0));
    wchar_t wide[300];
    RECT size = {0, 0, 0, 0};
    DrawTextW(dc, wide, MultiByteToWideChar(1250, 0, t.second.c_str(), -1, wide, 300) - 1, &size, DT_CALCRECT | DT_SINGLELINE);
    SelectObject(dc, old);
    ReleaseDC(item, dc);
    GetClientRect(item, &r);
    EXPECT_LE(size.right + room, r.right) << "item " << id << " cuts \"" << t.second << "\": " << size.right << " + "
                                          << room << " pixels in " << r.right;
    EXPECT_LE(size.bottom, r.bottom) << "item " << id << " is too low for its text";
    // Buttons and boxes (common controls 6) also say what size their text and frame want.
    SIZE ideal = {0, 0};
    if (room >= 8 && SendMessageW(item, BCM_GETIDEALSIZE, 0, (LPARAM)&ideal)) {
      EXPECT_LE(ideal.cx, r.right) << "item " << id << " wants " << ideal.cx << " pixels, has " << r.right;
    }
  }
  EXPECT_EQ(0u, boxes.count()) << boxes.dump();
  dialog_end(dialog, 0);
  delete dialog;
}

}  // namespace
