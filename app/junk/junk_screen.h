#pragma once

#include <QWidget>

class QTreeWidget;

namespace tarvik {

class CleanupScreen;
class JunkModel;

// System Junk: scan, look inside each category, choose, confirm, clean, read the report.
class JunkScreen : public QWidget {
    Q_OBJECT
public:
    JunkScreen(JunkModel& model, QString home, QWidget* parent = nullptr);

    CleanupScreen& frame() const { return *frame_; }
    QTreeWidget* tree() const { return tree_; }

private:
    void rebuild();
    void refreshChecks();
    void refreshSummary();

    JunkModel& model_;
    QString home_;
    CleanupScreen* frame_ = nullptr;
    QTreeWidget* tree_ = nullptr;
    bool updating_ = false;
};

} // namespace tarvik
