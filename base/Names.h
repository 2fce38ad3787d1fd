// SPDX-License-Identifier: MIT
#pragma once

// What the program is called, wherever somebody else has to know it by its name.
namespace vantle::names {

inline constexpr const char* display = "Vantle";
inline constexpr const char* identifier = "com.halvo.vantle"; // of the bus, the desktop file, the icon
inline constexpr const char* busPath = "/com/halvo/vantle";
inline constexpr const char* feed = "com.halvo.vantle.feed"; // on the bus: whom a shell tells of windows
inline constexpr const char* gnomeExtension = "com.halvo.vantle.shell"; // on the bus, in GNOME's shell
inline constexpr const char* formerDisplay = "Murn"; // the edition that this one takes over from
inline constexpr const char* formerIdentifier = "com.halvo.murn";

} // namespace vantle::names
