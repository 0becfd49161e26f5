// Naming a process after the application it belongs to.
#include "core/monitor/process_naming.h"
#include "core/monitor/process_tracker.h"
#include "tests/support/fixture_tree.h"

#include <gtest/gtest.h>

using namespace tarvik;

namespace {

ProcessUsage process(std::int32_t pid, std::optional<std::string> path) {
    ProcessUsage p;
    p.pid = pid;
    p.name = "proc";
    p.path = std::move(path);
    return p;
}

} // namespace

TEST(ProcessNaming, TheEnclosingBundleNamesTheProcess) {
    EXPECT_EQ(ProcessNaming::appBundlePath("/Applications/Safari.app/Contents/MacOS/Safari"),
              "/Applications/Safari.app");
    // The nearest bundle wins: a helper inside an app inside an app.
    EXPECT_EQ(ProcessNaming::appBundlePath("/A/Outer.app/Contents/Helper.app/Contents/MacOS/h"),
              "/A/Outer.app/Contents/Helper.app");
    EXPECT_FALSE(ProcessNaming::appBundlePath("/usr/bin/vim"));
    EXPECT_FALSE(ProcessNaming::appBundlePath("/opt/tool.app"));   // the file itself is no bundle
    EXPECT_FALSE(ProcessNaming::appBundlePath("/opt/.app/bin/x")); // ".app" alone names nothing
    EXPECT_EQ(ProcessNaming::displayName(std::string("/A/Outer.app/Contents/MacOS/o"), "o"),
              "Outer");
    EXPECT_EQ(ProcessNaming::displayName(std::nullopt, "kworker/0:1"), "kworker/0:1");
}

TEST(DesktopApplications, EntriesAreReadAsTheSpecificationOfTheFormat) {
    const auto e = DesktopApplications::parseEntry(
        "[Desktop Entry]\nType=Application\nName=Text Editor\nName[de]=Texteditor\n"
        "Icon=org.gnome.TextEditor\nExec=env GTK_THEME=x \"/opt/my editor/bin/te\" %U\n"
        "[Desktop Action new-window]\nName=New Window\nExec=other\n",
        "org.gnome.TextEditor.desktop");
    ASSERT_TRUE(e);
    EXPECT_EQ(e->app.name, "Text Editor");
    EXPECT_EQ(e->app.icon, "org.gnome.TextEditor");
    EXPECT_EQ(e->exec, "/opt/my editor/bin/te");
    // Links, hidden entries and entries without a name are no applications.
    EXPECT_FALSE(DesktopApplications::parseEntry("[Desktop Entry]\nType=Link\nName=x\n", "a"));
    EXPECT_FALSE(DesktopApplications::parseEntry(
        "[Desktop Entry]\nType=Application\nName=x\nHidden=true\n", "b"));
    const auto tryExec = DesktopApplications::parseEntry(
        "[Desktop Entry]\nType=Application\nName=Vim\nTryExec=vim\nExec=vim %F\n", "vim.desktop");
    EXPECT_EQ(tryExec->exec, "vim");

    EXPECT_EQ(
        DesktopApplications::flatpakId("0::/user.slice/user-1000.slice/user@1000.service/app.slice/"
                                       "app-flatpak-org.gimp.GIMP-2361.scope\n"),
        "org.gimp.GIMP");
    EXPECT_EQ(DesktopApplications::flatpakId("0::/app.slice/app-flatpak-com.x\\x2dy.Z-12.scope"),
              "com.x-y.Z");
    EXPECT_FALSE(DesktopApplications::flatpakId(
        "0::/user.slice/user-1000.slice/user@1000.service/app.slice/"
        "app-gnome-org.gnome.Terminal-4410.scope\n")); // a terminal's children aren't the terminal
    EXPECT_FALSE(DesktopApplications::flatpakId("0::/"));
}

TEST(DesktopApplications, FindsPackagedFlatpakAndAppImageProcesses) {
    test::FixtureTree tree;
    tree.write("user/applications/firefox-esr.desktop",
               "[Desktop Entry]\nType=Application\nName=Firefox ESR\nIcon=firefox-esr\n"
               "Exec=/usr/lib/firefox-esr/firefox-esr %u\n");
    tree.write("system/applications/firefox-esr.desktop", // overridden by the user's copy
               "[Desktop Entry]\nType=Application\nName=Old Firefox\nExec=firefox-esr\n");
    tree.write("system/applications/htop.desktop",
               "[Desktop Entry]\nType=Application\nName=Htop\nExec=htop\nTerminal=true\n");
    tree.write("system/applications/tool.desktop",
               "[Desktop Entry]\nType=Application\nName=Some Script\nExec=python3 /opt/t.py\n");
    tree.write(
        "system/applications/org.gimp.GIMP.desktop",
        "[Desktop Entry]\nType=Application\nName=GNU Image Manipulation Program\n"
        "Icon=org.gimp.GIMP\nExec=/usr/bin/flatpak run org.gimp.GIMP\nX-Flatpak=org.gimp.GIMP\n");
    tree.write("system/applications/appimagekit-editor.desktop",
               "[Desktop Entry]\nType=Application\nName=Editor AppImage\n"
               "Exec=/home/u/Apps/Editor.AppImage %F\n");
    tree.write("proc/10/cgroup", "0::/app.slice/app-flatpak-org.gimp.GIMP-7.scope\n");
    tree.write("proc/11/cgroup", "0::/user.slice\n");
    tree.write("proc/11/environ",
               std::string("HOME=/home/u\0APPIMAGE=/home/u/Apps/Editor.AppImage\0", 51));
    const auto apps = DesktopApplications::load({tree.root() / "user/applications",
                                                 tree.root() / "system/applications",
                                                 tree.root() / "missing/applications"});
    EXPECT_EQ(apps.size(), 5u);

    const auto* firefox = apps.find(process(20, "/usr/lib/firefox-esr/firefox-esr"), tree.root());
    ASSERT_NE(firefox, nullptr);
    EXPECT_EQ(firefox->name, "Firefox ESR");
    EXPECT_EQ(apps.find(process(21, "/usr/bin/htop"), tree.root())->name, "Htop");
    // A script's interpreter says nothing about which application runs.
    EXPECT_EQ(apps.find(process(22, "/usr/bin/python3"), tree.root()), nullptr);
    EXPECT_EQ(apps.find(process(10, "/app/bin/gimp-2.10"), tree.root())->name,
              "GNU Image Manipulation Program");
    EXPECT_EQ(apps.find(process(11, "/tmp/.mount_EditorAbc/usr/bin/editor"), tree.root())->name,
              "Editor AppImage");
    ProcessUsage kernel = process(23, std::nullopt);
    kernel.kernelThread = true;
    EXPECT_EQ(apps.find(kernel, tree.root()), nullptr);
}
