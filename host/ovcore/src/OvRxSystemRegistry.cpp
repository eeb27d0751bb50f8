#include "ovcore/OvRxSystemRegistry.h"

#include "ovcore/OvApDocManagerReactor.h"
#include "ovcore/OvEdCommandStack.h"
#include "ovcore/OvRxDynamicLinker.h"
#include "ovdb/ovdb.h"

#include <map>
#include <set>

namespace {

struct ClassRegistry {
    std::map<QString, OvRxClass*> classes;
    std::set<const OvRxClass*> builtIn;
};

ClassRegistry& classRegistry() {
    static ClassRegistry registry;
    return registry;
}

void registerBuiltIn(OvRxClass* cls) {
    ClassRegistry& registry = classRegistry();
    registry.classes[cls->name()] = cls;
    registry.builtIn.insert(cls);
}

void registerBuiltInClasses() {
    for (OvRxClass* cls : {OvRxObject::desc(),
                           OvRxDictionary::desc(),
                           OvRxDynamicLinker::desc(),
                           OvEdCommandStack::desc(),
                           OvApDocManagerReactor::desc(),
                           OvDbObject::desc(),
                           OvDbEntity::desc(),
                           OvDbLine::desc(),
                           OvDbBlockReference::desc(),
                           OvDbAttribute::desc(),
                           OvDbDictionary::desc(),
                           OvDbXrecord::desc(),
                           OvDbSymbolTable::desc(),
                           OvDbLayerTable::desc(),
                           OvDbLinetypeTable::desc(),
                           OvDbBlockTable::desc(),
                           OvDbSymbolTableRecord::desc(),
                           OvDbLayerTableRecord::desc(),
                           OvDbLinetypeTableRecord::desc(),
                           OvDbBlockTableRecord::desc()}) {
        // A class's ancestors come along, so that the hierarchy is whole from the start.
        for (OvRxClass* c = cls; c; c = c->myParent())
            registerBuiltIn(c);
    }
}

} // namespace

OvRxDictionary* ovrxSysRegistry() {
    // The registry's entries live as long as the process; modules hold their addresses.
    static OvRxDynamicLinker linker;
    static OvEdCommandStack commands;
    static OvRxDictionary registry;
    static const bool filled = [] {
        registry.atPut(QStringLiteral("DynamicLinker"), &linker);
        registry.atPut(QStringLiteral("ORVEX_REGISTERED_COMMANDS"), &commands);
        return true;
    }();
    Q_UNUSED(filled);
    return &registry;
}

Orvex::ErrorStatus ovrxRegisterClass(OvRxClass* cls) {
    if (!cls || cls->name().isEmpty())
        return Orvex::eInvalidInput;
    ClassRegistry& registry = classRegistry();
    if (registry.classes.empty())
        registerBuiltInClasses();
    auto it = registry.classes.find(cls->name());
    if (it != registry.classes.end())
        return it->second == cls ? Orvex::eOk : Orvex::eDuplicateKey;
    registry.classes[cls->name()] = cls;
    return Orvex::eOk;
}

OvRxClass* ovrxFindClass(const QString& name) {
    ClassRegistry& registry = classRegistry();
    if (registry.classes.empty())
        registerBuiltInClasses();
    auto it = registry.classes.find(name);
    return it == registry.classes.end() ? nullptr : it->second;
}

QList<OvRxClass*> ovrxRegisteredClasses() {
    ClassRegistry& registry = classRegistry();
    if (registry.classes.empty())
        registerBuiltInClasses();
    QList<OvRxClass*> list;
    for (const auto& entry : registry.classes)
        list << entry.second;
    return list;
}

bool ovrxBuildClassHierarchy() {
    ClassRegistry& registry = classRegistry();
    if (registry.classes.empty())
        registerBuiltInClasses();
    bool whole = true;
    for (const auto& [name, cls] : registry.classes) {
        if (cls->myParent()) {
            auto parent = registry.classes.find(cls->myParent()->name());
            if (parent != registry.classes.end() && parent->second == cls->myParent())
                continue;
        } else if (cls->parentName().isEmpty()) {
            continue; // a root
        } else if (auto parent = registry.classes.find(cls->parentName());
                   parent != registry.classes.end()) {
            cls->setParent(parent->second);
            continue;
        }
        whole = false;
        ovutPrintf(L"\n; error: class %ls has parent %ls, which is not registered\n",
                   name.toStdWString().c_str(), cls->parentName().toStdWString().c_str());
    }
    return whole;
}

bool deleteOvRxClass(OvRxClass* cls) {
    ClassRegistry& registry = classRegistry();
    if (!cls)
        return false;
    auto it = registry.classes.find(cls->name());
    const std::wstring name = cls->name().toStdWString();
    if (it == registry.classes.end() || it->second != cls) {
        ovutPrintf(L"\n; error: class %ls is not registered; not deleted\n", name.c_str());
        return false;
    }
    if (registry.builtIn.count(cls)) {
        ovutPrintf(L"\n; error: class %ls belongs to the host; not deleted\n", name.c_str());
        return false;
    }
    for (const auto& entry : registry.classes) {
        if (entry.second->myParent() == cls) {
            ovutPrintf(L"\n; error: class %ls is the parent of %ls; not deleted\n", name.c_str(),
                       entry.first.toStdWString().c_str());
            return false;
        }
    }
    registry.classes.erase(it);
    delete cls;
    return true;
}

namespace ovcore {

void resetClassRegistry() {
    ClassRegistry& registry = classRegistry();
    registry.classes.clear();
    registry.builtIn.clear();
    registerBuiltInClasses();
}

} // namespace ovcore
