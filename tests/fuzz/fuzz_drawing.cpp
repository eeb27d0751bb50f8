// The drawing reader, through its public entry: any bytes as a drawing file. A file is
// either read whole or refused with a message; the database stays usable either way.
// A file that is read must be JSON by a parser of its own (the reader takes a fast path
// of its own for sound files), and what is read is written again such that reading and
// writing that copy gives the same bytes: nothing read is lost on the next save.
#include "FuzzSupport.h"

#include "ovdb/OvDbDatabase.h"

#include <QFile>
#include <QString>

#include <simdjson.h>

#include <cstdio>

namespace {

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "fuzz_drawing: %s\n", what);
    __builtin_trap();
}

QByteArray readBack(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool saveCopy(OvDbDatabase& database, const QString& path) {
    const std::wstring wide = path.toStdWString();
    return database.saveAs(wide.c_str()) == Orvex::eOk;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const QString path = fuzzsupport::scratchFile(QStringLiteral("drawing.dwg"));
    if (!fuzzsupport::writeScratch(path, data, size))
        return 0;
    OvDbDatabase database(false, false);
    const std::wstring wide = path.toStdWString();
    if (database.readDwgFile(wide.c_str()) != Orvex::eOk) {
        if (database.lastErrorMessage().isEmpty())
            fail("a refusal without a message");
        return 0;
    }
    static simdjson::dom::parser parser;
    simdjson::dom::element root;
    if (parser.parse(reinterpret_cast<const char*>(data), size).get(root) != simdjson::SUCCESS)
        fail("a file that is not JSON was read");

    static const QString copy = fuzzsupport::scratchFile(QStringLiteral("copy.dwg"));
    static const QString again = fuzzsupport::scratchFile(QStringLiteral("again.dwg"));
    if (!saveCopy(database, copy))
        fail("what was read cannot be saved");
    OvDbDatabase second(false, false);
    const std::wstring wideCopy = copy.toStdWString();
    if (second.readDwgFile(wideCopy.c_str()) != Orvex::eOk)
        fail("a saved copy cannot be read");
    if (!saveCopy(second, again) || readBack(copy) != readBack(again))
        fail("a saved copy read and saved again differs");
    return 0;
}
