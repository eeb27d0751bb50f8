#pragma once

#include "ovdb/OvDbObjectId.h"
#include "ovdb/OvErrorStatus.h"

#include <QString>

class OvDbDatabase;
struct resbuf;

// Builds and reads drawings for tests, straight through the host's object model. Every
// helper closes what it opens; a failing host call fails the test.
class ZelTestDrawing {
public:
    // A layer with an index colour; the id of the one already there under that name.
    static OvDbObjectId addLayer(OvDbDatabase* database, const QString& name, int colorIndex = 7);
    // A line in model space on a layer.
    static OvDbObjectId addLine(OvDbDatabase* database, const QString& layer);
    // The add-on's WD_M block: a reference with WIRELAYS and a few other settings.
    static OvDbObjectId addWdmBlock(OvDbDatabase* database, const QString& wireLayers);
    // The text of an attribute of a reference; empty when missing.
    static QString attributeText(OvDbObjectId reference, const QString& tag);

    // Puts an xrecord holding a copy of `chain` under `key` in the extension dictionary of
    // `owner`, made if missing.
    static Orvex::ErrorStatus setExtensionRecord(OvDbObjectId owner, const QString& key,
                                                 const resbuf* chain);
    // The data of that xrecord for the caller (ovutRelRb); null when missing.
    static resbuf* extensionRecord(OvDbObjectId owner, const QString& key);
    // Puts an xrecord under `key` in the dictionary `dictionary` of the named objects
    // dictionary, made if missing.
    static Orvex::ErrorStatus setNamedRecord(OvDbDatabase* database, const QString& dictionary,
                                             const QString& key, const resbuf* chain);
    // The data of that xrecord for the caller (ovutRelRb); null when missing.
    static resbuf* namedRecord(OvDbDatabase* database, const QString& dictionary,
                               const QString& key);

    static bool save(OvDbDatabase* database, const QString& path);
};
