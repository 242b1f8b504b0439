// parseResult against json-glib's own parse of the same text.
#include "Answers.h"
#include "Pairs.h"
#include "SearchControl.h"

namespace Benchmarks {

namespace {

void parseResult(benchmark::State& state)
{
    const std::string text = answerWith(static_cast<size_t>(state.range(0)));
    Carvoy::SearchControl control;
    comparePairs(
        state, [&] { benchmark::DoNotOptimize(control.parseResult(text)); },
        [&] { benchmark::DoNotOptimize(parseWithJsonGlib(text)); });
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
    state.counters["bytes"] = static_cast<double>(text.size());
}

BENCHMARK(parseResult)->Arg(6)->Arg(200)->Arg(2000)->Arg(20000)->UseManualTime()->MinTime(1.0);

}  // namespace

}  // namespace Benchmarks
