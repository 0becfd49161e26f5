#pragma once

#include <QString>
#include <QUuid>
#include <optional>

namespace tarvik {

// The links through which a folder's helper talks to Tarvik:
//   tarvik://folder/<uuid>                  open Tarvik on that folder
//   tarvik://folder/<uuid>/remove?app=<ref> take that app out of the folder
struct FolderLink {
    enum class Kind { Open, Remove };
    Kind kind = Kind::Open;
    QUuid folder;
    QString app; // the app's reference, for Remove

    static constexpr const char* kScheme = "tarvik";

    static QString open(const QUuid& folder);
    static QString remove(const QUuid& folder, const QString& app);
    // Exactly the two shapes above; anything else is not a link.
    static std::optional<FolderLink> parse(const QString& link);
    // Whether a command-line argument is meant as a link (it names the scheme), valid or not.
    static bool isMeantAsLink(const QString& argument);
};

} // namespace tarvik
