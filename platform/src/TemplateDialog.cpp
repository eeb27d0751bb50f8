#include "platform/TemplateDialog.h"
#include "platform/HandlerGuard.h"

#include "platform/GridWindow.h"
#include "platform/MessageBox.h"
#include "platform/PrivateMessage.h"
#include "platform/Resources.h"

#include <QAbstractButton>
#include <QBuffer>
#include <QCheckBox>
#include <QComboBox>
#include <QFocusEvent>
#include <QGroupBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QLoggingCategory>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QUiLoader>
#include <QVBoxLayout>

namespace platform {

Q_LOGGING_CATEGORY(lcDialog, "zel.platform.dialog")

namespace {

// Loads the template's top-level dialog as a plain widget, so that it can live
// inside the TemplateDialog: a QDialog nested in a dialog would take Esc and Enter
// for itself.
class TemplateLoader : public QUiLoader {
public:
    QWidget* createWidget(const QString& className, QWidget* parent, const QString& name) override {
        if (parent == nullptr && className == QLatin1String("QDialog")) {
            auto* body = new QWidget;
            body->setObjectName(name);
            return body;
        }
        return QUiLoader::createWidget(className, parent, name);
    }
};

int numberOf(const QObject* object) {
    bool ok = false;
    const int id = object->objectName().toInt(&ok);
    return ok && id > 0 ? id : 0;
}

bool layoutHolds(const QLayout* layout, const QWidget* widget) {
    if (layout == nullptr) {
        return false;
    }
    for (int i = 0; i < layout->count(); ++i) {
        QLayoutItem* item = layout->itemAt(i);
        if (item->widget() == widget) {
            return true;
        }
        if (item->layout() != nullptr && layoutHolds(item->layout(), widget)) {
            return true;
        }
    }
    return false;
}

QLayout* layoutOf(QLayout* layout, const QWidget* widget) {
    if (layout == nullptr) {
        return nullptr;
    }
    for (int i = 0; i < layout->count(); ++i) {
        QLayoutItem* item = layout->itemAt(i);
        if (item->widget() == widget) {
            return layout;
        }
        if (item->layout() != nullptr) {
            if (QLayout* found = layoutOf(item->layout(), widget)) {
                return found;
            }
        }
    }
    return nullptr;
}

// A label's or button's text, without the mnemonic marks, names it for screen
// readers and the dialog automation.
QString accessibleText(const QString& text) {
    QString plain = text;
    plain.replace(QStringLiteral("&&"), QStringLiteral("\x01"));
    plain.remove(u'&');
    plain.replace(QStringLiteral("\x01"), QStringLiteral("&"));
    return plain;
}

} // namespace

TemplateDialog::TemplateDialog(unsigned templateId, QWidget* parent)
    : QDialog(parent), m_templateId(templateId) {
    KeyFilter::installRouter();
}

TemplateDialog::~TemplateDialog() = default;

bool TemplateDialog::Create() {
    if (m_created) {
        return true;
    }
    const ResourceHandle* handle = currentResourceHandle();
    const QString source =
        handle->isHost() ? QStringLiteral("the host's resources") : handle->fileName();
    QByteArray form = loadDialogTemplate(m_templateId);
    if (form.isEmpty()) {
        m_templateError =
            QStringLiteral("Dialog template %1 is not in %2.").arg(m_templateId).arg(source);
        return false;
    }
    QBuffer buffer(&form);
    buffer.open(QIODevice::ReadOnly);
    TemplateLoader loader;
    QWidget* body = loader.load(&buffer, nullptr);
    if (body == nullptr) {
        m_templateError = QStringLiteral("Dialog template %1 in %2 cannot be read: %3")
                              .arg(m_templateId)
                              .arg(source, loader.errorString());
        return false;
    }
    setWindowTitle(body->windowTitle());
    const QSize size = body->size();
    auto* frame = new QVBoxLayout(this);
    frame->setContentsMargins(0, 0, 0, 0);
    frame->addWidget(body);
    body->setParent(this);
    body->setWindowFlags(Qt::Widget);
    setSizeGripEnabled(true);
    resize(size.expandedTo(minimumSizeHint()));
    m_templateError.clear();
    m_created = true;
    wireControls();
    return true;
}

void TemplateDialog::wireControls() {
    const QList<QWidget*> widgets = findChildren<QWidget*>();
    for (QWidget* widget : widgets) {
        const int id = numberOf(widget);
        if (id == 0) {
            continue;
        }
        m_controls.insert(id, widget);
        if (auto* button = qobject_cast<QAbstractButton*>(widget)) {
            if (widget->accessibleName().isEmpty()) {
                widget->setAccessibleName(accessibleText(button->text()));
            }
            if (auto* push = qobject_cast<QPushButton*>(widget)) {
                // Enter presses button 1 only, as Windows gives IDOK the Enter key.
                push->setAutoDefault(false);
                push->setDefault(id == IDOK);
            }
            connect(button, &QAbstractButton::clicked, this,
                    [this, id] { runHandler("a button of a dialog", [&] { OnCommand(id); }); });
        } else if (auto* label = qobject_cast<QLabel*>(widget)) {
            if (widget->accessibleName().isEmpty()) {
                widget->setAccessibleName(accessibleText(label->text()));
            }
        } else if (qobject_cast<QLineEdit*>(widget) != nullptr) {
            widget->installEventFilter(this);
        }
    }
}

int TemplateDialog::DoModal() {
    if (!Create()) {
        qCWarning(lcDialog).noquote() << m_templateError;
        messageBox(m_templateError, QString(), MB_OK | MB_ICONERROR);
        return -1;
    }
    m_ended = false;
    m_code = IDCANCEL;
    // Modal before OnInitDialog, so that a dialog which shows itself there is
    // already modal when its Show event goes out.
    setWindowModality(Qt::ApplicationModal);
    OnInitDialog();
    if (m_ended) {
        hide();
        return m_code;
    }
    m_inModal = true;
    const int result = exec();
    m_inModal = false;
    return m_ended ? m_code : result;
}

void TemplateDialog::EndDialog(int code) {
    m_code = code;
    m_ended = true;
    if (m_inModal) {
        // Hides at once; the nested loop ends when the running handler returns.
        QDialog::done(code);
    }
}

bool TemplateDialog::OnInitDialog() {
    return true;
}

void TemplateDialog::OnOK() {
    EndDialog(IDOK);
}

void TemplateDialog::OnCancel() {
    EndDialog(IDCANCEL);
}

bool TemplateDialog::OnCommand(int id) {
    if (id == IDOK) {
        OnOK();
        return true;
    }
    if (id == IDCANCEL) {
        OnCancel();
        return true;
    }
    return false;
}

void TemplateDialog::OnEditKillFocus(int) {}

qintptr TemplateDialog::OnPrivateMessage(unsigned message, quintptr wParam, qintptr) {
    if (message == WM_COMMAND) {
        OnCommand(int(wParam & 0xFFFF));
    }
    return 0;
}

bool TemplateDialog::PreTranslateKey(QKeyEvent*) {
    return false;
}

void TemplateDialog::PostMessage(unsigned message, quintptr wParam, qintptr lParam) {
    platform::PostMessage(this, message, wParam, lParam);
}

// Esc, the window's close button and Enter on button 1 come here through Qt.
void TemplateDialog::accept() {
    runHandler("OK of a dialog", [&] { OnOK(); });
}

void TemplateDialog::reject() {
    runHandler("Cancel of a dialog", [&] { OnCancel(); });
}

bool TemplateDialog::event(QEvent* event) {
    return runHandler("an event of a dialog", true, [&] {
        if (event->type() == PrivateMessageEvent::eventType()) {
            auto* message = static_cast<PrivateMessageEvent*>(event);
            OnPrivateMessage(message->message(), message->wParam(), message->lParam());
            return true;
        }
        return QDialog::event(event);
    });
}

bool TemplateDialog::eventFilter(QObject* watched, QEvent* event) {
    return runHandler("a field of a dialog losing the focus", false, [&] {
        // A dialog that is closing has no field left to leave.
        if (event->type() == QEvent::FocusOut && !m_ended &&
            static_cast<QFocusEvent*>(event)->reason() != Qt::PopupFocusReason) {
            if (const int id = numberOf(watched)) {
                OnEditKillFocus(id);
            }
        }
        return QDialog::eventFilter(watched, event);
    });
}

QWidget* TemplateDialog::GetDlgItem(int id) const {
    return m_controls.value(id, nullptr);
}

int TemplateDialog::GetDlgCtrlId(const QWidget* widget) const {
    if (widget == nullptr) {
        return 0;
    }
    const int id = numberOf(widget);
    return id != 0 && GetDlgItem(id) == widget ? id : 0;
}

bool TemplateDialog::SetDlgItemText(int id, const QString& text) {
    QWidget* widget = GetDlgItem(id);
    if (widget == nullptr) {
        return false;
    }
    if (auto* label = qobject_cast<QLabel*>(widget)) {
        label->setText(text);
        label->setAccessibleName(accessibleText(text));
    } else if (auto* button = qobject_cast<QAbstractButton*>(widget)) {
        button->setText(text);
        button->setAccessibleName(accessibleText(text));
    } else if (auto* edit = qobject_cast<QLineEdit*>(widget)) {
        edit->setText(text);
    } else if (auto* box = qobject_cast<QGroupBox*>(widget)) {
        box->setTitle(text);
    } else if (auto* combo = qobject_cast<QComboBox*>(widget)) {
        combo->setCurrentText(text);
    } else if (auto* plain = qobject_cast<QPlainTextEdit*>(widget)) {
        plain->setPlainText(text);
    } else {
        widget->setWindowTitle(text);
    }
    return true;
}

QString TemplateDialog::GetDlgItemText(int id) const {
    QWidget* widget = GetDlgItem(id);
    if (widget == nullptr) {
        return {};
    }
    if (auto* label = qobject_cast<QLabel*>(widget)) {
        return label->text();
    }
    if (auto* button = qobject_cast<QAbstractButton*>(widget)) {
        return button->text();
    }
    if (auto* edit = qobject_cast<QLineEdit*>(widget)) {
        return edit->text();
    }
    if (auto* box = qobject_cast<QGroupBox*>(widget)) {
        return box->title();
    }
    if (auto* combo = qobject_cast<QComboBox*>(widget)) {
        return combo->currentText();
    }
    if (auto* plain = qobject_cast<QPlainTextEdit*>(widget)) {
        return plain->toPlainText();
    }
    return widget->windowTitle();
}

bool TemplateDialog::SetDlgItemCaption(int id, unsigned stringId) {
    return SetDlgItemText(id, loadString(stringId));
}

bool TemplateDialog::ShowDlgItem(int id, bool show) {
    QWidget* widget = GetDlgItem(id);
    if (widget == nullptr) {
        return false;
    }
    widget->setVisible(show);
    return true;
}

bool TemplateDialog::IsDlgItemVisible(int id) const {
    QWidget* widget = GetDlgItem(id);
    return widget != nullptr && !widget->isHidden();
}

bool TemplateDialog::EnableDlgItem(int id, bool enable) {
    QWidget* widget = GetDlgItem(id);
    if (widget == nullptr) {
        return false;
    }
    widget->setEnabled(enable);
    return true;
}

bool TemplateDialog::IsDlgItemEnabled(int id) const {
    QWidget* widget = GetDlgItem(id);
    return widget != nullptr && widget->isEnabled();
}

int TemplateDialog::IsDlgButtonChecked(int id) const {
    auto* button = qobject_cast<QAbstractButton*>(GetDlgItem(id));
    if (button == nullptr || !button->isCheckable()) {
        return 0;
    }
    if (auto* box = qobject_cast<QCheckBox*>(button)) {
        return box->checkState() == Qt::PartiallyChecked ? 2 : (box->isChecked() ? 1 : 0);
    }
    return button->isChecked() ? 1 : 0;
}

bool TemplateDialog::CheckDlgButton(int id, int state) {
    auto* button = qobject_cast<QAbstractButton*>(GetDlgItem(id));
    if (button == nullptr || !button->isCheckable()) {
        return false;
    }
    if (auto* box = qobject_cast<QCheckBox*>(button); box != nullptr && state == 2) {
        box->setTristate(true);
        box->setCheckState(Qt::PartiallyChecked);
        return true;
    }
    button->setChecked(state != 0);
    return true;
}

QRect TemplateDialog::GetDlgItemRect(int id) const {
    QWidget* widget = GetDlgItem(id);
    if (widget == nullptr) {
        return {};
    }
    return QRect(widget->mapTo(this, QPoint(0, 0)), widget->size());
}

bool TemplateDialog::MoveDlgItem(int id, const QRect& rect) {
    QWidget* widget = GetDlgItem(id);
    if (widget == nullptr || widget->parentWidget() == nullptr ||
        layoutHolds(widget->parentWidget()->layout(), widget)) {
        return false;
    }
    const QPoint topLeft = widget->parentWidget()->mapFrom(this, rect.topLeft());
    widget->setGeometry(QRect(topLeft, rect.size()));
    return true;
}

bool TemplateDialog::RaiseDlgItem(int id) {
    QWidget* widget = GetDlgItem(id);
    if (widget == nullptr) {
        return false;
    }
    widget->raise();
    return true;
}

bool TemplateDialog::LowerDlgItem(int id) {
    QWidget* widget = GetDlgItem(id);
    if (widget == nullptr) {
        return false;
    }
    widget->lower();
    return true;
}

bool TemplateDialog::SetFocusTo(int id) {
    QWidget* widget = GetDlgItem(id);
    if (widget == nullptr) {
        return false;
    }
    widget->setFocus(Qt::OtherFocusReason);
    return true;
}

int TemplateDialog::GetFocusId() const {
    for (QWidget* widget = focusWidget(); widget != nullptr && widget != this;
         widget = widget->parentWidget()) {
        if (const int id = GetDlgCtrlId(widget)) {
            return id;
        }
    }
    return 0;
}

bool TemplateDialog::AttachGrid(GridWindow* grid, int placeholderId) {
    QWidget* placeholder = GetDlgItem(placeholderId);
    if (grid == nullptr || placeholder == nullptr) {
        return false;
    }
    if (placeholder == grid) {
        return true;
    }
    grid->setObjectName(QString::number(placeholderId));
    grid->setAccessibleName(placeholder->accessibleName());
    grid->setSizePolicy(placeholder->sizePolicy());
    grid->setMinimumSize(placeholder->minimumSize());
    QWidget* parent = placeholder->parentWidget();
    QLayout* layout = parent != nullptr ? layoutOf(parent->layout(), placeholder) : nullptr;
    if (layout != nullptr) {
        delete layout->replaceWidget(placeholder, grid);
    } else {
        grid->setParent(parent);
        grid->setGeometry(placeholder->geometry());
    }
    grid->setVisible(!placeholder->isHidden());
    m_controls.insert(placeholderId, grid);
    connect(grid, &QObject::destroyed, this, [this, placeholderId](QObject* gone) {
        if (m_controls.value(placeholderId) == gone) {
            m_controls.remove(placeholderId);
        }
    });
    if (qobject_cast<GridWindow*>(placeholder) != nullptr) {
        // A grid that stood here before belongs to its owner, not to the dialog.
        placeholder->hide();
        placeholder->setParent(nullptr);
    } else {
        delete placeholder;
    }
    return true;
}

} // namespace platform
