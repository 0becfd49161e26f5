#include "app/awake/keep_awake_panel_page.h"

#include "app/awake/keep_awake_menu.h"
#include "app/shell/panel_figure.h"
#include "app/shell/theme.h"
#include "core/awake/keep_awake_controller.h"
#include "core/awake/keep_awake_texts.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarvik {

KeepAwakePanelPage::KeepAwakePanelPage(KeepAwakeController& controller, QWidget* parent)
    : QWidget(parent), controller_(controller) {
    auto* layout = new QVBoxLayout(this);
    state_ = new PanelFigure(tr("Keep Awake"), std::nullopt, this);
    state_->setObjectName(QStringLiteral("awakeState"));
    layout->addWidget(state_);
    error_ = new QLabel(this);
    error_->setObjectName(QStringLiteral("awakeError"));
    error_->setTextFormat(Qt::PlainText);
    error_->setWordWrap(true);
    setTextMeaning(error_, Meaning::Critical);
    layout->addWidget(error_);

    auto* buttons = new QHBoxLayout();
    auto* start = new QPushButton(tr("Keep Awake For"), this);
    start->setObjectName(QStringLiteral("awakeStart"));
    auto* sessions = new QMenu(start);
    addManualSessions(sessions, controller_);
    start->setMenu(sessions);
    off_ = new QPushButton(tr("Turn Off"), this);
    off_->setObjectName(QStringLiteral("awakeOff"));
    connect(off_, &QPushButton::clicked, &controller_, &KeepAwakeController::turnOff);
    buttons->addWidget(start);
    buttons->addWidget(off_);
    buttons->addStretch(1);
    layout->addLayout(buttons);
    layout->addStretch(1);

    connect(&controller_, &KeepAwakeController::changed, this, &KeepAwakePanelPage::refresh);
    refresh();
}

void KeepAwakePanelPage::refresh() {
    const KeepAwakeState state = controller_.state();
    state_->setFigure(state.isActive ? tr("On") : tr("Off"),
                      state.isActive ? awake_text::status(state, controller_.now()) +
                                           QLatin1Char('\n') + awake_text::reason(state)
                                     : awake_text::followsOwnSettings());
    error_->setText(controller_.error());
    error_->setVisible(!controller_.error().isEmpty());
    off_->setVisible(state.isActive);
}

} // namespace tarvik
