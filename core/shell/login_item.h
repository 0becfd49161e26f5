#pragma once

#include <QString>
#include <QStringList>

namespace tarvik {

struct LoginItemError {
    QString message;
};

// Start at login through an XDG autostart entry whose Exec passes --login-item.
class LoginItem {
public:
    static constexpr const char* kLoginFlag = "--login-item";
    static constexpr const char* kEntryName = "org.pellor.tarvik.desktop";

    LoginItem(QString autostartDir, QString executable);

    QString entryPath() const;
    // Enabled when our entry exists and no desktop has hidden or disabled it.
    bool isEnabled() const;
    // Turning on when already on, or off when already off, does nothing. Throws LoginItemError.
    void setEnabled(bool on);

    static bool currentLaunchIsLogin(const QStringList& arguments);
    static QString entryText(const QString& executable);
    // Quotes a path for a desktop entry's Exec key when it needs quoting.
    static QString quoteExecArgument(const QString& argument);

private:
    QString dir_;
    QString executable_;
};

} // namespace tarvik
