#include "ovdb/OvDbDictionary.h"

#include "OvDbAccess.h"
#include "OvDbDwgReader.h"
#include "OvDbDwgWriter.h"
#include "ovdb/OvDbDictionaryIterator.h"
#include "ovdb/OvDbHandle.h"
#include "ovdb/OvRxClassMacros.h"
#include "ovdb/ovdbOpenObject.h"

#include <QJsonArray>

namespace {

bool parseHandleText(const QString& text, std::uint64_t& handle) {
    bool ok = false;
    handle = OvDbHandle::fromString(text, &ok).value();
    return ok;
}

bool isLiveEntry(OvDbObjectId id) {
    return OvDbAccess::isLive(id.stub());
}

} // namespace

OVRX_DEFINE_CLASS(OvDbDictionary, OvDbObject)

OvDbDictionary::OvDbDictionary() = default;

OvDbDictionary::~OvDbDictionary() = default;

int OvDbDictionary::findLive(const QString& name) const {
    const int pos = m_index.value(name, -1);
    return pos >= 0 && isLiveEntry(m_entries[pos].id) ? pos : -1;
}

void OvDbDictionary::reindex() {
    m_index.clear();
    for (std::size_t i = 0; i < m_entries.size(); ++i)
        m_index.insert(m_entries[i].name, static_cast<int>(i));
}

Orvex::ErrorStatus OvDbDictionary::getAt(const wchar_t* name, OvDbObjectId& id) const {
    return getAt(QString::fromWCharArray(name ? name : L""), id);
}

Orvex::ErrorStatus OvDbDictionary::getAt(const QString& name, OvDbObjectId& id) const {
    assertReadEnabled();
    const int pos = findLive(name);
    if (pos < 0) {
        id = OvDbObjectId();
        return Orvex::eKeyNotFound;
    }
    id = m_entries[pos].id;
    return Orvex::eOk;
}

Orvex::ErrorStatus OvDbDictionary::getAt(const wchar_t* name, OvDbObject*& object,
                                         OvDb::OpenMode mode) const {
    object = nullptr;
    OvDbObjectId id;
    const Orvex::ErrorStatus es = getAt(name, id);
    if (es != Orvex::eOk)
        return es;
    return ovdbOpenObject(object, id, mode);
}

bool OvDbDictionary::has(const wchar_t* name) const {
    return has(QString::fromWCharArray(name ? name : L""));
}

bool OvDbDictionary::has(const QString& name) const {
    assertReadEnabled();
    return findLive(name) >= 0;
}

bool OvDbDictionary::has(OvDbObjectId id) const {
    assertReadEnabled();
    for (const Entry& e : m_entries) {
        if (e.id == id)
            return isLiveEntry(id);
    }
    return false;
}

Orvex::ErrorStatus OvDbDictionary::nameAt(OvDbObjectId id, QString& name) const {
    assertReadEnabled();
    for (const Entry& e : m_entries) {
        if (e.id == id) {
            name = e.name;
            return Orvex::eOk;
        }
    }
    return Orvex::eKeyNotFound;
}

Orvex::ErrorStatus OvDbDictionary::setAt(const wchar_t* name, OvDbObject* object,
                                         OvDbObjectId& id) {
    return setAt(QString::fromWCharArray(name ? name : L""), object, id);
}

Orvex::ErrorStatus OvDbDictionary::setAt(const QString& name, OvDbObject* object,
                                         OvDbObjectId& id) {
    id = OvDbObjectId();
    if (!object)
        return Orvex::eNullObjectPointer;
    if (name.isEmpty())
        return Orvex::eInvalidInput;
    if (isNewObject())
        return Orvex::eNotInDatabase;
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    if (object == this)
        return Orvex::eInvalidInput;
    OvDbStub* self = OvDbAccess::stub(this);
    if (object->isNewObject()) {
        OvDbAccess::addToDatabase(OvDbAccess::implOf(this), object, self, true);
    } else {
        if (object->database() != database())
            return Orvex::eWrongDatabase;
        OvDbStub* owner = OvDbAccess::owner(object);
        if (owner && owner != self)
            return Orvex::eAlreadyInDb;
        // Moving an entry to a new name: the old one goes.
        for (std::size_t i = 0; i < m_entries.size(); ++i) {
            if (m_entries[i].id == object->objectId() &&
                m_entries[i].name.compare(name, Qt::CaseInsensitive) != 0) {
                m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>(i));
                reindex();
                break;
            }
        }
        OvDbAccess::setOwner(object, self);
    }
    OvDbAccess::putEntry(this, name, OvDbAccess::stub(object));
    id = object->objectId();
    return Orvex::eOk;
}

void OvDbAccess::putEntry(OvDbDictionary* dictionary, const QString& name, OvDbStub* entry) {
    const int pos = dictionary->m_index.value(name, -1);
    if (pos < 0) {
        dictionary->m_index.insert(name, static_cast<int>(dictionary->m_entries.size()));
        dictionary->m_entries.push_back({name, OvDbObjectId(entry)});
        return;
    }
    OvDbDictionary::Entry& e = dictionary->m_entries[pos];
    if (e.id.stub() == entry)
        return;
    // A live object that loses its place goes; an erased one was gone already.
    OvDbStub* old = e.id.stub();
    if (isLive(old) && owner(old->object) == stub(dictionary)) {
        eraseTree(old->object, true);
        old->erasedWithOwner = false;
    }
    e.name = name;
    e.id = OvDbObjectId(entry);
}

Orvex::ErrorStatus OvDbDictionary::remove(const wchar_t* name) {
    OvDbObjectId id;
    return remove(name, id);
}

Orvex::ErrorStatus OvDbDictionary::remove(const wchar_t* name, OvDbObjectId& id) {
    id = OvDbObjectId();
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    const int pos = findLive(QString::fromWCharArray(name ? name : L""));
    if (pos < 0)
        return Orvex::eKeyNotFound;
    id = m_entries[pos].id;
    return remove(id);
}

Orvex::ErrorStatus OvDbDictionary::remove(OvDbObjectId id) {
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    for (std::size_t i = 0; i < m_entries.size(); ++i) {
        if (m_entries[i].id != id)
            continue;
        m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>(i));
        reindex();
        if (OvDbObject* o = OvDbAccess::object(id);
            o && OvDbAccess::owner(o) == OvDbAccess::stub(this))
            OvDbAccess::setOwner(o, nullptr);
        return Orvex::eOk;
    }
    return Orvex::eKeyNotFound;
}

int OvDbDictionary::numEntries() const {
    assertReadEnabled();
    int count = 0;
    for (const Entry& e : m_entries) {
        if (isLiveEntry(e.id))
            ++count;
    }
    return count;
}

OvDbDictionaryIterator* OvDbDictionary::newIterator(bool includeErased) const {
    assertReadEnabled();
    return new OvDbDictionaryIterator(this, includeErased);
}

Orvex::ErrorStatus OvDbDictionary::subErase(bool erasing) {
    OvDbAccess::Impl* im = OvDbAccess::implOf(this);
    if (erasing && im && im->namedObjects == OvDbAccess::stub(this))
        return Orvex::eCannotBeErasedByCaller;
    return Orvex::eOk;
}

void OvDbDictionary::ownedObjects(std::vector<OvDbObjectId>& ids) const {
    for (const Entry& e : m_entries)
        ids.push_back(e.id);
}

void OvDbDictionary::writeFields(OvDbDwgWriter& out) const {
    OvDbObject::writeFields(out);
    QJsonArray entries;
    for (const Entry& e : m_entries) {
        if (!isLiveEntry(e.id))
            continue;
        const QString ref = out.refText(e.id);
        if (ref == QLatin1StringView("0"))
            continue;
        entries.append(QJsonArray{e.name, ref});
    }
    out.fields().insert(QLatin1StringView("entries"), entries);
}

Orvex::ErrorStatus OvDbDictionary::readFields(OvDbDwgReader& in) {
    if (OvDbObject::readFields(in) != Orvex::eOk)
        return in.status();
    const QString wrong = QStringLiteral("'entries' must be a list of [name, handle] pairs");
    OvDbNameIndex<bool> seen;
    using Value = OvDbDwgReader::Value;
    const OvDbDwgReader::Items read =
        in.readItems(QLatin1StringView("entries"), [&](const Value& item) {
            std::uint64_t handle = 0;
            if (item.kind != Value::Kind::List || item.items.size() != 2 ||
                item.items[0].kind != Value::Kind::Text || item.items[0].text.isEmpty() ||
                item.items[1].kind != Value::Kind::Text ||
                !parseHandleText(item.items[1].text, handle) || handle == 0) {
                in.fail(Orvex::eBadDrawingFormat, wrong);
                return false;
            }
            const QString& name = item.items[0].text;
            if (seen.contains(name)) {
                in.fail(Orvex::eBadDrawingFormat,
                        QStringLiteral("the entry name \"%1\" appears twice").arg(name));
                return false;
            }
            seen.insert(name, true);
            in.addDictionaryEntry(this, name, handle);
            return true;
        });
    if (read == OvDbDwgReader::Items::NotAList)
        return in.fail(Orvex::eBadDrawingFormat, wrong);
    if (read == OvDbDwgReader::Items::Failed)
        return in.status();
    return Orvex::eOk;
}

// ---------------------------------------------------------------------------------------

OvDbDictionaryIterator::OvDbDictionaryIterator(const OvDbDictionary* dictionary, bool includeErased)
    : m_dictionary(dictionary->objectId()), m_includeErased(includeErased) {
    skip();
}

OvDbDictionaryIterator::~OvDbDictionaryIterator() = default;

void OvDbDictionaryIterator::skip() {
    const auto* dictionary = OvDbAccess::objectAs<OvDbDictionary>(m_dictionary);
    if (!dictionary)
        return;
    while (m_pos < dictionary->m_entries.size() && !m_includeErased &&
           !isLiveEntry(dictionary->m_entries[m_pos].id))
        ++m_pos;
}

bool OvDbDictionaryIterator::done() const {
    const auto* dictionary = OvDbAccess::objectAs<OvDbDictionary>(m_dictionary);
    return !dictionary || m_pos >= dictionary->m_entries.size();
}

bool OvDbDictionaryIterator::next() {
    if (done())
        return false;
    ++m_pos;
    skip();
    return !done();
}

QString OvDbDictionaryIterator::name() const {
    if (done())
        return QString();
    return OvDbAccess::objectAs<OvDbDictionary>(m_dictionary)->m_entries[m_pos].name;
}

OvDbObjectId OvDbDictionaryIterator::objectId() const {
    if (done())
        return OvDbObjectId();
    return OvDbAccess::objectAs<OvDbDictionary>(m_dictionary)->m_entries[m_pos].id;
}

Orvex::ErrorStatus OvDbDictionaryIterator::getObject(OvDbObject*& object,
                                                     OvDb::OpenMode mode) const {
    object = nullptr;
    if (done())
        return Orvex::eIteratorDone;
    return ovdbOpenObject(object, objectId(), mode, m_includeErased);
}
