#pragma once

#include "ovcore/OvEdInputProvider.h"
#include "ovui/OvUiFileDialog.h"

// The editor's input of a widget application without a desktop (a batch run that shows its
// dialogs): files come from the file dialog and help from the help window, while picks and
// typed lines still come from the batch queues, since there is no drawing view to click in.
// A file answer queued beforehand is still taken first, so that scripts written for the
// queue keep working.
class OvUiInput : public OvEdInputProvider {
public:
    int entSel(const QString& prompt, ov_name name, double point[3]) override;
    int getFileD(const QString& title, const QString& defaultPath, const QString& extension,
                 int flags, QString& path) override;
    int help(const QString& file, const QString& topic, int command) override;
    int getString(const QString& prompt, QString& text) override;
};
