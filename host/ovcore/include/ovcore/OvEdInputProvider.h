#pragma once

#include "ovdb/resbuf.h"

#include <QString>

// Where the editor's input comes from: the user at a window, or a queue that a script
// filled. The host keeps one provider at a time (ovedSetInputProvider); without a window
// it is the batch provider, OvEdBatchInput.
class OvEdInputProvider {
public:
    virtual ~OvEdInputProvider();

    // One entity picked in the working drawing: RTNORM with its name and the picked point,
    // RTCAN when the user cancels, RTERROR when the pick found nothing.
    virtual int entSel(const QString& prompt, ov_name name, double point[3]) = 0;
    // A file chosen in a file dialog: RTNORM with its path, RTCAN when cancelled.
    // `extension` holds one or more extensions separated by semicolons ("dwg;dwt").
    virtual int getFileD(const QString& title, const QString& defaultPath, const QString& extension,
                         int flags, QString& path) = 0;
    // Help at a topic of a help file.
    virtual int help(const QString& file, const QString& topic, int command) = 0;
    // One line typed at the command line after `prompt`: RTNORM with the text (empty for
    // Enter alone), RTCAN when the user cancels. A provider without a command line cancels.
    virtual int getString(const QString& prompt, QString& text);
};
