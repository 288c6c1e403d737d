// fe.h - file-name extensions: the text after the "." of a name's last component.
//
// The last component of a name is the text after its last "\", "/" or ":"; its extension is
// the text after the last "." in that component. So "C:\A.B\NAME" has no extension, and
// "ARCHIV.TAR.GZ" has the extension "GZ".
//
// Name buffers that are written hold KX_PATH bytes; a longer result is cut, never overrun.
// A null argument is reported as InternalError("fe", line).
#ifndef KX_FE_H
#define KX_FE_H

#include "common/co.h"

const char *name_extension(const char *name);
// The extension of name, pointing into name (the text after the "."; empty for "NAME."), or
// null when the last component has no ".". A null name is an internal error: null.

Flag name_cut_extension(char *name);
// Cuts name at the "." of its last component ("C:\X\A.TXT" becomes "C:\X\A").
// Returns 1 when it cut; 0 when the last component has no "." (name unchanged), and after an
// internal error for a null name.

Flag name_add_extension(char *name, const char *extension);
// When the last component of name has no ".", appends "." and extension (cut at KX_PATH - 1
// characters in all) and returns 1. Otherwise leaves name as it is and returns 0 -- also when
// the extension differs. A null argument is an internal error: 0.

#endif
