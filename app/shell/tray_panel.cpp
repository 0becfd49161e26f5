#include "app/shell/tray_panel.h"

#include "app/monitor/system_monitor_model.h"
#include "core/monitor/reading_report.h"

#include <QFormLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

namespace tarvik {

TrayPanel::TrayPanel(SystemMonitorModel& model, QWidget* parent)
    : QWidget(parent, Qt::Popup), model_(model) {
    setObjectName(QStringLiteral("trayPanel"));
    setWindowTitle(QStringLiteral("Tarvik"));
    setAttribute(Qt::WA_DeleteOnClose, false);
    auto* layout = new QVBoxLayout(this);
    auto* title = new QLabel(QStringLiteral("<b>Tarvik</b>"), this);
    layout->addWidget(title);
    rows_ = new QFormLayout();
    rows_->setHorizontalSpacing(16);
    layout->addLayout(rows_);

    auto* buttons = new QHBoxLayout();
    auto add = [this, buttons](const QString& label, AppSection section) {
        auto* b = new QPushButton(label, this);
        connect(b, &QPushButton::clicked, this, [this, section] {
            hide();
            emit openSection(section);
        });
        buttons->addWidget(b);
        return b;
    };
    add(tr("Monitor"), AppSection::Monitor)->setDefault(true);
    add(tr("Smart Scan"), AppSection::Overview);
    add(tr("Settings"), AppSection::Settings);
    layout->addLayout(buttons);

    connect(&model_, &SystemMonitorModel::readingChanged, this, &TrayPanel::render);
    render();
}

TrayPanel::~TrayPanel() {
    if (holding_) {
        model_.release(MonitorClient::MenuPanel);
    }
}

void TrayPanel::popUp(const QPoint& anchor) {
    adjustSize();
    const QScreen* screen = QGuiApplication::screenAt(anchor);
    const QRect area = screen ? screen->availableGeometry() : QRect(anchor, size());
    QPoint at(anchor.x() - width() / 2, anchor.y());
    if (at.y() + height() > area.bottom()) {
        at.setY(anchor.y() - height()); // a tray at the bottom of the screen
    }
    at.setX(std::clamp(at.x(), area.left(), std::max(area.left(), area.right() - width())));
    at.setY(std::clamp(at.y(), area.top(), std::max(area.top(), area.bottom() - height())));
    move(at);
    show();
    activateWindow();
}

void TrayPanel::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!holding_) {
        holding_ = true;
        model_.acquire(MonitorClient::MenuPanel);
    }
}

void TrayPanel::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    if (holding_) {
        holding_ = false;
        model_.release(MonitorClient::MenuPanel);
    }
}

void TrayPanel::render() {
    while (rows_->rowCount() > 0) {
        rows_->removeRow(0);
    }
    const auto& reading = model_.latest();
    if (!reading) {
        rows_->addRow(new QLabel(tr("Measuring…"), this));
        return;
    }
    for (const auto& row : describeReading(*reading, model_.topology())) {
        if (row.label == QLatin1String("Swap") || row.label == QLatin1String("Pressure")) {
            continue; // the panel keeps to the headline figures
        }
        auto* value = new QLabel(row.value, this);
        value->setAccessibleName(row.label);
        rows_->addRow(row.label, value);
    }
}

} // namespace tarvik
