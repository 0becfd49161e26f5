#include "core/speedtest/speed_test_history.h"

#include "core/platform/xdg_paths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>
#include <utility>

namespace tarvik {

SpeedTestHistoryStore::SpeedTestHistoryStore(QString filePath) : path_(std::move(filePath)) {}

QString SpeedTestHistoryStore::defaultFilePath() {
    return xdg::applicationSupport() + QStringLiteral("/speedtests.json");
}

std::vector<SpeedTestResult> SpeedTestHistoryStore::load() const {
    std::vector<SpeedTestResult> out;
    QFile f(path_);
    if (!f.open(QIODevice::ReadOnly)) {
        return out;
    }
    const QJsonDocument doc = QJsonDocument::fromJson(f.readAll());
    if (!doc.isArray()) {
        return out;
    }
    for (const auto& v : doc.array()) {
        if (auto r = SpeedTestResult::fromJson(v.toObject())) {
            out.push_back(std::move(*r));
        } else {
            return {}; // a damaged history is an empty one, never a partial guess
        }
    }
    return out;
}

bool SpeedTestHistoryStore::save(const std::vector<SpeedTestResult>& results) const {
    QJsonArray array;
    for (std::size_t i = 0; i < results.size() && i < kLimit; ++i) {
        array.append(results[i].toJson());
    }
    if (!QDir().mkpath(QFileInfo(path_).absolutePath())) {
        return false;
    }
    QSaveFile f(path_);
    if (!f.open(QIODevice::WriteOnly)) {
        return false;
    }
    f.write(QJsonDocument(array).toJson(QJsonDocument::Indented));
    return f.commit();
}

} // namespace tarvik
