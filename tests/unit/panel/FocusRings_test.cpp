// SPDX-License-Identifier: MIT
// The keyboard's way through the panel.
#include "tests/unit/look/FocusRings.h"

#include "look/ports/LinuxWords.h"
#include "tests/unit/panel/PanelFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vantle {
namespace {

using testing::Ge;
using testing::SizeIs;

class PanelRings : public PanelFixture {
 protected:
  PanelRings() : PanelFixture(linuxWords) {}
};

TEST_F(PanelRings, AreWholeAndTouchNothing) {
  const SampleDesktop desktop = openSampleDesktop(machine);
  machine.activate(desktop.mail);
  open();
  EXPECT_THAT(FocusRings(*panel.window()).walk(), SizeIs(Ge(4U)));
  machine.activate(desktop.game);
  QCoreApplication::processEvents();
  EXPECT_THAT(FocusRings(*panel.window()).walk(), SizeIs(Ge(6U)));
}

} // namespace
} // namespace vantle
