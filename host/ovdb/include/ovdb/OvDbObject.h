#pragma once

#include "ovdb/OvDbObjectId.h"
#include "ovdb/OvDbOpenMode.h"
#include "ovdb/OvErrorStatus.h"
#include "ovdb/OvRxObject.h"

#include <cstddef>
#include <new>
#include <vector>

class OvDbAccess;
class OvDbDwgReader;
class OvDbDwgWriter;

namespace Orvex {
// An object the drawing cannot do without (a table, the named objects dictionary, layer
// "0", the current layer, the standard linetypes and spaces) refuses to be erased.
inline constexpr ErrorStatus eCannotBeErasedByCaller = static_cast<ErrorStatus>(78);
} // namespace Orvex

// Base of every object of a drawing database.
//
// A new object belongs to whoever made it and is open for write until it is added to a
// database (by a table, a dictionary or a block); a new object never added is deleted with
// a plain `delete`. Once added, the database owns it: it is reached by ovdbOpenObject,
// many readers or one writer at a time, and every open ends with close(). An object is
// not to be used after close(); doing so is recorded as a protocol violation.
class OvDbObject : public OvRxObject {
public:
    static OvRxClass* desc();
    static OvDbObject* cast(OvRxObject* object);
    OvRxClass* isA() const override;

    ~OvDbObject() override;
    OvDbObject(const OvDbObject&) = delete;
    // Objects come from pools of the database library, sized to them (OvDbMemory.cpp).
    static void* operator new(std::size_t size);
    static void* operator new(std::size_t size, const std::nothrow_t&) noexcept;
    static void operator delete(void* object, std::size_t size);
    OvDbObject& operator=(const OvDbObject&) = delete;

    OvDbObjectId objectId() const;
    OvDbObjectId ownerId() const;
    OvDbDatabase* database() const;
    // True until the object is added to a database.
    bool isNewObject() const { return m_stub == nullptr; }

    Orvex::ErrorStatus close();
    // From one read to write: eWasOpenForRead when other readers hold it.
    Orvex::ErrorStatus upgradeOpen();
    Orvex::ErrorStatus downgradeOpen();

    // erase(false) revives an erased object, and with it what was erased along.
    Orvex::ErrorStatus erase(bool erasing = true);
    bool isErased() const;

    bool isReadEnabled() const;
    bool isWriteEnabled() const;
    bool isNotifyEnabled() const;
    // Record a protocol violation when the object is not open as needed; they never throw.
    bool assertReadEnabled() const {
        // Asked by every getter: the open object answers without a call.
        return m_writer || m_readers > 0 || m_notifiers > 0 || reportNotReadEnabled();
    }
    bool assertWriteEnabled() const;

    // Null when the object has none; may name an erased dictionary.
    OvDbObjectId extensionDictionary() const;
    // Needs the object in a database and open for write. eAlreadyInDb when a live one exists.
    Orvex::ErrorStatus createExtensionDictionary();

protected:
    OvDbObject();

    // The class's say on an erase (true) or unerase (false); eOk lets it go ahead.
    virtual Orvex::ErrorStatus subErase(bool erasing);
    // Objects owned by this one, other than its extension dictionary: erased with it.
    virtual void ownedObjects(std::vector<OvDbObjectId>& ids) const;
    // The object's fields in a drawing file. References go through the filer as handles.
    virtual void writeFields(OvDbDwgWriter& out) const;
    virtual Orvex::ErrorStatus readFields(OvDbDwgReader& in);
    // Called once the object is in a database (added, appended or read).
    virtual void addedToDatabase();

private:
    friend class OvDbAccess;

    bool reportNotReadEnabled() const;

    // Pointers first and the small fields together: a drawing holds a million objects,
    // and padding between them would cost 16 bytes each.
    OvDbStub* m_stub = nullptr;
    OvDbStub* m_owner = nullptr;
    OvDbObjectId m_xdict;
    // Place in the process-wide list of open objects.
    OvDbObject* m_openPrev = nullptr;
    OvDbObject* m_openNext = nullptr;
    int m_readers = 0;
    int m_notifiers = 0;
    bool m_writer = true;
    bool m_inOpenList = false;
};
