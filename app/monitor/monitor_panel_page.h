#pragma once

#include <QWidget>
#include <map>

namespace tarvik {

class PanelFigure;
class SystemMonitorModel;

// A page of the tray panel drawn from the monitor model's latest reading: the processors
// (CPU, memory, GPU), the network and disk, or the battery. It only draws; the panel holds the
// model while it is open.
class MonitorPanelPage : public QWidget {
    Q_OBJECT
public:
    enum class Kind { Processors, Network, Battery };
    MonitorPanelPage(Kind kind, SystemMonitorModel& model, QWidget* parent = nullptr);

private:
    // A figure named "cpu", "memory", "gpu", "download", "upload", "disk" or "battery"; its
    // object name is "figure_" and the name.
    void add(const QString& name, const QString& caption, int row, int column, int span);
    void render();
    void renderProcessors();
    void renderNetwork();
    void renderBattery();

    Kind kind_;
    SystemMonitorModel& model_;
    std::map<QString, PanelFigure*> figures_;
};

} // namespace tarvik
