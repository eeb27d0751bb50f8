#pragma once

#include <QString>

#include <map>

// The numbered settings of a project, as texts. Setting 33 holds the names of the user
// properties of wire types.
class ZelPmMiscProjSettings {
public:
    // 1 with the value in `text` when the project has that setting; 0 with `text` emptied
    // when it has not.
    int getValue(int index, QString& text) const;
    void setValue(int index, const QString& text);
    bool hasValue(int index) const { return m_values.count(index) != 0; }
    const std::map<int, QString>& values() const { return m_values; }

private:
    std::map<int, QString> m_values;
};
