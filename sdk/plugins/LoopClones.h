#pragma once

// Per-pixel loops marked with this are also built for AVX2 and picked at load time where the processor has
// it (twice the lanes). Without fused multiply-add the results are the same bit for bit. Sanitised builds
// keep the plain version only, which is the one they are there to check.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__) \
    && !defined(__SANITIZE_THREAD__)
#define ROW_LOOP_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define ROW_LOOP_CLONES
#endif
