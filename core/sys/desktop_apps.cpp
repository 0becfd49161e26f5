#include "core/sys/desktop_apps.h"

#include <QCollator>
#include <algorithm>

// GLib's headers use "signals" as a field name, which Qt defines as a keyword.
#pragma push_macro("signals")
#undef signals
#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>
#pragma pop_macro("signals")

namespace tarvik::DesktopApps {
namespace {

QString text(const char* s) {
    return s != nullptr ? QString::fromUtf8(s) : QString();
}

QString takeError(GError* error, const QString& fallback) {
    if (error == nullptr) {
        return fallback;
    }
    QString message = text(error->message);
    g_error_free(error);
    return message.isEmpty() ? fallback : message;
}

DesktopApp describe(GAppInfo* info) {
    DesktopApp app;
    app.id = text(g_app_info_get_id(info));
    app.name = text(g_app_info_get_display_name(info));
    if (G_IS_DESKTOP_APP_INFO(info)) {
        app.path = text(g_desktop_app_info_get_filename(G_DESKTOP_APP_INFO(info)));
    }
    if (GIcon* icon = g_app_info_get_icon(info)) {
        if (G_IS_THEMED_ICON(icon)) {
            const gchar* const* names = g_themed_icon_get_names(G_THEMED_ICON(icon));
            app.icon = names != nullptr ? text(names[0]) : QString();
        } else if (G_IS_FILE_ICON(icon)) {
            gchar* path = g_file_get_path(g_file_icon_get_file(G_FILE_ICON(icon)));
            app.icon = text(path);
            g_free(path);
        }
    }
    return app;
}

} // namespace

std::vector<DesktopApp> installed() {
    std::vector<DesktopApp> out;
    GList* all = g_app_info_get_all();
    for (GList* l = all; l != nullptr; l = l->next) {
        auto* info = static_cast<GAppInfo*>(l->data);
        if (g_app_info_should_show(info)) {
            out.push_back(describe(info));
        }
    }
    g_list_free_full(all, g_object_unref);
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::sort(out.begin(), out.end(), [&](const DesktopApp& a, const DesktopApp& b) {
        return collator.compare(a.name, b.name) < 0;
    });
    return out;
}

std::optional<DesktopApp> find(const QString& id) {
    GDesktopAppInfo* info = g_desktop_app_info_new(id.toUtf8().constData());
    if (info == nullptr) {
        return std::nullopt;
    }
    DesktopApp app = describe(G_APP_INFO(info));
    g_object_unref(info);
    return app;
}

bool launch(const QString& path, QString* error) {
    GDesktopAppInfo* info = g_desktop_app_info_new_from_filename(path.toLocal8Bit().constData());
    if (info == nullptr) {
        if (error != nullptr) {
            *error = QStringLiteral("%1 is not an application's desktop entry.").arg(path);
        }
        return false;
    }
    GError* failure = nullptr;
    const bool launched = g_app_info_launch(G_APP_INFO(info), nullptr, nullptr, &failure);
    g_object_unref(info);
    if (!launched && error != nullptr) {
        *error = takeError(failure, QStringLiteral("The application didn't start."));
    } else if (failure != nullptr) {
        g_error_free(failure);
    }
    return launched;
}

QString schemeHandler(const QString& scheme) {
    GAppInfo* info = g_app_info_get_default_for_uri_scheme(scheme.toUtf8().constData());
    if (info == nullptr) {
        return {};
    }
    QString id = text(g_app_info_get_id(info));
    g_object_unref(info);
    return id;
}

bool setSchemeHandler(const QString& path, const QString& scheme, QString* error) {
    GDesktopAppInfo* info = g_desktop_app_info_new_from_filename(path.toLocal8Bit().constData());
    if (info == nullptr) {
        if (error != nullptr) {
            *error = QStringLiteral("%1 is not an application's desktop entry.").arg(path);
        }
        return false;
    }
    GError* failure = nullptr;
    const QByteArray type = "x-scheme-handler/" + scheme.toUtf8();
    const bool set =
        g_app_info_set_as_default_for_type(G_APP_INFO(info), type.constData(), &failure);
    g_object_unref(info);
    if (!set && error != nullptr) {
        *error = takeError(failure, QStringLiteral("The link handler wasn't saved."));
    } else if (failure != nullptr) {
        g_error_free(failure);
    }
    return set;
}

} // namespace tarvik::DesktopApps
