// file.cpp - the file layer (see file.h).
#include "common/file.h"

#include "common/mm.h"
#include "common/st.h"
#include "common/we.h"
#include "platform/wtext.h"

#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#ifdef KX_WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

#define MODULE "file"

const char FILE_DESIGN_HEADER[] = "KX900 Design file \r\n";
const char FILE_TEXT_WRITE[] = "Do souboru %s nelze zapisovat (plný disk?)";

struct FileObject {
  int16_t mode;         // open mode, 0 while closed
  char path[KX_PATH];   // as given at creation (cut)
  FILE *stream;         // modes 1-8 while open
  const char *input;    // mode 10: the caller's buffer
  char *output;         // mode 11: the buffer the file allocated
  int32_t memory_size;  // size of input resp. output
  int32_t preset_size;  // size of the next mode-11 buffer, 0: the default
  int32_t position;     // modes 9-11
  int32_t length;       // modes 9-11: bytes written (mode 10: memory_size)
  Flag owns_memory;     // output is freed with the object
  Flag write_error;     // a write has failed and was reported since the open
};

// ---- Open-file statistics ------------------------------------------------------------------

namespace {

struct Slot {
  char path[1026];  // up to 1,025 characters
  FILE *stream;
};

Flag statistics_on = 0;
Slot *slots = nullptr;
FILE *statistics_log = nullptr;

unsigned char copy_buffer[FILE_COPY_BLOCK];

const char *const stream_modes[] = {"", "rt", "w+t", "w+t", "r+t", "rb", "wb", "w+b", "r+b"};

bool stream_mode(int16_t mode) { return mode >= 1 && mode <= 8; }
// The modes that read text lines; mode 2, a text mode too, reads length-prefixed strings.
bool line_mode(int16_t mode) { return mode == 1 || mode == 3 || mode == 4; }

// fopen, except that "wb" goes through file_open_new_binary.
FILE *open_stream(const char *path, const char *mode_text) {
  return strcmp(mode_text, "wb") == 0 ? file_open_new_binary(path) : wtext_fopen(path, mode_text);
}

void track_open(const char *path, const char *mode_text, FILE *stream) {
  fprintf(statistics_log, "Otevreni souboru %s v rezimu %s\n", path, mode_text);
  Slot *free_slot = nullptr;
  for (int i = 0; i < FILE_TRACKED && !free_slot; i++)
    if (!slots[i].stream) free_slot = &slots[i];
  if (!free_slot) {
    fprintf(statistics_log, "!!! Bylo otevreno vice nez %d souboru !!!\n", (int)FILE_TRACKED);
  } else if (stream) {
    st_put(free_slot->path, sizeof free_slot->path, path);
    free_slot->stream = stream;
  }
  if (!stream) fprintf(statistics_log, "!!! Neuspesne otevreni souboru %s\n", path);
  fflush(statistics_log);
}

void track_close(const char *path, FILE *stream) {
  for (int i = 0; i < FILE_TRACKED; i++) {
    if (slots[i].stream == stream) {
      fprintf(statistics_log, "Zavreni souboru %s otevreneho jako %s\n", path, slots[i].path);
      slots[i].stream = nullptr;
      slots[i].path[0] = 0;
      fflush(statistics_log);
      return;
    }
  }
  fprintf(statistics_log, "!!! Zavirany soubor nebyl otevren\n");
  fflush(statistics_log);
}

void write_failed(FileObject *file) {
  file->write_error = 1;
  ErrorBoxF(FILE_TEXT_WRITE, file->path);
}

void read_failed(const FileObject *file) { ErrorBoxF("Ze souboru %s nelze číst", file->path); }

void put_u32(unsigned char *p, uint32_t v) {
  p[0] = (unsigned char)v;
  p[1] = (unsigned char)(v >> 8);
  p[2] = (unsigned char)(v >> 16);
  p[3] = (unsigned char)(v >> 24);
}

uint32_t get_u32(const unsigned char *p) {
  return (uint32_t)p[0] | (uint32_t)p[1] << 8 | (uint32_t)p[2] << 16 | (uint32_t)p[3] << 24;
}

void free_output(FileObject *file) {
  if (file->owns_memory && file->output) mm_free(file->output, MODULE, __LINE__);
  file->output = nullptr;
  file->owns_memory = 0;
  file->memory_size = 0;
  file->length = 0;
}

// Text-mode line reader: at most FILE_LINE_MAX characters; the line break is taken when it
// comes right after them. Returns 1 for a line, 0 at the end (got nothing), -1 on a failure.
int read_text_line(FILE *stream, char *line) {
  int n = 0;
  bool got_break = false;
  int c = 0;
  while (n < FILE_LINE_MAX) {
    c = getc(stream);
    if (c == EOF) break;
    if (c == '\n') {
      got_break = true;
      break;
    }
#ifndef KX_WIN32
    if (c == '\r') {  // CR LF as Windows' text mode reads it
      int next = getc(stream);
      if (next == '\n') {
        got_break = true;
        break;
      }
      if (next != EOF) ungetc(next, stream);
    }
#endif
    line[n++] = (char)c;
  }
  line[n] = 0;
  if (ferror(stream)) return -1;
  if (n == FILE_LINE_MAX && !got_break) {
    // A full piece: take the line break when it is the next thing.
    c = getc(stream);
#ifndef KX_WIN32
    if (c == '\r') {
      int next = getc(stream);
      if (next == '\n') return 1;
      // A lone CR here is dropped: only one character can go back.
      c = next;
    }
#endif
    if (c != '\n' && c != EOF) ungetc(c, stream);
    if (ferror(stream)) return -1;
    return 1;
  }
  if (n == 0 && !got_break) return 0;
  return 1;
}

}  // namespace

Flag statistics_start(void) {
  if (statistics_on) return 1;
  statistics_on = 1;
  slots = (Slot *)mm_zalloc((int32_t)(FILE_TRACKED * sizeof(Slot)), MODULE, __LINE__);
  statistics_log = fopen("DATA.FI", "wt");
  if (!slots || !statistics_log) {
    if (statistics_log) fclose(statistics_log);
    if (slots) mm_free(slots, MODULE, __LINE__);
    statistics_log = nullptr;
    slots = nullptr;
    statistics_on = 0;
    return 0;
  }
  fprintf(statistics_log, "Statistika otevrenych souboru\n");
  fflush(statistics_log);
  for (int i = 0; i < FILE_TRACKED; i++) {
    slots[i].path[0] = 0;
    slots[i].stream = nullptr;
  }
  return 1;
}

Flag statistics_end(void) {
  if (!statistics_on) return 1;
  for (int i = 0; i < FILE_TRACKED; i++)
    if (slots[i].path[0] && slots[i].stream)
      fprintf(statistics_log, "!!! Nebyl uzavren soubor %s", slots[i].path);
  fprintf(statistics_log, "Konec statistiky otevrenych souboru");
  fclose(statistics_log);
  statistics_log = nullptr;
  mm_free(slots, MODULE, __LINE__);
  slots = nullptr;
  statistics_on = 0;
  printf("Statistika otevrenych souboru : %s\n", "DATA.FI");
  fflush(stdout);
  return 1;
}

// ---- Objects -------------------------------------------------------------------------------

Flag file_create(FileObject **result, const char *path) {
  if (!result) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  *result = nullptr;
  if (!path) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  FileObject *file = (FileObject *)mm_zalloc((int32_t)sizeof(FileObject), MODULE, __LINE__);
  if (!file) {
    OutOfMemoryError();
    return 0;
  }
  st_put(file->path, sizeof file->path, path);
  *result = file;
  return 1;
}

Flag file_destroy(FileObject **file) {
  if (!file || !*file) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  Flag ok = 1;
  if ((*file)->mode != 0) ok = file_close(*file, 0);
  free_output(*file);
  mm_free(*file, MODULE, __LINE__);
  *file = nullptr;
  return ok;
}

// ---- Opening and closing -------------------------------------------------------------------

Flag file_open(FileObject *file, int16_t mode) {
  if (!file) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  if (mode > 14) {  // fatal: no such mode at all
    InternalError(MODULE, __LINE__);
    return 0;
  }
  if (mode < 1 || mode >= 12) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  if (file->mode != 0) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  if (mode == FILE_COUNT) {
    file->position = 0;
    file->length = 0;
    file->mode = mode;
    return 1;
  }
  if (mode == FILE_MEMORY_READ) {
    if (!file->input || file->memory_size < 1) {
      InternalError(MODULE, __LINE__);
      return 0;
    }
    file->position = 0;
    file->length = file->memory_size;
    file->mode = mode;
    return 1;
  }
  if (mode == FILE_MEMORY_WRITE) {
    free_output(file);
    file->input = nullptr;
    int32_t size = file->preset_size > 0 ? file->preset_size : (int32_t)FILE_MEMORY_DEFAULT;
    file->output = (char *)mm_zalloc(size, MODULE, __LINE__);
    if (!file->output) {
      OutOfMemoryError();
      return 0;
    }
    file->owns_memory = 1;
    file->memory_size = size;
    file->position = 0;
    file->length = 0;
    file->mode = mode;
    return 1;
  }
  if (!file->path[0]) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  const char *mode_text = stream_modes[mode];
  if (statistics_on) {
    FILE *stream = open_stream(file->path, mode_text);
    track_open(file->path, mode_text, stream);
    file->stream = stream;
  } else {
    file->stream = open_stream(file->path, mode_text);
  }
  if (!file->stream) {
    ErrorBoxF("Soubor %s nelze otevřít", file->path);
    return 0;
  }
  file->mode = mode;
  file->position = 0;
  return 1;
}

Flag file_close(FileObject *file, Flag delete_after) {
  if (!file || file->mode == 0) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  if (!stream_mode(file->mode)) {
    file->mode = 0;
    file->position = 0;
    return 1;
  }
  if (statistics_on) track_close(file->path, file->stream);
  // The buffered rest goes out here. Flush explicitly: some runtimes (Wine's among them) do not
  // report a failed flush from fclose. A failure that was reported already is not told twice.
  int flushed = fflush(file->stream);
  int closed = fclose(file->stream);
  Flag ok = flushed == 0 && closed == 0;
  if (!ok && !file->write_error) write_failed(file);
  file->write_error = 0;
  file->stream = nullptr;
  file->mode = 0;
  file->position = 0;
  if (delete_after) wtext_remove(file->path);
  return ok;
}

FILE *file_open_new_binary(const char *path) {
  if (!path) return nullptr;
  int fd = wtext_open_new(path);
#ifdef KX_WIN32
  FILE *stream = fd >= 0 ? _fdopen(fd, "wb") : nullptr;
  if (fd >= 0 && !stream) _close(fd);
#else
  FILE *stream = fd >= 0 ? fdopen(fd, "wb") : nullptr;
  if (fd >= 0 && !stream) close(fd);
#endif
  return stream ? stream : wtext_fopen(path, "wb");
}

Flag file_flush(FileObject *file) {
  if (!file || file->mode == 0) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  if (!stream_mode(file->mode) || fflush(file->stream) == 0) return 1;
  if (!file->write_error) write_failed(file);
  return 0;
}

// ---- Blocks --------------------------------------------------------------------------------

Flag file_read(FileObject *file, void *buffer, int32_t count) {
  if (!file || !buffer || count < 1) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  if (file->mode == FILE_MEMORY_READ) {
    int32_t left = file->memory_size - file->position;
    int32_t n = count <= left ? count : left;
    if (n > 0) memcpy(buffer, file->input + file->position, (size_t)n);
    file->position += n;
    if (n < count) {
      read_failed(file);
      return 0;
    }
    return 1;
  }
  if (!stream_mode(file->mode)) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  if (fread(buffer, 1, (size_t)count, file->stream) != (size_t)count) {
    read_failed(file);
    return 0;
  }
  return 1;
}

Flag file_write(FileObject *file, const void *buffer, int32_t count) {
  if (!file || !buffer || count < 0) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  switch (file->mode) {
    case FILE_COUNT:
      file->position += count;
      if (file->position > file->length) file->length = file->position;
      return 1;
    case FILE_MEMORY_WRITE:
      if (count > file->memory_size - file->position) {
        write_failed(file);
        return 0;
      }
      if (count > 0) memcpy(file->output + file->position, buffer, (size_t)count);
      file->position += count;
      if (file->position > file->length) file->length = file->position;
      return 1;
    default: break;
  }
  if (!stream_mode(file->mode)) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  if (count == 0) return 1;
  if (fwrite(buffer, 1, (size_t)count, file->stream) != (size_t)count) {
    write_failed(file);
    return 0;
  }
  return 1;
}

// ---- Lines and strings ---------------------------------------------------------------------

Flag file_write_line(FileObject *file, const char *text) {
  if (!file || !text) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  if (!file_write(file, text, (int32_t)strlen(text))) return 0;
  return file_write(file, "\n", 1);
}

Flag file_write_string(FileObject *file, const char *text) {
  if (!file || !text) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  size_t length = strlen(text);
  unsigned char head[8];
  put_u32(head, 0);
  put_u32(head + 4, (uint32_t)length);
  if (!file_write(file, head, 8)) return 0;
  return file_write(file, text, (int32_t)length);
}

Flag file_read_line(FileObject *file, char *buffer, int32_t size) {
  if (!file || !buffer || size < 1) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  buffer[0] = 0;
  if (!stream_mode(file->mode)) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  if (line_mode(file->mode)) {
    char line[FILE_LINE_MAX + 2];
    int got = read_text_line(file->stream, line);
    if (got < 0) {
      read_failed(file);
      return 0;
    }
    if (got == 0) return 0;
    st_put(buffer, (size_t)size, line);
    return 1;
  }
  unsigned char head[8];
  if (!file_read(file, head, 8)) return 0;
  int32_t length = (int32_t)get_u32(head + 4);
  if (length < 1) return 1;
  if (length > size) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  int32_t kept = length < size ? length : size - 1;
  if (kept > 0 && !file_read(file, buffer, kept)) {
    buffer[0] = 0;
    return 0;
  }
  buffer[kept] = 0;
  if (kept < length) {
    char dropped;
    if (!file_read(file, &dropped, 1)) return 0;
  }
  return 1;
}

// ---- Position ------------------------------------------------------------------------------

int32_t file_tell(FileObject *file) {
  if (!file || file->mode == 0) {
    InternalError(MODULE, __LINE__);
    return -1;
  }
  if (!stream_mode(file->mode)) return file->position;
  long at = ftell(file->stream);
  if (at < 0) {
    InternalError(MODULE, __LINE__);
    return -1;
  }
  return (int32_t)at;
}

Flag file_seek(FileObject *file, int32_t offset, int16_t origin) {
  if (!file || file->mode == 0 || origin < FILE_FROM_START || origin > FILE_FROM_END) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  if (stream_mode(file->mode)) {
    if (fseek(file->stream, offset, origin) != 0) {
      InternalError(MODULE, __LINE__);
      return 0;
    }
    return 1;
  }
  int64_t base = origin == FILE_FROM_START  ? 0
                 : origin == FILE_FROM_HERE ? file->position
                                            : file->length;
  int64_t at = base + offset;
  int64_t limit = file->mode == FILE_COUNT ? INT32_MAX : file->memory_size;
  if (at < 0 || at > limit) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  file->position = (int32_t)at;
  return 1;
}

int32_t file_size(FileObject *file) {
  if (!file) {
    InternalError(MODULE, __LINE__);
    return -1;
  }
  if (file->mode == 0) {
    if (!file->input && !file->output && file->length == 0) {
      InternalError(MODULE, __LINE__);
      return -1;
    }
    return file->length;
  }
  if (!stream_mode(file->mode)) return file->length;
  long here = ftell(file->stream);
  if (here < 0 || fseek(file->stream, 0, SEEK_END) != 0) {
    InternalError(MODULE, __LINE__);
    return -1;
  }
  long end = ftell(file->stream);
  fseek(file->stream, here, SEEK_SET);
  return (int32_t)end;
}

// ---- Memory modes --------------------------------------------------------------------------

Flag file_set_memory(FileObject *file, const void *buffer, int32_t size) {
  if (!file || file->mode != 0) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  free_output(file);
  file->input = (const char *)buffer;
  file->memory_size = size;
  return 1;
}

Flag file_set_memory_size(FileObject *file, int32_t size) {
  if (!file || size < 1) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  file->preset_size = size;
  return 1;
}

const char *file_memory(FileObject *file, int32_t *length) {
  if (length) *length = 0;
  if (!file) {
    InternalError(MODULE, __LINE__);
    return nullptr;
  }
  const char *memory = file->output ? file->output : file->input;
  if (memory && length) *length = file->output ? file->length : file->memory_size;
  return memory;
}

// ---- Files on disk -------------------------------------------------------------------------

Flag file_exists(const char *path) {
  if (!path) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  return wtext_exists(path);
}

Flag file_delete(const char *path) {
  if (!path) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  return wtext_remove(path);
}

// ---- Copying and the design header ---------------------------------------------------------

Flag file_copy_block(FileObject *destination, FileObject *source, int32_t offset, int32_t count) {
  if (!destination || !source || count < 0) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  if (destination->mode == FILE_COUNT) {
    // Forward by count; to offset + count when that lies beyond the present length.
    int64_t end = (int64_t)offset + count;
    if (offset >= 0 && end > destination->length && end <= INT32_MAX) {
      destination->position = (int32_t)end;
      destination->length = (int32_t)end;
      return 1;
    }
    destination->position += count;
    if (destination->position > destination->length) destination->length = destination->position;
    return 1;
  }
  if (!stream_mode(destination->mode) || !stream_mode(source->mode)) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  if (fseek(source->stream, offset, SEEK_SET) != 0) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  while (count > 0) {
    size_t n = count < FILE_COPY_BLOCK ? (size_t)count : (size_t)FILE_COPY_BLOCK;
    if (fread(copy_buffer, 1, n, source->stream) != n) {
      ErrorBox("Chyba kopírování - čtení !");
      return 0;
    }
    if (fwrite(copy_buffer, 1, n, destination->stream) != n) {
      ErrorBox("Chyba kopírování - zápis !");
      return 0;
    }
    count -= (int32_t)n;
  }
  return 1;
}

Flag design_header_ok(FileObject *file) {
  if (!file) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  switch (file->mode) {
    case FILE_READ_BINARY:
    case FILE_WRITE_READ_BINARY:
    case FILE_UPDATE_BINARY: break;
    case FILE_COUNT:
    case FILE_MEMORY_READ:
    case FILE_MEMORY_WRITE: InternalError(MODULE, __LINE__); return 0;
    default:  // text modes, write-only binary, closed: no header can be read here
      InternalError(MODULE, __LINE__);
      return 0;
  }
  long at = ftell(file->stream);
  if (at < 0) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  char block[FILE_HEADER_SIZE + 1];
  size_t got = fread(block, 1, FILE_HEADER_SIZE, file->stream);
  clearerr(file->stream);
  fseek(file->stream, at, SEEK_SET);
  if (got != FILE_HEADER_SIZE) return 0;
  block[FILE_HEADER_SIZE] = 0;
  return strcmp(block, FILE_DESIGN_HEADER) == 0 ? 1 : 0;
}
