#pragma once

#include <QString>

class OvDbDatabase;

// Process-wide services of the host: the working database (what the rest of the system
// means by "the drawing") and the per-product root of the host's settings.
class OvDbHostApplicationServices {
public:
    static OvDbHostApplicationServices* getRefPtr();

    OvDbDatabase* workingDatabase() const { return m_working; }
    // A database that is deleted stops being the working one by itself.
    void setWorkingDatabase(OvDbDatabase* database) { m_working = database; }

    // For example "Orvex/R26".
    QString getRegistryProductRootKey() const { return m_productRoot; }
    void setRegistryProductRootKey(const QString& key) { m_productRoot = key; }

private:
    OvDbHostApplicationServices();

    OvDbDatabase* m_working = nullptr;
    QString m_productRoot;
};
