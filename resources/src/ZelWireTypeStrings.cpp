// The texts of the wire type manager, by number. Callers find them by number
// only, so a number keeps its role for good; the wording can change freely.
//
// A few texts are more than words: 153, 155 and 168 are formats with one %s;
// 107 is folded to upper case and followed by 1 to 20 to name the user
// properties, so it holds no comma; 110 is a layer name; 115 and 116 are the
// grid's choice list and are matched back, ignoring case; 161, 162 and 118 are
// the names the LISP side gets for the settings, and match 106, 132 and (through
// the alias 117) 114, so that it can hand them back as property names.

#include "ResourceTables.h"

#include <iterator>

namespace zelres {

namespace {

constexpr StringEntry kTable[] = {
    {104, "Set and Edit Wire Types"},
    {105, "Layer Name"},
    {106, "Wire Color"},
    {107, "USER"},
    {108, "Color..."},
    {109, "Remove the selected wire types? Their layers stay in the drawing as ordinary "
          "layers."},
    {110, "WIRES"},
    {111, "The layer name is too long: a layer name can have at most 255 characters."},
    {113, "The wire types have been changed. Save the changes?"},
    {114, "Wire Flag"},
    {115, "Yes"},
    {116, "No"},
    {117, "Flag"},
    {118, "FLAG"},
    {119, "Options"},
    {120, "Convert lines to wires"},
    {121, "Update wire numbers"},
    {122, "Pick <"},
    {123, "No layer matches the name or pattern given."},
    {124, "Linetype..."},
    {125, "Lineweight..."},
    {126, "OK"},
    {127, "Change Wires"},
    {128, "Cancel"},
    {129, "Help"},
    {130, "Layer name format:"},
    {131, "Remove"},
    {132, "Wire Size"},
    {133, "Layer:"},
    {134, "Key"},
    {135, "Make current"},
    {136, "Every valid layer is a wire layer"},
    {137, "The layer name format is not valid."},
    {138, "Use %C for the wire color, %S for the wire size and %1 to %5 for the first five "
          "user properties, with at least one of them. Anything else must be characters "
          "that a layer name may hold."},
    {139, "Layer Name Format"},
    {141, "Color"},
    {142, "Two wire types have the same layer name. Give each wire type a layer name of its "
          "own."},
    {143, "The layer is in use in the drawing and cannot be deleted."},
    {146, "The layer name holds a character that a layer name may not have: "
          "< > / \\ \" ' : ; ? * | , = `"},
    {147, "The wire type has no layer name. Enter a layer name."},
    {148, "Add Existing Layers..."},
    {149, "Used"},
    {150, "Wire Types"},
    {152, "Layer 0 cannot be renamed."},
    {153, "Layer %s"},
    {154, "The picked object does not lie on a wire type's layer. Make its layer a wire "
          "type?"},
    {155, "The default wire type %s was created."},
    {156, "A default wire type was created for this drawing."},
    {157, "\nSelect a wire: "},
    {158, "Wire Properties"},
    {159, "Property"},
    {160, "Name"},
    {161, "WIRE COLOR"},
    {162, "WIRE SIZE"},
    {163, "Default Wire Type"},
    {164, "Set Default"},
    {165, "Set Wire Type"},
    {166, "Change/Convert Wire Type"},
    {167, "Create/Edit Wire Types"},
    {168, "The picked object lies on layer %s, which is not a wire type."},
    {169, "Import..."},
    {170, "Import Wire Types from Drawing or Template"},
    {171, "&Select All"},
    {172, "&Clear All"},
};

static_assert(isStrictlyRising(kTable), "string numbers must rise and stand once each");

} // namespace

const StringEntry* const kStrings = kTable;
const std::size_t kStringCount = std::size(kTable);

} // namespace zelres
