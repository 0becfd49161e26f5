#include "core/awake/keep_awake_schedule_store.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <limits>

namespace tarvik::KeepAwakeScheduleStore {

QByteArray encode(const std::vector<KeepAwakeSchedule>& schedules) {
    QJsonArray list;
    for (const auto& s : schedules) {
        QJsonArray days;
        for (int d : s.weekdays) {
            days.append(d);
        }
        list.append(QJsonObject{{"id", s.id.toString(QUuid::WithoutBraces)},
                                {"name", s.name},
                                {"isEnabled", s.isEnabled},
                                {"weekdays", days},
                                {"startMinutes", s.startMinutes},
                                {"endMinutes", s.endMinutes}});
    }
    return QJsonDocument(list).toJson(QJsonDocument::Compact);
}

namespace {

Decoded damaged(const QString& why) {
    return {{},
            QStringLiteral("Your keep-awake schedules couldn't be read (%1), so none apply. "
                           "Add them again to use them.")
                .arg(why)};
}

bool isInteger(const QJsonValue& v) {
    return v.isDouble() && v.toDouble() == static_cast<double>(v.toInteger());
}

// A number too large for an int stays out of range rather than wrapping into it: 4294967836
// would otherwise read as 540, a valid 09:00.
int toInt(const QJsonValue& v) {
    return static_cast<int>(std::clamp<qint64>(v.toInteger(), std::numeric_limits<int>::min(),
                                               std::numeric_limits<int>::max()));
}

} // namespace

Decoded decode(const QByteArray& data) {
    if (data.trimmed().isEmpty()) {
        return {};
    }
    QJsonParseError error{};
    const QJsonDocument doc = QJsonDocument::fromJson(data, &error);
    if (error.error != QJsonParseError::NoError) {
        return damaged(error.errorString());
    }
    if (!doc.isArray()) {
        return damaged(QStringLiteral("not a list"));
    }
    Decoded out;
    for (const QJsonValue& item : doc.array()) {
        const QJsonObject o = item.toObject();
        const QUuid id = QUuid::fromString(o.value("id").toString());
        if (id.isNull() || !o.value("weekdays").isArray() || !isInteger(o.value("startMinutes")) ||
            !isInteger(o.value("endMinutes"))) {
            return damaged(QStringLiteral("an entry lacks its id, days or times"));
        }
        KeepAwakeSchedule s;
        s.id = id;
        s.name = o.value("name").toString();
        s.isEnabled = o.value("isEnabled").toBool(true);
        for (const QJsonValue& d : o.value("weekdays").toArray()) {
            if (!isInteger(d)) {
                return damaged(QStringLiteral("a day is not a number"));
            }
            s.weekdays.insert(toInt(d));
        }
        // Out-of-range values are kept as they are: such a schedule is listed but never opens.
        s.startMinutes = toInt(o.value("startMinutes"));
        s.endMinutes = toInt(o.value("endMinutes"));
        out.schedules.push_back(std::move(s));
    }
    return out;
}

} // namespace tarvik::KeepAwakeScheduleStore
