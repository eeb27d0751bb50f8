// ovutWcMatch over the layers of a large drawing, as the wire type store does when it
// reads WIRELAYS or looks for a wildcard that catches no other layer.
#include "ovdb/ovut.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace {

// 10,000 upper-cased layer names of the kinds a schematic holds: wire layers named after
// colour and size, the add-on's own layers, and a few long ones.
const std::vector<std::wstring>& layerNames() {
    static const std::vector<std::wstring> names = [] {
        const wchar_t* colours[] = {L"RED", L"BLU", L"BLK", L"WHT", L"GNYE", L"BRN", L"GRY"};
        const wchar_t* sizes[] = {L"0.5", L"0.75", L"1", L"1.5", L"2.5", L"4", L"6", L"10"};
        const wchar_t* others[] = {L"WIREREF", L"WIRENO", L"TAG",  L"XREF", L"DESC",
                                   L"TERM",    L"LOC",    L"MISC", L"LINK", L"COMP"};
        std::vector<std::wstring> all;
        all.reserve(10000);
        for (int i = 0; all.size() < 10000; ++i) {
            switch (i % 4) {
            case 0:
            case 1:
                all.push_back(std::wstring(colours[i % 7]) + L"_" + sizes[(i / 7) % 8] + L"_" +
                              std::to_wstring(i));
                break;
            case 2:
                all.push_back(std::wstring(L"WIR") + others[i % 10] + std::to_wstring(i));
                break;
            default:
                all.push_back(std::wstring(L"SCHEMATIC_SHEET_") + others[i % 10] +
                              L"_SYMBOLS_AND_TEXT_" + std::to_wstring(i));
            }
        }
        return all;
    }();
    return names;
}

void matchAll(benchmark::State& state, const wchar_t* pattern) {
    const auto& names = layerNames();
    for (auto _ : state) {
        int hits = 0;
        for (const auto& name : names)
            hits += ovutWcMatch(name.c_str(), pattern) != 0;
        benchmark::DoNotOptimize(hits);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(names.size()));
}

} // namespace

BENCHMARK_CAPTURE(matchAll, prefix, L"WIR*");
BENCHMARK_CAPTURE(matchAll, wirelays, L"RED*,BLU*,GNYE_2.5");
BENCHMARK_CAPTURE(matchAll, long_wirelays,
                  L"RED_*,BLU_*,BLK_*,WHT_*,GNYE_2.5,GNYE_4,BRN*,GRY_1*,WIRENO*,WIREREF*");
BENCHMARK_CAPTURE(matchAll, sets, L"[RB][EL][DU]_#*,[~A-V]H*");
BENCHMARK_CAPTURE(matchAll, negation, L"~WIR*,SCHEMATIC*");
BENCHMARK_CAPTURE(matchAll, inner_stars, L"*_*_*TEXT*#");

BENCHMARK_MAIN();
