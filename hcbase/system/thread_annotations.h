/// Macros for clang's thread safety analysis, empty for other compilers: what a lock is, which function takes or
/// releases it, and which data it guards.
#pragma once

#if defined(__clang__)
#define HC_THREAD_ANNOTATION(mark) __attribute__((mark))
#else
#define HC_THREAD_ANNOTATION(mark)
#endif

#define HC_CAPABILITY(name) HC_THREAD_ANNOTATION(capability(name))
#define HC_SCOPED_CAPABILITY HC_THREAD_ANNOTATION(scoped_lockable)
#define HC_GUARDED_BY(lock) HC_THREAD_ANNOTATION(guarded_by(lock))
#define HC_PT_GUARDED_BY(lock) HC_THREAD_ANNOTATION(pt_guarded_by(lock))
#define HC_REQUIRES(...) HC_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define HC_ACQUIRE(...) HC_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define HC_TRY_ACQUIRE(...) HC_THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))
#define HC_RELEASE(...) HC_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define HC_NO_THREAD_SAFETY_ANALYSIS HC_THREAD_ANNOTATION(no_thread_safety_analysis)
