// SPDX-License-Identifier: MIT
// Starts an app from its desktop file as the big desktops do: GNOME has GIO start it and puts the process
// into a scope, Plasma has the user manager start it as a service. What the session's bus is to start, either
// leaves to that. usage: real_apps_launch scope|service DESKTOP_FILE_ID
#include <cstdio>
#include <cstdlib>
#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>
#include <string>
#include <string_view>
#include <unistd.h>

namespace {

// A byte with a meaning in names of units is written as \xHH.
std::string escaped(std::string_view id) {
  std::string name;
  for (const char letter : id) {
    char text[8] = {letter, 0};
    if (g_ascii_isalnum(letter) == 0 && letter != '_' && letter != '.' && letter != ':')
      std::snprintf(text, sizeof text, "\\x%02x", static_cast<unsigned char>(letter));
    name += text;
  }
  return name;
}

[[noreturn]] void giveUp(const GError* error) {
  std::fprintf(stderr, "real_apps_launch: %s\n", error == nullptr ? "no such desktop file" : error->message);
  std::exit(1);
}

void startUnit(const std::string& name, GVariantBuilder* properties) {
  GError* error = nullptr;
  GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error);
  if (bus == nullptr) giveUp(error);
  g_variant_builder_add(properties, "{sv}", "CollectMode", g_variant_new_string("inactive-or-failed"));
  // Pairs of name and value, which GIO has for dictionaries only.
  GVariantBuilder pairs;
  g_variant_builder_init(&pairs, G_VARIANT_TYPE("a(sv)"));
  GVariant* dictionary = g_variant_builder_end(properties);
  GVariantIter each;
  g_variant_iter_init(&each, dictionary);
  const char* key = nullptr;
  GVariant* value = nullptr;
  while (g_variant_iter_next(&each, "{&sv}", &key, &value) != FALSE)
    g_variant_builder_add(&pairs, "(sv)", key, value);
  if (g_dbus_connection_call_sync(bus, "org.freedesktop.systemd1", "/org/freedesktop/systemd1",
                                  "org.freedesktop.systemd1.Manager", "StartTransientUnit",
                                  g_variant_new("(ssa(sv)@a(sa(sv)))", name.c_str(), "fail", &pairs,
                                                g_variant_new_array(G_VARIANT_TYPE("(sa(sv))"), nullptr, 0)),
                                  nullptr, G_DBUS_CALL_FLAGS_NONE, G_MAXINT, nullptr, &error) == nullptr)
    giveUp(error);
}

void moveIntoScope(GDesktopAppInfo*, GPid pid, gpointer id) {
  GVariantBuilder properties;
  g_variant_builder_init(&properties, G_VARIANT_TYPE("a{sv}"));
  const auto number = static_cast<guint32>(pid);
  g_variant_builder_add(&properties, "{sv}", "PIDs",
                        g_variant_new_fixed_array(G_VARIANT_TYPE_UINT32, &number, 1, sizeof number));
  startUnit("app-gnome-" + escaped(static_cast<const char*>(id)) + "-" + std::to_string(pid) + ".scope",
            &properties);
}

// The bus has been asked in the background, and drops what waits for a program to come up when the one who
// asked goes. A desktop stays; this stays until an answer says that what was asked before has arrived.
void waitForActivated(const std::string& id) {
  GError* error = nullptr;
  GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error);
  if (bus == nullptr) giveUp(error);
  if (g_dbus_connection_call_sync(bus, id.c_str(), "/", "org.freedesktop.DBus.Peer", "Ping", nullptr, nullptr,
                                  G_DBUS_CALL_FLAGS_NONE, G_MAXINT, nullptr, &error) == nullptr)
    giveUp(error);
}

void startService(GDesktopAppInfo* app, const std::string& id) {
  GError* error = nullptr;
  gint count = 0;
  gchar** words = nullptr;
  if (g_shell_parse_argv(g_app_info_get_commandline(G_APP_INFO(app)), &count, &words, &error) == FALSE)
    giveUp(error);
  GVariantBuilder arguments;
  g_variant_builder_init(&arguments, G_VARIANT_TYPE("as"));
  for (int at = 0; at < count; ++at) // %f and the like stand for files, of which there are none
    if (words[at][0] != '%') g_variant_builder_add(&arguments, "s", words[at]);
  gchar* program = g_find_program_in_path(words[0]);
  if (program == nullptr) giveUp(nullptr);

  GVariantBuilder commands;
  g_variant_builder_init(&commands, G_VARIANT_TYPE("a(sasb)"));
  g_variant_builder_add(&commands, "(sasb)", program, &arguments, FALSE);
  GVariantBuilder properties;
  g_variant_builder_init(&properties, G_VARIANT_TYPE("a{sv}"));
  const auto add = [&](const char* name, GVariant* value) {
    g_variant_builder_add(&properties, "{sv}", name, value);
  };
  gchar** environment = g_get_environ();
  gchar* folder = g_get_current_dir();
  add("ExecStart", g_variant_builder_end(&commands));
  add("Environment", g_variant_new_strv(environment, -1));
  add("WorkingDirectory", g_variant_new_string(folder));
  add("SourcePath", g_variant_new_string(g_desktop_app_info_get_filename(app)));
  add("Slice", g_variant_new_string("app.slice"));
  add("ExitType", g_variant_new_string("cgroup"));
  gchar* random = g_uuid_string_random();
  std::string digits;
  for (const char letter : std::string_view(random))
    if (letter != '-') digits += letter;
  startUnit("app-" + escaped(id) + "@" + digits + ".service", &properties);
}

} // namespace

int main(int argc, char** argv) {
  const std::string_view kind = argc == 3 ? argv[1] : "";
  if (kind != "scope" && kind != "service") return 2;
  const std::string id = argv[2];
  GDesktopAppInfo* app = g_desktop_app_info_new((id + ".desktop").c_str());
  if (app == nullptr) giveUp(nullptr);
  if (kind == "service" && g_desktop_app_info_get_boolean(app, "DBusActivatable") == FALSE) {
    startService(app, id);
    return 0;
  }
  GError* error = nullptr;
  if (g_desktop_app_info_launch_uris_as_manager(app, nullptr, nullptr, G_SPAWN_SEARCH_PATH, nullptr, nullptr,
                                                moveIntoScope, argv[2], &error) == FALSE)
    giveUp(error);
  if (g_desktop_app_info_get_boolean(app, "DBusActivatable") != FALSE) waitForActivated(id);
  return 0;
}
