// tk_watch.h - drives the real dialogs of the test's own thread from a thread timer: the timer
// fires inside whatever modal loop runs, finds a top-level dialog by title, records what it shows
// (texts as UTF-16 converted to code page 1250) and acts on it as a user would.
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
  std::string out((size_t)n * 2 + 1, '\0');
  out.resize((size_t)WideCharToMultiByte(1250, 0, wide.c_str(), n, &out[0], (int)out.size(), nullptr, nullptr));
  return out;
}

inline bool is_class(HWND window, const char *cls) {
  char name[64] = {0};
  GetClassNameA(window, name, sizeof name);
  return !lstrcmpiA(name, cls);
}

// What a dialog showed: title, owner, static texts and buttons in window order.
struct Seen {
  std::string title;
  std::vector<std::string> statics, buttons;
  HWND owner = nullptr;
};

inline HWND find_button(HWND dialog, const std::string &text, Seen *seen = nullptr) {
  for (HWND c = GetWindow(dialog, GW_CHILD); c; c = GetWindow(c, GW_HWNDNEXT)) {
    if (seen && is_class(c, "Static")) seen->statics.push_back(text_1250(c));
    if (!is_class(c, "Button")) continue;
    if (seen) seen->buttons.push_back(text_1250(c));
    else if (text_1250(c) == text) return c;
  }
  return nullptr;
}

struct FindCtx {
  const std::string *title;
  HWND found;
};

inline BOOL CALLBACK find_one(HWND w, LPARAM p) {
  FindCtx *c = (FindCtx *)p;
  if (!IsWindowVisible(w) || !is_class(w, "#32770")) return TRUE;
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

// One watcher at a time: waits for the dialog titled title, records it, then runs act on it.
// If none shows within the limit, every dialog of the thread is cancelled (no hang) and
// timed_out is set.
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
    if (HWND d = find_dialog(w->title_)) {
      w->fired = true;
      w->seen.title = text_1250(d);
      w->seen.owner = GetWindow(d, GW_OWNER);
      find_button(d, "", &w->seen);
      w->act_(d);
    } else if (GetTickCount() - w->start_ > w->limit_) {
      w->fired = w->timed_out = true;
      HWND any;
      for (int guard = 0; (any = find_dialog("")) && guard < 40; guard++) EndDialog(any, 2), DestroyWindow(any);
    }
  }
  std::string title_;
  std::function<void(HWND)> act_;
  DWORD limit_, start_;
  UINT_PTR timer_;
};

// Clicks the button with this text; without one, a failure and Cancel.
inline std::function<void(HWND)> press(const std::string &button) {
  return [button](HWND d) {
    HWND b = find_button(d, button);
    if (!b) ADD_FAILURE() << "no button '" << button << "'";
    PostMessageA(b ? b : d, b ? BM_CLICK : WM_COMMAND, b ? 0 : IDCANCEL, 0);
  };
}

}  // namespace tk

#endif
