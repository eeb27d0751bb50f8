#include "ZelWdmFunctions.h"

#include "ZelChainBuilder.h"
#include "ZelLispArgs.h"
#include "ZelLispReturn.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/oved.h"
#include "ovdb/OvDbAttribute.h"
#include "ovdb/OvDbBlockReference.h"
#include "ovdb/OvDbBlockTable.h"
#include "ovdb/OvDbBlockTableRecord.h"
#include "ovdb/OvDbBlockTableRecordIterator.h"
#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbHostApplicationServices.h"
#include "ovdb/OvDbObjectIterator.h"
#include "ovdb/ovdbOpenObject.h"
#include "zeldefun/ZelQvxDatabase.h"

#include <memory>

namespace {

void readAttributes(const OvDbBlockReference* reference,
                    QList<QPair<QString, QString>>& attributes) {
    std::unique_ptr<OvDbObjectIterator> iterator(reference->attributeIterator());
    for (; iterator && !iterator->done(); iterator->step()) {
        OvDbAttribute* attribute = nullptr;
        // An erased attribute does not open, and is passed over.
        if (ovdbOpenObject(attribute, iterator->objectId(), OvDb::kForRead) != Orvex::eOk)
            continue;
        attributes.append({attribute->tag().toUpper(), attribute->textString()});
        attribute->close();
    }
}

OvDbDatabase* currentDrawing() {
    if (const OvApDocManager* manager = ovDocManagerPtr()) {
        if (const OvApDocument* doc = manager->curDocument())
            return doc->database();
    }
    return OvDbHostApplicationServices::getRefPtr()->workingDatabase();
}

} // namespace

bool zelReadWdmAttributes(OvDbDatabase* database, QList<QPair<QString, QString>>& attributes) {
    attributes.clear();
    if (!database)
        return false;
    OvDbBlockTable* table = nullptr;
    if (database->getBlockTable(table, OvDb::kForRead) != Orvex::eOk)
        return false;
    OvDbObjectId blockId;
    const bool known = table->getIdAt(QStringLiteral("WD_M"), blockId) == Orvex::eOk;
    table->close();
    if (!known)
        return false;

    OvDbBlockTableRecord* space = nullptr;
    if (ovdbOpenObject(space, database->modelSpaceId(), OvDb::kForRead) != Orvex::eOk)
        return false;
    OvDbBlockTableRecordIterator* rawIterator = nullptr;
    const Orvex::ErrorStatus es = space->newIterator(rawIterator, true, true);
    space->close();
    std::unique_ptr<OvDbBlockTableRecordIterator> iterator(rawIterator);
    if (es != Orvex::eOk || !iterator)
        return false;

    for (; !iterator->done(); iterator->step()) {
        OvDbObject* object = nullptr;
        if (ovdbOpenObject(object, iterator->entityId(), OvDb::kForRead) != Orvex::eOk)
            continue;
        const OvDbBlockReference* reference = OvDbBlockReference::cast(object);
        const bool found = reference && reference->blockTableRecord() == blockId;
        if (found)
            readAttributes(reference, attributes);
        object->close();
        if (found)
            return true;
    }
    return false;
}

int zelWdmAttributes() {
    const ZelLispArgs args(ovedGetArgs());
    if (args.count() > 1 || (args.count() == 1 && !args.isNil(0) && !args.isString(0)))
        return zelComplain(L"zel_wd_m_attributes",
                           QStringLiteral("give the drawing's path as a text, or nothing"));

    QList<QPair<QString, QString>> attributes;
    if (args.isString(0)) {
        ZelQvxDatabase drawing;
        if (!drawing.open(args.string(0), 32, false))
            return zelComplain(L"zel_wd_m_attributes", drawing.lastError());
        zelReadWdmAttributes(drawing.database(), attributes);
    } else {
        zelReadWdmAttributes(currentDrawing(), attributes);
    }
    if (attributes.isEmpty())
        return zelRetNil();

    ZelChainBuilder chain;
    chain.beginList();
    for (const auto& [tag, text] : std::as_const(attributes))
        chain.beginList().string(tag).dot().string(text).endList();
    chain.endList();
    return zelRetOwnedList(chain.take());
}
