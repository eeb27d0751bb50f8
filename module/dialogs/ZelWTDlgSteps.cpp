#include "dialogs/ZelWTDlgSteps.h"

#include "grid/ZelWTGrid.h"
#include "store/ZelWireTypeRec.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/oved.h"
#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbHostApplicationServices.h"
#include "ovdb/ovut.h"
#include "ovui/OvUi.h"

#include <QStringList>

#include <algorithm>

namespace zelwtdlg {

namespace {

// The tokens that a layer name format may hold after a "%".
const QStringList kFormatTokens = {QStringLiteral("%C"), QStringLiteral("%S"), QStringLiteral("%1"),
                                   QStringLiteral("%2"), QStringLiteral("%3"), QStringLiteral("%4"),
                                   QStringLiteral("%5")};

bool validLayerName(const QString& text) {
    ZelWireTypeRec store;
    return store.ValidateLayerName(text) == Orvex::eOk;
}

} // namespace

FormatCheck CheckLayerFormat(const QString& trimmed) {
    QString rest = trimmed;
    // A format without a token would give every new wire type the same name.
    if (rest.isEmpty() || !rest.contains(QLatin1Char('%')))
        return FormatCheck::RefusedPlain;
    if (!validLayerName(trimmed))
        return FormatCheck::RefusedAtToken;
    for (;;) {
        const qsizetype percent = rest.indexOf(QLatin1Char('%'));
        if (percent < 0)
            return FormatCheck::Accepted;
        rest = rest.mid(percent);
        const QString token = rest.left(2);
        const bool known =
            std::any_of(kFormatTokens.begin(), kFormatTokens.end(), [&](const QString& t) {
                return t.compare(token, Qt::CaseInsensitive) == 0;
            });
        if (!known)
            return FormatCheck::RefusedAtToken;
        rest = rest.mid(2);
        if (rest.isEmpty())
            return FormatCheck::Accepted;
        if (!validLayerName(trimmed))
            return FormatCheck::RefusedAtToken;
    }
}

std::vector<quint32> ChooseRowColor(ZelWTGrid& grid) {
    const std::vector<quint32> rows = grid.GetSelectedRows(false, true);
    if (rows.empty())
        return rows;
    // The picker opens on the first row's colour, which it also shows for comparison.
    OvCmColor color;
    grid.GetRowColor(static_cast<int>(rows.at(0)), color);
    const OvCmColor current = color;
    if (ovedSetColorDialogTrueColor(color, 0, current, 7) == 1) {
        for (auto it = rows.rbegin(); it != rows.rend(); ++it)
            grid.SetRowColor(static_cast<int>(*it), color);
    }
    return rows;
}

std::vector<quint32> ChooseRowLinetype(ZelWTGrid& grid) {
    const std::vector<quint32> rows = grid.GetSelectedRows(false, true);
    if (rows.empty())
        return rows;
    OvDbObjectId id;
    grid.GetRowLinetype(static_cast<int>(rows.at(0)), id);
    // A row without a linetype of its own draws continuous lines; the picker says so.
    if (id.isNull()) {
        static OvDbHostApplicationServices* const s_services =
            OvDbHostApplicationServices::getRefPtr();
        if (s_services && s_services->workingDatabase())
            id = s_services->workingDatabase()->continuousLinetype();
    }
    wchar_t* name = nullptr;
    OvDbObjectId newId;
    if (ovedLinetypeDialog(id, 0, name, newId) == 1) {
        for (auto it = rows.rbegin(); it != rows.rend(); ++it)
            grid.SetRowLinetype(static_cast<int>(*it), newId);
    }
    if (name)
        ovutDelBuffer(name);
    return rows;
}

std::vector<quint32> ChooseRowLineweight(ZelWTGrid& grid) {
    const std::vector<quint32> rows = grid.GetSelectedRows(false, true);
    if (rows.empty())
        return rows;
    OvDb::LineWeight weight = static_cast<OvDb::LineWeight>(-3);
    grid.GetRowLineweight(static_cast<int>(rows.at(0)), weight);
    OvDb::LineWeight chosen = weight;
    if (ovedLineWeightDialog(weight, 0, chosen) == 1) {
        for (auto it = rows.rbegin(); it != rows.rend(); ++it)
            grid.SetRowLineweight(static_cast<int>(*it), chosen);
    }
    return rows;
}

void AddExistingLayers(ZelWTGrid& grid) {
    const OvApDocManager* documents = ovDocManagerPtr();
    if (!documents || !documents->mdiActiveDocument())
        return;
    resbuf* call = ovutBuildList(RTSTR, L"wd_cfg_add_lay", RTSHORT, 1, RTNIL, 0);
    resbuf* answer = nullptr;
    if (ovedInvoke(call, &answer) == RTNORM && answer && answer->restype == RTSTR) {
        const QString pattern = QString::fromWCharArray(answer->resval.rstring).toUpper();
        grid.setFocus();
        grid.AddLayerRows(pattern);
    }
    ovutRelRb(answer);
    ovutRelRb(call);
}

} // namespace zelwtdlg
