#pragma once

#include "ovdb/OvDbObjectId.h"
#include "ovdb/OvGePoint3d.h"
#include "ovdb/ovdbOpenObject.h"
#include "ovdb/ovut.h"
#include "ovdb/resbuf.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class OvDbDatabase;
class OvDbObject;

// The CAD LISP drawing functions on group-code chains, as the host's Scheme procedures
// (cadLisp.cpp) and the editor input (edinput.cpp) use them. Every function opens and
// closes what it needs within the call and works on the working database unless it is
// given a name of another one.
//
// A function that refuses its request says why in `error`; an empty error with a null or
// false result is a plain "nothing" (no such record, end of a walk), which LISP shows as nil
// without a message.
namespace ovcore::cad {

struct ChainDeleter {
    void operator()(resbuf* chain) const { ovutRelRb(chain); }
};
using Chain = std::unique_ptr<resbuf, ChainDeleter>;

// An open object that closes itself.
template <class T> class Opened {
public:
    Opened() = default;
    ~Opened() { reset(); }
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;

    Orvex::ErrorStatus open(OvDbObjectId id, OvDb::OpenMode mode, bool openErased = false) {
        reset();
        return ovdbOpenObject(m_object, id, mode, openErased);
    }
    // Takes an object that a call left open (an add, an append, a table getter).
    void adopt(T* object) {
        reset();
        m_object = object;
    }
    T*& slot() {
        reset();
        return m_object;
    }
    void reset() {
        if (m_object)
            m_object->close();
        m_object = nullptr;
    }
    T* get() const { return m_object; }
    T* operator->() const { return m_object; }
    explicit operator bool() const { return m_object != nullptr; }

private:
    T* m_object = nullptr;
};

// The subclass marker (100 . "OvDbXrecord") that entget writes before an xrecord's data,
// and that entmake and entmod look for.
inline constexpr char16_t kXrecordMarker[] = u"OvDbXrecord";

// --- Names

// The drawing the functions work on; null (with a message) when none is open.
OvDbDatabase* workingDatabase(QString* error);

// The object a name stands for, erased or not. A SEQEND name stands for no object.
bool idOfName(const ov_name name, OvDbObjectId& id, QString* error);
bool nameOfId(OvDbObjectId id, ov_name name);
// The end marker of an INSERT's attributes has no object of its own: its name is the
// INSERT's with a flag in the handle word that no real handle reaches, so that every other
// part of the host refuses it as a dead name.
void seqendName(OvDbObjectId insert, ov_name name);
bool isSeqendName(const ov_name name);
OvDbObjectId seqendOwner(const ov_name name);
// For messages: "the entity with handle 1F".
QString describeName(const ov_name name);

// --- Entities and objects

// entget: the object's data as group codes; the -1 link holds `name` as given.
Chain entityData(const ov_name name, QString* error);
// A point of the entity to stand for a pick on it: a line's start, an insert's position.
bool referencePoint(OvDbObjectId id, OvGePoint3d& point);

// entmake. `made` is set when the data finished an object (and zeroed when it only
// started or continued an INSERT with attributes, which SEQEND finishes).
bool makeEntity(const resbuf* data, ov_name made, bool* finished, QString* error);
// entmakex: an unowned DICTIONARY or XRECORD, or an entity or table record that one call
// makes whole. RTNORM with its name.
bool makeObject(const resbuf* data, ov_name made, QString* error);
// The collected INSERT, if any, is dropped.
void discardPendingInsert();

// entdel: erases a live entity, or brings back an erased one.
bool deleteEntity(const ov_name name, QString* error);
// entlast: the last live main entity of model space.
bool lastEntity(ov_name name);
// entnext: the first entity of model space for a null `from`, else the one after it,
// through an INSERT's attributes and SEQEND.
bool nextEntity(const ov_name from, ov_name next, QString* error);

// entmod: changes the entity or record that the (-1 . name) group names by the other groups
// of `data`; groups it does not hold keep their values.
bool modifyObject(const resbuf* data, QString* error);
// entupd: true for a live entity.
bool updateEntity(const ov_name name, QString* error);
// handent: the object of the working drawing with that handle, erased ones included. False
// without an error when no object has it.
bool handleEntity(const QString& handle, ov_name name, QString* error);
// regapp: 1 when newly registered in the working drawing, 0 when it was already, -1 with an
// error for a bad name or no drawing.
int registerApplication(const QString& application, QString* error);
// The live main entities of model space, in drawing order (attributes are part of their
// INSERT).
std::vector<OvDbObjectId> modelSpaceEntities(QString* error);

// --- Tables

// "LAYER", "LTYPE" or "BLOCK" (any case). `setNext` makes tableNext continue after it.
Chain tableSearch(const QString& table, const QString& name, bool setNext, QString* error);
Chain tableNext(const QString& table, bool rewind, QString* error);
// tblobjname: the record's name; false without an error when there is no such record.
bool tableObjectName(const QString& table, const QString& name, ov_name result, QString* error);
// Names of the live layers in table order.
QStringList layerNames(QString* error);

// --- Dictionaries

bool namedObjectsDictionary(ov_name name, QString* error);
Chain dictSearch(const ov_name dictionary, const QString& key, bool setNext, QString* error);
bool dictAdd(const ov_name dictionary, const QString& key, const ov_name object, QString* error);
bool dictRemove(const ov_name dictionary, const QString& key, ov_name removed, QString* error);
Chain dictNext(const ov_name dictionary, bool rewind, QString* error);
// The object's extension dictionary; made first when `create` and there is none. False
// without an error when there is none and none was asked for.
bool extensionDictionary(const ov_name object, bool create, ov_name dictionary, QString* error);

// --- System variables

Chain getVar(const QString& name, QString* error);
// `value` is one link. DBMOD takes only 0.
bool setVar(const QString& name, const resbuf* value, QString* error);

} // namespace ovcore::cad
