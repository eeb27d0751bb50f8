#include "platform/ScreenScale.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

namespace platform {

namespace {

// The DPI at which a Windows screen runs at 100 %.
constexpr double kBaseDpi = 96.0;

QScreen* screenOf(const QWidget* window) {
    if (window != nullptr && window->screen() != nullptr) {
        return window->screen();
    }
    return QGuiApplication::primaryScreen();
}

} // namespace

double GetMonitorDpiXScale(const QWidget* window) {
    QScreen* screen = screenOf(window);
    return screen != nullptr ? screen->logicalDotsPerInchX() / kBaseDpi : 1.0;
}

double GetMonitorDpiYScale(const QWidget* window) {
    QScreen* screen = screenOf(window);
    return screen != nullptr ? screen->logicalDotsPerInchY() / kBaseDpi : 1.0;
}

} // namespace platform
