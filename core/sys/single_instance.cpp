#include "core/sys/single_instance.h"

#include <QLocalServer>
#include <QLocalSocket>
#include <unistd.h>
#include <utility>

namespace tarvik {

SingleInstance::SingleInstance(QString name, QObject* parent)
    : QObject(parent), name_(std::move(name)) {}

QString SingleInstance::defaultName() {
    return QStringLiteral("org.pellor.tarvik-%1").arg(::getuid());
}

bool SingleInstance::notifyRunning(const QByteArray& message) const {
    QLocalSocket socket;
    socket.connectToServer(name_);
    if (!socket.waitForConnected(500)) {
        return false;
    }
    socket.write(message + '\n');
    socket.waitForBytesWritten(500);
    socket.disconnectFromServer();
    return true;
}

bool SingleInstance::listen() {
    server_ = new QLocalServer(this);
    server_->setSocketOptions(QLocalServer::UserAccessOption);
    if (!server_->listen(name_)) {
        // A socket left behind by a crashed instance: nobody answered it above, so take it over.
        QLocalServer::removeServer(name_);
        if (!server_->listen(name_)) {
            return false;
        }
    }
    connect(server_, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* socket = server_->nextPendingConnection()) {
            connect(socket, &QLocalSocket::readyRead, socket, [this, socket] {
                while (socket->canReadLine()) {
                    emit messageReceived(socket->readLine().trimmed());
                }
            });
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        }
    });
    return true;
}

} // namespace tarvik
