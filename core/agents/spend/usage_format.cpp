#include "core/agents/spend/usage_format.h"

#include <algorithm>
#include <cmath>

namespace tarvik::UsageFormat {

QString dollars(double value) {
    const QString sign = std::round(value * 100.0) < 0 ? QStringLiteral("-$") : QStringLiteral("$");
    const double magnitude = std::fabs(value);
    // Decided on the rounded cents, so 999.999 is written "$1,000", not "$1000.00".
    if (!std::isfinite(magnitude) || std::round(magnitude * 100.0) < 100'000.0) {
        return sign + QString::asprintf("%.2f", std::isfinite(magnitude) ? magnitude : 0.0);
    }
    const QString digits = QString::number(std::llround(std::min(magnitude, 1e15)));
    QString grouped;
    for (qsizetype i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0) {
            grouped += QLatin1Char(',');
        }
        grouped += digits[i];
    }
    return sign + grouped;
}

QString tokens(std::int64_t count) {
    const double n = static_cast<double>(count);
    if (n >= 1e9) {
        return QString::asprintf("%.1fB", n / 1e9);
    }
    if (n >= 1e6) {
        return QString::asprintf("%.1fM", n / 1e6);
    }
    if (n >= 1000) {
        return QString::asprintf("%.0fK", n / 1000);
    }
    return QString::number(count);
}

QString skippedLines(std::int64_t count) {
    if (count <= 0) {
        return {};
    }
    return count == 1 ? QStringLiteral("One log line longer than 16 MiB was skipped.")
                      : QStringLiteral("%1 log lines longer than 16 MiB were skipped.").arg(count);
}

QString noUsage(UsagePeriod period) {
    switch (period) {
    case UsagePeriod::Today:
        return QStringLiteral("Claude Code and Codex logged no usage today.");
    case UsagePeriod::Yesterday:
        return QStringLiteral("Claude Code and Codex logged no usage yesterday.");
    case UsagePeriod::Last30Days:
        return QStringLiteral("Claude Code and Codex logged no usage in the last 30 days.");
    }
    return {};
}

} // namespace tarvik::UsageFormat
