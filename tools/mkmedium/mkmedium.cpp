// mkmedium.cpp - the command line of the medium builder (see medium.h for what it makes).
//
// A console tool: its own messages and every error box of the libraries go to standard error,
// one line each, in UTF-8; it exits with 0 on success, 1 when it refused or failed, 2 for a
// wrong command line.
#include "tools/mkmedium/listedit.h"
#include "tools/mkmedium/medium.h"
#include "tools/mkmedium/medium_plat.h"
#include "tools/mkmedium/release.h"

#include "common/co.h"
#include "common/st.h"
#include "common/we.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#ifdef KX_WIN32
#include <fcntl.h>
#include <io.h>

#include "platform/wtext.h"
#endif

static const char kHelp[] =
    "usage: mkmedium [options] SOURCE OUTPUT\n"
    "       mkmedium --list PATH\n"
    "       mkmedium --verify MEDIUM\n"
    "       mkmedium --uninstall-list FILE\n"
    "       mkmedium --uninstall-write FILE < RECORDS\n"
    "       mkmedium --edit LIST EDIT...\n"
    "\n"
    "Makes an installation medium of the directory tree SOURCE in the directory OUTPUT, which\n"
    "must be missing or empty: DISKLIST.LST, the stored files and the disk identification files\n"
    "A.KORV, B.KORV, ... in OUTPUT/DISK1, OUTPUT/DISK2, ... or all in OUTPUT (--flat).\n"
    "\n"
    "options:\n"
    "  --packed            store every file as one zlib stream (the default)\n"
    "  --plain             store the files as they are\n"
    "  --level N           compression level 0..9, or -1 for zlib's default (the default)\n"
    "  --capacity BYTES    bytes per disk (default 1457664, a 1.44 MB floppy)\n"
    "  --cluster BYTES     every file takes its size rounded up to this (default 512; 1: exact)\n"
    "  --flat              one flat directory instead of disks\n"
    "  --descriptions FILE the descriptions of the files (see below)\n"
    "  --readme FILE       put FILE on the first disk as README.TXT\n"
    "  --setup FILE        put FILE on the first disk as SETUP.EXE\n"
    "  --title TEXT        the list's title (default \"KORVEX 5\", at most 80 characters)\n"
    "  --list PATH         print the DISKLIST.LST at PATH (a list, a medium or a disk directory)\n"
    "  --sign \"CMD {}\"     run CMD on SETUP.EXE and every .EXE and .DLL of the tree before they\n"
    "                      are packed, {} replaced by the file's path, quoted (write no quotes\n"
    "                      around it); copies in a scratch directory are signed, the tree is not\n"
    "                      touched; a command that fails stops the build\n"
    "  --iso FILE          also write the medium (made flat) as an ISO 9660 image with Joliet\n"
    "                      names, labelled with the title (xorriso)\n"
    "  --floppy-images DIR also write each disk as DIR/DISKn.IMG, a 1.44 MB FAT12 image labelled\n"
    "                      DISKn (mtools: mformat, mcopy)\n"
    "  --verify MEDIUM     check a medium before it goes out: a flat directory, DISK1, DISK2, "
    "...,\n"
    "                      an ISO image or a directory of DISKn.IMG; one line per problem and a\n"
    "                      summary; exit 0 only when it installs without a question\n"
    "  --uninstall-list FILE  print the records of the UNINST.LST file FILE, one a line: the\n"
    "                      kind (0 file, 1 directory, 2 HKEY_CLASSES_ROOT key, 3 "
    "HKEY_LOCAL_MACHINE\n"
    "                      key), a tab, the path\n"
    "  --uninstall-write FILE  write FILE anew from such lines on standard input\n"
    "  --edit LIST EDIT... change fields of the DISKLIST.LST file LIST in place; EDIT is\n"
    "                      FIELD=VALUE for the header (count, packed, text) or RECORD:FIELD=VALUE\n"
    "                      for a file record (name, stored, directory, description, size, disk\n"
    "                      counted from 1); RECORD is an installed name, #N (from 1) or last. "
    "Texts\n"
    "                      are UTF-8 with \\xHH for the byte HH; a text as long as its whole "
    "field\n"
    "                      (17 bytes a name, 82 a description) leaves no terminating zero\n"
    "  --help              this text\n"
    "\n"
    "The tree: the files of the target directory, and subdirectories holding the files of one\n"
    "subdirectory of the target each (no deeper directories; empty ones are left out). At most\n"
    "65535 files, each below 2 GiB. Names: 1 to 16 characters of Windows-1250, none of\n"
    "\\ / : * ? \" < > | or control characters, no leading blank, no trailing blank or dot, no\n"
    "device names (CON, NUL, COM1, ...), unique within a directory without regard to case, not\n"
    "DISKLIST.LST, INST.LST or UNINST.LST; on a packed medium no file may be named like a\n"
    "subdirectory. Names are kept as given.\n"
    "\n"
    "The list: the subdirectories' files first (by subdirectory, then name), then the target\n"
    "directory's files, compared without regard to case; the same tree gives the same medium.\n"
    "Stored names are ASCII and unique over the whole medium. A plain medium keeps the name when\n"
    "it is free; a packed one replaces the last character by \"_\" (KORV5.EXE: KORV5.EX_). On a\n"
    "clash the end of the name becomes a number and \"_\" (KORV5.E1_, KORV5.E2_, ...).\n"
    "\n"
    "Disks: the files fill the disks in list order; on each disk the files, the identification\n"
    "file and, on the first, DISKLIST.LST, README.TXT and SETUP.EXE stay within the capacity,\n"
    "each counted in whole clusters. At most 26 disks. A flat medium has A.KORV only.\n"
    "\n"
    "The description file (UTF-8, converted to Windows-1250): one line per file,\n"
    "    PATH<TAB>DESCRIPTION\n"
    "with PATH as NAME for a file of the target directory or SUBDIR\\NAME (or SUBDIR/NAME),\n"
    "matched without regard to case, and at most 80 characters of description. Blank lines and\n"
    "lines starting with # are skipped; files without a line get an empty description.\n"
    "\n"
    "Images are reproducible: every date is SOURCE_DATE_EPOCH, else 2000-01-01 00:00 UTC; fixed\n"
    "volume serials and UUID. An image file or directory that exists is not written over. Where\n"
    "xorriso or mtools are missing (as a rule on Windows), --iso, --floppy-images and --verify of\n"
    "an image fail with a line that says so.\n"
    "\n"
    "--verify checks that DISKLIST.LST holds as many records as it counts, that each disk's\n"
    "A.KORV, B.KORV, ... names its own number, that the names are plain Windows names, that each\n"
    "stored file is on the disk its record names, that a packed file inflates (zlib, Adler-32)\n"
    "to exactly the listed size and a plain one has it. Exit 0: no problem; 1: problems.\n";

// Prints a Windows-1250 text to stream in UTF-8.
static void print_cp1250(FILE *stream, const char *text) {
  char utf8[WE_TEXT_SIZE * 3 + 1];
  medium_cp1250_to_utf8(text ? text : "", utf8, sizeof utf8);
  fputs(utf8, stream);
}

// Every error box of the libraries becomes one line on standard error.
static void box_to_stderr(void *, const char *text, const char *title, unsigned) {
  char heading[WE_TEXT_SIZE];
  st_put(heading, sizeof heading, title);
  char *start = heading;
  while (*start == ' ') start++;
  size_t n = strlen(start);
  while (n > 0 && start[n - 1] == ' ') start[--n] = 0;
  fputs("mkmedium: ", stderr);
  print_cp1250(stderr, start);
  fputs(": ", stderr);
  print_cp1250(stderr, text);
  fputc('\n', stderr);
}

static int usage(const char *why) {
  fprintf(stderr, "mkmedium: %s (see mkmedium --help)\n", why);
  return 2;
}

// A whole decimal number of at least least; 0 when text is none.
static Flag number(const char *text, long least, long most, long *value) {
  if (!text || !*text) return 0;
  char *end = nullptr;
  long v = strtol(text, &end, 10);
  if (*end || v < least || v > most) return 0;
  *value = v;
  return 1;
}

int main(int argc, char **argv) {
#ifdef KX_WIN32
  _setmode(_fileno(stdout), _O_BINARY);
  _setmode(_fileno(stderr), _O_BINARY);
  // Paths and texts in Windows-1250, as the builder takes them, whatever the ANSI code page.
  if (!wtext_arguments(&argc, &argv))
    return usage("an argument holds a character that Windows-1250 lacks");
#endif
  we_set_box_hook(box_to_stderr);
  MediumOptions options;
  medium_default_options(&options);
  const char *list = nullptr;
  const char *paths[2] = {nullptr, nullptr};
  int path_count = 0;
  char title[KX_PATH];
  ReleaseOptions release = {};
  for (int i = 1; i < argc; i++) {
    const char *a = argv[i];
    const char *value = i + 1 < argc ? argv[i + 1] : nullptr;
    long n = 0;
    int16_t taken = release_option(a, value, &release);
    if (taken < 0) return usage("an option wants a value");
    if (taken > 0) {
      i++;
    } else if (strcmp(a, "--help") == 0 || strcmp(a, "-h") == 0) {
      fputs(kHelp, stdout);
      return 0;
    } else if (strcmp(a, "--edit") == 0) {
      return medium_edit_main(argc - i - 1, argv + i + 1);
    } else if (strcmp(a, "--uninstall-list") == 0) {
      return medium_uninstall_list_main(argc - i - 1, argv + i + 1);
    } else if (strcmp(a, "--uninstall-write") == 0) {
      return medium_uninstall_write_main(argc - i - 1, argv + i + 1);
    } else if (strcmp(a, "--packed") == 0) {
      options.packed = 1;
    } else if (strcmp(a, "--plain") == 0) {
      options.packed = 0;
    } else if (strcmp(a, "--flat") == 0) {
      options.flat = 1;
    } else if (strcmp(a, "--level") == 0) {
      if (!number(value, -1, 9, &n)) return usage("--level wants a number from -1 to 9");
      options.level = (int16_t)n, i++;
    } else if (strcmp(a, "--capacity") == 0) {
      if (!number(value, 1, 0x7FFFFFFF, &n)) return usage("--capacity wants a number of bytes");
      options.capacity = (uint32_t)n, i++;
    } else if (strcmp(a, "--cluster") == 0) {
      if (!number(value, 1, 0x7FFFFFFF, &n)) return usage("--cluster wants a number of bytes");
      options.cluster = (uint32_t)n, i++;
    } else if (strcmp(a, "--descriptions") == 0 || strcmp(a, "--readme") == 0 ||
               strcmp(a, "--setup") == 0 || strcmp(a, "--list") == 0 || strcmp(a, "--title") == 0) {
      if (!value) return usage("an option wants a value");
      i++;
      if (a[2] == 'd') options.descriptions = value;
      else if (a[2] == 'r') options.readme = value;
      else if (a[2] == 's') options.setup = value;
      else if (a[2] == 'l') list = value;
      else if (!medium_plat_to_cp1250(value, title, sizeof title))
        return usage("the title cannot be written in Windows-1250");
      else options.title = title;
    } else if (a[0] == '-' && a[1] == '-') {
      fprintf(stderr, "mkmedium: unknown option %s (see mkmedium --help)\n", a);
      return 2;
    } else if (path_count < 2) {
      paths[path_count++] = a;
    } else {
      return usage("too many paths");
    }
  }

  if (list) {
    if (path_count) return usage("--list takes no further paths");
    char message[MEDIUM_MESSAGE_SIZE];
    Flag ok = medium_list(list, stdout, message, sizeof message);
    fflush(stdout);
    if (!ok) fprintf(stderr, "mkmedium: %s\n", message);
    return ok ? 0 : 1;
  }
  if (release.verify) {
    if (path_count) return usage("--verify takes no further paths");
    return release_verify(release.verify, stdout, stderr);
  }
  if (path_count != 2) return usage("SOURCE and OUTPUT are wanted");
  options.source = paths[0];
  options.output = paths[1];
  MediumResult result;
  if (!release_make(&options, &release, &result)) {
    fprintf(stderr, "mkmedium: %s\n", result.message);
    return 1;
  }
  if (options.flat)
    printf("mkmedium: %lu files in %s (flat, %s)\n", (unsigned long)result.files, options.output,
           options.packed ? "packed" : "plain");
  else
    printf("mkmedium: %lu files on %u disk(s) in %s (%s)\n", (unsigned long)result.files,
           (unsigned)result.disks, options.output, options.packed ? "packed" : "plain");
  return 0;
}
