#pragma once

#include "support/ZelTestHost.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvModule.h"
#include "ovcore/OvModuleLoader.h"

#include <QFile>

// A running host into which a test loads the real ZelWireType.ovm, built beside the test
// program. Every document opened from now on first gets stand-ins for the two add-on
// functions that the module makes callable at drawing load.
class ZelModuleTest : public ZelTestHost {
protected:
    void SetUp() override {
        ZelTestHost::SetUp();
        const QString startup = tempPath(QStringLiteral("startup/addon.scm"));
        QFile file(startup);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("(define (wd_cfg_read_dwg_params . args) \"read\")\n"
                   "(define (wd_wirlay_get_dwg_wiretype_settings . args) \"settings\")\n");
        file.close();
        ovDocManagerPtr()->setStartupLispFiles({startup});
    }

    static bool loadModule() {
        const bool loaded =
            OvModuleLoader::instance().load(programFolder() + QStringLiteral("/ZelWireType.ovm"));
        EXPECT_TRUE(loaded) << OvModuleLoader::instance().lastError().toStdString();
        return loaded;
    }
    static bool unloadModule() {
        return OvModuleLoader::instance().unload(QStringLiteral("ZelWireType.ovm"));
    }
    static OvModule* module() {
        return OvModuleLoader::instance().find(QStringLiteral("ZelWireType.ovm"));
    }
};
