#pragma once

#include <QWidget>

class QVBoxLayout;

namespace tarvik {

class AgentsModel;

// The tray panel's page of agent limits: for each agent shown, the share of its first limit left,
// as a figure and a bar, or why there is none. While the page is on screen it holds the model,
// so the figures are fetched and kept fresh as on the Agents screen.
class AgentsPanelPage : public QWidget {
    Q_OBJECT
public:
    explicit AgentsPanelPage(AgentsModel& model, QWidget* parent = nullptr);

private:
    void render();

    AgentsModel& model_;
    QVBoxLayout* cards_ = nullptr;
};

} // namespace tarvik
