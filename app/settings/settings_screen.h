#pragma once

#include "app/shell/background_job.h"
#include "core/monitor/menu_bar_stat.h"
#include "core/shell/app_permission.h"

#include <QWidget>
#include <functional>
#include <map>
#include <string_view>

class QCheckBox;
class QComboBox;
class QListWidget;
class QDoubleSpinBox;
class QLabel;
class QPushButton;

namespace tarvik {

class LoginItem;
class Preferences;

// The shell's settings: the tray item and its readings, start-up, the sampling interval and the
// permission statuses. Every row writes straight to the preference store.
class SettingsScreen : public QWidget {
    Q_OBJECT
public:
    SettingsScreen(Preferences& preferences, LoginItem& loginItem, QWidget* parent = nullptr);

    // Adds a folder to the exclusions (the "Add Folder…" button asks for one).
    void addExclusion(const QString& path);

    // Whether a tray host exists; when none does the screen says so.
    void setTrayAvailable(bool available);

protected:
    void showEvent(QShowEvent* event) override;

private:
    QWidget* boolRow(std::string_view key, const QString& label, const QString& note = {});
    void syncFromPreferences();
    void setLoginItem(bool on);
    void probePermissions();
    QWidget* cleaningGroup();
    QWidget* homebrewGroup();
    void refreshExclusions();

    Preferences& prefs_;
    LoginItem& loginItem_;
    std::map<std::string_view, QCheckBox*> boolRows_;
    std::map<MenuBarStat, QCheckBox*> statRows_;
    QDoubleSpinBox* interval_ = nullptr;
    QCheckBox* login_ = nullptr;
    QLabel* loginError_ = nullptr;
    QLabel* noTray_ = nullptr;
    std::map<std::string_view, QComboBox*> modeRows_;
    QListWidget* exclusions_ = nullptr;
    QComboBox* brewInterval_ = nullptr;
    QLabel* noExclusions_ = nullptr;
    QPushButton* stopExcluding_ = nullptr;
    std::map<AppPermission, QLabel*> permissionStatus_;
    BackgroundJob<PermissionStatuses> permissionJob_;
};

} // namespace tarvik
