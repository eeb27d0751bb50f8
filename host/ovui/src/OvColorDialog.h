#pragma once

#include "ovdb/OvCmColor.h"

#include <QAbstractButton>
#include <QDialog>

#include <map>

class QLabel;
class QLineEdit;
class QPushButton;

// One colour of the palette, or a preview of a colour: painted, not styled, so that colour 7
// shows both of its faces (white on dark, black on light) and the choice stands out.
class OvColorSwatch : public QAbstractButton {
    Q_OBJECT
public:
    OvColorSwatch(int index, int size, QWidget* parent = nullptr);

    int index() const { return m_index; }
    void setIndex(int index);
    void setChosen(bool chosen);
    // A preview of BYLAYER shows the layer's colour; of BYBLOCK, colour 7.
    void setLayerIndex(int layerIndex);
    QSize sizeHint() const override;

signals:
    void doubleClicked(int index);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    int m_index;
    int m_size;
    int m_layerIndex = 7;
    bool m_chosen = false;
};

// The index colour picker: the palette of colours 1 to 255, BYLAYER and BYBLOCK when they
// are allowed, an edit for a colour number or name, and previews of the colour chosen and
// of the current layer's. Control numbers: edit 1001, palette 1002 (swatches "color-<n>"),
// BYLAYER 1003, BYBLOCK 1004, previews 1005 and 1006, the pointed colour's text 1007,
// OK 1, Cancel 2, Help 9.
class OvColorDialog : public QDialog {
    Q_OBJECT
public:
    OvColorDialog(const OvCmColor& color, bool allowMeta, const OvCmColor& layerColor,
                  QWidget* parent = nullptr);

    OvCmColor color() const { return m_color; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void choose(int index, bool updateEdit);
    void onTextEdited(const QString& text);
    void moveChoice(int key);
    QString describe(int index) const;

    OvCmColor m_color;
    OvCmColor m_layerColor;
    bool m_allowMeta;
    std::map<int, OvColorSwatch*> m_swatches;
    QWidget* m_palette = nullptr;
    QLineEdit* m_edit = nullptr;
    OvColorSwatch* m_chosenPreview = nullptr;
    QLabel* m_chosenText = nullptr;
    QLabel* m_pointed = nullptr;
    QPushButton* m_ok = nullptr;
};
