#include "core/speedtest/speed_test_history.h"

#include "core/sys/json_file.h"
#include "core/sys/xdg_paths.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <utility>

namespace tarvik {

SpeedTestHistoryStore::SpeedTestHistoryStore(QString filePath) : path_(std::move(filePath)) {}

QString SpeedTestHistoryStore::defaultFilePath() {
    return xdg::applicationSupport() + QStringLiteral("/speedtests.json");
}

namespace {

std::vector<SpeedTestResult> readable(const QJsonArray& entries) {
    std::vector<SpeedTestResult> out;
    for (const auto& v : entries) {
        if (auto r = SpeedTestResult::fromJson(v.toObject())) {
            out.push_back(std::move(*r));
        }
    }
    return out;
}

} // namespace

std::vector<SpeedTestResult> SpeedTestHistoryStore::load() const {
    return readable(JsonFile::read(path_).document.array());
}

std::optional<std::vector<SpeedTestResult>>
SpeedTestHistoryStore::change(const std::function<void(QJsonArray&)>& edit) const {
    QJsonArray entries;
    const bool written = JsonFile::update(path_, [&](QJsonDocument& document) {
        entries = document.array();
        edit(entries);
        while (entries.size() > static_cast<qsizetype>(kLimit)) {
            entries.removeLast();
        }
        document = QJsonDocument(entries);
    });
    if (!written) {
        return std::nullopt;
    }
    return readable(entries);
}

std::optional<std::vector<SpeedTestResult>>
SpeedTestHistoryStore::add(const SpeedTestResult& result) const {
    return change([&result](QJsonArray& entries) { entries.prepend(result.toJson()); });
}

std::optional<std::vector<SpeedTestResult>> SpeedTestHistoryStore::remove(const QUuid& id) const {
    return change([&id](QJsonArray& entries) {
        for (qsizetype i = entries.size() - 1; i >= 0; --i) {
            const auto r = SpeedTestResult::fromJson(entries[i].toObject());
            if (r && r->id == id) {
                entries.removeAt(i);
            }
        }
    });
}

std::optional<std::vector<SpeedTestResult>> SpeedTestHistoryStore::clear() const {
    return change([](QJsonArray& entries) { entries = {}; });
}

} // namespace tarvik
