#include "core/platform/secret_store.h"

#include <QEventLoop>
#include <qt6keychain/keychain.h>

namespace tarvik {
namespace {

// Runs a job to its end on a local event loop.
bool finish(QKeychain::Job& job, QString* error) {
    job.setAutoDelete(false);
    QEventLoop loop;
    QObject::connect(&job, &QKeychain::Job::finished, &loop, &QEventLoop::quit);
    job.start();
    loop.exec();
    if (job.error() != QKeychain::NoError && job.error() != QKeychain::EntryNotFound &&
        error != nullptr) {
        *error = job.error() == QKeychain::NoBackendAvailable
                     ? QStringLiteral("No keyring is available to keep the key. Install and "
                                      "unlock a Secret Service such as GNOME Keyring or KWallet.")
                     : QStringLiteral("The keyring refused: ") + job.errorString();
    }
    return job.error() == QKeychain::NoError;
}

} // namespace

std::optional<QString> SecretStore::read(const QString& key, QString* error) const {
    QKeychain::ReadPasswordJob job(service_);
    job.setKey(key);
    if (!finish(job, error) || job.textData().isEmpty()) {
        return std::nullopt;
    }
    return job.textData();
}

SecretStore::Result SecretStore::write(const QString& key, const QString& secret) const {
    QKeychain::WritePasswordJob job(service_);
    job.setKey(key);
    job.setTextData(secret);
    QString error;
    const bool ok = finish(job, &error);
    return {ok, error};
}

SecretStore::Result SecretStore::remove(const QString& key) const {
    QKeychain::DeletePasswordJob job(service_);
    job.setKey(key);
    QString error;
    const bool ok = finish(job, &error) || job.error() == QKeychain::EntryNotFound;
    return {ok, ok ? QString() : error};
}

} // namespace tarvik
