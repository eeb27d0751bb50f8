#pragma once

#include "ovdb/OvDbObjectId.h"

#include <QJsonObject>
#include <QLatin1StringView>

// Collects the fields of one object for a drawing file, or for a copy made by a clone.
// References become handle text; in a save, a reference to an object that the save does
// not write (erased or unreachable) becomes "0".
class OvDbDwgWriter {
public:
    enum class Mode { Save, Clone };

    explicit OvDbDwgWriter(Mode mode, unsigned saveGeneration = 0)
        : m_mode(mode), m_generation(saveGeneration) {}

    QJsonObject& fields() { return m_fields; }
    void reset() { m_fields = QJsonObject(); }

    void writeRef(QLatin1StringView key, OvDbObjectId id);
    QString refText(OvDbObjectId id) const;

private:
    QJsonObject m_fields;
    Mode m_mode;
    unsigned m_generation;
};
