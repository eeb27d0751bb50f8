// The load of a drawing with 10,000 layers, half of them wire types with their records,
// and the host's layer walk that the store makes for every layer it looks up.
#include "StoreBenchHost.h"

#include "store/ZelWireTypeRec.h"

#include "ovdb/OvDbLayerTableRecord.h"

#include <benchmark/benchmark.h>

namespace {

StoreBenchHost& drawing() {
    static StoreBenchHost* host = [] {
        auto* made = new StoreBenchHost;
        // Wire layers and sheet layers in blocks, as a schematic grows.
        const QStringList wires = numberedNames(QStringLiteral("WIRE_"), 5000);
        const QStringList sheets = numberedNames(QStringLiteral("SHEET_"), 5000);
        for (int i = 0; i < 5000; i += 100) {
            made->addLayers(wires.mid(i, 100), true);
            made->addLayers(sheets.mid(i, 100), false);
        }
        made->addWdmAndSave(QStringLiteral("WIR*"));
        return made;
    }();
    return *host;
}

void BM_LoadTenThousandLayers(benchmark::State& state) {
    drawing();
    std::size_t loaded = 0;
    for (auto _ : state) {
        ZelWireTypeRec store;
        loaded = store.GetCurDwgWireTypeInfo().size();
        benchmark::DoNotOptimize(loaded);
        ZelWireTypeRec::ResetKey();
    }
    state.counters["wireTypes"] = static_cast<double>(loaded);
}
BENCHMARK(BM_LoadTenThousandLayers)->Unit(benchmark::kMillisecond);

// One look-up by name: the walk opens every layer up to the one asked for.
void BM_LayerWalkToTheLastLayer(benchmark::State& state) {
    drawing();
    ZelWireTypeRec store;
    for (auto _ : state) {
        OvDbLayerTableRecord* layer = nullptr;
        benchmark::DoNotOptimize(
            store.GetLayerTblRec(QStringLiteral("SHEET_4999"), OvDb::kForRead, layer));
        if (layer)
            layer->close();
    }
}
BENCHMARK(BM_LayerWalkToTheLastLayer)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
