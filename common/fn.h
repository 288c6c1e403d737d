// fn.h - file names and paths in the drive-letter form "C:\DIR\NAME.EXT".
//
// Every path buffer that these functions write holds KX_PATH (1024) bytes; a longer result is
// cut at 1023 characters, never overrun. Inputs may be of any length. A directory path in the
// suite ends with "\"; pieces are joined by plain concatenation. A null argument is reported as
// InternalError("fn", line) and the function returns 0.
//
// Splitting works as the Windows C runtime's _splitpath does, on both builds alike:
//   drive      the first two characters when the second is ":" ("C:"), else empty;
//   directory  the rest up to and including its last "\" or "/", else empty;
//   name       what follows, up to its last ".";
//   extension  from that last "." (the "." included) to the end, else empty.
// So "C:\WORK\A.TXT" gives "C:", "\WORK\", "A", ".TXT"; "..\X" gives "", "..\", "X", ""; and
// "C:\A.B\C" gives "C:", "\A.B\", "C", "" (only the last component has an extension).
#ifndef KX_FN_H
#define KX_FN_H

#include "common/co.h"

Flag path_split_parts(const char *path, char *drive, char *directory, char *name, char *extension);
// Splits path into its four parts as above; each output (of KX_PATH bytes, drive of at least
// 3) may be null when it is not wanted. Returns 1; a null path is an internal error: 0 (the
// outputs that are given are emptied).

Flag path_merge_parts(char *path, const char *drive, const char *directory, const char *name,
                      const char *extension);
// Builds path from the parts as the C runtime's _makepath does: the drive (its first letter
// and ":"), the directory with a "\" added when it ends in neither "\" nor "/", the name, and
// the extension with a "." put before it when it has none. Null or empty parts are left out.
// The result is cut at KX_PATH - 1 characters. Returns 1; a null path is an internal error: 0.

Flag path_join(char *name, const char *directory);
// Replaces the text of name (a KX_PATH buffer) by directory, a "\" when directory does not
// already end with one, and the former name: ("A.TXT", "C:\WORK") gives "C:\WORK\A.TXT", and
// so does ("A.TXT", "C:\WORK\").
// Returns 1. Returns 0 and leaves name as it is when directory is empty; 0 after an internal
// error for a null argument.

Flag path_split(const char *path, char *directory, char *name);
// directory receives drive and directory of path joined, less one trailing "\"
// ("C:\WORK\A.TXT" gives "C:\WORK"; "C:\A.TXT" gives "C:"); name receives the name with its
// extension ("A.TXT"). Both are KX_PATH buffers. Returns 1; a null argument is an internal
// error: 0.

Flag same_directory(const char *path, const char *directory);
// Returns 1 when the directory part of path (as path_split gives it) and directory, less one
// trailing "\", are the same text apart from the case of the letters A-Z; so
// ("c:\work\a.txt", "C:\WORK\") gives 1. Returns 0 otherwise, and after an internal error for
// a null argument.

Flag name_from_pattern(const char *pattern, const char *source, char *result);
// Makes a target name from a pattern such as "C:\OUT\*.BAK" and a source name:
//  1. the source is cleaned of every ". \ / * ? : | ~ , ;" and blank;
//  2. the pattern is split after its last "\" into a directory prefix and a name pattern;
//  3. a name pattern without "*" gives the pattern unchanged (go on at 6);
//  4. else the name is the text before the first "*", the cleaned source and the text after
//     that "*"; its extension is cut to 3 characters and the name before the extension to 8;
//  5. the prefix, the name and -- when the name had a "." and has none left -- "." and the
//     extension are put together;
//  6. when the result begins with the current directory as "X:\DIR\" (drive letter, ":\",
//     the current directory of that drive, "\"), compared case-sensitively, that prefix is
//     removed. At the root of a drive this prefix is "X:\\", which no path begins with, so
//     nothing is removed there; keep this.
// ("C:\OUT\*.BAK", "my file.txt") gives "C:\OUT\myfiletx.BAK", or "myfiletx.BAK" while the
// current directory is C:\OUT. The native build sees its working directory as drive C:, with
// "/" turned into "\" ("/tmp/x" is "C:\tmp\x").
// result is a KX_PATH buffer. Returns 1; a null argument is an internal error: 0.

Flag path_normalise(char *path);
// Splits path (a KX_PATH buffer) into its parts and merges them again (path_split_parts,
// path_merge_parts), which gives the runtime's spelling of the same path. The splitter keeps
// every character in one of the parts, and each part already carries what the merge would add
// (the directory ends with its slash, the extension starts with its "."), so the text comes
// back as it was, cut at KX_PATH - 1 characters.
// Returns 1; a null path is an internal error: 0.

#endif
