// reg_win32.cpp - the registry operations over advapi32. Every call opens its key, does its one
// thing and closes the key again; nothing is kept open between calls. Keys, value names and
// values go to the wide calls and come back through wtext (1250): values are UTF-16 in the
// registry whatever the system's code page.
#include "platform/reg.h"

#include "common/mm.h"
#include "platform/wtext.h"

#include <windows.h>
#include <string.h>

namespace {

HKEY root_handle(int16_t root) {
  switch (root) {
    case REG_ROOT_CLASSES: return HKEY_CLASSES_ROOT;
    case REG_ROOT_CURRENT_USER: return HKEY_CURRENT_USER;
    case REG_ROOT_LOCAL_MACHINE: return HKEY_LOCAL_MACHINE;
    default: return nullptr;
  }
}

// A key path or value name as the wide calls take it; null stays null ("" the default value).
struct Wide {
  wchar_t text[WTEXT_PATH];
  Flag ok;
  explicit Wide(const char *name) : ok(name ? wtext_in(name, text, WTEXT_PATH) : 1) {
    if (!name) text[0] = 0;
  }
};

const wchar_t *value_name(const Wide &value) { return value.text[0] ? value.text : nullptr; }

LONG open_key(HKEY base, const char *key, REGSAM access, HKEY *handle) {
  Wide wide(key);
  return wide.ok ? RegOpenKeyExW(base, wide.text, 0, access, handle) : ERROR_INVALID_NAME;
}

}  // namespace

Flag reg_get_string(int16_t root, const char *key, const char *value, char *buffer, int32_t size) {
  if (buffer && size > 0) buffer[0] = 0;
  HKEY base = root_handle(root);
  if (!base || !key || !buffer || size <= 0) return 0;
  Wide name(value);
  if (!name.ok) return 0;
  HKEY handle;
  if (open_key(base, key, KEY_QUERY_VALUE, &handle) != ERROR_SUCCESS) return 0;
  DWORD type = 0;
  DWORD length = 0;
  Flag ok = 0;
  if (RegQueryValueExW(handle, value_name(name), nullptr, &type, nullptr, &length) ==
          ERROR_SUCCESS &&
      (type == REG_SZ || type == REG_EXPAND_SZ)) {
    // Read into room for the whole value plus a terminator, then bring it back into 1250 and
    // cut it into the caller's buffer; a value that 1250 cannot hold is refused. One block
    // holds both: room wide characters, then room bytes.
    DWORD room = length / sizeof(wchar_t) + 1;
    wchar_t *text = (wchar_t *)mm_zalloc((int32_t)(room * (sizeof(wchar_t) + 1)), MM_HERE);
    if (text) {
      char *bytes = (char *)(text + room);
      DWORD got = room * sizeof(wchar_t);
      if (RegQueryValueExW(handle, value_name(name), nullptr, &type, (BYTE *)text, &got) ==
          ERROR_SUCCESS) {
        text[room - 1] = 0;
        if (wtext_out(text, bytes, room)) {
          size_t n = strlen(bytes);
          if (n > (size_t)size - 1) n = (size_t)size - 1;
          memcpy(buffer, bytes, n);
          buffer[n] = 0;
          ok = 1;
        }
      }
      mm_free(text, MM_HERE);
    }
  }
  RegCloseKey(handle);
  return ok;
}

Flag reg_set_string(int16_t root, const char *key, const char *value, const char *data) {
  HKEY base = root_handle(root);
  if (!base || !key) return 0;
  if (!data) data = "";
  Wide wide_key(key), name(value);
  wchar_t wide_data[2 * WTEXT_PATH];  // a path and a command line around it
  if (!wide_key.ok || !name.ok || !wtext_in(data, wide_data, 2 * WTEXT_PATH)) return 0;
  HKEY handle;
  DWORD disposition = 0;
  wchar_t no_class[1] = L"";
  LONG result = RegCreateKeyExW(base, wide_key.text, 0, no_class, REG_OPTION_NON_VOLATILE,
                                KEY_ALL_ACCESS, nullptr, &handle, &disposition);
  if (result == ERROR_SUCCESS) {
    // Strings go with their terminating zero.
    result = RegSetValueExW(handle, value_name(name), 0, REG_SZ, (const BYTE *)wide_data,
                            (DWORD)((wcslen(wide_data) + 1) * sizeof(wchar_t)));
    RegCloseKey(handle);
  }
  return result == ERROR_SUCCESS;
}

Flag reg_set_dword(int16_t root, const char *key, const char *value, uint32_t data) {
  HKEY base = root_handle(root);
  if (!base || !key) return 0;
  Wide wide_key(key), name(value);
  if (!wide_key.ok || !name.ok) return 0;
  HKEY handle;
  DWORD disposition = 0;
  wchar_t no_class[1] = L"";
  LONG result = RegCreateKeyExW(base, wide_key.text, 0, no_class, REG_OPTION_NON_VOLATILE,
                                KEY_ALL_ACCESS, nullptr, &handle, &disposition);
  if (result == ERROR_SUCCESS) {
    DWORD number = data;
    result = RegSetValueExW(handle, value_name(name), 0, REG_DWORD, (const BYTE *)&number,
                            sizeof number);
    RegCloseKey(handle);
  }
  return result == ERROR_SUCCESS;
}

Flag reg_flush(int16_t root, const char *key) {
  HKEY base = root_handle(root);
  if (!base) return 0;
  if (!key || !key[0]) return RegFlushKey(base) == ERROR_SUCCESS;
  HKEY handle;
  if (open_key(base, key, KEY_READ, &handle) != ERROR_SUCCESS) return 0;
  LONG result = RegFlushKey(handle);
  RegCloseKey(handle);
  return result == ERROR_SUCCESS;
}

Flag reg_key_exists(int16_t root, const char *key) {
  HKEY base = root_handle(root);
  if (!base || !key) return 0;
  HKEY handle;
  if (open_key(base, key, KEY_QUERY_VALUE, &handle) != ERROR_SUCCESS) return 0;
  RegCloseKey(handle);
  return 1;
}

int32_t reg_subkey_count(int16_t root, const char *key) {
  HKEY base = root_handle(root);
  if (!base || !key) return -1;
  HKEY handle;
  if (open_key(base, key, KEY_READ, &handle) != ERROR_SUCCESS) return -1;
  DWORD count = 0;
  LONG result = RegQueryInfoKeyW(handle, nullptr, nullptr, nullptr, &count, nullptr, nullptr,
                                 nullptr, nullptr, nullptr, nullptr, nullptr);
  RegCloseKey(handle);
  return result == ERROR_SUCCESS ? (int32_t)count : -1;
}

Flag reg_delete_key(int16_t root, const char *key) {
  HKEY base = root_handle(root);
  if (!base || !key || !key[0]) return 0;
  // Windows 95 would delete a whole tree; keep to the one empty key everywhere.
  if (reg_subkey_count(root, key) != 0) return 0;
  Wide wide(key);
  return wide.ok && RegDeleteKeyW(base, wide.text) == ERROR_SUCCESS;
}

void reg_test_reset(void) {}
void reg_test_deny(int16_t, const char *) {}
void reg_test_fail_flush(int16_t) {}
int32_t reg_test_log_count(void) { return 0; }
const RegTestWrite *reg_test_log(int32_t) { return nullptr; }
