// file.h - the file layer: every file of the suite is read and written through a FileObject.
//
// A FileObject wraps a C stdio stream (or a memory buffer) opened in one of the numbered modes
// below. It reads and writes text lines, binary blocks and length-prefixed strings, and reports
// every failure itself before it returns 0, so callers only pass the 0 up:
//   - user messages (module we, title " Chyba "), with the object's path in place of %s:
//       "Soubor %s nelze otevřít"                      the stream cannot be opened
//       "Ze souboru %s nelze číst"                     a read came back short or failed
//       "Do souboru %s nelze zapisovat (plný disk?)"   a write came back short or failed
//       "Chyba kopírování - čtení !"                   file_copy_block could not read a block
//       "Chyba kopírování - zápis !"                   file_copy_block could not write a block
//   - programming errors (null arguments, a bad mode, a call the mode does not allow) as
//     InternalError("file", line).
//
// Open modes:
//    1  read text                  "rt"       7  write and read binary  "w+b"
//    2  write text (create/trunc.) "w+t"      8  update binary          "r+b"
//    3  the same as 2              "w+t"      9  counting file: nothing is stored, writes only
//    4  update text                "r+t"         move the position and the size forward
//    5  read binary                "rb"      10  read from the caller's memory buffer
//    6  write binary               "wb"          (file_set_memory)
//                                            11  write into a buffer the file allocates:
//                                                20,000 bytes or the size set before with
//                                                file_set_memory_size (file_memory reads it)
//   12-14  reserved, opening them is an internal error; 0 and above 14 are internal errors too.
// In the text modes Windows writes a line break as CR LF and reads CR LF as one line break. The
// native build has no text mode: it writes LF alone, and file_read_line cuts a CR that stands
// before the LF, so both builds read the same lines from a CR LF file.
//
// Open-file statistics (a developer aid, off until statistics_start): while on, every open and
// close of a stream is logged to the text file "DATA.FI" in the current directory, and up to 25
// open streams are tracked, so that statistics_end can list the files left open. Log lines:
//   "Statistika otevrenych souboru\n"                     statistics_start
//   "Otevreni souboru %s v rezimu %s\n"                   every open: path, stream mode text
//   "!!! Bylo otevreno vice nez 25 souboru !!!\n"         no free slot: opened, but not tracked
//   "!!! Neuspesne otevreni souboru %s\n"                 the open failed: path
//   "Zavreni souboru %s otevreneho jako %s\n"             close: object's path, tracked path
//   "!!! Zavirany soubor nebyl otevren\n"                 close of a stream not tracked
//   "!!! Nebyl uzavren soubor %s"                         statistics_end, per file left open
//   "Konec statistiky otevrenych souboru"                 statistics_end
// The last two lines carry no line break of their own; keep this, tools compare the log as it
// always was. The memory modes are never logged. The statistics never make an open fail.
//
// One thread only: the statistics table and the copy buffer are process-wide and unguarded.
#ifndef KX_FILE_H
#define KX_FILE_H

#include "common/co.h"

#include <stdio.h>

struct FileObject;

enum {
  FILE_READ_TEXT = 1,
  FILE_WRITE_TEXT = 2,
  FILE_WRITE_TEXT_2 = 3,
  FILE_UPDATE_TEXT = 4,
  FILE_READ_BINARY = 5,
  FILE_WRITE_BINARY = 6,
  FILE_WRITE_READ_BINARY = 7,
  FILE_UPDATE_BINARY = 8,
  FILE_COUNT = 9,
  FILE_MEMORY_READ = 10,
  FILE_MEMORY_WRITE = 11
};

// Origins of file_seek (the values of SEEK_SET, SEEK_CUR and SEEK_END).
enum { FILE_FROM_START = 0, FILE_FROM_HERE = 1, FILE_FROM_END = 2 };

// Sizes: the default buffer of mode 11, the statistics table, the copy block, the line reader's
// longest piece, the design-file header block.
enum {
  FILE_MEMORY_DEFAULT = 20000,
  FILE_TRACKED = 25,
  FILE_COPY_BLOCK = 512,
  FILE_LINE_MAX = 199,
  FILE_HEADER_SIZE = 80
};

// The text at the start of every design file's 80-byte header block.
extern const char FILE_DESIGN_HEADER[];  // "KX900 Design file \r\n"

// The message of a failed write, for a writer beside the file layer that reports as it does.
extern const char FILE_TEXT_WRITE[];  // "Do souboru %s nelze zapisovat (plný disk?)"

// ---- Objects -------------------------------------------------------------------------------

Flag file_create(FileObject **result, const char *path);
// Allocates a closed FileObject (mode 0) for path. The path is copied, cut at KX_PATH - 1
// characters; it may be empty for the memory modes.
// Returns 1 and sets *result. Returns 0 with *result null after " Málo paměti" when the memory
// manager has no block; 0 after an internal error when result or path is null.

Flag file_destroy(FileObject **file);
// Closes *file when it is open (as file_close without deleting), frees a buffer the file
// allocated (mode 11) and the object, and sets *file to null.
// Returns 1, or 0 when the close failed (the object is freed all the same). A null pointer or a
// null *file is an internal error: 0.

// ---- Opening and closing -------------------------------------------------------------------

Flag file_open(FileObject *file, int16_t mode);
// Opens the file in mode (table above) and sets the position to 0.
//   Modes 1-8: opens the stream with the mode's text. Failure: "Soubor %s nelze otevřít", 0.
//     An empty path is an internal error: 0.
//   Mode 9: counting, size and position 0.
//   Mode 10: reads the buffer given with file_set_memory; without one, or with a size below 1,
//     an internal error: 0.
//   Mode 11: allocates the buffer (file_set_memory_size, else 20,000 bytes), length 0; a buffer
//     from an earlier mode-11 opening is freed first. No memory: " Málo paměti", 0.
//   Modes 0, 12-14 and above 14, and a file that is already open: internal error, 0.
// Returns 1 when open. With statistics on the open is logged (see above).

Flag file_close(FileObject *file, Flag delete_after);
// Closes the stream, sets the mode to 0, and when delete_after is set deletes the file from
// disk (a failed delete is not reported). A memory mode is only reset: mode 0, position 0; its
// buffer and length stay for file_memory and file_size.
// Returns 1. Returns 0 when the stream could not flush its last data (the file is closed all
// the same); "Do souboru %s nelze zapisovat (plný disk?)" is shown then, unless a write of this
// open has already shown it (one fault, one box). A null file or a file that is
// not open is an internal error: 0. With statistics on the close is logged (see above).

FILE *file_open_new_binary(const char *path);
// fopen(path, "wb") with the same result, except that a file that is not there is created as a
// new one instead of being truncated: under Wine every truncation (even of a file that does
// not exist yet) makes the file system write the whole file out at its close, and the
// installer deletes or moves most of the files it writes at once. Null for a null path or when
// the file can't be opened; nothing is shown.

Flag file_flush(FileObject *file);
// Hands what the stream holds in its buffer to the system, so that it is in the file even if
// the program ends at once. Returns 1 (also for the memory and counting modes, which hold
// nothing). Returns 0 when it could not be written; "Do souboru %s nelze zapisovat (plný
// disk?)" is shown then, unless a write of this open has already shown it. A null file or a
// file that is not open is an internal error: 0.

// ---- Blocks --------------------------------------------------------------------------------

Flag file_read(FileObject *file, void *buffer, int32_t count);
// Reads exactly count bytes (modes 1-8 from the stream, mode 10 from the memory buffer).
// Returns 1. Returns 0 after "Ze souboru %s nelze číst" when fewer bytes were there (what could
// be read is in the buffer). A null buffer, a count below 1, a closed file, or the modes 9 and
// 11 are internal errors: 0.

Flag file_write(FileObject *file, const void *buffer, int32_t count);
// Writes count bytes (modes 1-8 to the stream; mode 9 only moves position and size forward;
// mode 11 into the buffer, from the position). A count of 0 writes nothing and returns 1.
// Returns 1. Returns 0 after "Do souboru %s nelze zapisovat (plný disk?)" when the stream took
// fewer bytes, or when the bytes do not fit into the mode-11 buffer (then nothing is written).
// A null buffer, a count below 0, a closed file, or mode 10 are internal errors: 0.

// ---- Lines and strings ---------------------------------------------------------------------

Flag file_write_line(FileObject *file, const char *text);
// Writes text and a line break "\n" (CR LF in the text modes on Windows), as file_write does.
// Returns 1; 0 after the write message; a null text is an internal error: 0.

Flag file_read_line(FileObject *file, char *buffer, int32_t size);
// Modes 1, 3 and 4 (text): reads one line of at most 199 characters and takes the line break
// after it when it comes next; the line break (and a CR before it, see above) is not stored. A longer
// line comes back in pieces of 199 characters over successive calls (a 300-character line as
// 199, then 101 characters). The text goes into buffer cut at size - 1 characters, always
// terminated.
//   Returns 1 for a line (also an empty one, and the last line without a line break).
//   Returns 0 with an empty buffer, and without a message, at the end of the file.
//   Returns 0 after "Ze souboru %s nelze číst" when the stream fails.
// Binary modes (5-8) and mode 2: reads a length-prefixed string as file_write_string writes
// it: an 8-byte head whose second little-endian 32-bit word is the length, then that many
// bytes. A length below 1 gives an empty string. A string of exactly size bytes loses its last
// byte so that the buffer stays terminated.
//   Returns 1. Returns 0 after "Ze souboru %s nelze číst" when the head or the bytes are not
//   all there. A length above size is an internal error: 0, empty buffer, the position after
//   the head.
// A null buffer, a size below 1, a closed file and the modes 9-11 are internal errors: 0.

Flag file_write_string(FileObject *file, const char *text);
// Writes text as a length-prefixed string for file_read_line in the binary modes: an 8-byte
// head of two little-endian 32-bit words, 0 and the length of text, then the characters
// without the terminating NUL. Works in every mode file_write works in.
// Returns 1; 0 after the write message; a null text is an internal error: 0.

// ---- Position ------------------------------------------------------------------------------

int32_t file_tell(FileObject *file);
// The position in bytes from the start of the file (for the memory modes and mode 9 the
// object's own position). A closed or null file is an internal error: -1.

Flag file_seek(FileObject *file, int32_t offset, int16_t origin);
// Moves the position to offset from origin (FILE_FROM_START, FILE_FROM_HERE, FILE_FROM_END; the
// end of a memory file is its length). Returns 1. A closed or null file, an unknown origin,
// a position that the stream refuses or that lies before the start (or, for mode 10, beyond
// the buffer; for mode 11 beyond its size) is an internal error: 0, position unchanged.

int32_t file_size(FileObject *file);
// The size in bytes: for the modes 9 to 11 the length written (mode 10: the buffer's size),
// also after the file was closed; for the stream modes the stream's present size (the position
// is kept). A null file, or a closed file that was never opened in a memory mode, is an
// internal error: -1.

// ---- Memory modes --------------------------------------------------------------------------

Flag file_set_memory(FileObject *file, const void *buffer, int32_t size);
// Gives the buffer that mode 10 reads: size bytes at buffer. The file does not copy or free it;
// it must live while the file reads it. A buffer the file owned (mode 11) is freed first.
// Returns 1. A null file or a file that is open is an internal error: 0. (A null buffer or a
// size below 1 is only refused when mode 10 is opened.)

Flag file_set_memory_size(FileObject *file, int32_t size);
// Sets the size of the buffer that the next mode-11 opening allocates (instead of 20,000).
// Returns 1. A null file or a size below 1 is an internal error: 0.

const char *file_memory(FileObject *file, int32_t *length);
// The memory buffer (mode 11: the bytes written; mode 10: the caller's buffer) and, when length
// is not null, its length in bytes. Valid until the next opening or file_destroy; also after
// file_close. Null (and length 0) when the file has no buffer. A null file is an internal
// error: null.

// ---- Files on disk -------------------------------------------------------------------------

Flag file_exists(const char *path);
// Returns 1 when a file or directory of that name exists, else 0 (nothing is reported). A null
// path is an internal error: 0.

Flag file_delete(const char *path);
// Deletes the file. Returns 1 when it was deleted, else 0 without a message (the caller
// decides). A null path is an internal error: 0.

// ---- Copying and the design header ---------------------------------------------------------

Flag file_copy_block(FileObject *destination, FileObject *source, int32_t offset, int32_t count);
// Copies count bytes of source, from offset, to destination at its position, in blocks of at
// most 512 bytes through one process-wide buffer; the source is left after the last byte read.
//   Destination in a stream mode (1-8), source in a stream mode: returns 1 when all is copied.
//     A failed seek of the source: internal error, 0. A block that cannot be read whole:
//     "Chyba kopírování - čtení !", 0 (that block is not written; the blocks before it are).
//     A block that cannot be written whole: "Chyba kopírování - zápis !", 0.
//   Destination in mode 9: nothing is read; when offset + count lies beyond the destination's
//     size, its position and size move to offset + count; otherwise its position moves forward
//     by count and its size grows to the position when it lies beyond. Returns 1.
//   A null object, a count below 0, a closed destination, a destination in the modes 10-14,
//   or (for the stream modes) a source that is not open in a stream mode: internal error, 0.

Flag design_header_ok(FileObject *file);
// Tells whether a design file's header block starts at the present position: reads 80 bytes
// and compares them, as a NUL-terminated text, with "KX900 Design file \r\n" (so a zero byte
// must follow the CR LF). The position afterwards is the same as before.
// Returns 1 when they are equal; 0 when they differ or fewer than 80 bytes are there (nothing
// is reported: the caller decides). Only the binary modes 5, 7 and 8 may be checked: any other
// mode, a closed file or a null file is an internal error: 0.

// ---- Open-file statistics ------------------------------------------------------------------

Flag statistics_start(void);
// Switches the statistics on: takes the 25-slot table from the memory manager and opens
// "DATA.FI" (mode "wt") in the current directory, writes "Statistika otevrenych souboru\n" and
// clears the table. Returns 1. When the table or the log cannot be had the statistics stay
// off: 0 (no message). While the statistics are on a second call changes nothing: 1.

Flag statistics_end(void);
// When the statistics are on: writes "!!! Nebyl uzavren soubor %s" for every tracked file that
// is still open, then "Konec statistiky otevrenych souboru", closes the log, frees the table,
// switches the statistics off and prints "Statistika otevrenych souboru : DATA.FI\n" to
// standard output. When they are off it does nothing. Returns 1.

#endif
