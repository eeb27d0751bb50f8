#pragma once

#include "ovcore/OvApDocManagerReactor.h"

#include <functional>

// Hands the document manager's news to the main window, whichever way a document came or
// went: the File menu, LISP, or a module.
class OvDocumentWatcher : public OvApDocManagerReactor {
public:
    std::function<void(OvApDocument*)> created;
    std::function<void(OvApDocument*)> toBeDestroyed;
    std::function<void(OvApDocument*)> activated;

    void documentCreated(OvApDocument* doc) override;
    void documentToBeDestroyed(OvApDocument* doc) override;
    void documentActivated(OvApDocument* doc) override;
};
