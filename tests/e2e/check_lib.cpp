// check_lib.cpp - reading back what an install left (see check_lib.h).
#include "tests/e2e/check_lib.h"

#include <gtest/gtest.h>
#include <objbase.h>
#include <shlobj.h>
#include <shobjidl.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

namespace e2e {

std::string env(const char *name) {
  char buf[4096];
  DWORD n = GetEnvironmentVariableA(name, buf, sizeof buf);
  return n == 0 || n >= sizeof buf ? std::string() : std::string(buf, n);
}

bool env_flag(const char *name) { return env(name) == "1"; }

std::string read_file(const std::string &path, bool *found) {
  std::string data;
  FILE *f = fopen(path.c_str(), "rb");
  if (found) *found = f != nullptr;
  if (!f) return data;
  char buf[65536];
  size_t n;
  while ((n = fread(buf, 1, sizeof buf, f)) > 0) data.append(buf, n);
  fclose(f);
  return data;
}

bool file_exists(const std::string &path) {
  DWORD a = GetFileAttributesA(path.c_str());
  return a != INVALID_FILE_ATTRIBUTES && !(a & FILE_ATTRIBUTE_DIRECTORY);
}

bool dir_exists(const std::string &path) {
  DWORD a = GetFileAttributesA(path.c_str());
  return a != INVALID_FILE_ATTRIBUTES && (a & FILE_ATTRIBUTE_DIRECTORY);
}

std::string upper(std::string s) {
  for (char &c : s)
    if (c >= 'a' && c <= 'z') c = (char)(c - 'a' + 'A');
  return s;
}

std::string strip_slash(std::string s) {
  if (!s.empty() && s.back() == '\\') s.pop_back();
  return s;
}

std::string shown(const std::string &bytes) {
  std::string out = "\"";
  for (unsigned char c : bytes) {
    char b[8];
    if (c == '\\') out += "\\\\";
    else if (c == '"') out += "\\\"";
    else if (c < 0x20 || c == 0x7F) {
      snprintf(b, sizeof b, "\\x%02X", c);
      out += b;
    } else out += (char)c;
  }
  return out + "\"";
}

static uint16_t u16(const std::string &b, size_t at) {
  return (uint16_t)((unsigned char)b[at] | ((unsigned char)b[at + 1] << 8));
}

static uint32_t u32(const std::string &b, size_t at) {
  return (uint32_t)u16(b, at) | ((uint32_t)u16(b, at + 2) << 16);
}

static std::string field(const std::string &b, size_t at, size_t size) {
  std::string s = b.substr(at, size);
  size_t nul = s.find('\0');
  return nul == std::string::npos ? s : s.substr(0, nul);
}

MediumList read_list(const std::string &path) {
  MediumList list;
  bool found = false;
  std::string b = read_file(path, &found);
  if (!found || b.size() < 92) return list;
  list.count = u16(b, 86);
  list.packed = u16(b, 90);
  if (b.size() != 92 + 140 * (size_t)list.count) return list;
  for (size_t i = 0; i < list.count; i++) {
    size_t at = 92 + 140 * i;
    ListRecord r;
    r.name = field(b, at, 17);
    r.stored = field(b, at + 17, 17);
    r.dir = field(b, at + 34, 17);
    r.size = u32(b, at + 52);
    r.disk = u16(b, at + 56);
    r.description = field(b, at + 58, 82);
    list.records.push_back(r);
  }
  list.ok = true;
  return list;
}

std::vector<UninstRecord> read_uninst(const std::string &path, std::string *why) {
  std::vector<UninstRecord> records;
  bool found = false;
  std::string b = read_file(path, &found);
  why->clear();
  if (!found) {
    *why = "missing";
    return records;
  }
  if (b.size() % 1028 != 0) *why = "size " + std::to_string(b.size()) + " is no multiple of 1028";
  for (size_t at = 0; at + 1028 <= b.size(); at += 1028) {
    UninstRecord r;
    r.kind = u16(b, at);
    std::string f = b.substr(at + 2, 1026);
    size_t nul = f.find('\0');
    r.path = nul == std::string::npos ? f : f.substr(0, nul);
    if (nul == std::string::npos || f.find_first_not_of('\0', nul) != std::string::npos)
      *why += "record " + std::to_string(at / 1028) + " is not NUL-padded; ";
    records.push_back(r);
  }
  return records;
}

std::string shown(const std::vector<UninstRecord> &records) {
  std::string s;
  for (size_t i = 0; i < records.size(); i++)
    s += "  " + std::to_string(i) + ": " + std::to_string(records[i].kind) + " " + shown(records[i].path) + "\n";
  return s;
}

std::string installed_path(const std::string &target, const ListRecord &r) {
  return target + (r.dir == "." ? std::string() : r.dir + "\\") + r.name;
}

bool is_alternative(const std::string &name) {
  static const char *const kAlternatives[] = {"KVWPRN.EXE", "KVWPP.EXE", "KVWALL.EXE", "KVWALLR.EXE"};
  for (const char *a : kAlternatives)
    if (upper(name) == a) return true;
  return false;
}

std::string shell_folder(HKEY root, const char *value) {
  HKEY key;
  std::string why;
  if (RegOpenKeyExA(root, "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders", 0,
                    KEY_QUERY_VALUE, &key) != ERROR_SUCCESS)
    return std::string();
  char buf[1024];
  DWORD size = sizeof buf, type = 0;
  LONG rc = RegQueryValueExA(key, value, nullptr, &type, (BYTE *)buf, &size);
  RegCloseKey(key);
  if (rc != ERROR_SUCCESS || size == 0) return std::string();
  return std::string(buf, strnlen(buf, size));
}

static std::string with_slash(std::string s) {
  if (s.empty() || s.back() != '\\') s += '\\';
  return s;
}

std::string start_menu_group() { return with_slash(shell_folder(HKEY_LOCAL_MACHINE, "Common Programs")) + "KORVEX"; }
std::string desktop_folder() { return shell_folder(HKEY_CURRENT_USER, "Desktop"); }
std::string quick_launch_folder() {
  return with_slash(shell_folder(HKEY_CURRENT_USER, "AppData")) + "Microsoft\\Internet Explorer\\Quick Launch";
}

Expect expect_from_env() {
  Expect e;
  e.target = env("KX_E2E_TARGET");
  e.list = read_list(env("KX_E2E_LIST"));
  e.readme = !env("KX_E2E_README").empty();
  e.desktop = env_flag("KX_E2E_DESKTOP");
  e.quick = env_flag("KX_E2E_QUICK");
  std::string skip = env("KX_E2E_SKIP");
  for (size_t at = 0; !skip.empty() && at <= skip.size();) {
    size_t bar = skip.find('|', at);
    if (bar == std::string::npos) bar = skip.size();
    e.skipped.push_back(skip.substr(at, bar - at));
    at = bar + 1;
  }
  return e;
}

bool skipped(const Expect &e, const ListRecord &r) {
  for (const std::string &s : e.skipped)
    if (s == r.name) return true;
  return false;
}

std::vector<UninstRecord> records_before_transfer(const Expect &e) {
  std::vector<UninstRecord> v;
  if (e.readme) v.push_back({0, e.target + "README.TXT"});
  v.push_back({0, e.target + "DISKLIST.LST"});
  for (const ListRecord &r : e.list.records)
    if (r.dir != ".") v.push_back({1, e.target + r.dir});
  v.push_back({1, e.target + "Navrhy"});
  v.push_back({1, strip_slash(e.target)});
  return v;
}

std::vector<UninstRecord> records_of_transfer(const Expect &e, size_t upto) {
  std::vector<UninstRecord> v;
  for (size_t i = 0; i < upto && i < e.list.records.size(); i++) {
    const ListRecord &r = e.list.records[i];
    if (skipped(e, r)) continue;
    if (!e.list.packed) {
      v.push_back({0, installed_path(e.target, r)});
    } else {
      v.push_back({0, e.target + r.stored});
      v.push_back({0, e.target + r.name});
      if (r.dir != ".") v.push_back({0, e.target + r.dir + "\\" + r.name});
    }
    if (is_alternative(r.name))
      v.push_back({0, e.target + (r.dir == "." ? std::string() : r.dir + "\\") + "KORV5.EXE"});
  }
  return v;
}

std::vector<UninstRecord> records_after_transfer(const Expect &e) {
  std::vector<UninstRecord> v;
  v.push_back({0, e.target + "INST.LST"});
  v.push_back({0, e.target + "EXE\\SYSTEM.WCO"});
  std::string group = start_menu_group();
  v.push_back({1, group});
  v.push_back({0, group + "\\KORVEX.LNK"});
  v.push_back({0, group + "\\Konfigurace KORVEX.LNK"});
  v.push_back({0, group + "\\Odinstalace KORVEX.LNK"});
  if (e.desktop) v.push_back({0, desktop_folder() + "\\KORVEX.LNK"});
  if (e.quick) v.push_back({0, quick_launch_folder() + "\\KORVEX.LNK"});
  v.push_back({3, "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\AppPaths\\KORV5.EXE"});
  v.push_back({3, "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\KORVEX"});
  static const char *const kClasses[] = {
      ".d32", ".s32", ".l32",
      "d32_file\\Shell\\Open\\command", "s32_file\\Shell\\Open\\command", "l32_file\\Shell\\Open\\command",
      "d32_file\\Shell\\Open", "s32_file\\Shell\\Open", "l32_file\\Shell\\Open",
      "d32_file\\Shell", "s32_file\\Shell", "l32_file\\Shell",
      "d32_file\\DefaultIcon", "s32_file\\DefaultIcon", "l32_file\\DefaultIcon",
      "d32_file", "s32_file", "l32_file"};
  for (const char *k : kClasses) v.push_back({2, k});
  v.push_back({3, "SOFTWARE\\KORV\\KORVEX\\5"});
  v.push_back({3, "SOFTWARE\\KORV\\KORVEX"});
  v.push_back({3, "SOFTWARE\\KORV"});
  if (e.pfu) v.push_back({0, e.target + "EXE\\PFU_LIST.PFU"});
  return v;
}

std::vector<UninstRecord> records_of_full_install(const Expect &e) {
  std::vector<UninstRecord> v = records_before_transfer(e);
  for (const UninstRecord &r : records_of_transfer(e, e.list.records.size())) v.push_back(r);
  for (const UninstRecord &r : records_after_transfer(e)) v.push_back(r);
  return v;
}

std::vector<std::string> inst_lines(const Expect &e, size_t upto) {
  std::vector<std::string> v;
  for (size_t i = 0; i < upto && i < e.list.records.size(); i++) {
    const ListRecord &r = e.list.records[i];
    if (!skipped(e, r)) v.push_back(installed_path(e.target, r) + " " + r.description);
  }
  return v;
}

std::vector<std::string> read_lines(const std::string &path, bool *crlf) {
  std::vector<std::string> lines;
  std::string b = read_file(path);
  *crlf = true;
  size_t at = 0;
  while (at < b.size()) {
    size_t nl = b.find('\n', at);
    if (nl == std::string::npos) {
      *crlf = false;  // the last line has no line end
      lines.push_back(b.substr(at));
      break;
    }
    std::string line = b.substr(at, nl - at);
    if (line.empty() || line.back() != '\r') *crlf = false;
    else line.pop_back();
    lines.push_back(line);
    at = nl + 1;
  }
  return lines;
}

std::string wco_value(const std::string &text, const std::string &section, const std::string &key,
                      bool *found) {
  *found = false;
  bool inside = false;
  size_t at = 0;
  while (at < text.size()) {
    size_t nl = text.find('\n', at);
    if (nl == std::string::npos) nl = text.size();
    std::string line = text.substr(at, nl - at);
    at = nl + 1;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line == "BEGIN[" + section + "]") inside = true;
    else if (line.compare(0, 4, "END[") == 0) inside = false;
    else if (inside) {
      // "   key" padded with blanks to 42 characters, then "=  " and the value
      std::string head = "   " + key;
      if (head.size() < 42) head.append(42 - head.size(), ' ');
      head += "=  ";
      if (line.compare(0, head.size(), head) == 0) {
        *found = true;
        return line.substr(head.size());
      }
    }
  }
  return std::string();
}

std::wstring wide(const std::string &text_1250) {
  wchar_t buf[2048];
  int n = MultiByteToWideChar(1250, 0, text_1250.c_str(), -1, buf, 2048);
  return n > 0 ? std::wstring(buf) : std::wstring();
}

std::string narrow(const wchar_t *text) {  // 1250; "<not 1250>" for what 1250 cannot hold
  char buf[2048];
  BOOL lost = FALSE;
  int n = WideCharToMultiByte(1250, WC_NO_BEST_FIT_CHARS, text, -1, buf, sizeof buf, nullptr, &lost);
  return n <= 0 || lost ? std::string("<not 1250>") : std::string(buf);
}

// Read through the wide calls: the UTF-16 value as the registry holds it, whatever the ANSI
// code page of the check or of the install was.
std::string reg_text(HKEY root, const std::string &key, const char *value, std::string *why) {
  HKEY k;
  why->clear();
  if (RegOpenKeyExW(root, wide(key).c_str(), 0, KEY_QUERY_VALUE, &k) != ERROR_SUCCESS) {
    *why = "no key " + key;
    return std::string();
  }
  wchar_t buf[2048];
  wmemset(buf, 0x5A, 2048);
  DWORD size = sizeof buf, type = 0;
  LONG rc = RegQueryValueExW(k, value ? wide(value).c_str() : nullptr, nullptr, &type, (BYTE *)buf, &size);
  RegCloseKey(k);
  if (rc != ERROR_SUCCESS) {
    *why = std::string("no value ") + (value ? value : "(default)") + " in " + key;
    return std::string();
  }
  size_t units = wcsnlen(buf, size / 2);
  if (type != REG_SZ) *why = "type " + std::to_string(type) + " instead of REG_SZ; ";
  if (size != 2 * (units + 1)) *why += "length " + std::to_string(size) + " instead of " + std::to_string(2 * (units + 1));
  buf[units < 2048 ? units : 2047] = 0;
  return narrow(buf);
}

bool reg_key_exists(HKEY root, const std::string &key) {
  HKEY k;
  if (RegOpenKeyExA(root, key.c_str(), 0, KEY_QUERY_VALUE, &k) != ERROR_SUCCESS) return false;
  RegCloseKey(k);
  return true;
}

Link read_link(const std::string &file) {
  Link link;
  IShellLinkW *shell = nullptr;
  if (FAILED(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW, (void **)&shell)))
    return link;
  IPersistFile *persist = nullptr;
  if (SUCCEEDED(shell->QueryInterface(IID_IPersistFile, (void **)&persist))) {
    if (SUCCEEDED(persist->Load(wide(file).c_str(), STGM_READ))) {
      wchar_t buf[1024];
      link.loaded = true;
      buf[0] = 0;
      if (SUCCEEDED(shell->GetPath(buf, 1024, nullptr, SLGP_RAWPATH))) link.path = narrow(buf);
      // The target as the shell resolves it: the item list. (Wine keeps the path of the link's
      // location block only in the ANSI code page, so GetPath loses what 1252 lacks.)
      LPITEMIDLIST items = nullptr;
      if (SUCCEEDED(shell->GetIDList(&items)) && items && SHGetPathFromIDListW(items, buf))
        link.path = narrow(buf);
      CoTaskMemFree(items);
      buf[0] = 0;
      if (SUCCEEDED(shell->GetDescription(buf, 1024))) link.description = narrow(buf);
      buf[0] = 0;
      if (SUCCEEDED(shell->GetWorkingDirectory(buf, 1024))) link.workdir = narrow(buf);
    }
    persist->Release();
  }
  shell->Release();
  return link;
}

static void walk(const std::string &dir, const std::string &rel, std::vector<std::string> *out) {
  WIN32_FIND_DATAA f;
  HANDLE h = FindFirstFileA((dir + rel + "*").c_str(), &f);
  if (h == INVALID_HANDLE_VALUE) return;
  do {
    std::string name = f.cFileName;
    if (name == "." || name == "..") continue;
    if (f.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
      out->push_back(rel + name + "\\");
      walk(dir, rel + name + "\\", out);
    } else {
      out->push_back(rel + name);
    }
  } while (FindNextFileA(h, &f));
  FindClose(h);
}

std::vector<std::string> tree(const std::string &dir) {
  std::vector<std::string> out;
  walk(dir, std::string(), &out);
  return out;
}

std::string payload_of(const ListRecord &r) {
  return env("KX_E2E_PAYLOAD") + (r.dir == "." ? std::string() : r.dir + "\\") + r.name;
}

void expect_records(const std::vector<UninstRecord> &seen, const std::vector<UninstRecord> &want) {
  size_t i = 0;
  while (i < seen.size() && i < want.size() && seen[i] == want[i]) i++;
  if (i == seen.size() && i == want.size()) return;
  std::vector<UninstRecord> s(seen.begin() + (long)i, seen.end()), w(want.begin() + (long)i, want.end());
  ADD_FAILURE() << "UNINST.LST differs from record " << i << " on (" << seen.size() << " records, "
                << want.size() << " expected)\nexpected from there:\n" << shown(w) << "seen from there:\n" << shown(s);
}

}  // namespace e2e
