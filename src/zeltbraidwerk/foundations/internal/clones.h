#pragma once

/// \file
/// ZELTBRAIDWERK_CLONES compiles a hot kernel several times and picks a version at load. Use it
/// only on functions in an anonymous namespace without an earlier declaration: some compilers drop
/// the dispatch otherwise. Helpers called inside must be inline to follow the version chosen, and
/// nothing with a constructor is made inside: clang 16 leaves out one that only such functions
/// call. Without it std::popcount is a table look-up on the base instruction set, eight times
/// slower.
#if defined(__SANITIZE_THREAD__)
#define ZELTBRAIDWERK_CLONES
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define ZELTBRAIDWERK_CLONES
#endif
#endif
#if !defined(ZELTBRAIDWERK_CLONES) && defined(__x86_64__)
#define ZELTBRAIDWERK_CLONES __attribute__((target_clones("avx2", "popcnt", "default")))
#endif
#ifndef ZELTBRAIDWERK_CLONES
#define ZELTBRAIDWERK_CLONES
#endif
