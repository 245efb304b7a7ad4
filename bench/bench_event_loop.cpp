// How fast the virtual-time loop drives timers: 10^6 ticks of one 10 ms timer, as ticks per second.
#include <benchmark/benchmark.h>

#include "runtime/VirtualEventLoop.h"

static void BM_VirtualLoopTimerTicks(benchmark::State &state)
{
    const int64_t ticks = state.range(0);
    for (auto _ : state) {
        rt::VirtualEventLoop loop;
        int64_t count = 0;
        loop.startTimer(10, [&] { ++count; });
        loop.wait(ticks * 10);
        benchmark::DoNotOptimize(count);
        if (count != ticks)
            state.SkipWithError("wrong tick count");
    }
    state.counters["ticks_per_second"] = benchmark::Counter(static_cast<double>(ticks) * state.iterations(), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_VirtualLoopTimerTicks)->Arg(1000000)->Unit(benchmark::kMillisecond);

// The same ticks spread over the seven timers the main window holds, to see the cost of many.
static void BM_VirtualLoopSevenTimers(benchmark::State &state)
{
    for (auto _ : state) {
        rt::VirtualEventLoop loop;
        int64_t count = 0;
        for (int interval : {10, 1500, 10, 10, 5000, 3000, 500})
            loop.startTimer(interval, [&] { ++count; });
        loop.wait(3'300'000);
        benchmark::DoNotOptimize(count);
        state.counters["ticks"] = static_cast<double>(count);
    }
}
BENCHMARK(BM_VirtualLoopSevenTimers)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
