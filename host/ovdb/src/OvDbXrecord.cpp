#include "ovdb/OvDbXrecord.h"

#include "OvDbAccess.h"
#include "OvDbDwgReader.h"
#include "OvDbDwgWriter.h"
#include "ovdb/OvRxClassMacros.h"
#include "ovdb/ovut.h"

#include <QJsonArray>

#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

bool acceptedLink(const resbuf* link) {
    const int code = link->restype;
    // LISP types and the markers below zero have no place in stored data.
    if (code < 0 || code >= RTNONE)
        return false;
    switch (ovutValueKind(code)) {
    case OvRbValueKind::String:
    case OvRbValueKind::Handle:
    case OvRbValueKind::Int16:
    case OvRbValueKind::Int32:
    case OvRbValueKind::Bool:
        return true;
    case OvRbValueKind::Real:
        return std::isfinite(link->resval.rreal);
    case OvRbValueKind::Point:
        return std::isfinite(link->resval.rpoint[0]) && std::isfinite(link->resval.rpoint[1]) &&
               std::isfinite(link->resval.rpoint[2]);
    case OvRbValueKind::Binary:
        return link->resval.rbinary.clen >= 0 &&
               (link->resval.rbinary.clen == 0 || link->resval.rbinary.buf);
    default:
        return false;
    }
}

QString wideText(const wchar_t* text) {
    return text ? QString::fromWCharArray(text) : QString();
}

QJsonValue linkValue(const resbuf* link) {
    switch (ovutValueKind(link->restype)) {
    case OvRbValueKind::String:
    case OvRbValueKind::Handle:
        return wideText(link->resval.rstring);
    case OvRbValueKind::Int16:
        return link->resval.rint;
    case OvRbValueKind::Bool:
        return link->resval.rint != 0 ? 1 : 0;
    case OvRbValueKind::Int32:
        return static_cast<qint64>(link->resval.rlong);
    case OvRbValueKind::Real:
        return link->resval.rreal;
    case OvRbValueKind::Point:
        return QJsonArray{link->resval.rpoint[0], link->resval.rpoint[1], link->resval.rpoint[2]};
    case OvRbValueKind::Binary: {
        const auto* data = link->resval.rbinary.buf;
        const qsizetype length = link->resval.rbinary.clen;
        return QString::fromLatin1(QByteArray(data ? data : "", data ? length : 0).toHex());
    }
    default:
        return QJsonValue();
    }
}

using Value = OvDbDwgReader::Value;

// One link from its file form; null (and `problem` set) when the value does not fit.
// Everything a chain owns comes from malloc, as ovutRelRb expects.
resbuf* linkFromItem(const Value& item, QString& problem) {
    if (item.kind != Value::Kind::List || item.items.size() != 2 ||
        !item.items[0].isWhole(INT_MIN, INT_MAX)) {
        problem = QStringLiteral("each data item must be [group code, value]");
        return nullptr;
    }
    if (!item.items[0].isWhole(0, RTNONE - 1)) {
        problem = QStringLiteral("group code %1 is not one of stored data (0 to 4999)")
                      .arg(static_cast<qint64>(item.items[0].number));
        return nullptr;
    }
    const int code = static_cast<int>(item.items[0].number);
    const Value& v = item.items[1];
    resbuf* link = ovutNewRb(code);
    if (!link) {
        problem = QStringLiteral("out of memory");
        return nullptr;
    }
    bool fits = false;
    switch (ovutValueKind(code)) {
    case OvRbValueKind::String:
    case OvRbValueKind::Handle:
        if (v.kind == Value::Kind::Text) {
            wchar_t* text = nullptr;
            fits = ovutNewString(v.text.toStdWString().c_str(), text) == RTNORM;
            link->resval.rstring = text;
        }
        break;
    case OvRbValueKind::Int16:
        fits = v.isWhole(std::numeric_limits<short>::min(), std::numeric_limits<short>::max());
        link->resval.rint = fits ? static_cast<short>(v.number) : short(0);
        break;
    case OvRbValueKind::Bool:
        fits = v.kind == Value::Kind::Bool || v.isWhole(0, 1);
        link->resval.rint = v.kind == Value::Kind::Bool ? short(v.boolean)
                            : fits                      ? static_cast<short>(v.number)
                                                        : short(0);
        break;
    case OvRbValueKind::Int32:
        fits = v.isWhole(std::numeric_limits<std::int32_t>::min(),
                         std::numeric_limits<std::int32_t>::max());
        link->resval.rlong = fits ? static_cast<std::int32_t>(v.number) : 0;
        break;
    case OvRbValueKind::Real:
        fits = v.kind == Value::Kind::Number;
        link->resval.rreal = v.number;
        break;
    case OvRbValueKind::Point: {
        fits = v.kind == Value::Kind::List && v.items.size() == 3;
        for (std::size_t i = 0; fits && i < 3; ++i) {
            fits = v.items[i].kind == Value::Kind::Number;
            link->resval.rpoint[i] = v.items[i].number;
        }
        break;
    }
    case OvRbValueKind::Binary: {
        const QByteArray hex = v.text.toLatin1();
        const QByteArray bytes = QByteArray::fromHex(hex);
        fits = v.kind == Value::Kind::Text && bytes.size() * 2 == hex.size() &&
               bytes.size() <= std::numeric_limits<short>::max() && bytes.toHex() == hex.toLower();
        if (fits && !bytes.isEmpty()) {
            link->resval.rbinary.buf = static_cast<char*>(std::malloc(bytes.size()));
            fits = link->resval.rbinary.buf != nullptr;
            if (fits) {
                std::memcpy(link->resval.rbinary.buf, bytes.constData(), bytes.size());
                link->resval.rbinary.clen = static_cast<short>(bytes.size());
            }
        }
        break;
    }
    default:
        ovutRelRb(link);
        problem = QStringLiteral("group code %1 cannot be stored").arg(code);
        return nullptr;
    }
    if (!fits) {
        ovutRelRb(link);
        problem = QStringLiteral("the value of group code %1 is not of its kind").arg(code);
        return nullptr;
    }
    return link;
}

} // namespace

OVRX_DEFINE_CLASS(OvDbXrecord, OvDbObject)

OvDbXrecord::OvDbXrecord() = default;

OvDbXrecord::~OvDbXrecord() {
    ovutRelRb(m_chain);
}

Orvex::ErrorStatus OvDbXrecord::rbChain(resbuf*& chain, OvDbDatabase*) const {
    chain = nullptr;
    if (!assertReadEnabled())
        return Orvex::eNotOpenForRead;
    if (!m_chain)
        return Orvex::eOk;
    chain = ovutCopyChain(m_chain);
    return chain ? Orvex::eOk : Orvex::eOutOfMemory;
}

Orvex::ErrorStatus OvDbXrecord::setFromRbChain(const resbuf* chain, OvDbDatabase*) {
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    for (const resbuf* link = chain; link; link = link->rbnext) {
        if (!acceptedLink(link))
            return Orvex::eInvalidInput;
    }
    resbuf* copy = nullptr;
    if (chain) {
        copy = ovutCopyChain(chain);
        if (!copy)
            return Orvex::eOutOfMemory;
        // A bool is stored as 0 or 1, as a file gives it back.
        for (resbuf* link = copy; link; link = link->rbnext) {
            if (ovutValueKind(link->restype) == OvRbValueKind::Bool)
                link->resval.rint = link->resval.rint != 0 ? 1 : 0;
        }
    }
    ovutRelRb(m_chain);
    m_chain = copy;
    return Orvex::eOk;
}

void OvDbXrecord::writeFields(OvDbDwgWriter& out) const {
    OvDbObject::writeFields(out);
    QJsonArray data;
    for (const resbuf* link = m_chain; link; link = link->rbnext)
        data.append(QJsonArray{link->restype, linkValue(link)});
    out.fields().insert(QLatin1StringView("data"), data);
}

Orvex::ErrorStatus OvDbXrecord::readFields(OvDbDwgReader& in) {
    if (OvDbObject::readFields(in) != Orvex::eOk)
        return in.status();
    resbuf* head = nullptr;
    resbuf* tail = nullptr;
    const OvDbDwgReader::Items read =
        in.readItems(QLatin1StringView("data"), [&](const Value& item) {
            QString problem;
            resbuf* link = linkFromItem(item, problem);
            if (!link) {
                in.fail(Orvex::eBadDrawingFormat, problem);
                return false;
            }
            (tail ? tail->rbnext : head) = link;
            tail = link;
            return true;
        });
    if (read == OvDbDwgReader::Items::Missing)
        return Orvex::eOk;
    if (read != OvDbDwgReader::Items::Read) {
        ovutRelRb(head);
        if (read == OvDbDwgReader::Items::NotAList)
            return in.fail(Orvex::eBadDrawingFormat, QStringLiteral("'data' must be a list"));
        return in.status();
    }
    ovutRelRb(m_chain);
    m_chain = head;
    return Orvex::eOk;
}
