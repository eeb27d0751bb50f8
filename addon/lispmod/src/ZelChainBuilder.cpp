#include "ZelChainBuilder.h"

#include "ovdb/ovut.h"

#include <limits>
#include <string>

ZelChainBuilder::~ZelChainBuilder() {
    ovutRelRb(m_head);
}

void ZelChainBuilder::append(resbuf* link) {
    if (!link) {
        m_failed = true;
        return;
    }
    if (m_tail)
        m_tail->rbnext = link;
    else
        m_head = link;
    m_tail = link;
}

ZelChainBuilder& ZelChainBuilder::beginList() {
    append(ovutNewRb(RTLB));
    return *this;
}

ZelChainBuilder& ZelChainBuilder::endList() {
    append(ovutNewRb(RTLE));
    return *this;
}

ZelChainBuilder& ZelChainBuilder::dot() {
    append(ovutNewRb(RTDOTE));
    return *this;
}

ZelChainBuilder& ZelChainBuilder::string(const QString& text) {
    const std::wstring wide = text.toStdWString();
    append(ovutBuildList(RTSTR, wide.c_str(), 0));
    return *this;
}

ZelChainBuilder& ZelChainBuilder::integer(qint64 value) {
    // LISP integers are 32 bits; a larger number goes as its decimal text.
    if (value < std::numeric_limits<qint32>::min() || value > std::numeric_limits<qint32>::max())
        return string(QString::number(value));
    if (value >= std::numeric_limits<short>::min() && value <= std::numeric_limits<short>::max()) {
        resbuf* link = ovutNewRb(RTSHORT);
        if (link)
            link->resval.rint = static_cast<short>(value);
        append(link);
    } else {
        resbuf* link = ovutNewRb(RTLONG);
        if (link)
            link->resval.rlong = static_cast<qint32>(value);
        append(link);
    }
    return *this;
}

resbuf* ZelChainBuilder::take() {
    resbuf* chain = m_failed ? nullptr : m_head;
    if (m_failed)
        ovutRelRb(m_head);
    m_head = m_tail = nullptr;
    m_failed = false;
    return chain;
}
