#include "app/shell/section_icons.h"
#include "app/shell/theme.h"
#include "core/cleanup/file_kind.h"
#include "core/cleanup/junk_category.h"
#include "core/sys/color_scheme_portal.h"
#include "tests/support/private_bus.h"
#include "tests/support/wait.h"

#include <QApplication>
#include <QDBusVariant>
#include <QImage>
#include <gtest/gtest.h>

using namespace tarvik;

namespace {

const QString kPortal = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kMock = QStringLiteral("org.freedesktop.DBus.Mock");

// A stand-in for the desktop's settings portal whose "color-scheme" is `scheme` (0, 1, 2).
bool startPortal(test::PrivateBus& bus, uint scheme) {
    if (!bus.startMock(kPortal,
                       {kPortal, kPath, QStringLiteral("org.freedesktop.portal.Settings")})) {
        return false;
    }
    // Read answers a variant holding the value's variant, as the real portal does.
    const QDBusMessage added =
        bus.call(kPortal, kPath, kMock, QStringLiteral("AddMethod"),
                 {QString(), QStringLiteral("Read"), QStringLiteral("ss"), QStringLiteral("v"),
                  QStringLiteral("ret = dbus.UInt32(%1, variant_level=2)").arg(scheme)});
    return added.type() == QDBusMessage::ReplyMessage;
}

void changeScheme(test::PrivateBus& bus, uint scheme) {
    const QDBusMessage r =
        bus.call(kPortal, kPath, kMock, QStringLiteral("EmitSignal"),
                 {QStringLiteral("org.freedesktop.portal.Settings"),
                  QStringLiteral("SettingChanged"), QStringLiteral("ssv"),
                  QVariant::fromValue(QVariantList{
                      QStringLiteral("org.freedesktop.appearance"), QStringLiteral("color-scheme"),
                      QVariant::fromValue(QDBusVariant(QVariant::fromValue(scheme)))})});
    ASSERT_EQ(r.type(), QDBusMessage::ReplyMessage) << r.errorMessage().toStdString();
}

// The colour of the darkest (most inked) pixel of a symbol drawn at 32 px.
QColor inkOf(const QIcon& icon) {
    const QImage image = icon.pixmap(32, 32).toImage();
    QColor ink;
    int alpha = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor c = image.pixelColor(x, y);
            if (c.alpha() > alpha) {
                alpha = c.alpha();
                ink = c;
            }
        }
    }
    return ink;
}

} // namespace

TEST(ColorScheme, ThePortalsValueIsReadThroughAnyNumberOfVariants) {
    EXPECT_EQ(colorSchemeFromPortal(QVariant::fromValue(1u)), ColorScheme::PreferDark);
    EXPECT_EQ(colorSchemeFromPortal(QVariant::fromValue(
                  QDBusVariant(QVariant::fromValue(QDBusVariant(QVariant::fromValue(2u)))))),
              ColorScheme::PreferLight);
    EXPECT_EQ(colorSchemeFromPortal(QVariant::fromValue(0u)), ColorScheme::NoPreference);
    EXPECT_EQ(colorSchemeFromPortal(QVariant::fromValue(7u)), ColorScheme::NoPreference);
    EXPECT_EQ(colorSchemeFromPortal(QVariant(QStringLiteral("dark"))), ColorScheme::NoPreference);
    EXPECT_EQ(colorSchemeFromPortal(QVariant()), ColorScheme::NoPreference);
}

TEST(Theme, FollowsTheDesktopsDarkPreferenceLiveAndSymbolsRedrawInTheNewInk) {
    if (!test::PrivateBus::hasDbusMock()) {
        GTEST_SKIP() << "python3-dbusmock is not installed";
    }
    test::PrivateBus bus;
    ASSERT_TRUE(bus.isRunning());
    ASSERT_TRUE(startPortal(bus, 1));
    const QPalette before = QApplication::palette();

    Theme theme(std::make_unique<ColorSchemePortal>(bus.connection()));
    theme.start();
    EXPECT_TRUE(theme.dark());
    EXPECT_TRUE(isDark(QApplication::palette()));
    const QIcon symbol = symbolIcon("trash");
    const QColor darkInk = inkOf(symbol);
    EXPECT_GT(darkInk.lightness(), 150) << darkInk.name().toStdString();

    // The person switches the desktop to light: the window follows without a restart.
    changeScheme(bus, 2);
    ASSERT_TRUE(test::waitUntil([&] { return !theme.dark(); }, 5000));
    EXPECT_FALSE(isDark(QApplication::palette()));
    const QColor lightInk = inkOf(symbol);
    EXPECT_LT(lightInk.lightness(), 100) << lightInk.name().toStdString();
    QApplication::setPalette(before);
}

TEST(Theme, WithoutAPortalTheDesktopsOwnPaletteDecides) {
    const QPalette before = QApplication::palette();
    auto nobody =
        QDBusConnection::connectToBus(QStringLiteral("unix:path=/nonexistent"), "noportal");
    Theme theme(std::make_unique<ColorSchemePortal>(nobody));
    theme.start();
    EXPECT_EQ(theme.dark(), isDark(before));
    QApplication::setPalette(before);
}

TEST(Symbols, EverySymbolTheDataNamesIsDrawnFromTheSet) {
    std::vector<std::string_view> named;
    for (const auto& s : allSections()) {
        named.push_back(s.symbol);
    }
    for (JunkCategory c : kAllJunkCategories) {
        named.push_back(info(c).symbol);
    }
    for (MenuBarStat stat : kAllMenuBarStats) {
        named.push_back(symbol(stat));
    }
    std::vector<std::string> kinds;
    for (FileKind k : kAllFileKinds) {
        kinds.push_back(symbol(k).toStdString());
    }
    for (const auto& k : kinds) {
        named.push_back(k);
    }
    for (std::string_view s : named) {
        EXPECT_TRUE(hasSymbol(s)) << s;
        // Drawn, not a blank square, at 1× and 2×.
        for (qreal ratio : {1.0, 2.0}) {
            const QImage image = symbolIcon(s).pixmap(QSize(24, 24), ratio).toImage();
            EXPECT_EQ(image.width(), static_cast<int>(24 * ratio)) << s;
            int inked = 0;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    inked += image.pixelColor(x, y).alpha() > 128 ? 1 : 0;
                }
            }
            EXPECT_GT(inked, 10) << s << " at " << ratio;
        }
    }
}
