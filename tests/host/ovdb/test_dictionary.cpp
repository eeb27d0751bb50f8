// Dictionaries, xrecords and extension dictionaries.

#include "OvdbTest.h"

#include <limits>

namespace {

using namespace Orvex;

class Dictionaries : public OvdbTest {
protected:
    // The data of an xrecord, through the path a reader takes: open, copy the chain, close.
    static QString xrecordText(OvDbObjectId id) {
        OvDbXrecord* xrec = nullptr;
        EXPECT_EQ(ovdbOpenObject(xrec, id, OvDb::kForRead), eOk);
        resbuf* chain = nullptr;
        EXPECT_EQ(xrec->rbChain(chain), eOk);
        xrec->close();
        const QString text = chainText(chain);
        ovutRelRb(chain);
        return text;
    }
    OvDbObjectId nodEntry(const wchar_t* key) {
        OvDbDictionary* nod = nullptr;
        EXPECT_EQ(db.getNamedObjectsDictionary(nod, OvDb::kForRead), eOk);
        OvDbObjectId id;
        nod->getAt(key, id);
        nod->close();
        return id;
    }
};

TEST_F(Dictionaries, EntriesByNameWithoutRegardToCase) {
    EXPECT_TRUE(nodEntry(L"ZEL_WIRETYPE").isNull());
    OvDbDictionary* nod = nullptr;
    ASSERT_EQ(db.getNamedObjectsDictionary(nod, OvDb::kForWrite), eOk);
    OvDbObjectId id;
    EXPECT_EQ(nod->getAt(L"ZEL_WIRETYPE", id), eKeyNotFound);
    auto* inner = new OvDbDictionary();
    OvDbObjectId innerId;
    ASSERT_EQ(nod->setAt(L"ZEL_WIRETYPE", inner, innerId), eOk);
    EXPECT_EQ(inner->ownerId(), nod->objectId());
    EXPECT_TRUE(inner->isWriteEnabled());
    inner->close();
    EXPECT_TRUE(nod->has(L"Zel_WireType"));
    nod->close();
    EXPECT_EQ(nodEntry(L"zel_wiretype"), innerId);
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
    const OvDbObjectId nodId = db.namedObjectsDictionaryId();
    const OvDbObjectId first = putXrecord(nodId, L"K", nullptr);
    const OvDbObjectId second = putXrecord(nodId, L"k", nullptr);
    EXPECT_TRUE(first.isErased()) << "a replaced entry's object is erased";
    EXPECT_EQ(nodEntry(L"K"), second);

    // An erased entry is not found by name, and a new one may take its place.
    setErased(second);
    EXPECT_TRUE(nodEntry(L"K").isNull());
    const OvDbObjectId third = putXrecord(nodId, L"K", nullptr);
    EXPECT_EQ(nodEntry(L"K"), third);
}

TEST_F(Dictionaries, IteratorFollowsInsertionAndShowsErasedOnRequest) {
    const OvDbObjectId nodId = db.namedObjectsDictionaryId();
    putXrecord(nodId, L"B", nullptr);
    setErased(putXrecord(nodId, L"A", nullptr));
    putXrecord(nodId, L"C", nullptr);

    OvDbDictionary* nod = nullptr;
    ASSERT_EQ(db.getNamedObjectsDictionary(nod, OvDb::kForRead), eOk);
    for (bool includeErased : {false, true}) {
        OvDbDictionaryIterator* it = nod->newIterator(includeErased);
        QStringList names;
        OvDbObject* object = nullptr;
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
    const QString stored = "1:RED 2:1.5 3: 4:ä ß 10:1.5,-2,3 40:0.25 70:-3 90:70000 290:1 "
                           "310:01ff 330:1F 1000:x";
    const OvDbObjectId id = putXrecord(db.namedObjectsDictionaryId(), L"R", chain);
    ovutRelRb(chain);
    EXPECT_EQ(xrecordText(id), stored);

    OvDbXrecord* xrec = nullptr;
    ASSERT_EQ(ovdbOpenObject(xrec, id, OvDb::kForWrite), eOk);
    // The caller's copy is its own: changing it leaves the record alone.
    resbuf* copy = nullptr;
    ASSERT_EQ(xrec->rbChain(copy), eOk);
    copy->resval.rstring[0] = L'X';
    ovutRelRb(copy);
    // LISP types, markers and non-finite reals are refused, and nothing changes.
    for (resbuf* bad : {ovutBuildList(1, L"A", RTSTR, L"B", 0), ovutBuildList(-3, 0),
                        ovutBuildList(40, std::numeric_limits<double>::quiet_NaN(), 0)}) {
        EXPECT_EQ(xrec->setFromRbChain(bad), eInvalidInput) << chainText(bad).toStdString();
        ovutRelRb(bad);
    }
    xrec->close();
    EXPECT_EQ(xrecordText(id), stored);

    ASSERT_EQ(ovdbOpenObject(xrec, id, OvDb::kForWrite), eOk);
    ASSERT_EQ(xrec->setFromRbChain(nullptr), eOk);
    xrec->close();
    EXPECT_EQ(xrecordText(id), QString());
}

} // namespace
