#include "app/shell/hold_while_shown.h"

#include <QEvent>
#include <QWidget>

namespace tarvik {
namespace {

class ShownHold : public QObject {
public:
    ShownHold(QWidget* widget, std::function<void()> acquire, std::function<void()> release)
        : QObject(widget), acquire_(std::move(acquire)), release_(std::move(release)) {
        widget->installEventFilter(this);
    }
    ~ShownHold() override {
        if (held_) {
            release_();
        }
    }

    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Show && !held_) {
            held_ = true;
            acquire_();
        } else if (event->type() == QEvent::Hide && held_) {
            held_ = false;
            release_();
        }
        return false;
    }

private:
    std::function<void()> acquire_;
    std::function<void()> release_;
    bool held_ = false;
};

} // namespace

void holdWhileShown(QWidget* widget, std::function<void()> acquire, std::function<void()> release) {
    new ShownHold(widget, std::move(acquire), std::move(release));
}

} // namespace tarvik
