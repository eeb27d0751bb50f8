#pragma once

#include "cadDrawing.h"

#include <libguile.h>

#include <QString>

#include <exception>

// What the drawing primitives share: reading their arguments, and saying at the command line
// what is wrong ("; entget: ...") before they return nil. None of these raises a Scheme
// exception, so that nothing jumps over the C++ frames of a primitive.
namespace ovcore::lisp::detail {

void report(const char* who, const QString& message);
// nil, after saying why when there is something to say.
SCM failed(const char* who, const QString& message);
bool badArgument(const char* who, SCM value);
bool given(SCM value);
bool isNil(SCM value);
bool isTrue(SCM value);
bool nameArg(const char* who, SCM value, ov_name name);
bool textArg(const char* who, SCM value, QString& text);
// A list of two or three real numbers, exact ones included.
bool pointOf(SCM value, double point[3]);
// A list of groups as a chain, in order.
bool dataArg(const char* who, SCM list, cad::Chain& data);
SCM listOf(const char* who, const resbuf* chain);
SCM nameValue(const ov_name name);

// Runs a primitive's body; a C++ exception ends it with nil and a message.
template <typename F> SCM run(const char* who, F&& body) {
    try {
        return body();
    } catch (const std::exception& e) {
        return failed(who,
                      QStringLiteral("internal error: %1").arg(QString::fromLocal8Bit(e.what())));
    } catch (...) {
        return failed(who, QStringLiteral("internal error"));
    }
}

} // namespace ovcore::lisp::detail
