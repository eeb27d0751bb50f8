// The WIRELAYS attribute of the WD_M block: the wildcard patterns that make layers wire
// layers for the rest of the add-on.

#include "store/ZelWireTypeRec.h"

#include "shell/ZelHostServices.h"
#include "store/ZelStoreSupport.h"

#include "ovdb/OvDbBlockTable.h"
#include "ovdb/OvDbBlockTableRecord.h"
#include "ovdb/OvDbBlockTableRecordIterator.h"
#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbLine.h"

#include <algorithm>

using namespace zelstore;

namespace {

const QString& wdMBlock() {
    static const QString name = QString::fromLatin1(kWdMBlock);
    return name;
}

const QString& wireLaysTag() {
    static const QString tag = QString::fromLatin1(kWireLaysTag);
    return tag;
}

// The first token of `value` that catches `name`, which the caller has folded.
bool findToken(const QString& value, const QString& name, QString& found) {
    QString rest = value;
    QString token;
    while (nextToken(rest, token)) {
        if (wcMatch(name, token)) {
            found = token;
            return true;
        }
    }
    return false;
}

} // namespace

bool ZelWireTypeRec::ReadWireLays(ZelQvxBlockRef& blockRef, QString& value) {
    if (!blockRef.find(wdMBlock(), 0, 0))
        return false;
    blockRef.getAttributeTextString(wireLaysTag(), value, true);
    return true;
}

void ZelWireTypeRec::ChoosePattern(const QString& name, qsizetype& length, QString& pattern,
                                   bool& collides) const {
    length = std::min<qsizetype>(3, name.size());
    collides = false;
    if (!m_nonWireLayers.empty()) {
        // Views instead of copies: the loop runs once per non-wire layer and more.
        qsizetype patternLength = -1;
        std::size_t i = 0;
        while (i < m_nonWireLayers.size()) {
            if (name.size() < length)
                break;
            patternLength = length;
            const QStringView prefix = QStringView(name).left(length);
            const QString& other = m_nonWireLayers.at(i);
            collides = sameName(QStringView(other).left(length), prefix) && !sameName(other, name);
            // A longer pattern can only catch fewer names, so layers already passed stay
            // uncaught.
            if (collides)
                ++length;
            else
                ++i;
        }
        if (patternLength >= 0)
            pattern = namePrefix(name, patternLength);
    }
    // Still colliding: the name is too short to be told from that layer, and is listed in
    // full.
    pattern = wireLayerPattern(pattern, pattern.size(),
                               !pattern.isEmpty() && !pattern.endsWith(u'*') && !collides);
}

bool ZelWireTypeRec::IsInWd_m(QString name) {
    QString value;
    if (!m_bBlockRefOpen || !ReadWireLays(m_blockRef, value))
        return false;
    if (value.isEmpty())
        return IsMakeAllValidWire();
    QString token;
    return findToken(value, name.toUpper(), token);
}

bool ZelWireTypeRec::IsInOtherDrawingWd_m(QString name, OvDbDatabase* database) {
    const wchar_t* fileName = nullptr;
    if (!database || database->getFilename(fileName) != Orvex::eOk || !fileName)
        return false;
    ZelQvxBlockRef blockRef;
    blockRef.setSpace(getSpace(database));
    QString value;
    const bool read = blockRef.open(QString::fromWCharArray(fileName), kBlockRefOpenMode, false) &&
                      ReadWireLays(blockRef, value);
    blockRef.close();
    QString token;
    return read && findToken(value, name.toUpper(), token);
}

bool ZelWireTypeRec::GetWd_mLayerName(QString name, QString& pattern) {
    QString value;
    if (!m_bBlockRefOpen || !ReadWireLays(m_blockRef, value))
        return false;
    if (value.isEmpty())
        return true;
    return findToken(value, name.toUpper(), pattern);
}

bool ZelWireTypeRec::AddtoWd_m(QString name, bool reset) {
    // With no non-wire layers the pattern keeps the case in which the name was given.
    QString pattern = namePrefix(name, 3);
    name = name.toUpper();
    QString value;
    if (!m_bBlockRefOpen || !ReadWireLays(m_blockRef, value))
        return false;

    if (reset) {
        // makeAllValidWire takes over: the list is blanked.
        value.clear();
        m_nonWireLayers.clear();
    } else {
        if (IsInWd_m(name) && !value.isEmpty())
            return true;
        qsizetype length = 0;
        bool collides = false;
        ChoosePattern(name, length, pattern, collides);

        // A pattern that would catch a listed one grows by one character per such token;
        // the walk does not begin again.
        QString rest = value;
        QString token;
        while (nextToken(rest, token)) {
            if (wcMatch(token, pattern)) {
                ++length;
                const QString prefix = namePrefix(name, length);
                pattern = wireLayerPattern(prefix, prefix.size(), !prefix.endsWith(u'*'));
            }
        }
        // A full list stays as it is, without complaint.
        if (value.size() < 256) {
            if (!value.isEmpty())
                value += u',';
            value += pattern;
        }
    }

    m_blockRef.setAttributeTextString(wireLaysTag(), value, true);
    RereadDwgParams();
    return true;
}

bool ZelWireTypeRec::RemoveFrmWd_m(QString name) {
    if (!IsInWd_m(name))
        return true;
    QString value;
    if (!m_bBlockRefOpen || !ReadWireLays(m_blockRef, value))
        return false;
    name = name.toUpper();
    value = value.toUpper();

    QString token;
    if (!findToken(value, name, token))
        return true;

    for (auto& entry : m_wireLayers) {
        WireLayerRec* rec = entry.second;
        rec->layerName = rec->layerName.toUpper();
        // Another live wire type still needs the pattern.
        if (wcMatch(rec->layerName, token) && rec->layerName != name && isLive(rec))
            return true;
    }

    const qsizetype at = value.indexOf(token);
    if (at > 0)
        value.remove(at - 1, token.size() + 1);
    else if (at == 0)
        value.remove(0, token.size()); // the comma that followed stays
    m_blockRef.setAttributeTextString(wireLaysTag(), value, true);
    RereadDwgParams();
    // False tells that a pattern was taken out.
    return false;
}

bool ZelWireTypeRec::RegenWd_m() {
    if (IsMakeAllValidWire())
        return true;
    QString value;
    if (!m_bBlockRefOpen || !ReadWireLays(m_blockRef, value))
        return false;

    std::vector<QString> patterns;
    for (const auto& entry : m_wireLayers) {
        const WireLayerRec* rec = entry.second;
        if (!isLive(rec))
            continue;
        const QString name = rec->layerName.toUpper();
        QString pattern = namePrefix(name, 3);
        qsizetype length = 0;
        bool collides = false;
        ChoosePattern(name, length, pattern, collides);

        bool hit = false;
        for (QString& existing : patterns) {
            if (wcMatch(existing, pattern) || wcMatch(pattern, existing)) {
                // Of two overlapping patterns the shorter stays.
                if (existing.size() > pattern.size())
                    existing = pattern;
                hit = true;
                break;
            }
        }
        if (!hit)
            patterns.push_back(pattern);
    }

    QString joined;
    for (const QString& pattern : patterns) {
        if (!joined.isEmpty())
            joined += u',';
        joined += pattern;
    }
    m_blockRef.setAttributeTextString(wireLaysTag(), joined, true);
    RereadDwgParams();
    return true;
}

long ZelWireTypeRec::GetWireCount(QString layerName) {
    OvDbDatabase* database = workingDatabase();
    if (!database)
        return 0;
    OvDbBlockTable* blocks = nullptr;
    if (database->getSymbolTable(blocks, OvDb::kForRead) != Orvex::eOk || !blocks) {
        releaseObject(blocks);
        return 0;
    }
    OvDbBlockTableRecord* modelSpace = nullptr;
    const Orvex::ErrorStatus es = blocks->getAt(L"*Model_Space", modelSpace, OvDb::kForRead);
    releaseObject(blocks);
    if (es != Orvex::eOk || !modelSpace) {
        releaseObject(modelSpace);
        return 0;
    }
    OvDbBlockTableRecordIterator* iterator = nullptr;
    modelSpace->newIterator(iterator, true, true);
    releaseObject(modelSpace);
    if (!iterator)
        return 0;

    long count = 0;
    for (; !iterator->done(); iterator->step()) {
        OvDbEntity* entity = nullptr;
        if (iterator->getEntity(entity, OvDb::kForRead) != Orvex::eOk || !entity)
            continue;
        if (entity->isKindOf(OvDbLine::desc()) &&
            entity->layer().compare(layerName, Qt::CaseInsensitive) == 0)
            ++count;
        releaseObject(entity);
    }
    delete iterator;
    return count;
}
