#pragma once

class QWidget;

namespace platform {

// The scale of the screen a window is on, from its logical DPI: 1.0 at 96 DPI. A
// null window (or one not yet shown) takes the primary screen.
double GetMonitorDpiXScale(const QWidget* window = nullptr);
double GetMonitorDpiYScale(const QWidget* window = nullptr);

} // namespace platform
