#include "lisp/ZelLispArgs.h"

#include "store/ZelWireTypeRec.h"

#include "ovdb/OvDbHostApplicationServices.h"
#include "ovdb/ovut.h"
#include "ovdb/resbuf.h"
#include "platform/Resources.h"

#include <vector>

namespace zellisp {

ChainPtr adoptChain(resbuf* chain) {
    return ChainPtr(chain, ovutRelRb);
}

resbuf* appendChain(ChainPtr& head, resbuf* tail, resbuf* links) {
    if (!head) {
        head.reset(links);
    } else {
        if (!tail)
            tail = head.get();
        while (tail->rbnext)
            tail = tail->rbnext;
        tail->rbnext = links;
    }
    if (!tail)
        tail = head.get();
    while (tail && tail->rbnext)
        tail = tail->rbnext;
    return tail;
}

QString lispString(const resbuf* link) {
    if (!link || link->restype != RTSTR || !link->resval.rstring)
        return QString();
    return QString::fromWCharArray(link->resval.rstring);
}

QString linkText(const resbuf* link) {
    if (!link || !link->resval.rstring)
        return QString();
    const OvRbValueKind kind = ovutValueKind(link->restype);
    if (kind != OvRbValueKind::String && kind != OvRbValueKind::Handle)
        return QString();
    return QString::fromWCharArray(link->resval.rstring);
}

const resbuf* skipListBegin(const resbuf* link) {
    return link && link->restype == RTLB ? link->rbnext : link;
}

OvDbDatabase* workingDatabase() {
    static OvDbHostApplicationServices* const services = OvDbHostApplicationServices::getRefPtr();
    return services ? services->workingDatabase() : nullptr;
}

void readCurrentRecord(const resbuf* chain, QString& defaultLayer, QString& currentLayer,
                       bool* makeAllValidWire) {
    if (makeAllValidWire)
        *makeAllValidWire = false;
    if (!chain)
        return;
    if (chain->restype == 1)
        defaultLayer = linkText(chain);
    const resbuf* second = chain->rbnext;
    if (!second)
        return;
    if (second->restype == 1)
        currentLayer = linkText(second);
    if (!makeAllValidWire)
        return;
    // The third element, the name format, is stepped over unread.
    const resbuf* fourth = second->rbnext ? second->rbnext->rbnext : nullptr;
    if (fourth && fourth->restype == 290)
        *makeAllValidWire = fourth->resval.rint != 0;
}

QString createDefaultWireType(ZelWireTypeRec& store) {
    const QString name = platform::loadString(110);
    std::vector<QString> noNames;
    std::vector<QString> noValues;
    store.AddNewWireType(0, name, noNames, noValues, QString(), QString(), QStringLiteral("WIRE"),
                         OvCmColor(), OvDbObjectId(), OvDb::kLnWtByLwDefault, 0, true);
    store.SetCurWireLayerXrec(name, name, QString(), false);
    ovutPrintf(L"\n%ls", platform::loadString(156).toStdWString().c_str());
    return name;
}

} // namespace zellisp
