#include "ovdb/OvDbSymbolTableRecord.h"

#include "OvDbAccess.h"
#include "OvDbDwgReader.h"
#include "OvDbDwgWriter.h"
#include "ovdb/OvDbSymbolTable.h"
#include "ovdb/OvRxClassMacros.h"

namespace {

constexpr qsizetype kMaxNameLength = 255;

bool isForbidden(QChar c) {
    static const QString forbidden = QStringLiteral("<>/\\\":;?*|,=`");
    return c.unicode() < 0x20 || c.unicode() == 0x7f || forbidden.contains(c);
}

OvDbSymbolTable* tableOf(const OvDbSymbolTableRecord* record) {
    return OvDbAccess::objectAs<OvDbSymbolTable>(OvDbAccess::owner(record));
}

} // namespace

OVRX_DEFINE_CLASS(OvDbSymbolTableRecord, OvDbObject)

OvDbSymbolTableRecord::OvDbSymbolTableRecord() = default;

OvDbSymbolTableRecord::~OvDbSymbolTableRecord() = default;

bool OvDbSymbolTableRecord::isValidName(const QString& name) {
    if (name.isEmpty() || name.size() > kMaxNameLength)
        return false;
    for (const QChar c : name) {
        if (isForbidden(c))
            return false;
    }
    return true;
}

bool OvDbSymbolTableRecord::acceptsName(const QString& name) const {
    return isValidName(name);
}

Orvex::ErrorStatus OvDbSymbolTableRecord::getName(QString& name) const {
    assertReadEnabled();
    name = m_name;
    return Orvex::eOk;
}

Orvex::ErrorStatus OvDbSymbolTableRecord::getName(const wchar_t*& name) const {
    assertReadEnabled();
    m_wideName = m_name.toStdWString();
    name = m_wideName.c_str();
    return Orvex::eOk;
}

QString OvDbSymbolTableRecord::name() const {
    assertReadEnabled();
    return m_name;
}

Orvex::ErrorStatus OvDbSymbolTableRecord::setName(const wchar_t* name) {
    if (!name)
        return Orvex::eInvalidInput;
    return setName(QString::fromWCharArray(name));
}

Orvex::ErrorStatus OvDbSymbolTableRecord::setName(const QString& name) {
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    if (!acceptsName(name))
        return Orvex::eInvalidInput;
    if (name == m_name)
        return Orvex::eOk;
    OvDbSymbolTable* table = tableOf(this);
    if (!table) {
        m_name = name;
        return Orvex::eOk;
    }
    OvDbAccess::Impl* im = OvDbAccess::implOf(this);
    OvDbStub* self = OvDbAccess::stub(this);
    // The records a drawing relies on by name keep it.
    if (self == im->layerZero || self == im->continuous || self == im->byLayer ||
        self == im->byBlock || self == im->modelSpace || self == im->paperSpace) {
        if (name.compare(m_name, Qt::CaseInsensitive) != 0)
            return Orvex::eInvalidInput;
    }
    OvDbStub* other = OvDbAccess::findRecord(table, name);
    if (other && other != self)
        return Orvex::eDuplicateRecordName;
    OvDbAccess::setRecordName(this, name);
    return Orvex::eOk;
}

Orvex::ErrorStatus OvDbSymbolTableRecord::subErase(bool erasing) {
    if (erasing)
        return Orvex::eOk;
    // A record comes back only if its name is still free.
    OvDbSymbolTable* table = tableOf(this);
    if (table) {
        OvDbStub* other = OvDbAccess::findRecord(table, m_name);
        if (other && other != OvDbAccess::stub(this))
            return Orvex::eDuplicateRecordName;
        OvDbAccess::indexRecord(table, OvDbAccess::stub(this));
    }
    return Orvex::eOk;
}

void OvDbSymbolTableRecord::writeFields(OvDbDwgWriter& out) const {
    OvDbObject::writeFields(out);
    out.fields().insert(QLatin1StringView("name"), m_name);
}

Orvex::ErrorStatus OvDbSymbolTableRecord::readFields(OvDbDwgReader& in) {
    if (OvDbObject::readFields(in) != Orvex::eOk)
        return in.status();
    QString name;
    if (!in.readString(QLatin1StringView("name"), name, true))
        return in.status();
    if (!acceptsName(name))
        return in.fail(Orvex::eBadDrawingFormat,
                       QStringLiteral("\"%1\" is not a valid name").arg(name));
    m_name = name;
    return Orvex::eOk;
}

const QString& OvDbAccess::recordName(const OvDbSymbolTableRecord* record) {
    return record->m_name;
}

void OvDbAccess::setRecordName(OvDbSymbolTableRecord* record, const QString& name) {
    OvDbSymbolTable* table = tableOf(record);
    if (!table) {
        record->m_name = name;
        return;
    }
    OvDbStub* self = stub(record);
    if (table->m_index.value(record->m_name, nullptr) == self)
        table->m_index.remove(record->m_name);
    record->m_name = name;
    if (!self->erased)
        table->m_index.insert(name, self);
}
