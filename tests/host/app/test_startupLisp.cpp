// The host's per-document start-up LISP files, in process: a document opened while a
// module is loaded gets them, current, before the module's drawing-load message.

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvHost.h"
#include "ovcore/OvLisp.h"
#include "ovcore/OvModuleLoader.h"
#include "ovdb/ovut.h"

#include "OrvexProcess.h"

namespace {

TEST(StartupLisp, EachDocumentGetsTheFilesBeforeTheModulesHearOfIt) {
    std::string output;
    ovutSetOutputSink([&output](std::string_view text) { output.append(text); });
    OvHost host;
    ASSERT_TRUE(host.init());
    OvApDocManager* manager = ovDocManagerPtr();
    OvApDocument* before = nullptr;
    ASSERT_EQ(manager->newDocument({}, &before), Orvex::eOk);

    QTemporaryDir folder;
    manager->setStartupLispFiles(
        {OrvexProcess::writeFile(folder.filePath("good.scm"),
                                 "(define mark \"set\")\n(princ \"[startup] good\\n\")\n"),
         OrvexProcess::writeFile(folder.filePath("bad.scm"), "(car 5)\n")});
    ASSERT_TRUE(OvModuleLoader::instance().load(OrvexProcess::testModule()));
    output.clear();
    OvApDocument* first = nullptr;
    OvApDocument* second = nullptr;
    ASSERT_EQ(manager->newDocument({}, &first), Orvex::eOk);
    ASSERT_EQ(manager->newDocument({}, &second), Orvex::eOk);

    QStringList lines = QString::fromStdString(output).split(u'\n');
    lines = lines.filter(QRegularExpression(QStringLiteral("^\\[")));
    EXPECT_EQ(lines, QStringList({"[startup] good", "[testmodule] message 3 Drawing2.dwg",
                                  "[startup] good", "[testmodule] message 3 Drawing3.dwg"}));
    EXPECT_EQ(manager->startupLispFailures(), 2) << "the bad file, once per document";
    EXPECT_EQ(manager->documentCount(), 3);
    // Definitions belong to each document; the one opened before the files has none.
    for (OvApDocument* doc : {first, second}) {
        ASSERT_EQ(manager->setCurDocument(doc), Orvex::eOk);
        EXPECT_EQ(ovcore::lisp::evalString(QStringLiteral("mark")).value,
                  QStringLiteral("\"set\""));
    }
    ASSERT_EQ(manager->setCurDocument(before), Orvex::eOk);
    EXPECT_FALSE(ovcore::lisp::evalString(QStringLiteral("mark")).ok);

    host.shutdown();
    ovutResetOutputSink();
}

} // namespace
