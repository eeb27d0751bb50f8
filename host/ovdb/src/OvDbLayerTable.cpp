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
    // The database counts the live entities of each layer as they come and go, so that
    // this costs the layers and not a walk of every entity.
    for (const auto& [layer, count] : im->layerUse) {
        if (count > 0)
            markLayer(const_cast<OvDbStub*>(layer));
    }
    markLayer(im->layerZero);
    markLayer(im->clayer);
    return Orvex::eOk;
}
