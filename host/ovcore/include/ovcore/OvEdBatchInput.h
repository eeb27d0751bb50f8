#pragma once

#include "ovcore/OvEdInputProvider.h"

#include <QString>

#include <array>
#include <cstdint>
#include <deque>
#include <optional>

// The editor's input without a window: picks and file names come from queues that a
// script or a test fills beforehand, one answer per request, in order. A request that finds
// its queue empty is cancelled with a message at the command line, so that a script that
// asks for more than it queued ends visibly rather than waiting. Help prints its topic.
class OvEdBatchInput : public OvEdInputProvider {
public:
    static OvEdBatchInput& instance();

    // A pick of that entity, at `point` or, without one, at a point of the entity.
    void queuePick(const ov_name name);
    void queuePick(const ov_name name, const double point[3]);
    // The user cancels the pick.
    void queuePickCancel();
    void queueFile(const QString& path);
    // The user cancels the file dialog.
    void queueFileCancel();
    // A line typed at the command line, for the get... functions and command arguments.
    void queueInput(const QString& text);
    // The user cancels the request for input.
    void queueInputCancel();
    // Answers that go before everything queued so far, in their order: the arguments of a
    // command. An entity name is a pick, anything else a typed line.
    void pushFrontInputs(const std::deque<std::optional<QString>>& lines);
    void pushFrontPicks(const std::deque<std::array<std::int64_t, 2>>& names);
    // Takes `count` answers off the front of each queue: the arguments of a command that it
    // did not ask for.
    void dropFrontInputs(int count);
    void dropFrontPicks(int count);
    void clear();
    int pendingPicks() const { return static_cast<int>(m_picks.size()); }
    int pendingFiles() const { return static_cast<int>(m_files.size()); }
    int pendingInputs() const { return static_cast<int>(m_inputs.size()); }

    int entSel(const QString& prompt, ov_name name, double point[3]) override;
    int getFileD(const QString& title, const QString& defaultPath, const QString& extension,
                 int flags, QString& path) override;
    int help(const QString& file, const QString& topic, int command) override;
    int getString(const QString& prompt, QString& text) override;

private:
    struct Pick {
        bool cancel = false;
        std::int64_t name[2] = {0, 0};
        std::optional<std::array<double, 3>> point;
    };

    OvEdBatchInput() = default;

    std::deque<Pick> m_picks;
    std::deque<std::optional<QString>> m_files;
    std::deque<std::optional<QString>> m_inputs;
};
