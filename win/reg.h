// reg.h - the few registry operations of the suite (string values only), behind a seam: the
// Windows build goes to advapi32; the native build keeps an in-memory registry so that the logic
// above it (configuration location, registration, uninstall) can be tested without Windows.
//
// Keys are Windows-1250 paths below one of the roots; value null or "" is the key's default
// value. No call shows a message: callers decide what a failure means.
#ifndef KX_REG_H
#define KX_REG_H

#include "../common/co.h"

enum { REG_ROOT_CLASSES = 0, REG_ROOT_CURRENT_USER = 1, REG_ROOT_LOCAL_MACHINE = 2 };

Flag reg_get_string(int16_t root, const char *key, const char *value, char *buffer, int32_t size);
// Reads a string value into buffer (at most size - 1 characters, NUL-terminated; cut when
// longer). 0 when the key or value is missing or not a string; buffer is then "".
Flag reg_set_string(int16_t root, const char *key, const char *value, const char *data);
// Creates the key (and missing parents) and sets the REG_SZ value. 0 on failure.
Flag reg_flush(int16_t root, const char *key);
// Flushes the key to disk (RegFlushKey). 0 when the key can't be opened.
Flag reg_key_exists(int16_t root, const char *key);
int32_t reg_subkey_count(int16_t root, const char *key);
// Number of direct sub-keys; -1 when the key doesn't exist.
Flag reg_delete_key(int16_t root, const char *key);
// Deletes the key when it has no sub-keys; 0 when it is missing or has sub-keys.

void reg_test_reset(void);
// Native build: empties the in-memory registry. Windows build: nothing.

#endif
