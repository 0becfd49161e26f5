#pragma once

#include "dock/app_folder.h"

#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>
#include <QWidget>
#include <vector>

class QLabel;
class QToolButton;

namespace tarvik {

// The grid a dock folder's launcher opens: the folder's apps, icon above name, up to four to a
// row. Clicking one or pressing Enter on it starts the app and closes the popup; Escape or a
// click elsewhere closes it too. The popup's links go to Tarvik ("Open in Tarvik", "Remove
// from folder").
class FolderPopup : public QWidget {
    Q_OBJECT
public:
    static constexpr int kColumns = 4;
    static constexpr int kTileWidth = 108;
    static constexpr int kTileHeight = 100;
    static constexpr int kIconPixels = 48;
    static constexpr int kSpacing = 6;
    static constexpr int kMargin = 12;

    // `tarvik` is the program the links are handed to.
    explicit FolderPopup(QString tarvik, QWidget* parent = nullptr);

    void showFolder(const AppFolder& folder);
    // Why there is no folder to show, in the user's words.
    void showProblem(const QString& problem);
    // Places the popup (near the pointer on X11, centred on Wayland), shows and activates it.
    void popUp();

    // The failure or problem shown, empty when there is none.
    QString message() const;

    // The centre of tile `index` of `count` in a popup `width` wide; the grid is centred.
    static QPoint tileCentre(int index, int count, int width);
    // The top-left corner for a popup of `size` opened at `pointer`: above it and centred on
    // it when there is room, always inside `available`.
    static QPoint placeNear(QPoint pointer, QSize size, QRect available);

protected:
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void setBody(QWidget* body);
    QWidget* tile(const AppEntry& app, std::size_t index);
    void launch(std::size_t index);
    void showMenu(std::size_t index, QPoint at);
    void openLink(const QString& link);
    void say(const QString& text);

    QString tarvik_;
    AppFolder folder_;
    std::vector<QString> entries_; // each app's desktop entry, empty when not installed
    std::vector<QToolButton*> tiles_;
    QWidget* body_ = nullptr;
    QLabel* message_ = nullptr;
    bool wasActive_ = false;
};

} // namespace tarvik
