#pragma once

// A host started once per fuzzing process, with the module's resources, printing nowhere:
// each input gets a new drawing of its own, closed again afterwards.

#include "FuzzSupport.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvHost.h"
#include "ovcore/OvOpenObjectCheck.h"
#include "ovdb/OvDbHostApplicationServices.h"
#include "ovdb/ovdbOpenObject.h"
#include "ovdb/ovut.h"
#include "platform/MessageBox.h"
#include "shell/ZelLibraryEntry.h"

#include <QFileInfo>

namespace fuzzsupport {

class FuzzHost {
public:
    static FuzzHost& instance() {
        static FuzzHost host;
        return host;
    }
    OvApDocument* newDrawing() {
        OvApDocument* doc = nullptr;
        OvApDocManager* manager = ovDocManagerPtr();
        if (manager->newDocument({}, &doc) != Orvex::eOk || !doc)
            __builtin_trap();
        manager->activateDocument(doc);
        manager->setCurDocument(doc);
        return doc;
    }
    // Closes every drawing; an object that a reader left open is a fault.
    void endInput() {
        if (ovdbOpenObjectCount() != 0 || ovcore::openObjectViolations() != 0 ||
            !ovdbTakeProtocolViolations().isEmpty())
            __builtin_trap();
        ovDocManagerPtr()->closeAllDocuments();
    }

private:
    FuzzHost() {
        const QString home = QFileInfo(scratchFile(QStringLiteral("home/x"))).absolutePath();
        qputenv("XDG_DATA_HOME", QFile::encodeName(home));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(home));
        qputenv("QT_QPA_PLATFORM", "offscreen");
        ovutSetOutputSink([](std::string_view) {});
        platform::setMessageBoxMode(platform::MessageBoxMode::Batch);
        platform::setMessageBoxPrinter([](const QString&) {});
        if (!m_host.init())
            __builtin_trap();
        const QString folder =
            QFileInfo(QFileInfo(QStringLiteral("/proc/self/exe")).symLinkTarget()).absolutePath();
        if (!ZelAttachResources(folder))
            __builtin_trap();
    }

    OvHost m_host;
};

} // namespace fuzzsupport
