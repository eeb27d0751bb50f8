#include "store/ZelWireTypeRec.h"

#include "shell/ResourceOverride.h"
#include "store/SplitPropertyList.h"
#include "store/ZelStoreSupport.h"

#include "ovcore/OvApDocManager.h"
#include "ovdb/OvDbHostApplicationServices.h"
#include "ovdb/ovut.h"
#include "platform/Resources.h"
#include "zelpm/ZelPrmProjectManager.h"

#include <algorithm>

namespace zelstore {

// Messages meant for a debugger: silent unless QT_LOGGING_RULES turns them on.
Q_LOGGING_CATEGORY(lcStore, "zel.wiretype.store", QtInfoMsg)

OvDbDatabase* workingDatabase() {
    static OvDbHostApplicationServices* const services = OvDbHostApplicationServices::getRefPtr();
    return services ? services->workingDatabase() : nullptr;
}

QString currentDocumentFileName() {
    const OvApDocManager* manager = ovDocManagerPtr();
    const OvApDocument* document = manager ? manager->curDocument() : nullptr;
    return document ? document->fileName() : QString();
}

QString formatStatement(const char* statement, const QString& first, const QString& second) {
    const QString text = QString::fromLatin1(statement);
    const QString arguments[] = {first, second};
    QString result;
    int used = 0;
    qsizetype from = 0;
    for (qsizetype at = text.indexOf(u"%s"); at >= 0 && used < 2; at = text.indexOf(u"%s", from)) {
        result += text.mid(from, at - from);
        result += arguments[used++];
        from = at + 2;
    }
    result += text.mid(from);
    return result;
}

bool wcMatch(const QString& text, const QString& pattern) {
    return ovutWcMatch(wide(text).c_str(), wide(pattern).c_str()) == RTNORM;
}

QString namePrefix(const QString& name, qsizetype length) {
    length = std::clamp<qsizetype>(length, 0, name.size());
    if (length > 0 && length < name.size() && name.at(length - 1).isHighSurrogate() &&
        name.at(length).isLowSurrogate())
        ++length;
    return name.left(length);
}

QString wireLayerPattern(const QString& name, qsizetype length, bool wildcardTail) {
    const QString prefix = namePrefix(name, length);
    QString pattern;
    pattern.reserve(prefix.size() + 4);
    for (qsizetype i = 0; i < prefix.size(); ++i) {
        const QChar c = prefix.at(i);
        if (c == u'#' || c == u'@' || c == u'[' || (c == u'~' && i == 0))
            pattern += u'`';
        pattern += c;
    }
    if (wildcardTail)
        pattern += u'*';
    return pattern;
}

bool hasInvalidLayerChar(const QString& name) {
    for (const char16_t* c = kInvalidLayerChars; *c; ++c) {
        if (name.contains(QChar(*c)))
            return true;
    }
    return false;
}

int wideToInt(const QString& text) {
    qsizetype i = 0;
    while (i < text.size() && text.at(i).isSpace())
        ++i;
    bool negative = false;
    if (i < text.size() && (text.at(i) == u'-' || text.at(i) == u'+'))
        negative = text.at(i++) == u'-';
    long long value = 0;
    for (; i < text.size() && text.at(i) >= u'0' && text.at(i) <= u'9'; ++i) {
        value = value * 10 + (text.at(i).unicode() - u'0');
        if (value > 0x7fffffffLL)
            value = 0x80000000LL; // saturate, as the C library does
    }
    if (negative)
        return static_cast<int>(-value);
    return static_cast<int>(value > 0x7fffffffLL ? 0x7fffffffLL : value);
}

bool nextToken(QString& rest, QString& token) {
    if (rest.isEmpty())
        return false;
    const qsizetype comma = rest.indexOf(u',');
    if (comma < 0) {
        token = rest;
        rest.clear();
    } else {
        token = rest.left(comma);
        rest = rest.mid(comma + 1);
    }
    return true;
}

} // namespace zelstore

using namespace zelstore;

long ZelWireTypeRec::m_nKey = 0;

ZelWireTypeRec::ZelWireTypeRec() {
    GetUserPropNamesFrmWdp(m_usrPropNames);
    if (OvDbDatabase* database = workingDatabase())
        m_blockRef.setSpace(getSpace(database));
    m_bBlockRefOpen = m_blockRef.open(currentDocumentFileName(), kBlockRefOpenMode, false);
}

ZelWireTypeRec::~ZelWireTypeRec() {
    for (auto& entry : m_wireLayers)
        delete entry.second;
    m_wireLayers.clear();
    m_usrPropNames.clear();
    m_blockRef.close();
}

long ZelWireTypeRec::GetNextKey() {
    return ++m_nKey;
}

void ZelWireTypeRec::ResetKey() {
    m_nKey = 0;
}

void ZelWireTypeRec::SetGenerateUsageData(bool generate) {
    m_bGenerateUsageData = generate;
}

void ZelWireTypeRec::GetUsrPropNames(std::vector<QString>& names) {
    names = m_usrPropNames;
}

bool ZelWireTypeRec::GetUserPropNamesFrmWdp(std::vector<QString>& names) {
    const ResourceOverride resources;
    names.assign(kUserPropertyCount, QString());

    ZelPrmProjectManager* manager = GetProjectManager();
    ZelPrmProjectId id;
    if (!manager || !manager->getActiveProjectID(id))
        return false;

    const std::wstring fileName = wide(currentDocumentFileName());
    if (manager->isFileInProject(fileName.c_str(), id)) {
        ZelPrmProject* project = manager->getProject(id);
        if (!project)
            return false;
        QString value;
        if (project->getMiscProjSettings()->getValue(33, value) == 1)
            SplitPropertyList(value, names);
    }

    const QString prefix = platform::loadString(107).toUpper();
    for (std::size_t i = 0; i < kUserPropertyCount; ++i) {
        if (names.at(i).isEmpty())
            names.at(i) = prefix + QString::number(i + 1);
    }
    return true;
}

bool ZelWireTypeRec::FindLayerInMap(long key, QString& name) {
    const auto found = m_wireLayers.find(static_cast<int>(key));
    if (found == m_wireLayers.end())
        return false;
    name = found->second->layerName;
    return true;
}

int ZelWireTypeRec::InsertRecord(long key, WireLayerRec* rec,
                                 std::map<int, WireLayerRec*>& records) {
    long candidate = key == 0 ? ++m_nKey : key;
    // A collision takes the counter's next value, not the given key plus one.
    while (m_wireLayers.count(static_cast<int>(candidate)) != 0)
        candidate = ++m_nKey;
    if (!records.emplace(static_cast<int>(candidate), rec).second) {
        // The caller's own map already uses that key: the record has nowhere to go.
        delete rec;
        return 0;
    }
    return static_cast<int>(candidate);
}
