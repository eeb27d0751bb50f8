#pragma once

#include <QString>

#include <memory>
#include <vector>

class ZelOleDbConnection;

// Open project database connections kept across calls, one per connect string, so that a
// run of queries does not open the file each time.
class ZelOleDbConnectionCache {
public:
    // The process-wide cache.
    static ZelOleDbConnectionCache* GetCacheManager();

    ZelOleDbConnectionCache();
    ~ZelOleDbConnectionCache();
    ZelOleDbConnectionCache(const ZelOleDbConnectionCache&) = delete;
    ZelOleDbConnectionCache& operator=(const ZelOleDbConnectionCache&) = delete;

    // The cached open connection for exactly this connect string; it stays the cache's.
    // None cached: with `openIfMissing` a new one is opened and cached, else null (also
    // null when that open fails; open a connection of your own to learn why).
    ZelOleDbConnection* Connect(const QString& connect, bool openIfMissing = false);
    // Takes a connection back: the cache owns it from now on. A connection that is not
    // open is deleted; one already held stays as it is.
    void Cache(ZelOleDbConnection* connection);
    // Closes and forgets every connection, e.g. when the project changes.
    void Clear();
    int GetCount() const { return static_cast<int>(m_connections.size()); }

private:
    std::vector<std::unique_ptr<ZelOleDbConnection>> m_connections;
};
