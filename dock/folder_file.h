#pragma once

#include "dock/app_folder.h"

#include <QString>
#include <optional>

namespace tarvik {

// What a folder's file held: the folder, or why there is none in the user's words.
struct FolderFileRead {
    std::optional<AppFolder> folder;
    QString problem;
};

FolderFileRead readFolderFile(const QString& path);

} // namespace tarvik
