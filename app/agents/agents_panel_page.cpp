#include "app/agents/agents_panel_page.h"

#include "app/agents/agents_model.h"
#include "app/agents/limit_bar.h"
#include "app/shell/hold_while_shown.h"
#include "app/shell/panel_figure.h"
#include "core/agents/limits/agent_usage_report.h"
#include "core/text/metric_format.h"

#include <QLabel>
#include <QVBoxLayout>

namespace tarvik {

AgentsPanelPage::AgentsPanelPage(AgentsModel& model, QWidget* parent)
    : QWidget(parent), model_(model) {
    auto* layout = new QVBoxLayout(this);
    cards_ = new QVBoxLayout();
    cards_->setSpacing(10);
    layout->addLayout(cards_);
    layout->addStretch(1);
    connect(&model_, &AgentsModel::cardsChanged, this, &AgentsPanelPage::render);
    holdWhileShown(
        this, [&m = model_] { m.acquire(); }, [&m = model_] { m.release(); });
    render();
}

void AgentsPanelPage::render() {
    while (QLayoutItem* item = cards_->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    const QDateTime now = QDateTime::currentDateTimeUtc();
    bool any = false;
    for (const AgentsModel::Card& c : model_.cards()) {
        if (!c.enabled) {
            continue;
        }
        any = true;
        auto* figure = new PanelFigure(title(c.provider), MenuBarStat::Agent, this);
        figure->setObjectName(QStringLiteral("agent_") + rawValue(c.provider));
        cards_->addWidget(figure);
        if (c.report && !c.report->limits.empty()) {
            const UsageLimit& first = c.report->limits.front();
            const ReportWords words = describe(*c.report, now);
            figure->setFigure(tr("%1 left").arg(MetricFormat::percent(first.remaining())),
                              words.limits.front().title + QStringLiteral(": ") +
                                  words.limits.front().text,
                              level(MenuBarStat::Agent, first.remaining()));
            auto* bar = new LimitBar(this);
            bar->setValues(first.used, first.elapsed(now));
            bar->setAccessibleName(first.title + QStringLiteral(": ") + percentUsed(first.used));
            cards_->addWidget(bar);
        } else if (c.error) {
            figure->setAbsent(c.error->menuText()); // the whole story is on the Agents screen
        } else if (c.report) {
            figure->setAbsent(tr("This plan reports no limits."));
        } else {
            figure->setAbsent(c.loading ? tr("Fetching…") : tr("Not measured yet."));
        }
    }
    if (!any) {
        auto* none = new QLabel(tr("No agent is shown. Choose agents on the Agents screen."), this);
        none->setObjectName(QStringLiteral("noAgents"));
        none->setWordWrap(true);
        cards_->addWidget(none);
    }
}

} // namespace tarvik
