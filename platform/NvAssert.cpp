#include "NvAssert.h"

#include <cstdio>
#include <cstdlib>

void nvAssertionFailed(const char* source, unsigned line, const char* expression)
{
    std::fprintf(stderr, "%s:%u: failed assertion `%s'\n", source, line, expression);
    std::fflush(stderr);
    std::abort();
}
