// reg_host.cpp - the registry of the native build: an in-memory table of keys and string values
// with a write log and a few failure switches, so that registration, configuration lookup and
// uninstall logic can be tested without Windows. Fixed tables; a full table makes the write
// fail like a registry that refuses it.
#include "common/st.h"
#include "platform/reg.h"

#include <stdio.h>
#include <string.h>

namespace {

enum { KEYS = 256, VALUES = 384, DENIED = 8, ROOTS = 3 };

struct HostKey {
  Flag used;
  int16_t root;
  char path[KX_PATH];
};

struct HostValue {
  Flag used;
  int16_t key;                     // index into keys
  char name[REG_TEST_VALUE_NAME];  // "" = default value
  char data[KX_PATH];              // a DWORD value: its number in decimal
  Flag dword;                      // a REG_DWORD value
};

struct Denied {
  Flag used;
  int16_t root;
  char path[KX_PATH];  // "" = the whole root
};

HostKey keys[KEYS];
HostValue values[VALUES];
Denied denied[DENIED];
Flag flush_fails[ROOTS];
RegTestWrite log_entries[REG_TEST_LOG_SIZE];
int32_t log_count;

Flag valid_root(int16_t root) { return root >= 0 && root < ROOTS; }

char lower(char c) { return (c >= 'A' && c <= 'Z') ? (char)(c - 'A' + 'a') : c; }

// Case-blind comparison of the first n characters (n < 0: whole strings).
Flag same_text(const char *a, const char *b, int32_t n) {
  for (int32_t i = 0; n < 0 || i < n; i++) {
    if (lower(a[i]) != lower(b[i])) return 0;
    if (a[i] == 0) return 1;
  }
  return 1;
}

int32_t find_key(int16_t root, const char *path, int32_t length) {
  for (int32_t i = 0; i < KEYS; i++) {
    if (!keys[i].used || keys[i].root != root) continue;
    if ((int32_t)strlen(keys[i].path) == length && same_text(keys[i].path, path, length)) return i;
  }
  return -1;
}

int32_t find_value(int32_t key, const char *name) {
  for (int32_t i = 0; i < VALUES; i++)
    if (values[i].used && values[i].key == key && same_text(values[i].name, name, -1)) return i;
  return -1;
}

// The key path and every missing parent; -1 when a table is full or the path is malformed.
int32_t create_key(int16_t root, const char *path) {
  int32_t length = (int32_t)strlen(path);
  if (length == 0 || length >= KX_PATH || path[0] == '\\' || path[length - 1] == '\\' ||
      strstr(path, "\\\\"))
    return -1;
  int32_t found = -1;
  for (int32_t end = 1; end <= length; end++) {
    if (end < length && path[end] != '\\') continue;
    found = find_key(root, path, end);
    if (found >= 0) continue;
    for (int32_t i = 0; i < KEYS; i++) {
      if (keys[i].used) continue;
      keys[i].used = 1;
      keys[i].root = root;
      memcpy(keys[i].path, path, (size_t)end);
      keys[i].path[end] = 0;
      found = i;
      break;
    }
    if (found < 0) return -1;
  }
  return found;
}

Flag is_denied(int16_t root, const char *path) {
  for (int32_t i = 0; i < DENIED; i++) {
    if (!denied[i].used || denied[i].root != root) continue;
    int32_t n = (int32_t)strlen(denied[i].path);
    if (n == 0) return 1;
    if (same_text(denied[i].path, path, n) && (path[n] == 0 || path[n] == '\\')) return 1;
  }
  return 0;
}

void log_call(char op, int16_t root, Flag ok, const char *key, const char *value,
              const char *data) {
  if (log_count >= REG_TEST_LOG_SIZE) return;
  RegTestWrite *entry = &log_entries[log_count++];
  entry->op = op;
  entry->root = root;
  entry->ok = ok;
  st_put(entry->key, sizeof entry->key, key);
  st_put(entry->value, sizeof entry->value, value);
  st_put(entry->data, sizeof entry->data, data);
}

}  // namespace

Flag reg_get_string(int16_t root, const char *key, const char *value, char *buffer, int32_t size) {
  if (buffer && size > 0) buffer[0] = 0;
  if (!valid_root(root) || !key || !buffer || size <= 0) return 0;
  int32_t k = find_key(root, key, (int32_t)strlen(key));
  if (k < 0) return 0;
  int32_t v = find_value(k, value ? value : "");
  if (v < 0 || values[v].dword) return 0;
  st_put(buffer, (size_t)size, values[v].data);
  return 1;
}

namespace {

// Sets a value of either type; op is the write log's letter ('S' or 'D').
Flag set_value(char op, int16_t root, const char *key, const char *value, const char *data) {
  if (!valid_root(root) || !key) {
    log_call(op, root, 0, key, value, data);
    return 0;
  }
  if (!value) value = "";
  if (!data) data = "";
  Flag ok = 0;
  if (!is_denied(root, key) && strlen(value) < REG_TEST_VALUE_NAME && strlen(data) < KX_PATH) {
    int32_t k = create_key(root, key);
    if (k >= 0) {
      int32_t v = find_value(k, value);
      for (int32_t i = 0; v < 0 && i < VALUES; i++)
        if (!values[i].used) v = i;
      if (v >= 0) {
        values[v].used = 1;
        values[v].key = (int16_t)k;
        st_put(values[v].name, sizeof values[v].name, value);
        st_put(values[v].data, sizeof values[v].data, data);
        values[v].dword = op == 'D';
        ok = 1;
      }
    }
  }
  log_call(op, root, ok, key, value, data);
  return ok;
}

}  // namespace

Flag reg_set_string(int16_t root, const char *key, const char *value, const char *data) {
  return set_value('S', root, key, value, data);
}

Flag reg_set_dword(int16_t root, const char *key, const char *value, uint32_t data) {
  char number[16];
  snprintf(number, sizeof number, "%lu", (unsigned long)data);
  return set_value('D', root, key, value, number);
}

Flag reg_flush(int16_t root, const char *key) {
  Flag ok = valid_root(root) && !flush_fails[root] &&
            (!key || !key[0] || find_key(root, key, (int32_t)strlen(key)) >= 0);
  log_call('F', root, ok, key, "", "");
  return ok;
}

Flag reg_key_exists(int16_t root, const char *key) {
  if (!valid_root(root) || !key) return 0;
  if (!key[0]) return 1;
  return find_key(root, key, (int32_t)strlen(key)) >= 0;
}

int32_t reg_subkey_count(int16_t root, const char *key) {
  if (!reg_key_exists(root, key)) return -1;
  int32_t length = (int32_t)strlen(key);
  int32_t count = 0;
  for (int32_t i = 0; i < KEYS; i++) {
    if (!keys[i].used || keys[i].root != root) continue;
    const char *rest = keys[i].path;
    if (length > 0) {
      if (!same_text(rest, key, length) || rest[length] != '\\') continue;
      rest += length + 1;
    }
    if (rest[0] && !strchr(rest, '\\')) count++;
  }
  return count;
}

Flag reg_delete_key(int16_t root, const char *key) {
  if (!valid_root(root) || !key || !key[0]) return 0;
  int32_t k = find_key(root, key, (int32_t)strlen(key));
  if (k < 0 || reg_subkey_count(root, key) != 0) return 0;
  for (int32_t i = 0; i < VALUES; i++)
    if (values[i].used && values[i].key == k) values[i].used = 0;
  keys[k].used = 0;
  return 1;
}

void reg_test_reset(void) {
  memset(keys, 0, sizeof keys);
  memset(values, 0, sizeof values);
  memset(denied, 0, sizeof denied);
  memset(flush_fails, 0, sizeof flush_fails);
  log_count = 0;
}

void reg_test_deny(int16_t root, const char *key) {
  for (int32_t i = 0; i < DENIED; i++) {
    if (denied[i].used) continue;
    denied[i].used = 1;
    denied[i].root = root;
    st_put(denied[i].path, sizeof denied[i].path, key);
    return;
  }
}

void reg_test_fail_flush(int16_t root) {
  if (valid_root(root)) flush_fails[root] = 1;
}

int32_t reg_test_log_count(void) { return log_count; }

const RegTestWrite *reg_test_log(int32_t index) {
  return (index >= 0 && index < log_count) ? &log_entries[index] : nullptr;
}
