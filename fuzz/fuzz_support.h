// fuzz_support.h - what every fuzz target shares: silent boxes and dialogs, a scratch
// directory, exact-size copies of the input (so that ASan sees a read one byte past
// the end), and the check that stops the run on a broken promise of a module.
#ifndef KX_FUZZ_SUPPORT_H
#define KX_FUZZ_SUPPORT_H

#include <stddef.h>
#include <stdint.h>

// Every target starts silenced: box and dialog hooks that show nothing (every question answers
// "No") are installed before the fuzzer runs. fuzz_box_count: the boxes and dialogs so far.
long fuzz_box_count(void);

// The directory for the target's own files, with "/" at the end: the current directory, which
// run.sh makes afresh for every run.
const char *fuzz_scratch_dir(void);

// Writes size bytes to path (truncating); aborts when that is impossible.
void fuzz_write_file(const char *path, const uint8_t *data, size_t size);

// A heap copy of data with a NUL after it (exactly size + 1 bytes); free() it.
char *fuzz_text(const uint8_t *data, size_t size);

// A heap copy of exactly size bytes (at least one byte is allocated); free() it.
uint8_t *fuzz_block(const uint8_t *data, size_t size);

// Stops the run (abort, so libFuzzer keeps the input) with the message when ok is false.
#define FUZZ_CHECK(ok, ...)                                \
  do {                                                     \
    if (!(ok)) fuzz_fail(__FILE__, __LINE__, __VA_ARGS__); \
  } while (0)
[[noreturn]] void fuzz_fail(const char *file, int line, const char *format, ...)
    __attribute__((format(printf, 3, 4)));

#endif
