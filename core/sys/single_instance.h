#pragma once

#include <QObject>
#include <QString>

class QLocalServer;

namespace tarvik {

// One running instance per name: a second launch asks the running one to show its window and
// exits, the way clicking an app's dock icon brings its window back. Tarvik takes one name per
// user; each dock folder's resident helper one per folder and user.
class SingleInstance : public QObject {
    Q_OBJECT
public:
    explicit SingleInstance(QString name = defaultName(), QObject* parent = nullptr);
    static QString defaultName();

    // Sends `message` to a running instance; false when none answers.
    bool notifyRunning(const QByteArray& message) const;
    // Becomes the running instance; false when the name cannot be taken.
    bool listen();

signals:
    void messageReceived(const QByteArray& message);

private:
    QString name_;
    QLocalServer* server_ = nullptr;
};

} // namespace tarvik
