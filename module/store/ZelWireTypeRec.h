#pragma once

#include "store/WireLayerRec.h"

#include "ovdb/OvCmColor.h"
#include "ovdb/OvDbLineWeight.h"
#include "ovdb/OvDbObjectId.h"
#include "ovdb/OvDbOpenMode.h"
#include "ovdb/OvErrorStatus.h"
#include "zeldefun/ZelQvxBlockRef.h"

#include <QString>

#include <map>
#include <vector>

class OvDbDatabase;
class OvDbLayerTableRecord;
struct resbuf;

#define ZELWT_STORE_EXPORT __attribute__((visibility("default")))

// The wire types of the working drawing. A store object lives for one LISP call or one
// dialog; the drawing (layer table, dictionaries, the WD_M block) is the only lasting home
// of the data. The map is loaded on first need and never reloaded.
class ZELWT_STORE_EXPORT ZelWireTypeRec {
public:
    ZelWireTypeRec();
    ~ZelWireTypeRec();
    ZelWireTypeRec(const ZelWireTypeRec&) = delete;
    ZelWireTypeRec& operator=(const ZelWireTypeRec&) = delete;

    // Keys tie grid rows to records for one operation only; they are never stored.
    static long GetNextKey();
    static void ResetKey();

    void SetGenerateUsageData(bool generate);
    void GetUsrPropNames(std::vector<QString>& names);
    bool GetUserPropNamesFrmWdp(std::vector<QString>& names);
    bool FindLayerInMap(long key, QString& name);

    // The persistent form.
    bool RemoveWireTypeXrec(QString layerName);
    bool SetCurWireLayerXrec(QString defaultLayer, QString currentLayer, QString layerNameFormat,
                             bool makeAllValidWire);
    // The caller releases the chain with ovutRelRb.
    Orvex::ErrorStatus GetCurWireLayerXrec(resbuf*& chain);
    bool IsMakeAllValidWire();

    // The layer table. The caller of GetLayerTblRec closes `record` whenever it is not
    // null, whatever the result.
    bool GetLayerTblRec(QString name, OvDb::OpenMode mode, OvDbLayerTableRecord*& record);
    bool GetLayerInfo(QString name, OvDbDatabase* database, OvCmColor& color,
                      OvDbObjectId& linetype, OvDb::LineWeight& lineWeight, bool& inUse);
    Orvex::ErrorStatus AddNewLayer(WireLayerRec* rec);
    bool DeleteLayer(const wchar_t* name, bool erase);
    bool RenameLayer(const wchar_t* oldName, const wchar_t* newName);
    bool GetCurrentLayer(OvDbObjectId& id, QString& name);
    bool SetCurrentLayer(QString name);
    bool SetCurrentLayer(OvDbObjectId id);
    Orvex::ErrorStatus ValidateLayerName(QString name);
    bool GetNonWireLayers(std::vector<QString>& names);
    bool GetNonWireLayers(QString pattern, std::vector<QString>& names);
    void AddToNonWireLayers(QString name);
    void RemoveFrmNonWireLayers(QString name);

    // The WIRELAYS list of the WD_M block.
    bool AddtoWd_m(QString name, bool reset);
    bool RemoveFrmWd_m(QString name);
    bool IsInWd_m(QString name);
    bool IsInOtherDrawingWd_m(QString name, OvDbDatabase* database);
    bool GetWd_mLayerName(QString name, QString& pattern);
    bool RegenWd_m();
    long GetWireCount(QString layerName);

    // Adding and editing.
    Orvex::ErrorStatus AddNewWireType(long key, QString layerName, std::vector<QString>& propNames,
                                      std::vector<QString>& propValues, QString wireColor,
                                      QString wireSize, QString wireKind, OvCmColor color,
                                      OvDbObjectId linetypeId, OvDb::LineWeight lineWeight,
                                      long gridRow, bool wireFlag);
    Orvex::ErrorStatus EditWireType(QString layerName, QString wireColor, QString wireSize,
                                    std::vector<QString>& propNames,
                                    std::vector<QString>& propValues, QString wireKind,
                                    OvCmColor color, OvDbObjectId linetypeId,
                                    OvDb::LineWeight lineWeight, long gridRow, long key,
                                    bool wireFlag);
    Orvex::ErrorStatus EditWireType(QString layerName, std::vector<QString>& propNames,
                                    std::vector<QString>& propValues, QString wireColor,
                                    QString wireSize);
    Orvex::ErrorStatus UpdateWireTypeRec(std::map<int, WireLayerRec*>& records, long& key);
    bool GetWireTypeSettings(std::vector<QString>& names, int);
    bool GetWireTypeLayerInfo(QString drawingPath, QString layerName, short& colorIndex,
                              QString& linetypeName, short& lineWeight);

    // Loading, and the project database.
    bool GetDwgWireTypeInfo(QString drawingName, OvDbDatabase* database,
                            std::map<int, WireLayerRec*>& records);
    bool QueryWireType(QString drawingIndex, QString layerName, std::vector<QString>& result, int);
    const std::map<int, WireLayerRec*>& GetCurDwgWireTypeInfo();
    bool IsWireLayer(QString name);

    // The default wire type.
    bool GetFirstWireLayer(QString& name);
    bool AssignDefaultWireType(resbuf*& chain);
    bool ResetToDefWireType();

    static long m_nKey;

protected:
    bool SetWireTypeXrec(WireLayerRec* rec);
    bool SetWireTypeXrec();
    void FilterInvalidLayerName(QString& name);
    bool CheckDuplicateLayerName(long key, QString name);

private:
    // Puts a record into `records` under the key that the store's own map leaves free.
    // `key` 0 draws a new key.
    int InsertRecord(long key, WireLayerRec* rec, std::map<int, WireLayerRec*>& records);
    // The shortest leading part of `name` (at least three characters) that catches no
    // non-wire layer, closed with an asterisk unless the name itself collides.
    void ChoosePattern(const QString& name, qsizetype& length, QString& pattern,
                       bool& collides) const;
    void MatchProperties(WireLayerRec* rec, std::vector<QString>& propNames,
                         std::vector<QString>& propValues);
    bool ReadWireLays(ZelQvxBlockRef& blockRef, QString& value);

    std::map<int, WireLayerRec*> m_wireLayers;
    std::vector<QString> m_nonWireLayers;
    std::vector<QString> m_usrPropNames;
    bool m_bGenerateUsageData = true;
    ZelQvxBlockRef m_blockRef;
    bool m_bBlockRefOpen = false;
};
