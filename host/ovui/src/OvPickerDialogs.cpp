#include "OvPickerDialogs.h"

#include "ovui/OvUiHelp.h"

#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbLinetypeTable.h"
#include "ovdb/OvDbLinetypeTableIterator.h"
#include "ovdb/OvDbLinetypeTableRecord.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <cmath>
#include <memory>

namespace {

QDialogButtonBox* okCancelHelp(QDialog* dialog, QPushButton*& ok, const QString& topic) {
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel |
                                         QDialogButtonBox::Help);
    ok = buttons->button(QDialogButtonBox::Ok);
    ok->setObjectName(QStringLiteral("1"));
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("2"));
    buttons->button(QDialogButtonBox::Help)->setObjectName(QStringLiteral("9"));
    QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    QObject::connect(buttons, &QDialogButtonBox::helpRequested, dialog,
                     [topic] { ovuiShowHelp({}, topic); });
    return buttons;
}

// Screen pixels of a width in millimetres, at the usual 96 dots per inch; at least one.
double pixelsOfMillimetres(double millimetres) {
    return std::max(1.0, millimetres * 96.0 / 25.4);
}

QPixmap weightPreview(OvDb::LineWeight weight, int width, int height, const QColor& color) {
    QPixmap picture(width, height);
    picture.fill(Qt::transparent);
    if (weight == OvDb::kLnWtByLayer || weight == OvDb::kLnWtByBlock)
        return picture; // no width of their own
    // The default weight of a drawing is 0.25 mm.
    const int hundredths = weight == OvDb::kLnWtByLwDefault ? 25 : int(weight);
    const double thickness = pixelsOfMillimetres(hundredths / 100.0);
    QPainter painter(&picture);
    painter.fillRect(QRectF(2, (height - thickness) / 2.0, width - 4, thickness), color);
    return picture;
}

} // namespace

std::vector<OvLinetypeEntry> ovuiLinetypesOf(OvDbDatabase* database, bool includeByBlockByLayer) {
    std::vector<OvLinetypeEntry> entries;
    if (!database)
        return entries;
    OvDbLinetypeTable* table = nullptr;
    if (database->getLinetypeTable(table, OvDb::kForRead) != Orvex::eOk)
        return entries;
    OvDbLinetypeTableIterator* raw = nullptr;
    const Orvex::ErrorStatus es = table->newIterator(raw);
    std::unique_ptr<OvDbLinetypeTableIterator> it(raw);
    table->close();
    if (es != Orvex::eOk)
        return entries;
    const OvDbObjectId byLayer = database->byLayerLinetype();
    const OvDbObjectId byBlock = database->byBlockLinetype();
    for (; !it->done(); it->step()) {
        const OvDbObjectId id = it->recordId();
        if (!includeByBlockByLayer && (id == byLayer || id == byBlock))
            continue;
        OvDbLinetypeTableRecord* record = nullptr;
        if (it->getRecord(record, OvDb::kForRead) != Orvex::eOk)
            continue;
        entries.push_back({id, record->name(), record->comments(), record->dashes()});
        record->close();
    }
    return entries;
}

QPixmap ovuiDashPreview(const std::vector<double>& dashes, int width, int height,
                        const QColor& color) {
    QPixmap picture(width, height);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing, false);
    const double y = height / 2.0;
    const double left = 2.0;
    const double right = width - 2.0;
    double length = 0.0;
    for (double dash : dashes)
        length += std::isfinite(dash) ? std::abs(dash) : 0.0;
    painter.setPen(QPen(color, 2, Qt::SolidLine, Qt::FlatCap));
    if (length <= 0.0) {
        painter.drawLine(QPointF(left, y), QPointF(right, y));
        return picture;
    }
    // Three repeats of the pattern across the preview show its rhythm at any drawing scale.
    const double scale = (right - left) / 3.0 / length;
    double x = left;
    while (x < right) {
        for (double dash : dashes) {
            if (!std::isfinite(dash) || x >= right)
                continue;
            const double run = std::abs(dash) * scale;
            if (dash > 0.0) {
                painter.drawLine(QPointF(x, y), QPointF(std::min(x + run, right), y));
            } else if (dash == 0.0) {
                painter.fillRect(QRectF(x, y - 1.0, 2.0, 2.0), color);
                x += 2.0;
            }
            x += run;
        }
    }
    return picture;
}

// --- linetypes -------------------------------------------------------------------------------

OvLinetypeDialog::OvLinetypeDialog(std::vector<OvLinetypeEntry> entries,
                                   const OvDbObjectId& current, QWidget* parent)
    : QDialog(parent), m_entries(std::move(entries)), m_list(new QTreeWidget),
      m_choice(new QLabel) {
    setObjectName(QStringLiteral("hostLinetypeDialog"));
    setWindowTitle(tr("Select Linetype"));

    m_list->setObjectName(QStringLiteral("1001"));
    m_list->setAccessibleName(tr("Linetypes"));
    m_list->setColumnCount(3);
    m_list->setHeaderLabels({tr("Linetype"), tr("Appearance"), tr("Description")});
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setAllColumnsShowFocus(true);
    m_list->setIconSize(QSize(150, 14));
    const QColor ink = palette().color(QPalette::Text);
    QTreeWidgetItem* preselected = nullptr;
    for (std::size_t i = 0; i < m_entries.size(); ++i) {
        const OvLinetypeEntry& entry = m_entries[i];
        auto* item = new QTreeWidgetItem(m_list);
        item->setText(0, entry.name);
        item->setData(0, Qt::UserRole, int(i));
        // ByBlock and ByLayer take the pattern of something else: no picture of their own.
        const bool meta = entry.name.compare(QLatin1String("ByBlock"), Qt::CaseInsensitive) == 0 ||
                          entry.name.compare(QLatin1String("ByLayer"), Qt::CaseInsensitive) == 0;
        if (!meta)
            item->setIcon(1, ovuiDashPreview(entry.dashes, 150, 14, ink));
        item->setText(2, entry.description);
        item->setToolTip(2, entry.description);
        if (entry.id == current)
            preselected = item;
    }
    m_list->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    m_list->header()->resizeSection(1, 170);
    m_list->header()->setStretchLastSection(true);
    m_list->setMinimumSize(560, 260);
    if (preselected)
        m_list->setCurrentItem(preselected);
    else if (m_list->topLevelItemCount() > 0)
        m_list->setCurrentItem(m_list->topLevelItem(0), 0, QItemSelectionModel::NoUpdate);

    m_choice->setObjectName(QStringLiteral("1002"));
    QDialogButtonBox* buttons = okCancelHelp(this, m_ok, QStringLiteral("linetype_dialog"));
    connect(m_list, &QTreeWidget::itemSelectionChanged, this, &OvLinetypeDialog::updateChoice);
    connect(m_list, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem* item) {
        if (item) {
            m_list->setCurrentItem(item);
            accept();
        }
    });

    auto* layout = new QVBoxLayout(this);
    if (m_entries.empty()) {
        auto* none = new QLabel(tr("The drawing has no linetypes to choose from."));
        layout->addWidget(none);
    }
    layout->addWidget(m_list, 1);
    layout->addWidget(m_choice);
    layout->addWidget(buttons);
    updateChoice();
    m_list->setFocus();
}

const OvLinetypeEntry* OvLinetypeDialog::chosen() const {
    const QList<QTreeWidgetItem*> selected = m_list->selectedItems();
    if (selected.isEmpty())
        return nullptr;
    const int i = selected.constFirst()->data(0, Qt::UserRole).toInt();
    return i >= 0 && std::size_t(i) < m_entries.size() ? &m_entries[std::size_t(i)] : nullptr;
}

void OvLinetypeDialog::updateChoice() {
    const OvLinetypeEntry* entry = chosen();
    m_ok->setEnabled(entry != nullptr);
    m_choice->setText(entry ? tr("Linetype: %1").arg(entry->name)
                            : tr("Choose a linetype from the list."));
}

// --- lineweights -----------------------------------------------------------------------------

OvLineWeightDialog::OvLineWeightDialog(OvDb::LineWeight current, bool includeByBlockByLayer,
                                       QWidget* parent)
    : QDialog(parent), m_original(OvDb::nearestLineWeight(current)), m_list(new QListWidget),
      m_choice(new QLabel) {
    setObjectName(QStringLiteral("hostLineWeightDialog"));
    setWindowTitle(tr("Lineweight"));

    m_list->setObjectName(QStringLiteral("1001"));
    m_list->setAccessibleName(tr("Lineweights"));
    m_list->setIconSize(QSize(90, 12));
    m_list->setUniformItemSizes(true);
    const QColor ink = palette().color(QPalette::Text);
    QListWidgetItem* preselected = nullptr;
    // The special settings first (ByLayer, ByBlock, Default), then the widths.
    std::vector<OvDb::LineWeight> weights;
    if (includeByBlockByLayer) {
        weights.push_back(OvDb::kLnWtByLayer);
        weights.push_back(OvDb::kLnWtByBlock);
    }
    weights.push_back(OvDb::kLnWtByLwDefault);
    for (OvDb::LineWeight weight : OvDb::legalLineWeights()) {
        if (weight >= 0)
            weights.push_back(weight);
    }
    for (OvDb::LineWeight weight : weights) {
        auto* item = new QListWidgetItem(weightPreview(weight, 90, 12, ink),
                                         OvDb::lineWeightText(weight), m_list);
        item->setData(Qt::UserRole, int(weight));
        if (weight == m_original)
            preselected = item;
    }
    m_list->setMinimumSize(240, 320);
    if (preselected) {
        m_list->setCurrentItem(preselected);
        m_list->scrollToItem(preselected, QAbstractItemView::PositionAtCenter);
    }

    m_choice->setObjectName(QStringLiteral("1002"));
    QDialogButtonBox* buttons = okCancelHelp(this, m_ok, QStringLiteral("lineweight_dialog"));
    connect(m_list, &QListWidget::itemSelectionChanged, this, &OvLineWeightDialog::updateChoice);
    connect(m_list, &QListWidget::itemDoubleClicked, this, [this](QListWidgetItem* item) {
        if (item) {
            m_list->setCurrentItem(item);
            accept();
        }
    });

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(tr("&Lineweights:")));
    layout->addWidget(m_list, 1);
    layout->addWidget(m_choice);
    layout->addWidget(buttons);
    updateChoice();
    m_list->setFocus();
}

OvDb::LineWeight OvLineWeightDialog::chosen() const {
    const QList<QListWidgetItem*> selected = m_list->selectedItems();
    if (selected.isEmpty())
        return m_original;
    return OvDb::LineWeight(selected.constFirst()->data(Qt::UserRole).toInt());
}

void OvLineWeightDialog::updateChoice() {
    const bool any = !m_list->selectedItems().isEmpty();
    m_ok->setEnabled(any);
    m_choice->setText(tr("Original: %1\nNew: %2")
                          .arg(OvDb::lineWeightText(m_original),
                               any ? OvDb::lineWeightText(chosen()) : tr("(none)")));
}
