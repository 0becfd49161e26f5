#include "core/net/worker_wait.h"

#include <QEventLoop>
#include <QHostAddress>
#include <QTimer>

namespace tarvik {

bool waitUnlessCancelled(QEventLoop& loop, const std::atomic<bool>* cancel) {
    const auto cancelled = [cancel] {
        return cancel != nullptr && cancel->load();
    };
    if (cancelled()) {
        return true;
    }
    QTimer watch;
    watch.setInterval(50);
    QObject::connect(&watch, &QTimer::timeout, &loop, [&loop, cancelled] {
        if (cancelled()) {
            loop.quit();
        }
    });
    if (cancel != nullptr) {
        watch.start();
    }
    loop.exec();
    return cancelled();
}

std::optional<QHostInfo> lookUpHost(const QString& host, const std::atomic<bool>* cancel) {
    if (QHostAddress literal; literal.setAddress(host)) {
        QHostInfo info;
        info.setHostName(host);
        info.setAddresses({literal});
        return info;
    }
    QEventLoop loop;
    QHostInfo found;
    // The answer comes to this thread's event loop; with `loop` gone, it comes to nothing.
    const int id = QHostInfo::lookupHost(host, &loop, [&found, &loop](const QHostInfo& info) {
        found = info;
        loop.quit();
    });
    if (waitUnlessCancelled(loop, cancel)) {
        QHostInfo::abortHostLookup(id);
        return std::nullopt;
    }
    return found;
}

} // namespace tarvik
