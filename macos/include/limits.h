// The compiler's own, and what it leaves to the system.
#include_next <limits.h>

#ifndef PATH_MAX
#define PATH_MAX 1024
#define NAME_MAX 255
#define IOV_MAX 1024
#endif
