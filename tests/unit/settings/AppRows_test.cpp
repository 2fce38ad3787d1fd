// SPDX-License-Identifier: MIT
// The rows of the settings' lists, as they are drawn.
#include "look/AppImage.h"
#include "look/ports/LinuxWords.h"
#include "tests/unit/settings/ShownSettings.h"

#include <QImage>
#include <QTemporaryDir>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
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
  // Those that have that property.
  static void forEach(QQuickItem& item, const char* property, const std::function<void(QQuickItem&)>& use) {
    if (item.metaObject()->indexOfProperty(property) >= 0) use(item);
    for (QQuickItem* child : item.childItems()) forEach(*child, property, use);
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

TEST_F(AppRows, OfALongListAreMadeWhereTheyAreSeen) {
  std::vector<std::string> keys;
  for (int number = 1; number <= 300; ++number) keys.push_back("app" + std::to_string(number));
  settings.protectedApps.set(keys);
  model().setPaneIndex(static_cast<int>(Pane::boost));
  QCoreApplication::processEvents();
  const auto made = [this] {
    std::vector<std::string> names;
    forEach(*view().rootObject(), "removeButton",
            [&](QQuickItem& row) { names.push_back(row.property("name").toString().toStdString()); });
    return names;
  };
  EXPECT_LT(made().size(), 40U);
  EXPECT_THAT(made(), testing::Contains("app1"));
  EXPECT_THAT(made(), testing::Not(testing::Contains("app300")));
  forEach(*view().rootObject(), "seen", [](QQuickItem& list) {
    if (list.property("isLong").toBool()) QMetaObject::invokeMethod(&list, "focusRow", Q_ARG(QVariant, 299));
  });
  QCoreApplication::processEvents();
  EXPECT_THAT(made(), testing::IsSupersetOf({"app300", "app299"}));
  EXPECT_THAT(made(), testing::Not(testing::Contains("app1")));
  EXPECT_LT(made().size(), 40U);
  ASSERT_NE(view().activeFocusItem(), nullptr);
  EXPECT_EQ(view().activeFocusItem()->property("label"), "Remove app300");
}

} // namespace
} // namespace vantle
