// mm.cpp - memory manager (normal mode; guarded mode follows).
#include "mm.h"

#include "../win/we.h"

#include <stdlib.h>
#include <string.h>

static const char MODULE[] = "mm";

void mm_stat_begin(int, const char *const *) {}
void mm_stat_end(void) {}

void *mm_alloc(int32_t size, const char *, int32_t) {
  if (size <= 0) {
    InternalError(MODULE, __LINE__);
    return NULL;
  }
  return malloc((size_t)size);
}

void *mm_calloc(int32_t count, int32_t size, const char *, int32_t) {
  if (count < 1 || size < 1) {
    InternalError(MODULE, __LINE__);
    return NULL;
  }
  return calloc((size_t)count, (size_t)size);
}

void *mm_zalloc(int32_t size, const char *, int32_t) {
  if (size <= 0) {
    InternalError(MODULE, __LINE__);
    return NULL;
  }
  return calloc(1, (size_t)size);
}

void *mm_zalloc_anon(int32_t size) { return mm_zalloc(size, "UNKNOWN", 0); }

void mm_free(void *block, const char *, int32_t) { free(block); }
void mm_check_release(void *, const char *, int32_t) {}
void mm_release(void *block) { free(block); }
Flag mm_check(void *block) {
  if (block == NULL) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  return 1;
}
void mm_log(const char *, int32_t, const char *, ...) {}
Flag mm_watch(void *) { return 1; }
Flag mm_unwatch(void *) { return 1; }
Flag mm_test_watched(const char *, int32_t) { return 1; }
