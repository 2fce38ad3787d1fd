// SPDX-License-Identifier: MIT
#pragma once

#include "engine/AppSettings.h"
#include "look/ports/Heap.h"
#include "look/ports/IconTheme.h"
#include "look/ports/PlaceWords.h"

#include <QQmlEngine>

namespace vantle {

// The declarative engine of one window, with everything of this room in it. Made when the window is first
// opened, and destroyed with it; see giveMemoryBack for the moment after. The last one takes the registered
// types of all rooms with it.
class LookEngine : public QQmlEngine {
  Q_OBJECT

 public:
  // All of them outlive the engine.
  LookEngine(AppSettings& settings, IconTheme& icons, const PlaceWords& words);
  ~LookEngine() override;
  LookEngine(const LookEngine&) = delete;
  LookEngine& operator=(const LookEngine&) = delete;

  AppSettings& settings() const { return m_settings; }
  const IconTheme& icons() const { return m_icons; }
  const PlaceWords& words() const { return m_words; }

 private:
  AppSettings& m_settings;
  IconTheme& m_icons;
  const PlaceWords& m_words;
};

// Chooses the software renderer. To be called before the first QQuickWindow is made.
void prepareRendering();

// Hands the heap of a destroyed engine back to the system, and the caches that only windows use once there is
// no engine left.
void giveMemoryBack(Heap& heap);

} // namespace vantle
