#include "OvBatchOptions.h"

namespace {

enum class Takes { Nothing, Value };

struct OptionSpec {
    const char* name;
    Takes takes;
};

constexpr OptionSpec kOptions[] = {
    {"--batch", Takes::Nothing}, {"--help", Takes::Nothing},      {"--project", Takes::Value},
    {"--module", Takes::Value},  {"--no-module", Takes::Nothing}, {"--eval", Takes::Value},
    {"--script", Takes::Value},  {"--save", Takes::Nothing},      {"--save-as", Takes::Value},
};

const OptionSpec* findOption(const QString& name) {
    for (const OptionSpec& option : kOptions) {
        if (name == QLatin1String(option.name))
            return &option;
    }
    return nullptr;
}

bool failWith(QString* error, const QString& message) {
    if (error)
        *error = message;
    return false;
}

} // namespace

bool OvBatchOptions::parse(const QStringList& arguments, QString* error) {
    *this = OvBatchOptions();
    bool batch = false;
    bool help = false;
    QStringList batchOnly; // options that mean nothing to the desktop program yet

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
        const OptionSpec* option = findOption(name);
        if (!option)
            return failWith(error, QStringLiteral("unknown option %1").arg(name));
        QString value;
        if (option->takes == Takes::Value) {
            if (equals >= 0) {
                value = argument.mid(equals + 1);
            } else if (i + 1 < arguments.size()) {
                value = arguments.at(++i);
            } else {
                return failWith(error, QStringLiteral("%1 needs a value").arg(name));
            }
            if (value.isEmpty() && name != QLatin1String("--eval"))
                return failWith(error, QStringLiteral("%1 needs a value").arg(name));
        } else if (equals >= 0) {
            return failWith(error, QStringLiteral("%1 takes no value").arg(name));
        }

        if (name == QLatin1String("--batch")) {
            batch = true;
            continue;
        }
        if (name == QLatin1String("--help")) {
            help = true;
            continue;
        }
        batchOnly << name;
        if (name == QLatin1String("--project")) {
            if (!project.isEmpty())
                return failWith(error, QStringLiteral("--project is given twice"));
            project = value;
        } else if (name == QLatin1String("--module")) {
            if (!module.isEmpty())
                return failWith(error, QStringLiteral("--module is given twice"));
            module = value;
        } else if (name == QLatin1String("--no-module")) {
            noModule = true;
        } else if (name == QLatin1String("--eval")) {
            evals << value;
        } else if (name == QLatin1String("--script")) {
            scripts << value;
        } else if (name == QLatin1String("--save")) {
            save = true;
        } else if (name == QLatin1String("--save-as")) {
            if (!saveAs.isEmpty())
                return failWith(error, QStringLiteral("--save-as is given twice"));
            saveAs = value;
        }
    }

    if (help) {
        mode = Mode::Help;
        return true;
    }
    if (noModule && !module.isEmpty())
        return failWith(error, QStringLiteral("--module and --no-module exclude each other"));
    if (save && !saveAs.isEmpty())
        return failWith(error, QStringLiteral("--save and --save-as exclude each other"));
    if (!batch && !batchOnly.isEmpty())
        return failWith(error, QStringLiteral("%1 works only with --batch").arg(batchOnly.first()));
    mode = batch ? Mode::Batch : Mode::Desktop;
    return true;
}

QString OvBatchOptions::usage() {
    return QStringLiteral(
        "Usage:\n"
        "  orvex --batch [--project FILE] [--module PATH | --no-module] [--eval EXPR]...\n"
        "        [--script FILE]... [--save | --save-as PATH] [DRAWING...]\n"
        "  orvex --help\n"
        "\n"
        "Batch mode runs without a display. It opens the drawings named (the first is the\n"
        "active one; with none, a new drawing), sets the project, loads the add-on and the\n"
        "wire type module, evaluates each --eval and then each --script in the active\n"
        "drawing, printing each value on a line of its own, and saves on request.\n"
        "\n"
        "  --project FILE   make FILE (a .zpj project file) the active project\n"
        "  --module PATH    load this module instead of ZelWireType.ovm beside orvex\n"
        "  --no-module      load no wire type module\n"
        "  --eval EXPR      evaluate a LISP expression (repeatable)\n"
        "  --script FILE    evaluate a LISP file (repeatable)\n"
        "  --save           save every drawing opened from a file back to it\n"
        "  --save-as PATH   save the active drawing as PATH\n"
        "  --help           show this text\n"
        "\n"
        "ORVEX_ADDON_DIR names the add-on folder (default: the folder of orvex), which holds\n"
        "ZelAddonLisp.ovm and the Scheme start-up files addon-lisp/*.scm.\n"
        "\n"
        "Exit status: 0 when every expression ran without a LISP error and every file could\n"
        "be read, loaded and saved; 1 otherwise; 2 for a wrong command line.\n");
}
