#pragma once

#include <QObject>

namespace tarvik {

// Tells when the machine has woken from sleep: logind's PrepareForSleep(false) on the system
// bus. Without a system bus (containers, tests) it simply never fires.
class SleepWatcher : public QObject {
    Q_OBJECT
public:
    explicit SleepWatcher(QObject* parent = nullptr);
    bool isWatching() const { return watching_; }

signals:
    void resumed();

private slots:
    void prepareForSleep(bool goingToSleep);

private:
    bool watching_ = false;
};

} // namespace tarvik
