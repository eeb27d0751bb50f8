#include "ovdb/OvDbObject.h"

#include "OvDbAccess.h"
#include "OvDbDwgReader.h"
#include "OvDbDwgWriter.h"
#include "ovdb/OvDbDictionary.h"
#include "ovdb/OvDbSymbolTableRecord.h"
#include "ovdb/OvRxClassMacros.h"
#include "ovdb/ovdbOpenObject.h"

#include <QLoggingCategory>

namespace {

Q_LOGGING_CATEGORY(lcOvdb, "orvex.ovdb")

// Every object open now, in any database: a list threaded through the objects, so that
// an open or a close costs no allocation.
struct OpenList {
    OvDbObject* head = nullptr;
    std::size_t count = 0;
};

OpenList& openList() {
    static OpenList list;
    return list;
}

struct Violations {
    std::size_t count = 0;
    QStringList texts;
};

Violations& violations() {
    static Violations v;
    return v;
}

// Enough to see what went wrong without letting a runaway loop eat the memory.
constexpr qsizetype kMaxViolationTexts = 200;

} // namespace

OVRX_DEFINE_CLASS(OvDbObject, OvRxObject)

OvDbObject::OvDbObject() = default;

OvDbObject::~OvDbObject() {
    if (m_inOpenList)
        OvDbAccess::unlinkOpen(this);
    if (m_stub && m_stub->object == this) {
        // Deleted by someone other than its database: keep the database from following a
        // dead pointer; the id now names nothing.
        OvDbAccess::recordViolation(
            QStringLiteral("%1 was deleted while in a database; close it instead")
                .arg(OvDbAccess::describe(this)));
        m_stub->object = nullptr;
        m_stub->objectClass = nullptr;
    }
}

OvDbObjectId OvDbObject::objectId() const {
    return OvDbObjectId(m_stub);
}

OvDbObjectId OvDbObject::ownerId() const {
    return OvDbObjectId(m_owner);
}

OvDbDatabase* OvDbObject::database() const {
    return m_stub ? m_stub->db : nullptr;
}

Orvex::ErrorStatus OvDbObject::close() {
    if (!m_stub) {
        // A new object is its maker's to delete; closing it only ends its write access.
        m_writer = false;
        return Orvex::eOk;
    }
    if (m_writer) {
        m_writer = false;
        OvDbAccess::markModified(m_stub->db);
    } else if (m_readers > 0) {
        --m_readers;
    } else if (m_notifiers > 0) {
        --m_notifiers;
    } else {
        OvDbAccess::recordViolation(
            QStringLiteral("%1 was closed while not open").arg(OvDbAccess::describe(this)));
        return Orvex::eNotOpen;
    }
    if (!OvDbAccess::isOpen(this))
        OvDbAccess::unlinkOpen(this);
    return Orvex::eOk;
}

Orvex::ErrorStatus OvDbObject::upgradeOpen() {
    if (m_writer)
        return Orvex::eWasOpenForWrite;
    if (m_readers != 1)
        return m_readers == 0 ? Orvex::eNotOpenForRead : Orvex::eWasOpenForRead;
    m_readers = 0;
    m_writer = true;
    return Orvex::eOk;
}

Orvex::ErrorStatus OvDbObject::downgradeOpen() {
    if (!m_writer)
        return Orvex::eNotOpenForWrite;
    if (m_stub)
        OvDbAccess::markModified(m_stub->db);
    m_writer = false;
    m_readers = 1;
    return Orvex::eOk;
}

Orvex::ErrorStatus OvDbObject::erase(bool erasing) {
    if (!m_stub)
        return Orvex::eNotInDatabase;
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    if (erasing && m_stub->erased)
        return Orvex::eWasErased;
    if (!erasing && !m_stub->erased)
        return Orvex::eWasNotErased;
    const Orvex::ErrorStatus es = subErase(erasing);
    if (es != Orvex::eOk)
        return es;
    OvDbAccess::eraseTree(this, erasing);
    // Whatever erased this object directly is the reason for it now.
    m_stub->erasedWithOwner = false;
    OvDbAccess::markModified(m_stub->db);
    return Orvex::eOk;
}

bool OvDbObject::isErased() const {
    return m_stub && m_stub->erased;
}

bool OvDbObject::isReadEnabled() const {
    return OvDbAccess::isOpen(this);
}

bool OvDbObject::isWriteEnabled() const {
    return m_writer;
}

bool OvDbObject::isNotifyEnabled() const {
    return m_notifiers > 0;
}

bool OvDbObject::reportNotReadEnabled() const {
    OvDbAccess::recordViolation(
        QStringLiteral("%1 was used while not open").arg(OvDbAccess::describe(this)));
    return false;
}

bool OvDbObject::assertWriteEnabled() const {
    if (m_writer)
        return true;
    OvDbAccess::recordViolation(
        QStringLiteral("%1 was changed while not open for write").arg(OvDbAccess::describe(this)));
    return false;
}

OvDbObjectId OvDbObject::extensionDictionary() const {
    assertReadEnabled();
    return m_xdict;
}

Orvex::ErrorStatus OvDbObject::createExtensionDictionary() {
    if (!m_stub)
        return Orvex::eNotInDatabase;
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    if (OvDbAccess::isLive(m_xdict.stub()))
        return Orvex::eAlreadyInDb;
    // An erased dictionary left behind is dropped (and goes with the next save).
    auto* dictionary = new OvDbDictionary();
    OvDbAccess::addToDatabase(OvDbAccess::implOf(this), dictionary, m_stub, false);
    m_xdict = dictionary->objectId();
    return Orvex::eOk;
}

Orvex::ErrorStatus OvDbObject::subErase(bool) {
    return Orvex::eOk;
}

void OvDbObject::ownedObjects(std::vector<OvDbObjectId>&) const {}

void OvDbObject::writeFields(OvDbDwgWriter& out) const {
    if (OvDbAccess::isLive(m_xdict.stub()))
        out.writeRef(QLatin1StringView("xdict"), m_xdict);
}

Orvex::ErrorStatus OvDbObject::readFields(OvDbDwgReader& in) {
    if (!in.readRef(QLatin1StringView("xdict"), m_xdict, OvDbDictionary::desc()))
        return in.status();
    return Orvex::eOk;
}

void OvDbObject::addedToDatabase() {}

// ---------------------------------------------------------------------------------------
// The database's side.

void OvDbAccess::addToDatabase(Impl* impl, OvDbObject* object, OvDbStub* owner, bool leaveOpen,
                               OvDbStub* stub) {
    if (!stub)
        stub = impl->newStub();
    stub->object = object;
    stub->objectClass = object->isA();
    object->m_stub = stub;
    object->m_owner = owner;
    object->m_readers = 0;
    object->m_notifiers = 0;
    object->m_writer = leaveOpen;
    if (leaveOpen)
        linkOpen(object);
    countUse(object, true);
    object->addedToDatabase();
    impl->dbmod |= 1;
}

void OvDbAccess::markModified(OvDbDatabase* database) {
    if (Impl* im = impl(database))
        im->dbmod |= 1;
}

void OvDbAccess::eraseTree(OvDbObject* object, bool erasing) {
    if (!object->m_stub)
        return;
    // A list of work rather than recursion: ownership read from a file may run deep.
    if (erasing)
        countUse(object, false);
    object->m_stub->erased = erasing;
    if (!erasing)
        countUse(object, true);
    std::vector<OvDbObject*> work{object};
    std::vector<OvDbObjectId> owned;
    while (!work.empty()) {
        OvDbObject* current = work.back();
        work.pop_back();
        OvDbStub* self = current->m_stub;
        owned.clear();
        current->ownedObjects(owned);
        if (!current->m_xdict.isNull())
            owned.push_back(current->m_xdict);
        for (const OvDbObjectId& id : owned) {
            OvDbStub* child = id.stub();
            if (!child || !child->object || child->object->m_owner != self)
                continue;
            if (erasing && !child->erased) {
                countUse(child->object, false);
                child->erased = true;
                child->erasedWithOwner = true;
                work.push_back(child->object);
            } else if (!erasing && child->erased && child->erasedWithOwner) {
                child->erased = false;
                child->erasedWithOwner = false;
                countUse(child->object, true);
                work.push_back(child->object);
            }
        }
    }
}

Orvex::ErrorStatus OvDbAccess::open(OvDbObject*& object, OvDbObjectId id, const OvRxClass* cls,
                                    OvDb::OpenMode mode, bool openErased) {
    object = nullptr;
    OvDbStub* stub = id.stub();
    if (!stub)
        return Orvex::eNullObjectId;
    OvDbObject* o = stub->object;
    if (!o)
        return Orvex::eInvalidObjectId;
    if (stub->erased && !openErased)
        return Orvex::eWasErased;
    if (cls && !o->isKindOf(cls))
        return Orvex::eWrongObjectType;
    const bool wasOpen = isOpen(o);
    switch (mode) {
    case OvDb::kForRead:
        if (o->m_writer)
            return Orvex::eWasOpenForWrite;
        ++o->m_readers;
        break;
    case OvDb::kForWrite:
        if (o->m_writer)
            return Orvex::eWasOpenForWrite;
        if (o->m_readers > 0)
            return Orvex::eWasOpenForRead;
        o->m_writer = true;
        break;
    case OvDb::kForNotify:
        ++o->m_notifiers;
        break;
    default:
        return Orvex::eInvalidInput;
    }
    if (!wasOpen)
        linkOpen(o);
    object = o;
    return Orvex::eOk;
}

void OvDbAccess::linkOpen(OvDbObject* object) {
    if (object->m_inOpenList)
        return;
    OpenList& list = openList();
    object->m_openPrev = nullptr;
    object->m_openNext = list.head;
    if (list.head)
        list.head->m_openPrev = object;
    list.head = object;
    ++list.count;
    object->m_inOpenList = true;
    if (Impl* im = implOf(object))
        ++im->openObjects;
}

void OvDbAccess::unlinkOpen(OvDbObject* object) {
    if (!object->m_inOpenList)
        return;
    OpenList& list = openList();
    if (object->m_openPrev)
        object->m_openPrev->m_openNext = object->m_openNext;
    else
        list.head = object->m_openNext;
    if (object->m_openNext)
        object->m_openNext->m_openPrev = object->m_openPrev;
    object->m_openPrev = object->m_openNext = nullptr;
    object->m_inOpenList = false;
    --list.count;
    // A database that is deleting its objects keeps no count any more.
    if (object->m_stub && object->m_stub->object == object) {
        if (Impl* im = implOf(object))
            --im->openObjects;
    }
}

std::size_t OvDbAccess::openCount() {
    return openList().count;
}

QStringList OvDbAccess::openDescriptions() {
    QStringList lines;
    for (const OvDbObject* o = openList().head; o; o = o->m_openNext) {
        QString mode;
        if (o->m_writer)
            mode = QStringLiteral("write");
        else if (o->m_readers > 0)
            mode = QStringLiteral("read (%1)").arg(o->m_readers);
        else
            mode = QStringLiteral("notify");
        lines << QStringLiteral("%1 open for %2").arg(describe(o), mode);
    }
    return lines;
}

void OvDbAccess::recordViolation(const QString& text) {
    Violations& v = violations();
    ++v.count;
    if (v.texts.size() < kMaxViolationTexts)
        v.texts << text;
    qCWarning(lcOvdb).noquote() << text;
}

QString OvDbAccess::describe(const OvDbObject* object) {
    QString text = object->isA()->name();
    if (object->m_stub)
        text += QLatin1Char(' ') + OvDbHandle(object->m_stub->handle).toString();
    else
        text += QStringLiteral(" (new)");
    if (object->isKindOf(OvDbSymbolTableRecord::desc()))
        text += QStringLiteral(" \"%1\"").arg(
            recordName(static_cast<const OvDbSymbolTableRecord*>(object)));
    return text;
}

QString OvDbAccess::typeName(const OvRxClass* cls) {
    QString name = cls->name();
    if (name.startsWith(QLatin1StringView("OvDb")))
        name.remove(0, 4);
    return name;
}

// ---------------------------------------------------------------------------------------
// The protocol's public face.

Orvex::ErrorStatus ovdbOpenObject(OvDbObject*& object, OvDbObjectId id, OvDb::OpenMode mode,
                                  bool openErased) {
    return OvDbAccess::open(object, id, nullptr, mode, openErased);
}

Orvex::ErrorStatus ovdbOpenObject(OvDbObject*& object, OvDbObjectId id, const OvRxClass* cls,
                                  OvDb::OpenMode mode, bool openErased) {
    return OvDbAccess::open(object, id, cls, mode, openErased);
}

std::size_t ovdbOpenObjectCount() {
    return OvDbAccess::openCount();
}

QStringList ovdbOpenObjectDescriptions() {
    return OvDbAccess::openDescriptions();
}

std::size_t ovdbProtocolViolationCount() {
    return violations().count;
}

QStringList ovdbTakeProtocolViolations() {
    Violations& v = violations();
    QStringList texts = std::move(v.texts);
    v.texts.clear();
    v.count = 0;
    return texts;
}
