#include "app/awake/lock_overlay.h"

#include "app/awake/keyboard_lock.h"
#include "core/awake/keep_awake_texts.h"

#include <QDeadlineTimer>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>

namespace tarvik {

LockOverlay::LockOverlay(KeyboardLock& lock)
    : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                           Qt::BypassWindowManagerHint),
      lock_(lock) {
    setObjectName(QStringLiteral("keyboardLockOverlay"));
    setAttribute(Qt::WA_DeleteOnClose, false);
    setCursor(Qt::BlankCursor);
    auto* layout = new QVBoxLayout(this);
    layout->addStretch(1);
    auto* title = new QLabel(awake_text::keyboardCleaning(), this);
    QFont big = title->font();
    big.setPointSizeF(big.pointSizeF() * 2.4);
    big.setBold(true);
    title->setFont(big);
    auto* message = new QLabel(awake_text::keyboardLockedText(), this);
    QFont larger = message->font();
    larger.setPointSizeF(larger.pointSizeF() * 1.4);
    message->setFont(larger);
    count_ = new QLabel(this);
    count_->setFont(larger);
    count_->setObjectName(QStringLiteral("escapeCount"));
    note_ = new QLabel(this);
    note_->setObjectName(QStringLiteral("lockNote"));
    note_->setWordWrap(true);
    for (QLabel* l : {title, message, count_, note_}) {
        l->setAlignment(Qt::AlignCenter);
        QPalette p = l->palette();
        p.setColor(QPalette::WindowText, Qt::white);
        l->setPalette(p);
        layout->addWidget(l);
    }
    layout->addStretch(1);
    connect(&lock_, &KeyboardLock::escapeCountChanged, this, &LockOverlay::showCount);
    showCount(0);
}

void LockOverlay::showCount(int count) {
    QString dots;
    for (int i = 0; i < kEscapesToUnlock; ++i) {
        dots += i < count ? QStringLiteral("● ") : QStringLiteral("○ ");
    }
    count_->setText(
        tr("Press Escape %1 times to unlock   %2").arg(kEscapesToUnlock).arg(dots.trimmed()));
}

void LockOverlay::setDevicesHeld(bool held) {
    note_->setText(held ? QString() : awake_text::shortcutsMayStillWork());
}

bool LockOverlay::showAndGrab() {
    QRect all;
    for (QScreen* s : QGuiApplication::screens()) {
        all = all.united(s->geometry());
    }
    setGeometry(all.isValid() ? all : QRect(0, 0, 800, 600));
    show();
    raise();
    activateWindow();
    QWindow* w = windowHandle();
    if (w == nullptr) {
        return false;
    }
    // The window system grants a grab only once the window is on screen, and a menu that is
    // just closing (the tray's) may hold the pointer a moment longer.
    const QDeadlineTimer deadline(1500);
    while (!deadline.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        if (!w->isExposed() || !w->setKeyboardGrabEnabled(true)) {
            continue;
        }
        if (w->setMouseGrabEnabled(true)) {
            return true;
        }
        w->setKeyboardGrabEnabled(false); // half a grab would let clicks through
    }
    return false;
}

void LockOverlay::releaseAndClose() {
    if (QWindow* w = windowHandle()) {
        w->setKeyboardGrabEnabled(false);
        w->setMouseGrabEnabled(false);
    }
    hide();
}

namespace {

// Modifiers and lock keys are held or toggled while typing, not typed: they leave the Escape
// count alone.
bool isModifier(int key) {
    switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Meta:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
    case Qt::Key_Hyper_L:
    case Qt::Key_Hyper_R:
    case Qt::Key_CapsLock:
    case Qt::Key_Mode_switch:
        return true;
    default:
        return false;
    }
}

} // namespace

bool LockOverlay::event(QEvent* e) {
    switch (e->type()) {
    case QEvent::KeyPress: {
        auto* k = static_cast<QKeyEvent*>(e);
        if (isModifier(k->key())) {
            return true; // swallowed, and not a key in between the Escapes
        }
        lock_.keyPressed(k->key() == Qt::Key_Escape, k->isAutoRepeat(),
                         KeyboardLock::uptimeSeconds());
        return true;
    }
    case QEvent::ShortcutOverride: // take every key before any shortcut can
        e->accept();
        return true;
    case QEvent::KeyRelease:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
    case QEvent::Close: // no closing it with the window system's keys either
        e->ignore();
        return true;
    default:
        return QWidget::event(e);
    }
}

void LockOverlay::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.fillRect(rect(), QColor(16, 18, 24, 235));
}

} // namespace tarvik
