#pragma once

#include <QString>

// Run-time class descriptor: a name and a parent. The object model's own classes have one
// each (their static desc()); the host core builds its registry over the same type.
class OvRxClass {
public:
    OvRxClass(const wchar_t* name, OvRxClass* parent);
    // A class whose parent is known only by name until ovrxBuildClassHierarchy links it.
    OvRxClass(const wchar_t* name, const wchar_t* parentName);
    virtual ~OvRxClass();

    OvRxClass(const OvRxClass&) = delete;
    OvRxClass& operator=(const OvRxClass&) = delete;

    const QString& name() const { return m_name; }
    OvRxClass* myParent() const { return m_parent; }
    const QString& parentName() const { return m_parentName; }
    void setParent(OvRxClass* parent);

    // True for this class itself and for every class below `other`.
    bool isDerivedFrom(const OvRxClass* other) const;

private:
    QString m_name;
    QString m_parentName;
    OvRxClass* m_parent = nullptr;
};
