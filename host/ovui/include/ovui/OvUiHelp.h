#pragma once

#include <QString>

class QWidget;

// The host's help: Markdown pages under docs/help/, one per topic.

// The folder of the help pages: $ORVEX_HELP_DIR when set; else share/doc/orvex/help of an
// installed program; else the source tree's docs/help.
QString ovuiHelpFolder();

// The page of a topic: help/<topic>.md when it exists; without a topic, the page named like
// `file` in the documentation folder (the user guide); else the index, help/index.md.
// Empty when not even the index is there.
QString ovuiHelpPage(const QString& file, const QString& topic);

// Shows the page of that topic in the help window. Over a modal dialog (or without a main
// window) the help window is modal too, so that it can take input; otherwise it stays open
// beside the main window. Returns the page shown, empty when there was none (then a
// message says where it was looked for).
QString ovuiShowHelp(const QString& file, const QString& topic);
