#pragma once

#include <QWidget>

class QLabel;
class QPushButton;

namespace tarvik {

class KeepAwakeController;
class PanelFigure;

// The tray panel's Keep Awake page: whether the computer is kept awake (only while the lock on
// sleep is really held), until when and why, and the commands of the tray's Keep Awake menu to
// start or stop it.
class KeepAwakePanelPage : public QWidget {
    Q_OBJECT
public:
    explicit KeepAwakePanelPage(KeepAwakeController& controller, QWidget* parent = nullptr);

    const PanelFigure& state() const { return *state_; }

private:
    void refresh();

    KeepAwakeController& controller_;
    PanelFigure* state_ = nullptr;
    QLabel* error_ = nullptr;
    QPushButton* off_ = nullptr;
};

} // namespace tarvik
