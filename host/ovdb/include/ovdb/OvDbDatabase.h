#pragma once

#include "ovdb/OvDbLineWeight.h"
#include "ovdb/OvDbObjectId.h"
#include "ovdb/OvDbOpenMode.h"
#include "ovdb/OvErrorStatus.h"

#include <QString>

#include <cstdint>
#include <memory>

class OvDbAccess;
class OvDbBlockTable;
class OvDbDictionary;
class OvDbIdMapping;
class OvDbLayerTable;
class OvDbLinetypeTable;

// A drawing: its objects, by handle, and the well-known ones among them.
//
// A new drawing (buildDefaultDrawing) has layer "0", the linetypes "ByBlock", "ByLayer",
// "Continuous" and a few dashed ones, the blocks "*Model_Space" and "*Paper_Space" and the
// named objects dictionary. Without it the database is empty until readDwgFile fills it.
// Deleting the database deletes its objects; ids of it are dead from then on.
class OvDbDatabase {
public:
    explicit OvDbDatabase(bool buildDefaultDrawing = true, bool noDocument = false);
    ~OvDbDatabase();

    OvDbDatabase(const OvDbDatabase&) = delete;
    OvDbDatabase& operator=(const OvDbDatabase&) = delete;

    // Drawing files. A failed read leaves the database as it was; lastErrorMessage
    // says why. The other arguments are accepted for their callers' sake.
    Orvex::ErrorStatus readDwgFile(const wchar_t* path, int shareMode = 3,
                                   bool allowCPConversion = false,
                                   const wchar_t* password = nullptr);
    // Written whole or not at all.
    Orvex::ErrorStatus saveAs(const wchar_t* path);
    Orvex::ErrorStatus getFilename(const wchar_t*& path) const;
    // Empty for a drawing never read or saved.
    QString fileName() const;
    QString lastErrorMessage() const;

    OvDbObjectId layerTableId() const;
    OvDbObjectId linetypeTableId() const;
    OvDbObjectId blockTableId() const;
    OvDbObjectId namedObjectsDictionaryId() const;

    Orvex::ErrorStatus getSymbolTable(OvDbLayerTable*& table, OvDb::OpenMode mode);
    Orvex::ErrorStatus getSymbolTable(OvDbLinetypeTable*& table, OvDb::OpenMode mode);
    Orvex::ErrorStatus getSymbolTable(OvDbBlockTable*& table, OvDb::OpenMode mode);
    Orvex::ErrorStatus getLayerTable(OvDbLayerTable*& table, OvDb::OpenMode mode);
    Orvex::ErrorStatus getLinetypeTable(OvDbLinetypeTable*& table, OvDb::OpenMode mode);
    Orvex::ErrorStatus getBlockTable(OvDbBlockTable*& table, OvDb::OpenMode mode);
    Orvex::ErrorStatus getNamedObjectsDictionary(OvDbDictionary*& dictionary, OvDb::OpenMode mode);

    OvDbObjectId continuousLinetype() const;
    OvDbObjectId byLayerLinetype() const;
    OvDbObjectId byBlockLinetype() const;
    OvDbObjectId modelSpaceId() const;
    OvDbObjectId paperSpaceId() const;
    // The space new entities go to: model space.
    OvDbObjectId currentSpaceId() const;

    // The current layer.
    OvDbObjectId clayer() const;
    // eInvalidInput unless the id names a live layer of this drawing.
    Orvex::ErrorStatus setClayer(OvDbObjectId id);

    OvDb::LineWeight getNearestLineWeight(int weight) const;

    // The modified status: non-zero once anything was written since the drawing was made,
    // read or saved. ovdbSetDbmod sets it.
    bool isModified() const;
    int dbmod() const;

    // Copies objects of this database under `owner`, a table of another database (or of
    // this one), at least linetype and layer records with their extension dictionaries;
    // a layer's linetype comes along. `duplicateRecordCloning` decides what a record of
    // a name the owner already holds does: 1 (and 0) keep the existing record and map to
    // it; 2 replaces its data and maps to it; 3 and 4 add the copy under the first free
    // name "$n$NAME". `deferTranslation` is accepted and ignored: references are mapped at
    // once.
    Orvex::ErrorStatus wblockCloneObjects(const OvDbObjectIdArray& ids, OvDbObjectId owner,
                                          OvDbIdMapping& mapping, int duplicateRecordCloning,
                                          bool deferTranslation = false);

    // The id of a handle; eKeyNotFound when no object has it. `createIfNotFound` is
    // accepted and ignored: ids are made only for objects.
    Orvex::ErrorStatus getOvDbObjectId(OvDbObjectId& id, bool createIfNotFound,
                                       const OvDbHandle& handle) const;
    // The next handle to be given out.
    OvDbHandle handseed() const;
    // Objects of the database, erased ones included.
    std::size_t approxNumObjects() const;
    // Objects of this database open now.
    std::size_t numOpenObjects() const;
    bool isNoDocument() const;
    // Number of this database in the session, never reused; names of entities carry it.
    std::int64_t sessionNumber() const;

private:
    friend class OvDbAccess;
    struct Impl;

    std::unique_ptr<Impl> d;
    QString m_fileName;
    std::wstring m_wideFileName;
    QString m_lastError;
    bool m_noDocument = false;
    std::int64_t m_session = 0;
};

// Sets the modified status of a database and returns the one it had; 0 for null.
int ovdbSetDbmod(OvDbDatabase* database, int value);
