#include "app/shell/main_window.h"

#include "app/agents/agents_screen.h"
#include "app/awake/keep_awake_screen.h"
#include "app/dock/dock_folders_screen.h"
#include "app/files/duplicates_model.h"
#include "app/files/duplicates_screen.h"
#include "app/files/large_files_model.h"
#include "app/files/large_files_screen.h"
#include "app/homebrew/brew_screen.h"
#include "app/junk/junk_screen.h"
#include "app/monitor/monitor_screen.h"
#include "app/overview/overview_screen.h"
#include "app/settings/settings_screen.h"
#include "app/shell/app_models.h"
#include "app/shell/navigation_commands.h"
#include "app/shell/section_icons.h"
#include "app/shell/sidebar_delegate.h"
#include "app/shell/sidebar_model.h"
#include "app/shell/theme.h"
#include "app/shell/unavailable_screen.h"
#include "app/speedtest/speed_test_screen.h"
#include "core/sys/xdg_paths.h"
#include "core/text/qt_text.h"

#include <QApplication>
#include <QCloseEvent>
#include <QListView>
#include <QMenuBar>
#include <QScrollArea>
#include <QSplitter>
#include <QStackedWidget>
#include <utility>

namespace tarvik {

MainWindow::MainWindow(AppModels& models, QWidget* parent) : QMainWindow(parent), models_(models) {
    setObjectName(QStringLiteral("main"));
    setWindowTitle(QStringLiteral("Tarvik"));
    setWindowIcon(appIcon());
    resize(980, 640);

    sidebarModel_ = new SidebarModel(this);
    sidebar_ = new QListView(this);
    sidebar_->setObjectName(QStringLiteral("sidebar"));
    sidebar_->setAccessibleName(tr("Sections"));
    sidebar_->setModel(sidebarModel_);
    sidebar_->setSelectionMode(QAbstractItemView::SingleSelection);
    sidebar_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    sidebar_->setItemDelegate(new SidebarDelegate(sidebar_));
    sidebar_->setMouseTracking(true); // the hover highlight
    sidebar_->setMinimumWidth(200);
    sidebar_->setFrameShape(QFrame::NoFrame);
    sidebar_->setBackgroundRole(QPalette::Window);
    sidebar_->viewport()->setBackgroundRole(QPalette::Window);
    sidebar_->setContentsMargins(0, space::s, 0, space::s);
    sidebar_->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    sidebar_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff); // titles elide instead

    stack_ = new QStackedWidget(this);
    stack_->setObjectName(QStringLiteral("detail"));

    auto* splitter = new QSplitter(this);
    splitter->setHandleWidth(1);
    splitter->addWidget(sidebar_);
    splitter->addWidget(stack_);
    splitter->setStretchFactor(1, 1);
    splitter->setCollapsible(0, false);
    splitter->setSizes({210, 770});
    setCentralWidget(splitter);

    auto* fileMenu = menuBar()->addMenu(tr("&File"));
    auto* quit = fileMenu->addAction(tr("&Quit Tarvik"));
    quit->setObjectName(QStringLiteral("quit"));
    // Ctrl+Q on every desktop: the platform's Quit key is empty on some themes.
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    connect(quit, &QAction::triggered, this, &MainWindow::quitRequested);
    menuBar()->addMenu(NavigationCommands::createMenu(models_.navigator(), this));

    Navigator& nav = models_.navigator();
    connect(sidebar_->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this, &nav](const QModelIndex& current) {
                if (auto section = sidebarModel_->sectionAt(current)) {
                    nav.select(*section);
                }
            });
    connect(&nav, &Navigator::selectionChanged, this, &MainWindow::showSection);
    auto badge = [this] {
        const bool show = models_.preferences().value(pref::kHomebrewShowBadge).toBool();
        sidebarModel_->setBadge(AppSection::Homebrew,
                                show ? models_.brewUpdates().outdatedCount() : 0);
    };
    connect(&models_.brewUpdates(), &BrewUpdateChecker::outdatedCountChanged, this, badge);
    connect(&models_.preferences(), &Preferences::changed, this, badge);
    showSection(nav.selection());
}

QWidget* MainWindow::currentScreen() const {
    return stack_->currentWidget();
}

void MainWindow::setPolicyWhenClosed(std::function<ActivationPolicy()> policy) {
    policyWhenClosed_ = std::move(policy);
}

void MainWindow::present() {
    if (isMinimized()) {
        showNormal();
    } else {
        show();
    }
    raise();
    activateWindow();
}

void MainWindow::openLink(const FolderLink& link) {
    models_.navigator().select(AppSection::DockFolders);
    if (dockFolders_ != nullptr) { // built by showing its section
        dockFolders_->openLink(link);
    }
}

void MainWindow::closeEvent(QCloseEvent* event) {
    // Closing never quits: Tarvik stays in the tray, or in the taskbar when it keeps an entry.
    event->ignore();
    const auto policy = policyWhenClosed_ ? policyWhenClosed_() : ActivationPolicy::Regular;
    if (policy == ActivationPolicy::Regular) {
        showMinimized();
    } else {
        hide();
        emit openChanged(false);
    }
}

void MainWindow::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    emit openChanged(true);
}

void MainWindow::showSection(AppSection section) {
    auto it = screens_.find(section);
    if (it == screens_.end()) {
        // A screen is built the first time it is shown, so start-up stays quick.
        it = screens_.emplace(section, createScreen(section)).first;
        stack_->addWidget(it->second);
    }
    stack_->setCurrentWidget(it->second);
    const QModelIndex index = sidebarModel_->indexOf(section);
    if (sidebar_->currentIndex() != index) {
        sidebar_->setCurrentIndex(index);
    }
}

QWidget* MainWindow::createScreen(AppSection section) {
    QWidget* screen = nullptr;
    switch (section) {
    case AppSection::Overview:
        screen = new OverviewScreen(models_.overview(), models_.navigator(), models_.monitor(),
                                    &models_.agents(), &models_.keepAwake(), &models_.dockFolders(),
                                    this);
        break;
    case AppSection::SystemJunk:
        screen = new JunkScreen(models_.junk(), xdg::home(), this);
        break;
    case AppSection::LargeFiles: {
        // The model lives with its screen, which the window keeps once built.
        auto* files = new LargeFilesModel(models_.preferences(), CleanupModel::forCurrentUser());
        screen = new LargeFilesScreen(*files, this);
        files->setParent(screen);
        break;
    }
    case AppSection::Duplicates: {
        auto* dupes = new DuplicatesModel(models_.preferences(), CleanupModel::forCurrentUser());
        screen = new DuplicatesScreen(*dupes, this);
        dupes->setParent(screen);
        break;
    }
    case AppSection::Homebrew:
        screen = new BrewScreen(models_.brew(), this);
        break;
    case AppSection::SpeedTest:
        screen = new SpeedTestScreen(models_.speedTest(), this);
        break;
    case AppSection::Agents:
        screen = new AgentsScreen(models_.agents(), this);
        break;
    case AppSection::Monitor:
        screen = new MonitorScreen(models_.monitor(), models_.navigator(), this);
        break;
    case AppSection::KeepAwake:
        screen = new KeepAwakeScreen(models_.keepAwake(), models_.keyboardLock(), this);
        break;
    case AppSection::DockFolders:
        dockFolders_ = new DockFoldersScreen(models_.dockFolders(), models_.preferences(), this);
        screen = dockFolders_;
        break;
    case AppSection::Settings:
        screen = new SettingsScreen(models_.preferences(), models_.loginItem(), this);
        break;
    default:
        screen = new UnavailableScreen(section, this);
        break;
    }
    screen->setObjectName(toQString(info(section).rawKey));
    auto* scroll = new QScrollArea(this);
    scroll->setWidget(screen);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setObjectName(screen->objectName() + QStringLiteral("Scroll"));
    return scroll;
}

} // namespace tarvik
