#include "dock/folder_link.h"

#include <QByteArray>
#include <QUrl>
#include <QUrlQuery>

namespace tarvik {
namespace {

QString uuidText(const QUuid& id) {
    return id.toString(QUuid::WithoutBraces).toUpper();
}

} // namespace

QString FolderLink::open(const QUuid& folder) {
    return QStringLiteral("tarvik://folder/") + uuidText(folder);
}

QString FolderLink::remove(const QUuid& folder, const QString& app) {
    // The query's own separators (& = + ?) are encoded too, so a reference holding them comes
    // back whole.
    const QByteArray encoded = QUrl::toPercentEncoding(app, "!$'()*,;:@/~");
    return open(folder) + QStringLiteral("/remove?app=") + QString::fromLatin1(encoded);
}

bool FolderLink::isMeantAsLink(const QString& argument) {
    return argument.startsWith(QLatin1String(kScheme) + QLatin1Char(':'), Qt::CaseInsensitive);
}

std::optional<FolderLink> FolderLink::parse(const QString& link) {
    const QUrl url(link, QUrl::StrictMode);
    if (!url.isValid() || url.scheme() != QLatin1String(kScheme) ||
        url.host() != QLatin1String("folder") || !url.userInfo().isEmpty() || url.port() != -1 ||
        url.hasFragment()) {
        return std::nullopt;
    }
    const QString path = url.path(QUrl::FullyEncoded);
    FolderLink out;
    QString id;
    if (path.endsWith(QLatin1String("/remove"))) {
        out.kind = Kind::Remove;
        id = path.mid(1, path.size() - 1 - 7);
    } else {
        id = path.mid(1);
    }
    if (!path.startsWith(QLatin1Char('/')) || id.contains(QLatin1Char('/'))) {
        return std::nullopt;
    }
    out.folder = QUuid::fromString(id);
    if (out.folder.isNull()) {
        return std::nullopt;
    }
    if (out.kind == Kind::Open) {
        return url.hasQuery() ? std::nullopt : std::optional<FolderLink>(out);
    }
    const QString query = url.query(QUrl::FullyEncoded);
    if (!query.startsWith(QLatin1String("app=")) || query.contains(QLatin1Char('&'))) {
        return std::nullopt;
    }
    out.app = QUrl::fromPercentEncoding(query.mid(4).toUtf8());
    if (out.app.isEmpty()) {
        return std::nullopt;
    }
    return out;
}

} // namespace tarvik
