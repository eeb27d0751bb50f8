#include "OvUiInput.h"

#include "ovui/OvUi.h"
#include "ovui/OvUiHelp.h"

#include "ovcore/OvEdBatchInput.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QStringList>

int OvUiInput::entSel(const QString& prompt, ov_name name, double point[3]) {
    return OvEdBatchInput::instance().entSel(prompt, name, point);
}

int OvUiInput::getString(const QString& prompt, QString& text) {
    return OvEdBatchInput::instance().getString(prompt, text);
}

int OvUiInput::getFileD(const QString& title, const QString& defaultPath, const QString& extension,
                        int flags, QString& path) {
    OvEdBatchInput& queue = OvEdBatchInput::instance();
    if (queue.pendingFiles() > 0)
        return queue.getFileD(title, defaultPath, extension, flags, path);
    return ovuiFileDialog(ovuiDialogParent(), title, defaultPath, extension, flags, path);
}

int OvUiInput::help(const QString& file, const QString& topic, int command) {
    // The run's log says which help was asked for, as a batch run without windows does.
    OvEdBatchInput::instance().help(file, topic, command);
    ovuiShowHelp(file, topic);
    return RTNORM;
}

QString ovuiFileNameFilter(const QString& extensions) {
    QStringList patterns;
    for (const QString& extension : extensions.split(u';', Qt::SkipEmptyParts)) {
        const QString clean = extension.trimmed().remove(u'.').remove(u'*');
        if (!clean.isEmpty())
            patterns << QStringLiteral("*.%1").arg(clean);
    }
    const QString all = QObject::tr("All files (*)");
    if (patterns.isEmpty())
        return all;
    return QObject::tr("%1 files (%2);;%3")
        .arg(patterns.first().mid(2).toUpper(), patterns.join(u' '), all);
}

int ovuiFileDialog(QWidget* parent, const QString& title, const QString& defaultPath,
                   const QString& extension, int flags, QString& path) {
    const bool forSaving = flags & 1;
    // Qt's own dialog: the same on every desktop, and one that automation can drive.
    QFileDialog dialog(parent, title, defaultPath, ovuiFileNameFilter(extension));
    dialog.setObjectName(QStringLiteral("hostFileDialog"));
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    if (flags & 32)
        dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.setAcceptMode(forSaving ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(forSaving ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    const QFileInfo start(defaultPath);
    if (!defaultPath.isEmpty() && !start.isDir())
        dialog.selectFile(start.fileName());
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return RTCAN;
    path = QFileInfo(dialog.selectedFiles().constFirst()).absoluteFilePath();
    return RTNORM;
}
