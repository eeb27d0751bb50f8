#include "store/SplitPropertyList.h"

#include "store/ZelStoreSupport.h"

void SplitPropertyList(QString line, std::vector<QString>& names) {
    names.assign(zelstore::kUserPropertyCount, QString());
    for (std::size_t i = 0; i < zelstore::kUserPropertyCount; ++i) {
        QString field;
        if (!line.isEmpty()) {
            if (line.front() == u'"') {
                line.remove(0, 1);
                const qsizetype q = line.indexOf(u'"');
                if (q < 0) {
                    // An opening quote that never closes swallows the rest.
                    line.clear();
                } else {
                    field = line.left(q);
                    line = line.mid(q + 2);
                }
                qCDebug(zelstore::lcStore) << "Find double quote";
            } else {
                const qsizetype comma = line.indexOf(u',');
                if (comma < 0) {
                    field = line;
                    line.clear();
                } else {
                    field = line.left(comma);
                    line = line.mid(comma + 1);
                }
            }
            field = field.trimmed();
            line = line.trimmed();
        }
        names.at(i) = field;
    }
}
