#pragma once

#include "ovcore/OvEdInputProvider.h"

#include <QString>

#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

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
    // The arguments of a command that is about to run: they go before everything queued
    // so far, in their order, and answer the command's requests before any provider's user,
    // the desktop's too. An entity name is a pick, anything else a typed line.
    void beginCommandAnswers(const std::deque<QString>& lines,
                             const std::deque<std::array<std::int64_t, 2>>& names);
    // When the command has returned: takes back what it did not ask for and returns how many.
    int endCommandAnswers();
    // (command) inside a running command: its remaining answers go, so that its next request
    // is cancelled. Nothing to do outside a command.
    void cancelCommandAnswers();
    // Whether the next request of that kind is answered by a command argument.
    bool hasCommandInput() const;
    bool hasCommandPick() const;
    void clear();
    int pendingPicks() const { return static_cast<int>(m_picks.size()); }
    int pendingFiles() const { return static_cast<int>(m_files.size()); }
    int pendingInputs() const { return static_cast<int>(m_inputs.size()); }

    // A file dialog that a script will drive (the host's dialog automation): asked when no
    // file name is queued. It returns RTNORM or RTCAN after a real dialog ran, or nothing
    // when no script waits for the dialog, which is then cancelled as usual.
    using FileDialogRunner =
        std::function<std::optional<int>(const QString& title, const QString& defaultPath,
                                         const QString& extension, int flags, QString& path)>;
    void setFileDialogRunner(FileDialogRunner runner) { m_fileDialogRunner = std::move(runner); }

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
    FileDialogRunner m_fileDialogRunner;
    // Per running command, innermost last: how many of its arguments still wait at the front
    // of each queue.
    struct CommandAnswers {
        int inputs = 0;
        int picks = 0;
    };
    std::vector<CommandAnswers> m_commandAnswers;
    void tookInput();
    void tookPick();
};
