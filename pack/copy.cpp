// copy.cpp - copying one file byte for byte: see copy.h.
#include "pack/copy.h"

#include "common/file.h"
#include "common/mm.h"
#include "common/we.h"
#include "pack/zip_util.h"
#include "platform/inst_plat.h"
#include "platform/wtext.h"

#include <stdio.h>

const char COPY_TEXT_OPEN[] = "Nelze otevřít soubor %s";
const char COPY_TEXT_WRITE[] = "Chyba při kopírování (zapsaná délka != přečtené délce)";

static const char MODULE[] = "copy";

// Smallest buffer worth asking for: halving stops below this (the last request is 15 bytes).
static const int32_t COPY_SMALLEST = 10;

// Buffer of each stream: the system calls per megabyte copied go down from about 100 to 8.
static const size_t COPY_STREAM_BUFFER = 256 * 1024;

// State of the one copy in progress.
static unsigned char *copy_buffer;
static FILE *copy_source;
static FILE *copy_target;

static CopyAllocator copy_allocator = mm_zalloc;

CopyAllocator copy_test_set_allocator(CopyAllocator allocator) {
  CopyAllocator previous = copy_allocator;
  copy_allocator = allocator ? allocator : mm_zalloc;
  return previous;
}

// Takes the largest buffer of the halving sequence the manager has; its size in *size.
static unsigned char *take_buffer(int32_t *size) {
  for (int32_t want = COPY_CHUNK; want >= COPY_SMALLEST; want /= 2) {
    unsigned char *block = (unsigned char *)copy_allocator(want, MODULE, __LINE__);
    if (block) {
      *size = want;
      return block;
    }
  }
  return NULL;
}

// Passes of the copy loop. Returns 1 when a short read ended it, 0 after the write message.
static Flag copy_passes(int32_t chunk) {
  for (;;) {
    size_t got = fread(copy_buffer, 1, (size_t)chunk, copy_source);
    if (fwrite(copy_buffer, 1, got, copy_target) != got) {
      ErrorBox(COPY_TEXT_WRITE);
      return 0;
    }
    if (got != (size_t)chunk) return 1;
  }
}

Flag CopyFile(const char *source, const char *target, const char *shown) {
  if (!source || !target) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  int32_t size = 0;
  copy_buffer = take_buffer(&size);
  if (!copy_buffer) {
    OutOfMemoryError();
    return 0;
  }
  Flag ok = 0;
  copy_source = wtext_fopen(source, "rb");
  if (!copy_source) {
    ErrorBoxF(COPY_TEXT_OPEN, shown ? shown : source);
  } else {
    copy_target = file_open_new_binary(target);
    if (!copy_target) {
      ErrorBoxF(COPY_TEXT_OPEN, target);
    } else {
      // Larger stream buffers than the runtime's 4 KB: the passes stay 32,767 bytes, but the
      // system is asked to read and write only every COPY_STREAM_BUFFER bytes. (The Windows
      // runtime takes the size; the GNU one keeps its own; either way nothing else changes.)
      setvbuf(copy_source, NULL, _IOFBF, COPY_STREAM_BUFFER);
      setvbuf(copy_target, NULL, _IOFBF, COPY_STREAM_BUFFER);
      ok = copy_passes(size);
      // The last bytes reach the disk only here: a full disk may show at the flush alone (an
      // explicit flush, because not every runtime's fclose reports a failed one).
      int flushed = fflush(copy_target);
      int closed = fclose(copy_target);
      if ((flushed != 0 || closed != 0) && ok) {
        ErrorBox(COPY_TEXT_WRITE);
        ok = 0;
      }
      copy_target = NULL;
    }
    fclose(copy_source);
    copy_source = NULL;
  }
  mm_free(copy_buffer, MODULE, __LINE__);
  copy_buffer = NULL;
  return ok;
}

// Closes a target written without a stream buffer; 0 (after the write message, unless one was
// shown already: written is 0 then) when its last bytes could not be handed over.
static Flag close_target(FILE *target, Flag written) {
  int flushed = fflush(target);
  int closed = fclose(target);
  if ((flushed != 0 || closed != 0) && written) {
    ErrorBox(COPY_TEXT_WRITE);
    return 0;
  }
  return written;
}

Flag CopyFileKeeping(const char *source, const char *target, unsigned char **data, uint32_t *length,
                     const char *shown, PlatFile *target_open) {
  if (!source || !target || !data || !length) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  *data = NULL;
  *length = 0;
  FILE *in = wtext_fopen(source, "rb");
  if (!in) {
    ErrorBoxF(COPY_TEXT_OPEN, shown ? shown : source);
    return 0;
  }
  long size = -1;
  if (fseek(in, 0, SEEK_END) == 0) size = ftell(in);
  unsigned char *block = NULL;
  if (size >= 0 && size < 0x7FFFFFFF && fseek(in, 0, SEEK_SET) == 0)
    block = (unsigned char *)mm_alloc(size > 0 ? (int32_t)size : 1, MODULE, __LINE__);
  if (!block) {
    fclose(in);
    return CopyFile(source, target, shown);
  }
  // No stream buffers: the one read and the one write go straight to the system.
  setvbuf(in, NULL, _IONBF, 0);
  size_t got = fread(block, 1, (size_t)size, in);
  fclose(in);
  if (target_open && plat_file_create_new(target_open, target)) {
    if (!plat_file_write(target_open, block, (uint32_t)got)) {
      ErrorBox(COPY_TEXT_WRITE);
      plat_file_close(target_open);
      mm_free(block, MODULE, __LINE__);
      return 0;
    }
    *data = block;
    *length = (uint32_t)got;
    return 1;
  }
  FILE *out = file_open_new_binary(target);
  if (!out) {
    ErrorBoxF(COPY_TEXT_OPEN, target);
    mm_free(block, MODULE, __LINE__);
    return 0;
  }
  setvbuf(out, NULL, _IONBF, 0);
  Flag ok = fwrite(block, 1, got, out) == got ? 1 : 0;
  if (!ok) ErrorBox(COPY_TEXT_WRITE);
  ok = close_target(out, ok);
  if (!ok) {
    mm_free(block, MODULE, __LINE__);
    return 0;
  }
  *data = block;
  *length = (uint32_t)got;
  return 1;
}

// ---- A new file for unpacked bytes ------------------------------------------------------------

namespace {

Flag unpack_open(void *context) {
  UnpackTarget *target = (UnpackTarget *)context;
  target->opened = 1;
  if (plat_file_create_new(target->file, target->path)) return 1;
  file_delete(target->path);
  if (plat_file_create_new(target->file, target->path)) return 1;
  if (!file_create(&target->object, target->path)) return 0;
  if (file_open(target->object, FILE_WRITE_BINARY)) return 1;
  file_destroy(&target->object);
  return 0;
}

Flag unpack_write(void *context, const void *data, uint32_t count) {
  UnpackTarget *target = (UnpackTarget *)context;
  if (target->object) return file_write(target->object, data, (int32_t)count);
  if (plat_file_write(target->file, data, count)) return 1;
  ErrorBoxF(FILE_TEXT_WRITE, target->path);
  return 0;
}

Flag unpack_close(void *context, Flag written) {
  UnpackTarget *target = (UnpackTarget *)context;
  if (target->object) return file_destroy(&target->object) && written;
  if (!written) plat_file_close(target->file);
  return written;
}

}  // namespace

ZipSink UnpackTargetSink(UnpackTarget *target, const char *path, PlatFile *file) {
  target->path = path;
  target->file = file;
  target->file->handle = -1;
  target->object = nullptr;
  target->opened = 0;
  ZipSink sink = {target, unpack_open, unpack_write, unpack_close};
  return sink;
}
