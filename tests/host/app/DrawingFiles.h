#pragma once

#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbLayerTable.h"
#include "ovdb/OvDbLayerTableRecord.h"

#include <QString>

#include <string>

// Drawing files for the tests, written and read with the host's own database.
namespace drawingfiles {

// A new drawing with one extra layer, saved as `path`.
inline bool write(const QString& path, const QString& layerName) {
    OvDbDatabase db;
    OvDbLayerTable* table = nullptr;
    if (db.getSymbolTable(table, OvDb::kForWrite) != Orvex::eOk)
        return false;
    auto* layer = new OvDbLayerTableRecord();
    layer->setName(layerName);
    OvDbObjectId id;
    const bool added = table->add(id, layer) == Orvex::eOk;
    if (added)
        layer->close();
    else
        delete layer;
    table->close();
    const std::wstring file = path.toStdWString();
    return added && db.saveAs(file.c_str()) == Orvex::eOk;
}

// Whether the file reads as a drawing that has the layer.
inline bool hasLayer(const QString& path, const QString& layerName) {
    OvDbDatabase db(false, true);
    const std::wstring file = path.toStdWString();
    if (db.readDwgFile(file.c_str()) != Orvex::eOk)
        return false;
    OvDbLayerTable* table = nullptr;
    if (db.getSymbolTable(table, OvDb::kForRead) != Orvex::eOk)
        return false;
    const bool found = table->has(layerName);
    table->close();
    return found;
}

} // namespace drawingfiles
