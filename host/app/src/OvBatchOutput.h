#pragma once

#include <QString>

#include <string_view>

// Standard output of a batch run. It knows whether it stands at the start of a line, so
// that each value printed can go on a line of its own whatever the command line got
// before it.
class OvBatchOutput {
public:
    void write(std::string_view utf8);
    void write(const QString& text);
    // A new line, unless nothing was written yet or the output ends with one.
    void startLine();
    bool atLineStart() const { return m_atLineStart; }

private:
    bool m_atLineStart = true;
};
