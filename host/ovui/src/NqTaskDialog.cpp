#include "ovui/NqTaskDialog.h"

#include "ovui/OvUi.h"

#include "OvUiInput.h"

#include "ovdb/ovut.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>
#include <QXmlStreamReader>

#include <string>
#include <vector>

struct NqTaskDialog::Entry {
    struct Button {
        int id = 0;
        QString text;
    };
    QString title;
    QString icon;
    QString instruction;
    QString content;
    std::vector<Button> buttons;
    int defaultButton = 0;
    int cancelButton = 0;
};

namespace {

void complain(const QString& message) {
    const std::wstring wide = message.toStdWString();
    ovutPrintf(L"\n%ls\n", wide.c_str());
}

// The module names its resource as a component path ("/ZelTaskDialogsRes;component/
// TaskDialogs.xaml"); the host keeps the same entries in its own XML file.
QString fileOfResource(const QString& resource) {
    const QString last = resource.section(u'/', -1);
    if (QFileInfo(last).completeBaseName().compare(QLatin1String("TaskDialogs"),
                                                   Qt::CaseInsensitive) == 0 &&
        !QFileInfo(resource).isFile())
        return QStringLiteral(":/ovui/TaskDialogs.xml");
    return resource;
}

QString filled(QString text, const wchar_t* const* values, int count) {
    for (int i = 0; values && i < count; ++i) {
        if (values[i])
            text.replace(QStringLiteral("{%1}").arg(i), QString::fromWCharArray(values[i]));
    }
    return text;
}

// Reads the entry of `key`; false with `error` empty when the file has no such entry.
bool readEntry(QIODevice& device, const QString& key, NqTaskDialog::Entry& entry, QString& error) {
    QXmlStreamReader xml(&device);
    bool inside = false;
    bool found = false;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement()) {
            const auto name = xml.name();
            if (name == QLatin1String("taskDialog")) {
                inside = xml.attributes().value(QLatin1String("key")) == key;
                found = found || inside;
            } else if (inside && name == QLatin1String("title")) {
                entry.title = xml.readElementText().trimmed();
            } else if (inside && name == QLatin1String("icon")) {
                entry.icon = xml.readElementText().trimmed();
            } else if (inside && name == QLatin1String("instruction")) {
                entry.instruction = xml.readElementText().simplified();
            } else if (inside && name == QLatin1String("content")) {
                // Blank lines separate paragraphs; other line breaks are the file's layout.
                const QStringList paragraphs =
                    xml.readElementText().trimmed().split(QStringLiteral("\n\n"));
                QStringList clean;
                for (const QString& paragraph : paragraphs)
                    clean << paragraph.simplified();
                entry.content = clean.join(QStringLiteral("\n\n"));
            } else if (inside && name == QLatin1String("buttons")) {
                entry.defaultButton = xml.attributes().value(QLatin1String("default")).toInt();
                entry.cancelButton = xml.attributes().value(QLatin1String("cancel")).toInt();
            } else if (inside && name == QLatin1String("button")) {
                bool ok = false;
                const int id = xml.attributes().value(QLatin1String("id")).toInt(&ok);
                const QString text = xml.readElementText().trimmed();
                if (!ok || id <= 0) {
                    error = QStringLiteral("a button of \"%1\" has no positive id").arg(key);
                    return false;
                }
                entry.buttons.push_back({id, text});
            }
        } else if (xml.isEndElement() && xml.name() == QLatin1String("taskDialog") && inside) {
            break;
        }
    }
    if (xml.hasError()) {
        error = QStringLiteral("line %1: %2").arg(xml.lineNumber()).arg(xml.errorString());
        return false;
    }
    if (found && entry.buttons.empty())
        entry.buttons.push_back({1, QStringLiteral("OK")}); // a dialog must close somehow
    return found;
}

QStyle::StandardPixmap pixmapOfIcon(const QString& icon) {
    if (icon == QLatin1String("warning"))
        return QStyle::SP_MessageBoxWarning;
    if (icon == QLatin1String("error"))
        return QStyle::SP_MessageBoxCritical;
    if (icon == QLatin1String("question"))
        return QStyle::SP_MessageBoxQuestion;
    return QStyle::SP_MessageBoxInformation;
}

} // namespace

NqTaskDialog::NqTaskDialog() = default;
NqTaskDialog::~NqTaskDialog() = default;

int NqTaskDialog::LoadFromFile(const wchar_t* resource, const wchar_t* key,
                               const wchar_t* const* values, int count) {
    m_entry.reset();
    if (!resource || !key)
        return 0;
    const QString keyText = QString::fromWCharArray(key);
    QFile file(fileOfResource(QString::fromWCharArray(resource)));
    if (!file.open(QIODevice::ReadOnly)) {
        complain(QStringLiteral("The task dialogs of \"%1\" cannot be read: %2")
                     .arg(QString::fromWCharArray(resource), file.errorString()));
        return 0;
    }
    auto entry = std::make_unique<Entry>();
    QString error;
    if (!readEntry(file, keyText, *entry, error)) {
        if (!error.isEmpty())
            complain(QStringLiteral("The task dialogs of \"%1\" are damaged (%2).")
                         .arg(QString::fromWCharArray(resource), error));
        return 0;
    }
    entry->title = filled(entry->title, values, count);
    entry->instruction = filled(entry->instruction, values, count);
    entry->content = filled(entry->content, values, count);
    m_entry = std::move(entry);
    return 1;
}

int NqTaskDialog::ShowDialog(QWidget* owner) {
    if (!m_entry)
        return 0;
    if (!qobject_cast<QApplication*>(QCoreApplication::instance())) {
        complain(QStringLiteral("%1: %2").arg(m_entry->title, m_entry->instruction));
        return m_entry->cancelButton;
    }
    QDialog dialog(owner ? owner : ovuiDialogParent());
    dialog.setObjectName(QStringLiteral("hostTaskDialog"));
    // The dialog automation records a task dialog's texts with the message boxes.
    dialog.setProperty("orvexTaskDialog", true);
    dialog.setWindowTitle(m_entry->title.isEmpty() ? QStringLiteral("Orvex") : m_entry->title);

    auto* icon = new QLabel;
    icon->setPixmap(dialog.style()->standardIcon(pixmapOfIcon(m_entry->icon)).pixmap(40, 40));
    icon->setAlignment(Qt::AlignTop);
    auto* instruction = new QLabel(m_entry->instruction);
    instruction->setObjectName(QStringLiteral("1001"));
    instruction->setWordWrap(true);
    QFont big = instruction->font();
    big.setPointSizeF(big.pointSizeF() * 1.25);
    big.setBold(true);
    instruction->setFont(big);
    auto* content = new QLabel(m_entry->content);
    content->setObjectName(QStringLiteral("1002"));
    content->setWordWrap(true);
    content->setTextInteractionFlags(Qt::TextSelectableByMouse);
    content->setMinimumWidth(380);

    int chosen = m_entry->cancelButton;
    auto* buttons = new QDialogButtonBox;
    for (const Entry::Button& button : m_entry->buttons) {
        auto* push = buttons->addButton(button.text, QDialogButtonBox::ActionRole);
        push->setObjectName(QString::number(button.id));
        const bool isDefault = button.id == m_entry->defaultButton ||
                               (m_entry->defaultButton == 0 && &button == &m_entry->buttons[0]);
        push->setDefault(isDefault);
        push->setAutoDefault(isDefault);
        const int id = button.id;
        QObject::connect(push, &QPushButton::clicked, &dialog, [&dialog, &chosen, id] {
            chosen = id;
            dialog.accept();
        });
    }

    auto* texts = new QVBoxLayout;
    texts->addWidget(instruction);
    texts->addSpacing(6);
    texts->addWidget(content);
    texts->addStretch(1);
    auto* top = new QHBoxLayout;
    top->addWidget(icon);
    top->addSpacing(8);
    top->addLayout(texts, 1);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addLayout(top);
    layout->addSpacing(8);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    if (dialog.exec() != QDialog::Accepted)
        return m_entry->cancelButton;
    return chosen;
}
