// SPDX-License-Identifier: MIT
#include "platform/simulated/SampleDesktop.h"

namespace vantle {

namespace {

constexpr std::uint64_t mebibyte = 1024 * 1024;

SimulatedAppRef open(SimulatedMachine& machine, const char* name, const char* bundleID, const char* icon,
                     std::uint64_t mebibytes) {
  return machine.launch({.name = name, .bundleID = bundleID, .icon = icon, .footprint = mebibytes * mebibyte},
                        Opening::inBackground);
}

} // namespace

SampleDesktop openSampleDesktop(SimulatedMachine& machine) {
  SampleDesktop desktop;
  desktop.browser = open(machine, "Web Browser", "org.example.browser", "web-browser", 412);
  for (const std::uint64_t tab : {310U, 288U, 121U, 64U}) {
    machine.processes.spawn({.parent = desktop.browser->processIdentifier(),
                             .executable = "/usr/lib/browser/tab",
                             .footprint = tab * mebibyte});
  }
  desktop.mail = open(machine, "Mail", "org.example.mail", "emblem-mail", 236);
  desktop.editor = open(machine, "Text Editor", "org.example.editor", "accessories-text-editor", 58);
  desktop.chat = open(machine, "Chat", "org.example.chat", "face-smile", 347);
  desktop.music = open(machine, "Music", "com.spotify.client", "multimedia-audio-player", 190);
  machine.audio.heard.insert(desktop.music->processIdentifier());
  desktop.game = machine.launch({.name = "Asteroids",
                                 .bundleID = "org.example.asteroids",
                                 .bundlePath = "/usr/share/applications/asteroids.desktop",
                                 .category = "public.app-category.games",
                                 .icon = "applications-games",
                                 .footprint = 820 * mebibyte},
                                Opening::inBackground);
  machine.activate(desktop.browser);
  machine.processes.find(machine.host.self)->footprint = 3 * mebibyte;
  return desktop;
}

} // namespace vantle
