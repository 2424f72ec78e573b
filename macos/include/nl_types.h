#pragma once

#include <sys/cdefs.h>

typedef struct __nl_cat_d* nl_catd;

#define NL_SETD 1
#define NL_CAT_LOCALE 1

__BEGIN_DECLS
nl_catd catopen(char const*, int);
char* catgets(nl_catd, int, int, char const*);
int catclose(nl_catd);
__END_DECLS
