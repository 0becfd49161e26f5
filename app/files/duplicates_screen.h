#pragma once

#include <QSet>
#include <QWidget>
#include <functional>

class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace tarvik {

class CleanupScreen;
class DuplicatesModel;
class SearchControls;

// Duplicates: scan, see each group of identical files with the original that stays, change
// which copies go (never all of a group), and remove them after confirming.
class DuplicatesScreen : public QWidget {
    Q_OBJECT
public:
    using Reveal = std::function<void(const QString& path)>;

    DuplicatesScreen(DuplicatesModel& model, QWidget* parent = nullptr);

    // Replaces the file manager (tests answer it themselves).
    void setReveal(Reveal reveal) { reveal_ = std::move(reveal); }

    CleanupScreen& frame() const { return *frame_; }
    SearchControls* controls() const { return controls_; }
    QTreeWidget* tree() const { return tree_; }

public slots:
    void startScan();
    void revealCurrent();

private:
    void rebuild();
    void refreshChecks();
    void refreshActions();

    DuplicatesModel& model_;
    Reveal reveal_;
    CleanupScreen* frame_ = nullptr;
    SearchControls* controls_ = nullptr;
    QTreeWidget* tree_ = nullptr;
    QPushButton* selectCopies_ = nullptr;
    QPushButton* selectNone_ = nullptr;
    QPushButton* revealButton_ = nullptr;
    QSet<QString> collapsed_; // group ids the user folded
    bool updating_ = false;
};

} // namespace tarvik
