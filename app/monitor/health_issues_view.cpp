#include "app/monitor/health_issues_view.h"

#include "app/monitor/system_monitor_model.h"
#include "app/shell/navigator.h"
#include "app/shell/symbol_label.h"
#include "app/shell/theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarvik {
namespace {

Meaning severityMeaning(HealthIssue::Severity s) {
    return s == HealthIssue::Severity::Critical ? Meaning::Critical : Meaning::Watch;
}

} // namespace

HealthIssuesView::HealthIssuesView(QWidget* parent) : QWidget(parent) {
    rows_ = new QVBoxLayout(this);
    rows_->setContentsMargins(0, 0, 0, 0);
    empty_ = new QLabel(tr("Checking…"), this);
    empty_->setObjectName(QStringLiteral("healthEmpty"));
    rows_->addWidget(empty_);
}

void HealthIssuesView::setIssues(const std::optional<std::vector<HealthIssue>>& issues) {
    QStringList ids;
    for (const auto& issue : issues.value_or(std::vector<HealthIssue>{})) {
        ids << issue.id;
    }
    if (issues && ids == shownIds_ && !ids.isEmpty()) {
        // The same issues with fresh figures: update the words, keep the buttons (and focus).
        for (std::size_t i = 0; i < issues->size(); ++i) {
            labels_[i].first->setText((*issues)[i].title);
            labels_[i].second->setText((*issues)[i].detail);
        }
        return;
    }
    while (rows_->count() > 1) {
        QLayoutItem* item = rows_->takeAt(1);
        delete item->widget();
        delete item;
    }
    labels_.clear();
    shownIds_ = ids;
    empty_->setVisible(!issues || issues->empty());
    empty_->setText(issues ? tr("Nothing needs your attention.") : tr("Checking…"));
    setVisible(!hidesWhenClear_ || (issues && !issues->empty()));
    if (!issues) {
        return;
    }
    for (const HealthIssue& issue : *issues) {
        auto* row = new QWidget(this);
        row->setObjectName(QStringLiteral("issue_") + issue.id);
        auto* h = new QHBoxLayout(row);
        h->setContentsMargins(0, space::xs, 0, space::xs);
        h->setSpacing(space::m);
        auto* icon = new SymbolLabel(issue.symbol.toStdString(), 24, false, row);
        icon->setTint(meaningColor(severityMeaning(issue.severity)));
        auto* words = new QVBoxLayout();
        words->setSpacing(2);
        auto* heading = new QLabel(issue.title, row);
        setTextStyle(heading, TextStyle::Heading);
        setTextMeaning(heading, severityMeaning(issue.severity));
        auto* detail = new QLabel(issue.detail, row);
        detail->setWordWrap(true);
        setTextStyle(detail, TextStyle::Secondary);
        words->addWidget(heading);
        words->addWidget(detail);
        h->addWidget(icon, 0, Qt::AlignTop);
        h->addLayout(words, 1);
        if (issue.remedy) {
            auto* button = new QPushButton(title(*issue.remedy), row);
            button->setObjectName(QStringLiteral("remedy_") + issue.id);
            button->setAccessibleName(title(*issue.remedy) + QStringLiteral(": ") + issue.title);
            const HealthIssue::Remedy remedy = *issue.remedy;
            connect(button, &QPushButton::clicked, this,
                    [this, remedy] { emit remedyRequested(remedy); });
            h->addWidget(button, 0, Qt::AlignVCenter);
        }
        labels_.emplace_back(heading, detail);
        rows_->addWidget(row);
    }
}

void applyRemedy(HealthIssue::Remedy remedy, SystemMonitorModel& monitor, Navigator& navigator,
                 QWidget* parent) {
    switch (remedy) {
    case HealthIssue::Remedy::ShowProcessesByMemory:
        monitor.setProcessSort(ProcessSort::Memory);
        navigator.select(AppSection::Monitor);
        break;
    case HealthIssue::Remedy::ShowProcessesByCPU:
        monitor.setProcessSort(ProcessSort::CPU);
        navigator.select(AppSection::Monitor);
        break;
    case HealthIssue::Remedy::OpenSystemJunk:
        navigator.select(AppSection::SystemJunk);
        break;
    case HealthIssue::Remedy::ExplainRestart:
        auto* box = new QMessageBox(QMessageBox::Information, QObject::tr("Restart"),
                                    restartAdvice(), QMessageBox::Ok, parent);
        box->setObjectName(QStringLiteral("restartAdvice"));
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->open();
        break;
    }
}

} // namespace tarvik
