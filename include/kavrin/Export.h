// Symbol visibility for the Kavrin shared library. Everything a host may call
// is marked KAVRIN_API; the rest of the library is hidden.
#pragma once

#if defined(KAVRIN_STATIC)
#define KAVRIN_API
#elif defined(KAVRIN_BUILDING)
#define KAVRIN_API __attribute__((visibility("default")))
#else
#define KAVRIN_API
#endif
