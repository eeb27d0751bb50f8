#include "ovcore/OvEdBatchInput.h"

#include "cadDrawing.h"

#include "ovdb/OvDbAttribute.h"
#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbEntity.h"
#include "ovdb/OvDbHostApplicationServices.h"
#include "ovdb/ovut.h"

#include <string>

namespace {

void print(const QString& text) {
    const std::wstring wide = text.toStdWString();
    ovutPrintf(L"%ls", wide.c_str());
}

} // namespace

OvEdBatchInput& OvEdBatchInput::instance() {
    static OvEdBatchInput input;
    return input;
}

void OvEdBatchInput::queuePick(const ov_name name) {
    Pick pick;
    pick.name[0] = name[0];
    pick.name[1] = name[1];
    m_picks.push_back(pick);
}

void OvEdBatchInput::queuePick(const ov_name name, const double point[3]) {
    Pick pick;
    pick.name[0] = name[0];
    pick.name[1] = name[1];
    pick.point = std::array<double, 3>{point[0], point[1], point[2]};
    m_picks.push_back(pick);
}

void OvEdBatchInput::queuePickCancel() {
    Pick pick;
    pick.cancel = true;
    m_picks.push_back(pick);
}

void OvEdBatchInput::queueFile(const QString& path) {
    m_files.emplace_back(path);
}

void OvEdBatchInput::queueFileCancel() {
    m_files.emplace_back(std::nullopt);
}

void OvEdBatchInput::queueInput(const QString& text) {
    m_inputs.emplace_back(text);
}

void OvEdBatchInput::queueInputCancel() {
    m_inputs.emplace_back(std::nullopt);
}

void OvEdBatchInput::pushFrontInputs(const std::deque<std::optional<QString>>& lines) {
    m_inputs.insert(m_inputs.begin(), lines.begin(), lines.end());
}

void OvEdBatchInput::pushFrontPicks(const std::deque<std::array<std::int64_t, 2>>& names) {
    for (auto it = names.rbegin(); it != names.rend(); ++it) {
        Pick pick;
        pick.name[0] = (*it)[0];
        pick.name[1] = (*it)[1];
        m_picks.push_front(pick);
    }
}

void OvEdBatchInput::dropFrontInputs(int count) {
    for (; count > 0 && !m_inputs.empty(); --count)
        m_inputs.pop_front();
}

void OvEdBatchInput::dropFrontPicks(int count) {
    for (; count > 0 && !m_picks.empty(); --count)
        m_picks.pop_front();
}

void OvEdBatchInput::clear() {
    m_picks.clear();
    m_files.clear();
    m_inputs.clear();
}

int OvEdBatchInput::entSel(const QString& prompt, ov_name name, double point[3]) {
    using namespace ovcore::cad;
    print(prompt);
    if (m_picks.empty()) {
        print(QStringLiteral("*Cancel*\n; no pick is queued (orvex-queue-pick), so the "
                             "selection is cancelled\n"));
        return RTCAN;
    }
    const Pick pick = m_picks.front();
    m_picks.pop_front();
    if (pick.cancel) {
        print(QStringLiteral("*Cancel*\n"));
        return RTCAN;
    }

    // Only a live entity of the working drawing can be picked; an attribute is picked as
    // part of its INSERT.
    OvDbObjectId id;
    OvDbObjectId owner;
    bool pickable = false;
    OvDbDatabase* db = OvDbHostApplicationServices::getRefPtr()->workingDatabase();
    if (idOfName(pick.name, id, nullptr) && db && id.database() == db) {
        Opened<OvDbEntity> entity;
        if (entity.open(id, OvDb::kForRead) == Orvex::eOk) {
            pickable = true;
            if (OvDbAttribute::cast(entity.get()))
                owner = entity->ownerId();
        }
    }
    if (!pickable) {
        print(QStringLiteral("\n; the queued pick finds no entity of the drawing (%1)\n")
                  .arg(describeName(pick.name)));
        return RTERROR;
    }
    OvGePoint3d at;
    if (pick.point)
        at = OvGePoint3d((*pick.point)[0], (*pick.point)[1], (*pick.point)[2]);
    else
        referencePoint(id, at);
    if (!owner.isNull())
        id = owner;
    if (!nameOfId(id, name))
        return RTERROR;
    point[0] = at.x;
    point[1] = at.y;
    point[2] = at.z;
    return RTNORM;
}

int OvEdBatchInput::getFileD(const QString& title, const QString&, const QString&, int,
                             QString& path) {
    if (m_files.empty()) {
        print(QStringLiteral("\n; no file name is queued (orvex-queue-file) for \"%1\", so the "
                             "file dialog is cancelled\n")
                  .arg(title));
        return RTCAN;
    }
    const std::optional<QString> answer = m_files.front();
    m_files.pop_front();
    if (!answer)
        return RTCAN;
    path = *answer;
    return RTNORM;
}

int OvEdBatchInput::help(const QString& file, const QString& topic, int) {
    QString line = QStringLiteral("Help: ") + file;
    if (!topic.isEmpty())
        line += QLatin1Char(' ') + topic;
    print(QStringLiteral("\n") + line + QStringLiteral("\n"));
    return RTNORM;
}

int OvEdBatchInput::getString(const QString& prompt, QString& text) {
    print(prompt);
    if (m_inputs.empty()) {
        print(QStringLiteral("*Cancel*\n; no input is queued (orvex-queue-input), so the "
                             "request is cancelled\n"));
        return RTCAN;
    }
    const std::optional<QString> answer = m_inputs.front();
    m_inputs.pop_front();
    if (!answer) {
        print(QStringLiteral("*Cancel*\n"));
        return RTCAN;
    }
    // The answer shows as if typed, so that a batch log reads like a session.
    print(*answer + QLatin1Char('\n'));
    text = *answer;
    return RTNORM;
}
