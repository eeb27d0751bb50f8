#pragma once

#include "ovdb/OvCmColor.h"
#include "ovdb/OvDbLineWeight.h"
#include "ovdb/OvDbObjectId.h"

class QWidget;

// The host's own windows: the frame that parents every dialog, and the pickers that the
// module and LISP scripts open for colours, linetypes and lineweights.

// Readies the host's UI: registers its LISP functions and, once a widget application runs,
// puts the widget input provider in place (files through a file dialog, help in a help
// window). Calling it again does nothing more.
bool InitOvUiDLL();

// The main window that the desktop registered; without one (batch runs), a hidden top-level
// widget made on first use, so that a dialog always has a parent. Null without a widget
// application.
QWidget* ovedGetOrvexFrame();
QWidget* ovqw_orvexMainWnd();

// The desktop registers its main window here; null takes the registration back.
void ovuiSetMainWindow(QWidget* window);

// The index colour picker. 1 on OK with `color` set; 0 on Cancel with `color` untouched.
// BYLAYER and BYBLOCK are offered only with `allowMeta`. `curLayerColor` is shown beside the
// choice for comparison. `tab` names a page of the picker; there is one page, the index
// colours, so any value shows it.
int ovedSetColorDialogTrueColor(OvCmColor& color, int allowMeta, const OvCmColor& curLayerColor,
                                int tab);

// The linetype picker over the working drawing's linetypes, `oldId` preselected. 1 on OK with
// `newId` the linetype chosen and `newName` its name in a buffer of the host (the caller frees
// it with ovutDelBuffer); 0 on Cancel with both untouched. ByBlock and ByLayer are offered
// only with `includeByBlockByLayer`.
int ovedLinetypeDialog(const OvDbObjectId& oldId, int includeByBlockByLayer, wchar_t*& newName,
                       OvDbObjectId& newId);

// The lineweight picker, `oldWeight` preselected. 1 on OK with `newWeight` set; 0 on Cancel
// with it untouched. ByLayer and ByBlock are offered only with `includeByBlockByLayer`;
// Default always.
int ovedLineWeightDialog(OvDb::LineWeight oldWeight, int includeByBlockByLayer,
                         OvDb::LineWeight& newWeight);
