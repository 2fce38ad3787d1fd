// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// The id that a service manager's unit is named after (see "XDG standardization for applications" in
// systemd's documentation).
struct UnitId {
  std::string id;
  std::string random; // what makes the name unique; often the pid of the app's first process
  bool operator==(const UnitId&) const = default;
};

// What started a program and waits for its end: a script, say, or what mounts an image.
struct Wrapper {
  Pid pid = 0;
  std::string executable;
  std::string program; // as in AppEvidence
  std::vector<std::string> arguments;
  std::string workingFolder;
};

// All that tells which app a process with windows is. Texts are bytes as found; empty when there are none.
struct AppEvidence {
  Pid pid = 0;
  std::string sandboxId;              // what Flatpak or Snap says it is
  std::optional<UnitId> unit;         // of the unit that it runs in
  std::string launchedFile;           // the desktop file that the desktop started it or its wrapper from
  Pid launchedProcess = 0;            // this one, or the wrapper that was started from it
  std::string imageFolder;            // that the AppImage is mounted at out of which it runs
  std::string storeAddress;           // of the game, as its store's shortcuts have it: "steam://rungameid/42"
  std::string applicationId;          // _GTK_APPLICATION_ID
  std::string windowInstance;         // first part of WM_CLASS
  std::string windowClass;            // second part of WM_CLASS
  std::string commandName;            // the kernel's name for it, at most 15 bytes
  std::string executable;             // the program file that runs; empty when that cannot be known
  std::string program;                // the same, but for an interpreter its script: what a person started
  std::vector<std::string> names;     // of what an interpreter runs, see programNames
  std::string classFrom;              // the file or folder that an interpreter has a class from
  std::vector<std::string> arguments; // the whole command line
  std::string workingFolder;
  std::vector<Wrapper> wrappers; // the nearest first, in its session and as young as it is
  // The process was another program before, with windows of its own: that is what was launched.
  bool isSuccessor = false;
};

// "app-gnome-org.gnome.Maps-1234.scope" is org.gnome.Maps. Absent for units that are not an app's.
std::optional<UnitId> unitIdOf(std::string_view unitName);

// "snap.firefox.firefox-6c1ca021-….scope" is firefox_firefox, as its desktop file is named.
std::string snapIdOf(std::string_view unitName);

// True for programs that run other programs' texts, such as "python3.11" or "java".
bool isInterpreter(std::string_view fileName);

// Whoever has windows is an app of its own and waits for nobody: takes the wrappers away from that one on,
// and what was launched with one of them.
void dropWrappersFrom(AppEvidence& evidence, const std::function<bool(Pid)>& isApp);

// Reads what /proc knows; the window's own properties are the caller's to add. A process that keeps its
// command line or environment from being read is waited for 100 ms at most, and known by the rest.
AppEvidence readEvidence(Pid pid);

} // namespace vantle
