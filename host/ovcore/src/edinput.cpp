#include "ovcore/OvEdInput.h"

#include "cadDrawing.h"

#include "ovcore/OvEdBatchInput.h"
#include "ovcore/OvEdInputProvider.h"
#include "ovdb/ovut.h"

#include <string>

namespace {

OvEdInputProvider* s_provider = nullptr;

QString textOf(const wchar_t* text) {
    return text ? QString::fromWCharArray(text) : QString();
}

} // namespace

OvEdInputProvider::~OvEdInputProvider() = default;

int OvEdInputProvider::getString(const QString&, QString&) {
    return RTCAN;
}

OvEdInputProvider* ovedSetInputProvider(OvEdInputProvider* provider) {
    OvEdInputProvider* previous = ovedInputProvider();
    s_provider = provider;
    return previous;
}

OvEdInputProvider* ovedInputProvider() {
    return s_provider ? s_provider : &OvEdBatchInput::instance();
}

resbuf* ovdbEntGet(const ov_name name) {
    if (!name)
        return nullptr;
    QString error;
    return ovcore::cad::entityData(name, &error).release();
}

int ovedEntSel(const wchar_t* prompt, ov_name name, double point[3]) {
    if (!name)
        return RTERROR;
    double ignored[3] = {0, 0, 0};
    const QString text = prompt ? textOf(prompt) : QStringLiteral("\nSelect object: ");
    // A command's arguments answer before the user of any provider.
    OvEdInputProvider* provider = OvEdBatchInput::instance().hasCommandPick()
                                      ? &OvEdBatchInput::instance()
                                      : ovedInputProvider();
    return provider->entSel(text, name, point ? point : ignored);
}

int ovedGetFileD(const wchar_t* title, const wchar_t* defaultPath, const wchar_t* extension,
                 int flags, resbuf* result) {
    if (!result)
        return RTERROR;
    QString path;
    const int status = ovedInputProvider()->getFileD(textOf(title), textOf(defaultPath),
                                                     textOf(extension), flags, path);
    if (status != RTNORM)
        return status;
    wchar_t* copy = nullptr;
    const std::wstring wide = path.toStdWString();
    if (ovutNewString(wide.c_str(), copy) != RTNORM)
        return RTERROR;
    result->restype = RTSTR;
    result->resval.rstring = copy;
    return RTNORM;
}

int ovedHelp(const wchar_t* file, const wchar_t* topic, int command) {
    return ovedInputProvider()->help(textOf(file), textOf(topic), command);
}

int ovedGetString(const wchar_t* prompt, QString& text) {
    OvEdInputProvider* provider = OvEdBatchInput::instance().hasCommandInput()
                                      ? &OvEdBatchInput::instance()
                                      : ovedInputProvider();
    return provider->getString(textOf(prompt), text);
}
