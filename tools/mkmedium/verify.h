// verify.h - checks an installation medium the way the installer will read it, before it goes
// out: a flat directory, a set of disk directories DISK1, DISK2, ..., a CD image or a set of
// floppy images (those two are unpacked into a scratch directory first, see release.h).
//
// What is checked, each fault one line (UTF-8, names in the form SUBDIR\NAME):
//   - DISKLIST.LST is on the first disk and holds its header and as many records as it counts;
//   - each disk's identification file (A.KORV on disk 1, B.KORV on disk 2, ...; a flat medium
//     only A.KORV) is there, names its own number with "DISK:" and holds no other keyword;
//   - each record's installed name, stored name and subdirectory are plain names Windows takes
//     (no path, no device name, no control character, "." only as the subdirectory); a record
//     with such a name is not looked up on the medium at all;
//   - each stored file is on the disk the record names (a flat medium: in the directory; the
//     disk number of a split medium must be one of its disks), found without regard to case,
//     and on no other disk of a split medium;
//   - a packed file inflates (zlib: header and Adler-32) to exactly the size in the list, a
//     plain file has exactly that size.
// A medium without a line installs without a question but the one for each disk.
//
// The checker reads the medium only through the two calls of VerifyAccess, so the same code
// checks a directory (verify_directory) and, in the fuzzer, a medium held in memory. Lists
// are read through ilst, packed files inflated through zip_util.
#ifndef KX_VERIFY_H
#define KX_VERIFY_H

#include "common/co.h"

#include <stdio.h>

// Finds file name (Windows-1250) on disk (0-based). Returns 1 with *size set when it is there,
// 0 when it is not (also for a disk the medium does not have).
typedef Flag (*VerifyFind)(void *context, uint16_t disk, const char *name, uint64_t *size);

// Reads file name of disk into a new block from the memory manager (the caller frees it with
// mm_free; null for an empty file) and its length. Returns 1; 0 when the file is missing, cannot
// be read or is 2 GiB or more.
typedef Flag (*VerifyLoad)(void *context, uint16_t disk, const char *name, unsigned char **bytes,
                           uint32_t *length);

// Takes one line of the report (UTF-8, no line end).
typedef void (*VerifyLine)(void *context, const char *line);

struct VerifyAccess {
  void *context;   // handed to find and load
  uint16_t disks;  // disks of a split medium, 1 to 26; 1 for a flat medium
  int16_t flat;    // 1: every file in one place, the records' disk numbers are not checked
  VerifyFind find;
  VerifyLoad load;
  VerifyLine line;  // null: the lines are only counted
  void *line_context;
};

struct VerifyResult {
  uint32_t records;   // records checked
  uint32_t problems;  // lines reported
  uint16_t packed;    // the header's packed word
  int16_t listed;     // 1 when the list's header was read
};

Flag verify_check(const VerifyAccess *access, VerifyResult *result);
// Checks the medium behind access and reports every fault through access->line. Returns 1 when
// there was none, 0 otherwise (result->problems lines). Null access, result, find or load, or
// disks outside 1..26: InternalError("verify", line) and 0.
// Lines (N a record's 1-based number, NAME its installed path, STORED its stored name, D a
// 1-based disk number):
//   "DISKLIST.LST: not on the first disk" / "DISKLIST.LST: N bytes, shorter than a list header"
//   "DISKLIST.LST: the header counts N records, the file holds N"
//   "DISKD: A.KORV is missing" / "DISKD: A.KORV says DISK: N" /
//      "DISKD: A.KORV holds the unknown keyword WORD"
//   "record N: the installed name "TEXT" ..." / "record N: the stored name ..." /
//      "record N: the subdirectory ..." (a name Windows does not take, with why)
//   "record N NAME: the list puts it on DISKD, the medium has N disk(s)"
//   "record N NAME: STORED is on DISKD, the list says DISKD"
//   "record N NAME: STORED is on DISKD too, the installer may take that one"
//   "record N NAME: STORED is missing" (from DISKD on a split medium)
//   "record N NAME: STORED cannot be read"
//   "record N NAME: STORED has N bytes, the list says N"
//   "record N NAME: STORED is not a good zlib stream (damaged data or Adler-32)"
//   "record N NAME: STORED is cut short"
//   "record N NAME: STORED inflates to N bytes, the list says N"
//   "record N NAME: STORED inflates to at least N bytes, the list says N" (inflating stops
//      64 MiB past the listed size)
//   "record N NAME: STORED does not inflate: zlib error N"

Flag verify_directory(const char *path, FILE *out, VerifyResult *result, char *message,
                      size_t size);
// Checks the medium in directory path: flat when path holds DISKLIST.LST, else split when it
// holds DISK1 (then DISK2, ... as long as they follow each other). Writes the lines to out and
// then the summary "verify: N records on D disk(s), packed|plain: no problems" or "...: N
// problem(s)" ("no list" in place of packed or plain when its header cannot be read). Returns 1 for a medium without a fault; 0 with the summary written when it has
// faults, or 0 with message (nothing written) when path is no medium: "PATH: not a directory",
// "PATH: neither DISKLIST.LST nor DISK1 is there", "PATH: the path is too long", "out of memory".

#endif
