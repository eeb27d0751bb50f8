#include "platform/SettingsKey.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

namespace platform {

namespace {

// A key exists when this marker stands in its group, so that a key made empty
// (as the registry allows) can still be opened.
const QString kKeyMarker = QStringLiteral(".key");
const QString kDwordPrefix = QStringLiteral("dword:");
const QString kStringPrefix = QStringLiteral("sz:");

constexpr unsigned kQueryValue = 0x1;
constexpr unsigned kSetValue = 0x2;

QString& overriddenFileName() {
    static QString name;
    return name;
}

// "Software\\Orvex\\Settings\\WTS" becomes "Software/Orvex/Settings/WTS"; empty when
// the path names no key or holds a part QSettings could not keep apart.
QString groupOf(const QString& path) {
    QStringList parts;
    for (const QString& part : QString(path).replace(u'\\', u'/').split(u'/')) {
        const QString trimmed = part.trimmed();
        if (trimmed.isEmpty()) {
            continue;
        }
        if (trimmed.startsWith(u'.')) {
            return {};
        }
        parts << trimmed;
    }
    return parts.join(u'/');
}

bool validValueName(const QString& name) {
    return !name.isEmpty() && !name.contains(u'/') && !name.contains(u'\\') &&
           !name.startsWith(u'.');
}

} // namespace

SettingsKey::SettingsKey() = default;

SettingsKey::~SettingsKey() {
    Close();
}

QString SettingsKey::StoreFileName() {
    if (!overriddenFileName().isEmpty()) {
        return overriddenFileName();
    }
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/Orvex/registry.ini");
}

void SettingsKey::SetStoreFileName(const QString& fileName) {
    overriddenFileName() = fileName;
}

long SettingsKey::Open(const QString& path, unsigned access) {
    return openKey(path, access, false);
}

long SettingsKey::Create(const QString& path, unsigned access) {
    return openKey(path, access, true);
}

void SettingsKey::Close() {
    Flush();
    m_store.reset();
    m_path.clear();
    m_access = 0;
}

long SettingsKey::Flush() {
    if (!m_store || !m_unsaved)
        return Success;
    m_unsaved = false;
    m_store->sync();
    return m_store->status() == QSettings::NoError ? Success : AccessDenied;
}

QSettings& SettingsKey::store() const {
    if (!m_store) {
        m_store = std::make_unique<QSettings>(StoreFileName(), QSettings::IniFormat);
        m_writable = m_store->isWritable();
    }
    return *m_store;
}

void SettingsKey::put(const QString& key, const QString& text) {
    // A value set as it already stands changes nothing, and the file is not written again
    // for it: a dialog saves its column widths at every OK, most often unchanged.
    if (m_store->value(key) == QVariant(text))
        return;
    m_store->setValue(key, text);
    m_unsaved = true;
}

QSettings* SettingsKey::writableStore() {
    QSettings& settings = store();
    return m_writable ? &settings : nullptr;
}

long SettingsKey::openKey(const QString& path, unsigned access, bool create) {
    Close();
    const QString group = groupOf(path);
    if (group.isEmpty()) {
        return InvalidParameter;
    }
    QSettings settings(StoreFileName(), QSettings::IniFormat);
    const bool exists = settings.contains(group + u'/' + kKeyMarker) || [&] {
        settings.beginGroup(group);
        const bool any = !settings.allKeys().isEmpty();
        settings.endGroup();
        return any;
    }();
    if (!exists) {
        if (!create) {
            return FileNotFound;
        }
        // The folder of the store may not exist yet on a new account.
        QDir().mkpath(QFileInfo(StoreFileName()).absolutePath());
        if (!settings.isWritable()) {
            return AccessDenied;
        }
        QString partial;
        for (const QString& part : group.split(u'/')) {
            partial += (partial.isEmpty() ? QString() : QStringLiteral("/")) + part;
            settings.setValue(partial + u'/' + kKeyMarker, true);
        }
        settings.sync();
        if (settings.status() != QSettings::NoError) {
            return AccessDenied;
        }
    }
    m_path = group;
    m_access = access;
    return Success;
}

long SettingsKey::QueryDWORDValue(const QString& name, quint32& value) const {
    QString text;
    if (m_path.isEmpty() || !validValueName(name)) {
        return InvalidParameter;
    }
    if ((m_access & kQueryValue) == 0) {
        return AccessDenied;
    }
    const QVariant stored = store().value(m_path + u'/' + name);
    if (!stored.isValid()) {
        return FileNotFound;
    }
    text = stored.toString();
    if (!text.startsWith(kDwordPrefix)) {
        return InvalidData;
    }
    bool ok = false;
    const quint32 number = text.mid(kDwordPrefix.size()).toUInt(&ok, 16);
    if (!ok) {
        return InvalidData;
    }
    value = number;
    return Success;
}

long SettingsKey::SetDWORDValue(const QString& name, quint32 value) {
    if (m_path.isEmpty() || !validValueName(name)) {
        return InvalidParameter;
    }
    if ((m_access & kSetValue) == 0) {
        return AccessDenied;
    }
    if (!writableStore()) {
        return AccessDenied;
    }
    put(m_path + u'/' + name,
        kDwordPrefix + QStringLiteral("%1").arg(value, 8, 16, QLatin1Char('0')));
    return Success;
}

long SettingsKey::QueryStringValue(const QString& name, QString& value) const {
    if (m_path.isEmpty() || !validValueName(name)) {
        return InvalidParameter;
    }
    if ((m_access & kQueryValue) == 0) {
        return AccessDenied;
    }
    const QVariant stored = store().value(m_path + u'/' + name);
    if (!stored.isValid()) {
        return FileNotFound;
    }
    const QString text = stored.toString();
    if (!text.startsWith(kStringPrefix)) {
        return InvalidData;
    }
    value = text.mid(kStringPrefix.size());
    return Success;
}

long SettingsKey::SetStringValue(const QString& name, const QString& value) {
    if (m_path.isEmpty() || !validValueName(name)) {
        return InvalidParameter;
    }
    if ((m_access & kSetValue) == 0) {
        return AccessDenied;
    }
    if (!writableStore()) {
        return AccessDenied;
    }
    put(m_path + u'/' + name, kStringPrefix + value);
    return Success;
}

long SettingsKey::DeleteValue(const QString& name) {
    if (m_path.isEmpty() || !validValueName(name)) {
        return InvalidParameter;
    }
    if ((m_access & kSetValue) == 0) {
        return AccessDenied;
    }
    QSettings* store = writableStore();
    if (!store) {
        return AccessDenied;
    }
    if (!store->contains(m_path + u'/' + name)) {
        return FileNotFound;
    }
    store->remove(m_path + u'/' + name);
    m_unsaved = true;
    return Success;
}

} // namespace platform
