#pragma once

#include "OvDrawingSnapshot.h"

#include <QAbstractTableModel>

#include <memory>

// The layers of a snapshot as a table: name, colour (with a swatch), linetype,
// lineweight, in use, wire type, and the WIRELAYS pattern that catches the layer.
class OvLayerModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { Name, Color, Linetype, LineWeight, InUse, WireType, Pattern, ColumnCount };

    explicit OvLayerModel(QObject* parent = nullptr);

    void setSnapshot(std::shared_ptr<const OvDrawingSnapshot> snapshot);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    // "0.25 mm", or the name of a special weight.
    static QString lineWeightText(int weight);

private:
    std::shared_ptr<const OvDrawingSnapshot> m_snapshot;
};
