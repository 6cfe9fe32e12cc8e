/// Export macros of the library.
#pragma once

#if defined(_WIN32)
#if defined(zrlib_EXPORTS)
#define ZR_API __declspec(dllexport)
#else
#define ZR_API __declspec(dllimport)
#endif
#else
#define ZR_API __attribute__((visibility("default")))
#endif

// For members of an exported class that only the library calls.
#if defined(_WIN32)
#define ZR_NOT_SHARED
#else
#define ZR_NOT_SHARED __attribute__((visibility("hidden")))
#endif
