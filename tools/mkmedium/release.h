// release.h - what a release engineer does with a medium beyond making it: signs the programs
// before they are packed, makes the images that are shipped (a CD image, floppy images), and
// checks a medium or an image set before it goes out (verify.h).
//
// The images are made and read by the Debian tools xorriso (ISO 9660 with Joliet names) and
// mtools (FAT12 floppies), run through the command interpreter; where they are missing (as a
// rule on Windows) the image options fail with a line that says so. Images are reproducible:
// every date in them is SOURCE_DATE_EPOCH when set, else 2000-01-01 00:00:00 UTC, the volume
// serials and the CD's UUID are fixed, the files go in in name order.
#ifndef KX_RELEASE_H
#define KX_RELEASE_H

#include "tools/mkmedium/medium.h"

#include <stdio.h>

struct ReleaseOptions {
  const char *verify;    // --verify MEDIUM: check it instead of making one
  const char *sign;      // --sign "COMMAND {}": run on SETUP.EXE and every .EXE and .DLL first
  const char *iso;       // --iso FILE: the flat medium also as an ISO 9660 + Joliet image
  const char *floppies;  // --floppy-images DIR: each DISKn also as DIR/DISKn.IMG (1.44 MB FAT12)
};

int16_t release_option(const char *argument, const char *value, ReleaseOptions *release);
// Takes one command-line argument that belongs here: returns 2 when it took argument and value
// (the caller skips the value), 0 when the argument is none of the four, -1 when the value is
// missing.

Flag release_make(MediumOptions *options, const ReleaseOptions *release, MediumResult *result);
// Makes the medium as medium_make does, with the release steps:
//   - sign: the source tree (and SETUP.EXE) is first copied into a scratch directory, the
//     command is run once for each copy of SETUP.EXE and of every file whose name ends in .EXE
//     or .DLL (any case), with each "{}" in it replaced by the copy's quoted path, and the
//     medium is made from the copies; the source tree is never touched. The scratch directory
//     is removed at the end.
//   - iso: the medium is made flat (options->flat is set), then FILE is written with the
//     volume label made of the title (A-Z, 0-9 and "_", other characters as "_", at most 32).
//   - floppies: the medium must be split into disks; DIR (missing or empty) gets DISK1.IMG,
//     DISK2.IMG, ..., each labelled DISKn, holding that disk's files.
// Returns 1 with result as medium_make leaves it; 0 with result->message:
//   medium_make's messages, and
//   "--sign wants a command with {} for the file" / "signing PATH failed (exit N)"
//   "cannot make a scratch directory" / "cannot copy PATH" / "PATH: not a regular file"
//   "--iso makes a flat medium, --floppy-images one of disks: not both"
//   "--floppy-images wants disks, not --flat"
//   "FILE exists: the image is not written over" / "DIR is not empty" / "cannot make DIR"
//   "xorriso failed (exit N); is it installed?" / "mformat failed ...; is mtools installed?" /
//   "mcopy failed (exit N) for PATH" / "PATH: the path is too long"

int release_verify(const char *medium, FILE *out, FILE *err);
// Checks the medium at path medium (verify.h): a flat directory, a directory with DISK1, ...,
// an image file (ISO 9660, unpacked with xorriso), or a directory with DISK1.IMG, DISK2.IMG, ...
// (unpacked with mtools). The report goes to out, a failure to read the medium at all to err.
// Returns the exit code: 0 no problems, 1 problems or no medium.

#endif
