#pragma once

#include <QDialog>

class QTextBrowser;

// The help window: one Markdown page at a time, links between pages followed inside it.
// Its browser is control 1001 and its Close button 2.
class OvHelpWindow : public QDialog {
    Q_OBJECT
public:
    explicit OvHelpWindow(QWidget* parent = nullptr);

    void showPage(const QString& page);
    QString page() const;

private:
    static QString pageTitle(const QString& path);
    void fitImages(const QString& page);

    QTextBrowser* m_browser;
};
