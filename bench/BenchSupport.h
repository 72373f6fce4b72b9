#pragma once

#include "math/TarvoDspWideVectors.h"

#include <benchmark/benchmark.h>

#include <string>

namespace tarvo::bench
{
/// The instruction set the benchmark binary was compiled for.
inline std::string compiledInstructionSet()
{
#if defined(__AVX512F__)
    return "avx512";
#elif defined(__AVX2__)
    return "avx2";
#elif defined(__AVX__)
    return "avx";
#elif defined(__SSE4_2__)
    return "sse4.2";
#elif defined(__x86_64__)
    return "sse2 (x86-64 baseline)";
#elif defined(__aarch64__)
    return "neon (arm64)";
#else
    return "generic";
#endif
}

/// What ran, reported with every run: the compiled instruction set, and whether the kernels
/// with an AVX2 body chose it at run time.
inline std::string instructionSet()
{
    return compiledInstructionSet() + (ondo::simd::useWideVectors() ? " + avx2 kernels" : "");
}

/// Reports nanoseconds per processed element (sample, or sample times channel).
inline void reportNanosecondsPer(benchmark::State& state, double elementsPerIteration, const char* unit = "ns/element")
{
    state.counters[unit] = benchmark::Counter(elementsPerIteration, benchmark::Counter::kIsIterationInvariantRate |
                                                                        benchmark::Counter::kInvert);
    state.SetLabel(instructionSet());
}
} // namespace tarvo::bench
