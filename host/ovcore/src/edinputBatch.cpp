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

void OvEdBatchInput::beginCommandAnswers(const std::deque<QString>& lines,
                                         const std::deque<std::array<std::int64_t, 2>>& names) {
    m_inputs.insert(m_inputs.begin(), lines.begin(), lines.end());
    for (auto it = names.rbegin(); it != names.rend(); ++it) {
        Pick pick;
        pick.name[0] = (*it)[0];
        pick.name[1] = (*it)[1];
        m_picks.push_front(pick);
    }
    m_commandAnswers.push_back({static_cast<int>(lines.size()), static_cast<int>(names.size())});
}

void OvEdBatchInput::cancelCommandAnswers() {
    if (m_commandAnswers.empty())
        return;
    CommandAnswers& own = m_commandAnswers.back();
    for (; own.inputs > 0 && !m_inputs.empty(); --own.inputs)
        m_inputs.pop_front();
    for (; own.picks > 0 && !m_picks.empty(); --own.picks)
        m_picks.pop_front();
    own = {};
}

int OvEdBatchInput::endCommandAnswers() {
    if (m_commandAnswers.empty())
        return 0;
    const CommandAnswers own = m_commandAnswers.back();
    cancelCommandAnswers();
    m_commandAnswers.pop_back();
    return own.inputs + own.picks;
}

bool OvEdBatchInput::hasCommandInput() const {
    for (const CommandAnswers& answers : m_commandAnswers) {
        if (answers.inputs > 0)
            return true;
    }
    return false;
}

bool OvEdBatchInput::hasCommandPick() const {
    for (const CommandAnswers& answers : m_commandAnswers) {
        if (answers.picks > 0)
            return true;
    }
    return false;
}

// The answers of the innermost command are at the front; a command that asks for more
// than its arguments goes on to those of the command that ran it.
void OvEdBatchInput::tookInput() {
    for (auto it = m_commandAnswers.rbegin(); it != m_commandAnswers.rend(); ++it) {
        if (it->inputs > 0) {
            --it->inputs;
            return;
        }
    }
}

void OvEdBatchInput::tookPick() {
    for (auto it = m_commandAnswers.rbegin(); it != m_commandAnswers.rend(); ++it) {
        if (it->picks > 0) {
            --it->picks;
            return;
        }
    }
}

void OvEdBatchInput::clear() {
    m_picks.clear();
    m_files.clear();
    m_inputs.clear();
    for (CommandAnswers& answers : m_commandAnswers)
        answers = {};
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
    tookPick();
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

int OvEdBatchInput::getFileD(const QString& title, const QString& defaultPath,
                             const QString& extension, int flags, QString& path) {
    if (m_files.empty() && m_fileDialogRunner) {
        if (const std::optional<int> status =
                m_fileDialogRunner(title, defaultPath, extension, flags, path))
            return *status;
    }
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
    tookInput();
    if (!answer) {
        print(QStringLiteral("*Cancel*\n"));
        return RTCAN;
    }
    // The answer shows as if typed, so that a batch log reads like a session.
    print(*answer + QLatin1Char('\n'));
    text = *answer;
    return RTNORM;
}
