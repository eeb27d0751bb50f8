#pragma once

#include <QString>
#include <QStringList>

// The command line of the desktop program:
//   orvex [--project FILE] [--module PATH | --no-module] [DRAWING...]
struct OvDesktopOptions {
    QString project;
    QString module; // empty: the default module, unless noModule
    bool noModule = false;
    QStringList drawings;

    // The arguments after the program name; false with the reason for an unknown option,
    // a missing value or options that exclude each other.
    bool parse(const QStringList& arguments, QString* error);

    // Whether orvex runs as the desktop program: neither --batch nor --help is given.
    static bool wanted(const QStringList& arguments);
    static QString usage();
};
