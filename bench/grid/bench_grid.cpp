// The wire type grid over a drawing of 10,000 layers: loading 2,000 wire types into it,
// moving the cursor among them, committing 1,000 rows that the drafter changed, and
// pasting 1,000 new ones.
#include "StoreBenchHost.h"

#include "grid/ZelWTGrid.h"
#include "grid/ZelWTGridMessages.h"
#include "shell/ResourceOverride.h"
#include "shell/ZelLibraryEntry.h"
#include "store/ZelWireTypeRec.h"

#include "platform/Clipboard.h"
#include "platform/PrivateMessage.h"
#include "platform/SettingsKey.h"

#include <QApplication>
#include <QCoreApplication>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QWidget>

#include <benchmark/benchmark.h>

#include <memory>

namespace {

// An owner with the format edit that the grid reads.
std::unique_ptr<QWidget> makeOwner() {
    auto owner = std::make_unique<QWidget>();
    auto* format = new QLineEdit(QStringLiteral("%C_%S"), owner.get());
    format->setObjectName(QStringLiteral("1019"));
    return owner;
}

// The grid of the edit dialog, loaded, with its posted colours painted.
std::unique_ptr<ZelWTGrid> openGrid(QWidget* owner) {
    auto grid = std::make_unique<ZelWTGrid>(owner);
    grid->Initialize();
    grid->InitGrid(owner, false, true);
    QCoreApplication::processEvents();
    return grid;
}

void loadDrawing(StoreBenchHost& host, int wireTypes, int layers) {
    host.addLayers(numberedNames(QStringLiteral("PLAIN_"), layers - wireTypes), false);
    host.addLayers(numberedNames(QStringLiteral("WIRE_"), wireTypes), true);
    host.addWdmAndSave(QStringLiteral("WIR*"));
}

void BM_InitGrid2000WireTypesIn10000Layers(benchmark::State& state) {
    StoreBenchHost host;
    loadDrawing(host, 2000, 10000);
    ZelAttachResources(QCoreApplication::applicationDirPath());
    int rows = 0;
    for (auto _ : state) {
        const std::unique_ptr<QWidget> owner = makeOwner();
        ZelWTGrid grid(owner.get());
        grid.Initialize();
        grid.InitGrid(owner.get(), false, true);
        // The colours come by posted message; they are part of what the drafter waits for.
        QCoreApplication::processEvents();
        rows = grid.GetWireTypeRows();
        ZelWireTypeRec::ResetKey();
    }
    state.counters["rows"] = rows;
}
BENCHMARK(BM_InitGrid2000WireTypesIn10000Layers)->Unit(benchmark::kMillisecond);

// One step of the cursor, as the dialogs move it: the new row turns blue and the old one
// white again. A drafter holding the Down key waits for this at every row.
void BM_MoveCursorIn2000WireTypes(benchmark::State& state) {
    StoreBenchHost host;
    loadDrawing(host, 2000, 10000);
    ZelAttachResources(QCoreApplication::applicationDirPath());
    const std::unique_ptr<QWidget> owner = makeOwner();
    ZelWTGrid grid(owner.get());
    grid.Initialize();
    grid.InitGrid(owner.get(), false, true);
    QCoreApplication::processEvents();
    int row = 0;
    for (auto _ : state) {
        row = row % grid.GetWireTypeRows() + 1;
        platform::PostMessage(&grid, zelgrid::WM_WTG_GOTOCELL, static_cast<quintptr>(row), 5);
        QCoreApplication::processEvents();
    }
    state.counters["rows"] = grid.GetWireTypeRows();
    ZelWireTypeRec::ResetKey();
}
BENCHMARK(BM_MoveCursorIn2000WireTypes)->Unit(benchmark::kMicrosecond);

void BM_CommitAll1000EditedRows(benchmark::State& state) {
    StoreBenchHost host;
    loadDrawing(host, 1000, 10000);
    ZelAttachResources(QCoreApplication::applicationDirPath());
    int rows = 0;
    bool blue = false;
    for (auto _ : state) {
        state.PauseTiming();
        const std::unique_ptr<QWidget> owner = makeOwner();
        std::unique_ptr<ZelWTGrid> grid = openGrid(owner.get());
        blue = !blue;
        OvCmColor color;
        color.setColorIndex(blue ? 5 : 1);
        for (int row = 1; row <= grid->GetWireTypeRows(); ++row)
            grid->SetRowColor(row, color);
        rows = grid->GetWireTypeRows();
        state.ResumeTiming();

        benchmark::DoNotOptimize(grid->CommitAll());

        state.PauseTiming();
        grid.reset();
        ZelWireTypeRec::ResetKey();
        QCoreApplication::processEvents();
        state.ResumeTiming();
    }
    state.counters["rows"] = rows;
}
BENCHMARK(BM_CommitAll1000EditedRows)->Unit(benchmark::kMillisecond)->Iterations(3);

// A thousand lines of wire colour and size pasted below the last wire type, as from a
// spreadsheet: every line becomes a new row, named by the format, before the drafter
// can go on.
void BM_Paste1000LinesBelow1000WireTypes(benchmark::State& state) {
    StoreBenchHost host;
    loadDrawing(host, 1000, 10000);
    ZelAttachResources(QCoreApplication::applicationDirPath());
    QString text;
    for (int line = 1; line <= 1000; ++line)
        text += QStringLiteral("PASTE%1\t%2\n").arg(line).arg(line % 7 + 1);
    // The module's texts are current while its dialogs are open.
    const ResourceOverride resources;
    int rows = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const std::unique_ptr<QWidget> owner = makeOwner();
        std::unique_ptr<ZelWTGrid> grid = openGrid(owner.get());
        grid->SetCurrentCell(grid->GetWireTypeRows() + 1, 3);
        QCoreApplication::processEvents();
        platform::SetClipboardText(text);
        state.ResumeTiming();

        grid->Paste();
        QCoreApplication::processEvents();

        state.PauseTiming();
        rows = grid->GetRowCount();
        grid.reset();
        ZelWireTypeRec::ResetKey();
        QCoreApplication::processEvents();
        state.ResumeTiming();
    }
    state.counters["rows"] = rows;
}
BENCHMARK(BM_Paste1000LinesBelow1000WireTypes)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    // The commit saves column widths: they go to a folder of the run, not the user's.
    QTemporaryDir settings;
    platform::SettingsKey::SetStoreFileName(settings.filePath(QStringLiteral("settings.ini")));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
