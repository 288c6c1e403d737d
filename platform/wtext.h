// wtext.h - our texts at the wide (UTF-16) calls of Windows.
//
// Every text of the suite is Windows-1250. Every text that goes to Windows (file and directory
// names, registry keys and values, shortcut paths and descriptions, command lines, window texts)
// goes through the W call after wtext_in, and every text that comes back (the folder browser,
// shell folders, registry reads, the current directory, the program's own path) is brought back
// by wtext_out. Nothing depends on the system's ANSI code page: on a system whose code page is
// 1250 the results are byte for byte those of the A calls, on any other they are still right.
//
// wtext_out refuses (0) a text that 1250 cannot hold (a name with a Greek or Cyrillic letter,
// say) instead of putting "?" for the letter: the caller fails with its message. These calls
// show no message themselves. wtext_in and wtext_out are Windows only; the file calls below
// exist in both builds (wtext_host.cpp: the plain C calls on the native build's byte names).
#ifndef KX_WTEXT_H
#define KX_WTEXT_H

#include "common/co.h"

#include <stdio.h>

enum { WTEXT_PATH = KX_PATH };  // wide characters of a path buffer, as KX_PATH bytes in 1250

Flag wtext_in(const char *text, wchar_t *wide, size_t count);
// text (1250) -> wide, NUL-terminated, into count wide characters. 0 for a null text (wide is
// then "") and for a text that does not fit (wide then holds the part that fits).

Flag wtext_out(const wchar_t *wide, char *text, size_t size);
// wide -> text (1250), NUL-terminated, into size bytes. 0 for a null argument or a character
// that 1250 lacks (text is then ""), and for a text that does not fit (text then holds the
// part that fits).

int32_t wtext_units(const char *text);
// The number of wide characters of text (1250) without the terminator; 0 for null.

Flag wtext_arguments(int *argc, char ***argv);
// The program's command line (GetCommandLineW, split as the runtime splits it) as arguments in
// 1250, held until the program ends. 0 when an argument holds a character that 1250 lacks (that
// argument is then "") or there is no memory (*argc is then 0).

FILE *wtext_fopen(const char *path, const char *mode);
// fopen of a 1250 path (_wfopen). Null also when the path cannot be converted.
int wtext_open_new(const char *path);
// A new file for writing, failing when it exists (_wopen with O_CREAT | O_EXCL, binary);
// its descriptor, or -1.
Flag wtext_remove(const char *path);
// Deletes a file (_wremove); 1 on success.
Flag wtext_exists(const char *path);
// 1 when a file or directory of that name exists (GetFileAttributesW).

#endif
