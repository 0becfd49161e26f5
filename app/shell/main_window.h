#pragma once

#include "core/shell/app_section.h"
#include "core/shell/startup.h"
#include "dock/folder_link.h"

#include <QMainWindow>
#include <functional>
#include <map>

class QListView;
class QStackedWidget;

namespace tarvik {

class AppModels;
class DockFoldersScreen;
class SidebarModel;

// The window: a sidebar of sections and the selected section's screen.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(AppModels& models, QWidget* parent = nullptr);

    QListView* sidebar() const { return sidebar_; }
    SidebarModel* sidebarModel() const { return sidebarModel_; }
    QWidget* currentScreen() const;

    // Asked when the window closes: "Regular" keeps a taskbar entry (the window is minimised),
    // "Accessory" leaves only the tray item (the window is hidden).
    void setPolicyWhenClosed(std::function<ActivationPolicy()> policy);
    // Brings the window back from the tray or the taskbar.
    void present();
    // Shows Dock Folders for a link from a folder's helper and carries it out.
    void openLink(const FolderLink& link);

signals:
    void openChanged(bool open);
    void quitRequested();

protected:
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void showSection(AppSection section);
    QWidget* createScreen(AppSection section);

    AppModels& models_;
    QListView* sidebar_ = nullptr;
    SidebarModel* sidebarModel_ = nullptr;
    QStackedWidget* stack_ = nullptr;
    std::map<AppSection, QWidget*> screens_;
    DockFoldersScreen* dockFolders_ = nullptr; // once built
    std::function<ActivationPolicy()> policyWhenClosed_;
};

} // namespace tarvik
