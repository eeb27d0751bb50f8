#pragma once

#include "OvDrawingSnapshot.h"

#include <QWidget>

#include <memory>

class OvLayerModel;
class QLabel;
class QSortFilterProxyModel;
class QTableView;
class QLineEdit;

// The layers of the active drawing, with a filter by name, and below them the WIRELAYS
// list: the patterns that catch no layer are flagged, since they are what is left of wire
// types that are gone or were never made.
class OvLayerPanel : public QWidget {
    Q_OBJECT

public:
    explicit OvLayerPanel(QWidget* parent = nullptr);

    void setSnapshot(std::shared_ptr<const OvDrawingSnapshot> snapshot);

    QTableView* table() const { return m_table; }
    OvLayerModel* model() const { return m_model; }
    // The text under the table about the WIRELAYS patterns.
    QString patternNote() const;

private:
    OvLayerModel* m_model;
    QSortFilterProxyModel* m_proxy;
    QTableView* m_table;
    QLineEdit* m_filter;
    QLabel* m_patterns;
};
