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

bool isInteger(const QJsonValue& v, qint64 min, qint64 max) {
    if (!v.isDouble())
        return false;
    const double d = v.toDouble();
    return d == std::floor(d) && d >= static_cast<double>(min) && d <= static_cast<double>(max);
}

// One link from its file form; null (and `problem` set) when the value does not fit.
// Everything a chain owns comes from malloc, as ovutRelRb expects.
resbuf* linkFromJson(const QJsonValue& item, QString& problem) {
    const QJsonArray pair = item.toArray();
    if (!item.isArray() || pair.size() != 2 || !isInteger(pair[0], INT_MIN, INT_MAX)) {
        problem = QStringLiteral("each data item must be [group code, value]");
        return nullptr;
    }
    if (!isInteger(pair[0], 0, RTNONE - 1)) {
        problem = QStringLiteral("group code %1 is not one of stored data (0 to 4999)")
                      .arg(static_cast<qint64>(pair[0].toDouble()));
        return nullptr;
    }
    const int code = pair[0].toInt();
    const QJsonValue v = pair[1];
    resbuf* link = ovutNewRb(code);
    if (!link) {
        problem = QStringLiteral("out of memory");
        return nullptr;
    }
    bool fits = false;
    switch (ovutValueKind(code)) {
    case OvRbValueKind::String:
    case OvRbValueKind::Handle:
        if (v.isString()) {
            wchar_t* text = nullptr;
            fits = ovutNewString(v.toString().toStdWString().c_str(), text) == RTNORM;
            link->resval.rstring = text;
        }
        break;
    case OvRbValueKind::Int16:
        fits = isInteger(v, std::numeric_limits<short>::min(), std::numeric_limits<short>::max());
        link->resval.rint = static_cast<short>(v.toInt());
        break;
    case OvRbValueKind::Bool:
        fits = v.isBool() || isInteger(v, 0, 1);
        link->resval.rint = v.isBool() ? short(v.toBool()) : static_cast<short>(v.toInt());
        break;
    case OvRbValueKind::Int32:
        fits = isInteger(v, std::numeric_limits<std::int32_t>::min(),
                         std::numeric_limits<std::int32_t>::max());
        link->resval.rlong = static_cast<std::int32_t>(v.toInteger());
        break;
    case OvRbValueKind::Real:
        fits = v.isDouble();
        link->resval.rreal = v.toDouble();
        break;
    case OvRbValueKind::Point: {
        const QJsonArray a = v.toArray();
        fits =
            v.isArray() && a.size() == 3 && a[0].isDouble() && a[1].isDouble() && a[2].isDouble();
        for (qsizetype i = 0; fits && i < 3; ++i)
            link->resval.rpoint[i] = a[i].toDouble();
        break;
    }
    case OvRbValueKind::Binary: {
        const QByteArray hex = v.toString().toLatin1();
        const QByteArray bytes = QByteArray::fromHex(hex);
        fits = v.isString() && bytes.size() * 2 == hex.size() &&
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
    QJsonValue value;
    if (!in.readValue(QLatin1StringView("data"), value))
        return in.status();
    if (value.isUndefined())
        return Orvex::eOk;
    if (!value.isArray())
        return in.fail(Orvex::eBadDrawingFormat, QStringLiteral("'data' must be a list"));
    resbuf* head = nullptr;
    resbuf* tail = nullptr;
    for (const QJsonValue& item : value.toArray()) {
        QString problem;
        resbuf* link = linkFromJson(item, problem);
        if (!link) {
            ovutRelRb(head);
            return in.fail(Orvex::eBadDrawingFormat, problem);
        }
        (tail ? tail->rbnext : head) = link;
        tail = link;
    }
    ovutRelRb(m_chain);
    m_chain = head;
    return Orvex::eOk;
}
