#pragma once

// The one message box of the module. Depending on the mode it shows a window
// (desktop), prints the text and takes the default answer (batch, and desktop
// without a widget application), or answers from a queue that a test filled
// (scripted, see MessageBoxScript). Flags and answers keep the values of the
// Windows message box, which the module's callers pass as numbers.

#include "platform/ShownMessage.h"

#include <QString>

#include <functional>

namespace platform {

// Buttons (the low four bits).
inline constexpr unsigned MB_OK = 0x0;
inline constexpr unsigned MB_OKCANCEL = 0x1;
inline constexpr unsigned MB_ABORTRETRYIGNORE = 0x2;
inline constexpr unsigned MB_YESNOCANCEL = 0x3;
inline constexpr unsigned MB_YESNO = 0x4;
inline constexpr unsigned MB_RETRYCANCEL = 0x5;
// Icons.
inline constexpr unsigned MB_ICONERROR = 0x10;
inline constexpr unsigned MB_ICONQUESTION = 0x20;
inline constexpr unsigned MB_ICONWARNING = 0x30;
inline constexpr unsigned MB_ICONINFORMATION = 0x40;
// Default button.
inline constexpr unsigned MB_DEFBUTTON1 = 0x000;
inline constexpr unsigned MB_DEFBUTTON2 = 0x100;
inline constexpr unsigned MB_DEFBUTTON3 = 0x200;

// Answers.
inline constexpr int IDOK = 1;
inline constexpr int IDCANCEL = 2;
inline constexpr int IDABORT = 3;
inline constexpr int IDRETRY = 4;
inline constexpr int IDIGNORE = 5;
inline constexpr int IDYES = 6;
inline constexpr int IDNO = 7;

enum class MessageBoxMode {
    Desktop,
    Batch,
    Scripted,
};

// Shows `text` under `caption` and returns the answer. `defaultAnswer` 0 means
// the default button of `flags`; another value is what batch mode and an empty
// script queue answer.
int messageBox(const QString& text, const QString& caption, unsigned flags = MB_OK,
               int defaultAnswer = 0);

// The application's own box: the caption is the application name.
int appMessageBox(const QString& text, unsigned flags = MB_OK);
// The same with the text of string `stringId` of the current resource handle,
// which is empty unless the caller switched to a library that holds it.
int appMessageBoxById(unsigned stringId, unsigned flags = MB_OK);

// The answer of the default button that `flags` name; the first button when the
// default names none.
int defaultMessageBoxAnswer(unsigned flags);
// "OK", "Cancel", "Yes", ... for an answer; its number for any other value.
QString messageBoxAnswerName(int answer);

MessageBoxMode messageBoxMode();
void setMessageBoxMode(MessageBoxMode mode);

// Where batch mode writes; an empty function restores standard output. The host
// points it at its command line. Each call gets one complete line.
void setMessageBoxPrinter(std::function<void(const QString&)> printer);

// For a program that drives its own windows from a script (the host's dialog
// automation). In batch mode, when `wanted` answers true, the box opens as a real
// window for the script to answer instead of taking its default. Empty: never.
void setMessageBoxWindowWanted(std::function<bool()> wanted);
// Hears of every box in every mode once it is answered, with its answer. Empty: none.
void setMessageBoxObserver(std::function<void(const ShownMessage&)> observer);

} // namespace platform
