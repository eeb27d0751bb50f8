// The store's case-blind name test: it must answer as QString's case-blind comparison
// does, which the walks of the layer table used before, for every text a name can hold.

#include "store/ZelStoreSupport.h"

#include <gtest/gtest.h>

#include <QChar>
#include <QString>

#include <map>
#include <random>
#include <vector>

namespace {

using zelstore::sameName;

bool qtSame(const QString& a, const QString& b) {
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

QString ofCodePoint(char32_t c) {
    return QString::fromUcs4(&c, 1);
}

// Every code point that shares its case folding with another, by folding.
std::map<char32_t, std::vector<char32_t>> foldingClasses() {
    std::map<char32_t, std::vector<char32_t>> classes;
    for (char32_t c = 0; c <= 0x10FFFF; ++c) {
        if (!QChar::isSurrogate(c))
            classes[QChar::toCaseFolded(c)].push_back(c);
    }
    std::erase_if(classes, [](const auto& entry) { return entry.second.size() < 2; });
    return classes;
}

TEST(StoreNames, CharactersOfOneFoldingHaveOneLengthAndMatchAsQtMatchesThem) {
    const auto classes = foldingClasses();
    ASSERT_GT(classes.size(), 1000u);
    for (const auto& [folded, members] : classes) {
        for (char32_t a : members) {
            for (char32_t b : members) {
                const QString x = QStringLiteral("W_") + ofCodePoint(a) + QStringLiteral("_1");
                const QString y = QStringLiteral("w_") + ofCodePoint(b) + QStringLiteral("_1");
                // The length test before the comparison rests on this.
                ASSERT_EQ(x.size(), y.size()) << unsigned(a) << " " << unsigned(b);
                ASSERT_EQ(sameName(x, y), qtSame(x, y)) << unsigned(a) << " " << unsigned(b);
            }
        }
    }
}

TEST(StoreNames, TrickyNamesAnswerAsQtDoes) {
    // Lone halves of surrogate pairs, and a capital whose lower case is two code units; every
    // other tricky character is in the random alphabet below.
    const QStringList names = {
        QString(QChar(0xD801)) + "A",
        QString(QChar(0xDC00)) + "a",
        QString::fromUtf8("\U00010401a"),
        QString::fromUtf8("\u0130"),
        "i",
        "",
    };
    for (const QString& a : names) {
        for (const QString& b : names)
            EXPECT_EQ(sameName(a, b), qtSame(a, b)) << a.toStdString() << " / " << b.toStdString();
    }

    // Random names over a small alphabet of such characters, most of equal length: foldings
    // that cross into ASCII or change the length, surrogate pairs that share their first
    // half, and ASCII neighbours of letters.
    const std::vector<char32_t> alphabet = {
        'a',    'A', 'z',   'Z', '_',   '@',   '`',   '[',     '{',     '0',    0xE9, 0xC9,
        0x212A, 'k', 0x17F, 's', 0x3A3, 0x3C2, 0x3C3, 0x10400, 0x10428, 0x1E9E, 0xDF};
    std::mt19937 random(12);
    std::uniform_int_distribution<std::size_t> pick(0, alphabet.size() - 1);
    std::uniform_int_distribution<int> length(0, 4);
    for (int i = 0; i < 200000; ++i) {
        QString a;
        QString b;
        const int n = length(random);
        for (int j = 0; j < n; ++j) {
            const char32_t c = alphabet[pick(random)];
            a += ofCodePoint(c);
            // Mostly the same character or its other case, sometimes another one.
            const char32_t d = random() % 3 == 0 ? alphabet[pick(random)] : c;
            b += random() % 2 ? ofCodePoint(d).toUpper() : ofCodePoint(d).toLower();
        }
        ASSERT_EQ(sameName(a, b), qtSame(a, b)) << a.toStdString() << " / " << b.toStdString();
    }
}

} // namespace
