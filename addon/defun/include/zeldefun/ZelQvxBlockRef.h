#pragma once

#include "zeldefun/ZelQvxDatabase.h"

#include <QString>

#include <cstdint>

class OvDbObjectId;

// Reaches a block reference of a drawing by its block name, and reads or writes its
// attributes. No database object stays open between two calls: `find` keeps the
// reference's handle, and each attribute call opens and closes what it needs, so the
// helper can be held across commands and LISP calls.
class ZelQvxBlockRef : public ZelQvxDatabase {
public:
    ZelQvxBlockRef();
    ~ZelQvxBlockRef() override;

    // The space (block table record) in which `find` looks, by name; empty means the
    // model space.
    void setSpace(const QString& spaceName);
    QString space() const;

    // Finds the first reference of the named block (names compare without regard to case)
    // in the space set, in drawing order, erased references skipped. `param` (0 from every
    // caller) and `mode` (0, read) are accepted for the callers' sake: the search always
    // takes the first reference and only reads. True on success; the reference found is
    // the one the attribute calls use. A failed find forgets an earlier one.
    bool find(const QString& blockName, int param, int mode);
    bool isFound() const;

    // Reads the text of the attribute with this tag (without regard to case) of the
    // reference found. False when nothing was found, the reference is gone or the tag is
    // missing; `value` is then left as it was. `flag` (true from every caller) is accepted
    // for the callers' sake.
    bool getAttributeTextString(const QString& tag, QString& value, bool flag);
    // Writes it, opening the reference and the attribute for write; false when nothing was
    // found, the reference is gone or busy, or the tag is missing. `flag` as above.
    bool setAttributeTextString(const QString& tag, const QString& value, bool flag);

    // Ends the use: forgets the reference found and closes the drawing.
    void close();

private:
    // The id of the reference found, if it is still in the drawing that was searched.
    bool foundReference(OvDbObjectId& id) const;
    bool accessAttribute(const QString& tag, QString* read, const QString* write);

    QString m_space;
    std::uint64_t m_foundHandle = 0;
    bool m_found = false;
    // Session number of the database searched: a handle means nothing in another drawing.
    std::int64_t m_foundSession = 0;
};
