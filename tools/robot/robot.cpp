// kxrobot: a test tool that drives a running Win32 program through real window messages, the
// way an automation tool does, from a small script. It starts the program, waits for its
// windows, types into items, moves the focus, clicks, reads texts and states, answers boxes by
// their exact title and body, and fails with a report on any box the script did not expect.
//
// The script format is the help text below (kxrobot --help prints it); keep the two in step.
#include <windows.h>
#include <shellapi.h>

#include <fcntl.h>
#include <io.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

namespace {

const char kHelp[] = R"(kxrobot - drives a Win32 program through window messages, from a script.

Usage: kxrobot [--timeout SECONDS] [--expect-failure TEXT]... SCRIPT [NAME=VALUE]...

  --timeout SECONDS      default wait of the timed commands (20 s without it)
  --expect-failure TEXT  the script must fail, and its failure report must contain TEXT
                         (UTF-8, may be given several times); then the robot exits 0
  NAME=VALUE             a value for ${NAME} in the script

The script is a UTF-8 text file, one command per line. Blank lines are skipped; a word that
starts with # ends the line (a comment). Words are separated by blanks; a text is written in
double quotes with the escapes \" \\ \n (line break) \r \t \$ and \xNN (one byte of code page
1250). ${NAME} in a word or a text becomes the NAME=VALUE of the command line, else the
environment variable NAME; an unknown NAME is an error. A $ not followed by { is plain.

All texts are compared byte for byte in code page 1250: the script's texts are converted to
1250 (a character that 1250 lacks is a syntax error), the windows' texts are read as UTF-16
with WM_GETTEXT and converted to 1250 (a character that 1250 lacks never matches). Reports
print texts as the script writes them, in UTF-8.

ITEM is a dialog item number (control id) of the current window, searched among all its child
windows. SECONDS may have a fraction (0.5); where it is optional, the default wait applies.
A path starting with / is a Unix path under Wine's drive Z:.

Commands:
  start PROGRAM [ARGUMENT]...   start the program (relative to the script's directory) with
                                the arguments, in the robot's current directory; one program
                                at a time
  window "TITLE" [SECONDS]      wait for a visible top-level window of the program with this
                                title; it becomes the current window and an expected window
  set ITEM "TEXT"               set the item's text (WM_SETTEXT)
  focus ITEM                    put the focus on the item (WM_NEXTDLGCTL posted to its dialog)
  leave ITEM                    put the focus on the item, then on the next control in tab
                                order, so that the item's kill-focus handler runs
  click ITEM                    click the button or check box (BM_CLICK, posted: the click's
                                handler may run long and show boxes meanwhile)
  expect CHECK ITEM ["TEXT"]    check the item now; CHECK is text (with "TEXT"), enabled,
                                disabled, checked, unchecked or focused
  wait CHECK ITEM ["TEXT"] [SECONDS]
                                wait until the check holds
  box "TITLE" "BODY" answer "BUTTON" [SECONDS]
                                wait for a box (a top-level window other than the expected
                                ones) with exactly this title and body, and press the push
                                button with exactly this text ("OK", "&Ano"); the box must
                                close. The body is the texts of the box's visible text statics
                                in window order, joined by \n (empty statics left out)
  wait-box "TITLE" "BODY" [SECONDS]
                                wait for such a box but leave it open: the file commands may
                                run while it is up (a disk is changed while the program asks
                                for it), and the next box command answers it
  copy-files "FROM" "TO"        copy every file of the directory FROM (not its subdirectories)
                                into the directory TO, replacing files of the same name
  delete-file "PATTERN"         delete every file that the pattern matches (C:\DIR\*.TXT, ...);
                                none matching is no error, one that stays is
  wait-exit CODE|any [SECONDS]  wait for the program to end, with this exit code
  sleep SECONDS                 wait, still watching for boxes
  snap "FILE.bmp"               a screenshot of the current window into a 24-bit BMP, relative
                                to the robot's current directory
  kill                          end the program (TerminateProcess)
  timeout SECONDS               the default wait from here on
  mark                          start the stopwatch
  elapsed "LABEL"               print "robot: elapsed LABEL N ms", the milliseconds since the
                                last mark (or since the robot started); a wait polls every
                                20 ms, so a stretch that ends in a wait is timed to about that

The file commands copy-files and delete-file act on the files only: a box that is up does not
stop them. Paths are taken as written (a path starting with / is under Z:).

Every command that sends something waits until the program has taken it (a program that
takes no message for the default wait fails the command); a click's handler has then run, or
is running and pumping messages.

Unexpected boxes: an unexpected box is a visible top-level window of the program that is
neither an expected window (named by a window command) nor the box being waited for. A box that
a command brings up is for the next command: box answers it; any other command fails on it
before it acts. While sleep, wait, wait-exit, window and box wait, and for half a second at the
end of the script, an unexpected box fails the run at once. The report names the box's class,
title, body and buttons. A box with the wanted title but another body gets a second to finish,
then fails as another body. Tool tips and windows of no size are not counted; windows of other
processes (the program's children too) are not seen.

Output (UTF-8): one line per command as it starts, then "robot: N commands, passed" or the
report and "robot: FAILED at line N: COMMAND: WHAT". On a failure, and at the end if it still
runs, the program is ended. Exit code 0 passed, 1 failed, 2 a syntax or usage error (with
--expect-failure: 0 when the script failed with every TEXT in its report, else 1).
)";

const DWORD kPoll = 20;          // ms between looks at the windows
const DWORD kQuietEnd = 500;     // ms of watching for boxes at the end of the script
const DWORD kBodySettle = 1000;  // ms a box with the wanted title may take to show its body

// ---------------------------------------------------------------- texts

std::string utf8(const std::wstring &w) {
  if (w.empty()) return std::string();
  int n = WideCharToMultiByte(CP_UTF8, 0, w.data(), (int)w.size(), nullptr, 0, nullptr, nullptr);
  if (n <= 0) return std::string("?");
  std::string s((size_t)n, '\0');
  WideCharToMultiByte(CP_UTF8, 0, w.data(), (int)w.size(), &s[0], n, nullptr, nullptr);
  return s;
}

bool from_utf8(const std::string &s, std::wstring *w) {
  w->clear();
  if (s.empty()) return true;
  int n = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, s.data(), (int)s.size(), nullptr, 0);
  if (n <= 0) return false;
  w->resize((size_t)n);
  MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, s.data(), (int)s.size(), &(*w)[0], n);
  return true;
}

std::wstring from1250(const std::string &b) {
  std::wstring w;
  if (b.empty()) return w;
  int n = MultiByteToWideChar(1250, 0, b.data(), (int)b.size(), nullptr, 0);
  w.resize((size_t)(n > 0 ? n : 0));
  if (n > 0) MultiByteToWideChar(1250, 0, b.data(), (int)b.size(), &w[0], n);
  return w;
}

// The text in code page 1250; false when 1250 lacks one of its characters (checked by the way
// back, which does not depend on how the system treats best-fit characters).
bool to1250(const std::wstring &w, std::string *b) {
  b->clear();
  if (w.empty()) return true;
  int n = WideCharToMultiByte(1250, 0, w.data(), (int)w.size(), nullptr, 0, nullptr, nullptr);
  if (n <= 0) return false;
  b->resize((size_t)n);
  WideCharToMultiByte(1250, 0, w.data(), (int)w.size(), &(*b)[0], n, nullptr, nullptr);
  return from1250(*b) == w;
}

// True when a window's text is byte for byte the wanted 1250 text.
bool same(const std::wstring &seen, const std::string &want) {
  std::string b;
  return to1250(seen, &b) && b == want;
}

// A text as a script writes it: quoted, escaped, UTF-8.
std::string shown(const std::wstring &w) {
  std::string out = "\"";
  std::wstring run;
  for (wchar_t c : w) {
    const char *esc = nullptr;
    char hex[8];
    if (c == L'"') esc = "\\\"";
    else if (c == L'\\') esc = "\\\\";
    else if (c == L'\n') esc = "\\n";
    else if (c == L'\r') esc = "\\r";
    else if (c == L'\t') esc = "\\t";
    else if (c == L'$') esc = "\\$";
    else if (c < 0x20 || c == 0x7F) {
      snprintf(hex, sizeof hex, "\\x%02X", (unsigned)c);
      esc = hex;
    }
    if (!esc) {
      run += c;
      continue;
    }
    out += utf8(run);
    run.clear();
    out += esc;
  }
  out += utf8(run);
  return out + "\"";
}

std::string shown1250(const std::string &b) { return shown(from1250(b)); }

std::string number(unsigned long v) {
  char b[24];
  snprintf(b, sizeof b, "%lu", v);
  return b;
}

std::string seconds_text(DWORD ms) {
  char b[32];
  if (ms % 1000 == 0) snprintf(b, sizeof b, "%lu s", (unsigned long)(ms / 1000));
  else if (ms % 100 == 0)
    snprintf(b, sizeof b, "%lu.%lu s", (unsigned long)(ms / 1000),
             (unsigned long)(ms % 1000 / 100));
  else snprintf(b, sizeof b, "%lu.%03lu s", (unsigned long)(ms / 1000), (unsigned long)(ms % 1000));
  return b;
}

void out(const std::string &line) {
  std::string s = line + "\n";
  fwrite(s.data(), 1, s.size(), stdout);
  fflush(stdout);
}

// ---------------------------------------------------------------- script

struct Word {
  std::wstring text;
  bool quoted;
};

struct Var {
  std::string name, value;  // UTF-8
};

enum Op {
  OP_START,
  OP_WINDOW,
  OP_SET,
  OP_FOCUS,
  OP_LEAVE,
  OP_CLICK,
  OP_EXPECT,
  OP_WAIT,
  OP_BOX,
  OP_WAIT_EXIT,
  OP_SLEEP,
  OP_SNAP,
  OP_KILL,
  OP_TIMEOUT,
  OP_WAIT_BOX,
  OP_COPY_FILES,
  OP_DELETE_FILE,
  OP_MARK,
  OP_ELAPSED
};
enum Check { CK_TEXT, CK_ENABLED, CK_DISABLED, CK_CHECKED, CK_UNCHECKED, CK_FOCUSED };

struct Step {
  int line = 0;
  std::string source;  // the line as written, UTF-8, trimmed
  Op op = OP_KILL;
  std::wstring program, file;  // start, snap; copy-files FROM and TO, delete-file PATTERN
  std::vector<std::wstring> args;
  std::string title, body, button, text;  // code page 1250
  int item = 0;
  Check check = CK_TEXT;
  DWORD ms = 0;  // 0: the default wait
  bool any_code = true;
  DWORD code = 0;
};

bool lookup(const std::vector<Var> &vars, const std::string &name, std::string *value) {
  for (const Var &v : vars)
    if (v.name == name) {
      *value = v.value;
      return true;
    }
  std::wstring wname, buf(32768, L'\0');
  if (!from_utf8(name, &wname)) return false;
  DWORD n = GetEnvironmentVariableW(wname.c_str(), &buf[0], (DWORD)buf.size());
  if (n == 0 || n >= buf.size()) return false;
  buf.resize(n);
  *value = utf8(buf);
  return true;
}

bool flush_run(std::string *run, std::wstring *to, std::string *err) {
  std::wstring w;
  if (!from_utf8(*run, &w)) {
    *err = "the line is not UTF-8";
    return false;
  }
  *to += w;
  run->clear();
  return true;
}

int hex_digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Splits a line into words; false with *err on a syntax error.
bool split(const std::string &line, const std::vector<Var> &vars, std::vector<Word> *words,
           std::string *err) {
  size_t i = 0, n = line.size();
  words->clear();
  for (;;) {
    while (i < n && (line[i] == ' ' || line[i] == '\t')) i++;
    if (i >= n || line[i] == '#') return true;
    Word word;
    word.quoted = line[i] == '"';
    if (word.quoted) i++;
    std::string run;
    for (;;) {
      if (i >= n) {
        if (word.quoted) {
          *err = "a text has no closing quote";
          return false;
        }
        break;
      }
      char c = line[i];
      if (!word.quoted && (c == ' ' || c == '\t')) break;
      if (word.quoted && c == '"') {
        i++;
        if (i < n && line[i] != ' ' && line[i] != '\t') {
          *err = "a text must be followed by a blank";
          return false;
        }
        break;
      }
      if (!word.quoted && c == '"') {
        *err = "a quote inside a word (a text must be a word of its own)";
        return false;
      }
      if (c == '$' && i + 1 < n && line[i + 1] == '{') {
        size_t close = line.find('}', i + 2);
        if (close == std::string::npos) {
          *err = "${ without }";
          return false;
        }
        std::string name = line.substr(i + 2, close - i - 2), value;
        if (!lookup(vars, name, &value)) {
          *err = "${" + name + "} has no value (give NAME=VALUE or set the environment variable)";
          return false;
        }
        run += value;
        i = close + 1;
        continue;
      }
      if (word.quoted && c == '\\') {
        char e = i + 1 < n ? line[i + 1] : '\0';
        i += 2;
        switch (e) {
          case '"':
          case '\\':
          case '$': run += e; break;
          case 'n': run += '\n'; break;
          case 'r': run += '\r'; break;
          case 't': run += '\t'; break;
          case 'x': {
            int hi = i < n ? hex_digit(line[i]) : -1, lo = i + 1 < n ? hex_digit(line[i + 1]) : -1;
            if (hi < 0 || lo < 0) {
              *err = "\\x needs two hex digits";
              return false;
            }
            i += 2;
            if (!flush_run(&run, &word.text, err)) return false;
            word.text += from1250(std::string(1, (char)(hi * 16 + lo)));
            break;
          }
          default:
            *err = std::string("unknown escape \\") + (e ? std::string(1, e) : std::string());
            return false;
        }
        continue;
      }
      run += c;
      i++;
    }
    if (!flush_run(&run, &word.text, err)) return false;
    words->push_back(word);
  }
}

bool parse_item(const Word &w, int *item, std::string *err) {
  long v = 0;
  bool ok = !w.quoted && !w.text.empty() && w.text.size() <= 5;
  for (wchar_t c : w.text) {
    if (c < L'0' || c > L'9') ok = false;
    else v = v * 10 + (c - L'0');
  }
  if (!ok || v < 1 || v > 65535) {
    *err = "an item number (1 to 65535) was expected, not " + utf8(w.text);
    return false;
  }
  *item = (int)v;
  return true;
}

bool parse_seconds(const Word &w, DWORD *ms, std::string *err) {
  unsigned long whole = 0, frac = 0, scale = 1000;
  bool ok = !w.quoted && !w.text.empty(), dot = false, digits = false;
  for (wchar_t c : w.text) {
    if (c == L'.' && !dot) dot = true;
    else if (c >= L'0' && c <= L'9') {
      digits = true;
      if (!dot) whole = whole * 10 + (unsigned long)(c - L'0');
      else if (scale > 1) frac += (unsigned long)(c - L'0') * (scale /= 10);
      if (whole > 86400) ok = false;
    } else ok = false;
  }
  if (!ok || !digits || whole * 1000 + frac == 0) {
    *err = "a number of seconds (above 0, at most 86400) was expected, not " + utf8(w.text);
    return false;
  }
  *ms = (DWORD)(whole * 1000 + frac);
  return true;
}

bool parse_text(const Word &w, std::string *b, std::string *err) {
  if (!w.quoted) {
    *err = "a text in double quotes was expected, not " + utf8(w.text);
    return false;
  }
  if (!to1250(w.text, b)) {
    *err = "the text " + shown(w.text) + " has a character that code page 1250 lacks";
    return false;
  }
  return true;
}

bool parse_check(const Word &w, Check *check, std::string *err) {
  static const struct {
    const wchar_t *name;
    Check check;
  } kChecks[] = {{L"text", CK_TEXT},       {L"enabled", CK_ENABLED},     {L"disabled", CK_DISABLED},
                 {L"checked", CK_CHECKED}, {L"unchecked", CK_UNCHECKED}, {L"focused", CK_FOCUSED}};
  for (const auto &k : kChecks)
    if (!w.quoted && w.text == k.name) {
      *check = k.check;
      return true;
    }
  *err = "text, enabled, disabled, checked, unchecked or focused was expected, not " + utf8(w.text);
  return false;
}

// Reads the words of one command into *s; false with *err when they do not fit it.
bool parse_step(const std::vector<Word> &w, Step *s, std::string *err) {
  static const struct {
    const wchar_t *name;
    Op op;
  } kOps[] = {{L"start", OP_START},
              {L"window", OP_WINDOW},
              {L"set", OP_SET},
              {L"focus", OP_FOCUS},
              {L"leave", OP_LEAVE},
              {L"click", OP_CLICK},
              {L"expect", OP_EXPECT},
              {L"wait", OP_WAIT},
              {L"box", OP_BOX},
              {L"wait-exit", OP_WAIT_EXIT},
              {L"sleep", OP_SLEEP},
              {L"snap", OP_SNAP},
              {L"kill", OP_KILL},
              {L"timeout", OP_TIMEOUT},
              {L"wait-box", OP_WAIT_BOX},
              {L"copy-files", OP_COPY_FILES},
              {L"delete-file", OP_DELETE_FILE},
              {L"mark", OP_MARK},
              {L"elapsed", OP_ELAPSED}};
  bool known = false;
  for (const auto &k : kOps)
    if (!w[0].quoted && w[0].text == k.name) {
      s->op = k.op;
      known = true;
    }
  if (!known) {
    *err = "unknown command " + utf8(w[0].text);
    return false;
  }
  size_t n = w.size(), optional_at = 0;  // optional_at: where an optional SECONDS may stand
  switch (s->op) {
    case OP_START:
      if (n < 2) break;
      s->program = w[1].text;
      for (size_t i = 2; i < n; i++) s->args.push_back(w[i].text);
      return true;
    case OP_WINDOW:
      if (n < 2 || n > 3 || !parse_text(w[1], &s->title, err)) break;
      optional_at = 2;
      break;
    case OP_SET:
      if (n != 3 || !parse_item(w[1], &s->item, err) || !parse_text(w[2], &s->text, err)) break;
      return true;
    case OP_FOCUS:
    case OP_LEAVE:
    case OP_CLICK:
      if (n != 2 || !parse_item(w[1], &s->item, err)) break;
      return true;
    case OP_EXPECT:
    case OP_WAIT: {
      if (n < 3 || !parse_check(w[1], &s->check, err) || !parse_item(w[2], &s->item, err)) break;
      size_t next = 3;
      if (s->check == CK_TEXT) {
        if (n < 4 || !parse_text(w[3], &s->text, err)) break;
        next = 4;
      }
      if (s->op == OP_EXPECT && n == next) return true;
      if (s->op == OP_WAIT && n <= next + 1) {
        optional_at = next;
        break;
      }
      break;
    }
    case OP_BOX:
      if (n < 5 || n > 6 || !parse_text(w[1], &s->title, err) || !parse_text(w[2], &s->body, err))
        break;
      if (w[3].quoted || w[3].text != L"answer") {
        *err = "answer was expected after the body, not " + utf8(w[3].text);
        return false;
      }
      if (!parse_text(w[4], &s->button, err)) break;
      optional_at = 5;
      break;
    case OP_WAIT_EXIT:
      if (n < 2 || n > 3) break;
      if (w[1].quoted || w[1].text != L"any") {
        s->any_code = false;
        char *end = nullptr;
        std::string digits = utf8(w[1].text);
        unsigned long long v = strtoull(digits.c_str(), &end, 10);
        if (w[1].quoted || digits.empty() || *end || digits[0] == '-' || v > 0xFFFFFFFFull) {
          *err = "an exit code or any was expected, not " + digits;
          return false;
        }
        s->code = (DWORD)v;
      }
      optional_at = 2;
      break;
    case OP_SLEEP:
    case OP_TIMEOUT:
      if (n != 2 || !parse_seconds(w[1], &s->ms, err)) break;
      return true;
    case OP_SNAP:
      if (n != 2) break;
      s->file = w[1].text;
      return true;
    case OP_KILL:
    case OP_MARK:
      if (n != 1) break;
      return true;
    case OP_ELAPSED:
      if (n != 2 || !parse_text(w[1], &s->text, err)) break;
      return true;
    case OP_WAIT_BOX:
      if (n < 3 || n > 4 || !parse_text(w[1], &s->title, err) || !parse_text(w[2], &s->body, err))
        break;
      optional_at = 3;
      break;
    case OP_COPY_FILES:
    case OP_DELETE_FILE: {
      size_t words = s->op == OP_COPY_FILES ? 3 : 2;
      if (n != words || !w[1].quoted || (words == 3 && !w[2].quoted)) {
        *err =
            "wrong words for " + utf8(w[0].text) + " (paths in double quotes, see kxrobot --help)";
        return false;
      }
      s->file = w[1].text;
      if (words == 3) s->program = w[2].text;
      return true;
    }
  }
  if (!err->empty()) return false;
  if (optional_at && n == optional_at) return true;
  if (optional_at && n == optional_at + 1) return parse_seconds(w[optional_at], &s->ms, err);
  *err = "wrong words for " + utf8(w[0].text) + " (see kxrobot --help)";
  return false;
}

// ---------------------------------------------------------------- the program under test

struct Robot {
  DWORD default_ms = 20000;
  std::wstring script_dir;
  HANDLE process = nullptr;
  DWORD pid = 0;
  bool running = false;
  DWORD exit_code = 0;
  std::vector<HWND> known;  // windows named by window commands
  HWND current = nullptr;
  std::string what;  // the failure
  std::vector<std::string> details;
};

Robot R;

bool fail(const std::string &what) {
  if (R.what.empty()) R.what = what;
  return false;
}

void detail(const std::string &line) { R.details.push_back("  " + line); }

DWORD wait_of(const Step &s) { return s.ms ? s.ms : R.default_ms; }

// Notes whether the program has ended; true when it has.
bool ended() {
  if (R.running && WaitForSingleObject(R.process, 0) == WAIT_OBJECT_0) {
    R.running = false;
    GetExitCodeProcess(R.process, &R.exit_code);
  }
  return !R.running;
}

bool fail_ended(const std::string &while_doing) {
  return fail("the program ended with exit code " + number(R.exit_code) + while_doing);
}

std::wstring resolve(const std::wstring &path, bool from_script) {
  std::wstring p = path;
  if (!p.empty() && p[0] == L'/') p = L"Z:" + p;
  for (wchar_t &c : p)
    if (c == L'/') c = L'\\';
  bool absolute = (p.size() >= 2 && p[1] == L':') || (!p.empty() && p[0] == L'\\');
  if (!absolute && from_script) p = R.script_dir + L"\\" + p;
  return p;
}

// One argument for the program's command line, quoted so that the program's parser gives it
// back unchanged.
std::wstring quote_arg(const std::wstring &a) {
  if (!a.empty() && a.find_first_of(L" \t\"") == std::wstring::npos) return a;
  std::wstring q = L"\"";
  size_t slashes = 0;
  for (wchar_t c : a) {
    if (c == L'\\') {
      slashes++;
      continue;
    }
    q.append(c == L'"' ? slashes * 2 + 1 : slashes, L'\\');
    slashes = 0;
    q += c;
  }
  q.append(slashes * 2, L'\\');
  return q + L"\"";
}

BOOL CALLBACK collect_top(HWND w, LPARAM param) {
  DWORD pid = 0;
  GetWindowThreadProcessId(w, &pid);
  if (pid == R.pid) ((std::vector<HWND> *)param)->push_back(w);
  return TRUE;
}

BOOL CALLBACK collect_child(HWND w, LPARAM param) {
  ((std::vector<HWND> *)param)->push_back(w);
  return TRUE;
}

std::wstring class_of(HWND w) {
  wchar_t cls[256];
  int n = GetClassNameW(w, cls, 256);
  return std::wstring(cls, n > 0 ? (size_t)n : 0);
}

// The program's top-level windows that a user can see.
std::vector<HWND> visible_windows() {
  std::vector<HWND> all, seen;
  if (!R.pid) return seen;
  EnumWindows(collect_top, (LPARAM)&all);
  for (HWND w : all) {
    RECT r;
    if (!IsWindowVisible(w) || !GetWindowRect(w, &r) || r.right <= r.left || r.bottom <= r.top)
      continue;
    if (lstrcmpiW(class_of(w).c_str(), L"tooltips_class32") == 0) continue;
    seen.push_back(w);
  }
  return seen;
}

bool is_known(HWND w) {
  for (HWND k : R.known)
    if (k == w) return true;
  return false;
}

// A window's text by WM_GETTEXT (GetWindowText cannot read another process's controls).
bool read_text(HWND w, std::wstring *text, DWORD ms) {
  DWORD_PTR len = 0, got = 0;
  text->clear();
  if (!SendMessageTimeoutW(w, WM_GETTEXTLENGTH, 0, 0, SMTO_NORMAL, ms, &len)) return false;
  std::vector<wchar_t> buf(len + 2, L'\0');
  if (!SendMessageTimeoutW(w, WM_GETTEXT, len + 1, (LPARAM)buf.data(), SMTO_NORMAL, ms, &got))
    return false;
  text->assign(buf.data());
  return true;
}

// What a box shows: its class, title, body and push buttons.
struct Look {
  std::wstring cls, title, body;
  std::vector<std::wstring> buttons;
  std::vector<HWND> button_windows;
};

Look look_at(HWND w) {
  Look look;
  look.cls = class_of(w);
  if (!read_text(w, &look.title, 2000)) look.title = L"<no answer>";
  std::vector<HWND> children;
  EnumChildWindows(w, collect_child, (LPARAM)&children);
  for (HWND c : children) {
    if (!IsWindowVisible(c)) continue;
    LONG style = GetWindowLongW(c, GWL_STYLE);
    std::wstring cls = class_of(c), text;
    if (lstrcmpiW(cls.c_str(), L"Static") == 0) {
      LONG type = style & SS_TYPEMASK;
      if (type != SS_LEFT && type != SS_CENTER && type != SS_RIGHT && type != SS_SIMPLE &&
          type != SS_LEFTNOWORDWRAP)
        continue;
      if (!read_text(c, &text, 2000) || text.empty()) continue;
      if (!look.body.empty()) look.body += L'\n';
      look.body += text;
    } else if (lstrcmpiW(cls.c_str(), L"Button") == 0) {
      LONG type = style & BS_TYPEMASK;
      if (type != BS_PUSHBUTTON && type != BS_DEFPUSHBUTTON) continue;
      read_text(c, &text, 2000);
      look.buttons.push_back(text);
      look.button_windows.push_back(c);
    }
  }
  return look;
}

std::string describe(HWND w) {
  Look look = look_at(w);
  std::string d = "class " + shown(look.cls) + ", title " + shown(look.title) + ", body " +
                  shown(look.body) + ", buttons";
  for (const std::wstring &b : look.buttons) d += " " + shown(b);
  if (look.buttons.empty()) d += " none";
  return d;
}

bool stray(HWND w) {
  detail("unexpected window: " + describe(w));
  return fail("a window appeared that the script did not expect");
}

// Fails on a visible window of the program that is neither expected nor the allowed one.
bool no_stray_window(HWND allowed = nullptr) {
  for (HWND w : visible_windows())
    if (w != allowed && !is_known(w)) return stray(w);
  return true;
}

// Waits, watching for unexpected windows.
bool pause_watching(DWORD ms, HWND allowed = nullptr) {
  DWORD start = GetTickCount();
  for (;;) {
    if (!no_stray_window(allowed)) return false;
    DWORD spent = GetTickCount() - start;
    if (spent >= ms) return true;
    Sleep(ms - spent < kPoll ? ms - spent : kPoll);
  }
}

// Waits until the program has taken what was posted to it: sent messages are taken before
// posted ones, so one answer only shows that the program looked at its queue; after a few
// rounds a posted click has been dispatched (its handler has returned or is pumping messages)
// and a dialog that shows itself when its queue is first empty is visible.
bool settle() {
  if (!R.current || ended()) return true;
  for (int round = 0; round < 4; round++) {
    DWORD_PTR r = 0;
    if (SendMessageTimeoutW(R.current, WM_NULL, 0, 0, SMTO_NORMAL, R.default_ms, &r)) continue;
    if (!IsWindow(R.current) || ended()) return true;
    return fail("the program took no messages for " + seconds_text(R.default_ms));
  }
  return true;
}

bool need_program() {
  if (!R.process) return fail("no program was started");
  if (ended()) return fail_ended("");
  return true;
}

bool need_window() {
  if (!need_program()) return false;
  if (!R.current) return fail("there is no current window (a window command must come first)");
  if (!IsWindow(R.current)) return fail("the current window is gone");
  return true;
}

struct ItemSearch {
  int id;
  HWND found;
};

BOOL CALLBACK find_item(HWND w, LPARAM param) {
  ItemSearch *search = (ItemSearch *)param;
  if (GetDlgCtrlID(w) != search->id) return TRUE;
  search->found = w;
  return FALSE;
}

bool item_window(int id, HWND *item) {
  if (!need_window()) return false;
  ItemSearch search = {id, nullptr};
  EnumChildWindows(R.current, find_item, (LPARAM)&search);
  if (!search.found) return fail("the current window has no item " + number((unsigned long)id));
  *item = search.found;
  return true;
}

// An item that a user could work with now.
bool usable(int id, HWND item) {
  std::string name = "item " + number((unsigned long)id);
  if (!IsWindowVisible(item)) return fail(name + " is hidden");
  if (!IsWindowEnabled(item)) return fail(name + " is disabled");
  if (!IsWindowEnabled(R.current)) return fail("the current window is disabled (is a box up?)");
  return true;
}

HWND focus_window() {
  GUITHREADINFO info;
  memset(&info, 0, sizeof info);
  info.cbSize = sizeof info;
  if (!GetGUIThreadInfo(GetWindowThreadProcessId(R.current, nullptr), &info)) return nullptr;
  return info.hwndFocus;
}

std::string focus_text(HWND focus) {
  if (!focus) return "the focus is on no window";
  if (IsChild(R.current, focus))
    return "the focus is on item " + number((unsigned long)GetDlgCtrlID(focus));
  if (focus == R.current) return "the focus is on the window itself";
  return "the focus is on another window";
}

// ---------------------------------------------------------------- commands

bool do_start(const Step &s) {
  if (R.process && !ended())
    return fail("a program runs already (end it with kill or wait-exit first)");
  if (R.process) CloseHandle(R.process);
  R.process = nullptr;
  R.pid = 0;
  R.known.clear();
  R.current = nullptr;
  std::wstring path = resolve(s.program, true), line = quote_arg(path);
  for (const std::wstring &a : s.args) line += L" " + quote_arg(a);
  std::vector<wchar_t> buf(line.begin(), line.end());
  buf.push_back(L'\0');
  STARTUPINFOW si;
  memset(&si, 0, sizeof si);
  si.cb = sizeof si;
  PROCESS_INFORMATION pi;
  if (!CreateProcessW(path.c_str(), buf.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si,
                      &pi)) {
    detail("program: " + shown(path));
    return fail("the program cannot be started (error " + number(GetLastError()) + ")");
  }
  CloseHandle(pi.hThread);
  R.process = pi.hProcess;
  R.pid = pi.dwProcessId;
  R.running = true;
  return true;
}

bool do_window(const Step &s) {
  if (!need_program()) return false;
  for (HWND w : R.known) {
    std::wstring t;
    if (IsWindow(w) && IsWindowVisible(w) && read_text(w, &t, 2000) && same(t, s.title)) {
      R.current = w;
      return true;
    }
  }
  DWORD start = GetTickCount(), ms = wait_of(s);
  for (;;) {
    if (ended()) return fail_ended(" before its window appeared");
    for (HWND w : visible_windows()) {
      if (is_known(w)) continue;
      std::wstring t;
      if (read_text(w, &t, 2000) && same(t, s.title)) {
        R.known.push_back(w);
        R.current = w;
        return true;
      }
      return stray(w);
    }
    if (GetTickCount() - start >= ms)
      return fail("no window titled " + shown1250(s.title) + " appeared within " +
                  seconds_text(ms));
    Sleep(kPoll);
  }
}

bool do_set(const Step &s) {
  HWND item;
  if (!item_window(s.item, &item) || !usable(s.item, item)) return false;
  std::wstring text = from1250(s.text);
  DWORD_PTR r = 0;
  if (!SendMessageTimeoutW(item, WM_SETTEXT, 0, (LPARAM)text.c_str(), SMTO_NORMAL, R.default_ms,
                           &r))
    return fail("the program took no WM_SETTEXT for " + seconds_text(R.default_ms));
  return settle();
}

// The dialog that holds the item: its nearest dialog-class ancestor, else the current window.
HWND dialog_of(HWND item) {
  for (HWND w = GetParent(item); w && w != R.current; w = GetParent(w))
    if (class_of(w) == L"#32770") return w;
  return R.current;
}

// Posts one focus move to the dialog (WM_NEXTDLGCTL makes the dialog itself call SetFocus, on
// its own thread) and gives the focus the default wait to arrive at want (or, with away, to be
// anywhere but want). Then lets the program take one more message, so that the handlers of the
// move (a field's kill-focus rule) have run before the next command looks.
bool move_focus(HWND dialog, HWND to, HWND want, bool away) {
  PostMessageW(dialog, WM_NEXTDLGCTL, (WPARAM)to, TRUE);
  if (!settle()) return false;
  DWORD start = GetTickCount();
  while (!ended() && ((focus_window() == want) == away) && GetTickCount() - start < R.default_ms) {
    Sleep(kPoll);
    if (!settle()) return false;
  }
  return settle();
}

bool do_focus(const Step &s) {
  HWND item;
  if (!item_window(s.item, &item) || !usable(s.item, item)) return false;
  HWND dialog = dialog_of(item), next = nullptr;
  if (s.op == OP_LEAVE) {
    next = GetNextDlgTabItem(dialog, item, FALSE);
    if (!next || next == item)
      return fail("item " + number((unsigned long)s.item) +
                  " has no other control to pass the focus to");
  }
  // Leaving: the focus first goes to the item, then on to the next control.
  if (!move_focus(dialog, item, item, false)) return false;
  if (ended()) return true;
  HWND focus = focus_window();
  if (focus != item) {
    detail(focus_text(focus));
    return fail("the focus did not go to item " + number((unsigned long)s.item));
  }
  if (!next) return true;
  if (!move_focus(dialog, next, item, true)) return false;
  if (!ended() && focus_window() == item)
    return fail("the focus did not leave item " + number((unsigned long)s.item));
  return true;
}

bool do_click(const Step &s) {
  HWND item;
  if (!item_window(s.item, &item) || !usable(s.item, item)) return false;
  if (lstrcmpiW(class_of(item).c_str(), L"Button") != 0)
    return fail("item " + number((unsigned long)s.item) + " is no button but " +
                shown(class_of(item)));
  // Posted, not sent: the handler may run long (an install) and show boxes meanwhile.
  PostMessageW(item, BM_CLICK, 0, 0);
  return settle();
}

// Looks at the item once: *holds tells whether the check holds, *seen what was there.
bool probe(const Step &s, HWND item, bool *holds, std::string *seen) {
  switch (s.check) {
    case CK_TEXT: {
      std::wstring t;
      if (!read_text(item, &t, R.default_ms))
        return fail("the program did not give the text of item " + number((unsigned long)s.item));
      *holds = same(t, s.text);
      *seen = shown(t);
      return true;
    }
    case CK_ENABLED:
    case CK_DISABLED: {
      bool enabled = IsWindowEnabled(item) != FALSE;
      *holds = enabled == (s.check == CK_ENABLED);
      *seen = enabled ? "enabled" : "disabled";
      return true;
    }
    case CK_CHECKED:
    case CK_UNCHECKED: {
      DWORD_PTR state = 0;
      if (!SendMessageTimeoutW(item, BM_GETCHECK, 0, 0, SMTO_NORMAL, R.default_ms, &state))
        return fail("the program did not give the check state of item " +
                    number((unsigned long)s.item));
      *holds = (state == BST_CHECKED) == (s.check == CK_CHECKED) && state != BST_INDETERMINATE;
      *seen = state == BST_CHECKED         ? "checked"
              : state == BST_INDETERMINATE ? "indeterminate"
                                           : "unchecked";
      return true;
    }
    case CK_FOCUSED: {
      HWND focus = focus_window();
      *holds = focus == item;
      *seen = focus_text(focus);
      return true;
    }
  }
  return fail("unknown check");
}

std::string expected_of(const Step &s) {
  static const char *const kNames[] = {"text",    "enabled",   "disabled",
                                       "checked", "unchecked", "focused"};
  return s.check == CK_TEXT ? shown1250(s.text) : kNames[s.check];
}

bool do_expect(const Step &s) {
  HWND item;
  if (!item_window(s.item, &item)) return false;
  DWORD start = GetTickCount(), ms = wait_of(s);
  for (;;) {
    bool holds = false;
    std::string seen;
    if (!probe(s, item, &holds, &seen)) return false;
    if (holds) return true;
    if (s.op == OP_EXPECT || GetTickCount() - start >= ms) {
      detail("expected: " + expected_of(s));
      detail("seen:     " + seen);
      std::string what = "item " + number((unsigned long)s.item) +
                         (s.check == CK_TEXT ? " has another text" : " is not " + expected_of(s));
      return fail(s.op == OP_WAIT ? what + " after " + seconds_text(ms) : what);
    }
    Sleep(kPoll);
    if (!no_stray_window()) return false;
    if (ended()) return fail_ended(" while the robot waited");
    if (!IsWindow(item)) return fail("item " + number((unsigned long)s.item) + " is gone");
  }
}

bool do_box(const Step &s) {
  if (!need_program()) return false;
  DWORD start = GetTickCount(), ms = wait_of(s), mismatch_since = 0;
  HWND box = nullptr;
  std::string wanted = "box " + shown1250(s.title) + " " + shown1250(s.body);
  while (!box) {
    if (ended()) return fail_ended(" while the robot waited for a box");
    for (HWND w : visible_windows()) {
      if (is_known(w)) continue;
      Look look = look_at(w);
      if (!same(look.title, s.title)) {
        detail("waiting for: " + wanted);
        return stray(w);
      }
      if (same(look.body, s.body)) {
        box = w;
        break;
      }
      // The title fits; the body may still be being filled in.
      if (!mismatch_since) mismatch_since = GetTickCount();
      if (GetTickCount() - mismatch_since >= kBodySettle || GetTickCount() - start >= ms) {
        detail("expected: " + shown1250(s.body));
        detail("seen:     " + shown(look.body));
        detail("the box: " + describe(w));
        return fail("the box titled " + shown1250(s.title) + " has another body");
      }
    }
    if (box) break;
    if (GetTickCount() - start >= ms)
      return fail("no " + wanted + " appeared within " + seconds_text(ms));
    Sleep(kPoll);
  }
  if (s.op == OP_WAIT_BOX) return true;  // left open for the next box command
  Look look = look_at(box);
  HWND button = nullptr;
  for (size_t i = 0; i < look.buttons.size(); i++)
    if (same(look.buttons[i], s.button)) button = look.button_windows[i];
  if (!button) {
    detail("the box: " + describe(box));
    return fail("the box has no button " + shown1250(s.button));
  }
  if (!IsWindowEnabled(button)) return fail("the button " + shown1250(s.button) + " is disabled");
  PostMessageW(button, BM_CLICK, 0, 0);
  DWORD pressed = GetTickCount();
  while (IsWindow(box) && IsWindowVisible(box)) {
    if (GetTickCount() - pressed >= ms)
      return fail("the box did not close within " + seconds_text(ms) + " after " +
                  shown1250(s.button));
    Sleep(kPoll);
  }
  return settle();
}

bool do_wait_exit(const Step &s) {
  if (!R.process) return fail("no program was started");
  DWORD start = GetTickCount(), ms = wait_of(s);
  while (!ended()) {
    if (!no_stray_window()) return false;
    if (GetTickCount() - start >= ms)
      return fail("the program did not end within " + seconds_text(ms));
    WaitForSingleObject(R.process, kPoll);
  }
  R.current = nullptr;
  if (!s.any_code && R.exit_code != s.code) {
    detail("expected: exit code " + number(s.code));
    detail("seen:     exit code " + number(R.exit_code));
    return fail("the program ended with another exit code");
  }
  return true;
}

void put16(std::string *b, unsigned v) {
  b->push_back((char)(v & 0xFF));
  b->push_back((char)((v >> 8) & 0xFF));
}

void put32(std::string *b, unsigned long v) {
  put16(b, (unsigned)(v & 0xFFFF));
  put16(b, (unsigned)((v >> 16) & 0xFFFF));
}

bool snap_window(const Step &s);

bool do_snap(const Step &s) {
  if (!need_window()) return false;
  // The copy is taken from the screen: the window goes on top of other programs' windows for
  // it (other tests may run beside this one) and back afterwards.
  const UINT keep = SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE;
  bool topmost = (GetWindowLongW(R.current, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0;
  if (!topmost) SetWindowPos(R.current, HWND_TOPMOST, 0, 0, 0, 0, keep);
  bool ok = settle();
  if (ok) {
    Sleep(200);  // the window's picture reaches the screen a moment later
    ok = settle() && snap_window(s);
  }
  if (!topmost && IsWindow(R.current)) SetWindowPos(R.current, HWND_NOTOPMOST, 0, 0, 0, 0, keep);
  return ok;
}

bool snap_window(const Step &s) {
  RECT r;
  GetWindowRect(R.current, &r);
  int w = r.right - r.left, h = r.bottom - r.top;
  if (w <= 0 || h <= 0) return fail("the current window has no size");
  HDC screen = GetDC(nullptr), mem = CreateCompatibleDC(screen);
  HBITMAP bmp = CreateCompatibleBitmap(screen, w, h);
  HGDIOBJ old = SelectObject(mem, bmp);
  BOOL copied = BitBlt(mem, 0, 0, w, h, screen, r.left, r.top, SRCCOPY);
  SelectObject(mem, old);
  size_t stride = ((size_t)w * 3 + 3) & ~(size_t)3;
  std::string pixels(stride * (size_t)h, '\0');
  BITMAPINFO bi;
  memset(&bi, 0, sizeof bi);
  bi.bmiHeader.biSize = sizeof bi.bmiHeader;
  bi.bmiHeader.biWidth = w;
  bi.bmiHeader.biHeight = h;  // bottom-up, as the file stores it
  bi.bmiHeader.biPlanes = 1;
  bi.bmiHeader.biBitCount = 24;
  bi.bmiHeader.biCompression = BI_RGB;
  int rows = GetDIBits(mem, bmp, 0, (UINT)h, &pixels[0], &bi, DIB_RGB_COLORS);
  DeleteObject(bmp);
  DeleteDC(mem);
  ReleaseDC(nullptr, screen);
  if (!copied || rows != h) return fail("the screen could not be copied");
  bool one_colour = true;
  for (int y = 0; y < h && one_colour; y++)
    for (int x = 0; x < w * 3; x++)
      if (pixels[(size_t)y * stride + (size_t)x] != pixels[(size_t)(x % 3)]) {
        one_colour = false;
        break;
      }
  if (one_colour) return fail("the snapshot is all one colour (is the window on the screen?)");
  std::string file;
  file += "BM";
  put32(&file, 54 + (unsigned long)pixels.size());
  put32(&file, 0);
  put32(&file, 54);
  put32(&file, 40);
  put32(&file, (unsigned long)w);
  put32(&file, (unsigned long)h);
  put16(&file, 1);
  put16(&file, 24);
  put32(&file, 0);
  put32(&file, (unsigned long)pixels.size());
  put32(&file, 2835);  // 72 dpi
  put32(&file, 2835);
  put32(&file, 0);
  put32(&file, 0);
  file += pixels;
  std::wstring path = resolve(s.file, false);
  FILE *f = _wfopen(path.c_str(), L"wb");
  bool written = f && fwrite(file.data(), 1, file.size(), f) == file.size();
  if (f && fclose(f) != 0) written = false;
  if (!written) return fail("the snapshot cannot be written to " + shown(path));
  return true;
}

// Ends the program if it still runs; false when it would not end.
bool end_program() {
  if (!R.process || ended()) return true;
  TerminateProcess(R.process, 1);
  bool gone = WaitForSingleObject(R.process, 5000) == WAIT_OBJECT_0;
  ended();
  R.current = nullptr;
  return gone;
}

// copy-files: every plain file of a directory into another one.
bool do_copy_files(const Step &s) {
  std::wstring from = resolve(s.file, false), to = resolve(s.program, false);
  while (!from.empty() && from.back() == L'\\') from.pop_back();
  while (!to.empty() && to.back() == L'\\') to.pop_back();
  WIN32_FIND_DATAW found;
  HANDLE find = FindFirstFileW((from + L"\\*").c_str(), &found);
  if (find == INVALID_HANDLE_VALUE) return fail("the directory " + shown(from) + " cannot be read");
  unsigned long copied = 0;
  bool ok = true;
  do {
    if (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) continue;
    std::wstring a = from + L"\\" + found.cFileName, b = to + L"\\" + found.cFileName;
    if (!CopyFileW(a.c_str(), b.c_str(), FALSE)) {
      detail("error " + number(GetLastError()) + " copying " + shown(a) + " to " + shown(b));
      ok = false;
      break;
    }
    copied++;
  } while (FindNextFileW(find, &found));
  FindClose(find);
  if (!ok) return fail("a file could not be copied");
  out("  " + number(copied) + " files copied");
  return true;
}

// delete-file: every file that the pattern matches.
bool do_delete_file(const Step &s) {
  std::wstring pattern = resolve(s.file, false), dir = pattern;
  size_t slash = dir.find_last_of(L'\\');
  dir = slash == std::wstring::npos ? std::wstring() : dir.substr(0, slash + 1);
  WIN32_FIND_DATAW found;
  HANDLE find = FindFirstFileW(pattern.c_str(), &found);
  if (find == INVALID_HANDLE_VALUE) {
    out("  no file matches");
    return true;
  }
  unsigned long deleted = 0;
  bool ok = true;
  do {
    if (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) continue;
    std::wstring path = dir + found.cFileName;
    if (!DeleteFileW(path.c_str())) {
      detail("error " + number(GetLastError()) + " deleting " + shown(path));
      ok = false;
      break;
    }
    deleted++;
  } while (FindNextFileW(find, &found));
  FindClose(find);
  if (!ok) return fail("a file could not be deleted");
  out("  " + number(deleted) + " files deleted");
  return true;
}

// The stopwatch of mark and elapsed.
LARGE_INTEGER stopwatch_start;

bool run_step(const Step &s) {
  // What the last command brought up is judged here: only box (and window) may find a new
  // window; any other command fails on it before it acts. The file commands leave the windows
  // alone.
  bool looks = s.op != OP_BOX && s.op != OP_WINDOW && s.op != OP_WAIT_BOX &&
               s.op != OP_COPY_FILES && s.op != OP_DELETE_FILE;
  if (looks && R.process && !ended() && !no_stray_window()) return false;
  switch (s.op) {
    case OP_START: return do_start(s);
    case OP_WINDOW: return do_window(s);
    case OP_SET: return do_set(s);
    case OP_FOCUS:
    case OP_LEAVE: return do_focus(s);
    case OP_CLICK: return do_click(s);
    case OP_EXPECT:
    case OP_WAIT: return do_expect(s);
    case OP_BOX:
    case OP_WAIT_BOX: return do_box(s);
    case OP_COPY_FILES: return do_copy_files(s);
    case OP_DELETE_FILE: return do_delete_file(s);
    case OP_WAIT_EXIT: return do_wait_exit(s);
    case OP_SLEEP: return pause_watching(s.ms);
    case OP_SNAP: return do_snap(s);
    case OP_KILL:
      if (!R.process) return fail("no program was started");
      return end_program() || fail("the program did not end");
    case OP_TIMEOUT: R.default_ms = s.ms; return true;
    case OP_MARK: QueryPerformanceCounter(&stopwatch_start); return true;
    case OP_ELAPSED: {
      LARGE_INTEGER now, freq;
      QueryPerformanceCounter(&now);
      QueryPerformanceFrequency(&freq);
      double ms =
          (double)(now.QuadPart - stopwatch_start.QuadPart) * 1000.0 / (double)freq.QuadPart;
      char line[64];
      snprintf(line, sizeof line, " %.0f ms", ms);
      out("robot: elapsed " + utf8(from1250(s.text)) + line);
      return true;
    }
  }
  return fail("unknown command");
}

// ---------------------------------------------------------------- main

bool read_script(const std::wstring &path, std::vector<std::string> *lines) {
  FILE *f = _wfopen(path.c_str(), L"rb");
  if (!f) return false;
  std::string all;
  char buf[4096];
  size_t n;
  while ((n = fread(buf, 1, sizeof buf, f)) > 0) all.append(buf, n);
  fclose(f);
  if (all.compare(0, 3, "\xEF\xBB\xBF") == 0) all.erase(0, 3);
  size_t at = 0;
  while (at <= all.size()) {
    size_t nl = all.find('\n', at);
    if (nl == std::string::npos) nl = all.size();
    std::string line = all.substr(at, nl - at);
    while (!line.empty() && (line.back() == '\r' || line.back() == ' ' || line.back() == '\t'))
      line.pop_back();
    size_t lead = line.find_first_not_of(" \t");
    lines->push_back(lead == std::string::npos ? std::string() : line.substr(lead));
    at = nl + 1;
  }
  return true;
}

int usage(const std::string &why) {
  out("kxrobot: " + why + " (kxrobot --help tells how to use it)");
  return 2;
}

}  // namespace

int main() {
  _setmode(_fileno(stdout), _O_BINARY);
  QueryPerformanceCounter(&stopwatch_start);
  int argc = 0;
  wchar_t **argv = CommandLineToArgvW(GetCommandLineW(), &argc);
  if (!argv) return usage("no command line");
  std::vector<std::string> expect_failure;
  std::vector<Var> vars;
  std::wstring script;
  for (int i = 1; i < argc; i++) {
    std::wstring a = argv[i];
    if (a == L"--help" || a == L"-h") {
      fwrite(kHelp, 1, sizeof kHelp - 1, stdout);
      return 0;
    }
    if (a == L"--timeout" || a == L"--expect-failure") {
      if (i + 1 >= argc) return usage(utf8(a) + " needs a value");
      std::wstring v = argv[++i];
      if (a == L"--expect-failure") {
        expect_failure.push_back(utf8(v));
        continue;
      }
      std::string err;
      if (!parse_seconds(Word{v, false}, &R.default_ms, &err)) return usage(err);
    } else if (script.empty()) {
      script = a;
    } else {
      size_t eq = a.find(L'=');
      if (eq == std::wstring::npos || eq == 0) return usage("NAME=VALUE expected, not " + utf8(a));
      vars.push_back(Var{utf8(a.substr(0, eq)), utf8(a.substr(eq + 1))});
    }
  }
  if (script.empty()) return usage("no script given");
  std::wstring path = resolve(script, false);
  wchar_t full[MAX_PATH * 4];
  DWORD len = GetFullPathNameW(path.c_str(), MAX_PATH * 4, full, nullptr);
  if (len == 0 || len >= MAX_PATH * 4) return usage("the script path is too long");
  R.script_dir = full;
  R.script_dir.erase(R.script_dir.find_last_of(L'\\'));
  std::vector<std::string> lines;
  if (!read_script(full, &lines)) return usage("cannot read the script " + utf8(full));

  // The whole script is read before anything runs: a mistake in it starts no program.
  std::vector<Step> steps;
  const Step *failed_step = nullptr;
  Step bad;
  int code = 0;
  for (size_t i = 0; i < lines.size() && !code; i++) {
    std::vector<Word> words;
    std::string err;
    Step s;
    s.line = (int)i + 1;
    s.source = lines[i];
    if (split(lines[i], vars, &words, &err) && (words.empty() || parse_step(words, &s, &err))) {
      if (!words.empty()) steps.push_back(s);
      continue;
    }
    bad = s;
    failed_step = &bad;
    R.what = "syntax: " + err;
    code = 2;
  }

  int executed = 0;
  for (size_t i = 0; i < steps.size() && !code; i++) {
    out("line " + number((unsigned long)steps[i].line) + ": " + steps[i].source);
    executed++;
    if (!run_step(steps[i])) {
      failed_step = &steps[i];
      code = 1;
    }
  }
  if (!code && R.process && !ended() && !(settle() && pause_watching(kQuietEnd))) code = 1;
  std::string report;
  for (const std::string &d : R.details) {
    out(d);
    report += d + "\n";
  }
  if (R.process && !ended()) {
    if (end_program()) {
      out("robot: the program was ended by the robot");
    } else {
      out("robot: the program did not end after TerminateProcess");
      fail("the program could not be ended");
      if (!code) code = 1;
    }
  }
  if (code) {
    std::string where = failed_step ? "line " + number((unsigned long)failed_step->line) + ": " +
                                          failed_step->source
                                    : "the end of the script";
    std::string last = "robot: FAILED at " + where + ": " + R.what;
    out(last);
    report += last + "\n";
  } else {
    out("robot: " + number((unsigned long)executed) + " commands, passed");
  }
  if (R.process) CloseHandle(R.process);
  if (expect_failure.empty()) return code;
  if (!code) {
    out("robot: the script passed, but a failure was expected");
    return 1;
  }
  for (const std::string &t : expect_failure)
    if (report.find(t) == std::string::npos) {
      out("robot: the failure report lacks " + t);
      return 1;
    }
  out("robot: the script failed as expected");
  return 0;
}
