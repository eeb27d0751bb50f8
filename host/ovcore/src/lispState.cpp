#include "lispState.h"

#include "ovdb/ovut.h"

namespace ovcore::lisp::detail {

LispState& LispState::instance() {
    static LispState state;
    return state;
}

LispState::Document& LispState::currentDocument() {
    auto it = m_documents.find(m_currentDocument);
    if (it == m_documents.end()) {
        it = m_documents.emplace(m_currentDocument, Document{}).first;
        it->second.id = m_nextDocumentId++;
    }
    return it->second;
}

LispState::Document* LispState::documentById(int id) {
    for (auto& [key, document] : m_documents) {
        if (document.id == id)
            return &document;
    }
    return nullptr;
}

int LispState::forgetDocument(const void* key) {
    const auto it = m_documents.find(key);
    if (it == m_documents.end())
        return 0;
    const int id = it->second.id;
    m_documents.erase(it);
    if (m_currentDocument == key)
        m_currentDocument = nullptr;
    return id;
}

LispState::Module& LispState::moduleFor(const void* key) {
    auto it = m_modules.find(key);
    if (it == m_modules.end()) {
        it = m_modules.emplace(key, Module{}).first;
        it->second.serial = m_nextSerial++;
    }
    return it->second;
}

LispState::Module& LispState::activeModule() {
    return moduleFor(m_activeModule);
}

void LispState::setActiveModule(const void* key, EntryPoint entry) {
    m_activeModule = key;
    if (key && entry)
        moduleFor(key).entry = entry;
}

bool LispState::activateSerial(std::uint64_t serial) {
    for (const auto& [key, module] : m_modules) {
        if (module.serial == serial) {
            m_activeModule = key;
            return true;
        }
    }
    return false;
}

LispState::Module* LispState::moduleBySerial(std::uint64_t serial) {
    for (auto& [key, module] : m_modules) {
        if (module.serial == serial)
            return &module;
    }
    return nullptr;
}

void LispState::forgetModule(const void* key) {
    // The host itself (null) never goes.
    if (!key)
        return;
    m_modules.erase(key);
    if (m_activeModule == key)
        m_activeModule = nullptr;
}

void LispState::pushCall(int funCode, resbuf* args) {
    CallFrame frame;
    frame.funCode = funCode;
    frame.args = args;
    m_calls.push_back(frame);
}

LispState::CallFrame LispState::popCall() {
    CallFrame frame = m_calls.back();
    m_calls.pop_back();
    ovutRelRb(frame.args);
    frame.args = nullptr;
    return frame;
}

bool LispState::setResult(resbuf* chain, ResultKind kind) {
    CallFrame* call = currentCall();
    if (!call) {
        ovutRelRb(chain);
        return false;
    }
    ovutRelRb(call->result);
    call->result = chain;
    call->kind = kind;
    return true;
}

} // namespace ovcore::lisp::detail
