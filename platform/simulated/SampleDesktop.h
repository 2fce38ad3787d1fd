// SPDX-License-Identifier: MIT
#pragma once

#include "platform/simulated/SimulatedMachine.h"

namespace vantle {

// A believable evening: a few apps with windows, one that plays music, and a game that is not in front yet.
// For pictures and for trying the views out; nothing is measured on it.
struct SampleDesktop {
  SimulatedAppRef game; // activate it to start a Boost
  SimulatedAppRef browser;
  SimulatedAppRef mail;
  SimulatedAppRef editor;
  SimulatedAppRef chat;
  SimulatedAppRef music; // heard, and on the default list of protected apps
};

SampleDesktop openSampleDesktop(SimulatedMachine& machine);

} // namespace vantle
