// SPDX-License-Identifier: MIT
#pragma once

namespace vantle {

// What the things of a platform are called there, as they stand within the texts of the views. English,
// UTF-8. One table for each platform; whatever text has such a word in it is made with it.
// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): whoever makes one without a word is told
struct PlaceWords {
  const char* computer; // "Your …", "keeping the … awake"
  const char* store;    // that says which category an app is of
  const char* bar;      // "“Always boost” in the …": what opens from the icon
  const char* cores;    // "moves other apps to …"
  // The command by which games register as such with the system; null where there is no such service.
  const char* registrar = nullptr;
};

} // namespace vantle
