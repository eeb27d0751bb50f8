// Writes the drawings of the demo project: demo.dwg (drawing 1 of the project database),
// import.dwg (drawing 2, other wire types to import from) and template.dwt (a WD_M block,
// no wire types). Usage: zel-demo-drawings FOLDER
//
// A wire type is a layer whose extension dictionary holds the xrecord "ZEL_WIRETYPE":
// 1 wire colour, 2 wire size, 3 "WIRE", twenty 4s (the user values), 90 grid row,
// 290 flag. The drawing's choice of wire layers is the dictionary "ZEL_WIRETYPE" of the
// named objects with the xrecord "CURRENT_WIRELAY": 1 default layer, 1 current layer,
// 1 name format, 290 all lines are wires. The WD_M block reference's WIRELAYS attribute
// lists the wire layer patterns. The values agree with samples/demo/demo-db.sql.

#include "ovdb/OvDbAttribute.h"
#include "ovdb/OvDbBlockReference.h"
#include "ovdb/OvDbBlockTable.h"
#include "ovdb/OvDbBlockTableRecord.h"
#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbDictionary.h"
#include "ovdb/OvDbLayerTable.h"
#include "ovdb/OvDbLayerTableRecord.h"
#include "ovdb/OvDbLine.h"
#include "ovdb/OvDbLinetypeTable.h"
#include "ovdb/OvDbXrecord.h"
#include "ovdb/ovdbOpenObject.h"
#include "ovdb/ovut.h"

#include <QDir>
#include <QHash>
#include <QString>

#include <cstdio>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

struct Layer {
    QString name;
    int color;
    QString linetype;
    OvDb::LineWeight weight;
};

struct WireType {
    Layer layer;
    QString wireColor;
    QString wireSize;
    int gridRow;
    bool flag;
    std::map<int, QString> userValues; // by number, 1 to 20
};

struct Line {
    QString layer;
    double x1, y1, x2, y2;
};

void check(Orvex::ErrorStatus es, const char* what) {
    if (es != Orvex::eOk)
        throw std::runtime_error(std::string(what) + " failed with status " +
                                 std::to_string(static_cast<int>(es)));
}

// A value chain built link by link; released unless handed on.
class Chain {
public:
    ~Chain() { ovutRelRb(m_head); }
    Chain& text(int code, const QString& value) {
        const std::wstring wide = value.toStdWString();
        return append(ovutBuildList(code, wide.c_str(), 0));
    }
    Chain& integer(int code, int value) { return append(ovutBuildList(code, value, 0)); }
    const resbuf* chain() const { return m_head; }

private:
    Chain& append(resbuf* link) {
        if (!link)
            throw std::runtime_error("a value chain could not be built");
        (m_tail ? m_tail->rbnext : m_head) = link;
        m_tail = link;
        return *this;
    }
    resbuf* m_head = nullptr;
    resbuf* m_tail = nullptr;
};

// Any failure ends the tool, so a half-built drawing is simply dropped.
class DrawingBuilder {
public:
    DrawingBuilder() : m_db(true, true) {
        OvDbLayerTable* table = nullptr;
        check(m_db.getLayerTable(table, OvDb::kForRead), "opening the layers");
        OvDbObjectId zero;
        const Orvex::ErrorStatus found = table->getIdAt(QStringLiteral("0"), zero);
        table->close();
        check(found, "finding layer 0");
        m_layers.insert(QStringLiteral("0"), zero);
    }

    void addLayer(const Layer& layer) {
        OvDbLinetypeTable* linetypes = nullptr;
        check(m_db.getLinetypeTable(linetypes, OvDb::kForRead), "opening the linetypes");
        OvDbObjectId linetype;
        const Orvex::ErrorStatus found = linetypes->getIdAt(layer.linetype, linetype);
        linetypes->close();
        check(found, "finding a linetype");

        OvDbLayerTable* table = nullptr;
        check(m_db.getLayerTable(table, OvDb::kForWrite), "opening the layers");
        auto* record = new OvDbLayerTableRecord;
        check(record->setName(layer.name), "naming a layer");
        OvCmColor color;
        check(color.setColorIndex(layer.color), "a layer colour");
        check(record->setColor(color), "colouring a layer");
        check(record->setLinetypeObjectId(linetype), "a layer's linetype");
        check(record->setLineWeight(layer.weight), "a layer's lineweight");
        OvDbObjectId id;
        const Orvex::ErrorStatus added = table->add(id, record);
        table->close();
        check(added, "adding a layer");
        record->close();
        m_layers.insert(layer.name, id);
    }

    void addWireType(const WireType& wireType) {
        addLayer(wireType.layer);
        Chain data;
        data.text(1, wireType.wireColor).text(2, wireType.wireSize).text(3, QStringLiteral("WIRE"));
        for (int user = 1; user <= 20; ++user) {
            const auto value = wireType.userValues.find(user);
            data.text(4, value == wireType.userValues.end() ? QString() : value->second);
        }
        data.integer(90, wireType.gridRow).integer(290, wireType.flag ? 1 : 0);

        OvDbLayerTableRecord* layer = nullptr;
        check(ovdbOpenObject(layer, m_layers.value(wireType.layer.name), OvDb::kForWrite),
              "opening a layer");
        check(layer->createExtensionDictionary(), "making a layer's extension dictionary");
        const OvDbObjectId dictionaryId = layer->extensionDictionary();
        layer->close();
        OvDbDictionary* dictionary = nullptr;
        check(ovdbOpenObject(dictionary, dictionaryId, OvDb::kForWrite),
              "opening an extension dictionary");
        putXrecord(dictionary, QStringLiteral("ZEL_WIRETYPE"), data);
        dictionary->close();
    }

    // The drawing's current wire layer record.
    void setCurrentWireLayer(const QString& defaultLayer, const QString& currentLayer) {
        OvDbDictionary* named = nullptr;
        check(m_db.getNamedObjectsDictionary(named, OvDb::kForWrite),
              "opening the named objects dictionary");
        auto* dictionary = new OvDbDictionary;
        OvDbObjectId id;
        const Orvex::ErrorStatus added =
            named->setAt(QStringLiteral("ZEL_WIRETYPE"), dictionary, id);
        named->close();
        check(added, "adding the wire type dictionary");
        Chain data;
        data.text(1, defaultLayer)
            .text(1, currentLayer)
            .text(1, QStringLiteral("%C_%S"))
            .integer(290, 0);
        putXrecord(dictionary, QStringLiteral("CURRENT_WIRELAY"), data);
        dictionary->close();
    }

    // The WD_M block (empty: only its reference's attributes matter) and its reference.
    void addWdm(const std::vector<std::pair<QString, QString>>& attributes) {
        OvDbBlockTable* blocks = nullptr;
        check(m_db.getBlockTable(blocks, OvDb::kForWrite), "opening the blocks");
        auto* block = new OvDbBlockTableRecord;
        check(block->setName(QStringLiteral("WD_M")), "naming the WD_M block");
        OvDbObjectId blockId;
        const Orvex::ErrorStatus added = blocks->add(blockId, block);
        blocks->close();
        check(added, "adding the WD_M block");
        block->close();

        OvDbBlockTableRecord* space = openModelSpace();
        auto* reference = new OvDbBlockReference(OvGePoint3d(0, -40, 0), blockId);
        check(reference->setLayer(m_layers.value(QStringLiteral("0"))), "the WD_M layer");
        appendTo(space, reference);
        double y = -40;
        for (const auto& [tag, text] : attributes) {
            auto* attribute = new OvDbAttribute(OvGePoint3d(0, y, 0), text, tag);
            check(attribute->setLayer(m_layers.value(QStringLiteral("0"))), "an attribute's layer");
            check(reference->appendAttribute(attribute), "adding an attribute");
            attribute->close();
            y -= 5;
        }
        reference->close();
        space->close();
    }

    void addLines(const std::vector<Line>& lines) {
        OvDbBlockTableRecord* space = openModelSpace();
        for (const Line& line : lines) {
            auto* entity =
                new OvDbLine(OvGePoint3d(line.x1, line.y1, 0), OvGePoint3d(line.x2, line.y2, 0));
            check(entity->setLayer(m_layers.value(line.layer)), "a line's layer");
            appendTo(space, entity);
            entity->close();
        }
        space->close();
    }

    void setCurrentLayer(const QString& name) {
        check(m_db.setClayer(m_layers.value(name)), "setting the current layer");
    }

    void save(const QString& path) {
        const std::wstring wide = path.toStdWString();
        if (m_db.saveAs(wide.c_str()) != Orvex::eOk)
            throw std::runtime_error(m_db.lastErrorMessage().toStdString());
    }

private:
    OvDbBlockTableRecord* openModelSpace() {
        OvDbBlockTableRecord* space = nullptr;
        check(ovdbOpenObject(space, m_db.modelSpaceId(), OvDb::kForWrite),
              "opening the model space");
        return space;
    }

    static void appendTo(OvDbBlockTableRecord* space, OvDbEntity* entity) {
        check(space->appendOvDbEntity(entity), "adding an entity to the model space");
    }

    static void putXrecord(OvDbDictionary* dictionary, const QString& key, const Chain& data) {
        auto* record = new OvDbXrecord;
        OvDbObjectId id;
        check(dictionary->setAt(key, record, id), "adding an xrecord");
        const Orvex::ErrorStatus written = record->setFromRbChain(data.chain());
        record->close();
        check(written, "writing an xrecord");
    }

    OvDbDatabase m_db;
    QHash<QString, OvDbObjectId> m_layers;
};

const QString kContinuous = QStringLiteral("Continuous");
const QString kDashed = QStringLiteral("DASHED");

// The title block's frame and a dimension line: what every sheet has besides wires.
std::vector<Line> sheetFrame() {
    return {
        {QStringLiteral("TITLE"), 0, 0, 200, 0},     {QStringLiteral("TITLE"), 200, 0, 200, 280},
        {QStringLiteral("TITLE"), 200, 280, 0, 280}, {QStringLiteral("TITLE"), 0, 280, 0, 0},
        {QStringLiteral("TITLE"), 120, 0, 120, 30},  {QStringLiteral("TITLE"), 120, 30, 200, 30},
    };
}

void addSheetLayers(DrawingBuilder& drawing) {
    drawing.addLayer({QStringLiteral("TITLE"), 7, kContinuous, OvDb::kLnWt050});
    drawing.addLayer({QStringLiteral("DIM"), 3, kContinuous, OvDb::kLnWt018});
}

void writeDemo(const QString& path) {
    DrawingBuilder drawing;
    addSheetLayers(drawing);
    const QString pvc = QStringLiteral("PVC");
    drawing.addWireType(
        {{QStringLiteral("BK_1.5"), 250, kContinuous, OvDb::kLnWt025},
         QStringLiteral("BK"),
         QStringLiteral("1.5"),
         1,
         true,
         {{1, pvc}, {2, QStringLiteral("300/500 V")}, {3, QStringLiteral("70 °C")}}});
    drawing.addWireType(
        {{QStringLiteral("BU_0.75"), 5, kContinuous, OvDb::kLnWt018},
         QStringLiteral("BU"),
         QStringLiteral("0.75"),
         2,
         true,
         {{1, pvc}, {2, QStringLiteral("300/500 V")}, {3, QStringLiteral("70 °C")}}});
    drawing.addWireType({{QStringLiteral("GNYE_2.5"), 62, kContinuous, OvDb::kLnWt035},
                         QStringLiteral("GNYE"),
                         QStringLiteral("2.5"),
                         3,
                         true,
                         {{1, pvc}, {2, QStringLiteral("450/750 V")}}});
    drawing.addWireType({{QStringLiteral("RD_1.5"), 1, kDashed, OvDb::kLnWt025},
                         QStringLiteral("RD"),
                         QStringLiteral("1.5"),
                         4,
                         false,
                         {{1, QStringLiteral("Silicone")},
                          {2, QStringLiteral("300/500 V")},
                          {3, QStringLiteral("180 °C")},
                          {20, QStringLiteral("Heat-resistant")}}});
    // A wire layer by WIRELAYS alone: it has no wire type record yet.
    drawing.addLayer({QStringLiteral("BK_2.5"), 250, kContinuous, OvDb::kLnWt035});
    drawing.setCurrentWireLayer(QStringLiteral("BK_1.5"), QStringLiteral("BU_0.75"));
    drawing.addWdm({{QStringLiteral("WIRELAYS"), QStringLiteral("BK*,BU*,GNYE*,RD*")},
                    {QStringLiteral("SHEET"), QStringLiteral("1")},
                    {QStringLiteral("UNIT_SCL"), QStringLiteral("1.0")}});
    std::vector<Line> lines = sheetFrame();
    const std::vector<Line> wires = {
        // A ladder: the two rails, then the rungs between them.
        {QStringLiteral("BK_1.5"), 20, 50, 20, 260},
        {QStringLiteral("BK_1.5"), 180, 50, 180, 260},
        {QStringLiteral("BU_0.75"), 20, 240, 180, 240},
        {QStringLiteral("BU_0.75"), 20, 210, 180, 210},
        {QStringLiteral("GNYE_2.5"), 20, 180, 180, 180},
        {QStringLiteral("RD_1.5"), 20, 150, 90, 150},
        {QStringLiteral("RD_1.5"), 110, 150, 180, 150},
        {QStringLiteral("BK_2.5"), 20, 90, 180, 90},
        {QStringLiteral("DIM"), 20, 40, 180, 40},
        {QStringLiteral("0"), 90, 150, 110, 150},
    };
    lines.insert(lines.end(), wires.begin(), wires.end());
    drawing.addLines(lines);
    drawing.setCurrentLayer(QStringLiteral("BU_0.75"));
    drawing.save(path);
}

void writeImport(const QString& path) {
    DrawingBuilder drawing;
    addSheetLayers(drawing);
    const QString pvc = QStringLiteral("PVC");
    drawing.addWireType({{QStringLiteral("BK_1.5"), 250, kContinuous, OvDb::kLnWt025},
                         QStringLiteral("BK"),
                         QStringLiteral("1.5"),
                         1,
                         true,
                         {{1, QStringLiteral("Rubber")},
                          {2, QStringLiteral("450/750 V")},
                          {3, QStringLiteral("60 °C")}}});
    drawing.addWireType({{QStringLiteral("BN_1"), 34, kContinuous, OvDb::kLnWt025},
                         QStringLiteral("BN"),
                         QStringLiteral("1"),
                         2,
                         true,
                         {{1, QStringLiteral("XLPE")},
                          {2, QStringLiteral("0.6/1 kV")},
                          {3, QStringLiteral("90 °C")}}});
    drawing.addWireType(
        {{QStringLiteral("GY_0.5"), 8, kContinuous, OvDb::kLnWt013},
         QStringLiteral("GY"),
         QStringLiteral("0.5"),
         3,
         false,
         {{1, pvc}, {2, QStringLiteral("300/300 V")}, {3, QStringLiteral("70 °C")}}});
    drawing.addWireType(
        {{QStringLiteral("OG_2.5"), 30, kContinuous, OvDb::kLnWt035},
         QStringLiteral("OG"),
         QStringLiteral("2.5"),
         4,
         true,
         {{1, pvc}, {2, QStringLiteral("450/750 V")}, {3, QStringLiteral("70 °C")}}});
    drawing.addWireType({{QStringLiteral("WH_0.75"), 7, kContinuous, OvDb::kLnWt018},
                         QStringLiteral("WH"),
                         QStringLiteral("0.75"),
                         5,
                         true,
                         {{1, QStringLiteral("PTFE")}}});
    drawing.setCurrentWireLayer(QStringLiteral("BK_1.5"), QStringLiteral("BK_1.5"));
    drawing.addWdm({{QStringLiteral("WIRELAYS"), QStringLiteral("BK*,BN*,GY*,OG*,WH*")},
                    {QStringLiteral("SHEET"), QStringLiteral("2")},
                    {QStringLiteral("UNIT_SCL"), QStringLiteral("1.0")}});
    std::vector<Line> lines = sheetFrame();
    const std::vector<Line> wires = {
        {QStringLiteral("BK_1.5"), 20, 50, 20, 260},
        {QStringLiteral("BK_1.5"), 180, 50, 180, 260},
        {QStringLiteral("BN_1"), 20, 240, 180, 240},
        {QStringLiteral("GY_0.5"), 20, 210, 180, 210},
        {QStringLiteral("OG_2.5"), 20, 180, 180, 180},
        {QStringLiteral("WH_0.75"), 20, 150, 180, 150},
        {QStringLiteral("DIM"), 20, 40, 180, 40},
    };
    lines.insert(lines.end(), wires.begin(), wires.end());
    drawing.addLines(lines);
    drawing.setCurrentLayer(QStringLiteral("BK_1.5"));
    drawing.save(path);
}

void writeTemplate(const QString& path) {
    DrawingBuilder drawing;
    addSheetLayers(drawing);
    drawing.addWdm({{QStringLiteral("WIRELAYS"), QString()},
                    {QStringLiteral("SHEET"), QStringLiteral("1")},
                    {QStringLiteral("UNIT_SCL"), QStringLiteral("1.0")}});
    drawing.addLines(sheetFrame());
    drawing.save(path);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: zel-demo-drawings FOLDER\n");
        return 2;
    }
    const QString folder = QString::fromLocal8Bit(argv[1]);
    if (!QDir().mkpath(folder)) {
        std::fprintf(stderr, "zel-demo-drawings: cannot make the folder %s\n", argv[1]);
        return 1;
    }
    try {
        writeDemo(folder + QStringLiteral("/demo.dwg"));
        writeImport(folder + QStringLiteral("/import.dwg"));
        writeTemplate(folder + QStringLiteral("/template.dwt"));
    } catch (const std::exception& e) {
        std::fprintf(stderr, "zel-demo-drawings: %s\n", e.what());
        return 1;
    }
    return 0;
}
