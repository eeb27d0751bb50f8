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

// A grid commit of 1,000 edited rows in a drawing of 10,000 layers, half of them wire
// types: each edit finds its layer by a walk of the whole table.
void BM_UpdateThousandOfTenThousandLayers(benchmark::State& state) {
    StoreBenchHost host;
    host.addLayers(numberedNames(QStringLiteral("WIRE_"), 5000), true);
    host.addLayers(numberedNames(QStringLiteral("OTHER_"), 5000), false);
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
        int edited = 0;
        for (auto& [key, rec] : rows) {
            // Spread over the table, so that the walks are of every length.
            rec->editState = (key % 5 == 0 && edited < 1000) ? 1 : 0;
            if (rec->editState == 1) {
                ++edited;
                rec->wireColor = blue ? QStringLiteral("BLU") : QStringLiteral("RED");
            }
        }
        long key = 0;
        benchmark::DoNotOptimize(store.UpdateWireTypeRec(rows, key));
    }
    state.counters["layers"] = 10000;
    state.counters["edited"] = 1000;
}
BENCHMARK(BM_UpdateThousandOfTenThousandLayers)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace

BENCHMARK_MAIN();
