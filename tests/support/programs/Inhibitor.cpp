// SPDX-License-Identifier: MIT
// Asks a program on the session's bus to keep the machine awake, and holds that until it is ended. Prints
// "held" when it was granted, or why it was not. Speaks GIO's way of logging in, which Flatpak's proxy for
// buses understands; that of sd-bus it did not before its version 0.1.5. usage: DESTINATION PATH INTERFACE
// MEMBER ARGUMENTS    (as for gdbus: "('app', 'why')")
#include <cstdio>
#include <gio/gio.h>

int main(int argc, char** argv) {
  if (argc != 6) return 2;
  GError* error = nullptr;
  GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error);
  GVariant* arguments =
      bus == nullptr ? nullptr : g_variant_parse(nullptr, argv[5], nullptr, nullptr, &error);
  GVariant* reply =
      arguments == nullptr
          ? nullptr
          : g_dbus_connection_call_sync(bus, argv[1], argv[2], argv[3], argv[4], arguments, nullptr,
                                        G_DBUS_CALL_FLAGS_NONE, G_MAXINT, nullptr, &error);
  std::puts(reply == nullptr ? error->message : "held");
  std::fflush(stdout);
  if (reply == nullptr) return 1;
  g_main_loop_run(g_main_loop_new(nullptr, FALSE));
  return 0;
}
