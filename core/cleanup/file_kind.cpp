#include "core/cleanup/file_kind.h"

#include <algorithm>
#include <cctype>
#include <string>

namespace tarvik {
namespace {

struct KindInfo {
    FileKind kind;
    const char* raw;
    const char* title;
    const char* symbol;
    std::initializer_list<std::string_view> extensions;
};

const std::array<KindInfo, 8>& table() {
    static const std::array<KindInfo, 8> kTable = {{
        {FileKind::Archive,
         "archive",
         "Archives",
         "doc.zipper",
         {"zip", "rar", "tar", "gz", "tgz", "bz2", "xz", "7z", "zst"}},
        {FileKind::DiskImage,
         "diskImage",
         "Disk Images & Installers",
         "opticaldiscdrive",
         {"dmg", "iso", "pkg", "mpkg", "xip", "img", "sparseimage", "sparsebundle"}},
        {FileKind::Video,
         "video",
         "Movies",
         "film",
         {"mov", "mp4", "m4v", "mkv", "avi", "webm", "wmv", "flv", "mts"}},
        {FileKind::Audio,
         "audio",
         "Audio",
         "waveform",
         {"mp3", "wav", "aiff", "aif", "flac", "m4a", "aac", "ogg", "logicx"}},
        {FileKind::Image,
         "image",
         "Pictures",
         "photo",
         {"jpg", "jpeg", "png", "heic", "tiff", "tif", "raw", "cr2", "nef", "arw", "psd", "gif"}},
        {FileKind::Document,
         "document",
         "Documents",
         "doc.text",
         {"pdf", "doc", "docx", "ppt", "pptx", "xls", "xlsx", "key", "pages", "numbers", "csv",
          "sql", "json", "log"}},
        {FileKind::VirtualMachine,
         "virtualMachine",
         "Virtual Machines",
         "server.rack",
         {"vmdk", "vdi", "qcow2", "utm", "pvm", "hdd", "vhd", "vhdx"}},
        {FileKind::Other, "other", "Other", "doc", {}},
    }};
    return kTable;
}

const KindInfo& info(FileKind kind) {
    return table()[static_cast<std::size_t>(kind)];
}

} // namespace

QString rawValue(FileKind kind) {
    return QString::fromLatin1(info(kind).raw);
}

QString title(FileKind kind) {
    return QString::fromLatin1(info(kind).title);
}

QString symbol(FileKind kind) {
    return QString::fromLatin1(info(kind).symbol);
}

FileKind fileKind(std::string_view fileName) {
    if (fileName == "Docker.raw") {
        return FileKind::VirtualMachine;
    }
    const auto dot = fileName.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || dot + 1 == fileName.size()) {
        return FileKind::Other; // no extension (a leading dot names a hidden file, not a type)
    }
    std::string ext(fileName.substr(dot + 1));
    std::transform(ext.begin(), ext.end(), ext.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const KindInfo& k : table()) {
        if (std::find(k.extensions.begin(), k.extensions.end(), ext) != k.extensions.end()) {
            return k.kind;
        }
    }
    return FileKind::Other;
}

} // namespace tarvik
