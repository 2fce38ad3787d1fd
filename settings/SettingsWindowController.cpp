// SPDX-License-Identifier: MIT
#include "settings/SettingsWindowController.h"

#include "settings/SettingsWindow.h"

#include <QTimer>

namespace vantle {

class SettingsWindowController::Impl {
 public:
  explicit Impl(const SettingsParts& parts) : m_parts(parts) {
    m_release.setSingleShot(true);
    m_release.setInterval(std::chrono::seconds(5));
    QObject::connect(&m_release, &QTimer::timeout, &m_release, [this] {
      m_window.reset();
      giveMemoryBack();
    });
  }

  void show() {
    m_release.stop();
    if (!m_window) {
      prepareRendering();
      m_window = std::make_unique<SettingsWindow>(m_parts, m_state, [this] {
        m_state = m_window->state();
        m_release.start();
      });
    }
    m_window->show();
  }
  void setReleaseDelay(std::chrono::milliseconds delay) { m_release.setInterval(delay); }
  bool holdsMemory() const { return m_window != nullptr; }

 private:
  SettingsParts m_parts;
  WindowState m_state;
  QTimer m_release;
  std::unique_ptr<SettingsWindow> m_window;
};

SettingsWindowController::SettingsWindowController(Engine& engine, AppSettings& settings,
                                                   UpdateChecker& checker, LoginItem& loginItem,
                                                   ApplicationCatalog& catalog)
    : m_impl(std::make_unique<Impl>(SettingsParts{engine, settings, checker, loginItem, catalog})) {}

SettingsWindowController::~SettingsWindowController() = default;

void SettingsWindowController::show() { m_impl->show(); }
void SettingsWindowController::setReleaseDelay(std::chrono::milliseconds delay) {
  m_impl->setReleaseDelay(delay);
}
bool SettingsWindowController::holdsMemory() const { return m_impl->holdsMemory(); }

} // namespace vantle
