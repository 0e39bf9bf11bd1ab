#pragma once

/// ZELTBRAIDWERK_EXPORT marks the public interface of libzeltbraidwerk; all else is hidden.
///
/// ZELTBRAIDWERK_KERNEL_EXPORT marks the packed kernels. They are visible so that the Python
/// module, the tests and the benches reach them, but their headers are not installed and they
/// carry no promise of stability.
#if defined(_WIN32)
#if defined(ZELTBRAIDWERK_BUILDING)
#define ZELTBRAIDWERK_EXPORT __declspec(dllexport)
#else
#define ZELTBRAIDWERK_EXPORT __declspec(dllimport)
#endif
#else
#define ZELTBRAIDWERK_EXPORT __attribute__((visibility("default")))
#endif

#define ZELTBRAIDWERK_KERNEL_EXPORT ZELTBRAIDWERK_EXPORT
