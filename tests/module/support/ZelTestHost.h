#pragma once

#include "ovcore/OvHost.h"
#include "ovcore/OvLisp.h"
#include "ovdb/OvDbObjectId.h"
#include "ovdb/OvErrorStatus.h"
#include "platform/MessageBoxScript.h"
#include "support/ZelTestPrinters.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class OvApDocument;
class OvDbDatabase;
class ZelWireTypeRec;
struct WireLayerRec;

// A test with a running host: the module's resources attached (ZelWireTypeRes.so beside the
// test program), the command line captured, message boxes answered from a script, the
// per-user folders redirected into a temporary folder, no project active, the store's key
// counter reset. At the end of each test no database object may be open and no call may
// have left one open.
class ZelTestHost : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // A new drawing (the host's default one), which becomes the active and current
    // document; its database is the working database.
    OvApDocument* newDocument();
    // Opens a drawing file into a new active document; null (and a test failure) when the
    // host refuses it.
    OvApDocument* openDocument(const QString& path);
    OvApDocument* activeDocument() const;
    OvDbDatabase* workingDatabase() const;
    void closeAllDocuments();

    // Evaluates LISP text in the current document; a failure fails the test.
    ovcore::lisp::EvalResult evalLisp(const QString& text);

    // What ovutPrintf printed since the start or the last clear.
    QString output() const;
    void clearOutput();

    // Opens a project file as the active project; false (and a test failure) when refused.
    bool openProject(const QString& projectFile);

    // A path in the test's own temporary folder, its folder made.
    QString tempPath(const QString& name) const;
    // The folder of the test program (build/bin).
    static QString programFolder();

    platform::MessageBoxScript& messages() { return *m_messages; }

public:
    // The module's sixteen LISP functions, under its numbers, in the current document.
    static void defineModuleFunctions();
    static QStringList moduleFunctionNames();
    // A string of the module's resource library.
    static QString moduleString(unsigned id);

    // A new active drawing with these layers after "0" and a WD_M block holding `wireLays`
    // (none when nullopt), saved in the temporary folder: the store reaches WD_M through the
    // document's file.
    OvDbDatabase* makeDrawing(const QStringList& layers,
                              const std::optional<QString>& wireLays = QString(),
                              const QString& fileName = QStringLiteral("drawing.dwg"));
    // WIRELAYS of the last drawing made.
    QString wireLays() const;
    // A project that does not hold the drawing: the 20 default user property names.
    void openDefaultNamesProject();
    // A project that does not hold the drawing, with a database of the two wire type tables
    // filled by `inserts`.
    void openWireTypeProject(const char* inserts);

    static OvDbObjectId layerId(OvDbDatabase* database, const QString& name);
    static QString clayerName(OvDbDatabase* database);
    // The wire type record of a layer in LISP notation; empty when it has none.
    static QString wireRecord(OvDbDatabase* database, const QString& layer);
    // The current wire layer record as "default|current|format|flag"; "none" when missing.
    static QString currentRecord(OvDbDatabase* database);
    static void setCurrentRecord(OvDbDatabase* database, const QString& defaultLayer,
                                 const QString& currentLayer, bool makeAllValidWire = false,
                                 const QString& format = QString());
    // The store's record of a layer, loading the map; null when it has none.
    static const WireLayerRec* record(ZelWireTypeRec& store, const QString& layer);
    static QStringList layerNames(const std::map<int, WireLayerRec*>& records);
    // A wire type as the LISP side adds one: no look of its own, the next key unless given.
    static Orvex::ErrorStatus addWireType(ZelWireTypeRec& store, const QString& name,
                                          std::vector<QString> names = {},
                                          std::vector<QString> values = {}, long key = 0);

private:
    OvHost m_host;
    std::string m_output;
    std::unique_ptr<QTemporaryDir> m_temp;
    std::unique_ptr<platform::MessageBoxScript> m_messages;
    QByteArray m_oldDataHome;
    QByteArray m_oldConfigHome;
    QString m_oldCurrent;
    OvDbObjectId m_wdm;
};
