// Rebuilding WIRELAYS from 2,000 live wire types beside 2,000 layers it must not catch.
#include "StoreBenchHost.h"

#include "store/ZelWireTypeRec.h"

#include <benchmark/benchmark.h>

namespace {

void BM_RegenTwoThousandRecords(benchmark::State& state) {
    StoreBenchHost host;
    // The non-wire names share the first three characters, so every pattern grows.
    host.addLayers(numberedNames(QStringLiteral("WIRE_"), 2000), true);
    host.addLayers(numberedNames(QStringLiteral("WIRING_"), 2000), false);
    host.addWdmAndSave(QString());

    ZelWireTypeRec store;
    const std::size_t records = store.GetCurDwgWireTypeInfo().size();
    for (auto _ : state)
        benchmark::DoNotOptimize(store.RegenWd_m());
    state.counters["records"] = static_cast<double>(records);
    state.SetLabel(host.wireLays().toStdString());
}
BENCHMARK(BM_RegenTwoThousandRecords)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
