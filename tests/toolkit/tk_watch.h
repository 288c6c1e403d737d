// tk_watch.h - drives the real dialogs of the test's own thread from a thread timer: the timer
// fires inside whatever modal loop is running, finds a top-level dialog by title, records what
// it shows (texts read as UTF-16 and converted to code page 1250) and acts on it as a user would.
#ifndef KX_TK_WATCH_H
#define KX_TK_WATCH_H

#include <windows.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace tk {

inline std::string text_1250(HWND window) {
  int n = GetWindowTextLengthW(window);
  std::wstring wide((size_t)n + 1, L'\0');
  GetWindowTextW(window, &wide[0], n + 1);
  wide.resize((size_t)n);
  if (wide.empty()) return std::string();
  int bytes = WideCharToMultiByte(1250, 0, wide.c_str(), (int)wide.size(), nullptr, 0, nullptr, nullptr);
  std::string out((size_t)bytes, '\0');
  WideCharToMultiByte(1250, 0, wide.c_str(), (int)wide.size(), &out[0], bytes, nullptr, nullptr);
  return out;
}

inline std::string class_of(HWND window) {
  char name[64] = {0};
  GetClassNameA(window, name, sizeof name);
  return name;
}

// What a dialog showed: title, static texts and buttons in window order.
struct Seen {
  HWND window = nullptr;
  std::string title;
  std::vector<std::string> statics, buttons;
  std::vector<int> button_ids;
  HWND owner = nullptr;
  RECT rect = {0, 0, 0, 0};
};

inline Seen look(HWND dialog) {
  Seen s;
  s.window = dialog;
  s.title = text_1250(dialog);
  s.owner = GetWindow(dialog, GW_OWNER);
  GetWindowRect(dialog, &s.rect);
  for (HWND c = GetWindow(dialog, GW_CHILD); c; c = GetWindow(c, GW_HWNDNEXT)) {
    std::string cls = class_of(c);
    if (!lstrcmpiA(cls.c_str(), "Static")) s.statics.push_back(text_1250(c));
    if (!lstrcmpiA(cls.c_str(), "Button")) {
      s.buttons.push_back(text_1250(c));
      s.button_ids.push_back(GetDlgCtrlID(c));
    }
  }
  return s;
}

struct FindCtx {
  const std::string *title;
  HWND found;
};

inline BOOL CALLBACK find_one(HWND w, LPARAM p) {
  FindCtx *c = (FindCtx *)p;
  if (!IsWindowVisible(w) || class_of(w) != "#32770") return TRUE;
  if (!c->title->empty() && text_1250(w) != *c->title) return TRUE;
  c->found = w;
  return FALSE;
}

// Finds a visible "#32770" window of this thread with this title (any title when empty).
inline HWND find_dialog(const std::string &title) {
  FindCtx ctx{&title, nullptr};
  EnumThreadWindows(GetCurrentThreadId(), find_one, (LPARAM)&ctx);
  return ctx.found;
}

inline HWND find_button(HWND dialog, const std::string &text) {
  for (HWND c = GetWindow(dialog, GW_CHILD); c; c = GetWindow(c, GW_HWNDNEXT))
    if (!lstrcmpiA(class_of(c).c_str(), "Button") && text_1250(c) == text) return c;
  return nullptr;
}

// One watcher at a time: waits for the dialog titled title, records it, then runs act on it.
// If no such dialog shows within the time limit, every dialog of the thread is cancelled so
// that the test does not hang, and timed_out is set.
class Watch {
 public:
  Watch(std::string title, std::function<void(HWND)> act, DWORD limit_ms = 5000)
      : title_(std::move(title)), act_(std::move(act)), limit_(limit_ms), start_(GetTickCount()) {
    current() = this;
    timer_ = SetTimer(nullptr, 0, 30, tick);
  }
  ~Watch() {
    KillTimer(nullptr, timer_);
    current() = nullptr;
  }
  bool fired = false, timed_out = false;
  Seen seen;

 private:
  static Watch *&current() {
    static Watch *w = nullptr;
    return w;
  }
  static void CALLBACK tick(HWND, UINT, UINT_PTR, DWORD) {
    Watch *w = current();
    if (!w || w->fired) return;
    HWND d = find_dialog(w->title_);
    if (d) {
      w->fired = true;
      w->seen = look(d);
      w->act_(d);
      return;
    }
    if (GetTickCount() - w->start_ > w->limit_) {
      w->fired = w->timed_out = true;
      HWND any;
      int guard = 0;
      while ((any = find_dialog("")) && guard++ < 40) EndDialog(any, 2), DestroyWindow(any);
    }
  }
  std::string title_;
  std::function<void(HWND)> act_;
  DWORD limit_, start_;
  UINT_PTR timer_;
};

// Actions.
inline std::function<void(HWND)> press(const std::string &button) {
  return [button](HWND d) {
    HWND b = find_button(d, button);
    if (b) {
      PostMessageA(b, BM_CLICK, 0, 0);
    } else {
      ADD_FAILURE() << "no button '" << button << "'";
      PostMessageA(d, WM_COMMAND, IDCANCEL, 0);
    }
  };
}
inline std::function<void(HWND)> escape() {
  return [](HWND d) {
    HWND focus = GetFocus();
    PostMessageA(focus ? focus : d, WM_KEYDOWN, VK_ESCAPE, 1);
    PostMessageA(focus ? focus : d, WM_KEYUP, VK_ESCAPE, 0xC0000001);
  };
}
inline std::function<void(HWND)> close_box() {
  return [](HWND d) { PostMessageA(d, WM_SYSCOMMAND, SC_CLOSE, 0); };
}
inline std::function<void(HWND)> enter() {
  return [](HWND d) {
    HWND focus = GetFocus();
    PostMessageA(focus ? focus : d, WM_KEYDOWN, VK_RETURN, 1);
  };
}

}  // namespace tk

#endif
