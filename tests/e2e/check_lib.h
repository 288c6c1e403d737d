// check_lib.h - what the end-to-end checks read back after an install: the install lists, the
// configuration file, the registry, shortcuts, the installed tree, and the list of the medium
// from which the expected records are built.
//
// The scenario driver (tests/e2e/run.sh) hands the checks their setting through environment
// variables, all paths in Windows form:
//   KX_E2E_TARGET    the target directory, with trailing "\" ("C:\KORV5\")
//   KX_E2E_PAYLOAD   the tree the medium was made of, with trailing "\"
//   KX_E2E_LIST      the medium's DISKLIST.LST (first disk)
//   KX_E2E_README    the medium's README.TXT, or empty when the medium has none
//   KX_E2E_DESKTOP   1 when the desktop box was ticked, else 0
//   KX_E2E_QUICK     1 when the quick-launch box was ticked, else 0
//   KX_E2E_SKIP      installed names (as in the list) whose record was skipped, separated by |
//   KX_E2E_SAVED     scenario-specific file (a saved copy of a list, a log)
#ifndef KX_E2E_CHECK_LIB_H
#define KX_E2E_CHECK_LIB_H

#include <windows.h>

#include <stdint.h>
#include <string>
#include <vector>

namespace e2e {

std::string env(const char *name);         // empty when unset
bool env_flag(const char *name);           // "1"
std::string read_file(const std::string &path, bool *found = nullptr);
bool file_exists(const std::string &path);
bool dir_exists(const std::string &path);
std::string upper(std::string s);
std::string strip_slash(std::string s);    // one trailing "\" removed
std::string shown(const std::string &bytes);  // printable form for failure messages

// One DISKLIST.LST file record, as the medium carries it.
struct ListRecord {
  std::string name, stored, dir, description;
  uint32_t size;
  uint16_t disk;
};
struct MediumList {
  bool ok = false;
  uint16_t count = 0, packed = 0;
  std::vector<ListRecord> records;
};
MediumList read_list(const std::string &path);

// One UNINST.LST record.
struct UninstRecord {
  uint16_t kind;
  std::string path;
  bool operator==(const UninstRecord &o) const { return kind == o.kind && path == o.path; }
};
// Reads UNINST.LST; *why tells what is wrong with its bytes (size, padding), empty when nothing.
std::vector<UninstRecord> read_uninst(const std::string &path, std::string *why);
std::string shown(const std::vector<UninstRecord> &records);

// Installed path of a record: target + (dir + "\" unless ".") + name.
std::string installed_path(const std::string &target, const ListRecord &r);
bool is_alternative(const std::string &name);  // KVWPRN.EXE, KVWPP.EXE, KVWALL.EXE, KVWALLR.EXE

// The payload file that a record installs: KX_E2E_PAYLOAD + (dir + "\" unless ".") + name.
std::string payload_of(const ListRecord &r);
// UNINST.LST's records equal want record for record; the failure shows both lists from the
// first difference on.
void expect_records(const std::vector<UninstRecord> &seen, const std::vector<UninstRecord> &want);

// The shell folders that the shortcuts go to.
std::string shell_folder(HKEY root, const char *value);
std::string start_menu_group();            // HKLM Common Programs + "\KORVEX"
std::string desktop_folder();
std::string quick_launch_folder();

// What an install did, to build the expected records from.
struct Expect {
  std::string target;
  MediumList list;
  bool readme = false;
  bool desktop = false, quick = false;
  std::vector<std::string> skipped;        // installed names of skipped records
  bool pfu = true;                         // the function-list step recorded PFU_LIST.PFU
};
Expect expect_from_env();
bool skipped(const Expect &e, const ListRecord &r);

// The records, in order, of the steps up to and including the target's record (step 7).
std::vector<UninstRecord> records_before_transfer(const Expect &e);
// The records of the transfer loop for list records [0, upto).
std::vector<UninstRecord> records_of_transfer(const Expect &e, size_t upto);
// INST.LST, SYSTEM.WCO and the later steps.
std::vector<UninstRecord> records_after_transfer(const Expect &e);
std::vector<UninstRecord> records_of_full_install(const Expect &e);
// The INST.LST lines (without line ends) for list records [0, upto).
std::vector<std::string> inst_lines(const Expect &e, size_t upto);
std::vector<std::string> read_lines(const std::string &path, bool *crlf);

// SYSTEM.WCO: the value of key in section; *found false when missing.
std::string wco_value(const std::string &text, const std::string &section, const std::string &key,
                      bool *found);

// The registry: a REG_SZ value; *why tells what is wrong (missing, type, length).
std::string reg_text(HKEY root, const std::string &key, const char *value, std::string *why);
bool reg_key_exists(HKEY root, const std::string &key);

// A shortcut loaded back through IShellLinkA.
struct Link {
  bool loaded = false;
  std::string path, description, workdir;
};
Link read_link(const std::string &file);

// Every file under dir (recursively), as paths relative to dir; directories end in "\".
std::vector<std::string> tree(const std::string &dir);

}  // namespace e2e

#endif
