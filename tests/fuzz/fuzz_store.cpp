// What the wire type store reads from a drawing that another program wrote: the user
// property names of the project setting, a layer's wire type record, the current record
// and the WIRELAYS pattern list, each from the fuzzer's bytes. The store takes what the
// record layout allows, closes what it opens, and never crashes.
#include "FuzzChain.h"
#include "FuzzHost.h"

#include "store/SplitPropertyList.h"
#include "store/ZelWireTypeRec.h"
#include "support/ZelTestDrawing.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzzsupport::FuzzHost& host = fuzzsupport::FuzzHost::instance();
    fuzzsupport::Bytes bytes(data, size);

    std::vector<QString> names;
    SplitPropertyList(bytes.text(512), names);
    if (names.size() != 20)
        __builtin_trap();

    const uint8_t shape = bytes.byte();
    const QString wireLays = bytes.text(300);
    resbuf* record = fuzzsupport::chainOf(bytes, 40, true);
    resbuf* current = fuzzsupport::chainOf(bytes, 8, true);

    OvDbDatabase* database = host.newDrawing()->database();
    const OvDbObjectId wire = ZelTestDrawing::addLayer(database, QStringLiteral("WIRE_1"));
    ZelTestDrawing::addLayer(database, QStringLiteral("OTHER"));
    if (shape & 1)
        ZelTestDrawing::addWdmBlock(database, wireLays);
    if (shape & 2)
        ZelTestDrawing::setExtensionRecord(wire, QStringLiteral("ZEL_WIRETYPE"), record);
    if (shape & 4)
        ZelTestDrawing::setNamedRecord(database, QStringLiteral("ZEL_WIRETYPE"),
                                       QStringLiteral("CURRENT_WIRELAY"), current);
    ovutRelRb(record);
    ovutRelRb(current);

    {
        ZelWireTypeRec store;
        store.GetCurDwgWireTypeInfo();
        resbuf* chain = nullptr;
        store.GetCurWireLayerXrec(chain);
        ovutRelRb(chain);
        store.IsMakeAllValidWire();
        store.IsInWd_m(QStringLiteral("WIRE_1"));
        QString first;
        store.GetFirstWireLayer(first);
        if (shape & 8)
            store.ResetToDefWireType();
    }
    host.endInput();
    return 0;
}
