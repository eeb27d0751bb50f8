// Dictionaries, xrecords and extension dictionaries.

#include "ovdb/ovdb.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace Orvex;

// A chain's codes and texts, for comparing chains in one line.
QString describe(const resbuf* chain) {
    QStringList parts;
    for (const resbuf* rb = chain; rb; rb = rb->rbnext) {
        QString value;
        switch (ovutValueKind(rb->restype)) {
        case OvRbValueKind::String:
        case OvRbValueKind::Handle:
            value = QString::fromWCharArray(rb->resval.rstring);
            break;
        case OvRbValueKind::Int16:
        case OvRbValueKind::Bool:
            value = QString::number(rb->resval.rint);
            break;
        case OvRbValueKind::Int32:
            value = QString::number(rb->resval.rlong);
            break;
        case OvRbValueKind::Real:
            value = QString::number(rb->resval.rreal);
            break;
        case OvRbValueKind::Point:
            value = QStringLiteral("%1,%2,%3")
                        .arg(rb->resval.rpoint[0])
                        .arg(rb->resval.rpoint[1])
                        .arg(rb->resval.rpoint[2]);
            break;
        case OvRbValueKind::Binary:
            value = QString::fromLatin1(
                QByteArray(rb->resval.rbinary.buf, rb->resval.rbinary.clen).toHex());
            break;
        default:
            break;
        }
        parts << QStringLiteral("(%1 %2)").arg(rb->restype).arg(value);
    }
    return parts.join(' ');
}

class Dictionaries : public ::testing::Test {
protected:
    void TearDown() override {
        EXPECT_EQ(ovdbOpenObjectCount(), 0u)
            << ovdbOpenObjectDescriptions().join('\n').toStdString();
        EXPECT_EQ(ovdbTakeProtocolViolations(), QStringList());
    }

    OvDbObjectId putXrecord(OvDbDictionary* dict, const wchar_t* key, const resbuf* data) {
        auto* xrec = new OvDbXrecord();
        OvDbObjectId id;
        EXPECT_EQ(dict->setAt(key, xrec, id), eOk);
        EXPECT_EQ(xrec->setFromRbChain(data), eOk);
        xrec->close();
        return id;
    }

    OvDbDatabase db;
};

TEST_F(Dictionaries, EntriesByNameWithoutRegardToCase) {
    OvDbDictionary* nod = nullptr;
    ASSERT_EQ(db.getNamedObjectsDictionary(nod, OvDb::kForWrite), eOk);
    OvDbObjectId id;
    EXPECT_EQ(nod->getAt(L"ZEL_WIRETYPE", id), eKeyNotFound);
    EXPECT_EQ(eKeyNotFound, 22);
    EXPECT_TRUE(id.isNull());

    auto* inner = new OvDbDictionary();
    OvDbObjectId innerId;
    ASSERT_EQ(nod->setAt(L"ZEL_WIRETYPE", inner, innerId), eOk);
    EXPECT_EQ(inner->ownerId(), nod->objectId());
    EXPECT_TRUE(inner->isWriteEnabled());
    resbuf* chain = ovutBuildList(1, L"DEF", 1, L"CUR", 1, L"%C_%S", 290, 1, 0);
    putXrecord(inner, L"CURRENT_WIRELAY", chain);
    ovutRelRb(chain);
    inner->close();

    ASSERT_EQ(nod->getAt(L"zel_wiretype", id), eOk);
    EXPECT_EQ(id, innerId);
    EXPECT_TRUE(nod->has(L"Zel_WireType"));
    EXPECT_EQ(nod->numEntries(), 1);
    nod->close();

    // The path of a reader: dictionary, record, chain, each closed.
    OvDbDictionary* dict = nullptr;
    ASSERT_EQ(ovdbOpenObject(dict, innerId, OvDb::kForRead), eOk);
    OvDbObject* object = nullptr;
    ASSERT_EQ(dict->getAt(L"CURRENT_WIRELAY", object, OvDb::kForRead), eOk);
    dict->close();
    OvDbXrecord* xrec = OvDbXrecord::cast(object);
    ASSERT_NE(xrec, nullptr);
    resbuf* copy = nullptr;
    ASSERT_EQ(xrec->rbChain(copy), eOk);
    xrec->close();
    EXPECT_EQ(describe(copy), QStringLiteral("(1 DEF) (1 CUR) (1 %C_%S) (290 1)"));
    ovutRelRb(copy);
}

TEST_F(Dictionaries, SetAtRefusesWhatADictionaryCannotTake) {
    OvDbDictionary* nod = nullptr;
    ASSERT_EQ(db.getNamedObjectsDictionary(nod, OvDb::kForRead), eOk);
    auto* xrec = new OvDbXrecord();
    OvDbObjectId id;
    EXPECT_EQ(nod->setAt(L"X", xrec, id), eNotOpenForWrite);
    ovdbTakeProtocolViolations();
    ASSERT_EQ(nod->upgradeOpen(), eOk);
    EXPECT_EQ(nod->setAt(L"", xrec, id), eInvalidInput);
    EXPECT_EQ(nod->setAt(L"X", nullptr, id), eNullObjectPointer);
    EXPECT_TRUE(xrec->isNewObject()) << "a refused object stays its maker's";
    delete xrec;

    OvDbDatabase other;
    OvDbDictionary* foreign = nullptr;
    ASSERT_EQ(other.getNamedObjectsDictionary(foreign, OvDb::kForRead), eOk);
    EXPECT_EQ(nod->setAt(L"Y", foreign, id), eWrongDatabase);
    foreign->close();
    nod->close();
}

TEST_F(Dictionaries, ReplacingAndErasingAnEntry) {
    OvDbDictionary* nod = nullptr;
    ASSERT_EQ(db.getNamedObjectsDictionary(nod, OvDb::kForWrite), eOk);
    const OvDbObjectId first = putXrecord(nod, L"K", nullptr);
    const OvDbObjectId second = putXrecord(nod, L"k", nullptr);
    EXPECT_TRUE(first.isErased()) << "a replaced entry's object is erased";
    OvDbObjectId id;
    ASSERT_EQ(nod->getAt(L"K", id), eOk);
    EXPECT_EQ(id, second);
    nod->close();

    // An erased entry is not found by name, and a new one may take its place.
    OvDbObject* object = nullptr;
    ASSERT_EQ(ovdbOpenObject(object, second, OvDb::kForWrite), eOk);
    ASSERT_EQ(object->erase(), eOk);
    object->close();
    ASSERT_EQ(db.getNamedObjectsDictionary(nod, OvDb::kForWrite), eOk);
    EXPECT_EQ(nod->getAt(L"K", id), eKeyNotFound);
    EXPECT_FALSE(nod->has(L"K"));
    EXPECT_EQ(nod->numEntries(), 0);
    const OvDbObjectId third = putXrecord(nod, L"K", nullptr);
    ASSERT_EQ(nod->getAt(L"K", id), eOk);
    EXPECT_EQ(id, third);

    // Removing takes the entry out and leaves the object alive with no owner.
    ASSERT_EQ(nod->remove(L"K", id), eOk);
    EXPECT_EQ(id, third);
    EXPECT_EQ(nod->remove(L"K"), eKeyNotFound);
    nod->close();
    ASSERT_EQ(ovdbOpenObject(object, third, OvDb::kForRead), eOk);
    EXPECT_TRUE(object->ownerId().isNull());
    object->close();
}

TEST_F(Dictionaries, IteratorFollowsInsertionAndShowsErasedOnRequest) {
    OvDbDictionary* nod = nullptr;
    ASSERT_EQ(db.getNamedObjectsDictionary(nod, OvDb::kForWrite), eOk);
    putXrecord(nod, L"B", nullptr);
    const OvDbObjectId gone = putXrecord(nod, L"A", nullptr);
    putXrecord(nod, L"C", nullptr);
    nod->close();
    OvDbObject* object = nullptr;
    ASSERT_EQ(ovdbOpenObject(object, gone, OvDb::kForWrite), eOk);
    object->erase();
    object->close();

    ASSERT_EQ(db.getNamedObjectsDictionary(nod, OvDb::kForRead), eOk);
    for (bool includeErased : {false, true}) {
        OvDbDictionaryIterator* it = nod->newIterator(includeErased);
        QStringList names;
        for (; !it->done(); it->next()) {
            names << it->name();
            ASSERT_EQ(it->getObject(object, OvDb::kForRead), eOk);
            EXPECT_EQ(object->objectId(), it->objectId());
            EXPECT_EQ(object->isErased(), it->name() == QLatin1StringView("A"));
            object->close();
        }
        EXPECT_EQ(it->getObject(object, OvDb::kForRead), eIteratorDone);
        delete it;
        EXPECT_EQ(names.join(','), includeErased ? QStringLiteral("B,A,C") : QStringLiteral("B,C"));
    }
    nod->close();
}

TEST_F(Dictionaries, XrecordKeepsAnyGroupCodesAndHandsOutCopies) {
    const double point[3] = {1.5, -2, 3};
    const char bytes[] = {'\x01', '\xff'};
    resbuf* chain = ovutBuildList(1, L"RED", 2, L"1.5", 3, L"", 4, L"ä ß", 10, point, 40, 0.25, 70,
                                  -3, 90, 70000, 290, 7, 310, 2, bytes, 330, L"1F", 1000, L"x", 0);
    ASSERT_NE(chain, nullptr);
    OvDbDictionary* nod = nullptr;
    ASSERT_EQ(db.getNamedObjectsDictionary(nod, OvDb::kForWrite), eOk);
    const OvDbObjectId id = putXrecord(nod, L"R", chain);
    nod->close();

    OvDbXrecord* xrec = nullptr;
    ASSERT_EQ(ovdbOpenObject(xrec, id, OvDb::kForWrite), eOk);
    resbuf* copy = nullptr;
    ASSERT_EQ(xrec->rbChain(copy), eOk);
    EXPECT_NE(copy, chain);
    EXPECT_EQ(describe(copy), QStringLiteral("(1 RED) (2 1.5) (3 ) (4 ä ß) (10 1.5,-2,3) (40 0.25) "
                                             "(70 -3) (90 70000) (290 1) (310 01ff) (330 1F) "
                                             "(1000 x)"));
    // The caller's copy is its own: changing it leaves the record alone.
    copy->resval.rstring[0] = L'X';
    resbuf* again = nullptr;
    ASSERT_EQ(xrec->rbChain(again), eOk);
    EXPECT_EQ(QString::fromWCharArray(again->resval.rstring), QStringLiteral("RED"));
    ovutRelRb(again);
    ovutRelRb(copy);

    // LISP types, markers and non-finite reals are refused, and nothing changes.
    resbuf* lisp = ovutBuildList(1, L"A", RTSTR, L"B", 0);
    resbuf* marker = ovutBuildList(-3, 0);
    resbuf* nan = ovutBuildList(40, std::numeric_limits<double>::quiet_NaN(), 0);
    EXPECT_EQ(xrec->setFromRbChain(lisp), eInvalidInput);
    EXPECT_EQ(xrec->setFromRbChain(marker), eInvalidInput);
    EXPECT_EQ(xrec->setFromRbChain(nan), eInvalidInput);
    ovutRelRb(lisp);
    ovutRelRb(marker);
    ovutRelRb(nan);
    ASSERT_EQ(xrec->rbChain(again), eOk);
    EXPECT_EQ(describe(again),
              describe(chain).replace(QStringLiteral("(290 7)"), QStringLiteral("(290 1)")));
    ovutRelRb(again);

    ASSERT_EQ(xrec->setFromRbChain(nullptr), eOk);
    ASSERT_EQ(xrec->rbChain(again), eOk);
    EXPECT_EQ(again, nullptr);
    xrec->close();
    ovutRelRb(chain);
}

TEST_F(Dictionaries, ExtensionDictionaryBelongsToItsObject) {
    OvDbLayerTableRecord* layer = nullptr;
    ASSERT_EQ(ovdbOpenObject(layer, db.clayer(), OvDb::kForRead), eOk);
    EXPECT_TRUE(layer->extensionDictionary().isNull());
    EXPECT_EQ(layer->createExtensionDictionary(), eNotOpenForWrite);
    ovdbTakeProtocolViolations();
    ASSERT_EQ(layer->upgradeOpen(), eOk);
    ASSERT_EQ(layer->createExtensionDictionary(), eOk);
    EXPECT_EQ(layer->createExtensionDictionary(), eAlreadyInDb);
    const OvDbObjectId dictId = layer->extensionDictionary();
    layer->close();

    OvDbDictionary* dict = nullptr;
    ASSERT_EQ(ovdbOpenObject(dict, dictId, OvDb::kForWrite), eOk);
    EXPECT_EQ(dict->ownerId(), db.clayer());
    resbuf* data = ovutBuildList(1, L"RED", 0);
    putXrecord(dict, L"ZEL_WIRETYPE", data);
    ovutRelRb(data);
    ASSERT_EQ(dict->erase(), eOk);
    dict->close();

    // Revived the way a layer that becomes a wire layer again is: opened erased.
    ASSERT_EQ(ovdbOpenObject(dict, dictId, OvDb::kForWrite), eWasErased);
    ASSERT_EQ(ovdbOpenObject(dict, dictId, OvDb::kForWrite, true), eOk);
    ASSERT_EQ(dict->erase(false), eOk);
    EXPECT_TRUE(dict->has(L"ZEL_WIRETYPE"));
    dict->close();
}

} // namespace
