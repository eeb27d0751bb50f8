#pragma once

#include <QString>
#include <QStringView>

#include <cstdint>
#include <functional>

// The persistent name of an object within its drawing: a 64-bit number, written as
// upper-case hexadecimal without leading zeros. 0 is no handle.
class OvDbHandle {
public:
    constexpr OvDbHandle() = default;
    constexpr explicit OvDbHandle(std::uint64_t value) : m_value(value) {}

    constexpr std::uint64_t value() const { return m_value; }
    constexpr bool isNull() const { return m_value == 0; }

    QString toString() const;
    // Hexadecimal digits only, 1 to 16 of them (case ignored); `ok` false otherwise.
    static OvDbHandle fromString(QStringView text, bool* ok = nullptr);

    constexpr auto operator<=>(const OvDbHandle&) const = default;

private:
    std::uint64_t m_value = 0;
};

template <> struct std::hash<OvDbHandle> {
    std::size_t operator()(const OvDbHandle& h) const noexcept {
        return std::hash<std::uint64_t>()(h.value());
    }
};
