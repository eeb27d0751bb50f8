// The drawing reader, through its public entry: any bytes as a drawing file. A file is
// either read whole or refused with a message; the database stays usable either way.
#include "FuzzSupport.h"

#include "ovdb/OvDbDatabase.h"

#include <QString>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const QString path = fuzzsupport::scratchFile(QStringLiteral("drawing.dwg"));
    if (!fuzzsupport::writeScratch(path, data, size))
        return 0;
    OvDbDatabase database(false, false);
    const std::wstring wide = path.toStdWString();
    if (database.readDwgFile(wide.c_str()) != Orvex::eOk) {
        // A refusal always says why.
        if (database.lastErrorMessage().isEmpty())
            __builtin_trap();
        return 0;
    }
    // What was read can be written again.
    static const QString copy = fuzzsupport::scratchFile(QStringLiteral("copy.dwg"));
    const std::wstring wideCopy = copy.toStdWString();
    if (database.saveAs(wideCopy.c_str()) != Orvex::eOk)
        __builtin_trap();
    return 0;
}
