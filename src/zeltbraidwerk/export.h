#pragma once

/// ZELTBRAIDWERK_EXPORT marks the public interface of libzeltbraidwerk; all else is hidden. Tests,
/// benchmarks and the Python module, which also call what is hidden, link its object files instead.
#if defined(_WIN32)
#if defined(ZELTBRAIDWERK_BUILDING)
#define ZELTBRAIDWERK_EXPORT __declspec(dllexport)
#else
#define ZELTBRAIDWERK_EXPORT __declspec(dllimport)
#endif
#else
#define ZELTBRAIDWERK_EXPORT __attribute__((visibility("default")))
#endif
