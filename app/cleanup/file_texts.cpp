#include "app/cleanup/file_texts.h"

#include "core/sys/file_names.h"
#include "core/text/metric_format.h"
#include "core/text/path_display.h"

#include <QLocale>

namespace tarvik::FileTexts {

QString preset(std::int64_t bytes) {
    QString text = MetricFormat::bytes(bytes);
    // Presets are round numbers; "50.0 MB" reads like a measurement.
    text.replace(QStringLiteral(".0 "), QStringLiteral(" "));
    return text;
}

QString date(const std::optional<QDateTime>& modified) {
    if (!modified || !modified->isValid()) {
        return QStringLiteral("Unknown");
    }
    return QLocale().toString(modified->toLocalTime().date(), QLocale::ShortFormat);
}

QString removalDetail(RemovalMode mode, int count) {
    if (mode == RemovalMode::DeletePermanently) {
        return count == 1 ? QStringLiteral("It will be deleted permanently. This can't be undone.")
                          : QStringLiteral("They will be deleted permanently. This can't be "
                                           "undone.");
    }
    return count == 1
               ? QStringLiteral("It will be moved to the Trash, where you can restore it.")
               : QStringLiteral("They will be moved to the Trash, where you can restore them.");
}

QString reportHtml(const CleanReport& report, const QString& home, const QString& one,
                   const QString& many) {
    QString text = QStringLiteral("<b>%1</b>").arg(cleanSummary(report, one, many).toHtmlEscaped());
    for (const auto& f : report.failures) {
        text +=
            QStringLiteral("<br>%1 — %2")
                .arg(fileName::display(PathDisplay::abbreviate(f.item.path, home)).toHtmlEscaped(),
                     f.message.toHtmlEscaped());
    }
    return text;
}

} // namespace tarvik::FileTexts
