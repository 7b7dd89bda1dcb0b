#pragma once

// One attribute for loops that gain from wide vectors: the compiler makes a version for AVX2 and a
// plain one, and the loader picks at start. Results are the same in both.

#if defined(__x86_64__) && defined(__gnu_linux__) && defined(__GNUC__) && !defined(__clang__) && \
    !defined(__SANITIZE_THREAD__)
#define VELLORAN_SIMD_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define VELLORAN_SIMD_CLONES
#endif
