#pragma once

#include <QString>

namespace tarvik {

// `text` shown as written on a menu command, button or tab. There a lone "&" marks the next
// letter as the shortcut ("Large & Old Files" would show as "Large _Old Files" and take Alt+O),
// so each "&" is doubled. For section titles and anything a person typed.
inline QString menuText(QString text) {
    return text.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

} // namespace tarvik
