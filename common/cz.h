// cz.h - code pages. (Interface fixed; the module's owner documents each call in full.)
#ifndef KX_CZ_H
#define KX_CZ_H

#include "co.h"

enum { CZ_KEYBCS2 = 1, CZ_LATIN2 = 2, CZ_WINDOWS = 3, CZ_ASCII = 4 };

Flag cz_convert(int16_t from, int16_t to, char *text);
Flag cz_strip(char *text);
Flag cz_strip_kbcs(char *text);
Flag cz_lower(char *text);
Flag cz_upper(char *text);
Flag cz_strip_char(char *c);
Flag cz_lower_char(char *c);
Flag cz_upper_char(char *c);

#endif
