#pragma once

// Drawing content for tests of any part of the host or the add-on: made through the public
// interface of the database, each object closed again, each step that fails a test failure.

#include "ovdb/ovdb.h"

#include <QList>
#include <QPair>
#include <QString>

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace ovdbtest {

// A new layer of colour `color` (0 leaves the default); null when the table refuses it.
inline OvDbObjectId addLayer(OvDbDatabase& database, const QString& name, int color = 0) {
    OvDbLayerTable* table = nullptr;
    EXPECT_EQ(database.getLayerTable(table, OvDb::kForWrite), Orvex::eOk);
    auto* layer = new OvDbLayerTableRecord();
    layer->setName(name);
    if (color != 0) {
        OvCmColor c;
        c.setColorIndex(color);
        layer->setColor(c);
    }
    OvDbObjectId id;
    if (table->add(id, layer) == Orvex::eOk)
        layer->close();
    else
        delete layer;
    table->close();
    return id;
}

inline OvDbObjectId addLinetype(OvDbDatabase& database, const QString& name,
                                const std::vector<double>& dashes, const QString& comments = {}) {
    OvDbLinetypeTable* table = nullptr;
    EXPECT_EQ(database.getLinetypeTable(table, OvDb::kForWrite), Orvex::eOk);
    auto* linetype = new OvDbLinetypeTableRecord();
    linetype->setName(name);
    linetype->setComments(comments);
    EXPECT_EQ(linetype->setDashes(dashes), Orvex::eOk);
    OvDbObjectId id;
    EXPECT_EQ(table->add(id, linetype), Orvex::eOk);
    linetype->close();
    table->close();
    return id;
}

// The block of that name, made when the drawing has none.
inline OvDbObjectId addBlock(OvDbDatabase& database, const QString& name) {
    OvDbBlockTable* table = nullptr;
    EXPECT_EQ(database.getBlockTable(table, OvDb::kForWrite), Orvex::eOk);
    OvDbObjectId id;
    if (table->getIdAt(name, id) != Orvex::eOk) {
        auto* block = new OvDbBlockTableRecord();
        block->setName(name);
        EXPECT_EQ(table->add(id, block), Orvex::eOk);
        block->close();
    }
    table->close();
    return id;
}

// An entity appended to `owner` (model space when null), on `layer` (the current layer
// when null); `entity` is closed here.
inline OvDbObjectId append(OvDbDatabase& database, OvDbEntity* entity, OvDbObjectId layer = {},
                           OvDbObjectId owner = {}) {
    OvDbBlockTableRecord* space = nullptr;
    EXPECT_EQ(
        ovdbOpenObject(space, owner.isNull() ? database.modelSpaceId() : owner, OvDb::kForWrite),
        Orvex::eOk);
    if (!layer.isNull()) {
        EXPECT_EQ(entity->setLayer(layer), Orvex::eOk);
    }
    OvDbObjectId id;
    EXPECT_EQ(space->appendOvDbEntity(id, entity), Orvex::eOk);
    entity->close();
    space->close();
    return id;
}

inline OvDbObjectId addLine(OvDbDatabase& database, const OvGePoint3d& from, const OvGePoint3d& to,
                            OvDbObjectId layer = {}, OvDbObjectId owner = {}) {
    return append(database, new OvDbLine(from, to), layer, owner);
}

// A reference to `block` at `at`, with attributes of (tag, text) at `attributesAt` (else
// at the same point), which take the reference's layer.
using Attributes = QList<QPair<QString, QString>>;
inline OvDbObjectId addReference(OvDbDatabase& database, OvDbObjectId block, const OvGePoint3d& at,
                                 const Attributes& attributes = {}, OvDbObjectId layer = {},
                                 OvDbObjectId owner = {},
                                 std::optional<OvGePoint3d> attributesAt = {}) {
    const OvDbObjectId id = append(database, new OvDbBlockReference(at, block), layer, owner);
    OvDbBlockReference* reference = nullptr;
    EXPECT_EQ(ovdbOpenObject(reference, id, OvDb::kForWrite), Orvex::eOk);
    for (const auto& [tag, text] : attributes) {
        auto* attribute = new OvDbAttribute(attributesAt.value_or(at), text, tag);
        EXPECT_EQ(reference->appendAttribute(attribute), Orvex::eOk);
        attribute->close();
    }
    reference->close();
    return id;
}

} // namespace ovdbtest
