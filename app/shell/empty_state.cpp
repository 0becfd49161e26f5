#include "app/shell/empty_state.h"

#include "app/shell/symbol_label.h"
#include "app/shell/theme.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarvik {

EmptyState::EmptyState(std::string_view symbol, const QString& sentence, QWidget* parent)
    : QWidget(parent) {
    setObjectName(QStringLiteral("emptyState"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(space::xl, space::xl, space::xl, space::xl);
    layout->setSpacing(space::m);
    layout->addStretch(1);
    layout->addWidget(new SymbolLabel(symbol, 48, true, this), 0, Qt::AlignHCenter);
    sentence_ = new QLabel(sentence, this);
    sentence_->setObjectName(QStringLiteral("emptySentence"));
    sentence_->setWordWrap(true);
    sentence_->setAlignment(Qt::AlignCenter);
    sentence_->setOpenExternalLinks(true); // a sentence may name where to get what is missing
    sentence_->setTextInteractionFlags(Qt::TextBrowserInteraction);
    setTextStyle(sentence_, TextStyle::Secondary);
    layout->addWidget(sentence_);
    layout->addStretch(1);
}

void EmptyState::setSentence(const QString& sentence) {
    sentence_->setText(sentence);
}

QString EmptyState::sentence() const {
    return sentence_->text();
}

QPushButton* EmptyState::setAction(const QString& label) {
    if (action_ == nullptr) {
        action_ = new QPushButton(this);
        action_->setObjectName(QStringLiteral("emptyAction"));
        auto* layout = static_cast<QVBoxLayout*>(this->layout());
        layout->insertWidget(layout->count() - 1, action_, 0, Qt::AlignHCenter);
    }
    action_->setText(label);
    return action_;
}

} // namespace tarvik
