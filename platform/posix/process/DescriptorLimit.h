// SPDX-License-Identifier: MIT
#pragma once

namespace vantle {

// Lets this process have as many descriptors open as it may at all: it holds one for each app, and an end
// with none left could put nobody back. Programs that are started from here by fork() have the limit that
// this one was started with, since many of them cannot handle numbers above 1,023. To be called once, before
// any other thread runs.
void raiseDescriptorLimit();

} // namespace vantle
