#pragma once

#include "shell/CDocData.h"
#include "shell/OvApDataManager.h"

// The module's per-document data manager. Its one object lives beside the application
// object, from the module's load to its unload; nothing stores data in it yet, and its one
// live duty is to drop a document's entry when the document goes.
using ZelDocDataManager = OvApDataManager<CDocData>;

extern template class OvApDataManager<CDocData>;
