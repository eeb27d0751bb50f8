#include "OvDbDwgFileObject.h"

#include <simdjson.h>

#include <charconv>
#include <cstring>

namespace {

// Deeper than any drawing nests; the tree parser judges such a file.
constexpr int kMaxDepth = 64;

bool isSpace(char c) {
    return c == ' ' || c == '\n' || c == '\r' || c == '\t';
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

void appendUtf8(std::string& out, unsigned code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | code >> 6);
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out += static_cast<char>(0xE0 | code >> 12);
        out += static_cast<char>(0x80 | (code >> 6 & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | code >> 18);
        out += static_cast<char>(0x80 | (code >> 12 & 0x3F));
        out += static_cast<char>(0x80 | (code >> 6 & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

} // namespace

// ---------------------------------------------------------------------------------------
// From the tree parser

std::uint32_t OvDbDwgFileObject::addTree(const simdjson::dom::element& e, bool deep) {
    using simdjson::dom::element_type;
    Value v;
    switch (e.type()) {
    case element_type::ARRAY: {
        v.type = Value::Type::List;
        if (!deep)
            break;
        const simdjson::dom::array items = e.get_array().value_unsafe();
        // The items' places first, so that they sit side by side whatever they hold.
        v.count = static_cast<std::uint32_t>(items.size());
        v.first = static_cast<std::uint32_t>(m_values.size());
        m_values.resize(m_values.size() + v.count);
        std::uint32_t i = v.first;
        for (const simdjson::dom::element item : items) {
            // Comes last in the pool, behind its own items.
            m_values[i++] = m_values[addTree(item, true)];
            m_values.pop_back();
        }
        break;
    }
    case element_type::OBJECT:
        v.type = Value::Type::Object;
        break;
    case element_type::STRING:
        v.type = Value::Type::Text;
        v.text = e.get_string().value_unsafe();
        break;
    case element_type::INT64:
    case element_type::UINT64:
    case element_type::DOUBLE:
        v.type = Value::Type::Number;
        v.number = e.get_double().value_unsafe();
        break;
    case element_type::BOOL:
        v.type = Value::Type::Bool;
        v.boolean = e.get_bool().value_unsafe();
        break;
    case element_type::NULL_VALUE:
        break;
    }
    return addValue(v);
}

void OvDbDwgFileObject::reset(simdjson::dom::object object, bool deep) {
    clear();
    for (const simdjson::dom::key_value_pair field : object) {
        const std::uint32_t at = addTree(field.value, deep);
        addField(field.key, at);
    }
}

// ---------------------------------------------------------------------------------------
// The one-pass parser

char OvDbDwgScanner::next() {
    while (m_pos < m_text.size() && isSpace(m_text[m_pos]))
        ++m_pos;
    return m_pos < m_text.size() ? m_text[m_pos] : '\0';
}

bool OvDbDwgScanner::take(char c) {
    if (next() != c || m_pos >= m_text.size())
        return false;
    ++m_pos;
    return true;
}

// After a number or a word: the end, white space or what may follow a value.
bool OvDbDwgScanner::delimited() const {
    if (m_pos >= m_text.size())
        return true;
    const char c = m_text[m_pos];
    return isSpace(c) || c == ',' || c == ']' || c == '}';
}

bool OvDbDwgScanner::literal(std::string_view word) {
    if (m_text.substr(m_pos, word.size()) != word)
        return false;
    m_pos += word.size();
    return delimited();
}

bool OvDbDwgScanner::text(OvDbDwgFileObject& into, std::string_view& out) {
    if (!take('"'))
        return false;
    const std::size_t start = m_pos;
    std::size_t i = start;
    const std::size_t size = m_text.size();
    while (i < size && m_text[i] != '"' && m_text[i] != '\\') {
        if (static_cast<unsigned char>(m_text[i]) < 0x20)
            return false;
        ++i;
    }
    if (i >= size)
        return false;
    if (m_text[i] == '"') {
        out = m_text.substr(start, i - start);
        m_pos = i + 1;
        return true;
    }
    // Escapes: undone into a text of the object's own.
    std::string plain(m_text.substr(start, i - start));
    while (i < size && m_text[i] != '"') {
        const char c = m_text[i];
        if (static_cast<unsigned char>(c) < 0x20)
            return false;
        if (c != '\\') {
            plain += c;
            ++i;
            continue;
        }
        if (i + 1 >= size)
            return false;
        const char e = m_text[i + 1];
        i += 2;
        switch (e) {
        case '"':
        case '\\':
        case '/':
            plain += e;
            break;
        case 'b':
            plain += '\b';
            break;
        case 'f':
            plain += '\f';
            break;
        case 'n':
            plain += '\n';
            break;
        case 'r':
            plain += '\r';
            break;
        case 't':
            plain += '\t';
            break;
        case 'u': {
            auto unit = [&](unsigned& code) {
                if (i + 4 > size)
                    return false;
                code = 0;
                for (int k = 0; k < 4; ++k) {
                    const int d = hexDigit(m_text[i + static_cast<std::size_t>(k)]);
                    if (d < 0)
                        return false;
                    code = code << 4 | static_cast<unsigned>(d);
                }
                i += 4;
                return true;
            };
            unsigned code = 0;
            if (!unit(code))
                return false;
            if (code >= 0xD800 && code <= 0xDBFF) {
                unsigned low = 0;
                if (i + 2 > size || m_text[i] != '\\' || m_text[i + 1] != 'u')
                    return false;
                i += 2;
                if (!unit(low) || low < 0xDC00 || low > 0xDFFF)
                    return false;
                code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
            } else if (code >= 0xDC00 && code <= 0xDFFF) {
                return false;
            }
            appendUtf8(plain, code);
            break;
        }
        default:
            return false;
        }
    }
    if (i >= size)
        return false;
    m_pos = i + 1;
    out = into.keepText(std::move(plain));
    return true;
}

bool OvDbDwgScanner::number(OvDbDwgFileValue& out) {
    const std::size_t start = m_pos;
    const std::size_t size = m_text.size();
    std::size_t i = start;
    auto digits = [&] {
        const std::size_t from = i;
        while (i < size && m_text[i] >= '0' && m_text[i] <= '9')
            ++i;
        return i > from;
    };
    if (i < size && m_text[i] == '-')
        ++i;
    if (i < size && m_text[i] == '0')
        ++i;
    else if (!digits())
        return false;
    bool whole = true;
    if (i < size && m_text[i] == '.') {
        ++i;
        whole = false;
        if (!digits())
            return false;
    }
    if (i < size && (m_text[i] == 'e' || m_text[i] == 'E')) {
        ++i;
        whole = false;
        if (i < size && (m_text[i] == '+' || m_text[i] == '-'))
            ++i;
        if (!digits())
            return false;
    }
    m_pos = i;
    if (!delimited())
        return false;
    const char* first = m_text.data() + start;
    const char* last = m_text.data() + i;
    out.type = OvDbDwgFileValue::Type::Number;
    // A whole number is an integer to the tree parser, and becomes a double from there:
    // "-0" is 0, as it is there.
    if (whole) {
        if (*first == '-') {
            std::int64_t n = 0;
            const auto r = std::from_chars(first, last, n);
            out.number = static_cast<double>(n);
            return r.ec == std::errc() && r.ptr == last;
        }
        std::uint64_t n = 0;
        const auto r = std::from_chars(first, last, n);
        out.number = static_cast<double>(n);
        return r.ec == std::errc() && r.ptr == last;
    }
    // Most numbers of a drawing are short decimals, such as 10.5: their digits as a whole
    // number and a power of ten, both exact in a double, give the rounded value at once.
    std::uint64_t mantissa = 0;
    int digitsSeen = 0;
    int scale = -1;
    bool plain = true;
    for (const char* p = *first == '-' ? first + 1 : first; p < last && plain; ++p) {
        if (*p == '.') {
            scale = 0;
        } else if (*p >= '0' && *p <= '9') {
            mantissa = mantissa * 10 + static_cast<unsigned>(*p - '0');
            scale += scale >= 0;
            plain = ++digitsSeen <= 15;
        } else {
            plain = false;
        }
    }
    if (plain && scale >= 0) {
        static constexpr double kPowers[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                             1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
        const double value = static_cast<double>(mantissa) / kPowers[scale];
        out.number = *first == '-' ? -value : value;
        return true;
    }
    const auto r = std::from_chars(first, last, out.number);
    return r.ec == std::errc() && r.ptr == last;
}

bool OvDbDwgScanner::key(OvDbDwgFileObject& into, std::string_view& out) {
    return text(into, out) && take(':');
}

bool OvDbDwgScanner::fields(OvDbDwgFileObject& into) {
    if (next() == '}') {
        ++m_pos;
        return true;
    }
    for (;;) {
        std::string_view name;
        OvDbDwgFileValue v;
        if (!key(into, name) || !value(into, v))
            return false;
        into.addField(name, into.addValue(v));
        if (take('}'))
            return true;
        if (!take(','))
            return false;
    }
}

bool OvDbDwgScanner::object(OvDbDwgFileObject& into) {
    into.clear();
    return take('{') && fields(into);
}

bool OvDbDwgScanner::value(OvDbDwgFileObject& into, OvDbDwgFileValue& out) {
    out = OvDbDwgFileValue();
    switch (next()) {
    case '"':
        out.type = OvDbDwgFileValue::Type::Text;
        return text(into, out.text);
    case '[': {
        if (++m_depth > kMaxDepth)
            return false;
        ++m_pos;
        out.type = OvDbDwgFileValue::Type::List;
        const std::size_t mark = m_stack.size();
        if (!take(']')) {
            for (;;) {
                OvDbDwgFileValue item;
                if (!value(into, item))
                    return false;
                m_stack.push_back(item);
                if (take(']'))
                    break;
                if (!take(','))
                    return false;
            }
        }
        std::vector<OvDbDwgFileValue>& pool = into.values();
        out.first = static_cast<std::uint32_t>(pool.size());
        out.count = static_cast<std::uint32_t>(m_stack.size() - mark);
        pool.insert(pool.end(), m_stack.begin() + static_cast<std::ptrdiff_t>(mark), m_stack.end());
        m_stack.resize(mark);
        --m_depth;
        return true;
    }
    case '{': {
        // Only what it is counts; its fields are read to check them and then dropped.
        if (++m_depth > kMaxDepth)
            return false;
        ++m_pos;
        out.type = OvDbDwgFileValue::Type::Object;
        if (next() == '}') {
            ++m_pos;
        } else {
            for (;;) {
                std::string_view name;
                OvDbDwgFileValue inner;
                if (!key(into, name) || !value(into, inner))
                    return false;
                if (take('}'))
                    break;
                if (!take(','))
                    return false;
            }
        }
        --m_depth;
        return true;
    }
    case 't':
        out.type = OvDbDwgFileValue::Type::Bool;
        out.boolean = true;
        return literal("true");
    case 'f':
        out.type = OvDbDwgFileValue::Type::Bool;
        return literal("false");
    case 'n':
        return literal("null");
    default:
        return number(out);
    }
}
