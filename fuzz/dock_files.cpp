// The dock's own files, which anything may have damaged: the folder list, one folder's file that
// its helper reads, a backup of the dock's list, and the links helpers send.
#include "dock/dock_apps_codec.h"
#include "dock/dock_preferences.h"
#include "dock/folder_file.h"
#include "dock/folder_link.h"
#include "fuzz/fuzz_input.h"

using namespace tarvik;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes = fuzz::bytes(data, size);
    for (const AppFolder& folder : decodeFolders(bytes)) {
        encodeFolder(folder);
        folder.sanitizedName();
    }
    const fuzz::InputFile file(data, size);
    const QString path = QString::fromStdString(file.path().string());
    if (const auto read = readFolderFile(path); read.folder) {
        bundleNames({*read.folder, *read.folder});
    }
    if (const auto backup = DockPreferences::readBackup(path)) {
        DockAppsCodec::signature(backup->tiles);
        DockAppsCodec::sync(backup->tiles, {{backup->tiles.value(0)}}, backup->tiles.mid(1, 1));
    }
    if (const auto link = FolderLink::parse(QString::fromUtf8(bytes))) {
        FolderLink::parse(link->kind == FolderLink::Kind::Open
                              ? FolderLink::open(link->folder)
                              : FolderLink::remove(link->folder, link->app));
    }
    return 0;
}
