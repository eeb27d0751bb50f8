// Text from the clipboard pasted into the wire type grid over a small drawing, and the
// commit that follows: any text, at any cell, with or without rows of an earlier copy, in
// the grid of the edit dialog or of the dialogs that choose a wire type, with the options
// locked or not and the every-layer box ticked or not. The grid never crashes or hangs,
// leaves nothing open, and a wire type that the drawing held before keeps its layer and
// its record, whatever the paste renamed or refused. Some inputs paste into the grid of
// property names instead, which keeps its twenty rows and its labels.
#include "FuzzHost.h"

#include "grid/ZelPropGrid.h"
#include "grid/ZelWTGrid.h"
#include "shell/ResourceOverride.h"
#include "store/ZelWireTypeRec.h"
#include "support/ZelTestDrawing.h"

#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbDictionary.h"
#include "ovdb/OvDbLayerTable.h"
#include "ovdb/OvDbLayerTableRecord.h"
#include "platform/Clipboard.h"

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QWidget>

#include <cstdio>
#include <stdexcept>
#include <vector>

namespace {

QApplication& application() {
    // The host first: it sets the offscreen platform and quiet message boxes.
    fuzzsupport::FuzzHost::instance();
    static int argc = 1;
    static char name[] = "fuzz_grid_paste";
    static char* argv[] = {name, nullptr};
    // Kept to the end of the process: at exit Qt's own statics go first.
    static QApplication* app = new QApplication(argc, argv);
    return *app;
}

// The controls of the edit dialog that the grid reads: the name format and the box of the
// every-layer mode.
struct Owner {
    QWidget widget;
    QLineEdit* format = new QLineEdit(QStringLiteral("%C_%S"), &widget);
    QCheckBox* everyLayer = new QCheckBox(&widget);
    Owner() {
        format->setObjectName(QStringLiteral("1019"));
        everyLayer->setObjectName(QStringLiteral("1027"));
    }
};

// A fault: said, then a crash that the fuzzer keeps the input of.
[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "fuzz_grid_paste: %s\n", what);
    __builtin_trap();
}

void settle() {
    for (int i = 0; i < 3; ++i)
        QApplication::processEvents();
}

OvDbObjectId layerId(OvDbDatabase* database, const QString& name) {
    OvDbLayerTable* table = nullptr;
    OvDbObjectId id;
    if (database->getLayerTable(table, OvDb::kForRead) == Orvex::eOk && table) {
        table->getIdAt(name, id);
        table->close();
    }
    return id;
}

// A layer that still stands and still holds its wire type record.
bool isWireLayer(OvDbObjectId id) {
    OvDbLayerTableRecord* layer = nullptr;
    if (ovdbOpenObject(layer, id, OvDb::kForRead) != Orvex::eOk || !layer)
        return false;
    bool found = false;
    OvDbDictionary* dictionary = nullptr;
    if (ovdbOpenObject(dictionary, layer->extensionDictionary(), OvDb::kForRead) == Orvex::eOk &&
        dictionary) {
        found = dictionary->has(L"ZEL_WIRETYPE");
        dictionary->close();
    }
    layer->close();
    return found;
}

// The names of the user properties: the labels in column 1 are the grid's own, and a
// paste, which starts at the names or not at all, never reaches them.
void pasteIntoPropertyNames(uint8_t where, const QString& text) {
    Owner owner;
    ZelPropGrid grid(&owner.widget);
    grid.InitGrid(&owner.widget, QStringLiteral("Insulation,\"Voltage, max\",Temperature"));
    settle();
    std::vector<QString> labels;
    for (int row = 1; row <= ZelPropGrid::kRows; ++row)
        labels.push_back(grid.GetValueRowCol(row, 1));
    platform::SetClipboardText(text);
    grid.SetCurrentCell(1 + where % ZelPropGrid::kRows, 1 + (where / ZelPropGrid::kRows) % 2);
    settle();
    grid.Paste();
    settle();
    if (grid.GetRowCount() != ZelPropGrid::kRows)
        fail("the grid of property names lost or gained rows");
    for (int row = 1; row <= ZelPropGrid::kRows; ++row) {
        if (grid.GetValueRowCol(row, 1) != labels[size_t(row - 1)])
            fail("a paste changed the label of a property");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    application();
    fuzzsupport::FuzzHost& host = fuzzsupport::FuzzHost::instance();
    fuzzsupport::Bytes bytes(data, size);
    const uint8_t where = bytes.byte();
    const uint8_t shape = bytes.byte();
    const QString text = bytes.rest();
    // The module's texts are current while its dialogs are open, as the functions that
    // open them see to: a new row's wire flag reads "Yes", not an empty cell.
    const ResourceOverride resources;
    if (shape & 32) {
        pasteIntoPropertyNames(where, text);
        host.endInput();
        return 0;
    }

    OvDbDatabase* database = host.newDrawing()->database();
    ZelTestDrawing::addLayer(database, QStringLiteral("PUMP"), 3);
    ZelTestDrawing::addLine(database, QStringLiteral("PUMP"));
    std::vector<OvDbObjectId> wireLayers;
    {
        ZelWireTypeRec store;
        for (const QString& name : {QStringLiteral("W_A"), QStringLiteral("W_B")}) {
            std::vector<QString> names;
            std::vector<QString> values;
            // Without a WD_M block the list of patterns stays unwritten, which the store
            // reports; the layer and its record are made all the same.
            store.AddNewWireType(0, name, names, values, QStringLiteral("RD"), QStringLiteral("1"),
                                 QStringLiteral("WIRE"), OvCmColor(), OvDbObjectId(),
                                 OvDb::kLnWtByLwDefault, 0, true);
            if (!isWireLayer(layerId(database, name)))
                fail("the drawing could not be made");
            wireLayers.push_back(layerId(database, name));
        }
    }

    {
        Owner owner;
        owner.everyLayer->setChecked(shape & 16);
        ZelWTGrid grid(&owner.widget);
        grid.Initialize();
        // The edit dialog's grid, or the grid of the dialogs that choose a wire type.
        grid.InitGrid(&owner.widget, shape & 8, !(shape & 4));
        settle();
        // Rows of an earlier copy in this or another grid, or none.
        if (shape & 1)
            ZelWTGrid::SetCopiedRows({1, 2});
        else
            ZelWTGrid::SetCopiedRows({});
        ZelWTGrid::SetCopiedCols(shape & 2 ? std::vector<quint32>{3, 4, 5}
                                           : std::vector<quint32>{});
        platform::SetClipboardText(text);
        grid.SetCurrentCell(1 + where % 4, 1 + (where / 4) % 28);
        settle();
        try {
            grid.Paste();
        } catch (const std::out_of_range&) {
            // More pasted lines than copied rows: the index of the copy throws. A key or
            // a menu command reaches the paste through the grid's handler, which ends
            // there, as here.
        }
        settle();
        grid.CommitAll();
        settle();
    }
    ZelWireTypeRec::ResetKey();

    for (OvDbObjectId id : wireLayers) {
        if (!isWireLayer(id))
            fail("a wire type of the drawing lost its layer or its record");
    }
    host.endInput();
    return 0;
}
