// SPDX-License-Identifier: MIT
// The program itself on a real GNOME, with its extension in the shell.
#include "tests/desktop/ShellBoosts.h"
#include "tests/support/GnomeDesktop.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace vantle::desktop {
namespace {

std::unique_ptr<GnomeDesktop> withExtension() {
  return std::make_unique<GnomeDesktop>(VANTLE_GNOME_EXTENSIONS, "vantle@halvo.com");
}

INSTANTIATE_TEST_SUITE_P(Gnome, BoostOnEachShell, testing::Values(ShellStage{"Gnome", "", withExtension}));

} // namespace
} // namespace vantle::desktop
