#pragma once

#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;
class QTreeWidget;

namespace tarvik {

class SpeedTestModel;
class Sparkline;

// Speed Test: a live figure and chart while the test runs, then the result with its grade and
// verdicts, and the history.
class SpeedTestScreen : public QWidget {
    Q_OBJECT
public:
    explicit SpeedTestScreen(SpeedTestModel& model, QWidget* parent = nullptr);
    QString resultText() const;
    QTreeWidget* history() const { return history_; }

private:
    void render();
    // Only the figures and words there are take room.
    void showWhenSaid();
    void renderProgress();

    SpeedTestModel& model_;
    QLabel* where_ = nullptr;
    QLabel* live_ = nullptr;
    QLabel* ping_ = nullptr;
    Sparkline* chart_ = nullptr;
    QProgressBar* bar_ = nullptr;
    QPushButton* start_ = nullptr;
    QPushButton* cancel_ = nullptr;
    QLabel* result_ = nullptr;
    QTreeWidget* history_ = nullptr;
    QLabel* noHistory_ = nullptr;
    QWidget* past_ = nullptr;
    QPushButton* delete_ = nullptr;
    QPushButton* clear_ = nullptr;
};

} // namespace tarvik
