// SPDX-License-Identifier: MIT
#import "desktop/darwin/icons/BundleIcons.h"

#import "platform/darwin/cocoa/Retained.h"
#import "platform/darwin/cocoa/Values.h"

#import <AppKit/AppKit.h>
#include <QDir>
#import <UniformTypeIdentifiers/UniformTypeIdentifiers.h>

namespace vantle {

namespace {

constexpr int bitsOfChannel = 8;
constexpr int channels = 4; // red, green, blue and, multiplied into them, opacity

QString nameOfAnyApp() { return QStringLiteral("com.apple.application-bundle"); }

NSImage* imageOf(const QString& source) {
  NSWorkspace* const workspace = [NSWorkspace sharedWorkspace];
  if (QDir::isAbsolutePath(source)) return [workspace iconForFile:stringOf(source.toStdString())];
  return source == nameOfAnyApp() ? [workspace iconForContentType:UTTypeApplicationBundle] : nil;
}

// Drawn right into the bytes of a picture of the toolkit's.
QImage drawn(NSImage* image, int pixels) {
  QImage picture(pixels, pixels, QImage::Format_RGBA8888_Premultiplied);
  picture.fill(Qt::transparent);
  unsigned char* plane = picture.bits();
  const auto bitmap = Retained<NSBitmapImageRep>::taking([[NSBitmapImageRep alloc]
      initWithBitmapDataPlanes:&plane
                    pixelsWide:pixels
                    pixelsHigh:pixels
                 bitsPerSample:bitsOfChannel
               samplesPerPixel:channels
                      hasAlpha:YES
                      isPlanar:NO
                colorSpaceName:NSDeviceRGBColorSpace
                   bytesPerRow:picture.bytesPerLine()
                  bitsPerPixel:bitsOfChannel * channels]);
  NSGraphicsContext* const context = [NSGraphicsContext graphicsContextWithBitmapImageRep:bitmap.get()];
  if (context == nil) return {};
  [NSGraphicsContext saveGraphicsState];
  [NSGraphicsContext setCurrentContext:context];
  [image drawInRect:NSMakeRect(0, 0, pixels, pixels)
           fromRect:NSZeroRect // all of it
          operation:NSCompositingOperationSourceOver
           fraction:1];
  [context flushGraphics];
  [NSGraphicsContext restoreGraphicsState];
  return picture;
}

} // namespace

QImage BundleIcons::pictureOf(const QString& source, int pixels) const {
  @autoreleasepool {
    NSImage* const image = imageOf(source);
    return image == nil ? QImage() : drawn(image, pixels);
  }
}

QString BundleIcons::genericName() const { return nameOfAnyApp(); }

} // namespace vantle
