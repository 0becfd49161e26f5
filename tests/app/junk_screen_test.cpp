#include "app/cleanup/cleanup_screen.h"
#include "app/junk/junk_model.h"
#include "app/junk/junk_screen.h"
#include "app/settings/settings_screen.h"
#include "core/cleanup/cleanup_record.h"
#include "core/settings/capability_settings.h"
#include "core/settings/preferences.h"
#include "core/shell/login_item.h"
#include "core/text/metric_format.h"
#include "tests/support/temp_home.h"
#include "tests/support/wait.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTreeWidget>
#include <gtest/gtest.h>

using namespace tarvik;

namespace {

struct JunkWorld {
    test::TempHome home;
    Preferences prefs;
    JunkModel model;

    JunkWorld() : model(prefs, dependencies()) {}
    JunkModel::Dependencies dependencies() {
        const QString h = home.path();
        return {[this, h] {
                    JunkScanner::Options o;
                    o.home = h;
                    o.exclusions = CapabilitySettings::exclusions(prefs, h);
                    return o;
                },
                [h] { return Cleaner(SafetyGuard(h, {}), Trash(h + "/.local/share/Trash")); },
                h + "/.local/share/Tarvik/free-space-timeline.json"};
    }
    void write(const QString& rel, qint64 bytes) const {
        test::writeFile(home.path() + "/" + rel, QByteArray(bytes, 'z'));
    }
};

} // namespace

TEST(JunkModel, ScanSelectsTheDefaultCategoriesAndCleaningDropsWhatWasRemoved) {
    JunkWorld w;
    w.write(".cache/app/a", 20000);
    w.write(".cache/other/b", 10000);
    w.write("Downloads/old.iso", 30000);
    w.write(".local/share/Trash/files/t.txt", 5000);
    w.model.scan();
    ASSERT_TRUE(test::waitUntil([&] { return !w.model.isScanning(); }));
    std::vector<JunkCategory> arrived;
    for (const auto& r : w.model.results()) {
        arrived.push_back(r.category);
    }
    EXPECT_EQ(arrived,
              std::vector<JunkCategory>(kAllJunkCategories.begin(), kAllJunkCategories.end()));
    EXPECT_TRUE(w.model.isCategorySelected(JunkCategory::UserCaches));
    EXPECT_TRUE(w.model.isCategorySelected(JunkCategory::Trash));
    EXPECT_FALSE(w.model.isCategorySelected(JunkCategory::OldInstallers)); // off by default
    EXPECT_EQ(w.model.selectedCount(), 3);

    w.model.setItemSelected(w.home.path() + "/.cache/other", false);
    EXPECT_FALSE(w.model.isCategorySelected(JunkCategory::UserCaches));
    w.model.removeSelected();
    ASSERT_TRUE(test::waitUntil([&] { return !w.model.isRemoving(); }));
    const CleanReport& r = *w.model.lastReport();
    EXPECT_EQ(r.removed.size(), 2u);
    EXPECT_TRUE(r.failures.empty());
    EXPECT_FALSE(QFile::exists(w.home.path() + "/.cache/app"));
    EXPECT_TRUE(QFile::exists(w.home.path() + "/.cache/other/b")); // deselected: untouched
    EXPECT_TRUE(QFile::exists(w.home.path() + "/Downloads/old.iso"));
    // The removed rows are gone and the totals follow.
    const auto& caches = w.model.results()[0];
    ASSERT_EQ(caches.items.size(), 1u);
    EXPECT_EQ(caches.totalSize, caches.items[0].size);
    EXPECT_EQ(w.model.selectedCount(), 0);
    EXPECT_TRUE(QFile::exists(w.home.path() + "/.local/share/Tarvik/free-space-timeline.json"));
}

TEST(JunkScreen, ConfirmationNamesCountSizeAndModeAndTheReportShowsFailures) {
    JunkWorld w;
    w.prefs.setValue(pref::kJunkRemovalMode, "moveToTrash");
    w.write(".cache/app/a", 8192);
    w.write(".cache/gone/b", 8192);
    JunkScreen screen(w.model, w.home.path());
    QString asked;
    QString detail;
    bool answer = false;
    screen.frame().setConfirm([&](const QString& q, const QString& d) {
        asked = q;
        detail = d;
        return answer;
    });
    w.model.scan();
    ASSERT_TRUE(test::waitUntil([&] { return !w.model.isScanning(); }));
    EXPECT_EQ(screen.tree()->topLevelItem(0)->checkState(0), Qt::Checked);
    EXPECT_EQ(screen.tree()->topLevelItem(0)->childCount(), 2);
    EXPECT_EQ(screen.frame().summaryText().toStdString(), "16.4 KB selected (2 items).");

    screen.frame().requestRemoval(); // declined: nothing happens
    EXPECT_EQ(asked, "Clean 2 items (16.4 KB)?");
    // Nothing from the Trash is chosen, so nothing is said to be deleted.
    EXPECT_EQ(detail.toStdString(), "They will be moved to the Trash, where you can restore them.");
    EXPECT_FALSE(w.model.isRemoving());
    EXPECT_TRUE(QFile::exists(w.home.path() + "/.cache/app/a"));

    // One item disappears between the scan and the clean.
    ASSERT_TRUE(QDir(w.home.path() + "/.cache/gone").removeRecursively());
    answer = true;
    screen.frame().requestRemoval();
    ASSERT_TRUE(test::waitUntil([&] { return !w.model.isRemoving(); }));
    EXPECT_TRUE(QFile::exists(w.home.path() + "/.local/share/Trash/files/app"));
    EXPECT_TRUE(screen.frame().reportText().startsWith(
        "<b>Moved 1 item (" + MetricFormat::bytes(w.model.lastReport()->trashedBytes) +
        ") to the Trash. 1 item couldn't be removed.</b>"))
        << screen.frame().reportText().toStdString();
    EXPECT_TRUE(screen.frame().reportText().contains(
        "~/.cache/gone — “gone” couldn't be moved to the Trash: No such file or directory."))
        << screen.frame().reportText().toStdString();
}

TEST(JunkScreen, EmptyMacOnlyCategoriesFoldAwayAndEveryRowHasItsSymbol) {
    JunkWorld w;
    w.write(".cache/app/a", 4096);
    // A home copied from a Mac: Xcode's archives are there, and stay in view.
    w.write("Library/Developer/Xcode/Archives/old/a", 4096);
    JunkScreen screen(w.model, w.home.path());
    w.model.scan();
    ASSERT_TRUE(test::waitUntil([&] { return !w.model.isScanning(); }));
    QTreeWidget* tree = screen.tree();
    QStringList top;
    QTreeWidgetItem* fold = nullptr;
    for (int i = 0; i < tree->topLevelItemCount(); ++i) {
        QTreeWidgetItem* row = tree->topLevelItem(i);
        top << row->text(0);
        EXPECT_FALSE(row->icon(0).isNull()) << row->text(0).toStdString();
        if (row->text(0).startsWith("Not used on Linux")) {
            fold = row;
        }
    }
    ASSERT_NE(fold, nullptr) << top.join(" | ").toStdString();
    EXPECT_EQ(fold->text(0), "Not used on Linux (4)");
    EXPECT_FALSE(fold->flags() & Qt::ItemIsUserCheckable);
    QStringList folded;
    for (int i = 0; i < fold->childCount(); ++i) {
        folded << fold->child(i)->text(0);
        EXPECT_FALSE(fold->child(i)->icon(0).isNull());
    }
    EXPECT_EQ(folded,
              (QStringList{"Xcode Derived Data (0 items)", "Simulator Caches (0 items)",
                           "Device Support Files (0 items)", "Mail Attachments (0 items)"}));
    EXPECT_TRUE(top.contains("Xcode Archives (1 item)")) << top.join(" | ").toStdString();
    // Categories Linux fills stay at the top level even when empty, aligned with the others.
    EXPECT_TRUE(top.contains("Crash Reports (0 items)"));
    for (int i = 0; i < tree->topLevelItemCount(); ++i) {
        QTreeWidgetItem* row = tree->topLevelItem(i);
        if (row != fold) {
            EXPECT_TRUE(row->flags() & Qt::ItemIsUserCheckable) << row->text(0).toStdString();
            EXPECT_EQ(bool(row->flags() & Qt::ItemIsEnabled), row->childCount() > 0);
        }
    }
}

TEST(JunkScreen, TrashContentsAreDeletedForGoodAndTheReportSaysWhatWasMovedAndWhatFreed) {
    JunkWorld w;
    w.prefs.setValue(pref::kJunkRemovalMode, "moveToTrash");
    w.write(".cache/app/a", 4096);
    w.write(".local/share/Trash/files/t.txt", 4096);
    JunkScreen screen(w.model, w.home.path());
    QString detail;
    bool answer = false;
    screen.frame().setConfirm([&](const QString&, const QString& d) {
        detail = d;
        return answer;
    });
    w.model.scan();
    ASSERT_TRUE(test::waitUntil([&] { return !w.model.isScanning(); }));
    screen.frame().requestRemoval();
    EXPECT_EQ(detail.toStdString(),
              "They will be moved to the Trash. Trash contents are always deleted permanently.");
    EXPECT_TRUE(QFile::exists(w.home.path() + "/.local/share/Trash/files/t.txt"));

    // Both ways in one run: one sentence each, and only the deleted bytes count as freed.
    answer = true;
    screen.frame().requestRemoval();
    ASSERT_TRUE(test::waitUntil([&] { return !w.model.isRemoving(); }));
    EXPECT_FALSE(QFile::exists(w.home.path() + "/.local/share/Trash/files/t.txt"));
    EXPECT_TRUE(QFile::exists(w.home.path() + "/.local/share/Trash/files/app/a"));
    const CleanReport& r = *w.model.lastReport();
    EXPECT_GE(r.freedBytes, 4096);
    EXPECT_GE(r.trashedBytes, 4096);
    EXPECT_EQ(screen.frame().reportText().toStdString(),
              ("<b>Moved 1 item (" + MetricFormat::bytes(r.trashedBytes) +
               ") to the Trash. Deleted 1 item, " + MetricFormat::bytes(r.freedBytes) +
               " freed.</b>")
                  .toStdString());
    FreeSpaceTimeline history(w.home.path() + "/.local/share/Tarvik/free-space-timeline.json");
    history.load();
    ASSERT_EQ(history.records().size(), 1u);
    EXPECT_EQ(history.records()[0].freedBytes, r.freedBytes);
    EXPECT_EQ(history.records()[0].itemCount, 1);
}

TEST(SettingsScreen, ExclusionsAndRemovalModesAreKeptInTheStore) {
    test::TempHome home;
    Preferences prefs;
    LoginItem login(home.config() + "/autostart", "/usr/bin/tarvik");
    SettingsScreen screen(prefs, login);
    auto* list = screen.findChild<QListWidget*>("exclusions");
    auto* none = screen.findChild<QLabel*>("noExclusions");
    ASSERT_TRUE(list && none);
    EXPECT_EQ(none->text(), "No exclusions yet");
    EXPECT_FALSE(none->isHidden());

    screen.addExclusion(home.path() + "/Videos/keep/");
    screen.addExclusion(home.path() + "/Videos/keep");
    EXPECT_EQ(prefs.exclusions(), QStringList{home.path() + "/Videos/keep"});
    EXPECT_EQ(list->count(), 1);
    EXPECT_TRUE(none->isHidden());
    list->setCurrentRow(0);
    screen.findChild<QPushButton*>("stopExcluding")->click();
    EXPECT_TRUE(prefs.exclusions().isEmpty());
    EXPECT_FALSE(none->isHidden());

    auto* interval = screen.findChild<QComboBox*>("homebrewCheckInterval");
    ASSERT_NE(interval, nullptr);
    EXPECT_EQ(interval->currentText(), "Every day");
    interval->setCurrentIndex(interval->findText("Never"));
    EXPECT_DOUBLE_EQ(prefs.value(pref::kHomebrewCheckInterval).toDouble(), 0.0);

    auto* junkMode = screen.findChild<QComboBox*>("junkRemovalMode");
    ASSERT_NE(junkMode, nullptr);
    EXPECT_EQ(junkMode->currentText(), "Delete permanently");
    junkMode->setCurrentIndex(junkMode->findText("Move to Trash"));
    EXPECT_EQ(prefs.value(pref::kJunkRemovalMode).toString(), "moveToTrash");
}
