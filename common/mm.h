// mm.h - memory manager: every dynamic block of the suite's own code is taken and given back here.
// (Interface fixed; the module's owner documents each call in full.)
#ifndef KX_MM_H
#define KX_MM_H

#include "co.h"

void mm_stat_begin(int argc, const char *const *argv);
void mm_stat_end(void);
void *mm_alloc(int32_t size, const char *file, int32_t line);
void *mm_calloc(int32_t count, int32_t size, const char *file, int32_t line);
void *mm_zalloc(int32_t size, const char *file, int32_t line);
void *mm_zalloc_anon(int32_t size);
void mm_free(void *block, const char *file, int32_t line);
void mm_check_release(void *block, const char *file, int32_t line);
void mm_release(void *block);
Flag mm_check(void *block);
void mm_log(const char *file, int32_t line, const char *format, ...) KX_PRINTF(3, 4);
Flag mm_watch(void *block);
Flag mm_unwatch(void *block);
Flag mm_test_watched(const char *file, int32_t line);

// The caller's place, as every allocating and releasing call carries it.
#define MM_HERE __FILE_NAME__, __LINE__

#endif
