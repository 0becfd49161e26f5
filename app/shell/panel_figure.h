#pragma once

#include "core/monitor/menu_bar_stat.h"

#include <QWidget>
#include <optional>
#include <vector>

class QLabel;

namespace tarvik {

class Sparkline;

// One headline figure of the tray panel: what it is (with the reading's symbol), the figure large,
// a line of detail and the recent history where there is one. For a part the machine lacks it says
// so in a sentence instead of showing a zero.
class PanelFigure : public QWidget {
    Q_OBJECT
public:
    PanelFigure(const QString& caption, std::optional<MenuBarStat> glyph, QWidget* parent);

    // The figure takes its level's colour only when that means watch or critical.
    void setFigure(const QString& value, const QString& detail,
                   ReadingLevel level = ReadingLevel::Neutral);
    // Fractions 0…1, or rates scaled to the largest shown.
    void setHistory(std::vector<double> values, bool rates);
    void setAbsent(const QString& sentence);

    QString value() const;
    QString detail() const;

private:
    QLabel* value_ = nullptr;
    QLabel* detail_ = nullptr;
    Sparkline* chart_ = nullptr;
};

} // namespace tarvik
