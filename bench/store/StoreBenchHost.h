#pragma once

#include "ovcore/OvHost.h"
#include "ovdb/OvDbObjectId.h"

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

class OvApDocument;
class OvDbDatabase;

// A host started in-process with one drawing saved to a temporary file, so that the store
// reaches its WD_M block. The command line and message boxes go nowhere.
class StoreBenchHost {
public:
    StoreBenchHost();
    ~StoreBenchHost();
    StoreBenchHost(const StoreBenchHost&) = delete;
    StoreBenchHost& operator=(const StoreBenchHost&) = delete;

    OvDbDatabase* database() const;
    // Layers, each with a wire type record when `wireTypes` is set.
    void addLayers(const QStringList& names, bool wireTypes);
    // The WD_M block with its WIRELAYS attribute; saves the drawing to give it a file.
    void addWdmAndSave(const QString& wireLays);
    void setWireLays(const QString& wireLays);
    QString wireLays() const;

private:
    OvHost m_host;
    QTemporaryDir m_folder;
    OvApDocument* m_document = nullptr;
    OvDbObjectId m_wireLaysAttribute;
};

// "PREFIX0000" to "PREFIX<count-1>", four digits.
QStringList numberedNames(const QString& prefix, int count);
