#include "support/ZelTestDrawing.h"

#include "../../host/ovdb/OvdbBuild.h"

#include "ovdb/ovdb.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

std::wstring wide(const QString& text) {
    return text.toStdWString();
}

OvDbObjectId dictionaryOf(OvDbDictionary* dictionary, const QString& name) {
    OvDbObjectId id;
    if (dictionary->getAt(name, id) == Orvex::eOk)
        return id;
    auto* created = new OvDbDictionary;
    EXPECT_EQ(dictionary->setAt(name, created, id), Orvex::eOk);
    created->close();
    return id;
}

Orvex::ErrorStatus putRecord(OvDbObjectId dictionaryId, const QString& key, const resbuf* chain) {
    OvDbDictionary* dictionary = nullptr;
    Orvex::ErrorStatus es = ovdbOpenObject(dictionary, dictionaryId, OvDb::kForWrite);
    if (es != Orvex::eOk)
        return es;
    OvDbObjectId id;
    if (dictionary->getAt(key, id) == Orvex::eOk) {
        dictionary->close();
        OvDbXrecord* record = nullptr;
        es = ovdbOpenObject(record, id, OvDb::kForWrite);
        if (es != Orvex::eOk)
            return es;
        es = record->setFromRbChain(chain);
        record->close();
        return es;
    }
    auto* record = new OvDbXrecord;
    es = record->setFromRbChain(chain);
    if (es == Orvex::eOk)
        es = dictionary->setAt(key, record, id);
    if (es == Orvex::eOk)
        record->close();
    else
        delete record;
    dictionary->close();
    return es;
}

resbuf* readRecord(OvDbObjectId dictionaryId, const QString& key) {
    OvDbDictionary* dictionary = nullptr;
    if (dictionaryId.isNull() ||
        ovdbOpenObject(dictionary, dictionaryId, OvDb::kForRead) != Orvex::eOk)
        return nullptr;
    OvDbObjectId id;
    const bool found = dictionary->getAt(key, id) == Orvex::eOk;
    dictionary->close();
    OvDbXrecord* record = nullptr;
    if (!found || ovdbOpenObject(record, id, OvDb::kForRead) != Orvex::eOk)
        return nullptr;
    resbuf* chain = nullptr;
    record->rbChain(chain);
    record->close();
    return chain;
}

// The layer of that name; null when the drawing has none.
OvDbObjectId layerOf(OvDbDatabase* database, const QString& name) {
    OvDbLayerTable* table = nullptr;
    EXPECT_EQ(database->getLayerTable(table, OvDb::kForRead), Orvex::eOk);
    OvDbObjectId id;
    if (table != nullptr && table->getIdAt(name, id) != Orvex::eOk)
        id = OvDbObjectId();
    if (table != nullptr)
        table->close();
    return id;
}

} // namespace

OvDbObjectId ZelTestDrawing::addLayer(OvDbDatabase* database, const QString& name, int colorIndex) {
    const OvDbObjectId known = layerOf(database, name);
    return known.isNull() ? ovdbtest::addLayer(*database, name, colorIndex) : known;
}

OvDbObjectId ZelTestDrawing::addLine(OvDbDatabase* database, const QString& layer) {
    const OvDbObjectId layerId = layerOf(database, layer);
    EXPECT_FALSE(layerId.isNull()) << "no layer " << layer.toStdString();
    return ovdbtest::addLine(*database, OvGePoint3d(0, 0, 0), OvGePoint3d(10, 0, 0), layerId);
}

OvDbObjectId ZelTestDrawing::addWdmBlock(OvDbDatabase* database, const QString& wireLayers) {
    const OvDbObjectId block = ovdbtest::addBlock(*database, QStringLiteral("WD_M"));
    return ovdbtest::addReference(*database, block, OvGePoint3d(0, 0, 0),
                                  {{QStringLiteral("TAGMODE"), QStringLiteral("1")},
                                   {QStringLiteral("WIRELAYS"), wireLayers},
                                   {QStringLiteral("SHEET"), QStringLiteral("01")}});
}

QString ZelTestDrawing::attributeText(OvDbObjectId reference, const QString& tag) {
    OvDbBlockReference* block = nullptr;
    if (ovdbOpenObject(block, reference, OvDb::kForRead) != Orvex::eOk)
        return QString();
    QString text;
    OvDbObjectIterator* iterator = block->attributeIterator();
    for (iterator->start(); !iterator->done(); iterator->step()) {
        OvDbAttribute* attribute = nullptr;
        if (ovdbOpenObject(attribute, iterator->objectId(), OvDb::kForRead) != Orvex::eOk)
            continue;
        if (attribute->tag().compare(tag, Qt::CaseInsensitive) == 0)
            text = attribute->textString();
        attribute->close();
    }
    delete iterator;
    block->close();
    return text;
}

Orvex::ErrorStatus ZelTestDrawing::setExtensionRecord(OvDbObjectId owner, const QString& key,
                                                      const resbuf* chain) {
    OvDbObject* object = nullptr;
    Orvex::ErrorStatus es = ovdbOpenObject(object, owner, OvDb::kForWrite);
    if (es != Orvex::eOk)
        return es;
    if (object->extensionDictionary().isNull() || object->extensionDictionary().isErased())
        object->createExtensionDictionary();
    const OvDbObjectId dictionary = object->extensionDictionary();
    object->close();
    return putRecord(dictionary, key, chain);
}

resbuf* ZelTestDrawing::extensionRecord(OvDbObjectId owner, const QString& key) {
    OvDbObject* object = nullptr;
    if (ovdbOpenObject(object, owner, OvDb::kForRead) != Orvex::eOk)
        return nullptr;
    const OvDbObjectId dictionary = object->extensionDictionary();
    object->close();
    return readRecord(dictionary, key);
}

Orvex::ErrorStatus ZelTestDrawing::setNamedRecord(OvDbDatabase* database, const QString& dictionary,
                                                  const QString& key, const resbuf* chain) {
    OvDbDictionary* root = nullptr;
    const Orvex::ErrorStatus es = database->getNamedObjectsDictionary(root, OvDb::kForWrite);
    if (es != Orvex::eOk)
        return es;
    const OvDbObjectId id = dictionaryOf(root, dictionary);
    root->close();
    return putRecord(id, key, chain);
}

resbuf* ZelTestDrawing::namedRecord(OvDbDatabase* database, const QString& dictionary,
                                    const QString& key) {
    OvDbDictionary* root = nullptr;
    if (database->getNamedObjectsDictionary(root, OvDb::kForRead) != Orvex::eOk)
        return nullptr;
    OvDbObjectId id;
    const bool found = root->getAt(dictionary, id) == Orvex::eOk;
    root->close();
    return found ? readRecord(id, key) : nullptr;
}

bool ZelTestDrawing::save(OvDbDatabase* database, const QString& path) {
    const Orvex::ErrorStatus es = database->saveAs(wide(path).c_str());
    EXPECT_EQ(es, Orvex::eOk) << database->lastErrorMessage().toStdString();
    return es == Orvex::eOk;
}
