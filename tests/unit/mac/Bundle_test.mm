// SPDX-License-Identifier: MIT
// What makes the program an app, read as the system reads it.
#include "base/Names.h"
#include "packaging/darwin/Icns.h"
#import "platform/darwin/cocoa/Values.h"

#import <Foundation/Foundation.h>
#include <QImage>
#include <QtEndian>
#include <gtest/gtest.h>
#include <map>

namespace vantle {
namespace {

class Bundle : public testing::Test {
 protected:
  ~Bundle() override { [m_pool release]; }

 private:
  NSAutoreleasePool* m_pool = [[NSAutoreleasePool alloc] init];

 protected:
  NSDictionary* plist = [NSDictionary dictionaryWithContentsOfFile:@VANTLE_PLIST];
  std::optional<std::string> text(NSString* key) const { return textOf([plist objectForKey:key]); }
  int truth(NSString* key) const { // -1 for what is none
    NSNumber* const number = asKind<NSNumber>([plist objectForKey:key]);
    return number == nil ? -1 : [number boolValue];
  }
};

TEST_F(Bundle, IsTheProgramsAndHasNoDockIcon) {
  ASSERT_NE(plist, nil);
  EXPECT_EQ(text(@"CFBundleIdentifier"), names::identifier);
  EXPECT_EQ(text(@"CFBundleName"), names::display);
  EXPECT_EQ(text(@"CFBundleExecutable"), "Vantle");
  EXPECT_EQ(text(@"CFBundlePackageType"), "APPL");
  EXPECT_EQ(text(@"CFBundleShortVersionString"), VANTLE_VERSION);
  EXPECT_EQ(text(@"CFBundleVersion"), VANTLE_VERSION);
  EXPECT_EQ(text(@"CFBundleIconFile"), "Vantle");
  EXPECT_EQ(text(@"LSMinimumSystemVersion"), "14.0");
  EXPECT_EQ(text(@"VantleUpdateFeed"), "") << "none in a default build";
  EXPECT_EQ(truth(@"LSUIElement"), 1);
}

TEST_F(Bundle, IsNotEndedWithoutBeingAsked) {
  EXPECT_EQ(truth(@"NSSupportsSuddenTermination"), 0);
  EXPECT_EQ(truth(@"NSSupportsAutomaticTermination"), 0);
}

TEST(Icns, HasEverySizeOfTheDrawing) {
  const QByteArray icon = icnsOf(VANTLE_ICON);
  const auto number = [&](qsizetype at) { return qFromBigEndian<quint32>(icon.constData() + at); };
  ASSERT_GT(icon.size(), 8);
  EXPECT_EQ(icon.left(4), "icns");
  EXPECT_EQ(number(4), static_cast<quint32>(icon.size()));
  std::map<std::string, int> sizes;
  qsizetype at = 8;
  while (at + 8 <= icon.size()) {
    const qsizetype length = number(at + 4);
    ASSERT_GE(length, 8);
    ASSERT_LE(at + length, icon.size());
    const QImage picture = QImage::fromData(icon.mid(at + 8, length - 8), "PNG");
    EXPECT_EQ(picture.width(), picture.height());
    EXPECT_EQ(picture.pixelColor(0, 0).alpha(), 0) << "beside the drawing";
    EXPECT_EQ(picture.pixelColor(picture.width() / 2, picture.height() / 2), QColor(Qt::white)) << "the bolt";
    sizes[icon.mid(at, 4).toStdString()] = picture.width();
    at += length;
  }
  EXPECT_EQ(at, icon.size());
  EXPECT_EQ(sizes, (std::map<std::string, int>{{"icp4", 16},
                                               {"icp5", 32},
                                               {"ic07", 128},
                                               {"ic08", 256},
                                               {"ic09", 512},
                                               {"ic10", 1024},
                                               {"ic11", 32},
                                               {"ic12", 64},
                                               {"ic13", 256},
                                               {"ic14", 512}}));
  EXPECT_TRUE(icnsOf("/no/such/drawing.svg").isEmpty());
}

} // namespace
} // namespace vantle
