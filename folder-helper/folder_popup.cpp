#include "folder-helper/folder_popup.h"

#include "core/sys/desktop_apps.h"
#include "dock/folder_link.h"
#include "folder-helper/app_icon.h"
#include "folder-helper/tarvik_link.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QCursor>
#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

namespace tarvik {
namespace {

constexpr int kTextPadding = 6;
constexpr int kNarrowest = 300; // room for the footer and a sentence of help

int columnsFor(int count) {
    return std::clamp(count, 1, FolderPopup::kColumns);
}

int gridWidth(int count) {
    const int columns = columnsFor(count);
    return columns * FolderPopup::kTileWidth + (columns - 1) * FolderPopup::kSpacing;
}

// The name on two lines at most, broken at a space, the rest elided.
QString tileText(const QString& name, const QFontMetrics& metrics, int width) {
    if (metrics.horizontalAdvance(name) <= width) {
        return name;
    }
    for (qsizetype i = name.lastIndexOf(QLatin1Char(' ')); i > 0;
         i = name.lastIndexOf(QLatin1Char(' '), i - 1)) {
        if (metrics.horizontalAdvance(name.left(i)) <= width) {
            return name.left(i) + QLatin1Char('\n') +
                   metrics.elidedText(name.mid(i + 1), Qt::ElideRight, width);
        }
    }
    return metrics.elidedText(name, Qt::ElideRight, width);
}

QLabel* wrappedLabel(const QString& text, int width) {
    auto* label = new QLabel(text);
    label->setWordWrap(true);
    label->setFixedWidth(width);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

} // namespace

FolderPopup::FolderPopup(QString tarvik, QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      tarvik_(std::move(tarvik)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    // Colours come from the desktop's palette, light or dark, only the shapes from here.
    setStyleSheet(
        QStringLiteral("QToolButton#appTile { border: none; border-radius: 8px; padding: 4px; }"
                       "QToolButton#appTile:hover { background: palette(midlight); }"
                       "QToolButton#appTile:focus { background: palette(highlight);"
                       " color: palette(highlighted-text); }"));
}

void FolderPopup::setBody(QWidget* body) {
    delete body_;
    body_ = body;
    layout()->addWidget(body_);
}

void FolderPopup::showFolder(const AppFolder& folder) {
    folder_ = folder;
    entries_.clear();
    tiles_.clear();
    const int count = static_cast<int>(folder.apps.size());
    const int width = std::max(gridWidth(count), kNarrowest);
    auto* body = new QWidget;
    auto* column = new QVBoxLayout(body);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(10);
    if (folder.apps.empty()) {
        column->addWidget(
            wrappedLabel(QStringLiteral("This folder is empty. Add apps in Tarvik."), width));
    } else {
        auto* grid = new QGridLayout;
        grid->setSpacing(kSpacing);
        for (std::size_t i = 0; i < folder.apps.size(); ++i) {
            const int at = static_cast<int>(i);
            grid->addWidget(tile(folder.apps[i], i), at / kColumns, at % kColumns);
        }
        auto* centred = new QHBoxLayout;
        centred->addStretch();
        centred->addLayout(grid);
        centred->addStretch();
        column->addLayout(centred);
    }
    message_ = wrappedLabel({}, width);
    message_->hide();
    column->addWidget(message_);

    const QString title = folder.name.isEmpty() ? folder.sanitizedName() : folder.name;
    auto* footer = new QHBoxLayout;
    auto* name = new QLabel(title);
    QFont bold = name->font();
    bold.setBold(true);
    name->setFont(bold);
    auto* open = new QPushButton(QStringLiteral("Open in Tarvik"));
    connect(open, &QPushButton::clicked, this, [this] { openLink(FolderLink::open(folder_.id)); });
    footer->addWidget(name, 1);
    footer->addWidget(open);
    column->addLayout(footer);
    setBody(body);

    setWindowTitle(title);
    setAccessibleName(QStringLiteral("%1 folder").arg(title));
    if (!tiles_.empty()) {
        tiles_.front()->setFocus();
    } else {
        open->setFocus();
    }
}

QWidget* FolderPopup::tile(const AppEntry& app, std::size_t index) {
    const std::optional<DesktopApp> known = DesktopApps::find(app.reference());
    QString entry = QFileInfo::exists(app.path) ? app.path : QString();
    if (entry.isEmpty() && known && QFileInfo::exists(known->path)) {
        entry = known->path;
    }
    entries_.push_back(entry);
    const bool installed = !entry.isEmpty();
    QString name = app.name;
    if (name.isEmpty()) {
        name = known ? known->name : app.reference();
    }

    auto* button = new QToolButton;
    button->setObjectName(QStringLiteral("appTile"));
    button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    button->setFixedSize(kTileWidth, kTileHeight);
    button->setIconSize(QSize(kIconPixels, kIconPixels));
    button->setFocusPolicy(Qt::StrongFocus);
    const QIcon icon = appIcon(known ? known->icon : QString(), kIconPixels);
    const QFontMetrics metrics(button->font());
    const int textWidth = kTileWidth - 2 * kTextPadding;
    if (installed) {
        button->setIcon(icon);
        button->setText(tileText(name, metrics, textWidth));
        button->setAccessibleName(name);
    } else {
        // Greyed like a disabled button, but still there to be removed from the folder.
        button->setIcon(QIcon(icon.pixmap(kIconPixels, QIcon::Disabled)));
        button->setText(metrics.elidedText(name, Qt::ElideRight, textWidth) +
                        QStringLiteral("\n(not installed)"));
        button->setAccessibleName(QStringLiteral("%1 (not installed)").arg(name));
        QPalette greyed = button->palette();
        greyed.setColor(QPalette::ButtonText,
                        greyed.color(QPalette::Disabled, QPalette::ButtonText));
        button->setPalette(greyed);
    }
    button->setToolTip(name);
    button->installEventFilter(this);
    connect(button, &QToolButton::clicked, this, [this, index] { launch(index); });
    tiles_.push_back(button);
    return button;
}

void FolderPopup::showProblem(const QString& problem) {
    folder_ = {};
    entries_.clear();
    tiles_.clear();
    auto* body = new QWidget;
    auto* column = new QVBoxLayout(body);
    column->setContentsMargins(0, 0, 0, 0);
    message_ = wrappedLabel(problem, 360);
    column->addWidget(message_);
    auto* close = new QPushButton(QStringLiteral("Close"));
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    column->addWidget(close, 0, Qt::AlignRight);
    setBody(body);
    setWindowTitle(QStringLiteral("Dock folder"));
    setAccessibleName(QStringLiteral("Dock folder"));
    close->setFocus();
}

QString FolderPopup::message() const {
    return message_ != nullptr ? message_->text() : QString();
}

void FolderPopup::say(const QString& text) {
    message_->setText(text);
    message_->show();
}

void FolderPopup::launch(std::size_t index) {
    const QString name = tiles_[index]->toolTip();
    if (entries_[index].isEmpty()) {
        say(QStringLiteral("%1 is not installed any more. Install it again, or remove it from "
                           "the folder (right-click it).")
                .arg(name));
        return;
    }
    QString error;
    if (!DesktopApps::launch(entries_[index], &error)) {
        say(QStringLiteral("%1 didn't open: %2").arg(name, error));
        return;
    }
    close();
}

void FolderPopup::openLink(const QString& link) {
    if (!sendToTarvik(tarvik_, link)) {
        say(QStringLiteral("Tarvik couldn't be started: it is not installed beside this helper."));
        return;
    }
    close();
}

void FolderPopup::showMenu(std::size_t index, QPoint at) {
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const QString reference = folder_.apps[index].reference();
    if (!entries_[index].isEmpty()) {
        menu->addAction(QStringLiteral("Open"), this, [this, index] { launch(index); });
    }
    menu->addAction(QStringLiteral("Remove from folder"), this,
                    [this, reference] { openLink(FolderLink::remove(folder_.id, reference)); });
    menu->addSeparator();
    menu->addAction(QStringLiteral("Open in Tarvik"), this,
                    [this] { openLink(FolderLink::open(folder_.id)); });
    menu->popup(at);
}

bool FolderPopup::eventFilter(QObject* watched, QEvent* event) {
    const auto found = std::find(tiles_.begin(), tiles_.end(), watched);
    if (found == tiles_.end()) {
        return QWidget::eventFilter(watched, event);
    }
    const auto index = static_cast<std::size_t>(found - tiles_.begin());
    if (event->type() == QEvent::ContextMenu) {
        showMenu(index, static_cast<QContextMenuEvent*>(event)->globalPos());
        return true;
    }
    if (event->type() != QEvent::KeyPress) {
        return false;
    }
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key == Qt::Key_Return || key == Qt::Key_Enter) {
        launch(index);
        return true;
    }
    const int count = static_cast<int>(tiles_.size());
    const int at = static_cast<int>(index);
    int next = at;
    switch (key) {
    case Qt::Key_Left:
        next = at - 1;
        break;
    case Qt::Key_Right:
        next = at + 1;
        break;
    case Qt::Key_Up:
        next = at - kColumns;
        break;
    case Qt::Key_Down:
        next = at + kColumns;
        break;
    default:
        return false;
    }
    if (next >= 0 && next < count) {
        tiles_[static_cast<std::size_t>(next)]->setFocus(Qt::TabFocusReason);
    }
    return true;
}

void FolderPopup::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

void FolderPopup::changeEvent(QEvent* event) {
    if (event->type() == QEvent::ActivationChange) {
        if (isActiveWindow()) {
            wasActive_ = true;
        } else if (wasActive_ && QApplication::activePopupWidget() == nullptr) {
            // A click elsewhere; the popup's own menu takes no activation away.
            close();
        }
    }
    QWidget::changeEvent(event);
}

void FolderPopup::paintEvent(QPaintEvent* event) {
    QWidget::paintEvent(event);
    // A frameless window needs an edge of its own against a window of the same colour.
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void FolderPopup::popUp() {
    wasActive_ = false;
    adjustSize();
    // On Wayland a client can neither read the pointer nor place its window.
    if (QGuiApplication::platformName().startsWith(QLatin1String("wayland"))) {
        const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
        move(available.center() - rect().center());
    } else {
        const QPoint pointer = QCursor::pos();
        const QScreen* screen = QGuiApplication::screenAt(pointer);
        if (screen == nullptr) {
            screen = QGuiApplication::primaryScreen();
        }
        move(placeNear(pointer, size(), screen->availableGeometry()));
    }
    show();
    raise();
    activateWindow();
}

QPoint FolderPopup::tileCentre(int index, int count, int width) {
    const int left = (width - gridWidth(count)) / 2;
    return {left + (index % kColumns) * (kTileWidth + kSpacing) + kTileWidth / 2,
            kMargin + (index / kColumns) * (kTileHeight + kSpacing) + kTileHeight / 2};
}

QPoint FolderPopup::placeNear(QPoint pointer, QSize size, QRect available) {
    constexpr int kGap = 8;
    int x = pointer.x() - size.width() / 2;
    int y = pointer.y() - kGap - size.height();
    if (y < available.top()) {
        y = pointer.y() + kGap;
    }
    x = std::clamp(x, available.left(),
                   std::max(available.left(), available.right() + 1 - size.width()));
    y = std::clamp(y, available.top(),
                   std::max(available.top(), available.bottom() + 1 - size.height()));
    return {x, y};
}

} // namespace tarvik
