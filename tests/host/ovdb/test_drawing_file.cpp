// Drawing files: a whole drawing through a save and a read, and every kind of bad file.

#include "OvdbTest.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <functional>

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

namespace {

using namespace Orvex;

std::wstring w(const QString& text) {
    return text.toStdWString();
}

QString point(const OvGePoint3d& p) {
    return QStringLiteral("(%1,%2,%3)")
        .arg(p.x, 0, 'g', 17)
        .arg(p.y, 0, 'g', 17)
        .arg(p.z, 0, 'g', 17);
}

class DrawingFiles : public OvdbTest {
protected:
    void SetUp() override {
        OvdbTest::SetUp();
        ASSERT_TRUE(dir.isValid());
    }

    QString path(const QString& name) const { return dir.filePath(name); }

    QString fifo(const QString& name) const {
        const QString file = path(name);
        EXPECT_EQ(::mkfifo(QFile::encodeName(file).constData(), 0600), 0);
        return file;
    }

    // Every live object of a drawing with its handle, owner, class and values, reached
    // through the public interface alone.
    static QStringList dump(OvDbDatabase& database) {
        QStringList out;
        auto h = [](OvDbObjectId id) {
            return id.isNull() ? QStringLiteral("-") : id.handle().toString();
        };
        std::function<void(OvDbObjectId)> visit = [&](OvDbObjectId id) {
            OvDbObject* o = nullptr;
            if (ovdbOpenObject(o, id, OvDb::kForRead) != eOk) {
                out << QStringLiteral("cannot open %1").arg(h(id));
                return;
            }
            QString line =
                QStringLiteral("%1 owner=%2 %3 xdict=%4")
                    .arg(h(id), h(o->ownerId()), o->isA()->name(), h(o->extensionDictionary()));
            std::vector<OvDbObjectId> children;
            if (!o->extensionDictionary().isNull())
                children.push_back(o->extensionDictionary());
            if (auto* r = OvDbSymbolTableRecord::cast(o))
                line += QStringLiteral(" name=%1").arg(r->name());
            if (auto* l = OvDbLayerTableRecord::cast(o))
                line += QString::asprintf(
                    " color=%d ltype=%s lw=%d off=%d frozen=%d locked=%d", l->color().colorIndex(),
                    qPrintable(h(l->linetypeObjectId())), int(l->lineWeight()), l->isOff(),
                    l->isFrozen(), l->isLocked());
            if (auto* lt = OvDbLinetypeTableRecord::cast(o)) {
                QStringList dashes;
                for (double d : lt->dashes())
                    dashes << QString::number(d, 'g', 17);
                line +=
                    QStringLiteral(" comments=%1 dashes=%2").arg(lt->comments(), dashes.join(','));
            }
            if (auto* x = OvDbXrecord::cast(o)) {
                resbuf* chain = nullptr;
                x->rbChain(chain);
                line += QStringLiteral(" data=[%1]").arg(chainText(chain));
                ovutRelRb(chain);
            }
            if (auto* d = OvDbDictionary::cast(o)) {
                OvDbDictionaryIterator* it = d->newIterator();
                for (; !it->done(); it->next()) {
                    line += QStringLiteral(" %1->%2").arg(it->name(), h(it->objectId()));
                    children.push_back(it->objectId());
                }
                delete it;
            }
            if (auto* t = OvDbSymbolTable::cast(o)) {
                OvDbSymbolTableIterator* it = nullptr;
                t->newIterator(it);
                for (; !it->done(); it->step())
                    children.push_back(it->recordId());
                delete it;
            }
            if (auto* b = OvDbBlockTableRecord::cast(o)) {
                OvDbBlockTableRecordIterator* it = nullptr;
                b->newIterator(it);
                for (; !it->done(); it->step())
                    children.push_back(it->entityId());
                delete it;
            }
            if (auto* e = OvDbEntity::cast(o))
                line += QStringLiteral(" layer=%1(%2) color=%3")
                            .arg(h(e->layerId()), e->layer())
                            .arg(e->color().colorIndex());
            if (auto* ln = OvDbLine::cast(o))
                line +=
                    QStringLiteral(" %1-%2").arg(point(ln->startPoint()), point(ln->endPoint()));
            if (auto* br = OvDbBlockReference::cast(o)) {
                line += QStringLiteral(" block=%1 at=%2")
                            .arg(h(br->blockTableRecord()), point(br->position()));
                OvDbObjectIterator* it = br->attributeIterator();
                for (; !it->done(); it->step())
                    children.push_back(it->objectId());
                delete it;
            }
            if (auto* a = OvDbAttribute::cast(o))
                line += QStringLiteral(" %1=%2 at=%3")
                            .arg(a->tag(), a->textString(), point(a->position()));
            o->close();
            out << line;
            for (OvDbObjectId child : children)
                visit(child);
        };
        out << QStringLiteral("clayer=%1").arg(h(database.clayer()));
        for (OvDbObjectId root : {database.linetypeTableId(), database.layerTableId(),
                                  database.blockTableId(), database.namedObjectsDictionaryId()})
            visit(root);
        return out;
    }

    static OvDbObjectId addStyledLayer(OvDbDatabase& database, const QString& name, int color,
                                       OvDbObjectId linetype, OvDb::LineWeight weight) {
        const OvDbObjectId id = ovdbtest::addLayer(database, name, color);
        OvDbLayerTableRecord* layer = nullptr;
        EXPECT_EQ(ovdbOpenObject(layer, id, OvDb::kForWrite), eOk);
        if (!linetype.isNull())
            layer->setLinetypeObjectId(linetype);
        layer->setLineWeight(weight);
        layer->close();
        return id;
    }

    // A wire type record as the store writes it: 1, 2, 3, twenty 4s, 90, 290.
    static void giveWireType(OvDbObjectId layerId, const wchar_t* color, const wchar_t* size,
                             int row) {
        OvDbObject* layer = nullptr;
        ASSERT_EQ(ovdbOpenObject(layer, layerId, OvDb::kForWrite), eOk);
        layer->createExtensionDictionary();
        const OvDbObjectId dict = layer->extensionDictionary();
        layer->close();
        resbuf* chain = ovutBuildList(1, color, 2, size, 3, L"WIRE", 0);
        resbuf* tail = chain->rbnext->rbnext;
        for (int i = 0; i < 20; ++i) {
            const std::wstring value = i % 3 ? L"" : L"value " + std::to_wstring(i);
            tail = tail->rbnext = ovutBuildList(4, value.c_str(), 0);
        }
        tail->rbnext = ovutBuildList(90, row, 290, 1, 0);
        putXrecord(dict, L"ZEL_WIRETYPE", chain);
        ovutRelRb(chain);
    }

    // Layers, a dashed linetype of its own, wire type records, a WD_M block reference with
    // attributes, lines, and an erased layer.
    static void buildDrawing(OvDbDatabase& database) {
        const OvDbObjectId dash = ovdbtest::addLinetype(
            database, "WIRE_DASH", {0.1, -0.05, 0.0, -0.05}, "Wire dash — ∙ —");

        const OvDbObjectId red = addStyledLayer(database, "WIRE_RED_1.5", 1, dash, OvDb::kLnWt050);
        const OvDbObjectId blue =
            addStyledLayer(database, "WIRE_BLUE", 5, OvDbObjectId(), OvDb::kLnWtByLwDefault);
        const OvDbObjectId plain =
            addStyledLayer(database, "Notes", 256, OvDbObjectId(), OvDb::kLnWt000);
        giveWireType(red, L"RED", L"1.5", 70000);
        giveWireType(blue, L"BLUE", L"", 2);
        OvDbLayerTableRecord* layer = nullptr;
        ASSERT_EQ(ovdbOpenObject(layer, plain, OvDb::kForWrite), eOk);
        layer->setIsOff(true);
        layer->setIsLocked(true);
        layer->close();
        setErased(ovdbtest::addLayer(database, QStringLiteral("GONE")));
        const OvDbObjectId zero = database.clayer();
        ASSERT_EQ(database.setClayer(red), eOk);

        const OvDbObjectId wdm = ovdbtest::addBlock(database, "WD_M");
        ovdbtest::addLine(database, OvGePoint3d(0, 0, 0), OvGePoint3d(1, 0, 0), {}, wdm);
        ovdbtest::addReference(
            database, wdm, OvGePoint3d(0.5, 0.25, 0),
            {{"WIRELAYS", "WIR*,NOT*"}, {"SHEET", "01"}, {"IEC_PROJ", "=P1 \"quoted\""}}, zero, {},
            OvGePoint3d(1, 1, 0));
        for (int i = 0; i < 5; ++i) {
            auto* line =
                new OvDbLine(OvGePoint3d(i, 0.1 * i, 0), OvGePoint3d(i + 1e-9, 1.0 / 3, -2));
            if (i == 4) {
                OvCmColor c;
                c.setColorIndex(0);
                line->setColor(c);
            }
            ovdbtest::append(database, line, i % 2 ? blue : red);
        }
    }

    QString writeBytes(const QString& name, const QByteArray& bytes) {
        QFile f(path(name));
        EXPECT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(bytes);
        return f.fileName();
    }

    QTemporaryDir dir;
};

TEST_F(DrawingFiles, DrawingComesBackAsItWasSaved) {
    buildDrawing(db);
    const QString file = path("wires.dwg");
    ASSERT_EQ(db.saveAs(w(file).c_str()), eOk) << db.lastErrorMessage().toStdString();
    EXPECT_FALSE(db.isModified()) << "a save leaves the drawing unchanged";

    OvDbDatabase side(false, true);
    ASSERT_EQ(side.readDwgFile(w(file).c_str(), 3, false, nullptr), eOk)
        << side.lastErrorMessage().toStdString();
    const wchar_t* name = nullptr;
    ASSERT_EQ(side.getFilename(name), eOk);
    EXPECT_EQ(QString::fromWCharArray(name), file);
    EXPECT_FALSE(side.isModified());

    const QString before = dump(db).join('\n');
    const QString after = dump(side).join('\n');
    EXPECT_EQ(before.toStdString(), after.toStdString());
    EXPECT_TRUE(after.contains("data=[1:RED 2:1.5 3:WIRE 4:value 0"));
    EXPECT_TRUE(after.contains("WIRELAYS=WIR*,NOT*"));
    EXPECT_FALSE(after.contains("GONE")) << "an erased layer is not saved";

    // Saved again, the drawing read gives the very same text; a template is the same format.
    const QString again = path("wires.dwt");
    ASSERT_EQ(side.saveAs(w(again).c_str()), eOk);
    QFile a(file), b(again);
    ASSERT_TRUE(a.open(QIODevice::ReadOnly) && b.open(QIODevice::ReadOnly));
    EXPECT_EQ(a.readAll(), b.readAll());

    // The well-known objects are found again, and new handles never collide.
    EXPECT_EQ(side.continuousLinetype().handle(), db.continuousLinetype().handle());
    EXPECT_EQ(side.modelSpaceId().handle(), db.modelSpaceId().handle());
    const OvDbObjectId fresh = ovdbtest::addLayer(side, QStringLiteral("NEW"));
    OvDbObjectId clash;
    EXPECT_NE(db.getOvDbObjectId(clash, false, fresh.handle()), eOk);
}

TEST_F(DrawingFiles, DocumentedExampleReads) {
    OvDbDatabase side(false, true);
    ASSERT_EQ(side.readDwgFile(w(ZEL_TEST_DATA_DIR "/example.dwg").c_str()), eOk)
        << side.lastErrorMessage().toStdString();
    const QString text = dump(side).join('\n');
    EXPECT_TRUE(text.contains("name=WIRE_RED color=1 ltype=8 lw=50")) << text.toStdString();
    EXPECT_TRUE(text.contains("data=[1:RED 2:1.5 3:WIRE 4:Cu 4: 90:1 290:1]"))
        << text.toStdString();
}

TEST_F(DrawingFiles, BadFilesLeaveTheDatabaseUntouched) {
    OvDbDatabase source;
    buildDrawing(source);
    const QString good = path("good.dwg");
    ASSERT_EQ(source.saveAs(w(good).c_str()), eOk);
    QFile goodFile(good);
    ASSERT_TRUE(goodFile.open(QIODevice::ReadOnly));
    const QByteArray bytes = goodFile.readAll();
    const QJsonObject goodRoot = QJsonDocument::fromJson(bytes).object();

    // The good file with one header value changed (removed for Undefined).
    auto header = [&](const QString& name, const char* key, const QJsonValue& value) {
        QJsonObject root = goodRoot;
        root.insert(key, value);
        return writeBytes(name, QJsonDocument(root).toJson());
    };
    // The good file with a field of the first object whose `key` is `match` changed.
    QString edited;
    auto object = [&](const QString& name, const char* key, const char* match, const char* field,
                      const QJsonValue& value) {
        QJsonObject root = goodRoot;
        QJsonArray objects = root.value("objects").toArray();
        for (qsizetype i = 0; i < objects.size(); ++i) {
            QJsonObject o = objects[i].toObject();
            if (o.value(key) == match) {
                edited = o.value("handle").toString();
                o.insert(field, value);
                objects[i] = o;
                break;
            }
        }
        root.insert("objects", objects);
        return writeBytes(name, QJsonDocument(root).toJson());
    };
    const QString continuous = source.continuousLinetype().handle().toString();
    QJsonObject badHeader = goodRoot.value("header").toObject();
    badHeader.insert("clayre", "1");

    struct Case {
        const char* what;
        QString file;
        ErrorStatus status;
        QString mentions; // a pattern
    };
    const std::vector<Case> cases = {
        {"missing", path("nowhere.dwg"), eFileNotFound, "no such file"},
        {"not JSON", writeBytes("text.dwg", "Not a drawing.\n"), eNotADrawingFile,
         "not valid JSON"},
        {"empty", writeBytes("empty.dwg", ""), eDrawingTruncated, "empty"},
        // Cut inside an object, after the last one, and inside a text: each stops the
        // one-pass reader at a place of its own.
        {"cut short", writeBytes("cut1.dwg", bytes.left(bytes.size() / 2)), eDrawingTruncated,
         "cut short"},
        {"cut short", writeBytes("cut2.dwg", bytes.left(bytes.size() - 4)), eDrawingTruncated,
         "cut short"},
        {"cut short", writeBytes("cut3.dwg", bytes.left(30)), eDrawingTruncated, "cut short"},
        {"another format tag", header("tag.dwg", "format", "someone-elses-drawing"),
         eNotADrawingFile, "someone-elses-drawing"},
        {"newer version", header("newer.dwg", "version", 2), eDrawingVersionTooNew, "version 2"},
        {"no objects", header("noobjects.dwg", "objects", QJsonValue::Undefined), eBadDrawingFormat,
         "objects"},
        {"duplicate handle", object("dup.dwg", "type", "Line", "handle", "1"), eDuplicateHandle,
         "handle 1 "},
        {"dangling linetype", object("dangling.dwg", "name", "WIRE_BLUE", "linetype", "FFFFF"),
         eDanglingHandle, "FFFFF"},
        {"dangling owner", object("owner.dwg", "type", "Attribute", "owner", "ABCDE"),
         eDanglingHandle, "ABCDE"},
        {"layer that is a linetype", object("wrongtype.dwg", "type", "Line", "layer", continuous),
         eBadDrawingFormat, "LinetypeTableRecord"},
        // Where it can, the message names the object.
        {"colour out of range", object("color.dwg", "name", "WIRE_RED_1.5", "color", 300),
         eBadDrawingFormat, "object " + edited + ".*color"},
        {"LISP code in an xrecord",
         object("lisp.dwg", "type", "Xrecord", "data", QJsonArray{QJsonArray{5005, "x"}}),
         eBadDrawingFormat, "5005"},
        {"two layers of one name", object("twin.dwg", "name", "WIRE_BLUE", "name", "wire_red_1.5"),
         eBadDrawingFormat, "wire_red_1.5"},
        {"unknown type", object("unknown.dwg", "type", "Line", "type", "Spline"), eBadDrawingFormat,
         "Spline"},
        // A key no object of its class has (here a flipped byte) is named, not passed over;
        // so is a key given twice, and a key the document or its header does not have.
        {"unknown key", object("key.dwg", "name", "WIRE_BLUE", "lineWeighu", 50), eBadDrawingFormat,
         "object " + edited + " .*unknown key \"lineWeighu\""},
        {"key twice",
         writeBytes("twice.dwg", QByteArray(bytes).replace("\"type\":\"Line\"",
                                                           "\"type\":\"Line\",\"type\":\"Line\"")),
         eBadDrawingFormat, "Line.*\"type\" twice"},
        {"unknown key of the document", header("rootkey.dwg", "extra", 1), eBadDrawingFormat,
         "drawing has an unknown key \"extra\""},
        {"unknown key of the header", header("headerkey.dwg", "header", badHeader),
         eBadDrawingFormat, "header has an unknown key \"clayre\""},
        // A text that is not Unicode: a lone surrogate by escape.
        {"lone surrogate",
         writeBytes("high.dwg", QByteArray(bytes).replace("\"WIRE_BLUE\"", "\"WIRE_\\ud800BLUE\"")),
         eBadDrawingFormat, "not valid Unicode"},
        {"JSON that is no object", writeBytes("number.dwg", "42\n"), eNotADrawingFile,
         "a number, not an object"},
        // Only a regular file is read: a pipe would block and a device never end.
        {"a folder", dir.path(), eFileAccessErr, "folder"},
        {"a pipe", fifo("pipe.dwg"), eFileAccessErr, "pipe"},
        {"a device", QStringLiteral("/dev/zero"), eFileAccessErr, "device"},
    };

    // The victim: a drawing of its own, which no failed read may change.
    addLayer(QStringLiteral("KEEP"));
    const QString kept = path("kept.dwg");
    ASSERT_EQ(db.saveAs(w(kept).c_str()), eOk);
    const QStringList before = dump(db);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(db.readDwgFile(w(c.file).c_str()), c.status);
        const QString message = db.lastErrorMessage();
        EXPECT_TRUE(message.contains(c.file)) << message.toStdString();
        EXPECT_TRUE(message.contains(QRegularExpression(c.mentions)))
            << message.toStdString() << " (expected: " << c.mentions.toStdString() << ")";
        EXPECT_EQ(dump(db), before);
        EXPECT_EQ(db.fileName(), kept);
        EXPECT_FALSE(db.isModified());
    }
}

// A name written by another system in another encoding (here Latin-1) is not UTF-8: the
// file opens and saves under its own name all the same, and no other file appears.
TEST_F(DrawingFiles, AFileWhoseNameIsNotUtf8OpensAndSavesUnderItsName) {
    const QString good = path("good.dwg");
    ASSERT_EQ(db.saveAs(w(good).c_str()), eOk);
    const QByteArray latin1 = QFile::encodeName(dir.path()) + "/caf\xe9.dwg";
    ASSERT_EQ(::rename(QFile::encodeName(good).constData(), latin1.constData()), 0);
    const QString name = QFile::decodeName(latin1);
    ASSERT_TRUE(name.contains(QChar::ReplacementCharacter));

    OvDbDatabase side(false, true);
    ASSERT_EQ(side.readDwgFile(w(name).c_str()), eOk) << side.lastErrorMessage().toStdString();
    ovdbtest::addLayer(side, QStringLiteral("ADDED"));
    ASSERT_EQ(side.saveAs(w(name).c_str()), eOk) << side.lastErrorMessage().toStdString();
    // Counted with readdir: Qt leaves out a name it cannot decode.
    int files = 0;
    if (DIR* folder = ::opendir(QFile::encodeName(dir.path()).constData())) {
        while (const dirent* entry = ::readdir(folder))
            files += entry->d_name[0] != '.';
        ::closedir(folder);
    }
    EXPECT_EQ(files, 1) << "no second file";
    OvDbDatabase again(false, true);
    ASSERT_EQ(again.readDwgFile(w(name).c_str()), eOk);
    EXPECT_TRUE(dump(again).join('\n').contains("name=ADDED"));
    // Qt cannot name it to remove it with its folder.
    ::unlink(latin1.constData());
}

// A save that cannot write names the file and leaves the drawing unnamed; a read that
// would pull objects away from under their open pointers is refused.
TEST_F(DrawingFiles, AFailedSaveNamesTheFileAndAReadWaitsForOpenObjects) {
    ASSERT_TRUE(QDir(dir.path()).mkdir("folder"));
    EXPECT_EQ(db.saveAs(w(path("folder")).c_str()), eFileWriteFailed);
    EXPECT_TRUE(db.lastErrorMessage().contains("folder"));
    EXPECT_TRUE(db.fileName().isEmpty());

    const QString file = path("open.dwg");
    ASSERT_EQ(db.saveAs(w(file).c_str()), eOk);
    OvDbObject* layer = nullptr;
    ASSERT_EQ(ovdbOpenObject(layer, db.clayer(), OvDb::kForRead), eOk);
    EXPECT_NE(db.readDwgFile(w(file).c_str()), eOk);
    EXPECT_TRUE(db.clayer().isValid()) << "the open object was not pulled away";
    layer->close();
    EXPECT_EQ(db.readDwgFile(w(file).c_str()), eOk);
}

} // namespace
