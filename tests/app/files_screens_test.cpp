#include "app/cleanup/cleanup_screen.h"
#include "app/files/duplicates_model.h"
#include "app/files/duplicates_screen.h"
#include "app/files/large_files_model.h"
#include "app/files/large_files_screen.h"
#include "app/files/large_files_table.h"
#include "app/files/search_controls.h"
#include "app/shell/app_models.h"
#include "app/shell/empty_state.h"
#include "app/shell/main_window.h"
#include "core/cleanup/cleanup_record.h"
#include "core/settings/preferences.h"
#include "core/text/metric_format.h"
#include "tests/support/temp_home.h"
#include "tests/support/wait.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QRandomGenerator>
#include <QScrollArea>
#include <QTest>
#include <QTreeView>
#include <QTreeWidget>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace tarvik;

namespace {

// A home with files of chosen sizes, contents and ages, and the guard and Trash inside it.
struct FilesWorld {
    test::TempHome home;
    Preferences prefs;

    CleanupModel::Dependencies dependencies() const {
        const QString h = home.path();
        return {h, [h] { return Cleaner(SafetyGuard(h, {}), Trash(h + "/.local/share/Trash")); },
                h + "/.local/share/Tarvik/free-space-timeline.json"};
    }
    QString path(const QString& rel) const { return home.path() + "/" + rel; }
    QString trashed(const QString& name) const { return path(".local/share/Trash/files/" + name); }
    // Random bytes, so no file system can store them in less than their length; the same
    // seed gives the same contents.
    void write(const QString& rel, qint64 bytes, quint32 seed = 0, int daysOld = 0) const {
        QRandomGenerator g(seed == 0 ? static_cast<quint32>(qHash(rel)) : seed);
        QByteArray b(bytes, Qt::Uninitialized);
        for (char& c : b) {
            c = static_cast<char>(g.generate());
        }
        test::writeFile(path(rel), b);
        if (daysOld > 0) {
            QFile f(path(rel));
            ASSERT_TRUE(f.open(QIODevice::ReadWrite));
            ASSERT_TRUE(f.setFileTime(QDateTime::currentDateTimeUtc().addDays(-daysOld),
                                      QFileDevice::FileModificationTime));
        }
    }
    static bool wait(const std::function<bool()>& done) { return test::waitUntil(done); }
};

QStringList names(const LargeFilesModel& m) {
    QStringList out;
    for (const auto& f : m.results()) {
        out << f.item.name();
    }
    return out;
}

QStringList comboTexts(const QComboBox* c) {
    QStringList out;
    for (int i = 0; i < c->count(); ++i) {
        out << c->itemText(i);
    }
    return out;
}

QStringList column(const QTreeView* v, int col) {
    QStringList out;
    for (int r = 0; r < v->model()->rowCount(); ++r) {
        out << v->model()->index(r, col).data().toString();
    }
    return out;
}

LargeFileScanner::Options above(std::int64_t bytes) {
    LargeFileScanner::Options o;
    o.minimumSize = bytes;
    return o;
}

void scanAndWait(LargeFilesModel& m, const LargeFileScanner::Options& o) {
    m.scan(o);
    ASSERT_TRUE(FilesWorld::wait([&] { return !m.isScanning(); }));
}

// Stands in for the user at the cleanup frame's confirmation: keeps what was asked and answers
// `yes`.
struct User {
    QString asked;
    QString detail;
    bool yes = true;
    void answers(CleanupScreen& frame) {
        frame.setConfirm([this](const QString& q, const QString& d) {
            asked = q;
            detail = d;
            return yes;
        });
    }
};

} // namespace

// ---- Large & Old Files: the search ----

TEST(LargeFilesModel, FindsFilesAboveTheSizeLargestFirstAndLooksInHiddenAndAppDataOnlyWhenAsked) {
    FilesWorld w;
    w.write("Videos/film.mp4", 400'000);
    w.write("Downloads/a.zip", 250'000);
    w.write("notes.txt", 20'000);
    w.write(".hidden/disc.iso", 300'000);
    w.write(".cache/app/blob.bin", 300'000);
    LargeFilesModel m(w.prefs, w.dependencies());

    scanAndWait(m, above(100'000));
    EXPECT_EQ(names(m), QStringList({"film.mp4", "a.zip"}));
    EXPECT_EQ(m.results()[0].kind, FileKind::Video);
    EXPECT_EQ(m.lastOptions().root, w.home.path());
    EXPECT_FALSE(m.wasCancelled());

    auto hidden = above(100'000);
    hidden.includeHidden = true;
    scanAndWait(m, hidden);
    EXPECT_EQ(names(m), QStringList({"film.mp4", "disc.iso", "a.zip"}));

    hidden.includeLibrary = true;
    scanAndWait(m, hidden);
    EXPECT_EQ(names(m), QStringList({"film.mp4", "blob.bin", "disc.iso", "a.zip"}));
}

TEST(LargeFilesModel, OlderThanKeepsOnlyFilesUnchangedSinceTheCutOffAndExclusionsAreNeverListed) {
    FilesWorld w;
    w.write("Downloads/old.iso", 200'000, 0, 400);
    w.write("Downloads/new.iso", 200'000);
    w.write("Videos/keep/old.mov", 200'000, 0, 800);
    w.prefs.setExclusions({"~/Videos/keep"});
    LargeFilesModel m(w.prefs, w.dependencies());

    auto old = above(100'000);
    old.olderThanDays = 365;
    scanAndWait(m, old);
    EXPECT_EQ(names(m), QStringList{"old.iso"});
    scanAndWait(m, above(100'000));
    EXPECT_EQ(names(m).size(), 2);
}

// ---- Large & Old Files: the screen ----

TEST(LargeFilesScreen, PickersOfferThePresetsAndTheScanUsesWhatTheyShow) {
    FilesWorld w;
    LargeFilesModel m(w.prefs, w.dependencies());
    LargeFilesScreen screen(m);
    SearchControls* c = screen.controls();
    EXPECT_EQ(comboTexts(c->sizePicker()),
              QStringList({"50 MB", "100 MB", "500 MB", "1 GB", "5 GB"}));
    EXPECT_EQ(c->sizePicker()->currentText(), "100 MB");
    EXPECT_EQ(comboTexts(c->agePicker()),
              QStringList({"Any age", "Older than 1 month", "Older than 6 months",
                           "Older than 1 year", "Older than 2 years"}));
    EXPECT_EQ(c->includeAppData()->text(), "Include app &data");
    EXPECT_EQ(c->includeHidden()->text(), "Include &hidden files");
    EXPECT_TRUE(screen.frame().scanButton()->isDefault());

    c->sizePicker()->setCurrentIndex(c->sizePicker()->findText("500 MB"));
    c->agePicker()->setCurrentIndex(c->agePicker()->findText("Older than 1 year"));
    c->includeHidden()->setChecked(true);
    screen.frame().scanButton()->click();
    EXPECT_FALSE(screen.frame().scanButton()->isEnabled()); // resting while the scan runs
    ASSERT_TRUE(w.wait([&] { return !m.isScanning(); }));
    EXPECT_EQ(m.lastOptions().minimumSize, 500'000'000);
    EXPECT_EQ(m.lastOptions().olderThanDays, 365);
    EXPECT_TRUE(m.lastOptions().includeHidden);
    EXPECT_FALSE(m.lastOptions().includeLibrary);
    EXPECT_TRUE(screen.frame().scanButton()->isEnabled());
    EXPECT_EQ(screen.frame().summaryText(),
              "No files larger than 500 MB and older than 1 year in your home folder.");
}

TEST(LargeFilesScreen, KindPickerCountsEachKindAndShowsOnlyTheChosenOne) {
    FilesWorld w;
    w.write("Videos/film.mp4", 90'000);
    w.write("a.zip", 80'000);
    w.write("b.zip", 70'000);
    w.write("c.dat", 60'000);
    LargeFilesModel m(w.prefs, w.dependencies());
    LargeFilesScreen screen(m);
    scanAndWait(m, above(50'000));

    QComboBox* kinds = screen.kindPicker();
    EXPECT_EQ(comboTexts(kinds),
              QStringList({"All kinds (4)", "Archives (2)", "Movies (1)", "Other (1)"}));
    kinds->setCurrentIndex(kinds->findText("Archives (2)"));
    EXPECT_EQ(column(screen.view(), LargeFilesTable::Name), QStringList({"a.zip", "b.zip"}));
    kinds->setCurrentIndex(0);
    EXPECT_EQ(screen.view()->model()->rowCount(), 4);
    EXPECT_EQ(column(screen.view(), LargeFilesTable::Folder),
              QStringList({"~/Videos", "~", "~", "~"}));
}

TEST(LargeFilesScreen, SortsBySizeOrDateFromThePickerOrAColumnHeader) {
    FilesWorld w;
    w.write("small-old.bin", 60'000, 0, 300);
    w.write("big-new.bin", 90'000, 0, 10);
    w.write("mid-older.bin", 70'000, 0, 900);
    LargeFilesModel m(w.prefs, w.dependencies());
    LargeFilesScreen screen(m);
    scanAndWait(m, above(50'000));

    EXPECT_EQ(screen.sortPicker()->currentText(), "Largest first");
    EXPECT_EQ(column(screen.view(), 0),
              QStringList({"big-new.bin", "mid-older.bin", "small-old.bin"}));
    screen.sortPicker()->setCurrentIndex(screen.sortPicker()->findText("Oldest first"));
    EXPECT_EQ(column(screen.view(), 0),
              QStringList({"mid-older.bin", "small-old.bin", "big-new.bin"}));
    // A header click sorts the same way, and the picker says so.
    screen.view()->sortByColumn(LargeFilesTable::Size, Qt::AscendingOrder);
    EXPECT_EQ(screen.sortPicker()->currentText(), "Smallest first");
    EXPECT_EQ(column(screen.view(), 0),
              QStringList({"small-old.bin", "mid-older.bin", "big-new.bin"}));
}

TEST(LargeFilesScreen, RemovingAfterYesTakesOnlyTheCheckedFilesThroughTheGuard) {
    FilesWorld w;
    w.write("Videos/film.mp4", 90'000);
    w.write("a.zip", 80'000);
    w.write("b.zip", 70'000);
    w.write(".ssh/big-key", 60'000); // the guard never lets this go
    LargeFilesModel m(w.prefs, w.dependencies());
    LargeFilesScreen screen(m);
    User user;
    user.answers(screen.frame());
    auto options = above(50'000);
    options.includeHidden = true;
    scanAndWait(m, options);
    ASSERT_EQ(m.results().size(), 4u);
    EXPECT_FALSE(screen.frame().removeButton()->isEnabled()); // nothing is chosen for the user

    QAbstractItemModel* rows = screen.view()->model();
    ASSERT_EQ(rows->index(0, 0).data().toString(), "film.mp4");
    rows->setData(rows->index(0, 0), Qt::Checked, Qt::CheckStateRole);
    m.setSelected(w.path(".ssh/big-key"), true);
    EXPECT_TRUE(screen.frame().removeButton()->isEnabled());
    EXPECT_TRUE(screen.frame().summaryText().contains("2 files selected"))
        << screen.frame().summaryText().toStdString();

    screen.frame().removeButton()->click();
    EXPECT_TRUE(user.asked.startsWith("Remove 2 files (")) << user.asked.toStdString();
    EXPECT_EQ(user.detail, "They will be moved to the Trash, where you can restore them.");
    ASSERT_TRUE(w.wait([&] { return !m.isRemoving(); }));

    EXPECT_FALSE(QFile::exists(w.path("Videos/film.mp4")));
    EXPECT_TRUE(QFile::exists(w.trashed("film.mp4")));
    EXPECT_TRUE(QFile::exists(w.path(".ssh/big-key")));
    EXPECT_TRUE(QFile::exists(w.path("a.zip")));
    EXPECT_TRUE(QFile::exists(w.path("b.zip")));
    EXPECT_EQ(column(screen.view(), 0), QStringList({"a.zip", "b.zip", "big-key"}));
    EXPECT_TRUE(screen.frame().reportText().startsWith(
        "<b>Moved 1 file (90.1 KB) to the Trash. 1 file couldn't be removed.</b>"))
        << screen.frame().reportText().toStdString();
    EXPECT_TRUE(screen.frame().reportText().contains("~/.ssh/big-key — "))
        << screen.frame().reportText().toStdString();
    // The Trash is on the same disk: nothing was freed, so the history has nothing to record.
    EXPECT_FALSE(QFile::exists(w.path(".local/share/Tarvik/free-space-timeline.json")));
}

TEST(LargeFilesScreen, OneFileIsConfirmedInTheSingularAndReportedAsMovedOrDeletedByItsMode) {
    FilesWorld w;
    w.write("Videos/film.mp4", 90'000);
    w.write("a.zip", 80'000);
    w.write("b.zip", 70'000);
    LargeFilesModel m(w.prefs, w.dependencies());
    LargeFilesScreen screen(m);
    User user;
    user.answers(screen.frame());
    scanAndWait(m, above(50'000));

    // One file to the Trash: "it", and the report never says anything was freed.
    m.setSelected(w.path("Videos/film.mp4"), true);
    screen.frame().requestRemoval();
    EXPECT_EQ(user.asked, "Remove “film.mp4” (90.1 KB)?");
    EXPECT_EQ(user.detail, "It will be moved to the Trash, where you can restore it.");
    ASSERT_TRUE(w.wait([&] { return !m.isRemoving(); }));
    EXPECT_TRUE(QFile::exists(w.trashed("film.mp4")));
    EXPECT_EQ(screen.frame().reportText(), "<b>Moved 1 file (90.1 KB) to the Trash.</b>");
    EXPECT_FALSE(screen.frame().reportText().contains("freed"));
    EXPECT_FALSE(QFile::exists(w.path(".local/share/Tarvik/free-space-timeline.json")));

    // Two deleted for good: "they", and the space is freed now and recorded.
    w.prefs.setValue(pref::kFileRemovalMode, "deletePermanently");
    m.setAllSelected(true);
    screen.frame().requestRemoval();
    EXPECT_TRUE(user.asked.startsWith("Remove 2 files (")) << user.asked.toStdString();
    EXPECT_EQ(user.detail, "They will be deleted permanently. This can't be undone.");
    ASSERT_TRUE(w.wait([&] { return !m.isRemoving(); }));
    EXPECT_FALSE(QFile::exists(w.path("a.zip")));
    EXPECT_FALSE(QFile::exists(w.trashed("a.zip")));
    const CleanReport& report = *m.lastReport();
    EXPECT_EQ(report.trashedBytes, 0);
    EXPECT_GE(report.freedBytes, 150'000);
    EXPECT_EQ(
        screen.frame().reportText(),
        QString("<b>Deleted 2 files, %1 freed.</b>").arg(MetricFormat::bytes(report.freedBytes)));
    EXPECT_FALSE(screen.frame().reportText().contains("Trash"));
    FreeSpaceTimeline history(w.path(".local/share/Tarvik/free-space-timeline.json"));
    history.load();
    ASSERT_EQ(history.records().size(), 1u);
    EXPECT_EQ(history.records()[0].freedBytes, report.freedBytes);
    EXPECT_EQ(history.records()[0].itemCount, 2);
}

TEST(LargeFilesScreen, ConfirmationFollowsTheRemovalModeAndNoRemovesNothing) {
    FilesWorld w;
    w.prefs.setValue(pref::kFileRemovalMode, "deletePermanently");
    w.write("a.zip", 80'000);
    LargeFilesModel m(w.prefs, w.dependencies());
    LargeFilesScreen screen(m);
    User user;
    user.yes = false;
    user.answers(screen.frame());
    scanAndWait(m, above(50'000));
    m.setAllSelected(true);

    screen.frame().requestRemoval();
    EXPECT_EQ(user.asked, "Remove “a.zip” (81.9 KB)?"); // one file is named
    EXPECT_EQ(user.detail, "It will be deleted permanently. This can't be undone.");
    EXPECT_FALSE(m.isRemoving());
    EXPECT_TRUE(QFile::exists(w.path("a.zip")));
    EXPECT_EQ(m.results().size(), 1u);
    EXPECT_TRUE(screen.frame().reportText().isEmpty());

    user.yes = true;
    screen.frame().requestRemoval();
    ASSERT_TRUE(w.wait([&] { return !m.isRemoving(); }));
    EXPECT_FALSE(QFile::exists(w.path("a.zip")));
    EXPECT_FALSE(QFile::exists(w.trashed("a.zip")));
    EXPECT_TRUE(m.results().empty());
}

TEST(LargeFilesScreen, RevealShowsTheCurrentRowInTheFileManager) {
    FilesWorld w;
    w.write("Videos/film.mp4", 90'000);
    LargeFilesModel m(w.prefs, w.dependencies());
    LargeFilesScreen screen(m);
    QStringList revealed;
    screen.setReveal([&](const QString& p) { revealed << p; });
    scanAndWait(m, above(50'000));
    EXPECT_FALSE(screen.revealButton()->isEnabled());
    screen.view()->setCurrentIndex(screen.view()->model()->index(0, 0));
    ASSERT_TRUE(screen.revealButton()->isEnabled());
    screen.revealButton()->click();
    EXPECT_EQ(revealed, QStringList{w.path("Videos/film.mp4")});
}

TEST(LargeFilesScreen, WhatIsTickedIsTheOnlyChoiceAndSpaceTicksTheCurrentRow) {
    FilesWorld w;
    w.write("a.zip", 90'000);
    w.write("b.zip", 80'000);
    LargeFilesModel m(w.prefs, w.dependencies());
    LargeFilesScreen screen(m);
    screen.resize(800, 500);
    screen.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&screen));
    scanAndWait(m, above(50'000));
    QTreeView* view = screen.view();
    const QModelIndex second = view->model()->index(1, 0);
    // A click makes the row current (for Reveal) but highlights nothing as chosen.
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(second).center());
    EXPECT_EQ(view->currentIndex().row(), 1);
    EXPECT_TRUE(view->selectionModel()->selectedIndexes().isEmpty());
    EXPECT_EQ(m.selectedCount(), 0);
    // Space ticks the current row: that is the choice the summary counts.
    view->setFocus();
    QTest::keyClick(view, Qt::Key_Space);
    EXPECT_EQ(m.selectedCount(), 1);
    EXPECT_TRUE(m.isSelected(w.path("b.zip")));
    EXPECT_TRUE(view->selectionModel()->selectedIndexes().isEmpty());
}

TEST(LargeFilesScreen, CancelEndsTheScanAndSaysSo) {
    FilesWorld w;
    w.write("a.zip", 80'000);
    LargeFilesModel m(w.prefs, w.dependencies());
    LargeFilesScreen screen(m);
    screen.frame().scanButton()->click();
    EXPECT_FALSE(screen.frame().cancelButton()->isHidden());
    screen.frame().cancelButton()->click();
    ASSERT_TRUE(w.wait([&] { return !m.isScanning(); }));
    EXPECT_TRUE(m.wasCancelled());
    EXPECT_TRUE(screen.frame().statusText().startsWith("Scan cancelled"));
    EXPECT_TRUE(screen.frame().cancelButton()->isHidden());
    EXPECT_TRUE(screen.frame().scanButton()->isEnabled());
}

// ---- Duplicates ----

namespace {

// Three copies of one file (the oldest in Documents), two of another, one unique file.
void writeCopies(const FilesWorld& w) {
    w.write("Documents/report.pdf", 30'000, 7, 300);
    w.write("Downloads/report.pdf", 30'000, 7, 200);
    w.write("Desktop/report copy.pdf", 30'000, 7, 100);
    w.write("Music/song.mp3", 20'000, 9, 50);
    w.write("Downloads/song.mp3", 20'000, 9, 10);
    w.write("unique.bin", 30'000, 11);
}

void scanAndWait(DuplicatesModel& m, std::int64_t minimum = 1'000) {
    FileSearchOptions o;
    o.minimumSize = minimum;
    m.scan(o);
    ASSERT_TRUE(FilesWorld::wait([&] { return !m.isScanning(); }));
}

QTreeWidgetItem* fileRow(QTreeWidget* tree, int group, int file) {
    return tree->topLevelItem(group)->child(file);
}

} // namespace

TEST(DuplicatesModel, EveryCopyButTheOldestStartsSelected) {
    FilesWorld w;
    writeCopies(w);
    DuplicatesModel m(w.prefs, w.dependencies());
    DuplicatesScreen screen(m);
    scanAndWait(m);

    ASSERT_EQ(m.groups().size(), 2u);
    const DuplicateGroup& reports = m.groups()[0]; // the most waste first
    ASSERT_EQ(reports.files.size(), 3u);
    EXPECT_EQ(reports.files[0].path, w.path("Documents/report.pdf"));
    EXPECT_FALSE(m.isSelected(reports.files[0].path));
    EXPECT_TRUE(m.isSelected(reports.files[1].path));
    EXPECT_TRUE(m.isSelected(reports.files[2].path));
    EXPECT_FALSE(m.isSelected(m.groups()[1].files[0].path));
    EXPECT_EQ(m.selectedCount(), 3);

    QTreeWidget* tree = screen.tree();
    ASSERT_EQ(tree->topLevelItemCount(), 2);
    EXPECT_EQ(tree->topLevelItem(0)->text(0), "report.pdf (3 files)");
    EXPECT_TRUE(tree->topLevelItem(0)->text(3).endsWith(" to gain"));
    EXPECT_EQ(tree->topLevelItem(0)->checkState(0), Qt::Checked);
    EXPECT_EQ(fileRow(tree, 0, 0)->text(0), "~/Documents/report.pdf");
    EXPECT_EQ(fileRow(tree, 0, 0)->text(3), "Original — kept");
    EXPECT_EQ(fileRow(tree, 0, 0)->checkState(0), Qt::Unchecked);
    EXPECT_EQ(fileRow(tree, 0, 1)->checkState(0), Qt::Checked);
    EXPECT_TRUE(screen.frame().summaryText().startsWith("2 groups, "))
        << screen.frame().summaryText().toStdString();
    EXPECT_TRUE(screen.frame().summaryText().contains("3 files selected"));
}

TEST(DuplicatesModel, SelectingEveryFileOfAGroupIsRefused) {
    FilesWorld w;
    writeCopies(w);
    DuplicatesModel m(w.prefs, w.dependencies());
    DuplicatesScreen screen(m);
    scanAndWait(m);
    const auto songs = m.groups()[1].files;
    int refused = 0;
    QObject::connect(&m, &DuplicatesModel::selectionRefused, [&refused] { ++refused; });

    EXPECT_FALSE(m.setSelected(songs[0].path, true));
    EXPECT_FALSE(m.isSelected(songs[0].path));
    EXPECT_EQ(refused, 1);
    // Keeping the copy instead of the original is the user's choice.
    EXPECT_TRUE(m.setSelected(songs[1].path, false));
    EXPECT_TRUE(m.setSelected(songs[0].path, true));
    EXPECT_FALSE(m.setSelected(songs[1].path, true));
    EXPECT_EQ(refused, 2);
    EXPECT_EQ(fileRow(screen.tree(), 1, 0)->text(3), "Original");

    // Checking the last unchecked box of a group in the tree puts it back at once.
    QTreeWidgetItem* lastKept = fileRow(screen.tree(), 1, 1);
    lastKept->setCheckState(0, Qt::Checked);
    EXPECT_EQ(lastKept->checkState(0), Qt::Unchecked);
    EXPECT_FALSE(m.isSelected(songs[1].path));
    EXPECT_TRUE(screen.frame().hintText().startsWith("One file of each group always stays."));

    // A group's box chooses every copy but the original, or none.
    QTreeWidgetItem* group = screen.tree()->topLevelItem(1);
    group->setCheckState(0, Qt::Unchecked);
    EXPECT_FALSE(m.isSelected(songs[0].path));
    EXPECT_FALSE(m.isSelected(songs[1].path));
    group->setCheckState(0, Qt::Checked);
    EXPECT_FALSE(m.isSelected(songs[0].path));
    EXPECT_TRUE(m.isSelected(songs[1].path));
}

TEST(DuplicatesModel, RemovalLeavesEachGroupWithItsKeptFilesAndDropsGroupsOfOne) {
    FilesWorld w;
    writeCopies(w);
    DuplicatesModel m(w.prefs, w.dependencies());
    DuplicatesScreen screen(m);
    User user;
    user.answers(screen.frame());
    scanAndWait(m);
    m.setSelected(w.path("Desktop/report copy.pdf"), false);

    screen.frame().requestRemoval();
    EXPECT_TRUE(user.asked.startsWith("Remove 2 files (")) << user.asked.toStdString();
    ASSERT_TRUE(w.wait([&] { return !m.isRemoving(); }));

    EXPECT_TRUE(QFile::exists(w.trashed("report.pdf")));
    EXPECT_TRUE(QFile::exists(w.trashed("song.mp3")));
    EXPECT_FALSE(QFile::exists(w.path("Downloads/report.pdf")));
    EXPECT_FALSE(QFile::exists(w.path("Downloads/song.mp3")));
    for (const char* kept : {"Documents/report.pdf", "Desktop/report copy.pdf", "Music/song.mp3"}) {
        EXPECT_TRUE(QFile::exists(w.path(kept))) << kept;
    }
    ASSERT_EQ(m.groups().size(), 1u);
    EXPECT_EQ(m.groups()[0].files.size(), 2u);
    EXPECT_EQ(m.selectedCount(), 0);
    EXPECT_EQ(screen.tree()->topLevelItemCount(), 1);
    EXPECT_EQ(screen.tree()->topLevelItem(0)->childCount(), 2);
    EXPECT_TRUE(screen.frame().summaryText().startsWith("1 group, "))
        << screen.frame().summaryText().toStdString();
    EXPECT_TRUE(screen.frame().reportText().startsWith("<b>Moved 2 files ("))
        << screen.frame().reportText().toStdString();
}

TEST(DuplicatesModel, ConfirmationAnsweredNoRemovesNothing) {
    FilesWorld w;
    writeCopies(w);
    DuplicatesModel m(w.prefs, w.dependencies());
    DuplicatesScreen screen(m);
    User user;
    user.yes = false;
    user.answers(screen.frame());
    scanAndWait(m);
    screen.frame().requestRemoval();
    EXPECT_EQ(user.detail,
              "They will be moved to the Trash, where you can restore them. At least one "
              "file of each group is kept.");
    EXPECT_FALSE(m.isRemoving());
    EXPECT_EQ(m.groups().size(), 2u);
    EXPECT_TRUE(QFile::exists(w.path("Downloads/report.pdf")));
    EXPECT_TRUE(QFile::exists(w.path("Downloads/song.mp3")));
}

TEST(DuplicatesModel, HardLinkedNamesAreNotedAndExcludedCopiesLeaveTheirGroup) {
    FilesWorld w;
    w.write("a.bin", 30'000, 5, 20);
    w.write("b.bin", 30'000, 5, 10);
    ASSERT_EQ(::link(w.path("b.bin").toLocal8Bit().constData(),
                     w.path("c.bin").toLocal8Bit().constData()),
              0);
    w.write("Music/x.mp3", 20'000, 6, 20);
    w.write("Music/keep/x.mp3", 20'000, 6, 10);
    w.prefs.setExclusions({w.path("Music/keep")});
    DuplicatesModel m(w.prefs, w.dependencies());
    DuplicatesScreen screen(m);
    scanAndWait(m);

    ASSERT_EQ(m.groups().size(), 1u); // x.mp3's only copy is excluded
    ASSERT_EQ(m.groups()[0].files.size(), 2u);
    EXPECT_EQ(m.groups()[0].wastedBytes(), 0);
    EXPECT_EQ(m.selectedSize(), 0); // removing one name of a linked file frees nothing
    EXPECT_TRUE(fileRow(screen.tree(), 0, 1)->text(3).startsWith("Also named"))
        << fileRow(screen.tree(), 0, 1)->text(3).toStdString();
}

TEST(DuplicatesModel, CancelledScanShowsNoGroups) {
    FilesWorld w;
    writeCopies(w);
    DuplicatesModel m(w.prefs, w.dependencies());
    DuplicatesScreen screen(m);
    screen.frame().scanButton()->click();
    screen.frame().cancelButton()->click();
    ASSERT_TRUE(w.wait([&] { return !m.isScanning(); }));
    EXPECT_TRUE(m.wasCancelled());
    EXPECT_TRUE(m.groups().empty());
    EXPECT_EQ(screen.tree()->topLevelItemCount(), 0);
    EXPECT_EQ(screen.frame().summaryText(), "Scan cancelled before the comparison ended.");
    EXPECT_EQ(screen.frame().statusText(), "Scan cancelled.");
}

TEST(CleanupScreen, BeforeTheFirstScanTheViewSaysWhatAScanFindsAndComparingShowsHowFar) {
    FilesWorld w;
    writeCopies(w);
    DuplicatesModel m(w.prefs, w.dependencies());
    DuplicatesScreen screen(m);
    screen.show();
    auto* empty = screen.findChild<EmptyState*>("cleanupEmpty");
    ASSERT_NE(empty, nullptr);
    EXPECT_TRUE(empty->isVisible());
    EXPECT_EQ(empty->sentence(), screen.frame().summaryText());
    EXPECT_FALSE(screen.tree()->isVisible());
    EXPECT_FALSE(screen.frame().removeButton()->isVisible());

    // Its Scan starts the search; the results take its place.
    empty->action()->click();
    EXPECT_TRUE(m.isScanning());
    EXPECT_FALSE(empty->isVisible());
    EXPECT_TRUE(screen.tree()->isVisible());
    // While comparing, the status says how many of how many and the bar fills as far.
    emit m.scanProgress(QStringLiteral("Comparing files"), 1204, 3310);
    EXPECT_EQ(screen.frame().statusText(), "Comparing files… 1,204 of 3,310 files");
    auto* bar = screen.findChild<QProgressBar*>();
    ASSERT_NE(bar, nullptr);
    EXPECT_GT(bar->maximum(), 0);
    EXPECT_NEAR(double(bar->value()) / bar->maximum(), 1204.0 / 3310.0, 0.01);
    ASSERT_TRUE(w.wait([&] { return !m.isScanning(); }));
    EXPECT_FALSE(empty->isVisible());
    EXPECT_TRUE(screen.frame().removeButton()->isVisible());
}

// ---- In the window ----

TEST(MainWindow, LargeFilesAndDuplicatesAreWorkingScreens) {
    test::TempHome home;
    AppModels models({home.config() + "/Tarvik/Tarvik.conf",
                      home.config() + "/autostart",
                      "/usr/bin/tarvik",
                      {"/", home.path()},
                      {},
                      std::nullopt,
                      QString(),
                      nullptr});
    MainWindow window(models);
    models.navigator().select(AppSection::LargeFiles);
    auto* area = qobject_cast<QScrollArea*>(window.currentScreen());
    ASSERT_NE(area, nullptr);
    EXPECT_NE(qobject_cast<LargeFilesScreen*>(area->widget()), nullptr);
    EXPECT_EQ(area->widget()->objectName(), "largeFiles");

    models.navigator().select(AppSection::Duplicates);
    area = qobject_cast<QScrollArea*>(window.currentScreen());
    ASSERT_NE(area, nullptr);
    auto* dupes = qobject_cast<DuplicatesScreen*>(area->widget());
    ASSERT_NE(dupes, nullptr);
    QStringList labels;
    for (const QLabel* l : dupes->findChildren<QLabel*>()) {
        labels << l->text();
    }
    EXPECT_TRUE(labels.contains("Find files with identical contents, wherever they are. The "
                                "oldest copy is kept by default."));
}
