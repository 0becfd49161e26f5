#pragma once

#include <QLabel>
#include <QPushButton>
#include <QString>

// Small pieces both Dock Folders tabs build with.
namespace tarvik::dock_widgets {

// A message label shown only while it has something to say.
inline void showText(QLabel* label, const QString& text) {
    label->setText(text);
    label->setVisible(!text.isEmpty());
}

// A button with the object name tests and styles find it by.
inline QPushButton* button(const QString& text, const QString& name, QWidget* parent) {
    auto* b = new QPushButton(text, parent);
    b->setObjectName(name);
    return b;
}

} // namespace tarvik::dock_widgets
