#include <benchmark/benchmark.h>

#include "kzs/base/FileStream.h"
#include "kzspkgutil/FLVMediaSourceProvider.h"
#include "kzspkgutil/model/PackagerContext.h"

namespace torvo::kzspkgutil {
namespace {

// From the file to messages: everything that a tag costs before it is written.
void readEveryTagOfAClip(benchmark::State& state) {
    RefCountedMemoryArena arena;
    PackagerContext context(arena);
    FLVMediaSourceProvider provider;
    const auto source = provider.createSource(context, KZ_CLIP, kzs::openFlagsFor(false, false));
    std::int64_t tags = 0;
    for (auto _ : state) {
        const auto samples = source->getSampleIterator();
        for (; samples->hasNext(); ++tags) {
            samples->next();
            benchmark::DoNotOptimize(samples->currentMessage());
        }
    }
    state.SetItemsProcessed(tags);
}
BENCHMARK(readEveryTagOfAClip);

}  // namespace
}  // namespace torvo::kzspkgutil
