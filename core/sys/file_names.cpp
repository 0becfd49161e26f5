#include "core/sys/file_names.h"

#include <QStringBuilder>

namespace tarvik::fileName {
namespace {

constexpr char16_t kEscapeBase = 0xDC00; // byte b (0x80…0xFF) is U+DC00 + b

bool isContinuation(unsigned char c) {
    return (c & 0xC0) == 0x80;
}

// The length of the well-formed UTF-8 sequence at `s` (Unicode, table 3-7), or 0: overlong
// forms, surrogates and code points past U+10FFFF are not well formed.
std::size_t sequenceLength(const unsigned char* s, std::size_t left) {
    const unsigned char c = s[0];
    if (c < 0x80) {
        return 1;
    }
    if (c >= 0xC2 && c <= 0xDF) {
        return left >= 2 && isContinuation(s[1]) ? 2 : 0;
    }
    if (c >= 0xE0 && c <= 0xEF) {
        if (left < 3 || !isContinuation(s[1]) || !isContinuation(s[2])) {
            return 0;
        }
        if ((c == 0xE0 && s[1] < 0xA0) || (c == 0xED && s[1] > 0x9F)) {
            return 0;
        }
        return 3;
    }
    if (c >= 0xF0 && c <= 0xF4) {
        if (left < 4 || !isContinuation(s[1]) || !isContinuation(s[2]) || !isContinuation(s[3])) {
            return 0;
        }
        if ((c == 0xF0 && s[1] < 0x90) || (c == 0xF4 && s[1] > 0x8F)) {
            return 0;
        }
        return 4;
    }
    return 0;
}

bool isEscape(char16_t u) {
    return u >= kEscapeBase + 0x80 && u <= kEscapeBase + 0xFF;
}

} // namespace

QString decode(std::string_view bytes) {
    const auto* s = reinterpret_cast<const unsigned char*>(bytes.data());
    const std::size_t n = bytes.size();
    std::size_t i = 0;
    // Most names are plain UTF-8: one pass to check, then Qt's own decoder.
    while (i < n) {
        const std::size_t length = sequenceLength(s + i, n - i);
        if (length == 0) {
            break;
        }
        i += length;
    }
    if (i == n) {
        return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(n));
    }
    QString out = QString::fromUtf8(bytes.data(), static_cast<qsizetype>(i));
    std::size_t runStart = i;
    while (i < n) {
        const std::size_t length = sequenceLength(s + i, n - i);
        if (length != 0) {
            i += length;
            continue;
        }
        out += QString::fromUtf8(bytes.data() + runStart, static_cast<qsizetype>(i - runStart));
        out += QChar(static_cast<char16_t>(kEscapeBase + s[i]));
        ++i;
        runStart = i;
    }
    out += QString::fromUtf8(bytes.data() + runStart, static_cast<qsizetype>(n - runStart));
    return out;
}

std::string encode(QStringView name) {
    if (!hasRawBytes(name)) {
        return name.toUtf8().toStdString();
    }
    std::string out;
    out.reserve(static_cast<std::size_t>(name.size()) * 3);
    qsizetype runStart = 0;
    for (qsizetype i = 0; i < name.size(); ++i) {
        const char16_t u = name[i].unicode();
        // A lone surrogate of the escape range; a real pair never falls in it, as its low half
        // (U+DC00…U+DFFF) only follows a high half.
        const bool paired = i > 0 && QChar::isHighSurrogate(name[i - 1].unicode());
        if (isEscape(u) && !paired) {
            const QByteArray run = name.mid(runStart, i - runStart).toUtf8();
            out.append(run.constData(), static_cast<std::size_t>(run.size()));
            out.push_back(static_cast<char>(u - kEscapeBase));
            runStart = i + 1;
        }
    }
    const QByteArray run = name.mid(runStart).toUtf8();
    out.append(run.constData(), static_cast<std::size_t>(run.size()));
    return out;
}

bool hasRawBytes(QStringView name) {
    for (qsizetype i = 0; i < name.size(); ++i) {
        if (isEscape(name[i].unicode()) &&
            !(i > 0 && QChar::isHighSurrogate(name[i - 1].unicode()))) {
            return true;
        }
    }
    return false;
}

QString display(const QString& name) {
    if (!hasRawBytes(name)) {
        return name;
    }
    QString out;
    for (qsizetype i = 0; i < name.size(); ++i) {
        const char16_t u = name[i].unicode();
        if (isEscape(u) && !(i > 0 && QChar::isHighSurrogate(name[i - 1].unicode()))) {
            out +=
                QStringLiteral("\\x") %
                QString::number(u - kEscapeBase, 16).toUpper().rightJustified(2, QLatin1Char('0'));
        } else {
            out += name[i];
        }
    }
    return out;
}

} // namespace tarvik::fileName
