// SPDX-License-Identifier: MIT
#pragma once

class QWindow;

namespace vantle {

// Has task bars and pagers on an X server leave out a window that is about to be shown. To be said before
// each showing: the window manager forgets it when the window is hidden.
void keepOffTaskBars(QWindow& window);

} // namespace vantle
