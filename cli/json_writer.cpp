#include "cli/json_writer.h"

#include "core/sys/file_names.h"

#include <ctime>

namespace tarvik::cli {

void JsonWriter::separate() {
    if (afterKey_) {
        afterKey_ = false;
        return;
    }
    if (!first_.empty()) {
        if (!first_.back()) {
            buffer_ += ',';
        }
        first_.back() = false;
    }
}

void JsonWriter::open(char bracket) {
    separate();
    buffer_ += bracket;
    first_.push_back(true);
}

void JsonWriter::close(char bracket) {
    first_.pop_back();
    buffer_ += bracket;
    if (first_.empty()) {
        buffer_ += '\n';
    }
    if (buffer_.size() > 64 * 1024) {
        flush();
    }
}

void JsonWriter::key(std::string_view name) {
    separate();
    escaped(name);
    buffer_ += ':';
    afterKey_ = true;
}

void JsonWriter::value(const QString& text) {
    separate();
    if (!fileName::hasRawBytes(text)) {
        escaped(text.toStdString());
        return;
    }
    // A file name's bytes that are not UTF-8 are written as the lone surrogates that hold them
    // ("\udcff" for the byte 0xFF), as Python's json and os.fsencode read them back.
    buffer_ += '"';
    qsizetype run = 0;
    for (qsizetype i = 0; i <= text.size(); ++i) {
        const bool escape = i < text.size() && fileName::hasRawBytes(QStringView(text).mid(i, 1)) &&
                            !(i > 0 && text[i - 1].isHighSurrogate());
        if (i == text.size() || escape) {
            appendEscaped(QStringView(text).mid(run, i - run).toUtf8().toStdString());
            if (escape) {
                static constexpr char kHex[] = "0123456789abcdef";
                const char16_t u = text[i].unicode();
                buffer_ += "\\udc";
                buffer_ += kHex[(u >> 4) & 15];
                buffer_ += kHex[u & 15];
            }
            run = i + 1;
        }
    }
    buffer_ += '"';
}

void JsonWriter::value(std::int64_t number) {
    separate();
    buffer_ += std::to_string(number);
}

void JsonWriter::value(bool on) {
    separate();
    buffer_ += on ? "true" : "false";
}

void JsonWriter::null() {
    separate();
    buffer_ += "null";
}

void JsonWriter::utcTime(std::int64_t seconds) {
    const auto t = static_cast<std::time_t>(seconds);
    std::tm tm{};
    char text[40];
    if (::gmtime_r(&t, &tm) == nullptr ||
        std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &tm) == 0) {
        null();
        return;
    }
    separate();
    buffer_ += '"';
    buffer_ += text;
    buffer_ += '"';
}

void JsonWriter::escaped(std::string_view utf8) {
    buffer_ += '"';
    appendEscaped(utf8);
    buffer_ += '"';
}

void JsonWriter::appendEscaped(std::string_view utf8) {
    static constexpr char kHex[] = "0123456789abcdef";
    for (const char ch : utf8) {
        const auto c = static_cast<unsigned char>(ch);
        switch (c) {
        case '"':
            buffer_ += "\\\"";
            break;
        case '\\':
            buffer_ += "\\\\";
            break;
        case '\n':
            buffer_ += "\\n";
            break;
        case '\r':
            buffer_ += "\\r";
            break;
        case '\t':
            buffer_ += "\\t";
            break;
        case '\b':
            buffer_ += "\\b";
            break;
        case '\f':
            buffer_ += "\\f";
            break;
        default:
            if (c < 0x20) {
                buffer_ += "\\u00";
                buffer_ += kHex[c >> 4];
                buffer_ += kHex[c & 15];
            } else {
                buffer_ += ch;
            }
        }
    }
}

void JsonWriter::flush() {
    if (!buffer_.empty()) {
        std::fwrite(buffer_.data(), 1, buffer_.size(), out_);
        buffer_.clear();
    }
    std::fflush(out_);
}

} // namespace tarvik::cli
