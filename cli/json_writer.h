#pragma once

#include <QString>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace tarvik::cli {

// Writes compact JSON as it goes, for answers too large to build as one document first (a
// million duplicate files). Keys and values are written in order; commas are its business.
class JsonWriter {
public:
    explicit JsonWriter(std::FILE* out) : out_(out) {}
    ~JsonWriter() { flush(); }
    JsonWriter(const JsonWriter&) = delete;
    JsonWriter& operator=(const JsonWriter&) = delete;

    void beginArray() { open('['); }
    void endArray() { close(']'); }
    void beginObject() { open('{'); }
    void endObject() { close('}'); }
    void key(std::string_view name);
    void value(const QString& text);
    void value(std::int64_t number);
    void value(bool on);
    void value(const char*) = delete; // would otherwise be taken for a bool
    void null();
    // Seconds since the epoch as UTC ISO 8601, "2024-05-01T09:30:00Z".
    void utcTime(std::int64_t seconds);
    void flush();

private:
    void open(char bracket);
    void close(char bracket);
    void separate();
    void escaped(std::string_view utf8);
    void appendEscaped(std::string_view utf8);

    std::FILE* out_;
    std::string buffer_;
    std::vector<bool> first_; // per open array or object: nothing written in it yet
    bool afterKey_ = false;
};

} // namespace tarvik::cli
