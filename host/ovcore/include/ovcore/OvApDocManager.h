#pragma once

#include "ovcore/OvApDocument.h"
#include "ovdb/OvErrorStatus.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class OvApDocManagerReactor;

// The documents of the host. The current document is the one whose database is the
// working database and in which LISP runs; the active one is the one the user works in.
// They are the same except for the short spells in which the host makes another document
// current to call modules for it.
//
// Failures return a status and leave lastErrorMessage(); what the user must know (a
// drawing opened read-only) is also said at the command line. Reactors and the order of
// their notifications: OvApDocManagerReactor.h.
class OvApDocManager {
public:
    // Host start and shutdown (OvHost). Destroying closes every document.
    static OvApDocManager* create();
    static void destroy();

    ~OvApDocManager();
    OvApDocManager(const OvApDocManager&) = delete;
    OvApDocManager& operator=(const OvApDocManager&) = delete;

    OvApDocument* curDocument() const { return m_current; }
    OvApDocument* mdiActiveDocument() const { return m_active; }
    int documentCount() const { return static_cast<int>(m_documents.size()); }
    // In the order they were opened.
    QList<OvApDocument*> documents() const;
    OvApDocument* document(const OvDbDatabase* database) const;
    // The document showing a file; paths compare after resolving links.
    OvApDocument* documentForFile(const QString& path) const;

    // A new drawing, from a template file (.dwt or .dwg) or, with none, the host's default
    // drawing. Its fileName stays empty until it is saved. Becomes the active document.
    Orvex::ErrorStatus newDocument(const QString& templatePath = {},
                                   OvApDocument** created = nullptr);
    // Opens a drawing file into a new document, which becomes the active one. A drawing
    // whose lock file names another live process opens read-only. On failure there is no
    // document, and lastErrorMessage says why.
    Orvex::ErrorStatus openDocument(const QString& path, OvApDocument** opened = nullptr,
                                    bool readOnly = false);
    // eInvalidInput for a document not of this manager or already closing.
    Orvex::ErrorStatus closeDocument(OvApDocument* doc);
    Orvex::ErrorStatus closeAllDocuments();
    // eNotApplicable while activation is disabled.
    Orvex::ErrorStatus activateDocument(OvApDocument* doc);
    Orvex::ErrorStatus setCurDocument(OvApDocument* doc);
    // To the document's own file: eInvalidInput for a drawing never saved, eFileAccessErr
    // for a read-only one.
    Orvex::ErrorStatus saveDocument(OvApDocument* doc);
    // To another file, which becomes the document's file and takes its lock; refused when
    // another process holds that file's lock.
    Orvex::ErrorStatus saveDocumentAs(OvApDocument* doc, const QString& path);

    // Lock mode requests; a reactor may refuse one during documentLockModeWillChange
    // (eNotApplicable).
    Orvex::ErrorStatus lockDocument(OvApDocument* doc, OvAp::DocLockMode mode,
                                    const wchar_t* globalCmdName = nullptr);
    Orvex::ErrorStatus unlockDocument(OvApDocument* doc, const wchar_t* globalCmdName = nullptr);
    void vetoLockModeChange() { m_lockVetoed = true; }

    Orvex::ErrorStatus disableDocumentActivation();
    Orvex::ErrorStatus enableDocumentActivation();
    bool isDocumentActivationEnabled() const { return m_activationEnabled; }

    // Adding a reactor twice adds it once; removing one not added is harmless.
    void addReactor(OvApDocManagerReactor* reactor);
    void removeReactor(OvApDocManagerReactor* reactor);

    QString lastErrorMessage() const { return m_lastError; }

    // The per-document start-up: LISP files loaded, in the order given, into every document
    // opened from now on, with the document current and before any module gets its
    // kLoadDwgMsg for it, so that a module's drawing-load code finds what they define (the
    // add-on's Scheme functions). A file that fails is reported at the command line and
    // counted; the document opens all the same.
    void setStartupLispFiles(const QStringList& files) { m_startupLispFiles = files; }
    QStringList startupLispFiles() const { return m_startupLispFiles; }
    int startupLispFailures() const { return m_startupLispFailures; }

private:
    friend class OvModuleLoader;
    OvApDocManager();

    bool owns(const OvApDocument* doc) const;
    Orvex::ErrorStatus fail(Orvex::ErrorStatus status, const QString& message);
    Orvex::ErrorStatus addDocument(std::unique_ptr<OvApDocument> doc);
    void loadStartupLisp(OvApDocument* doc);
    void makeActive(OvApDocument* doc);
    // Makes a document current without telling reactors, for a call into the modules made
    // for it; returns the document current before.
    OvApDocument* switchContext(OvApDocument* doc);
    QString nextTitle();
    template <typename F> void notify(F&& notification);

    std::vector<std::unique_ptr<OvApDocument>> m_documents;
    std::vector<OvApDocManagerReactor*> m_reactors;
    OvApDocument* m_current = nullptr;
    OvApDocument* m_active = nullptr;
    QString m_lastError;
    QStringList m_startupLispFiles;
    int m_startupLispFailures = 0;
    int m_untitled = 0;
    bool m_activationEnabled = true;
    bool m_lockVetoed = false;
    bool m_destroying = false;
};

// The host's document manager: there from host start, null once the host has torn it
// down at shutdown.
OvApDocManager* ovDocManagerPtr();
