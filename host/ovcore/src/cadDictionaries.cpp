// The named objects dictionary, dictionary entries and extension dictionaries.
#include "cadChain.h"
#include "cadDrawing.h"

#include "ovdb/ovdb.h"

#include <map>
#include <memory>
#include <string>
#include <utility>

namespace ovcore::cad {

namespace {

// Where dictnext stands in each dictionary: the handle of the entry it gave last, by the
// drawing's session and the dictionary's handle.
std::map<std::pair<std::int64_t, std::uint64_t>, std::uint64_t> s_positions;

void forgetClosedDrawings() {
    for (auto it = s_positions.begin(); it != s_positions.end();) {
        if (ovdbDatabaseOfSession(it->first.first))
            ++it;
        else
            it = s_positions.erase(it);
    }
}

std::pair<std::int64_t, std::uint64_t> positionKey(OvDbObjectId dictionary) {
    return {dictionary.database()->sessionNumber(), dictionary.handle().value()};
}

bool openDictionary(const ov_name name, OvDb::OpenMode mode, Opened<OvDbDictionary>& dictionary,
                    OvDbObjectId& id, QString* error) {
    if (!idOfName(name, id, error))
        return false;
    const Orvex::ErrorStatus es = dictionary.open(id, mode);
    if (es == Orvex::eOk)
        return true;
    if (es == Orvex::eWrongObjectType)
        *error = QStringLiteral("%1 is not a dictionary").arg(describeName(name));
    else if (es == Orvex::eWasErased)
        *error = QStringLiteral("%1 is erased").arg(describeName(name));
    else
        *error =
            QStringLiteral("%1 cannot be opened now (status %2)").arg(describeName(name)).arg(es);
    return false;
}

Chain entryData(OvDbObjectId id, QString* error) {
    ov_name name = {0, 0};
    if (!nameOfId(id, name))
        return {};
    return entityData(name, error);
}

// True when `object` owns `dictionary`, however far up: adding it would make a ring of
// owners that no walk from the drawing's root reaches and no erase ends.
bool ownsIndirectly(OvDbObjectId object, OvDbObjectId dictionary) {
    OvDbObjectId at = dictionary;
    for (int depth = 0; !at.isNull() && depth < 10000; ++depth) {
        if (at == object)
            return true;
        Opened<OvDbObject> current;
        if (current.open(at, OvDb::kForRead, true) != Orvex::eOk)
            return false;
        at = current->ownerId();
    }
    return false;
}

} // namespace

bool namedObjectsDictionary(ov_name name, QString* error) {
    OvDbDatabase* db = workingDatabase(error);
    return db && nameOfId(db->namedObjectsDictionaryId(), name);
}

Chain dictSearch(const ov_name dictionaryName, const QString& key, bool setNext, QString* error) {
    Opened<OvDbDictionary> dictionary;
    OvDbObjectId dictionaryId;
    if (!openDictionary(dictionaryName, OvDb::kForRead, dictionary, dictionaryId, error))
        return {};
    OvDbObjectId id;
    if (dictionary->getAt(key, id) != Orvex::eOk)
        return {};
    dictionary.reset();
    forgetClosedDrawings();
    if (setNext)
        s_positions[positionKey(dictionaryId)] = id.handle().value();
    return entryData(id, error);
}

bool dictAdd(const ov_name dictionaryName, const QString& key, const ov_name objectName,
             QString* error) {
    if (key.isEmpty()) {
        *error = QStringLiteral("an entry needs a name");
        return false;
    }
    OvDbObjectId dictionaryId;
    OvDbObjectId id;
    if (!idOfName(dictionaryName, dictionaryId, error) || !idOfName(objectName, id, error))
        return false;
    if (id.database() != dictionaryId.database()) {
        *error = QStringLiteral("%1 belongs to another drawing").arg(describeName(objectName));
        return false;
    }
    if (ownsIndirectly(id, dictionaryId)) {
        *error = QStringLiteral("%1 holds the dictionary itself").arg(describeName(objectName));
        return false;
    }
    Opened<OvDbObject> object;
    if (const Orvex::ErrorStatus es = object.open(id, OvDb::kForWrite); es != Orvex::eOk) {
        *error = es == Orvex::eWasErased
                     ? QStringLiteral("%1 is erased").arg(describeName(objectName))
                     : QStringLiteral("%1 cannot be changed now (status %2)")
                           .arg(describeName(objectName))
                           .arg(es);
        return false;
    }
    if (!OvDbDictionary::cast(object.get()) && !OvDbXrecord::cast(object.get())) {
        *error = QStringLiteral("%1 is not a DICTIONARY or XRECORD").arg(describeName(objectName));
        return false;
    }
    if (!object->ownerId().isNull()) {
        *error = QStringLiteral("%1 has an owner already (dictremove takes it out)")
                     .arg(describeName(objectName));
        return false;
    }
    Opened<OvDbDictionary> dictionary;
    if (!openDictionary(dictionaryName, OvDb::kForWrite, dictionary, dictionaryId, error))
        return false;
    // An entry of that name stays: replacing it would erase its object.
    if (dictionary->has(key)) {
        *error = QStringLiteral("the dictionary has an entry %1 already").arg(quotedText(key));
        return false;
    }
    OvDbObjectId added;
    if (const Orvex::ErrorStatus es = dictionary->setAt(key, object.get(), added);
        es != Orvex::eOk) {
        *error =
            QStringLiteral("the entry %1 cannot be added (status %2)").arg(quotedText(key)).arg(es);
        return false;
    }
    return true;
}

bool dictRemove(const ov_name dictionaryName, const QString& key, ov_name removed, QString* error) {
    Opened<OvDbDictionary> dictionary;
    OvDbObjectId dictionaryId;
    if (!openDictionary(dictionaryName, OvDb::kForWrite, dictionary, dictionaryId, error))
        return false;
    OvDbObjectId id;
    const std::wstring wide = key.toStdWString();
    if (dictionary->remove(wide.c_str(), id) != Orvex::eOk)
        return false;
    return nameOfId(id, removed);
}

Chain dictNext(const ov_name dictionaryName, bool rewind, QString* error) {
    Opened<OvDbDictionary> dictionary;
    OvDbObjectId dictionaryId;
    if (!openDictionary(dictionaryName, OvDb::kForRead, dictionary, dictionaryId, error))
        return {};
    forgetClosedDrawings();
    const auto key = positionKey(dictionaryId);
    const auto position = s_positions.find(key);
    std::unique_ptr<OvDbDictionaryIterator> it(dictionary->newIterator());
    // After the entry given last; from the start when there is none or it has left.
    if (!rewind && position != s_positions.end()) {
        std::unique_ptr<OvDbDictionaryIterator> after(dictionary->newIterator());
        while (!after->done() && after->objectId().handle().value() != position->second)
            after->next();
        if (!after->done()) {
            after->next();
            it = std::move(after);
        }
    }
    dictionary.reset();
    if (it->done())
        return {};
    const OvDbObjectId id = it->objectId();
    s_positions[key] = id.handle().value();
    return entryData(id, error);
}

bool extensionDictionary(const ov_name objectName, bool create, ov_name dictionary,
                         QString* error) {
    OvDbObjectId id;
    if (!idOfName(objectName, id, error))
        return false;
    Opened<OvDbObject> object;
    Orvex::ErrorStatus es = object.open(id, OvDb::kForRead);
    if (es == Orvex::eOk) {
        const OvDbObjectId existing = object->extensionDictionary();
        if (!existing.isNull() && !existing.isErased())
            return nameOfId(existing, dictionary);
        if (!create)
            return false;
        es = object.open(id, OvDb::kForWrite);
        if (es == Orvex::eOk)
            es = object->createExtensionDictionary();
    }
    if (es != Orvex::eOk) {
        *error = es == Orvex::eWasErased
                     ? QStringLiteral("%1 is erased").arg(describeName(objectName))
                     : QStringLiteral("%1 cannot be opened now (status %2)")
                           .arg(describeName(objectName))
                           .arg(es);
        return false;
    }
    return nameOfId(object->extensionDictionary(), dictionary);
}

} // namespace ovcore::cad
