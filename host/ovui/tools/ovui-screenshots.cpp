// Pictures of the host's three pickers for the help pages: run under xvfb-run with the folder
// to write into. Each dialog is shown as the drafter sees it, then grabbed.
#include "OvColorDialog.h"
#include "OvPickerDialogs.h"

#include "ovdb/OvDbDatabase.h"

#include <QApplication>
#include <QDir>
#include <QTest>

#include <cstdio>

namespace {

bool save(QDialog& dialog, const QString& path) {
    dialog.show();
    if (!QTest::qWaitForWindowExposed(&dialog))
        return false;
    QTest::qWait(200);
    const bool saved = dialog.grab().save(path);
    std::printf("%s %s\n", saved ? "wrote" : "could not write", qPrintable(path));
    dialog.hide();
    return saved;
}

} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    const QDir out(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QDir::currentPath());
    bool ok = true;

    OvCmColor color;
    color.setColorIndex(34);
    OvCmColor layer;
    layer.setColorIndex(5);
    OvColorDialog colors(color, true, layer);
    ok &= save(colors, out.filePath(QStringLiteral("host-color-dialog.png")));

    OvDbDatabase drawing;
    std::vector<OvLinetypeEntry> linetypes = ovuiLinetypesOf(&drawing, true);
    OvDbObjectId current = linetypes.size() > 3 ? linetypes[3].id : OvDbObjectId();
    OvLinetypeDialog lines(std::move(linetypes), current);
    ok &= save(lines, out.filePath(QStringLiteral("host-linetype-dialog.png")));

    OvLineWeightDialog weights(OvDb::kLnWt050, true);
    ok &= save(weights, out.filePath(QStringLiteral("host-lineweight-dialog.png")));
    return ok ? 0 : 1;
}
