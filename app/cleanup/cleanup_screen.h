#pragma once

#include "core/shell/app_section.h"

#include <QString>
#include <QWidget>
#include <functional>
#include <optional>

class QHBoxLayout;
class QLabel;
class QProgressBar;
class QPushButton;
class QVBoxLayout;

namespace tarvik {

class CleanupModel;
class EmptyState;

// The frame every cleanup screen is built in: the title with Scan (Cancel while something runs),
// the screen's own search controls and buttons, the progress, its result view (a sentence and
// Scan until the first search), a line that sums up the results and the selection beside
// Remove, a hint, and the report after a removal. The frame asks before removing, naming how many
// (the name when it is one item), how much and how they go.
class CleanupScreen : public QWidget {
    Q_OBJECT
public:
    using Confirm = std::function<bool(const QString& question, const QString& detail)>;
    struct Texts {
        QString title;
        AppSection section;
        QString one;           // the noun of one item: "file"
        QString many;          // and of several: "files"
        QString verb;          // the removal's name: "Remove", "Clean"
        QString confirmTitle;  // the confirmation's title: "Remove Files"
        QString working;       // while removing: "Removing files…"
        QString cancelled;     // after a cancelled search
        QString keptNote = {}; // added to the confirmation: what is always kept
    };

    CleanupScreen(CleanupModel& model, Texts texts, QWidget* parent = nullptr);

    // The screen's own parts.
    void setControls(QWidget* controls);
    void addAction(QWidget* widget);         // at the left of the action bar
    void addTrailingAction(QWidget* widget); // just before Remove
    void setView(QWidget* view);
    // How the search's progress reads, from its phase, how far it got and how far it goes (0
    // while not known); by default "phase… N entries visited".
    void
    setProgressText(std::function<QString(const QString& phase, qint64 count, qint64 total)> text);
    // Replaces the confirmation dialog (tests answer it themselves).
    void setConfirm(Confirm confirm) { confirm_ = std::move(confirm); }

    void setSummary(const QString& text);
    void showHint(const QString& text);
    void hideHint();

    QString summaryText() const;
    QString hintText() const;
    QString reportText() const;
    QString statusText() const;
    QPushButton* scanButton() const { return scan_; }
    QPushButton* cancelButton() const { return cancel_; }
    QPushButton* removeButton() const { return remove_; }

    // "1 file", "3 files".
    QString count(int n) const;

signals:
    void scanRequested();

public slots:
    void requestRemoval();
    // Buttons and controls follow what the model is doing.
    void refresh();

private:
    void setStatus(const QString& status, std::optional<double> fraction = std::nullopt);

    CleanupModel& model_;
    Texts texts_;
    Confirm confirm_;
    std::function<QString(const QString&, qint64, qint64)> progressText_;
    QVBoxLayout* layout_ = nullptr;
    QWidget* controls_ = nullptr;
    QHBoxLayout* controlRow_ = nullptr;
    QWidget* actionBar_ = nullptr;
    QHBoxLayout* actions_ = nullptr;
    int leadingActions_ = 0;
    EmptyState* empty_ = nullptr;
    QWidget* view_ = nullptr;
    QPushButton* scan_ = nullptr;
    QPushButton* cancel_ = nullptr;
    QPushButton* remove_ = nullptr;
    QLabel* status_ = nullptr;
    QProgressBar* progress_ = nullptr;
    QLabel* summary_ = nullptr;
    QLabel* hint_ = nullptr;
    QLabel* report_ = nullptr;
};

} // namespace tarvik
