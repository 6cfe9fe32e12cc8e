/// Export mark of the library.
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
