#pragma once

#include "core/cleanup/clean_report.h"
#include "core/cleanup/removal_mode.h"

#include <QDateTime>
#include <QString>
#include <optional>

namespace tarvik::FileTexts {

// A size preset as a whole number where it is one: "50 MB", "1 GB", "1.5 GB".
QString preset(std::int64_t bytes);
// The day a file last changed, in the user's short format; "Unknown" without a date.
QString date(const std::optional<QDateTime>& modified);
// What removing `count` items will do, for the confirmation: "It will…" for one, "They will…"
// for more.
QString removalDetail(RemovalMode mode, int count);
// The report after a removal: what was removed and freed (of items named `one`/`many`), then
// each failure with its reason.
QString reportHtml(const CleanReport& report, const QString& home, const QString& one,
                   const QString& many);

} // namespace tarvik::FileTexts
