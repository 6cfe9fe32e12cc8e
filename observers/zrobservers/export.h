/// Export macro of the library of observers.
#pragma once

#if defined(_WIN32)
#if defined(zrobservers_EXPORTS)
#define ZR_OBSERVERS_API __declspec(dllexport)
#else
#define ZR_OBSERVERS_API __declspec(dllimport)
#endif
#else
#define ZR_OBSERVERS_API __attribute__((visibility("default")))
#endif
