// file.h - the file layer. (Interface fixed for the calls below; the module's owner adds the rest
// and documents each call in full.)
#ifndef KX_FILE_H
#define KX_FILE_H

#include "co.h"

struct FileObject;

Flag file_create(FileObject **result, const char *path);
Flag file_destroy(FileObject **file);
Flag file_open(FileObject *file, int16_t mode);
Flag file_close(FileObject *file, Flag delete_after);
Flag file_read(FileObject *file, void *buffer, int32_t count);
Flag file_write(FileObject *file, const void *buffer, int32_t count);
Flag file_write_line(FileObject *file, const char *text);
Flag file_read_line(FileObject *file, char *buffer, int32_t size);
Flag file_exists(const char *path);
Flag file_delete(const char *path);
Flag statistics_start(void);
Flag statistics_end(void);

#endif
