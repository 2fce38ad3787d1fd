// SPDX-License-Identifier: MIT
#include "panel/TrayItem.h"

#include "engine/Engine.h"
#include "look/SymbolDrawing.h"
#include "panel/DisplayText.h"
#include "panel/PanelController.h"
#include "panel/PanelPlacement.h"

#include <QGuiApplication>
#include <QScreen>

namespace vantle {
namespace {

const QColor onDarkBar(0xf4, 0xf4, 0xf6);
const QColor onLightBar(0x2c, 0x2c, 0x32);

TrayFace faceFor(bool isBoosting, const QString& pause) {
  const QString symbol = isBoosting ? QStringLiteral("bolt.fill") : QStringLiteral("bolt");
  QString state = isBoosting ? QStringLiteral("Boost on") : QStringLiteral("Boost off");
  if (!pause.isEmpty()) state += QStringLiteral(" \u00B7 ") + pause;
  return {[symbol](int pixels, bool onDark) {
            return symbolImage(symbol, onDark ? onDarkBar : onLightBar, pixels);
          },
          state};
}

} // namespace

TrayItem::TrayItem(Engine& engine, PanelController& panel, Tray& tray)
    : m_engine(engine), m_panel(panel), m_icon(tray.add(actions())),
      m_gameObserver(engine.activeGame.observe([this] { update(); })),
      m_pauseObserver(engine.pause.observe([this] { update(); })) {
  update();
}

TrayActions TrayItem::actions() {
  return {.clicked =
              [this](std::optional<QRect> place) {
                m_lastPlace = place;
                m_panel.toggle(place);
              },
          .menu = {{QStringLiteral("Open Vantle"), [this](auto pointer) { showFromMenu(pointer); }},
                   {QStringLiteral("Settings"), [this](auto) { m_panel.openSettings(); }},
                   {},
                   {QStringLiteral("Quit Vantle"), [this](auto) { m_panel.quit(); }}}};
}

// The pointer knows better than the last click, since which the bar may have moved.
void TrayItem::showFromMenu(std::optional<QPoint> pointer) {
  const QScreen* screen = pointer ? QGuiApplication::screenAt(*pointer) : nullptr;
  if (screen == nullptr) return m_panel.show(m_lastPlace);
  m_panel.show(iconNear(*pointer, screen->geometry(), screen->availableGeometry()));
}

void TrayItem::update() {
  const bool isBoosting = m_engine.activeGame.get() != nullptr;
  const QString pause = pauseText(m_engine.pause.get());
  if (m_isFilled == isBoosting && m_pause == pause) return;
  m_isFilled = isBoosting;
  m_pause = pause;
  m_icon->show(faceFor(isBoosting, pause));
}

} // namespace vantle
