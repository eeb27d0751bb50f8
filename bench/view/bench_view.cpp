// The drawing view on a large drawing: ZEL_BENCH_LAYERS (default 10000) layers and
// ZEL_BENCH_LINES (default 100000) lines, one layer in three dashed, with a WD_M block
// reference whose WIRELAYS names a pattern per wire layer.
//
// Measured: the snapshot that a command's end re-reads, and what a person waits for at
// zoom and pan: the whole redraw of a 1280 by 900 view, at extents, zoomed in, and after a
// pan. Runs on the offscreen platform, so the numbers are Qt's raster engine alone.

#include "OvDrawingItem.h"
#include "OvDrawingSnapshot.h"
#include "OvDrawingView.h"

#include "ovdb/ovdb.h"

#include <QApplication>
#include <QImage>
#include <QPainter>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

int sizeFromEnv(const char* name, int fallback) {
    const char* text = std::getenv(name);
    const int value = text ? std::atoi(text) : 0;
    return value > 0 ? value : fallback;
}

void generate(OvDbDatabase& db, int layers, int lines) {
    OvDbObjectId dashed;
    {
        OvDbLinetypeTable* linetypes = nullptr;
        db.getSymbolTable(linetypes, OvDb::kForWrite);
        auto* record = new OvDbLinetypeTableRecord();
        record->setName(L"BENCH_DASHED");
        record->setDashes({6.0, -3.0});
        linetypes->add(dashed, record);
        record->close();
        linetypes->close();
    }
    OvDbLayerTable* table = nullptr;
    db.getSymbolTable(table, OvDb::kForWrite);
    std::vector<OvDbObjectId> layerIds;
    QStringList patterns;
    for (int i = 0; i < layers; ++i) {
        wchar_t name[32];
        std::swprintf(name, 32, L"WIRE_%05d", i);
        auto* layer = new OvDbLayerTableRecord();
        layer->setName(name);
        OvCmColor color;
        color.setColorIndex(1 + i % 255);
        layer->setColor(color);
        OvDbObjectId id;
        table->add(id, layer);
        if (i % 3 == 0)
            layer->setLinetypeObjectId(dashed);
        layer->close();
        layerIds.push_back(id);
        patterns << QString::fromWCharArray(name);
    }
    table->close();

    OvDbBlockTable* blocks = nullptr;
    db.getSymbolTable(blocks, OvDb::kForWrite);
    auto* wdm = new OvDbBlockTableRecord();
    wdm->setName(L"WD_M");
    OvDbObjectId wdmId;
    blocks->add(wdmId, wdm);
    wdm->close();
    blocks->close();

    OvDbBlockTableRecord* model = nullptr;
    ovdbOpenObject(model, db.modelSpaceId(), OvDb::kForWrite);
    auto* reference = new OvDbBlockReference(OvGePoint3d(0, -20, 0), wdmId);
    model->appendOvDbEntity(reference);
    auto* attribute =
        new OvDbAttribute(OvGePoint3d(0, -20, 0), patterns.join(u','), QStringLiteral("WIRELAYS"));
    reference->appendAttribute(attribute);
    attribute->close();
    reference->close();
    // Lines in rows, as wires on sheets: about 500 by 1000 drawing units.
    for (int i = 0; i < lines; ++i) {
        const double x = (i % 100) * 5.0;
        const double y = (i / 100) * 1.0;
        auto* line = new OvDbLine(OvGePoint3d(x, y, 0), OvGePoint3d(x + 4.0, y, 0));
        line->setLayer(layerIds[static_cast<std::size_t>(i % layers)]);
        model->appendOvDbEntity(line);
        line->close();
    }
    model->close();
}

struct Sample {
    Sample() {
        layers = sizeFromEnv("ZEL_BENCH_LAYERS", 10000);
        lines = sizeFromEnv("ZEL_BENCH_LINES", 100000);
        generate(db, layers, lines);
        snapshot = std::make_shared<OvDrawingSnapshot>(&db);
        view = std::make_unique<OvDrawingView>(nullptr);
        view->resize(1280, 900);
        view->show();
        view->setSnapshot(snapshot);
        view->zoomExtents();
        std::fprintf(stderr, "drawing: %d layers, %d lines, %zu segments drawn at extents\n",
                     layers, lines, snapshot->segments().size());
    }
    static Sample& get() {
        static Sample sample;
        return sample;
    }

    // One whole redraw of the view, as its viewport gets it.
    void redraw() {
        QPainter painter(&image);
        view->render(&painter, QRectF(), view->viewport()->rect());
    }

    int layers = 0;
    int lines = 0;
    OvDbDatabase db;
    std::shared_ptr<OvDrawingSnapshot> snapshot;
    std::unique_ptr<OvDrawingView> view;
    QImage image{1280, 900, QImage::Format_ARGB32_Premultiplied};
};

void counters(benchmark::State& state, const Sample& s) {
    state.counters["layers"] = s.layers;
    state.counters["lines"] = s.lines;
    state.counters["drawn"] = static_cast<double>(s.view->item()->lastSegmentsDrawn());
}

void BM_SnapshotRead(benchmark::State& state) {
    Sample& s = Sample::get();
    for (auto _ : state) {
        OvDrawingSnapshot snapshot(&s.db);
        benchmark::DoNotOptimize(snapshot.segments().size());
    }
    counters(state, s);
}

void BM_RedrawAtExtents(benchmark::State& state) {
    Sample& s = Sample::get();
    s.view->zoomExtents();
    for (auto _ : state)
        s.redraw();
    counters(state, s);
}

// A wheel step in and out again at extents: every line still in sight.
void BM_ZoomStepAtExtents(benchmark::State& state) {
    Sample& s = Sample::get();
    s.view->zoomExtents();
    bool in = true;
    for (auto _ : state) {
        s.view->zoomBy(in ? 1.2 : 1 / 1.2);
        in = !in;
        s.redraw();
    }
    counters(state, s);
}

// Zoomed in eight times, the view pans a tenth of its width each time.
void BM_PanZoomedIn(benchmark::State& state) {
    Sample& s = Sample::get();
    s.view->zoomExtents();
    s.view->zoomBy(8.0);
    int step = 0;
    for (auto _ : state) {
        s.view->panBy(QPointF((step++ % 10 < 5) ? 128 : -128, 0));
        s.redraw();
    }
    counters(state, s);
}

BENCHMARK(BM_SnapshotRead)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RedrawAtExtents)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ZoomStepAtExtents)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PanZoomedIn)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
