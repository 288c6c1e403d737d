// reg.h - the few registry operations of the suite (string values only), behind a seam: the
// Windows build goes to advapi32; the native build keeps an in-memory registry so that the logic
// above it (configuration location, registration, uninstall) can be tested without Windows.
//
// Keys are Windows-1250 paths below one of the roots; value null or "" is the key's default
// value. No call shows a message: callers decide what a failure means.
#ifndef KX_REG_H
#define KX_REG_H

#include "common/co.h"

enum { REG_ROOT_CLASSES = 0, REG_ROOT_CURRENT_USER = 1, REG_ROOT_LOCAL_MACHINE = 2 };

Flag reg_get_string(int16_t root, const char *key, const char *value, char *buffer, int32_t size);
// Reads a string value into buffer (at most size - 1 characters, NUL-terminated; cut when
// longer). 0 when the key or value is missing or not a string; buffer is then "".
Flag reg_set_string(int16_t root, const char *key, const char *value, const char *data);
// Creates the key (and missing parents) and sets the REG_SZ value. 0 on failure.
Flag reg_set_dword(int16_t root, const char *key, const char *value, uint32_t data);
// Creates the key (and missing parents) and sets the REG_DWORD value. 0 on failure. (The
// native build keeps the number as decimal text; reg_get_string does not read it.)
Flag reg_flush(int16_t root, const char *key);
// Flushes the key to disk (RegFlushKey). Key null or "": the root itself. 0 when the key can't
// be opened or the flush fails.
Flag reg_key_exists(int16_t root, const char *key);
int32_t reg_subkey_count(int16_t root, const char *key);
// Number of direct sub-keys; -1 when the key doesn't exist.
Flag reg_delete_key(int16_t root, const char *key);
// Deletes the key when it has no sub-keys; 0 when it is missing or has sub-keys.

// All operations: an unknown root or a null key (other than for reg_flush) gives 0 (-1 for
// reg_subkey_count), and reg_get_string's buffer is "" when it has room for one character.
// Key names compare without regard to the case of A..Z, as the system's registry does. The
// native build refuses (0) a value name of 256 or more characters, data of 1024 or more and a
// write that finds its fixed tables (256 keys, 384 values) full.

// ---- Test controls of the native build (the Windows build ignores them) ---------------------

void reg_test_reset(void);
// Native build: empties the in-memory registry, clears the write log and every failure set up
// below. Windows build: nothing.

void reg_test_deny(int16_t root, const char *key);
// Native build: from now on reg_set_string fails for this key and every key below it (key null
// or "": the whole root), as for a user without the rights to write there. At most 8 such
// entries; more are ignored. Windows build: nothing.
void reg_test_fail_flush(int16_t root);
// Native build: from now on reg_flush of anything under root fails. Windows build: nothing.

// One entry of the native build's write log: every reg_set_string call ('S'), every
// reg_set_dword call ('D', data in decimal) and every reg_flush call ('F'), in the order of the calls, failed ones included (ok = 0). Texts are cut to fit.
enum { REG_TEST_VALUE_NAME = 256, REG_TEST_LOG_SIZE = 128 };
struct RegTestWrite {
  char op;  // 'S', 'D' or 'F'
  int16_t root;
  Flag ok;
  char key[KX_PATH];
  char value[REG_TEST_VALUE_NAME];  // "" for the default value and for flushes
  char data[KX_PATH];               // "" for flushes
};
int32_t reg_test_log_count(void);
// Number of logged calls (at most REG_TEST_LOG_SIZE; later calls are not logged). Windows: 0.
const RegTestWrite *reg_test_log(int32_t index);
// The entry index (0-based), or null when there is none.

#endif
