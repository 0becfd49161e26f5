#include "app/speedtest/speed_test_screen.h"

#include "app/monitor/sparkline.h"
#include "app/shell/card.h"
#include "app/shell/quiet_label.h"
#include "app/shell/screen_header.h"
#include "app/shell/theme.h"
#include "app/speedtest/speed_test_model.h"
#include "core/sys/connection_label.h"
#include "core/text/metric_format.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace tarvik {

SpeedTestScreen::SpeedTestScreen(SpeedTestModel& model, QWidget* parent)
    : QWidget(parent), model_(model) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(space::xl, space::l, space::xl, space::l);
    layout->setSpacing(space::m);
    layout->addWidget(new ScreenHeader(
        QStringLiteral("Speed Test"),
        QStringLiteral(
            "Measures download and upload speed, ping, jitter and how much latency rises "
            "when the line is busy"),
        this));
    layout->addWidget(
        quietLabel(tr("Tests against Cloudflare's speed test network, using 6 parallel "
                      "connections for 10 seconds each way. A test on a fast line can use "
                      "several hundred MB of data."),
                   this));

    auto* now = new Card(this);
    now->setObjectName(QStringLiteral("speedNow"));
    QBoxLayout* nowLayout = now->body();
    auto* top = new QHBoxLayout();
    where_ = new QLabel(this);
    start_ = new QPushButton(tr("&Start Test"), this);
    start_->setDefault(true);
    cancel_ = new QPushButton(tr("Cancel"), this);
    top->addWidget(where_, 1);
    top->addWidget(start_);
    top->addWidget(cancel_);
    nowLayout->addLayout(top);
    bar_ = new QProgressBar(this);
    bar_->setRange(0, 1000);
    bar_->setTextVisible(false);
    nowLayout->addWidget(bar_);
    live_ = new QLabel(this);
    setTextStyle(live_, TextStyle::Headline);
    live_->setObjectName(QStringLiteral("liveFigure"));
    nowLayout->addWidget(live_);
    ping_ = new QLabel(this);
    nowLayout->addWidget(ping_);
    chart_ = new Sparkline(this);
    chart_->setAutoScale(true);
    chart_->setMinimumHeight(60);
    nowLayout->addWidget(chart_);
    result_ = new QLabel(this);
    result_->setObjectName(QStringLiteral("speedResult"));
    result_->setWordWrap(true);
    result_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    nowLayout->addWidget(result_);

    layout->addWidget(now);

    auto* past = new Card(tr("History"), this, "clock");
    QBoxLayout* pastLayout = past->body();
    noHistory_ = quietLabel(tr("No tests yet: each test you run is kept here, so you can see how "
                               "your connection changes."),
                            past);
    noHistory_->setObjectName(QStringLiteral("noHistory"));
    pastLayout->addWidget(noHistory_);
    history_ = new QTreeWidget(this);
    history_->setRootIsDecorated(false);
    history_->setHeaderLabels({tr("Date"), tr("Download"), tr("Upload"), tr("Ping"), tr("Grade")});
    history_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    history_->setMinimumHeight(120);
    history_->setAlternatingRowColors(true);
    pastLayout->addWidget(history_, 1);
    auto* rows = new QHBoxLayout();
    delete_ = new QPushButton(tr("Delete this result"), this);
    clear_ = new QPushButton(tr("Clear History…"), this);
    rows->addStretch(1);
    rows->addWidget(delete_);
    rows->addWidget(clear_);
    pastLayout->addLayout(rows);
    layout->addWidget(past);
    layout->addStretch(0);
    past_ = past;

    connect(start_, &QPushButton::clicked, this, [this] {
        const NetworkConnection connection = currentConnection();
        // One test can move several hundred MB: on a metered line, ask first.
        if (connection.metered &&
            QMessageBox::question(this, tr("Speed Test"),
                                  tr("This connection is metered. A test on a fast line can use "
                                     "several hundred MB of data. Run it anyway?")) !=
                QMessageBox::Yes) {
            return;
        }
        model_.start(connection.label);
    });
    connect(cancel_, &QPushButton::clicked, &model_, &SpeedTestModel::cancel);
    connect(delete_, &QPushButton::clicked, this, [this] {
        if (auto* item = history_->currentItem()) {
            model_.deleteResult(QUuid::fromString(item->data(0, Qt::UserRole).toString()));
        }
    });
    connect(clear_, &QPushButton::clicked, this, [this] {
        if (QMessageBox::question(this, tr("Clear History"),
                                  tr("Remove every saved speed test result?")) ==
            QMessageBox::Yes) {
            model_.clearHistory();
        }
    });
    connect(history_, &QTreeWidget::currentItemChanged, this,
            [this] { delete_->setEnabled(history_->currentItem() != nullptr); });
    connect(&model_, &SpeedTestModel::changed, this, &SpeedTestScreen::render);
    connect(&model_, &SpeedTestModel::progressChanged, this, &SpeedTestScreen::renderProgress);
    render();
}

QString SpeedTestScreen::resultText() const {
    return result_->text();
}

void SpeedTestScreen::renderProgress() {
    const SpeedTestProgress& p = model_.progress();
    if (model_.server() && model_.server()->locationText()) {
        where_->setText(tr("Connected to Cloudflare in %1").arg(*model_.server()->locationText()));
    }
    bar_->setValue(static_cast<int>(p.overallFraction() * 1000));
    if (p.phase == SpeedTestPhase::Latency) {
        live_->setText(p.idleLatency ? SpeedFormat::milliseconds(*p.idleLatency)
                                     : QStringLiteral("—"));
    } else {
        live_->setText(title(p.phase) + QStringLiteral("  ") +
                       (p.currentMbps ? SpeedFormat::mbps(*p.currentMbps) + tr(" Mbps")
                                      : QStringLiteral("…")));
    }
    if (p.idleLatency) {
        ping_->setText(tr("Ping %1 · Variation between pings %2")
                           .arg(SpeedFormat::milliseconds(*p.idleLatency),
                                SpeedFormat::milliseconds(p.jitter.value_or(0))));
    }
    chart_->setValues({p.samples.begin(), p.samples.end()});
    showWhenSaid();
}

void SpeedTestScreen::showWhenSaid() {
    for (QLabel* label : {live_, ping_, result_}) {
        label->setVisible(!label->text().isEmpty());
    }
}

void SpeedTestScreen::render() {
    const bool running = model_.isRunning();
    start_->setEnabled(!running);
    cancel_->setVisible(running);
    bar_->setVisible(running);
    chart_->setVisible(running); // the throughput as it is measured
    if (running) {
        where_->setText(
            model_.server() && model_.server()->locationText()
                ? tr("Connected to Cloudflare in %1").arg(*model_.server()->locationText())
                : tr("Finding the nearest server"));
        result_->clear();
    } else if (!model_.error().isEmpty()) {
        where_->clear();
        result_->setText(
            QStringLiteral("<span style=\"color:%1\">%2</span>")
                .arg(meaningColor(Meaning::Critical).name(), model_.error().toHtmlEscaped()));
    } else if (const auto& r = model_.lastResult()) {
        where_->setText(r->server && r->server->locationText()
                            ? tr("Connected to Cloudflare in %1").arg(*r->server->locationText())
                            : QString());
        live_->setText(
            tr("↓ %1 Mbps   ↑ %2 Mbps")
                .arg(SpeedFormat::mbps(r->downloadMbps), SpeedFormat::mbps(r->uploadMbps)));
        QString html = tr("Ping %1 · Variation between pings %2")
                           .arg(SpeedFormat::milliseconds(r->idleLatency),
                                SpeedFormat::milliseconds(r->jitter));
        if (const auto loaded = r->loadedLatency()) {
            html += tr(" · Latency under load %1").arg(SpeedFormat::milliseconds(*loaded));
        }
        if (const auto grade = r->bufferbloat()) {
            html += tr("<br><b>Bufferbloat %1</b> — %2").arg(rawValue(*grade), summary(*grade));
        }
        html += QStringLiteral("<br>");
        for (auto useCase : kAllUseCases) {
            html += QStringLiteral("%1: %2 · ").arg(title(useCase), title(verdict(useCase, *r)));
        }
        html += tr("Data used %1").arg(MetricFormat::bytes(r->dataUsed()));
        result_->setText(html);
        ping_->clear();
    } else {
        where_->setText(tr("Press Start Test to measure your connection."));
    }
    history_->clear();
    for (const auto& r : model_.history()) {
        auto* item = new QTreeWidgetItem(history_);
        item->setText(0, r.date.toLocalTime().toString(QStringLiteral("yyyy-MM-dd HH:mm")));
        item->setText(1, SpeedFormat::mbps(r.downloadMbps) + tr(" Mbps"));
        item->setText(2, SpeedFormat::mbps(r.uploadMbps) + tr(" Mbps"));
        item->setText(3, SpeedFormat::milliseconds(r.idleLatency));
        item->setText(4, r.bufferbloat() ? rawValue(*r.bufferbloat()) : QStringLiteral("—"));
        item->setData(0, Qt::UserRole, r.id.toString());
    }
    delete_->setEnabled(false);
    clear_->setEnabled(!model_.history().empty());
    // An empty table says nothing; a sentence says what it will hold.
    history_->setVisible(!model_.history().empty());
    delete_->setVisible(!model_.history().empty());
    clear_->setVisible(!model_.history().empty());
    noHistory_->setVisible(model_.history().empty());
    // The history takes the room left while it has rows; empty, it stays a line.
    static_cast<QBoxLayout*>(layout())->setStretchFactor(past_, model_.history().empty() ? 0 : 1);
    static_cast<QBoxLayout*>(layout())->setStretch(layout()->count() - 1,
                                                   model_.history().empty() ? 1 : 0);
    showWhenSaid();
}

} // namespace tarvik
