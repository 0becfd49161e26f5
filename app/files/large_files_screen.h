#pragma once

#include <QWidget>
#include <functional>

class QComboBox;
class QLabel;
class QPushButton;
class QTreeView;

namespace tarvik {

class KindFilter;
class LargeFilesModel;
class LargeFilesTable;
class SearchControls;

// Large & Old Files: choose how large and how old, scan, narrow down by kind, sort, pick
// files, reveal one in the file manager, and remove the chosen ones after confirming.
class LargeFilesScreen : public QWidget {
    Q_OBJECT
public:
    using Confirm = std::function<bool(const QString& question, const QString& detail)>;
    using Reveal = std::function<void(const QString& path)>;

    LargeFilesScreen(LargeFilesModel& model, QWidget* parent = nullptr);

    // Replace the confirmation dialog and the file manager (tests answer them themselves).
    void setConfirm(Confirm confirm) { confirm_ = std::move(confirm); }
    void setReveal(Reveal reveal) { reveal_ = std::move(reveal); }

    SearchControls* controls() const { return controls_; }
    QTreeView* view() const { return view_; }
    QComboBox* kindPicker() const { return kinds_; }
    QComboBox* sortPicker() const { return sort_; }
    QPushButton* revealButton() const { return revealButton_; }
    QPushButton* removeButton() const { return remove_; }
    QString summaryText() const;
    QString reportText() const;

public slots:
    void startScan();
    void requestRemoval();
    void revealCurrent();

private:
    void rebuildKinds();
    void refresh();

    LargeFilesModel& model_;
    Confirm confirm_;
    Reveal reveal_;
    LargeFilesTable* table_ = nullptr;
    KindFilter* filter_ = nullptr;
    SearchControls* controls_ = nullptr;
    QComboBox* kinds_ = nullptr;
    QComboBox* sort_ = nullptr;
    QTreeView* view_ = nullptr;
    QPushButton* revealButton_ = nullptr;
    QPushButton* remove_ = nullptr;
    QLabel* summary_ = nullptr;
    QLabel* report_ = nullptr;
    qint64 visited_ = 0;
};

} // namespace tarvik
