#include "ovdb/OvDbLayerTable.h"

#include "OvDbAccess.h"
#include "ovdb/OvDbBlockReference.h"
#include "ovdb/OvDbBlockTable.h"
#include "ovdb/OvDbBlockTableRecord.h"
#include "ovdb/OvDbEntity.h"
#include "ovdb/OvDbLayerTableIterator.h"
#include "ovdb/OvDbLayerTableRecord.h"
#include "ovdb/OvRxClassMacros.h"
#include "ovdb/ovdbOpenObject.h"

OVRX_DEFINE_CLASS(OvDbLayerTable, OvDbSymbolTable)

OvDbLayerTable::OvDbLayerTable() = default;

OvDbLayerTable::~OvDbLayerTable() = default;

Orvex::ErrorStatus OvDbLayerTable::getAt(const wchar_t* name, OvDbLayerTableRecord*& record,
                                         OvDb::OpenMode mode, bool openErasedRecord) const {
    return getTypedAt(name, record, mode, openErasedRecord);
}

Orvex::ErrorStatus OvDbLayerTable::newIterator(OvDbLayerTableIterator*& iterator, bool atBeginning,
                                               bool skipDeleted) const {
    assertReadEnabled();
    iterator = new OvDbLayerTableIterator(this, atBeginning, skipDeleted);
    return Orvex::eOk;
}

OvRxClass* OvDbLayerTable::recordClass() const {
    return OvDbLayerTableRecord::desc();
}

// ---------------------------------------------------------------------------------------

OvDbLayerTableIterator::OvDbLayerTableIterator(const OvDbLayerTable* table, bool atBeginning,
                                               bool skipDeleted)
    : OvDbSymbolTableIterator(table, atBeginning, skipDeleted) {}

OvDbLayerTableIterator::~OvDbLayerTableIterator() = default;

Orvex::ErrorStatus OvDbLayerTableIterator::getRecord(OvDbLayerTableRecord*& record,
                                                     OvDb::OpenMode mode,
                                                     bool openErasedRecord) const {
    return getTypedRecord(record, mode, openErasedRecord);
}

namespace {

void markLayer(OvDbStub* layer) {
    if (auto* record = OvDbAccess::objectAs<OvDbLayerTableRecord>(layer))
        OvDbAccess::setInUse(record, true);
}

} // namespace

Orvex::ErrorStatus OvDbLayerTable::generateUsageData() {
    assertReadEnabled();
    OvDbAccess::Impl* im = OvDbAccess::implOf(this);
    if (!im)
        return Orvex::eNotInDatabase;
    for (const OvDbObjectId& id : OvDbAccess::records(this)) {
        if (auto* layer = OvDbAccess::objectAs<OvDbLayerTableRecord>(id))
            OvDbAccess::setInUse(layer, false);
    }
    markLayer(im->layerZero);
    markLayer(im->clayer);
    auto* blocks = OvDbAccess::objectAs<OvDbBlockTable>(im->blockTable);
    if (!blocks)
        return Orvex::eOk;
    for (const OvDbObjectId& blockId : OvDbAccess::records(blocks)) {
        if (!OvDbAccess::isLive(blockId.stub()))
            continue;
        auto* block = OvDbAccess::objectAs<OvDbBlockTableRecord>(blockId);
        if (!block)
            continue;
        for (const OvDbObjectId& entityId : OvDbAccess::entities(block)) {
            OvDbStub* stub = entityId.stub();
            if (!OvDbAccess::isLive(stub))
                continue;
            auto* entity = static_cast<OvDbEntity*>(stub->object);
            markLayer(OvDbAccess::layerOf(entity));
            if (auto* reference = OvDbBlockReference::cast(entity)) {
                for (const OvDbObjectId& attribute : OvDbAccess::attributes(reference)) {
                    if (OvDbAccess::isLive(attribute.stub()))
                        markLayer(OvDbAccess::layerOf(
                            static_cast<OvDbEntity*>(attribute.stub()->object)));
                }
            }
        }
    }
    return Orvex::eOk;
}
