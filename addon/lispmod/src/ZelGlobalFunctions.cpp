#include "ZelGlobalFunctions.h"

#include "ZelLispArgs.h"
#include "ZelLispReturn.h"

#include "ovcore/oved.h"
#include "ovdb/ovut.h"
#include "zelpm/ZelMDIGblManager.h"

#include <string>

int zelGblGet() {
    const ZelLispArgs args(ovedGetArgs());
    if (args.count() != 1 || !args.isString(0) || args.string(0).trimmed().isEmpty())
        return zelComplain(L"zel_gbl_get", QStringLiteral("give the name of the value as a text"));
    const std::wstring name = args.string(0).toStdWString();
    return zelRetValue(GblPm_GetGblValue(name.c_str()));
}

int zelGblSet() {
    const ZelLispArgs args(ovedGetArgs());
    if (args.count() != 2 || !args.isString(0) || args.string(0).trimmed().isEmpty())
        return zelComplain(L"zel_gbl_set",
                           QStringLiteral("give the name of the value as a text, then the value"));
    const std::wstring name = args.string(0).toStdWString();
    resbuf* value = args.isNil(1) ? nullptr : args.copy(1);
    if (!args.isNil(1) && !value)
        return zelComplain(L"zel_gbl_set", QStringLiteral("out of memory"));
    const bool stored = GblPm_SetGblValue(name.c_str(), value);
    ovutRelRb(value);
    if (!stored)
        return zelComplain(L"zel_gbl_set",
                           QStringLiteral("the value \"%1\" cannot be set").arg(args.string(0)));
    return zelRetT();
}
