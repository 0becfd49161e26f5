#pragma once

#include <QString>
#include <array>
#include <string_view>

namespace tarvik {

// What a file is, by its extension, for grouping large files.
enum class FileKind { Archive, DiskImage, Video, Audio, Image, Document, VirtualMachine, Other };

inline constexpr std::array<FileKind, 8> kAllFileKinds = {
    FileKind::Archive, FileKind::DiskImage, FileKind::Video,          FileKind::Audio,
    FileKind::Image,   FileKind::Document,  FileKind::VirtualMachine, FileKind::Other};

QString rawValue(FileKind kind); // "archive", "diskImage", …
QString title(FileKind kind);    // "Archives", "Disk Images & Installers", …
QString symbol(FileKind kind);
// The kind of a file by its name: "Docker.raw" is a virtual machine; otherwise the lower-cased
// extension decides, and anything unknown is Other.
FileKind fileKind(std::string_view fileName);

} // namespace tarvik
