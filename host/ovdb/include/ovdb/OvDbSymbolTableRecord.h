#pragma once

#include "ovdb/OvDbObject.h"

#include <QString>

#include <string>

// A named record of a symbol table.
class OvDbSymbolTableRecord : public OvDbObject {
public:
    static OvRxClass* desc();
    static OvDbSymbolTableRecord* cast(OvRxObject* object);
    OvRxClass* isA() const override;

    ~OvDbSymbolTableRecord() override;

    Orvex::ErrorStatus getName(QString& name) const;
    // The text stays valid while the record is open and its name unchanged.
    Orvex::ErrorStatus getName(const wchar_t*& name) const;
    QString name() const;

    // eInvalidInput (3) for a name that is empty, longer than 255 characters, or holds
    // < > / \ " : ; ? * | , = ` or a control character; eDuplicateRecordName when another
    // record of the table has it.
    Orvex::ErrorStatus setName(const wchar_t* name);
    Orvex::ErrorStatus setName(const QString& name);

    // Whether a name passes the rules of setName.
    static bool isValidName(const QString& name);

protected:
    OvDbSymbolTableRecord();
    // Block names such as "*Model_Space" may start with an asterisk.
    virtual bool acceptsName(const QString& name) const;
    // An erased record comes back only while its name is free.
    Orvex::ErrorStatus subErase(bool erasing) override;
    void writeFields(OvDbDwgWriter& out) const override;
    Orvex::ErrorStatus readFields(OvDbDwgReader& in) override;

private:
    friend class OvDbAccess;

    QString m_name;
    mutable std::wstring m_wideName;
};
