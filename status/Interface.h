// SPDX-License-Identifier: MIT
#pragma once

// The interface of the running copy on the session's bus, at names::busPath; docs/scripting.md describes it.
namespace vantle::boost1 {

inline constexpr const char* interface = "com.halvo.vantle.Boost1";

// Properties.
inline constexpr const char* version = "Version";         // s
inline constexpr const char* active = "Active";           // b
inline constexpr const char* app = "App";                 // a{sv}: name, id, pid; empty without a Boost
inline constexpr const char* automatic = "Automatic";     // b
inline constexpr const char* pausedUntil = "PausedUntil"; // t
inline constexpr const char* pressure = "Pressure";       // s
inline constexpr const char* apps = "Apps";               // aa{sv}

// Entries of an app.
inline constexpr const char* appName = "name";           // s
inline constexpr const char* appId = "id";               // s, left out for an app without one
inline constexpr const char* appPid = "pid";             // i
inline constexpr const char* appState = "state";         // s
inline constexpr const char* appReason = "reason";       // s
inline constexpr const char* appLever = "lever";         // s, left out for an app that is not slowed
inline constexpr const char* appProcesses = "processes"; // t
inline constexpr const char* appMemory = "memory";       // t, bytes; of apps in the background
// s, both left out where the system itself knows apps.
inline constexpr const char* appKnownBy = "knownBy";
inline constexpr const char* appKnownBecause = "knownBecause";

// Methods.
inline constexpr const char* why = "Why";       // s -> aa{sv}
inline constexpr const char* boost = "Boost";   // s
inline constexpr const char* off = "Off";       //
inline constexpr const char* pause = "Pause";   // u
inline constexpr const char* report = "Report"; // b -> s

// Of a call that cannot be carried out; its text is for a person.
inline constexpr const char* refused = "com.halvo.vantle.Error.Refused";

} // namespace vantle::boost1
