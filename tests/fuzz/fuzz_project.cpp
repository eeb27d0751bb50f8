// The project file reader: any bytes as a project file. Either the project opens, or
// the reason is given and no project is active.
#include "FuzzSupport.h"

#include "zelpm/ZelPrmProjectManager.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const QString path = fuzzsupport::scratchFile(QStringLiteral("project.zpj"));
    if (!fuzzsupport::writeScratch(path, data, size))
        return 0;
    ZelPrmProjectManager* manager = GetProjectManager();
    QString error;
    const bool opened = manager->openProject(path, &error);
    if (!opened && (error.isEmpty() || !error.contains(path)))
        __builtin_trap();
    manager->closeProject();
    return 0;
}
