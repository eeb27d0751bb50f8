#include "OvDocumentWatcher.h"

void OvDocumentWatcher::documentCreated(OvApDocument* doc) {
    if (created)
        created(doc);
}

void OvDocumentWatcher::documentToBeDestroyed(OvApDocument* doc) {
    if (toBeDestroyed)
        toBeDestroyed(doc);
}

void OvDocumentWatcher::documentActivated(OvApDocument* doc) {
    if (activated)
        activated(doc);
}
