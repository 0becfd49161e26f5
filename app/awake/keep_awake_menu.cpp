#include "app/awake/keep_awake_menu.h"

#include "app/awake/keyboard_lock.h"
#include "core/awake/keep_awake_controller.h"
#include "core/awake/keep_awake_texts.h"
#include "core/sys/permission_probe.h"

#include <QMenu>
#include <QMessageBox>
#include <QPushButton>

namespace tarvik {

namespace {

QMessageBox* messageBox(QMessageBox::Icon icon, const QString& title, const QString& text) {
    auto* box = new QMessageBox(icon, title, text);
    box->setAttribute(Qt::WA_DeleteOnClose);
    return box;
}

// Started from the tray, locking may fail with no window open to say so: it gets its own box.
void showLockFailure(const KeyboardLock& lock) {
    QMessageBox* box = messageBox(QMessageBox::Warning, awake_text::keyboardLockFailed(),
                                  awake_text::keyboardLockFailed());
    box->setObjectName(QStringLiteral("keyboardLockFailure"));
    box->setInformativeText(lock.failureDetail());
    QPushButton* open =
        box->addButton(awake_text::openAccessibilitySettings(), QMessageBox::ActionRole);
    box->addButton(QMessageBox::Close);
    QObject::connect(open, &QPushButton::clicked, [] {
        // Where no settings panel can grant it, this is what to do instead.
        const QString help = PermissionProbe().openSettings(AppPermission::Accessibility);
        if (!help.isEmpty()) {
            QMessageBox* helpBox =
                messageBox(QMessageBox::Information, awake_text::openAccessibilitySettings(), help);
            helpBox->setObjectName(QStringLiteral("accessibilityHelp"));
            helpBox->show();
        }
    });
    box->show();
}

} // namespace

void addManualSessions(QMenu* menu, KeepAwakeController& controller) {
    for (auto d : kManualDurations) {
        auto* a = menu->addAction(QObject::tr("Keep Awake for %1").arg(label(d)));
        QObject::connect(a, &QAction::triggered, &controller,
                         [&controller, d] { controller.startManual(d); });
    }
    auto* always = menu->addAction(indefiniteText());
    QObject::connect(always, &QAction::triggered, &controller,
                     [&controller] { controller.startManual(ManualSession::indefinite()); });
}

QMenu* keepAwakeMenu(KeepAwakeController& controller, KeyboardLock& lock, QMenu* parent) {
    auto* menu = parent->addMenu(QObject::tr("Keep Awake"));
    menu->setObjectName(QStringLiteral("keepAwakeMenu"));
    auto* status = menu->addAction(QString());
    status->setEnabled(false);
    auto* off = menu->addAction(QObject::tr("Turn Off"));
    QObject::connect(off, &QAction::triggered, &controller, &KeepAwakeController::turnOff);
    menu->addSeparator();
    addManualSessions(menu, controller);
    menu->addSeparator();
    auto* keyboard = menu->addAction(awake_text::keyboardCleaning() + QStringLiteral("…"));
    keyboard->setToolTip(awake_text::keyboardMenuText(kEscapesToUnlock));
    keyboard->setStatusTip(keyboard->toolTip());
    QObject::connect(keyboard, &QAction::triggered, &lock, [&lock] {
        if (!lock.begin()) {
            showLockFailure(lock);
        }
    });
    menu->setToolTipsVisible(true);

    auto refresh = [menu, status, off, &controller] {
        const KeepAwakeState state = controller.state();
        status->setText(state.isActive ? awake_text::status(state, controller.now())
                                       : awake_text::sleepSettingsApply());
        off->setVisible(state.isActive);
        menu->setTitle(state.isActive ? QObject::tr("Keep Awake: On") : QObject::tr("Keep Awake"));
    };
    QObject::connect(menu, &QMenu::aboutToShow, menu, refresh);
    QObject::connect(&controller, &KeepAwakeController::changed, menu, refresh);
    refresh();
    return menu;
}

} // namespace tarvik
