#pragma once

#include "core/cleanup/junk_category.h"

#include <QWidget>
#include <functional>

class QLabel;
class QProgressBar;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace tarvik {

class JunkModel;

// System Junk: scan, look inside each category, choose, confirm, clean, read the report.
class JunkScreen : public QWidget {
    Q_OBJECT
public:
    using Confirm = std::function<bool(const QString& question, const QString& detail)>;
    JunkScreen(JunkModel& model, QString home, QWidget* parent = nullptr);

    // Replaces the confirmation dialog (tests answer it themselves).
    void setConfirm(Confirm confirm) { confirm_ = std::move(confirm); }
    QTreeWidget* tree() const { return tree_; }
    QString summaryText() const;
    QString reportText() const;

public slots:
    void requestClean();

private:
    void rebuild();
    void refreshChecks();
    void updateActions();

    JunkModel& model_;
    QString home_;
    Confirm confirm_;
    QTreeWidget* tree_ = nullptr;
    QLabel* summary_ = nullptr;
    QLabel* report_ = nullptr;
    QProgressBar* progress_ = nullptr;
    QPushButton* scan_ = nullptr;
    QPushButton* cancel_ = nullptr;
    QPushButton* clean_ = nullptr;
    bool updating_ = false;
};

} // namespace tarvik
