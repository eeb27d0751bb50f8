#pragma once

#include "ovdb/OvDbEntity.h"
#include "ovdb/OvGePoint3d.h"

#include <QString>

// A tagged text of a block reference.
class OvDbAttribute : public OvDbEntity {
public:
    static OvRxClass* desc();
    static OvDbAttribute* cast(OvRxObject* object);
    OvRxClass* isA() const override;

    OvDbAttribute();
    OvDbAttribute(const OvGePoint3d& position, const QString& text, const QString& tag);
    ~OvDbAttribute() override;

    QString tag() const;
    // eInvalidInput for an empty tag or one with blanks or control characters.
    Orvex::ErrorStatus setTag(const QString& tag);
    Orvex::ErrorStatus setTag(const wchar_t* tag);

    QString textString() const;
    Orvex::ErrorStatus setTextString(const QString& text);
    Orvex::ErrorStatus setTextString(const wchar_t* text);

    OvGePoint3d position() const;
    Orvex::ErrorStatus setPosition(const OvGePoint3d& point);

    static bool isValidTag(const QString& tag);

protected:
    void writeFields(OvDbDwgWriter& out) const override;
    Orvex::ErrorStatus readFields(OvDbDwgReader& in) override;

private:
    QString m_tag;
    QString m_text;
    OvGePoint3d m_position;
};
