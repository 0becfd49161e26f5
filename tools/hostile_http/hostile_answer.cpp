#include "tools/hostile_http/hostile_answer.h"

#include <QTcpSocket>
#include <QTimer>
#include <functional>
#include <zlib.h>

namespace tarvik::tools {
namespace {

constexpr qsizetype kQueued = 256 * 1024; // what a flood keeps queued in the socket
constexpr int kNesting = 100'000;

// Bytes that are not UTF-8: a lead byte without its continuation, lone continuation bytes, a
// four-byte lead cut short, and two bytes that never occur.
const QByteArray kNotUtf8("\xC3\x28\xA0\xA1\xF0\x28\x8C\xBC\xFF\xFE");

// 4 GiB of zeros, gzipped to about 4 MB. One MiB of zeros is deflated once and ended with a full
// flush, which leaves it no reference to what came before: the same bytes can follow themselves
// any number of times, and the stream is made in milliseconds instead of deflating 4 GiB.
QByteArray makeGzipBomb() {
    constexpr uLong kUnit = 1 << 20;
    constexpr int kUnits = 4096;
    const QByteArray zeros(static_cast<qsizetype>(kUnit), '\0');
    z_stream z{};
    deflateInit2(&z, Z_BEST_COMPRESSION, Z_DEFLATED, -MAX_WBITS, 9, Z_DEFAULT_STRATEGY);
    QByteArray unit(static_cast<qsizetype>(deflateBound(&z, kUnit)) + 64, Qt::Uninitialized);
    z.next_in = reinterpret_cast<const Bytef*>(zeros.constData());
    z.avail_in = kUnit;
    z.next_out = reinterpret_cast<Bytef*>(unit.data());
    z.avail_out = static_cast<uInt>(unit.size());
    deflate(&z, Z_FULL_FLUSH);
    unit.resize(unit.size() - z.avail_out);
    char last[16];
    z.next_out = reinterpret_cast<Bytef*>(last);
    z.avail_out = sizeof last;
    deflate(&z, Z_FINISH); // the final, empty block
    const auto lastSize = static_cast<qsizetype>(sizeof last - z.avail_out);
    deflateEnd(&z);

    const uLong unitCrc = crc32(0, reinterpret_cast<const Bytef*>(zeros.constData()), kUnit);
    uLong crc = 0;
    QByteArray out("\x1f\x8b\x08\0\0\0\0\0\0\x03", 10);
    out.reserve(unit.size() * kUnits + 32);
    for (int i = 0; i < kUnits; ++i) {
        out += unit;
        crc = crc32_combine(crc, unitCrc, kUnit);
    }
    out.append(last, lastSize);
    const quint64 inflated = static_cast<quint64>(kUnit) * kUnits;
    for (const quint64 word : {static_cast<quint64>(crc), inflated}) {
        for (int shift = 0; shift < 32; shift += 8) { // little-endian, the size modulo 2^32
            out += static_cast<char>((word >> shift) & 0xFF);
        }
    }
    return out;
}

QByteArray statusLine(int status) {
    return "HTTP/1.1 " + QByteArray::number(status) + " Hostile\r\n";
}

QByteArray sized(int status, const QByteArray& headers, const QByteArray& body) {
    return statusLine(status) + headers + "Content-Length: " + QByteArray::number(body.size()) +
           "\r\n\r\n" + body;
}

QByteArray chunk(const QByteArray& bytes) {
    return QByteArray::number(bytes.size(), 16) + "\r\n" + bytes + "\r\n";
}

// Keeps writing what `next` gives until the socket closes, a little queued at a time.
void flood(QTcpSocket* s, const std::function<QByteArray()>& next) {
    auto pump = [s, next] {
        while (s->state() == QAbstractSocket::ConnectedState && s->bytesToWrite() < kQueued) {
            s->write(next());
        }
    };
    QObject::connect(s, &QTcpSocket::bytesWritten, s, pump);
    pump();
}

// Each header value with bytes that are not UTF-8 after it, and one header more.
QByteArray headersWithoutUtf8(const QByteArray& headers) {
    QByteArray out;
    for (const QByteArray& line : headers.split('\n')) {
        if (!line.trimmed().isEmpty()) {
            out += line.trimmed() + kNotUtf8 + "\r\n";
        }
    }
    return out + "X-Note: caf" + kNotUtf8 + "\r\n";
}

} // namespace

std::vector<HostileAnswer> hostileAnswers() {
    return {HostileAnswer::EndlessHeaders, HostileAnswer::LongerThanDeclared,
            HostileAnswer::EndlessChunks,  HostileAnswer::EndlessUnsized,
            HostileAnswer::Trickle,        HostileAnswer::GzipBomb,
            HostileAnswer::InvalidUtf8,    HostileAnswer::DeepArrays,
            HostileAnswer::DeepObjects};
}

QString name(HostileAnswer kind) {
    switch (kind) {
    case HostileAnswer::None:
        return QStringLiteral("none");
    case HostileAnswer::EndlessHeaders:
        return QStringLiteral("endless-headers");
    case HostileAnswer::LongerThanDeclared:
        return QStringLiteral("longer-than-declared");
    case HostileAnswer::EndlessChunks:
        return QStringLiteral("endless-chunks");
    case HostileAnswer::EndlessUnsized:
        return QStringLiteral("endless-unsized");
    case HostileAnswer::Trickle:
        return QStringLiteral("trickle");
    case HostileAnswer::GzipBomb:
        return QStringLiteral("gzip-bomb");
    case HostileAnswer::InvalidUtf8:
        return QStringLiteral("invalid-utf8");
    case HostileAnswer::DeepArrays:
        return QStringLiteral("deep-arrays");
    case HostileAnswer::DeepObjects:
        return QStringLiteral("deep-objects");
    }
    return {};
}

std::optional<HostileAnswer> hostileAnswerNamed(const QString& wanted) {
    for (const HostileAnswer kind : hostileAnswers()) {
        if (name(kind) == wanted) {
            return kind;
        }
    }
    return wanted == name(HostileAnswer::None) ? std::optional(HostileAnswer::None) : std::nullopt;
}

bool endless(HostileAnswer kind) {
    switch (kind) {
    case HostileAnswer::EndlessHeaders:
    case HostileAnswer::LongerThanDeclared:
    case HostileAnswer::EndlessChunks:
    case HostileAnswer::EndlessUnsized:
    case HostileAnswer::Trickle:
        return true;
    case HostileAnswer::None:
    case HostileAnswer::GzipBomb:
    case HostileAnswer::InvalidUtf8:
    case HostileAnswer::DeepArrays:
    case HostileAnswer::DeepObjects:
        return false;
    }
    return false;
}

void sendHostile(QTcpSocket* s, HostileAnswer kind, int status, const QByteArray& headers,
                 const QByteArray& body) {
    static const QByteArray spaces(64 * 1024, ' ');
    switch (kind) {
    case HostileAnswer::None:
        s->write(sized(status, headers, body));
        break;
    case HostileAnswer::EndlessHeaders: {
        s->write(statusLine(status) + headers);
        const QByteArray filler = "X-Filler: " + QByteArray(1000, 'h') + "\r\n";
        flood(s, [filler] { return filler; });
        break;
    }
    case HostileAnswer::LongerThanDeclared: {
        s->write(sized(status, headers, body));
        const QByteArray surplus(64 * 1024, 'x'); // never valid JSON after the body
        flood(s, [surplus] { return surplus; });
        break;
    }
    case HostileAnswer::EndlessChunks:
        // The answer, then blanks: what has come so far always reads as the whole answer.
        s->write(statusLine(status) + headers + "Transfer-Encoding: chunked\r\n\r\n");
        if (!body.isEmpty()) {
            s->write(chunk(body));
        }
        flood(s, [] { return chunk(spaces); });
        break;
    case HostileAnswer::EndlessUnsized:
        s->write(statusLine(status) + headers + "Connection: close\r\n\r\n" + body);
        flood(s, [] { return spaces; });
        break;
    case HostileAnswer::Trickle: {
        s->write(statusLine(status) + headers + "Transfer-Encoding: chunked\r\n\r\n");
        if (!body.isEmpty()) {
            s->write(chunk(body));
        }
        auto* drip = new QTimer(s);
        QObject::connect(drip, &QTimer::timeout, s, [s] { s->write(chunk(" ")); });
        drip->start(50);
        break;
    }
    case HostileAnswer::GzipBomb: {
        static const QByteArray bomb = makeGzipBomb();
        s->write(sized(status, headers + "Content-Encoding: gzip\r\n", bomb));
        break;
    }
    case HostileAnswer::InvalidUtf8: {
        // Inside the first string of a JSON body, where a parser has to look at the bytes.
        QByteArray marked = body;
        marked.insert(marked.indexOf('"') + 1, kNotUtf8);
        s->write(sized(status, headersWithoutUtf8(headers), marked));
        break;
    }
    case HostileAnswer::DeepArrays:
        s->write(sized(status, headers, QByteArray(kNesting, '[') + QByteArray(kNesting, ']')));
        break;
    case HostileAnswer::DeepObjects:
        s->write(
            sized(status, headers,
                  QByteArray(R"({"a":)").repeated(kNesting) + "{}" + QByteArray(kNesting, '}')));
        break;
    }
}

} // namespace tarvik::tools
