#pragma once

// What the store's source files share: the names kept in a drawing, the statements on the
// project database, and small helpers over the host API. Not part of the store's
// interface.

#include "store/WireLayerRec.h"

#include "ovdb/OvDbObject.h"
#include "ovdb/resbuf.h"

#include <QLoggingCategory>
#include <QString>
#include <QStringView>

#include <cstddef>
#include <iterator>
#include <string>

class OvDbDatabase;

namespace zelstore {

Q_DECLARE_LOGGING_CATEGORY(lcStore)

inline constexpr std::size_t kUserPropertyCount = 20;
// Wire colour, wire size, the user values and the flag, as the project gives them.
inline constexpr std::size_t kWireTypeSettingsCount = 23;

// Dictionary and record keys in a drawing, and the default wire kind.
inline constexpr const wchar_t* kZelWireType = L"ZEL_WIRETYPE";
inline constexpr const wchar_t* kCurrentWireLay = L"CURRENT_WIRELAY";
inline constexpr const wchar_t* kWire = L"WIRE";

// The block that carries the add-on's drawing settings, and its wire layer list.
inline constexpr const char* kWdMBlock = "WD_M";
// Every attribute tag of the WD_M block. The rest of the add-on reads and writes the
// others; the store touches WIRELAYS alone.
// clang-format off
inline constexpr const char* kWdMTags[] = {
    "RUNGHORV", "REFNUMS", "TAGMODE", "TAG-START", "TAG-RSUF", "TAGFMT", "WIREMODE",
    "WIRE-START", "WIRE-RSUF", "WIREFMT", "WINC", "RUNGDIST", "DLADW", "SHEET", "XREFFMT",
    "RUNGINC", "DRWRUNG", "PH3SPACE", "DATUMX", "DATUMY", "DISTH", "DISTV", "CHAR_H", "CHAR_V",
    "HORIZ_FIRST", "XY_DELIM", "WIRELAYS", "WIRENO_LAY", "WIRECOPY_LAY", "WIREFIXED_LAY",
    "UNIT_SCL", "FEATURE_SCL", "TAG_LAY", "XREF_LAY", "DESC_LAY", "TERM_LAY", "CXREF_LAY",
    "CDESC_LAY", "LOC_LAY", "POS_LAY", "MISC_LAY", "WLEADERS", "PLC_STYLE", "ARROW_STYLE",
    "LINK_LAY", "COMP_LAY", "SHEETDWGNAME", "ALT_XREFFMT", "TAGFIXED_LAY", "GAP_STYLE",
    "MISC_FLAGS", "IEC_PROJ", "IEC_INST", "IEC_LOC", "WIREREF_LAY", "MISC_DATA",
    "FAN_INOUT_LAYS", "FAN_INOUT_STYLE", "LOCBOX_LAY", "SORTMODE", "XREF_STYLE", "XREF_FLAGS",
    "XREF_UNUSEDSTYLE", "XREF_FILLWITH", "XREF_SORT", "XREF_TXTBTWN", "XREF_GRAPHIC",
    "XREF_GRAPHICSTYLE", "XREF_CONTACTMAP", "XREF_TBLSTYLE", "XREF_TBLTITLE", "XREF_TBLINDEX",
    "XREF_TBLFLDNAMS", "XREF_TBLCOLJUST", "WNUM_OFFSET", "WNUM_FLAGS", "WNUM_GAP"};
// clang-format on
inline constexpr std::size_t kWireLaysTagIndex = 26;
inline constexpr const char* kWireLaysTag = kWdMTags[kWireLaysTagIndex];
static_assert(std::size(kWdMTags) == 77);
// The open mode with which the block reference helper opens a drawing's file.
inline constexpr int kBlockRefOpenMode = 32;

// Characters that no layer name of a wire type may hold.
inline constexpr const char16_t* kInvalidLayerChars = u"<>/\\\"':;?*|,=`";

// Statements on the project database.
inline constexpr const char* kSqlWireType =
    "SELECT WIRECOLOR, WIRESIZE FROM WIRETYPE W WHERE W.DWGIX = '%s' AND W.LAYNAME = '%s'";
inline constexpr const char* kSqlWireTypeUser =
    "SELECT U.[USER], U.[VALUE] FROM WIRETYPE_USR U, WIRETYPE W WHERE U.DWGIX = '%s' AND "
    "U.LAYNAME = '%s' AND W.DWGIX = U.DWGIX AND U.LAYNAME = W.LAYNAME";
inline constexpr const char* kSqlWireTypeFlag =
    "SELECT FLAG FROM WIRETYPE W WHERE W.DWGIX = '%s' AND W.LAYNAME = '%s'";
// Kept with the others though nothing issues them.
inline constexpr const char* kSqlDrawingNames = "SELECT DWGNAME FROM FILETIME";
inline constexpr const char* kSqlDrawingWireLays =
    "SELECT W.ATTR_VAL FROM WD_M W, FileTime F WHERE F.DWGIX = W.DWGIX AND W.ATTR_NAME = "
    "'WIRELAYS' AND F.DWGNAME = '%s'";
inline constexpr const char* kSqlMostUsedWireType =
    "SELECT TOP 1 WIRECOLOR, WIRESIZE, MAX(USERCOUNT) AS USRCOUNT FROM WIRETYPE GROUP BY "
    "WIRECOLOR, WIRESIZE";

// Whether two names are the same without regard to case: the answer of QString's
// case-blind comparison, cheaper, since the store asks it once per layer in its walks.
// Case folding keeps the UTF-16 length of every character, so texts of different lengths
// never match; ASCII letters fold among themselves. Other characters (a Kelvin sign folds
// to 'k', a pair of surrogates to another pair) go to Qt.
inline bool sameName(QStringView a, QStringView b) {
    if (a.size() != b.size())
        return false;
    const char16_t* x = a.utf16();
    const char16_t* y = b.utf16();
    for (qsizetype i = 0; i < a.size(); ++i) {
        if (x[i] == y[i])
            continue;
        if ((x[i] | y[i]) >= 0x80)
            return a.compare(b, Qt::CaseInsensitive) == 0;
        const char16_t lower = x[i] | 0x20;
        if (lower != (y[i] | 0x20) || lower < u'a' || lower > u'z')
            return false;
    }
    return true;
}

// The wildcard pattern of a wire layer: the first `length` characters of `name`, followed
// by a star when `wildcardTail`. The matcher's characters that a layer name may hold but
// that would not stand for themselves ('#' wants a digit, '@' a letter, '[' opens a set, a
// leading '~' negates) are escaped with the back-quote, which no layer name holds; all
// others stay as they are, so the pattern always matches its own layer.
QString wireLayerPattern(const QString& name, qsizetype length, bool wildcardTail);
// The first `length` characters of `name`, one more where `length` would end between the
// two halves of a character beyond the 16-bit range: half a character matches nothing.
QString namePrefix(const QString& name, qsizetype length);

// The host's working database, fetched anew at each use: it changes between commands.
OvDbDatabase* workingDatabase();
// The file of the current document; empty for a drawing never saved or no document.
QString currentDocumentFileName();

// Fills each "%s" of a statement with the next argument, as it stands.
QString formatStatement(const char* statement, const QString& first, const QString& second);

// The release step of every object the store opens: nothing for no pointer, close for an
// object in a database, delete for a new one that never got there.
template <class T> void releaseObject(T*& object) {
    if (!object)
        return;
    if (!object->isNewObject())
        object->close();
    else
        delete object;
    object = nullptr;
}

inline std::wstring wide(const QString& text) {
    return text.toStdWString();
}

inline QString rbString(const resbuf* link) {
    return link && link->resval.rstring ? QString::fromWCharArray(link->resval.rstring) : QString();
}

// The host's wildcard match: the text against the pattern.
bool wcMatch(const QString& text, const QString& pattern);

// A record counts as a live wire type exactly when it is neither deleted nor converted.
inline bool isLive(const WireLayerRec* rec) {
    return rec->editState != 2 && rec->editState != 6;
}

bool hasInvalidLayerChar(const QString& name);

// Decimal reading as the C library's wide atoi does it: leading blanks, a sign, digits,
// and 0 when there are none.
int wideToInt(const QString& text);

// Takes the next comma-separated token off `rest`; false when nothing is left.
bool nextToken(QString& rest, QString& token);

} // namespace zelstore
