#pragma once

#include "ovcore/OvLisp.h"
#include "ovdb/resbuf.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <thread>
#include <vector>

namespace ovcore::lisp::detail {

using Handler = int (*)();

// What the bridge keeps between calls: the documents' tables of functions, the modules
// with their handlers, and the calls in progress. It holds no Scheme values, so nothing
// here needs to be seen by the garbage collector; each document's Scheme module is found
// by its id on the Scheme side.
class LispState {
public:
    // A function defined by a module. The owner is the module's serial, not its address,
    // so that a module loaded again at the same address does not revive stale functions.
    struct ModuleFunction {
        std::uint64_t owner = 0;
        int number = 0;
    };

    struct Document {
        int id = 0;
        std::map<QString, ModuleFunction> functions;
        std::set<QString> exported; // names made callable by ovedInvoke
    };

    struct Module {
        std::uint64_t serial = 0;
        EntryPoint entry = nullptr;
        std::map<int, Handler> handlers;
    };

    enum class ResultKind { None, Value, List };

    // One call of a module function. The arguments and the result belong to the host.
    struct CallFrame {
        int funCode = 0;
        resbuf* args = nullptr;
        resbuf* result = nullptr;
        ResultKind kind = ResultKind::None;
    };

    static LispState& instance();

    Document& currentDocument();
    Document* documentById(int id);
    const void* currentDocumentKey() const { return m_currentDocument; }
    void setCurrentDocument(const void* key) { m_currentDocument = key; }
    // The id of the document's context, or 0 when it had none.
    int forgetDocument(const void* key);

    Module& activeModule();
    std::uint64_t activeSerial() { return activeModule().serial; }
    void setActiveModule(const void* key, EntryPoint entry);
    // Makes the module with this serial the active one; false when it is gone.
    bool activateSerial(std::uint64_t serial);
    const void* activeModuleKey() const { return m_activeModule; }
    void restoreActiveModule(const void* key) { m_activeModule = key; }
    Module* moduleBySerial(std::uint64_t serial);
    void forgetModule(const void* key);

    CallFrame* currentCall() { return m_calls.empty() ? nullptr : &m_calls.back(); }
    void pushCall(int funCode, resbuf* args);
    // Takes the last call off; its arguments are freed and its result handed over.
    CallFrame popCall();
    // Replaces the result of the call in progress; takes the chain.
    bool setResult(resbuf* chain, ResultKind kind);

    std::function<void(const QString&)> callObserver;

    // Nesting of calls across the C++ boundary (evaluations, invocations, module
    // functions), which use the machine stack.
    int nesting = 0;
    static constexpr int kMaxNesting = 64;

    bool booted = false;
    bool bootFailed = false;
    QString bootError;
    std::thread::id thread;

private:
    LispState() = default;
    Module& moduleFor(const void* key);

    std::map<const void*, Document> m_documents;
    const void* m_currentDocument = nullptr;
    int m_nextDocumentId = 1;
    std::map<const void*, Module> m_modules;
    const void* m_activeModule = nullptr;
    std::uint64_t m_nextSerial = 1;
    std::vector<CallFrame> m_calls;
};

} // namespace ovcore::lisp::detail
