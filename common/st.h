// st.h - strings. (Interface fixed; the module's owner documents each call in full.)
#ifndef KX_ST_H
#define KX_ST_H

#include "co.h"

Flag st_alloc(int16_t length, char **result);
Flag st_free(char **text);
Flag st_dup(const char *text, char **result);
int16_t st_len(const char *text);
Flag st_trim(char *text);
Flag st_squeeze(char *text);
Flag st_upper(char *text);
Flag st_lower(char *text);
int16_t st_cmp(const char *a, const char *b);
int16_t st_cmp_trimmed(char *a, char *b);
int16_t st_collate(const char *a, const char *b);
int16_t st_collate_label(const char *a, const char *b);
int16_t st_natural(const char *a, const char *b);
int16_t st_cmp_right(const char *a, const char *b);
Flag st_same(const char *a, const char *b);
char *st_chr(const char *text, char c);
char *st_rchr(const char *text, char c);
char *st_str(const char *text, const char *part);
char *st_chr_any(const char *text, const char *set);
Flag st_copy(char *destination, const char *source, int16_t limit);
Flag st_cat(char *destination, const char *source, int16_t limit);
Flag st_cat_char(char *text, char c, int16_t limit);
Flag st_match(const char *text, const char *pattern);

#endif
