// SPDX-License-Identifier: MIT
#include "platform/linux/apps/AppIdMatch.h"

#include "base/Text.h"

#include <algorithm>

namespace vantle {

AppIdMatch::AppIdMatch(std::string_view applicationId, std::span<const DesktopEntry> entries)
    : m_id(asciiLowered(applicationId)), m_lastPart(m_id.substr(m_id.rfind('.') + 1)) {
  for (const DesktopEntry& entry : entries) {
    if (isNameOf(entry)) m_named.push_back(&entry);
  }
}

bool AppIdMatch::isNameOf(const DesktopEntry& entry) const {
  return asciiLowered(entry.id) == m_id || asciiLowered(entry.windowClass) == m_id;
}

bool AppIdMatch::fits(const AppEvidence& process, const DesktopEntry* entry) const {
  if (m_id.empty()) return false;
  if (asciiLowered(process.sandboxId) == m_id) return true;
  const std::string program = asciiLowered(fileNameOf(process.program));
  if (program == m_id || (!program.empty() && program == m_lastPart)) return true;
  if (entry != nullptr && isNameOf(*entry)) return true;
  return std::any_of(m_named.begin(), m_named.end(), [&](const DesktopEntry* named) {
    return !named->realPath.empty() && named->realPath == process.program;
  });
}

} // namespace vantle
