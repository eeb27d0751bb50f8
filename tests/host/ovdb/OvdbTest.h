#pragma once

#include "OvdbBuild.h"

#include "ovdb/ovdb.h"

#include <QStringList>

#include <gtest/gtest.h>

// A drawing for a test, which must end with no object open and no misuse of the open and
// close protocol left unclaimed.
class OvdbTest : public ::testing::Test {
protected:
    void SetUp() override { ovdbTakeProtocolViolations(); }
    void TearDown() override {
        EXPECT_EQ(ovdbOpenObjectCount(), 0u)
            << ovdbOpenObjectDescriptions().join('\n').toStdString();
        EXPECT_EQ(ovdbTakeProtocolViolations(), QStringList());
    }

    // A new layer, added and closed; null when the table refuses it.
    OvDbObjectId addLayer(const QString& name) { return ovdbtest::addLayer(db, name); }

    // A new line in model space, on the current layer unless one is given.
    static OvDbObjectId addLine(OvDbDatabase& database, double x = 0,
                                OvDbObjectId layer = OvDbObjectId()) {
        return ovdbtest::addLine(database, OvGePoint3d(x, 0, 0), OvGePoint3d(x, 1, 0), layer);
    }

    // A new xrecord holding `data` under `key` of the dictionary.
    static OvDbObjectId putXrecord(OvDbObjectId dictId, const wchar_t* key, const resbuf* data) {
        OvDbDictionary* dict = nullptr;
        EXPECT_EQ(ovdbOpenObject(dict, dictId, OvDb::kForWrite), Orvex::eOk);
        auto* xrec = new OvDbXrecord();
        OvDbObjectId id;
        EXPECT_EQ(dict->setAt(key, xrec, id), Orvex::eOk);
        EXPECT_EQ(xrec->setFromRbChain(data), Orvex::eOk);
        xrec->close();
        dict->close();
        return id;
    }

    static void setErased(OvDbObjectId id, bool erasing = true) {
        OvDbObject* object = nullptr;
        ASSERT_EQ(ovdbOpenObject(object, id, OvDb::kForWrite, true), Orvex::eOk);
        EXPECT_EQ(object->erase(erasing), Orvex::eOk);
        object->close();
    }

    // A chain in one line: "code:value" for each link, the bare code for one without a
    // value, e.g. "5016 1:RED 10:1.5,2,0 5017".
    static QString chainText(const resbuf* chain) {
        QStringList parts;
        for (const resbuf* rb = chain; rb; rb = rb->rbnext) {
            const ovu_resval& v = rb->resval;
            QString value;
            switch (ovutValueKind(rb->restype)) {
            case OvRbValueKind::String:
            case OvRbValueKind::Handle:
                value = v.rstring ? QString::fromWCharArray(v.rstring) : QStringLiteral("<null>");
                break;
            case OvRbValueKind::Int16:
            case OvRbValueKind::Bool:
                value = QString::number(v.rint);
                break;
            case OvRbValueKind::Int32:
                value = QString::number(v.rlong);
                break;
            case OvRbValueKind::Real:
                value = QString::number(v.rreal, 'g', 17);
                break;
            case OvRbValueKind::Point:
                value =
                    QStringLiteral("%1,%2,%3").arg(v.rpoint[0]).arg(v.rpoint[1]).arg(v.rpoint[2]);
                break;
            case OvRbValueKind::Name:
                value = QStringLiteral("%1,%2").arg(v.rlname[0]).arg(v.rlname[1]);
                break;
            case OvRbValueKind::Binary:
                value = QString::fromLatin1(QByteArray(v.rbinary.buf, v.rbinary.clen).toHex());
                break;
            default:
                parts << QString::number(rb->restype);
                continue;
            }
            parts << QStringLiteral("%1:%2").arg(rb->restype).arg(value);
        }
        return parts.join(' ');
    }

    OvDbDatabase db;
};
