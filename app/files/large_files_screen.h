#pragma once

#include <QWidget>
#include <functional>

class QComboBox;
class QPushButton;
class QTreeView;

namespace tarvik {

class CleanupScreen;
class KindFilter;
class LargeFilesModel;
class LargeFilesTable;
class SearchControls;

// Large & Old Files: choose how large and how old, scan, narrow down by kind, sort, pick
// files, reveal one in the file manager, and remove the chosen ones after confirming.
class LargeFilesScreen : public QWidget {
    Q_OBJECT
public:
    using Reveal = std::function<void(const QString& path)>;

    LargeFilesScreen(LargeFilesModel& model, QWidget* parent = nullptr);

    // Replaces the file manager (tests answer it themselves).
    void setReveal(Reveal reveal) { reveal_ = std::move(reveal); }

    CleanupScreen& frame() const { return *frame_; }
    SearchControls* controls() const { return controls_; }
    QTreeView* view() const { return view_; }
    QComboBox* kindPicker() const { return kinds_; }
    QComboBox* sortPicker() const { return sort_; }
    QPushButton* revealButton() const { return revealButton_; }

public slots:
    void startScan();
    void revealCurrent();

private:
    void rebuildKinds();
    void refresh();

    LargeFilesModel& model_;
    Reveal reveal_;
    CleanupScreen* frame_ = nullptr;
    LargeFilesTable* table_ = nullptr;
    KindFilter* filter_ = nullptr;
    SearchControls* controls_ = nullptr;
    QComboBox* kinds_ = nullptr;
    QComboBox* sort_ = nullptr;
    QTreeView* view_ = nullptr;
    QPushButton* revealButton_ = nullptr;
};

} // namespace tarvik
