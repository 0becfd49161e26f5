#pragma once

#include "core/cleanup/file_kind.h"

#include <QAbstractTableModel>
#include <QIcon>
#include <QSortFilterProxyModel>
#include <array>
#include <optional>

namespace tarvik {

class LargeFilesModel;

// The found files as rows for a view: a checkbox and kind icon with the name, the size, the
// date and the folder. Checking a row selects the file in the model.
class LargeFilesTable : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { Name, Size, Modified, Folder, ColumnCount };
    enum Role { SortRole = Qt::UserRole + 1, KindRole, PathRole };

    explicit LargeFilesTable(LargeFilesModel& model, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    LargeFilesModel& model_;
    // Looked up once: rows ask for their icon on every repaint.
    std::array<QIcon, kAllFileKinds.size()> icons_;
};

// Shows one kind of file, or every kind; sorts on the values, not on the texts.
class KindFilter : public QSortFilterProxyModel {
    Q_OBJECT
public:
    explicit KindFilter(QObject* parent = nullptr);
    void setKind(std::optional<FileKind> kind);
    std::optional<FileKind> kind() const { return kind_; }

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;

private:
    std::optional<FileKind> kind_;
};

} // namespace tarvik
