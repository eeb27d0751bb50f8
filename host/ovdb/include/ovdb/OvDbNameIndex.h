#pragma once

#include <QChar>
#include <QString>
#include <QStringView>

#include <cstddef>
#include <unordered_map>

// Names of a symbol table or a dictionary to what they name, without regard to case. The
// look-up folds case while it hashes and compares, so that asking for a name makes no
// folded copy of it: a table is asked once per layer by every walk of the wire types.
template <class T> class OvDbNameIndex {
public:
    // The value of `name`, or `fallback`.
    T value(QStringView name, T fallback) const {
        const auto it = m_map.find(name);
        return it == m_map.end() ? fallback : it->second;
    }
    bool contains(QStringView name) const { return m_map.find(name) != m_map.end(); }
    // Sets the value of `name` (of any case) to `value`.
    void insert(const QString& name, T value) {
        const auto it = m_map.find(QStringView(name));
        if (it != m_map.end())
            it->second = value;
        else
            m_map.emplace(name, value);
    }
    void remove(QStringView name) {
        const auto it = m_map.find(name);
        if (it != m_map.end())
            m_map.erase(it);
    }
    void clear() { m_map.clear(); }
    void reserve(std::size_t count) { m_map.reserve(count); }

private:
    // Case folding of whole code points, as QString's case-blind comparison does.
    static char32_t foldedAt(QStringView s, qsizetype& i) {
        char32_t c = s[i].unicode();
        if (QChar::isHighSurrogate(c) && i + 1 < s.size() && s[i + 1].isLowSurrogate()) {
            c = QChar::surrogateToUcs4(s[i].unicode(), s[i + 1].unicode());
            ++i;
        }
        ++i;
        return QChar::toCaseFolded(c);
    }
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(QStringView s) const {
            std::size_t h = 1469598103934665603ull;
            for (qsizetype i = 0; i < s.size();)
                h = (h ^ foldedAt(s, i)) * 1099511628211ull;
            return h;
        }
    };
    struct Equal {
        using is_transparent = void;
        bool operator()(QStringView a, QStringView b) const {
            return a.compare(b, Qt::CaseInsensitive) == 0;
        }
    };

    std::unordered_map<QString, T, Hash, Equal> m_map;
};
