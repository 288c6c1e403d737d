// zip_util.cpp - packed files over zlib: see zip_util.h.
#include "pack/zip_util.h"

#include "common/file.h"
#include "common/mm.h"
#include "common/we.h"

#include <string.h>
#include <zlib.h>

static const char MODULE[] = "zip_util";

// Largest block the memory manager can be asked for.
static const uint64_t ZIP_BLOCK_MAX = 0x7FFFFFFF;

// Gives a block back; null is skipped so that the guarded log records no empty release.
static void release(void *block, int line) {
  if (block) mm_free(block, MODULE, line);
}

// ---- The object --------------------------------------------------------------------------

void ZipInit(ZipUtil *zip) {
  if (!zip) {
    InternalError(MODULE, __LINE__);
    return;
  }
  zip->level = -1;
  zip->block_size = 1024;
  zip->last_error = 0;
  zip->out_limit = 0;
}

Flag SetLevel(ZipUtil *zip, int16_t level) {
  if (!zip) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  if (level < -1 || level > 9) return 0;
  zip->level = level;
  return 1;
}

Flag SetBlockSize(ZipUtil *zip, uint16_t size) {
  if (!zip) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  zip->block_size = size;
  return 1;
}

int16_t GetError(const ZipUtil *zip) {
  if (!zip) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  return zip->last_error;
}

// ---- Buffers -----------------------------------------------------------------------------

// Guards shared by the buffer operations; reports and returns 0 when one fires.
static Flag buffer_arguments_ok(const ZipUtil *zip, const void *data, uint32_t length,
                                unsigned char **out, uint32_t *out_length, int line) {
  if (!zip || !out || !out_length || *out || (!data && length > 0)) {
    InternalError(MODULE, (int16_t)line);
    return 0;
  }
  return 1;
}

Flag CompressBuffer(ZipUtil *zip, const void *data, uint32_t length, unsigned char **out,
                    uint32_t *out_length) {
  if (!buffer_arguments_ok(zip, data, length, out, out_length, __LINE__)) return 0;
  static const Bytef nothing[1] = {0};
  *out_length = 0;
  uint64_t capacity = ((uint64_t)length + length / 10 + 267) & ~(uint64_t)255;
  unsigned char *buffer = capacity <= ZIP_BLOCK_MAX
                              ? (unsigned char *)mm_zalloc((int32_t)capacity, MODULE, __LINE__)
                              : NULL;
  if (!buffer) {
    zip->last_error = Z_MEM_ERROR;
    return 0;
  }
  uLongf packed = (uLongf)capacity;
  int rc =
      compress2(buffer, &packed, data ? (const Bytef *)data : nothing, (uLong)length, zip->level);
  zip->last_error = (int16_t)rc;
  *out = buffer;  // kept on failure too: the caller frees it
  if (rc != Z_OK) return 0;
  *out_length = (uint32_t)packed;
  return 1;
}

// ---- Inflating ---------------------------------------------------------------------------
//
// The output grows a step at a time (step = the packed length rounded up to 256), but bytes
// once inflated are never moved while inflating: the first block is one step (the result
// buffer as it starts, zero-filled when it may be handed out); when it is full, room is added
// as further blocks chained after it, each a whole number of steps and as large as all the
// room before it (at most ZIP_PIECE_MAX), so that a file of any ratio takes a handful of
// blocks and zlib writes each byte once. The room is always a whole number of steps, as the
// step-by-step growth gives. DecompressBuffer then joins the blocks into one zero-filled buffer of that many steps (no
// copy at all when the first block holds everything, as it does for every file that packs
// worse than about 1:1); the operations that end in a file write the blocks one after another
// and never need the joined copy, so a packed file's peak is its packed size plus its plain
// size.

// Largest block added at one time: big enough that the writes stay few, small enough that the
// unused end of the last block stays small.
static const uint32_t ZIP_PIECE_MAX = 8u << 20;

// Header of every block after the first; the room follows the header.
struct ZipPiece {
  ZipPiece *next;
  uint32_t capacity;  // bytes of room
  uint32_t used;      // bytes inflated into it
};

// The output of one inflation.
struct ZipInflated {
  unsigned char *first;  // the first block: one step, no header
  uint32_t first_used;
  uint32_t step;
  ZipPiece *pieces;  // the blocks after the first, in order
  uint32_t length;   // bytes inflated in all
};

static unsigned char *piece_room(ZipPiece *piece) { return (unsigned char *)(piece + 1); }

static void release_inflated(ZipInflated *inflated) {
  release(inflated->first, __LINE__);
  inflated->first = NULL;
  for (ZipPiece *piece = inflated->pieces; piece;) {
    ZipPiece *next = piece->next;
    mm_free(piece, MODULE, __LINE__);
    piece = next;
  }
  inflated->pieces = NULL;
}

// Releases everything of a failed inflation and records the code.
static Flag inflate_failed(ZipUtil *zip, z_stream *stream, ZipInflated *inflated, int code) {
  if (stream) inflateEnd(stream);
  release_inflated(inflated);
  zip->last_error = (int16_t)code;
  return 0;
}

// Inflates the zlib stream of length bytes at data into *inflated. Returns 1 (last error not
// yet set), or 0 with the code in the last-error field and nothing held.
// The first block is zero-filled only when it may be handed out (zero_first): the operations
// that end in a file write the inflated bytes alone, and filling memory that zlib overwrites at
// once costs a pass over it.
static Flag inflate_blocks(ZipUtil *zip, const void *data, uint32_t length, ZipInflated *inflated,
                           Flag zero_first) {
  memset(inflated, 0, sizeof *inflated);
  uint64_t step = ((uint64_t)length + 255) & ~(uint64_t)255;
  if (step == 0) step = 256;  // an empty input still gets a buffer; inflate then says -5
  if (step > ZIP_BLOCK_MAX) return inflate_failed(zip, NULL, inflated, Z_MEM_ERROR);
  inflated->step = (uint32_t)step;
  inflated->first = zero_first ? (unsigned char *)mm_zalloc((int32_t)step, MODULE, __LINE__)
                               : (unsigned char *)mm_alloc((int32_t)step, MODULE, __LINE__);
  if (!inflated->first) return inflate_failed(zip, NULL, inflated, Z_MEM_ERROR);
  // The largest block added at once: whole steps, at least one.
  uint64_t largest = ZIP_PIECE_MAX / step * step;
  if (largest < step) largest = step;

  z_stream stream;
  memset(&stream, 0, sizeof stream);  // zalloc, zfree, opaque null: zlib's own allocators
  stream.next_in = (Bytef *)data;
  stream.avail_in = (uInt)length;
  stream.next_out = inflated->first;
  stream.avail_out = (uInt)step;
  int rc = inflateInit(&stream);
  if (rc != Z_OK) return inflate_failed(zip, NULL, inflated, rc);

  uint64_t capacity = step;
  ZipPiece **tail = &inflated->pieces;
  ZipPiece *current = NULL;  // the block being filled; null for the first
  for (;;) {
    rc = inflate(&stream, Z_NO_FLUSH);
    if (rc == Z_STREAM_END) break;
    if (rc != Z_OK) return inflate_failed(zip, &stream, inflated, rc);
    // Z_OK with room left means the input ran out: the next call reports it (-5). Only a
    // full block gets more room after it.
    if (stream.avail_out > 0) continue;
    if (current) current->used = current->capacity;
    else inflated->first_used = (uint32_t)step;
    if (zip->out_limit && capacity >= zip->out_limit)
      return inflate_failed(zip, &stream, inflated, Z_BUF_ERROR);
    uint64_t more = capacity < largest ? capacity : largest;
    ZipPiece *piece =
        capacity + more <= ZIP_BLOCK_MAX
            ? (ZipPiece *)mm_alloc((int32_t)(sizeof(ZipPiece) + more), MODULE, __LINE__)
            : NULL;
    if (!piece) return inflate_failed(zip, &stream, inflated, Z_MEM_ERROR);
    piece->next = NULL;
    piece->capacity = (uint32_t)more;
    piece->used = 0;
    *tail = piece;
    tail = &piece->next;
    current = piece;
    capacity += more;
    stream.next_out = piece_room(piece);
    stream.avail_out = (uInt)more;
  }
  if (current) current->used = current->capacity - (uint32_t)stream.avail_out;
  else inflated->first_used = (uint32_t)step - (uint32_t)stream.avail_out;
  inflated->length = (uint32_t)stream.total_out;
  rc = inflateEnd(&stream);
  if (rc != Z_OK) return inflate_failed(zip, NULL, inflated, rc);
  return 1;
}

Flag DecompressBuffer(ZipUtil *zip, const void *data, uint32_t length, unsigned char **out,
                      uint32_t *out_length) {
  if (!buffer_arguments_ok(zip, data, length, out, out_length, __LINE__)) return 0;
  *out_length = 0;
  ZipInflated inflated;
  if (!inflate_blocks(zip, data, length, &inflated, 1)) return 0;
  unsigned char *buffer = inflated.first;
  if (inflated.pieces) {
    // Join: one zero-filled buffer of the whole steps that hold the data.
    uint64_t steps = ((uint64_t)inflated.length + inflated.step - 1) / inflated.step;
    uint64_t capacity = steps * inflated.step;
    buffer = capacity <= ZIP_BLOCK_MAX
                 ? (unsigned char *)mm_zalloc((int32_t)capacity, MODULE, __LINE__)
                 : NULL;
    if (!buffer) return inflate_failed(zip, NULL, &inflated, Z_MEM_ERROR);
    memcpy(buffer, inflated.first, inflated.first_used);
    uint32_t at = inflated.first_used;
    for (ZipPiece *piece = inflated.pieces; piece; piece = piece->next) {
      memcpy(buffer + at, piece_room(piece), piece->used);
      at += piece->used;
    }
    release_inflated(&inflated);
  }
  zip->last_error = Z_OK;
  *out = buffer;
  *out_length = inflated.length;
  return 1;
}

// ---- Whole files -------------------------------------------------------------------------

// Reads the whole file into *data (null for an empty file) and *length. Returns 0 when the
// file cannot be opened (field left alone) or, with -10, when it cannot be read.
static Flag read_whole_file(ZipUtil *zip, const char *name, unsigned char **data,
                            uint32_t *length) {
  *data = NULL;
  *length = 0;
  FileObject *file = NULL;
  if (!file_create(&file, name)) {
    zip->last_error = ZIP_FILE_ERROR;
    return 0;
  }
  if (!file_open(file, FILE_READ_BINARY)) {
    file_destroy(&file);
    return 0;
  }
  Flag ok = 0;
  unsigned char *buffer = NULL;
  int32_t size = -1;
  if (file_seek(file, 0, FILE_FROM_END)) size = file_tell(file);
  if (size >= 0 && file_seek(file, 0, FILE_FROM_START)) {
    if (size == 0) {
      ok = 1;
    } else {
      // Not zero-filled: the read overwrites all of it (and it is freed when the read fails).
      buffer = (unsigned char *)mm_alloc(size, MODULE, __LINE__);
      ok = buffer && file_read(file, buffer, size);
    }
  }
  file_close(file, 0);  // read only: nothing to flush
  file_destroy(&file);
  if (!ok) {
    release(buffer, __LINE__);
    zip->last_error = ZIP_FILE_ERROR;
    return 0;
  }
  *data = buffer;
  *length = (uint32_t)size;
  return 1;
}

// Writes length bytes of data to the file (created or truncated) and frees data whatever
// happens. Returns 1, or 0 with -10.
static Flag write_whole_file(ZipUtil *zip, const char *name, unsigned char *data, uint32_t length) {
  FileObject *file = NULL;
  Flag ok = 0;
  if (file_create(&file, name)) {
    if (file_open(file, FILE_WRITE_BINARY)) {
      ok = file_write(file, data, (int32_t)length);
      // The close flushes the last data: a full disk may show only here.
      if (!file_close(file, 0)) ok = 0;
    }
    file_destroy(&file);
  }
  release(data, __LINE__);
  if (!ok) {
    zip->last_error = ZIP_FILE_ERROR;
    return 0;
  }
  return 1;
}

// Writes the inflated blocks to the file (created or truncated), one write per block, and
// releases them whatever happens. Returns 1, or 0 with -10.
static Flag write_inflated(ZipUtil *zip, const char *name, ZipInflated *inflated) {
  FileObject *file = NULL;
  Flag ok = 0;
  if (file_create(&file, name)) {
    if (file_open(file, FILE_WRITE_BINARY)) {
      ok = file_write(file, inflated->first, (int32_t)inflated->first_used);
      for (ZipPiece *piece = inflated->pieces; ok && piece; piece = piece->next)
        ok = file_write(file, piece_room(piece), (int32_t)piece->used);
      // The close flushes the last data: a full disk may show only here.
      if (!file_close(file, 0)) ok = 0;
    }
    file_destroy(&file);
  }
  release_inflated(inflated);
  if (!ok) {
    zip->last_error = ZIP_FILE_ERROR;
    return 0;
  }
  zip->last_error = Z_OK;
  return 1;
}

Flag DecompressBufferToSink(ZipUtil *zip, const void *data, uint32_t length, const ZipSink *sink) {
  if (!zip || !data || length == 0 || !sink) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  ZipInflated inflated;
  if (!inflate_blocks(zip, data, length, &inflated, 0)) return 0;
  Flag ok = sink->open(sink->context);
  if (ok) {
    ok = sink->write(sink->context, inflated.first, inflated.first_used);
    for (ZipPiece *piece = inflated.pieces; ok && piece; piece = piece->next)
      ok = sink->write(sink->context, piece_room(piece), piece->used);
    ok = sink->close(sink->context, ok);
  }
  release_inflated(&inflated);
  zip->last_error = ok ? (int16_t)Z_OK : (int16_t)ZIP_FILE_ERROR;
  return ok;
}

Flag CompressBufferToFile(ZipUtil *zip, const void *data, uint32_t length, const char *file) {
  if (!zip || !data || length == 0 || !file) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  unsigned char *packed = NULL;
  uint32_t packed_length = 0;
  if (!CompressBuffer(zip, data, length, &packed, &packed_length)) {
    release(packed, __LINE__);
    return 0;
  }
  return write_whole_file(zip, file, packed, packed_length);
}

Flag DecompressBufferToFile(ZipUtil *zip, const void *data, uint32_t length, const char *file) {
  if (!zip || !data || length == 0 || !file) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  ZipInflated inflated;
  if (!inflate_blocks(zip, data, length, &inflated, 0)) return 0;
  return write_inflated(zip, file, &inflated);
}

typedef Flag (*BufferRoad)(ZipUtil *, const void *, uint32_t, unsigned char **, uint32_t *);

// The whole file read into memory, then the buffer road (packing or unpacking) over it.
static Flag file_to_buffer(ZipUtil *zip, const char *file, unsigned char **out,
                           uint32_t *out_length, BufferRoad road, int line) {
  if (!zip || !file || !out || !out_length || *out) {
    InternalError(MODULE, (int16_t)line);
    return 0;
  }
  unsigned char *data;
  uint32_t length;
  if (!read_whole_file(zip, file, &data, &length)) return 0;
  Flag ok = road(zip, data, length, out, out_length);
  release(data, __LINE__);
  return ok;
}

Flag CompressFileToBuffer(ZipUtil *zip, const char *file, unsigned char **out,
                          uint32_t *out_length) {
  return file_to_buffer(zip, file, out, out_length, CompressBuffer, __LINE__);
}

Flag DecompressFileToBuffer(ZipUtil *zip, const char *file, unsigned char **out,
                            uint32_t *out_length) {
  return file_to_buffer(zip, file, out, out_length, DecompressBuffer, __LINE__);
}

Flag CompressFile(ZipUtil *zip, const char *source, const char *target) {
  if (!zip || !source || !target) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  unsigned char *data;
  uint32_t length;
  if (!read_whole_file(zip, source, &data, &length)) return 0;
  unsigned char *packed = NULL;
  uint32_t packed_length = 0;
  Flag ok = CompressBuffer(zip, data, length, &packed, &packed_length);
  release(data, __LINE__);
  if (!ok) {
    release(packed, __LINE__);
    return 0;
  }
  return write_whole_file(zip, target, packed, packed_length);
}

Flag DecompressFile(ZipUtil *zip, const char *source, const char *target) {
  if (!zip || !source || !target) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  unsigned char *data;
  uint32_t length;
  if (!read_whole_file(zip, source, &data, &length)) return 0;
  ZipInflated inflated;
  Flag ok = inflate_blocks(zip, data, length, &inflated, 0);
  release(data, __LINE__);  // before the target is opened
  if (!ok) return 0;
  return write_inflated(zip, target, &inflated);
}

// ---- Measuring ---------------------------------------------------------------------------

Flag InflatedLength(ZipUtil *zip, const void *data, uint32_t length, uint32_t limit,
                    uint32_t *out_length) {
  if (!zip || !out_length || (!data && length)) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  *out_length = 0;
  if (length == 0) {
    zip->last_error = Z_BUF_ERROR;
    return 0;
  }
  unsigned char window[32768];
  z_stream stream;
  memset(&stream, 0, sizeof stream);
  stream.next_in = (Bytef *)data;
  stream.avail_in = length;
  int code = inflateInit(&stream);
  if (code != Z_OK) {
    zip->last_error = (int16_t)code;
    return 0;
  }
  uint64_t total = 0;
  do {
    stream.next_out = window;
    stream.avail_out = sizeof window;
    code = inflate(&stream, Z_NO_FLUSH);
    total += sizeof window - stream.avail_out;
    if (code == Z_OK && stream.avail_out != 0 && stream.avail_in == 0)
      code = Z_BUF_ERROR;  // cut short
  } while (code == Z_OK && total <= limit);
  inflateEnd(&stream);
  if (code != Z_OK && code != Z_STREAM_END) {
    zip->last_error = (int16_t)(code == Z_NEED_DICT ? Z_DATA_ERROR : code);
    return 0;
  }
  zip->last_error = 0;
  *out_length = total > limit ? (limit == 0xFFFFFFFFu ? limit : limit + 1) : (uint32_t)total;
  return 1;
}

// ---- Messages ----------------------------------------------------------------------------

const char *ZipErrorText(int16_t code) {
  switch (code) {
    case 0: return "Komprese/dekomprese dat bez chyb";
    case 1: return "Komprese/dekomprese dat - konec dat";
    case 2: return "Komprese/dekomprese dat - MSG_zip_need_dict";
    case -1: return "Komprese/dekomprese dat - chyba při práci se soubory";
    case -2: return "Komprese/dekomprese dat - neočekávaný konec dat";  // keep this pairing
    case -3: return "Komprese/dekomprese dat - chyba ve vstupních datech";
    case -4: return "Komprese/dekomprese dat - málo paměti";
    case -5: return "Komprese/dekomprese dat - nepostačující buffer";
    case -6: return "Komprese/dekomprese dat - chybná verze dat";
    case ZIP_FILE_ERROR: return "Komprese/dekomprese dat - chyba při práci se soubory";
    default: return "Neznámá chyba při kompresi/dekompresi dat";
  }
}
