#pragma once

// Secrets the user pasted, kept in the desktop's Secret Service (GNOME Keyring, KWallet…)
// through QtKeychain, never in Tarvik's own files.
#include <QObject>
#include <QString>
#include <functional>
#include <optional>

namespace tarvik {

class SecretStore {
public:
    explicit SecretStore(QString service) : service_(std::move(service)) {}

    struct Result {
        bool ok = false;
        QString error; // in the user's words when !ok
    };
    // Blocking: each call waits for the service on a local event loop. Call from the main
    // thread: the keyring library answers only there.
    std::optional<QString> read(const QString& key, QString* error = nullptr) const;
    Result write(const QString& key, const QString& secret) const;
    Result remove(const QString& key) const;

    // The same without waiting: `done` runs on `context`'s thread once the service answered.
    // A window uses these, so that no event loop runs inside another (a nested loop while a
    // window is shown can delete objects the outer loop still walks over).
    void read(const QString& key, QObject* context,
              std::function<void(std::optional<QString> secret)> done) const;
    void write(const QString& key, const QString& secret, QObject* context,
               std::function<void(Result)> done) const;
    void remove(const QString& key, QObject* context, std::function<void(Result)> done) const;

private:
    QString service_;
};

} // namespace tarvik
