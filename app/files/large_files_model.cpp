#include "app/files/large_files_model.h"

#include <QtConcurrent/QtConcurrentRun>
#include <algorithm>

namespace tarvik {

LargeFilesModel::LargeFilesModel(Preferences& preferences, Dependencies dependencies,
                                 QObject* parent)
    : FileSearchModel(preferences, std::move(dependencies), parent) {
    connect(&scanWatcher_, &QFutureWatcher<std::vector<FoundFile>>::finished, this, [this] {
        // A cancelled walk still returns the files it had seen: they are real and listed.
        results_ = scanWatcher_.result();
        endScan();
        emit resultsChanged();
        emit scanFinished();
        emit selectionChanged();
    });
}

LargeFilesModel::~LargeFilesModel() {
    cancel();
    scanWatcher_.waitForFinished();
}

int LargeFilesModel::count(FileKind kind) const {
    return static_cast<int>(std::count_if(results_.begin(), results_.end(),
                                          [kind](const FoundFile& f) { return f.kind == kind; }));
}

void LargeFilesModel::setSelected(const QString& path, bool on) {
    if (on == selected_.contains(path)) {
        return;
    }
    if (on) {
        selected_.insert(path);
    } else {
        selected_.remove(path);
    }
    emit selectionChanged();
}

void LargeFilesModel::setAllSelected(bool on) {
    selected_.clear();
    if (on) {
        for (const auto& f : results_) {
            selected_.insert(f.item.id());
        }
    }
    emit selectionChanged();
}

int LargeFilesModel::selectedCount() const {
    return static_cast<int>(selected_.size());
}

std::int64_t LargeFilesModel::selectedSize() const {
    std::int64_t n = 0;
    for (const auto& f : results_) {
        n += selected_.contains(f.item.id()) ? f.item.size : 0;
    }
    return n;
}

std::int64_t LargeFilesModel::totalSize() const {
    std::int64_t n = 0;
    for (const auto& f : results_) {
        n += f.item.size;
    }
    return n;
}

void LargeFilesModel::scan(LargeFileScanner::Options options) {
    if (isBusy()) {
        return;
    }
    if (options.root.isEmpty()) {
        options.root = home();
    }
    lastOptions_ = options;
    results_.clear();
    selected_.clear();
    auto flag = beginScan(options.root);
    emit scanStarted();
    emit resultsChanged();
    emit selectionChanged();
    options.excluded = exclusions().forMatching();
    scanWatcher_.setFuture(QtConcurrent::run([this, options, flag, home = home()] {
        return LargeFileScanner(home).scan(
            options,
            [this](std::int64_t entries) {
                postProgress(QStringLiteral("Looking for files"), entries);
            },
            flag.get());
    }));
}

void LargeFilesModel::removeSelected() {
    std::vector<CleanableItem> items;
    for (const auto& f : results_) {
        if (selected_.contains(f.item.id())) {
            items.push_back(f.item);
        }
    }
    startRemoval(std::move(items), QStringLiteral("Large & Old Files"));
}

void LargeFilesModel::dropRemoved(const QSet<QString>& removedIds) {
    std::erase_if(results_, [&](const FoundFile& f) { return removedIds.contains(f.item.id()); });
    selected_.subtract(removedIds);
    emit resultsChanged();
}

} // namespace tarvik
