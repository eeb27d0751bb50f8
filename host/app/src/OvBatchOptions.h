#pragma once

#include <QString>
#include <QStringList>

// The command line of orvex:
//   orvex --batch [--project FILE] [--module PATH | --no-module] [--eval EXPR]...
//         [--script FILE]... [--save | --save-as PATH] [DRAWING...]
//   orvex --help
// An option's value follows it as the next argument or after "=" ("--eval=(+ 1 2)");
// "--" ends the options, so that a drawing whose name starts with "-" can be named.
struct OvBatchOptions {
    enum class Mode {
        Desktop, // no --batch: the desktop program
        Batch,
        Help,
    };

    Mode mode = Mode::Desktop;
    QString project;
    QString module; // empty: the default module, unless noModule
    bool noModule = false;
    QStringList evals;
    QStringList scripts;
    bool save = false;
    QString saveAs;
    QStringList drawings;

    // Reads the arguments after the program name. False, with the reason in `error`, for
    // an unknown option, an option without its value, options that exclude each other, and
    // batch options given without --batch.
    bool parse(const QStringList& arguments, QString* error);

    static QString usage();
};
