#pragma once

#include "cadDrawing.h"

#include "ovdb/OvDbHandle.h"

#include <QString>

class OvDbLayerTableRecord;
class OvDbLinetypeTableRecord;

// Writing and reading the group-code chains of the drawing functions.
namespace ovcore::cad {

// Builds a chain link by link. A link that cannot be made (out of memory) makes the
// whole chain fail: take() then gives null.
class ChainWriter {
public:
    void name(int code, const ov_name name);
    void name(int code, OvDbObjectId id);
    void text(int code, const QString& text);
    void handle(int code, OvDbHandle handle);
    void int16(int code, int value);
    void int32(int code, int value);
    void real(int code, double value);
    void point(int code, const OvGePoint3d& point);
    // Takes a whole chain in at the end.
    void append(resbuf* chain);
    Chain take();

private:
    resbuf* add(int code);

    Chain m_head;
    resbuf* m_tail = nullptr;
    bool m_failed = false;
};

// The groups of a chain by code; the first link of a code counts.
class GroupReader {
public:
    explicit GroupReader(const resbuf* chain) : m_chain(chain) {}

    const resbuf* find(int code) const;
    bool has(int code) const { return find(code) != nullptr; }
    // Group 0 also comes as RTDXF0 from C++ callers.
    QString type() const;
    QString text(int code) const;
    int integer(int code, int fallback) const;
    bool point(int code, OvGePoint3d& point) const;

private:
    const resbuf* m_chain;
};

// The groups of a layer or linetype after its type, as entget and tblsearch give them.
void writeLayerBody(ChainWriter& out, const OvDbLayerTableRecord* layer);
void writeLinetypeBody(ChainWriter& out, const OvDbLinetypeTableRecord* linetype);

// What a name looks like in a message.
QString quotedText(const QString& text);

enum class Table { Layer, Linetype, Block };
OvDbObjectId tableId(OvDbDatabase* db, Table table);
// The live record of that name (any case), or null.
OvDbObjectId findRecord(OvDbDatabase* db, Table table, const QString& name);

} // namespace ovcore::cad
