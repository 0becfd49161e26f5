#pragma once

// Answers from a server that cannot be trusted: headers or bodies that never end, bodies longer
// than declared, compressed bombs, bytes that are not UTF-8, JSON nested far too deep. The local
// stand-ins for the speed-test service and the agents' services send them on request, so that
// the tests can show what Tarvik does with each.
#include <QByteArray>
#include <QString>
#include <optional>
#include <vector>

class QTcpSocket;

namespace tarvik::tools {

enum class HostileAnswer {
    None,
    EndlessHeaders,     // a status line, then header lines as fast as they go, never the last
    LongerThanDeclared, // the Content-Length of the answer, then bytes past it without end
    EndlessChunks,      // chunked: the answer, then chunk after chunk as fast as they go
    EndlessUnsized,     // no length: the answer, then bytes as fast as they go
    Trickle,            // chunked: the answer, then one byte every 50 ms, forever
    GzipBomb,           // Content-Encoding: gzip, 4 MB that inflate to 4 GiB of zeros
    InvalidUtf8,        // the answer with bytes that are not UTF-8 in its body and header values
    DeepArrays,         // JSON arrays nested 100,000 deep
    DeepObjects,        // JSON objects nested 100,000 deep: {"a":{"a":…}}
};

// Every kind but None, in the order above.
std::vector<HostileAnswer> hostileAnswers();
// "endless-headers" and so on, for the command line and for test messages.
QString name(HostileAnswer kind);
std::optional<HostileAnswer> hostileAnswerNamed(const QString& name);

// Whether the answer goes on until the client hangs up: the connection serves nothing after it.
bool endless(HostileAnswer kind);

// Sends `kind` on `socket` in place of the answer it stands for: `status`, `headers` (lines
// ending in CRLF, without Content-Length) and `body`. An endless answer keeps the socket busy
// until it closes.
void sendHostile(QTcpSocket* socket, HostileAnswer kind, int status, const QByteArray& headers,
                 const QByteArray& body);

} // namespace tarvik::tools
