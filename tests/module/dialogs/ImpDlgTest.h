#pragma once

#include "support/ZelTestHost.h"

#include <QPoint>
#include <QString>

#include <functional>

class QWidget;
namespace platform {
class GridWindow;
class TemplateDialog;
} // namespace platform

// A running host with a drawing whose LISP environment holds the module's functions of
// the import and the property names, the module's readers of other drawings and the
// add-on's Scheme files, as a session of the host has them. The dialogs are worked with
// mouse and key events once they are up and waiting for the drafter.
class ImpDlgTest : public ZelTestHost {
protected:
    void SetUp() override;
    void TearDown() override;

    // The demo's drawing to import from, copied into the test's folder.
    QString importDrawing();

    // Evaluates `expression`; `act` runs on the first modal dialog that comes up, and the
    // value of the expression comes back in LISP notation. `shown` tells whether a
    // dialog came up at all.
    QString runWithDialog(const QString& expression,
                          const std::function<void(platform::TemplateDialog&)>& act,
                          bool* shown = nullptr);

public:
    static void settle();
    static void click(platform::TemplateDialog& dialog, int id);
    static void clickCell(platform::GridWindow& grid, int row, int col,
                          Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    static void doubleClickHeader(platform::GridWindow& grid, int col);
    // A key to the widget with the focus, as a keyboard sends it.
    static void key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    static void typeText(const QString& text);
    static QString cell(const platform::GridWindow& grid, int row, int col);
    static QStringList selectedLayers(const platform::GridWindow& grid);
};
