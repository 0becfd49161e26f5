#pragma once

#include "core/shell/app_section.h"

#include <QWidget>

class QFormLayout;

namespace tarvik {

class SystemMonitorModel;

// The small window the tray item opens: the monitor model's live readings and buttons that
// open the main window at a section. It holds the model while it is open.
class TrayPanel : public QWidget {
    Q_OBJECT
public:
    explicit TrayPanel(SystemMonitorModel& model, QWidget* parent = nullptr);
    ~TrayPanel() override;

    // Opens near `anchor` (the tray icon's place, or the pointer), kept on screen.
    void popUp(const QPoint& anchor);

signals:
    void openSection(tarvik::AppSection section);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void render();

    SystemMonitorModel& model_;
    QFormLayout* rows_ = nullptr;
    bool holding_ = false;
};

} // namespace tarvik
