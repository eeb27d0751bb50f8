#pragma once

#include "ovcore/OvApDocument.h"
#include "ovdb/OvRxObject.h"

// Told of what happens to documents. Attach with OvApDocManager::addReactor; a reactor may
// remove itself (or another) during a notification. Every notification is guarded: an
// exception is reported at the command line and the others are still told.
//
// The fourteen notifications, in slot order, and when they come:
//   1 documentCreateStarted      a new or opened document exists, its drawing not read yet
//   2 documentCreated            its drawing is read and every module had kLoadDwgMsg
//   3 documentToBeDestroyed      the document is about to go; it is still whole
//   4 documentDestroyed          it is gone; given its file name (empty if never saved)
//   5 documentCreateCanceled     the drawing could not be read; the document goes
//   6 documentLockModeWillChange a lock or unlock is requested; OvApDocManager::
//                                vetoLockModeChange() refuses it
//   7 documentLockModeChangeVetoed  a reactor refused it
//   8 documentLockModeChanged    the document has its new lock mode
//   9 documentBecameCurrent      the document is the current one
//  10 documentToBeActivated      a document is about to become the active one
//  11 documentToBeDeactivated    the active document is about to stop being active
//  12 documentActivationModified document activation was enabled (true) or disabled
//  13 documentActivated          the document is the active one
//  14 documentManagerToBeDestroyed  host shutdown, every document closed; afterwards
//                                ovDocManagerPtr() is null
//
// Sequences:
//   new or open:  1, [5 and stop], kLoadDwgMsg to modules, 2, then activation
//   activation:   11 (old active, if any), 10, 9, 13
//   close:        11 (if it was active), 3, [kUnloadDwgMsg to modules], 4, then, when it was
//                 active and documents remain, the activation of the last one opened
//   shutdown:     the close of every document, the last opened first, then 14
class OvApDocManagerReactor : public OvRxObject {
public:
    static OvRxClass* desc();
    static OvApDocManagerReactor* cast(OvRxObject* object);
    OvRxClass* isA() const override;

    ~OvApDocManagerReactor() override;

    virtual void documentCreateStarted(OvApDocument* docCreating);
    virtual void documentCreated(OvApDocument* docCreated);
    virtual void documentToBeDestroyed(OvApDocument* docToDestroy);
    virtual void documentDestroyed(const wchar_t* fileName);
    virtual void documentCreateCanceled(OvApDocument* docCreateCancelled);
    virtual void documentLockModeWillChange(OvApDocument* doc, OvAp::DocLockMode myCurrentMode,
                                            OvAp::DocLockMode myNewMode,
                                            const wchar_t* globalCmdName);
    virtual void documentLockModeChangeVetoed(OvApDocument* doc, const wchar_t* globalCmdName);
    virtual void documentLockModeChanged(OvApDocument* doc, OvAp::DocLockMode myPreviousMode,
                                         OvAp::DocLockMode myCurrentMode,
                                         const wchar_t* globalCmdName);
    virtual void documentBecameCurrent(OvApDocument* doc);
    virtual void documentToBeActivated(OvApDocument* activatingDoc);
    virtual void documentToBeDeactivated(OvApDocument* deactivatingDoc);
    virtual void documentActivationModified(bool activation);
    virtual void documentActivated(OvApDocument* activatedDoc);
    virtual void documentManagerToBeDestroyed();
};
