// SPDX-License-Identifier: MIT
#include "look/LookEngine.h"

#include "look/AppIcons.h"
#include "look/HeapTrim.h"
#include "look/Resources.h"

#include <QPixmapCache>
#include <QQuickWindow>

namespace vantle {
namespace {
constexpr int pixmapCacheKilobytes =
    512; // themed icons on their way into views; the toolkit's 10 MB is waste
}

LookEngine::LookEngine(AppSettings& settings, QObject* parent) : QQmlEngine(parent), m_settings(settings) {
  registerLookTypes();
  addImportPath(QStringLiteral("qrc:/qt/qml"));
  QPixmapCache::setCacheLimit(pixmapCacheKilobytes);
  chooseIconTheme();
}

void prepareRendering() {
  if (QQuickWindow::sceneGraphBackend() == QLatin1String("software")) return;
  QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}

void giveMemoryBack() {
  QPixmapCache::clear();
  trimHeap();
}

} // namespace vantle
