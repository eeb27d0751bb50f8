#include "cadChain.h"

#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbSymbolTable.h"

#include <cstring>
#include <string>

namespace ovcore::cad {

resbuf* ChainWriter::add(int code) {
    if (m_failed)
        return nullptr;
    resbuf* link = ovutNewRb(code);
    if (!link) {
        m_failed = true;
        return nullptr;
    }
    if (m_tail)
        m_tail->rbnext = link;
    else
        m_head.reset(link);
    m_tail = link;
    return link;
}

void ChainWriter::name(int code, const ov_name name) {
    if (resbuf* link = add(code)) {
        link->resval.rlname[0] = name[0];
        link->resval.rlname[1] = name[1];
    }
}

void ChainWriter::name(int code, OvDbObjectId id) {
    ov_name words = {0, 0};
    nameOfId(id, words);
    name(code, words);
}

void ChainWriter::text(int code, const QString& text) {
    resbuf* link = add(code);
    if (!link)
        return;
    const std::wstring wide = text.toStdWString();
    if (ovutNewString(wide.c_str(), link->resval.rstring) != RTNORM)
        m_failed = true;
}

void ChainWriter::handle(int code, OvDbHandle handle) {
    text(code, handle.toString());
}

void ChainWriter::int16(int code, int value) {
    if (resbuf* link = add(code))
        link->resval.rint = static_cast<short>(value);
}

void ChainWriter::int32(int code, int value) {
    if (resbuf* link = add(code))
        link->resval.rlong = value;
}

void ChainWriter::real(int code, double value) {
    if (resbuf* link = add(code))
        link->resval.rreal = value;
}

void ChainWriter::point(int code, const OvGePoint3d& point) {
    if (resbuf* link = add(code)) {
        link->resval.rpoint[0] = point.x;
        link->resval.rpoint[1] = point.y;
        link->resval.rpoint[2] = point.z;
    }
}

void ChainWriter::append(resbuf* chain) {
    if (!chain)
        return;
    if (m_failed) {
        ovutRelRb(chain);
        return;
    }
    if (m_tail)
        m_tail->rbnext = chain;
    else
        m_head.reset(chain);
    m_tail = chain;
    while (m_tail->rbnext)
        m_tail = m_tail->rbnext;
}

Chain ChainWriter::take() {
    m_tail = nullptr;
    if (m_failed)
        m_head.reset();
    return std::move(m_head);
}

const resbuf* GroupReader::find(int code) const {
    for (const resbuf* link = m_chain; link; link = link->rbnext) {
        if (link->restype == code || (code == 0 && link->restype == RTDXF0))
            return link;
    }
    return nullptr;
}

QString GroupReader::type() const {
    return text(0);
}

QString GroupReader::text(int code) const {
    const resbuf* link = find(code);
    if (!link || !link->resval.rstring)
        return {};
    const OvRbValueKind kind = ovutValueKind(link->restype);
    if (kind != OvRbValueKind::String && kind != OvRbValueKind::Handle)
        return {};
    return QString::fromWCharArray(link->resval.rstring);
}

int GroupReader::integer(int code, int fallback) const {
    const resbuf* link = find(code);
    if (!link)
        return fallback;
    switch (ovutValueKind(link->restype)) {
    case OvRbValueKind::Int16:
    case OvRbValueKind::Bool:
        return link->resval.rint;
    case OvRbValueKind::Int32:
        return link->resval.rlong;
    default:
        return fallback;
    }
}

bool GroupReader::point(int code, OvGePoint3d& point) const {
    const resbuf* link = find(code);
    if (!link || ovutValueKind(link->restype) != OvRbValueKind::Point)
        return false;
    point = OvGePoint3d(link->resval.rpoint[0], link->resval.rpoint[1], link->resval.rpoint[2]);
    return true;
}

QString quotedText(const QString& text) {
    return QLatin1Char('"') + text + QLatin1Char('"');
}

OvDbObjectId tableId(OvDbDatabase* db, Table table) {
    switch (table) {
    case Table::Layer:
        return db->layerTableId();
    case Table::Linetype:
        return db->linetypeTableId();
    case Table::Block:
        return db->blockTableId();
    }
    return {};
}

OvDbObjectId findRecord(OvDbDatabase* db, Table table, const QString& name) {
    Opened<OvDbSymbolTable> records;
    OvDbObjectId id;
    if (records.open(tableId(db, table), OvDb::kForRead) != Orvex::eOk ||
        records->getIdAt(name, id) != Orvex::eOk)
        return {};
    return id;
}

} // namespace ovcore::cad
