#pragma once

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvApDocManagerReactor.h"

#include <cstddef>
#include <functional>
#include <map>

// Data of type T per document, dropped when its document is about to go. The manager
// attaches itself to the host's document manager for its whole life.
template <class T> class OvApDataManager : public OvApDocManagerReactor {
public:
    OvApDataManager() {
        if (OvApDocManager* manager = ovDocManagerPtr())
            manager->addReactor(this);
    }
    ~OvApDataManager() override {
        // At host shutdown the document manager may be gone before the module is.
        if (OvApDocManager* manager = ovDocManagerPtr())
            manager->removeReactor(this);
    }
    OvApDataManager(const OvApDataManager&) = delete;
    OvApDataManager& operator=(const OvApDataManager&) = delete;

    void documentToBeDestroyed(OvApDocument* doc) override {
        const auto range = m_dataMap.equal_range(doc);
        m_dataMap.erase(range.first, range.second);
    }

    // The data of a document, made on first use.
    T& docData(OvApDocument* doc) { return m_dataMap[doc]; }
    bool hasDocData(const OvApDocument* doc) const { return m_dataMap.count(doc) != 0; }
    std::size_t docDataCount() const { return m_dataMap.size(); }

private:
    // Cleared at construction and not read since.
    [[maybe_unused]] unsigned char m_reserved = 0;
    // Keys compare as plain pointer values.
    std::map<OvApDocument*, T, std::less<>> m_dataMap;
};
