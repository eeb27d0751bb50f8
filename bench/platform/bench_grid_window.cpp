// The grid window at the size of a large wire type list: 2,000 rows of 26 columns,
// filled cell by cell as a grid's load does, and sorted by a column's text; and a grid made
// and sized, as every dialog with a grid does when it opens.

#include "platform/GridWindow.h"

#include <QApplication>

#include <benchmark/benchmark.h>

#include <random>

namespace {

using platform::GridRange;
using platform::GridSortInfo;
using platform::GridWindow;

constexpr int kRows = 2000;
constexpr int kCols = 26;

QString cellText(std::mt19937& random, int col) {
    static const char* const colours[] = {"RED", "BLU", "GRN", "YEL", "BLK", "WHT", "ORN", "VIO"};
    if (col == 1) {
        return QString::number(random() % 100000);
    }
    return QStringLiteral("%1_%2").arg(colours[random() % 8]).arg(random() % 1000);
}

void fill(GridWindow& grid, bool hold) {
    std::mt19937 random(7);
    grid.SetRowCount(kRows);
    grid.SetColCount(kCols);
    const bool held = hold && grid.LockUpdate(true);
    for (int r = 1; r <= kRows; ++r) {
        for (int c = 1; c <= kCols; ++c) {
            grid.SetValueRange(GridRange(r, c), cellText(random, c));
        }
    }
    if (hold) {
        grid.LockUpdate(held);
    }
    // The one redraw that ends the load, painted now rather than when the loop next runs.
    grid.viewport()->repaint();
}

void BM_FillCellByCellHeld(benchmark::State& state) {
    for (auto _ : state) {
        GridWindow grid;
        grid.resize(1200, 800);
        grid.show();
        fill(grid, true);
        benchmark::DoNotOptimize(grid.GetValueRowCol(kRows, kCols));
    }
    state.SetItemsProcessed(state.iterations() * kRows * kCols);
}
BENCHMARK(BM_FillCellByCellHeld)->Unit(benchmark::kMillisecond);

// The same without holding updates, to see what the hold saves.
void BM_FillCellByCellUnheld(benchmark::State& state) {
    for (auto _ : state) {
        GridWindow grid;
        grid.resize(1200, 800);
        grid.show();
        fill(grid, false);
        benchmark::DoNotOptimize(grid.GetValueRowCol(kRows, kCols));
    }
    state.SetItemsProcessed(state.iterations() * kRows * kCols);
}
BENCHMARK(BM_FillCellByCellUnheld)->Unit(benchmark::kMillisecond);

void BM_MakeGrid(benchmark::State& state) {
    for (auto _ : state) {
        GridWindow grid;
        grid.SetColCount(kCols);
        grid.SetRowCount(1);
        benchmark::DoNotOptimize(grid.GetColCount());
    }
}
BENCHMARK(BM_MakeGrid)->Unit(benchmark::kMicrosecond);

void BM_SortAllRowsByText(benchmark::State& state) {
    GridWindow grid;
    grid.resize(1200, 800);
    grid.show();
    fill(grid, true);
    bool ascending = true;
    for (auto _ : state) {
        grid.SortRows(GridRange::rows(1, kRows), {GridSortInfo{int(state.range(0)), ascending}});
        ascending = !ascending;
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}
BENCHMARK(BM_SortAllRowsByText)->Arg(1)->Arg(5)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
