#include "app/homebrew/brew_screen.h"

#include "app/homebrew/brew_model.h"
#include "app/shell/card.h"
#include "app/shell/empty_state.h"
#include "app/shell/screen_header.h"
#include "app/shell/section_subtitles.h"
#include "app/shell/theme.h"
#include "core/text/counts.h"
#include "core/text/metric_format.h"
#include "core/text/whole_number.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTextEdit>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace tarvik {
namespace {

enum Filter { All, Outdated, Pinned, OnRequest, Dependencies, Services };

bool passes(const BrewPackage& p, int filter, const QString& search) {
    if (!search.isEmpty() && !p.id.contains(search, Qt::CaseInsensitive) &&
        !p.displayName.contains(search, Qt::CaseInsensitive) &&
        !p.desc.value_or(QString()).contains(search, Qt::CaseInsensitive)) {
        return false;
    }
    switch (filter) {
    case Outdated:
        return p.isOutdated();
    case Pinned:
        return p.pinned;
    case OnRequest:
        return p.onRequest;
    case Dependencies:
        return p.isDependency();
    case Services:
        return p.service.has_value();
    default:
        return true;
    }
}

QString colour(BrewLogLine::Marker m) {
    switch (m) {
    case BrewLogLine::Marker::Critical:
        return meaningColor(Meaning::Critical).name();
    case BrewLogLine::Marker::Watch:
        return meaningColor(Meaning::Watch).name();
    case BrewLogLine::Marker::Good:
        return meaningColor(Meaning::Good).name();
    case BrewLogLine::Marker::None:
        return {};
    }
    return {};
}

} // namespace

BrewScreen::BrewScreen(BrewModel& model, QWidget* parent) : QWidget(parent), model_(model) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(space::xl, space::l, space::xl, space::l);
    layout->setSpacing(space::m);
    layout->addWidget(
        new ScreenHeader(QStringLiteral("Homebrew"), sectionSubtitle(AppSection::Homebrew), this));

    status_ = new QLabel(this);
    status_->setWordWrap(true);
    status_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(status_);

    notInstalled_ = new EmptyState("mug",
                                   tr("Homebrew isn't installed. Install it from <a "
                                      "href=\"https://brew.sh\">brew.sh</a> (it goes to "
                                      "/home/linuxbrew/.linuxbrew), then press Refresh."),
                                   this);
    notInstalled_->setObjectName(QStringLiteral("brewNotInstalled"));
    connect(notInstalled_->setAction(tr("Refresh")), &QPushButton::clicked, &model_,
            &BrewModel::load);
    layout->addWidget(notInstalled_, 1);

    // The list and what acts on it, shown once Homebrew is there.
    listPage_ = new QWidget(this);
    auto* list = new QVBoxLayout(listPage_);
    list->setContentsMargins(0, 0, 0, 0);
    list->setSpacing(space::m);
    layout->addWidget(listPage_, 1);

    auto* bar = new QHBoxLayout();
    search_ = new QLineEdit(this);
    search_->setPlaceholderText(tr("Search installed packages"));
    search_->setClearButtonEnabled(true);
    filter_ = new QComboBox(this);
    filter_->addItems({tr("All"), tr("Outdated"), tr("Pinned"), tr("Installed on request"),
                       tr("Dependencies"), tr("Services")});
    refresh_ = new QPushButton(tr("&Refresh"), this);
    bar->addWidget(search_, 1);
    bar->addWidget(filter_);
    bar->addWidget(refresh_);
    list->addLayout(bar);

    tree_ = new QTreeWidget(this);
    tree_->setObjectName(QStringLiteral("brewPackages"));
    tree_->setRootIsDecorated(false);
    tree_->setUniformRowHeights(true);
    tree_->setAlternatingRowColors(true);
    tree_->setColumnCount(5);
    tree_->setHeaderLabels({tr("Name"), tr("Version"), tr("Available"), tr("Kind"), tr("Size")});
    // The name takes what the figures leave, and the figures are never cut.
    tree_->header()->setStretchLastSection(false);
    tree_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    for (int column = 1; column < 5; ++column) {
        tree_->header()->setSectionResizeMode(column, QHeaderView::ResizeToContents);
    }
    tree_->headerItem()->setTextAlignment(4, Qt::AlignRight | Qt::AlignVCenter);
    tree_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    tree_->setSortingEnabled(true);
    tree_->sortByColumn(0, Qt::AscendingOrder);
    tree_->setMinimumHeight(220);
    list->addWidget(tree_, 1);

    // A package's details show under the list while one is selected, so the list keeps the width.
    detailsCard_ = new Card(this);
    detailsCard_->setObjectName(QStringLiteral("brewDetails"));
    details_ = new QLabel(detailsCard_);
    details_->setWordWrap(true);
    details_->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    details_->setOpenExternalLinks(true);
    details_->setTextInteractionFlags(Qt::TextBrowserInteraction);
    detailsCard_->body()->addWidget(details_);
    detailsCard_->hide();
    list->addWidget(detailsCard_);

    auto* actions = new QHBoxLayout();
    upgradeAll_ = new QPushButton(tr("Upgrade All"), this);
    upgradeAll_->setDefault(true);
    upgradeSelected_ = new QPushButton(tr("Upgrade Selected"), this);
    uninstall_ = new QPushButton(tr("Uninstall…"), this);
    unpin_ = new QPushButton(tr("Unpin"), this);
    install_ = new QPushButton(tr("Install…"), this);
    doctor_ = new QPushButton(tr("Doctor"), this);
    cleanup_ = new QPushButton(tr("Clean Up…"), this);
    for (auto* b :
         {upgradeAll_, upgradeSelected_, uninstall_, unpin_, install_, doctor_, cleanup_}) {
        actions->addWidget(b);
    }
    actions->addStretch(1);
    list->addLayout(actions);

    runBox_ = new QWidget(this);
    auto* run = new QVBoxLayout(runBox_);
    run->setContentsMargins(0, 0, 0, 0);
    auto* runHead = new QHBoxLayout();
    runTitle_ = new QLabel(runBox_);
    progress_ = new QProgressBar(runBox_);
    progress_->setRange(0, 100);
    progress_->setObjectName(QStringLiteral("brewProgress"));
    cancel_ = new QPushButton(tr("Cancel"), runBox_);
    runHead->addWidget(runTitle_);
    runHead->addWidget(progress_, 1);
    runHead->addWidget(cancel_);
    run->addLayout(runHead);
    log_ = new QTextEdit(runBox_);
    log_->setReadOnly(true);
    log_->setObjectName(QStringLiteral("brewLog"));
    log_->setMinimumHeight(140);
    QFont mono(QStringLiteral("monospace"));
    mono.setStyleHint(QFont::Monospace);
    log_->setFont(mono);
    run->addWidget(log_);
    auto* failRow = new QHBoxLayout();
    failure_ = new QLabel(runBox_);
    failure_->setObjectName(QStringLiteral("brewFailure"));
    failure_->setWordWrap(true);
    setTextMeaning(failure_, Meaning::Critical);
    retry_ = new QPushButton(runBox_);
    failRow->addWidget(failure_, 1);
    failRow->addWidget(retry_);
    run->addLayout(failRow);
    runBox_->hide();
    layout->addWidget(runBox_);

    connect(refresh_, &QPushButton::clicked, &model_, &BrewModel::load);
    connect(search_, &QLineEdit::textChanged, this, &BrewScreen::renderList);
    connect(filter_, &QComboBox::currentIndexChanged, this, &BrewScreen::renderList);
    connect(tree_, &QTreeWidget::itemSelectionChanged, this, [this] {
        renderDetails();
        updateButtons();
    });
    connect(upgradeAll_, &QPushButton::clicked, this, [this] { model_.upgrade({}); });
    connect(upgradeSelected_, &QPushButton::clicked, this, [this] {
        QStringList names;
        for (auto* item : tree_->selectedItems()) {
            names << item->text(0);
        }
        model_.upgrade(names);
    });
    connect(uninstall_, &QPushButton::clicked, this, [this] {
        const QString name = selectedName();
        for (const auto& p : model_.snapshot()->packages) {
            if (p.id != name) {
                continue;
            }
            const bool needed = !p.dependents.isEmpty();
            const QString question = needed ? tr("%1 is needed by %2. Uninstall it anyway?")
                                                  .arg(name, p.dependents.join(", "))
                                            : tr("Uninstall %1?").arg(name);
            if (QMessageBox::question(this, tr("Uninstall"), question) == QMessageBox::Yes) {
                model_.uninstall(name, p.kind, needed);
            }
        }
    });
    connect(unpin_, &QPushButton::clicked, this, [this] { model_.unpin(selectedName()); });
    connect(install_, &QPushButton::clicked, this, [this] {
        bool ok = false;
        const QString query = QInputDialog::getText(this, tr("Install"), tr("Search Homebrew for:"),
                                                    QLineEdit::Normal, {}, &ok)
                                  .trimmed();
        if (ok && !query.isEmpty()) {
            install_->setEnabled(false);
            model_.search(query);
        }
    });
    connect(
        &model_, &BrewModel::searchFinished, this,
        [this](const QString& query, const QStringList& formulae, const QStringList& casks,
               const QString& error) {
            updateButtons();
            if (!error.isEmpty() || (formulae.isEmpty() && casks.isEmpty())) {
                QMessageBox::information(
                    this, tr("Install"),
                    error.isEmpty() ? tr("Nothing in Homebrew matches “%1”.").arg(query) : error);
                return;
            }
            QStringList choices;
            for (const auto& f : formulae) {
                choices << f;
            }
            for (const auto& c : casks) {
                choices << c + tr(" (cask)");
            }
            bool ok = false;
            const QString chosen = QInputDialog::getItem(this, tr("Install"), tr("Install which?"),
                                                         choices, 0, false, &ok);
            if (ok) {
                const bool cask = chosen.endsWith(tr(" (cask)"));
                model_.install(cask ? chosen.left(chosen.size() - tr(" (cask)").size()) : chosen,
                               cask ? BrewPackageKind::Cask : BrewPackageKind::Formula);
            }
        });
    connect(doctor_, &QPushButton::clicked, &model_, &BrewModel::doctor);
    connect(cleanup_, &QPushButton::clicked, this, [this] {
        QMessageBox box(QMessageBox::Question, tr("Clean Up"),
                        tr("Remove old versions and Homebrew's download cache?"),
                        QMessageBox::Cancel, this);
        box.setInformativeText(tr("Preview first to see what would go, or list the dependencies "
                                  "nothing needs any more."));
        auto* clean = box.addButton(tr("Clean Up"), QMessageBox::DestructiveRole);
        auto* preview = box.addButton(tr("Preview"), QMessageBox::ActionRole);
        auto* orphans = box.addButton(tr("Unneeded Dependencies"), QMessageBox::ActionRole);
        box.setDefaultButton(preview);
        box.exec();
        if (box.clickedButton() == clean) {
            model_.cleanup();
        } else if (box.clickedButton() == preview) {
            model_.cleanupPreview();
        } else if (box.clickedButton() == orphans) {
            model_.orphanPreview();
        }
    });
    connect(cancel_, &QPushButton::clicked, &model_, &BrewModel::cancel);
    connect(retry_, &QPushButton::clicked, &model_, &BrewModel::retry);
    connect(&model_, &BrewModel::changed, this, [this] {
        render();
        if (!model_.isRunning() && !model_.isLoading()) {
            renderList();
        }
    });
    connect(&model_, &BrewModel::logLine, this, [this](const BrewLogLine& line) {
        QString html = line.text.toHtmlEscaped();
        if (line.style == BrewLogLine::Style::Heading) {
            html = QStringLiteral("<b>") + html + QStringLiteral("</b>");
        }
        const QString c = line.style == BrewLogLine::Style::Dim && colour(line.marker).isEmpty()
                              ? QStringLiteral("gray")
                              : colour(line.marker);
        log_->append(
            c.isEmpty() ? html : QStringLiteral("<span style=\"color:%1\">%2</span>").arg(c, html));
    });
    connect(&model_, &BrewModel::progressChanged, this, [this] {
        const auto& p = model_.progress();
        QString text = p.phase ? BrewProgressTracker::rawValue(*p.phase) : QString();
        if (p.package) {
            text += QLatin1Char(' ') + *p.package;
        }
        progress_->setFormat(text + QStringLiteral(" %p%"));
        progress_->setValue(p.percent ? wholeNumber<int>(*p.percent * 100) : 0);
    });
    render();
    renderList();
}

void BrewScreen::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!loadedOnce_) {
        loadedOnce_ = true;
        model_.load();
    }
}

QString BrewScreen::failureText() const {
    return failure_->isHidden() ? QString() : failure_->text();
}
void BrewScreen::setFilter(int index) {
    filter_->setCurrentIndex(index);
}
void BrewScreen::setSearch(const QString& text) {
    search_->setText(text);
}

QString BrewScreen::selectedName() const {
    const auto items = tree_->selectedItems();
    return items.isEmpty() ? QString() : items.front()->text(0);
}

void BrewScreen::render() {
    const bool have = model_.snapshot().has_value();
    const bool missing = model_.isNotInstalled() && !model_.isLoading();
    notInstalled_->setVisible(missing);
    listPage_->setVisible(!missing);
    status_->setVisible(!missing);
    if (missing) {
        status_->clear();
    } else if (model_.busy()) {
        status_->setText(
            tr("Homebrew is busy: %1 (process %2, running for %3). Waiting for it to finish…")
                .arg(model_.busy()->command.toHtmlEscaped())
                .arg(model_.busy()->pid)
                .arg(model_.busy()->elapsed));
    } else if (model_.isLoading()) {
        status_->setText(have ? tr("Measuring what's installed…")
                              : tr("Reading what is installed…"));
    } else if (!model_.loadError().isEmpty()) {
        status_->setText(model_.loadError());
    } else if (have) {
        const auto& s = *model_.snapshot();
        status_->setText(tr("Homebrew %1 · %2, %3 · %4 outdated · %5 on disk")
                             .arg(model_.environment() ? model_.environment()->version : QString())
                             .arg(countOf(s.formulaeCount(), u"formula", u"formulae"))
                             .arg(countOf(s.casksCount(), u"cask", u"casks"))
                             .arg(s.outdated().size())
                             .arg(MetricFormat::bytes(s.totalSize())));
    }
    updateButtons();
    renderRun();
}

void BrewScreen::updateButtons() {
    const bool busy = model_.isRunning() || model_.isLoading();
    const bool have = model_.snapshot().has_value();
    const bool selected = !tree_->selectedItems().isEmpty();
    refresh_->setEnabled(!busy);
    upgradeAll_->setEnabled(!busy && have && !model_.snapshot()->outdated().empty());
    upgradeSelected_->setEnabled(!busy && selected);
    uninstall_->setEnabled(!busy && selected);
    unpin_->setEnabled(!busy && selected);
    install_->setEnabled(!busy && !model_.isNotInstalled());
    doctor_->setEnabled(!busy && !model_.isNotInstalled());
    cleanup_->setEnabled(!busy && !model_.isNotInstalled());
}

void BrewScreen::renderRun() {
    const bool showRun = model_.isRunning() || !model_.log().isEmpty() || model_.failure();
    runBox_->setVisible(showRun);
    runTitle_->setText(model_.runningTitle());
    cancel_->setVisible(model_.isRunning());
    progress_->setVisible(model_.isRunning());
    if (model_.isRunning() && model_.log().isEmpty()) {
        log_->clear();
    }
    failure_->setVisible(model_.failure().has_value());
    retry_->setVisible(model_.failure().has_value());
    if (model_.failure()) {
        failure_->setText(model_.failure()->message + QLatin1Char('.'));
        retry_->setText(model_.failure()->retryLabel);
    }
}

void BrewScreen::renderList() {
    const QString keep = selectedName();
    tree_->setSortingEnabled(false);
    tree_->clear();
    bool anySize = false;
    if (model_.snapshot()) {
        for (const auto& p : model_.snapshot()->packages) {
            if (!passes(p, filter_->currentIndex(), search_->text().trimmed())) {
                continue;
            }
            auto* item = new QTreeWidgetItem(tree_);
            item->setText(0, p.id);
            item->setText(1, BrewVersion::display(p.installedVersion));
            item->setText(2, p.latestVersion ? BrewVersion::display(*p.latestVersion) +
                                                   (p.pinned ? tr(" (pinned)") : QString())
                                             : QString());
            item->setText(3, p.kind == BrewPackageKind::Cask ? tr("Cask") : tr("Formula"));
            item->setText(4, p.size && *p.size > 0 ? MetricFormat::bytes(*p.size) : QString());
            item->setTextAlignment(4, Qt::AlignRight | Qt::AlignVCenter);
            item->setData(4, Qt::UserRole, static_cast<qlonglong>(p.size.value_or(0)));
            anySize = anySize || (p.size && *p.size > 0);
            if (p.isMajorJump() && p.isOutdated()) {
                item->setToolTip(2, tr("A major version: read what changed before upgrading."));
            }
            if (p.id == keep) {
                item->setSelected(true);
            }
        }
    }
    tree_->setSortingEnabled(true);
    // Sizes arrive after the list; until then the column would only be empty.
    tree_->setColumnHidden(4, !anySize);
    renderDetails();
}

void BrewScreen::renderDetails() {
    const QString name = selectedName();
    detailsCard_->setVisible(!name.isEmpty() && model_.snapshot());
    if (name.isEmpty() || !model_.snapshot()) {
        details_->clear();
        return;
    }
    for (const auto& p : model_.snapshot()->packages) {
        if (p.id != name) {
            continue;
        }
        QString html = QStringLiteral("<b>%1</b><br>").arg(p.displayName.toHtmlEscaped());
        if (p.desc) {
            html += p.desc->toHtmlEscaped() + QStringLiteral("<br>");
        }
        if (p.homepage) {
            html += QStringLiteral("<a href=\"%1\">%1</a><br>").arg(p.homepage->toHtmlEscaped());
        }
        html += tr("From %1 · %2")
                    .arg(p.tap.toHtmlEscaped(),
                         p.onRequest ? tr("installed by you") : tr("installed as a dependency"));
        if (p.pinned) {
            html += tr(" · pinned");
        }
        if (!p.dependents.isEmpty()) {
            html += tr("<br>Needed by: %1").arg(p.dependents.join(", ").toHtmlEscaped());
        }
        if (!p.dependencies.isEmpty()) {
            html += tr("<br>Needs: %1").arg(p.dependencies.join(", ").toHtmlEscaped());
        }
        if (p.caveats) {
            html += QStringLiteral("<br><i>%1</i>")
                        .arg(p.caveats->trimmed().toHtmlEscaped().replace(QLatin1Char('\n'),
                                                                          QStringLiteral("<br>")));
        }
        details_->setText(html);
    }
}

} // namespace tarvik
