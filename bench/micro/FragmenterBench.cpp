#include <benchmark/benchmark.h>

#include "kzs/AVFragmenter.h"
#include "kzs/AudioFragmenter.h"

namespace torvo::kzs {
namespace {

// One sample in 20 ms, alternately video and audio, a key frame every 2 s.
void avFragmenter(benchmark::State& state) {
    AVFragmenter fragmenter(4000, false);
    FragmenterSample sample;
    for (auto _ : state) {
        sample.time.value += 20;
        sample.trackKind =
            (sample.time.value / 20) % 2 == 0 ? FragmenterSample::kVideo : FragmenterSample::kAudio;
        sample.isKeyFrame = sample.time.value % 2000 == 0;
        benchmark::DoNotOptimize(fragmenter.addSample(sample));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(avFragmenter);

void audioFragmenter(benchmark::State& state) {
    AudioFragmenter fragmenter(4000, false);
    FragmenterSample sample;
    for (auto _ : state) {
        sample.time.value += 23;
        benchmark::DoNotOptimize(fragmenter.addSample(sample));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(audioFragmenter);

}  // namespace
}  // namespace torvo::kzs
