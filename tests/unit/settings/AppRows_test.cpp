// SPDX-License-Identifier: MIT
// The rows of the settings' lists, as they are drawn.
#include "look/AppImage.h"
#include "look/ports/LinuxWords.h"
#include "tests/unit/settings/ShownSettings.h"

#include <QImage>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <vector>

namespace vantle {
namespace {

class AppRows : public ShownSettings {
 protected:
  AppRows() : ShownSettings(linuxWords) {}

  static void gatherWidths(const QQuickItem& item, std::vector<qreal>& widths) {
    if (const auto* image = qobject_cast<const AppImage*>(&item)) widths.push_back(image->width());
    for (const QQuickItem* child : item.childItems()) gatherWidths(*child, widths);
  }
};

// Whether they are installed or not, and whatever the theme knows of them: their names start at one place.
TEST_F(AppRows, WithoutAnIconOfTheirOwnHaveTheThemesGenericOne) {
  const QTemporaryDir folder;
  QImage image(20, 20, QImage::Format_RGB32);
  image.fill(Qt::red);
  icons.generic = icons.known = "generic";
  icons.file = folder.filePath("generic.png");
  ASSERT_TRUE(image.save(icons.file));
  settings.protectedApps.set({"org.mozilla.firefox", "no.such.app"});
  model().setPaneIndex(static_cast<int>(Pane::boost));
  QCoreApplication::processEvents();
  std::vector<qreal> widths;
  gatherWidths(*view().rootObject(), widths);
  EXPECT_EQ(widths, (std::vector<qreal>{20, 20}));
}

} // namespace
} // namespace vantle
