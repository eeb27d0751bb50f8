#include "OvHelpWindow.h"

#include "ovui/OvUi.h"
#include "ovui/OvUiHelp.h"

#include "OvUiInput.h"

#include "ovcore/OvEdBatchInput.h"
#include "ovdb/ovut.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QPointer>
#include <QPushButton>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextCursor>
#include <QVBoxLayout>

namespace {

QString docsFolder() {
    const QString fromEnvironment = qEnvironmentVariable("ORVEX_DOCS_DIR");
    if (!fromEnvironment.isEmpty())
        return fromEnvironment;
    const QDir program(QCoreApplication::applicationDirPath());
    const QString installed = program.absoluteFilePath(QStringLiteral("../../share/doc/orvex"));
    if (QFileInfo::exists(installed + QStringLiteral("/help/index.md")))
        return installed;
#ifdef ORVEX_SOURCE_DOCS_DIR
    return QStringLiteral(ORVEX_SOURCE_DOCS_DIR);
#else
    return installed;
#endif
}

// Screenshots are as wide as the screen they were taken on: fit them to the window.
constexpr int kMaxImageWidth = 640;

} // namespace

QString ovuiHelpFolder() {
    const QString fromEnvironment = qEnvironmentVariable("ORVEX_HELP_DIR");
    if (!fromEnvironment.isEmpty())
        return fromEnvironment;
    return QDir(docsFolder()).filePath(QStringLiteral("help"));
}

QString ovuiHelpPage(const QString& file, const QString& topic) {
    const QDir help(ovuiHelpFolder());
    QStringList candidates;
    // A topic is a file name inside the help folder, never a path out of it.
    const QString cleanTopic = topic.trimmed();
    if (!cleanTopic.isEmpty() && !cleanTopic.contains(u'/') && !cleanTopic.contains(u'\\') &&
        !cleanTopic.startsWith(u'.'))
        candidates << help.filePath(cleanTopic + QStringLiteral(".md"));
    if (cleanTopic.isEmpty() && !file.trimmed().isEmpty())
        candidates << QDir(docsFolder())
                          .filePath(QFileInfo(file.trimmed()).completeBaseName() +
                                    QStringLiteral(".md"));
    candidates << help.filePath(QStringLiteral("index.md"));
    for (const QString& candidate : candidates) {
        if (QFileInfo(candidate).isFile())
            return QFileInfo(candidate).absoluteFilePath();
    }
    return {};
}

QString ovuiShowHelp(const QString& file, const QString& topic) {
    const QString page = ovuiHelpPage(file, topic);
    if (page.isEmpty()) {
        const std::wstring where = ovuiHelpFolder().toStdWString();
        ovutPrintf(L"\nThere is no help page for this topic, nor an index, in %ls.\n",
                   where.c_str());
        return {};
    }
    QWidget* modal = QApplication::activeModalWidget();
    QWidget* frame = ovedGetOrvexFrame();
    const bool asModal = modal != nullptr || frame == nullptr || !frame->isVisible();
    if (asModal) {
        // Over a modal dialog only a modal window takes input; in a batch run the window
        // must be one that a script can answer and close.
        OvHelpWindow window(ovuiDialogParent());
        window.showPage(page);
        window.exec();
        return page;
    }
    // Beside the main window: one help window, kept open while the drafter works.
    auto* window = frame->findChild<OvHelpWindow*>(QStringLiteral("helpWindow"));
    if (!window)
        window = new OvHelpWindow(frame);
    window->showPage(page);
    window->show();
    window->raise();
    window->activateWindow();
    return page;
}

// The page's first heading names the window, as the drafter reads it; a page without one
// goes by its topic.
QString OvHelpWindow::pageTitle(const QString& path) {
    QFile file(path);
    if (file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        for (int line = 0; line < 20 && !file.atEnd(); ++line) {
            const QString text = QString::fromUtf8(file.readLine()).trimmed();
            if (text.startsWith(QLatin1String("# ")))
                return text.mid(2).trimmed();
        }
    }
    return tr("Orvex help - %1").arg(QFileInfo(path).completeBaseName());
}

OvHelpWindow::OvHelpWindow(QWidget* parent) : QDialog(parent), m_browser(new QTextBrowser) {
    setObjectName(QStringLiteral("helpWindow"));
    resize(760, 680);
    m_browser->setObjectName(QStringLiteral("1001"));
    m_browser->setAccessibleName(tr("Help text"));
    m_browser->setOpenExternalLinks(true);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    buttons->button(QDialogButtonBox::Close)->setObjectName(QStringLiteral("2"));
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_browser);
    layout->addWidget(buttons);
    connect(m_browser, &QTextBrowser::sourceChanged, this, [this](const QUrl& url) {
        setWindowTitle(pageTitle(url.toLocalFile()));
        fitImages(url.toLocalFile());
    });
}

void OvHelpWindow::showPage(const QString& page) {
    const QFileInfo info(page);
    m_browser->setSearchPaths({info.absolutePath(), QDir(docsFolder()).path()});
    m_browser->setSource(QUrl::fromLocalFile(info.absoluteFilePath()),
                         QTextDocument::MarkdownResource);
}

QString OvHelpWindow::page() const {
    return m_browser->source().toLocalFile();
}

void OvHelpWindow::fitImages(const QString& page) {
    const QDir pageFolder = QFileInfo(page).absoluteDir();
    QTextCursor cursor(m_browser->document());
    for (QTextBlock block = m_browser->document()->begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            QTextImageFormat image = it.fragment().charFormat().toImageFormat();
            if (!image.isValid())
                continue;
            const QImage picture(pageFolder.filePath(image.name()));
            if (picture.isNull() || picture.width() <= kMaxImageWidth)
                continue;
            image.setWidth(kMaxImageWidth);
            image.setHeight(double(kMaxImageWidth) * picture.height() / picture.width());
            cursor.setPosition(it.fragment().position());
            cursor.setPosition(it.fragment().position() + it.fragment().length(),
                               QTextCursor::KeepAnchor);
            cursor.setCharFormat(image);
        }
    }
}
