#include "OvDbDwgWriter.h"

#include "OvDbStub.h"
#include "ovdb/OvDbHandle.h"

QString OvDbDwgWriter::refText(OvDbObjectId id) const {
    const OvDbStub* stub = id.stub();
    if (!stub || !stub->object)
        return QStringLiteral("0");
    if (m_mode == Mode::Save && stub->saveMark != m_generation)
        return QStringLiteral("0");
    return OvDbHandle(stub->handle).toString();
}

void OvDbDwgWriter::writeRef(QLatin1StringView key, OvDbObjectId id) {
    m_fields.insert(key, refText(id));
}
