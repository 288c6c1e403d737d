// copy.h - copying one file byte for byte: the installer's road for files stored unpacked.
//
// windows.h defines CopyFile as a macro (CopyFileA); this header removes that macro so that our
// CopyFile keeps its name. A unit that needs both must include copy.h AFTER windows.h, and then
// calls the Win32 function, if at all, as CopyFileA.
#ifndef KX_COPY_H
#define KX_COPY_H

#include "common/co.h"

#ifdef CopyFile
#undef CopyFile
#endif

// Messages, Windows-1250.
extern const char COPY_TEXT_OPEN[];  // "Nelze otevřít soubor %s"
extern const char COPY_TEXT_WRITE[];  // "Chyba při kopírování (zapsaná délka != přečtené délce)"

// The size of the copy buffer asked for first, and the read size of a normal pass.
enum { COPY_CHUNK = 32767 };

Flag CopyFile(const char *source, const char *target, const char *shown = nullptr);
// Copies source to target byte for byte; target is created, or truncated when it exists. File
// dates and attributes are not copied (the target gets the present time). shown is the name the
// messages give for the source (null: source itself), for a caller that opens the source by
// another spelling of the same path.
//
// The files are C stdio streams ("rb", "wb"), not file layer objects, so they are not counted
// among the file layer's open files. The copy buffer comes from the memory manager (place
// "copy"): 32,767 bytes, or when the manager has none, 16,383, 8,191, ... down to 15 bytes
// (halved while the size is at least 10). Every pass reads up to 32,767 bytes, but never more
// than the buffer obtained: with a smaller buffer a pass reads the buffer's size. A pass that
// reads the full amount is followed by another; a shorter one (also 0 bytes) ends the copy, so
// a source of exactly 32,767 bytes takes two passes. A read error of the source is not told
// apart from its end.
//
// Returns 1 when the whole source was written and the target closed cleanly.
// Returns 0 after showing (module we, title " Chyba "):
//   " Málo paměti"                 not even 15 bytes of buffer; nothing is opened
//   "Nelze otevřít soubor %s"      with the source path: the source cannot be opened; no
//                                  target is created
//   "Nelze otevřít soubor %s"      with the target path: the target cannot be opened
//   "Chyba při kopírování (zapsaná délka != přečtené délce)"
//                                  the target took fewer bytes than were read (a full disk),
//                                  or could not flush its last bytes when closed
// A failed copy leaves whatever part of the target was written: it is neither removed nor
// truncated. The caller reports the failure again in its own words.
// A null source or target is an internal error ("copy"): 0.
//
// Keeps its state (buffer and both streams) in module variables for the length of one call:
// not re-entrant; the installer calls it from its one thread.

struct PlatFile;

Flag CopyFileKeeping(const char *source, const char *target, unsigned char **data, uint32_t *length,
                     const char *shown = nullptr, PlatFile *target_open = nullptr);
// CopyFile for a file whose bytes the caller uses next (a packed file, unpacked after its copy),
// so that it need not be read a second time: the source is read whole into one block of the
// memory manager (place "copy", not zero-filled) and written to the target in one write; the
// block goes to *data and the number of bytes copied to *length, and the caller frees it with
// mm_free. The target's bytes, the messages, the result and what a failure leaves are those of
// CopyFile (a short read of the source ends the copy with what was read). When the memory
// manager has no block of the file's size, or the size can't be learnt, the file is copied by
// CopyFile itself and *data stays null. After a failure *data is null.
// With target_open, a target that can be created as a new file is written through the
// platform (plat_file_create_new) and left open there after a good copy, for the caller to
// delete or close (its handle stays -1 when the copy took the stream road); after a failure it
// is closed.
// A null argument is an internal error ("copy"): 0.

// ---- For tests only ----------------------------------------------------------------------
// The memory manager's failure injection makes one request fail; the full halving sequence
// and the case where every size fails need a run of failures. Product code never calls this.

typedef void *(*CopyAllocator)(int32_t size, const char *file, int32_t line);
CopyAllocator copy_test_set_allocator(CopyAllocator allocator);
// Makes CopyFile take its buffer from allocator (which must hand out blocks that mm_free
// releases, or null) instead of mm_zalloc; null puts mm_zalloc back. Returns the previous one.

#endif

struct FileObject;
struct ZipSink;

// A new file for unpacked bytes, the context of the ZipSink that UnpackTargetSink makes. The
// file is created new through the platform (a file of that name is deleted first, but only when
// one is there: deleting a name that is not there costs a case-blind search of the directory
// under Wine); a name that can't be created new goes through the file layer's "wb" with its
// messages. After a good unpacking a platform file stays open in file, for the caller to rename
// by its handle or close; the caller closes it in every case (plat_file_close). opened tells
// whether the unpacking got as far as opening the file.
struct UnpackTarget {
  const char *path;
  PlatFile *file;
  FileObject *object;
  Flag opened;
};

ZipSink UnpackTargetSink(UnpackTarget *target, const char *path, PlatFile *file);
// Sets target up for path with file (its handle -1) and returns the sink that writes into it.
// A failed write of the platform's file shows FILE_TEXT_WRITE with the path.
