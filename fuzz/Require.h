#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the fuzz target with a line that names what did not hold; libFuzzer then keeps the input.
#define REQUIRE(condition)                                                                                             \
    do {                                                                                                               \
        if (!(condition)) {                                                                                            \
            std::fprintf(stderr, "%s:%d: %s does not hold\n", __FILE__, __LINE__, #condition);                         \
            std::abort();                                                                                              \
        }                                                                                                              \
    } while (false)
