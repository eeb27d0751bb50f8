// The host's dialogs as LISP functions, so that scripts can ask the drafter the same
// questions as the module does. Each returns the answer, or nil when the dialog was cancelled
// or an argument was wrong (said at the command line).
#include "OvUiLisp.h"

#include "ovui/OvUi.h"

#include "ovcore/OvLisp.h"
#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbHostApplicationServices.h"
#include "ovdb/OvDbLinetypeTable.h"
#include "ovdb/OvDbLinetypeTableRecord.h"
#include "ovdb/ovut.h"

#include <optional>
#include <string>

namespace {

void complain(const char* who, const QString& message) {
    const std::wstring wide = message.toStdWString();
    ovutPrintf(L"\n; %hs: %ls\n", who, wide.c_str());
}

// The n-th argument (0-based), or null when the call has fewer.
const resbuf* argument(const resbuf* args, int n) {
    for (; args && n > 0; --n)
        args = args->rbnext;
    return args;
}

bool isNil(const resbuf* link) {
    return !link || link->restype == RTNIL;
}

// A flag argument: nil or absent is false, anything else true.
bool flagOf(const resbuf* link) {
    return !isNil(link);
}

std::optional<int> integerOf(const resbuf* link) {
    if (!link)
        return std::nullopt;
    if (link->restype == RTSHORT)
        return link->resval.rint;
    if (link->restype == RTLONG)
        return link->resval.rlong;
    if (link->restype == RTREAL && link->resval.rreal == double(int(link->resval.rreal)))
        return int(link->resval.rreal);
    return std::nullopt;
}

// A colour argument: a number 0 to 256 or a name ("red", "bylayer").
bool colorOf(const char* who, const resbuf* link, OvCmColor& color) {
    if (isNil(link))
        return true;
    if (link->restype == RTSTR && link->resval.rstring &&
        ovcmGetColorFromOXIName(color, link->resval.rstring) == RTNORM)
        return true;
    if (const std::optional<int> number = integerOf(link);
        number && color.setColorIndex(*number) == Orvex::eOk)
        return true;
    complain(who, QStringLiteral("a colour is a number 0 to 256 or a name such as \"red\" or "
                                 "\"bylayer\""));
    return false;
}

resbuf* intResult(int value) {
    resbuf* link = ovutNewRb(RTLONG);
    if (link)
        link->resval.rlong = value;
    return link;
}

resbuf* colorDialog(const resbuf* args) {
    const char* who = "orvex-color-dialog";
    OvCmColor color;
    color.setColorIndex(7);
    OvCmColor layerColor;
    layerColor.setColorIndex(7);
    if (!colorOf(who, argument(args, 0), color) || !colorOf(who, argument(args, 2), layerColor))
        return nullptr;
    if (layerColor.isByLayer() || layerColor.isByBlock()) {
        complain(who, QStringLiteral("a layer's colour is a number 1 to 255 or a colour name"));
        return nullptr;
    }
    if (ovedSetColorDialogTrueColor(color, flagOf(argument(args, 1)) ? 1 : 0, layerColor, 0) != 1)
        return nullptr;
    return intResult(color.colorIndex());
}

resbuf* linetypeDialog(const resbuf* args) {
    const char* who = "orvex-linetype-dialog";
    OvDbDatabase* database = OvDbHostApplicationServices::getRefPtr()->workingDatabase();
    if (!database) {
        complain(who, QStringLiteral("there is no drawing"));
        return nullptr;
    }
    OvDbObjectId oldId;
    const resbuf* nameLink = argument(args, 0);
    if (!isNil(nameLink)) {
        if (nameLink->restype != RTSTR || !nameLink->resval.rstring) {
            complain(who, QStringLiteral("the linetype is given by its name"));
            return nullptr;
        }
        OvDbLinetypeTable* table = nullptr;
        if (database->getLinetypeTable(table, OvDb::kForRead) == Orvex::eOk) {
            OvDbLinetypeTableRecord* record = nullptr;
            if (table->getAt(nameLink->resval.rstring, record, OvDb::kForRead) == Orvex::eOk) {
                oldId = record->objectId();
                record->close();
            }
            table->close();
        }
        // An unknown name preselects nothing: the drafter still chooses.
    }
    wchar_t* name = nullptr;
    OvDbObjectId newId;
    if (ovedLinetypeDialog(oldId, flagOf(argument(args, 1)) ? 1 : 0, name, newId) != 1)
        return nullptr;
    resbuf* link = ovutNewRb(RTSTR);
    if (!link) {
        ovutDelBuffer(name);
        return nullptr;
    }
    link->resval.rstring = name; // the chain owns it now
    return link;
}

resbuf* lineWeightDialog(const resbuf* args) {
    const char* who = "orvex-lineweight-dialog";
    OvDb::LineWeight old = OvDb::kLnWtByLwDefault;
    const resbuf* weightLink = argument(args, 0);
    if (!isNil(weightLink)) {
        const std::optional<int> number = integerOf(weightLink);
        if (!number || !OvDb::isLegalLineWeight(*number)) {
            complain(who, QStringLiteral("a lineweight is -3 (default), -2 (ByBlock), -1 "
                                         "(ByLayer) or a width in hundredths of a millimetre "
                                         "such as 25"));
            return nullptr;
        }
        old = OvDb::LineWeight(*number);
    }
    OvDb::LineWeight chosen = old;
    if (ovedLineWeightDialog(old, flagOf(argument(args, 1)) ? 1 : 0, chosen) != 1)
        return nullptr;
    return intResult(int(chosen));
}

} // namespace

void ovuiRegisterLisp() {
    ovcore::lisp::defineHostFunction(QStringLiteral("orvex-color-dialog"), colorDialog);
    ovcore::lisp::defineHostFunction(QStringLiteral("orvex-linetype-dialog"), linetypeDialog);
    ovcore::lisp::defineHostFunction(QStringLiteral("orvex-lineweight-dialog"), lineWeightDialog);
}
