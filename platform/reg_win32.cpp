// reg_win32.cpp - the registry operations over advapi32. Every call opens its key, does its one
// thing and closes the key again; nothing is kept open between calls.
#include "platform/reg.h"

#include "common/mm.h"

#include <string.h>
#include <windows.h>

namespace {

HKEY root_handle(int16_t root) {
  switch (root) {
    case REG_ROOT_CLASSES: return HKEY_CLASSES_ROOT;
    case REG_ROOT_CURRENT_USER: return HKEY_CURRENT_USER;
    case REG_ROOT_LOCAL_MACHINE: return HKEY_LOCAL_MACHINE;
    default: return nullptr;
  }
}

const char *value_name(const char *value) { return (value && value[0]) ? value : nullptr; }

}  // namespace

Flag reg_get_string(int16_t root, const char *key, const char *value, char *buffer, int32_t size) {
  if (buffer && size > 0) buffer[0] = 0;
  HKEY base = root_handle(root);
  if (!base || !key || !buffer || size <= 0) return 0;
  HKEY handle;
  if (RegOpenKeyExA(base, key, 0, KEY_QUERY_VALUE, &handle) != ERROR_SUCCESS) return 0;
  DWORD type = 0;
  DWORD length = 0;
  Flag ok = 0;
  if (RegQueryValueExA(handle, value_name(value), nullptr, &type, nullptr, &length) ==
          ERROR_SUCCESS &&
      (type == REG_SZ || type == REG_EXPAND_SZ)) {
    // Read into room for the whole value plus a terminator, then cut into the caller's buffer.
    DWORD room = length + 1;
    char *text = (char *)mm_zalloc((int32_t)room, MM_HERE);
    if (text) {
      DWORD got = room;
      if (RegQueryValueExA(handle, value_name(value), nullptr, &type, (BYTE *)text, &got) ==
          ERROR_SUCCESS) {
        text[room - 1] = 0;
        size_t n = strlen(text);
        if (n > (size_t)size - 1) n = (size_t)size - 1;
        memcpy(buffer, text, n);
        buffer[n] = 0;
        ok = 1;
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
  HKEY handle;
  DWORD disposition = 0;
  char no_class[1] = "";
  if (RegCreateKeyExA(base, key, 0, no_class, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr,
                      &handle, &disposition) != ERROR_SUCCESS)
    return 0;
  // Strings go with their terminating zero.
  LONG result = RegSetValueExA(handle, value_name(value), 0, REG_SZ, (const BYTE *)data,
                               (DWORD)strlen(data) + 1);
  RegCloseKey(handle);
  return result == ERROR_SUCCESS;
}

Flag reg_flush(int16_t root, const char *key) {
  HKEY base = root_handle(root);
  if (!base) return 0;
  if (!key || !key[0]) return RegFlushKey(base) == ERROR_SUCCESS;
  HKEY handle;
  if (RegOpenKeyExA(base, key, 0, KEY_READ, &handle) != ERROR_SUCCESS) return 0;
  LONG result = RegFlushKey(handle);
  RegCloseKey(handle);
  return result == ERROR_SUCCESS;
}

Flag reg_key_exists(int16_t root, const char *key) {
  HKEY base = root_handle(root);
  if (!base || !key) return 0;
  HKEY handle;
  if (RegOpenKeyExA(base, key, 0, KEY_QUERY_VALUE, &handle) != ERROR_SUCCESS) return 0;
  RegCloseKey(handle);
  return 1;
}

int32_t reg_subkey_count(int16_t root, const char *key) {
  HKEY base = root_handle(root);
  if (!base || !key) return -1;
  HKEY handle;
  if (RegOpenKeyExA(base, key, 0, KEY_READ, &handle) != ERROR_SUCCESS) return -1;
  DWORD count = 0;
  LONG result = RegQueryInfoKeyA(handle, nullptr, nullptr, nullptr, &count, nullptr, nullptr,
                                 nullptr, nullptr, nullptr, nullptr, nullptr);
  RegCloseKey(handle);
  return result == ERROR_SUCCESS ? (int32_t)count : -1;
}

Flag reg_delete_key(int16_t root, const char *key) {
  HKEY base = root_handle(root);
  if (!base || !key || !key[0]) return 0;
  // Windows 95 would delete a whole tree; keep to the one empty key everywhere.
  if (reg_subkey_count(root, key) != 0) return 0;
  return RegDeleteKeyA(base, key) == ERROR_SUCCESS;
}

void reg_test_reset(void) {}
void reg_test_deny(int16_t, const char *) {}
void reg_test_fail_flush(int16_t) {}
int32_t reg_test_log_count(void) { return 0; }
const RegTestWrite *reg_test_log(int32_t) { return nullptr; }
