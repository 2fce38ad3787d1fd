// SPDX-License-Identifier: MIT
#include "panel/TrayItem.h"

#include "engine/Engine.h"
#include "look/DisplayText.h"
#include "look/SymbolDrawing.h"
#include "panel/PanelController.h"
#include "panel/PanelPlacement.h"

#include <QGuiApplication>
#include <QScreen>

namespace vantle {
namespace {

const QColor onDarkBar(0xf4, 0xf4, 0xf6);
const QColor onLightBar(0x2c, 0x2c, 0x32);

constexpr qsizetype longestName = 40; // characters; a menu is as wide as its longest line

constexpr auto between = " \u00B7 ";

// What the icon stands for, in words.
QString stateOf(const AppRef& game, const QString& pause) {
  QString state = game ? TrayItem::tr("Boost on") : TrayItem::tr("Boost off");
  if (const QString name = shownName(game, longestName); !name.isEmpty()) state += between + name;
  if (!pause.isEmpty()) state += between + pause;
  return state;
}

TrayFace faceFor(bool isBoosting, const QString& state) {
  const QString symbol = isBoosting ? QStringLiteral("bolt.fill") : QStringLiteral("bolt");
  return {[symbol](int pixels, bool onDark) {
            return symbolImage(symbol, onDark ? onDarkBar : onLightBar, pixels);
          },
          state, symbol};
}

} // namespace

TrayItem::TrayItem(Engine& engine, PanelController& panel, Tray& tray)
    : m_engine(engine), m_panel(panel), m_icon(tray.add(actions())) {
  m_observers.push_back(engine.activeGame.observe([this] { update(); }));
  m_observers.push_back(engine.pause.observe([this] { update(); }));
  m_observers.push_back(engine.automatic.observe([this] { update(); }));
  update();
}

TrayActions TrayItem::actions() {
  return {.clicked =
              [this](std::optional<QRect> place) {
                m_lastPlace = place;
                m_panel.toggle(place);
              },
          .middleClicked = [this] { switchBoost(); },
          .menuWanted = [this](const QRect& place) { m_panel.toggleMenu(place, menu()); }};
}

std::vector<TrayEntry> TrayItem::menu() {
  const AppRef& game = m_engine.activeGame.get();
  const bool isBoosting = game != nullptr;
  const QString pause = pauseText(m_engine.pause.get());
  const bool isPaused = !pause.isEmpty();
  return {{.label = stateOf(game, pause), .isShown = isBoosting || isPaused},
          {.label = TrayItem::tr("Turn off Boost"),
           .chosen = [this](auto) { m_engine.turnOffBoost(); },
           .isShown = isBoosting},
          {.label = TrayItem::tr("End pause"),
           .chosen = [this](auto) { m_engine.endPause(); },
           .isShown = isPaused},
          {.isShown = isBoosting || isPaused},
          {.label = TrayItem::tr("Open Vantle"), .chosen = [this](auto pointer) { showFromMenu(pointer); }},
          {.label = TrayItem::tr("Settings"), .chosen = [this](auto) { m_panel.openSettings(); }},
          {.label = TrayItem::tr("Start Boost automatically"),
           .chosen = [this](auto) { m_engine.setAutomatic(!m_engine.automatic.get()); },
           .isChecked = m_engine.automatic.get()},
          {},
          {.label = TrayItem::tr("Quit Vantle"), .chosen = [this](auto) { m_panel.quit(); }}};
}

// The pointer knows better than the last click, since which the bar may have moved.
void TrayItem::showFromMenu(std::optional<QPoint> pointer) {
  const QScreen* screen = pointer ? QGuiApplication::screenAt(*pointer) : nullptr;
  if (screen == nullptr) return m_panel.show(m_lastPlace);
  m_panel.show(iconNear(*pointer, screen->geometry(), screen->availableGeometry()));
}

void TrayItem::switchBoost() {
  if (m_engine.activeGame.get()) {
    m_engine.turnOffBoost();
  } else if (const AppRef front = m_engine.lastFrontmost.get()) {
    m_engine.boostNow(front);
  }
}

void TrayItem::update() {
  const AppRef& game = m_engine.activeGame.get();
  m_icon->offer(menu());
  const QString state = stateOf(game, pauseText(m_engine.pause.get()));
  if (m_state != state) m_icon->show(faceFor(game != nullptr, m_state = state));
}

} // namespace vantle
