// The one-pass reader of drawing files against the tree parser behind it: a file in the
// form Orvex writes goes the fast way, the same file with its first two keys swapped goes
// the other, and both must end alike, with the same status, message and contents.

#include "OvdbTest.h"

#include <QFile>
#include <QTemporaryDir>

namespace {

using namespace Orvex;

std::wstring w(const QString& text) {
    return text.toStdWString();
}

struct Outcome {
    ErrorStatus status;
    QString message;
    QString comments;
    std::size_t objects;
};

class OnePassReader : public OvdbTest {
protected:
    void SetUp() override {
        OvdbTest::SetUp();
        ASSERT_TRUE(dir.isValid());
        QFile file(QStringLiteral(ZEL_TEST_DATA_DIR "/example.dwg"));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        example = file.readAll();
        ASSERT_TRUE(example.startsWith(kFast));
    }

    Outcome read(const QByteArray& text, const QString& name) {
        const QString file = dir.filePath(name);
        QFile out(file);
        EXPECT_TRUE(out.open(QIODevice::WriteOnly | QIODevice::Truncate));
        out.write(text);
        out.close();
        OvDbDatabase side(false, true);
        Outcome o{side.readDwgFile(w(file).c_str()), side.lastErrorMessage(), {}, 0};
        o.message.replace(file, QStringLiteral("<file>"));
        o.objects = side.approxNumObjects();
        OvDbLinetypeTable* linetypes = nullptr;
        if (o.status == eOk && side.getSymbolTable(linetypes, OvDb::kForRead) == eOk) {
            OvDbLinetypeTableRecord* record = nullptr;
            if (linetypes->getAt(L"Continuous", record, OvDb::kForRead) == eOk) {
                o.comments = record->comments();
                record->close();
            }
            linetypes->close();
        }
        return o;
    }

    // The file both ways; they must agree in everything.
    Outcome both(QByteArray text) {
        const Outcome fast = read(text, QStringLiteral("fast.dwg"));
        text.replace(kFast, kSwapped);
        const Outcome tree = read(text, QStringLiteral("tree.dwg"));
        EXPECT_EQ(fast.status, tree.status) << fast.message.toStdString();
        EXPECT_EQ(fast.message.toStdString(), tree.message.toStdString());
        EXPECT_EQ(fast.comments.toStdString(), tree.comments.toStdString());
        EXPECT_EQ(fast.objects, tree.objects);
        return fast;
    }

    QByteArray edited(const char* from, const char* to) const {
        QByteArray text = example;
        EXPECT_TRUE(text.contains(from)) << from;
        return text.replace(from, to);
    }

    static constexpr const char* kFast = "{\"format\":\"orvex-drawing\",\"version\":1,";
    static constexpr const char* kSwapped = "{\"version\":1,\"format\":\"orvex-drawing\",";
    static constexpr const char* kComments = "\"comments\":\"Solid line\"";
    static constexpr const char* kColor = "\"color\":1,\"lineWeight\":50";

    QTemporaryDir dir;
    QByteArray example;
};

TEST_F(OnePassReader, SoundFilesReadAlikeWhateverTheirSpelling) {
    const Outcome plain = both(example);
    EXPECT_EQ(plain.status, eOk) << plain.message.toStdString();
    EXPECT_EQ(plain.comments, QStringLiteral("Solid line"));

    // Escapes, a pair of surrogates, white space the writer never puts.
    const Outcome escaped = both(
        edited(kComments, "\"comments\" : \"Solid \\\"line\\\"\\u00e9\\ud83d\\ude00\\\\\\/\\t\" "));
    EXPECT_EQ(escaped.status, eOk) << escaped.message.toStdString();
    EXPECT_EQ(escaped.comments, QStringLiteral("Solid \"line\"\u00e9") + QChar(0xD83D) +
                                    QChar(0xDE00) + QStringLiteral("\\/\t"));

    // A whole number in any spelling.
    for (const char* color : {"\"color\":1.0,\"lineWeight\":50", "\"color\":1e0,\"lineWeight\":50",
                              "\"color\":10E-1,\"lineWeight\":50"})
        EXPECT_EQ(both(edited(kColor, color)).status, eOk) << color;
}

TEST_F(OnePassReader, FaultsGetTheTreeParsersMessage) {
    const std::pair<const char*, const char*> cases[] = {
        {kColor, "\"colour\":1,\"lineWeight\":50"},
        {kColor, "\"color\":1,\"color\":2,\"lineWeight\":50"},
        {kColor, "\"color\":01,\"lineWeight\":50"},
        {kColor, "\"color\":1e400,\"lineWeight\":50"},
        {kColor, "\"color\":18446744073709551616,\"lineWeight\":50"},
        {kColor, "\"color\":-9223372036854775809,\"lineWeight\":50"},
        {kComments, "\"comments\":\"Solid \\ud800 line\""},
        {kComments, "\"comments\":\"Solid \\udc00 line\""},
        {kComments, "\"comments\":\"Solid \\x line\""},
        {kComments, "\"comments\":\"Solid\tline\""},
        {kComments,
         "\"comments\":[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[["
         "]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]"},
        {"\"linetype\":\"8\"", "\"linetype\":\"99\""},
        {"\"handle\":\"7\"", "\"handle\":\"5\""},
        {"\"type\":\"LayerTableRecord\"", "\"type\":\"LayerTableRecord\",\"x\":nul"},
    };
    for (const auto& [from, to] : cases) {
        const Outcome o = both(edited(from, to));
        EXPECT_NE(o.status, eOk) << to;
        EXPECT_FALSE(o.message.isEmpty()) << to;
    }
}

// What the tree parser finds anywhere in the file comes before what the objects say: a
// fault of syntax at the very end wins over an unknown key at the start.
TEST_F(OnePassReader, ASyntaxFaultLaterWinsOverAnEarlierFaultOfContent) {
    QByteArray text = edited(kColor, "\"colour\":1,\"lineWeight\":50");
    const Outcome unknownKey = both(text);
    EXPECT_TRUE(unknownKey.message.contains("colour")) << unknownKey.message.toStdString();

    text.chop(4);
    const Outcome cut = both(text);
    EXPECT_EQ(cut.status, eDrawingTruncated) << cut.message.toStdString();

    const Outcome trailing = both(example + "x");
    EXPECT_EQ(trailing.status, eNotADrawingFile) << trailing.message.toStdString();
}

// Handles far apart, which fold onto the same places of the handle map, are all found.
TEST_F(OnePassReader, HandlesFarApartAreAllFound) {
    OvDbDatabase source;
    const OvDbObjectId layer = ovdbtest::addLayer(source, QStringLiteral("SPREAD"));
    std::vector<OvDbObjectId> lines;
    for (int i = 0; i < 3000; ++i)
        lines.push_back(addLine(source, i, layer));
    const QString file = dir.filePath(QStringLiteral("spread.dwg"));
    ASSERT_EQ(source.saveAs(w(file).c_str()), eOk);

    // Each line's handle moved to the top bits: slots hashed from the low bits alone
    // would all meet in one place.
    QFile in(file);
    ASSERT_TRUE(in.open(QIODevice::ReadOnly));
    QByteArray text = in.readAll();
    in.close();
    std::vector<std::uint64_t> spread;
    for (const OvDbObjectId& id : lines) {
        const std::uint64_t moved = id.handle().value() << 44 | 0x5;
        spread.push_back(moved);
        const QByteArray from = "{\"handle\":\"" + id.handle().toString().toLatin1() + "\"";
        const QByteArray to = "{\"handle\":\"" + OvDbHandle(moved).toString().toLatin1() + "\"";
        ASSERT_TRUE(text.contains(from));
        text.replace(from, to);
    }
    const Outcome o = read(text, QStringLiteral("spread.dwg"));
    ASSERT_EQ(o.status, eOk) << o.message.toStdString();

    OvDbDatabase side(false, true);
    ASSERT_EQ(side.readDwgFile(w(file).c_str()), eOk);
    for (std::uint64_t handle : spread) {
        OvDbObjectId id;
        ASSERT_EQ(side.getOvDbObjectId(id, false, OvDbHandle(handle)), eOk);
        OvDbLine* line = nullptr;
        ASSERT_EQ(ovdbOpenObject(line, id, OvDb::kForRead), eOk);
        EXPECT_EQ(line->layer(), QStringLiteral("SPREAD"));
        line->close();
    }
    OvDbObjectId none;
    EXPECT_EQ(side.getOvDbObjectId(none, false, OvDbHandle(spread.back() + 1)), eKeyNotFound);
}

} // namespace
