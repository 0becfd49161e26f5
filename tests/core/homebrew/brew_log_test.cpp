#include "core/homebrew/brew_log.h"

#include <gtest/gtest.h>

using namespace tarvik;
using Style = BrewLogLine::Style;
using Marker = BrewLogLine::Marker;
using Phase = BrewProgressTracker::Phase;

TEST(BrewLogParser, EscapeCodesGoColoursAndPrefixesDecideStyleAndMarker) {
    EXPECT_EQ(BrewLogParser::stripANSI("\x1b[34m==>\x1b[0m \x1b[1mUpgrading\x1b[0m wget"),
              "==> Upgrading wget");
    EXPECT_EQ(BrewLogParser::stripANSI("\x1b]8;;https://brew.sh\x07link\x1b]8;;\x1b\\"), "link");
    EXPECT_EQ(BrewLogParser::stripANSI("\x1b[?25l\x1b[2K"), "");

    const BrewLogLine empty = BrewLogParser::parse("\x1b[0m\x1b[K");
    EXPECT_EQ(empty.text, "");
    EXPECT_EQ(empty.style, Style::Normal);
    EXPECT_EQ(empty.marker, Marker::None);

    EXPECT_EQ(BrewLogParser::parse("\x1b[31mWarning: something\x1b[0m").marker,
              Marker::Critical); // red wins
    EXPECT_EQ(BrewLogParser::parse("Warning: x").marker, Marker::Watch);
    EXPECT_EQ(BrewLogParser::parse("\x1b[4;33mWarning\x1b[24m: y").marker, Marker::Watch);
    EXPECT_EQ(BrewLogParser::parse("Error: No such keg").marker, Marker::Critical);
    EXPECT_EQ(
        BrewLogParser::parse(QString::fromUcs4(U"\U0001F37A  /opt/homebrew/Cellar/wget/1.25.0"))
            .marker,
        Marker::Good);
    EXPECT_EQ(BrewLogParser::parse("\x1b[32m==>\x1b[0m \x1b[1mSummary\x1b[0m").marker,
              Marker::Good);

    EXPECT_EQ(
        BrewLogParser::parse("\x1b[34m==>\x1b[0m \x1b[1mPouring wget.bottle.tar.gz\x1b[0m").style,
        Style::Heading);
    EXPECT_EQ(BrewLogParser::parse("https://ghcr.io/v2/homebrew/core/wget/blobs/sha256:abc").style,
              Style::Dim);
    EXPECT_EQ(BrewLogParser::parse("######################################## 56.2%").style,
              Style::Dim);
    EXPECT_EQ(BrewLogParser::parse(" 45.5%").style, Style::Dim);
    EXPECT_EQ(
        BrewLogParser::parse("Removing: /opt/homebrew/Cellar/wget/1.24.5... (92 files, 4.3MB)")
            .style,
        Style::Normal);
    const BrewLogLine trimmed = BrewLogParser::parse("\r50%\r", 7);
    EXPECT_EQ(trimmed.text, "50%");
    EXPECT_EQ(trimmed.id, 7u);
}

TEST(BrewProgressTracker, PhasesPackagesAndPercentOfAnUpgrade) {
    BrewProgressTracker t;
    EXPECT_FALSE(t.feed("==> Upgrading wget curl"));
    EXPECT_EQ(t.packages(), (QSet<QString>{"wget", "curl"}));
    EXPECT_EQ(t.feed("==> Fetching wget"),
              (BrewProgressTracker::Update{"wget", Phase::Fetching, std::nullopt}));
    EXPECT_EQ(t.feed(" 45.5%")->percent, 0.455);
    EXPECT_FALSE(t.feed("150%"));
    EXPECT_FALSE(t.feed("nothing to see"));
    // A dependency being fetched changes the phase but not the package.
    const auto dep = t.feed("==> Fetching libidn2");
    EXPECT_EQ(dep->package, "wget");
    EXPECT_FALSE(dep->percent); // a new phase starts from nothing
    EXPECT_EQ(
        t.feed("==> Downloading https://ghcr.io/v2/homebrew/core/wget/manifests/1.25.0")->phase,
        Phase::Downloading);
    EXPECT_EQ(
        t.feed("######################################################################## 100.0%")
            ->percent,
        1.0);
    EXPECT_EQ(t.feed("==> Pouring wget--1.25.0.arm64_sonoma.bottle.tar.gz")->phase, Phase::Pouring);
    EXPECT_EQ(t.feed("==> Linking Binary 'wget' to '/opt/homebrew/bin/wget'")->phase,
              Phase::Linking);
    EXPECT_EQ(t.feed("==> Installing Cask firefox")->phase, Phase::Installing);
    EXPECT_EQ(t.feed("==> Moving App 'Firefox.app' to '/Applications/Firefox.app'")->phase,
              Phase::Installing);
    const auto cleaning = t.feed("Removing: ~/Library/Caches/Homebrew/wget--1.24.5... Cleaning up");
    EXPECT_EQ(cleaning->phase, Phase::Cleaning);
    EXPECT_FALSE(cleaning->package);
    EXPECT_EQ(BrewProgressTracker::phaseFromRaw("Pouring"), Phase::Pouring);
    EXPECT_FALSE(BrewProgressTracker::phaseFromRaw("Brewing"));
}

TEST(BrewFailure, TheFirstMatchingRuleExplainsTheFailure) {
    auto explain = [](const QStringList& log) {
        return BrewFailure::explain("firefox", "Firefox", log);
    };
    const BrewFailure running =
        explain({"Error: It seems there is already an App at '/Applications/Firefox.app'."});
    EXPECT_EQ(running.message,
              "Firefox is open, and Homebrew can't replace an app while it's running");
    EXPECT_EQ(running.retryLabel, "Quit Firefox and retry");
    EXPECT_EQ(
        explain({"curl: (6) Could not resolve host: ghcr.io", "Error: SHA256 mismatch"}).message,
        "The download didn't match its checksum. It may have been interrupted");
    EXPECT_EQ(explain({"curl: (7) Failed to connect to ghcr.io port 443"}).message,
              "Couldn't download Firefox. Check your connection");
    const BrewFailure keg = explain({"==> Upgrading x", "Error:   No such keg  "});
    EXPECT_EQ(keg.message, "Homebrew stopped with an error: No such keg");
    EXPECT_EQ(keg.retryLabel, "Retry");
    EXPECT_EQ(explain({"something odd"}).message, "Homebrew stopped with an error");
}
