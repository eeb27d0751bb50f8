#pragma once

// The process-wide current resource handle and what loads from it. Everything
// runs on the host's main thread, so the current handle is a plain global: a
// caller switches it for the length of a call (ScopedResourceHandle) and every
// string, template or menu loaded meanwhile comes from that handle. The host's
// own handle is current unless someone switched, and it holds none of the
// module's numbers: a string loaded under it comes back empty.

#include "platform/ResourceHandle.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace platform {

// dlopen() of a resource library; null when the file cannot be loaded or is not
// a resource library (resourceLibraryError() then says why).
ResourceHandle* loadResourceLibrary(const QString& path);
// dlclose() of a library loaded above. Freeing the current handle makes the
// host's handle current again. False for null and for the host's handle.
bool freeResourceLibrary(ResourceHandle* handle);
QString resourceLibraryError();

ResourceHandle* hostResourceHandle();
ResourceHandle* currentResourceHandle();
// Makes `handle` current and returns the handle that was. Null, or a handle
// already freed, makes the host's handle current.
ResourceHandle* setCurrentResourceHandle(ResourceHandle* handle);

// String `id` of the current handle; empty when the handle lacks it.
QString loadString(unsigned id);
QString loadString(const ResourceHandle* handle, unsigned id);

// Dialog template `id` (a Qt Designer form) and menu `id`, as stored; empty when
// missing.
QByteArray loadDialogTemplate(unsigned id);
QByteArray loadDialogTemplate(const ResourceHandle* handle, unsigned id);
QByteArray loadMenu(unsigned id);
QByteArray loadMenu(const ResourceHandle* handle, unsigned id);

// Fills a message text: each "%s" takes the next argument (an empty text once
// they run out), "%%" gives "%", and any other "%" stays as written, so that a
// string of the table can never make the formatting read past its arguments.
QString formatText(const QString& format, const QStringList& arguments);
inline QString formatText(const QString& format, const QString& argument) {
    return formatText(format, QStringList{argument});
}

} // namespace platform
