#include <vector>

#include <benchmark/benchmark.h>

#include "kzs/AfraIndex.h"
#include "kzs/AfraWriter.h"
#include "kzs/BootstrapBuilder.h"
#include "kzs/BootstrapWriter.h"

namespace torvo::kzs {
namespace {

// A table in which each fragment opens a run of its own: the worst case.
void serialiseBootstrapOfRuns(benchmark::State& state) {
    BootstrapBuilder builder;
    std::uint64_t start = 0;
    for (std::uint32_t n = 1; n <= static_cast<std::uint32_t>(state.range(0)); ++n) {
        const std::uint64_t duration = n % 2 == 0 ? 4000 : 3000;
        builder.addFragment(1, n, milliseconds(start), duration);
        start += duration;
    }
    for (auto _ : state) benchmark::DoNotOptimize(serialiseBootstrap(builder.bootstrap(), true));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(serialiseBootstrapOfRuns)->Arg(1)->Arg(100)->Arg(10000);

void serialiseIndex(benchmark::State& state) {
    AfraIndex index;
    for (std::uint32_t n = 1; n <= static_cast<std::uint32_t>(state.range(0)); ++n) {
        AfraEntry entry;
        entry.time = milliseconds(std::uint64_t{n} * 4000);
        entry.segment = 1;
        entry.fragment = n;
        entry.afraOffset = std::uint64_t{n} * 1000000;
        index.globalEntries.push_back(entry);
    }
    std::vector<std::uint8_t> bytes;
    for (auto _ : state) {
        serialiseAfra(index, bytes);
        benchmark::DoNotOptimize(bytes.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(serialiseIndex)->Arg(100)->Arg(10000);

}  // namespace
}  // namespace torvo::kzs
