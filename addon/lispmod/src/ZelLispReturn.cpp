#include "ZelLispReturn.h"

#include "ovcore/oved.h"
#include "ovdb/ovut.h"

#include <string>

int zelRetValue(const resbuf* chain) {
    if (!chain)
        return zelRetNil();
    if (!chain->rbnext) {
        switch (chain->restype) {
        case RTSTR:
            return chain->resval.rstring
                       ? zelRetString(QString::fromWCharArray(chain->resval.rstring))
                       : zelRetNil();
        case RTSHORT:
            ovedRetInt(chain->resval.rint);
            return RTNORM;
        case RTLONG:
            ovedRetInt(chain->resval.rlong);
            return RTNORM;
        case RTREAL:
            ovedRetReal(chain->resval.rreal);
            return RTNORM;
        case RTNIL:
            return zelRetNil();
        case RTT:
            return zelRetT();
        case RTENAME:
            ovedRetName(chain->resval.rlname);
            return RTNORM;
        default:
            break;
        }
    }
    ovedRetList(chain);
    return RTNORM;
}

int zelRetString(const QString& text) {
    const std::wstring wide = text.toStdWString();
    ovedRetStr(wide.c_str());
    return RTNORM;
}

int zelRetOwnedList(resbuf* chain) {
    if (!chain)
        return zelRetNil();
    ovedRetList(chain);
    ovutRelRb(chain);
    return RTNORM;
}

int zelRetNil() {
    ovedRetNil();
    return RTNORM;
}

int zelRetT() {
    ovedRetT();
    return RTNORM;
}

int zelComplain(const wchar_t* function, const QString& message) {
    const std::wstring text = message.toStdWString();
    ovutPrintf(L"\n%ls: %ls\n", function, text.c_str());
    return zelRetNil();
}
