#include "app/monitor/process_panel.h"

#include "app/monitor/process_table_model.h"
#include "app/monitor/system_monitor_model.h"
#include "app/shell/hold_while_shown.h"
#include "core/text/counts.h"
#include "core/text/metric_format.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>
#include <unistd.h>

namespace tarvik {

ProcessPanel::ProcessPanel(SystemMonitorModel& monitor, QWidget* parent)
    : QWidget(parent), monitor_(monitor), table_(new ProcessTableModel(this)),
      quitJob_(
          this, {},
          [this](QuitOutcome outcome) {
              message_->setText(outcome == QuitOutcome::Ended
                                    ? tr("%1 has quit.").arg(quittingName_)
                                    : quitMessage(quittingName_, QuitRefusal::None, outcome));
              selectionChanged();
          },
          JobThread::Own) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);

    auto* top = new QHBoxLayout();
    filter_ = new QLineEdit(this);
    filter_->setObjectName(QStringLiteral("processFilter"));
    filter_->setPlaceholderText(tr("Filter by name or process ID"));
    filter_->setClearButtonEnabled(true);
    filter_->setAccessibleName(tr("Filter processes"));
    sort_ = new QComboBox(this);
    sort_->setObjectName(QStringLiteral("processSort"));
    sort_->setAccessibleName(tr("Sort processes by"));
    for (ProcessSort s :
         {ProcessSort::CPU, ProcessSort::Memory, ProcessSort::Name, ProcessSort::PID}) {
        sort_->addItem(tr("Sort by %1").arg(title(s)), static_cast<int>(s));
    }
    total_ = new QLabel(this);
    total_->setObjectName(QStringLiteral("processTotal"));
    top->addWidget(filter_, 1);
    top->addWidget(sort_);
    top->addWidget(total_);
    layout->addLayout(top);

    view_ = new QTableView(this);
    view_->setObjectName(QStringLiteral("processTable"));
    view_->setModel(table_);
    view_->setSelectionBehavior(QAbstractItemView::SelectRows);
    view_->setSelectionMode(QAbstractItemView::SingleSelection);
    view_->verticalHeader()->hide();
    view_->verticalHeader()->setDefaultSectionSize(view_->fontMetrics().height() + 8);
    view_->horizontalHeader()->setSectionResizeMode(ProcessTableModel::Name, QHeaderView::Stretch);
    view_->setMinimumHeight(260);
    view_->setAccessibleName(tr("Processes"));
    view_->setAlternatingRowColors(true);
    view_->setShowGrid(false);
    layout->addWidget(view_, 1);

    auto* bottom = new QHBoxLayout();
    message_ = new QLabel(this);
    message_->setObjectName(QStringLiteral("processMessage"));
    message_->setWordWrap(true);
    quit_ = new QPushButton(tr("&Quit…"), this);
    quit_->setObjectName(QStringLiteral("quitProcess"));
    forceQuit_ = new QPushButton(tr("&Force Quit…"), this);
    forceQuit_->setObjectName(QStringLiteral("forceQuitProcess"));
    bottom->addWidget(message_, 1);
    bottom->addWidget(quit_);
    bottom->addWidget(forceQuit_);
    layout->addLayout(bottom);

    confirm_ = [this](const QString& question, const QString& detail) {
        QMessageBox box(QMessageBox::Warning, tr("Quit Process"), question, QMessageBox::Cancel,
                        this);
        box.setInformativeText(detail);
        auto* go = box.addButton(tr("Quit"), QMessageBox::DestructiveRole);
        box.setDefaultButton(QMessageBox::Cancel);
        box.exec();
        return box.clickedButton() == go;
    };

    connect(filter_, &QLineEdit::textChanged, this,
            [this](const QString& text) { table_->setFilter(text); });
    connect(sort_, &QComboBox::currentIndexChanged, this, [this] {
        monitor_.setProcessSort(static_cast<ProcessSort>(sort_->currentData().toInt()));
    });
    connect(&monitor_, &SystemMonitorModel::processSortChanged, this, [this](ProcessSort s) {
        sort_->setCurrentIndex(sort_->findData(static_cast<int>(s)));
        table_->setSort(s);
    });
    connect(view_->horizontalHeader(), &QHeaderView::sectionClicked, this, [this](int column) {
        switch (column) {
        case ProcessTableModel::Name:
            monitor_.setProcessSort(ProcessSort::Name);
            break;
        case ProcessTableModel::PID:
            monitor_.setProcessSort(ProcessSort::PID);
            break;
        case ProcessTableModel::CPU:
            monitor_.setProcessSort(ProcessSort::CPU);
            break;
        case ProcessTableModel::Memory:
            monitor_.setProcessSort(ProcessSort::Memory);
            break;
        default:
            break;
        }
    });
    connect(&monitor_, &SystemMonitorModel::processesChanged, this, &ProcessPanel::refresh);
    connect(view_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &ProcessPanel::selectionChanged);
    connect(quit_, &QPushButton::clicked, this, [this] { quitSelected(false); });
    connect(forceQuit_, &QPushButton::clicked, this, [this] { quitSelected(true); });

    sort_->setCurrentIndex(sort_->findData(static_cast<int>(monitor_.processSort())));
    table_->setSort(monitor_.processSort());
    // The table is sampled only while it can be seen.
    holdWhileShown(
        this, [&m = monitor_] { m.acquireProcesses(); }, [&m = monitor_] { m.releaseProcesses(); });
    refresh();
}

const ProcessUsage* ProcessPanel::selected() const {
    const auto rows = view_->selectionModel()->selectedRows();
    return rows.isEmpty() ? nullptr : table_->processAt(rows.first().row());
}

bool ProcessPanel::select(std::int32_t pid) {
    for (int row = 0; row < table_->listedCount(); ++row) {
        if (table_->processAt(row)->pid == pid) {
            view_->selectRow(row);
            return true;
        }
    }
    return false;
}

QString ProcessPanel::message() const {
    return message_->text();
}

void ProcessPanel::refresh() {
    // The selection follows its process (pid and start time) through the new list.
    std::optional<std::pair<std::int32_t, std::uint64_t>> keep;
    if (const ProcessUsage* p = selected()) {
        keep.emplace(p->pid, p->startTime);
    }
    table_->setProcesses(monitor_.processes());
    if (keep) {
        const int row = table_->rowOf(keep->first, keep->second);
        if (row >= 0) {
            view_->selectRow(row);
        }
    }
    total_->setText(
        table_->listedCount() == 0
            ? QString()
            : tr("%1 · %2 in memory")
                  .arg(countOf(table_->listedCount(), u"process", u"processes"),
                       MetricFormat::bytes(static_cast<std::int64_t>(table_->listedMemory()))));
    selectionChanged();
}

void ProcessPanel::selectionChanged() {
    const ProcessUsage* p = selected();
    const QuitRefusal refusal =
        p ? ProcessGuard::refusal(*p, getpid(), geteuid()) : QuitRefusal::None;
    const bool can = p != nullptr && refusal == QuitRefusal::None && !quitJob_.isRunning();
    quit_->setEnabled(can);
    forceQuit_->setEnabled(can);
    if (p != nullptr && refusal != QuitRefusal::None) {
        message_->setText(quitMessage(processLabel(table_->displayName(*p), p->pid), refusal,
                                      QuitOutcome::Refused));
    } else if (p != nullptr && message_->text().contains(QStringLiteral("can't be quit"))) {
        message_->clear();
    }
}

void ProcessPanel::quitSelected(bool force) {
    const ProcessUsage* p = selected();
    if (p == nullptr || quitJob_.isRunning()) {
        return;
    }
    const QString name = processLabel(table_->displayName(*p), p->pid);
    const QuitRefusal refusal = ProcessGuard::refusal(*p, getpid(), geteuid());
    if (refusal != QuitRefusal::None) {
        message_->setText(quitMessage(name, refusal, QuitOutcome::Refused));
        return;
    }
    const QString question = force ? tr("Force %1 to quit?").arg(name) : tr("Quit %1?").arg(name);
    const QString detail = force ? tr("It ends at once; anything it hasn't saved is lost.")
                                 : tr("It is asked to close; unsaved work may be lost.");
    if (!confirm_(question, detail)) {
        return;
    }
    quittingName_ = name;
    message_->setText(force ? tr("Forcing %1 to quit…").arg(name) : tr("Quitting %1…").arg(name));
    quit_->setEnabled(false);
    forceQuit_->setEnabled(false);
    const ProcessUsage target = *p;
    quitJob_.start([target, force](JobContext<double>&) {
        return ProcessControl::quit(target, force, force ? 1000 : 3000);
    });
}

} // namespace tarvik
