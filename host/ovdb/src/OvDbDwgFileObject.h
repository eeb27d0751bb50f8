#pragma once

#include <QString>

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace simdjson::dom {
class element;
class object;
} // namespace simdjson::dom

// A value of a drawing file, as the reader needs it. A text points into the file, or into
// its object's own store when escapes had to be undone; a list's items sit side by side in
// their object's pool. A nested object is only ever asked what it is, so its contents are
// not kept.
struct OvDbDwgFileValue {
    enum class Type : std::uint8_t { Null, Bool, Number, Text, List, Object };
    Type type = Type::Null;
    bool boolean = false;
    double number = 0;
    std::string_view text;
    // A list's items: `count` values from `first` in the pool of the object.
    std::uint32_t first = 0;
    std::uint32_t count = 0;
};

// One object of a drawing file as the parser gives it: its keys with their values, and
// which of them the reader took. An object has a dozen keys at most, so a look-up is a
// short scan, cheaper than any map. The object is reused from one object of the file to
// the next, so that a read makes no allocation per object.
class OvDbDwgFileObject {
public:
    using Value = OvDbDwgFileValue;
    struct Field {
        std::string_view key;
        std::uint32_t value;
        bool taken;
    };

    void clear() {
        m_fields.clear();
        m_values.clear();
        m_texts.clear();
    }
    // The fields of an object of the tree parser; without `deep`, lists come without
    // their items.
    void reset(simdjson::dom::object object, bool deep = true);

    // Filled by a parser: values go to the pool, items of one list side by side.
    std::uint32_t addValue(const Value& value) {
        m_values.push_back(value);
        return static_cast<std::uint32_t>(m_values.size() - 1);
    }
    std::vector<Value>& values() { return m_values; }
    void addField(std::string_view key, std::uint32_t value) {
        m_fields.push_back({key, value, false});
    }
    // A text whose escapes were undone, kept as long as the object.
    std::string_view keepText(std::string&& text) {
        m_texts.push_back(std::move(text));
        return m_texts.back();
    }

    // The value under `key`, marked as taken; null when there is none.
    const Value* take(std::string_view key) {
        for (Field& f : m_fields) {
            // Many keys have the same length: the first letter settles most of them.
            if (f.key.size() == key.size() && (key.empty() || f.key[0] == key[0]) && f.key == key) {
                f.taken = true;
                return &m_values[f.value];
            }
        }
        return nullptr;
    }
    const Value& item(const Value& list, std::uint32_t i) const { return m_values[list.first + i]; }

    // The first key that nothing took, or null.
    const Field* firstUntaken() const {
        for (const Field& f : m_fields) {
            if (!f.taken)
                return &f;
        }
        return nullptr;
    }

    // Whether a key that was taken comes again: a second value of one key.
    bool isRepeated(const Field& field) const {
        for (const Field& f : m_fields) {
            if (&f != &field && f.taken && f.key == field.key)
                return true;
        }
        return false;
    }

private:
    std::uint32_t addTree(const simdjson::dom::element& e, bool deep);

    std::vector<Field> m_fields;
    std::vector<Value> m_values;
    // A deque, so that a text kept stays where it is while more are added.
    std::deque<std::string> m_texts;
};

// A text of the file as a string. Escapes can spell a lone surrogate, which the parser
// turns into bytes that no valid UTF-8 text holds (ED A0 to ED BF): such a text is not
// Unicode, and false.
bool ovdbFileText(std::string_view utf8, QString& out);

// A parser of drawing files for the common case: the file as Orvex writes it, read in one
// pass with no tree in between, straight into the objects one by one. It is strict: any
// form it does not take (a syntax fault, a lone surrogate spelled by an escape, a number
// beyond 64 bits, deep nesting) makes a step false, and the tree parser then reads the
// whole file to judge it, so that what is accepted and every message stay as that
// parser's. Texts point into `text`, which must outlive the values.
class OvDbDwgScanner {
public:
    explicit OvDbDwgScanner(std::string_view text) : m_text(text) {}

    // Past white space; the next character, or 0 at the end.
    char next();
    // The next character is `c`: step over it.
    bool take(char c);
    // A key and its colon.
    bool key(OvDbDwgFileObject& into, std::string_view& out);
    // An object's fields into `into`, after clearing it.
    bool object(OvDbDwgFileObject& into);
    // One value, its items (when a list) in the pool of `into`.
    bool value(OvDbDwgFileObject& into, OvDbDwgFileValue& out);
    // Nothing but white space is left.
    bool atEnd() { return next() == 0 && m_pos == m_text.size(); }

private:
    bool text(OvDbDwgFileObject& into, std::string_view& out);
    bool number(OvDbDwgFileValue& out);
    bool literal(std::string_view word);
    bool delimited() const;
    bool fields(OvDbDwgFileObject& into);

    std::string_view m_text;
    std::size_t m_pos = 0;
    int m_depth = 0;
    // Items of the lists being read, moved to the pool when their list ends.
    std::vector<OvDbDwgFileValue> m_stack;
};
