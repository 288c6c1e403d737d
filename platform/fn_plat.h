// fn_plat.h - what the file-name module needs of the platform (fn_win32.cpp on Windows,
// fn_host.cpp elsewhere). Internal to the module.
#ifndef KX_FN_PLAT_H
#define KX_FN_PLAT_H

#include "common/co.h"

// The current drive's letter and the current directory of that drive, without the drive and
// without the leading "\" ("OUT\SUB" for C:\OUT\SUB, empty at the root), into directory of
// size bytes. Returns 0 when there is no current drive or the directory does not fit.
Flag fn_plat_current_directory(char *letter, char *directory, size_t size);

#endif
