// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/linux/scheme/SettingsManager.h"

#include <QString>
#include <memory>
#include <optional>

namespace vantle {

// How large a window is to be drawn, and in which font, by what the desktop publishes.
struct TextLook {
  QString family;            // empty: the toolkit's own choice
  std::optional<qreal> dots; // pixels a point, 1 at 96 dots an inch; absent: as the toolkit has it
  qreal enlargement = 1;     // for people who read larger letters
  bool operator==(const TextLook&) const = default;
};

TextLook textLookOf(const PublishedSettings& published);

// Has the toolkit draw as the desktop publishes, from the start and while that changes. The toolkit itself
// follows only a settings program that ran before it, and reads no font there.
class FontAndScale {
 public:
  explicit FontAndScale(SettingsManager& manager); // which outlives it

 private:
  void follow();
  void useFamily() const;
  void useScale() const;

  SettingsManager& m_manager;
  TextLook m_look;
  std::unique_ptr<Registration> m_observer;
};

} // namespace vantle
