#pragma once

#include "ovdb/resbuf.h"

#include <QString>

// Builds a value chain link by link. The chain is the builder's until take() hands it on;
// a builder that still holds one releases it.
class ZelChainBuilder {
public:
    ZelChainBuilder() = default;
    ~ZelChainBuilder();
    ZelChainBuilder(const ZelChainBuilder&) = delete;
    ZelChainBuilder& operator=(const ZelChainBuilder&) = delete;

    ZelChainBuilder& beginList();
    ZelChainBuilder& endList();
    ZelChainBuilder& dot();
    ZelChainBuilder& string(const QString& text);
    ZelChainBuilder& integer(qint64 value);

    // False once a link could not be made; take() then gives null.
    bool ok() const { return !m_failed; }
    resbuf* take();

private:
    void append(resbuf* link);

    resbuf* m_head = nullptr;
    resbuf* m_tail = nullptr;
    bool m_failed = false;
};
