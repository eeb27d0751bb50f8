#include "OvLayerModel.h"

#include <QFont>

OvLayerModel::OvLayerModel(QObject* parent) : QAbstractTableModel(parent) {}

void OvLayerModel::setSnapshot(std::shared_ptr<const OvDrawingSnapshot> snapshot) {
    beginResetModel();
    m_snapshot = std::move(snapshot);
    endResetModel();
}

int OvLayerModel::rowCount(const QModelIndex& parent) const {
    if (parent.isValid() || !m_snapshot)
        return 0;
    return static_cast<int>(m_snapshot->layers().size());
}

int OvLayerModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QString OvLayerModel::lineWeightText(int weight) {
    switch (weight) {
    case -3:
        return tr("Default");
    case -2:
        return tr("ByBlock");
    case -1:
        return tr("ByLayer");
    default:
        return QStringLiteral("%1 mm").arg(weight / 100.0, 0, 'f', 2);
    }
}

QVariant OvLayerModel::data(const QModelIndex& index, int role) const {
    if (!m_snapshot || !index.isValid() || index.row() >= rowCount())
        return {};
    const auto& layer = m_snapshot->layers()[static_cast<std::size_t>(index.row())];
    if (role == Qt::DisplayRole) {
        switch (index.column()) {
        case Name:
            return layer.name;
        case Color:
            return layer.colorIndex >= 1 && layer.colorIndex <= 7
                       ? QStringList{tr("red"),  tr("yellow"),  tr("green"), tr("cyan"),
                                     tr("blue"), tr("magenta"), tr("white")}
                             .at(layer.colorIndex - 1)
                       : QString::number(layer.colorIndex);
        case Linetype:
            return layer.linetype;
        case LineWeight:
            return lineWeightText(layer.lineWeight);
        case InUse:
            return layer.inUse ? tr("Yes") : QString();
        case WireType:
            return !layer.pattern.isEmpty() || layer.wireRecord ? tr("Yes") : QString();
        case Pattern:
            return layer.pattern;
        default:
            return {};
        }
    }
    if (role == Qt::DecorationRole && index.column() == Color)
        return layer.color;
    if (role == Qt::FontRole && index.column() == Name && layer.current) {
        QFont bold;
        bold.setBold(true);
        return bold;
    }
    if (role == Qt::ToolTipRole) {
        if (index.column() == Name && layer.current)
            return tr("The current layer");
        if (index.column() == WireType && layer.wireRecord && layer.pattern.isEmpty())
            return tr("Holds a wire type record, but no WIRELAYS pattern catches it");
        if (index.column() == WireType && !layer.wireRecord && !layer.pattern.isEmpty())
            return tr("Caught by a WIRELAYS pattern, without a wire type record of its own");
    }
    return {};
}

QVariant OvLayerModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case Name:
        return tr("Name");
    case Color:
        return tr("Colour");
    case Linetype:
        return tr("Linetype");
    case LineWeight:
        return tr("Lineweight");
    case InUse:
        return tr("In use");
    case WireType:
        return tr("Wire type");
    case Pattern:
        return tr("WIRELAYS pattern");
    default:
        return {};
    }
}
