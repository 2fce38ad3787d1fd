// SPDX-License-Identifier: MIT
#include "look/LookEngine.h"

#include "look/AppIcons.h"
#include "look/HeapTrim.h"
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

LookEngine::LookEngine(AppSettings& settings, QObject* parent) : QQmlEngine(parent), m_settings(settings) {
  ++livingEngines;
  registerLookTypes();
  addImportPath(QStringLiteral("qrc:/qt/qml"));
  QPixmapCache::setCacheLimit(pixmapCacheKilobytes);
  chooseIconTheme();
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

void giveMemoryBack() {
  QPixmapCache::clear();
  // Glyphs and shaping plans, a quarter of a megabyte. The toolkit lets go of them by itself only beyond 4
  // MB, and has no public word for it.
  if (livingEngines == 0) QFontCache::instance()->clear();
  trimHeap();
}

} // namespace vantle
