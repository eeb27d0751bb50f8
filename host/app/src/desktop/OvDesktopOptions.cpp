#include "OvDesktopOptions.h"

namespace {

bool failWith(QString* error, const QString& message) {
    if (error)
        *error = message;
    return false;
}

} // namespace

bool OvDesktopOptions::wanted(const QStringList& arguments) {
    for (const QString& argument : arguments) {
        if (argument == QLatin1String("--"))
            break;
        if (argument == QLatin1String("--batch") || argument == QLatin1String("--help"))
            return false;
    }
    return true;
}

bool OvDesktopOptions::parse(const QStringList& arguments, QString* error) {
    *this = OvDesktopOptions();
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments.at(i);
        if (argument == QLatin1String("--")) {
            drawings += arguments.mid(i + 1);
            break;
        }
        if (!argument.startsWith(u'-') || argument == QLatin1String("-")) {
            drawings << argument;
            continue;
        }
        const qsizetype equals = argument.indexOf(u'=');
        const QString name = equals < 0 ? argument : argument.left(equals);
        if (name == QLatin1String("--no-module")) {
            if (equals >= 0)
                return failWith(error, QStringLiteral("--no-module takes no value"));
            noModule = true;
            continue;
        }
        if (name != QLatin1String("--project") && name != QLatin1String("--module"))
            return failWith(error, QStringLiteral("unknown option %1 (the batch options need "
                                                  "--batch)")
                                       .arg(name));
        QString value;
        if (equals >= 0)
            value = argument.mid(equals + 1);
        else if (i + 1 < arguments.size())
            value = arguments.at(++i);
        if (value.isEmpty())
            return failWith(error, QStringLiteral("%1 needs a value").arg(name));
        QString& target = name == QLatin1String("--project") ? project : module;
        if (!target.isEmpty())
            return failWith(error, QStringLiteral("%1 is given twice").arg(name));
        target = value;
    }
    if (noModule && !module.isEmpty())
        return failWith(error, QStringLiteral("--module and --no-module exclude each other"));
    return true;
}

QString OvDesktopOptions::usage() {
    return QStringLiteral("Desktop:\n"
                          "  orvex [--project FILE] [--module PATH | --no-module] [DRAWING...]\n");
}
