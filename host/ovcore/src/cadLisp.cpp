// The drawing functions and the editor input as Scheme procedures of the host module.
//
// Bad input never raises a LISP error here: a function says what is wrong at the command
// line ("; entget: ...") and returns nil, as scripts expect of these functions. Each
// primitive checks the type of a Scheme value before it converts it, so that no Scheme
// exception jumps over the C++ frames below.
#include "cadLisp.h"

#include "cadDrawing.h"
#include "cadLispArgs.h"
#include "lispConvert.h"
#include "lispGuile.h"

#include "ovcore/OvEdBatchInput.h"
#include "ovcore/OvEdInput.h"
#include "ovdb/ovut.h"

#include <exception>
#include <string>

namespace ovcore::lisp::detail {

namespace {

using cad::Chain;

// --- Entities

SCM entget(SCM name, SCM) {
    return run("entget", [&]() -> SCM {
        ov_name n;
        if (!nameArg("entget", name, n))
            return SCM_EOL;
        QString error;
        const Chain data = cad::entityData(n, &error);
        return data ? listOf("entget", data.get()) : failed("entget", error);
    });
}

SCM entmake(SCM list) {
    return run("entmake", [&]() -> SCM {
        // (entmake) drops an INSERT whose attributes are being collected.
        if (!given(list)) {
            cad::discardPendingInsert();
            return SCM_EOL;
        }
        Chain data;
        if (!dataArg("entmake", list, data))
            return SCM_EOL;
        ov_name made;
        bool finished = false;
        QString error;
        if (!cad::makeEntity(data.get(), made, &finished, &error))
            return failed("entmake", error);
        return list;
    });
}

SCM entmakex(SCM list) {
    return run("entmakex", [&]() -> SCM {
        Chain data;
        if (!given(list) || !dataArg("entmakex", list, data))
            return SCM_EOL;
        ov_name made;
        QString error;
        if (!cad::makeObject(data.get(), made, &error))
            return failed("entmakex", error);
        return nameValue(made);
    });
}

SCM entdel(SCM name) {
    return run("entdel", [&]() -> SCM {
        ov_name n;
        if (!nameArg("entdel", name, n))
            return SCM_EOL;
        QString error;
        return cad::deleteEntity(n, &error) ? name : failed("entdel", error);
    });
}

SCM entlast() {
    return run("entlast", [&]() -> SCM {
        ov_name n;
        return cad::lastEntity(n) ? nameValue(n) : SCM_EOL;
    });
}

SCM entnext(SCM name) {
    return run("entnext", [&]() -> SCM {
        ov_name from;
        const bool hasFrom = isTrue(name);
        if (hasFrom && !nameArg("entnext", name, from))
            return SCM_EOL;
        ov_name next;
        QString error;
        if (!cad::nextEntity(hasFrom ? from : nullptr, next, &error))
            return failed("entnext", error);
        return nameValue(next);
    });
}

SCM entsel(SCM prompt) {
    return run("entsel", [&]() -> SCM {
        QString text;
        if (isTrue(prompt) && !textArg("entsel", prompt, text))
            return SCM_EOL;
        const std::wstring wide = text.toStdWString();
        ov_name n;
        double point[3] = {0, 0, 0};
        if (ovedEntSel(isTrue(prompt) ? wide.c_str() : nullptr, n, point) != RTNORM)
            return SCM_EOL;
        return scm_list_2(nameValue(n),
                          scm_list_3(scm_from_double(point[0]), scm_from_double(point[1]),
                                     scm_from_double(point[2])));
    });
}

// --- Tables

SCM tblsearch(SCM table, SCM name, SCM setNext) {
    return run("tblsearch", [&]() -> SCM {
        QString tableName;
        QString recordName;
        if (!textArg("tblsearch", table, tableName) || !textArg("tblsearch", name, recordName))
            return SCM_EOL;
        QString error;
        const Chain data = cad::tableSearch(tableName, recordName, isTrue(setNext), &error);
        return data ? listOf("tblsearch", data.get()) : failed("tblsearch", error);
    });
}

SCM tblnext(SCM table, SCM rewind) {
    return run("tblnext", [&]() -> SCM {
        QString tableName;
        if (!textArg("tblnext", table, tableName))
            return SCM_EOL;
        QString error;
        const Chain data = cad::tableNext(tableName, isTrue(rewind), &error);
        return data ? listOf("tblnext", data.get()) : failed("tblnext", error);
    });
}

SCM tblobjname(SCM table, SCM name) {
    return run("tblobjname", [&]() -> SCM {
        QString tableName;
        QString recordName;
        if (!textArg("tblobjname", table, tableName) || !textArg("tblobjname", name, recordName))
            return SCM_EOL;
        ov_name n;
        QString error;
        return cad::tableObjectName(tableName, recordName, n, &error) ? nameValue(n)
                                                                      : failed("tblobjname", error);
    });
}

SCM layerList() {
    return run("layer-list", [&]() -> SCM {
        QString error;
        const QStringList names = cad::layerNames(&error);
        if (!error.isEmpty())
            return failed("layer-list", error);
        SCM list = SCM_EOL;
        for (qsizetype i = names.size() - 1; i >= 0; --i)
            list = scm_cons(toScheme(names.at(i)), list);
        return list;
    });
}

// --- Dictionaries

SCM namedobjdict() {
    return run("namedobjdict", [&]() -> SCM {
        ov_name n;
        QString error;
        return cad::namedObjectsDictionary(n, &error) ? nameValue(n)
                                                      : failed("namedobjdict", error);
    });
}

SCM dictsearch(SCM dictionary, SCM key, SCM setNext) {
    return run("dictsearch", [&]() -> SCM {
        ov_name n;
        QString text;
        if (!nameArg("dictsearch", dictionary, n) || !textArg("dictsearch", key, text))
            return SCM_EOL;
        QString error;
        const Chain data = cad::dictSearch(n, text, isTrue(setNext), &error);
        return data ? listOf("dictsearch", data.get()) : failed("dictsearch", error);
    });
}

SCM dictadd(SCM dictionary, SCM key, SCM object) {
    return run("dictadd", [&]() -> SCM {
        ov_name d;
        ov_name o;
        QString text;
        if (!nameArg("dictadd", dictionary, d) || !textArg("dictadd", key, text) ||
            !nameArg("dictadd", object, o))
            return SCM_EOL;
        QString error;
        return cad::dictAdd(d, text, o, &error) ? object : failed("dictadd", error);
    });
}

SCM dictremove(SCM dictionary, SCM key) {
    return run("dictremove", [&]() -> SCM {
        ov_name d;
        QString text;
        if (!nameArg("dictremove", dictionary, d) || !textArg("dictremove", key, text))
            return SCM_EOL;
        ov_name removed;
        QString error;
        return cad::dictRemove(d, text, removed, &error) ? nameValue(removed)
                                                         : failed("dictremove", error);
    });
}

SCM dictnext(SCM dictionary, SCM rewind) {
    return run("dictnext", [&]() -> SCM {
        ov_name d;
        if (!nameArg("dictnext", dictionary, d))
            return SCM_EOL;
        QString error;
        const Chain data = cad::dictNext(d, isTrue(rewind), &error);
        return data ? listOf("dictnext", data.get()) : failed("dictnext", error);
    });
}

SCM xdictionary(SCM object, SCM create) {
    return run("orvex-xdictionary", [&]() -> SCM {
        ov_name o;
        if (!nameArg("orvex-xdictionary", object, o))
            return SCM_EOL;
        ov_name dictionary;
        QString error;
        return cad::extensionDictionary(o, isTrue(create), dictionary, &error)
                   ? nameValue(dictionary)
                   : failed("orvex-xdictionary", error);
    });
}

// --- System variables

SCM getvar(SCM name) {
    return run("getvar", [&]() -> SCM {
        QString text;
        if (!textArg("getvar", name, text))
            return SCM_EOL;
        QString error;
        const Chain value = cad::getVar(text, &error);
        if (!value)
            return failed("getvar", error);
        SCM result = SCM_EOL;
        if (!chainToScheme(value.get(), ChainShape::Value, &result, &error))
            return failed("getvar", error);
        return result;
    });
}

SCM setvar(SCM name, SCM value) {
    return run("setvar", [&]() -> SCM {
        QString text;
        if (!textArg("setvar", name, text))
            return SCM_EOL;
        resbuf* raw = nullptr;
        QString error;
        if (!schemeToChain(value, &raw, &error))
            return failed("setvar", error);
        const Chain link(raw);
        return cad::setVar(text, link.get(), &error) ? value : failed("setvar", error);
    });
}

// --- Editor input

SCM getfiled(SCM title, SCM defaultPath, SCM extension, SCM flags) {
    return run("getfiled", [&]() -> SCM {
        QString titleText;
        QString pathText;
        QString extensionText;
        if (!textArg("getfiled", title, titleText) || !textArg("getfiled", defaultPath, pathText) ||
            !textArg("getfiled", extension, extensionText))
            return SCM_EOL;
        if (!scm_is_exact_integer(flags) || !scm_is_signed_integer(flags, 0, 0xffff)) {
            badArgument("getfiled", flags);
            return SCM_EOL;
        }
        const std::wstring t = titleText.toStdWString();
        const std::wstring p = pathText.toStdWString();
        const std::wstring e = extensionText.toStdWString();
        resbuf result{};
        if (ovedGetFileD(t.c_str(), p.c_str(), e.c_str(), scm_to_int(flags), &result) != RTNORM)
            return SCM_EOL;
        const QString chosen = QString::fromWCharArray(result.resval.rstring);
        ovutDelBuffer(result.resval.rstring);
        return toScheme(chosen);
    });
}

SCM help(SCM file, SCM topic, SCM command) {
    return run("help", [&]() -> SCM {
        QString fileText;
        QString topicText;
        if ((isTrue(file) && !textArg("help", file, fileText)) ||
            (isTrue(topic) && !textArg("help", topic, topicText)))
            return SCM_EOL;
        int commandCode = 0;
        if (isTrue(command)) {
            if (!scm_is_exact_integer(command) || !scm_is_signed_integer(command, 0, 0xffff)) {
                badArgument("help", command);
                return SCM_EOL;
            }
            commandCode = scm_to_int(command);
        }
        const std::wstring f = fileText.toStdWString();
        const std::wstring t = topicText.toStdWString();
        return ovedHelp(f.c_str(), t.c_str(), commandCode) == RTNORM ? toScheme(fileText) : SCM_EOL;
    });
}

SCM queuePick(SCM name, SCM point) {
    return run("orvex-queue-pick", [&]() -> SCM {
        if (isNil(name)) {
            OvEdBatchInput::instance().queuePickCancel();
            return SCM_BOOL_T;
        }
        ov_name n;
        if (!nameArg("orvex-queue-pick", name, n))
            return SCM_EOL;
        if (!isTrue(point)) {
            OvEdBatchInput::instance().queuePick(n);
            return SCM_BOOL_T;
        }
        double at[3];
        if (!pointOf(point, at)) {
            badArgument("orvex-queue-pick", point);
            return SCM_EOL;
        }
        OvEdBatchInput::instance().queuePick(n, at);
        return SCM_BOOL_T;
    });
}

SCM queueFile(SCM path) {
    return run("orvex-queue-file", [&]() -> SCM {
        if (isNil(path)) {
            OvEdBatchInput::instance().queueFileCancel();
            return SCM_BOOL_T;
        }
        QString text;
        if (!textArg("orvex-queue-file", path, text))
            return SCM_EOL;
        OvEdBatchInput::instance().queueFile(text);
        return SCM_BOOL_T;
    });
}

SCM queueClear() {
    return run("orvex-queue-clear", [&]() -> SCM {
        OvEdBatchInput::instance().clear();
        return SCM_BOOL_T;
    });
}

struct Primitive {
    const char* name;
    int required;
    int optional;
    scm_t_subr function;
};

void definePrimitives(void*) {
    const Primitive primitives[] = {
        {"entget", 1, 1, reinterpret_cast<scm_t_subr>(entget)},
        {"entmake", 0, 1, reinterpret_cast<scm_t_subr>(entmake)},
        {"entmakex", 0, 1, reinterpret_cast<scm_t_subr>(entmakex)},
        {"entdel", 1, 0, reinterpret_cast<scm_t_subr>(entdel)},
        {"entlast", 0, 0, reinterpret_cast<scm_t_subr>(entlast)},
        {"entnext", 0, 1, reinterpret_cast<scm_t_subr>(entnext)},
        {"entsel", 0, 1, reinterpret_cast<scm_t_subr>(entsel)},
        {"tblsearch", 2, 1, reinterpret_cast<scm_t_subr>(tblsearch)},
        {"tblnext", 1, 1, reinterpret_cast<scm_t_subr>(tblnext)},
        {"tblobjname", 2, 0, reinterpret_cast<scm_t_subr>(tblobjname)},
        {"layer-list", 0, 0, reinterpret_cast<scm_t_subr>(layerList)},
        {"namedobjdict", 0, 0, reinterpret_cast<scm_t_subr>(namedobjdict)},
        {"dictsearch", 2, 1, reinterpret_cast<scm_t_subr>(dictsearch)},
        {"dictadd", 3, 0, reinterpret_cast<scm_t_subr>(dictadd)},
        {"dictremove", 2, 0, reinterpret_cast<scm_t_subr>(dictremove)},
        {"dictnext", 1, 1, reinterpret_cast<scm_t_subr>(dictnext)},
        {"orvex-xdictionary", 1, 1, reinterpret_cast<scm_t_subr>(xdictionary)},
        {"getvar", 1, 0, reinterpret_cast<scm_t_subr>(getvar)},
        {"setvar", 2, 0, reinterpret_cast<scm_t_subr>(setvar)},
        {"getfiled", 4, 0, reinterpret_cast<scm_t_subr>(getfiled)},
        {"help", 0, 3, reinterpret_cast<scm_t_subr>(help)},
        {"orvex-queue-pick", 1, 1, reinterpret_cast<scm_t_subr>(queuePick)},
        {"orvex-queue-file", 1, 0, reinterpret_cast<scm_t_subr>(queueFile)},
        {"orvex-queue-clear", 0, 0, reinterpret_cast<scm_t_subr>(queueClear)},
    };
    SCM names = SCM_EOL;
    for (const Primitive& p : primitives) {
        scm_c_define_gsubr(p.name, p.required, p.optional, 0, p.function);
        names = scm_cons(scm_from_utf8_symbol(p.name), names);
    }
    // Replacing, like the host's other names, so that a name that Guile also knows (help)
    // is the host's in every document.
    scm_call_2(scm_variable_ref(scm_c_lookup("module-replace!")), scm_current_module(), names);
}

} // namespace

void defineCadFunctions(SCM hostModule) {
    scm_c_call_with_current_module(
        hostModule,
        [](void* data) -> SCM {
            definePrimitives(data);
            return SCM_UNSPECIFIED;
        },
        nullptr);
}

} // namespace ovcore::lisp::detail
