/// Export macro of the foundation library.
#pragma once

#if defined(_WIN32)
#if defined(hcbase_EXPORTS)
#define HC_API __declspec(dllexport)
#else
#define HC_API __declspec(dllimport)
#endif
#else
#define HC_API __attribute__((visibility("default")))
#endif
