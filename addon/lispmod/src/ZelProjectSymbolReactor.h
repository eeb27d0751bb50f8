#pragma once

#include "ovcore/OvApDocManagerReactor.h"

// Keeps GBL_wd_prj of a document in step with the active project when the document
// becomes the current one, since a project may have changed while it was in the
// background.
class ZelProjectSymbolReactor : public OvApDocManagerReactor {
public:
    void documentBecameCurrent(OvApDocument* doc) override;
};
