// OvDbDatabase::wblockCloneObjects: symbol table records copied from one database into a
// table of another, with what they own (extension dictionaries and their contents) and
// the records they refer to (a layer's linetype).

#include "OvDbAccess.h"
#include "OvDbDwgReader.h"
#include "OvDbDwgWriter.h"
#include "ovdb/OvDbBlockTable.h"
#include "ovdb/OvDbBlockTableRecord.h"
#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbDictionary.h"
#include "ovdb/OvDbIdMapping.h"
#include "ovdb/OvDbLayerTable.h"
#include "ovdb/OvDbLayerTableRecord.h"
#include "ovdb/OvDbLinetypeTable.h"
#include "ovdb/OvDbLinetypeTableRecord.h"

namespace {

using Impl = OvDbAccess::Impl;

// The table of `database` that holds records of the class of `record`.
OvDbStub* tableFor(const OvDbObject* record, Impl* database) {
    if (OvDbLayerTableRecord::cast(const_cast<OvDbObject*>(record)))
        return database->layerTable;
    if (OvDbLinetypeTableRecord::cast(const_cast<OvDbObject*>(record)))
        return database->linetypeTable;
    if (OvDbBlockTableRecord::cast(const_cast<OvDbObject*>(record)))
        return database->blockTable;
    return nullptr;
}

class Cloner {
public:
    Cloner(Impl* source, Impl* destination, OvDbIdMapping& mapping, int drc)
        : m_src(source), m_dest(destination), m_mapping(mapping), m_drc(drc) {}

    OvDbStub* cloneRecord(OvDbStub* source, OvDbStub* table, bool primary);

private:
    OvDbStub* mapped(OvDbStub* source) const {
        OvDbIdPair pair(OvDbObjectId(source), OvDbObjectId(), false);
        return m_mapping.compute(pair) ? pair.value().stub() : nullptr;
    }
    void record(OvDbStub* source, OvDbStub* copy, bool cloned, bool primary) {
        m_mapping.assign(OvDbIdPair(OvDbObjectId(source), OvDbObjectId(copy), cloned, primary));
    }
    // Copies the fields of `source` into `target` and settles its references.
    void copyInto(OvDbObject* target, const OvDbObject* source);
    OvDbStub* cloneOwned(OvDbStub* source, OvDbStub* owner);
    QString freeName(const QString& name, OvDbSymbolTable* table) const;

    Impl* m_src;
    Impl* m_dest;
    OvDbIdMapping& m_mapping;
    int m_drc;
};

QString Cloner::freeName(const QString& name, OvDbSymbolTable* table) const {
    for (int n = 0;; ++n) {
        const QString candidate = QStringLiteral("$%1$%2").arg(n).arg(name);
        if (!OvDbAccess::findRecord(table, candidate))
            return candidate;
    }
}

void Cloner::copyInto(OvDbObject* target, const OvDbObject* source) {
    OvDbDwgWriter writer(OvDbDwgWriter::Mode::Clone);
    OvDbAccess::writeFields(source, writer);
    OvDbDwgReader reader;
    reader.begin(writer.fields(), target, 0);
    // Fields written by this very code read back; a refusal would be a bug of the writer.
    if (OvDbAccess::readFields(target, reader) != Orvex::eOk)
        return;
    OvDbStub* self = OvDbAccess::stub(target);
    for (const OvDbDwgReader::Fixup& f : reader.fixups()) {
        OvDbStub* referred = m_src->byHandle.find(f.handle);
        OvDbStub* value = nullptr;
        if (!OvDbAccess::isLive(referred)) {
            value = nullptr;
        } else if (f.key == QLatin1StringView("xdict")) {
            value = cloneOwned(referred, self);
        } else if (OvDbStub* table = tableFor(referred->object, m_dest)) {
            value = cloneRecord(referred, table, false);
        } else if (OvDbStub* done = mapped(referred)) {
            value = done;
        } else if (m_src == m_dest) {
            value = referred;
        }
        *f.slot = OvDbObjectId(value);
    }
    for (const OvDbDwgReader::DictionaryEntry& e : reader.dictionaryEntries()) {
        OvDbStub* found = m_src->byHandle.find(e.handle);
        if (!OvDbAccess::isLive(found))
            continue;
        if (OvDbStub* entry = cloneOwned(found, self))
            OvDbAccess::putEntry(e.dictionary, e.name, entry);
    }
}

OvDbStub* Cloner::cloneOwned(OvDbStub* source, OvDbStub* owner) {
    if (OvDbStub* done = mapped(source))
        return done;
    OvDbObject* copy = OvDbAccess::create(OvDbAccess::typeName(source->object->isA()));
    if (!copy)
        return nullptr;
    OvDbAccess::addToDatabase(m_dest, copy, owner, false);
    OvDbStub* stub = OvDbAccess::stub(copy);
    record(source, stub, true, false);
    copyInto(copy, source->object);
    return stub;
}

OvDbStub* Cloner::cloneRecord(OvDbStub* source, OvDbStub* table, bool primary) {
    if (OvDbStub* done = mapped(source)) {
        if (primary) {
            OvDbIdPair pair(OvDbObjectId(source), OvDbObjectId(), false);
            m_mapping.compute(pair);
            pair.setIsPrimary(true);
            m_mapping.assign(pair);
        }
        return done;
    }
    auto* destTable = static_cast<OvDbSymbolTable*>(table->object);
    const auto* sourceRecord = static_cast<const OvDbSymbolTableRecord*>(source->object);
    const QString name = OvDbAccess::recordName(sourceRecord);
    OvDbStub* existing = OvDbAccess::findRecord(destTable, name);

    if (existing &&
        (m_drc == OvDb::kDrcIgnore || m_drc == OvDb::kDrcNotApplicable || existing == source)) {
        record(source, existing, false, primary);
        return existing;
    }
    if (existing && m_drc == OvDb::kDrcReplace) {
        record(source, existing, true, primary);
        OvDbObject* target = existing->object;
        auto* targetRecord = static_cast<OvDbSymbolTableRecord*>(target);
        OvDbStub* oldXdict = OvDbAccess::xdict(target);
        const QString ownName = OvDbAccess::recordName(targetRecord);
        copyInto(target, sourceRecord);
        // The record keeps its own name; only its data is the source's.
        OvDbAccess::setRecordName(targetRecord, ownName);
        if (OvDbAccess::isLive(oldXdict) && OvDbAccess::xdict(target) != oldXdict)
            OvDbAccess::eraseTree(oldXdict->object, true);
        return existing;
    }

    OvDbObject* copy = OvDbAccess::create(OvDbAccess::typeName(sourceRecord->isA()));
    if (!copy)
        return nullptr;
    auto* copyRecord = static_cast<OvDbSymbolTableRecord*>(copy);
    OvDbAccess::addToDatabase(m_dest, copy, table, false);
    OvDbStub* stub = OvDbAccess::stub(copy);
    record(source, stub, true, primary);
    copyInto(copy, sourceRecord);
    OvDbAccess::setRecordName(copyRecord, existing ? freeName(name, destTable) : name);
    OvDbAccess::records(destTable).push_back(OvDbObjectId(stub));
    OvDbAccess::indexRecord(destTable, stub);
    if (auto* layer = OvDbLayerTableRecord::cast(copy); layer && !OvDbAccess::linetypeOf(layer))
        OvDbAccess::setLinetypeOf(layer, m_dest->continuous);
    return stub;
}

} // namespace

Orvex::ErrorStatus OvDbDatabase::wblockCloneObjects(const OvDbObjectIdArray& ids,
                                                    OvDbObjectId owner, OvDbIdMapping& mapping,
                                                    int duplicateRecordCloning, bool) {
    if (duplicateRecordCloning < OvDb::kDrcNotApplicable ||
        duplicateRecordCloning > OvDb::kDrcMangleName)
        return Orvex::eInvalidInput;
    OvDbStub* ownerStub = owner.stub();
    if (!ownerStub)
        return Orvex::eNullObjectId;
    if (!ownerStub->object)
        return Orvex::eInvalidObjectId;
    if (!ownerStub->object->isKindOf(OvDbSymbolTable::desc()))
        return Orvex::eWrongObjectType;
    OvDbDatabase* destination = ownerStub->db;
    Impl* dest = OvDbAccess::impl(destination);
    for (const OvDbObjectId& id : ids) {
        OvDbStub* stub = id.stub();
        if (!stub)
            return Orvex::eNullObjectId;
        if (stub->db != this)
            return Orvex::eWrongDatabase;
        if (!stub->object)
            return Orvex::eInvalidObjectId;
        if (stub->erased)
            return Orvex::eWasErased;
        if (tableFor(stub->object, dest) != ownerStub)
            return Orvex::eWrongObjectType;
    }
    mapping.setDatabases(this, destination);
    mapping.setDuplicateRecordCloning(duplicateRecordCloning);
    Cloner cloner(d.get(), dest, mapping, duplicateRecordCloning);
    for (const OvDbObjectId& id : ids)
        cloner.cloneRecord(id.stub(), ownerStub, true);
    OvDbAccess::markModified(destination);
    return Orvex::eOk;
}
