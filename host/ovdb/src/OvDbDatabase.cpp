#include "ovdb/OvDbDatabase.h"

#include "OvDbAccess.h"
#include "ovdb/OvDbBlockTable.h"
#include "ovdb/OvDbBlockTableRecord.h"
#include "ovdb/OvDbDictionary.h"
#include "ovdb/OvDbHostApplicationServices.h"
#include "ovdb/OvDbLayerTable.h"
#include "ovdb/OvDbLayerTableRecord.h"
#include "ovdb/OvDbLinetypeTable.h"
#include "ovdb/OvDbLinetypeTableRecord.h"
#include "ovdb/ovdbEntityName.h"
#include "ovdb/ovdbOpenObject.h"

#include <algorithm>
#include <unordered_map>

namespace {

// Live databases by session number, so that an entity name of a deleted database is
// recognised as such instead of being followed.
std::unordered_map<std::int64_t, OvDbDatabase*>& registry() {
    static std::unordered_map<std::int64_t, OvDbDatabase*> databases;
    return databases;
}

std::int64_t s_nextSession = 1;

struct LinetypeDef {
    const wchar_t* name;
    const wchar_t* comments;
    std::vector<double> dashes;
};

OvDbStub* addTable(OvDbAccess::Impl* im, OvDbObject* table) {
    OvDbAccess::addToDatabase(im, table, nullptr, false);
    return OvDbAccess::stub(table);
}

OvDbStub* addRecord(OvDbAccess::Impl* im, OvDbStub* table, OvDbSymbolTableRecord* record) {
    OvDbAccess::addToDatabase(im, record, table, false);
    auto* t = static_cast<OvDbSymbolTable*>(table->object);
    OvDbAccess::records(t).push_back(record->objectId());
    OvDbAccess::indexRecord(t, OvDbAccess::stub(record));
    return OvDbAccess::stub(record);
}

void buildDefaultDrawing(OvDbAccess::Impl* im) {
    im->layerTable = addTable(im, new OvDbLayerTable());
    im->linetypeTable = addTable(im, new OvDbLinetypeTable());
    im->blockTable = addTable(im, new OvDbBlockTable());
    im->namedObjects = addTable(im, new OvDbDictionary());

    const LinetypeDef linetypes[] = {
        {L"ByBlock", L"", {}},
        {L"ByLayer", L"", {}},
        {L"Continuous", L"Solid line", {}},
        {L"DASHED", L"Dashed __ __ __ __ __ __ __ __", {0.5, -0.25}},
        {L"HIDDEN", L"Hidden __ __ __ __ __ __ __ __", {0.25, -0.125}},
        {L"CENTER", L"Center ____ _ ____ _ ____ _ ____", {1.25, -0.25, 0.25, -0.25}},
        {L"PHANTOM",
         L"Phantom ______  __  __  ______  __  __",
         {1.25, -0.25, 0.25, -0.25, 0.25, -0.25}},
        {L"DOT", L"Dot . . . . . . . . . . . . . . .", {0.0, -0.25}},
        {L"DASHDOT", L"Dash dot __ . __ . __ . __ . __", {0.5, -0.25, 0.0, -0.25}},
    };
    for (const LinetypeDef& def : linetypes) {
        auto* record = new OvDbLinetypeTableRecord();
        record->setName(def.name);
        record->setComments(def.comments);
        record->setDashes(def.dashes);
        OvDbStub* stub = addRecord(im, im->linetypeTable, record);
        const QString name = QString::fromWCharArray(def.name);
        if (name == QLatin1StringView("ByBlock"))
            im->byBlock = stub;
        else if (name == QLatin1StringView("ByLayer"))
            im->byLayer = stub;
        else if (name == QLatin1StringView("Continuous"))
            im->continuous = stub;
    }

    auto* zero = new OvDbLayerTableRecord();
    zero->setName(L"0");
    OvCmColor white;
    white.setColorIndex(7);
    zero->setColor(white);
    im->layerZero = addRecord(im, im->layerTable, zero);
    im->clayer = im->layerZero;

    auto* model = new OvDbBlockTableRecord();
    model->setName(L"*Model_Space");
    im->modelSpace = addRecord(im, im->blockTable, model);
    auto* paper = new OvDbBlockTableRecord();
    paper->setName(L"*Paper_Space");
    im->paperSpace = addRecord(im, im->blockTable, paper);
}

} // namespace

OvDbDatabase::Impl::~Impl() {
    // The ids stay readable while objects go, so that nothing follows a dead object.
    for (OvDbStub& stub : stubs) {
        OvDbObject* object = stub.object;
        stub.object = nullptr;
        stub.objectClass = nullptr;
        delete object;
    }
}

OvDbStub* OvDbDatabase::Impl::newStub(std::uint64_t handle) {
    if (handle == 0) {
        while (byHandle.contains(handseed))
            ++handseed;
        handle = handseed++;
    }
    // Its place in the map first: a handle taken gets no stub.
    OvDbStub** slot = byHandle.claim(handle);
    if (!slot)
        return nullptr;
    OvDbStub& stub = stubs.emplace_back();
    stub.db = db;
    stub.handle = handle;
    *slot = &stub;
    if (handle >= handseed)
        handseed = handle + 1;
    return &stub;
}

void OvDbDatabase::Impl::indexBlockReference(OvDbStub* reference, const OvDbStub* block) {
    if (!block)
        return;
    std::vector<BlockReferenceEntry>& list = blockReferences[block];
    for (const BlockReferenceEntry& e : list) {
        if (e.reference == reference)
            return;
    }
    list.push_back({nextReferenceOrder++, reference});
}

void OvDbDatabase::Impl::moveBlockReference(OvDbStub* reference, const OvDbStub* from,
                                            const OvDbStub* to) {
    std::uint64_t order = nextReferenceOrder;
    bool known = false;
    if (const auto it = blockReferences.find(from); it != blockReferences.end()) {
        std::vector<BlockReferenceEntry>& list = it->second;
        for (auto e = list.begin(); e != list.end(); ++e) {
            if (e->reference == reference) {
                order = e->order;
                known = true;
                list.erase(e);
                break;
            }
        }
    }
    if (!to)
        return;
    if (!known) {
        indexBlockReference(reference, to);
        return;
    }
    std::vector<BlockReferenceEntry>& list = blockReferences[to];
    const auto at =
        std::lower_bound(list.begin(), list.end(), order,
                         [](const BlockReferenceEntry& e, std::uint64_t o) { return e.order < o; });
    list.insert(at, {order, reference});
}

OvDbDatabase::OvDbDatabase(bool buildDefaultDrawing_, bool noDocument)
    : d(std::make_unique<Impl>(this)), m_noDocument(noDocument), m_session(s_nextSession++) {
    registry().emplace(m_session, this);
    if (buildDefaultDrawing_)
        buildDefaultDrawing(d.get());
    d->dbmod = 0;
}

OvDbDatabase::~OvDbDatabase() {
    registry().erase(m_session);
    OvDbHostApplicationServices* services = OvDbHostApplicationServices::getRefPtr();
    if (services->workingDatabase() == this)
        services->setWorkingDatabase(nullptr);
    if (d->openObjects > 0) {
        for (OvDbStub& stub : d->stubs) {
            if (stub.object && OvDbAccess::isOpen(stub.object))
                OvDbAccess::recordViolation(
                    QStringLiteral("%1 was still open when its database was deleted")
                        .arg(OvDbAccess::describe(stub.object)));
        }
    }
    d.reset();
}

Orvex::ErrorStatus OvDbDatabase::getFilename(const wchar_t*& path) const {
    path = m_wideFileName.c_str();
    return m_fileName.isEmpty() ? Orvex::eNotApplicable : Orvex::eOk;
}

QString OvDbDatabase::fileName() const {
    return m_fileName;
}

QString OvDbDatabase::lastErrorMessage() const {
    return m_lastError;
}

OvDbObjectId OvDbDatabase::layerTableId() const {
    return OvDbObjectId(d->layerTable);
}

OvDbObjectId OvDbDatabase::linetypeTableId() const {
    return OvDbObjectId(d->linetypeTable);
}

OvDbObjectId OvDbDatabase::blockTableId() const {
    return OvDbObjectId(d->blockTable);
}

OvDbObjectId OvDbDatabase::namedObjectsDictionaryId() const {
    return OvDbObjectId(d->namedObjects);
}

Orvex::ErrorStatus OvDbDatabase::getSymbolTable(OvDbLayerTable*& table, OvDb::OpenMode mode) {
    return ovdbOpenObject(table, layerTableId(), mode);
}

Orvex::ErrorStatus OvDbDatabase::getSymbolTable(OvDbLinetypeTable*& table, OvDb::OpenMode mode) {
    return ovdbOpenObject(table, linetypeTableId(), mode);
}

Orvex::ErrorStatus OvDbDatabase::getSymbolTable(OvDbBlockTable*& table, OvDb::OpenMode mode) {
    return ovdbOpenObject(table, blockTableId(), mode);
}

Orvex::ErrorStatus OvDbDatabase::getLayerTable(OvDbLayerTable*& table, OvDb::OpenMode mode) {
    return getSymbolTable(table, mode);
}

Orvex::ErrorStatus OvDbDatabase::getLinetypeTable(OvDbLinetypeTable*& table, OvDb::OpenMode mode) {
    return getSymbolTable(table, mode);
}

Orvex::ErrorStatus OvDbDatabase::getBlockTable(OvDbBlockTable*& table, OvDb::OpenMode mode) {
    return getSymbolTable(table, mode);
}

Orvex::ErrorStatus OvDbDatabase::getNamedObjectsDictionary(OvDbDictionary*& dictionary,
                                                           OvDb::OpenMode mode) {
    return ovdbOpenObject(dictionary, namedObjectsDictionaryId(), mode);
}

OvDbObjectId OvDbDatabase::continuousLinetype() const {
    return OvDbObjectId(d->continuous);
}

OvDbObjectId OvDbDatabase::byLayerLinetype() const {
    return OvDbObjectId(d->byLayer);
}

OvDbObjectId OvDbDatabase::byBlockLinetype() const {
    return OvDbObjectId(d->byBlock);
}

OvDbObjectId OvDbDatabase::modelSpaceId() const {
    return OvDbObjectId(d->modelSpace);
}

OvDbObjectId OvDbDatabase::paperSpaceId() const {
    return OvDbObjectId(d->paperSpace);
}

OvDbObjectId OvDbDatabase::currentSpaceId() const {
    return modelSpaceId();
}

OvDbObjectId OvDbDatabase::clayer() const {
    return OvDbObjectId(d->clayer);
}

Orvex::ErrorStatus OvDbDatabase::setClayer(OvDbObjectId id) {
    OvDbStub* stub = id.stub();
    if (!stub || stub->db != this || !OvDbAccess::isLive(stub) ||
        !stub->object->isKindOf(OvDbLayerTableRecord::desc()) ||
        OvDbAccess::owner(stub->object) != d->layerTable)
        return Orvex::eInvalidInput;
    d->clayer = stub;
    d->dbmod |= 1;
    return Orvex::eOk;
}

OvDb::LineWeight OvDbDatabase::getNearestLineWeight(int weight) const {
    return OvDb::nearestLineWeight(weight);
}

bool OvDbDatabase::isModified() const {
    return d->dbmod != 0;
}

int OvDbDatabase::dbmod() const {
    return d->dbmod;
}

Orvex::ErrorStatus OvDbDatabase::getOvDbObjectId(OvDbObjectId& id, bool,
                                                 const OvDbHandle& handle) const {
    OvDbStub* stub = d->byHandle.find(handle.value());
    if (!stub || !stub->object) {
        id = OvDbObjectId();
        return Orvex::eKeyNotFound;
    }
    id = OvDbObjectId(stub);
    return Orvex::eOk;
}

OvDbHandle OvDbDatabase::handseed() const {
    return OvDbHandle(d->handseed);
}

std::size_t OvDbDatabase::approxNumObjects() const {
    std::size_t count = 0;
    for (const OvDbStub& stub : d->stubs) {
        if (stub.object)
            ++count;
    }
    return count;
}

std::size_t OvDbDatabase::numOpenObjects() const {
    return d->openObjects;
}

bool OvDbDatabase::isNoDocument() const {
    return m_noDocument;
}

std::int64_t OvDbDatabase::sessionNumber() const {
    return m_session;
}

int ovdbSetDbmod(OvDbDatabase* database, int value) {
    OvDbAccess::Impl* im = OvDbAccess::impl(database);
    if (!im)
        return 0;
    const int old = im->dbmod;
    im->dbmod = value;
    return old;
}

OvDbDatabase* ovdbDatabaseOfSession(std::int64_t sessionNumber) {
    const auto it = registry().find(sessionNumber);
    return it == registry().end() ? nullptr : it->second;
}

int ovdbGetObjectId(OvDbObjectId& id, const ov_name name) {
    id = OvDbObjectId();
    if (!name)
        return RTERROR;
    OvDbDatabase* database = ovdbDatabaseOfSession(name[0]);
    if (!database)
        return RTERROR;
    if (database->getOvDbObjectId(id, false, OvDbHandle(static_cast<std::uint64_t>(name[1]))) !=
        Orvex::eOk)
        return RTERROR;
    return RTNORM;
}

int ovdbGetOvName(ov_name name, OvDbObjectId id) {
    if (!name)
        return RTERROR;
    name[0] = name[1] = 0;
    if (!id.isValid())
        return RTERROR;
    name[0] = id.database()->sessionNumber();
    name[1] = static_cast<std::int64_t>(id.handle().value());
    return RTNORM;
}
