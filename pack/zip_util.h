// zip_util.h - packed files: whole buffers and whole files compressed and inflated with zlib.
//
// A packed file is exactly one zlib stream (RFC 1950: two-byte zlib header, deflate data,
// big-endian Adler-32 of the plain data) and nothing else: no header of ours, no magic word, no
// stored plain size, name or date. It is what zlib's one-call compress2 writes for the whole
// plain file, so any tool that writes one plain zlib stream per file can make the medium. Raw
// deflate data without the zlib header is refused (-3). Bytes after the end of the stream are
// ignored. The plain size is not known before inflating: the reader grows its output as it goes.
//
// A ZipUtil is a small plain record: one per use (the installer makes one on the stack for each
// packed file). It holds no zlib stream between calls: every operation opens, uses and ends its
// own stream and its own files, so one object may serve any number of operations; only the
// last error carries from one call to the next.
//
// Memory: buffers handed out (the out arguments) come from the memory manager, zero-filled,
// placed "zip_util" and a line (mm_zalloc); the caller owns them and gives them back with
// mm_free. Every block an operation takes for itself is released before it returns. zlib's own
// state is allocated by zlib with its default allocators (malloc/free) and always ended.
//
// Files go through the file layer (common/file.h), which shows its own message for a file that
// cannot be opened, read or written ("Soubor %s nelze otevřít", "Ze souboru %s nelze číst",
// "Do souboru %s nelze zapisovat (plný disk?)"). The module itself shows no message except the
// internal-error report of an argument guard; it reports through the flag and the last-error
// field, and the caller decides what to show -- the installer shows ErrorBox(ZipErrorText(
// GetError(&zip))), so for one file fault the user sees the file layer's box, then that one.
//
// Last error: the code of the last failure, as in the table of ZipErrorText; 0 after a
// successful operation. It is set by every operation that gets past its argument guards, with
// ONE deliberate exception: when the source file of the operations that start from a file
// cannot be opened, the field is left as it was (the file layer has already told the user).
// Argument guards report InternalError("zip_util", line) and return 0 without touching it.
//
// One thread only, like the rest of the suite.
#ifndef KX_ZIP_UTIL_H
#define KX_ZIP_UTIL_H

#include "common/co.h"

struct ZipUtil {
  int16_t level;        // 0..9, or -1 (held as 0xFFFF) for zlib's default
  uint16_t block_size;  // set and kept, read by nothing
  int16_t last_error;   // code of the last failure (see ZipErrorText)
  uint32_t out_limit;   // 0, or the most plain bytes an inflation may give (see below)
};

// Error codes of the last-error field: zlib's own (Z_OK 0, Z_STREAM_END 1, Z_NEED_DICT 2,
// Z_ERRNO -1, Z_STREAM_ERROR -2, Z_DATA_ERROR -3, Z_MEM_ERROR -4, Z_BUF_ERROR -5,
// Z_VERSION_ERROR -6) and one of ours: a file's contents could not be read, a buffer for them
// could not be had, or the target could not be opened or written.
enum { ZIP_FILE_ERROR = -10 };

// ---- The object --------------------------------------------------------------------------

void ZipInit(ZipUtil *zip);
// Constructs: level -1 (zlib's default), block size 1024, last error 0 -- so a first failure
// that leaves the field alone (a source that cannot be opened) reads as "bez chyb" rather than
// as garbage -- and no output limit. A null zip is an internal error (nothing else happens).
//
// The output limit guards against a packed file that inflates without end (a decompression
// bomb: a few kilobytes that would give gigabytes). When out_limit is not 0 and an inflation
// needs more room than out_limit bytes, it stops before taking that room: everything is
// released, the last error is -5 (Z_BUF_ERROR, "nepostačující buffer") and the operation
// returns 0; nothing is written. Set it after ZipInit; 0 (the default) allows up to 2 GB.

Flag SetLevel(ZipUtil *zip, int16_t level);
// Stores level when it is 0 to 9 or -1 and returns 1. Any other value returns 0, without a
// message, and leaves the level as it was. The last error is not touched. A null zip is an
// internal error: 0.

Flag SetBlockSize(ZipUtil *zip, uint16_t size);
// Stores size (no operation reads it) and returns 1. A null zip is an internal error: 0.

int16_t GetError(const ZipUtil *zip);
// The last-error field. A null zip is an internal error: 0.

// ---- Buffers -----------------------------------------------------------------------------
// Common guards of the buffer operations (internal error, 0, field untouched): a null zip, a
// null out or out_length, an *out that is not null on entry (it would be lost), and null data
// with a non-zero length. Null data with length 0 is an empty input.

Flag CompressBuffer(ZipUtil *zip, const void *data, uint32_t length, unsigned char **out,
                    uint32_t *out_length);
// Packs length bytes at data into a new buffer with compress2 at the object's level.
// The buffer's capacity is (length + length / 10 + 267) with the low eight bits cleared (0
// bytes -> 256, 1,000 -> 1,280, 10,000 -> 11,264): enough for zlib's worst case.
// Returns 1 with *out the buffer, *out_length the packed size, last error 0.
// Returns 0 with:
//   -4  the buffer could not be had (or the capacity exceeds what the manager can give):
//       *out null, *out_length 0;
//   compress2's code (-2 for a level outside -1..9 written straight into the record, -4 when
//       zlib has no memory): the buffer STAYS in *out (*out_length 0); the caller frees it
//       with mm_free. (mm_free accepts null, so a caller may free *out after any failure.)

Flag DecompressBuffer(ZipUtil *zip, const void *data, uint32_t length, unsigned char **out,
                      uint32_t *out_length);
// Inflates the zlib stream of length bytes at data into a new buffer.
// The output grows by whole steps, step = length rounded up to a multiple of 256 (at least
// 256): it starts as one zero-filled step, and the buffer handed out holds the least number of
// steps that hold the data. Inflated bytes are not moved while the output grows (more room
// is chained on, each time as much as there is, up to 8 MB or one step), and they are joined
// into that buffer once at the end -- or not at all when the first step holds everything. So
// the cost is one inflation and at most one copy, at any compression ratio.
// Returns 1 with *out the buffer (its capacity may be larger than the data; the rest is zero),
// *out_length the exact inflated length, last error 0. Bytes after the end of the stream are
// ignored.
// Returns 0 with *out null and *out_length 0 and every block and the zlib state released:
//   -3  not a zlib stream (raw deflate, bad header), damaged data or a wrong Adler-32;
//   -5  the stream ends early (cut short), or the input is empty (length 0);
//   -4  no memory for the first buffer or for a larger one (or the output would exceed what
//       the manager can give), or zlib has no memory;
//   -2, -6 and any other code zlib gives (inflateInit, inflate or inflateEnd).

// ---- Buffers to and from files -----------------------------------------------------------
// Reading a whole file (the operations that start from a file): the file is opened binary
// through the file layer ("rb"), its size taken by seeking to the end, the whole of it read
// into a block (none for an empty file; not zero-filled, as the read fills it) and the file
// closed; the block is freed as soon as the buffer operation has returned. When the file
// cannot be opened the operation returns 0 at once and leaves the last error as it was; when
// the file layer object, the block or the read fails: last error -10.
//
// Writing a whole file (the operations that end in a file): the target is opened binary
// through the file layer ("wb": created, or truncated when it exists) only after the buffer
// operation has succeeded, so a failed compression or inflation writes no target and leaves an
// existing one untouched. The result is written in one write and the file closed; a target
// that cannot be opened, written or closed (its last data flushed) gives -10 and leaves
// whatever part was written in place. The result block is freed in every case.

Flag CompressBufferToFile(ZipUtil *zip, const void *data, uint32_t length, const char *file);
// Packs length bytes at data (CompressBuffer) and writes the packed form to file.
// Returns 1 (last error 0), or 0 with CompressBuffer's code or -10.
// Guards: a null zip, null data, a zero length, a null file.

Flag DecompressBufferToFile(ZipUtil *zip, const void *data, uint32_t length, const char *file);
// Inflates the stream of length bytes at data (DecompressBuffer) and writes the plain data to
// file. Returns 1 (last error 0), or 0 with DecompressBuffer's code or -10.
// Guards: a null zip, null data, a zero length, a null file.

// Where DecompressBufferToSink puts the plain data: opened once inflating has succeeded, given
// the data piece by piece, then closed. open and write return 1, or 0 after their own message;
// close is told whether all went in (written) and returns the result.
struct ZipSink {
  void *context;
  Flag (*open)(void *context);
  Flag (*write)(void *context, const void *data, uint32_t count);
  Flag (*close)(void *context, Flag written);
};

Flag DecompressBufferToSink(ZipUtil *zip, const void *data, uint32_t length, const ZipSink *sink);
// DecompressBufferToFile with the file's part done by sink: -10 when open, a write or close
// fails (close is called whenever open succeeded). Guards: a null zip, null data, a zero
// length, a null sink.

Flag CompressFileToBuffer(ZipUtil *zip, const char *file, unsigned char **out,
                          uint32_t *out_length);
// Reads the whole file and packs it as CompressBuffer does; *out and *out_length as there
// (after a failed compress2 the buffer stays in *out for the caller to free). An empty file
// packs to the 8-byte stream of no data.
// Returns 1, or 0: file not opened (field unchanged), -10, or CompressBuffer's codes.
// Guards: a null zip, a null file, a null out or out_length, *out not null.

Flag DecompressFileToBuffer(ZipUtil *zip, const char *file, unsigned char **out,
                            uint32_t *out_length);
// Reads the whole packed file and inflates it as DecompressBuffer does (an empty file: -5).
// Returns 1, or 0 with *out null: file not opened (field unchanged), -10, or
// DecompressBuffer's codes.
// Guards: a null zip, a null file, a null out or out_length, *out not null.

Flag CompressFile(ZipUtil *zip, const char *source, const char *target);
// Packs the whole source file into target (read half, CompressBuffer, write half).
// Returns 1, or 0: source not opened (field unchanged), -10, or CompressBuffer's codes (no
// target then). Guards: a null zip, source or target.

Flag DecompressFile(ZipUtil *zip, const char *source, const char *target);
// Inflates the packed source file into target: the installer's one call per packed file.
// The inflated steps are written one after another, never joined: the most held at once is
// the packed file and its plain data.
// The target may exist; it is truncated and rewritten -- but only once inflating has
// succeeded: a damaged or cut source (-3, -5), an empty source (-5) or a memory failure (-4)
// leaves no new target and an existing one untouched. The source is never modified.
// Returns 1 (the target holds exactly the inflated bytes), or 0: source not opened (field
// unchanged), -10, or DecompressBuffer's codes. Guards: a null zip, source or target.

// ---- Measuring ---------------------------------------------------------------------------

Flag InflatedLength(ZipUtil *zip, const void *data, uint32_t length, uint32_t limit,
                    uint32_t *out_length);
// How many bytes the zlib stream of length bytes at data inflates to, without keeping them: it
// is inflated through a small window of its own (nothing from the memory manager), so a packed
// file that would give gigabytes costs no memory, and the inflating stops as soon as more than
// limit bytes have come. The output limit of the object is not used.
// Returns 1, last error 0, with *out_length the inflated length when the stream ends (header
// and Adler-32 checked) within limit bytes, or limit + 1 (limit when limit is 0xFFFFFFFF) when
// the stream gives more -- whether the rest of it is good is not known then.
// Returns 0 with *out_length 0 and the last error:
//   -3  not a zlib stream, damaged data or a wrong Adler-32 (a stream asking for a preset
//       dictionary too);
//   -5  the stream ends early (cut short), or the input is empty (length 0);
//   -4, -2, -6 and any other code zlib gives.
// Guards (internal error, 0, field untouched): a null zip or out_length, null data with a
// non-zero length.

// ---- Messages ----------------------------------------------------------------------------

const char *ZipErrorText(int16_t code);
// The message of an error code, a static text (Windows-1250):
//     0  "Komprese/dekomprese dat bez chyb"
//     1  "Komprese/dekomprese dat - konec dat"
//     2  "Komprese/dekomprese dat - MSG_zip_need_dict"
//    -1  "Komprese/dekomprese dat - chyba při práci se soubory"
//    -2  "Komprese/dekomprese dat - neočekávaný konec dat"     (zlib's stream error; keep this
//                                                              pairing as it stands)
//    -3  "Komprese/dekomprese dat - chyba ve vstupních datech"
//    -4  "Komprese/dekomprese dat - málo paměti"
//    -5  "Komprese/dekomprese dat - nepostačující buffer"
//    -6  "Komprese/dekomprese dat - chybná verze dat"
//   -10  "Komprese/dekomprese dat - chyba při práci se soubory"  (the same text as -1)
//   any other code: "Neznámá chyba při kompresi/dekompresi dat"

#endif
