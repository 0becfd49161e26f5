#pragma once

// Reading the agents' log lines with simdjson's on-demand parser, for the Claude Code and Codex
// parsers. On-demand parsing reads a line as it goes: after any error the document must not be
// touched again, so every step is checked and the first error ends the line. Inline, as they
// run for every field read.
#include "core/agents/spend/log_lines.h"

#include <QByteArrayView>
#include <QString>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <simdjson.h>
#include <string_view>
#include <utility>

namespace tarvik::LogJSON {

namespace od = simdjson::ondemand;
// A field's value, or the error met on the way to it.
using Value = simdjson::simdjson_result<od::value>;

inline QString text(std::string_view s) {
    return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size()));
}

// Calls `onField(key, value)` for each field of `object`, in the order they come; a value it
// leaves unread is skipped. False at the first error, or when `onField` returns false.
template <typename OnField> bool fields(od::object& object, OnField&& onField) {
    for (auto field : object) {
        std::string_view key;
        if (field.unescaped_key().get(key) != simdjson::SUCCESS || !onField(key, field.value())) {
            return false;
        }
    }
    return true;
}

// One pass over the fields of the line's root object, as fields() makes it. The line is read
// where it lies when `readableAfter` leaves simdjson the room it reads past its input, else from
// a copy; the strings read stay in `parser` until its next line. False when the line is not one
// whole object (one run into the next, or with a brace too many, does not count), or when
// `onField` returns false.
template <typename OnField>
bool read(od::parser& parser, QByteArrayView line, std::size_t readableAfter, OnField&& onField) {
    const auto size = static_cast<std::size_t>(line.size());
    // simdjson counts a document's braces only when a closing one follows it, and a malformed
    // line it would otherwise take then fails: such a line is read from a copy, so that what
    // follows a line never changes how it reads.
    if (readableAfter > 0 && line.data()[line.size()] == '}') {
        readableAfter = 0;
    }
    const char* input = LogLines::withRoomAfter(line, readableAfter, simdjson::SIMDJSON_PADDING);
    od::document doc;
    od::object root;
    const char* rest = nullptr;
    return parser.iterate(input, size, size + simdjson::SIMDJSON_PADDING).get(doc) ==
               simdjson::SUCCESS &&
           doc.get_object().get(root) == simdjson::SUCCESS && fields(root, onField) &&
           doc.current_location().get(rest) == simdjson::OUT_OF_BOUNDS;
}

// The value and its type; false when it is malformed.
inline bool typed(Value value, od::value& out, od::json_type& type) {
    return value.get(out) == simdjson::SUCCESS && out.type().get(type) == simdjson::SUCCESS;
}

// Calls `onObject` with the value when it is an object; true for any other type. False when the
// value is malformed or `onObject` returns false.
template <typename OnObject> bool ifObject(Value value, OnObject&& onObject) {
    od::value v;
    od::json_type type;
    if (!typed(value, v, type)) {
        return false;
    }
    od::object object;
    return type != od::json_type::object ||
           (v.get_object().get(object) == simdjson::SUCCESS && onObject(object));
}

// A string value into `out`, which another type leaves as it was; false when it is malformed.
inline bool stringOf(Value value, std::optional<std::string_view>& out) {
    od::value v;
    od::json_type type;
    if (!typed(value, v, type)) {
        return false;
    }
    if (type != od::json_type::string) {
        return true;
    }
    std::string_view s;
    if (v.get_string().get(s) != simdjson::SUCCESS) {
        return false;
    }
    out = s;
    return true;
}

// A token figure: a whole number of at least zero. The bound keeps a corrupt figure from
// overflowing the sums.
inline std::int64_t tokenCount(double n) {
    return std::isfinite(n) && n > 0 && n <= 1e15 ? std::llround(n) : 0;
}

// A JSON number, or a string holding one, as a token count into `out` (0 when absurd or of
// another type); false when the value is malformed.
inline bool count(Value value, std::int64_t& out) {
    od::value v;
    od::json_type type;
    if (!typed(value, v, type)) {
        return false;
    }
    double n = 0;
    if (type == od::json_type::number) {
        if (v.get_double().get(n) != simdjson::SUCCESS) {
            return false;
        }
    } else if (type == od::json_type::string) {
        std::string_view s;
        if (v.get_string().get(s) != simdjson::SUCCESS) {
            return false;
        }
        n = text(s).toDouble();
    } // another type is skipped by the next field's read, which checks it is well formed
    out = tokenCount(n);
    return true;
}

// A count an object may hold, and where its figure goes.
struct Count {
    std::string_view key;
    std::int64_t* into;
};

// The counts of `object` in one pass over its fields; false when it is malformed.
inline bool counts(od::object& object, std::initializer_list<Count> wanted) {
    return fields(object, [&](std::string_view key, Value value) {
        for (const Count& c : wanted) {
            if (key == c.key) {
                return count(std::move(value), *c.into);
            }
        }
        return true;
    });
}

// A time stamp as written, turned into a date only once its line turns out to count.
struct Stamp {
    enum class Kind { None, Text, Seconds } kind = Kind::None;
    std::string_view text;
    double seconds = 0;

    // Text or a number; a value of another type leaves the stamp as it was. False when the value
    // is malformed.
    bool read(Value value) {
        od::value v;
        od::json_type type;
        if (!typed(value, v, type)) {
            return false;
        }
        if (type == od::json_type::string) {
            kind = Kind::Text;
            return v.get_string().get(text) == simdjson::SUCCESS;
        }
        if (type == od::json_type::number) {
            kind = Kind::Seconds;
            return v.get_double().get(seconds) == simdjson::SUCCESS;
        }
        return true;
    }
};

} // namespace tarvik::LogJSON
