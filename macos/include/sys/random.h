#pragma once

#include <sys/types.h>

__BEGIN_DECLS
int getentropy(void*, size_t);
__END_DECLS
