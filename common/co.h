// co.h - definitions shared by every module of the suite's libraries.
//
// Operations report success with a 16-bit flag: 1 (non-zero) for success, 0 for failure.
// A function that detects a failure shows its own message first (module we), so callers
// only pass the 0 up. Operations that cannot fail return 1 all the same.
#ifndef KX_CO_H
#define KX_CO_H

#include <stddef.h>
#include <stdint.h>

typedef int16_t Flag;

// Every path buffer of the suite holds this many characters, the terminating NUL included.
// A directory path always ends with "\"; pieces are joined by plain concatenation.
enum { KX_PATH = 1024 };

// Number of elements of a fixed array.
#define KX_COUNT(a) (sizeof(a) / sizeof((a)[0]))

// printf-style format checking for our variadic reporting functions.
#if defined(__GNUC__)
#define KX_PRINTF(fmt, args) __attribute__((format(printf, fmt, args)))
#else
#define KX_PRINTF(fmt, args)
#endif

#endif
