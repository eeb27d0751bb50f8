#include "ZelProjectSymbolReactor.h"

#include "ZelProjectFunctions.h"

void ZelProjectSymbolReactor::documentBecameCurrent(OvApDocument* doc) {
    if (doc)
        zelPutProjectSymbol();
}
