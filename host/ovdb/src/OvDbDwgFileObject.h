#pragma once

#include <simdjson.h>

#include <string_view>
#include <vector>

// One object of a drawing file as the parser gives it: its keys with their values, and
// which of them the reader took. An object has a dozen keys at most, so a look-up is a
// short scan, cheaper than any map.
class OvDbDwgFileObject {
public:
    struct Field {
        std::string_view key;
        simdjson::dom::element value;
        bool taken;
    };

    void reset(simdjson::dom::object object) {
        m_fields.clear();
        for (const simdjson::dom::key_value_pair field : object)
            m_fields.push_back({field.key, field.value, false});
    }

    // The value under `key`, marked as taken; null when there is none.
    const simdjson::dom::element* take(std::string_view key) {
        for (Field& f : m_fields) {
            if (f.key == key) {
                f.taken = true;
                return &f.value;
            }
        }
        return nullptr;
    }

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
    std::vector<Field> m_fields;
};

// A text of the file as a string. Escapes can spell a lone surrogate, which the parser
// turns into bytes that no valid UTF-8 text holds (ED A0 to ED BF): such a text is not
// Unicode, and false.
bool ovdbFileText(std::string_view utf8, QString& out);
