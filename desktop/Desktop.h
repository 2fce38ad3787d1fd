// SPDX-License-Identifier: MIT
#pragma once

#include "base/Registration.h"
#include "look/ports/ColorScheme.h"
#include "look/ports/Front.h"
#include "look/ports/Heap.h"
#include "look/ports/IconTheme.h"
#include "look/ports/PlaceWords.h"
#include "panel/ports/Activation.h"
#include "panel/ports/PanelSurface.h"
#include "panel/ports/Tray.h"
#include "platform/shared/EventLoop.h"
#include "remote/ports/RemoteDoor.h"
#include "settings/ports/AppChooser.h"
#include "settings/ports/ShellExtension.h"

#include <memory>

namespace vantle {

// The toolkit's side of the system that the build has chosen: one part for each port that the views own. It
// outlives everything that it has given out.
class Desktop {
 public:
  // Has the toolkit use what serves best on this desktop, unless the person has chosen. Before its
  // application object, which is made as long as the registration lives. Takes a fifth of a second at most.
  [[nodiscard]] static std::unique_ptr<Registration> chooseToolkit();
  // Needs the toolkit's application object. The loop outlives the desktop.
  static std::unique_ptr<Desktop> make(EventLoop& loop);
  virtual ~Desktop() = default;

  virtual ColorScheme& scheme() = 0;
  virtual IconTheme& icons() = 0;
  virtual Heap& heap() = 0;
  virtual const PlaceWords& words() const = 0;
  virtual Tray& tray() = 0;
  virtual PanelSurface& panelSurface() = 0;
  virtual Activation& activation() = 0;
  virtual RemoteDoor& remoteDoor() = 0;
  virtual ShellExtension& shellExtension() = 0;
  // Null where windows come forward by themselves, and where the settings have a dialog of their own.
  virtual Front* front() = 0;
  virtual AppChooser* appChooser() = 0;
};

} // namespace vantle
