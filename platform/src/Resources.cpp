#include "platform/Resources.h"

#include <QFile>

#include <dlfcn.h>

#include <unordered_set>

namespace platform {

namespace {

std::unordered_set<const ResourceHandle*>& liveLibraries() {
    static std::unordered_set<const ResourceHandle*> handles;
    return handles;
}

ResourceHandle*& currentSlot() {
    static ResourceHandle* current = nullptr;
    return current;
}

QString& lastError() {
    static QString error;
    return error;
}

bool isLive(const ResourceHandle* handle) {
    return handle == hostResourceHandle() || liveLibraries().count(handle) != 0;
}

} // namespace

ResourceHandle* hostResourceHandle() {
    static ResourceHandle host(nullptr, nullptr, QString());
    return &host;
}

ResourceHandle* loadResourceLibrary(const QString& path) {
    lastError().clear();
    if (path.isEmpty()) {
        lastError() = QStringLiteral("No resource library was named.");
        return nullptr;
    }
    void* library = dlopen(QFile::encodeName(path).constData(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        const char* reason = dlerror();
        lastError() = QStringLiteral("Cannot load the resource library %1: %2")
                          .arg(path, reason != nullptr ? QString::fromLocal8Bit(reason)
                                                       : QStringLiteral("unknown error"));
        return nullptr;
    }
    auto lookup = reinterpret_cast<ResourceLookupFunction>(dlsym(library, kResourceLookupSymbol));
    if (lookup == nullptr) {
        dlclose(library);
        lastError() = QStringLiteral("%1 is not a resource library: it has no %2.")
                          .arg(path, QString::fromLatin1(kResourceLookupSymbol));
        return nullptr;
    }
    auto* handle = new ResourceHandle(library, lookup, path);
    liveLibraries().insert(handle);
    return handle;
}

bool freeResourceLibrary(ResourceHandle* handle) {
    if (handle == nullptr || handle == hostResourceHandle() || liveLibraries().erase(handle) == 0) {
        return false;
    }
    // Nothing may go on loading from a library that is gone.
    if (currentSlot() == handle) {
        currentSlot() = hostResourceHandle();
    }
    void* library = handle->m_library;
    delete handle;
    return dlclose(library) == 0;
}

QString resourceLibraryError() {
    return lastError();
}

ResourceHandle* currentResourceHandle() {
    ResourceHandle*& current = currentSlot();
    if (current == nullptr) {
        current = hostResourceHandle();
    }
    return current;
}

ResourceHandle* setCurrentResourceHandle(ResourceHandle* handle) {
    ResourceHandle* previous = currentResourceHandle();
    currentSlot() = isLive(handle) ? handle : hostResourceHandle();
    return previous;
}

QString loadString(unsigned id) {
    return loadString(currentResourceHandle(), id);
}

QString loadString(const ResourceHandle* handle, unsigned id) {
    if (handle == nullptr) {
        return {};
    }
    return QString::fromUtf8(handle->find(ResourceKind::String, id));
}

QByteArray loadDialogTemplate(unsigned id) {
    return loadDialogTemplate(currentResourceHandle(), id);
}

QByteArray loadDialogTemplate(const ResourceHandle* handle, unsigned id) {
    return handle != nullptr ? handle->find(ResourceKind::Dialog, id) : QByteArray();
}

QByteArray loadMenu(unsigned id) {
    return loadMenu(currentResourceHandle(), id);
}

QByteArray loadMenu(const ResourceHandle* handle, unsigned id) {
    return handle != nullptr ? handle->find(ResourceKind::Menu, id) : QByteArray();
}

QString formatText(const QString& format, const QStringList& arguments) {
    QString result;
    result.reserve(format.size());
    qsizetype next = 0;
    for (qsizetype i = 0; i < format.size(); ++i) {
        const QChar c = format.at(i);
        if (c != u'%' || i + 1 >= format.size()) {
            result += c;
            continue;
        }
        const QChar conversion = format.at(i + 1);
        if (conversion == u's') {
            if (next < arguments.size()) {
                result += arguments.at(next);
            }
            ++next;
            ++i;
        } else if (conversion == u'%') {
            result += u'%';
            ++i;
        } else {
            result += c;
        }
    }
    return result;
}

} // namespace platform
