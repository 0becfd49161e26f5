#include "core/net/limited_answer.h"

#include <QNetworkReply>
#include <QTimer>
#include <algorithm>

namespace tarvik {

struct LimitedAnswer::State {
    QByteArray body;
    Cut cut = Cut::None;
};

LimitedAnswer::LimitedAnswer(QNetworkReply* reply, qint64 maxBytes, int deadlineMs)
    : state_(std::make_shared<State>()) {
    // Qt stops reading from the socket while this much waits unread: a flood piles up in the
    // server's send queue, not here.
    reply->setReadBufferSize(std::min<qint64>(maxBytes + 1, 1 << 20));
    QObject::connect(reply, &QNetworkReply::readyRead, reply, [reply, maxBytes, s = state_] {
        if (s->cut != Cut::None) {
            return;
        }
        s->body += reply->read(maxBytes + 1 - s->body.size());
        if (s->body.size() > maxBytes) {
            s->cut = Cut::TooLarge;
            reply->abort();
        }
    });
    if (deadlineMs <= 0) {
        return;
    }
    auto* deadline = new QTimer(reply);
    deadline->setSingleShot(true);
    QObject::connect(deadline, &QTimer::timeout, reply, [reply, s = state_] {
        if (s->cut == Cut::None && reply->isRunning()) {
            s->cut = Cut::TooSlow;
            reply->abort();
        }
    });
    QObject::connect(reply, &QNetworkReply::finished, deadline, &QTimer::stop);
    deadline->start(deadlineMs);
}

LimitedAnswer::Cut LimitedAnswer::cut() const {
    return state_->cut;
}

QByteArray LimitedAnswer::body() const {
    return state_->body;
}

} // namespace tarvik
