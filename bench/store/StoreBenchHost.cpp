#include "StoreBenchHost.h"

#include "ovcore/OvApDocManager.h"
#include "ovdb/ovdb.h"
#include "platform/MessageBox.h"

#include <cstdio>
#include <cstdlib>

namespace {

void check(bool ok, const char* what) {
    if (!ok) {
        std::fprintf(stderr, "bench setup failed: %s\n", what);
        std::exit(1);
    }
}

// What the store writes for a wire type with 20 user values.
resbuf* wireTypeChain() {
    resbuf* head = ovutBuildList(1, L"RED", 2, L"1.5", 3, L"WIRE", 0);
    resbuf* tail = head->rbnext->rbnext;
    for (int i = 0; i < 20; ++i) {
        tail->rbnext = ovutBuildList(4, L"", 0);
        tail = tail->rbnext;
    }
    tail->rbnext = ovutBuildList(90, 0, 290, 1, 0);
    return head;
}

} // namespace

StoreBenchHost::StoreBenchHost() {
    ovutSetOutputSink([](std::string_view) {});
    platform::setMessageBoxMode(platform::MessageBoxMode::Batch);
    platform::setMessageBoxPrinter([](const QString&) {});
    check(m_host.init(), "host");
    check(ovDocManagerPtr()->newDocument(QString(), &m_document) == Orvex::eOk, "document");
}

StoreBenchHost::~StoreBenchHost() {
    m_host.shutdown();
    ovutResetOutputSink();
}

OvDbDatabase* StoreBenchHost::database() const {
    return m_document->database();
}

void StoreBenchHost::addLayers(const QStringList& names, bool wireTypes) {
    resbuf* chain = wireTypes ? wireTypeChain() : nullptr;
    OvDbLayerTable* table = nullptr;
    check(database()->getLayerTable(table, OvDb::kForWrite) == Orvex::eOk, "layer table");
    for (const QString& name : names) {
        auto* layer = new OvDbLayerTableRecord;
        check(layer->setName(name) == Orvex::eOk, "layer name");
        check(table->add(layer) == Orvex::eOk, "layer");
        if (wireTypes) {
            layer->createExtensionDictionary();
            OvDbDictionary* dictionary = nullptr;
            check(ovdbOpenObject(dictionary, layer->extensionDictionary(), OvDb::kForWrite) ==
                      Orvex::eOk,
                  "extension dictionary");
            auto* record = new OvDbXrecord;
            record->setFromRbChain(chain);
            OvDbObjectId id;
            check(dictionary->setAt(L"ZEL_WIRETYPE", record, id) == Orvex::eOk, "record");
            record->close();
            dictionary->close();
        }
        layer->close();
    }
    table->close();
    ovutRelRb(chain);
}

void StoreBenchHost::addWdmAndSave(const QString& wireLays) {
    OvDbBlockTable* blocks = nullptr;
    check(database()->getBlockTable(blocks, OvDb::kForWrite) == Orvex::eOk, "block table");
    auto* definition = new OvDbBlockTableRecord;
    definition->setName(QStringLiteral("WD_M"));
    OvDbObjectId blockId;
    check(blocks->add(blockId, definition) == Orvex::eOk, "WD_M definition");
    definition->close();
    blocks->close();

    OvDbBlockTableRecord* space = nullptr;
    check(ovdbOpenObject(space, database()->modelSpaceId(), OvDb::kForWrite) == Orvex::eOk,
          "model space");
    auto* reference = new OvDbBlockReference(OvGePoint3d(0, 0, 0), blockId);
    check(space->appendOvDbEntity(reference) == Orvex::eOk, "WD_M reference");
    auto* attribute = new OvDbAttribute(OvGePoint3d(0, 0, 0), wireLays, QStringLiteral("WIRELAYS"));
    check(reference->appendAttribute(m_wireLaysAttribute, attribute) == Orvex::eOk, "WIRELAYS");
    attribute->close();
    reference->close();
    space->close();

    check(ovDocManagerPtr()->saveDocumentAs(m_document, m_folder.filePath("bench.dwg")) ==
              Orvex::eOk,
          "save");
}

void StoreBenchHost::setWireLays(const QString& wireLays) {
    OvDbAttribute* attribute = nullptr;
    check(ovdbOpenObject(attribute, m_wireLaysAttribute, OvDb::kForWrite) == Orvex::eOk,
          "WIRELAYS open");
    attribute->setTextString(wireLays);
    attribute->close();
}

QString StoreBenchHost::wireLays() const {
    OvDbAttribute* attribute = nullptr;
    if (ovdbOpenObject(attribute, m_wireLaysAttribute, OvDb::kForRead) != Orvex::eOk)
        return QString();
    const QString text = attribute->textString();
    attribute->close();
    return text;
}

QStringList numberedNames(const QString& prefix, int count) {
    QStringList names;
    names.reserve(count);
    for (int i = 0; i < count; ++i)
        names << prefix + QStringLiteral("%1").arg(i, 4, 10, QLatin1Char('0'));
    return names;
}
