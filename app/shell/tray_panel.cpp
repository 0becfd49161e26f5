#include "app/shell/tray_panel.h"

#include "app/agents/agents_panel_page.h"
#include "app/awake/keep_awake_panel_page.h"
#include "app/monitor/monitor_panel_page.h"
#include "app/shell/app_models.h"
#include "app/shell/hold_while_shown.h"
#include "app/shell/menu_text.h"
#include "app/shell/section_icons.h"
#include "core/text/qt_text.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QScreen>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

namespace tarvik {
namespace {

// Wide enough for two figures side by side and the five tabs' names, narrow enough to sit
// beside a tray.
constexpr int kPanelWidth = 380;

} // namespace

TrayPanel::TrayPanel(AppModels& models, QWidget* parent) : QWidget(parent, Qt::Popup) {
    setObjectName(QStringLiteral("trayPanel"));
    setWindowTitle(QStringLiteral("Tarvik"));
    setAttribute(Qt::WA_DeleteOnClose, false);
    setFixedWidth(kPanelWidth);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 4, 2, 4);
    tabs_ = new QTabWidget(this);
    tabs_->setObjectName(QStringLiteral("trayTabs"));
    tabs_->setDocumentMode(true);
    tabs_->tabBar()->setFocusPolicy(Qt::StrongFocus);
    tabs_->tabBar()->setExpanding(true);
    // Where a style's tabs are wider, names shorten rather than scroll out of sight.
    tabs_->tabBar()->setUsesScrollButtons(false);
    tabs_->tabBar()->setElideMode(Qt::ElideRight);
    layout->addWidget(tabs_);

    using Kind = MonitorPanelPage::Kind;
    SystemMonitorModel& monitor = models.monitor();
    addPage(new MonitorPanelPage(Kind::Processors, monitor), tr("System"), {AppSection::Monitor});
    addPage(new MonitorPanelPage(Kind::Network, monitor), tr("Network"),
            {AppSection::Monitor, AppSection::SpeedTest});
    addPage(new MonitorPanelPage(Kind::Battery, monitor), tr("Battery"), {AppSection::Monitor});
    addPage(new AgentsPanelPage(models.agents()), tr("Agents"), {AppSection::Agents});
    addPage(new KeepAwakePanelPage(models.keepAwake()), tr("Keep Awake"), {AppSection::KeepAwake});
    holdWhileShown(
        this, [&monitor] { monitor.acquire(MonitorClient::MenuPanel); },
        [&monitor] { monitor.release(MonitorClient::MenuPanel); });
}

void TrayPanel::addPage(QWidget* page, const QString& title,
                        std::initializer_list<AppSection> sections) {
    auto* holder = new QWidget(tabs_);
    auto* v = new QVBoxLayout(holder);
    v->setContentsMargins(10, 10, 10, 6);
    v->addWidget(page, 1);
    auto* buttons = new QHBoxLayout();
    buttons->addStretch(1);
    for (AppSection section : sections) {
        const SectionInfo& s = info(section);
        auto* b = new QPushButton(sectionIcon(section), menuText(toQString(s.title)), holder);
        b->setObjectName(QStringLiteral("open_") + toQString(s.rawKey));
        b->setToolTip(tr("Open %1 in the Tarvik window").arg(toQString(s.title)));
        connect(b, &QPushButton::clicked, this, [this, section] {
            hide();
            emit openSection(section);
        });
        buttons->addWidget(b);
    }
    v->addLayout(buttons);
    const int index = tabs_->addTab(holder, menuText(title));
    tabs_->setTabToolTip(index, title);
}

void TrayPanel::popUp(const QPoint& anchor) {
    adjustSize();
    const QScreen* screen = QGuiApplication::screenAt(anchor);
    const QRect area = screen ? screen->availableGeometry() : QRect(anchor, size());
    QPoint at(anchor.x() - width() / 2, anchor.y());
    if (at.y() + height() > area.bottom()) {
        at.setY(anchor.y() - height()); // a tray at the bottom of the screen
    }
    at.setX(std::clamp(at.x(), area.left(), std::max(area.left(), area.right() - width())));
    at.setY(std::clamp(at.y(), area.top(), std::max(area.top(), area.bottom() - height())));
    move(at);
    show();
    activateWindow();
    tabs_->tabBar()->setFocus(Qt::PopupFocusReason);
}

bool TrayPanel::event(QEvent* event) {
    const bool handled = QWidget::event(event);
    // A figure that needs another line (keeping awake turned on, a longer reason) grows the
    // panel instead of being cut off.
    if (event->type() == QEvent::LayoutRequest && isVisible()) {
        adjustSize();
    }
    return handled;
}

void TrayPanel::keyPressEvent(QKeyEvent* event) {
    // Whichever control has focus, Escape puts the panel away.
    if (event->key() == Qt::Key_Escape) {
        hide();
        return;
    }
    QWidget::keyPressEvent(event);
}

} // namespace tarvik
