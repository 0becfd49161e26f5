#include "core/sys/secret_store.h"

#include <QEventLoop>
#include <qt6keychain/keychain.h>

namespace tarvik {
namespace {

// Runs a job to its end on a local event loop.
QString errorText(const QKeychain::Job& job) {
    return job.error() == QKeychain::NoBackendAvailable
               ? QStringLiteral("No keyring is available to keep the key. Install and unlock a "
                                "Secret Service such as GNOME Keyring or KWallet.")
               : QStringLiteral("The keyring refused: ") + job.errorString();
}

bool finish(QKeychain::Job& job, QString* error) {
    job.setAutoDelete(false);
    QEventLoop loop;
    QObject::connect(&job, &QKeychain::Job::finished, &loop, &QEventLoop::quit);
    job.start();
    loop.exec();
    if (job.error() != QKeychain::NoError && job.error() != QKeychain::EntryNotFound &&
        error != nullptr) {
        *error = errorText(job);
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

void SecretStore::read(const QString& key, QObject* context,
                       std::function<void(std::optional<QString>)> done) const {
    auto* job = new QKeychain::ReadPasswordJob(service_);
    job->setKey(key);
    QObject::connect(job, &QKeychain::Job::finished, context, [job, done] {
        done(job->error() == QKeychain::NoError && !job->textData().isEmpty()
                 ? std::optional(job->textData())
                 : std::nullopt);
    });
    job->start(); // deletes itself once finished
}

void SecretStore::write(const QString& key, const QString& secret, QObject* context,
                        std::function<void(Result)> done) const {
    auto* job = new QKeychain::WritePasswordJob(service_);
    job->setKey(key);
    job->setTextData(secret);
    QObject::connect(job, &QKeychain::Job::finished, context, [job, done] {
        const bool ok = job->error() == QKeychain::NoError;
        done({ok, ok ? QString() : errorText(*job)});
    });
    job->start();
}

void SecretStore::remove(const QString& key, QObject* context,
                         std::function<void(Result)> done) const {
    auto* job = new QKeychain::DeletePasswordJob(service_);
    job->setKey(key);
    QObject::connect(job, &QKeychain::Job::finished, context, [job, done] {
        const bool ok =
            job->error() == QKeychain::NoError || job->error() == QKeychain::EntryNotFound;
        done({ok, ok ? QString() : errorText(*job)});
    });
    job->start();
}

} // namespace tarvik
