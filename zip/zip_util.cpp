// zip_util.cpp - packed files over zlib: see zip_util.h.
#include "zip_util.h"

#include "../common/file.h"
#include "../common/mm.h"
#include "../win/we.h"

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

Flag CompressBuffer(ZipUtil *zip, const void *data, uint32_t length, unsigned char **out, uint32_t *out_length) {
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
  int rc = compress2(buffer, &packed, data ? (const Bytef *)data : nothing, (uLong)length, zip->level);
  zip->last_error = (int16_t)rc;
  *out = buffer;  // kept on failure too: the caller frees it
  if (rc != Z_OK) return 0;
  *out_length = (uint32_t)packed;
  return 1;
}

// Releases everything of a failed inflation and records the code.
static Flag inflate_failed(ZipUtil *zip, z_stream *stream, unsigned char *buffer, int code) {
  if (stream) inflateEnd(stream);
  mm_free(buffer, MODULE, __LINE__);
  zip->last_error = (int16_t)code;
  return 0;
}

Flag DecompressBuffer(ZipUtil *zip, const void *data, uint32_t length, unsigned char **out, uint32_t *out_length) {
  if (!buffer_arguments_ok(zip, data, length, out, out_length, __LINE__)) return 0;
  *out_length = 0;
  uint64_t step = ((uint64_t)length + 255) & ~(uint64_t)255;
  if (step == 0) step = 256;  // an empty input still gets a buffer; inflate then says -5
  uint64_t capacity = step;
  unsigned char *buffer = capacity <= ZIP_BLOCK_MAX
                              ? (unsigned char *)mm_zalloc((int32_t)capacity, MODULE, __LINE__)
                              : NULL;
  if (!buffer) {
    zip->last_error = Z_MEM_ERROR;
    return 0;
  }

  z_stream stream;
  memset(&stream, 0, sizeof stream);  // zalloc, zfree, opaque null: zlib's own allocators
  stream.next_in = (Bytef *)data;
  stream.avail_in = (uInt)length;
  stream.next_out = buffer;
  stream.avail_out = (uInt)capacity;
  int rc = inflateInit(&stream);
  if (rc != Z_OK) return inflate_failed(zip, NULL, buffer, rc);

  for (;;) {
    rc = inflate(&stream, Z_NO_FLUSH);
    if (rc == Z_STREAM_END) break;
    if (rc != Z_OK) return inflate_failed(zip, &stream, buffer, rc);
    // Z_OK with room left means the input ran out: the next call reports it (-5). Grow only a
    // full buffer, by one step, copying only the bytes inflated so far (the rest is zero).
    if (stream.avail_out > 0) continue;
    uint64_t larger = capacity + step;
    unsigned char *grown = larger <= ZIP_BLOCK_MAX
                               ? (unsigned char *)mm_zalloc((int32_t)larger, MODULE, __LINE__)
                               : NULL;
    if (!grown) return inflate_failed(zip, &stream, buffer, Z_MEM_ERROR);
    uint64_t done = (uint64_t)stream.total_out;
    memcpy(grown, buffer, (size_t)done);
    mm_free(buffer, MODULE, __LINE__);
    buffer = grown;
    capacity = larger;
    stream.next_out = buffer + done;
    stream.avail_out = (uInt)(capacity - done);
  }

  uint32_t total = (uint32_t)stream.total_out;
  rc = inflateEnd(&stream);
  if (rc != Z_OK) return inflate_failed(zip, NULL, buffer, rc);
  zip->last_error = Z_OK;
  *out = buffer;
  *out_length = total;
  return 1;
}

// ---- Whole files -------------------------------------------------------------------------

// Reads the whole file into *data (null for an empty file) and *length. Returns 0 when the
// file cannot be opened (field left alone) or, with -10, when it cannot be read.
static Flag read_whole_file(ZipUtil *zip, const char *name, unsigned char **data, uint32_t *length) {
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
      buffer = (unsigned char *)mm_zalloc(size, MODULE, __LINE__);
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
  unsigned char *plain = NULL;
  uint32_t plain_length = 0;
  if (!DecompressBuffer(zip, data, length, &plain, &plain_length)) return 0;
  return write_whole_file(zip, file, plain, plain_length);
}

Flag CompressFileToBuffer(ZipUtil *zip, const char *file, unsigned char **out, uint32_t *out_length) {
  if (!zip || !file || !out || !out_length || *out) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  unsigned char *data;
  uint32_t length;
  if (!read_whole_file(zip, file, &data, &length)) return 0;
  Flag ok = CompressBuffer(zip, data, length, out, out_length);
  release(data, __LINE__);
  return ok;
}

Flag DecompressFileToBuffer(ZipUtil *zip, const char *file, unsigned char **out, uint32_t *out_length) {
  if (!zip || !file || !out || !out_length || *out) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  unsigned char *data;
  uint32_t length;
  if (!read_whole_file(zip, file, &data, &length)) return 0;
  Flag ok = DecompressBuffer(zip, data, length, out, out_length);
  release(data, __LINE__);
  return ok;
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
  unsigned char *plain = NULL;
  uint32_t plain_length = 0;
  Flag ok = DecompressBuffer(zip, data, length, &plain, &plain_length);
  release(data, __LINE__);
  if (!ok) return 0;
  return write_whole_file(zip, target, plain, plain_length);
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
