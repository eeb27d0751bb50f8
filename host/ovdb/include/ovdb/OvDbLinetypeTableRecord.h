#pragma once

#include "ovdb/OvDbSymbolTableRecord.h"

#include <QString>

#include <vector>

// A linetype: a description for people and a dash pattern. Positive lengths are dashes,
// negative ones gaps, zero a dot; an empty pattern draws a continuous line.
class OvDbLinetypeTableRecord : public OvDbSymbolTableRecord {
public:
    static OvRxClass* desc();
    static OvDbLinetypeTableRecord* cast(OvRxObject* object);
    OvRxClass* isA() const override;

    OvDbLinetypeTableRecord();
    ~OvDbLinetypeTableRecord() override;

    QString comments() const;
    Orvex::ErrorStatus setComments(const QString& text);
    Orvex::ErrorStatus setComments(const wchar_t* text);

    int numDashes() const;
    // 0 for an index out of range.
    double dashLengthAt(int index) const;
    std::vector<double> dashes() const;
    // eInvalidInput for a length that is not finite.
    Orvex::ErrorStatus setDashes(const std::vector<double>& lengths);
    // Sum of the absolute dash lengths.
    double patternLength() const;

protected:
    Orvex::ErrorStatus subErase(bool erasing) override;
    void writeFields(OvDbDwgWriter& out) const override;
    Orvex::ErrorStatus readFields(OvDbDwgReader& in) override;

private:
    QString m_comments;
    std::vector<double> m_dashes;
};
