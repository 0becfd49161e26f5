#include "app/monitor/process_table_model.h"

#include "core/text/metric_format.h"

#include <QFileInfo>
#include <pwd.h>
#include <set>
#include <unistd.h>

namespace tarvik {

ProcessTableModel::ProcessTableModel(QObject* parent)
    : QAbstractTableModel(parent), folders_(DesktopApplications::defaultFolders()) {}

ProcessTableModel::~ProcessTableModel() = default;

void ProcessTableModel::setApplicationFolders(std::vector<std::filesystem::path> folders) {
    folders_ = std::move(folders);
    apps_.reset();
    names_.clear();
}

void ProcessTableModel::setProcesses(std::vector<ProcessUsage> processes) {
    all_ = std::move(processes);
    // Names of processes that ended are forgotten; the rest are looked up once per process.
    std::set<std::pair<std::int32_t, std::uint64_t>> alive;
    for (const auto& p : all_) {
        alive.emplace(p.pid, p.startTime);
    }
    std::erase_if(names_, [&alive](const auto& entry) { return alive.count(entry.first) == 0; });
    rebuild();
}

void ProcessTableModel::setSort(ProcessSort sort) {
    if (sort != sort_) {
        sort_ = sort;
        rebuild();
    }
}

void ProcessTableModel::setFilter(const QString& text) {
    if (text.trimmed() != filter_) {
        filter_ = text.trimmed();
        rebuild();
    }
}

void ProcessTableModel::rebuild() {
    beginResetModel();
    rows_.clear();
    for (const auto& p : all_) {
        if (filter_.isEmpty() || displayName(p).contains(filter_, Qt::CaseInsensitive) ||
            QString::fromStdString(p.name).contains(filter_, Qt::CaseInsensitive) ||
            QString::number(p.pid) == filter_) {
            rows_.push_back(p);
        }
    }
    sortProcesses(rows_, sort_);
    endResetModel();
}

const ProcessUsage* ProcessTableModel::processAt(int row) const {
    return row >= 0 && row < listedCount() ? &rows_[static_cast<std::size_t>(row)] : nullptr;
}

int ProcessTableModel::rowOf(std::int32_t pid, std::uint64_t startTime) const {
    for (int i = 0; i < listedCount(); ++i) {
        if (rows_[static_cast<std::size_t>(i)].pid == pid &&
            rows_[static_cast<std::size_t>(i)].startTime == startTime) {
            return i;
        }
    }
    return -1;
}

const ProcessTableModel::Naming& ProcessTableModel::naming(const ProcessUsage& process) const {
    const auto key = std::make_pair(process.pid, process.startTime);
    if (const auto it = names_.find(key); it != names_.end()) {
        return it->second;
    }
    if (!apps_) {
        apps_ = std::make_unique<DesktopApplications>(DesktopApplications::load(folders_));
    }
    Naming n;
    n.name = QString::fromStdString(ProcessNaming::displayName(process.path, process.name));
    if (const DesktopApplication* app = apps_->find(process)) {
        n.name = app->name;
        n.icon = QFileInfo(app->icon).isAbsolute() ? QIcon(app->icon) : QIcon::fromTheme(app->icon);
    }
    return names_.emplace(key, std::move(n)).first->second;
}

QString ProcessTableModel::displayName(const ProcessUsage& process) const {
    return naming(process).name;
}

QString ProcessTableModel::userName(std::uint32_t uid) const {
    if (const auto it = users_.find(uid); it != users_.end()) {
        return it->second;
    }
    passwd entry{};
    passwd* found = nullptr;
    char buffer[4096];
    QString name = QString::number(uid);
    if (getpwuid_r(uid, &entry, buffer, sizeof buffer, &found) == 0 && found != nullptr) {
        name = QString::fromLocal8Bit(found->pw_name);
    }
    return users_.emplace(uid, name).first->second;
}

int ProcessTableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : listedCount();
}

int ProcessTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ProcessTableModel::data(const QModelIndex& index, int role) const {
    const ProcessUsage* p = processAt(index.row());
    if (p == nullptr) {
        return {};
    }
    const auto column = static_cast<Column>(index.column());
    if (role == Qt::DisplayRole) {
        switch (column) {
        case Name:
            return displayName(*p);
        case PID:
            return p->pid;
        case CPU:
            return QString::number(p->cpuPercent, 'f', 1);
        case Memory:
            // A kernel thread has no memory of its own to show (its RSS is the kernel's).
            return p->kernelThread ? QStringLiteral("—")
                                   : MetricFormat::bytes(static_cast<std::int64_t>(p->memory));
        case User:
            return userName(p->uid);
        case ColumnCount:
            break;
        }
    } else if (role == Qt::DecorationRole && column == Name) {
        return naming(*p).icon;
    } else if (role == Qt::TextAlignmentRole && column != Name && column != User) {
        return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
    } else if (role == Qt::ToolTipRole && column == Name) {
        return p->path ? QString::fromStdString(*p->path)
                       : (p->kernelThread ? tr("A kernel thread") : QString());
    }
    return {};
}

QVariant ProcessTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return {};
    }
    switch (static_cast<Column>(section)) {
    case Name:
        return tr("Name");
    case PID:
        return tr("PID");
    case CPU:
        return tr("CPU %");
    case Memory:
        return tr("Memory");
    case User:
        return tr("User");
    case ColumnCount:
        break;
    }
    return {};
}

} // namespace tarvik
