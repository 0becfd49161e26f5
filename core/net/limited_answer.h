#pragma once

// Reading a small answer from a server that may not keep HTTP's promises: headers that never
// end, a body that never ends, trickled or flooded, or one that inflates a thousandfold. Whatever
// the server sends, the reply ends within its time and with at most its size kept.
#include <QByteArray>
#include <memory>

class QNetworkReply;

namespace tarvik {

class LimitedAnswer {
public:
    enum class Cut {
        None,     // the answer ended by itself (well or not: see the reply's error)
        TooLarge, // its body went past the size
        TooSlow,  // it had not ended by the deadline
    };
    // Reads the body of `reply` as it arrives, keeping at most `maxBytes`; past that, or when the
    // whole answer has not come within `deadlineMs` (0: no deadline), aborts the reply. Made
    // right after the request, on the reply's thread; the reply still finishes as usual.
    LimitedAnswer(QNetworkReply* reply, qint64 maxBytes, int deadlineMs);

    // Once the reply has finished: whether it was cut short, and the body as read.
    Cut cut() const;
    QByteArray body() const;

private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace tarvik
