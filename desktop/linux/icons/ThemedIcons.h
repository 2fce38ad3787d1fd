// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/linux/scheme/SettingsManager.h"
#include "look/ports/IconTheme.h"

namespace vantle {

// The theme that the desktop publishes, else its own where the toolkit knows it, else the one in the GTK
// settings; and the folder of old.
class ThemedIcons final : public IconTheme {
 public:
  explicit ThemedIcons(const SettingsManager& manager) : m_manager(manager) {} // which outlives it

  void choose() override;
  QString fileOf(const QString& name) const override;
  QString genericName() const override { return QStringLiteral("application-x-executable"); }

 private:
  const SettingsManager& m_manager;
};

} // namespace vantle
