#include "app/shell/tray_item.h"

#include "app/awake/keep_awake_menu.h"
#include "app/shell/app_models.h"
#include "app/shell/menu_text.h"
#include "app/shell/navigation_commands.h"
#include "app/shell/section_icons.h"
#include "app/shell/tray_icon_renderer.h"
#include "app/shell/tray_panel.h"
#include "core/text/qt_text.h"

#include <QCursor>
#include <QMenu>
#include <QSystemTrayIcon>

namespace tarvik {

TrayItem::TrayItem(AppModels& models, QObject* parent) : QObject(parent), models_(models) {
    menu_ = new QMenu();
    menu_->setObjectName(QStringLiteral("trayMenu"));
    auto* open = menu_->addAction(appIcon(), tr("Open Tarvik"));
    connect(open, &QAction::triggered, this, &TrayItem::openWindowRequested);
    auto* go = menu_->addMenu(tr("Go To"));
    for (const auto& s : allSections()) {
        auto* action = addSectionAction(go, s.section);
        connect(action, &QAction::triggered, this, [this, section = s.section] {
            models_.navigator().select(section);
            emit openWindowRequested();
        });
    }
    keepAwakeMenu(models_.keepAwake(), models_.keyboardLock(), menu_);
    menu_->addSeparator();
    auto* quit = menu_->addAction(tr("Quit Tarvik"));
    quit->setObjectName(QStringLiteral("quit"));
    connect(quit, &QAction::triggered, this, &TrayItem::quitRequested);

    panel_ = new TrayPanel(models_);
    connect(panel_, &TrayPanel::openSection, this, [this](AppSection section) {
        models_.navigator().select(section);
        emit openWindowRequested();
    });

    icon_ = new QSystemTrayIcon(appIcon(), this);
    icon_->setToolTip(QStringLiteral("Tarvik"));
    icon_->setContextMenu(menu_);
    connect(icon_, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason r) {
        if (r == QSystemTrayIcon::Trigger) {
            openPanel();
        } else if (r == QSystemTrayIcon::DoubleClick) {
            panel_->hide();
            emit openWindowRequested();
        }
    });
    connect(&models_.preferences(), &Preferences::changed, this, [this](const QString& key) {
        for (auto k : {pref::kShowMenuBarExtra, pref::kMenuBarShowsIcon, pref::kMenuBarShowsStats,
                       pref::kMenuBarStats}) {
            if (key == toQString(k)) {
                applyPreferences();
                return;
            }
        }
    });
    connect(&models_.monitor(), &SystemMonitorModel::readingChanged, this, &TrayItem::refreshIcon);
    connect(&models_.agents(), &AgentsModel::cardsChanged, this, &TrayItem::refreshIcon);
    applyPreferences();
}

TrayItem::~TrayItem() {
    if (holdingMonitor_) {
        models_.monitor().release(MonitorClient::MenuBarLabel);
    }
    if (holdingAgents_) {
        models_.agents().release();
    }
    delete panel_;
    delete menu_;
}

bool TrayItem::trayAvailable() {
    return QSystemTrayIcon::isSystemTrayAvailable();
}

bool TrayItem::isShown() const {
    return icon_->isVisible() && trayAvailable();
}

QString TrayItem::toolTip() const {
    return icon_->toolTip();
}

void TrayItem::openPanel() {
    const QRect place = icon_->geometry();
    panel_->popUp(place.isValid() ? QPoint(place.center().x(), place.bottom() + 4)
                                  : QCursor::pos());
}

void TrayItem::applyPreferences() {
    const Preferences& prefs = models_.preferences();
    const bool wanted = prefs.showMenuBarExtra();
    // Readings are sampled only while they can be seen.
    const bool readings = wanted && prefs.menuBarShowsStats() && !prefs.menuBarStats().empty();
    if (readings != holdingMonitor_) {
        holdingMonitor_ = readings;
        if (readings) {
            models_.monitor().acquire(MonitorClient::MenuBarLabel);
        } else {
            models_.monitor().release(MonitorClient::MenuBarLabel);
        }
    }
    // The agent reading keeps the usage fresh while it is shown.
    const auto stats = prefs.menuBarStats();
    const bool agent =
        readings && std::find(stats.begin(), stats.end(), MenuBarStat::Agent) != stats.end();
    if (agent != holdingAgents_) {
        holdingAgents_ = agent;
        if (agent) {
            models_.agents().acquire();
        } else {
            models_.agents().release();
        }
    }
    refreshIcon();
    if (icon_->isVisible() != wanted) {
        icon_->setVisible(wanted);
        emit shownChanged(isShown());
    }
}

void TrayItem::refreshIcon() {
    TrayIconContent content{models_.preferences().menuBarShowsIcon(), {}};
    if (holdingMonitor_) {
        content.readings = models_.monitor().menuBarReadings(models_.preferences().menuBarStats(),
                                                             models_.agents().sessionReading());
    }
    icon_->setIcon(trayIcon(content));
    icon_->setToolTip(trayTooltip(content.readings));
}

} // namespace tarvik
