#pragma once

#include <QWidget>

class QFormLayout;
class QLabel;
class QPushButton;

namespace tarvik {

class OverviewModel;

// Smart Scan: the machine at a glance. Each capability adds its tile below the summary.
class OverviewScreen : public QWidget {
    Q_OBJECT
public:
    explicit OverviewScreen(OverviewModel& model, QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void render();

    OverviewModel& model_;
    QFormLayout* rows_ = nullptr;
    QLabel* state_ = nullptr;
    QPushButton* refresh_ = nullptr;
};

} // namespace tarvik
