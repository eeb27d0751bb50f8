// Modules and the add-on in a batch run: which are loaded by default and on request, a
// module's failing LISP functions, and the add-on's start-up files in every drawing.

#include "OrvexProcess.h"

namespace {

const QString kModule = QStringLiteral("[testmodule]");

// A module's failing functions are reported and the run goes on; the module hears the run's
// messages in order.
TEST(OrvexModules, AModulesFailuresAreReportedAndItHearsTheRunsMessagesInOrder) {
    auto r = OrvexProcess().run({"--batch", "--module", OrvexProcess::testModule(), "--eval",
                                 "(tm_throw 1)", "--eval", "(tm_fail)"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_TRUE(
        r.out.contains(QLatin1String("; error: exception in tm_throw: the test function failed")))
        << r.out.toStdString();
    EXPECT_TRUE(r.out.contains(QLatin1String("; error: tm_fail: the function reported an error")));
    EXPECT_EQ(OrvexProcess::linesOf(r.out, kModule),
              QStringList({"[testmodule] attach with instance", "[testmodule] message 1",
                           "[testmodule] message 3 Drawing1.dwg",
                           "[testmodule] reactor: Drawing1.dwg to be destroyed",
                           "[testmodule] message 4 Drawing1.dwg", "[testmodule] message 2",
                           "[testmodule] detach after the document manager"}));

    // A module that is not there is said so, and the run goes on without it.
    QTemporaryDir folder;
    r = OrvexProcess().run({"--batch", "--module", folder.filePath("Absent.ovm"), "--eval", "T"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_TRUE(r.out.contains(QLatin1String("Absent.ovm"))) << r.out.toStdString();
    EXPECT_TRUE(r.out.endsWith(QLatin1String("\nT\n"))) << r.out.toStdString();
}

TEST(OrvexModules, TheModuleBesideOrvexIsLoadedUnlessAnotherOrNoneIsAsked) {
    // A copy of orvex in a folder of its own, with the test module as its wire type module.
    QTemporaryDir folder;
    const QString program = folder.filePath("orvex");
    ASSERT_TRUE(QFile::copy(QStringLiteral(ORVEX_PROGRAM), program));
    ASSERT_TRUE(QFile::setPermissions(program, QFile::permissions(ORVEX_PROGRAM)));
    ASSERT_TRUE(QFile::copy(OrvexProcess::testModule(), folder.filePath("ZelWireType.ovm")));
    OrvexProcess orvex;
    orvex.setProgram(program);
    const QStringList echo = {"--eval", "(tm_echo 1)"};
    for (const QStringList& modules : {QStringList{}, {"--module", OrvexProcess::testModule()}}) {
        const auto r = orvex.run(QStringList{"--batch"} + modules + echo);
        EXPECT_EQ(r.exitCode, 0) << r.out.toStdString();
        EXPECT_EQ(OrvexProcess::linesOf(r.out, "[testmodule] message 1").size(), 1)
            << "instead, not as well";
        EXPECT_TRUE(r.out.contains(QLatin1String("\n(1)\n"))) << r.out.toStdString();
    }
    const auto r = orvex.run(QStringList{"--batch", "--no-module"} + echo);
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_TRUE(OrvexProcess::linesOf(r.out, kModule).isEmpty()) << r.out.toStdString();
}

TEST(OrvexModules, AddOnStartupFilesReachEveryDrawingBeforeTheAddOnModule) {
    QTemporaryDir folder;
    OrvexProcess::writeFile(folder.filePath("addon/addon-lisp/20-second.scm"),
                            "(setq order (append order (list \"second\")))\n"
                            "(princ \"[startup] second\\n\")\n");
    OrvexProcess::writeFile(folder.filePath("addon/addon-lisp/10-first.scm"),
                            "(define order (list \"first\"))\n(princ \"[startup] first\\n\")\n");
    OrvexProcess::writeFile(folder.filePath("addon/addon-lisp/30-broken.scm"),
                            "(princ \"[startup] broken\\n\")\n(car 5)\n");
    OrvexProcess::writeFile(folder.filePath("addon/addon-lisp/notes.txt"), "(not loaded\n");
    ASSERT_TRUE(QFile::copy(OrvexProcess::testModule(), folder.filePath("addon/ZelAddonLisp.ovm")));
    OrvexProcess orvex;
    orvex.setAddonFolder(folder.filePath("addon"));
    const auto r = orvex.run({"--batch", "--no-module", "--eval", "order",
                              OrvexProcess::writeDrawing(folder.filePath("a.dwg"), "A"),
                              OrvexProcess::writeDrawing(folder.filePath("b.dwg"), "B")});
    EXPECT_EQ(r.exitCode, 1) << "for the broken start-up file";
    EXPECT_EQ(r.out.count(QLatin1String("; error: ")), 2) << r.out.toStdString();
    const QStringList startup = {"[startup] first", "[startup] second", "[startup] broken"};
    const QStringList seen = OrvexProcess::linesOf(r.out, "[startup]") +
                             OrvexProcess::linesOf(r.out, "[testmodule] message 3");
    const QStringList messages{"[testmodule] message 3 a.dwg", "[testmodule] message 3 b.dwg"};
    EXPECT_EQ(seen, startup + startup + messages);
    EXPECT_LT(r.out.lastIndexOf(QLatin1String("[startup]")),
              r.out.indexOf(QLatin1String("[testmodule]")));
    EXPECT_TRUE(r.out.contains(QLatin1String("\n(\"first\" \"second\")\n"))) << r.out.toStdString();
}

} // namespace
