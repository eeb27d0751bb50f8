#pragma once

#include "ovdb/OvCmColor.h"
#include "ovdb/OvDbLineWeight.h"
#include "ovdb/OvDbObjectId.h"

#include <QString>

#include <vector>

// One wire type in memory: a layer and the wire data kept in its extension dictionary.
// Every builder sets lineWeight, editState, wireFlag and gridRow itself; the initial
// values below only keep an unset field from being read as garbage.
struct WireLayerRec {
    QString layerName;
    QString wireColor;
    QString wireSize;
    QString wireKind;
    OvCmColor color;
    OvDbObjectId linetypeId;
    OvDb::LineWeight lineWeight = OvDb::kLnWtByLwDefault;
    // By position: element i belongs to user property name i of the store.
    std::vector<QString> userValues;
    // 0 clean, 1 edited, 2 deleted, 5 new grid row, 6 converted to a non-wire layer.
    int editState = 0;
    // "X" when the layer is in use in the drawing. Never stored.
    QString inUseMark;
    bool wireFlag = false;
    // Row in the wire type grid; 0 lets the grid choose.
    int gridRow = 0;
    // 255 for a record read from a drawing; the grid's name format mask.
    int nameFormatMask = 0;
};
