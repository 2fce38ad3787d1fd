// SPDX-License-Identifier: MIT
#include "panel/TrayItem.h"

#include "engine/Engine.h"
#include "panel/PanelController.h"
#include "panel/tray/NativeCoordinates.h"
#include "panel/tray/StatusNotifierItem.h"
#include "panel/tray/TrayScheme.h"
#include "panel/tray/XEmbedIcon.h"

namespace vantle {

class TrayItem::Implementation {
 public:
  Implementation(Engine& engine, PanelController& panel)
      : m_engine(engine), m_panel(panel), m_notifierItem(
                                              {.open = [this] { m_panel.show(m_lastPlace); },
                                               .settings = [this] { m_panel.openSettings(); },
                                               .quit = [this] { m_panel.quit(); }},
                                              [this](QPoint point) {
                                                activated({point, QSize(1, 1)});
                                              },
                                              [this](bool shown) { useEmbedding(!shown); }) {
    m_gameObserver = engine.activeGame.observe([this] { update(); });
    QObject::connect(&m_scheme, &TrayScheme::changed, &m_scheme, [this] { update(); });
    update();
  }

 private:
  void activated(const QRect& native) {
    m_lastPlace = fromNative(native);
    m_panel.toggle(m_lastPlace);
  }

  // Told more than once of the same, when a tray restarts.
  void useEmbedding(bool use) {
    if (!use) m_embedded.reset();
    if (use && !m_embedded && qEnvironmentVariableIsSet("DISPLAY")) {
      m_embedded = std::make_unique<XEmbedIcon>([this](QRect rect) { activated(rect); });
      update();
    }
  }

  void update() {
    const bool boosting = m_engine.activeGame.get() != nullptr;
    const TrayIcon icon{.shape = boosting ? BoltShape::filled : BoltShape::outlined,
                        .forDarkTray = m_scheme.isDark()};
    m_notifierItem.show(icon, boosting ? QStringLiteral("Boost on") : QStringLiteral("Boost off"));
    if (m_embedded) m_embedded->show(icon);
  }

  Engine& m_engine;
  PanelController& m_panel;
  TrayScheme m_scheme;
  std::optional<QRect> m_lastPlace; // where the icon was last clicked
  std::unique_ptr<XEmbedIcon> m_embedded;
  StatusNotifierItem m_notifierItem;
  std::unique_ptr<Registration> m_gameObserver;
};

TrayItem::TrayItem(Engine& engine, PanelController& panel)
    : m_implementation(std::make_unique<Implementation>(engine, panel)) {}

TrayItem::~TrayItem() = default;

} // namespace vantle
