#include "ovcore/OvApDocument.h"

#include "ovdb/OvDbDatabase.h"

OvApDocument::OvApDocument(std::unique_ptr<OvDbDatabase> database, const QString& title)
    : m_database(std::move(database)), m_title(title) {}

OvApDocument::~OvApDocument() = default;
