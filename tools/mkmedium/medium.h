// medium.h - makes installation media: a directory tree becomes DISKLIST.LST, the stored (plain
// or packed) files and the disk identification files, split over disk directories DISK1,
// DISK2, ... or put into one flat directory; and prints any DISKLIST.LST in readable form.
//
// The tool mkmedium is a thin command line over this module; the tests call it directly.
//
// ---- The tree --------------------------------------------------------------------------------
//
// The source directory holds the files of the target directory and subdirectories with the
// files of one subdirectory of the target each; a directory inside a subdirectory is refused.
// Empty subdirectories are left out (the installer creates a directory only for a file in it).
// Names (files and subdirectories) must:
//   - be representable in Windows-1250 (the native build reads UTF-8 names, the Windows build
//     names in the system's ANSI code page), and be 1 to 16 characters long in Windows-1250;
//   - hold no control character and none of  \ / : * ? " < > |  , not begin with a blank, not
//     end with a blank or a dot, and not be a device name (CON, PRN, AUX, NUL, COM1-COM9,
//     LPT1-LPT9, also with an extension);
//   - differ from each other in more than the case of their letters within one directory (the
//     root's files and subdirectories together), since the medium is read on Windows;
//   - not be DISKLIST.LST, INST.LST or UNINST.LST, the installer's own lists in the target;
//   - on a packed medium, not be the name of a subdirectory: a packed file is unpacked in the
//     target directory first and then moved into its subdirectory.
// Names are kept as given (case and all). At most 65,535 files; each below 2 GiB.
//
// ---- The list ----------------------------------------------------------------------------------
//
// Records are sorted: first the files of the subdirectories (by subdirectory, then by name),
// then the files of the target directory (by name); names compare without regard to case, in
// Windows-1250 byte order. The subdirectory files come first because on a packed medium every
// file passes through the target directory under its installed name: a target-directory file
// of the same name installed earlier would be lost. The same input always gives the same
// medium, byte for byte.
//
// The header carries the title (default "KORVEX 5", at most 80 characters) in its text field,
// zeros after it, the count, packed 1 or 0, and zero in the three reserved words. Each record's
// size is the installed (plain) size; the disk is 0-based (0 everywhere on a flat medium).
//
// ---- Stored names ------------------------------------------------------------------------------
//
// The installer looks for each stored name in the source directory and asks for the record's
// disk only when it is missing there, so a stored name must not occur twice on the whole medium
// (the file of another disk would be taken). Stored names are therefore unique over the whole
// medium, case-insensitively, and never one of DISKLIST.LST, README.TXT, SETUP.EXE, INST.LST,
// UNINST.LST, A.KORV ... Z.KORV; on a packed medium they also differ from every installed name
// of the list (the packed copy lies in the target directory beside the unpacked files).
// Stored names are plain ASCII: Czech and Slovak letters lose their accents, other bytes of 128
// or more become "_". Candidates, the first free one is taken, in list order:
//   plain medium:  the (ASCII) installed name itself, then the packed candidates below;
//   packed medium: the name with its last character replaced by "_" (KORV5.EXE: KORV5.EX_),
//                  then for n = 1, 2, ... the name less its last (digits of n) + 1 characters
//                  followed by n and "_" (KORV5.E1_, KORV5.E2_, ..., KORV5.10_).
//
// ---- Disks -------------------------------------------------------------------------------------
//
// Split medium: OUTPUT/DISK1, OUTPUT/DISK2, ... (at most 26 disks, "A.KORV" to "Z.KORV"). Disk n
// holds its identification file (letter "A" + n - 1, ".KORV", the line "DISK: n" with CR LF);
// DISK1 also holds DISKLIST.LST and README.TXT and SETUP.EXE when given. The files fill the
// disks in list order; a file that does not fit into what is left of a disk starts the next
// one, so the files of one disk stand together in the list. Every file placed on a disk,
// the list and the identification file included, counts its size rounded up to the cluster
// (default 512 bytes, as on a floppy; 1 counts plain bytes), and the sum stays within the
// capacity (default 1,457,664 bytes, a 1.44 MB floppy).
// Flat medium: everything in OUTPUT itself, with A.KORV ("DISK: 1") only: the installer checks
// the first disk once and then finds every file.
//
// ---- Descriptions ------------------------------------------------------------------------------
//
// A UTF-8 text file (a byte-order mark is skipped, CR LF or LF), one line per described file:
//     PATH<TAB>DESCRIPTION
// PATH is NAME for a file of the target directory or SUBDIR\NAME (or SUBDIR/NAME) for a file of
// a subdirectory, matched without regard to case; DESCRIPTION is at most 80 characters of
// Windows-1250 after conversion, without control characters. Blanks around both are removed, and
// further tabs before the description too. Empty lines and lines beginning with "#" are
// skipped. Files without a line get an empty description.
//
// ---- Failures ----------------------------------------------------------------------------------
//
// Every refusal and failure puts one line of text (UTF-8, file names in the form SUBDIR\NAME)
// into the result's message and returns 0. Everything is checked before the first byte is
// written; the output directory must be missing or empty. The file layer and zip_util report
// what they meet through the error reporting module (common/we.h) as well.
#ifndef KX_MEDIUM_H
#define KX_MEDIUM_H

#include "common/co.h"

#include <stdio.h>

enum {
  MEDIUM_CAPACITY_DEFAULT = 1457664,
  MEDIUM_CLUSTER_DEFAULT = 512,
  MEDIUM_FILES_MAX = 65535,
  MEDIUM_MESSAGE_SIZE = 512
};

extern const char MEDIUM_TITLE_DEFAULT[];  // "KORVEX 5"

struct MediumOptions {
  const char *source;        // the tree to install (native path)
  const char *output;        // the medium's directory (native path); made when missing
  const char *descriptions;  // description file, or null
  const char *readme;        // copied to the first disk as README.TXT, or null
  const char *setup;         // copied to the first disk as SETUP.EXE, or null
  const char *title;         // header text in Windows-1250; null: MEDIUM_TITLE_DEFAULT
  int16_t packed;            // 1: one zlib stream per file; 0: files as they are
  int16_t level;             // zlib level 0..9, -1 for zlib's default (packed only)
  uint32_t capacity;         // bytes per disk (split media)
  uint32_t cluster;          // each file's space is rounded up to this many bytes (>= 1)
  int16_t flat;              // 1: one flat directory; 0: DISK1, DISK2, ...
};

struct MediumResult {
  uint32_t files;                     // records written
  uint16_t disks;                     // disk directories made (1 for a flat medium)
  char message[MEDIUM_MESSAGE_SIZE];  // why it failed (UTF-8); empty after success
};

void medium_default_options(MediumOptions *options);
// Fills options with the defaults: no paths, packed, level -1, capacity 1,457,664, cluster 512,
// split into disks.

Flag medium_make(const MediumOptions *options, MediumResult *result);
// Makes the medium described above. Returns 1 with result's counts; 0 with result's message
// (the refusals and failures below). Null options, result, source or output: InternalError
// ("medium", line) and 0.
// Messages (NAME stands for a name as SUBDIR\NAME or NAME, N for numbers):
//   "cannot read the directory PATH"
//   "the output directory PATH is not empty" / "cannot make the output directory PATH"
//   "NAME: the name has N characters, at most 16 are allowed"
//   "NAME: the name holds C, which Windows does not allow in file names"
//   "NAME: a name may not begin with a blank nor end with a blank or a dot"
//   "NAME: the name is a device name on Windows"
//   "NAME: the name cannot be written in Windows-1250"
//   "NAME: the name is kept for the installer's own list"
//   "NAME: nesting deeper than one subdirectory is not allowed"
//   "NAME: not a regular file"
//   "NAME: N bytes, a file must be smaller than 2 GiB"
//   "the tree holds more than 65535 files"
//   "NAME and NAME differ only in case"
//   "NAME: a packed file may not have the name of the subdirectory SUBDIR"
//   "FILE line N: ..." for the description file (no tab, not UTF-8, U+XXXX not in
//      Windows-1250, control character, description of N characters, no such file, described
//      twice)
//   "the title has N characters, at most 80 are allowed"
//   "the compression level must be -1 to 9" / "the capacity and the cluster must be at least 1"
//   "NAME: N bytes on the medium do not fit on a disk of N bytes"
//   "the first disk cannot hold DISKLIST.LST, README.TXT, SETUP.EXE and A.KORV (N bytes) within
//      N bytes"
//   "the files need more than 26 disks"
//   "PATH: no such file" (description file, README.TXT, SETUP.EXE)
//   "PATH: the path is too long"
//   "NAME: cannot read the file" / "NAME: packing failed: ZIP TEXT" / "cannot write PATH" /
//      "cannot make the directory PATH" / "NAME: the file changed while the medium was made"
//   "out of memory"

Flag medium_list(const char *path, FILE *out, char *message, size_t size);
// Prints the DISKLIST.LST at path (or, for a directory, its DISKLIST.LST or else
// DISK1\DISKLIST.LST) to out in UTF-8, one field a line:
//     header
//       reserved0   0
//       text        "KORVEX 5"
//       reserved84  0
//       count       2
//       reserved88  0
//       packed      1
//     record 1
//       name        "KORV5.EXE"
//       stored      "KORV5.EX_"
//       directory   "."
//       size        12345
//       disk        1 (raw 0)
//       description "Hlavní program"
//     ...
// Texts are converted from Windows-1250; a control character, a byte Windows-1250 does not
// define, and a quote show as \xNN.
// Bytes after the counted records are noted at the end ("N bytes follow the last record").
// Returns 1. Returns 0 with message (at most size - 1 bytes, UTF-8) when no list is found or it
// cannot be read ("PATH: no DISKLIST.LST", "PATH: N bytes, shorter than a list header"), or
// when fewer records are there than counted ("PATH: the header counts N records, the file
// holds N"; the records that are there are printed first).

const char *medium_name_fault(const char *name, char *what, size_t size);
// Why name (Windows-1250) cannot be a file or directory name on the medium: the text (English,
// put into what, size bytes) of the first rule of "The tree" above it breaks -- length, a
// character Windows does not allow, a leading blank or a trailing blank or dot (an empty name
// too), a device name -- and what itself; null for a good name.

// ---- The lister of the tree --------------------------------------------------------------------

typedef Flag (*MediumScanEntry)(void *context, const char *name, int16_t kind, uint64_t size);
extern int16_t (*medium_scan)(const char *directory, MediumScanEntry entry, void *context);
// The lister medium_make reads the source tree with: the platform's own unless a test puts in
// another one, to feed a tree of any size without making its files. It hands entry every entry
// of directory but "." and ".." (its native name; kind 1 a file, 2 a directory, 3 anything else;
// the size of a file in bytes); entry returning 0 stops the listing. Returns 1 when every entry
// was handed over, 0 when the directory cannot be read, -1 when entry stopped the listing.

// ---- Windows-1250 text -------------------------------------------------------------------------

enum {
  MEDIUM_TEXT_OK = 0,
  MEDIUM_TEXT_INVALID = 1,
  MEDIUM_TEXT_UNMAPPED = 2,
  MEDIUM_TEXT_TOO_LONG = 3
};

int16_t medium_utf8_to_cp1250(const char *utf8, char *text, size_t size, uint32_t *code);
// Converts UTF-8 to Windows-1250 into text (size bytes, always terminated when size > 0).
// Returns MEDIUM_TEXT_OK; MEDIUM_TEXT_INVALID for a byte sequence that is not UTF-8 (overlong
// forms, surrogates and values above U+10FFFF included); MEDIUM_TEXT_UNMAPPED with *code (when
// code is not null) set to the first character Windows-1250 does not hold; MEDIUM_TEXT_TOO_LONG
// when the result needs more than size - 1 bytes. A null argument: InternalError, INVALID.

Flag medium_cp1250_to_utf8(const char *text, char *utf8, size_t size);
// Converts Windows-1250 to UTF-8 into utf8 (size bytes, always terminated when size > 0);
// bytes Windows-1250 leaves undefined become U+FFFD. Returns 1; 0 when the result was cut to
// fit (at a character's boundary). A null argument: InternalError, 0.

Flag medium_upper(const char *text, char *upper, size_t size);
// The Windows-1250 upper case of text into upper (size bytes, cut to fit): a-z and every letter
// of 128 or more whose capital Windows-1250 holds (š Š, ł Ł, ą Ą, ľ Ľ, ż Ż, and the bytes 0xE0-0xFE less ÷ to 0xC0-0xDE). This is
// how names are compared without regard to case. Returns 1; 0 when cut. Null: InternalError, 0.

#endif
