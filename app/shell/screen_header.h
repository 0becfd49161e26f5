#pragma once

#include <QWidget>

class QLabel;

namespace tarvik {

// Every screen's title and one-line subtitle.
class ScreenHeader : public QWidget {
    Q_OBJECT
public:
    ScreenHeader(const QString& title, const QString& subtitle, QWidget* parent = nullptr);
};

} // namespace tarvik
