// SPDX-License-Identifier: MIT
#include "look/LookEngine.h"

#include "look/Resources.h"
#include "look/TypeRegistrations.h"

#include <QPixmapCache>
#include <QQuickWindow>
#include <private/qfont_p.h>

namespace vantle {
namespace {
// Themed icons on their way into views; the toolkit's 10 MB is waste.
constexpr int pixmapCacheKilobytes = 512;
int livingEngines = 0;
} // namespace

LookEngine::LookEngine(AppSettings& settings, IconTheme& icons) : m_settings(settings), m_icons(icons) {
  ++livingEngines;
  registerLookTypes();
  addImportPath(QStringLiteral("qrc:/qt/qml"));
  QPixmapCache::setCacheLimit(pixmapCacheKilobytes);
  icons.choose();
}

LookEngine::~LookEngine() {
  if (--livingEngines > 0) return;
  forgetTypes();
  trimComponentCache(); // frees the property tables that only the types held
}

void prepareRendering() {
  if (QQuickWindow::sceneGraphBackend() == QLatin1String("software")) return;
  QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}

void giveMemoryBack(Heap& heap) {
  QPixmapCache::clear();
  // Glyphs and shaping plans, a quarter of a megabyte. The toolkit lets go of them by itself only beyond 4
  // MB, and has no public word for it.
  if (livingEngines == 0) QFontCache::instance()->clear();
  heap.trim();
}

} // namespace vantle
