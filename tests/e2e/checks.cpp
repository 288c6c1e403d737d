// checks.cpp - the checks of the end-to-end scenarios: what an install left (the install lists,
// the configuration file, the registry, shortcuts, the installed tree) against what is expected,
// built from the medium's list read through the list module; a suite for each kind of outcome.
//
// The driver (tests/e2e/run.sh) runs it after a step with --gtest_filter=SUITE.*:... and the
// setting in the environment, paths in Windows form:
//   KX_E2E_TARGET, KX_E2E_PAYLOAD  the target and the tree the medium was made of, with ""
//   KX_E2E_LIST      the medium's DISKLIST.LST (first disk)
//   KX_E2E_README    the medium's README.TXT, or empty when the medium has none
//   KX_E2E_DESKTOP, KX_E2E_QUICK   1 when that icon box was ticked
//   KX_E2E_SKIP      installed names whose record was skipped (lists are separated by ",")
//   KX_E2E_PFU       0 when the function-list step recorded no PFU_LIST.PFU
//   KX_E2E_SAVED     a file the scenario kept (a list as it was, the plain form of a file, a log)
//   KX_E2E_APPENDED  1: UNINST.LST was there before (SAVED), its records stay in front
//   KX_E2E_LIBROOT, KX_E2E_NAVRHY  the paths of a configuration taken over
//   KX_E2E_STOP      installed name of the record at which the transfer stopped (empty: before)
//   KX_E2E_AHEAD     paths recorded for that record and those the loop still tried after it
//   KX_E2E_INSTLIST  "lines": INST.LST holds the lines of the records before the stop, "any": a
//                    full disk may have kept them out, "none": no INST.LST
//   KX_E2E_FOREIGN   paths the scenario made in the target, not the install
//   KX_E2E_EXISTING  a file of the target that must be as it was
//   KX_E2E_CUT       the file a full disk cut short
//   KX_E2E_RAN, KX_E2E_ARGS  a stand-in program that must have run, and its arguments
//   KX_E2E_DESIGN    the user's design in Navrhy, which stays after the uninstall
// (paths relative to the target but for the first three). Besides the GoogleTest options it
// answers one question of the driver:
//   kx_e2e_check --space DRIVE   prints "CLUSTER FREE_CLUSTERS" of the drive ("D:"), as the
//                                installer's disk-space check will see them
#include "lists/ilst.h"
#include "tests/support/mmbin.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <objbase.h>
#include <shlobj.h>
#include <shobjidl.h>

#include <algorithm>
#include <map>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <string>
#include <vector>

namespace {

// One DISKLIST.LST file record as the installer takes it (read through the list module).
struct Record {
  std::string name, stored, dir, description;
  uint32_t size;
};
struct MediumList {
  bool ok = false;
  bool packed = false;
  std::vector<Record> records;
};

// One UNINST.LST record.
struct UninstRecord {
  uint16_t kind;
  std::string path;
  bool operator==(const UninstRecord &o) const { return kind == o.kind && path == o.path; }
};

// What an install did, to build the expected records from.
struct Expect {
  std::string target;
  MediumList list;
  bool readme = false, desktop = false, quick = false, pfu = true;
  std::vector<std::string> skipped;  // installed names of skipped records
};

// A shortcut loaded back through IShellLinkA.
struct Link {
  bool loaded = false;
  std::string path, description, workdir;
};

std::string env(const char *name) {
  char buf[4096];
  DWORD n = GetEnvironmentVariableA(name, buf, sizeof buf);
  return n == 0 || n >= sizeof buf ? std::string() : std::string(buf, n);
}

std::vector<std::string> env_list(const char *name) {
  std::vector<std::string> v;
  std::string text = env(name);
  for (size_t at = 0, comma; at < text.size(); at = comma + 1) {
    comma = text.find(',', at);
    if (comma == std::string::npos) comma = text.size();
    if (comma > at) v.push_back(text.substr(at, comma - at));
  }
  return v;
}

std::string read_file(const std::string &path, bool *found = nullptr) {
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

// The registry: a REG_SZ value, or a REG_DWORD one as "#N"; *why tells what is wrong (missing,
// type, length). Read through
// the wide calls: the UTF-16 value as the registry holds it, whatever the ANSI code page of the
// check or of the install was.
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
  DWORD number = 0;
  if (type == REG_DWORD && size == 4) return "#" + std::to_string(*(DWORD *)memcpy(&number, buf, 4));
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
      wchar_t path[1024] = L"", description[1024] = L"", workdir[1024] = L"";
      link.loaded = SUCCEEDED(shell->GetPath(path, 1024, nullptr, SLGP_RAWPATH)) &&
                    SUCCEEDED(shell->GetDescription(description, 1024)) &&
                    SUCCEEDED(shell->GetWorkingDirectory(workdir, 1024));
      // The target as the shell resolves it: the item list. (Wine keeps the path of the link's
      // location block only in the ANSI code page, so GetPath loses what 1252 lacks.)
      LPITEMIDLIST items = nullptr;
      if (SUCCEEDED(shell->GetIDList(&items)) && items) SHGetPathFromIDListW(items, path);
      CoTaskMemFree(items);
      link = {link.loaded, narrow(path), narrow(description), narrow(workdir)};
    }
    persist->Release();
  }
  shell->Release();
  return link;
}

// Every file under dir, as paths relative to it; directories end in "\\".
void walk(const std::string &dir, const std::string &rel, std::vector<std::string> *out) {
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

MediumList read_list(const std::string &path) {
  MediumList list;
  std::string b = read_file(path);
  if (b.size() < ILST_HEADER_SIZE) return list;
  ListHeader h;
  ilst_decode_header((const unsigned char *)b.data(), &h);
  if (b.size() != ILST_HEADER_SIZE + ILST_RECORD_SIZE * (size_t)h.count) return list;
  for (size_t i = 0; i < h.count; i++) {
    ListRecord r;
    ilst_decode_record((const unsigned char *)b.data() + ILST_HEADER_SIZE + ILST_RECORD_SIZE * i, &r);
    list.records.push_back({r.name, r.stored, r.directory, r.description, r.size});
  }
  list.packed = h.packed != 0;
  list.ok = true;
  return list;
}

// UNINST.LST's records; a failure when the file is missing or ends in part of a record.
std::vector<UninstRecord> read_uninst(const std::string &path) {
  std::vector<UninstRecord> records;
  bool found = false;
  std::string b = read_file(path, &found);
  EXPECT_TRUE(found) << path;
  EXPECT_EQ(0u, b.size() % ILST_UNINSTALL_SIZE) << path << ": " << b.size() << " bytes, not whole records";
  for (size_t at = 0; at + ILST_UNINSTALL_SIZE <= b.size(); at += ILST_UNINSTALL_SIZE) {
    UninstallRecord r;
    ilst_decode_uninstall((const unsigned char *)b.data() + at, &r);
    records.push_back({r.kind, r.path});
  }
  return records;
}

std::string shown(const std::vector<UninstRecord> &records) {
  std::string s;
  for (size_t i = 0; i < records.size(); i++)
    s += "  " + std::to_string(i) + ": " + std::to_string(records[i].kind) + " " + shown(records[i].path) + "\n";
  return s;
}

// seen equals want record for record; the failure shows both from the first difference on.
void expect_records(const std::vector<UninstRecord> &seen, const std::vector<UninstRecord> &want) {
  size_t i = 0;
  while (i < seen.size() && i < want.size() && seen[i] == want[i]) i++;
  if (i == seen.size() && i == want.size()) return;
  std::vector<UninstRecord> s(seen.begin() + (long)i, seen.end()), w(want.begin() + (long)i, want.end());
  ADD_FAILURE() << "UNINST.LST differs from record " << i << " on (" << seen.size() << " records, "
                << want.size() << " expected)\nexpected from there:\n" << shown(w) << "seen from there:\n" << shown(s);
}

std::string subdir(const Record &r) { return r.dir == "." ? std::string() : r.dir + "\\"; }

// The alternative executables that replace KORV5.EXE in turn.
bool is_alternative(const std::string &name) {
  const std::string n = upper(name);
  return n == "KVWPRN.EXE" || n == "KVWPP.EXE" || n == "KVWALL.EXE" || n == "KVWALLR.EXE";
}

std::string payload_of(const Record &r) { return env("KX_E2E_PAYLOAD") + subdir(r) + r.name; }

std::string shell_folder(HKEY root, const char *value) {
  std::string why, path = reg_text(root, "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders", value, &why);
  return path.empty() || path.back() == '\\' ? path : path + "\\";
}

// The folders the shortcuts go to.
std::string start_menu_group() { return shell_folder(HKEY_LOCAL_MACHINE, "Common Programs") + "KORVEX"; }
std::string desktop_folder() { return strip_slash(shell_folder(HKEY_CURRENT_USER, "Desktop")); }
std::string quick_launch_folder() {
  return shell_folder(HKEY_CURRENT_USER, "AppData") + "Microsoft\\Internet Explorer\\Quick Launch";
}

Expect expect_from_env() {
  Expect e;
  e.target = env("KX_E2E_TARGET");
  e.list = read_list(env("KX_E2E_LIST"));
  EXPECT_TRUE(e.list.ok) << "the medium's list " << env("KX_E2E_LIST");
  EXPECT_FALSE(e.target.empty());
  e.readme = !env("KX_E2E_README").empty();
  e.desktop = env("KX_E2E_DESKTOP") == "1";
  e.quick = env("KX_E2E_QUICK") == "1";
  e.pfu = env("KX_E2E_PFU") != "0";
  e.skipped = env_list("KX_E2E_SKIP");
  return e;
}

bool skipped(const Expect &e, const Record &r) { return std::count(e.skipped.begin(), e.skipped.end(), r.name) > 0; }

size_t index_of(const Expect &e, const std::string &name) {
  size_t i = 0;
  while (i < e.list.records.size() && e.list.records[i].name != name) i++;
  return i;
}

std::vector<UninstRecord> records_before_transfer(const Expect &e) {
  std::vector<UninstRecord> v;
  if (e.readme) v.push_back({0, e.target + "README.TXT"});
  v.push_back({0, e.target + "DISKLIST.LST"});
  for (const Record &r : e.list.records)
    if (r.dir != ".") v.push_back({1, e.target + r.dir});
  v.push_back({1, e.target + "Navrhy"});
  v.push_back({1, strip_slash(e.target)});
  return v;
}

std::vector<UninstRecord> records_of_transfer(const Expect &e, size_t upto) {
  std::vector<UninstRecord> v;
  for (size_t i = 0; i < upto && i < e.list.records.size(); i++) {
    const Record &r = e.list.records[i];
    if (skipped(e, r)) continue;
    if (!e.list.packed) {
      v.push_back({0, e.target + subdir(r) + r.name});
    } else {
      v.push_back({0, e.target + r.stored});
      v.push_back({0, e.target + r.name});
      if (r.dir != ".") v.push_back({0, e.target + subdir(r) + r.name});
    }
    if (is_alternative(r.name)) v.push_back({0, e.target + subdir(r) + "KORV5.EXE"});
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
    const Record &r = e.list.records[i];
    std::string d = r.description;
    std::replace_if(d.begin(), d.end(), [](char c) { return (unsigned char)c < 32; }, ' ');
    if (!skipped(e, r)) v.push_back(e.target + subdir(r) + r.name + " " + d);
  }
  return v;
}

// The lines of a text file; *crlf false when a line (the last one too) does not end in CR LF.
std::vector<std::string> read_lines(const std::string &path, bool *crlf) {
  std::vector<std::string> lines;
  std::string b = read_file(path);
  *crlf = true;
  for (size_t at = 0; at < b.size();) {
    size_t nl = b.find('\n', at);
    std::string line = b.substr(at, nl == std::string::npos ? std::string::npos : nl - at);
    if (nl == std::string::npos || line.empty() || line.back() != '\r') *crlf = false;
    else line.pop_back();
    lines.push_back(line);
    at = nl == std::string::npos ? b.size() : nl + 1;
  }
  return lines;
}

void expect_inst_lines(const std::string &target, const std::vector<std::string> &want) {
  bool crlf = false;
  ASSERT_TRUE(file_exists(target + "INST.LST")) << target << "INST.LST";
  std::vector<std::string> seen = read_lines(target + "INST.LST", &crlf);
  EXPECT_TRUE(crlf) << "INST.LST lines end in CR LF";
  ASSERT_EQ(want.size(), seen.size()) << "INST.LST lines";
  for (size_t i = 0; i < want.size(); i++) EXPECT_EQ(shown(want[i]), shown(seen[i])) << "INST.LST line " << i + 1;
}

void expect_tree(const std::string &target, std::vector<std::string> want) {
  std::vector<std::string> seen;
  for (const std::string &f : tree(target))
    if (f.size() < 4 || upper(f.substr(f.size() - 4)) != ".RAN") seen.push_back(f);
  for (std::vector<std::string> *v : {&want, &seen}) {
    for (std::string &p : *v) p = upper(p);
    std::sort(v->begin(), v->end());
    v->erase(std::unique(v->begin(), v->end()), v->end());
  }
  std::vector<std::string> extra, missing;
  std::set_difference(seen.begin(), seen.end(), want.begin(), want.end(), std::back_inserter(extra));
  std::set_difference(want.begin(), want.end(), seen.begin(), seen.end(), std::back_inserter(missing));
  std::string x, m;
  for (auto &p : extra) x += " " + shown(p);
  for (auto &p : missing) m += " " + shown(p);
  EXPECT_TRUE(extra.empty()) << "in the target but not installed:" << x;
  EXPECT_TRUE(missing.empty()) << "missing in the target:" << m;
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

void expect_wco(const std::string &target, const std::string &lib, const std::string &navrhy) {
  bool found = false, crlf = false;
  std::string text = read_file(target + "EXE\\SYSTEM.WCO", &found);
  ASSERT_TRUE(found) << target << "EXE\\SYSTEM.WCO";
  EXPECT_EQ(0u, text.find("Konfiguracni soubor KORVEX\r\n\r\n")) << shown(text.substr(0, 60));
  std::vector<std::string> lines = read_lines(target + "EXE\\SYSTEM.WCO", &crlf);
  EXPECT_TRUE(crlf) << "SYSTEM.WCO lines end in CR LF";
  std::string open;
  for (size_t i = 1; i < lines.size(); i++) {
    const std::string &l = lines[i];
    EXPECT_TRUE(std::none_of(l.begin(), l.end(), [](char c) { return (unsigned char)c < 32; })) << "line " << i + 1 << ": " << shown(l);
    if (l.empty()) continue;
    if (l.compare(0, 6, "BEGIN[") == 0 && l.back() == ']') {
      EXPECT_EQ("", open) << "line " << i + 1 << ": a section in a section";
      open = l.substr(6, l.size() - 7);
    } else if (l.compare(0, 4, "END[") == 0) {
      EXPECT_EQ("END[" + open + "]", l) << "line " << i + 1;
      open.clear();
    } else {
      EXPECT_TRUE(!open.empty() && l.size() >= 45 && l.compare(0, 3, "   ") == 0 && l[3] != ' ' && l.compare(42, 3, "=  ") == 0)
          << "line " << i + 1 << " is no entry of a section: " << shown(l);
    }
  }
  EXPECT_EQ("", open) << "the last section is not closed";
  const struct {
    const char *section, *key;
    std::string value;
  } kKeys[] = {
      {"CO_common", "system_path", target.substr(2)},
      {"CO_common", "initial_directory", navrhy},
      {"CO_schematic", "schema_default_library_path", lib + "SLIB\\"},
      {"CO_layout", "layout_default_library_path", lib + "LLIB\\"},
      {"CO_edit", "edit_default_library_path", lib + "ELIB\\"},
      {"CO_simulator", "default_model_library_path", lib + "MLIB\\"},
  };
  for (size_t i = 0; i < sizeof kKeys / sizeof kKeys[0]; i++) {
    bool has = false;
    std::string v = wco_value(text, kKeys[i].section, kKeys[i].key, &has);
    EXPECT_TRUE(has) << "row " << i << ": " << kKeys[i].section << " " << kKeys[i].key;
    EXPECT_EQ(shown(kKeys[i].value), shown(v)) << "row " << i << ": " << kKeys[i].key;
  }
}

void expect_no_later_steps(const Expect &e) {
  EXPECT_FALSE(file_exists(e.target + "EXE\\SYSTEM.WCO"));
  EXPECT_FALSE(dir_exists(start_menu_group()));
  EXPECT_FALSE(reg_key_exists(HKEY_LOCAL_MACHINE, "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\AppPaths\\KORV5.EXE"));
  EXPECT_FALSE(reg_key_exists(HKEY_LOCAL_MACHINE, "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\KORVEX"));
  EXPECT_FALSE(reg_key_exists(HKEY_LOCAL_MACHINE, "SOFTWARE\\KORV"));
  EXPECT_FALSE(reg_key_exists(HKEY_CLASSES_ROOT, "d32_file"));
  EXPECT_FALSE(reg_key_exists(HKEY_CLASSES_ROOT, ".d32"));
}


const char kAppPathKey[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\AppPaths\\KORV5.EXE";
const char kUninstallKey[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\KORVEX";
const char kDescription[] = "KORVEX - Návrhový systém pro elektroniku 5.003-016";

std::string program_dir(const Expect &e) { return e.target + "EXE\\"; }

// A path relative to the target that the scenario made (KX_E2E_FOREIGN), or one under it.
bool foreign(const std::string &relative) {
  for (const std::string &f : env_list("KX_E2E_FOREIGN")) {
    std::string d = upper(strip_slash(f)) + "\\", r = upper(relative);
    if (r == d || r + "\\" == d || r.compare(0, d.size(), d) == 0) return true;
  }
  return false;
}

// The files of an install besides those of the list.
std::vector<std::string> install_files(const Expect &e) {
  std::vector<std::string> v = {"INST.LST", "UNINST.LST", "Navrhy\\", "EXE\\", "EXE\\SYSTEM.WCO"};
  if (e.pfu) v.push_back("EXE\\PFU_LIST.PFU");
  if (e.readme) v.push_back("README.TXT");
  return v;
}

}  // namespace

// ---- a complete, successful install ------------------------------------------------------------

// Every file equals its payload; the last alternative executable of a directory is its KORV5.EXE.
TEST(Install, InstalledFilesEqualThePayload) {
  Expect e = expect_from_env();
  std::vector<std::pair<std::string, std::string>> main_of_dir;  // dir, payload file
  for (const Record &r : e.list.records) {
    std::string path = e.target + subdir(r) + r.name;
    if (skipped(e, r) || is_alternative(r.name)) {
      EXPECT_FALSE(file_exists(path)) << path << " is there";
      if (skipped(e, r)) continue;
      main_of_dir.erase(std::remove_if(main_of_dir.begin(), main_of_dir.end(), [&](auto &m) { return m.first == r.dir; }),
                        main_of_dir.end());
      main_of_dir.push_back({r.dir, payload_of(r)});
    } else if (upper(r.name) != "KORV5.EXE") {
      bool found = false;
      std::string got = read_file(path, &found);
      EXPECT_TRUE(found) << shown(path) << " missing";
      EXPECT_TRUE(got == read_file(payload_of(r))) << shown(path) << " differs from " << payload_of(r) << ": " << shown(got.substr(0, 40));
    } else if (std::none_of(main_of_dir.begin(), main_of_dir.end(), [&](auto &m) { return m.first == r.dir; })) {
      main_of_dir.push_back({r.dir, payload_of(r)});
    }
  }
  for (auto &m : main_of_dir) {
    std::string path = e.target + (m.first == "." ? std::string() : m.first + "\\") + "KORV5.EXE";
    EXPECT_TRUE(read_file(path) == read_file(m.second)) << path << " is not " << m.second;
  }
  if (e.readme) { EXPECT_TRUE(read_file(e.target + "README.TXT") == read_file(env("KX_E2E_README"))) << "README.TXT"; }
}

// The target holds the installed files, the lists, SYSTEM.WCO, PFU_LIST.PFU and Navrhy, and
// nothing else: no packed copy, no DISKLIST.LST, no alternative executable.
TEST(Install, TargetHoldsNothingElse) {
  Expect e = expect_from_env();
  std::vector<std::string> want = install_files(e);
  for (const Record &r : e.list.records) {
    if (skipped(e, r)) continue;
    if (r.dir != ".") want.push_back(subdir(r));
    want.push_back(subdir(r) + (is_alternative(r.name) ? std::string("KORV5.EXE") : r.name));
  }
  expect_tree(e.target, want);
}

TEST(Install, InstListLines) {
  Expect e = expect_from_env();
  expect_inst_lines(e.target, inst_lines(e, e.list.records.size()));
}

TEST(Install, UninstListRecordsInOrder) {
  Expect e = expect_from_env();
  std::vector<UninstRecord> seen = read_uninst(e.target + "UNINST.LST");
  if (env("KX_E2E_APPENDED") == "1") {
    std::string old = read_file(env("KX_E2E_SAVED"));
    ASSERT_GE(seen.size(), old.size() / 1028);
    EXPECT_TRUE(read_file(e.target + "UNINST.LST").compare(0, old.size(), old) == 0) << "the old records are not in front";
    seen.erase(seen.begin(), seen.begin() + (long)(old.size() / 1028));
  }
  expect_records(seen, records_of_full_install(e));
}

TEST(Install, SystemWco) {
  Expect e = expect_from_env();
  std::string lib = env("KX_E2E_LIBROOT"), navrhy = env("KX_E2E_NAVRHY");
  expect_wco(e.target, lib.empty() ? e.target : lib, navrhy.empty() ? e.target + "Navrhy" : navrhy);
}

TEST(Install, Shortcuts) {
  Expect e = expect_from_env();
  std::string group = start_menu_group(), prog = program_dir(e), navrhy = e.target + "Navrhy";
  const struct {
    bool made;
    std::string file, path, description, workdir;
  } kLinks[] = {
      {true, group + "\\KORVEX.LNK", prog + "KORV5.EXE", kDescription, navrhy},
      {true, group + "\\Konfigurace KORVEX.LNK", prog + "CONFIG.EXE", "Konfigurace KORVEX", strip_slash(prog)},
      {true, group + "\\Odinstalace KORVEX.LNK", prog + "UNINSTAL.EXE", "Odinstalace KORVEX", strip_slash(e.target)},
      {e.desktop, desktop_folder() + "\\KORVEX.LNK", prog + "KORV5.EXE", kDescription, navrhy},
      {e.quick, quick_launch_folder() + "\\KORVEX.LNK", prog + "KORV5.EXE", kDescription, navrhy},
  };
  CoInitialize(nullptr);
  for (size_t i = 0; i < sizeof kLinks / sizeof kLinks[0]; i++) {
    const auto &k = kLinks[i];
    EXPECT_EQ(k.made, file_exists(k.file)) << "row " << i << ": " << k.file;
    if (!k.made) continue;
    Link l = read_link(k.file);
    EXPECT_TRUE(l.loaded) << "row " << i << ": " << k.file;
    EXPECT_EQ(shown(k.path), shown(l.path)) << "row " << i << ": target";
    EXPECT_EQ(shown(k.description), shown(l.description)) << "row " << i << ": description";
    EXPECT_EQ(shown(k.workdir), shown(l.workdir)) << "row " << i << ": working directory";
  }
  CoUninitialize();
}

TEST(Install, RegistryValues) {
  Expect e = expect_from_env();
  std::string prog = program_dir(e), open = prog + "KORV5.EXE \"%1\"";
  uint64_t bytes = 0;
  for (const Record &r : e.list.records) bytes += r.size;
  const struct {
    HKEY root;
    std::string key;
    const char *value;
    std::string data;
  } kValues[] = {
      {HKEY_LOCAL_MACHINE, kAppPathKey, nullptr, prog + "KORV5.EXE"},
      {HKEY_LOCAL_MACHINE, kAppPathKey, "Path", strip_slash(prog)},
      {HKEY_LOCAL_MACHINE, kUninstallKey, "DisplayName", "KORVEX V5.003-016"},
      {HKEY_LOCAL_MACHINE, kUninstallKey, "UninstallString", prog + "UNINSTAL.EXE"},
      {HKEY_LOCAL_MACHINE, kUninstallKey, "DisplayVersion", "5.003-016"},
      {HKEY_LOCAL_MACHINE, kUninstallKey, "InstallLocation", e.target},
      {HKEY_LOCAL_MACHINE, kUninstallKey, "DisplayIcon", prog + "KORV5.EXE,0"},
      {HKEY_LOCAL_MACHINE, kUninstallKey, "EstimatedSize", "#" + std::to_string((bytes + 1023) / 1024)},
      {HKEY_LOCAL_MACHINE, kUninstallKey, "NoModify", "#1"},
      {HKEY_LOCAL_MACHINE, kUninstallKey, "NoRepair", "#1"},
      {HKEY_LOCAL_MACHINE, kUninstallKey, "QuietUninstallString", "\"" + prog + "UNINSTAL.EXE\" /SILENT"},
      {HKEY_CLASSES_ROOT, ".d32", nullptr, "d32_file"},
      {HKEY_CLASSES_ROOT, ".s32", nullptr, "s32_file"},
      {HKEY_CLASSES_ROOT, ".l32", nullptr, "l32_file"},
      {HKEY_CLASSES_ROOT, "d32_file", nullptr, "Soubor návrhu KORVEX"},
      {HKEY_CLASSES_ROOT, "s32_file", nullptr, "Knihovna značek KORVEX"},
      {HKEY_CLASSES_ROOT, "l32_file", nullptr, "Knihovna patic KORVEX"},
      {HKEY_CLASSES_ROOT, "d32_file\\DefaultIcon", nullptr, prog + "KORV5.EXE,-10"},
      {HKEY_CLASSES_ROOT, "s32_file\\DefaultIcon", nullptr, prog + "KORV5.EXE,-11"},
      {HKEY_CLASSES_ROOT, "l32_file\\DefaultIcon", nullptr, prog + "KORV5.EXE,-12"},
      {HKEY_CLASSES_ROOT, "d32_file\\Shell", nullptr, ""},
      {HKEY_CLASSES_ROOT, "s32_file\\Shell", nullptr, ""},
      {HKEY_CLASSES_ROOT, "l32_file\\Shell", nullptr, ""},
      {HKEY_CLASSES_ROOT, "d32_file\\Shell\\Open", nullptr, "&Otevřít"},
      {HKEY_CLASSES_ROOT, "s32_file\\Shell\\Open", nullptr, "&Otevřít"},
      {HKEY_CLASSES_ROOT, "l32_file\\Shell\\Open", nullptr, "&Otevřít"},
      {HKEY_CLASSES_ROOT, "d32_file\\Shell\\Open\\command", nullptr, open},
      {HKEY_CLASSES_ROOT, "s32_file\\Shell\\Open\\command", nullptr, open},
      {HKEY_CLASSES_ROOT, "l32_file\\Shell\\Open\\command", nullptr, open},
      {HKEY_LOCAL_MACHINE, "SOFTWARE\\KORV", nullptr, ""},
      {HKEY_LOCAL_MACHINE, "SOFTWARE\\KORV\\KORVEX", nullptr, ""},
      {HKEY_LOCAL_MACHINE, "SOFTWARE\\KORV\\KORVEX\\5", "system_wco_path", prog + "SYSTEM.WCO"},
  };
  for (size_t i = 0; i < sizeof kValues / sizeof kValues[0]; i++) {
    const auto &k = kValues[i];
    std::string why, got = reg_text(k.root, k.key, k.value, &why);
    EXPECT_EQ("", why) << "row " << i << ": " << k.key;
    EXPECT_EQ(shown(k.data), shown(got)) << "row " << i << ": " << k.key << " " << (k.value ? k.value : "(default)");
  }
  // The misspelt form is the one written; the usual "App Paths" key is left alone.
  EXPECT_FALSE(reg_key_exists(HKEY_LOCAL_MACHINE, "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\KORV5.EXE"));
}

// PFU_LIST.PFU as the installed main program writes it when run so by hand.
TEST(Install, FunctionList) {
  Expect e = expect_from_env();
  std::string pfu = program_dir(e) + "PFU_LIST.PFU";
  if (!e.pfu) {
    EXPECT_FALSE(file_exists(pfu)) << pfu;
    return;
  }
  std::string got = read_file(pfu);
  ASSERT_FALSE(got.empty()) << pfu;
  char temp[MAX_PATH];
  GetTempPathA(MAX_PATH, temp);
  std::string dir = std::string(temp) + "kx_e2e_pfu", cmd = "\"" + program_dir(e) + "KORV5.EXE\" $f";
  CreateDirectoryA(dir.c_str(), nullptr);
  DeleteFileA((dir + "\\PFU_LIST.PFU").c_str());
  STARTUPINFOA si = {};
  si.cb = sizeof si;
  PROCESS_INFORMATION pi;
  std::vector<char> line(cmd.begin(), cmd.end());
  line.push_back(0);
  ASSERT_TRUE(CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, dir.c_str(), &si, &pi));
  WaitForSingleObject(pi.hProcess, INFINITE);
  DWORD code = 99;
  GetExitCodeProcess(pi.hProcess, &code);
  CloseHandle(pi.hProcess);
  CloseHandle(pi.hThread);
  EXPECT_EQ(0u, code);
  EXPECT_TRUE(got == read_file(dir + "\\PFU_LIST.PFU")) << "PFU_LIST.PFU differs from a run of KORV5.EXE $f";
  DeleteFileA((dir + "\\PFU_LIST.PFU").c_str());  // nothing left for a snapshot taken later
  RemoveDirectoryA(dir.c_str());
}

// ---- an install that stopped ----------------------------------------------------------------

// UNINST.LST: the steps before the transfer, the files before the stop, the records written
// ahead of the files the loop was making when it stopped, and INST.LST; nothing after.
TEST(Stopped, ListsEndAtTheStop) {
  Expect e = expect_from_env();
  std::string stop = env("KX_E2E_STOP"), instlist = env("KX_E2E_INSTLIST");
  size_t at = stop.empty() ? 0 : index_of(e, stop);
  ASSERT_TRUE(stop.empty() || at < e.list.records.size()) << stop << " is not in the list";
  std::vector<UninstRecord> want = records_before_transfer(e);
  for (const UninstRecord &r : records_of_transfer(e, at)) want.push_back(r);
  for (const std::string &p : env_list("KX_E2E_AHEAD")) want.push_back({0, e.target + p});
  if (instlist != "none") want.push_back({0, e.target + "INST.LST"});
  expect_records(read_uninst(e.target + "UNINST.LST"), want);
  EXPECT_EQ(instlist != "none", file_exists(e.target + "INST.LST")) << "INST.LST";
  if (instlist == "lines") expect_inst_lines(e.target, inst_lines(e, at));
}

// Every file and directory in the target, the target with them, has a record, so that the
// uninstaller can take all of it.
TEST(Stopped, EverythingInTheTargetIsRecorded) {
  Expect e = expect_from_env();
  std::vector<UninstRecord> seen = read_uninst(e.target + "UNINST.LST");
  auto recorded = [&](uint16_t kind, const std::string &path) {
    return std::any_of(seen.begin(), seen.end(), [&](const UninstRecord &r) { return r.kind == kind && upper(r.path) == upper(path); });
  };
  EXPECT_TRUE(recorded(1, strip_slash(e.target))) << e.target;
  for (const std::string &f : tree(e.target)) {
    if (upper(f) == "UNINST.LST" || foreign(f)) continue;
    bool directory = f.back() == '\\';
    EXPECT_TRUE(recorded(directory ? 1 : 0, e.target + (directory ? strip_slash(f) : f))) << f << " is not in UNINST.LST\n" << shown(seen);
  }
}

TEST(Stopped, NoLaterSteps) {
  Expect e = expect_from_env();
  expect_no_later_steps(e);
  EXPECT_TRUE(file_exists(e.target + "DISKLIST.LST")) << "the copied list stays after a failure";
  std::string existing = env("KX_E2E_EXISTING");
  if (!existing.empty()) { EXPECT_EQ(shown("stary soubor\r\n"), shown(read_file(e.target + existing))) << existing; }
}

// The file the full disk cut short: what was written stays, a true beginning of the file.
TEST(FaultCut, PartOfTheFileStays) {
  Expect e = expect_from_env();
  size_t at = index_of(e, env("KX_E2E_STOP"));
  ASSERT_LT(at, e.list.records.size());
  std::string path = e.target + env("KX_E2E_CUT"), got = read_file(path), whole = read_file(payload_of(e.list.records[at]));
  EXPECT_GT(got.size(), 0u) << path;
  EXPECT_LT(got.size(), whole.size()) << path;
  EXPECT_TRUE(whole.compare(0, got.size(), got) == 0) << path << " is not the start of " << payload_of(e.list.records[at]);
}

// Stopped by the abort button: UNINST.LST is the start of a full install's list (with the
// INST.LST record when the loop had begun), every file recorded so far is there, every file in
// the target is recorded.
TEST(Abort, FilesSoFarRecorded) {
  Expect e = expect_from_env();
  std::vector<UninstRecord> seen = read_uninst(e.target + "UNINST.LST"), full = records_of_full_install(e);
  size_t before = records_before_transfer(e).size(), n = seen.size();
  bool inst_record = n > before && seen.back() == UninstRecord{0, e.target + "INST.LST"};
  if (inst_record) n--;
  ASSERT_GE(n, before) << shown(seen);
  ASSERT_LE(n, full.size()) << shown(seen);
  std::vector<UninstRecord> head(seen.begin(), seen.begin() + (long)n);
  expect_records(head, std::vector<UninstRecord>(full.begin(), full.begin() + (long)n));
  EXPECT_LT(n, before + records_of_transfer(e, e.list.records.size()).size()) << "the install was not stopped in the transfer loop";
  EXPECT_EQ(inst_record, n > before) << "INST.LST is recorded once the loop has begun";
  for (const UninstRecord &r : head)
    if (r.kind == 0 && r.path != e.target + "DISKLIST.LST" && !e.list.packed) { EXPECT_TRUE(file_exists(r.path)) << r.path; }
  for (const std::string &f : tree(e.target)) {
    if (f.back() == '\\' || f == "UNINST.LST" || f == "DISKLIST.LST" || f == "INST.LST") continue;
    EXPECT_TRUE(std::any_of(head.begin(), head.end(), [&](const UninstRecord &r) { return r.kind == 0 && upper(r.path) == upper(e.target + f); }))
        << f << " is in the target but not recorded";
  }
  expect_no_later_steps(e);
}

// The removal question answered No, or the uninstaller failed: the earlier install is as it
// was (its saved UNINST.LST is KX_E2E_SAVED).
TEST(PreviousKept, EarlierInstallUnchanged) {
  Expect e = expect_from_env();
  EXPECT_TRUE(read_file(e.target + "UNINST.LST") == read_file(env("KX_E2E_SAVED"))) << "UNINST.LST changed";
  EXPECT_TRUE(file_exists(program_dir(e) + "SYSTEM.WCO"));
}

// A stand-in program ran with the arguments wanted (its log: "PATH|ARGS" or "PATH").
TEST(Ran, WithItsArguments) {
  Expect e = expect_from_env();
  std::string program = e.target + env("KX_E2E_RAN"), args = env("KX_E2E_ARGS");
  bool found = false;
  std::string log = read_file(program + ".RAN", &found);
  ASSERT_TRUE(found) << program << " did not run";
  EXPECT_EQ(shown(program + (args.empty() ? "" : "|" + args) + "\r\n"), shown(log));
}

// After the installed uninstaller: nothing that the install recorded is left but the target
// (the running uninstaller leaves its own directory to the restart), the directories the
// scenario made, and the user's design with Navrhy.
TEST(Removed, NothingOfTheInstallRemains) {
  Expect e = expect_from_env();
  std::vector<UninstRecord> records = read_uninst(env("KX_E2E_SAVED"));
  ASSERT_GT(records.size(), 3u);
  std::string design = env("KX_E2E_DESIGN"), navrhy = e.target + "Navrhy";
  for (size_t i = 0; i < records.size(); i++) {
    const UninstRecord &r = records[i];
    bool inside = upper(r.path).compare(0, e.target.size(), upper(e.target)) == 0;
    if (inside && foreign(r.path.substr(e.target.size()))) continue;
    bool kept = r.path == strip_slash(e.target) || (!design.empty() && r.path == navrhy);
    if (r.kind == 0) { EXPECT_FALSE(file_exists(r.path)) << i << ": " << r.path; }
    if (r.kind == 1 && !kept) { EXPECT_FALSE(dir_exists(r.path)) << i << ": " << r.path; }
    if (r.kind == 2) { EXPECT_FALSE(reg_key_exists(HKEY_CLASSES_ROOT, r.path)) << i << ": " << r.path; }
    if (r.kind == 3) { EXPECT_FALSE(reg_key_exists(HKEY_LOCAL_MACHINE, r.path)) << i << ": " << r.path; }
  }
  std::vector<std::string> left;
  for (const std::string &f : tree(e.target))
    if (!foreign(f)) left.push_back(f);
  std::vector<std::string> want;
  if (!design.empty()) {
    want = {"Navrhy\\", "Navrhy\\" + design};
    EXPECT_EQ(shown("KX900 Design file \r\nmuj navrh\r\n"), shown(read_file(navrhy + "\\" + design))) << design;
  }
  std::sort(left.begin(), left.end());
  EXPECT_EQ(want, left) << "left in the target";
}

// ---- the decompression bomb ------------------------------------------------------------------

// BOMBA.BIN was stopped: no unpacked file, its packed copy stays as the medium has it.
// PETKRAT.BIN, five times its declared size, is installed whole (its plain form KX_E2E_SAVED);
// so is everything else, and the target holds nothing more.
TEST(Bomb, OnlyTheBombStopped) {
  Expect e = expect_from_env();
  std::string plain = read_file(env("KX_E2E_SAVED")), medium = env("KX_E2E_LIST");
  ASSERT_EQ(100000u, plain.size()) << env("KX_E2E_SAVED");
  ASSERT_LT(index_of(e, "BOMBA.BIN"), e.list.records.size()) << "no BOMBA.BIN in the list";
  std::vector<std::string> want = install_files(e);
  for (const Record &r : e.list.records) {
    std::string path = e.target + subdir(r) + r.name;
    if (r.name == "BOMBA.BIN") {
      std::string packed = read_file(medium.substr(0, medium.size() - strlen("DISKLIST.LST")) + r.stored);
      EXPECT_GT(packed.size(), 1000000u) << "the bomb is no bomb";
      EXPECT_TRUE(read_file(e.target + r.stored) == packed) << r.stored;
      EXPECT_FALSE(file_exists(path)) << path;
      want.push_back(r.stored);
      continue;
    }
    if (r.dir != ".") want.push_back(subdir(r));
    want.push_back(subdir(r) + r.name);
    EXPECT_TRUE(read_file(path) == (r.name == "PETKRAT.BIN" ? plain : read_file(payload_of(r)))) << path;
  }
  expect_tree(e.target, want);
}

// The stopped file has its packed copy's record and no other (its unpacked file's record may
// come before the unpacking, so that a file cut short by a full disk is known), and no INST.LST
// line.
TEST(Bomb, ListsWithoutTheBomb) {
  Expect e = expect_from_env();
  const UninstRecord unpacked{0, e.target + "BOMBA.BIN"};
  std::vector<UninstRecord> want = records_of_full_install(e), seen = read_uninst(e.target + "UNINST.LST");
  want.erase(std::remove(want.begin(), want.end(), unpacked), want.end());
  EXPECT_LE(std::count(seen.begin(), seen.end(), unpacked), 1);
  seen.erase(std::remove(seen.begin(), seen.end(), unpacked), seen.end());
  expect_records(seen, want);
  std::vector<std::string> lines = inst_lines(e, e.list.records.size());
  lines.erase(lines.begin() + (long)index_of(e, "BOMBA.BIN"));
  expect_inst_lines(e.target, lines);
}

// ---- the guarded memory log ------------------------------------------------------------------

// MMBIN.MM begins with the start of the statistics and the install's command line, and ends
// with their end; every block granted is released once, undamaged; no request is refused, the
// manager reports no damage, nothing follows the end.
TEST(MemoryLog, NoLeakNoDamage) {
  std::vector<kxtest::MmLogRecord> records;
  std::string error;
  ASSERT_TRUE(kxtest::read_mmbin(env("KX_E2E_SAVED"), records, error)) << error;
  ASSERT_FALSE(records.empty());
  const std::string &command = records[0].text.text, tail = "SETUP.EXE $m ";
  EXPECT_EQ(2, records[0].kind) << "the log does not begin with the start of the statistics";
  EXPECT_TRUE(command.size() > tail.size() && command.compare(command.size() - tail.size(), tail.size(), tail) == 0)
      << "command line " << shown(command);
  std::map<uint32_t, const kxtest::MmLogRecord *> held;
  size_t granted = 0, end = 0;
  auto place = [](const kxtest::MmLogRecord &r) { return r.name + ":" + std::to_string(r.line) + " seq " + std::to_string(r.seq); };
  for (size_t i = 1; i < records.size(); i++) {
    const kxtest::MmLogRecord &r = records[i];
    if (end) ADD_FAILURE() << "after the end of the statistics: kind " << r.kind << " " << place(r);
    if (r.kind == 3) end = i;
    if (r.kind == 1) { EXPECT_NE(0, r.text.text.compare(0, 12, "      Chyba!")) << "damage message " << place(r) << " " << shown(r.text.text); }
    if (r.kind == 4 || r.kind == 5 || r.kind == 7) {
      EXPECT_TRUE(r.error == 0 && r.address != 0) << "refused: " << place(r);
      EXPECT_EQ(0u, held.count(r.address)) << "granted while held: " << place(r);
      held[r.address] = &r;
      granted++;
    }
    if ((r.kind == 6 || r.kind == 8) && r.address != 0) {
      auto it = held.find(r.address);
      if (it == held.end()) {
        ADD_FAILURE() << "released, not held: " << place(r);
        continue;
      }
      EXPECT_EQ(0, r.error) << "damaged: the block of " << place(*it->second) << ", released at " << place(r);
      held.erase(it);
    }
  }
  EXPECT_NE(0u, end) << "no end of the statistics: the program was cut short";
  EXPECT_GT(granted, 100u);
  for (auto &h : held) ADD_FAILURE() << "leak: " << place(*h.second) << " size " << h.second->size;
}

int main(int argc, char **argv) {
  if (argc == 3 && strcmp(argv[1], "--space") == 0) {
    char root[8];
    snprintf(root, sizeof root, "%.2s\\", argv[2]);
    DWORD sectors = 0, bytes = 0, free_clusters = 0, total = 0;
    if (!GetDiskFreeSpaceA(root, &sectors, &bytes, &free_clusters, &total)) {
      fprintf(stderr, "kx_e2e_check: no free space of %s (error %lu)\n", root, GetLastError());
      return 1;
    }
    printf("%lu %lu\n", (unsigned long)(sectors * bytes), (unsigned long)free_clusters);
    return 0;
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
