#pragma once

#include "app/monitor/system_monitor_model.h"
#include "core/monitor/process_naming.h"

#include <QAbstractTableModel>
#include <QIcon>
#include <map>
#include <memory>

namespace tarvik {

// The process table: name with the application's icon, pid, CPU, memory and user, in the
// chosen order, narrowed by a filter.
class ProcessTableModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { Name, PID, CPU, Memory, User, ColumnCount };

    explicit ProcessTableModel(QObject* parent = nullptr);
    ~ProcessTableModel() override;

    void setProcesses(std::vector<ProcessUsage> processes);
    void setSort(ProcessSort sort);
    void setFilter(const QString& text);
    // Where installed applications are looked up; the user's folders by default.
    void setApplicationFolders(std::vector<std::filesystem::path> folders);

    const ProcessUsage* processAt(int row) const;
    int rowOf(std::int32_t pid, std::uint64_t startTime) const;
    // The application's name for a process that belongs to one, else the process's name.
    QString displayName(const ProcessUsage& process) const;
    std::uint64_t listedMemory() const { return totalProcessMemory(rows_); }
    int listedCount() const { return static_cast<int>(rows_.size()); }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    struct Naming {
        QString name;
        QIcon icon;
    };
    const Naming& naming(const ProcessUsage& process) const;
    QString userName(std::uint32_t uid) const;
    void rebuild();

    std::vector<ProcessUsage> all_;
    std::vector<ProcessUsage> rows_;
    ProcessSort sort_ = ProcessSort::CPU;
    QString filter_;
    std::vector<std::filesystem::path> folders_;
    mutable std::unique_ptr<DesktopApplications> apps_;
    mutable std::map<std::pair<std::int32_t, std::uint64_t>, Naming> names_;
    mutable std::map<std::uint32_t, QString> users_;
};

} // namespace tarvik
