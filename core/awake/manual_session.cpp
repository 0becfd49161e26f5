#include "core/awake/manual_session.h"

namespace tarvik {

ManualSession ManualSession::starting(const QDateTime& at, Duration duration) {
    return endingAt(at.addSecs(seconds(duration)));
}

int minutes(ManualSession::Duration duration) {
    return static_cast<int>(duration);
}

qint64 seconds(ManualSession::Duration duration) {
    return qint64{minutes(duration)} * 60;
}

QString label(ManualSession::Duration duration) {
    const int m = minutes(duration);
    return m < 60 ? QStringLiteral("%1 min").arg(m) : QStringLiteral("%1 h").arg(m / 60);
}

QString indefiniteText() {
    return QStringLiteral("Until you turn it off");
}

} // namespace tarvik
