#include <benchmark/benchmark.h>

#include "kzm/impl/TrafBox.h"
#include "kzm/impl/TrunBox.h"

namespace qlix::kzm::impl {
namespace {

// One run of samples that lie one behind the other, as the hint track has it.
void appendToOneRun(benchmark::State& state) {
    for (auto _ : state) {
        TrunBox run(BoxContext{}, 16, 0);
        FragmentSample sample;
        sample.offset = 16;
        for (std::int64_t n = 0; n < state.range(0); ++n) {
            sample.size = 1000;
            sample.decodeTime += 23;
            benchmark::DoNotOptimize(run.append(sample));
            sample.offset += 1000;
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(appendToOneRun)->Arg(300);

// A run for each sample, as media tracks have it: their bytes lie inside tags.
void aRunForEachSample(benchmark::State& state) {
    for (auto _ : state) {
        TrafBox track(BoxContext{}, 1, 16, 1);
        FragmentSample sample;
        sample.offset = 16;
        sample.descriptionIndex = 1;
        for (std::int64_t n = 0; n < state.range(0); ++n) {
            sample.size = 985;
            sample.decodeTime += 23;
            benchmark::DoNotOptimize(track.addSample(sample));
            sample.offset += 1000;
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(aRunForEachSample)->Arg(300);

}  // namespace
}  // namespace qlix::kzm::impl
