#pragma once

#include "dock/dock_paths.h"
#include "dock/dock_preferences.h"
#include "dock/dock_spacer.h"

#include <QString>
#include <QStringList>
#include <QUuid>
#include <optional>
#include <vector>

namespace tarvik {

// The dock's rows for placing spacers: a local copy of the list, changed freely and written
// back on apply, unless the dock changed meanwhile.
class DockLayout {
public:
    struct Row {
        QUuid id; // local to the list
        QString tile;
        QString title;
        std::optional<DockSpacer> spacer;
    };

    explicit DockLayout(DockPreferences preferences = DockPreferences(),
                        DockPaths paths = DockPaths::current());

    static QString changedMeanwhile(); // the text shown when the dock changed since loading
    static QString emptyTitle();
    static QString emptyDetail();

    const std::vector<Row>& rows() const { return rows_; }
    std::optional<QUuid> selection() const { return selection_; }
    void select(std::optional<QUuid> row) { selection_ = row; }
    bool hasChanges() const;
    int spacerCount() const;
    const std::optional<QString>& errorMessage() const { return error_; }

    // Reads the dock's list anew; clears the selection and the error.
    void reload();
    // A new spacer right after `after`; at the end when `after` is none or unknown. Returns the
    // new row's id.
    QUuid addSpacer(DockSpacer kind, std::optional<QUuid> after);
    // Removes a spacer row; other rows are never removed here.
    bool removeSpacer(const QUuid& row);
    // Writes the rows in order (after a backup) unless the dock changed since it was loaded,
    // in which case the list is reloaded and nothing is written. True when written; on any
    // failure errorMessage() says why.
    bool apply();

    QStringList tiles() const;

private:
    DockPreferences preferences_;
    DockPaths paths_;
    std::vector<Row> rows_;
    QStringList loadedSignature_;
    std::optional<QUuid> selection_;
    std::optional<QString> error_;
};

} // namespace tarvik
