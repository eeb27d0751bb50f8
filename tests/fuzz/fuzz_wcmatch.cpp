// The host's wildcard matcher with any pattern and any name, and the pattern the store
// makes for a wire layer: it must match that layer and never be a negation or a set.
#include "FuzzSupport.h"

#include "store/ZelStoreSupport.h"

#include "ovdb/ovut.h"

#include <string>

namespace {

bool matches(const QString& text, const QString& pattern) {
    return ovutWcMatch(text.toStdWString().c_str(), pattern.toStdWString().c_str()) == RTNORM;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzzsupport::Bytes bytes(data, size);
    const int length = bytes.byte() % 8;
    const QString pattern = bytes.text(256);
    const QString name = bytes.rest();
    // Any pattern on any text: an answer, nothing else.
    matches(name, pattern);
    matches(pattern, name);

    // A layer name is a C string to the host: it never holds a NUL.
    if (name.isEmpty() || name.contains(QChar(0)) || zelstore::hasInvalidLayerChar(name))
        return 0;
    for (const QString& layer : {name, name.toUpper()}) {
        // Today's patterns: the first three characters and a star, or more of them.
        for (const qsizetype n : {qsizetype(3), qsizetype(length), layer.size()}) {
            const QString made = zelstore::wireLayerPattern(layer, n, true);
            if (!matches(layer, made) || made.startsWith(u'~'))
                __builtin_trap();
            // Listed in full, without a star, it matches that name alone.
            const QString full = zelstore::wireLayerPattern(layer, layer.size(), false);
            if (!matches(layer, full) || matches(layer + u'X', full))
                __builtin_trap();
        }
    }
    return 0;
}
