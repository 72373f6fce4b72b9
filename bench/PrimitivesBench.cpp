#include "BenchSupport.h"

#include "containers/TarvoDspVector.h"
#include "math/TarvoDspVectorPrimitives.h"

using namespace ondo::primitives;

namespace
{
void fillRamp(ondo::Vector<float>& v)
{
    for (std::size_t i = 0; i < v.size(); ++i)
        v[i] = 0.001f * static_cast<float>(i % 97);
}

void BM_AddProductConstant32(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    ondo::Vector<float> src(n), dst(n);
    fillRamp(src);
    for (auto _ : state)
    {
        vectorAddProductConstant32(src.data(), 0.5f, dst.data(), n);
        benchmark::ClobberMemory();
    }
    tarvo::bench::reportNanosecondsPer(state, n);
}

void BM_MultiplyConstant32(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    ondo::Vector<float> src(n), dst(n);
    fillRamp(src);
    for (auto _ : state)
    {
        vectorMultiplyConstant32(src.data(), 0.999f, dst.data(), n);
        benchmark::ClobberMemory();
    }
    tarvo::bench::reportNanosecondsPer(state, n);
}

void BM_Convert64To32(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    ondo::Vector<double> src(n);
    ondo::Vector<float> dst(n);
    for (int i = 0; i < n; ++i)
        src[i] = 0.25 * i;
    for (auto _ : state)
    {
        vectorConvert64To32(src.data(), dst.data(), n);
        benchmark::ClobberMemory();
    }
    tarvo::bench::reportNanosecondsPer(state, n);
}

void BM_Convert32To64(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    ondo::Vector<float> src(n);
    ondo::Vector<double> dst(n);
    fillRamp(src);
    for (auto _ : state)
    {
        vectorConvert32To64(src.data(), dst.data(), n);
        benchmark::ClobberMemory();
    }
    tarvo::bench::reportNanosecondsPer(state, n);
}
} // namespace

BENCHMARK(BM_AddProductConstant32)->Arg(64)->Arg(512);
BENCHMARK(BM_MultiplyConstant32)->Arg(64)->Arg(512);
BENCHMARK(BM_Convert64To32)->Arg(64)->Arg(512);
BENCHMARK(BM_Convert32To64)->Arg(64)->Arg(512);
