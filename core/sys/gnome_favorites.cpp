#include "core/sys/gnome_favorites.h"

// GLib's headers use "signals" as a field name, which Qt defines as a keyword.
#pragma push_macro("signals")
#undef signals
#include <gio/gio.h>
#pragma pop_macro("signals")

#include <memory>
#include <vector>

namespace tarvik {
namespace {

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
struct SchemaUnref {
    void operator()(GSettingsSchema* schema) const { g_settings_schema_unref(schema); }
};

// The schema source is looked up anew each time: a schema installed after Tarvik started (a
// GNOME session added later) is then found.
std::unique_ptr<GSettingsSchema, SchemaUnref> lookupSchema() {
    GSettingsSchemaSource* source = g_settings_schema_source_get_default();
    if (source == nullptr) {
        return nullptr;
    }
    return std::unique_ptr<GSettingsSchema, SchemaUnref>(
        g_settings_schema_source_lookup(source, GnomeFavorites::kSchema, TRUE));
}

std::unique_ptr<GSettings, Unref> openSettings() {
    auto schema = lookupSchema();
    if (!schema || !g_settings_schema_has_key(schema.get(), GnomeFavorites::kKey)) {
        return nullptr;
    }
    return std::unique_ptr<GSettings, Unref>(g_settings_new_full(schema.get(), nullptr, nullptr));
}

} // namespace

std::optional<QString> GnomeFavorites::unavailableReason() {
    auto schema = lookupSchema();
    if (!schema) {
        return QStringLiteral("GNOME Shell's settings (org.gnome.shell) aren't installed, so "
                              "there is no dash to place folders in.");
    }
    if (!g_settings_schema_has_key(schema.get(), kKey)) {
        return QStringLiteral("GNOME Shell's settings have no list of favourite apps.");
    }
    return std::nullopt;
}

QStringList GnomeFavorites::read() {
    QStringList out;
    auto settings = openSettings();
    if (!settings) {
        return out;
    }
    gchar** ids = g_settings_get_strv(settings.get(), kKey);
    for (gchar** id = ids; id != nullptr && *id != nullptr; ++id) {
        out.append(QString::fromUtf8(*id));
    }
    g_strfreev(ids);
    return out;
}

bool GnomeFavorites::write(const QStringList& ids, QString* error) {
    auto settings = openSettings();
    if (!settings) {
        if (error != nullptr) {
            *error = unavailableReason().value_or(QString());
        }
        return false;
    }
    std::vector<QByteArray> utf8;
    utf8.reserve(static_cast<std::size_t>(ids.size()));
    std::vector<const gchar*> pointers;
    for (const QString& id : ids) {
        utf8.push_back(id.toUtf8());
        pointers.push_back(utf8.back().constData());
    }
    pointers.push_back(nullptr);
    if (!g_settings_set_strv(settings.get(), kKey, pointers.data())) {
        if (error != nullptr) {
            *error = QStringLiteral("GNOME's settings refused the list of favourite apps.");
        }
        return false;
    }
    // Writes are queued; the dash and other processes see them once flushed.
    g_settings_sync();
    return true;
}

} // namespace tarvik
