#pragma once

#include <QString>

namespace tarvik::test {

// A menu command's, button's or tab's text as Qt shows it: "&&" is one "&", and a lone "&"
// only marks the shortcut letter after it.
inline QString shownText(const QString& text) {
    QString out;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == QLatin1Char('&') && i + 1 < text.size()) {
            ++i;
        }
        out += text[i];
    }
    return out;
}

} // namespace tarvik::test
