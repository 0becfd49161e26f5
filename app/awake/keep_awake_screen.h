#pragma once

#include <QWidget>

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QTreeWidget;

namespace tarvik {

class KeepAwakeController;
class KeyboardLock;

// Keep Awake: the on/off switch with its durations, the status, the lid option, the weekly
// schedules and the keyboard lock.
class KeepAwakeScreen : public QWidget {
    Q_OBJECT
public:
    KeepAwakeScreen(KeepAwakeController& controller, KeyboardLock& lock, QWidget* parent = nullptr);

private:
    void refresh();
    void refreshSchedules();
    void editSchedule(int row); // −1 adds a new one

    KeepAwakeController& controller_;
    KeyboardLock& lock_;
    QPushButton* toggle_;
    QComboBox* duration_;
    QLabel* status_;
    QLabel* reason_;
    QLabel* error_;
    QCheckBox* lid_;
    QLabel* lidDescription_;
    QLabel* lidError_;
    QTreeWidget* schedules_;
    QLabel* noSchedules_;
    QLabel* schedulesError_;
    QPushButton* edit_;
    QPushButton* remove_;
    QPushButton* lockButton_;
    QLabel* lockFailure_;
    QPushButton* openAccessibility_;
    QLabel* accessibilityHelp_;
    bool filling_ = false;
};

} // namespace tarvik
