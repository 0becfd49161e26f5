#pragma once

// How network code on a worker thread waits: on the thread's own event loop, looking at the
// job's cancel flag meanwhile, never inside a call that blocks the thread until it returns.
#include <QHostInfo>
#include <atomic>
#include <optional>

class QEventLoop;

namespace tarvik {

// Runs `loop` until something quits it or `cancel` is set; whether it was cancelled.
bool waitUnlessCancelled(QEventLoop& loop, const std::atomic<bool>* cancel);

// The addresses of `host`, looked up on Qt's resolver threads while this thread waits as above;
// none when cancelled. A literal address is its own answer, without a reverse lookup.
std::optional<QHostInfo> lookUpHost(const QString& host, const std::atomic<bool>* cancel);

} // namespace tarvik
