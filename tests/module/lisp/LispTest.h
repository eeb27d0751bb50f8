#pragma once

#include "lisp/ZelLispFunctions.h"
#include "store/ZelWireTypeRec.h"
#include "support/ZelTestDrawing.h"
#include "support/ZelTestHost.h"
#include "support/ZelTestProject.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/oved.h"
#include "ovdb/ovdb.h"

#include <QStringList>

#include <optional>

// A host with a saved drawing as the active document and the module's read and write
// functions defined in it under their numbers, called from LISP as the add-on calls them.
// The add-on's reread of the drawing settings is a stub that counts its calls.
class LispTest : public ZelTestHost {
protected:
    void SetUp() override {
        ZelTestHost::SetUp();
        ZelWireTypeRec::ResetKey();
    }

    // Layers in this order after "0", and a WD_M block with `wireLays` unless it is nullopt.
    OvDbDatabase* makeDrawing(const QStringList& layers,
                              const std::optional<QString>& wireLays = QString(),
                              const QString& fileName = QStringLiteral("drawing.dwg")) {
        OvApDocument* document = newDocument();
        OvDbDatabase* database = document->database();
        for (const QString& layer : layers)
            ZelTestDrawing::addLayer(database, layer);
        m_wdm = wireLays ? ZelTestDrawing::addWdmBlock(database, *wireLays) : OvDbObjectId();
        EXPECT_EQ(ovDocManagerPtr()->saveDocumentAs(document, tempPath(fileName)), Orvex::eOk);
        defineFunctions();
        return database;
    }

    static void defineFunctions() {
        static const int module = 0;
        struct Entry {
            const wchar_t* name;
            int (*handler)();
            int number;
        };
        static const Entry entries[] = {
            {L"zel_get_current_wiretype", zel_get_current_wiretype, 2},
            {L"zel_reset_current_wiretype", zel_reset_current_wiretype, 3},
            {L"zel_get_wiretype_settings", zel_get_wiretype_settings, 4},
            {L"zel_query_wiretype", zel_query_wiretype, 5},
            {L"zel_add_wiretype", zel_add_wiretype, 6},
            {L"zel_edit_wiretype", zel_edit_wiretype, 7},
            {L"zel_set_current_wiretype", zel_set_current_wiretype, 9},
            {L"zel_get_active_dwg_wiretype", zel_get_active_dwg_wiretype, 10},
            {L"zel_remove_wiretype", zel_remove_wiretype, 11},
            {L"zel_set_default_wiretype", zel_set_default_wiretype, 12},
            {L"zel_get_default_wiretype", zel_get_default_wiretype, 13},
            {L"zel_get_dwg_wiretype_settings", zel_get_dwg_wiretype_settings, 14},
            {L"zel_get_wiretype_layer_info", zel_get_wiretype_layer_info, 15},
        };
        ovcore::lisp::setActiveModule(&module, nullptr);
        for (const Entry& entry : entries) {
            ovedDefun(entry.name, entry.number);
            ovedRegFunc(entry.handler, entry.number);
        }
        ovcore::lisp::setActiveModule(nullptr, nullptr);
        ovcore::lisp::evalString("(setq rereads 0)"
                                 "(defun c:wd_reread_dwg_params () (setq rereads (1+ rereads)))"
                                 "(vl-orvex-defun 'c:wd_reread_dwg_params)");
    }

    // The value of a LISP expression in LISP notation; an error fails the test.
    QString lisp(const QString& text) { return evalLisp(text).value; }

    // A call that is to fail with the error its handler reports.
    void expectFailure(const QString& text) {
        const ovcore::lisp::EvalResult result = ovcore::lisp::evalString(text);
        EXPECT_FALSE(result.ok) << text.toStdString();
        EXPECT_TRUE(result.error.contains("the function reported an error"))
            << text.toStdString() << ": " << result.error.toStdString();
    }

    // A project that does not hold the drawing: the 20 default user property names.
    void openDefaultNamesProject() {
        openProject(ZelTestProject::write(tempPath("project"), "defaults", {}, QString()));
    }

    QString wireLays() const {
        return ZelTestDrawing::attributeText(m_wdm, QStringLiteral("WIRELAYS"));
    }

    static OvDbObjectId layerId(OvDbDatabase* database, const QString& name) {
        OvDbLayerTable* table = nullptr;
        OvDbObjectId id;
        if (database->getLayerTable(table, OvDb::kForRead) == Orvex::eOk) {
            table->getIdAt(name, id);
            table->close();
        }
        return id;
    }

    static QString notation(resbuf* chain) {
        const QString text = chain ? ovcore::lisp::toLispNotation(chain) : QString();
        ovutRelRb(chain);
        return text;
    }

    // The wire type record of a layer in LISP notation; empty when it has none.
    static QString wireRecord(OvDbDatabase* database, const QString& layer) {
        return notation(ZelTestDrawing::extensionRecord(layerId(database, layer),
                                                        QStringLiteral("ZEL_WIRETYPE")));
    }

    static QString currentRecord(OvDbDatabase* database) {
        return notation(ZelTestDrawing::namedRecord(database, QStringLiteral("ZEL_WIRETYPE"),
                                                    QStringLiteral("CURRENT_WIRELAY")));
    }

    static void setCurrentRecord(OvDbDatabase* database, const QString& defaultLayer,
                                 const QString& currentLayer, bool makeAllValidWire = false) {
        resbuf* chain =
            ovutBuildList(1, defaultLayer.toStdWString().c_str(), 1,
                          currentLayer.toStdWString().c_str(), 1, L"", 290, makeAllValidWire, 0);
        ZelTestDrawing::setNamedRecord(database, QStringLiteral("ZEL_WIRETYPE"),
                                       QStringLiteral("CURRENT_WIRELAY"), chain);
        ovutRelRb(chain);
    }

    static QString clayerName(OvDbDatabase* database) {
        OvDbLayerTableRecord* layer = nullptr;
        if (ovdbOpenObject(layer, database->clayer(), OvDb::kForRead) != Orvex::eOk)
            return QString();
        const QString name = layer->name();
        layer->close();
        return name;
    }

    OvDbObjectId m_wdm;
};
