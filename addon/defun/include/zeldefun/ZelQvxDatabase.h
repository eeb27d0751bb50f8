#pragma once

#include <QString>

#include <cstdint>
#include <memory>

class OvDbDatabase;

// The drawing behind a block reference helper. A path that names a document open in the
// host reaches that document's live database, so that a write changes the drawing being
// edited (and marks it modified); any other path is read from its file into a side
// database that this object owns and deletes. A path that is neither fails the open.
//
// A side database is never saved: what is written to it lives as long as this object and
// no longer. A live database is the document's: this object only borrows it and stops
// reaching it when the document closes.
//
// A file already read in this process, and unchanged on disk since (same file, size,
// modification and change times), is not read again: the side database read then is
// shared, read-only, by every helper that opens that file. The first write through a
// helper gives that helper a copy of its own, read afresh from the file, so that nobody
// else ever sees it. A file changed on disk is read again.
class ZelQvxDatabase {
public:
    ZelQvxDatabase();
    virtual ~ZelQvxDatabase();
    ZelQvxDatabase(const ZelQvxDatabase&) = delete;
    ZelQvxDatabase& operator=(const ZelQvxDatabase&) = delete;

    // `sharing` is the caller's share mode (the module passes 32 and 64). A document is
    // shared with the host by nature, and a file is read whole and not held open, so the
    // mode decides nothing here; it is accepted for the callers' sake. `flag` (false from
    // every caller) is accepted likewise. Paths compare absolute and clean, then with links
    // resolved. True on success. An open on an object already open first ends the earlier
    // use.
    bool open(const QString& path, int sharing, bool flag);

    // Ends the use of the drawing: a side database is deleted, a live one let go.
    void closeDatabase();

    bool isOpen() const;
    // The drawing reached by the last successful open; null when none, and null once the
    // document of a live database has closed.
    OvDbDatabase* database() const;
    // True when the drawing is a document's live database.
    bool isLiveDocument() const;
    // The drawing, ready to be written: a side database shared with other helpers is
    // first replaced by a copy of this helper's own. Null when none or when the copy
    // cannot be read.
    OvDbDatabase* databaseForWrite();
    // Forgets every shared side database not in use; what is in use stays with its users.
    static void clearSharedDrawings();
    // The drawing of this file as it is on disk, never a document's live database, for
    // reading only: shared with every other reader in the process while the file stays
    // unchanged. Null, with `error` saying why, when the file cannot be read.
    static std::shared_ptr<OvDbDatabase> sharedFileDrawing(const QString& path, QString& error);
    QString path() const;
    // Why the last open failed; empty after a successful one.
    QString lastError() const;

private:
    OvDbDatabase* m_database = nullptr;
    std::shared_ptr<OvDbDatabase> m_sideDatabase;
    // The side database is shared through the process's cache of read drawings.
    bool m_sideShared = false;
    QString m_path;
    QString m_lastError;
    // The live database's session number: a document closed and another opened may reuse
    // the address, never the number.
    std::int64_t m_liveSession = 0;
};

// Name of the database's current space, as ZelQvxBlockRef::setSpace takes it
// ("*Model_Space" for the model space). Empty for a null database.
QString getSpace(OvDbDatabase* database);
