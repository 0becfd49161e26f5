#include "app/agents/agents_screen.h"

#include "app/agents/agents_model.h"
#include "app/agents/limit_bar.h"
#include "app/agents/spend_chart.h"
#include "app/shell/card.h"
#include "app/shell/hold_while_shown.h"
#include "app/shell/quiet_label.h"
#include "app/shell/screen_header.h"
#include "app/shell/section_subtitles.h"
#include "app/shell/theme.h"
#include "core/agents/limits/agent_usage_report.h"
#include "core/agents/limits/openrouter_usage.h"
#include "core/agents/spend/usage_format.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QToolButton>
#include <QUrl>
#include <QVBoxLayout>

namespace tarvik {
namespace {

// What a card says and offers, in order; a bar by its words, since its pace tick moves on its
// own between fetches.
QString contentOf(const QWidget* card) {
    QStringList said;
    for (const QWidget* w : card->findChildren<QWidget*>()) {
        said << QLatin1String(w->metaObject()->className()) << w->objectName()
             << w->accessibleName() << QString::number(static_cast<int>(w->isEnabled()));
        if (const auto* label = qobject_cast<const QLabel*>(w)) {
            said << label->text();
        } else if (const auto* button = qobject_cast<const QAbstractButton*>(w)) {
            said << button->text() << QString::number(static_cast<int>(button->isChecked()));
        } else if (const auto* edit = qobject_cast<const QLineEdit*>(w)) {
            said << edit->placeholderText();
        }
    }
    return said.join(QChar(0x1f));
}

} // namespace

AgentsScreen::AgentsScreen(AgentsModel& model, QWidget* parent) : QWidget(parent), model_(model) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(space::xl, space::l, space::xl, space::l);
    layout->setSpacing(space::m);
    auto* actions = new QHBoxLayout();
    actions->addWidget(
        new ScreenHeader(QStringLiteral("Agents"), sectionSubtitle(AppSection::Agents), this), 1);
    state_ = quietLabel(QString(), this);
    state_->setWordWrap(false);
    refresh_ = new QPushButton(tr("&Refresh"), this);
    refresh_->setObjectName(QStringLiteral("refreshAgents"));
    refresh_->setDefault(true);
    actions->addWidget(state_, 0, Qt::AlignTop);
    actions->addWidget(refresh_, 0, Qt::AlignTop);
    layout->addLayout(actions);

    cards_ = new QVBoxLayout();
    cards_->setSpacing(space::m);
    layout->addLayout(cards_);

    auto* spendBox = new Card(tr("Spend"), this, "chart.pie");
    QBoxLayout* spend = spendBox->body();
    spend->addWidget(quietLabel(QString::fromLatin1(kSpendBasis), spendBox));
    auto* top = new QHBoxLayout();
    period_ = new QComboBox(spendBox);
    period_->setObjectName(QStringLiteral("spendPeriod"));
    period_->setAccessibleName(tr("Period"));
    for (UsagePeriod p : kAllUsagePeriods) {
        period_->addItem(title(p), static_cast<int>(p));
    }
    total_ = new QLabel(spendBox);
    total_->setObjectName(QStringLiteral("spendTotal"));
    setTextStyle(total_, TextStyle::Headline);
    top->addWidget(period_);
    top->addWidget(total_, 1);
    spend->addLayout(top);
    modelLines_ = new QVBoxLayout();
    spend->addLayout(modelLines_);
    chart_ = new SpendChart(spendBox);
    chart_->setObjectName(QStringLiteral("spendChart"));
    spend->addWidget(chart_);
    layout->addWidget(spendBox);
    layout->addStretch(1);

    // The limits from the services, and the spend from the logs, which grow as the agents work.
    connect(refresh_, &QPushButton::clicked, this, [this] {
        model_.refresh();
        model_.loadSpend();
    });
    connect(period_, &QComboBox::currentIndexChanged, this,
            [this] { model_.setPeriod(static_cast<UsagePeriod>(period_->currentData().toInt())); });
    // Queued: a card's own button may be what changed the cards, and it must not be deleted
    // while it is still handling its click.
    connect(&model_, &AgentsModel::cardsChanged, this, &AgentsScreen::renderCards,
            Qt::QueuedConnection);
    connect(&model_, &AgentsModel::spendChanged, this, &AgentsScreen::renderSpend);
    holdWhileShown(
        this, [&m = model_] { m.acquire(); }, [&m = model_] { m.release(); });
    clock_.setInterval(30'000);
    connect(&clock_, &QTimer::timeout, this, &AgentsScreen::renderCards);
    renderCards();
    renderSpend();
}

void AgentsScreen::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    model_.loadSpend();
    clock_.start();
}

void AgentsScreen::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    clock_.stop();
}

void AgentsScreen::renderCards() {
    // Keys typed but not saved survive a redraw.
    std::map<QString, QString> typed;
    for (auto* edit : findChildren<QLineEdit*>()) {
        typed[edit->objectName()] = edit->text();
    }
    std::vector<QWidget*> built;
    for (int i = 0; i < static_cast<int>(model_.cards().size()); ++i) {
        built.push_back(buildCard(i));
    }
    // A card that would say the same stays, its bars moved in place: every new button is drawn
    // anew into the style's pixmap cache, and the clock and each fetch asked for new cards, which
    // filled the cache. The others are replaced one by one, so an answer for one agent leaves
    // the rest alone.
    std::vector<QWidget*> added;
    if (cards_->count() != static_cast<int>(built.size())) {
        while (QLayoutItem* item = cards_->takeAt(0)) {
            delete item->widget();
            delete item;
        }
        for (QWidget* card : built) {
            cards_->addWidget(card);
        }
        added = built;
    } else {
        for (int i = 0; i < cards_->count(); ++i) {
            QWidget* shown = cards_->itemAt(i)->widget();
            QWidget* fresh = built[static_cast<std::size_t>(i)];
            if (contentOf(shown) == contentOf(fresh)) {
                const auto shownBars = shown->findChildren<LimitBar*>();
                const auto freshBars = fresh->findChildren<LimitBar*>();
                for (qsizetype b = 0; b < shownBars.size(); ++b) {
                    shownBars[b]->setValues(freshBars[b]->used(), freshBars[b]->evenPace());
                }
                delete fresh;
            } else {
                delete cards_->replaceWidget(shown, fresh);
                delete shown;
                added.push_back(fresh);
            }
        }
    }
    for (QWidget* card : added) {
        for (auto* edit : card->findChildren<QLineEdit*>()) {
            edit->setText(typed[edit->objectName()]);
        }
    }
    refresh_->setEnabled(!model_.isLoading());
    state_->setText(model_.isLoading() ? tr("Fetching…") : QString());
}

QWidget* AgentsScreen::buildCard(int index) {
    const AgentsModel::Card& c = model_.cards()[static_cast<std::size_t>(index)];
    const QString key = rawValue(c.provider);
    const QDateTime now = QDateTime::currentDateTimeUtc();
    auto* box = new Card(title(c.provider), this, "cpu");
    box->setObjectName(QStringLiteral("card_") + key);
    QBoxLayout* v = box->body();

    auto* head = new QHBoxLayout();
    head->addWidget(quietLabel(source(c.provider), box), 1);
    auto* enabled = new QCheckBox(tr("Show"), box);
    enabled->setObjectName(QStringLiteral("enable_") + key);
    enabled->setChecked(c.enabled);
    enabled->setAccessibleName(tr("Show %1").arg(title(c.provider)));
    auto* up = new QToolButton(box);
    up->setArrowType(Qt::UpArrow);
    up->setObjectName(QStringLiteral("up_") + key);
    up->setAccessibleName(tr("Move %1 up").arg(title(c.provider)));
    up->setEnabled(index > 0);
    auto* down = new QToolButton(box);
    down->setArrowType(Qt::DownArrow);
    down->setObjectName(QStringLiteral("down_") + key);
    down->setAccessibleName(tr("Move %1 down").arg(title(c.provider)));
    down->setEnabled(index + 1 < static_cast<int>(model_.cards().size()));
    head->addWidget(enabled);
    head->addWidget(up);
    head->addWidget(down);
    v->addLayout(head);
    const AgentProvider provider = c.provider;
    connect(enabled, &QCheckBox::toggled, this,
            [this, provider](bool on) { model_.setEnabled(provider, on); });
    connect(up, &QToolButton::clicked, this, [this, provider] { model_.move(provider, -1); });
    connect(down, &QToolButton::clicked, this, [this, provider] { model_.move(provider, 1); });

    if (!c.enabled) {
        return box;
    }
    if (c.loading && !c.report && !c.error) {
        v->addWidget(quietLabel(tr("Fetching…"), box));
    }
    if (c.error) {
        auto* error = new QLabel(c.error->message(), box);
        error->setObjectName(QStringLiteral("error_") + key);
        error->setWordWrap(true);
        if (c.error->kind == AgentUsageError::Kind::RateLimited && c.notBefore.isValid()) {
            error->setText(error->text() + QLatin1Char(' ') +
                           tr("Tarvik asks again after %1.")
                               .arg(QLocale().toString(c.notBefore.toLocalTime().time(),
                                                       QLocale::ShortFormat)));
        }
        v->addWidget(error);
    } else if (c.report) {
        const AgentUsageReport& r = *c.report;
        const ReportWords words = describe(r, now);
        if (!words.about.isEmpty()) {
            v->addWidget(new QLabel(words.about, box));
        }
        auto* grid = new QGridLayout();
        int row = 0;
        for (std::size_t i = 0; i < r.limits.size(); ++i) {
            const UsageLimit& l = r.limits[i];
            auto* bar = new LimitBar(box);
            bar->setObjectName(QStringLiteral("limit_") + key + QLatin1Char('_') + l.id);
            bar->setValues(l.used, l.elapsed(now));
            bar->setAccessibleName(l.title + QStringLiteral(": ") + percentUsed(l.used));
            grid->addWidget(new QLabel(l.title, box), row, 0);
            grid->addWidget(bar, row, 1);
            grid->addWidget(quietLabel(words.limits[i].text, box), row, 2);
            ++row;
        }
        for (const ReportWords::Line& credit : words.credits) {
            grid->addWidget(new QLabel(credit.title, box), row, 0);
            grid->addWidget(quietLabel(credit.text, box), row, 1, 1, 2);
            ++row;
        }
        grid->setColumnStretch(1, 1);
        v->addLayout(grid);
        for (const QString& note : r.notes) {
            v->addWidget(quietLabel(note, box));
        }
    }

    // A key to paste where the provider takes one.
    if (provider == AgentProvider::OpenRouter || provider == AgentProvider::Copilot) {
        auto* keyRow = new QHBoxLayout();
        auto* field = new QLineEdit(box);
        field->setObjectName(QStringLiteral("key_") + key);
        field->setEchoMode(QLineEdit::Password);
        field->setPlaceholderText(provider == AgentProvider::OpenRouter
                                      ? tr("OpenRouter API key")
                                      : tr("GitHub token (optional)"));
        field->setAccessibleName(field->placeholderText());
        auto* save = new QPushButton(tr("Save Key"), box);
        save->setObjectName(QStringLiteral("saveKey_") + key);
        auto* forget = new QPushButton(tr("Forget Key"), box);
        forget->setObjectName(QStringLiteral("clearKey_") + key);
        auto* message = new QLabel(c.keyMessage, box);
        message->setObjectName(QStringLiteral("keyMessage_") + key);
        message->setWordWrap(true);
        keyRow->addWidget(field, 1);
        keyRow->addWidget(save);
        keyRow->addWidget(forget);
        if (provider == AgentProvider::OpenRouter) {
            auto* page = new QPushButton(tr("Get a Key…"), box);
            connect(page, &QPushButton::clicked, this, [] {
                QDesktopServices::openUrl(QUrl(QString::fromLatin1(OpenRouterUsage::kKeysPage)));
            });
            keyRow->addWidget(page);
        }
        v->addLayout(keyRow);
        v->addWidget(message);
        connect(save, &QPushButton::clicked, this, [this, provider, field] {
            model_.saveKey(provider, field->text());
            field->clear(); // the keyring holds it now, not this window
        });
        connect(forget, &QPushButton::clicked, this,
                [this, provider] { model_.clearKey(provider); });
    }
    return box;
}

void AgentsScreen::renderSpend() {
    while (QLayoutItem* item = modelLines_->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    const auto& s = model_.spend();
    if (const QString note = UsageFormat::skippedLines(model_.skippedLines()); !note.isEmpty()) {
        auto* row = new QLabel(note, this);
        row->setObjectName(QStringLiteral("skippedLines"));
        modelLines_->addWidget(row);
    }
    if (model_.isSpendLoading() && !s) {
        total_->setText(tr("Reading the logs…"));
        chart_->hide();
        return;
    }
    if (!s || s->models.empty()) {
        total_->clear();
        chart_->showEmpty(UsageFormat::noUsage(model_.period()));
        chart_->show();
        return;
    }
    total_->setText(
        tr("%1 · %2 tokens")
            .arg(UsageFormat::dollars(s->totalCost), UsageFormat::tokens(s->totalTokens)));
    for (const ModelLine& line : s->models) {
        auto* row = new QLabel(
            tr("%1 — %2 · %3 tokens")
                .arg(line.model,
                     line.cost ? UsageFormat::dollars(*line.cost) : tr("no public price"),
                     UsageFormat::tokens(line.tokens)),
            this);
        row->setObjectName(QStringLiteral("modelLine"));
        modelLines_->addWidget(row);
    }
    // One day is no series: the chart shows from two days on.
    chart_->setDays(model_.days());
    chart_->setVisible(model_.days().size() > 1);
}

} // namespace tarvik
