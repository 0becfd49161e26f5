#pragma once

#include <QWidget>
#include <string_view>

class QLabel;
class QPushButton;

namespace tarvik {

// What a view shows before it has anything: a symbol, one sentence that says why it is empty,
// and the action that fills it.
class EmptyState : public QWidget {
    Q_OBJECT
public:
    EmptyState(std::string_view symbol, const QString& sentence, QWidget* parent = nullptr);

    void setSentence(const QString& sentence);
    QString sentence() const;
    // The button that fills the view; there is none until it is given a label.
    QPushButton* setAction(const QString& label);
    QPushButton* action() const { return action_; }

private:
    QLabel* sentence_ = nullptr;
    QPushButton* action_ = nullptr;
};

} // namespace tarvik
