#include "app/settings/settings_screen.h"

#include "app/shell/card.h"
#include "app/shell/quiet_label.h"
#include "app/shell/screen_header.h"
#include "app/shell/section_subtitles.h"
#include "app/shell/theme.h"
#include "app/shell/tray_item.h"
#include "core/cleanup/removal_mode.h"
#include "core/settings/preferences.h"
#include "core/shell/login_item.h"
#include "core/sys/permission_probe.h"
#include "core/text/platform_words.h"
#include "core/text/qt_text.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QGridLayout>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

namespace tarvik {
namespace {

QLabel* noteLabel(const QString& text, QWidget* parent) {
    QLabel* label = quietLabel(text, parent);
    label->setContentsMargins(space::xl, 0, 0, space::xs); // under the control it is about
    return label;
}

} // namespace

SettingsScreen::SettingsScreen(Preferences& preferences, LoginItem& loginItem, QWidget* parent)
    : QWidget(parent), prefs_(preferences), loginItem_(loginItem),
      permissionJob_(
          this, {},
          [this](PermissionStatuses statuses) {
              for (auto& [p, label] : permissionStatus_) {
                  label->setText(statusText(statuses[p]));
              }
          },
          JobThread::Own) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(space::xl, space::l, space::xl, space::l);
    layout->setSpacing(space::m);
    layout->addWidget(
        new ScreenHeader(QStringLiteral("Settings"), sectionSubtitle(AppSection::Settings), this));

    // Tray item.
    auto* tray = new Card(tr("Tray item"), this);
    QBoxLayout* trayLayout = tray->body();
    trayLayout->addWidget(boolRow(pref::kShowMenuBarExtra, tr("Show Tarvik in the tray")));
    noTray_ = noteLabel(tr("No system tray was found on this desktop, so the tray item can't be "
                           "shown. Tarvik stays reachable from its window."),
                        tray);
    noTray_->hide();
    trayLayout->addWidget(noTray_);
    trayLayout->addWidget(boolRow(pref::kMenuBarShowsIcon, tr("Show the app symbol")));
    trayLayout->addWidget(boolRow(pref::kMenuBarShowsStats, tr("Show readings"),
                                  tr("One or two readings appear as numbers, more as bars, each "
                                     "behind its own sign. With the app symbol, the symbol shares "
                                     "the icon with the first reading. Hover over the item to "
                                     "read them all in words.")));
    auto* stats = new QGridLayout();
    stats->setContentsMargins(24, 0, 0, 0);
    int column = 0;
    for (MenuBarStat stat : kAllMenuBarStats) {
        auto* box = new QCheckBox(toQString(title(stat)), tray);
        box->setObjectName(QStringLiteral("stat_") + toQString(rawKey(stat)));
        statRows_[stat] = box;
        stats->addWidget(box, column / 4, column % 4);
        ++column;
        connect(box, &QCheckBox::toggled, this, [this] {
            std::vector<MenuBarStat> chosen;
            for (const auto& [s, b] : statRows_) {
                if (b->isChecked()) {
                    chosen.push_back(s);
                }
            }
            prefs_.setValue(pref::kMenuBarStats, QString::fromStdString(writeMenuBarStats(chosen)));
            prefs_.sync();
        });
    }
    trayLayout->addLayout(stats);
    layout->addWidget(tray);

    // Start-up.
    auto* startup = new Card(tr("Start-up"), this);
    QBoxLayout* startupLayout = startup->body();
    startupLayout->addWidget(boolRow(pref::kOpensWindowAtLaunch, tr("Open the window at launch")));
    login_ = new QCheckBox(tr("Start at login"), startup);
    login_->setObjectName(QStringLiteral("startAtLogin"));
    startupLayout->addWidget(login_);
    startupLayout->addWidget(
        noteLabel(tr("Tarvik starts quietly in the tray when you sign in."), startup));
    loginError_ = noteLabel({}, startup);
    loginError_->setObjectName(QStringLiteral("loginError"));
    loginError_->setForegroundRole(QPalette::NoRole);
    setTextMeaning(loginError_, Meaning::Critical);
    loginError_->hide();
    startupLayout->addWidget(loginError_);
    connect(login_, &QCheckBox::toggled, this, &SettingsScreen::setLoginItem);
    startupLayout->addWidget(boolRow(
        pref::kHideDockIcon, tr("Hide %1 while the window is closed").arg(words::theDockIcon()),
        tr("Tarvik then stays only in %1. Has no effect while the tray item is hidden, so "
           "Tarvik can always be reached.")
            .arg(words::theMenuBar())));
    layout->addWidget(startup);

    // Sampling.
    auto* monitor = new Card(tr("Live readings"), this);
    auto* monitorLayout = new QFormLayout();
    monitorLayout->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    monitor->body()->addLayout(monitorLayout);
    interval_ = new QDoubleSpinBox(monitor);
    interval_->setObjectName(QStringLiteral("monitorInterval"));
    const PreferenceKey* intervalKey = findPreferenceKey(pref::kMonitorInterval);
    interval_->setRange(intervalKey->minimum.value_or(1), intervalKey->maximum.value_or(10));
    interval_->setSingleStep(0.5);
    interval_->setDecimals(1);
    interval_->setSuffix(tr(" s"));
    interval_->setAccessibleName(tr("Sampling interval in seconds"));
    monitorLayout->addRow(tr("Sampling interval:"), interval_);
    connect(interval_, &QDoubleSpinBox::valueChanged, this, [this](double v) {
        prefs_.setValue(pref::kMonitorInterval, v);
        prefs_.sync();
    });
    layout->addWidget(monitor);

    layout->addWidget(cleaningGroup());
    layout->addWidget(homebrewGroup());

    // Permissions.
    auto* permissions = new Card(tr("Permissions"), this);
    auto* grid = new QGridLayout();
    permissions->body()->addLayout(grid);
    int row = 0;
    for (AppPermission p : kAllPermissions) {
        grid->addWidget(new QLabel(title(p), permissions), row, 0);
        auto* status = new QLabel(tr("Checking…"), permissions);
        status->setObjectName(QStringLiteral("permission_") + toQString(rawKey(p)));
        permissionStatus_[p] = status;
        grid->addWidget(status, row, 1);
        auto* open = new QPushButton(tr("Open Settings"), permissions);
        open->setAccessibleName(tr("Open settings for %1").arg(title(p)));
        connect(open, &QPushButton::clicked, this, [this, p] {
            const QString explanation = PermissionProbe().openSettings(p);
            if (!explanation.isEmpty()) {
                QMessageBox::information(this, title(p), explanation);
            }
        });
        grid->addWidget(open, row, 2);
        ++row;
    }
    grid->setColumnStretch(1, 1);
    layout->addWidget(permissions);
    layout->addStretch(1);

    connect(&prefs_, &Preferences::changed, this, &SettingsScreen::syncFromPreferences);
    // A permission may have been granted in the desktop's settings meanwhile.
    connect(qApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState s) {
        if (s == Qt::ApplicationActive && isVisible()) {
            probePermissions();
        }
    });
    syncFromPreferences();
}

QWidget* SettingsScreen::boolRow(std::string_view key, const QString& label, const QString& note) {
    auto* holder = new QWidget(this);
    auto* v = new QVBoxLayout(holder);
    v->setContentsMargins(0, 0, 0, 0);
    v->setSpacing(0);
    auto* box = new QCheckBox(label, holder);
    box->setObjectName(toQString(key));
    boolRows_[key] = box;
    connect(box, &QCheckBox::toggled, this, [this, key](bool on) {
        prefs_.setValue(key, on);
        prefs_.sync();
    });
    v->addWidget(box);
    if (!note.isEmpty()) {
        v->addWidget(noteLabel(note, holder));
    }
    return holder;
}

QWidget* SettingsScreen::cleaningGroup() {
    auto* box = new Card(tr("Cleaning"), this);
    QBoxLayout* v = box->body();
    auto* form = new QFormLayout();
    form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    for (auto [key, label] :
         {std::pair{pref::kJunkRemovalMode, tr("Caches, logs and build output")},
          std::pair{pref::kFileRemovalMode, tr("Large files, duplicates and uninstalled apps")}}) {
        auto* combo = new QComboBox(box);
        combo->setObjectName(toQString(key));
        for (RemovalMode mode : kAllRemovalModes) {
            combo->addItem(title(mode), toQString(rawValue(mode)));
        }
        combo->setAccessibleName(label);
        connect(combo, &QComboBox::currentIndexChanged, this, [this, combo, key = key] {
            prefs_.setValue(key, combo->currentData().toString());
            prefs_.sync();
        });
        modeRows_[key] = combo;
        form->addRow(label + QLatin1Char(':'), combo);
    }
    v->addLayout(form);
    v->addWidget(noteLabel(tr("Moving to the Trash only frees space once the Trash is emptied. "
                              "Trash contents found by System Junk are always deleted "
                              "permanently."),
                           box));

    v->addWidget(new QLabel(tr("Never offer these locations for cleaning:"), box));
    exclusions_ = new QListWidget(box);
    exclusions_->setObjectName(QStringLiteral("exclusions"));
    exclusions_->setAccessibleName(tr("Excluded locations"));
    exclusions_->setMaximumHeight(110);
    noExclusions_ = noteLabel(tr("No exclusions yet"), box);
    noExclusions_->setObjectName(QStringLiteral("noExclusions"));
    v->addWidget(exclusions_);
    v->addWidget(noExclusions_);
    auto* buttons = new QHBoxLayout();
    auto* add = new QPushButton(tr("Add Folder…"), box);
    stopExcluding_ = new QPushButton(tr("Stop excluding this location"), box);
    stopExcluding_->setObjectName(QStringLiteral("stopExcluding"));
    buttons->addWidget(add);
    buttons->addWidget(stopExcluding_);
    buttons->addStretch(1);
    v->addLayout(buttons);
    connect(add, &QPushButton::clicked, this, [this] {
        const QString dir =
            QFileDialog::getExistingDirectory(this, tr("Exclude a Folder"), QDir::homePath());
        if (!dir.isEmpty()) {
            addExclusion(dir);
        }
    });
    connect(stopExcluding_, &QPushButton::clicked, this, [this] {
        if (auto* current = exclusions_->currentItem()) {
            QStringList paths = prefs_.exclusions();
            paths.removeAll(current->text());
            prefs_.setExclusions(paths);
            prefs_.sync();
        }
    });
    connect(exclusions_, &QListWidget::currentRowChanged, this,
            [this](int row) { stopExcluding_->setEnabled(row >= 0); });
    return box;
}

QWidget* SettingsScreen::homebrewGroup() {
    auto* box = new Card(tr("Homebrew"), this);
    QBoxLayout* v = box->body();
    auto* form = new QFormLayout();
    form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    brewInterval_ = new QComboBox(box);
    brewInterval_->setObjectName(toQString(pref::kHomebrewCheckInterval));
    brewInterval_->addItem(tr("Never"), 0.0);
    brewInterval_->addItem(tr("Every hour"), 3600.0);
    brewInterval_->addItem(tr("Every day"), 86400.0);
    brewInterval_->addItem(tr("Every week"), 604800.0);
    brewInterval_->setAccessibleName(tr("Check for Homebrew updates"));
    connect(brewInterval_, &QComboBox::currentIndexChanged, this, [this] {
        prefs_.setValue(pref::kHomebrewCheckInterval, brewInterval_->currentData().toDouble());
        prefs_.sync();
    });
    form->addRow(tr("Check for updates:"), brewInterval_);
    v->addLayout(form);
    v->addWidget(
        boolRow(pref::kHomebrewShowBadge, tr("Show the number of updates beside Homebrew")));
    v->addWidget(boolRow(pref::kHomebrewIncludeGreedy,
                         tr("Also upgrade apps that update themselves"),
                         tr("Casks marked as updating themselves are upgraded by Homebrew too.")));
    return box;
}

void SettingsScreen::addExclusion(const QString& path) {
    QStringList paths = prefs_.exclusions();
    const QString clean = QDir::cleanPath(path);
    if (!paths.contains(clean)) {
        paths << clean;
        prefs_.setExclusions(paths);
        prefs_.sync();
    }
}

void SettingsScreen::refreshExclusions() {
    const QStringList paths = prefs_.exclusions();
    exclusions_->clear();
    exclusions_->addItems(paths);
    exclusions_->setVisible(!paths.isEmpty());
    noExclusions_->setVisible(paths.isEmpty());
    stopExcluding_->setEnabled(false);
}

void SettingsScreen::syncFromPreferences() {
    for (auto& [key, box] : boolRows_) {
        const QSignalBlocker block(box);
        box->setChecked(prefs_.value(key).toBool());
    }
    const auto chosen = prefs_.menuBarStats();
    for (auto& [stat, box] : statRows_) {
        const QSignalBlocker block(box);
        box->setChecked(std::find(chosen.begin(), chosen.end(), stat) != chosen.end());
        box->setEnabled(prefs_.menuBarShowsStats());
    }
    {
        const QSignalBlocker block(interval_);
        interval_->setValue(prefs_.monitorInterval());
    }
    {
        const QSignalBlocker block(login_);
        login_->setChecked(loginItem_.isEnabled());
    }
    for (auto& [key, combo] : modeRows_) {
        const QSignalBlocker block(combo);
        combo->setCurrentIndex(combo->findData(prefs_.value(key).toString()));
    }
    refreshExclusions();
    {
        const QSignalBlocker block(brewInterval_);
        const double interval = prefs_.value(pref::kHomebrewCheckInterval).toDouble();
        int best = 0;
        for (int i = 0; i < brewInterval_->count(); ++i) {
            if (std::abs(brewInterval_->itemData(i).toDouble() - interval) <
                std::abs(brewInterval_->itemData(best).toDouble() - interval)) {
                best = i;
            }
        }
        brewInterval_->setCurrentIndex(best);
    }
}

void SettingsScreen::setLoginItem(bool on) {
    try {
        loginItem_.setEnabled(on);
        loginError_->hide();
    } catch (const LoginItemError& e) {
        loginError_->setText(e.message);
        loginError_->show();
        const QSignalBlocker block(login_);
        login_->setChecked(loginItem_.isEnabled());
    }
}

void SettingsScreen::setTrayAvailable(bool available) {
    noTray_->setVisible(!available);
}

void SettingsScreen::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    setTrayAvailable(TrayItem::trayAvailable());
    probePermissions();
}

void SettingsScreen::probePermissions() {
    // The microphone probe asks the sound server and may take a moment.
    permissionJob_.start([](JobContext<double>&) { return PermissionProbe().currentStatuses(); });
}

} // namespace tarvik
