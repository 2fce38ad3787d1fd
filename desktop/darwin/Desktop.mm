// SPDX-License-Identifier: MIT
#include "desktop/Desktop.h"

#import "desktop/darwin/Unoffered.h"
#import "desktop/darwin/activation/Reopening.h"
#import "desktop/darwin/chooser/OpenPanel.h"
#import "desktop/darwin/front/AppFront.h"
#import "desktop/darwin/heap/ZoneHeap.h"
#import "desktop/darwin/icons/BundleIcons.h"
#import "desktop/darwin/scheme/AppAppearance.h"
#import "desktop/darwin/tray/MenuBar.h"
#import "desktop/darwin/window/PanelOverAll.h"
#include "look/ports/MacWords.h"

#include <QtGlobal>

namespace vantle {

namespace {

class MacDesktop final : public Desktop {
 public:
  explicit MacDesktop(EventLoop& loop)
      : m_menuBar(loop), m_panelSurface(loop), m_activation(loop), m_front(loop), m_chooser(loop) {}

  ColorScheme& scheme() override { return m_scheme; }
  IconTheme& icons() override { return m_icons; }
  Heap& heap() override { return m_heap; }
  const PlaceWords& words() const override { return macWords; }
  Tray& tray() override { return m_menuBar; }
  PanelSurface& panelSurface() override { return m_panelSurface; }
  Activation& activation() override { return m_activation; }
  RemoteDoor& remoteDoor() override { return m_remoteDoor; }
  ShellExtension& shellExtension() override { return m_shellExtension; }
  Front* front() override { return &m_front; }
  AppChooser* appChooser() override { return &m_chooser; }

 private:
  AppAppearance m_scheme;
  BundleIcons m_icons;
  ZoneHeap m_heap;
  MenuBar m_menuBar;
  PanelOverAll m_panelSurface;
  Reopening m_activation;
  AppFront m_front;
  OpenPanel m_chooser;
  NoDoor m_remoteDoor;
  NoExtension m_shellExtension;
};

} // namespace

// There is one way to the screen. But when the program has started, the toolkit brings it to the front
// whoever is there, also one without a Dock icon: at login, and in the middle of a game. What keeps it from
// that is the variable for programs that are to stay in the background, which it reads when its loop turns
// first; so it stays set. Vantle's windows come forward when they are asked for (AppFront).
std::unique_ptr<Registration> Desktop::chooseToolkit() {
  constexpr const char* staysBehind = "QT_MAC_DISABLE_FOREGROUND_APPLICATION_TRANSFORM";
  if (!qEnvironmentVariableIsSet(staysBehind)) qputenv(staysBehind, "1");
  return nullptr;
}

std::unique_ptr<Desktop> Desktop::make(EventLoop& loop) { return std::make_unique<MacDesktop>(loop); }

} // namespace vantle
