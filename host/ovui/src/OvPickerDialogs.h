#pragma once

#include "ovdb/OvDbLineWeight.h"
#include "ovdb/OvDbObjectId.h"

#include <QDialog>
#include <QString>

#include <vector>

class QLabel;
class QListWidget;
class QPushButton;
class QTreeWidget;

// A linetype as the picker lists it.
struct OvLinetypeEntry {
    OvDbObjectId id;
    QString name;
    QString description;
    std::vector<double> dashes;
};

// The linetypes of a drawing in table order; ByBlock and ByLayer only when asked.
std::vector<OvLinetypeEntry> ovuiLinetypesOf(OvDbDatabase* database, bool includeByBlockByLayer);

// A picture of a dash pattern, `width` by `height` pixels, in `color`.
QPixmap ovuiDashPreview(const std::vector<double>& dashes, int width, int height,
                        const QColor& color);

// The linetype picker: the list 1001 (name, drawn pattern, description), the chosen one's
// text 1002, OK 1, Cancel 2, Help 9. A double click on a linetype is OK.
class OvLinetypeDialog : public QDialog {
    Q_OBJECT
public:
    OvLinetypeDialog(std::vector<OvLinetypeEntry> entries, const OvDbObjectId& current,
                     QWidget* parent = nullptr);

    // The entry chosen, or null when none is.
    const OvLinetypeEntry* chosen() const;

private:
    void updateChoice();

    std::vector<OvLinetypeEntry> m_entries;
    QTreeWidget* m_list;
    QLabel* m_choice;
    QPushButton* m_ok;
};

// The lineweight picker: the list 1001 (drawn width and its text in millimetres), the
// original and new weights 1002, OK 1, Cancel 2, Help 9. A double click is OK.
class OvLineWeightDialog : public QDialog {
    Q_OBJECT
public:
    OvLineWeightDialog(OvDb::LineWeight current, bool includeByBlockByLayer,
                       QWidget* parent = nullptr);

    // The weight chosen; `current` until another is.
    OvDb::LineWeight chosen() const;

private:
    void updateChoice();

    OvDb::LineWeight m_original;
    QListWidget* m_list;
    QLabel* m_choice;
    QPushButton* m_ok;
};
