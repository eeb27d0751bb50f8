// The module's sixteen LISP functions called as scripts call them, with arguments made
// from the fuzzer's bytes: as a value chain through ovedInvoke, or as LISP text with
// anything a script can write (NUL characters, huge integers, circular lists). Every call
// answers or fails with a LISP error; none crashes, hangs or leaves an object open.
#include "FuzzChain.h"
#include "FuzzHost.h"

#include "support/ZelTestHost.h"

#include "ovcore/OvLisp.h"
#include "ovcore/oved.h"
#include "zeloledb/ZelOleDbCommand.h"
#include "zelpm/ZelPrmProjectManager.h"


namespace {

// A LISP string as a script writes it, escapes included.
QString lispString(const QString& text) {
    QString out = QStringLiteral("\"");
    for (const QChar c : text) {
        if (c == u'"' || c == u'\\')
            out += u'\\';
        if (c.unicode() < 0x20)
            out += QStringLiteral("\\x%1;").arg(c.unicode(), 0, 16);
        else
            out += c;
    }
    return out + u'"';
}

QString lispArgument(fuzzsupport::Bytes& bytes) {
    switch (bytes.byte() % 9) {
    case 0:
        return lispString(bytes.text());
    case 1:
        return QString::number(bytes.value<qint64>());
    case 2:
        return QString::number(bytes.value<double>(), 'g', 17).replace("inf", "(/ 1.0 0.0)");
    case 3:
        return QStringLiteral("nil");
    case 4:
        return QStringLiteral("T");
    case 5:
        return QStringLiteral("(list %1 %2)")
            .arg(lispString(bytes.text()), lispString(bytes.text()));
    case 6:
        return QStringLiteral("(let ((c (list %1 2))) (set-cdr! (cdr c) c) c)")
            .arg(lispString(bytes.text()));
    case 7:
        return QStringLiteral("'(%1 . %2)").arg(bytes.byte()).arg(lispString(bytes.text()));
    default:
        return QStringLiteral("(string-append %1 (string (integer->char 0)) %2)")
            .arg(lispString(bytes.text()), lispString(bytes.text()));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzzsupport::FuzzHost& host = fuzzsupport::FuzzHost::instance();
    static const bool once = [] {
        // The demo project, so that the queries reach its database; a runaway statement is
        // stopped soon.
        GetProjectManager()->openProject(QStringLiteral(ZEL_DEMO_DIR "/demo.zpj"));
        ZelOleDbCommand::SetTimeLimit(std::chrono::milliseconds(100));
        return true;
    }();
    (void)once;
    fuzzsupport::Bytes bytes(data, size);
    static const QStringList functions = ZelTestHost::moduleFunctionNames();
    const uint8_t choice = bytes.byte();
    const QString& function = functions.at(choice % functions.size());

    host.newDrawing();
    ZelTestHost::defineModuleFunctions();
    // A few layers for the functions to find, one of them a wire type.
    ovcore::lisp::evalString(QStringLiteral(
        "(entmake '((0 . \"LAYER\") (2 . \"BK_1.5\"))) (entmake '((0 . \"LAYER\") (2 . \"RD\")))"
        "(zel_add_wiretype \"RD\" \"RD\" \"1.5\")"));

    if (choice & 0x80) {
        QString call = u'(' + function;
        for (int i = bytes.byte() % 8; i > 0; --i)
            call += u' ' + lispArgument(bytes);
        ovcore::lisp::evalString(call + u')');
    } else {
        resbuf* chain = fuzzsupport::textLink(RTSTR, function);
        chain->rbnext = fuzzsupport::chainOf(bytes, 12, false);
        resbuf* result = nullptr;
        ovedInvoke(chain, &result);
        ovutRelRb(chain);
        ovutRelRb(result);
    }
    host.endInput();
    return 0;
}
