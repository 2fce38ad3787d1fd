// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <functional>

namespace vantle {

// What a launcher or a tray hands over with a person's click (xdg-activation), so that the window that the
// click is for may take the front. Without one many a Wayland desktop only says that there is a window.
class HandedToken {
 public:
  // Until it is used or another is given. What no desktop makes, in its length, is none.
  void give(const QString& token);
  // The toolkit uses it for a window that asks for the front meanwhile. Once.
  void during(const std::function<void()>& action);

 private:
  QString m_token;
};

} // namespace vantle
