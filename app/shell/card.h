#pragma once

#include <QFrame>
#include <string_view>

class QBoxLayout;
class QLabel;

namespace tarvik {

// A rounded panel on the window's background: the unit every screen groups its content in, with
// the same padding everywhere and an optional heading with the section's symbol.
class Card : public QFrame {
    Q_OBJECT
public:
    explicit Card(QWidget* parent = nullptr);
    // A heading, with the symbol before it when one is named.
    explicit Card(const QString& heading, QWidget* parent = nullptr, std::string_view symbol = {});

    // The card's own content goes here, below the heading.
    QBoxLayout* body() const { return body_; }
    QLabel* heading() const { return heading_; }
    // Widgets at the heading's right (a button, a status).
    void addHeaderWidget(QWidget* widget);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QBoxLayout* header_ = nullptr;
    QBoxLayout* body_ = nullptr;
    QLabel* heading_ = nullptr;
};

} // namespace tarvik
