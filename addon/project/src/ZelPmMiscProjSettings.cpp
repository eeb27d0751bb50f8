#include "zelpm/ZelPmMiscProjSettings.h"

int ZelPmMiscProjSettings::getValue(int index, QString& text) const {
    const auto it = m_values.find(index);
    if (it == m_values.end()) {
        text.clear();
        return 0;
    }
    text = it->second;
    return 1;
}

void ZelPmMiscProjSettings::setValue(int index, const QString& text) {
    m_values[index] = text;
}
