// Adding a pattern to a WIRELAYS list of 255 characters, the last length that still grows.
#include "StoreBenchHost.h"

#include "store/ZelWireTypeRec.h"

#include <benchmark/benchmark.h>

namespace {

QString listOf255() {
    QStringList tokens;
    QString list;
    for (int i = 0; list.size() < 250; ++i) {
        tokens << QStringLiteral("T%1*").arg(i, 3, 10, QLatin1Char('0'));
        list = tokens.join(u',');
    }
    tokens.last().insert(1, QString(255 - list.size(), u'X'));
    return tokens.join(u',');
}

void BM_AddtoListOf255(benchmark::State& state) {
    StoreBenchHost host;
    host.addLayers(numberedNames(QStringLiteral("NET_"), 1000), false);
    const QString full = listOf255();
    host.addWdmAndSave(full);

    ZelWireTypeRec store;
    store.GetCurDwgWireTypeInfo(); // the non-wire layers the pattern must miss
    for (auto _ : state) {
        state.PauseTiming();
        host.setWireLays(full);
        state.ResumeTiming();
        benchmark::DoNotOptimize(store.AddtoWd_m(QStringLiteral("NEW_RED_1.5"), false));
    }
    state.SetLabel(QStringLiteral("%1 -> %2 characters")
                       .arg(full.size())
                       .arg(host.wireLays().size())
                       .toStdString());
}
BENCHMARK(BM_AddtoListOf255)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
