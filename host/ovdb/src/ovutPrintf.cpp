#include "ovdb/ovut.h"

#include <QString>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <utility>

// ovutPrintf takes a wide printf format: wide strings go in with %ls (a plain %s wants a
// narrow, multibyte string), and text from outside goes in as an argument, never as the
// format. A format that the C library refuses, or that holds %n, is printed as it stands,
// so a stray percent sign such as in "100%" or "50%!" shows up instead of failing.
// What no check can catch is a well-formed conversion with no argument behind it: "50% d"
// prints an unspecified number, and a pointer conversion in that place may crash.

namespace {

void writeToStandardOutput(std::string_view utf8) {
    std::fwrite(utf8.data(), 1, utf8.size(), stdout);
    std::fflush(stdout);
}

OvutOutputSink& outputSink() {
    static OvutOutputSink sink = writeToStandardOutput;
    return sink;
}

// True when every conversion of the format is one the C library knows and %n is absent.
bool isSafeFormat(const wchar_t* f) {
    while (*f) {
        if (*f++ != L'%')
            continue;
        if (*f == L'%') {
            ++f;
            continue;
        }
        // Argument position ("%2$d"), flags, width, precision, length.
        const wchar_t* digits = f;
        while (*f >= L'0' && *f <= L'9')
            ++f;
        if (*f == L'$' && f != digits)
            ++f;
        else
            f = digits;
        while (*f && std::wcschr(L"-+ #0'I", *f))
            ++f;
        if (*f == L'*')
            ++f;
        while (*f >= L'0' && *f <= L'9')
            ++f;
        if (*f == L'.') {
            ++f;
            if (*f == L'*')
                ++f;
            while (*f >= L'0' && *f <= L'9')
                ++f;
        }
        while (*f && std::wcschr(L"hlLqjzZt", *f))
            ++f;
        if (!*f || !std::wcschr(L"diouxXeEfFgGaAcsCSpm", *f))
            return false;
        ++f;
    }
    return true;
}

void printText(const wchar_t* text, std::size_t length) {
    const QByteArray utf8 = QString::fromWCharArray(text, static_cast<qsizetype>(length)).toUtf8();
    if (const OvutOutputSink& sink = outputSink())
        sink(std::string_view(utf8.constData(), static_cast<std::size_t>(utf8.size())));
}

} // namespace

int ovutPrintf(const wchar_t* format, ...) {
    if (!format)
        return RTERROR;
    if (!isSafeFormat(format)) {
        printText(format, std::wcslen(format));
        return RTNORM;
    }

    // Most lines fit on the stack; a longer one goes through a memory stream, which grows
    // as needed and fails only on a real formatting error.
    wchar_t line[512];
    va_list args;
    va_start(args, format);
    va_list again;
    va_copy(again, args);
    const int length = std::vswprintf(line, std::size(line), format, args);
    va_end(args);
    if (length >= 0) {
        va_end(again);
        printText(line, static_cast<std::size_t>(length));
        return RTNORM;
    }

    wchar_t* buffer = nullptr;
    std::size_t size = 0;
    int written = -1;
    if (FILE* stream = open_wmemstream(&buffer, &size)) {
        written = std::vfwprintf(stream, format, again);
        std::fclose(stream);
    }
    va_end(again);
    if (written >= 0 && buffer)
        printText(buffer, size);
    else
        printText(format, std::wcslen(format));
    std::free(buffer);
    return RTNORM;
}

void ovutSetOutputSink(OvutOutputSink sink) {
    outputSink() = std::move(sink);
}

void ovutResetOutputSink() {
    outputSink() = writeToStandardOutput;
}
