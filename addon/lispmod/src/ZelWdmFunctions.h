#pragma once

#include <QList>
#include <QPair>
#include <QString>

class OvDbDatabase;

// (zel_wd_m_attributes ["drawing"])  the attributes of the first WD_M block reference in
//     the model space, as an association list (("WIRELAYS" . "BK*,BU*") ("SHEET" . "1")
//     ...), tags in upper case, in the reference's order. Without an argument: the
//     drawing of the current document; with one: that drawing, open in a document or read
//     from its file. Nil when there is no WD_M reference (or it has no attributes), and nil
//     with a message when the drawing cannot be read.
int zelWdmAttributes();

// The same walk in C++: false when the drawing has no WD_M reference.
bool zelReadWdmAttributes(OvDbDatabase* database, QList<QPair<QString, QString>>& attributes);
