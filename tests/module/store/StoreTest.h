#pragma once

#include "store/ZelWireTypeRec.h"
#include "support/ZelTestDrawing.h"
#include "support/ZelTestHost.h"
#include "support/ZelTestProject.h"

#include "ovcore/OvApDocManager.h"
#include "ovdb/ovdb.h"

#include <QStringList>

#include <optional>

// The store's protected operations, for the tests that drive them directly.
class TestStore : public ZelWireTypeRec {
public:
    using ZelWireTypeRec::CheckDuplicateLayerName;
    using ZelWireTypeRec::FilterInvalidLayerName;
    using ZelWireTypeRec::SetWireTypeXrec;
};

// A wire type as the LISP side adds one: the store's next key, no look of its own.
inline Orvex::ErrorStatus addWireType(ZelWireTypeRec& store, const QString& name,
                                      std::vector<QString> names = {},
                                      std::vector<QString> values = {}, long key = 0) {
    return store.AddNewWireType(key, name, names, values, QString(), QString(), "WIRE", OvCmColor(),
                                OvDbObjectId(), OvDb::kLnWtByLwDefault, 0, true);
}

// A host with one saved drawing as the active document: the store reaches the WD_M block
// through the document's file, so the drawing must have one.
class StoreTest : public ZelTestHost {
protected:
    void SetUp() override {
        ZelTestHost::SetUp();
        ZelWireTypeRec::ResetKey();
    }

    // Layers in this order after "0", and a WD_M block when `wireLays` is given.
    OvDbDatabase* makeDrawing(const QStringList& layers,
                              const std::optional<QString>& wireLays = QString(),
                              const QString& fileName = QStringLiteral("drawing.dwg")) {
        OvApDocument* document = newDocument();
        OvDbDatabase* database = document->database();
        for (const QString& layer : layers)
            ZelTestDrawing::addLayer(database, layer);
        m_wdm = wireLays ? ZelTestDrawing::addWdmBlock(database, *wireLays) : OvDbObjectId();
        EXPECT_EQ(ovDocManagerPtr()->saveDocumentAs(document, tempPath(fileName)), Orvex::eOk);
        return database;
    }

    // A project that does not hold the drawing: the 20 default user property names.
    void openDefaultNamesProject() {
        openProject(ZelTestProject::write(tempPath("project"), "defaults", {}, QString()));
    }

    QString wireLays() const {
        return ZelTestDrawing::attributeText(m_wdm, QStringLiteral("WIRELAYS"));
    }

    static OvDbObjectId layerId(OvDbDatabase* database, const QString& name) {
        OvDbLayerTable* table = nullptr;
        OvDbObjectId id;
        if (database->getLayerTable(table, OvDb::kForRead) == Orvex::eOk) {
            table->getIdAt(name, id);
            table->close();
        }
        return id;
    }

    // The wire type record of a layer, in LISP notation; empty when it has none.
    static QString wireRecord(OvDbDatabase* database, const QString& layer) {
        resbuf* chain = ZelTestDrawing::extensionRecord(layerId(database, layer),
                                                        QStringLiteral("ZEL_WIRETYPE"));
        const QString text = chain ? ovcore::lisp::toLispNotation(chain) : QString();
        ovutRelRb(chain);
        return text;
    }

    static QString currentRecord(OvDbDatabase* database) {
        resbuf* chain = ZelTestDrawing::namedRecord(database, QStringLiteral("ZEL_WIRETYPE"),
                                                    QStringLiteral("CURRENT_WIRELAY"));
        const QString text = chain ? ovcore::lisp::toLispNotation(chain) : QString();
        ovutRelRb(chain);
        return text;
    }

    // The store's record of a layer, loading the map; null when it has none.
    static const WireLayerRec* record(ZelWireTypeRec& store, const QString& layer) {
        for (const auto& entry : store.GetCurDwgWireTypeInfo()) {
            if (entry.second->layerName.compare(layer, Qt::CaseInsensitive) == 0)
                return entry.second;
        }
        return nullptr;
    }

    static QStringList layerNames(const std::map<int, WireLayerRec*>& records) {
        QStringList names;
        for (const auto& entry : records)
            names << entry.second->layerName;
        return names;
    }

    OvDbObjectId m_wdm;
};
