// The dialect's functions with the wire type module loaded, as a script writer runs them:
// the sample script over a folder of drawings.

#include "OrvexProcess.h"

#include <QFileInfo>

namespace {

// orvex with the add-on and the wire type module built beside it.
OrvexProcess::Result withModule(const QStringList& arguments) {
    OrvexProcess orvex;
    orvex.setAddonFolder(QFileInfo(QStringLiteral(ORVEX_PROGRAM)).absolutePath());
    return orvex.run(QStringList{"--batch"} + arguments);
}

// A drawing file with the WD_M block that lists the wire layers, then what `additions` make.
// The module finds WD_M through the drawing's file, so the drawing is saved first.
void makeDrawing(const QString& path, const QStringList& additions) {
    auto r = withModule({"--save-as", path});
    ASSERT_EQ(r.exitCode, 0) << r.out.toStdString();
    const QStringList expressions = {
        R"((entmake '((0 . "INSERT") (2 . "WD_M") (66 . 1) (10 0.0 0.0 0.0))))",
        R"((entmake '((0 . "ATTRIB") (2 . "WIRELAYS") (1 . ""))))",
        R"((entmake '((0 . "SEQEND"))))",
    };
    r = withModule(OrvexProcess::evals(expressions + additions) + QStringList{"--save", path});
    ASSERT_EQ(r.exitCode, 0) << r.out.toStdString();
}

TEST(OrvexLispLibrary, TheSampleListsTheWireTypesOfEveryDrawingInAFolder) {
    QTemporaryDir folder;
    const QString a = folder.filePath("a.dwg");
    const QString b = folder.filePath("b.dwg");
    makeDrawing(a, {R"((zel_add_wiretype "RED_1" "_COLOR" "red"))",
                    R"((zel_add_wiretype "BLUE_2" "_COLOR" "5" "_LTYPE" "DASHED"))",
                    R"((repeat 3 (entmake '((0 . "LINE") (8 . "RED_1") (10 0 0 0) (11 1 0 0)))))"});
    makeDrawing(b, {R"((zel_add_wiretype "GRN_3" "_COLOR" "green"))"});
    OrvexProcess::writeFile(folder.filePath("notes.txt"), "not a drawing\n");

    const QString sample = QStringLiteral(ZEL_SOURCE_DIR "/samples/list-wiretypes.lsp");
    const QString inFolder = QStringLiteral("(setq zel-folder \"%1\")").arg(folder.path());
    auto r = withModule({"--eval", inFolder, "--script", sample, a});
    EXPECT_EQ(r.exitCode, 0) << r.out.toStdString();
    const QStringList lines = OrvexProcess::linesOf(r.out, "  ");
    EXPECT_EQ(lines, QStringList({"  RED_1  colour red  linetype Continuous",
                                  "  BLUE_2  colour blue  linetype DASHED",
                                  "  GRN_3  colour green  linetype Continuous", "  RED_1  3 wires",
                                  "  BLUE_2  0 wires"}))
        << r.out.toStdString();
    EXPECT_TRUE(r.out.contains(QLatin1String("2 drawing(s), 3 wire type(s)")))
        << r.out.toStdString();

    // A pattern narrows the list; a folder that is not there is said so.
    r = withModule(
        {"--eval", inFolder, "--eval", "(setq zel-pattern \"*_2,grn*\")", "--script", sample});
    EXPECT_TRUE(r.out.contains(QLatin1String("2 drawing(s), 2 wire type(s)")))
        << r.out.toStdString();
    r = withModule({"--eval", "(setq zel-folder \"/no/such/folder\")", "--script", sample});
    EXPECT_TRUE(r.out.contains(QLatin1String("No folder /no/such/folder"))) << r.out.toStdString();
}

} // namespace
