// ilst.h - the install lists as bytes: DISKLIST.LST (header and file records), UNINST.LST
// records, and the names of the per-disk identification files.
//
// This module only turns records into bytes and bytes into records; it opens no file. The
// installer reads and writes the lists through the file layer and hands the blocks here; the
// medium builder (tools/mkmedium) writes DISKLIST.LST the same way; the fuzzers feed it any
// bytes. Every field is written and read one by one at its offset, little-endian, never by
// copying a struct.
//
// Texts are Windows-1250 and NUL-terminated inside their fixed fields. Decoding is bounded: a
// text is taken up to its first NUL and at most up to its limit (ILST_NAME_MAX, ...), so a field
// filled to the last byte without a NUL is cut, never read past; bytes after the NUL are
// ignored. Encoding writes at most the limit's characters and fills the rest of the field with
// zero bytes; the in-memory texts are read no further than their arrays, so an unterminated
// array is cut the same way.
//
// A null argument is a programming error: InternalError("ilst", line), result 0, nothing
// written.
//
// ---- DISKLIST.LST ----------------------------------------------------------------------------
//
// A 92-byte header, then one 140-byte record per file in install order. The installer asks for
// a disk whenever the next file is not in the source directory, so the records of one disk
// stand together.
//
// Header (ILST_HEADER_SIZE = 92):
//
//   offset  width     field
//    0      u16       reserved0        not read by the installer
//    2      char[82]  text             not read by the installer; our media carry a product
//                                      title here (at most 80 characters), zeros after it
//   84      u16       reserved84       not read by the installer
//   86      u16       count            number of file records that follow
//   88      u16       reserved88       not read by the installer
//   90      u16       packed           non-zero: every stored file is one zlib stream that is
//                                      inflated after copying; zero: stored as installed
//
// File record (ILST_RECORD_SIZE = 140):
//
//   offset  width     field
//    0      char[17]  name             installed file name, at most 16 characters
//   17      char[17]  stored           name of the file on the medium, at most 16 characters
//   34      char[17]  directory        subdirectory of the target (one component), or "."
//   51      u8        (padding, written as 0, not read)
//   52      u32       size             size of the installed file in bytes
//   56      u16       disk             0-based disk number (disk 1 is 0)
//   58      char[82]  description      at most 80 characters
//
// ---- UNINST.LST --------------------------------------------------------------------------------
//
// Records of ILST_UNINSTALL_SIZE = 1028 bytes, appended in the order things were created:
//
//   offset  width       field
//    0      u16         kind             UNINST_FILE, UNINST_DIRECTORY, UNINST_CLASSES_KEY,
//                                        UNINST_MACHINE_KEY (others are kept as they are)
//    2      char[1026]  path             path or registry key path, at most 1023 characters,
//                                        NUL-terminated, zero bytes to the end of the field
//
// ---- Disk identification files ---------------------------------------------------------------
//
// Disk n (0-based) carries a text file named "A.KORV" for disk 0, "B.KORV" for disk 1, and so
// on, with the line "DISK: n+1". The letters stop at "Z": a medium has at most ILST_DISKS_MAX
// disks.
#ifndef KX_ILST_H
#define KX_ILST_H

#include "common/co.h"

enum {
  ILST_HEADER_SIZE = 92,
  ILST_RECORD_SIZE = 140,
  ILST_UNINSTALL_SIZE = 1028,

  ILST_HEADER_TEXT_FIELD = 82,  // bytes of the header's text field
  ILST_HEADER_TEXT_MAX = 80,    // characters kept of it
  ILST_NAME_FIELD = 17,         // bytes of each name field of a record
  ILST_NAME_MAX = 16,           // characters of a name
  ILST_DESCRIPTION_FIELD = 82,
  ILST_DESCRIPTION_MAX = 80,
  ILST_UNINSTALL_PATH_FIELD = 1026,
  ILST_UNINSTALL_PATH_MAX = KX_PATH - 1,  // 1023

  ILST_DISKS_MAX = 26,   // "A.KORV" to "Z.KORV"
  ILST_DISK_ID_NAME = 7  // bytes of a disk identification file name with its NUL
};

// Offsets of the fields (see the tables above).
enum {
  ILST_AT_RESERVED0 = 0,
  ILST_AT_TEXT = 2,
  ILST_AT_RESERVED84 = 84,
  ILST_AT_COUNT = 86,
  ILST_AT_RESERVED88 = 88,
  ILST_AT_PACKED = 90,

  ILST_AT_NAME = 0,
  ILST_AT_STORED = 17,
  ILST_AT_DIRECTORY = 34,
  ILST_AT_PADDING = 51,
  ILST_AT_SIZE = 52,
  ILST_AT_DISK = 56,
  ILST_AT_DESCRIPTION = 58,

  ILST_AT_KIND = 0,
  ILST_AT_PATH = 2
};

// Kinds of UNINST.LST records.
enum {
  UNINST_FILE = 0,         // an installed file
  UNINST_DIRECTORY = 1,    // a created directory, without a trailing "\"
  UNINST_CLASSES_KEY = 2,  // a registry key under HKEY_CLASSES_ROOT
  UNINST_MACHINE_KEY = 3   // a registry key under HKEY_LOCAL_MACHINE
};

// The directory field's value for the target directory itself.
extern const char ILST_ROOT_DIRECTORY[];  // "."

struct ListHeader {
  uint16_t reserved0;
  char text[ILST_HEADER_TEXT_MAX + 1];
  uint16_t reserved84;
  uint16_t count;
  uint16_t reserved88;
  uint16_t packed;
};

struct ListRecord {
  char name[ILST_NAME_MAX + 1];
  char stored[ILST_NAME_MAX + 1];
  char directory[ILST_NAME_MAX + 1];
  uint32_t size;
  uint16_t disk;  // 0-based
  char description[ILST_DESCRIPTION_MAX + 1];
};

struct UninstallRecord {
  uint16_t kind;
  char path[ILST_UNINSTALL_PATH_MAX + 1];
};

// ---- DISKLIST.LST --------------------------------------------------------------------------

Flag ilst_encode_header(const ListHeader *header, unsigned char *bytes);
// Writes the header into bytes[0..91] (ILST_HEADER_SIZE bytes): the words little-endian, the
// text cut at 80 characters and zero-filled to the end of its 82-byte field.
// Returns 1; 0 after InternalError for a null argument (bytes untouched).

Flag ilst_decode_header(const unsigned char *bytes, ListHeader *header);
// Reads a header from bytes[0..91]. The text is taken up to its first NUL, at most 80
// characters. Every word is taken as it stands (any count, any packed value).
// Returns 1; 0 after InternalError for a null argument (header untouched).

Flag ilst_encode_record(const ListRecord *record, unsigned char *bytes);
// Writes the record into bytes[0..139] (ILST_RECORD_SIZE bytes): names cut at 16 characters,
// the description at 80, every field zero-filled after its text, the padding byte 0, size and
// disk little-endian.
// Returns 1; 0 after InternalError for a null argument (bytes untouched).

Flag ilst_decode_record(const unsigned char *bytes, ListRecord *record);
// Reads a record from bytes[0..139]: each name up to its first NUL and at most 16 characters,
// the description up to its first NUL and at most 80 characters (so a field without a NUL is
// cut at the limit, and the byte after a 16-character name is never taken for part of it),
// size and disk as they stand. The padding byte is not read.
// Returns 1; 0 after InternalError for a null argument (record untouched).

// ---- UNINST.LST ----------------------------------------------------------------------------

Flag ilst_encode_uninstall(const UninstallRecord *record, unsigned char *bytes);
// Writes the record into bytes[0..1027] (ILST_UNINSTALL_SIZE bytes): the kind little-endian,
// the path cut at 1023 characters, then zero bytes to the end.
// Returns 1; 0 after InternalError for a null argument (bytes untouched).

Flag ilst_decode_uninstall(const unsigned char *bytes, UninstallRecord *record);
// Reads a record from bytes[0..1027]: the kind as it stands, the path up to its first NUL and
// at most 1023 characters.
// Returns 1; 0 after InternalError for a null argument (record untouched).

// ---- Disk identification files -------------------------------------------------------------

Flag ilst_disk_id_name(uint16_t disk, char *name);
// Puts the name of disk's identification file into name (ILST_DISK_ID_NAME bytes): "A.KORV"
// for disk 0 up to "Z.KORV" for disk 25.
// Returns 1. A disk of 26 or more has no name: name becomes empty and the result is 0 (no
// report; the caller decides). A null name is an internal error: 0.

#endif
