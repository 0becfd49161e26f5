#include "cli/commands.h"
#include "cli/output.h"
#include "core/settings/preferences.h"
#include "core/text/qt_text.h"

#include <QJsonArray>
#include <QJsonObject>
#include <memory>

namespace tarvik::cli {
namespace {

QJsonValue jsonValue(const PreferenceKey& key, const QVariant& v) {
    switch (key.type) {
    case PreferenceType::Bool:
        return v.toBool();
    case PreferenceType::Double:
        return v.toDouble();
    case PreferenceType::MenuBarStats:
    case PreferenceType::Choice:
    case PreferenceType::Url:
    case PreferenceType::Agents:
    case PreferenceType::Schedules:
        return v.toString();
    }
    return {};
}

const PreferenceKey* requireKey(const std::string& name) {
    const PreferenceKey* key = findPreferenceKey(name);
    if (key == nullptr) {
        printError(QStringLiteral("There is no setting called \"%1\". Run `tarvik settings list` "
                                  "to see them all.")
                       .arg(QString::fromStdString(name)));
    }
    return key;
}

int list(bool asJson) {
    Preferences prefs;
    if (asJson) {
        QJsonArray out;
        for (const auto& key : preferenceKeys()) {
            out.append(QJsonObject{
                {QStringLiteral("key"), toQString(key.key)},
                {QStringLiteral("value"), jsonValue(key, prefs.value(key.key))},
                {QStringLiteral("default"),
                 jsonValue(key, parsePreference(key, toQString(key.defaultText)).value)},
                {QStringLiteral("isDefault"), !prefs.isStored(key.key)},
                {QStringLiteral("meaning"), toQString(key.meaning)},
            });
        }
        printJson(QJsonDocument(out));
        return kExitOk;
    }
    std::vector<std::pair<QString, QString>> rows;
    for (const auto& key : preferenceKeys()) {
        QString value = formatPreference(key, prefs.value(key.key));
        if (!prefs.isStored(key.key)) {
            value += QStringLiteral(" (default)");
        }
        rows.emplace_back(toQString(key.key),
                          value.leftJustified(18) + QLatin1Char(' ') + toQString(key.meaning));
    }
    printRows(rows);
    return kExitOk;
}

int get(const std::string& name) {
    const PreferenceKey* key = requireKey(name);
    if (key == nullptr) {
        return kExitUsage;
    }
    Preferences prefs;
    printLine(formatPreference(*key, prefs.value(key->key)));
    return kExitOk;
}

int set(const std::string& name, const std::string& text) {
    const PreferenceKey* key = requireKey(name);
    if (key == nullptr) {
        return kExitUsage;
    }
    const ParsedPreference parsed = parsePreference(*key, QString::fromStdString(text));
    if (!parsed.ok()) {
        printError(parsed.error + QStringLiteral(" Nothing was changed."));
        return kExitUsage;
    }
    Preferences prefs;
    prefs.setValue(key->key, parsed.value);
    if (!prefs.sync()) {
        printError(QStringLiteral("Couldn't save the setting to %1.").arg(prefs.filePath()));
        return kExitFailed;
    }
    return kExitOk;
}

int reset(const std::string& name) {
    const PreferenceKey* key = requireKey(name);
    if (key == nullptr) {
        return kExitUsage;
    }
    Preferences prefs;
    prefs.reset(key->key);
    if (!prefs.sync()) {
        printError(QStringLiteral("Couldn't save the setting to %1.").arg(prefs.filePath()));
        return kExitFailed;
    }
    return kExitOk;
}

} // namespace

void addSettingsCommand(CLI::App& app, CommandResult& result) {
    auto* cmd = app.add_subcommand("settings", "Show and change Tarvik's settings");
    cmd->require_subcommand(1);

    auto* listCmd = cmd->add_subcommand("list", "Show every setting with its value");
    auto json = std::make_shared<bool>(false);
    listCmd->add_flag("--json", *json, "Print JSON for scripts");
    listCmd->callback([json, &result] {
        result.run = [json] {
            return list(*json);
        };
    });

    auto key = std::make_shared<std::string>();
    auto value = std::make_shared<std::string>();

    auto* getCmd = cmd->add_subcommand("get", "Print one setting's value");
    getCmd->add_option("key", *key, "The setting's key")->required();
    getCmd->callback([key, &result] {
        result.run = [key] {
            return get(*key);
        };
    });

    auto* setCmd = cmd->add_subcommand("set", "Change one setting");
    setCmd->add_option("key", *key, "The setting's key")->required();
    setCmd->add_option("value", *value, "The new value")->required();
    setCmd->callback([key, value, &result] {
        result.run = [key, value] {
            return set(*key, *value);
        };
    });

    auto* resetCmd = cmd->add_subcommand("reset", "Put one setting back to its default");
    resetCmd->add_option("key", *key, "The setting's key")->required();
    resetCmd->callback([key, &result] {
        result.run = [key] {
            return reset(*key);
        };
    });
}

} // namespace tarvik::cli
