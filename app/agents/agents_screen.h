#pragma once

#include "core/agents/agent_provider.h"

#include <QTimer>
#include <QWidget>

class QComboBox;
class QLabel;
class QPushButton;
class QVBoxLayout;

namespace tarvik {

class AgentsModel;

// Agents: a card per provider with its limits, how fast they are being used and when they
// reset; keys to paste; and the spend estimated from the local logs.
class AgentsScreen : public QWidget {
    Q_OBJECT
public:
    explicit AgentsScreen(AgentsModel& model, QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void renderCards();
    void renderSpend();
    QWidget* buildCard(int index);

    AgentsModel& model_;
    QVBoxLayout* cards_ = nullptr;
    QPushButton* refresh_ = nullptr;
    QLabel* state_ = nullptr;
    QComboBox* period_ = nullptr;
    QLabel* total_ = nullptr;
    QVBoxLayout* modelLines_ = nullptr;
    class SpendChart* chart_ = nullptr;
    QTimer clock_; // reset countdowns tick between fetches
};

} // namespace tarvik
