#include "app/shell/tray_item.h"

#include "app/shell/app_models.h"
#include "app/shell/section_icons.h"
#include "core/platform/qt_text.h"

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
        auto* action = go->addAction(sectionIcon(s.section), toQString(s.title));
        connect(action, &QAction::triggered, this, [this, section = s.section] {
            models_.navigator().select(section);
            emit openWindowRequested();
        });
    }
    menu_->addSeparator();
    auto* quit = menu_->addAction(tr("Quit Tarvik"));
    connect(quit, &QAction::triggered, this, &TrayItem::quitRequested);

    icon_ = new QSystemTrayIcon(appIcon(), this);
    icon_->setToolTip(QStringLiteral("Tarvik"));
    icon_->setContextMenu(menu_);
    connect(icon_, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason r) {
        if (r == QSystemTrayIcon::Trigger || r == QSystemTrayIcon::DoubleClick) {
            emit openWindowRequested();
        }
    });
    connect(&models_.preferences(), &Preferences::changed, this, [this](const QString& key) {
        if (key == QLatin1String(pref::kShowMenuBarExtra.data())) {
            applyPreferences();
        }
    });
    applyPreferences();
}

TrayItem::~TrayItem() {
    delete menu_;
}

bool TrayItem::trayAvailable() {
    return QSystemTrayIcon::isSystemTrayAvailable();
}

bool TrayItem::isShown() const {
    return icon_->isVisible() && trayAvailable();
}

void TrayItem::applyPreferences() {
    const bool wanted = models_.preferences().showMenuBarExtra();
    if (icon_->isVisible() != wanted) {
        icon_->setVisible(wanted);
        emit shownChanged(isShown());
    }
}

} // namespace tarvik
