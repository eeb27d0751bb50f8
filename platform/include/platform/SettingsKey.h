#pragma once

#include <QString>

#include <memory>

class QSettings;

namespace platform {

// A key of the per-user settings store, which stands in for the registry under the
// current user: a QSettings file in the per-user configuration folder, keys as
// paths with "\" between their parts (the host's per-product root, then the
// caller's part). Values are typed; the module uses 32-bit DWORD values.
//
// Values set or deleted through one key are seen at once by every key of the process and
// reach the file together when the key is closed, flushed or destroyed: a dialog that saves
// its 25 column widths writes the file once, not 25 times.
//
// Results are Windows error numbers, so that callers test them as they would a
// registry call: 0 success, 2 no such key or value, 5 no access, 13 a value of
// another type, 87 a bad name.
class SettingsKey {
public:
    static constexpr long Success = 0;
    static constexpr long FileNotFound = 2;
    static constexpr long AccessDenied = 5;
    static constexpr long InvalidData = 13;
    static constexpr long InvalidParameter = 87;

    // Access rights; KEY_READ | KEY_WRITE (0x2001F) is what the module asks for.
    static constexpr unsigned KeyRead = 0x20019;
    static constexpr unsigned KeyWrite = 0x20006;
    static constexpr unsigned KeyAllAccess = 0xF003F;

    SettingsKey();
    ~SettingsKey();
    SettingsKey(const SettingsKey&) = delete;
    SettingsKey& operator=(const SettingsKey&) = delete;

    // Opens an existing key.
    long Open(const QString& path, unsigned access = KeyRead | KeyWrite);
    // Opens the key, making it (and the keys above it) when missing.
    long Create(const QString& path, unsigned access = KeyRead | KeyWrite);
    // Writes what was set through this key to the file, then lets the key go.
    void Close();
    // Writes what was set through this key to the file; AccessDenied when that failed.
    long Flush();
    bool IsOpen() const { return !m_path.isEmpty(); }
    QString GetPath() const { return m_path; }

    long QueryDWORDValue(const QString& name, quint32& value) const;
    long SetDWORDValue(const QString& name, quint32 value);
    long QueryStringValue(const QString& name, QString& value) const;
    long SetStringValue(const QString& name, const QString& value);
    long DeleteValue(const QString& name);

    // The file that holds the store; tests point it into a temporary folder. An
    // empty name goes back to the per-user configuration folder.
    static QString StoreFileName();
    static void SetStoreFileName(const QString& fileName);

private:
    long openKey(const QString& path, unsigned access, bool create);
    // The store that this key reads, and that its changes wait in until they are flushed.
    QSettings& store() const;
    // The same store, or null when the file can't be written.
    QSettings* writableStore();
    // Sets `key` of the store to `text`, to be written with the next flush.
    void put(const QString& key, const QString& text);

    QString m_path; // groups joined by "/"
    unsigned m_access = 0;
    mutable std::unique_ptr<QSettings> m_store;
    mutable bool m_writable = false;
    bool m_unsaved = false;
};

} // namespace platform
