#pragma once

#include "app/shell/background_job.h"
#include "core/agents/limits/agent_usage_client.h"
#include "core/agents/spend/usage_period.h"
#include "core/agents/spend/usage_summary.h"
#include "core/monitor/menu_bar_readings.h"

#include <QObject>
#include <QTimer>
#include <map>
#include <memory>
#include <variant>

namespace tarvik {

class Preferences;

// The Agents screen's data: one card per provider in the chosen order, fetched in parallel,
// refreshed every five minutes while someone looks, never sooner than a rate limit allows; and
// the spend estimated from the local logs for a period.
class AgentsModel : public QObject {
    Q_OBJECT
public:
    struct Card {
        AgentProvider provider = AgentProvider::Claude;
        bool enabled = true;
        bool loading = false;
        std::optional<AgentUsageReport> report;
        std::optional<AgentUsageError> error;
        QDateTime notBefore; // after a rate limit: no request before this
        QString keyMessage;  // why a pasted key couldn't be kept or forgotten
    };
    using Outcome = std::variant<AgentUsageReport, AgentUsageError>;

    explicit AgentsModel(Preferences& preferences, QObject* parent = nullptr);
    ~AgentsModel() override;

    const std::vector<Card>& cards() const { return cards_; }
    const Card* card(AgentProvider provider) const;
    bool isLoading() const;

    // Asks every enabled provider that isn't waiting out a rate limit.
    void refresh();
    void setEnabled(AgentProvider provider, bool enabled);
    // Moves a card up (-1) or down (+1).
    void move(AgentProvider provider, int delta);
    // Keeps or forgets a pasted key in the keyring; a failure shows as the card's keyMessage.
    void saveKey(AgentProvider provider, const QString& key);
    void clearKey(AgentProvider provider);

    // Periodic refreshing runs while at least one holder looks (the screen, the tray reading).
    void acquire();
    void release();

    UsagePeriod period() const { return period_; }
    void setPeriod(UsagePeriod period);
    // Reads the logs again for the current period, off the interface thread; asked while a
    // reading runs, it reads them once more when that one ends.
    void loadSpend();
    bool isSpendLoading() const { return spendJob_.isRunning(); }
    const std::optional<UsageSummary>& spend() const { return spend_; }
    const std::vector<DailySpend>& days() const { return days_; }
    // Log lines too long to read in the last spend reading.
    std::int64_t skippedLines() const { return skippedLines_; }

    AgentSessionReading sessionReading() const;

signals:
    void cardsChanged();
    void spendChanged();

private:
    void loadOrder();
    void saveOrder();
    void fetch(Card& card);
    void startFetch(AgentProvider provider, std::optional<QString> key);
    void finishFetch(AgentProvider provider, Outcome outcome);
    Card* find(AgentProvider provider);
    void keyChanged(AgentProvider provider, const QString& error);

    Preferences& prefs_;
    std::vector<Card> cards_;
    std::map<AgentProvider, std::unique_ptr<BackgroundJob<Outcome>>> fetches_;
    std::map<AgentProvider, std::optional<QString>> again_; // asked while a fetch was out
    QTimer timer_;
    int holders_ = 0;
    UsagePeriod period_ = UsagePeriod::Today;
    struct Spend {
        UsagePeriod period;
        UsageSummary summary;
        std::vector<DailySpend> days;
        std::int64_t skippedLines = 0;
    };
    BackgroundJob<Spend> spendJob_;
    bool spendAgain_ = false;
    std::optional<UsageSummary> spend_;
    std::vector<DailySpend> days_;
    std::int64_t skippedLines_ = 0;
};

} // namespace tarvik
