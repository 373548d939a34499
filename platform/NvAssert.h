#pragma once

// Assertions that stay in the shipped program: a failed one prints
//   <source>:<line>: failed assertion `<expression>'
// to the error output and aborts, in release builds too.
//
// NV_ASSERT_AT names source and line explicitly; use it where the message must
// not depend on the file layout (the settings layer's fixed texts).

[[noreturn]] void nvAssertionFailed(const char* source, unsigned line, const char* expression);

#define NV_ASSERT_AT(expression, source, line) \
    ((expression) ? static_cast<void>(0) : nvAssertionFailed((source), (line), #expression))

#define NV_ASSERT(expression) NV_ASSERT_AT(expression, __FILE__, __LINE__)
