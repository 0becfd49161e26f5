#pragma once

#include <QSet>
#include <QWidget>
#include <functional>

class QLabel;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace tarvik {

class DuplicatesModel;
class SearchControls;

// Duplicates: scan, see each group of identical files with the original that stays, change
// which copies go (never all of a group), and remove them after confirming.
class DuplicatesScreen : public QWidget {
    Q_OBJECT
public:
    using Confirm = std::function<bool(const QString& question, const QString& detail)>;
    using Reveal = std::function<void(const QString& path)>;

    DuplicatesScreen(DuplicatesModel& model, QWidget* parent = nullptr);

    // Replace the confirmation dialog and the file manager (tests answer them themselves).
    void setConfirm(Confirm confirm) { confirm_ = std::move(confirm); }
    void setReveal(Reveal reveal) { reveal_ = std::move(reveal); }

    SearchControls* controls() const { return controls_; }
    QTreeWidget* tree() const { return tree_; }
    QString totalText() const;
    QString hintText() const;
    QString reportText() const;

public slots:
    void startScan();
    void requestRemoval();
    void revealCurrent();

private:
    void rebuild();
    void refreshChecks();
    void refreshActions();

    DuplicatesModel& model_;
    Confirm confirm_;
    Reveal reveal_;
    SearchControls* controls_ = nullptr;
    QTreeWidget* tree_ = nullptr;
    QLabel* total_ = nullptr;
    QLabel* hint_ = nullptr;
    QLabel* report_ = nullptr;
    QPushButton* selectCopies_ = nullptr;
    QPushButton* selectNone_ = nullptr;
    QPushButton* revealButton_ = nullptr;
    QPushButton* remove_ = nullptr;
    QSet<QString> collapsed_; // group ids the user folded
    bool updating_ = false;
};

} // namespace tarvik
