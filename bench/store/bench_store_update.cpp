// The commit of a grid in which all of 1,000 wire types were edited.
#include "StoreBenchHost.h"

#include "store/ZelWireTypeRec.h"

#include <benchmark/benchmark.h>

#include <memory>

namespace {

void BM_UpdateThousandEditedRecords(benchmark::State& state) {
    StoreBenchHost host;
    host.addLayers(numberedNames(QStringLiteral("WIRE_"), 1000), true);
    host.addWdmAndSave(QStringLiteral("WIR*"));

    ZelWireTypeRec store;
    std::map<int, std::unique_ptr<WireLayerRec>> owned;
    std::map<int, WireLayerRec*> rows;
    for (const auto& [key, rec] : store.GetCurDwgWireTypeInfo()) {
        owned[key] = std::make_unique<WireLayerRec>(*rec);
        rows[key] = owned[key].get();
    }
    bool blue = false;
    for (auto _ : state) {
        blue = !blue;
        for (auto& [key, rec] : rows) {
            rec->editState = 1;
            rec->wireColor = blue ? QStringLiteral("BLU") : QStringLiteral("RED");
        }
        long key = 0;
        benchmark::DoNotOptimize(store.UpdateWireTypeRec(rows, key));
    }
    state.counters["records"] = static_cast<double>(rows.size());
}
BENCHMARK(BM_UpdateThousandEditedRecords)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
