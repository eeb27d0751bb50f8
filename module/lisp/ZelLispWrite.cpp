// The LISP functions that change wire types: add, edit, remove, and the choice of the
// current and the default wire type.

#include "lisp/ZelLispFunctions.h"

#include "lisp/ZelLispArgs.h"
#include "shell/ResourceOverride.h"
#include "store/ZelWireTypeRec.h"

#include "ovcore/oved.h"
#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbLayerTableRecord.h"
#include "ovdb/OvDbLinetypeTable.h"
#include "ovdb/ovut.h"
#include "platform/Resources.h"

#include <QCollator>

#include <locale.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <vector>

using namespace zellisp;

namespace {

// Handler statuses: the call went well, or the host is to report it as failed.
constexpr int kDone = 1;
constexpr int kFailed = 3;

std::wstring wide(const QString& text) {
    return text.toStdWString();
}

bool isString(const resbuf* link) {
    return link && link->restype == RTSTR;
}

// The leading decimal number of a text, as the C library reads it, 0 when there is none.
// Always with a point for decimals, whatever the user's locale.
double leadingNumber(const QString& text) {
    const QByteArray latin = text.toLatin1();
    const char* begin = latin.constData();
    char* end = nullptr;
    static const locale_t cLocale = newlocale(LC_NUMERIC_MASK, "C", nullptr);
    const double value = cLocale ? strtod_l(begin, &end, cLocale) : std::strtod(begin, &end);
    return end == begin ? 0.0 : value;
}

// Millimetres to hundredths the way the add-on has always done it: through single precision
// before the truncation, so that 0.29 gives 29 and not 28. A value beyond an integer gives
// what the processor gives for it, the lowest integer.
int hundredths(const QString& text) {
    const float scaled = static_cast<float>(leadingNumber(text) * 100.0);
    if (!std::isfinite(scaled) || scaled >= 2147483648.0f || scaled < -2147483648.0f)
        return std::numeric_limits<int>::min();
    return static_cast<int>(scaled);
}

OvDb::LineWeight lineWeightOf(const QString& text, OvDbDatabase* database) {
    const int weight = hundredths(text);
    if (weight >= OvDb::kLnWtByLwDefault && weight <= OvDb::kLnWtByLayer)
        return static_cast<OvDb::LineWeight>(weight);
    return database ? database->getNearestLineWeight(weight) : OvDb::nearestLineWeight(weight);
}

OvDbObjectId linetypeOf(const QString& name, OvDbDatabase* database) {
    OvDbLinetypeTable* table = nullptr;
    OvDbObjectId id;
    bool found = false;
    if (database->getLinetypeTable(table, OvDb::kForRead) == Orvex::eOk && table)
        found = table->getIdAt(wide(name).c_str(), id, false) == Orvex::eOk;
    releaseObject(table);
    return found ? id : database->continuousLinetype();
}

// Case-insensitive comparison in the user's language, as CollateNoCase has it. A collator
// of our own: the one behind QString::localeAwareCompare stays for the life of the thread.
bool collatesEqual(const QString& left, const QString& right) {
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator.compare(left, right) == 0;
}

bool layerExists(ZelWireTypeRec& store, const QString& name) {
    OvDbLayerTableRecord* record = nullptr;
    const bool found = store.GetLayerTblRec(name, OvDb::kForRead, record) && record;
    releaseObject(record);
    return found;
}

// The current wire layer record, made for a drawing that has no dictionary of its own.
ChainPtr currentRecord(ZelWireTypeRec& store) {
    resbuf* raw = nullptr;
    if (store.GetCurWireLayerXrec(raw) == Orvex::eKeyNotFound)
        store.AssignDefaultWireType(raw);
    return adoptChain(raw);
}

// The aliases under which the add-on's LISP side may give two of the property names.
struct Aliases {
    QString colorAlias = platform::loadString(141);
    QString colorName = platform::loadString(106);
    QString flagAlias = platform::loadString(117);
    QString flagName = platform::loadString(114);
};

} // namespace

int zel_add_wiretype() {
    const ResourceOverride resources;
    OvCmColor color;
    OvDbObjectId linetype;
    OvDb::LineWeight weight = OvDb::kLnWtByLwDefault;
    std::vector<QString> names;
    std::vector<QString> values;

    const resbuf* link = ovedGetArgs();
    if (!link)
        return kFailed;
    link = skipListBegin(link);
    const QString name = lispString(link);
    if (name.isEmpty())
        return kFailed;

    ZelWireTypeRec store;
    if (store.IsWireLayer(name)) {
        // Already a wire type: the pairs are not read, only the current layer moves.
        store.SetCurrentLayer(name);
        return kDone;
    }

    OvDbDatabase* database = workingDatabase();
    link = link->rbnext;
    if (!link) {
        // A name alone: an existing layer keeps its look.
        bool inUse = false;
        store.GetLayerInfo(name, database, color, linetype, weight, inUse);
    } else {
        const Aliases aliases;
        if (database)
            linetype = database->continuousLinetype();
        while (link && link->restype != RTLE) {
            if (!isString(link))
                return kFailed;
            const QString key = lispString(link);
            const resbuf* value = link->rbnext;
            bool property = false;
            if (key.compare(u"_COLOR", Qt::CaseInsensitive) == 0) {
                if (isString(value))
                    ovcmGetColorFromOXIName(color, value->resval.rstring);
            } else if (key.compare(u"_LTYPE", Qt::CaseInsensitive) == 0) {
                if (isString(value) && database)
                    linetype = linetypeOf(lispString(value), database);
            } else if (key.compare(u"_LWEIGHT", Qt::CaseInsensitive) == 0) {
                if (isString(value))
                    weight = lineWeightOf(lispString(value), database);
            } else if (collatesEqual(key, aliases.colorAlias)) {
                names.push_back(aliases.colorName);
                property = true;
            } else if (key.compare(aliases.flagAlias, Qt::CaseInsensitive) == 0) {
                names.push_back(aliases.flagName);
                property = true;
            } else {
                names.push_back(key);
                property = true;
            }
            if (!value)
                break;
            // A value that is not a text is dropped, and the values fall one behind the names.
            if (property && isString(value))
                values.push_back(lispString(value));
            link = value->rbnext;
        }
    }

    store.SetGenerateUsageData(false);
    const Orvex::ErrorStatus added =
        store.AddNewWireType(0, name, names, values, QString(), QString(), QStringLiteral("WIRE"),
                             color, linetype, weight, 0, true);
    if (added != Orvex::eOk) {
        ZelWireTypeRec::ResetKey();
        return kFailed;
    }
    store.SetCurrentLayer(name);
    ZelWireTypeRec::ResetKey();
    return kDone;
}

int zel_edit_wiretype() {
    const ResourceOverride resources;
    QString name;
    std::vector<QString> names;
    std::vector<QString> values;

    const resbuf* link = ovedGetArgs();
    if (link) {
        link = skipListBegin(link);
        // Anything but a text in the first place is the first key.
        if (isString(link)) {
            name = lispString(link);
            link = link->rbnext;
        }
    }

    const Aliases aliases;
    while (link && link->restype != RTLE) {
        // The key's type is not looked at: an element without text is an empty name.
        const QString key = linkText(link);
        if (key.compare(aliases.colorAlias, Qt::CaseInsensitive) == 0)
            names.push_back(aliases.colorName);
        else if (key.compare(aliases.flagAlias, Qt::CaseInsensitive) == 0)
            names.push_back(aliases.flagName);
        else
            names.push_back(key);
        link = link->rbnext;
        // A value that is not a text is taken for the next key.
        if (!isString(link))
            continue;
        values.push_back(lispString(link));
        link = link->rbnext;
    }

    ZelWireTypeRec store;
    const Orvex::ErrorStatus edited = store.EditWireType(name, names, values, QString(), QString());
    ZelWireTypeRec::ResetKey();
    return edited != Orvex::eOk ? kFailed : kDone;
}

int zel_remove_wiretype() {
    ZelWireTypeRec store;
    const QString name = lispString(ovedGetArgs());
    // The layer and its lines stay; only the wire type goes. Both answers are beside the
    // point: a false from the list means that a pattern was taken out.
    store.RemoveFrmWd_m(name);
    store.RemoveWireTypeXrec(name);
    ZelWireTypeRec::ResetKey();
    return kDone;
}

int zel_set_current_wiretype() {
    ZelWireTypeRec store;
    const QString requested = lispString(ovedGetArgs());
    ChainPtr chain = currentRecord(store);

    QString defaultLayer;
    QString currentLayer;
    bool makeAllValidWire = false;
    if (!chain) {
        // Nothing could be assigned: the default wire type is made, and the request dropped.
        const ResourceOverride resources;
        defaultLayer = createDefaultWireType(store);
        currentLayer = defaultLayer;
    } else {
        readCurrentRecord(chain.get(), defaultLayer, currentLayer, &makeAllValidWire);
        // Any layer will do; it need not be a wire type.
        if (layerExists(store, requested)) {
            currentLayer = requested;
        } else {
            QString first;
            store.GetFirstWireLayer(first);
            currentLayer = first;
        }
    }

    store.SetCurWireLayerXrec(defaultLayer, currentLayer, QString(), makeAllValidWire);
    chain.reset();
    ZelWireTypeRec::ResetKey();
    ovedRetStr(wide(currentLayer).c_str());
    return kDone;
}

int zel_set_default_wiretype() {
    ZelWireTypeRec store;
    const QString requested = lispString(ovedGetArgs());
    if (!layerExists(store, requested))
        return kDone;

    ChainPtr chain = currentRecord(store);
    QString defaultLayer;
    QString currentLayer;
    bool makeAllValidWire = false;
    readCurrentRecord(chain.get(), defaultLayer, currentLayer, &makeAllValidWire);
    store.SetCurWireLayerXrec(requested, currentLayer, QString(), makeAllValidWire);
    chain.reset();
    ZelWireTypeRec::ResetKey();
    ovedRetStr(wide(requested).c_str());
    return kDone;
}

int zel_reset_current_wiretype() {
    const ResourceOverride resources;
    ZelWireTypeRec store;
    ChainPtr chain = currentRecord(store);

    QString defaultLayer;
    QString currentLayer;
    bool makeAllValidWire = false;
    if (chain) {
        readCurrentRecord(chain.get(), defaultLayer, currentLayer, &makeAllValidWire);
        // The default layer is tested, and only the current one replaced.
        if (!layerExists(store, defaultLayer)) {
            QString first;
            store.GetFirstWireLayer(first);
            currentLayer = first;
        }
    } else {
        defaultLayer = createDefaultWireType(store);
        currentLayer = defaultLayer;
    }

    // A drawing that stands on a wire layer takes that layer as its current wire type.
    OvDbObjectId drawingLayerId;
    QString drawingLayer;
    if (store.GetCurrentLayer(drawingLayerId, drawingLayer) &&
        currentLayer.compare(drawingLayer, Qt::CaseInsensitive) != 0 &&
        store.IsWireLayer(drawingLayer))
        currentLayer = drawingLayer;

    store.SetCurWireLayerXrec(defaultLayer, currentLayer, QString(), makeAllValidWire);
    chain.reset();
    ZelWireTypeRec::ResetKey();
    ovedRetStr(wide(currentLayer).c_str());
    return kDone;
}
