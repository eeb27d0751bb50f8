#pragma once

#include <QString>

class QWidget;

// The host's file dialog over `parent`: RTNORM with the absolute path, RTCAN on Cancel.
// `extension` holds one or more extensions ("dwg;dwt") that become its filters. Bit 1 of
// `flags` asks for a file to write; bit 32 leaves out the overwrite question.
int ovuiFileDialog(QWidget* parent, const QString& title, const QString& defaultPath,
                   const QString& extension, int flags, QString& path);

// "dwg;dwt" -> "DWG files (*.dwg *.dwt);;All files (*)".
QString ovuiFileNameFilter(const QString& extensions);

// The widget that a new host dialog should sit over: the modal dialog open now, else the
// host's frame.
QWidget* ovuiDialogParent();
