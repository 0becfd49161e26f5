#include "core/sys/input_device_grab.h"

#include <QDir>
#include <QSocketNotifier>
#include <fcntl.h>
#include <libevdev/libevdev.h>
#include <unistd.h>

namespace tarvik {

struct InputDeviceGrab::Device {
    int fd = -1;
    libevdev* dev = nullptr;
    std::unique_ptr<QSocketNotifier> notifier;
    ~Device() {
        notifier.reset();
        if (dev != nullptr) {
            libevdev_grab(dev, LIBEVDEV_UNGRAB);
            libevdev_free(dev);
        }
        if (fd >= 0) {
            ::close(fd);
        }
    }
};

namespace {

bool isKeyboard(const libevdev* d) {
    return libevdev_has_event_code(d, EV_KEY, KEY_ESC) && libevdev_has_event_code(d, EV_KEY, KEY_A);
}

bool isPointer(const libevdev* d) {
    return (libevdev_has_event_code(d, EV_REL, REL_X) ||
            libevdev_has_event_code(d, EV_ABS, ABS_X)) &&
           (libevdev_has_event_code(d, EV_KEY, BTN_LEFT) ||
            libevdev_has_event_code(d, EV_KEY, BTN_TOUCH));
}

// Opens one event device; null when it can't be opened or is neither kind.
libevdev* openDevice(const QString& path, int& fd, bool keyboardsOnly) {
    fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        return nullptr;
    }
    libevdev* dev = nullptr;
    if (libevdev_new_from_fd(fd, &dev) == 0 &&
        (isKeyboard(dev) || (!keyboardsOnly && isPointer(dev)))) {
        return dev;
    }
    libevdev_free(dev);
    ::close(fd);
    fd = -1;
    return nullptr;
}

// Modifiers and lock keys are held or toggled while typing, not typed: they are not reported.
bool isModifier(unsigned code) {
    switch (code) {
    case KEY_LEFTSHIFT:
    case KEY_RIGHTSHIFT:
    case KEY_LEFTCTRL:
    case KEY_RIGHTCTRL:
    case KEY_LEFTALT:
    case KEY_RIGHTALT: // AltGr
    case KEY_LEFTMETA:
    case KEY_RIGHTMETA:
    case KEY_CAPSLOCK:
    case KEY_FN:
        return true;
    default:
        return false;
    }
}

QStringList eventDevices(const QString& dir) {
    QStringList out;
    for (const QString& name : QDir(dir).entryList({QStringLiteral("event*")}, QDir::System)) {
        out << dir + QLatin1Char('/') + name;
    }
    return out;
}

} // namespace

InputDeviceGrab::InputDeviceGrab(QString inputDir, QObject* parent)
    : QObject(parent), inputDir_(std::move(inputDir)) {}

InputDeviceGrab::~InputDeviceGrab() {
    releaseAll();
}

bool InputDeviceGrab::mayOpenDevices() const {
    for (const QString& path : eventDevices(inputDir_)) {
        int fd = -1;
        if (libevdev* dev = openDevice(path, fd, true)) {
            libevdev_free(dev);
            ::close(fd);
            return true;
        }
    }
    return false;
}

int InputDeviceGrab::grabAll() {
    releaseAll();
    for (const QString& path : eventDevices(inputDir_)) {
        auto d = std::make_unique<Device>();
        d->dev = openDevice(path, d->fd, false);
        if (d->dev == nullptr || libevdev_grab(d->dev, LIBEVDEV_GRAB) != 0) {
            continue; // someone else holds it, or it went away
        }
        d->notifier = std::make_unique<QSocketNotifier>(d->fd, QSocketNotifier::Read);
        Device* raw = d.get();
        connect(d->notifier.get(), &QSocketNotifier::activated, this, [this, raw] { drain(*raw); });
        devices_.push_back(std::move(d));
    }
    return grabbedCount();
}

void InputDeviceGrab::releaseAll() {
    if (draining_) {
        // A keyPressed handler let go while drain() is still reading one of these devices: they
        // leave the list now and are freed once drain() has returned.
        for (auto& d : devices_) {
            d->notifier->setEnabled(false);
            released_.push_back(std::move(d));
        }
    }
    devices_.clear();
}

void InputDeviceGrab::drain(Device& device) {
    draining_ = true;
    readKeys(device);
    draining_ = false;
    released_.clear();
}

void InputDeviceGrab::readKeys(Device& device) {
    input_event ev{};
    unsigned flags = LIBEVDEV_READ_FLAG_NORMAL;
    for (;;) {
        const int rc = libevdev_next_event(device.dev, flags, &ev);
        if (rc == LIBEVDEV_READ_STATUS_SYNC) {
            flags = LIBEVDEV_READ_FLAG_SYNC; // catch up after a dropped buffer, then go on
            continue;
        }
        if (rc != LIBEVDEV_READ_STATUS_SUCCESS) {
            if (rc == -ENODEV) {
                device.notifier->setEnabled(false); // unplugged
            }
            return;
        }
        flags = LIBEVDEV_READ_FLAG_NORMAL;
        // Mouse buttons are keys too, from BTN_MISC on; only keyboard keys count.
        if (ev.type == EV_KEY && ev.code < BTN_MISC && ev.value != 0 && !isModifier(ev.code)) {
            emit keyPressed(ev.code, ev.value == 2);
            if (!released_.empty()) {
                return; // the handler released the devices: this one is no longer ours to read
            }
        }
    }
}

} // namespace tarvik
