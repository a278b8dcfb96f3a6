// What every file of the tree may use: the export mark, the lock annotations, the marks of deliberate choices.

#pragma once

// An export of a library: a C symbol that other libraries find by name. Everything else is hidden.
#define LY_EXPORT extern "C" __attribute__((visibility("default")))

// The module handle of a library or application. Opaque: it is stored and handed on, never looked into.
struct HINSTANCE__;

// Lock annotations, checked by clang's -Wthread-safety and empty elsewhere.
#if defined(__clang__)
#define LY_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define LY_THREAD_ANNOTATION(x)
#endif
#define LY_CAPABILITY(x) LY_THREAD_ANNOTATION(capability(x))
#define LY_SCOPED_CAPABILITY LY_THREAD_ANNOTATION(scoped_lockable)
#define LY_GUARDED_BY(x) LY_THREAD_ANNOTATION(guarded_by(x))
#define LY_ACQUIRE(...) LY_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define LY_RELEASE(...) LY_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define LY_NO_THREAD_SAFETY_ANALYSIS LY_THREAD_ANNOTATION(no_thread_safety_analysis)
