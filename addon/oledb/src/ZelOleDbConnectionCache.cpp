#include "zeloledb/ZelOleDbConnectionCache.h"

#include "zeloledb/ZelOleDbConnection.h"

#include <algorithm>

ZelOleDbConnectionCache* ZelOleDbConnectionCache::GetCacheManager() {
    static ZelOleDbConnectionCache cache;
    return &cache;
}

ZelOleDbConnectionCache::ZelOleDbConnectionCache() = default;

ZelOleDbConnectionCache::~ZelOleDbConnectionCache() = default;

ZelOleDbConnection* ZelOleDbConnectionCache::Connect(const QString& connect, bool openIfMissing) {
    for (const auto& connection : m_connections) {
        if (connection->IsOpen() && connection->GetConnectString() == connect)
            return connection.get();
    }
    if (!openIfMissing)
        return nullptr;
    auto connection = std::make_unique<ZelOleDbConnection>();
    if (connection->OpenFromInitializationString(connect, false) != 0)
        return nullptr;
    m_connections.push_back(std::move(connection));
    return m_connections.back().get();
}

void ZelOleDbConnectionCache::Cache(ZelOleDbConnection* connection) {
    if (!connection)
        return;
    const bool held = std::any_of(m_connections.begin(), m_connections.end(),
                                  [connection](const auto& c) { return c.get() == connection; });
    if (held)
        return;
    if (!connection->IsOpen()) {
        delete connection;
        return;
    }
    m_connections.emplace_back(connection);
}

void ZelOleDbConnectionCache::Clear() {
    m_connections.clear();
}
