// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>
#include <QString>

namespace vantle {

// Where the desktop keeps the pictures of apps that are known by a name.
class IconTheme {
 public:
  virtual ~IconTheme() = default;

  // Makes sure that the toolkit finds themed icons. Called before each window is made.
  virtual void choose() = 0;
  // The file of an icon that is in no theme; empty when there is none. The name holds no slash.
  virtual QString fileOf(const QString& name) const = 0;
  // The picture of a source that is neither in a theme nor a picture itself, such as the folder that an app
  // is; about `pixels` on a side. Null when there is none.
  virtual QImage pictureOf(const QString& /*source*/, int /*pixels*/) const { return {}; }
  // The themed picture that stands for any app.
  virtual QString genericName() const = 0;
};

} // namespace vantle
