#include "OvColorDialog.h"

#include "ovui/OvUiHelp.h"

#include "ovdb/resbuf.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

#include <array>

namespace {

// Rows of the hue wheel from top to bottom, by the last digit of the index: the full
// colours from bright to dark, then the washed-out ones in the same order.
constexpr std::array<int, 10> kShadeRows = {0, 2, 4, 6, 8, 1, 3, 5, 7, 9};
constexpr int kHues = 24;

int rowOfShade(int shade) {
    for (int row = 0; row < 10; ++row) {
        if (kShadeRows[row] == shade)
            return row;
    }
    return 0;
}

QColor colorOf(int index) {
    return QColor::fromRgb(OvCmColor::rgbOfIndex(index));
}

} // namespace

// --- swatch ----------------------------------------------------------------------------------

OvColorSwatch::OvColorSwatch(int index, int size, QWidget* parent)
    : QAbstractButton(parent), m_index(index), m_size(size) {
    setFocusPolicy(Qt::NoFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void OvColorSwatch::setIndex(int index) {
    m_index = index;
    update();
}

void OvColorSwatch::setChosen(bool chosen) {
    if (m_chosen == chosen)
        return;
    m_chosen = chosen;
    update();
}

void OvColorSwatch::setLayerIndex(int layerIndex) {
    m_layerIndex = layerIndex;
    update();
}

QSize OvColorSwatch::sizeHint() const {
    return {m_size, m_size};
}

void OvColorSwatch::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QRect box = rect().adjusted(1, 1, -1, -1);
    int shown = m_index;
    if (shown == OvCmColor::kByLayer)
        shown = m_layerIndex >= 1 && m_layerIndex <= 255 ? m_layerIndex : 7;
    else if (shown == OvCmColor::kByBlock)
        shown = 7;
    if (shown == 7) {
        // White on the dark drawing area, black on paper: both halves.
        painter.fillRect(box, Qt::white);
        QPolygon lower;
        lower << box.bottomLeft() << box.bottomRight() << box.topRight();
        painter.setPen(Qt::NoPen);
        painter.setBrush(Qt::black);
        painter.drawPolygon(lower);
    } else {
        painter.fillRect(box, colorOf(shown));
    }
    painter.setBrush(Qt::NoBrush);
    if (m_chosen) {
        painter.setPen(QPen(Qt::black, 2));
        painter.drawRect(rect().adjusted(1, 1, -1, -1));
        painter.setPen(QPen(Qt::white, 1));
        painter.drawRect(rect().adjusted(2, 2, -3, -3));
    } else {
        painter.setPen(QPen(palette().color(QPalette::Mid), 1));
        painter.drawRect(box.adjusted(0, 0, -1, -1));
    }
}

void OvColorSwatch::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        emit doubleClicked(m_index);
        return;
    }
    QAbstractButton::mouseDoubleClickEvent(event);
}

// --- dialog ----------------------------------------------------------------------------------

OvColorDialog::OvColorDialog(const OvCmColor& color, bool allowMeta, const OvCmColor& layerColor,
                             QWidget* parent)
    : QDialog(parent), m_color(color), m_layerColor(layerColor), m_allowMeta(allowMeta) {
    setObjectName(QStringLiteral("hostColorDialog"));
    setWindowTitle(tr("Select Color"));

    auto makeSwatch = [this](int index, int size, QWidget* parent) {
        auto* swatch = new OvColorSwatch(index, size, parent);
        swatch->setObjectName(QStringLiteral("color-%1").arg(index));
        swatch->setToolTip(describe(index));
        swatch->setAccessibleName(describe(index));
        swatch->setMouseTracking(true);
        swatch->installEventFilter(this);
        connect(swatch, &QAbstractButton::clicked, this, [this, index] { choose(index, true); });
        connect(swatch, &OvColorSwatch::doubleClicked, this, [this](int index) {
            choose(index, true);
            accept();
        });
        m_swatches[index] = swatch;
        return swatch;
    };

    // The palette: the hue wheel, then the standard colours and the greys.
    m_palette = new QWidget;
    m_palette->setObjectName(QStringLiteral("1002"));
    m_palette->setAccessibleName(tr("Index colour palette"));
    m_palette->setFocusPolicy(Qt::StrongFocus);
    m_palette->installEventFilter(this);
    auto* paletteLayout = new QVBoxLayout(m_palette);
    paletteLayout->setContentsMargins(0, 0, 0, 0);
    auto* wheel = new QGridLayout;
    wheel->setSpacing(1);
    for (int hue = 0; hue < kHues; ++hue) {
        for (int row = 0; row < 10; ++row)
            wheel->addWidget(makeSwatch((hue + 1) * 10 + kShadeRows[row], 17, m_palette), row, hue);
    }
    paletteLayout->addLayout(wheel);
    paletteLayout->addSpacing(8);
    auto* lower = new QHBoxLayout;
    lower->setSpacing(2);
    for (int index = 1; index <= 9; ++index)
        lower->addWidget(makeSwatch(index, 24, m_palette));
    lower->addStretch(1);
    for (int index = 250; index <= 255; ++index)
        lower->addWidget(makeSwatch(index, 24, m_palette));
    paletteLayout->addLayout(lower);

    auto* paletteBox = new QGroupBox(tr("Index colors"));
    auto* boxLayout = new QVBoxLayout(paletteBox);
    boxLayout->addWidget(m_palette);
    m_pointed = new QLabel;
    m_pointed->setObjectName(QStringLiteral("1007"));
    m_pointed->setMinimumWidth(260);
    boxLayout->addWidget(m_pointed);

    // BYLAYER and BYBLOCK, then the edit and the previews.
    auto* choiceRow = new QHBoxLayout;
    if (m_allowMeta) {
        auto* byLayer = new QPushButton(tr("By&Layer"));
        byLayer->setObjectName(QStringLiteral("1003"));
        connect(byLayer, &QPushButton::clicked, this,
                [this] { choose(OvCmColor::kByLayer, true); });
        auto* byBlock = new QPushButton(tr("By&Block"));
        byBlock->setObjectName(QStringLiteral("1004"));
        connect(byBlock, &QPushButton::clicked, this,
                [this] { choose(OvCmColor::kByBlock, true); });
        choiceRow->addWidget(byLayer);
        choiceRow->addWidget(byBlock);
        choiceRow->addSpacing(16);
    }
    auto* editLabel = new QLabel(tr("&Color:"));
    m_edit = new QLineEdit;
    m_edit->setObjectName(QStringLiteral("1001"));
    m_edit->setAccessibleName(tr("Color number or name"));
    m_edit->setPlaceholderText(m_allowMeta ? tr("1-255, red, bylayer...") : tr("1-255, red..."));
    m_edit->setMaxLength(16);
    editLabel->setBuddy(m_edit);
    connect(m_edit, &QLineEdit::textEdited, this, &OvColorDialog::onTextEdited);
    choiceRow->addWidget(editLabel);
    choiceRow->addWidget(m_edit, 1);

    auto* previews = new QHBoxLayout;
    m_chosenPreview = new OvColorSwatch(m_color.colorIndex(), 32);
    m_chosenPreview->setObjectName(QStringLiteral("1005"));
    m_chosenPreview->setLayerIndex(m_layerColor.colorIndex());
    m_chosenText = new QLabel;
    auto* layerPreview = new OvColorSwatch(m_layerColor.colorIndex(), 32);
    layerPreview->setObjectName(QStringLiteral("1006"));
    auto* layerText = new QLabel(tr("Current layer:\n%1").arg(describe(m_layerColor.colorIndex())));
    previews->addWidget(m_chosenPreview);
    previews->addWidget(m_chosenText);
    previews->addSpacing(24);
    previews->addWidget(layerPreview);
    previews->addWidget(layerText);
    previews->addStretch(1);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel |
                                         QDialogButtonBox::Help);
    m_ok = buttons->button(QDialogButtonBox::Ok);
    m_ok->setObjectName(QStringLiteral("1"));
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("2"));
    buttons->button(QDialogButtonBox::Help)->setObjectName(QStringLiteral("9"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons, &QDialogButtonBox::helpRequested, this,
            [] { ovuiShowHelp({}, QStringLiteral("color_dialog")); });

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(paletteBox);
    layout->addLayout(choiceRow);
    layout->addLayout(previews);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    // A colour that this dialog cannot offer (BYLAYER without allowMeta) starts as no choice.
    const int start = m_color.colorIndex();
    const bool offered = (start >= 1 && start <= 255) || m_allowMeta;
    if (offered) {
        choose(start, true);
    } else {
        m_edit->clear();
        onTextEdited(QString());
    }
    m_edit->setFocus();
    m_edit->selectAll();
}

QString OvColorDialog::describe(int index) const {
    if (index == OvCmColor::kByLayer)
        return tr("BYLAYER");
    if (index == OvCmColor::kByBlock)
        return tr("BYBLOCK");
    OvCmColor color;
    color.setColorIndex(index);
    const QString name = color.colorName();
    const QColor rgb = colorOf(index);
    const QString rgbText =
        QStringLiteral("%1,%2,%3").arg(rgb.red()).arg(rgb.green()).arg(rgb.blue());
    if (index >= 1 && index <= 7)
        return tr("%1 (%2), RGB %3").arg(index).arg(name, rgbText);
    return tr("%1, RGB %2").arg(index).arg(rgbText);
}

void OvColorDialog::choose(int index, bool updateEdit) {
    if (auto old = m_swatches.find(m_color.colorIndex()); old != m_swatches.end())
        old->second->setChosen(false);
    m_color.setColorIndex(index);
    if (auto now = m_swatches.find(index); now != m_swatches.end())
        now->second->setChosen(true);
    if (updateEdit) {
        OvCmColor named;
        named.setColorIndex(index);
        m_edit->setText(named.colorName());
        m_edit->setStyleSheet(QString());
    }
    m_chosenPreview->setIndex(index);
    m_chosenPreview->setVisible(true);
    m_chosenText->setText(tr("New color:\n%1").arg(describe(index)));
    m_ok->setEnabled(true);
}

void OvColorDialog::onTextEdited(const QString& text) {
    OvCmColor typed;
    const std::wstring wide = text.toStdWString();
    const bool valid = ovcmGetColorFromOXIName(typed, wide.c_str()) == RTNORM &&
                       (m_allowMeta || (!typed.isByLayer() && !typed.isByBlock()));
    if (valid) {
        m_edit->setStyleSheet(QString());
        choose(typed.colorIndex(), false);
        return;
    }
    // Nothing to accept until the text names a colour this dialog offers.
    m_edit->setStyleSheet(text.isEmpty() ? QString() : QStringLiteral("color: #c00000;"));
    m_chosenPreview->setVisible(false);
    m_chosenText->setText(text.isEmpty()
                              ? tr("Choose a color.")
                              : tr("\"%1\" is not a color\n%2")
                                    .arg(text, m_allowMeta ? tr("1-255, a name, BYLAYER or BYBLOCK")
                                                           : tr("a number 1-255 or a name")));
    m_ok->setEnabled(false);
}

void OvColorDialog::moveChoice(int key) {
    int index = m_color.colorIndex();
    if (index >= 10 && index <= 249) {
        int hue = index / 10 - 1;
        int row = rowOfShade(index % 10);
        if (key == Qt::Key_Left)
            hue = (hue + kHues - 1) % kHues;
        else if (key == Qt::Key_Right)
            hue = (hue + 1) % kHues;
        else if (key == Qt::Key_Up)
            row = (row + 9) % 10;
        else if (key == Qt::Key_Down)
            row = (row + 1) % 10;
        index = (hue + 1) * 10 + kShadeRows[row];
    } else if (index >= 1 && index <= 255) {
        if (key == Qt::Key_Left)
            index = index == 250 ? 9 : std::max(1, index - 1);
        else if (key == Qt::Key_Right)
            index = index == 9 ? 250 : std::min(255, index + 1);
        else if (key == Qt::Key_Up)
            index = 10;
    } else {
        index = 1;
    }
    choose(index, true);
}

bool OvColorDialog::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_palette && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Left || key == Qt::Key_Right || key == Qt::Key_Up ||
            key == Qt::Key_Down) {
            moveChoice(key);
            return true;
        }
    }
    if (event->type() == QEvent::Enter) {
        if (auto* swatch = qobject_cast<OvColorSwatch*>(watched))
            m_pointed->setText(tr("Index color: %1").arg(describe(swatch->index())));
    } else if (event->type() == QEvent::Leave && qobject_cast<OvColorSwatch*>(watched)) {
        m_pointed->clear();
    }
    return QDialog::eventFilter(watched, event);
}
