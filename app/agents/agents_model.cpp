#include "app/agents/agents_model.h"

#include "core/agents/spend/local_usage_logs.h"
#include "core/settings/preferences.h"
#include "core/sys/secret_store.h"

#include <algorithm>

namespace tarvik {
namespace {

constexpr int kRefreshMs = 5 * 60 * 1000;

SecretStore keyring() {
    return SecretStore(QString::fromLatin1(kAgentKeysService));
}

} // namespace

AgentsModel::AgentsModel(Preferences& preferences, QObject* parent)
    : QObject(parent), prefs_(preferences), spendJob_(this, {}, [this](Spend s) {
          if (s.period != period_ || spendAgain_) {
              // The period changed, or the logs were asked for again, while this was read: it
              // may be missing what was logged since it began.
              loadSpend();
              return;
          }
          spend_ = std::move(s.summary);
          days_ = std::move(s.days);
          skippedLines_ = s.skippedLines;
          emit spendChanged();
      }) {
    loadOrder();
    timer_.setInterval(kRefreshMs);
    connect(&timer_, &QTimer::timeout, this, &AgentsModel::refresh);
}

AgentsModel::~AgentsModel() = default;

void AgentsModel::loadOrder() {
    std::vector<Card> cards;
    for (const auto& [provider, on] :
         providersInOrder(prefs_.value(pref::kAgentUsageOrder).toString(),
                          prefs_.value(pref::kAgentUsageEnabled).toString())) {
        const auto old = std::find_if(cards_.begin(), cards_.end(),
                                      [p = provider](const Card& c) { return c.provider == p; });
        Card c = old != cards_.end() ? *old : Card{};
        c.provider = provider;
        c.enabled = on;
        cards.push_back(std::move(c));
    }
    cards_ = std::move(cards);
}

void AgentsModel::saveOrder() {
    std::vector<AgentProvider> order;
    std::vector<AgentProvider> enabled;
    for (const Card& c : cards_) {
        order.push_back(c.provider);
        if (c.enabled) {
            enabled.push_back(c.provider);
        }
    }
    prefs_.setValue(pref::kAgentUsageOrder, providerListText(order));
    prefs_.setValue(pref::kAgentUsageEnabled, providerListText(enabled));
}

const AgentsModel::Card* AgentsModel::card(AgentProvider provider) const {
    const auto it = std::find_if(cards_.begin(), cards_.end(),
                                 [provider](const Card& c) { return c.provider == provider; });
    return it == cards_.end() ? nullptr : &*it;
}

bool AgentsModel::isLoading() const {
    return std::any_of(cards_.begin(), cards_.end(), [](const Card& c) { return c.loading; });
}

void AgentsModel::refresh() {
    for (Card& c : cards_) {
        if (c.enabled && !c.loading &&
            (!c.notBefore.isValid() || QDateTime::currentDateTimeUtc() >= c.notBefore)) {
            fetch(c);
        }
    }
    emit cardsChanged();
}

AgentsModel::Card* AgentsModel::find(AgentProvider provider) {
    const auto it = std::find_if(cards_.begin(), cards_.end(),
                                 [provider](const Card& c) { return c.provider == provider; });
    return it == cards_.end() ? nullptr : &*it;
}

void AgentsModel::fetch(Card& card) {
    const AgentProvider provider = card.provider;
    card.loading = true;
    if (provider == AgentProvider::Copilot || provider == AgentProvider::OpenRouter) {
        // The keyring answers on this thread's event loop; the request then goes to a worker.
        keyring().read(pastedKeyName(provider), this,
                       [this, provider](std::optional<QString> key) { startFetch(provider, key); });
    } else {
        startFetch(provider, std::nullopt);
    }
}

void AgentsModel::startFetch(AgentProvider provider, std::optional<QString> key) {
    auto& job = fetches_[provider];
    if (!job) {
        job = std::make_unique<BackgroundJob<Outcome>>(
            this, std::function<void(const double&)>{},
            [this, provider](Outcome outcome) { finishFetch(provider, std::move(outcome)); },
            JobThread::Own);
    }
    if (job->isRunning()) {
        // Asked again while a request is out (a new key, a refresh): it goes once this one ends.
        again_[provider] = key;
        return;
    }
    job->start([provider, key](JobContext<double>& context) -> Outcome {
        try {
            AgentUsageClient::Options options;
            options.pastedKey = [key](AgentProvider) {
                return key;
            };
            options.cancel = context.cancelFlag();
            AgentUsageClient client(options);
            return client.fetch(provider, QDateTime::currentDateTimeUtc());
        } catch (const AgentUsageError& e) {
            return e;
        }
    });
}

void AgentsModel::finishFetch(AgentProvider provider, Outcome outcome) {
    if (const auto again = again_.find(provider); again != again_.end()) {
        const std::optional<QString> key = again->second;
        again_.erase(again);
        startFetch(provider, key);
        return;
    }
    for (Card& c : cards_) {
        if (c.provider != provider) {
            continue;
        }
        c.loading = false;
        if (const auto* report = std::get_if<AgentUsageReport>(&outcome)) {
            c.report = *report;
            c.error.reset();
        } else {
            c.error = std::get<AgentUsageError>(outcome);
            if (c.error->kind == AgentUsageError::Kind::RateLimited) {
                c.notBefore = QDateTime::currentDateTimeUtc().addMSecs(
                    static_cast<qint64>(c.error->retryAfter * 1000));
            }
        }
    }
    emit cardsChanged();
}

void AgentsModel::setEnabled(AgentProvider provider, bool enabled) {
    for (Card& c : cards_) {
        if (c.provider == provider && c.enabled != enabled) {
            c.enabled = enabled;
            saveOrder();
            if (enabled && holders_ > 0) {
                fetch(c);
            }
            emit cardsChanged();
        }
    }
}

void AgentsModel::move(AgentProvider provider, int delta) {
    const auto it = std::find_if(cards_.begin(), cards_.end(),
                                 [provider](const Card& c) { return c.provider == provider; });
    const auto from = std::distance(cards_.begin(), it);
    const auto to = from + delta;
    if (it == cards_.end() || to < 0 || to >= static_cast<long>(cards_.size())) {
        return;
    }
    std::swap(cards_[static_cast<std::size_t>(from)], cards_[static_cast<std::size_t>(to)]);
    saveOrder();
    emit cardsChanged();
}

void AgentsModel::saveKey(AgentProvider provider, const QString& key) {
    const QString trimmed = key.trimmed();
    if (trimmed.isEmpty()) {
        keyChanged(provider, QStringLiteral("Paste a key first."));
        return;
    }
    keyring().write(pastedKeyName(provider), trimmed, this,
                    [this, provider](SecretStore::Result r) { keyChanged(provider, r.error); });
}

void AgentsModel::clearKey(AgentProvider provider) {
    keyring().remove(pastedKeyName(provider), this,
                     [this, provider](SecretStore::Result r) { keyChanged(provider, r.error); });
}

void AgentsModel::keyChanged(AgentProvider provider, const QString& error) {
    Card* c = find(provider);
    if (c == nullptr) {
        return;
    }
    c->keyMessage = error;
    if (error.isEmpty() && c->enabled && !c->loading) {
        c->notBefore = {}; // a new key deserves a fresh answer
        fetch(*c);
    }
    emit cardsChanged();
}

void AgentsModel::acquire() {
    if (holders_++ == 0) {
        timer_.start();
        refresh();
    }
}

void AgentsModel::release() {
    if (holders_ > 0 && --holders_ == 0) {
        timer_.stop();
    }
}

void AgentsModel::setPeriod(UsagePeriod period) {
    if (period != period_) {
        period_ = period;
        loadSpend();
    }
}

void AgentsModel::loadSpend() {
    // Asked while a reading runs: another follows it.
    spendAgain_ = !spendJob_.start([period = period_](JobContext<double>&) {
        const QDateTime now = QDateTime::currentDateTime();
        const LocalUsageLogs::Found found = LocalUsageLogs::read(interval(period, now).start);
        return Spend{period, UsageSummary::of(found.events, period, now),
                     DailySpend::series(found.events, period, now), found.skippedLines};
    });
    if (!spendAgain_) {
        emit spendChanged();
    }
}

AgentSessionReading AgentsModel::sessionReading() const {
    for (const Card& c : cards_) {
        if (!c.enabled) {
            continue;
        }
        AgentSessionReading r{title(c.provider), std::nullopt, {}};
        if (c.report && !c.report->limits.empty()) {
            r.left = c.report->limits.front().remaining();
        } else if (c.error) {
            r.problem = c.error->menuText();
        } else {
            r.problem = QStringLiteral("Not measured yet");
        }
        return r;
    }
    return {QString(), std::nullopt, QStringLiteral("No agent enabled")};
}

} // namespace tarvik
