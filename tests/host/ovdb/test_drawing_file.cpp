// Drawing files: a whole drawing through a save and a read, and every kind of bad file.

#include "ovdb/ovdb.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

namespace {

using namespace Orvex;

std::wstring w(const QString& text) {
    return text.toStdWString();
}

QString chainText(const resbuf* chain) {
    QStringList parts;
    for (const resbuf* rb = chain; rb; rb = rb->rbnext) {
        switch (ovutValueKind(rb->restype)) {
        case OvRbValueKind::String:
            parts << QStringLiteral("%1:%2")
                         .arg(rb->restype)
                         .arg(QString::fromWCharArray(rb->resval.rstring));
            break;
        case OvRbValueKind::Int32:
            parts << QStringLiteral("%1:%2").arg(rb->restype).arg(rb->resval.rlong);
            break;
        case OvRbValueKind::Real:
            parts << QStringLiteral("%1:%2").arg(rb->restype).arg(rb->resval.rreal, 0, 'g', 17);
            break;
        default:
            parts << QStringLiteral("%1:%2").arg(rb->restype).arg(rb->resval.rint);
        }
    }
    return parts.join(' ');
}

QString point(const OvGePoint3d& p) {
    return QStringLiteral("(%1,%2,%3)")
        .arg(p.x, 0, 'g', 17)
        .arg(p.y, 0, 'g', 17)
        .arg(p.z, 0, 'g', 17);
}

// Every live object of a drawing with its handle, owner, class and values, reached through
// the public interface alone.
QStringList dump(OvDbDatabase& db) {
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
            line += QStringLiteral(" color=%1 ltype=%2 lw=%3 off=%4 frozen=%5 locked=%6")
                        .arg(l->color().colorIndex())
                        .arg(h(l->linetypeObjectId()))
                        .arg(l->lineWeight())
                        .arg(l->isOff())
                        .arg(l->isFrozen())
                        .arg(l->isLocked());
        if (auto* lt = OvDbLinetypeTableRecord::cast(o)) {
            QStringList dashes;
            for (double d : lt->dashes())
                dashes << QString::number(d, 'g', 17);
            line += QStringLiteral(" comments=%1 dashes=%2").arg(lt->comments(), dashes.join(','));
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
            line += QStringLiteral(" %1-%2").arg(point(ln->startPoint()), point(ln->endPoint()));
        if (auto* br = OvDbBlockReference::cast(o)) {
            line += QStringLiteral(" block=%1 at=%2")
                        .arg(h(br->blockTableRecord()), point(br->position()));
            OvDbObjectIterator* it = br->attributeIterator();
            for (; !it->done(); it->step())
                children.push_back(it->objectId());
            delete it;
        }
        if (auto* a = OvDbAttribute::cast(o))
            line +=
                QStringLiteral(" %1=%2 at=%3").arg(a->tag(), a->textString(), point(a->position()));
        o->close();
        out << line;
        for (OvDbObjectId child : children)
            visit(child);
    };
    out << QStringLiteral("clayer=%1").arg(h(db.clayer()));
    for (OvDbObjectId root : {db.linetypeTableId(), db.layerTableId(), db.blockTableId(),
                              db.namedObjectsDictionaryId()})
        visit(root);
    return out;
}

class DrawingFiles : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(dir.isValid()); }
    void TearDown() override {
        EXPECT_EQ(ovdbOpenObjectCount(), 0u)
            << ovdbOpenObjectDescriptions().join('\n').toStdString();
        EXPECT_EQ(ovdbTakeProtocolViolations(), QStringList());
    }

    QString path(const QString& name) const { return dir.filePath(name); }

    OvDbObjectId addLayer(OvDbDatabase& db, const wchar_t* name, int color, OvDbObjectId linetype,
                          OvDb::LineWeight weight) {
        OvDbLayerTable* table = nullptr;
        EXPECT_EQ(db.getSymbolTable(table, OvDb::kForWrite), eOk);
        auto* layer = new OvDbLayerTableRecord();
        layer->setName(name);
        OvCmColor c;
        c.setColorIndex(color);
        layer->setColor(c);
        if (!linetype.isNull())
            layer->setLinetypeObjectId(linetype);
        layer->setLineWeight(weight);
        OvDbObjectId id;
        EXPECT_EQ(table->add(id, layer), eOk);
        layer->close();
        table->close();
        return id;
    }

    void putXrecord(OvDbObjectId dictId, const wchar_t* key, resbuf* chain) {
        OvDbDictionary* dict = nullptr;
        ASSERT_EQ(ovdbOpenObject(dict, dictId, OvDb::kForWrite), eOk);
        auto* xrec = new OvDbXrecord();
        OvDbObjectId id;
        ASSERT_EQ(dict->setAt(key, xrec, id), eOk);
        ASSERT_EQ(xrec->setFromRbChain(chain), eOk);
        xrec->close();
        dict->close();
        ovutRelRb(chain);
    }

    // A wire type record as the store writes it: 1, 2, 3, twenty 4s, 90, 290.
    void giveWireType(OvDbObjectId layerId, const wchar_t* color, const wchar_t* size, int row) {
        OvDbObject* layer = nullptr;
        ASSERT_EQ(ovdbOpenObject(layer, layerId, OvDb::kForWrite), eOk);
        layer->createExtensionDictionary();
        const OvDbObjectId dict = layer->extensionDictionary();
        layer->close();
        resbuf* chain = ovutBuildList(1, color, 2, size, 3, L"WIRE", 0);
        resbuf* tail = chain->rbnext->rbnext;
        for (int i = 0; i < 20; ++i) {
            const std::wstring value = i % 3 ? L"" : L"value " + std::to_wstring(i);
            tail->rbnext = ovutBuildList(4, value.c_str(), 0);
            tail = tail->rbnext;
        }
        tail->rbnext = ovutBuildList(90, row, 290, 1, 0);
        putXrecord(dict, L"ZEL_WIRETYPE", chain);
    }

    // Layers, a dashed linetype of its own, wire type records, the current wire layer record,
    // a WD_M block reference with attributes, lines, and an erased layer.
    void buildDrawing(OvDbDatabase& db) {
        OvDbLinetypeTable* linetypes = nullptr;
        ASSERT_EQ(db.getSymbolTable(linetypes, OvDb::kForWrite), eOk);
        auto* linetype = new OvDbLinetypeTableRecord();
        linetype->setName(L"WIRE_DASH");
        linetype->setComments(QStringLiteral("Wire dash — ∙ —"));
        linetype->setDashes({0.1, -0.05, 0.0, -0.05});
        OvDbObjectId dash;
        ASSERT_EQ(linetypes->add(dash, linetype), eOk);
        linetype->close();
        linetypes->close();

        const OvDbObjectId red = addLayer(db, L"WIRE_RED_1.5", 1, dash, OvDb::kLnWt050);
        const OvDbObjectId blue =
            addLayer(db, L"WIRE_BLUE", 5, OvDbObjectId(), OvDb::kLnWtByLwDefault);
        const OvDbObjectId plain = addLayer(db, L"Notes", 256, OvDbObjectId(), OvDb::kLnWt000);
        const OvDbObjectId gone = addLayer(db, L"GONE", 3, OvDbObjectId(), OvDb::kLnWt000);
        giveWireType(red, L"RED", L"1.5", 70000);
        giveWireType(blue, L"BLUE", L"", 2);
        OvDbLayerTableRecord* layer = nullptr;
        ASSERT_EQ(ovdbOpenObject(layer, plain, OvDb::kForWrite), eOk);
        layer->setIsOff(true);
        layer->setIsLocked(true);
        layer->close();
        ASSERT_EQ(ovdbOpenObject(layer, gone, OvDb::kForWrite), eOk);
        layer->erase();
        layer->close();
        ASSERT_EQ(db.setClayer(red), eOk);

        OvDbDictionary* nod = nullptr;
        ASSERT_EQ(db.getNamedObjectsDictionary(nod, OvDb::kForWrite), eOk);
        auto* zel = new OvDbDictionary();
        OvDbObjectId zelId;
        ASSERT_EQ(nod->setAt(L"ZEL_WIRETYPE", zel, zelId), eOk);
        zel->close();
        nod->close();
        putXrecord(zelId, L"CURRENT_WIRELAY",
                   ovutBuildList(1, L"WIRE_BLUE", 1, L"WIRE_RED_1.5", 1, L"", 290, 0, 0));

        OvDbBlockTable* blocks = nullptr;
        ASSERT_EQ(db.getSymbolTable(blocks, OvDb::kForWrite), eOk);
        auto* wdm = new OvDbBlockTableRecord();
        wdm->setName(L"WD_M");
        OvDbObjectId wdmId;
        ASSERT_EQ(blocks->add(wdmId, wdm), eOk);
        blocks->close();
        auto* frame = new OvDbLine(OvGePoint3d(0, 0, 0), OvGePoint3d(1, 0, 0));
        wdm->appendOvDbEntity(frame);
        frame->close();
        wdm->close();

        OvDbBlockTableRecord* model = nullptr;
        ASSERT_EQ(ovdbOpenObject(model, db.modelSpaceId(), OvDb::kForWrite), eOk);
        auto* reference = new OvDbBlockReference(OvGePoint3d(0.5, 0.25, 0), wdmId);
        model->appendOvDbEntity(reference);
        reference->setLayer(L"0");
        for (auto [tag, text] : {std::pair{L"WIRELAYS", L"WIR*,NOT*"},
                                 {L"SHEET", L"01"},
                                 {L"IEC_PROJ", L"=P1 \"quoted\""}}) {
            auto* attribute = new OvDbAttribute(OvGePoint3d(1, 1, 0), QString::fromWCharArray(text),
                                                QString::fromWCharArray(tag));
            reference->appendAttribute(attribute);
            attribute->close();
        }
        reference->close();
        for (int i = 0; i < 5; ++i) {
            auto* line =
                new OvDbLine(OvGePoint3d(i, 0.1 * i, 0), OvGePoint3d(i + 1e-9, 1.0 / 3, -2));
            line->setLayer(i % 2 ? blue : red);
            if (i == 4) {
                OvCmColor c;
                c.setColorIndex(0);
                line->setColor(c);
            }
            model->appendOvDbEntity(line);
            line->close();
        }
        model->close();
    }

    QJsonObject readJson(const QString& file) {
        QFile f(file);
        EXPECT_TRUE(f.open(QIODevice::ReadOnly));
        return QJsonDocument::fromJson(f.readAll()).object();
    }

    void writeBytes(const QString& file, const QByteArray& bytes) {
        QFile f(file);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(bytes);
    }

    void writeJson(const QString& file, const QJsonObject& root) {
        writeBytes(file, QJsonDocument(root).toJson());
    }

    // A saved drawing with one object changed by `edit` (the first for which it returns true).
    QString editedCopy(const QString& name, const std::function<bool(QJsonObject&)>& edit) {
        OvDbDatabase db;
        buildDrawing(db);
        const QString file = path(name);
        EXPECT_EQ(db.saveAs(w(file).c_str()), eOk);
        QJsonObject root = readJson(file);
        QJsonArray objects = root.value("objects").toArray();
        bool edited = false;
        for (qsizetype i = 0; i < objects.size() && !edited; ++i) {
            QJsonObject object = objects[i].toObject();
            if (edit(object)) {
                objects[i] = object;
                edited = true;
            }
        }
        EXPECT_TRUE(edited) << name.toStdString();
        root.insert("objects", objects);
        writeJson(file, root);
        return file;
    }

    QTemporaryDir dir;
};

TEST_F(DrawingFiles, DrawingComesBackAsItWasSaved) {
    OvDbDatabase original;
    buildDrawing(original);
    const QString file = path("wires.dwg");
    EXPECT_TRUE(original.fileName().isEmpty());
    ASSERT_EQ(original.saveAs(w(file).c_str()), eOk) << original.lastErrorMessage().toStdString();
    EXPECT_FALSE(original.isModified()) << "a save leaves the drawing unchanged";
    EXPECT_EQ(original.fileName(), file);

    OvDbDatabase side(false, true);
    ASSERT_EQ(side.readDwgFile(w(file).c_str(), 3, false, nullptr), eOk)
        << side.lastErrorMessage().toStdString();
    const wchar_t* name = nullptr;
    ASSERT_EQ(side.getFilename(name), eOk);
    EXPECT_EQ(QString::fromWCharArray(name), file);
    EXPECT_FALSE(side.isModified());

    const QStringList before = dump(original);
    const QStringList after = dump(side);
    EXPECT_EQ(before.join('\n').toStdString(), after.join('\n').toStdString());
    EXPECT_TRUE(before.join('\n').contains("data=[1:RED 2:1.5 3:WIRE 4:value 0"));
    EXPECT_FALSE(after.join('\n').contains("GONE")) << "an erased layer is not saved";

    // Saved again, the drawing read gives the very same text; a template is the same format.
    const QString again = path("wires.dwt");
    ASSERT_EQ(side.saveAs(w(again).c_str()), eOk);
    QFile a(file), b(again);
    ASSERT_TRUE(a.open(QIODevice::ReadOnly) && b.open(QIODevice::ReadOnly));
    EXPECT_EQ(a.readAll(), b.readAll());

    // The well-known objects are found again, and new handles never collide.
    EXPECT_EQ(side.continuousLinetype().handle(), original.continuousLinetype().handle());
    EXPECT_EQ(side.modelSpaceId().handle(), original.modelSpaceId().handle());
    EXPECT_GE(side.handseed().value(), original.handseed().value());
    const OvDbObjectId fresh = addLayer(side, L"NEW", 2, OvDbObjectId(), OvDb::kLnWt000);
    OvDbObjectId clash;
    EXPECT_NE(original.getOvDbObjectId(clash, false, fresh.handle()), eOk);
}

TEST_F(DrawingFiles, DocumentedExampleReads) {
    OvDbDatabase side(false, true);
    const QString file = QStringLiteral(ZEL_TEST_DATA_DIR "/example.dwg");
    ASSERT_EQ(side.readDwgFile(w(file).c_str()), eOk) << side.lastErrorMessage().toStdString();
    OvDbLayerTable* table = nullptr;
    ASSERT_EQ(side.getSymbolTable(table, OvDb::kForRead), eOk);
    OvDbLayerTableRecord* layer = nullptr;
    ASSERT_EQ(table->getAt(L"WIRE_RED", layer, OvDb::kForRead), eOk);
    table->close();
    EXPECT_EQ(layer->color().colorIndex(), 1);
    OvDbDictionary* dict = nullptr;
    ASSERT_EQ(ovdbOpenObject(dict, layer->extensionDictionary(), OvDb::kForRead), eOk);
    layer->close();
    OvDbObject* object = nullptr;
    ASSERT_EQ(dict->getAt(L"ZEL_WIRETYPE", object, OvDb::kForRead), eOk);
    dict->close();
    resbuf* chain = nullptr;
    ASSERT_EQ(OvDbXrecord::cast(object)->rbChain(chain), eOk);
    object->close();
    EXPECT_TRUE(chainText(chain).startsWith("1:RED 2:1.5 3:WIRE"));
    ovutRelRb(chain);
}

TEST_F(DrawingFiles, BadFilesLeaveTheDatabaseUntouched) {
    struct Case {
        const char* what;
        QString file;
        ErrorStatus status;
        QString mentions;
    };
    std::vector<Case> cases;
    cases.push_back({"missing", path("nowhere.dwg"), eFileNotFound, "no such file"});

    writeBytes(path("text.dwg"), "This is not a drawing.\n");
    cases.push_back({"not JSON", path("text.dwg"), eNotADrawingFile, "not valid JSON"});
    writeBytes(path("array.dwg"), "[1, 2, 3]");
    cases.push_back(
        {"JSON of another shape", path("array.dwg"), eNotADrawingFile, "not an object"});
    writeBytes(path("empty.dwg"), "");
    cases.push_back({"empty", path("empty.dwg"), eDrawingTruncated, "empty"});

    OvDbDatabase source;
    buildDrawing(source);
    const QString good = path("good.dwg");
    ASSERT_EQ(source.saveAs(w(good).c_str()), eOk);
    QFile goodFile(good);
    ASSERT_TRUE(goodFile.open(QIODevice::ReadOnly));
    const QByteArray bytes = goodFile.readAll();
    for (qsizetype cut : {bytes.size() / 2, bytes.size() - 4, qsizetype(30)}) {
        const QString name = path(QStringLiteral("cut%1.dwg").arg(cut));
        writeBytes(name, bytes.left(cut));
        cases.push_back({"cut short", name, eDrawingTruncated, "cut short"});
    }

    QJsonObject root = readJson(good);
    root.insert("format", "someone-elses-drawing");
    writeJson(path("tag.dwg"), root);
    cases.push_back(
        {"another format tag", path("tag.dwg"), eNotADrawingFile, "someone-elses-drawing"});
    root = readJson(good);
    root.insert("version", 2);
    writeJson(path("newer.dwg"), root);
    cases.push_back({"newer version", path("newer.dwg"), eDrawingVersionTooNew, "version 2"});
    root = readJson(good);
    root.remove("objects");
    writeJson(path("noobjects.dwg"), root);
    cases.push_back({"no objects", path("noobjects.dwg"), eBadDrawingFormat, "objects"});

    QString lineHandle;
    const QString dup = editedCopy("dup.dwg", [&](QJsonObject& o) {
        if (o.value("type") != "Line")
            return false;
        lineHandle = o.value("handle").toString();
        o.insert("handle", "1");
        return true;
    });
    cases.push_back({"duplicate handle", dup, eDuplicateHandle, "handle 1 "});
    cases.push_back({"dangling linetype",
                     editedCopy("dangling.dwg",
                                [](QJsonObject& o) {
                                    if (o.value("name") != "WIRE_BLUE")
                                        return false;
                                    o.insert("linetype", "FFFFF");
                                    return true;
                                }),
                     eDanglingHandle, "FFFFF"});
    cases.push_back({"dangling owner",
                     editedCopy("owner.dwg",
                                [](QJsonObject& o) {
                                    if (o.value("type") != "Attribute")
                                        return false;
                                    o.insert("owner", "ABCDE");
                                    return true;
                                }),
                     eDanglingHandle, "ABCDE"});
    cases.push_back({"layer that is a linetype",
                     editedCopy("wrongtype.dwg",
                                [&](QJsonObject& o) {
                                    if (o.value("type") != "Line")
                                        return false;
                                    o.insert("layer",
                                             source.continuousLinetype().handle().toString());
                                    return true;
                                }),
                     eBadDrawingFormat, "LinetypeTableRecord"});
    QString redHandle;
    cases.push_back({"colour out of range",
                     editedCopy("color.dwg",
                                [&](QJsonObject& o) {
                                    if (o.value("name") != "WIRE_RED_1.5")
                                        return false;
                                    redHandle = o.value("handle").toString();
                                    o.insert("color", 300);
                                    return true;
                                }),
                     eBadDrawingFormat, "color"});
    cases.push_back({"LISP code in an xrecord",
                     editedCopy("lisp.dwg",
                                [](QJsonObject& o) {
                                    if (o.value("type") != "Xrecord")
                                        return false;
                                    o.insert("data", QJsonArray{QJsonArray{5005, "x"}});
                                    return true;
                                }),
                     eBadDrawingFormat, "5005"});
    cases.push_back({"two layers of one name",
                     editedCopy("twin.dwg",
                                [](QJsonObject& o) {
                                    if (o.value("name") != "WIRE_BLUE")
                                        return false;
                                    o.insert("name", "wire_red_1.5");
                                    return true;
                                }),
                     eBadDrawingFormat, "wire_red_1.5"});
    cases.push_back({"unknown type",
                     editedCopy("unknown.dwg",
                                [](QJsonObject& o) {
                                    if (o.value("type") != "Line")
                                        return false;
                                    o.insert("type", "Spline");
                                    return true;
                                }),
                     eBadDrawingFormat, "Spline"});

    // The victim: a drawing of its own, which no failed read may change.
    OvDbDatabase db;
    addLayer(db, L"KEEP", 4, OvDbObjectId(), OvDb::kLnWt000);
    const QString kept = path("kept.dwg");
    ASSERT_EQ(db.saveAs(w(kept).c_str()), eOk);
    const QStringList before = dump(db);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(db.readDwgFile(w(c.file).c_str()), c.status);
        const QString message = db.lastErrorMessage();
        EXPECT_TRUE(message.contains(c.file)) << message.toStdString();
        EXPECT_TRUE(message.contains(c.mentions)) << message.toStdString();
        EXPECT_EQ(dump(db), before);
        EXPECT_EQ(db.fileName(), kept);
        EXPECT_FALSE(db.isModified());
    }
    // Where it can, the message names the object.
    EXPECT_EQ(db.readDwgFile(w(path("color.dwg")).c_str()), eBadDrawingFormat);
    EXPECT_TRUE(db.lastErrorMessage().contains("object " + redHandle))
        << db.lastErrorMessage().toStdString();
    EXPECT_EQ(db.readDwgFile(w(dup).c_str()), eDuplicateHandle);
    EXPECT_FALSE(lineHandle.isEmpty());
}

TEST_F(DrawingFiles, FailedSaveKeepsTheOldFile) {
    OvDbDatabase db;
    const QString file = path("keep.dwg");
    writeBytes(file, "old contents");
    ASSERT_TRUE(QDir(dir.path()).mkdir("folder"));
    EXPECT_EQ(db.saveAs(w(path("folder")).c_str()), eFileWriteFailed);
    EXPECT_TRUE(db.lastErrorMessage().contains("folder"));
    EXPECT_EQ(db.saveAs(w(path("no/such/dir/x.dwg")).c_str()), eFileWriteFailed);
    EXPECT_TRUE(db.fileName().isEmpty());

    OvDbDatabase empty(false, true);
    EXPECT_EQ(empty.saveAs(w(file).c_str()), eNotApplicable);
    QFile f(file);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    EXPECT_EQ(f.readAll(), QByteArray("old contents"));
}

TEST_F(DrawingFiles, ReadIsRefusedWhileObjectsAreOpen) {
    OvDbDatabase db;
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
