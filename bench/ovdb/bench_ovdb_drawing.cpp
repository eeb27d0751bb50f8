// Large drawings: reading, saving, the walk over all layers that a wire type load makes,
// usage data, and the open and close and name look-up that everything else is made of.
//
// The size comes from the environment: ZEL_BENCH_LAYERS (default 2000) layers, each with
// an extension dictionary and a wire type record, and ZEL_BENCH_LINES (default 100000)
// lines spread over them, plus a WD_M block reference with its WIRELAYS attribute.

#include "ovdb/ovdb.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <simdjson.h>

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace Orvex;

int sizeFromEnv(const char* name, int fallback) {
    const char* text = std::getenv(name);
    const int value = text ? std::atoi(text) : 0;
    return value > 0 ? value : fallback;
}

std::wstring layerName(int i) {
    wchar_t name[32];
    std::swprintf(name, 32, L"WIRE_%05d", i);
    return name;
}

// The wire type record of a layer: groups 1, 2, 3, twenty 4s, 90 and 290.
resbuf* wireRecord(int i) {
    resbuf* chain = ovutBuildList(1, L"RED", 2, std::to_wstring(i % 50).c_str(), 3, L"WIRE", 0);
    resbuf* tail = chain->rbnext->rbnext;
    for (int k = 0; k < 20; ++k) {
        tail->rbnext = ovutBuildList(4, k < 3 ? L"user value" : L"", 0);
        tail = tail->rbnext;
    }
    tail->rbnext = ovutBuildList(90, i, 290, 1, 0);
    return chain;
}

void generate(OvDbDatabase& db, int layers, int lines) {
    OvDbLayerTable* table = nullptr;
    db.getSymbolTable(table, OvDb::kForWrite);
    std::vector<OvDbObjectId> layerIds;
    layerIds.reserve(layers);
    for (int i = 0; i < layers; ++i) {
        auto* layer = new OvDbLayerTableRecord();
        layer->setName(layerName(i).c_str());
        OvCmColor color;
        color.setColorIndex(1 + i % 255);
        layer->setColor(color);
        OvDbObjectId id;
        table->add(id, layer);
        layer->createExtensionDictionary();
        OvDbDictionary* dict = nullptr;
        ovdbOpenObject(dict, layer->extensionDictionary(), OvDb::kForWrite);
        auto* xrec = new OvDbXrecord();
        OvDbObjectId xrecId;
        dict->setAt(L"ZEL_WIRETYPE", xrec, xrecId);
        resbuf* chain = wireRecord(i);
        xrec->setFromRbChain(chain);
        ovutRelRb(chain);
        xrec->close();
        dict->close();
        layer->close();
        layerIds.push_back(id);
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
    auto* reference = new OvDbBlockReference(OvGePoint3d(0, 0, 0), wdmId);
    model->appendOvDbEntity(reference);
    auto* attribute =
        new OvDbAttribute(OvGePoint3d(0, 0, 0), QStringLiteral("WIR*"), QStringLiteral("WIRELAYS"));
    reference->appendAttribute(attribute);
    attribute->close();
    reference->close();
    for (int i = 0; i < lines; ++i) {
        auto* line =
            new OvDbLine(OvGePoint3d(i * 0.5, i % 1000, 0), OvGePoint3d(i * 0.5 + 10, i % 1000, 0));
        line->setLayer(layerIds[static_cast<std::size_t>(i % layers)]);
        model->appendOvDbEntity(line);
        line->close();
    }
    model->close();
}

// One drawing and its file for all benchmarks of a run.
struct Sample {
    Sample() {
        layers = sizeFromEnv("ZEL_BENCH_LAYERS", 2000);
        lines = sizeFromEnv("ZEL_BENCH_LINES", 100000);
        generate(db, layers, lines);
        file = dir.filePath(QStringLiteral("large.dwg"));
        db.saveAs(file.toStdWString().c_str());
        fileSize = QFileInfo(file).size();
        std::fprintf(stderr, "drawing: %d layers, %d lines, %zu objects, file %lld bytes\n", layers,
                     lines, db.approxNumObjects(), static_cast<long long>(fileSize));
    }

    static Sample& get() {
        static Sample sample;
        return sample;
    }

    int layers = 0;
    int lines = 0;
    OvDbDatabase db;
    QTemporaryDir dir;
    QString file;
    qint64 fileSize = 0;
};

void counters(benchmark::State& state, const Sample& s) {
    state.counters["layers"] = s.layers;
    state.counters["lines"] = s.lines;
    state.counters["fileMB"] = static_cast<double>(s.fileSize) / (1024.0 * 1024.0);
}

// Bytes per second is the reader's speed; compare it with the bare parse below.
void BM_ReadDrawing(benchmark::State& state) {
    Sample& s = Sample::get();
    const std::wstring path = s.file.toStdWString();
    for (auto _ : state) {
        auto side = std::make_unique<OvDbDatabase>(false, true);
        if (side->readDwgFile(path.c_str(), 3, false, nullptr) != eOk)
            state.SkipWithError("read failed");
        benchmark::DoNotOptimize(side->approxNumObjects());
        // Freeing the objects is the closing of the drawing, not its reading, and the bare
        // parse below frees nothing of its tree either.
        state.PauseTiming();
        side.reset();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * s.fileSize);
    counters(state, s);
}

// A line of /proc/self/status, in kB; -1 when it cannot be read.
long statusKb(const char* key) {
    std::ifstream status("/proc/self/status");
    std::string line;
    const std::size_t length = std::strlen(key);
    while (std::getline(status, line)) {
        if (line.compare(0, length, key) == 0 && line.size() > length && line[length] == ':')
            return std::atol(line.c_str() + length + 1);
    }
    return -1;
}

// The memory a read takes, per line of the drawing: the peak of the resident set while
// reading, and what the database holds once read, both over what the process had before.
// A child process reads, so that the peak is that of the read alone; it first hands back
// the memory the sample left free, so that reusing it is counted too.
void BM_ReadMemory(benchmark::State& state) {
    Sample& s = Sample::get();
    const std::wstring path = s.file.toStdWString();
    struct Result {
        long before, peak, held;
    };
    std::vector<Result> results;
    for (auto _ : state) {
        Result result{-1, -1, -1};
        int channel[2];
        if (::pipe(channel) != 0) {
            state.SkipWithError("no pipe");
            break;
        }
        const pid_t child = ::fork();
        if (child == 0) {
            ::close(channel[0]);
            ::malloc_trim(0);
            // Resets the peak of the resident set to what it is now.
            std::ofstream("/proc/self/clear_refs") << "5";
            Result r{statusKb("VmRSS"), -1, -1};
            {
                OvDbDatabase side(false, true);
                const bool ok = side.readDwgFile(path.c_str(), 3, false, nullptr) == eOk;
                r.peak = statusKb("VmHWM");
                r.held = ok ? statusKb("VmRSS") : -1;
            }
            const bool sent = ::write(channel[1], &r, sizeof r) == sizeof r;
            ::_exit(sent ? 0 : 1);
        }
        ::close(channel[1]);
        const bool got = ::read(channel[0], &result, sizeof result) == sizeof result;
        ::close(channel[0]);
        int status = 0;
        ::waitpid(child, &status, 0);
        if (!got || result.held < 0 || result.before < 0 || result.peak < 0) {
            state.SkipWithError("the read in the child failed");
            break;
        }
        results.push_back(result);
    }
    if (results.empty())
        return;
    // The median of the runs by peak: other work on the machine moves single runs.
    std::sort(results.begin(), results.end(), [](const Result& a, const Result& b) {
        return a.peak - a.before < b.peak - b.before;
    });
    const Result& result = results[results.size() / 2];
    const double lines = s.lines;
    state.counters["peakBytesPerLine"] = (result.peak - result.before) * 1024.0 / lines;
    state.counters["heldBytesPerLine"] = (result.held - result.before) * 1024.0 / lines;
    state.counters["peakMB"] = (result.peak - result.before) / 1024.0;
    counters(state, s);
}

// The parser alone on the same file, loaded from disk each time as the reader does: what
// a read can at best come near.
void BM_BareParse(benchmark::State& state) {
    Sample& s = Sample::get();
    const std::string path = s.file.toStdString();
    simdjson::dom::parser parser;
    for (auto _ : state) {
        simdjson::padded_string data;
        if (simdjson::padded_string::load(path).get(data) != simdjson::SUCCESS) {
            state.SkipWithError("load failed");
            break;
        }
        simdjson::dom::element document;
        if (parser.parse(data).get(document) != simdjson::SUCCESS)
            state.SkipWithError("parse failed");
        benchmark::DoNotOptimize(document);
    }
    state.SetBytesProcessed(state.iterations() * s.fileSize);
    counters(state, s);
}

// The references of the WD_M block, which the block knows: costs their number, whatever
// the number of lines.
void BM_BlockReferences(benchmark::State& state) {
    Sample& s = Sample::get();
    OvDbBlockTable* blocks = nullptr;
    s.db.getSymbolTable(blocks, OvDb::kForRead);
    OvDbObjectId wdm;
    blocks->getIdAt(L"WD_M", wdm);
    blocks->close();
    for (auto _ : state) {
        OvDbBlockTableRecord* block = nullptr;
        ovdbOpenObject(block, wdm, OvDb::kForRead);
        OvDbObjectIdArray ids;
        block->getReferenceIds(ids);
        block->close();
        if (ids.size() != 1)
            state.SkipWithError("the WD_M reference was not found");
    }
    counters(state, s);
}

// A case-blind walk of the layer table to its last record, as a look-up by a walk does:
// the cost of each step (iterator, open, name, compare, close) times the layers.
void BM_LayerNameWalk(benchmark::State& state) {
    Sample& s = Sample::get();
    const QString wanted = QString::fromStdWString(layerName(s.layers - 1)).toLower();
    for (auto _ : state) {
        OvDbLayerTable* table = nullptr;
        s.db.getSymbolTable(table, OvDb::kForRead);
        OvDbLayerTableIterator* it = nullptr;
        table->newIterator(it, true, true);
        table->close();
        bool found = false;
        for (; !found && !it->done(); it->step()) {
            OvDbLayerTableRecord* layer = nullptr;
            if (it->getRecord(layer, OvDb::kForRead) != eOk)
                continue;
            QString name;
            layer->getName(name);
            found = name.compare(wanted, Qt::CaseInsensitive) == 0;
            layer->close();
        }
        delete it;
        if (!found)
            state.SkipWithError("not found");
    }
    state.SetItemsProcessed(state.iterations() * s.layers);
    counters(state, s);
}

void BM_SaveDrawing(benchmark::State& state) {
    Sample& s = Sample::get();
    const std::wstring path = s.dir.filePath(QStringLiteral("saved.dwg")).toStdWString();
    for (auto _ : state) {
        if (s.db.saveAs(path.c_str()) != eOk)
            state.SkipWithError("save failed");
    }
    counters(state, s);
}

// What loading the wire types does: every layer, its extension dictionary, its record.
void BM_LayerWalk(benchmark::State& state) {
    Sample& s = Sample::get();
    for (auto _ : state) {
        OvDbLayerTable* table = nullptr;
        s.db.getSymbolTable(table, OvDb::kForRead);
        OvDbLayerTableIterator* it = nullptr;
        table->newIterator(it, true, true);
        table->close();
        std::size_t links = 0;
        for (; !it->done(); it->step()) {
            OvDbLayerTableRecord* layer = nullptr;
            if (it->getRecord(layer, OvDb::kForRead) != eOk)
                continue;
            const OvDbObjectId dictId = layer->extensionDictionary();
            layer->close();
            OvDbDictionary* dict = nullptr;
            if (ovdbOpenObject(dict, dictId, OvDb::kForRead) != eOk)
                continue;
            OvDbObject* object = nullptr;
            if (dict->getAt(L"ZEL_WIRETYPE", object, OvDb::kForRead) == eOk) {
                resbuf* chain = nullptr;
                OvDbXrecord::cast(object)->rbChain(chain);
                for (const resbuf* rb = chain; rb; rb = rb->rbnext)
                    ++links;
                ovutRelRb(chain);
                object->close();
            }
            dict->close();
        }
        delete it;
        benchmark::DoNotOptimize(links);
    }
    state.SetItemsProcessed(state.iterations() * s.layers);
    counters(state, s);
}

void BM_GenerateUsageData(benchmark::State& state) {
    Sample& s = Sample::get();
    for (auto _ : state) {
        OvDbLayerTable* table = nullptr;
        s.db.getSymbolTable(table, OvDb::kForRead);
        table->generateUsageData();
        table->close();
    }
    counters(state, s);
}

void BM_OpenClose(benchmark::State& state) {
    Sample& s = Sample::get();
    const OvDbObjectId id = s.db.clayer();
    for (auto _ : state) {
        OvDbLayerTableRecord* layer = nullptr;
        ovdbOpenObject(layer, id, state.range(0) ? OvDb::kForWrite : OvDb::kForRead);
        layer->close();
    }
    ovdbSetDbmod(&s.db, 0);
}

// By name, in another case than the record's, as the module asks.
void BM_SymbolLookup(benchmark::State& state) {
    Sample& s = Sample::get();
    OvDbLayerTable* table = nullptr;
    s.db.getSymbolTable(table, OvDb::kForRead);
    int i = 0;
    for (auto _ : state) {
        const std::wstring name = L"wire_" + layerName(i).substr(5);
        OvDbObjectId id;
        if (table->getIdAt(name.c_str(), id) != eOk)
            state.SkipWithError("not found");
        i = (i + 7919) % s.layers;
    }
    table->close();
}

BENCHMARK(BM_ReadDrawing)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BareParse)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadMemory)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BlockReferences);
BENCHMARK(BM_LayerNameWalk)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_SaveDrawing)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LayerWalk)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GenerateUsageData)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OpenClose)->Arg(0)->Arg(1);
BENCHMARK(BM_SymbolLookup);

} // namespace

BENCHMARK_MAIN();
