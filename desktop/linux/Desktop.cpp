// SPDX-License-Identifier: MIT
#include "desktop/Desktop.h"

#include "desktop/linux/GlibcHeap.h"
#include "desktop/linux/SessionBus.h"
#include "desktop/linux/activation/ApplicationInterface.h"
#include "desktop/linux/extension/GnomeShellExtension.h"
#include "desktop/linux/icons/ThemedIcons.h"
#include "desktop/linux/remote/BoostInterface.h"
#include "desktop/linux/scheme/DesktopScheme.h"
#include "desktop/linux/scheme/FontAndScale.h"
#include "desktop/linux/tray/DesktopTray.h"
#include "desktop/linux/wayland/LayerShell.h"
#include "desktop/linux/wayland/ToolkitChoice.h"
#include "desktop/linux/window/DesktopPanelSurface.h"
#include "desktop/linux/window/FreeAreas.h"
#include "desktop/linux/window/LayerPanelSurface.h"
#include "look/ports/LinuxWords.h"

#include <utility>

namespace vantle {
namespace {

std::unique_ptr<PanelSurface> makePanelSurface(EventLoop& loop) {
  if (auto shell = LayerShell::ofToolkit()) return std::make_unique<LayerPanelSurface>(std::move(shell));
  return std::make_unique<DesktopPanelSurface>(loop);
}

class FreeDesktop final : public Desktop {
 public:
  explicit FreeDesktop(EventLoop& loop)
      : m_manager(loop), m_areas(loop), m_tray(loop, m_bus, m_scheme),
        m_panelSurface(makePanelSurface(loop)) {}

  ColorScheme& scheme() override { return m_scheme; }
  IconTheme& icons() override { return m_icons; }
  Heap& heap() override { return m_heap; }
  const PlaceWords& words() const override { return linuxWords; }
  Tray& tray() override { return m_tray; }
  PanelSurface& panelSurface() override { return *m_panelSurface; }
  Activation& activation() override { return m_activation; }
  RemoteDoor& remoteDoor() override { return m_remoteDoor; }
  ShellExtension& shellExtension() override { return m_shellExtension; }
  Front* front() override { return nullptr; }
  AppChooser* appChooser() override { return nullptr; }

 private:
  SessionBus m_bus;
  SettingsManager m_manager;
  FreeAreas m_areas;
  FontAndScale m_fontAndScale{m_manager};
  DesktopScheme m_scheme{m_bus, m_manager};
  ThemedIcons m_icons{m_manager};
  GlibcHeap m_heap;
  DesktopTray m_tray;
  std::unique_ptr<PanelSurface> m_panelSurface;
  ProgramObject m_object{m_bus};
  BusActivation m_activation{m_object};
  BusDoor m_remoteDoor{m_object};
  GnomeShellExtension m_shellExtension{m_bus};
};

} // namespace

std::unique_ptr<Registration> Desktop::chooseToolkit() { return chooseToolkitPlugin(); }

std::unique_ptr<Desktop> Desktop::make(EventLoop& loop) { return std::make_unique<FreeDesktop>(loop); }

} // namespace vantle
