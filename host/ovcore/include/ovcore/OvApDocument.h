#pragma once

#include "ovcore/OvDrawingLock.h"

#include <QString>

#include <memory>

class OvDbDatabase;

namespace OvAp {
// How a document is locked for the code that works on it; bits, as the lock requests
// combine them.
enum DocLockMode : int {
    kNone = 0,
    kAutoWrite = 0x1,
    kNotLocked = 0x2,
    kWrite = 0x4,
    kProtectedAutoWrite = 0x8,
    kRead = 0x10,
    kXWrite = 0x20,
};
} // namespace OvAp

// A drawing open in the host: its database and the file it came from. Made and destroyed
// by the document manager only.
class OvApDocument {
public:
    ~OvApDocument();
    OvApDocument(const OvApDocument&) = delete;
    OvApDocument& operator=(const OvApDocument&) = delete;

    OvDbDatabase* database() const { return m_database.get(); }
    // The drawing file; empty for a drawing never saved (a new one, or one made from a
    // template).
    const QString& fileName() const { return m_fileName; }
    // The file's name without its folder, or "Drawing<n>.dwg" for a drawing never saved.
    const QString& docTitle() const { return m_title; }
    // Opened read-only, on request or because another process holds the drawing's lock.
    // Saving to its own file is refused; save as another file is allowed.
    bool isReadOnly() const { return m_readOnly; }
    OvAp::DocLockMode myLockMode() const { return m_lockMode; }
    bool isLocked() const { return m_lockMode != OvAp::kNotLocked; }

private:
    friend class OvApDocManager;
    OvApDocument(std::unique_ptr<OvDbDatabase> database, const QString& title);

    std::unique_ptr<OvDbDatabase> m_database;
    QString m_fileName;
    QString m_title;
    bool m_readOnly = false;
    OvDrawingLock m_drawingLock; // held while we may write m_fileName
    bool m_closing = false;
    OvAp::DocLockMode m_lockMode = OvAp::kNotLocked;
};
