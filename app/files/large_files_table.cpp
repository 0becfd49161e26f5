#include "app/files/large_files_table.h"

#include "app/cleanup/file_texts.h"
#include "app/files/file_kind_icons.h"
#include "app/files/large_files_model.h"
#include "core/text/metric_format.h"
#include "core/text/path_display.h"

#include <QFileInfo>

namespace tarvik {

LargeFilesTable::LargeFilesTable(LargeFilesModel& model, QObject* parent)
    : QAbstractTableModel(parent), model_(model) {
    for (FileKind k : kAllFileKinds) {
        icons_[static_cast<std::size_t>(k)] = fileKindIcon(k);
    }
    connect(&model_, &LargeFilesModel::resultsChanged, this, [this] {
        beginResetModel();
        endResetModel();
    });
    connect(&model_, &LargeFilesModel::selectionChanged, this, [this] {
        if (rowCount() > 0) {
            emit dataChanged(index(0, Name), index(rowCount() - 1, Name), {Qt::CheckStateRole});
        }
    });
}

int LargeFilesTable::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(model_.results().size());
}

int LargeFilesTable::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant LargeFilesTable::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount()) {
        return {};
    }
    const FoundFile& f = model_.results()[static_cast<std::size_t>(index.row())];
    const QFileInfo info(f.item.path);
    switch (role) {
    case Qt::DisplayRole:
        switch (index.column()) {
        case Name:
            return info.fileName();
        case Size:
            return MetricFormat::bytes(f.item.size);
        case Modified:
            return FileTexts::date(f.item.modified);
        case Folder:
            return PathDisplay::abbreviate(info.path(), model_.home());
        }
        break;
    case SortRole:
        switch (index.column()) {
        case Name:
            return info.fileName().toLower();
        case Size:
            return qlonglong{f.item.size};
        case Modified:
            return f.item.modifiedOrDistantPast().toMSecsSinceEpoch();
        case Folder:
            return info.path().toLower();
        }
        break;
    case Qt::DecorationRole:
        if (index.column() == Name) {
            return icons_[static_cast<std::size_t>(f.kind)];
        }
        break;
    case Qt::CheckStateRole:
        if (index.column() == Name) {
            return model_.isSelected(f.item.id()) ? Qt::Checked : Qt::Unchecked;
        }
        break;
    case Qt::ToolTipRole:
        return QStringLiteral("%1\n%2").arg(PathDisplay::abbreviate(f.item.path, model_.home()),
                                            f.item.detail.value_or(title(f.kind)));
    case Qt::AccessibleTextRole:
        if (index.column() == Name) {
            return QStringLiteral("%1, %2").arg(info.fileName(), title(f.kind));
        }
        break;
    case Qt::TextAlignmentRole:
        if (index.column() == Size) {
            return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
        }
        break;
    case KindRole:
        return static_cast<int>(f.kind);
    case PathRole:
        return f.item.path;
    default:
        break;
    }
    return {};
}

bool LargeFilesTable::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (!index.isValid() || index.column() != Name || role != Qt::CheckStateRole) {
        return false;
    }
    const auto& f = model_.results()[static_cast<std::size_t>(index.row())];
    model_.setSelected(f.item.id(), value.toInt() == Qt::Checked);
    return true;
}

Qt::ItemFlags LargeFilesTable::flags(const QModelIndex& index) const {
    Qt::ItemFlags f = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (index.column() == Name) {
        f |= Qt::ItemIsUserCheckable;
    }
    return f;
}

QVariant LargeFilesTable::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return {};
    }
    switch (section) {
    case Name:
        return tr("Name");
    case Size:
        return tr("Size");
    case Modified:
        return tr("Modified");
    case Folder:
        return tr("Folder");
    default:
        return {};
    }
}

KindFilter::KindFilter(QObject* parent) : QSortFilterProxyModel(parent) {
    setSortRole(LargeFilesTable::SortRole);
}

void KindFilter::setKind(std::optional<FileKind> kind) {
    if (kind != kind_) {
        kind_ = kind;
        invalidateFilter();
    }
}

bool KindFilter::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const {
    if (!kind_) {
        return true;
    }
    const QModelIndex i = sourceModel()->index(sourceRow, 0, sourceParent);
    return i.data(LargeFilesTable::KindRole).toInt() == static_cast<int>(*kind_);
}

} // namespace tarvik
