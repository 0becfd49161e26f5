#include "core/sys/permission_probe.h"
#include "tests/support/temp_home.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cstdlib>
#include <gtest/gtest.h>

using namespace tarvik;
using tarvik::test::writeFile;

namespace {

PermissionProbe::Environment wayland() {
    return {"wayland", "", "wayland-0", "GNOME"};
}

// Puts a directory holding only the given tools first and alone on PATH while alive.
class ToolPath {
public:
    ToolPath() : saved_(std::getenv("PATH") ? std::getenv("PATH") : "") {
        ::setenv("PATH", dir_.path().toLocal8Bit().constData(), 1);
    }
    ~ToolPath() { ::setenv("PATH", saved_.c_str(), 1); }
    void add(const QString& name, const QByteArray& script) {
        const QString path = dir_.path() + "/" + name;
        writeFile(path, "#!/bin/sh\n" + script);
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

private:
    QTemporaryDir dir_;
    std::string saved_;
};

} // namespace

TEST(AppPermission, FullDiskAccessIsMissingOnlyInASandboxWithoutHome) {
    QTemporaryDir root;
    const PermissionProbe probe(root.path(), wayland());
    EXPECT_EQ(probe.fullDiskAccess(), PermissionStatus::Granted); // not sandboxed

    writeFile(root.path() + "/.flatpak-info",
              "[Application]\nname=org.pellor.tarvik\n\n[Context]\nshared=network;ipc;\n"
              "filesystems=xdg-download;xdg-documents:ro;\n");
    EXPECT_EQ(probe.fullDiskAccess(), PermissionStatus::NotGranted);

    writeFile(root.path() + "/.flatpak-info", "[Context]\nfilesystems=xdg-download;home:ro;\n");
    EXPECT_EQ(probe.fullDiskAccess(), PermissionStatus::Granted);

    // "home" in another group is not a file-system grant.
    writeFile(root.path() + "/.flatpak-info",
              "[Session Bus Policy]\nfilesystems=home\n[Context]\nsockets=x11;\n");
    EXPECT_EQ(probe.fullDiskAccess(), PermissionStatus::NotGranted);

    writeFile(root.path() + "/.flatpak-info", "[Context]\nfilesystems=host;\n");
    EXPECT_EQ(probe.fullDiskAccess(), PermissionStatus::Granted);
}

TEST(AppPermission, InputCanBeGrabbedWithAReadableDeviceOrOnX11) {
    QTemporaryDir root;
    EXPECT_EQ(PermissionProbe(root.path(), wayland()).accessibility(),
              PermissionStatus::NotGranted);
    EXPECT_EQ(PermissionProbe(root.path(), {"x11", ":0", "", "KDE"}).accessibility(),
              PermissionStatus::Granted);
    EXPECT_EQ(PermissionProbe(root.path(), {"", ":0", "", ""}).accessibility(),
              PermissionStatus::Granted);
    EXPECT_EQ(PermissionProbe(root.path(), {"", ":0", "wayland-0", ""}).accessibility(),
              PermissionStatus::NotGranted); // Xwayland clients cannot grab the compositor's input

    writeFile(root.path() + "/dev/input/mice", "");
    EXPECT_EQ(PermissionProbe(root.path(), wayland()).accessibility(),
              PermissionStatus::NotGranted);
    writeFile(root.path() + "/dev/input/event3", "");
    EXPECT_EQ(PermissionProbe(root.path(), wayland()).accessibility(), PermissionStatus::Granted);
}

TEST(AppPermission, MicrophoneIsACaptureSourceNotAMonitorOfTheSpeakers) {
    QTemporaryDir root;
    const PermissionProbe probe(root.path(), wayland());
    {
        ToolPath tools; // no sound tools at all: the platform cannot tell
        EXPECT_EQ(probe.microphone(), PermissionStatus::NotDetermined);
    }
    {
        ToolPath tools;
        tools.add("pactl", "printf '51\\talsa_output.pci-0000_00_1f.3.analog-stereo.monitor\\t"
                           "PipeWire\\ts32le 2ch 48000Hz\\tSUSPENDED\\n'\n");
        EXPECT_EQ(probe.microphone(), PermissionStatus::NotGranted);
    }
    {
        ToolPath tools;
        tools.add("pactl", "printf '51\\tout.monitor\\tPipeWire\\ts32le\\tIDLE\\n"
                           "52\\talsa_input.usb-mic.mono\\tPipeWire\\ts16le\\tIDLE\\n'\n");
        EXPECT_EQ(probe.microphone(), PermissionStatus::Granted);
    }
    {
        ToolPath tools; // pactl failing (no server) falls through to PipeWire's own tool
        tools.add("pactl", "echo 'Connection failure' >&2; exit 1\n");
        tools.add("pw-dump",
                  "echo '[{\"info\":{\"props\":{\"media.class\": \"Audio/Source\"}}}]'\n");
        EXPECT_EQ(probe.microphone(), PermissionStatus::Granted);
    }
}

TEST(AppPermission, SettingsOpenTheDesktopsPanelOrExplainInWords) {
    QTemporaryDir root;
    const PermissionProbe gnome(root.path(), {"wayland", "", "wayland-0", "ubuntu:GNOME"});
    EXPECT_EQ(gnome.settingsAction(AppPermission::Notifications).command,
              (QStringList{"gnome-control-center", "notifications"}));
    const PermissionProbe kde(root.path(), {"wayland", "", "wayland-0", "KDE"});
    EXPECT_EQ(kde.settingsAction(AppPermission::Microphone).command,
              (QStringList{"systemsettings", "kcm_pulseaudio"}));
    const PermissionProbe other(root.path(), {"x11", ":0", "", "XFCE"});
    for (auto p : kAllPermissions) {
        const auto action = other.settingsAction(p);
        EXPECT_TRUE(action.command.isEmpty());
        EXPECT_FALSE(action.explanation.isEmpty()) << rawKey(p);
        ToolPath none;
        EXPECT_EQ(other.openSettings(p), action.explanation);
    }
    // A known panel whose program is missing still tells the user what to do.
    ToolPath none;
    EXPECT_FALSE(gnome.openSettings(AppPermission::Microphone).isEmpty());
}
