// Tests of the installer dialog: the path rules at the fields' limit of 1023 characters, and
// in-process under Wine its layout: every item inside the dialog, no two overlapping, every
// text fitting its item, the whole window within 800 x 600.
#include "menu/sw_inst.h"
#include "installer/inst.h"
#include "swin/wgd.h"
#include "tests/support/kxtest.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <stdio.h>
#include <string.h>
#include <string>

namespace {

// A KX_PATH buffer pre-filled with the pattern, then the text (at most 1023 characters).
struct PathBuffer {
  char bytes[KX_PATH];
  explicit PathBuffer(const std::string &text) {
    memset(bytes, '#', sizeof bytes);
    snprintf(bytes, sizeof bytes, "%s", text.c_str());
  }
  std::string str() const { return std::string(bytes, strnlen(bytes, KX_PATH)); }
};
std::string x(size_t n) { return std::string(n, 'x'); }

TEST(SwInstPath, AddBackslash) {
  struct Row { std::string in, out; } rows[] = {
      /* 0 */ {"", "\\"},
      /* 1 */ {x(1022), x(1022) + "\\"},         // fits exactly
      /* 2 */ {x(1023), x(1022) + "\\"},         // no room: cut
      /* 3 */ {x(1022) + "\\", x(1022) + "\\"},  // has it already
  };
  for (size_t i = 0; i < KX_COUNT(rows); i++) {
    PathBuffer b(rows[i].in);
    EXPECT_EQ(1, sw_inst_add_backslash(b.bytes)) << "row " << i;
    std::string got = b.str();
    EXPECT_TRUE(rows[i].out == got) << "row " << i << ": got " << got.size() << " \"" << got.substr(0, 40) << "...\"";
  }
  // A buffer filled to the last byte with no terminator is taken as cut at 1023.
  char full[KX_PATH];
  memset(full, 'y', sizeof full);
  EXPECT_EQ(1, sw_inst_add_backslash(full));
  EXPECT_EQ(KX_PATH - 2, (int)strspn(full, "y"));
  EXPECT_EQ('\\', full[KX_PATH - 2]);
  EXPECT_EQ(0, full[KX_PATH - 1]);
  EXPECT_EQ(0, sw_inst_add_backslash(nullptr));
}

TEST(SwInstPath, LeavingAField) {
  const std::string old_path = "C:\\STARA\\";
  struct Row { std::string field; Flag result; std::string field_after, state_after; } rows[] = {
      /* 0 */ {"D:\\MEDIUM", 1, "D:\\MEDIUM\\", "D:\\MEDIUM\\"},
      /* 1 */ {"C", 0, old_path, old_path},           // "C\": no ":" second
      /* 2 */ {"C:" + x(1021), 1, "C:" + x(1020) + "\\", "C:" + x(1020) + "\\"},
      /* 3 */ {"C:" + x(1020), 1, "C:" + x(1020) + "\\", "C:" + x(1020) + "\\"},
  };
  for (size_t i = 0; i < KX_COUNT(rows); i++) {
    PathBuffer field(rows[i].field), state(old_path);
    EXPECT_EQ(rows[i].result, sw_inst_accept_path(field.bytes, state.bytes)) << "row " << i;
    EXPECT_TRUE(rows[i].field_after == field.str())
        << "row " << i << ": field \"" << field.str().substr(0, 40) << "\"";
    EXPECT_TRUE(rows[i].state_after == state.str())
        << "row " << i << ": state \"" << state.str().substr(0, 40) << "\"";
  }
  PathBuffer field("D:\\"), state(old_path);
  EXPECT_EQ(0, sw_inst_accept_path(nullptr, state.bytes));
  EXPECT_EQ(0, sw_inst_accept_path(field.bytes, nullptr));
  EXPECT_EQ(old_path, state.str());
}

TEST(SwInstPath, TargetFromBrowsedFolder) {
  struct Row { std::string folder, target; } rows[] = {
      /* 0 */ {"C:\\PROGRAMS", "C:\\PROGRAMS\\KORV5\\"},
      /* 1 */ {"D:\\Moje\\xKorV5y\\data", "D:\\Moje\\xKorV5y\\data\\"},  // any case, anywhere
      /* 2 */ {"C:\\KORV", "C:\\KORV\\KORV5\\"},
      /* 3 */ {"C:\\" + x(1014), "C:\\" + x(1014) + "\\KORV5"},  // cut
      /* 4 */ {"C:\\" + x(1013), "C:\\" + x(1013) + "\\KORV5\\"},
  };
  for (size_t i = 0; i < KX_COUNT(rows); i++) {
    PathBuffer target("");
    memset(target.bytes, '#', sizeof target.bytes);
    EXPECT_EQ(1, sw_inst_target_from_folder(rows[i].folder.c_str(), target.bytes)) << "row " << i;
    std::string got = target.str();
    EXPECT_LE(got.size(), (size_t)KX_PATH - 1) << "row " << i;
    EXPECT_TRUE(rows[i].target == got) << "row " << i << ": got \"" << got.substr(0, 60)
                                       << "\" (" << got.size() << " characters)";
  }
  char target[KX_PATH];
  EXPECT_EQ(0, sw_inst_target_from_folder(nullptr, target));
  EXPECT_EQ(0, sw_inst_target_from_folder("C:\\", nullptr));
}

// ---- The dialog in-process -------------------------------------------------------------------

RECT screen_rect(HWND w) {
  RECT r;
  GetWindowRect(w, &r);
  return r;
}

TEST(SwInstDialog, LayoutFitsAndNothingOverlaps) {
  kxtest::BoxRecorder boxes;
  InstallerDialog *dialog = new InstallerDialog(nullptr);
  ASSERT_EQ(1, sw_inst_open(dialog));
  HWND w = (HWND)dialog->window;

  RECT outer = screen_rect(w);
  EXPECT_LE(outer.right - outer.left, 800) << "window width";
  EXPECT_LE(outer.bottom - outer.top, 600) << "window height";
  RECT client;
  GetClientRect(w, &client);
  MapWindowPoints(w, nullptr, (POINT *)&client, 2);

  const int ids[] = {1, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 16, 15, 17, 18, 19, 20, 21};
  RECT rects[KX_COUNT(ids)];
  for (size_t i = 0; i < KX_COUNT(ids); i++) {
    HWND item = GetDlgItem(w, ids[i]);
    ASSERT_TRUE(item != nullptr) << "item " << ids[i] << " is missing";
    rects[i] = screen_rect(item);
    RECT in;
    EXPECT_TRUE(IntersectRect(&in, &rects[i], &client) && EqualRect(&in, &rects[i])) << "item " << ids[i] << " outside";
  }
  for (size_t i = 0; i < KX_COUNT(ids); i++)
    for (size_t j = i + 1; j < KX_COUNT(ids); j++) {
      RECT common;
      EXPECT_FALSE(IntersectRect(&common, &rects[i], &rects[j]))
          << "item " << ids[i] << " overlaps " << ids[j];
    }

  // Every text that can be shown fits its item on one line: the labels and buttons, the
  // version, the welcome and the closing texts, the status texts.
  struct Text { int id; const char *text; int room; } texts[] = {
      {4, "Verze :", 0}, {5, "5.003-016", 0}, {6, "Zdrojová cesta :", 0},
      {9, "Cílová cesta :", 0}, {8, "Procházet ...", 8}, {11, "Procházet ...", 8},
      {12, "Umístit ikonu aplikace na pracovní plochu", 20},
      {13, "Umístit ikonu aplikace do systémové lišty", 20},
      {14, "Start instalace", 8}, {16, "Přerušit instalaci", 8}, {15, "Konec", 8},
      {17, "Instalace proběhla úspěšně", 4}, {1, "Instalace systému KORVEX", 0},
  };
  std::vector<Text> all(texts, texts + KX_COUNT(texts));
  for (int i = 0; i < SW_INST_LINE_COUNT; i++) {
    all.push_back({SW_INST_LINE_FIRST + i, SW_INST_WELCOME[i], 0});
    all.push_back({SW_INST_LINE_FIRST + i, SW_INST_CLOSING[i], 0});
  }
  for (const Text &t : all) {
    HWND item = GetDlgItem(w, t.id);
    HDC dc = GetDC(item);
    HFONT font = (HFONT)SendMessageA(item, WM_GETFONT, 0, 0);
    HGDIOBJ old = SelectObject(dc, font);
    wchar_t wide[300];
    int n = MultiByteToWideChar(1250, 0, t.text, -1, wide, 300) - 1;
    SIZE size;
    GetTextExtentPoint32W(dc, wide, n, &size);
    SelectObject(dc, old);
    ReleaseDC(item, dc);
    RECT r;
    GetClientRect(item, &r);
    EXPECT_LE(size.cx + t.room, r.right - r.left)
        << "item " << t.id << " cuts \"" << t.text << "\": " << size.cx << " + " << t.room
        << " pixels in " << (r.right - r.left);
    EXPECT_LE(size.cy, r.bottom - r.top) << "item " << t.id << " is too low for its text";
  }

  // The opening's states, seen from inside.
  EXPECT_FALSE(IsWindowEnabled(GetDlgItem(w, SW_INST_ABORT)));
  EXPECT_EQ(BST_CHECKED, SendMessageA(GetDlgItem(w, SW_INST_DESKTOP), BM_GETCHECK, 0, 0));
  EXPECT_EQ(dialog->quick_launch_available ? TRUE : FALSE,
            IsWindowEnabled(GetDlgItem(w, SW_INST_QUICK_LAUNCH)));
  EXPECT_EQ(0u, boxes.count()) << boxes.dump();

  dialog_end(dialog, 0);
  delete dialog;
}

}  // namespace
