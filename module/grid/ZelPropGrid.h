#pragma once

#include "platform/GridWindow.h"

#include <QString>

class QKeyEvent;
class QWidget;

// The small grid of the wire property names dialog: 20 rows, one per user property,
// with the property's fixed label in column 1 and its name, which the drafter edits, in
// column 2.
class ZelPropGrid : public platform::GridWindow {
public:
    static constexpr int kRows = 20;

    explicit ZelPropGrid(QWidget* parent = nullptr);

    void InitGrid(QWidget* pOwner, QString strProps);

    bool OnPasteFromClipboard(const platform::GridRange& range) override;
    bool PreTranslateKey(QKeyEvent* event) override;

private:
    QWidget* m_pOwner = nullptr;
};
