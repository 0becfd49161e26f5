#pragma once

#include <QWidget>

class QFormLayout;
class QLabel;
class QPushButton;

namespace tarvik {

class Navigator;
class OverviewModel;

// Smart Scan: the machine at a glance. Each capability adds its tile below the summary.
class OverviewScreen : public QWidget {
    Q_OBJECT
public:
    OverviewScreen(OverviewModel& model, Navigator& navigator, QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void render();

    OverviewModel& model_;
    Navigator& navigator_;
    QLabel* junk_ = nullptr;
    QFormLayout* rows_ = nullptr;
    QLabel* state_ = nullptr;
    QPushButton* refresh_ = nullptr;
};

} // namespace tarvik
