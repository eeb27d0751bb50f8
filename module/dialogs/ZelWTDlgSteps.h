#pragma once

#include <QString>

#include <vector>

class ZelWTGrid;

// Steps that the two wire type dialogs with a format edit and look buttons share: the
// create and edit dialog and its set and edit twin do these alike.
namespace zelwtdlg {

// How a typed layer name format fares: accepted, refused before any token was looked at
// (empty or without "%"), or refused at a token or by the layer name rules.
enum class FormatCheck { Accepted, RefusedPlain, RefusedAtToken };
FormatCheck CheckLayerFormat(const QString& trimmed);

// The host's colour, linetype and lineweight pickers, opened on the first selected row and
// applied to every selected row on OK. The rows selected; empty when none was, and then no
// picker opened.
std::vector<quint32> ChooseRowColor(ZelWTGrid& grid);
std::vector<quint32> ChooseRowLinetype(ZelWTGrid& grid);
std::vector<quint32> ChooseRowLineweight(ZelWTGrid& grid);

// Asks the add-on for a layer name or pattern and adds the matching layers as rows.
void AddExistingLayers(ZelWTGrid& grid);

} // namespace zelwtdlg
