// SPDX-License-Identifier: MIT
#include "settings/model/AppearanceModel.h"

#include <cstddef>

namespace vantle {

namespace {

template <class Cases, class NameOf> QStringList namesOf(const Cases& cases, NameOf nameOf) {
  QStringList names;
  for (const auto each : cases) names.append(QString::fromStdString(std::string(nameOf(each))));
  return names;
}

// Chooses the case at the place, unless it is chosen already.
template <class Enum, class Cases> void choose(Setting<Enum>& setting, const Cases& cases, int place) {
  const auto at = static_cast<std::size_t>(place);
  if (place >= 0 && at < cases.size() && cases[at] != setting.get()) setting.set(cases[at]);
}

} // namespace

AppearanceModel::AppearanceModel(AppSettings& settings)
    : m_settings(settings), m_accentObserver(settings.accent.observe([this] { emit accentChanged(); })),
      m_modeObserver(settings.appearance.observe([this] { emit modeChanged(); })) {}

QStringList AppearanceModel::accents() const {
  return namesOf(allAccentThemes, [](AccentTheme theme) { return rawValue(theme); });
}

QStringList AppearanceModel::accentNames() const {
  return namesOf(allAccentThemes,
                 [](AccentTheme theme) { return tr(displayName(theme).c_str()).toStdString(); });
}

QStringList AppearanceModel::modeNames() const {
  return namesOf(allAppearanceModes,
                 [](AppearanceMode mode) { return tr(displayName(mode).c_str()).toStdString(); });
}

void AppearanceModel::chooseAccent(int place) { choose(m_settings.accent, allAccentThemes, place); }
void AppearanceModel::chooseMode(int place) { choose(m_settings.appearance, allAppearanceModes, place); }

} // namespace vantle
