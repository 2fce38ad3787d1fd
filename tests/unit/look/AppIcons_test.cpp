// SPDX-License-Identifier: MIT
#include "look/AppIcons.h"

#include "tests/unit/look/PlainDesktop.h"

#include <QDir>
#include <QFile>
#include <QIcon>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace vantle {
namespace {

class AppIcons : public ::testing::Test {
 protected:
  QString file(const QString& name, const QByteArray& bytes) const {
    QFile file(folder.filePath(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    return file.fileName();
  }
  QString picture(const QString& name, const QSize& size) const {
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::red);
    EXPECT_TRUE(image.save(folder.filePath(name)));
    return folder.filePath(name);
  }

  QTemporaryDir folder;
  PlainIcons icons;
};

TEST_F(AppIcons, AreSquareAndOfTheSizeThatIsWanted) {
  EXPECT_EQ(appIcon(icons, picture("square.png", {64, 64}), 20).size(), QSize(20, 20));
  const QImage wide = appIcon(icons, picture("wide.png", {64, 16}), 20);
  EXPECT_EQ(wide.size(), QSize(20, 20));
  EXPECT_EQ(wide.pixelColor(10, 1).alpha(), 0) << "above the picture";
  EXPECT_EQ(wide.pixelColor(10, 10), QColor(Qt::red));
}

TEST_F(AppIcons, OfNothingOrNonsenseIsNone) {
  for (const QString& source :
       {QString(), QString("no-icon-of-this-name"), QString("../../etc/passwd"), QString("a/b"),
        QString(10'000, 'W'), QString("/nowhere/at.png"), folder.path(), QString("/dev/zero"),
        file("empty.png", {}), file("broken.png", "\x89PNG\r\n\x1a\n and no more"), file("text.svg", "<svg")})
    EXPECT_TRUE(appIcon(icons, source, 20).isNull()) << source.left(80).toStdString();
  for (const int pixels : {0, -1, 1'000'000})
    EXPECT_TRUE(appIcon(icons, picture("good.png", {16, 16}), pixels).isNull()) << pixels;
}

TEST_F(AppIcons, AreTheDesktopsWhereTheSourceIsNoPicture) {
  for (const QString& source : {folder.path(), QString("any-app")}) {
    icons.pictured = source;
    const QImage icon = appIcon(icons, source, 20);
    EXPECT_EQ(icon.size(), QSize(20, 20)) << source.toStdString();
    EXPECT_EQ(icon.pixelColor(10, 10), QColor(Qt::blue)) << source.toStdString();
  }
  const QString red = icons.pictured = picture("red.png", {20, 20});
  EXPECT_EQ(appIcon(icons, red, 20).pixelColor(10, 10), QColor(Qt::red));
}

TEST_F(AppIcons, TooLargeIsNotEvenRead) {
  EXPECT_TRUE(appIcon(icons, file("large.png", QByteArray(9 * 1024 * 1024, 'x')), 20).isNull());
  // A header that promises 60000 by 60000.
  EXPECT_TRUE(
      appIcon(icons,
              file("bomb.svg", "<svg xmlns='http://www.w3.org/2000/svg' width='60000' height='60000'/>"), 20)
          .isNull());
}

TEST_F(AppIcons, WithoutAnyThemeAreThoseOfFilesOnly) {
  const QStringList paths = QIcon::themeSearchPaths();
  const QString theme = QIcon::themeName();
  QIcon::setThemeSearchPaths({folder.path()});
  QIcon::setFallbackThemeName(QString());
  QIcon::setThemeName(QStringLiteral("no-such-theme"));
  EXPECT_TRUE(appIcon(icons, QStringLiteral("folder"), 20).isNull());
  EXPECT_FALSE(appIcon(icons, picture("own.png", {32, 32}), 20).isNull());
  icons.known = QStringLiteral("folder");
  icons.file = picture("of-old.png", {32, 32});
  EXPECT_FALSE(appIcon(icons, QStringLiteral("folder"), 20).isNull());
  QIcon::setThemeSearchPaths(paths);
  QIcon::setThemeName(theme);
}

} // namespace
} // namespace vantle
