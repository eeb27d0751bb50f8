#pragma once

#include <QColor>
#include <QFont>
#include <QString>
#include <QStringList>

#include <array>
#include <cstddef>
#include <optional>

namespace platform {

// The style of a grid cell, as a set of attributes each of which may be unset. A
// cell's effective style is the grid's standard style, overlaid by its column's
// style, overlaid by the cell's own: an attribute set at a closer level wins.
class CellStyle {
public:
    // The kind of control a cell shows; the numbers are also the model's
    // control-kind role values.
    enum class Control { Edit = 0, Static = 1, DropDownList = 2 };

    enum class Modify {
        Override, // set attributes replace the target's, unset ones leave it alone
        Copy,     // the target becomes this style exactly
        ApplyNew, // only attributes the target lacks are taken
    };

    std::optional<Control> control;
    std::optional<bool> readOnly;
    std::optional<QColor> interior;
    std::optional<QColor> textColor;
    std::optional<QFont> font;
    std::optional<Qt::Alignment> alignment;
    std::optional<QStringList> choices;
    std::optional<QString> tip;
    std::optional<bool> wrapText;

    CellStyle& setControl(Control c) {
        control = c;
        return *this;
    }
    CellStyle& setReadOnly(bool on) {
        readOnly = on;
        return *this;
    }
    CellStyle& setInterior(const QColor& c) {
        interior = c;
        return *this;
    }
    CellStyle& setTextColor(const QColor& c) {
        textColor = c;
        return *this;
    }
    CellStyle& setFont(const QFont& f) {
        font = f;
        return *this;
    }
    CellStyle& setAlignment(Qt::Alignment a) {
        alignment = a;
        return *this;
    }
    CellStyle& setChoices(const QStringList& list) {
        choices = list;
        return *this;
    }
    CellStyle& setTip(const QString& text) {
        tip = text;
        return *this;
    }
    CellStyle& setWrapText(bool on) {
        wrapText = on;
        return *this;
    }

    // Colours given as Windows COLORREF numbers (0x00BBGGRR), as the module keeps them.
    static QColor fromColorRef(unsigned colorRef) {
        return QColor(int(colorRef & 0xFF), int((colorRef >> 8) & 0xFF),
                      int((colorRef >> 16) & 0xFF));
    }

    bool isReadOnly() const { return readOnly.value_or(false); }
    Control controlOr(Control fallback) const { return control.value_or(fallback); }

    // Changes this style by `other` in the given way.
    void apply(const CellStyle& other, Modify mode = Modify::Override);

    // The attributes that this style sets, each as the assignment that lays it over a
    // target, as apply in Override mode does. Found once for a range, they spare a
    // grid painting all its rows from looking at every unset attribute at every cell.
    // At most one per attribute, so they fit in place: a row painted at every cursor step
    // needs no allocation for them.
    using Setter = void (*)(CellStyle& target, const CellStyle& source);
    struct Setters {
        std::array<Setter, 9> list{};
        std::size_t count = 0;
        void add(Setter setter) { list[count++] = setter; }
        bool empty() const { return count == 0; }
        const Setter* begin() const { return list.data(); }
        const Setter* end() const { return list.data() + count; }
    };
    Setters setters() const;

    bool operator==(const CellStyle&) const = default;
};

} // namespace platform
