#include "OvLayerPanel.h"

#include "OvLayerModel.h"

#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QVBoxLayout>

OvLayerPanel::OvLayerPanel(QWidget* parent)
    : QWidget(parent), m_model(new OvLayerModel(this)), m_proxy(new QSortFilterProxyModel(this)),
      m_table(new QTableView(this)), m_filter(new QLineEdit(this)), m_patterns(new QLabel(this)) {
    setObjectName(QStringLiteral("layerPanel"));
    m_proxy->setSourceModel(m_model);
    m_proxy->setFilterCaseSensitivity(Qt::CaseInsensitive);
    m_proxy->setFilterKeyColumn(OvLayerModel::Name);

    m_filter->setObjectName(QStringLiteral("layerFilter"));
    m_filter->setAccessibleName(tr("Filter layers by name"));
    m_filter->setPlaceholderText(tr("Filter layers"));
    m_filter->setClearButtonEnabled(true);
    connect(m_filter, &QLineEdit::textChanged, m_proxy,
            &QSortFilterProxyModel::setFilterFixedString);

    m_table->setObjectName(QStringLiteral("layerTable"));
    m_table->setAccessibleName(tr("Layers"));
    m_table->setModel(m_proxy);
    m_table->setSortingEnabled(true);
    m_table->sortByColumn(-1, Qt::AscendingOrder); // table order until a header is clicked
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setAlternatingRowColors(true);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setDefaultSectionSize(m_table->fontMetrics().height() + 6);
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    // Widths from the texts they hold, not from the rows: a drawing may have ten thousand.
    const QFontMetrics metrics = m_table->fontMetrics();
    const auto fit = [&](int column, const QString& sample) {
        m_table->setColumnWidth(column, metrics.horizontalAdvance(sample) + 24);
    };
    fit(OvLayerModel::Name, QStringLiteral("GNYE_2.5_X"));
    fit(OvLayerModel::Color, QStringLiteral("MMmagenta"));
    fit(OvLayerModel::Linetype, QStringLiteral("Continuous"));
    fit(OvLayerModel::LineWeight, QStringLiteral("Lineweight"));
    fit(OvLayerModel::InUse, QStringLiteral("In use"));
    fit(OvLayerModel::WireType, QStringLiteral("Wire type"));

    m_patterns->setObjectName(QStringLiteral("wireLayerPatterns"));
    m_patterns->setWordWrap(true);
    m_patterns->setTextFormat(Qt::RichText);
    m_patterns->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->addWidget(m_filter);
    layout->addWidget(m_table, 1);
    layout->addWidget(m_patterns);
}

void OvLayerPanel::setSnapshot(std::shared_ptr<const OvDrawingSnapshot> snapshot) {
    if (!snapshot) {
        m_model->setSnapshot(nullptr);
        m_patterns->clear();
        return;
    }
    QString note;
    if (!snapshot->hasWireLayerList()) {
        note = tr("No WD_M block: the drawing has no WIRELAYS list.");
    } else if (snapshot->wireLayers().trimmed().isEmpty()) {
        note = tr("WIRELAYS is empty.");
    } else {
        note = tr("WIRELAYS: %1").arg(snapshot->wireLayers().toHtmlEscaped());
        if (!snapshot->idlePatterns().isEmpty())
            note += QStringLiteral("<br><span style=\"color:#d04040\">%1</span>")
                        .arg(tr("Patterns that catch no layer: %1")
                                 .arg(snapshot->idlePatterns()
                                          .join(QStringLiteral(", "))
                                          .toHtmlEscaped()));
    }
    m_patterns->setText(note);
    m_model->setSnapshot(std::move(snapshot));
}

QString OvLayerPanel::patternNote() const {
    return m_patterns->text();
}
