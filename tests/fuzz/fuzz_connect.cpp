// Connect strings of the project database: taken apart, and built back from their pairs
// into a string that takes apart into the same pairs; then opened, which either opens a
// file read-only or says why not.
#include "FuzzSupport.h"

#include "zeloledb/ZelOleDbConnection.h"
#include "zeloledb/ZelOleDbHelper.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzzsupport::Bytes bytes(data, size);
    const QString connect = bytes.rest();
    ZelOleDbHelper::KeyValues pairs;
    QString error;
    if (ZelOleDbHelper::ParseConnectString(connect, pairs, &error)) {
        QString rebuilt;
        for (const auto& [key, value] : pairs) {
            // A key the syntax cannot carry back is not a round-trip case.
            if (key.contains(u'=') || key.contains(u';') || key.trimmed() != key || key.isEmpty())
                return 0;
            rebuilt += key + u'=' + ZelOleDbHelper::QuoteValue(value) + u';';
        }
        ZelOleDbHelper::KeyValues again;
        if (!ZelOleDbHelper::ParseConnectString(rebuilt, again, &error) || again != pairs)
            __builtin_trap();
    } else if (error.isEmpty()) {
        __builtin_trap();
    }
    ZelOleDbConnection connection;
    if (connection.OpenFromInitializationString(connect) != 0 &&
        connection.GetErrorInfo().isEmpty())
        __builtin_trap();
    return 0;
}
