// log.h - the run log of the setup programs: one UTF-8 text line per event, with its time.
//
// SETUP.EXE and UNINSTAL.EXE write what they do into a log when they are asked to (/LOG=) and
// always in their silent modes. Texts are given in Windows-1250, as everywhere in the suite,
// and converted explicitly to UTF-8, so that the log reads right on any system whatever its
// code page. Every line is
//     YYYY-MM-DD HH:MM:SS text
// ended by CR LF and handed to the system at once (a run that is killed keeps what it logged).
// Line breaks inside a text are written as " / " and other control characters as blanks, so
// that one event is always one line.
//
// A log that can't be opened or written is no failure of the program: the calls then do
// nothing, show nothing, and the program goes on. There is one log per process.
#ifndef KX_LOG_H
#define KX_LOG_H

#include "common/co.h"

enum { LOG_LINE_SIZE = 2048 };  // a formatted line (Windows-1250) is cut at 2047 characters

Flag log_open(const char *path);
// Creates the log file at path (Windows-1250; an existing file is emptied) and keeps it open.
// A log that is already open is closed first. Returns 1 when the file is open; 0 for a null or
// empty path or a file that can't be created (nothing is shown; later lines go nowhere).

void log_close(void);
// Closes the log. Nothing when none is open.

Flag log_active(void);
// 1 while a log is open.

const char *log_file(void);
// The path of the open log, or "" when none is open.

void log_text(const char *text);
void log_line(const char *format, ...) KX_PRINTF(1, 2);
// Writes one line: the local date and time, a blank, the text (formatted: at most
// LOG_LINE_SIZE - 1 characters) in UTF-8. A null text or format writes an empty line. Nothing
// when no log is open. A write that fails closes the log (no further attempts, nothing shown).

Flag log_temp_path(const char *name, char *path, size_t size);
// The directory for temporary files (the environment's TEMP, else TMP, else the current
// directory), a "\" when it has none at its end, and name, into path (size bytes). 1 when it
// fits; 0 for a null argument or a path that does not fit (path then empty).

#endif
