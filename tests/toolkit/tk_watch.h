// tk_watch.h - reads windows as a user sees them (texts as UTF-16 given in code page 1250, also
// for windows of other threads and processes) and answers the dialogs of the test's own thread
// from a thread timer, which fires inside whatever modal loop runs.
#ifndef KX_TK_WATCH_H
#define KX_TK_WATCH_H

#include <windows.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace tk {

inline std::string from_wide(const wchar_t *wide, int n) {
  std::string out((size_t)n * 2 + 1, '\0');
  int m =
      n > 0 ? WideCharToMultiByte(1250, 0, wide, n, &out[0], (int)out.size(), nullptr, nullptr) : 0;
  out.resize(m > 0 ? (size_t)m : 0);
  return out;
}

inline std::string text_1250(HWND window) {
  wchar_t wide[4096];
  return from_wide(wide, GetWindowTextW(window, wide, 4096));
}

inline bool is_class(HWND window, const char *cls) {
  char name[64] = {0};
  GetClassNameA(window, name, sizeof name);
  return !lstrcmpiA(name, cls);
}

// What a window shows: title, owner, the non-empty texts of its visible statics and its
// buttons, each in window order.
struct Seen {
  std::string title;
  std::vector<std::string> statics, buttons;
  HWND owner = nullptr;
};

inline Seen read_window(HWND w) {
  Seen s;
  s.title = text_1250(w);
  s.owner = GetWindow(w, GW_OWNER);
  for (HWND c = GetWindow(w, GW_CHILD); c; c = GetWindow(c, GW_HWNDNEXT)) {
    if (!IsWindowVisible(c)) continue;
    if (is_class(c, "Button")) s.buttons.push_back(text_1250(c));
    if (is_class(c, "Static") && !text_1250(c).empty()) s.statics.push_back(text_1250(c));
  }
  return s;
}

inline HWND find_button(HWND window, const std::string &text) {
  for (HWND c = GetWindow(window, GW_CHILD); c; c = GetWindow(c, GW_HWNDNEXT))
    if (is_class(c, "Button") && text_1250(c) == text) return c;
  return nullptr;
}

struct Find {
  const std::string *title;
  DWORD pid;
  HWND found;
};

inline BOOL CALLBACK find_one(HWND w, LPARAM p) {
  Find *f = (Find *)p;
  DWORD pid = 0;
  GetWindowThreadProcessId(w, &pid);
  if ((f->pid && pid != f->pid) || !IsWindowVisible(w) || !is_class(w, "#32770") ||
      (!f->title->empty() && text_1250(w) != *f->title))
    return TRUE;
  f->found = w;
  return FALSE;
}

inline HWND find_dialog(const std::string &title, DWORD pid = 0) {
  Find f{&title, pid, nullptr};
  if (pid) EnumWindows(find_one, (LPARAM)&f);
  else EnumThreadWindows(GetCurrentThreadId(), find_one, (LPARAM)&f);
  return f.found;
}

// One watcher at a time: waits for the dialog titled title, reads it, then runs act on it. If
// none shows within the limit, every dialog of the thread is cancelled (no hang) and
// timed_out is set.
class Watch {
 public:
  Watch(std::string title, std::function<void(HWND)> act, DWORD limit_ms = 5000)
      : title_(std::move(title)), act_(std::move(act)), limit_(limit_ms), start_(GetTickCount()) {
    current() = this;
    timer_ = SetTimer(nullptr, 0, 30, tick);
  }
  ~Watch() { KillTimer(nullptr, timer_), current() = nullptr; }
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
    if (HWND d = find_dialog(w->title_)) {
      w->fired = true;
      w->seen = read_window(d);
      w->act_(d);
    } else if (GetTickCount() - w->start_ > w->limit_) {
      w->fired = w->timed_out = true;
      HWND any;
      for (int guard = 0; (any = find_dialog("")) && guard < 40; guard++)
        EndDialog(any, 2), DestroyWindow(any);
    }
  }
  std::string title_;
  std::function<void(HWND)> act_;
  DWORD limit_, start_;
  UINT_PTR timer_;
};
}  // namespace tk

#endif
