#pragma once

// A real HTTP/1.1 server on 127.0.0.1, on a thread of its own, that answers each path with
// the status, headers and body a test gives it, sent as they are or in one of the hostile ways,
// and remembers the requests it saw.
#include "tools/hostile_http/hostile_answer.h"

#include <QMutex>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>
#include <QTimer>
#include <QUrl>
#include <map>

namespace tarvik::test {

class ScriptedServer {
public:
    struct Answer {
        Answer(int s = 200, QByteArray b = {}, QList<std::pair<QByteArray, QByteArray>> h = {},
               int delay = 0, tools::HostileAnswer how = tools::HostileAnswer::None)
            : status(s), body(std::move(b)), headers(std::move(h)), delayMs(delay), hostile(how) {}
        int status;
        QByteArray body;
        QList<std::pair<QByteArray, QByteArray>> headers;
        int delayMs;
        tools::HostileAnswer hostile;
    };
    struct Request {
        QByteArray method;
        QString path;
        std::map<QByteArray, QByteArray> headers; // names in lower case
    };

    ScriptedServer() {
        server_.moveToThread(&thread_);
        thread_.start();
        QMetaObject::invokeMethod(
            &server_,
            [this] {
                server_.listen(QHostAddress::LocalHost, 0);
                QObject::connect(&server_, &QTcpServer::newConnection, &server_, [this] {
                    while (QTcpSocket* s = server_.nextPendingConnection()) {
                        auto buffer = std::make_shared<QByteArray>();
                        QObject::connect(s, &QTcpSocket::readyRead, s,
                                         [this, s, buffer] { serve(s, *buffer); });
                        QObject::connect(s, &QTcpSocket::disconnected, s, &QObject::deleteLater);
                    }
                });
            },
            Qt::BlockingQueuedConnection);
    }
    ~ScriptedServer() {
        QMetaObject::invokeMethod(
            &server_, [this] { server_.close(); }, Qt::BlockingQueuedConnection);
        thread_.quit();
        thread_.wait();
    }

    QUrl url() const { return QUrl(QString("http://127.0.0.1:%1/").arg(server_.serverPort())); }
    void answer(const QString& path, Answer a) {
        QMutexLocker lock(&mutex_);
        answers_[path] = std::move(a);
    }
    std::vector<Request> requests() const {
        QMutexLocker lock(&mutex_);
        return requests_;
    }

private:
    void serve(QTcpSocket* s, QByteArray& buffer) {
        buffer += s->readAll();
        const auto end = buffer.indexOf("\r\n\r\n");
        if (end < 0) {
            return;
        }
        const QList<QByteArray> lines = buffer.left(end).split('\n');
        buffer.remove(0, end + 4);
        Request r;
        const QList<QByteArray> first = lines.value(0).trimmed().split(' ');
        r.method = first.value(0);
        r.path = QUrl(QString::fromLatin1(first.value(1))).path();
        for (qsizetype i = 1; i < lines.size(); ++i) {
            const auto colon = lines[i].indexOf(':');
            if (colon > 0) {
                r.headers[lines[i].left(colon).trimmed().toLower()] =
                    lines[i].mid(colon + 1).trimmed();
            }
        }
        Answer a{404, "not found", {}, 0};
        {
            QMutexLocker lock(&mutex_);
            requests_.push_back(r);
            if (const auto it = answers_.find(r.path); it != answers_.end()) {
                a = it->second;
            }
        }
        QByteArray headers;
        for (const auto& [name, value] : a.headers) {
            headers += name + ": " + value + "\r\n";
        }
        QTimer::singleShot(a.delayMs, s, [s, a, headers] {
            tools::sendHostile(s, a.hostile, a.status, headers, a.body);
        });
    }

    QThread thread_;
    QTcpServer server_;
    mutable QMutex mutex_;
    std::map<QString, Answer> answers_;
    std::vector<Request> requests_;
};

} // namespace tarvik::test
